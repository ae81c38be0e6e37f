// The end of an edit: applying a panel's change to a new file, cancelling
// it, and deciding what an outside event (a second start with a photo, a
// new camera) does to the operation in hand.
#include "browser/frm_main_window.h"
#include "core/quil_mod.h"
#include "editor/edit_messages.h"
#include "editor/fixed_names.h"
#include "platform/access_check.h"

#include <filesystem>

namespace qbpd {
namespace {

constexpr int kCropOperation = 1;
constexpr int kRedEyeOperation = 4;
constexpr int kColourOperation = 5;
// The path the colour correction is given when it ends without writing; it
// is never used.
constexpr char kUnusedPath[] = "c:\\xxx.jpg";
constexpr char kTooSmall[] =
    "Sorry! Your photo is too small to further crop and then print at this "
    "size";
constexpr char kOwnTitle[] = "Quillbay Picture Desk";
constexpr char kCantView[] =
    "You can view the selected photo after completing or cancelling the "
    "current operation.";

std::string WithSeparator(std::string folder) {
  if (!folder.empty() && folder.back() != '/') {
    folder += '/';
  }
  return folder;
}

}  // namespace

bool frmMainWindow::FolderRefusesWrites(const std::string& folder) const {
  return s_.gbHasAccessChecks &&
         CheckAccess(folder, kFileGenericWrite) != kFileGenericWrite;
}

void frmMainWindow::imgApplyChanges_Click() {
  if (mbCropTooSmall) {
    host().MsgBox(kTooSmall, kMbInformation, s_.gsAppTitle);
    return;
  }
  const int op = s_.giCurrentOperation;
  if (op == kRedEyeOperation && !mbRedEyeRemoved) {
    host().MsgBox(
        "The redeye should be removed first inorder to save the photo",
        kMbInformation, s_.gsAppTitle);
    return;
  }
  imgApplyChanges.SetEnabled(false);
  host().SetMousePointer(kPointerHourglass);
  const std::string folder = WithSeparator(s_.gsSelectedFolder);
  const std::string name = GetFixedFileName(s_.gsSelectedImage, folder);
  if (FolderRefusesWrites(folder)) {
    host().MsgBox(AccessDeniedMessage("Cannot save ", name), kMbStop,
                  kOwnTitle);
    imgCancel_Click();
    imgApplyChanges.SetEnabled(true);
    return;
  }
  const std::string path = folder + name + ".Jpg";
  bool written = false;
  switch (op) {
    case kCropOperation:
      written = ctlDisplayImage.SaveCropped(path);
      break;
    case kRedEyeOperation:
      written = ctlDisplayImage.SaveShownPhoto(path);
      break;
    case kColourOperation:
      written = ctlDisplayImage.FinishCorrection(true, path) != 0;
      break;
    default:
      break;
  }
  std::error_code error;
  if (!written || !std::filesystem::exists(path, error)) {
    host().MsgBox("Error in saving the photo. Please try again", kMbStop,
                  s_.gsAppTitle);
    // The operation ends as after Cancel: the tool and its changes go.
    ctlDisplayImage.ClearEdit();
  } else {
    ctlDisplayImage.ClearEdit();
    picImageListCont.SetVisible(false);
    ctrlImageListVScroll.SetValue(0);
    arrangethenewlyaddedcontrol(s_.giNextPhotoIndex, path);
    ClickThumbnail(s_.giCurrentPhotoIndex);
  }
  if (ctrlQuilImage.Exists(s_.giCurrentPhotoIndex)) {
    ctrlQuilImage[s_.giCurrentPhotoIndex].SetTag("U");
  }
  ShowTopMenus(true, false);
  miSavedZoom = -1;
  mbRedEyeRemoved = false;
  s_.giCurrentOperation = 0;
  SetEditPanel(0);
  host().SetMousePointer(kPointerDefault);
  imgApplyChanges.SetEnabled(true);
  SetPhotosSelectedCaption();
}

void frmMainWindow::imgCancel_Click() {
  host().SetMousePointer(kPointerHourglass);
  const int op = s_.giCurrentOperation;
  if (op == kCropOperation || op == kRedEyeOperation) {
    ctlDisplayImage.ClearEdit();
  } else if (op == kColourOperation) {
    ctlDisplayImage.FinishCorrection(false, kUnusedPath);
  }
  SetEditPanel(0);
  s_.giCurrentOperation = 0;
  host().SetMousePointer(kPointerDefault);
  ShowTopMenus(true, false);
  miSavedZoom = -1;
}

void frmMainWindow::LeaveEditMode() {
  const int op = s_.giCurrentOperation;
  if (op == kCropOperation || op == kRedEyeOperation ||
      op == kColourOperation) {
    imgCancel_Click();
  }
}

void frmMainWindow::EndCurrentOperation(const std::string& prefix,
                                        bool& proceed) {
  // What waits for the screen: a device when the pending text names no
  // photo file.
  const bool device = !IsPhotoExtension(UpperExtension(s_.gsCommandLine));
  auto ask = [&](const std::string& question) {
    return host().MsgBox(prefix + question, kMbQuestionYesNo, s_.gsAppTitle) ==
           kIdYes;
  };
  switch (s_.giCurrentOperation) {
    case 0:
      proceed = true;
      return;
    case kCropOperation:
      if (mbCropTooSmall || !ask("Do you want to crop photo?")) {
        imgCancel_Click();
      } else {
        imgApplyChanges_Click();
      }
      proceed = true;
      return;
    case 2:
    case 3:
      if (s_.gsRotationScope != "M") {
        SaveImage();
        proceed = true;
        return;
      }
      host().MsgBox(device ? "Please reconnect the new device after "
                             "completing the current operation."
                           : kCantView,
                    kMbInformation, s_.gsAppTitle);
      proceed = false;
      return;
    case kRedEyeOperation:
      if (!mbRedEyeRemoved || !ask("Do you want to apply changes?")) {
        imgCancel_Click();
      } else {
        imgApplyChanges_Click();
      }
      proceed = true;
      return;
    case kColourOperation:
      if (ask("Do you want to save corrected photo?")) {
        imgApplyChanges_Click();
      } else {
        imgCancel_Click();
      }
      proceed = true;
      return;
    case 6:
    case 7:
    case 8: {
      const char* dialog = s_.giCurrentOperation == 6   ? "frmPhotoInfo"
                           : s_.giCurrentOperation == 7 ? "frmSlideShow"
                                                        : "frmWallpaper";
      if (Form* form = app_.forms().Find(dialog)) {
        form->Unload();
      }
      s_.giCurrentOperation = 0;
      proceed = true;
      return;
    }
    case 9:
    case 11:
    case 12:
    case 13:
      host().MsgBox(device ? "Please reconnect the new device after "
                             "completing or cancelling the current operation."
                           : kCantView,
                    kMbInformation, s_.gsAppTitle);
      proceed = false;
      return;
    default:
      proceed = false;
      return;
  }
}

}  // namespace qbpd
