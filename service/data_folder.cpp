#include "service/data_folder.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd::service {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kFolderMode = S_IRWXU;          // 0700
constexpr mode_t kFileMode = S_IRUSR | S_IWUSR;  // 0600
constexpr mode_t kPermissionBits = 07777;
constexpr const char* kPartExtension = ".part";

[[noreturn]] void Fail(const std::string& what, const fs::path& path) {
  throw std::runtime_error(what + " " + path.string() + ": " +
                           std::strerror(errno));
}

// Narrows the mode of what `fd` is open on to `mode` when it is wider.
void Narrow(int fd, const struct stat& st, mode_t mode, const fs::path& path) {
  if ((st.st_mode & kPermissionBits) != mode && fchmod(fd, mode) != 0) {
    Fail("cannot make private", path);
  }
}

// Repairs one file or folder without following a link; a link is skipped.
void Repair(const fs::path& path, bool folder) {
  const int fd =
      open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK |
                             (folder ? O_DIRECTORY : 0));
  if (fd < 0) {
    if (errno == ELOOP || errno == ENOENT || errno == ENOTDIR) {
      return;
    }
    Fail("cannot open", path);
  }
  struct stat st {};
  if (fstat(fd, &st) == 0 &&
      (folder ? S_ISDIR(st.st_mode) : S_ISREG(st.st_mode))) {
    try {
      Narrow(fd, st, folder ? kFolderMode : kFileMode, path);
    } catch (...) {
      close(fd);
      throw;
    }
  }
  close(fd);
}

}  // namespace

void MakePrivateFolder(const fs::path& dir) {
  if (mkdir(dir.c_str(), kFolderMode) != 0 && errno != EEXIST) {
    Fail("cannot make the folder", dir);
  }
  // mkdir takes the umask off the mode; the folder is made private anyway.
  Repair(dir, true);
}

void MakePrivateFile(const fs::path& path) {
  const int fd =
      open(path.c_str(),
           O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, kFileMode);
  if (fd < 0) {
    Fail("cannot make the file", path);
  }
  struct stat st {};
  const bool ok = fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
  if (ok) {
    Narrow(fd, st, kFileMode, path);
  }
  close(fd);
  if (!ok) {
    errno = EINVAL;
    Fail("not a plain file:", path);
  }
}

void PrepareDataFolder(const fs::path& dir, std::chrono::seconds part_age) {
  std::error_code ec;
  const fs::path parent = dir.parent_path();
  if (!parent.empty()) {
    fs::create_directories(parent, ec);
  }
  struct stat st {};
  if (stat(dir.c_str(), &st) == 0) {
    if (!S_ISDIR(st.st_mode)) {
      errno = ENOTDIR;
      Fail("the data folder is not a folder:", dir);
    }
    const bool wider = (st.st_mode & kPermissionBits) != kFolderMode;
    if (wider && ((st.st_mode & S_ISVTX) != 0 || st.st_uid != geteuid())) {
      throw std::runtime_error(
          "the data folder " + dir.string() +
          " is shared with other users; give the service a folder of its "
          "own");
    }
  }
  MakePrivateFolder(dir);
  for (const char* name : {"service.db", "service.db-wal", "service.db-shm",
                           "service.db-journal"}) {
    Repair(dir / name, false);
  }
  const fs::path photos = dir / "photos";
  MakePrivateFolder(photos);
  for (auto it = fs::recursive_directory_iterator(photos, ec);
       !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
    const auto status = it->symlink_status(ec);
    if (ec) {
      break;
    }
    if (fs::is_directory(status)) {
      Repair(it->path(), true);
    } else if (fs::is_regular_file(status) &&
               it->path().extension() == kPartExtension) {
      // A photo whose upload stopped half-way, with the service.
      const auto written = fs::last_write_time(it->path(), ec);
      if (!ec && fs::file_time_type::clock::now() - written >= part_age) {
        fs::remove(it->path(), ec);
      }
      // Another instance on the same folder may have removed it first.
      if (ec == std::errc::no_such_file_or_directory) {
        ec.clear();
      }
    } else if (fs::is_regular_file(status)) {
      Repair(it->path(), false);
    }
  }
  if (ec) {
    throw std::runtime_error("cannot read the photos folder " +
                             photos.string() + ": " + ec.message());
  }
}

}  // namespace qbpd::service
