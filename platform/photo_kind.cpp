#include "platform/photo_kind.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>
#include <zlib.h>

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
    if (at_ == size_ && !Refill()) {
      return -1;
    }
    return block_[at_++];
  }

  // Moves past the next 0xFF byte and returns it; -1 when the file ends
  // first. Compressed data is searched a block at a time, not byte by byte.
  int NextFF() {
    for (;;) {
      if (at_ == size_ && !Refill()) {
        return -1;
      }
      const void* found = std::memchr(block_.data() + at_, 0xFF, size_ - at_);
      if (found != nullptr) {
        at_ = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) -
                                       block_.data()) +
              1;
        return 0xFF;
      }
      at_ = size_;
    }
  }

  // Reads `count` bytes into `out`; false when the file ends first.
  bool Read(std::size_t count, std::vector<std::uint8_t>& out) {
    out.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
      const int byte = Next();
      if (byte < 0) {
        return false;
      }
      out[i] = static_cast<std::uint8_t>(byte);
    }
    return true;
  }

  // A big-endian number of `bytes` bytes; -1 when the file ends first.
  std::int64_t Number(int bytes) {
    std::int64_t value = 0;
    for (int i = 0; i < bytes; ++i) {
      const int byte = Next();
      if (byte < 0) {
        return -1;
      }
      value = value << 8 | byte;
    }
    return value;
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
  bool Refill() {
    const ssize_t got = ::pread(fd_, block_.data(), block_.size(), offset_);
    if (got <= 0) {
      return false;
    }
    offset_ += got;
    size_ = static_cast<std::size_t>(got);
    at_ = 0;
    return true;
  }

  int fd_;
  off_t offset_;
  // Filled before it is read: no need to clear it.
  std::array<std::uint8_t, 64 * 1024> block_;
  std::size_t size_ = 0;
  std::size_t at_ = 0;
};

constexpr int kSoi = 0xD8;
// A Huffman-coded JPEG holds at least one bit for each block's first
// coefficient, 8 blocks a byte; the bound leaves eight times that margin.
constexpr std::uint64_t kBlocksPerByteAtLeast = 64;
constexpr int kEoi = 0xD9;
constexpr int kSos = 0xDA;

// A start-of-frame marker (the DHT, JPG and DAC markers share the range).
bool IsFrameMarker(int marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 &&
         marker != 0xCC;
}

// Whether a JPEG's picture is all in its first scan, as told by its frame
// header and the first scan's header: a sequential Huffman frame whose
// height is given (no DNL marker after the scan) and a first scan of all
// its components. Between such a scan and the end marker no other segment
// belongs.
class SingleScan {
 public:
  // `head`: the frame header's first six bytes (precision, height, width,
  // components) or the scan header's first byte (its components).
  void Note(int marker, std::uint64_t head) {
    if (marker == kSos) {
      scan_components_ = static_cast<int>(head & 0xFF);
      return;
    }
    ++frames_;
    sequential_ = marker == 0xC0 || marker == 0xC1;
    height_ = static_cast<int>((head >> 24) & 0xFFFF);
    frame_components_ = static_cast<int>(head & 0xFF);
  }

  bool whole_picture() const {
    return frames_ == 1 && sequential_ && height_ > 0 &&
           frame_components_ > 0 && scan_components_ == frame_components_;
  }

 private:
  int frames_ = 0;
  bool sequential_ = false;
  int height_ = 0;
  int frame_components_ = 0;
  int scan_components_ = 0;
};

// True when the file's last two bytes are the end-of-image marker.
bool EndsWithEndMarker(int fd) {
  struct stat info {};
  if (::fstat(fd, &info) != 0 || info.st_size < 4) {
    return false;
  }
  std::array<std::uint8_t, 2> tail{};
  return ::pread(fd, tail.data(), tail.size(), info.st_size - 2) == 2 &&
         tail[0] == 0xFF && tail[1] == kEoi;
}

}  // namespace

bool JpegIsWhole(int fd) {
  ByteReader in(fd, 0);
  if (in.Next() != 0xFF || in.Next() != kSoi) {
    return false;
  }
  // The segments before the first scan, each with its length; a thumbnail
  // inside the EXIF segment is skipped whole with it.
  SingleScan single;
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
    std::size_t body = static_cast<std::size_t>((high << 8 | low) - 2);
    if (marker == kSos || IsFrameMarker(marker)) {
      // The first bytes of the frame header or of the scan's header.
      const std::size_t wanted = marker == kSos ? 1 : 6;
      const std::int64_t head =
          body >= wanted ? in.Number(static_cast<int>(wanted)) : -1;
      if (head >= 0) {
        body -= wanted;
        single.Note(marker, static_cast<std::uint64_t>(head));
      }
    }
    if (!in.Skip(body)) {
      return false;
    }
    if (marker == kSos) {
      break;
    }
  }
  // Compressed data of one scan holds no 0xFF 0xD9 but the end marker
  // itself, so a file of one scan cut short can't end with those bytes.
  if (single.whole_picture() && EndsWithEndMarker(fd)) {
    return true;
  }
  // In the compressed data a 0xFF byte is followed by a stuffed 0, a restart
  // marker or another segment's marker; the image ends at the first EOI.
  while (in.NextFF() >= 0) {
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
namespace {

// What a JPEG's frame header says about the work of decoding it.
struct JpegFrame {
  bool progressive = false;
  bool arithmetic = false;
  // 8 x 8 blocks over all components, at their sampling.
  std::uint64_t blocks = 0;
};

// The frame header of the JPEG in `fd`; nullopt when it can't be read.
std::optional<JpegFrame> ReadJpegFrame(int fd) {
  ByteReader in(fd, 0);
  if (in.Next() != 0xFF || in.Next() != kSoi) {
    return std::nullopt;
  }
  for (;;) {
    int marker = in.Next();
    if (marker != 0xFF) {
      return std::nullopt;
    }
    while (marker == 0xFF) {
      marker = in.Next();
    }
    if (marker < 0 || marker == kEoi || marker == kSos) {
      return std::nullopt;
    }
    if ((marker >= 0xD0 && marker <= 0xD7) || marker == 0x01) {
      continue;
    }
    const std::int64_t length = in.Number(2);
    if (length < 2) {
      return std::nullopt;
    }
    // Start-of-frame markers: C0 to CF but for C4 (tables), C8 and CC.
    const bool frame = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 &&
                       marker != 0xC8 && marker != 0xCC;
    if (!frame) {
      if (!in.Skip(static_cast<std::size_t>(length - 2))) {
        return std::nullopt;
      }
      continue;
    }
    JpegFrame frame_info;
    frame_info.progressive =
        marker == 0xC2 || marker == 0xC6 || marker == 0xCA || marker == 0xCE;
    frame_info.arithmetic = marker >= 0xC9;
    in.Next();  // precision
    const std::int64_t height = in.Number(2);
    const std::int64_t width = in.Number(2);
    const int count = in.Next();
    if (height < 0 || width < 0 || count <= 0) {
      return std::nullopt;
    }
    struct Sampling {
      int h, v;
    };
    std::vector<Sampling> sampling;
    int h_max = 1;
    int v_max = 1;
    for (int i = 0; i < count; ++i) {
      in.Next();  // component id
      const int factors = in.Next();
      in.Next();  // quantisation table
      if (factors < 0) {
        return std::nullopt;
      }
      sampling.push_back(
          {std::max(1, factors >> 4), std::max(1, factors & 15)});
      h_max = std::max(h_max, sampling.back().h);
      v_max = std::max(v_max, sampling.back().v);
    }
    for (const Sampling& c : sampling) {
      const std::uint64_t w = (static_cast<std::uint64_t>(width) * c.h +
                               static_cast<std::uint64_t>(h_max) - 1) /
                              static_cast<std::uint64_t>(h_max);
      const std::uint64_t h = (static_cast<std::uint64_t>(height) * c.v +
                               static_cast<std::uint64_t>(v_max) - 1) /
                              static_cast<std::uint64_t>(v_max);
      frame_info.blocks += (w + 7) / 8 * ((h + 7) / 8);
    }
    return frame_info;
  }
}

// Inflates `compressed` (a zlib stream) and adds its size to `total`; false
// as soon as `total` passes the bound or the stream is broken.
bool InflateWithin(const std::vector<std::uint8_t>& compressed,
                   std::uint64_t& total) {
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) {
    return false;
  }
  stream.next_in = const_cast<Bytef*>(compressed.data());
  stream.avail_in = static_cast<uInt>(compressed.size());
  std::array<std::uint8_t, 64 * 1024> out{};
  int status = Z_OK;
  bool within = true;
  while (status == Z_OK && within) {
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    status = inflate(&stream, Z_NO_FLUSH);
    total += out.size() - stream.avail_out;
    within = total <= kMaxPngTextBytes;
    if (status == Z_BUF_ERROR && stream.avail_in == 0) {
      break;  // the stream ends early: libpng's business, not a bomb
    }
  }
  inflateEnd(&stream);
  return within;
}

bool PngTextWithinBudget(int fd) {
  ByteReader in(fd, 8);
  std::uint64_t total = 0;
  std::vector<std::uint8_t> data;
  for (;;) {
    const std::int64_t length = in.Number(4);
    const std::int64_t type = in.Number(4);
    if (length < 0 || type < 0) {
      return true;  // the end of the file; the loader judges the rest
    }
    const bool ztxt = type == 0x7A545874;  // "zTXt"
    const bool itxt = type == 0x69545874;  // "iTXt"
    const bool iccp = type == 0x69434350;  // "iCCP"
    if (type == 0x49454E44) {              // "IEND"
      return true;
    }
    if (!(ztxt || itxt || iccp)) {
      if (!in.Skip(static_cast<std::size_t>(length) + 4)) {
        return true;
      }
      continue;
    }
    if (static_cast<std::uint64_t>(length) > kMaxPngTextBytes * 4 ||
        !in.Read(static_cast<std::size_t>(length), data) || !in.Skip(4)) {
      return static_cast<std::uint64_t>(length) <= kMaxPngTextBytes * 4;
    }
    // The keyword and its zero, then the compression fields.
    auto at = std::find(data.begin(), data.end(), 0);
    if (at == data.end()) {
      continue;
    }
    ++at;
    if (itxt) {
      // Compression flag and method, language tag, translated keyword.
      if (data.end() - at < 2 || *at == 0) {
        continue;
      }
      at += 2;
      for (int field = 0; field < 2 && at != data.end(); ++field) {
        at = std::find(at, data.end(), 0);
        if (at != data.end()) {
          ++at;
        }
      }
    } else if (at != data.end()) {
      ++at;  // compression method
    }
    const std::vector<std::uint8_t> compressed(at, data.end());
    if (!InflateWithin(compressed, total)) {
      return false;
    }
  }
}

}  // namespace

bool WithinDecodeBudget(int fd, PhotoKind kind) {
  switch (kind) {
    case PhotoKind::kJpeg: {
      const std::optional<JpegFrame> frame = ReadJpegFrame(fd);
      struct stat info {};
      if (!frame || ::fstat(fd, &info) != 0) {
        return false;
      }
      // A progressive JPEG is decoded whole: 64 coefficients of two bytes
      // for every block, whatever the scale asked for.
      if (frame->progressive && frame->blocks * 64 * 2 > kMaxDecodeBytes) {
        return false;
      }
      // Huffman coding spends at least a bit on every block's first
      // coefficient; a file far shorter than that claims a picture it does
      // not hold, and its decoder would spend all its time on filling in.
      return frame->arithmetic || static_cast<std::uint64_t>(info.st_size) >=
                                      frame->blocks / kBlocksPerByteAtLeast;
    }
    case PhotoKind::kPng:
      return PngTextWithinBudget(fd);
    case PhotoKind::kTiff:
    case PhotoKind::kBmp:
    case PhotoKind::kOther:
      break;
  }
  return true;
}

}  // namespace qbpd
