#ifndef QBPD_PRINTORDER_PRINTORDER_FORMS_H_
#define QBPD_PRINTORDER_PRINTORDER_FORMS_H_

namespace qbpd {

class Application;

// Declares the print order's forms: frmOrdPrints and frmEditAddress.
void RegisterPrintOrderForms(Application& app);

}  // namespace qbpd

#endif  // QBPD_PRINTORDER_PRINTORDER_FORMS_H_
