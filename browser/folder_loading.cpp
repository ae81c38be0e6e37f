// Folder loading: from a click in the folder tree to the photo list, the
// thumbnails of the first photos, and the photo handed over on the command
// line.
#include "browser/frm_main_window.h"
#include "core/quil_mod.h"
#include "platform/folder_listing.h"

#include <algorithm>
#include <filesystem>
#include <utility>
#include <vector>

namespace qbpd {
namespace fs = std::filesystem;
namespace {

// The tree's own name for the desktop.
constexpr std::string_view kDesktop = "Desktop";
// A value of mbMouseDownOnTreeview: a button or key is down in the tree.
constexpr int kTreeButtonDown = 5;
// Thumbnails made during a load; the others come as the grid scrolls.
constexpr int kLoadedDuringLoad = 9;
constexpr int kFirstThumbnailTop = 100;
// The panel grows by this much per row of two photos.
constexpr double kPanelRowStep = 1585;

std::string WithSeparator(std::string path) {
  if (path.empty() || path.back() != '/') {
    path += '/';
  }
  return path;
}

// The name of a folder as the file system gives it; the root's own text when
// it has none.
std::string FolderName(const std::string& folder) {
  fs::path path(folder);
  if (!folder.empty() && folder.back() == '/' && folder.size() > 1) {
    path = fs::path(folder.substr(0, folder.size() - 1));
  }
  std::string name = path.filename().string();
  return name.empty() ? folder : name;
}

// The folder label's text for a folder's name: each "&" doubled, and cut to
// its first 15 whole characters + "..." unless it is shorter than 16.
std::string FolderLabelText(const std::string& name) {
  const std::string doubled = DoubleAmpersands(name);
  return CharacterCount(doubled) < 16 ? doubled
                                      : FirstCharacters(doubled, 15) + "...";
}

}  // namespace

// --- the folder tree ---------------------------------------------------------

void frmMainWindow::ExpTreeView_Down() {
  mbMouseDownOnTreeview = kTreeButtonDown;
}

void frmMainWindow::ExpTreeView_Up() {
  tmrDblClick.SetEnabled(true);
}

void frmMainWindow::ExpTreeView_FolderClick() {
  if (mbFirstLoad) {
    return;
  }
  mbFolderClickPending = true;
  if (mbMouseDownOnTreeview != kTreeButtonDown) {
    tmrDblClick_Timer();
  }
}

void frmMainWindow::tmrDblClick_Timer() {
  tmrDblClick.SetEnabled(false);
  if (!mbFolderClickPending) {
    return;
  }
  mbFolderClickPending = false;
  mbMouseDownOnTreeview = 0;
  if (!s_.gsCommandLine.empty() || mbFirstLoad) {
    SetPhotosSelectedCaption();
    return;
  }
  s_.gsCommandLine.clear();
  tmrExplorer.SetEnabled(false);
  // A rename in progress is committed as Enter would; while the name stays
  // open the tree has moved anyway, but nothing is loaded.
  if (!CommitRename()) {
    tmrExplorer.SetEnabled(s_.gbExplorerTimerOn);
    ExpTreeView.SetFocus();
    return;
  }
  SaveImage();
  lblPhotosSelect.SetCaption("");
  std::error_code ignored;
  if (!s_.gsTempLoc.empty()) {
    fs::remove_all(s_.gsTempLoc + "Thumbnails", ignored);
  }
  mbFolderChanging = true;
  lblPhotosSelect.SetVisible(false);
  ctrlImageListVScroll.SetValue(0);
  ctrlImageListVScroll.SetVisible(false);
  ResetPhotoModel();
  if (mbOpeningFromCommand) {
    // The commanded photo's load fills the grid; the grid must not stay
    // deaf after it.
    mbFolderChanging = false;
    tmrExplorer.SetEnabled(s_.gbExplorerTimerOn);
    return;
  }
  for (Menu* menu : {&mnuFile, &mnuEdit, &mnuPhoto, &mnuView}) {
    menu->SetEnabled(false);
  }
  const std::string selected = ExpTreeView.SelectedFolder();
  ShowFolderLabel(selected);
  std::string folder = WithSeparator(selected);
  s_.gsSelectedFolder =
      folder == std::string(kDesktop) + "/" ? s_.gsDesktopPath : folder;
  std::string to_load =
      s_.gsSelectedFolder.empty() ? selected : s_.gsSelectedFolder;
  bool result = true;
  LoadImagesOnFolderClick(to_load, result);
  mbFolderChanging = false;
  if (s_.gdicPhotoList.Count() > 0) {
    SetPhotosSelectedCaption();
    lblPhotosSelect.SetVisible(true);
  }
  setscrollBar();
  WriteRecentFolder(s_.gsSelectedFolder);
  if (s_.gdicPhotoList.Count() > 0) {
    tmrExplorer.SetEnabled(s_.gbExplorerTimerOn);
  }
  SetControlsEnabled();
  mnuFile.SetEnabled(true);
  mnuEdit.SetEnabled(true);
}

void frmMainWindow::ShowFolderLabel(const std::string& selected) {
  std::string name =
      selected == kDesktop ? std::string(kDesktop) : FolderName(selected);
  lblExpFolderPath.SetCaption(FolderLabelText(name));
}

void frmMainWindow::UnloadGridControls() {
  for (int key : s_.gdicLoadedControls.Keys()) {
    if (key != 0 && ctrlQuilImage.Exists(key)) {
      ctrlQuilImage.Unload(key);
    }
  }
  host().DoEvents();
  s_.gdicPhotoList.RemoveAll();
  s_.gdicLoadedControls.RemoveAll();
  s_.gdicDeletedIndexes.RemoveAll();
  s_.gdicSelectedPhotos.RemoveAll();
}

void frmMainWindow::ResetPhotoModel() {
  UnloadGridControls();
  s_.giNextPhotoIndex = 0;
  s_.giPhotoCount = 0;
}

void frmMainWindow::ResetGrid() {
  Thumbnail& first = ctrlQuilImage[0];
  first.SetVisible(false);
  first.SetCheck(false, false);
  UnloadGridControls();
  picImagelistInnerCont.SetHeight(picImageListCont.Height() -
                                  cmdImageListHead.Height());
  first.SetTop(kFirstThumbnailTop);
  first.SetPhotoIndex(0);
  picImageText.SetVisible(false);
  s_.gsCommandLine.clear();
}

void frmMainWindow::RemakeThumbnailFolder() {
  if (s_.gsTempLoc.empty()) {
    return;
  }
  std::error_code ignored;
  fs::remove_all(s_.gsTempLoc + "Thumbnails", ignored);
  MakeFolders(s_.gsTempLoc + "Thumbnails", 0700);
}

// --- the load ----------------------------------------------------------------

Twips frmMainWindow::PanelHeightFor(int photos) {
  const double rows = photos % 2 == 1 ? photos / 2.0 + 1 : photos / 2;
  return rows * kPanelRowStep;
}

bool frmMainWindow::GenerateThumbnail(const std::string& source) {
  if (s_.gbCacheEnable) {
    std::string buffer(1000, ' ');
    int made = app_.images().GenerateThumbnailAndBuffer(
        source, buffer, kThumbnailSize, kThumbnailQuality);
    if (made == 1) {
      if (size_t at = buffer.find(".qpd"); at != std::string::npos) {
        buffer.resize(at + 4);
      }
    }
    s_.gsThumbnailPath = buffer;
    return made != 0;
  }
  s_.gsThumbnailPath = s_.gsThumbnailFolder + FileNamePart(source) + ".jpg";
  return app_.images().GenerateThumbnailExt(source, s_.gsThumbnailPath,
                                            kThumbnailSize,
                                            kThumbnailQuality) == 1;
}

bool frmMainWindow::AdoptThumbnail(const std::string& source,
                                   const std::string& made) {
  if (s_.gbCacheEnable) {
    return GenerateThumbnail(source);
  }
  s_.gsThumbnailPath = s_.gsThumbnailFolder + FileNamePart(source) + ".jpg";
  std::error_code error;
  if (made.empty()) {
    return false;
  }
  fs::rename(made, s_.gsThumbnailPath, error);
  if (error) {
    fs::remove(made, error);
    return GenerateThumbnail(source);
  }
  return true;
}

void frmMainWindow::LoadImagesOnFolderClick(std::string& folder, bool& result) {
  result = true;
  s_.gbLoadInProgress = true;
  host().SetMousePointer(kPointerHourglass);
  picExplorerCont.SetEnabled(false);

  int index = 0;
  if (mbCommandFolderLoad && mbCommandPhotoOk) {
    index = 1;
  } else if (mbCommandFolderLoad) {
    host().MsgBox(
        "Failed to load the selected photo. The rest of the photos in the "
        "folder are being loaded.",
        kMbInformation, s_.gsAppTitle);
    ResetGrid();
  } else {
    SaveImage();
    ResetGrid();
    RemakeThumbnailFolder();
  }
  picImagelistInnerCont.SetTop(cmdImageListHead.Height());

  // The folder's plain files, read once; what a write killed half-way left
  // here goes as it is met. Each with its sort key, made once: by name, as
  // people expect to browse a folder, regardless of case (names that differ
  // only in case by the name itself). Every path starts with the same
  // folder, so the names alone give the order the whole paths would.
  std::vector<std::pair<std::string, std::string>> keyed;
  {
    std::vector<std::string> names = ListPlainFiles(folder);
    keyed.reserve(names.size());
    for (std::string& name : names) {
      keyed.emplace_back(UpperCase(name), std::move(name));
    }
  }
  std::sort(keyed.begin(), keyed.end());
  const std::string prefix =
      folder.empty() || folder.back() == '/' ? folder : folder + '/';
  std::vector<std::string> files;
  files.reserve(keyed.size());
  for (const auto& [key, name] : keyed) {
    files.push_back(prefix + name);
  }
  miFileCount = static_cast<int>(files.size());
  auto finish_empty = [&] {
    lblPhotosSelect.SetCaption("No photo(s) exists.");
    lblPhotosSelect.SetVisible(true);
    host().SetMousePointer(kPointerDefault);
    picImagelistInnerCont.SetVisible(false);
    picExplorerCont.SetEnabled(true);
    s_.gbLoadInProgress = false;
  };
  if (miFileCount < 1) {
    finish_empty();
    SetControlsEnabled();
    return;
  }

  const std::string commanded = UpperCase(s_.gsCommandLine);
  // The thumbnails of the first photos may be made on the second core while
  // this loop makes the others.
  std::vector<std::string> first_photos;
  for (const std::string& path : files) {
    if (first_photos.size() > static_cast<size_t>(kLoadedDuringLoad)) {
      break;
    }
    if ((commanded.empty() || commanded != UpperCase(path)) &&
        HasPhotoExtension(path)) {
      first_photos.push_back(path);
    }
  }
  app_.images().PrepareThumbnails(first_photos, kThumbnailSize,
                                  kThumbnailQuality);
  // The first of them goes on display: its decoding starts now, beside
  // the thumbnails.
  if (index == 0 && !first_photos.empty()) {
    ctlDisplayImage.PrepareLoad({first_photos.front()});
  }
  bool past_ten = false;
  for (const std::string& path : files) {
    if (s_.gbQuitRequested) {
      s_.gbLoadInProgress = false;
      result = false;
      return;
    }
    if (!commanded.empty() && commanded == UpperCase(path)) {
      continue;
    }
    if (!HasPhotoExtension(path)) {
      continue;
    }
    if (past_ten) {
      s_.gdicPhotoList.Add(index, path);
    } else {
      lblPhotosSelect.SetVisible(true);
      picImagelistInnerCont.SetVisible(true);
      if (GenerateThumbnail(path)) {
        s_.gdicPhotoList.Add(index, path);
        s_.gdicLoadedControls.Add(index, "");
        Thumbnail& thumb = index > 0 ? (ctrlQuilImage.Exists(index)
                                            ? ctrlQuilImage[index]
                                            : ctrlQuilImage.Load(index))
                                     : ctrlQuilImage[0];
        thumb.SetPhotoIndex(index);
        if (index > 0) {
          PlaceThumbnail(index);
        }
        thumb.LoadThumbnail(s_.gsThumbnailPath);
        thumb.SetPhotoPath(path);
        thumb.SetToolTipText(FileNamePart(path));
        thumb.SetVisible(true);
        thumb.SetTag("U");
        if (index == 0) {
          // The load's own choice of its first photo is no grid event of
          // the user's, and goes through while the folder changes.
          mbLoadSelectsFirst = true;
          thumb.SelectThumbnail();
          mbLoadSelectsFirst = false;
          host().SetMousePointer(kPointerHourglass);
        }
        host().DoEvents();
      } else {
        // The photo is left out, and the next one takes its index.
        if (ctrlQuilImage.Exists(index)) {
          ctrlQuilImage[index].SetVisible(false);
        }
        --index;
      }
      if (index == kLoadedDuringLoad) {
        miLastLoadedControl = kLoadedDuringLoad;
        past_ten = true;
      } else {
        miLastLoadedControl = std::max(index, 0);
      }
    }
    ++index;
    picImagelistInnerCont.SetVisible(true);
    if (s_.gbQuitRequested) {
      s_.gbLoadInProgress = false;
      result = false;
      return;
    }
  }

  picExplorerCont.SetEnabled(true);
  s_.giNextPhotoIndex = index;
  s_.giPhotoCount = index;
  picImagelistInnerCont.SetHeight(PanelHeightFor(index));
  if (index != 0) {
    s_.giPhotoCount = s_.gdicPhotoList.Count();
    SetControlsEnabled();
    setscrollBar();
    picImagelistInnerCont.SetVisible(true);
    SetPhotosSelectedCaption();
    host().SetMousePointer(kPointerDefault);
    s_.gbLoadInProgress = false;
    PrepareNextPhoto();
    return;
  }
  finish_empty();
  ctrlImageListVScroll.SetVisible(false);
  SetControlsEnabled();
  SetPhotosSelectedCaption();
}

// --- a photo handed over on the command line
// -----------------------------------

void frmMainWindow::OpenCommandImage() {
  std::string path = GetLongPathName(s_.gsCommandLine);
  if (path.empty()) {
    path = s_.gsCommandLine;
  }
  s_.gdicSelectedPhotos.RemoveAll();
  for (int key : s_.gdicLoadedControls.Keys()) {
    if (!ctrlQuilImage.Exists(key)) {
      continue;
    }
    Thumbnail& thumb = ctrlQuilImage[key];
    if (key > 0) {
      mdicStaleControls.Set(key, "");
      thumb.SetVisible(false);
    } else {
      thumb.SetVisible(false);
      thumb.SetCheck(false, false);
      thumb.SetTag("U");
    }
  }
  if (ctrlImageListVScroll.Visible()) {
    ctrlImageListVScroll.SetValue(0);
    picImagelistInnerCont.SetTop(cmdImageListHead.Height());
    picImagelistInnerCont.SetHeight(picImageListCont.Height() -
                                    cmdImageListHead.Height());
    RemakeThumbnailFolder();
  }
  s_.giNextPhotoIndex = 0;

  std::string load_folder;
  if (!FileNamePart(path).empty()) {
    mbOpeningFromCommand = true;
    Thumbnail& first = ctrlQuilImage[0];
    first.LoadThumbnail("");
    first.SetVisible(false);
    first.SetCheck(false, false);
    first.SetTag("U");
    s_.gdicPhotoList.RemoveAll();
    s_.gdicLoadedControls.RemoveAll();
    s_.gdicSelectedPhotos.RemoveAll();
    s_.giPhotoCount = 1;
    // A "~" is an ordinary character of a name: a path that exists is its
    // own long form and opens like any other; only one that doesn't exist
    // is shown as a bare view of its folder.
    std::error_code missing;
    if (path.find('~') != std::string::npos &&
        !fs::exists(s_.gsCommandLine, missing)) {
      mbCommandFolderLoad = false;
      std::string parent = GetLongPathName(ParentFolder(path));
      if (parent.size() >= 2 && parent.substr(parent.size() - 2) == "/.") {
        parent.resize(parent.size() - 2);
      }
      s_.gsSelectedFolder = parent;
    } else {
      mbOpeningFromCommand = false;
      if (!GenerateThumbnail(path)) {
        mbCommandPhotoOk = false;
        mbCommandFolderLoad = false;
        s_.gsSelectedFolder = ParentFolder(path);
      } else {
        mbCommandPhotoOk = true;
        s_.gsSelectedImage = path;
        s_.gdicPhotoList.Add(0, path);
        s_.gdicLoadedControls.Add(0, "");
        ++s_.giNextPhotoIndex;
        first.LoadThumbnail(s_.gsThumbnailPath);
        first.SetPhotoPath(path);
        first.SetPhotoIndex(0);
        first.SetToolTipText(FileNamePart(path));
        first.SetTop(kFirstThumbnailTop);
        first.SetVisible(true);
        first.SelectThumbnail();
        picImagelistInnerCont.SetVisible(true);
        picImagelistInnerCont.SetTop(cmdImageListHead.Height());
        s_.gsSelectedFolder = ParentFolder(path);
        mbCommandFolderLoad = true;
      }
    }
    lblExpFolderPath.SetCaption(
        s_.gsDesktopPath == s_.gsSelectedFolder + "/"
            ? std::string(kDesktop)
            : FolderLabelText(FolderName(s_.gsSelectedFolder)));
    load_folder = s_.gsSelectedFolder;
    const std::string upper = UpperCase(load_folder);
    const std::string cache = UpperCase(GetInternetCachePath(app_));
    const std::string temp = UpperCase(GetLongPathName(s_.gsTempLoc));
    const bool in_cache = upper.find(cache) != std::string::npos;
    const bool in_temp = !temp.empty() && upper.find(temp) != std::string::npos;
    if (!in_cache && !in_temp) {
      bool result = true;
      LoadImagesOnFolderClick(load_folder, result);
    }
  }
  mbCommandFolderLoad = false;
  lblPhotosSelect.SetCaption("0 of " + std::to_string(s_.giPhotoCount) +
                             " photo(s) selected");
  lblPhotosSelect.SetVisible(true);
  lblExpFolderPath.SetVisible(true);
  mbOpeningFromCommand = false;
  SetControlsEnabled();
  if (UpperCase(load_folder).find(UpperCase(GetInternetCachePath(app_))) ==
      std::string::npos) {
    WriteRecentFolder(s_.gsSelectedFolder);
  }
  // The tree shows the photo's folder. Its folder click loads nothing while
  // the command line is set, as it is throughout this routine.
  if (!s_.gsCommandLine.empty() && !s_.gsSelectedFolder.empty()) {
    const std::string shown = WithSeparator(s_.gsSelectedFolder);
    ExpTreeView.SetSelectedFolder(
        shown == s_.gsDesktopPath ? std::string(kDesktop) : shown);
  }
  if (ExpTreeView.SelectedFolder() != kDesktop) {
    ShowFolderLabel(ExpTreeView.SelectedFolder().empty()
                        ? s_.gsSelectedFolder
                        : ExpTreeView.SelectedFolder());
  }
}

void frmMainWindow::RefreshCurrentFolder() {
  if (!CommitRename()) {
    return;
  }
  SaveImage();
  if (!ExpTreeView.Visible()) {
    ExpTreeView.SetVisible(true);
    mbExplorerOpen = true;
  }
  std::error_code ignored;
  if (!s_.gsTempLoc.empty()) {
    fs::remove_all(s_.gsTempLoc + "Thumbnails", ignored);
  }
  mbFolderChanging = true;
  lblPhotosSelect.SetVisible(false);
  ctrlImageListVScroll.SetValue(0);
  ctrlImageListVScroll.SetVisible(false);
  for (int key : s_.gdicLoadedControls.Keys()) {
    if (key != 0 && ctrlQuilImage.Exists(key)) {
      ctrlQuilImage.Unload(key);
    }
  }
  Thumbnail& first = ctrlQuilImage[0];
  first.SetVisible(false);
  first.SetCheck(false, false);
  first.SetTag("U");
  picImageText.SetVisible(false);
  host().DoEvents();
  s_.gdicPhotoList.RemoveAll();
  s_.gdicLoadedControls.RemoveAll();
  s_.gdicDeletedIndexes.RemoveAll();
  s_.gdicSelectedPhotos.RemoveAll();
  s_.giNextPhotoIndex = 0;
  s_.giPhotoCount = 0;
  if (!mbOpeningFromCommand) {
    for (Menu* menu : {&mnuFile, &mnuEdit, &mnuPhoto, &mnuView}) {
      menu->SetEnabled(false);
    }
    bool result = true;
    std::string folder = s_.gsSelectedFolder;
    LoadImagesOnFolderClick(folder, result);
    mbFolderChanging = false;
    if (s_.gdicPhotoList.Count() > 0) {
      lblPhotosSelect.SetVisible(true);
    }
    setscrollBar();
    if (s_.gdicPhotoList.Count() > 0) {
      WriteRecentFolder(s_.gsSelectedFolder);
    }
    SetControlsEnabled();
    mnuFile.SetEnabled(true);
    mnuEdit.SetEnabled(true);
  }
  mbFolderChanging = false;
  tmrExplorer.SetEnabled(s_.gbExplorerTimerOn);
}

}  // namespace qbpd
