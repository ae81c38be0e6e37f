#include "platform/access_check.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

std::string ErrnoText(const std::string& what, int error) {
  return what + ": " + std::strerror(error);
}

bool InGroup(gid_t gid) {
  if (getegid() == gid) {
    return true;
  }
  const int count = getgroups(0, nullptr);
  if (count <= 0) {
    return false;
  }
  std::vector<gid_t> groups(static_cast<std::size_t>(count));
  const int got = getgroups(count, groups.data());
  for (int i = 0; i < got; ++i) {
    if (groups[static_cast<std::size_t>(i)] == gid) {
      return true;
    }
  }
  return false;
}

// The folder that holds `path`, for an fsync after a move.
std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) {
    return ".";
  }
  return slash == 0 ? std::string("/") : path.substr(0, slash);
}

// A rename is durable only once its folder is on the disk. Failing here
// changes nothing that the caller could act on, so it is not reported.
void SyncFolder(const std::string& folder) {
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd >= 0) {
    ::fsync(fd);
    ::close(fd);
  }
}

}  // namespace

long CheckAccess(const std::string& path, long mask) {
  struct stat status {};
  if (path.empty() || ::stat(path.c_str(), &status) != 0) {
    return 0;
  }
  const int wanted = S_ISDIR(status.st_mode) ? (W_OK | X_OK) : W_OK;
  return ::faccessat(AT_FDCWD, path.c_str(), wanted, AT_EACCESS) == 0 ? mask
                                                                      : 0;
}

bool IsReadOnlyFile(const std::string& path) {
  struct stat status {};
  if (path.empty() || ::stat(path.c_str(), &status) != 0 ||
      S_ISDIR(status.st_mode)) {
    return false;
  }
  if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
    return errno == EACCES || errno == EROFS || errno == EPERM;
  }
  mode_t bit = S_IWOTH;
  if (status.st_uid == geteuid()) {
    bit = S_IWUSR;
  } else if (InGroup(status.st_gid)) {
    bit = S_IWGRP;
  }
  return (status.st_mode & bit) == 0;
}

FileResult ForceDeleteFile(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) {
    return {ErrnoText("Cannot delete " + path, errno)};
  }
  if (S_ISDIR(status.st_mode)) {
    return {"Cannot delete " + path + ": it is a folder"};
  }
  // unlink(2) asks only the folder, so the file's own read-only bits don't
  // stand in the way: that is the forced delete.
  if (::unlink(path.c_str()) != 0) {
    return {ErrnoText("Cannot delete " + path, errno)};
  }
  SyncFolder(FolderOf(path));
  return {};
}

FileResult MoveFileNoReplace(const std::string& from, const std::string& to) {
  if (from.empty() || to.empty()) {
    return {"Cannot move a file without a name"};
  }
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(),
                  RENAME_NOREPLACE) == 0) {
    SyncFolder(FolderOf(to));
    return {};
  }
  const int rename_error = errno;
  if (rename_error != EINVAL && rename_error != ENOSYS) {
    return {ErrnoText("Cannot move " + from + " to " + to, rename_error)};
  }
  // A file system without the no-replace flag: a hard link also refuses an
  // existing target, and the old name is dropped once the new one stands.
  if (::link(from.c_str(), to.c_str()) == 0) {
    if (::unlink(from.c_str()) != 0) {
      const int unlink_error = errno;
      ::unlink(to.c_str());
      return {ErrnoText("Cannot move " + from + " to " + to, unlink_error)};
    }
    SyncFolder(FolderOf(to));
    return {};
  }
  const int link_error = errno;
  if (link_error == EEXIST) {
    return {ErrnoText("Cannot move " + from + " to " + to, EEXIST)};
  }
  if (link_error != EPERM && link_error != EOPNOTSUPP) {
    return {ErrnoText("Cannot move " + from + " to " + to, link_error)};
  }
  // Neither is offered (a FAT card, say): check, then rename. Such file
  // systems are used by one program at a time in practice.
  struct stat status {};
  if (::lstat(to.c_str(), &status) == 0) {
    return {ErrnoText("Cannot move " + from + " to " + to, EEXIST)};
  }
  if (::rename(from.c_str(), to.c_str()) != 0) {
    return {ErrnoText("Cannot move " + from + " to " + to, errno)};
  }
  SyncFolder(FolderOf(to));
  return {};
}

}  // namespace qbpd
