// The main window's screensaver commands: the Screensaver button and the
// Screensaver menu's entries. Each opens its dialog by name, so the browser
// needs nothing of the screensavers' forms.
#include "browser/frm_main_window.h"

namespace qbpd {
namespace {

// The value of giCurrentOperation while a screensaver is made.
constexpr int kOperationNone = 0;
constexpr int kOperationScreensaver = 9;

}  // namespace

void frmMainWindow::WireScreensaverCommands() {
  // Makes a screensaver of the checked photos, from the button (neither
  // flag) or a menu entry.
  auto make = [this](bool from_menu, bool create_new) {
    if (!CommitRename()) {
      return;
    }
    SaveImage();
    if (s_.gdicSelectedPhotos.Count() == 0) {
      app_.forms().Get("frmScrErrmsg").Show(/*modal=*/true);
      return;
    }
    s_.giCurrentOperation = kOperationScreensaver;
    s_.gsRotationScope = s_.gdicSelectedPhotos.Count() == 1 ? "S" : "M";
    s_.gbScrFromMenu = from_menu;
    s_.gbScrCreateNew = create_new;
    s_.gbScrUpdated = false;
    app_.forms().Get("frmScreenSaver").Show(/*modal=*/true);
    s_.gbScrFromMenu = false;
    s_.gbScrCreateNew = false;
    s_.giCurrentOperation = kOperationNone;
  };
  On("imgScrSaver", "Click", [make](EventArgs&) { make(false, false); });
  On("mnuscrCreatenew", "Click", [make](EventArgs&) { make(true, true); });
  On("mnuScrAddPhotos", "Click", [make](EventArgs&) { make(true, false); });

  On("mnuScrEdit", "Click", [this](EventArgs&) {
    if (!CommitRename()) {
      return;
    }
    SaveImage();
    s_.gbScrFromMenu = true;
    s_.gsCurrentScrName.clear();
    s_.gbMakeCurrent = false;
    app_.forms().Get("frmEditscreensaver").Show(/*modal=*/true);
    s_.gbScrFromMenu = false;
    s_.gbMakeCurrent = false;
  });
  On("mnuScrSelect", "Click", [this](EventArgs&) {
    app_.forms().Get("frmDisplayScrList").Show(/*modal=*/true);
  });
}

}  // namespace qbpd
