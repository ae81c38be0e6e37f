#include "platform/bmp_reader.h"

#include <algorithm>
#include <array>
#include <istream>
#include <limits>

namespace qbpd {
namespace {

constexpr std::size_t kFileHeaderSize = 14;
constexpr std::uint32_t kCompressionNone = 0;
constexpr std::uint32_t kCompressionBitFields = 3;
constexpr std::uint32_t kRedMask = 0x00FF0000;
constexpr std::uint32_t kGreenMask = 0x0000FF00;
constexpr std::uint32_t kBlueMask = 0x000000FF;
constexpr int kMaxShrink = 1024;
constexpr std::size_t kMaxPaletteEntries = 256;

std::uint32_t U32(const std::uint8_t* p) {
  return static_cast<std::uint32_t>(p[0]) |
         (static_cast<std::uint32_t>(p[1]) << 8) |
         (static_cast<std::uint32_t>(p[2]) << 16) |
         (static_cast<std::uint32_t>(p[3]) << 24);
}

std::uint16_t U16(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

// Everything the decoder needs beyond BmpInfo.
struct Layout {
  BmpInfo info;
  std::uint64_t pixel_offset = 0;
  std::uint64_t stride = 0;
  // Red, green, blue of each palette entry; missing entries stay black.
  std::array<std::array<std::uint8_t, 3>, kMaxPaletteEntries> palette{};
};

bool ReadAt(std::istream& in,
            std::uint64_t offset,
            std::uint8_t* data,
            std::size_t size) {
  in.clear();
  in.seekg(static_cast<std::streamoff>(offset));
  in.read(reinterpret_cast<char*>(data), static_cast<std::streamsize>(size));
  return in.good() ||
         (in.eof() && static_cast<std::size_t>(in.gcount()) == size);
}

BmpResult ReadLayout(std::istream& in, std::uint64_t max_pixels, Layout& out) {
  in.clear();
  in.seekg(0, std::ios::end);
  const std::streamoff end = in.tellg();
  if (end < 0) {
    return {"the file cannot be read"};
  }
  const auto file_size = static_cast<std::uint64_t>(end);

  std::array<std::uint8_t, kFileHeaderSize + 4> head{};
  if (file_size < head.size() || !ReadAt(in, 0, head.data(), head.size())) {
    return {"the file is too short for a bitmap"};
  }
  if (head[0] != 'B' || head[1] != 'M') {
    return {"the file is not a bitmap"};
  }
  out.pixel_offset = U32(&head[10]);
  const std::uint32_t header_size = U32(&head[14]);
  if (header_size != 40 && header_size != 52 && header_size != 56 &&
      header_size != 108 && header_size != 124) {
    return {"unsupported bitmap header"};
  }
  std::array<std::uint8_t, 124> header{};
  if (file_size < kFileHeaderSize + header_size ||
      !ReadAt(in, kFileHeaderSize, header.data(), header_size)) {
    return {"the bitmap header is truncated"};
  }

  const auto width = static_cast<std::int32_t>(U32(&header[4]));
  const auto height = static_cast<std::int32_t>(U32(&header[8]));
  const std::uint16_t planes = U16(&header[12]);
  const std::uint16_t bits = U16(&header[14]);
  const std::uint32_t compression = U32(&header[16]);
  const std::uint32_t colours_used = U32(&header[32]);

  if (planes != 1) {
    return {"invalid bitmap header"};
  }
  if (width <= 0 || height == 0 ||
      height == std::numeric_limits<std::int32_t>::min()) {
    return {"invalid bitmap size"};
  }
  const std::uint64_t rows = height < 0 ? -static_cast<std::int64_t>(height)
                                        : static_cast<std::int64_t>(height);
  if (rows > static_cast<std::uint64_t>(std::numeric_limits<int>::max()) ||
      static_cast<std::uint64_t>(width) * rows > max_pixels) {
    return {"the bitmap is too large"};
  }
  if (compression == kCompressionBitFields) {
    // A plain 40-byte header is followed by the three masks.
    if (header_size == 40 &&
        (file_size < kFileHeaderSize + 52 ||
         !ReadAt(in, kFileHeaderSize + 40, &header[40], 12))) {
      return {"the bitmap header is truncated"};
    }
    if (bits != 32 || U32(&header[40]) != kRedMask ||
        U32(&header[44]) != kGreenMask || U32(&header[48]) != kBlueMask) {
      return {"unsupported bitmap bit masks"};
    }
  } else if (compression != kCompressionNone) {
    return {"compressed bitmaps are not supported"};
  }
  if (bits != 8 && bits != 24 && bits != 32) {
    return {"unsupported bitmap pixel depth"};
  }

  std::uint64_t palette_end = kFileHeaderSize + header_size;
  if (compression == kCompressionBitFields && header_size == 40) {
    palette_end += 12;
  }
  if (bits == 8) {
    const std::uint64_t entries =
        colours_used == 0 ? kMaxPaletteEntries : colours_used;
    if (entries > kMaxPaletteEntries) {
      return {"invalid bitmap palette"};
    }
    const std::uint64_t palette_start = palette_end;
    palette_end += entries * 4;
    if (palette_end > out.pixel_offset || palette_end > file_size) {
      return {"the bitmap palette is truncated"};
    }
    std::array<std::uint8_t, kMaxPaletteEntries * 4> raw{};
    if (!ReadAt(in, palette_start, raw.data(), entries * 4)) {
      return {"the bitmap palette cannot be read"};
    }
    for (std::size_t i = 0; i < entries; ++i) {
      out.palette[i] = {raw[i * 4 + 2], raw[i * 4 + 1], raw[i * 4]};
    }
  }
  if (out.pixel_offset < palette_end) {
    return {"invalid bitmap pixel offset"};
  }

  out.stride = (static_cast<std::uint64_t>(width) * bits + 31) / 32 * 4;
  if (out.pixel_offset > file_size ||
      out.stride * rows > file_size - out.pixel_offset) {
    return {"the bitmap is truncated"};
  }
  out.info.width = width;
  out.info.height = static_cast<int>(rows);
  out.info.bits_per_pixel = bits;
  out.info.top_down = height < 0;
  return {};
}

}  // namespace

BmpResult ReadBmpInfo(std::istream& in,
                      std::uint64_t max_pixels,
                      BmpInfo& info) {
  Layout layout;
  BmpResult result = ReadLayout(in, max_pixels, layout);
  if (result.ok()) {
    info = layout.info;
  }
  return result;
}

BmpResult DecodeBmp(std::istream& in,
                    std::uint64_t max_pixels,
                    int shrink,
                    BmpPixels& pixels) {
  pixels = {};
  Layout layout;
  BmpResult result = ReadLayout(in, max_pixels, layout);
  if (!result.ok()) {
    return result;
  }
  shrink = std::clamp(shrink, 1, kMaxShrink);
  const int width = layout.info.width;
  const int height = layout.info.height;
  const int out_width = (width + shrink - 1) / shrink;
  const int out_height = (height + shrink - 1) / shrink;
  const int bytes_per_pixel = layout.info.bits_per_pixel / 8;

  // With shrink at most 1024, a block sums to at most 1024 * 1024 * 255,
  // which fits 32 bits.
  std::vector<std::uint32_t> sums(static_cast<std::size_t>(out_width) *
                                  out_height * 3);
  std::vector<std::uint8_t> row(layout.stride);
  in.clear();
  in.seekg(static_cast<std::streamoff>(layout.pixel_offset));
  for (int file_row = 0; file_row < height; ++file_row) {
    in.read(reinterpret_cast<char*>(row.data()),
            static_cast<std::streamsize>(row.size()));
    if (static_cast<std::size_t>(in.gcount()) != row.size()) {
      return {"the bitmap is truncated"};
    }
    const int y = layout.info.top_down ? file_row : height - 1 - file_row;
    std::uint32_t* out_row =
        sums.data() + static_cast<std::size_t>(y / shrink) * out_width * 3;
    const std::uint8_t* p = row.data();
    for (int x = 0; x < width; ++x, p += bytes_per_pixel) {
      std::uint32_t* sum = out_row + static_cast<std::size_t>(x / shrink) * 3;
      if (bytes_per_pixel == 1) {
        const auto& entry = layout.palette[*p];
        sum[0] += entry[0];
        sum[1] += entry[1];
        sum[2] += entry[2];
      } else {
        // Stored blue, green, red (then an unused or alpha byte).
        sum[0] += p[2];
        sum[1] += p[1];
        sum[2] += p[0];
      }
    }
  }

  pixels.width = out_width;
  pixels.height = out_height;
  pixels.rgb.resize(sums.size());
  for (int oy = 0; oy < out_height; ++oy) {
    const int block_height = std::min(shrink, height - oy * shrink);
    for (int ox = 0; ox < out_width; ++ox) {
      const int block_width = std::min(shrink, width - ox * shrink);
      const auto count = static_cast<std::uint32_t>(block_width * block_height);
      const std::size_t at =
          (static_cast<std::size_t>(oy) * out_width + ox) * 3;
      for (int c = 0; c < 3; ++c) {
        pixels.rgb[at + c] =
            static_cast<std::uint8_t>((sums[at + c] + count / 2) / count);
      }
    }
  }
  return {};
}

}  // namespace qbpd
