#include "core/frm_about_us.h"

#include "core/button_pictures.h"
#include "core/settings.h"
#include "platform/forms/keys.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 6000;
constexpr int kFormHeight = 4560;
constexpr int kPictureHeight = 3400;
constexpr int kButtonWidth = 1200;
constexpr int kButtonHeight = 390;
constexpr std::string_view kOkButton = "26";

}  // namespace

frmAboutUs::frmAboutUs(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  Move(0, 0, kFormWidth, kFormHeight);
  imgLogo.Move(0, 0, kFormWidth, kPictureHeight);
  lblVersion.Move(240, kPictureHeight + 60, kFormWidth - 480, 300);
  imgOK.Move((kFormWidth - kButtonWidth) / 2, kPictureHeight + 480,
             kButtonWidth, kButtonHeight);
  SetKeyPreview(true);
  On("imgOK", "Click", &frmAboutUs::imgOK_Click);
  On("imgOK", "MouseDown", &frmAboutUs::imgOK_MouseDown);
  On("imgOK", "MouseUp", &frmAboutUs::imgOK_MouseUp);
  On("imgOK", "MouseMove", &frmAboutUs::imgOK_MouseMove);
}

void frmAboutUs::Form_Load() {
  const Session& s = app_.session();
  SetCaption("About " + s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  imgLogo.SetPicture(ButtonPicture(s, "G10"));
  lblVersion.SetCaption(
      "Version " + DropTrailingNul(app_.settings().Read(kRootKey, "Version")));
  ShowDefImages();
}

void frmAboutUs::ShowDefImages() {
  ShowButtonState(app_.session(), imgOK, kOkButton, kPictureNormal);
}

void frmAboutUs::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyReturn || KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    Unload();
  }
}

void frmAboutUs::imgOK_Click() {
  Unload();
}

void frmAboutUs::imgOK_MouseDown() {
  ShowButtonState(app_.session(), imgOK, kOkButton, kPicturePressed);
}

void frmAboutUs::imgOK_MouseUp() {
  ShowButtonState(app_.session(), imgOK, kOkButton, kPictureNormal);
}

void frmAboutUs::imgOK_MouseMove() {
  ShowButtonState(app_.session(), imgOK, kOkButton, kPictureHover);
}

}  // namespace qbpd
