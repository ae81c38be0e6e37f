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
constexpr int kOperationSlideShow = 7;
constexpr int kOperationWallpaper = 8;

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

  auto slide_show = [this](EventArgs&) {
    if (!CommitRename()) {
      return;
    }
    SaveImage();
    s_.giCurrentOperation = kOperationSlideShow;
    s_.gsSlideShowMode = "S";
    app_.forms().Get("frmSlideShow").Show(/*modal=*/true);
    if (s_.gdicPhotoList.Count() == 0) {
      // Every photo of the show went while it ran.
      ResetGrid();
      ctlDisplayImage.ClearPhoto();
      ctlDisplayImage.SetVisible(false);
      picImageText.SetVisible(false);
      s_.gsSelectedImage.clear();
      s_.giNextPhotoIndex = 0;
      s_.gdicDeletedIndexes.RemoveAll();
      SetPhotosSelectedCaption();
    }
    s_.giCurrentOperation = kOperationNone;
  };
  On("imgSlideShow", "Click", slide_show);
  On("mnuVSlideShow", "Click", slide_show);

  On("mnuVFullScreen", "Click", [this](EventArgs&) {
    SaveImage();
    s_.giCurrentOperation = kOperationSlideShow;
    s_.gsSlideShowMode = "F";
    app_.forms().Get("frmSlideShow").Show(/*modal=*/true);
    s_.giCurrentOperation = kOperationNone;
  });

  auto wallpaper = [this](EventArgs&) {
    if (!CommitRename()) {
      return;
    }
    SaveImage();
    host().SetMousePointer(kPointerHourglass);
    s_.giCurrentOperation = kOperationWallpaper;
    if (s_.gdicPhotoList.Count() == 0) {
      host().MsgBox(kSelectPhotos, kMbInformation, s_.gsAppTitle);
    } else {
      app_.forms().Get("frmWallpaper").Show(/*modal=*/true);
    }
    host().SetMousePointer(kPointerDefault);
    s_.giCurrentOperation = kOperationNone;
  };
  On("imgWallpaper", "Click", wallpaper);
  On("mnuPWallPaper", "Click", wallpaper);
}

}  // namespace qbpd
