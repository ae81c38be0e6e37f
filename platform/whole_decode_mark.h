#ifndef QBPD_PLATFORM_WHOLE_DECODE_MARK_H_
#define QBPD_PLATFORM_WHOLE_DECODE_MARK_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace qbpd {

// What tells one state of a file from every other: a file written, replaced,
// copied over or touched in any way gets another change time or inode, and
// the change time can't be set back by anyone but the kernel.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::int64_t modified_ns = 0;
  std::int64_t changed_ns = 0;
  bool operator==(const FileIdentity&) const = default;
};

FileIdentity IdentityOf(const struct stat& status);
// The identity of the file at `path` now; nothing when it is no plain file.
std::optional<FileIdentity> IdentityOfPath(const std::string& path);

// Whether the file's last change lies in a tick of the file system's clock
// that has passed: only then does any later change give it another change
// time, also where file times are coarse (a few milliseconds).
bool ChangedBeforeNow(const FileIdentity& identity);

// A cached thumbnail may carry a mark that says its photo was decoded whole,
// with the strictness the photo view has, while the photo had `identity`: a
// comment segment right after the JPEG's start. The photo view takes such a
// thumbnail as a stand-in while it decodes the photo, certain the decoding
// will not refuse the file. The mark is only for the program's own cache:
// a thumbnail written anywhere else goes without it.

// `jpeg` with the mark put in; `jpeg` unchanged when it is no JPEG.
std::vector<std::uint8_t> WithWholeDecodeMark(std::vector<std::uint8_t> jpeg,
                                              const FileIdentity& identity);
// The identity the mark records; nothing without a well-formed mark.
std::optional<FileIdentity> ReadWholeDecodeMark(const std::uint8_t* jpeg,
                                                std::size_t size);
// `jpeg` without its mark (unchanged when it has none).
std::vector<std::uint8_t> WithoutWholeDecodeMark(
    std::vector<std::uint8_t> jpeg);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_WHOLE_DECODE_MARK_H_
