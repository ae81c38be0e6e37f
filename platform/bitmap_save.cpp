#include "platform/bitmap_save.h"

#include "platform/atomic_file.h"
#include "platform/bmp_reader.h"
#include "platform/photo_kind.h"

#include <vips/vips8>

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

constexpr std::uint64_t kMaxPixels = 256'000'000;
constexpr std::size_t kBmpHeaderSize = 54;

// Upright 8-bit RGB pixels, rows from the top.
struct Pixels {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> rgb;
};

const char* ExpectedLoader(PhotoKind kind) {
  switch (kind) {
    case PhotoKind::kJpeg:
      return "jpegload_source";
    case PhotoKind::kPng:
      return "pngload_source";
    case PhotoKind::kTiff:
      return "tiffload_source";
    case PhotoKind::kBmp:
    case PhotoKind::kOther:
      return nullptr;
  }
  return nullptr;
}

std::optional<Pixels> DecodeWithVips(int fd, PhotoKind kind) {
  vips::VSource source = vips::VSource::new_from_descriptor(fd);
  const char* loader = vips_foreign_find_load_source(source.get_source());
  const char* nickname = loader != nullptr
                             ? vips_nickname_find(g_type_from_name(loader))
                             : nullptr;
  const char* expected = ExpectedLoader(kind);
  if (nickname == nullptr || expected == nullptr ||
      std::string_view(nickname) != expected) {
    vips_error_clear();
    return std::nullopt;
  }
  vips::VImage image = vips::VImage::new_from_source(
      source, "fail_on=error",
      vips::VImage::option()->set("access", VIPS_ACCESS_RANDOM));
  if (image.width() <= 0 || image.height() <= 0 ||
      static_cast<std::uint64_t>(image.width()) *
              static_cast<std::uint64_t>(image.height()) >
          kMaxPixels) {
    return std::nullopt;
  }
  image = image.autorot();
  if (image.has_alpha()) {
    image = image.flatten(
        vips::VImage::option()->set("background", std::vector<double>{255}));
  }
  image = image.colourspace(VIPS_INTERPRETATION_sRGB);
  if (image.bands() > 3) {
    image = image.extract_band(0, vips::VImage::option()->set("n", 3));
  } else if (image.bands() == 1) {
    image = image.bandjoin({image, image});
  }
  image = image.cast(VIPS_FORMAT_UCHAR);
  Pixels pixels;
  pixels.width = image.width();
  pixels.height = image.height();
  std::size_t size = 0;
  void* memory = image.write_to_memory(&size);
  const auto* bytes = static_cast<const std::uint8_t*>(memory);
  pixels.rgb.assign(bytes, bytes + size);
  g_free(memory);
  if (pixels.rgb.size() != static_cast<std::size_t>(pixels.width) *
                               static_cast<std::size_t>(pixels.height) * 3) {
    return std::nullopt;
  }
  return pixels;
}

std::optional<Pixels> DecodeBitmap(int fd) {
  PhotoStream in(fd);
  BmpPixels bitmap;
  if (!in || !DecodeBmp(in, kMaxPixels, 1, bitmap).ok()) {
    return std::nullopt;
  }
  return Pixels{bitmap.width, bitmap.height, std::move(bitmap.rgb)};
}

void PutLittle(std::vector<std::uint8_t>& out,
               std::size_t at,
               std::uint32_t value,
               int bytes) {
  for (int i = 0; i < bytes; ++i) {
    out[at + static_cast<std::size_t>(i)] =
        static_cast<std::uint8_t>(value >> (8 * i));
  }
}

// The bitmap file: rows from the bottom, blue-green-red, each padded to four
// bytes.
std::vector<std::uint8_t> EncodeBitmap(const Pixels& p) {
  const std::size_t row = (static_cast<std::size_t>(p.width) * 3 + 3) & ~3u;
  const std::size_t data = row * static_cast<std::size_t>(p.height);
  std::vector<std::uint8_t> out(kBmpHeaderSize + data, 0);
  out[0] = 'B';
  out[1] = 'M';
  PutLittle(out, 2, static_cast<std::uint32_t>(out.size()), 4);
  PutLittle(out, 10, kBmpHeaderSize, 4);
  PutLittle(out, 14, 40, 4);
  PutLittle(out, 18, static_cast<std::uint32_t>(p.width), 4);
  PutLittle(out, 22, static_cast<std::uint32_t>(p.height), 4);
  PutLittle(out, 26, 1, 2);
  PutLittle(out, 28, 24, 2);
  PutLittle(out, 34, static_cast<std::uint32_t>(data), 4);
  PutLittle(out, 38, 2835, 4);  // 72 dots an inch
  PutLittle(out, 42, 2835, 4);
  const std::size_t width = static_cast<std::size_t>(p.width);
  for (int y = 0; y < p.height; ++y) {
    const std::uint8_t* from =
        p.rgb.data() + static_cast<std::size_t>(y) * width * 3;
    std::uint8_t* to = out.data() + kBmpHeaderSize +
                       static_cast<std::size_t>(p.height - 1 - y) * row;
    for (std::size_t x = 0; x < width; ++x) {
      to[3 * x] = from[3 * x + 2];
      to[3 * x + 1] = from[3 * x + 1];
      to[3 * x + 2] = from[3 * x];
    }
  }
  return out;
}

}  // namespace

bool SaveUprightBitmap(const std::string& source, const std::string& target) {
  if (VIPS_INIT("qbpd") != 0 || source.empty() || target.empty()) {
    return false;
  }
  try {
    const FileDescriptor fd(OpenPhotoFile(source));
    struct stat status {};
    if (fd.get() < 0 || ::fstat(fd.get(), &status) != 0 ||
        status.st_size == 0) {
      return false;
    }
    std::array<std::uint8_t, 16> head{};
    const ssize_t got = ::pread(fd.get(), head.data(), head.size(), 0);
    if (got <= 0) {
      return false;
    }
    const PhotoKind kind =
        SniffPhotoKind(head.data(), static_cast<std::size_t>(got));
    if (kind == PhotoKind::kOther ||
        (kind == PhotoKind::kJpeg && !JpegIsWhole(fd.get())) ||
        !WithinDecodeBudget(fd.get(), kind)) {
      return false;
    }
    const std::optional<Pixels> pixels = kind == PhotoKind::kBmp
                                             ? DecodeBitmap(fd.get())
                                             : DecodeWithVips(fd.get(), kind);
    if (!pixels) {
      return false;
    }
    const std::vector<std::uint8_t> bitmap = EncodeBitmap(*pixels);
    return WriteFileAtomically(target, bitmap.data(), bitmap.size());
  } catch (const vips::VError&) {
    vips_error_clear();
  } catch (const std::bad_alloc&) {
  }
  return false;
}

}  // namespace qbpd
