#include "screensaver/screensaver_forms.h"

#include "core/application.h"
#include "screensaver/frm_alert_for_delete_scr.h"
#include "screensaver/frm_display_scr_list.h"
#include "screensaver/frm_editscreensaver.h"
#include "screensaver/frm_preview.h"
#include "screensaver/frm_scr_errmsg.h"
#include "screensaver/frm_screen_saver.h"
#include "screensaver/frm_screensaver_step2.h"

namespace qbpd {

void RegisterScreensaverForms(Application& app) {
  Application* a = &app;
  FormSet& forms = app.forms();
  forms.Register<frmScreenSaver>(
      [a] { return std::make_unique<frmScreenSaver>(*a); });
  forms.Register<frmScreensaverstep2>(
      [a] { return std::make_unique<frmScreensaverstep2>(*a); });
  forms.Register<frmPreview>([a] { return std::make_unique<frmPreview>(*a); });
  forms.Register<frmEditscreensaver>(
      [a] { return std::make_unique<frmEditscreensaver>(*a); });
  forms.Register<frmDisplayScrList>(
      [a] { return std::make_unique<frmDisplayScrList>(*a); });
  forms.Register<frmAlertForDeleteScr>(
      [a] { return std::make_unique<frmAlertForDeleteScr>(*a); });
  forms.Register<frmScrErrmsg>(
      [a] { return std::make_unique<frmScrErrmsg>(*a); });
}

}  // namespace qbpd
