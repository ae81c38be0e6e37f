// Writing the photo on display: the rotation prompt that runs before almost
// every command (SaveImage), the File menu's Save and Save As.
#include "browser/frm_main_window.h"
#include "core/quil_mod.h"
#include "editor/edit_messages.h"
#include "editor/fixed_names.h"
#include "platform/access_check.h"
#include "platform/image_operations.h"

#include <filesystem>

namespace qbpd {
namespace {
namespace fs = std::filesystem;

constexpr char kOwnTitle[] = "Quillbay Picture Desk";
constexpr char kCantDisplay[] = "Unable to display photo";
constexpr char kThumbnailFailed[] = "Error in generating the thumbnail";

std::string WithSeparator(std::string folder) {
  if (!folder.empty() && folder.back() != '/') {
    folder += '/';
  }
  return folder;
}

// A photo that the rotation can't write back as it is: it becomes a JPEG.
bool IsOtherThanJpeg(const std::string& upper_ext) {
  for (const char* kind : {"PNG", "TIF", "BMP", "Bitmap Image"}) {
    if (upper_ext.find(kind) != std::string::npos) {
      return true;
    }
  }
  return false;
}

}  // namespace

void frmMainWindow::ReloadShownPhoto(int style) {
  if (!ctlDisplayImage.LoadPhoto(s_.gsSelectedImage)) {
    host().MsgBox(kCantDisplay, style, s_.gsAppTitle);
    return;
  }
  if (msZoomMode != "O") {
    ctlDisplayImage.ZoomFitToWidth();
    mbFitToWidth = true;
  } else {
    ctlDisplayImage.ZoomTo(100);
    mbFitToWidth = false;
  }
  ShowZoomLevel(ctlDisplayImage.ZoomPercent());
}

void frmMainWindow::SaveImage() {
  if (!s_.gbRotationPending || s_.glRotationAngle == 0) {
    return;
  }
  std::string prompt = "Do you want to save current rotation?";
  const std::string folder = WithSeparator(s_.gsSelectedFolder);
  const std::string image = s_.gsSelectedImage;
  const std::string ext = UpperExtension(image);
  std::string dest;
  bool new_file = true;
  if (!IsOtherThanJpeg(ext)) {
    if (IsReadOnlyFile(image) ||
        CheckAccess(folder, kFileGenericWrite) != kFileGenericWrite) {
      dest = folder + GetFixedFileName(image, folder, ext) + "." + ext;
      prompt = "The file '" + image +
               "' is a read-only file. The File will save with '" +
               FileNamePart(dest) + "'. Do you want to save?";
    } else {
      // The same file. Names differ by case here: the photo's own path, not
      // one with its extension upper-cased.
      dest = image;
      new_file = false;
    }
  } else {
    dest = folder + GetFixedFileName(image, folder) + ".jpg";
  }
  s_.gbRotationPending = false;
  const bool yes =
      host().MsgBox(prompt, kMbQuestionYesNo, s_.gsAppTitle) == kIdYes;
  if (!yes) {
    ReloadShownPhoto(kMbInformation);
  } else if (FolderRefusesWrites(folder)) {
    host().MsgBox(AccessDeniedMessage("Cannot save ", BaseName(dest)), kMbStop,
                  kOwnTitle);
    ReloadShownPhoto(kMbStop);
  } else if (!ctlDisplayImage.SaveShownPhoto(dest) ||
             !GenerateThumbnail(dest)) {
    // The turn is forgotten, though the display still shows it.
    host().MsgBox("Unable to save the rotated photo", kMbStop, s_.gsAppTitle);
  } else if (!new_file) {
    if (ctrlQuilImage.Exists(miClickedPhoto)) {
      Thumbnail& thumb = ctrlQuilImage[miClickedPhoto];
      thumb.LoadThumbnail(s_.gsThumbnailPath);
      thumb.SetPhotoPath(dest);
      thumb.SetToolTipText(FileNamePart(dest));
      s_.glRotationAngle = 0;
      thumb.SelectThumbnail();
    }
  } else {
    arrangethenewlyaddedcontrol(s_.giNextPhotoIndex - 1, dest);
    if (mbEditImageText && ctrlQuilImage.Exists(miClickedPhoto)) {
      s_.glRotationAngle = 0;
      ctrlQuilImage[miClickedPhoto].SelectThumbnail();
    }
  }
  s_.glRotationAngle = 0;
  s_.gbRotationPending = false;
  SetPhotosSelectedCaption();
  SetControlsEnabled();
}

void frmMainWindow::SaveImageFromMenu() {
  if (!s_.gbRotationPending || s_.glRotationAngle == 0) {
    return;
  }
  const std::string folder = WithSeparator(s_.gsSelectedFolder);
  const std::string image = s_.gsSelectedImage;
  const std::string ext = UpperExtension(image);
  std::string dest = image;
  bool new_file = false;
  bool go_on = true;
  if (IsOtherThanJpeg(ext)) {
    dest = folder + GetFixedFileName(image, folder) + ".jpg";
    new_file = true;
  } else if (IsReadOnlyFile(image)) {
    dest = folder + GetFixedFileName(image, folder, ext) + "." + ext;
    new_file = true;
    go_on = host().MsgBox("The file '" + image +
                              "' is a read-only file. The file will save "
                              "with '" +
                              FileNamePart(dest) + "'. Do you want to save?",
                          kMbQuestionYesNo, s_.gsAppTitle) == kIdYes;
  }
  s_.gbRotationPending = false;
  if (!go_on) {
    ReloadShownPhoto(kMbInformation);
  } else if (FolderRefusesWrites(folder)) {
    host().MsgBox(AccessDeniedMessage("Cannot save ", BaseName(dest)), kMbStop,
                  kOwnTitle);
    ReloadShownPhoto(kMbStop);
  } else if (!ctlDisplayImage.SaveShownPhoto(dest)) {
    host().MsgBox("Unable to save the photo", kMbInformation, s_.gsAppTitle);
    ReloadShownPhoto(kMbInformation);
  } else if (!new_file) {
    if (!GenerateThumbnail(image)) {
      host().MsgBox(kThumbnailFailed, kMbStop, s_.gsAppTitle);
    } else if (ctrlQuilImage.Exists(miClickedPhoto)) {
      Thumbnail& thumb = ctrlQuilImage[miClickedPhoto];
      thumb.LoadThumbnail(s_.gsThumbnailPath);
      thumb.SetPhotoPath(dest);
      thumb.SetToolTipText(FileNamePart(dest));
      s_.glRotationAngle = 0;
      thumb.SelectThumbnail();
    }
  } else {
    arrangethenewlyaddedcontrol(s_.giNextPhotoIndex - 1, dest);
    ShowPhotoName(BaseName(dest));
    if (mbEditImageText && ctrlQuilImage.Exists(miClickedPhoto)) {
      s_.glRotationAngle = 0;
      ctrlQuilImage[miClickedPhoto].SelectThumbnail();
    }
  }
  s_.glRotationAngle = 0;
  s_.gbRotationPending = false;
  SetPhotosSelectedCaption();
  SetControlsEnabled();
  (void)ForceDeleteFile(WithSeparator(s_.gsThumbnailFolder) + "temp.Jpg");
}

void frmMainWindow::mnuFSave_Click() {
  const int op = s_.giCurrentOperation;
  if (op == 1 || op == 4 || op == 5) {
    imgApplyChanges_Click();
  } else {
    SaveImageFromMenu();
  }
}

void frmMainWindow::SaveAsImage() {
  SaveDialogCall call;
  call.title = s_.gsAppTitle;
  call.filter = "Pictures(*.jpg)|*.jpg";
  call.default_ext = "jpg";
  call.initial_dir = s_.gsSelectedFolder;
  call.file_name = "Copy of " + BaseName(s_.gsSelectedImage);
  const std::string folder = WithSeparator(s_.gsSelectedFolder);
  std::string dest;
  bool replacement = false;
  while (true) {
    std::optional<std::string> chosen = host().SaveFileDialog(call);
    if (!chosen || chosen->empty()) {
      SetControlsEnabled();
      return;
    }
    const std::string base = BaseName(*chosen);
    if (base.empty() || base.front() == '.') {
      host().MsgBox("Enter valid type file name", kMbInformation,
                    s_.gsAppTitle);
      continue;
    }
    // What is written is always base name + ".jpg"; that is the file that
    // must not be replaced unasked.
    dest = WithSeparator(ParentFolder(*chosen)) + base + ".jpg";
    const std::string name = FileNamePart(dest);
    std::error_code error;
    if (!fs::exists(dest, error)) {
      replacement = false;
      break;
    }
    bool listed = false;
    if (WithSeparator(ParentFolder(dest)) == folder) {
      for (int key : s_.gdicPhotoList.Keys()) {
        listed =
            listed || UpperCase(s_.gdicPhotoList.Item(key)) == UpperCase(dest);
      }
    }
    if (listed) {
      host().MsgBox(name + " already exists.", kMbInformation, s_.gsAppTitle);
      continue;
    }
    if (host().MsgBox(name + " already exists. Do you want to replace it?",
                      kMbQuestionYesNoDefaultNo, s_.gsAppTitle) == kIdYes) {
      replacement = true;
      break;
    }
    // No: the file stays, and the dialog comes again for another name.
  }
  const std::string dest_folder = WithSeparator(ParentFolder(dest));
  if (FolderRefusesWrites(dest_folder)) {
    host().MsgBox(AccessDeniedMessage("Cannot rename ", BaseName(dest)),
                  kMbStop, kOwnTitle);
    SetControlsEnabled();
    return;
  }
  const bool saved = ctlDisplayImage.SaveShownPhoto(dest);
  s_.glRotationAngle = 0;
  s_.gbRotationPending = false;
  if (!saved) {
    host().MsgBox("Unable to save the photo", kMbInformation, s_.gsAppTitle);
  } else {
    (void)app_.images().DeleteThumbnailFile(dest);
    if (dest_folder != folder) {
      ClickThumbnail(miClickedPhoto);
    } else {
      int index = -1;
      if (replacement) {
        for (int key : s_.gdicPhotoList.Keys()) {
          if (s_.gdicPhotoList.Item(key) == dest) {
            index = key;
          }
        }
      }
      if (index < 0) {
        index = s_.giNextPhotoIndex;
        s_.gdicPhotoList.Add(index, dest);
        ++s_.giPhotoCount;
        ++s_.giNextPhotoIndex;
        SetPhotosSelectedCaption();
        LoadaNewControl();
      }
      EnsurePhotoControl(index);
      if (!GenerateThumbnail(dest)) {
        host().MsgBox(kThumbnailFailed, kMbStop, s_.gsAppTitle);
      }
      if (ctrlQuilImage.Exists(index)) {
        Thumbnail& thumb = ctrlQuilImage[index];
        thumb.LoadThumbnail(s_.gsThumbnailPath);
        thumb.SetPhotoPath(dest);
        thumb.SetToolTipText(FileNamePart(dest));
        if (s_.gdicSelectedPhotos.Exists(index)) {
          s_.gdicSelectedPhotos.Remove(index);
          thumb.SetCheck(false, false);
          thumb.SetTag("U");
          SetPhotosSelectedCaption();
        }
      }
      miClickedPhoto = index;
      ClickThumbnail(index);
    }
  }
  ctlDisplayImage.SetVisible(true);
  SetControlsEnabled();
}

}  // namespace qbpd
