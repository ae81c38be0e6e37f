// The grid of thumbnails: where each one stands, the scroll bar, the
// selection caption, and what a click on a thumbnail shows.
#include "browser/frm_main_window.h"
#include "core/quil_mod.h"

#include <filesystem>

namespace qbpd {
namespace {

// The row step of a thumbnail's Top is its height plus this gap.
constexpr int kRowGap = 100;
constexpr int kRightColumnLeft = 1585;

}  // namespace

void frmMainWindow::PlaceThumbnail(int index) {
  Thumbnail& thumb = ctrlQuilImage[index];
  const int p = thumb.PhotoIndex();
  const int row = p / 2;
  thumb.SetTop(row * thumb.Height() + (row + 1) * kRowGap);
  thumb.SetLeft(p % 2 == 1 ? kRightColumnLeft : ctrlQuilImage[0].Left());
  if (s_.gdicSelectedPhotos.Exists(index)) {
    thumb.SetCheck(true, false);
    thumb.SetTag("C");
  } else {
    thumb.SetTag("U");
  }
  thumb.SetPhotoIndex(p);
}

int frmMainWindow::getMaxNoImgsDisplayed() const {
  const int viewport = picImageListCont.Height() - cmdImageListHead.Height();
  return (viewport / (ctrlQuilImage[0].Height() + kRowGap)) * 2;
}

bool frmMainWindow::setscrollBar() {
  const int m = getMaxNoImgsDisplayed();
  const int n = s_.gdicPhotoList.Count();
  if (n <= m) {
    ctrlImageListVScroll.SetVisible(false);
    picImagelistInnerCont.SetTop(cmdImageListHead.Height());
    host().DoEvents();
    return false;
  }
  ctrlImageListVScroll.SetMax(n % 2 == 0 ? n / 2 - m / 2 : (n / 2 + 1) - m / 2);
  int v = ctrlQuilImage.Exists(s_.giCurrentPhotoIndex)
              ? ctrlQuilImage[s_.giCurrentPhotoIndex].PhotoIndex()
              : 0;
  const int first = 2 * ctrlImageListVScroll.Value();
  if (v < first || v > first + m) {
    ctrlImageListVScroll.SetValue(std::min(v / 2, ctrlImageListVScroll.Max()));
  }
  ctrlImageListVScroll.SetVisible(true);
  return true;
}

void frmMainWindow::SetPhotosSelectedCaption() {
  const int n = s_.gdicPhotoList.Count();
  if (n == 0) {
    lblPhotosSelect.SetCaption("No photo(s) exists");
    return;
  }
  lblPhotosSelect.SetCaption(std::to_string(s_.gdicSelectedPhotos.Count()) +
                             " of " + std::to_string(n) + " photo(s) selected");
}

void frmMainWindow::SetControlsEnabled() {
  const bool any = s_.gdicPhotoList.Count() > 0;
  // The buttons of the window come with its command set; the menus that
  // exist follow the list.
  mnuView.SetEnabled(any);
  mnuPhoto.SetEnabled(any);
  mnuERefresh.SetEnabled(true);
}

void frmMainWindow::ctrlQuilImage_Click(EventArgs& e) {
  const int i = e.Index;
  if (!s_.gdicPhotoList.Exists(i)) {
    return;
  }
  SaveImage();
  s_.gsSelectedImage = s_.gdicPhotoList.Item(i);
  std::error_code error;
  if (!std::filesystem::exists(s_.gsSelectedImage, error)) {
    // The photo went away behind the program's back: read the folder anew.
    s_.gdicSelectedPhotos.RemoveAll();
    bool result = true;
    std::string folder = s_.gsSelectedFolder;
    LoadImagesOnFolderClick(folder, result);
    e.Handled = true;
    return;
  }
  ctlDisplayImage.LoadPhoto(s_.gsSelectedImage);
  if (s_.giCurrentPhotoIndex != i &&
      ctrlQuilImage.Exists(s_.giCurrentPhotoIndex)) {
    Thumbnail& previous = ctrlQuilImage[s_.giCurrentPhotoIndex];
    previous.ReleaseThumbnail(previous.Tag() != "C");
  }
  s_.giCurrentPhotoIndex = i;
  lblDisplayImageName.SetCaption(FileNamePart(s_.gsSelectedImage));
  picImageText.SetVisible(true);
  e.Handled = true;
}

}  // namespace qbpd
