#include "online/upgrade_check.h"

#include "browser/frm_main_window.h"
#include "core/application.h"
#include "core/settings.h"
#include "online/client_factory.h"
#include "online/frm_check_upgrade.h"
#include "online/frm_display_download.h"

#include <memory>

namespace qbpd {
namespace {

constexpr int kUpgradeMs = 60000;

// The window is going away: a close during a load (tmrQueryUnload finishes
// it) or a close that has already gone through.
bool Closing(frmMainWindow& main) {
  return main.IsUnloaded() || main.tmrQueryUnload.Enabled();
}

void tmrUpgrade_Timer(Application& app,
                      frmMainWindow& main,
                      ctlExtAPI& ctlInet) {
  Session& s = app.session();
  main.timerCamera.SetEnabled(false);
  main.tmrUpgrade.SetEnabled(false);
  const std::string url = UpgradeXmlUrl(app.settings().Read(kRootKey, "IP"));
  const std::string version = ReadSetting(app.settings(), kRootKey, "Version");
  if (version.empty()) {
    main.timerCamera.SetEnabled(true);
    return;
  }
  // In the background: a service that isn't running is not started for
  // this, and counts as no connection (the next try follows in a minute).
  if (!app.CheckInternetConnection(ServiceNeed::kRunning)) {
    if (!Closing(main)) {
      main.tmrUpgrade.SetEnabled(true);
      main.timerCamera.SetEnabled(true);
    }
    return;
  }
  std::string location;
  std::string new_version;
  std::string size;
  std::string notes;
  const bool newer =
      ctlInet.GetUpgradeInfo(url, version, location, new_version, size, notes);
  if (Closing(main)) {
    if (!main.IsUnloaded()) {
      main.timerCamera.SetEnabled(true);
    }
    return;
  }
  if (newer && main.host().MsgBox(std::string(kUpgradeQuestion),
                                  kMbQuestionYesNo, s.gsAppTitle) == kIdYes) {
    frmDisplayDownload& download = app.forms().Get<frmDisplayDownload>();
    download.lblDownloadPath.SetCaption(location);
    download.Show(/*modal=*/true);
  }
  if (!main.IsUnloaded()) {
    main.timerCamera.SetEnabled(true);
  }
}

}  // namespace

void WireUpgradeCheck(frmMainWindow& window, Application& app) {
  Application* a = &app;
  frmMainWindow* w = &window;
  // The check runs in the background, so its requests start no service.
  std::shared_ptr<ctlExtAPI> client =
      NewServiceClient(app, ServiceNeed::kRunning);
  window.tmrUpgrade.SetInterval(kUpgradeMs);
  window.On("tmrUpgrade", "Timer",
            [a, w, client](EventArgs&) { tmrUpgrade_Timer(*a, *w, *client); });
  // A close never waits for the check's request: it is cancelled, and the
  // check then drops its answer.
  window.CancelServiceRequest = [client] {
    if (!client->IsBusy()) {
      return false;
    }
    client->CancelRequest(true);
    return true;
  };
  window.On("mnuHUpgrade", "Click", [a](EventArgs&) {
    a->forms().Get<frmCheckUpgrade>().Show(/*modal=*/true);
  });
}

}  // namespace qbpd
