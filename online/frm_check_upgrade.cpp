#include "online/frm_check_upgrade.h"

#include "core/button_pictures.h"
#include "core/settings.h"
#include "online/client_factory.h"
#include "online/frm_display_download.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 5400;
constexpr int kFormHeight = 2640;
constexpr int kMargin = 240;
constexpr int kProgMs = 1000;
constexpr char kCentred = 2;
constexpr std::string_view kOkButton = "26";
constexpr std::string_view kCancelButton = "25";

}  // namespace

std::string UpgradeXmlUrl(std::string ip) {
  ip = DropTrailingNul(std::move(ip));
  while (!ip.empty() && (ip.back() == ' ' || ip.back() == '\t')) {
    ip.pop_back();
  }
  return ip + "/download/upgrade.xml";
}

frmCheckUpgrade::frmCheckUpgrade(Application& app)
    : Form(app.host(), std::string(kName)),
      app_(app),
      ctlInet_(NewServiceClient(app)) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblConnecting.Move(kMargin, 300, kFormWidth - 2 * kMargin, 720);
  lblConnecting.SetAlignment(kCentred);
  lblConnecting.SetWordWrap(true);
  lblConnecting.SetCaption("Connecting to quillbay");
  ProgressBar1.Move(kMargin, 1140, kFormWidth - 2 * kMargin, 300);
  imgOK.Move(kFormWidth / 2 - 1320, 1740, 1200, 390);
  imgOK.SetEnabled(false);
  imgCancel.Move(kFormWidth / 2 + 120, 1740, 1200, 390);
  tmrProg.SetInterval(kProgMs);
  tmrProg.SetEnabled(false);
  Field("mbUpgradeAvailable", mbUpgradeAvailable);
  Field("mbChecked", mbChecked);
  On("imgOK", "Click", &frmCheckUpgrade::imgOK_Click);
  On("imgCancel", "Click", &frmCheckUpgrade::imgCancel_Click);
  On("tmrProg", "Timer", &frmCheckUpgrade::tmrProg_Timer);
}

void frmCheckUpgrade::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  ShowButtonState(s, imgOK, kOkButton, kPictureNormal);
  ShowButtonState(s, imgCancel, kCancelButton, kPictureNormal);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
}

void frmCheckUpgrade::Form_Activate() {
  if (mbChecked) {
    return;
  }
  mbChecked = true;
  Session& s = app_.session();
  ProgressBar1.SetValue(1);
  const std::string url = UpgradeXmlUrl(app_.settings().Read(kRootKey, "IP"));
  const std::string version = ReadSetting(app_.settings(), kRootKey, "Version");
  if (version.empty()) {
    host().MsgBox(std::string(kUpgradeNoDetails), kMbStop, s.gsAppTitle);
    Unload();
    return;
  }
  if (!app_.CheckInternetConnection()) {
    return;
  }
  std::string location;
  std::string new_version;
  std::string size;
  std::string notes;
  const bool newer = ctlInet_->GetUpgradeInfo(url, version, location,
                                              new_version, size, notes);
  if (IsUnloaded()) {
    // Closed while the service was asked: the answer has no one to go to.
    return;
  }
  if (newer) {
    app_.forms().Get<frmDisplayDownload>().lblDownloadPath.SetCaption(location);
    lblConnecting.SetCaption(std::string(kUpgradeQuestion));
    mbUpgradeAvailable = true;
  } else {
    lblConnecting.SetCaption(std::string(kUpgradeLatest));
    mbUpgradeAvailable = false;
  }
  tmrProg.SetEnabled(false);
  ProgressBar1.SetValue(ProgressBar1.Max());
  imgOK.SetEnabled(true);
}

void frmCheckUpgrade::Form_Unload(int& Cancel) {
  (void)Cancel;
  tmrProg.SetEnabled(false);
  if (ctlInet_->IsBusy()) {
    ctlInet_->CancelRequest(true);
  }
}

void frmCheckUpgrade::imgOK_Click() {
  if (!mbUpgradeAvailable) {
    Unload();
    return;
  }
  if (ProgressBar1.Value() != ProgressBar1.Max()) {
    return;
  }
  frmDisplayDownload& download = app_.forms().Get<frmDisplayDownload>();
  Unload();
  download.Show(/*modal=*/true);
}

void frmCheckUpgrade::imgCancel_Click() {
  Unload();
}

void frmCheckUpgrade::tmrProg_Timer() {
  if (ProgressBar1.Value() < ProgressBar1.Max()) {
    ProgressBar1.SetValue(ProgressBar1.Value() + 1);
  }
}

}  // namespace qbpd
