#include "camera/card_files.h"

#include "camera/camera_lines.h"
#include "platform/file_transfer.h"

#include <algorithm>
#include <filesystem>

namespace qbpd {
namespace fs = std::filesystem;

std::vector<std::string> ListFolderFiles(const std::string& folder) {
  std::vector<std::string> files;
  std::vector<fs::path> folders{fs::path(folder)};
  for (std::size_t i = 0; i < folders.size(); ++i) {
    std::error_code error;
    fs::directory_iterator it(folders[i], error);
    std::vector<fs::path> subfolders;
    std::vector<fs::path> here;
    for (; !error && it != fs::directory_iterator(); it.increment(error)) {
      std::error_code kind_error;
      const fs::path& path = it->path();
      if (it->is_symlink(kind_error)) {
        continue;
      }
      if (it->is_directory(kind_error)) {
        subfolders.push_back(path);
      } else if (it->is_regular_file(kind_error) &&
                 path.filename().string().rfind('.', 0) != 0) {
        here.push_back(path);
      }
    }
    // A listing's order is the file system's; sorted, a run is repeatable.
    std::sort(subfolders.begin(), subfolders.end());
    std::sort(here.begin(), here.end());
    folders.insert(folders.end(), subfolders.begin(), subfolders.end());
    for (const fs::path& path : here) {
      files.push_back(path.string());
    }
  }
  return files;
}

CardCopyReport CopyFilesInto(const std::vector<std::string>& files,
                             const std::string& destination,
                             bool move,
                             FileTransfer& transfer,
                             const std::function<void()>& after_each) {
  CardCopyReport report;
  std::string folder = destination;
  if (!folder.empty() && folder.back() == '/') {
    folder.pop_back();
  }
  for (const std::string& source : files) {
    const std::string name = fs::path(source).filename().string();
    TransferResult result;
    if (move) {
      std::string target_name = name;
      // Another process may take the free name meanwhile; the move never
      // replaces, so it tries the next one.
      for (int attempt = 0; attempt < 3; ++attempt) {
        target_name = FreeFileName(target_name, [&](const std::string& n) {
          std::error_code ignored;
          return fs::exists(folder + "/" + n, ignored);
        });
        result = transfer.Move(source, folder + "/" + target_name);
        if (result.status != TransferStatus::kTargetExists) {
          break;
        }
      }
      if (result.ok() && target_name != name) {
        ++report.renamed;
      }
    } else {
      result = transfer.Copy(source, folder + "/" + name);
    }
    if (result.ok()) {
      ++report.done;
      if (result.status == TransferStatus::kSourceKept) {
        ++report.kept;
      }
    } else {
      ++report.failed;
      report.errors.push_back(result.error);
    }
    if (after_each) {
      after_each();
    }
  }
  return report;
}

}  // namespace qbpd
