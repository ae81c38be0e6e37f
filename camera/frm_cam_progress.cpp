#include "camera/frm_cam_progress.h"

#include "camera/mod_camera_conn.h"
#include "core/quil_mod.h"
#include "core/settings.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 6000;
constexpr int kFormHeight = 2100;
constexpr int kMargin = 300;
constexpr int kProgMs = 100;
constexpr int kBarMs = 100;
constexpr char kMessage[] =
    "Quillbay Picture Desk is copying images from the connected device.";

}  // namespace

frmCamProgress::frmCamProgress(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblMessage.Move(kMargin, kMargin, kFormWidth - 2 * kMargin, 510);
  lblMessage.SetCaption(kMessage);
  lblMessage.SetWordWrap(true);
  ctlProgCam.Move(kMargin, 780, kFormWidth - 2 * kMargin, 300);
  ctlProgCam.SetMin(0);
  ctlProgCam.SetMax(100);
  txtCamerastring.SetVisible(false);
  txtDeviceType.SetVisible(false);
  tmrProg.SetInterval(kProgMs);
  tmrCameraProg.SetInterval(kBarMs);
  Field("mbDone", mbDone);
  Field("miMode", miMode);
  On("tmrProg", "Timer", &frmCamProgress::tmrProg_Timer);
  On("tmrCameraProg", "Timer", &frmCamProgress::tmrCameraProg_Timer);
}

void frmCamProgress::Form_Load() {
  SetCaption(app_.session().gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
}

void frmCamProgress::Form_Activate() {
  tmrProg.SetEnabled(false);
  // The work starts once, not again when the dialog comes back to the front
  // after a message box of its own.
  if (mbStarted) {
    return;
  }
  Session& s = app_.session();
  const std::string base = CameraBaseFolder(app_);
  const std::string name = BuildFolderName(app_);
  if (name.empty()) {
    Unload();
    return;
  }
  mbStarted = true;
  s.gsTransferFolder = base + name;
  const std::string delete_status = DropTrailingNul(
      app_.settings().Read(kCameraTransferKey, "DeleteImagesStatus"));
  miMode = UpperCase(delete_status) == "TRUE" ? 0 : 1;
  ctlProgCam.SetValue(1);
  tmrProg.SetEnabled(true);
}

void frmCamProgress::Form_QueryUnload(int& Cancel, int UnloadMode) {
  (void)UnloadMode;
  // Closing the window mid-transfer would leave the work without its bar;
  // the work ends on its own.
  Cancel = mbWorking ? 1 : 0;
}

void frmCamProgress::tmrProg_Timer() {
  tmrProg.SetEnabled(false);
  mbWorking = true;
  if (txtDeviceType.Text() == "CR") {
    CopyCardFiles(app_, txtCamerastring.Text(), false,
                  app_.session().gsTransferFolder, miMode, &ctlProgCam);
    tmrCameraProg.SetEnabled(true);
  } else if (txtDeviceType.Text() == "CM") {
    ctlProgCam.SetValue(1);
    tmrCameraProg.SetEnabled(true);
    WaitForTransfer(app_);
  }
  mbWorking = false;
  mbDone = true;
  tmrCameraProg.SetEnabled(true);
}

void frmCamProgress::tmrCameraProg_Timer() {
  if (!mbDone) {
    const int next = ctlProgCam.Value() + 1;
    ctlProgCam.SetValue(next > ctlProgCam.Max() ? ctlProgCam.Min() : next);
    return;
  }
  if (ctlProgCam.Value() < ctlProgCam.Max()) {
    ctlProgCam.SetValue(ctlProgCam.Max());
    return;
  }
  tmrCameraProg.SetEnabled(false);
  Unload();
}

}  // namespace qbpd
