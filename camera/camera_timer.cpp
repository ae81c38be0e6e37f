// timerCamera: the main window's poll of the device monitor's file, and
// what a known ("100") or new ("200") device leads to.
#include "browser/frm_main_window.h"
#include "camera/camera_lines.h"
#include "camera/frm_cam_progress.h"
#include "camera/frm_camera_copy.h"
#include "camera/frm_device_list.h"
#include "camera/mod_camera_conn.h"
#include "core/application.h"
#include "core/quil_mod.h"
#include "core/settings.h"
#include "core/trace.h"
#include "platform/drive_tokens.h"

#include <filesystem>

namespace qbpd {
namespace {

constexpr int kSettleMs = 500;
constexpr char kPrefix[] = "New device has been identified. ";

// gbCopyAllowed from DisplayDialogtoCopy: the question for "True", at once
// for "False", and never for any other value.
void DecideCopyAllowed(Application& app) {
  Session& s = app.session();
  const std::string show = UpperCase(DropTrailingNul(
      app.settings().Read(kCameraTransferKey, "DisplayDialogtoCopy")));
  s.gbCopyAllowed = false;
  if (show == "TRUE") {
    app.forms().Get<frmCameraCopy>().Show(/*modal=*/true);
  } else if (show == "FALSE") {
    s.gbCopyAllowed = true;
  }
}

void BackToIdle(frmMainWindow& main) {
  main.SetFocusToWindow();
  main.timerCamera.SetEnabled(true);
}

void KnownDevice(Application& app,
                 frmMainWindow& main,
                 const DevMonLine& line) {
  Session& s = app.session();
  bool proceed = false;
  main.EndCurrentOperation(kPrefix, proceed);
  if (!proceed) {
    return;
  }
  const std::string& device = line.device;
  DecideCopyAllowed(app);
  if (!IsDriveText(device)) {
    if (!s.gbCopyAllowed) {
      BackToIdle(main);
      WriteTrace("timercamera21");
      return;
    }
    if (StartImageAcq(app, device)) {
      CheckImageAcq(app);
    } else {
      BackToIdle(main);
    }
    return;
  }
  if (s.gbCopyAllowed && ListCardFiles(app, device)) {
    frmCamProgress& progress = app.forms().Get<frmCamProgress>();
    progress.txtCamerastring.SetText(device);
    progress.txtDeviceType.SetText("CR");
    progress.Show(/*modal=*/true);
  }
  BackToIdle(main);
}

void NewDevice(Application& app, frmMainWindow& main, const DevMonLine& line) {
  Session& s = app.session();
  bool proceed = false;
  main.EndCurrentOperation(kPrefix, proceed);
  if (!proceed) {
    return;
  }
  DecideCopyAllowed(app);
  if (!s.gbCopyAllowed) {
    BackToIdle(main);
    return;
  }
  const std::string& device = line.device;
  frmDeviceList& list = app.forms().Get<frmDeviceList>();
  if (list.IsLoaded()) {
    list.lblDescription.SetVisible(true);
    list.cboDeviceList.AddItem(frmDeviceList::kNotACamera);
    list.Show(/*modal=*/true);
  }
  if (s.gbDeviceListCancelled) {
    main.ExpTreeView.SetSelectedFolder(main.StartFolder());
    return;
  }
  if (s.gsSelectedDevice == frmDeviceList::kNotACamera) {
    if (main.InitialLoadBusy()) {
      main.mbCloseAfterDevice = true;
      main.timerCamera.SetEnabled(false);
      main.tmrExplorer.SetEnabled(false);
      main.tmrUpgrade.SetEnabled(false);
      main.tmrDblClick.SetEnabled(false);
    }
    return;
  }
  // A lost write only asks again when the device comes back.
  (void)app.settings().Write(kCameraListKey, device, s.gsSelectedDevice);
  if (StartImageAcq(app, s.gsSelectedDevice)) {
    CheckImageAcq(app);
  } else {
    BackToIdle(main);
  }
}

}  // namespace

void timerCamera_Timer(Application& app) {
  frmMainWindow& main = app.forms().Get<frmMainWindow>();
  Session& s = app.session();
  const std::string path = ExchangeFile(app, kDevMonFile);
  std::string line;
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    WriteTrace("Devmon.dat not found");
  } else {
    app.host().Sleep(kSettleMs);
    TakeExchangeLine(path, line);
  }
  line = Trim(line);
  if (line.empty()) {
    s.gsCommandLine.clear();
    return;
  }
  const DevMonLine parsed = ParseDevMonLine(line);
  if (parsed.code == kKnownDevice) {
    KnownDevice(app, main, parsed);
  } else if (parsed.code == kNewDevice) {
    NewDevice(app, main, parsed);
  }
}

}  // namespace qbpd
