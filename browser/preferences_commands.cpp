// The main window's Preferences entry, which opens the dialog by name so
// that the browser needs nothing of it, and what the window does with the
// values the dialog wrote.
#include "browser/frm_main_window.h"

namespace qbpd {

void frmMainWindow::WirePreferencesCommands() {
  On("mnuEPref", "Click", [this](EventArgs&) {
    if (!CommitRename()) {
      return;
    }
    SaveImage();
    app_.forms().Get("frmPreferences").Show(/*modal=*/true);
  });
}

void frmMainWindow::TakeUpPreferences(const std::string& zoom_mode) {
  msZoomMode = zoom_mode;
  RemoveRecentFolder("");
  if (!s_.gsSelectedFolder.empty() && s_.gdicPhotoList.Count() > 0) {
    RefreshCurrentFolder();
  }
}

}  // namespace qbpd
