#include "screensaver/frm_scr_errmsg.h"

#include "platform/forms/keys.h"
#include "presentation/picture_buttons.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 5400;
constexpr int kFormHeight = 2400;
constexpr char kOkButton[] = "26";
constexpr char kMessage[] =
    "Please select photos for your screensaver by clicking on the checkbox "
    "below each photo.";

}  // namespace

frmScrErrmsg::frmScrErrmsg(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetKeyPreview(true);
  Move(0, 0, kFormWidth, kFormHeight);
  lblMessage.Move(240, 300, kFormWidth - 480, 700);
  lblMessage.SetCaption(kMessage);
  lblHelp.Move(240, kFormHeight - 900, 900, 285);
  lblHelp.SetCaption("Help");
  imgClose.Move(kFormWidth - 240 - 1200, kFormHeight - 1000, 1200, 390);
  On("imgClose", "Click", [this](EventArgs&) { Unload(); });
  On("lblHelp", "Click", [this](EventArgs&) { host().SendKeys("{F1}"); });
}

void frmScrErrmsg::Form_Load() {
  const Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  WirePictureButton(*this, s, imgClose, kOkButton);
  imgClose.SetTag("Close");
}

void frmScrErrmsg::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    Unload();
  }
}

}  // namespace qbpd
