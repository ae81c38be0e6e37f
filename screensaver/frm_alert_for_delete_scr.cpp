#include "screensaver/frm_alert_for_delete_scr.h"

#include "core/quil_mod.h"
#include "platform/forms/keys.h"
#include "presentation/picture_buttons.h"
#include "screensaver/scr_store.h"

#include <algorithm>

namespace qbpd {
namespace {

constexpr int kFormWidth = 5700;
constexpr int kFormHeight = 2700;
constexpr char kOkButton[] = "26";
constexpr char kCancelButton[] = "25";
constexpr char kQuestion[] =
    "Are you sure you want to delete this screensaver?";
constexpr char kNote[] =
    "Note: Deleting this screensaver will not remove the photos from your "
    "computer";
constexpr char kWriteFailed[] = "Unable to delete the screensaver.";

}  // namespace

frmAlertForDeleteScr::frmAlertForDeleteScr(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetKeyPreview(true);
  Move(0, 0, kFormWidth, kFormHeight);
  lblMessage.Move(240, 240, kFormWidth - 480, 400);
  lblMessage.SetCaption(kQuestion);
  lblMessage.SetFontBold(true);
  lblNote.Move(240, 720, kFormWidth - 480, 600);
  lblNote.SetCaption(kNote);
  const int buttons_top = kFormHeight - 1000;
  lblHelp.Move(240, buttons_top + 60, 900, 285);
  lblHelp.SetCaption("Help");
  imgCancel.Move(kFormWidth - 240 - 1200, buttons_top, 1200, 390);
  imgRemove.Move(imgCancel.Left() - 120 - 1200, buttons_top, 1200, 390);
  On("imgRemove", "Click", &frmAlertForDeleteScr::imgRemove_Click);
  On("imgCancel", "Click", [this](EventArgs&) { Unload(); });
  On("lblHelp", "Click", [this](EventArgs&) { host().SendKeys("{F1}"); });
}

void frmAlertForDeleteScr::Form_Load() {
  const Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  WirePictureButton(*this, s, imgRemove, kOkButton);
  WirePictureButton(*this, s, imgCancel, kCancelButton);
  imgRemove.SetTag("Remove");
}

void frmAlertForDeleteScr::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    Unload();
  }
}

void frmAlertForDeleteScr::imgRemove_Click() {
  Session& s = app_.session();
  if (!DeleteScreensaver(s.gsScrIniPath, msName)) {
    host().MsgBox(kWriteFailed, kMbStop, s.gsAppTitle);
    Unload();
    return;
  }
  auto& names = s.gsaScrNames;
  names.erase(std::remove_if(names.begin(), names.end(),
                             [this](const std::string& n) {
                               return UpperCase(n) == UpperCase(msName);
                             }),
              names.end());
  s.giSsaverCount = static_cast<int>(names.size());
  mbDeleted = true;
  Unload();
}

}  // namespace qbpd
