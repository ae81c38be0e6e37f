// Rotation: the photo on display turns on screen until the rotation prompt
// writes it; the checked photos turn on disk, one at once or many behind the
// progress dialog.
#include "browser/frm_main_window.h"
#include "core/quil_mod.h"
#include "editor/file_rotation.h"
#include "editor/frm_rotate.h"
#include "platform/access_check.h"

#include <filesystem>

namespace qbpd {
namespace {

constexpr int kFullTurn = 360;
constexpr int kQuarter = 90;
// The pop-up opens this far inside the button's lower right corner.
constexpr int kPopupInset = 150;

}  // namespace

void frmMainWindow::WireRotation() {
  On("imgLeftRotate", "Click",
     [this](EventArgs&) { RotateButton(kRotateLeft, /*test_file=*/false); });
  On("imgRightRotate", "Click",
     [this](EventArgs&) { RotateButton(kRotateRight, /*test_file=*/true); });
  On("mnuSingle", "Click", &frmMainWindow::mnuSingle_Click);
  On("mnuMultiple", "Click", &frmMainWindow::mnuMultiple_Click);
  On("mnuPRotSingLeft", "Click",
     [this](EventArgs&) { mnuPRotSingle_Click(kRotateLeft); });
  On("mnuPRotSingRight", "Click",
     [this](EventArgs&) { mnuPRotSingle_Click(kRotateRight); });
  On("mnuPRotMultiLeft", "Click",
     [this](EventArgs&) { mnuPRotMulti_Click(kRotateLeft); });
  On("mnuPRotMultiRight", "Click",
     [this](EventArgs&) { mnuPRotMulti_Click(kRotateRight); });
  On("mnuEUndo", "Click", &frmMainWindow::mnuEUndo_Click);
}

void frmMainWindow::RotateButton(int operation, bool test_file) {
  if (!CommitRename()) {
    return;
  }
  if (s_.gdicPhotoList.Count() == 0) {
    return;
  }
  // Only the right button looks for the file first; the left one doesn't.
  std::error_code error;
  if (test_file && !std::filesystem::exists(s_.gsSelectedImage, error)) {
    std::string folder = s_.gsSelectedFolder;
    bool result = false;
    LoadImagesOnFolderClick(folder, result);
    return;
  }
  s_.giCurrentOperation = operation;
  const int selected = s_.gdicSelectedPhotos.Count();
  if (selected < 2 &&
      (selected == 0 || s_.gdicSelectedPhotos.Exists(s_.giCurrentPhotoIndex))) {
    host().SetMousePointer(kPointerHourglass);
    mnuSingle_Click();
    s_.gbRotationPending = true;
    SetRotationMenus();
    host().SetMousePointer(kPointerDefault);
    s_.giCurrentOperation = 0;
    return;
  }
  PictureButton& button =
      operation == kRotateLeft ? imgLeftRotate : imgRightRotate;
  PopupMenu(mnuRotate,
            static_cast<int>(picManipCont.Left() + button.Left() +
                             button.Width() - kPopupInset),
            static_cast<int>(picManipCont.Top() + button.Top() +
                             button.Height() - kPopupInset));
  s_.giCurrentOperation = 0;
}

void frmMainWindow::mnuSingle_Click() {
  s_.gsRotationScope = "S";
  SingleImageRotation(false);
  s_.gbRotationPending = true;
  SetRotationMenus();
}

void frmMainWindow::mnuPRotSingle_Click(int operation) {
  s_.giCurrentOperation = operation;
  SingleImageRotation(false);
  s_.giCurrentOperation = 0;
  s_.gbRotationPending = true;
  SetRotationMenus();
}

void frmMainWindow::mnuPRotMulti_Click(int operation) {
  s_.giCurrentOperation = operation;
  mnuMultiple_Click();
  s_.giCurrentOperation = 0;
}

void frmMainWindow::SingleImageRotation(bool multiple) {
  const bool left = s_.giCurrentOperation == kRotateLeft;
  if (multiple) {
    RotationHooks hooks = GridRotationHooks();
    hooks.new_file = [this](int, const std::string& destination) {
      arrangethenewlyaddedcontrol(s_.giNextPhotoIndex - 1, destination);
    };
    for (int key : s_.gdicSelectedPhotos.Keys()) {
      RotateOneFile(app_, key, s_.gdicSelectedPhotos.Item(key),
                    s_.giCurrentOperation, RotationNotice::kCurrentPhoto,
                    hooks);
    }
    return;
  }
  host().SetMousePointer(kPointerHourglass);
  // The sign is kept as text and converted, as the program always did.
  const std::string sign = left ? "-1" : "+1";
  s_.glRotationAngle += kQuarter * std::stol(sign);
  if (s_.glRotationAngle == kFullTurn || s_.glRotationAngle == -kFullTurn) {
    s_.glRotationAngle = 0;
  }
  ctlDisplayImage.SetVisible(false);
  ctlDisplayImage.RotateView(left ? -kQuarter : kQuarter);
  if (mbFitToWidth) {
    ctlDisplayImage.ZoomFitToWidth();
  }
  ctlDisplayImage.SetVisible(true);
  host().SetMousePointer(kPointerDefault);
}

void frmMainWindow::mnuEUndo_Click() {
  if (s_.glRotationAngle == 0) {
    return;
  }
  ctlDisplayImage.RotateView(static_cast<int>(-s_.glRotationAngle));
  s_.glRotationAngle = 0;
  SetRotationMenus();
  ctlDisplayImage.ZoomFitToWidth();
  ShowZoomLevel(ctlDisplayImage.ZoomPercent());
}

void frmMainWindow::SetRotationMenus() {
  const bool photos = s_.gdicPhotoList.Count() > 0;
  mnuEUndo.SetEnabled(photos && s_.glRotationAngle != 0);
  mnuFSave.SetEnabled(photos && s_.gbRotationPending &&
                      s_.glRotationAngle != 0);
}

RotationHooks frmMainWindow::GridRotationHooks() {
  RotationHooks hooks;
  hooks.generate_thumbnail = [this](const std::string& path) {
    return GenerateThumbnail(path);
  };
  hooks.same_file_turned = [this](int index, const std::string& path) {
    if (ctrlQuilImage.Exists(index) && s_.gdicLoadedControls.Exists(index)) {
      Thumbnail& thumb = ctrlQuilImage[index];
      thumb.LoadThumbnail(s_.gsThumbnailPath);
      thumb.SetToolTipText(FileNamePart(path));
    }
  };
  hooks.new_file = [this](int, const std::string& destination) {
    s_.gdicPhotoList.Add(s_.giNextPhotoIndex, destination);
    ++s_.giPhotoCount;
    ++s_.giNextPhotoIndex;
    mbNewControlHasPhoto = true;
    LoadaNewControl();
  };
  return hooks;
}

void frmMainWindow::mnuMultiple_Click() {
  SaveImage();
  std::string folder = s_.gsSelectedFolder;
  if (!folder.empty() && folder.back() != '/') {
    folder += '/';
  }
  if (FolderRefusesWrites(folder)) {
    host().MsgBox(
        "Cannot rotate the photos: Access is denied. \r\n\r\nMake sure the "
        "disk is not full or write-protected. ",
        kMbStop, s_.gsAppTitle);
    picImageListCont.SetFocus();
    return;
  }
  if (s_.gdicSelectedPhotos.Count() == 1) {
    SingleImageRotation(true);
    SetPhotosSelectedCaption();
    return;
  }
  s_.gsRotationScope = "M";
  frmRotate& dialog = app_.forms().Get<frmRotate>();
  dialog.SetHooks(GridRotationHooks());
  dialog.Show(/*modal=*/true);

  // A photo on display that was turned on disk is shown afresh.
  ctlDisplayImage.SetVisible(false);
  const int zoom = ctlDisplayImage.ZoomPercent();
  ctlDisplayImage.LoadPhoto(s_.gsSelectedImage);
  if (msZoomMode == "O") {
    ctlDisplayImage.ZoomTo(100);
  } else {
    ctlDisplayImage.ZoomFitToWidth();
  }
  ctlDisplayImage.ZoomTo(zoom);
  ctlDisplayImage.SetVisible(true);
  if (s_.gdicSelectedPhotos.Exists(s_.giCurrentPhotoIndex)) {
    ClickThumbnail(s_.giCurrentPhotoIndex);
  }
  SetPhotosSelectedCaption();
  picImageListCont.SetFocus();
}

}  // namespace qbpd
