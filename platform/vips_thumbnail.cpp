#include "platform/vips_thumbnail.h"

#include "platform/atomic_file.h"
#include "platform/bmp_reader.h"
#include "platform/exif_preview_thumbnail.h"
#include "platform/photo_kind.h"
#include "platform/shared_thumbnails.h"
#include "platform/vips_jpeg.h"
#include "platform/whole_decode_mark.h"

#include <vips/vips8>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace qbpd {
namespace {

// Decoding is refused above this many pixels.
constexpr std::uint64_t kMaxPixels = 256'000'000;
constexpr int kMaxThumbnailSize = 10000;
// Loaders are asked to give up on a truncated file or a serious decoding
// error, so a broken photo fails instead of turning grey halfway down.
constexpr char kLoaderOptions[] = "fail_on=error";

std::vector<std::uint8_t> EncodeThumbnail(const vips::VImage& image,
                                          int quality) {
  void* data = nullptr;
  std::size_t length = 0;
  ForJpeg(image).write_to_buffer(".jpg", &data, &length,
                                 vips::VImage::option()
                                     ->set("Q", quality)
                                     ->set("strip", true)
                                     ->set("optimize_coding", true));
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  std::vector<std::uint8_t> jpeg(bytes, bytes + length);
  g_free(data);
  return jpeg;
}

// A thumbnail over libvips' own loaders, made with shrink-on-load and the
// EXIF orientation applied. The header is read first: an oversized photo
// is refused before a pixel is decoded.
std::optional<vips::VImage> VipsThumbnail(int fd, PhotoKind kind, int size) {
  vips::VSource header_source = vips::VSource::new_from_descriptor(fd);
  const char* loader =
      vips_foreign_find_load_source(header_source.get_source());
  if (loader == nullptr) {
    vips_error_clear();
    return std::nullopt;
  }
  const char* nickname = vips_nickname_find(g_type_from_name(loader));
  const char* expected = SourceLoaderFor(kind);
  if (nickname == nullptr || expected == nullptr ||
      std::string_view(nickname) != expected) {
    return std::nullopt;
  }
  {
    const vips::VImage header = vips::VImage::new_from_source(
        header_source, kLoaderOptions,
        vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
    if (header.width() <= 0 || header.height() <= 0 ||
        static_cast<std::uint64_t>(header.width()) *
                static_cast<std::uint64_t>(header.height()) >
            kMaxPixels) {
      return std::nullopt;
    }
  }
  return vips::VImage::thumbnail_source(
      vips::VSource::new_from_descriptor(fd), size,
      vips::VImage::option()
          ->set("height", size)
          ->set("size", VIPS_SIZE_DOWN)
          ->set("option_string", kLoaderOptions));
}

// libvips reads bitmaps only through ImageMagick, which decodes the whole
// picture at full size; the bitmap reader shrinks while it reads instead.
std::optional<vips::VImage> BitmapThumbnail(int fd,
                                            int size,
                                            BmpPixels& bitmap) {
  PhotoStream in(fd);
  BmpInfo info;
  if (!in || !ReadBmpInfo(in, kMaxPixels, info).ok()) {
    return std::nullopt;
  }
  // Box-shrink to about twice the final size; the last step is libvips'
  // own resampling, which keeps the result as sharp as the other kinds.
  const int longest = std::max(info.width, info.height);
  const int shrink = std::max(1, longest / (2 * size));
  if (!DecodeBmp(in, kMaxPixels, shrink, bitmap).ok()) {
    return std::nullopt;
  }
  const vips::VImage image =
      vips::VImage::new_from_memory(bitmap.rgb.data(), bitmap.rgb.size(),
                                    bitmap.width, bitmap.height,
                                    /*bands=*/3, VIPS_FORMAT_UCHAR)
          .copy(vips::VImage::option()->set("interpretation",
                                            VIPS_INTERPRETATION_sRGB));
  return image.thumbnail_image(
      size,
      vips::VImage::option()->set("height", size)->set("size", VIPS_SIZE_DOWN));
}

}  // namespace

std::optional<std::vector<std::uint8_t>> MakeJpegThumbnail(
    const std::string& source,
    int size,
    int quality,
    const SharedThumbnails& shared) {
  if (source.empty() || size < 1 || size > kMaxThumbnailSize || quality < 1 ||
      quality > 100) {
    return std::nullopt;
  }
  // Only a plain file is a photo, and its open never waits.
  FileDescriptor fd(OpenPhotoFile(source));
  struct stat status {};
  if (fd.get() < 0 || ::fstat(fd.get(), &status) != 0 || status.st_size == 0) {
    return std::nullopt;
  }
  std::array<std::uint8_t, 16> head{};
  const ssize_t head_size = ::pread(fd.get(), head.data(), head.size(), 0);
  if (head_size <= 0) {
    return std::nullopt;
  }
  const PhotoKind kind =
      SniffPhotoKind(head.data(), static_cast<std::size_t>(head_size));
  // A JPEG cut short fails here, the same way every time, before a decoder
  // whose threads would make its answer depend on timing sees it.
  if (kind == PhotoKind::kJpeg && !JpegIsWhole(fd.get())) {
    return std::nullopt;
  }
  // Nor is a photo whose decoding would take more than one photo may.
  if (kind == PhotoKind::kOther || !WithinDecodeBudget(fd.get(), kind)) {
    return std::nullopt;
  }
  if (shared.enabled()) {
    if (std::optional<vips::VImage> entry =
            shared.Read(source, fd.get(), size)) {
      return EncodeThumbnail(*entry, quality);
    }
  }
  // The shared entry is larger than the program's own thumbnail: the
  // picture is made at its size and then reduced.
  const int make_size =
      shared.enabled() ? std::max(size, SharedThumbnails::kNormalSize) : size;

  std::optional<vips::VImage> thumbnail;
  // A camera's own preview, when it still shows the photo, saves decoding.
  if (kind == PhotoKind::kJpeg) {
    PreviewThumbnail from_preview =
        ThumbnailFromExifPreview(fd.get(), make_size, quality);
    if (from_preview.verdict == PreviewVerdict::kTaken && make_size == size) {
      return std::move(from_preview.jpeg);
    }
    if (from_preview.verdict == PreviewVerdict::kTaken) {
      // Decoded while its bytes live: libvips reads a buffer lazily.
      thumbnail = vips::VImage::new_from_buffer(from_preview.jpeg.data(),
                                                from_preview.jpeg.size(), "")
                      .copy_memory();
    } else if (from_preview.verdict == PreviewVerdict::kTooSmall &&
               make_size != size) {
      // Large enough for the program's thumbnail, not for the shared one.
      from_preview = ThumbnailFromExifPreview(fd.get(), size, quality);
      if (from_preview.verdict == PreviewVerdict::kTaken) {
        return std::move(from_preview.jpeg);
      }
    }
  }
  // Kept alive until the JPEG is encoded: the bitmap's pixels are not
  // copied into libvips.
  BmpPixels bitmap;
  // Whether the whole photo goes through the JPEG decoder here, which
  // refuses what the photo view refuses.
  bool decoded_whole = false;
  if (!thumbnail && kind == PhotoKind::kBmp) {
    thumbnail = BitmapThumbnail(fd.get(), make_size, bitmap);
  } else if (!thumbnail) {
    thumbnail = VipsThumbnail(fd.get(), kind, make_size);
    decoded_whole = kind == PhotoKind::kJpeg;
  }
  if (!thumbnail) {
    return std::nullopt;
  }
  if (make_size != size) {
    // Read once: the photo is decoded in one pass, and both pictures come
    // from the small one in memory.
    *thumbnail = thumbnail->copy_memory();
    // The shared folder is the desktop's: a failure there is not this
    // thumbnail's.
    shared.WriteNormal(source, *thumbnail);
    *thumbnail =
        thumbnail->thumbnail_image(size, vips::VImage::option()
                                             ->set("height", size)
                                             ->set("size", VIPS_SIZE_DOWN));
  }
  std::vector<std::uint8_t> jpeg = EncodeThumbnail(*thumbnail, quality);
  // The decoding happens as the thumbnail is encoded: the mark goes in only
  // when the file stayed the same all along, and any change to come will
  // show in its change time.
  struct stat after {};
  if (decoded_whole && ::fstat(fd.get(), &after) == 0 &&
      IdentityOf(after) == IdentityOf(status) &&
      ChangedBeforeNow(IdentityOf(after))) {
    return WithWholeDecodeMark(std::move(jpeg), IdentityOf(status));
  }
  return jpeg;
}

}  // namespace qbpd
