#include "platform/vips_photo_load.h"

#include "platform/atomic_file.h"
#include "platform/bmp_reader.h"
#include "platform/photo_kind.h"
#include "platform/vips_jpeg.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <unistd.h>

namespace qbpd {
namespace {

// Decoding is refused above this many pixels.
constexpr std::uint64_t kMaxPixels = 256'000'000;
constexpr char kLoaderOptions[] = "fail_on=error";

// The photo open at `fd`, through the one libvips loader that must claim it.
std::optional<vips::VImage> LoadWithVips(int fd, const char* expected) {
  vips::VSource source = vips::VSource::new_from_descriptor(fd);
  const char* loader = vips_foreign_find_load_source(source.get_source());
  if (loader == nullptr) {
    vips_error_clear();
    return std::nullopt;
  }
  const char* nickname = vips_nickname_find(g_type_from_name(loader));
  if (nickname == nullptr || std::string_view(expected) != nickname) {
    return std::nullopt;
  }
  const vips::VImage image = vips::VImage::new_from_source(
      source, kLoaderOptions,
      vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
  if (image.width() <= 0 || image.height() <= 0 ||
      static_cast<std::uint64_t>(image.width()) *
              static_cast<std::uint64_t>(image.height()) >
          kMaxPixels) {
    return std::nullopt;
  }
  // Decoded here, in full, so that a broken file fails now and not when the
  // picture is pasted.
  return ForJpeg(image.autorot()).copy_memory();
}

std::optional<vips::VImage> LoadBitmap(int fd) {
  PhotoStream in(fd);
  BmpPixels pixels;
  if (!in || !DecodeBmp(in, kMaxPixels, 1, pixels).ok()) {
    return std::nullopt;
  }
  vips::VImage view = vips::VImage::new_from_memory(
      pixels.rgb.data(), pixels.rgb.size(), pixels.width, pixels.height, 3,
      VIPS_FORMAT_UCHAR);
  // The view borrows the vector's bytes; the copy owns its own.
  return view
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .copy_memory();
}

}  // namespace

// Everything is read through one descriptor: only a plain file is a
// photo, and its open never waits (a named pipe is refused at once).
std::optional<vips::VImage> LoadUprightPhoto(const std::string& path) {
  FileDescriptor fd(OpenPhotoFile(path));
  std::array<std::uint8_t, 16> head{};
  const ssize_t got =
      fd.get() < 0 ? -1 : ::pread(fd.get(), head.data(), head.size(), 0);
  if (got <= 0) {
    return std::nullopt;
  }
  const PhotoKind kind =
      SniffPhotoKind(head.data(), static_cast<std::size_t>(got));
  if ((kind == PhotoKind::kJpeg && !JpegIsWhole(fd.get())) ||
      !WithinDecodeBudget(fd.get(), kind)) {
    return std::nullopt;
  }
  if (kind == PhotoKind::kBmp) {
    return LoadBitmap(fd.get());
  }
  const char* loader = SourceLoaderFor(kind);
  if (loader == nullptr) {
    return std::nullopt;
  }
  return LoadWithVips(fd.get(), loader);
}

}  // namespace qbpd
