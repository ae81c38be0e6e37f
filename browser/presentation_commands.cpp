// The main window's presentation commands: photo information, the slide
// show and Full Screen, and the wallpaper. Each opens its dialog by name, so
// the browser needs nothing of the presentation's forms.
#include "browser/frm_main_window.h"
#include "core/quil_mod.h"

namespace qbpd {
namespace {

constexpr char kSelectPhotos[] = "Please select the photo(s)";

// The values of giCurrentOperation these commands set.
constexpr int kOperationNone = 0;
constexpr int kOperationPhotoInfo = 6;

}  // namespace

void frmMainWindow::WirePresentationCommands() {
  auto photo_info = [this](EventArgs&) {
    if (!CommitRename()) {
      return;
    }
    SaveImage();
    s_.giCurrentOperation = kOperationPhotoInfo;
    if (s_.gdicPhotoList.Count() == 0) {
      host().MsgBox(kSelectPhotos, kMbInformation, s_.gsAppTitle);
    } else {
      app_.forms().Get("frmPhotoInfo").Show(/*modal=*/true);
      // The dialog may have renamed the photo.
      ShowPhotoName(BaseName(s_.gsSelectedImage));
    }
    s_.giCurrentOperation = kOperationNone;
  };
  On("imgInfo", "Click", photo_info);
  On("mnuPInfo", "Click", photo_info);
}

}  // namespace qbpd
