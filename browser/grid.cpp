// The grid of thumbnails: where each one stands, the scroll bar and the
// thumbnails it brings into view, the selection, and what a click on a
// thumbnail shows.
#include "browser/frm_main_window.h"
#include "core/quil_mod.h"
#include "platform/forms/keys.h"

#include <algorithm>
#include <filesystem>

namespace qbpd {
namespace {

// The row step of a thumbnail's Top is its height plus this gap.
constexpr int kRowGap = 100;
constexpr int kRightColumnLeft = 1585;
constexpr int kScrollPauseMs = 10;
// The name strip keeps this much of the display's width free.
constexpr int kNameMargin = 500;
constexpr int kNameLeft = 250;
constexpr int kBackground = 206;

// Removes the last character of UTF-8 text: its continuation bytes, then the
// byte that starts it.
void PopLastCharacter(std::string& text) {
  while (!text.empty() &&
         (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80) {
    text.pop_back();
  }
  if (!text.empty()) {
    text.pop_back();
  }
}

}  // namespace

// --- geometry ----------------------------------------------------------------

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
  const int row = static_cast<int>(ctrlQuilImage[0].Height()) + kRowGap;
  return (viewport / row) * 2;
}

bool frmMainWindow::setscrollBar() {
  const int m = getMaxNoImgsDisplayed();
  const int n = s_.gdicPhotoList.Count();
  if (n <= m) {
    const bool was_visible = ctrlImageListVScroll.Visible();
    ctrlImageListVScroll.SetVisible(false);
    picImagelistInnerCont.SetTop(cmdImageListHead.Height());
    host().DoEvents();
    if (was_visible) {
      LoadVisibleThumbnails(0);
    }
    return false;
  }
  ctrlImageListVScroll.SetMax(n % 2 == 0 ? n / 2 - m / 2 : (n / 2 + 1) - m / 2);
  const int v = ctrlQuilImage.Exists(s_.giCurrentPhotoIndex)
                    ? ctrlQuilImage[s_.giCurrentPhotoIndex].PhotoIndex()
                    : 0;
  const int first = 2 * ctrlImageListVScroll.Value();
  if (v < first || v > first + m) {
    ctrlImageListVScroll.SetValue(std::min(v / 2, ctrlImageListVScroll.Max()));
  }
  ctrlImageListVScroll.SetVisible(true);
  return true;
}

void frmMainWindow::RestoreExplorerTimer() {
  if (mbExplorerOpen) {
    tmrExplorer.SetEnabled(s_.gbExplorerTimerOn);
  }
}

// --- scrolling ---------------------------------------------------------------

void frmMainWindow::ctrlImageListVScroll_Change() {
  if (mbScrollSilent || mbFolderChanging) {
    return;
  }
  tmrExplorer.SetEnabled(false);
  const int value = ctrlImageListVScroll.Value();
  if (value >= 1) {
    picImagelistInnerCont.SetTop(cmdImageListHead.Height() -
                                 (ctrlQuilImage[0].Height() + kRowGap) * value);
  } else {
    picImagelistInnerCont.SetTop(cmdImageListHead.Height());
  }
  LoadVisibleThumbnails(value);
  host().Sleep(kScrollPauseMs);
  RestoreExplorerTimer();
}

Thumbnail& frmMainWindow::LoadThumbnailControl(int i) {
  Thumbnail& thumb =
      ctrlQuilImage.Exists(i) ? ctrlQuilImage[i] : ctrlQuilImage.Load(i);
  thumb.SetPhotoIndex(i);
  thumb.SetVisible(true);
  return thumb;
}

bool frmMainWindow::ShowThumbnailOf(Thumbnail& thumb, const std::string& path) {
  bool shown = false;
  if (!s_.gbCacheEnable) {
    const std::string file = s_.gsThumbnailFolder + FileNamePart(path) + ".jpg";
    std::error_code error;
    if (std::filesystem::exists(file, error) || GenerateThumbnail(path)) {
      thumb.LoadThumbnail(file);
      shown = true;
    }
  } else if (GenerateThumbnail(path)) {
    thumb.LoadThumbnail(s_.gsThumbnailPath);
    shown = true;
  }
  thumb.SetPhotoPath(path);
  thumb.SetToolTipText(FileNamePart(path));
  return shown;
}

void frmMainWindow::LoadVisibleThumbnails(int value) {
  // The holes that deletions left push the first photo on view further.
  int first = 2 * value;
  for (int i = 1; i <= first - 1; ++i) {
    if (s_.gdicDeletedIndexes.Exists(i)) {
      ++first;
    }
  }
  int last = first + getMaxNoImgsDisplayed() + 2;
  for (int i = first; i <= last; ++i) {
    if (!s_.gdicPhotoList.Exists(i)) {
      ++last;
      if (i > s_.giNextPhotoIndex) {
        break;
      }
      continue;
    }
    if (s_.gdicLoadedControls.Exists(i)) {
      continue;
    }
    Thumbnail& thumb = LoadThumbnailControl(i);
    if (s_.gdicSelectedPhotos.Exists(i)) {
      thumb.SetCheck(true, false);
      thumb.SetTag("C");
    } else {
      thumb.SetTag("U");
    }
    s_.gdicLoadedControls.Add(i, "");
    ShowThumbnailOf(thumb, s_.gdicPhotoList.Item(i));
    PlaceThumbnail(i);
    host().DoEvents();
    if (i > s_.giNextPhotoIndex) {
      break;
    }
  }
}

void frmMainWindow::SetVertScrollValue() {
  if (!ctrlImageListVScroll.Visible()) {
    return;
  }
  const int m = getMaxNoImgsDisplayed();
  const int value = ctrlImageListVScroll.Value();
  const int index = s_.giCurrentPhotoIndex;
  if (index >= 2 * value && index <= 2 * value + m - 1) {
    return;
  }
  // (index + 1) / 2, rounded up.
  const int row = (index + 2) / 2;
  if (index < 2 * value) {
    ctrlImageListVScroll.SetValue(std::min(row, ctrlImageListVScroll.Max()));
  } else {
    // The current photo goes to the last row on view.
    ctrlImageListVScroll.SetValue(
        std::clamp(row - m / 2, 0, ctrlImageListVScroll.Max()));
  }
}

// --- a click on a thumbnail --------------------------------------------------

bool frmMainWindow::CommitRename() {
  if (mbEditImageText) {
    EventArgs enter;
    enter.KeyAscii = kKeyReturn;
    Raise(txtFileName, "KeyPress", enter);
  }
  return !mbEditImageText;
}

void frmMainWindow::ctrlQuilImage_Click(EventArgs& e) {
  const int i = e.Index;
  if (mbFolderChanging && !mbLoadSelectsFirst) {
    e.Handled = false;
    return;
  }
  tmrExplorer.SetEnabled(false);
  if (!CommitRename()) {
    RestoreExplorerTimer();
    e.Handled = false;
    return;
  }
  host().SetMousePointer(kPointerHourglass);
  mbInSaveCheck = true;
  SaveImage();
  mbInSaveCheck = false;

  miClickedPhoto = i;
  s_.gsSelectedImage =
      s_.gdicPhotoList.Exists(i) ? s_.gdicPhotoList.Item(i) : std::string();
  ctlDisplayImage.SetBackRed(kBackground);
  ctlDisplayImage.SetBackGreen(kBackground);
  ctlDisplayImage.SetBackBlue(kBackground);

  std::error_code error;
  if (s_.gsSelectedImage.empty() ||
      !std::filesystem::exists(s_.gsSelectedImage, error)) {
    RepairMissingPhoto();
    e.Handled = true;
    return;
  }

  ctlDisplayImage.SetVisible(false);
  if (ctlDisplayImage.Width() != picDisplayImageCont.Width() - 50) {
    ctlDisplayImage.SetWidth(picDisplayImageCont.Width() - 50);
    ctlDisplayImage.SetHeight(picDisplayImageCont.Height() * 14 / 15);
  }
  if (!ctlDisplayImage.LoadPhoto(s_.gsSelectedImage)) {
    host().MsgBox("Unable to display the photo", kMbInformation, s_.gsAppTitle);
  }
  bool zoomed = false;
  if (msZoomMode != "O") {
    mbFitToWidth = true;
    zoomed = ctlDisplayImage.ZoomFitToWidth();
  } else {
    mbFitToWidth = false;
    zoomed = ctlDisplayImage.ZoomTo(100);
  }
  if (!zoomed) {
    host().MsgBox("Error in loading the selected photo.", kMbStop,
                  s_.gsAppTitle);
  }
  ShowZoomLevel(ctlDisplayImage.ZoomPercent());
  ctlDisplayImage.SetScaleBase(100);
  ShowPhotoName(BaseName(s_.gsSelectedImage));
  s_.glRotationAngle = 0;
  s_.gbRotationPending = false;
  SetRotationMenus();

  // The photo that was current until now loses its frame, and leaves the
  // selection unless its box is ticked.
  const int old = s_.giCurrentPhotoIndex;
  if (!mbDeleting && old != i && old <= s_.giNextPhotoIndex &&
      s_.gdicPhotoList.Exists(old) && ctrlQuilImage.Exists(old)) {
    Thumbnail& previous = ctrlQuilImage[old];
    if (previous.Tag() != "C") {
      if (s_.gdicSelectedPhotos.Exists(old)) {
        s_.gdicSelectedPhotos.Remove(old);
      }
      previous.SetTag("U");
      previous.ReleaseThumbnail(true);
    } else {
      previous.ReleaseThumbnail(false);
    }
  }

  // Bring the thumbnail into view.
  const int m = getMaxNoImgsDisplayed();
  const int value = ctrlImageListVScroll.Value();
  const int p = ctrlQuilImage.Exists(i) ? ctrlQuilImage[i].PhotoIndex() : i;
  if (p < 2 * value || p > 2 * value + m) {
    if (s_.gdicPhotoList.Count() > m) {
      int found = 0;
      for (int v = value; v <= ctrlImageListVScroll.Max(); ++v) {
        if (p >= 2 * v && p < 2 * v + m) {
          found = v;
          break;
        }
      }
      ctrlImageListVScroll.SetValue(found);
    }
  }

  s_.giCurrentPhotoIndex = i;
  ctlDisplayImage.SetVisible(true);
  picImageText.SetVisible(true);
  host().SetMousePointer(kPointerDefault);
  picImageListCont.SetFocus();
  setscrollBar();
  RestoreExplorerTimer();
  e.Handled = true;
  if (ctrlQuilImage.Exists(s_.giCurrentPhotoIndex)) {
    ctrlQuilImage[s_.giCurrentPhotoIndex].MarkCurrent();
  }
  // During a load the second core makes thumbnails; the load's end asks.
  if (!s_.gbLoadInProgress) {
    PrepareNextPhoto();
  }
  host().DoEvents();
}

void frmMainWindow::RepairMissingPhoto() {
  s_.gdicSelectedPhotos.RemoveAll();
  if (s_.gdicPhotoList.Count() > 0) {
    std::string folder = s_.gsSelectedFolder;
    bool result = true;
    LoadImagesOnFolderClick(folder, result);
    if (!ctrlQuilImage[0].Visible()) {
      RefreshCurrentFolder();
    } else {
      ctrlQuilImage[0].SelectThumbnail();
    }
  }
  RestoreExplorerTimer();
  host().SetMousePointer(kPointerDefault);
}

// --- the selection -----------------------------------------------------------

void frmMainWindow::ctrlQuilImage_CheckClick(int index) {
  if (mbFolderChanging && ctrlQuilImage.Exists(index)) {
    // Nothing changes while the folder changes: the tick goes back.
    Thumbnail& thumb = ctrlQuilImage[index];
    thumb.SetCheck(thumb.Tag() == "C", false);
    return;
  }
  if (s_.gdicPhotoList.Count() == 0 || !ctrlQuilImage.Exists(index)) {
    return;
  }
  Thumbnail& thumb = ctrlQuilImage[index];
  if (thumb.Tag() == "C") {
    if (s_.gdicSelectedPhotos.Exists(index)) {
      s_.gdicSelectedPhotos.Remove(index);
    }
    thumb.SetTag("U");
  } else {
    thumb.SetTag("C");
    if (!s_.gdicSelectedPhotos.Exists(index) &&
        s_.gdicPhotoList.Exists(index)) {
      s_.gdicSelectedPhotos.Add(index, s_.gdicPhotoList.Item(index));
    }
  }
  SetPhotosSelectedCaption();
  picImageListCont.SetFocus();
}

void frmMainWindow::imgSelectAll_Click() {
  if (!CommitRename()) {
    return;
  }
  if (s_.gdicPhotoList.Count() == 0) {
    return;
  }
  host().SetMousePointer(kPointerHourglass);
  SaveImage();
  s_.gdicSelectedPhotos.RemoveAll();
  for (int key : s_.gdicPhotoList.Keys()) {
    s_.gdicSelectedPhotos.Add(key, s_.gdicPhotoList.Item(key));
  }
  // Only the loaded controls are ticked now; the others get their tick when
  // they are loaded.
  for (int key : s_.gdicLoadedControls.Keys()) {
    if (ctrlQuilImage.Exists(key)) {
      ctrlQuilImage[key].SetCheck(true, false);
      ctrlQuilImage[key].SetTag("C");
    }
  }
  SetPhotosSelectedCaption();
  host().SetMousePointer(kPointerDefault);
}

void frmMainWindow::imgClear_Click() {
  if (!CommitRename()) {
    return;
  }
  if (s_.gdicSelectedPhotos.Count() == 0) {
    return;
  }
  SaveImage();
  for (int key : s_.gdicSelectedPhotos.Keys()) {
    if (s_.gdicLoadedControls.Exists(key) && ctrlQuilImage.Exists(key)) {
      ctrlQuilImage[key].SetCheck(false, false);
      ctrlQuilImage[key].SetTag("U");
    }
  }
  s_.gdicSelectedPhotos.RemoveAll();
  SetPhotosSelectedCaption();
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

// --- stepping through the list -----------------------------------------------

int frmMainWindow::FindNextPhotoIndex(int start, int step) const {
  const auto& list = s_.gdicPhotoList;
  if (list.Count() == 0) {
    return -1;
  }
  const int end = s_.giNextPhotoIndex;
  if (step < 0) {
    for (int i = start + step; i >= 0; --i) {
      if (list.Exists(i)) {
        return i;
      }
    }
    for (int i = end - 1; i >= 0; --i) {
      if (list.Exists(i)) {
        return i;
      }
    }
  } else {
    for (int i = start + step; i < end; ++i) {
      if (list.Exists(i)) {
        return i;
      }
    }
    for (int i = 0; i < end; ++i) {
      if (list.Exists(i)) {
        return i;
      }
    }
  }
  return -1;
}

// --- the arrow keys
// ------------------------------------------------------------

void frmMainWindow::Form_KeyUp(int& KeyCode, int Shift) {
  (void)Shift;
  int step = 0;
  switch (KeyCode) {
    case kKeyLeft:
      step = -1;
      break;
    case kKeyUp:
      step = -2;
      break;
    case kKeyRight:
      step = 1;
      break;
    case kKeyDown:
      step = 2;
      break;
    default:
      return;
  }
  const int op = s_.giCurrentOperation;
  if (op == 1 || op == 4 || op == 5 || mbArrowKeyBusy || mbEditImageText) {
    return;
  }
  MoveInGrid(step);
}

void frmMainWindow::MoveInGrid(int step) {
  mbArrowKeyBusy = true;
  SaveImage();
  if (s_.gdicPhotoList.Count() < 2) {
    mbArrowKeyBusy = false;
    return;
  }
  const int next = FindNextPhotoIndex(s_.giCurrentPhotoIndex, step);
  if (next >= 0) {
    if (!s_.gdicLoadedControls.Exists(next)) {
      Thumbnail& thumb = LoadThumbnailControl(next);
      if (!ShowThumbnailOf(thumb, s_.gdicPhotoList.Item(next))) {
        host().MsgBox("Error in generating the thumbnail", kMbStop,
                      s_.gsAppTitle);
        mbArrowKeyBusy = false;
        return;
      }
      thumb.SetTag("U");
      s_.gdicLoadedControls.Add(next, "");
      PlaceThumbnail(next);
    }
    ctrlQuilImage[next].SelectThumbnail();
    s_.giCurrentPhotoIndex = next;
    // Scroll so that the photo is on view.
    const int p = ctrlQuilImage[next].PhotoIndex();
    const int m = getMaxNoImgsDisplayed();
    const int value = ctrlImageListVScroll.Value();
    if (p < 2 * value || p > 2 * value + m - 1) {
      if (p + 1 <= m) {
        ctrlImageListVScroll.SetValue(0);
      } else {
        const int d = p + 1 - m;
        ctrlImageListVScroll.SetValue(std::min(d % 2 == 0 ? d / 2 : d / 2 + 1,
                                               ctrlImageListVScroll.Max()));
      }
    }
  }
  mbArrowKeyBusy = false;
  picImageListCont.SetFocus();
}

// --- the name strip under the display ----------------------------------------

void frmMainWindow::ShowPhotoName(const std::string& name) {
  txtFileName.SetTag(name);
  const Font& font = txtFileName.font();
  const int room = picDisplayImageCont.Width() - kNameMargin;
  std::string shown;
  // Characters are added while the text fits; once it doesn't, characters
  // come off its end until "..." fits behind it.
  size_t at = 0;
  while (at < name.size()) {
    size_t next = at + 1;
    // Keep a UTF-8 sequence whole.
    while (next < name.size() &&
           (static_cast<unsigned char>(name[next]) & 0xC0) == 0x80) {
      ++next;
    }
    std::string longer = shown + name.substr(at, next - at);
    if (host().TextWidth(longer, font) >= room) {
      while (!shown.empty() && host().TextWidth(shown + "...", font) >= room) {
        PopLastCharacter(shown);
      }
      shown += "...";
      break;
    }
    shown = std::move(longer);
    at = next;
  }
  txtFileName.SetText(shown);
  picImageText.SetWidth(picDisplayImageCont.Width());
  picImageText.SetHeight(txtFileName.Height() + 40);
  txtFileName.SetLeft(kNameLeft);
  txtFileName.SetWidth(picImageText.Width() - kNameMargin);
  lblDisplayImageName.SetLeft(kNameLeft);
  lblDisplayImageName.SetWidth(picImageText.Width() - kNameMargin);
  lblDisplayImageName.SetCaption(DoubleAmpersands(shown));
  lblDisplayImageName.SetVisible(true);
  txtFileName.SetVisible(false);
}

// --- the state of the commands -----------------------------------------------

void frmMainWindow::SetControlsEnabled() {
  const int n = s_.gdicPhotoList.Count();
  const bool any = n > 0;
  for (Control* c : std::initializer_list<Control*>{
           &imgSelectAll, &imgClear,        &imgScrSaver,  &imgSlideShow,
           &imgUpload,    &imgShare,        &imgOrdPrints, &picManipCont,
           &picTrash,     &mnuFSave,        &mnuFSaveAs,   &mnuFUpload,
           &mnuFShare,    &mnuFOrderPrints, &mnuEUndo,     &mnuECopy,
           &mnuEDelete,   &mnuESelectAll,   &mnuEClear,    &mnuView,
           &mnuPhoto}) {
    c->SetEnabled(any);
  }
  picImageFlow.SetEnabled(n >= 2);
  SetRotationMenus();
  for (Control* c : std::initializer_list<Control*>{
           &imgHorzSplit, &mnuFGetPhotos, &mnuFGetCameraPhotos, &mnuEPaste,
           &mnuEPref}) {
    c->SetEnabled(true);
  }
}

}  // namespace qbpd
