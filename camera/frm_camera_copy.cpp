#include "camera/frm_camera_copy.h"

#include "core/quil_mod.h"
#include "core/settings.h"
#include "platform/forms/keys.h"
#include "presentation/picture_buttons.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 6000;
constexpr int kFormHeight = 2850;
constexpr int kMargin = 300;
constexpr int kButtonWidth = 1200;
constexpr int kButtonHeight = 390;
constexpr char kOkButton[] = "26";
constexpr char kCancelButton[] = "25";

constexpr char kMessage[] =
    "We've detected a new device that contains images. Would you like to "
    "download the image(s) from this device to the Quillbay Picture Desk?";
constexpr char kShowAgain[] = "Show this on detecting a new device";

}  // namespace

frmCameraCopy::frmCameraCopy(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetKeyPreview(true);
  Move(0, 0, kFormWidth, kFormHeight);
  lblMessage.Move(kMargin, kMargin, kFormWidth - 2 * kMargin, 840);
  lblMessage.SetCaption(kMessage);
  lblMessage.SetWordWrap(true);
  chkDisplayCameraCopyImages.Move(kMargin, 1230, kFormWidth - 2 * kMargin, 300);
  chkDisplayCameraCopyImages.SetCaption(kShowAgain);
  const int top = kFormHeight - kButtonHeight - 660;
  imgCancel.Move(kFormWidth - kMargin - kButtonWidth, top, kButtonWidth,
                 kButtonHeight);
  imgOK.Move(imgCancel.Left() - 120 - kButtonWidth, top, kButtonWidth,
             kButtonHeight);
  On("imgOK", "Click", &frmCameraCopy::imgOK_Click);
  On("imgCancel", "Click", &frmCameraCopy::imgCancel_Click);
}

void frmCameraCopy::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  WirePictureButton(*this, s, imgOK, kOkButton);
  WirePictureButton(*this, s, imgCancel, kCancelButton);
}

void frmCameraCopy::Form_Activate() {
  const std::string show = DropTrailingNul(
      app_.settings().Read(kCameraTransferKey, "DisplayDialogtoCopy"));
  chkDisplayCameraCopyImages.SetValue(UpperCase(show) == "TRUE" ? 1 : 0);
}

void frmCameraCopy::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    imgCancel_Click();
  }
}

void frmCameraCopy::imgOK_Click() {
  const bool show = chkDisplayCameraCopyImages.Value() == 1;
  // A lost write only asks again next time.
  (void)app_.settings().Write(kCameraTransferKey, "DisplayDialogtoCopy",
                              show ? "True" : "False");
  app_.session().gbCopyAllowed = true;
  Unload();
}

void frmCameraCopy::imgCancel_Click() {
  app_.session().gbCopyAllowed = false;
  Unload();
}

}  // namespace qbpd
