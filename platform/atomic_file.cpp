#include "platform/atomic_file.h"

#include "platform/access_check.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd {

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
  std::string temp = folder + "/." + name + ".XXXXXX";
  const int fd = ::mkostemp(temp.data(), O_CLOEXEC);
  if (fd < 0) {
    return false;
  }
  mode_t mode = how.mode;
  if (mode == static_cast<mode_t>(-1)) {
    struct stat old_info {};
    if (how.replace && ::stat(target.c_str(), &old_info) == 0) {
      mode = old_info.st_mode & 07777;
    } else {
      const mode_t mask = ::umask(0);
      ::umask(mask);
      mode = 0666 & ~mask;
    }
  }
  bool ok = ::fchmod(fd, mode) == 0 && WriteAll(fd, data, size) &&
            (!how.sync || ::fsync(fd) == 0);
  ok = ::close(fd) == 0 && ok;
  if (ok) {
    ok = how.replace ? ::rename(temp.c_str(), target.c_str()) == 0
                     : MoveFileNoReplace(temp, target).ok();
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
