#ifndef QBPD_PLATFORM_ATOMIC_FILE_H_
#define QBPD_PLATFORM_ATOMIC_FILE_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace qbpd {

// A file descriptor that is closed on every path out.
class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : fd_(fd) {}
  ~FileDescriptor();
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  int get() const { return fd_; }
  // Gives the descriptor up without closing it.
  int release() {
    const int fd = fd_;
    fd_ = -1;
    return fd;
  }

 private:
  int fd_;
};

// How WriteFileAtomically treats the target and the disk.
struct AtomicWrite {
  // Replace a file at the target (rename over it); otherwise a file there (or
  // one that appears meanwhile) makes the write fail and stay unmade.
  bool replace = true;
  // Flush the data, and the folder after the rename, to the disk. Derived
  // files that are made again when missing may skip it; a plain file they
  // replace then gives way by an exchange of the two names, which doesn't
  // make the kernel start writing the new data at once as a rename over the
  // old file would (ext4), and after a power cut the new file may be empty.
  bool sync = true;
  // The new file's mode; -1 keeps the replaced file's mode, or gives the
  // usual mode (0666 less the umask) to a new file.
  mode_t mode = static_cast<mode_t>(-1);
};

// Writes `size` bytes at `data` to `target` through a temporary file in the
// same folder that is renamed to its name only once it is whole, so that a
// reader sees the old file or the new one, never half of one. On any failure
// nothing is left behind and the target is as it was.
//
// The temporary file is named ".<name>.qbpd-XXXXXX" (the X's random) and its
// writer holds a lock on it (flock) until it is renamed or removed. A process
// killed in the middle leaves it behind, unlocked: RemoveIfStaleTemporaryFile
// finds it by that.
bool WriteFileAtomically(const std::string& target,
                         const void* data,
                         std::size_t size,
                         const AtomicWrite& how = {});

// Removes the one entry `name` of the open folder `dir` when it is a
// temporary file of WriteFileAtomically that no living writer holds: what a
// crash or a kill in the middle of a write left behind. Files of any other
// naming, links and folders are left alone. True when it went. (Listing a
// folder removes them as it meets them: see ListPlainFiles.)
bool RemoveIfStaleTemporaryFile(int dir, const char* name);

// True when `name` (a file name without folder) has the naming of
// WriteFileAtomically's temporary files.
bool IsTemporaryFileName(std::string_view name);

// Writes all `size` bytes to `fd`, going on after an interrupted write.
bool WriteAll(int fd, const void* data, std::size_t size);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_ATOMIC_FILE_H_
