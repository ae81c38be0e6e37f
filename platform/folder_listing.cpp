#include "platform/folder_listing.h"

#include "platform/atomic_file.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd {
namespace {

// The folder's entries one by one, without a path made for each.
class FolderReader {
 public:
  explicit FolderReader(const std::string& folder) {
    const int dir =
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
    if (dir < 0) {
      return;
    }
    listing_ = ::fdopendir(dir);
    if (listing_ == nullptr) {
      ::close(dir);
    }
  }
  ~FolderReader() {
    if (listing_ != nullptr) {
      ::closedir(listing_);
    }
  }
  FolderReader(const FolderReader&) = delete;
  FolderReader& operator=(const FolderReader&) = delete;

  int dir() const { return ::dirfd(listing_); }

  // The next entry other than "." and ".."; null at the end or on a failure.
  const dirent* Next() {
    if (listing_ == nullptr) {
      return nullptr;
    }
    while (const dirent* entry = ::readdir(listing_)) {
      const char* name = entry->d_name;
      if (name[0] == '.' &&
          (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) {
        continue;
      }
      return entry;
    }
    return nullptr;
  }

 private:
  DIR* listing_ = nullptr;
};

// A plain file, or a link to one. The entry's own type is taken when the
// file system gives it; a link or an unknown type is looked up.
bool IsPlainFile(int dir, const dirent& entry) {
  if (entry.d_type == DT_REG) {
    return true;
  }
  if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) {
    return false;
  }
  struct stat info {};
  return ::fstatat(dir, entry.d_name, &info, 0) == 0 && S_ISREG(info.st_mode);
}

}  // namespace

std::vector<std::string> ListPlainFiles(const std::string& folder) {
  std::vector<std::string> names;
  FolderReader reader(folder);
  while (const dirent* entry = reader.Next()) {
    if (RemoveIfStaleTemporaryFile(reader.dir(), entry->d_name)) {
      continue;
    }
    if (IsPlainFile(reader.dir(), *entry)) {
      names.emplace_back(entry->d_name);
    }
  }
  return names;
}

bool HoldsPlainFile(const std::string& folder,
                    const std::function<bool(std::string_view name)>& wanted) {
  FolderReader reader(folder);
  while (const dirent* entry = reader.Next()) {
    // The name first: it costs no call to the file system.
    if (wanted(entry->d_name) && IsPlainFile(reader.dir(), *entry)) {
      return true;
    }
  }
  return false;
}

}  // namespace qbpd
