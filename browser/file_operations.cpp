// Photo file operations of the main window: delete, copy and paste, and the
// grid's bookkeeping when a photo comes or goes. Every operation acts on the
// disk at once; the photo list changes only after the file operation worked.
#include "browser/frm_main_window.h"
#include "core/quil_mod.h"
#include "platform/access_check.h"
#include "platform/clipboard.h"

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>

namespace qbpd {
namespace {

constexpr int kLoadedDuringLoad = 9;
// The inner panel grows by this much for every row of two photos.
constexpr int kPanelRowStep = 1585;
constexpr int kRowGap = 100;
constexpr int kFirstThumbnailTop = 100;

constexpr char kRotatedMustBeSaved[] =
    "Rotated photo must be saved before performing delete operation.";
constexpr char kDeleteCurrent[] =
    "Do you want to permanently delete the current photo?";
constexpr char kDeleteSelected[] =
    "Do you want to permanently delete the selected photo(s)?";
constexpr char kCopyFailed[] =
    "Error in copying the image. The operation could not be completed";
constexpr char kPasteDenied[] =
    "Cannot copy: Access is denied. The source file may be in use.";
constexpr char kNoClipboardImage[] = "Did not find an image in the clipboard";
constexpr char kThumbnailFailed[] = "Error in generating the thumbnail";

// Whether anything, even a dangling link, has that name.
bool NameTaken(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

// A delete that the file system refused; the photo stays in the list.
std::string DeleteDenied(const std::string& path) {
  return "Cannot delete " + FileNamePart(path) +
         ": Access is denied. \r\n\r\nMake sure the disk is not full or "
         "write-protected \r\nand that the file is not currently in use.";
}

int CopyImageToClipboard(Clipboard& clipboard, const std::string& path) {
  return clipboard.SetImageFromFile(path) ? 1 : 0;
}

int PasteImageFromClipboard(Clipboard& clipboard, const std::string& path) {
  if (!clipboard.HasImage()) {
    return 0;
  }
  return clipboard.WriteImageAsJpeg(path) ? 1 : -1;
}

}  // namespace

void frmMainWindow::WireFileOperations() {
  mnuECopy.SetContainer("mnuEdit");
  mnuECopy.SetCaption("&Copy Photo");
  mnuECopy.SetShortcut("Ctrl+C");
  mnuEPaste.SetContainer("mnuEdit");
  mnuEPaste.SetCaption("&Paste Photo");
  mnuEPaste.SetShortcut("Ctrl+V");
  mnuEDelete.SetContainer("mnuEdit");
  mnuEDelete.SetCaption("&Delete");
  mnuEDelSingle.SetContainer("mnuEDelete");
  mnuEDelSingle.SetCaption("&Current Photo");
  mnuEDelSingle.SetShortcut("Ctrl+D");
  mnuEDelMultiple.SetContainer("mnuEDelete");
  mnuEDelMultiple.SetCaption("&All Selected Photo(s)");
  mnuPRename.SetContainer("mnuPhoto");
  mnuPRename.SetCaption("R&ename Photo");
  imgTrash.SetContainer("picTrash");

  On("imgTrash", "Click", &frmMainWindow::imgTrash_Click);
  On("mnuEDelete", "Click", &frmMainWindow::mnuEDelete_Click);
  On("mnuEDelSingle", "Click", &frmMainWindow::mnuEDelSingle_Click);
  On("mnuEDelMultiple", "Click", &frmMainWindow::mnuEDelMultiple_Click);
  On("mnuECopy", "Click", &frmMainWindow::mnuECopy_Click);
  On("mnuEPaste", "Click", &frmMainWindow::mnuEPaste_Click);
  On("mnuPRename", "Click", &frmMainWindow::mnuPRename_Click);
  On("lblDisplayImageName", "DblClick", &frmMainWindow::OpenPhotoName);
  On("picImageText", "DblClick", &frmMainWindow::OpenPhotoName);
  On("txtFileName", "KeyPress", &frmMainWindow::txtFileName_KeyPress);
}

bool frmMainWindow::CheckFileExistence(int index) {
  std::error_code error;
  const bool missing =
      !s_.gdicPhotoList.Exists(index) ||
      !std::filesystem::exists(s_.gdicPhotoList.Item(index), error);
  if (missing) {
    host().MsgBox("Selected photo does not exist", kMbStop, s_.gsAppTitle);
  }
  return missing;
}

// --- delete ------------------------------------------------------------------

void frmMainWindow::imgTrash_Click() {
  if (s_.glRotationAngle != 0) {
    host().MsgBox(kRotatedMustBeSaved, kMbInformation, s_.gsAppTitle);
    return;
  }
  const int selected = s_.gdicSelectedPhotos.Count();
  const bool other_one =
      selected == 1 && !s_.gdicSelectedPhotos.Exists(s_.giCurrentPhotoIndex);
  mnuEDelete_Click();
  if (selected < 2 && !other_one) {
    mnuEDelSingle_Click();
    return;
  }
  // The middle of the button, in the form's coordinates: the button sits in
  // its own box.
  PopupMenu(mnuEDelete,
            picTrash.Left() + imgTrash.Left() + imgTrash.Width() / 2,
            picTrash.Top() + imgTrash.Top() + imgTrash.Height() / 2);
}

void frmMainWindow::mnuEDelete_Click() {
  const int selected = s_.gdicSelectedPhotos.Count();
  mnuEDelSingle.SetEnabled(true);
  mnuEDelMultiple.SetEnabled(
      selected >= 2 ||
      (selected == 1 && !s_.gdicSelectedPhotos.Exists(s_.giCurrentPhotoIndex)));
}

void frmMainWindow::EnsurePhotoControl(int index) {
  if (s_.gdicLoadedControls.Exists(index) && ctrlQuilImage.Exists(index)) {
    return;
  }
  Thumbnail& thumb = ctrlQuilImage.Exists(index) ? ctrlQuilImage[index]
                                                 : ctrlQuilImage.Load(index);
  const std::string& path = s_.gdicPhotoList.Item(index);
  thumb.SetPhotoIndex(index);
  if (s_.gdicSelectedPhotos.Exists(index)) {
    thumb.SetCheck(true, false);
    thumb.SetTag("C");
  } else {
    thumb.SetCheck(false, false);
    thumb.SetTag("U");
  }
  if (!s_.gdicLoadedControls.Exists(index)) {
    s_.gdicLoadedControls.Add(index, "");
  }
  thumb.LoadThumbnail(GenerateThumbnail(path) ? s_.gsThumbnailPath : "");
  thumb.SetPhotoPath(path);
  thumb.SetToolTipText(FileNamePart(path));
  thumb.SetVisible(true);
}

void frmMainWindow::DropPhotoControl(int index) {
  if (ctrlQuilImage.Exists(index)) {
    if (index == 0) {
      // Member 0 stays for the life of the window; it just shows nothing.
      Thumbnail& first = ctrlQuilImage[0];
      first.SetVisible(false);
      first.SetCheck(false, false);
      first.SetTag("U");
      first.LoadThumbnail("");
    } else {
      ctrlQuilImage.Unload(index);
    }
  }
  if (s_.gdicLoadedControls.Exists(index)) {
    s_.gdicLoadedControls.Remove(index);
  }
}

bool frmMainWindow::SelectPhotoAfterDelete(int deleted) {
  if (s_.gdicPhotoList.Count() == 0) {
    return false;
  }
  int next = -1;
  for (int i = deleted + 1; i <= s_.giNextPhotoIndex && next < 0; ++i) {
    if (s_.gdicPhotoList.Exists(i)) {
      next = i;
    }
  }
  for (int i = deleted - 1; i >= 0 && next < 0; --i) {
    if (s_.gdicPhotoList.Exists(i)) {
      next = i;
    }
  }
  if (next < 0) {
    // Keys above giNextPhotoIndex can't be, but the list is what counts.
    next = s_.gdicPhotoList.Keys().front();
  }
  EnsurePhotoControl(next);
  ctrlQuilImage[next].SelectThumbnail();
  return true;
}

void frmMainWindow::mnuEDelSingle_Click() {
  if (mbDeleteBusy) {
    return;
  }
  if (s_.glRotationAngle != 0) {
    host().MsgBox(kRotatedMustBeSaved, kMbInformation, s_.gsAppTitle);
    return;
  }
  const int index = s_.giCurrentPhotoIndex;
  if (!s_.gdicPhotoList.Exists(index)) {
    return;
  }
  const std::string path = s_.gdicPhotoList.Item(index);
  // Busy from the question on: a second Ctrl+D while the box is open must
  // not ask again.
  mbDeleting = true;
  mbDeleteBusy = true;
  const std::string question =
      IsReadOnlyFile(path)
          ? "The file '" + path +
                "' is a read-only file. Are you sure you want to delete it "
                "permanently?"
          : std::string(kDeleteCurrent);
  if (host().MsgBox(question, kMbQuestionYesNo, s_.gsAppTitle) != kIdYes) {
    mbDeleting = false;
    mbDeleteBusy = false;
    return;
  }

  FileResult removed = ForceDeleteFile(path);
  if (!removed.ok()) {
    host().MsgBox(DeleteDenied(path), kMbStop, s_.gsAppTitle);
    mbDeleting = false;
    mbDeleteBusy = false;
    return;
  }
  DropPhotoControl(index);
  if (s_.gbCacheEnable) {
    app_.images().DeleteThumbnailFile(path);
  }
  s_.gdicDeletedIndexes.Set(index, "");
  if (s_.gdicSelectedPhotos.Exists(index)) {
    s_.gdicSelectedPhotos.Remove(index);
  }
  s_.gdicPhotoList.Remove(index);
  --s_.giPhotoCount;

  if (s_.gdicPhotoList.Count() == 0) {
    if (s_.gbCacheEnable) {
      app_.images().DeleteThumbnailFolder(s_.gsSelectedFolder);
    }
    ctrlQuilImage[0].SetVisible(false);
    ctlDisplayImage.SetVisible(false);
    picImageText.SetVisible(false);
    s_.giNextPhotoIndex = 0;
    s_.gdicDeletedIndexes.RemoveAll();
    RemoveRecentFolder(s_.gsSelectedFolder);
  } else {
    SelectPhotoAfterDelete(index);
  }
  RearrangecontrolsafterDelete();
  SetControlsEnabled();
  SetPhotosSelectedCaption();
  mbDeleting = false;
  mbDeleteBusy = false;
}

void frmMainWindow::mnuEDelMultiple_Click() {
  s_.gdicDeletedIndexes.RemoveAll();
  if (!CommitRename()) {
    return;
  }
  SaveImage();
  const int selected = s_.gdicSelectedPhotos.Count();
  if (selected == 0) {
    return;
  }
  if (selected == 1 && s_.gdicSelectedPhotos.Exists(s_.giCurrentPhotoIndex)) {
    mnuEDelSingle_Click();
    return;
  }
  if (selected > 1 || !IsReadOnlyFile(s_.gdicSelectedPhotos.Items().front())) {
    if (host().MsgBox(kDeleteSelected, kMbQuestionYesNo, s_.gsAppTitle) !=
        kIdYes) {
      return;
    }
  }
  mbDeleteBusy = true;
  mbDeleting = true;
  host().SetMousePointer(kPointerHourglass);

  const int shown = s_.giCurrentPhotoIndex;
  for (int key : s_.gdicSelectedPhotos.Keys()) {
    if (!s_.gdicSelectedPhotos.Exists(key)) {
      continue;  // unticked while the events ran
    }
    const std::string path = s_.gdicSelectedPhotos.Item(key);
    if (IsReadOnlyFile(path) &&
        host().MsgBox("The file '" + path +
                          "' is a read-only file. Do you want to delete?",
                      kMbQuestionYesNo, s_.gsAppTitle) != kIdYes) {
      continue;
    }
    FileResult removed = ForceDeleteFile(path);
    if (!removed.ok()) {
      // The folder refuses: the rest would fail alike, so stop here with
      // everything that is left still ticked.
      host().MsgBox(DeleteDenied(path), kMbStop, s_.gsAppTitle);
      break;
    }
    if (s_.gbCacheEnable) {
      app_.images().DeleteThumbnailFile(path);
    }
    s_.gdicDeletedIndexes.Set(key, "");
    if (s_.gdicPhotoList.Exists(key)) {
      s_.gdicPhotoList.Remove(key);
    }
    s_.gdicSelectedPhotos.Remove(key);
    DropPhotoControl(key);
    host().DoEvents();
  }
  s_.giPhotoCount = s_.gdicPhotoList.Count();

  const int left = s_.gdicPhotoList.Count();
  if (left > 0) {
    if (!s_.gdicPhotoList.Exists(shown)) {
      SelectPhotoAfterDelete(shown);
    }
    RearrangecontrolsafterDelete();
    picImagelistInnerCont.SetHeight(PanelHeightFor(left));
    setscrollBar();
  } else {
    ctrlImageListVScroll.SetVisible(false);
    ctrlImageListVScroll.SetValue(0);
    ctrlQuilImage[0].SetVisible(false);
    ctlDisplayImage.SetVisible(false);
    picImageText.SetVisible(false);
    picImagelistInnerCont.SetHeight(picImageListCont.Height() -
                                    cmdImageListHead.Height());
    if (s_.gbCacheEnable) {
      app_.images().DeleteThumbnailFolder(s_.gsSelectedFolder);
    }
    s_.giNextPhotoIndex = 0;
    s_.gdicDeletedIndexes.RemoveAll();
    RemoveRecentFolder(s_.gsSelectedFolder);
  }
  SetPhotosSelectedCaption();
  SetControlsEnabled();
  host().SetMousePointer(kPointerDefault);
  mbDeleting = false;
  mbDeleteBusy = false;
}

// --- copy and paste ----------------------------------------------------------

void frmMainWindow::mnuECopy_Click() {
  if (mbEditImageText) {
    return;
  }
  SaveImage();
  if (CopyImageToClipboard(app_.clipboard(), s_.gsSelectedImage) != 1) {
    host().MsgBox(kCopyFailed, kMbOk, s_.gsAppTitle);
  }
}

void frmMainWindow::mnuEPaste_Click() {
  host().SetMousePointer(kPointerHourglass);
  const std::string folder = s_.gsSelectedFolder;
  std::string candidate;
  for (int n = 1;; ++n) {
    candidate = folder + "Untitled(" + std::to_string(n) + ").jpg";
    if (!NameTaken(candidate)) {
      break;
    }
  }
  if (folder.empty() ||
      (s_.gbHasAccessChecks &&
       CheckAccess(folder, kFileGenericWrite) != kFileGenericWrite)) {
    host().MsgBox(kPasteDenied, kMbStop, s_.gsAppTitle);
    host().SetMousePointer(kPointerDefault);
    return;
  }
  if (PasteImageFromClipboard(app_.clipboard(), candidate) != 1) {
    host().MsgBox(kNoClipboardImage, kMbInformation, s_.gsAppTitle);
    host().SetMousePointer(kPointerDefault);
    return;
  }
  if (!GenerateThumbnail(candidate)) {
    host().SetMousePointer(kPointerDefault);
    return;
  }
  if (s_.gdicPhotoList.Count() == 0) {
    // Control 0 shows the first photo, so an empty list starts at index 0.
    s_.giNextPhotoIndex = 0;
    s_.gdicDeletedIndexes.RemoveAll();
  }
  const int index = s_.giNextPhotoIndex;
  s_.gdicPhotoList.Add(index, candidate);
  ++s_.giNextPhotoIndex;
  ++s_.giPhotoCount;

  if (s_.gdicPhotoList.Count() == 1) {
    lblPhotosSelect.SetVisible(true);
    picImagelistInnerCont.SetVisible(true);
    picImagelistInnerCont.SetTop(cmdImageListHead.Height());
    picImagelistInnerCont.SetHeight(kPanelRowStep);
    Thumbnail& first = ctrlQuilImage[0];
    first.LoadThumbnail(s_.gsThumbnailPath);
    first.SetToolTipText(FileNamePart(candidate));
    first.SetPhotoPath(candidate);
    first.SetPhotoIndex(0);
    first.SetTop(kFirstThumbnailTop);
    first.SetCheck(false, false);
    first.SetTag("U");
    first.SetVisible(true);
    if (!s_.gdicLoadedControls.Exists(0)) {
      s_.gdicLoadedControls.Add(0, "");
    }
    first.SelectThumbnail();
  } else {
    mbNewControlHasPhoto = true;
    LoadaNewControl();
    setscrollBar();
  }
  SetPhotosSelectedCaption();
  SetControlsEnabled();
  host().SetMousePointer(kPointerDefault);
}

// --- the grid's bookkeeping --------------------------------------------------

void frmMainWindow::LoadaNewControl() {
  const int index = s_.giNextPhotoIndex - 1;
  if (index < 0) {
    return;
  }
  Thumbnail& thumb = ctrlQuilImage.Exists(index) ? ctrlQuilImage[index]
                                                 : ctrlQuilImage.Load(index);
  thumb.SetTag("U");
  thumb.SetCheck(false, false);
  thumb.SetVisible(true);
  if (mbNewControlHasPhoto && s_.gdicPhotoList.Exists(index)) {
    const std::string& path = s_.gdicPhotoList.Item(index);
    thumb.LoadThumbnail(s_.gsThumbnailPath);
    thumb.SetPhotoPath(path);
    thumb.SetToolTipText(FileNamePart(path));
    mbNewControlHasPhoto = false;
  }
  if (!mbNoRescroll) {
    // Its place is its position in the list, holes left by deletions not
    // counted, as RearrangecontrolsafterDelete counts.
    thumb.SetPhotoIndex(std::max(s_.gdicPhotoList.Count() - 1, 0));
    PlaceThumbnail(index);
  }
  if (s_.gdicPhotoList.Count() % 2 == 1) {
    picImagelistInnerCont.SetHeight(picImagelistInnerCont.Height() +
                                    kPanelRowStep);
  }
  if (!s_.gdicLoadedControls.Exists(index)) {
    s_.gdicLoadedControls.Add(index, "");
  }
  if (miLastLoadedControl < kLoadedDuringLoad) {
    ++miLastLoadedControl;
  }
}

void frmMainWindow::arrangethenewlyaddedcontrol(int at,
                                                const std::string& path) {
  if (miLastLoadedControl < kLoadedDuringLoad) {
    ++miLastLoadedControl;
  }
  mbNewControlHasPhoto = true;

  PhotoDictionary photos;
  PhotoDictionary selection;
  int counter = 0;
  int new_index = -1;
  for (int key : s_.gdicPhotoList.Keys()) {
    const std::string& item = s_.gdicPhotoList.Item(key);
    photos.Add(counter, item);
    if (s_.gdicSelectedPhotos.Exists(key)) {
      selection.Add(counter, item);
    }
    if (key == at) {
      ++counter;
      photos.Add(counter, path);
      new_index = counter;
    }
    ++counter;
  }
  if (new_index < 0) {
    // `at` isn't in the list: the copy joins at its end.
    new_index = counter;
    photos.Add(counter, path);
  }
  s_.gdicPhotoList = std::move(photos);
  s_.gdicSelectedPhotos = std::move(selection);
  ++s_.giPhotoCount;
  // The list is numbered afresh without holes.
  s_.giNextPhotoIndex = s_.gdicPhotoList.Count();
  s_.gdicDeletedIndexes.RemoveAll();

  if (!GenerateThumbnail(path)) {
    host().MsgBox(kThumbnailFailed, kMbStop, s_.gsAppTitle);
  }
  mbNoRescroll = true;
  RearrangeControls();
  mbNoRescroll = false;
  s_.giCurrentPhotoIndex = new_index;

  const int size = s_.gdicPhotoList.Count();
  const int viewport = picImageListCont.Height() - cmdImageListHead.Height();
  const int row = static_cast<int>(ctrlQuilImage[0].Height()) + kRowGap;
  const int rows_on_view = viewport / row + 1;
  const int first = (at + 1) / 2 - rows_on_view;
  if (size > getMaxNoImgsDisplayed()) {
    setscrollBar();
    ctrlImageListVScroll.SetValue(
        std::clamp(first, 0, ctrlImageListVScroll.Max()));
  }
  if (size % 2 == 1) {
    picImagelistInnerCont.SetHeight(picImagelistInnerCont.Height() +
                                    kPanelRowStep);
  }
  if (ctrlQuilImage.Exists(new_index)) {
    ctrlQuilImage[new_index].SelectThumbnail();
  }
  mbNewControlHasPhoto = false;
}

void frmMainWindow::RearrangeControls() {
  mbScrollSilent = true;
  ctrlImageListVScroll.SetValue(0);
  mbScrollSilent = false;
  for (int index : ctrlQuilImage.Indexes()) {
    if (index != 0) {
      ctrlQuilImage.Unload(index);
    }
  }
  s_.gdicLoadedControls.RemoveAll();

  int position = 0;
  for (int key : s_.gdicPhotoList.Keys()) {
    if (key > miLastLoadedControl) {
      break;
    }
    const std::string& path = s_.gdicPhotoList.Item(key);
    Thumbnail& thumb = key == 0 ? ctrlQuilImage[0] : ctrlQuilImage.Load(key);
    s_.gdicLoadedControls.Add(key, "");
    thumb.SetPhotoIndex(position);
    if (GenerateThumbnail(path)) {
      thumb.LoadThumbnail(s_.gsThumbnailPath);
    } else {
      host().MsgBox(kThumbnailFailed, kMbStop, s_.gsAppTitle);
      thumb.LoadThumbnail("");
    }
    thumb.SetToolTipText(FileNamePart(path));
    thumb.SetPhotoPath(path);
    thumb.SetVisible(true);
    const bool ticked = s_.gdicSelectedPhotos.Exists(key);
    thumb.SetCheck(ticked, false);
    thumb.SetTag(ticked ? "C" : "U");
    PlaceThumbnail(key);
    ++position;
  }
}

void frmMainWindow::RearrangecontrolsafterDelete() {
  int position = 0;
  for (int key : s_.gdicPhotoList.Keys()) {
    if (ctrlQuilImage.Exists(key) && s_.gdicLoadedControls.Exists(key)) {
      ctrlQuilImage[key].SetPhotoIndex(position);
      PlaceThumbnail(key);
    }
    ++position;
  }
}

}  // namespace qbpd
