// The keys and the wheel that people expect of a photo viewer on Linux, on
// top of the program's own: Space and Backspace step to the next and the
// previous photo as the arrow buttons do, Delete deletes the photo on display
// as Ctrl+D does, and "+", "-", "0" (fit) and "1" (100%), or Ctrl with the
// wheel over the photo, zoom through the View menu's zoom entries. They are
// the program's, not the desktop host's, so that a script sees the same.
#include "browser/frm_main_window.h"
#include "platform/forms/keys.h"

#include <array>

namespace qbpd {
namespace {

constexpr std::array<int, 8> kZoomSteps = {25, 50, 75, 100, 125, 150, 175, 200};

// Whether a person could reach `control` now: it and every container above
// it shown and enabled.
bool Reachable(Form& form, const Control& control) {
  const Control* c = &control;
  for (int depth = 0; c != nullptr && depth < 16; ++depth) {
    if (!c->Visible() || !c->Enabled()) {
      return false;
    }
    if (c->Container().empty()) {
      return true;
    }
    c = form.FindControl(c->Container());
  }
  return c == nullptr;
}

// Whether the focused control acts on Space itself (ticks, chooses, presses),
// so that the viewer leaves the key to it.
bool TakesSpace(const Control* focused) {
  if (focused == nullptr) {
    return false;
  }
  const ControlKind kind = focused->Kind();
  return kind == ControlKind::kCheckBox || kind == ControlKind::kOptionButton ||
         kind == ControlKind::kCommandButton;
}

}  // namespace

void frmMainWindow::WireViewerKeys() {
  On("ctlDisplayImage", "MouseWheel",
     &frmMainWindow::ctlDisplayImage_MouseWheel);
}

bool frmMainWindow::ViewerKeysActive() const {
  return !mbEditImageText && ActiveControl() != &txtFileName && Enabled() &&
         Visible();
}

void frmMainWindow::Form_KeyDown(int& KeyCode, int Shift) {
  if (KeyCode != kKeyDelete || Shift != 0 || !ViewerKeysActive()) {
    return;
  }
  KeyCode = 0;
  mnuEDelSingle_Click();
}

void frmMainWindow::ViewerKeyPress(int& KeyAscii) {
  if (!ViewerKeysActive()) {
    return;
  }
  switch (KeyAscii) {
    case ' ':
      if (TakesSpace(ActiveControl())) {
        return;
      }
      KeyAscii = 0;
      if (Reachable(*this, imgNext)) {
        imgNext_Click();
      }
      return;
    case kKeyBack:
      KeyAscii = 0;
      if (Reachable(*this, imgPrev)) {
        imgPrev_Click();
      }
      return;
    case '+':
      KeyAscii = 0;
      ZoomStep(1);
      return;
    case '-':
      KeyAscii = 0;
      ZoomStep(-1);
      return;
    case '0':
      KeyAscii = 0;
      PickZoomEntry(mnuVZoomFit);
      return;
    case '1':
      KeyAscii = 0;
      PickZoomEntry(mnuVZoom100);
      return;
    default:
      return;
  }
}

void frmMainWindow::ZoomStep(int direction) {
  const int now = ctlDisplayImage.ZoomPercent();
  if (direction > 0) {
    for (int level : kZoomSteps) {
      if (level > now) {
        PickZoomEntry(ZoomItem(level));
        return;
      }
    }
    return;
  }
  for (auto it = kZoomSteps.rbegin(); it != kZoomSteps.rend(); ++it) {
    if (*it < now) {
      PickZoomEntry(ZoomItem(*it));
      return;
    }
  }
}

void frmMainWindow::PickZoomEntry(Menu& entry) {
  // The zoom entries act on the photo on display, and only where the View
  // menu is open to a person (not in an edit mode, not without photos).
  if (!ctlDisplayImage.Visible() || ctlDisplayImage.PhotoPath().empty() ||
      !mnuView.Visible() || !mnuView.Enabled() || !mnuVZoom.Enabled() ||
      !entry.Visible() || !entry.Enabled()) {
    return;
  }
  entry.Raise("Click");
}

void frmMainWindow::ctlDisplayImage_MouseWheel(EventArgs& e) {
  if ((e.Shift & kCtrlMask) == 0 || e.Delta == 0 || !ViewerKeysActive()) {
    return;
  }
  ZoomStep(e.Delta > 0 ? 1 : -1);
}

}  // namespace qbpd
