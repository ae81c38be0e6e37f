// The recent folders: kept in the settings, shown at the foot of the File
// menu, and the start folder of the next run.
#include "browser/frm_main_window.h"
#include "core/quil_mod.h"
#include "platform/folder_listing.h"

#include <filesystem>

namespace qbpd {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view kDesktop = "Desktop";
constexpr size_t kMaxFolderText = 255;

std::string WithoutSeparator(std::string path) {
  if (path.size() > 1 && path.back() == '/') {
    path.pop_back();
  }
  return path;
}

bool IsFolder(const std::string& path) {
  std::error_code error;
  return !path.empty() && fs::is_directory(path, error);
}

// The file list's pattern: the photo types, but not ".tif".
bool MatchesFileList(std::string_view path) {
  std::string ext = UpperExtension(path);
  for (std::string_view type : {"JPG", "JPEG", "JPE", "BMP", "PNG", "TIFF"}) {
    if (ext == type) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool frmMainWindow::FolderHoldsPhotos(const std::string& folder) {
  return HoldsPlainFile(folder, MatchesFileList);
}

void frmMainWindow::LoadRecentFolders() {
  const std::string key = s_.gsPrefKey + "Display";
  s_.giNoOfRecentFolders = std::atoi(
      DropTrailingNul(app_.settings().Read(key, "NoOfRecentFolders")).c_str());
  for (int n = 1; n <= s_.giNoOfRecentFolders; ++n) {
    std::string folder = WithoutSeparator(DropTrailingNul(
        app_.settings().Read(key, "RecentFolder" + std::to_string(n))));
    if (IsFolder(folder) && FolderHoldsPhotos(folder) &&
        !mcolRecentFolders.Exists(folder)) {
      mcolRecentFolders.Add(folder, folder);
    }
  }
}

std::string frmMainWindow::RecentFolderEntry(std::string folder) const {
  if (folder == kDesktop) {
    folder = s_.gsDesktopPath;
  }
  return WithoutSeparator(folder);
}

void frmMainWindow::ForgetRecentFolder(const std::string& entry) {
  for (int i = 1; i <= mcolRecentFolders.Count(); ++i) {
    if (mcolRecentFolders.Item(i) == entry) {
      mcolRecentFolders.Remove(i);
      break;
    }
  }
}

void frmMainWindow::WriteRecentFolder(std::string folder) {
  if (folder.size() > kMaxFolderText) {
    return;
  }
  folder = RecentFolderEntry(folder);
  if (!folder.empty()) {
    ForgetRecentFolder(folder);
    // The keys ignore case: a folder written otherwise goes too.
    if (mcolRecentFolders.Exists(folder)) {
      mcolRecentFolders.Remove(folder);
    }
    if (mcolRecentFolders.Count() == 0) {
      mcolRecentFolders.Add(folder, folder);
    } else {
      mcolRecentFolders.Add(folder, folder, /*before=*/1);
    }
    if (!FolderHoldsPhotos(folder)) {
      mcolRecentFolders.Remove(folder);
    }
  }
  while (mcolRecentFolders.Count() > std::max(s_.giNoOfRecentFolders, 0)) {
    mcolRecentFolders.Remove(mcolRecentFolders.Count());
  }
  for (int i = mcolRecentFolders.Count(); i >= 1; --i) {
    if (!IsFolder(mcolRecentFolders.Item(i))) {
      mcolRecentFolders.Remove(i);
    }
  }

  const std::string key = s_.gsPrefKey + "Display";
  // A failed write costs only the list of the next run.
  if (s_.giNoOfRecentFolders < 1) {
    for (int n = 1; n <= mcolRecentFolders.Count(); ++n) {
      (void)app_.settings().Write(key, "RecentFolder" + std::to_string(n), "");
    }
  } else {
    int n = 1;
    for (; n <= mcolRecentFolders.Count(); ++n) {
      (void)app_.settings().Write(key, "RecentFolder" + std::to_string(n),
                                  mcolRecentFolders.Item(n));
    }
    for (; n <= s_.giNoOfRecentFolders; ++n) {
      (void)app_.settings().Write(key, "RecentFolder" + std::to_string(n), "");
    }
  }

  const int count = mcolRecentFolders.Count();
  if (count == 0) {
    for (int index : mnuFRecFolders.Indexes()) {
      if (index != 0) {
        mnuFRecFolders.Unload(index);
      }
    }
    mnuFRecFolders[0].SetVisible(false);
    mnuFSep2.SetVisible(false);
    return;
  }
  for (int n = 0; n < count; ++n) {
    const std::string& path = mcolRecentFolders.Item(n + 1);
    Menu& entry =
        mnuFRecFolders.Exists(n) ? mnuFRecFolders[n] : mnuFRecFolders.Load(n);
    std::string name = fs::path(path).filename().string();
    if (name.empty()) {
      name = path;
    }
    entry.SetCaption(DoubleAmpersands(name) + " &" + std::to_string(n + 1));
    entry.SetTag(path.back() == '/' ? path : path + "/");
    entry.SetVisible(true);
  }
  for (int index : mnuFRecFolders.Indexes()) {
    if (index >= count) {
      mnuFRecFolders.Unload(index);
    }
  }
  mnuFSep2.SetVisible(true);
}

void frmMainWindow::RemoveRecentFolder(std::string folder) {
  folder = RecentFolderEntry(folder);
  if (!folder.empty()) {
    ForgetRecentFolder(folder);
  } else {
    while (mcolRecentFolders.Count() > std::max(s_.giNoOfRecentFolders, 0)) {
      mcolRecentFolders.Remove(mcolRecentFolders.Count());
    }
  }
  WriteRecentFolder("");
}

void frmMainWindow::mnuFRecFolders_Click(int index) {
  std::string folder = mnuFRecFolders[index].Tag();
  if (folder.empty() || folder.back() != '/') {
    folder += '/';
  }
  ExpTreeView.SetSelectedFolder(
      folder == s_.gsDesktopPath ? std::string(kDesktop) : folder);
  SetPhotosSelectedCaption();
}

}  // namespace qbpd
