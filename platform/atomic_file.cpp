#include "platform/atomic_file.h"

#include "platform/access_check.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd {

namespace {

constexpr char kTemporaryMark[] = ".qbpd-";
constexpr std::size_t kRandomPart = 6;  // mkostemp's "XXXXXX"
constexpr int kTemporaryAttempts = 3;

// Makes and locks a new temporary file for `folder` and `name`; its path goes
// to `temp`. -1 on failure.
int MakeLockedTemporary(const std::string& folder,
                        const std::string& name,
                        std::string& temp) {
  for (int attempt = 0; attempt < kTemporaryAttempts; ++attempt) {
    temp = folder + "/." + name + kTemporaryMark + "XXXXXX";
    const int fd = ::mkostemp(temp.data(), O_CLOEXEC);
    if (fd < 0) {
      return -1;
    }
    // Between mkostemp and the lock another process's clean-up may have
    // taken the file for a stale one and removed it; then make another.
    struct stat info {};
    if (::flock(fd, LOCK_EX) == 0 && ::fstat(fd, &info) == 0 &&
        info.st_nlink > 0) {
      return fd;
    }
    ::close(fd);
  }
  return -1;
}

// Gives `temp` the name `target`, in place of the plain file there, by
// exchanging the two names and removing the old file under its new name:
// readers see the old file or the new one, as with a rename over it. On
// ext4 a rename over a file makes the kernel start writing the new file's
// data at once (its guard for writers that skip fsync), which costs a small
// file's write many times over; an exchange doesn't. False when the names
// can't be exchanged (no file at the target any more, a file system without
// exchanges) or the target turns out to be no plain file, with both names
// as they were.
bool ExchangeWithOld(const std::string& temp, const std::string& target) {
  if (::renameat2(AT_FDCWD, temp.c_str(), AT_FDCWD, target.c_str(),
                  RENAME_EXCHANGE) != 0) {
    return false;
  }
  // Gone already: a clean-up took the old file, unlocked under the
  // temporary name, for a stale one.
  if (::unlink(temp.c_str()) == 0 || errno == ENOENT) {
    return true;
  }
  // A folder that took the target's place meanwhile: exchanged back, it
  // fails the plain rename as it always did.
  ::renameat2(AT_FDCWD, temp.c_str(), AT_FDCWD, target.c_str(),
              RENAME_EXCHANGE);
  return false;
}

}  // namespace

bool IsTemporaryFileName(std::string_view name) {
  const std::size_t mark = std::strlen(kTemporaryMark);
  return name.size() > 1 + mark + kRandomPart && name[0] == '.' &&
         name.compare(name.size() - kRandomPart - mark, mark, kTemporaryMark) ==
             0;
}

bool RemoveIfStaleTemporaryFile(int dir, const char* name) {
  if (!IsTemporaryFileName(name)) {
    return false;
  }
  const int fd =
      ::openat(dir, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    return false;
  }
  struct stat info {};
  struct stat named {};
  // Only a plain file that no writer holds, and still the one of that name,
  // goes; it is removed while the lock keeps writers off.
  const bool removed = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) &&
                       ::flock(fd, LOCK_EX | LOCK_NB) == 0 &&
                       ::fstatat(dir, name, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
                       named.st_ino == info.st_ino &&
                       named.st_dev == info.st_dev &&
                       ::unlinkat(dir, name, 0) == 0;
  ::close(fd);
  return removed;
}

FileDescriptor::~FileDescriptor() {
  if (fd_ >= 0) {
    ::close(fd_);
  }
}

bool WriteAll(int fd, const void* data, std::size_t size) {
  const auto* p = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = ::write(fd, p, size);
    if (written < 0) {
      if (errno == EINTR) {
        continue;
      }
      return false;
    }
    p += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

bool WriteFileAtomically(const std::string& target,
                         const void* data,
                         std::size_t size,
                         const AtomicWrite& how) {
  const std::size_t slash = target.rfind('/');
  const std::string folder = slash == std::string::npos ? std::string(".")
                             : slash == 0               ? std::string("/")
                                          : target.substr(0, slash);
  const std::string name =
      slash == std::string::npos ? target : target.substr(slash + 1);
  if (name.empty()) {
    return false;
  }
  std::string temp;
  const int fd = MakeLockedTemporary(folder, name, temp);
  if (fd < 0) {
    return false;
  }
  mode_t mode = how.mode;
  struct stat old_info {};
  const bool old_file = how.replace &&
                        ::lstat(target.c_str(), &old_info) == 0 &&
                        S_ISREG(old_info.st_mode);
  if (mode == static_cast<mode_t>(-1)) {
    if (old_file || (how.replace && ::stat(target.c_str(), &old_info) == 0)) {
      mode = old_info.st_mode & 07777;
    } else {
      const mode_t mask = ::umask(0);
      ::umask(mask);
      mode = 0666 & ~mask;
    }
  }
  // The lock stays on a second descriptor of the file until the file has
  // its final name or is gone, so no clean-up takes it for a stale one.
  const FileDescriptor lock(::dup(fd));
  bool ok = lock.get() >= 0 && ::fchmod(fd, mode) == 0 &&
            WriteAll(fd, data, size) && (!how.sync || ::fsync(fd) == 0);
  ok = ::close(fd) == 0 && ok;
  if (ok && !how.replace) {
    ok = MoveFileNoReplace(temp, target).ok();
  } else if (ok) {
    // A synced file has no data left for the kernel to start writing: the
    // plain rename costs it nothing.
    const bool exchanged =
        old_file && !how.sync && ExchangeWithOld(temp, target);
    ok = exchanged || ::rename(temp.c_str(), target.c_str()) == 0;
  }
  if (!ok) {
    ::unlink(temp.c_str());
    return false;
  }
  if (how.sync) {
    // The rename itself is made durable by flushing the folder.
    const int dir = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
      ::fsync(dir);
      ::close(dir);
    }
  }
  return true;
}

}  // namespace qbpd
