#include "platform/photo_kind.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace qbpd {

PhotoKind SniffPhotoKind(const std::uint8_t* head, std::size_t size) {
  static constexpr std::array<std::uint8_t, 8> kPng = {0x89, 'P',  'N',  'G',
                                                       0x0D, 0x0A, 0x1A, 0x0A};
  if (size >= 3 && head[0] == 0xFF && head[1] == 0xD8 && head[2] == 0xFF) {
    return PhotoKind::kJpeg;
  }
  if (size >= kPng.size() && std::equal(kPng.begin(), kPng.end(), head)) {
    return PhotoKind::kPng;
  }
  if (size >= 4 &&
      ((head[0] == 'I' && head[1] == 'I' && head[2] == 42 && head[3] == 0) ||
       (head[0] == 'M' && head[1] == 'M' && head[2] == 0 && head[3] == 42))) {
    return PhotoKind::kTiff;
  }
  if (size >= 2 && head[0] == 'B' && head[1] == 'M') {
    return PhotoKind::kBmp;
  }
  return PhotoKind::kOther;
}

PhotoKind SniffPhotoFile(const std::string& path) {
  const int fd = OpenPhotoFile(path);
  if (fd < 0) {
    return PhotoKind::kOther;
  }
  std::array<std::uint8_t, 8> head{};
  const ssize_t got = ::pread(fd, head.data(), head.size(), 0);
  ::close(fd);
  return got > 0 ? SniffPhotoKind(head.data(), static_cast<std::size_t>(got))
                 : PhotoKind::kOther;
}

int OpenPhotoFile(const std::string& path) {
  const int fd =
      ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) {
    return -1;
  }
  struct stat info {};
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    ::close(fd);
    errno = EINVAL;
    return -1;
  }
  const int flags = ::fcntl(fd, F_GETFL);
  if (flags < 0 || ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) != 0) {
    ::close(fd);
    return -1;
  }
  return fd;
}

namespace {

// A duplicate of `fd` that reads from the file's start; -1 on failure.
int Rewound(int fd) {
  const int copy = ::fcntl(fd, F_DUPFD_CLOEXEC, 0);
  if (copy >= 0 && ::lseek(copy, 0, SEEK_SET) != 0) {
    ::close(copy);
    return -1;
  }
  return copy;
}

}  // namespace

PhotoStream::PhotoStream(int fd)
    : std::istream(nullptr), buffer_(Rewound(fd), std::ios::in) {
  rdbuf(&buffer_);
  if (!buffer_.is_open()) {
    setstate(std::ios::failbit);
  }
}

namespace {

// Reads the file in `fd` from `offset` on, a block at a time.
class ByteReader {
 public:
  ByteReader(int fd, off_t offset) : fd_(fd), offset_(offset) {}

  // The next byte, or -1 at the end or on an error.
  int Next() {
    if (at_ == size_) {
      const ssize_t got = ::pread(fd_, block_.data(), block_.size(), offset_);
      if (got <= 0) {
        return -1;
      }
      offset_ += got;
      size_ = static_cast<std::size_t>(got);
      at_ = 0;
    }
    return block_[at_++];
  }

  // Skips `count` bytes; false when the file ends first.
  bool Skip(std::size_t count) {
    const std::size_t buffered = std::min(count, size_ - at_);
    at_ += buffered;
    count -= buffered;
    if (count == 0) {
      return true;
    }
    struct stat info {};
    offset_ += static_cast<off_t>(count);
    return ::fstat(fd_, &info) == 0 && offset_ <= info.st_size;
  }

 private:
  int fd_;
  off_t offset_;
  std::array<std::uint8_t, 64 * 1024> block_{};
  std::size_t size_ = 0;
  std::size_t at_ = 0;
};

constexpr int kSoi = 0xD8;
constexpr int kEoi = 0xD9;
constexpr int kSos = 0xDA;

}  // namespace

bool JpegIsWhole(int fd) {
  ByteReader in(fd, 0);
  if (in.Next() != 0xFF || in.Next() != kSoi) {
    return false;
  }
  // The segments before the first scan, each with its length; a thumbnail
  // inside the EXIF segment is skipped whole with it.
  for (;;) {
    int marker = in.Next();
    if (marker != 0xFF) {
      return false;
    }
    while (marker == 0xFF) {  // fill bytes
      marker = in.Next();
    }
    if (marker < 0 || marker == kEoi) {
      return false;
    }
    if ((marker >= 0xD0 && marker <= 0xD7) || marker == 0x01) {
      continue;  // markers without a length
    }
    const int high = in.Next();
    const int low = in.Next();
    if (high < 0 || low < 0 || (high << 8 | low) < 2) {
      return false;
    }
    if (!in.Skip(static_cast<std::size_t>((high << 8 | low) - 2))) {
      return false;
    }
    if (marker == kSos) {
      break;
    }
  }
  // In the compressed data a 0xFF byte is followed by a stuffed 0, a restart
  // marker or another segment's marker; the image ends at the first EOI.
  for (int byte = in.Next(); byte >= 0; byte = in.Next()) {
    if (byte != 0xFF) {
      continue;
    }
    int next = in.Next();
    while (next == 0xFF) {
      next = in.Next();
    }
    if (next == kEoi) {
      return true;
    }
    if (next < 0) {
      return false;
    }
    // A segment between the scans of a progressive JPEG (tables, the next
    // scan's header) is skipped by its length.
    if (next >= 0xC0 && !(next >= 0xD0 && next <= 0xD7)) {
      const int high = in.Next();
      const int low = in.Next();
      if (high < 0 || low < 0 || (high << 8 | low) < 2 ||
          !in.Skip(static_cast<std::size_t>((high << 8 | low) - 2))) {
        return false;
      }
    }
  }
  return false;
}
}  // namespace qbpd
