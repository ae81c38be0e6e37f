#include "platform/image_header.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

// Where the header's bytes come from: a file or a buffer in memory.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  // Reads up to `size` bytes at `offset`; how many it read.
  virtual std::size_t ReadUpTo(std::uint64_t offset,
                               std::uint8_t* out,
                               std::size_t size) const = 0;
  // Reads exactly `size` bytes at `offset`; false when the source is shorter.
  bool ReadAt(std::uint64_t offset, std::uint8_t* out, std::size_t size) const {
    return ReadUpTo(offset, out, size) == size;
  }
};

class FileSource : public ByteSource {
 public:
  explicit FileSource(int fd) : fd_(fd) {}
  std::size_t ReadUpTo(std::uint64_t offset,
                       std::uint8_t* out,
                       std::size_t size) const override {
    std::size_t done = 0;
    while (done < size) {
      const ssize_t got = ::pread(fd_, out + done, size - done,
                                  static_cast<off_t>(offset + done));
      if (got <= 0) {
        break;
      }
      done += static_cast<std::size_t>(got);
    }
    return done;
  }

 private:
  int fd_;
};

class MemorySource : public ByteSource {
 public:
  explicit MemorySource(std::string_view bytes) : bytes_(bytes) {}
  std::size_t ReadUpTo(std::uint64_t offset,
                       std::uint8_t* out,
                       std::size_t size) const override {
    if (offset >= bytes_.size()) {
      return 0;
    }
    const std::size_t n = std::min<std::uint64_t>(size, bytes_.size() - offset);
    std::memcpy(out, bytes_.data() + offset, n);
    return n;
  }

 private:
  std::string_view bytes_;
};

bool ReadAt(const ByteSource& source,
            std::uint64_t offset,
            std::uint8_t* out,
            std::size_t size) {
  return source.ReadAt(offset, out, size);
}

std::uint32_t Big16(const std::uint8_t* p) {
  return static_cast<std::uint32_t>(p[0]) << 8 | p[1];
}
std::uint32_t Big32(const std::uint8_t* p) {
  return Big16(p) << 16 | Big16(p + 2);
}
std::uint32_t Little16(const std::uint8_t* p) {
  return static_cast<std::uint32_t>(p[1]) << 8 | p[0];
}
std::uint32_t Little32(const std::uint8_t* p) {
  return Little16(p + 2) << 16 | Little16(p);
}

std::int32_t ColoursOfBits(int colour_bits) {
  if (colour_bits >= 31) {
    return std::numeric_limits<std::int32_t>::max();
  }
  return static_cast<std::int32_t>(1u << colour_bits);
}

bool SidesMakeSense(std::uint64_t width, std::uint64_t height) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::int32_t>::max();
  return width > 0 && height > 0 && width <= kLargest && height <= kLargest;
}

// --- JPEG: the markers up to the first frame header ----------------------

bool IsFrameMarker(std::uint8_t marker) {
  // SOF0-SOF15 but DHT (C4), JPG (C8) and DAC (CC).
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 &&
         marker != 0xCC;
}

bool ReadJpeg(const ByteSource& in, ImageHeader& out) {
  std::uint64_t at = 2;  // after SOI
  // A header is found within a few hundred markers or not at all.
  for (int markers = 0; markers < 1000; ++markers) {
    std::array<std::uint8_t, 4> head{};
    if (!ReadAt(in, at, head.data(), 2)) {
      return false;
    }
    if (head[0] != 0xFF) {
      return false;
    }
    const std::uint8_t marker = head[1];
    if (marker == 0xFF) {  // fill byte
      ++at;
      continue;
    }
    if (marker == 0xD8 || (marker >= 0xD0 && marker <= 0xD7) ||
        marker == 0x01) {
      at += 2;  // markers without a length
      continue;
    }
    if (marker == 0xD9 || marker == 0xDA) {
      return false;  // the end or a scan before any frame header
    }
    if (!ReadAt(in, at + 2, head.data() + 2, 2)) {
      return false;
    }
    const std::uint32_t length = Big16(head.data() + 2);
    if (length < 2) {
      return false;
    }
    if (IsFrameMarker(marker)) {
      std::array<std::uint8_t, 6> frame{};
      if (length < 8 || !ReadAt(in, at + 4, frame.data(), frame.size())) {
        return false;
      }
      const int precision = frame[0];
      const std::uint32_t height = Big16(frame.data() + 1);
      const std::uint32_t width = Big16(frame.data() + 3);
      const int components = frame[5];
      if (!SidesMakeSense(width, height) || precision < 2 || precision > 16 ||
          components < 1 || components > 4) {
        return false;
      }
      out.width = static_cast<int>(width);
      out.height = static_cast<int>(height);
      out.bits = precision * components;
      // Grey and RGB (YCbCr) colour every sample; CMYK shows as many
      // colours as its three inks give and the fourth darkens them.
      out.colours =
          ColoursOfBits(precision * (components == 4 ? 3 : components));
      return true;
    }
    at += 2 + length;
  }
  return false;
}

// --- PNG: IHDR, and PLTE for a palette -----------------------------------

bool ReadPng(const ByteSource& in, ImageHeader& out) {
  std::array<std::uint8_t, 33> start{};
  if (!ReadAt(in, 0, start.data(), start.size())) {
    return false;
  }
  const std::uint8_t* ihdr = start.data() + 8;
  if (Big32(ihdr) != 13 || ihdr[4] != 'I' || ihdr[5] != 'H' || ihdr[6] != 'D' ||
      ihdr[7] != 'R') {
    return false;
  }
  const std::uint32_t width = Big32(ihdr + 8);
  const std::uint32_t height = Big32(ihdr + 12);
  const int depth = ihdr[16];
  const int colour_type = ihdr[17];
  int channels = 0;
  int colour_channels = 0;
  switch (colour_type) {
    case 0:  // grey
      channels = colour_channels = 1;
      break;
    case 2:  // RGB
      channels = colour_channels = 3;
      break;
    case 3:  // palette
      channels = colour_channels = 1;
      break;
    case 4:  // grey and alpha
      channels = 2;
      colour_channels = 1;
      break;
    case 6:  // RGB and alpha
      channels = 4;
      colour_channels = 3;
      break;
    default:
      return false;
  }
  const bool depth_ok =
      depth == 1 || depth == 2 || depth == 4 || depth == 8 || depth == 16;
  if (!depth_ok || !SidesMakeSense(width, height) ||
      (colour_type == 3 && depth > 8)) {
    return false;
  }
  out.width = static_cast<int>(width);
  out.height = static_cast<int>(height);
  out.bits = depth * channels;
  out.colours = ColoursOfBits(depth * colour_channels);
  if (colour_type != 3) {
    return true;
  }
  // The palette comes before the image data; its entries are three bytes.
  std::uint64_t at = 8;
  for (int chunks = 0; chunks < 1000; ++chunks) {
    std::array<std::uint8_t, 8> chunk{};
    if (!ReadAt(in, at, chunk.data(), chunk.size())) {
      return false;
    }
    const std::uint32_t length = Big32(chunk.data());
    const std::string type(chunk.begin() + 4, chunk.end());
    if (type == "PLTE") {
      if (length == 0 || length % 3 != 0 || length / 3 > (1u << depth)) {
        return false;
      }
      out.colours = static_cast<std::int32_t>(length / 3);
      return true;
    }
    if (type == "IDAT" || type == "IEND") {
      return false;  // a palette image without its palette
    }
    at += 12 + static_cast<std::uint64_t>(length);
  }
  return false;
}

// --- TIFF: the first directory -------------------------------------------

struct TiffReader {
  const ByteSource& in;
  bool little;
  std::uint32_t U16(const std::uint8_t* p) const {
    return little ? Little16(p) : Big16(p);
  }
  std::uint32_t U32(const std::uint8_t* p) const {
    return little ? Little32(p) : Big32(p);
  }
};

bool ReadTiff(const ByteSource& in, ImageHeader& out) {
  std::array<std::uint8_t, 8> head{};
  if (!ReadAt(in, 0, head.data(), head.size())) {
    return false;
  }
  const TiffReader r{in, head[0] == 'I'};
  const std::uint32_t directory = r.U32(head.data() + 4);
  std::array<std::uint8_t, 2> count_bytes{};
  if (directory < 8 || !ReadAt(in, directory, count_bytes.data(), 2)) {
    return false;
  }
  const std::uint32_t count = r.U16(count_bytes.data());
  std::vector<std::uint8_t> entries(static_cast<std::size_t>(count) * 12);
  if (count == 0 ||
      !ReadAt(in, directory + 2ull, entries.data(), entries.size())) {
    return false;
  }
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  std::uint32_t samples = 1;
  std::uint32_t extra_samples = 0;
  std::uint32_t photometric = 2;
  int bits_per_sample = 1;  // the format's default
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint8_t* e = entries.data() + static_cast<std::size_t>(i) * 12;
    const std::uint32_t tag = r.U16(e);
    const std::uint32_t type = r.U16(e + 2);
    const std::uint32_t n = r.U32(e + 4);
    // A SHORT or LONG value held in the entry itself.
    auto value = [&]() -> std::uint32_t {
      return type == 3 ? r.U16(e + 8) : r.U32(e + 8);
    };
    switch (tag) {
      case 256:
        width = value();
        break;
      case 257:
        height = value();
        break;
      case 258:
        // One value per sample; all are alike in the photos people keep, and
        // more than two SHORTs lie elsewhere in the file.
        if (type == 3 && n <= 2) {
          bits_per_sample = static_cast<int>(r.U16(e + 8));
        } else if (type == 3) {
          std::array<std::uint8_t, 2> first{};
          if (!ReadAt(in, r.U32(e + 8), first.data(), 2)) {
            return false;
          }
          bits_per_sample = static_cast<int>(r.U16(first.data()));
        } else {
          return false;
        }
        break;
      case 262:
        photometric = value();
        break;
      case 277:
        samples = value();
        break;
      case 338:
        extra_samples = n;
        break;
      default:
        break;
    }
  }
  if (!SidesMakeSense(width, height) || samples < 1 || samples > 8 ||
      extra_samples >= samples || bits_per_sample < 1 || bits_per_sample > 32) {
    return false;
  }
  out.width = static_cast<int>(width);
  out.height = static_cast<int>(height);
  out.bits = bits_per_sample * static_cast<int>(samples);
  const int colour_samples = static_cast<int>(samples - extra_samples);
  // Separated (CMYK) ink shows as its three colours, as for a JPEG.
  const int shown =
      photometric == 5 && colour_samples == 4 ? 3 : colour_samples;
  out.colours = ColoursOfBits(bits_per_sample * shown);
  return true;
}

// --- bitmap: the info header ---------------------------------------------

bool ReadBmp(const ByteSource& in, ImageHeader& out) {
  std::array<std::uint8_t, 54> head{};
  if (!ReadAt(in, 0, head.data(), 18)) {
    return false;
  }
  const std::uint32_t info_size = Little32(head.data() + 14);
  std::int64_t width = 0;
  std::int64_t height = 0;
  int bits = 0;
  std::uint32_t used = 0;
  if (info_size == 12) {  // the old core header
    if (!ReadAt(in, 18, head.data() + 18, 8)) {
      return false;
    }
    width = Little16(head.data() + 18);
    height = Little16(head.data() + 20);
    bits = static_cast<int>(Little16(head.data() + 24));
  } else if (info_size >= 40) {
    if (!ReadAt(in, 18, head.data() + 18, 36)) {
      return false;
    }
    width = static_cast<std::int32_t>(Little32(head.data() + 18));
    // A negative height is a picture stored top row first.
    height = static_cast<std::int32_t>(Little32(head.data() + 22));
    bits = static_cast<int>(Little16(head.data() + 28));
    used = Little32(head.data() + 46);
  } else {
    return false;
  }
  if (height < 0) {
    height = -height;
  }
  const bool bits_ok = bits == 1 || bits == 4 || bits == 8 || bits == 16 ||
                       bits == 24 || bits == 32;
  if (!bits_ok || width <= 0 ||
      !SidesMakeSense(static_cast<std::uint64_t>(width),
                      static_cast<std::uint64_t>(height))) {
    return false;
  }
  out.width = static_cast<int>(width);
  out.height = static_cast<int>(height);
  out.bits = bits;
  if (bits <= 8) {
    out.colours = used > 0 && used <= (1u << bits)
                      ? static_cast<std::int32_t>(used)
                      : ColoursOfBits(bits);
  } else {
    // The fourth byte of a 32-bit pixel is alpha or unused.
    out.colours = ColoursOfBits(bits == 32 ? 24 : bits);
  }
  return true;
}

}  // namespace

namespace {

bool ParseHeader(const ByteSource& source, ImageHeader& header) {
  std::array<std::uint8_t, 8> head{};
  const std::size_t got = source.ReadUpTo(0, head.data(), head.size());
  if (got == 0) {
    return false;
  }
  ImageHeader read;
  read.kind = SniffPhotoKind(head.data(), got);
  bool ok = false;
  switch (read.kind) {
    case PhotoKind::kJpeg:
      ok = ReadJpeg(source, read);
      break;
    case PhotoKind::kPng:
      ok = ReadPng(source, read);
      break;
    case PhotoKind::kTiff:
      ok = ReadTiff(source, read);
      break;
    case PhotoKind::kBmp:
      ok = ReadBmp(source, read);
      break;
    case PhotoKind::kOther:
      ok = false;
      break;
  }
  if (ok) {
    header = read;
  }
  return ok;
}

}  // namespace

bool ReadImageHeader(const std::string& path, ImageHeader& header) {
  const int fd = OpenPhotoFile(path);
  if (fd < 0) {
    return false;
  }
  const bool ok = ParseHeader(FileSource(fd), header);
  ::close(fd);
  return ok;
}

bool ParseImageHeader(std::string_view bytes, ImageHeader& header) {
  return ParseHeader(MemorySource(bytes), header);
}

std::string ImageKindName(PhotoKind kind) {
  switch (kind) {
    case PhotoKind::kJpeg:
      return "JPEG image";
    case PhotoKind::kPng:
      return "PNG image";
    case PhotoKind::kTiff:
      return "TIFF image";
    case PhotoKind::kBmp:
      return "Bitmap image";
    case PhotoKind::kOther:
      return "";
  }
  return "";
}

}  // namespace qbpd
