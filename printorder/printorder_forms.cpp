#include "printorder/printorder_forms.h"

#include "core/application.h"
#include "printorder/frm_edit_address.h"
#include "printorder/frm_ord_prints.h"

namespace qbpd {

void RegisterPrintOrderForms(Application& app) {
  Application* a = &app;
  app.forms().Register<frmOrdPrints>(
      [a] { return std::make_unique<frmOrdPrints>(*a); });
  app.forms().Register<frmEditAddress>(
      [a] { return std::make_unique<frmEditAddress>(*a); });
}

}  // namespace qbpd
