#ifndef QBPD_PLATFORM_ACCESS_CHECK_H_
#define QBPD_PLATFORM_ACCESS_CHECK_H_

#include <string>

namespace qbpd {

// The write checks and the careful file moves of the photo file operations
// (delete, rename, paste). Paths are full file-system paths.

// The access mask that every write check of the program asks for.
inline constexpr long kFileGenericWrite = 1179926;

// Whether the effective user may write into `path`: for a folder, make and
// remove entries in it (write and search permission); for a file, write it.
// Returns `mask` when so, 0 when not (a missing path, a read-only mount, no
// permission). The answer is the kernel's, so the superuser may write almost
// anywhere.
long CheckAccess(const std::string& path, long mask);

// Whether `path` is a file that this user may not write: its permission bits
// refuse the class the user falls in (owner, group, others) or it lies on a
// read-only mount. The superuser's override is not counted, so a file that
// its owner made read-only shows as read-only to everyone, as a file manager
// shows it. A missing path or a folder is not read-only.
bool IsReadOnlyFile(const std::string& path);

// The outcome of a file operation: `error` is empty on success, else it says
// in words why the operation failed.
struct FileResult {
  std::string error;
  bool ok() const { return error.empty(); }
};

// Removes the file at `path` whatever its permission bits say (a read-only
// file goes too when its folder may be written). Fails for a folder or when
// the folder refuses.
[[nodiscard]] FileResult ForceDeleteFile(const std::string& path);

// Moves `from` to `to` without ever replacing a file that is at `to`: when
// `to` exists (or appears meanwhile) the move fails and both files stay as
// they are. Both paths must lie on one file system.
[[nodiscard]] FileResult MoveFileNoReplace(const std::string& from,
                                           const std::string& to);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_ACCESS_CHECK_H_
