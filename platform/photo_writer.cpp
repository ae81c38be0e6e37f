#include "platform/photo_writer.h"

#include "platform/atomic_file.h"
#include "platform/jpeg_codec.h"
#include "platform/jpeg_turn.h"
#include "platform/photo_kind.h"

#include <cerrno>
#include <malloc.h>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd {
namespace {

std::int64_t ModifiedNs(const struct stat& status) {
  return std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 +
         status.st_mtim.tv_nsec;
}

// Three 8-bit bands in memory, as the encoder takes them.
vips::VImage EncoderReady(const vips::VImage& picture) {
  return ToDisplayRgb(picture).copy_memory();
}

std::optional<Bytes> Encode(const vips::VImage& picture, int subsampling) {
  const vips::VImage ready = EncoderReady(picture);
  return EncodeRgb(static_cast<const std::uint8_t*>(ready.data()),
                   ready.width(), ready.height(), subsampling, kEditQuality);
}

// Decodes JPEG bytes into memory with libvips, refusing a broken file.
vips::VImage DecodeJpegBytes(const Bytes& jpeg, int shrink) {
  VipsBlob* blob = vips_blob_new(nullptr, jpeg.data(), jpeg.size());
  try {
    vips::VImage image = vips::VImage::jpegload_buffer(
                             blob, vips::VImage::option()
                                       ->set("shrink", shrink)
                                       ->set("fail_on", VIPS_FAIL_ON_ERROR))
                             .copy_memory();
    vips_area_unref(VIPS_AREA(blob));
    return image;
  } catch (...) {
    vips_area_unref(VIPS_AREA(blob));
    throw;
  }
}

// A turn needs about 100 MB of working memory for a 12-megapixel photo,
// freed at its end. Left to itself the C library hands such blocks back to
// the system at once (a thread's heaps as soon as they are empty), and the
// next photo pays a page fault for every 4 kB of them again: on a virtual
// machine that cost three times the turn itself. Blocks up to 32 MB (its
// most) come from the heaps, and a heap keeps 256 MB of free memory at its
// top and a 64 MB margin before it shrinks or goes away, so a batch reuses
// one photo's memory for the next on either thread. The settings are the
// process's; untouched reserve costs no memory.
void KeepPhotoSizedMemory() {
  static std::once_flag once;
  std::call_once(once, [] {
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
    mallopt(M_TOP_PAD, 64 << 20);
  });
}

std::optional<PreparedPhoto> PrepareJpeg(PhotoBytes read,
                                         const std::string& source,
                                         int degrees) {
  const std::optional<std::vector<Bytes>> segments =
      ReadMetadataSegments(read.bytes);
  const std::optional<JpegInfo> info = ReadJpegInfo(read.bytes);
  if (!segments || !info) {
    return std::nullopt;
  }
  const Orientation total =
      ThenTurned(FromExif(ExifOrientationOf(*segments)), degrees);
  PreparedPhoto prepared;
  prepared.source_path = source;
  const bool swap = IsQuarterTurn(total.turn);
  const int width = swap ? info->height : info->width;
  const int height = swap ? info->width : info->height;
  std::optional<Bytes> jpeg;
  NewPicture picture{width, height, {}};
  if (info->plain_colour) {
    if (std::optional<TurnedJpeg> turned =
            TurnJpeg(read.bytes, total.turn, total.mirror)) {
      jpeg = std::move(turned->jpeg);
      prepared.lossless = turned->exact;
      // The new preview comes from the turned picture's block means.
      picture.make_preview = [small = std::move(*turned)] {
        return MakePreview(
            vips::VImage::new_from_memory(
                const_cast<std::uint8_t*>(small.small_rgb.data()),
                small.small_rgb.size(), small.small_width, small.small_height,
                3, VIPS_FORMAT_UCHAR)
                .copy(vips::VImage::option()->set("interpretation",
                                                  VIPS_INTERPRETATION_sRGB)));
      };
    }
  }
  if (!jpeg) {
    const vips::VImage decoded = Oriented(
        ToDisplayRgb(DecodeJpegBytes(read.bytes, /*shrink=*/1)), total);
    const vips::VImage ready = EncoderReady(decoded);
    jpeg =
        EncodeRgb(static_cast<const std::uint8_t*>(ready.data()), ready.width(),
                  ready.height(), info->subsampling, kEditQuality);
    picture.make_preview = [ready] { return MakePreview(ready); };
  }
  if (!jpeg || !PutMetadata(*jpeg, *segments, picture)) {
    return std::nullopt;
  }
  prepared.jpeg = std::move(*jpeg);
  prepared.source = std::move(read);
  prepared.source.bytes.clear();
  return prepared;
}

}  // namespace

std::optional<PhotoBytes> ReadPhotoBytes(const std::string& path) {
  const FileDescriptor fd(OpenPhotoFile(path));
  struct stat status {};
  if (fd.get() < 0 || ::fstat(fd.get(), &status) != 0 ||
      !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  PhotoBytes read;
  read.device = status.st_dev;
  read.inode = status.st_ino;
  read.size = status.st_size;
  read.modified_ns = ModifiedNs(status);
  read.bytes.resize(static_cast<std::size_t>(status.st_size));
  std::size_t got = 0;
  while (got < read.bytes.size()) {
    const ssize_t n =
        ::read(fd.get(), read.bytes.data() + got, read.bytes.size() - got);
    if (n < 0 && errno == EINTR) {
      continue;
    }
    if (n <= 0) {
      return std::nullopt;
    }
    got += static_cast<std::size_t>(n);
  }
  return read;
}

bool StillTheSame(const std::string& path, const PhotoBytes& read) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && status.st_dev == read.device &&
         status.st_ino == read.inode && status.st_size == read.size &&
         ModifiedNs(status) == read.modified_ns;
}

Bytes MakePreview(const vips::VImage& picture) {
  try {
    const vips::VImage small = ToDisplayRgb(picture.thumbnail_image(
        kPreviewSide, vips::VImage::option()->set("no_rotate", true)));
    void* buffer = nullptr;
    std::size_t size = 0;
    small.write_to_buffer(
        ".jpg", &buffer, &size,
        vips::VImage::option()->set("Q", kPreviewQuality)->set("strip", true));
    Bytes bytes(static_cast<std::uint8_t*>(buffer),
                static_cast<std::uint8_t*>(buffer) + size);
    g_free(buffer);
    return bytes;
  } catch (const vips::VError&) {
    vips_error_clear();
    return {};
  }
}

std::optional<PreparedPhoto> PrepareTurnedPhoto(const std::string& source,
                                                int degrees) {
  KeepPhotoSizedMemory();
  try {
    const std::optional<PhotoHeader> header = ReadHeader(source);
    std::optional<PhotoBytes> read = ReadPhotoBytes(source);
    if (!header || !read) {
      return std::nullopt;
    }
    if (header->kind == PhotoKind::kJpeg) {
      return PrepareJpeg(std::move(*read), source, degrees);
    }
    const vips::VImage picture = DecodeUpright(source, *header)
                                     .rot(AngleOf((degrees % 360 + 360) % 360));
    std::optional<Bytes> jpeg = Encode(picture, kSubsampling444);
    if (!jpeg) {
      return std::nullopt;
    }
    PreparedPhoto prepared;
    prepared.source_path = source;
    prepared.jpeg = std::move(*jpeg);
    prepared.source = std::move(*read);
    prepared.source.bytes.clear();
    return prepared;
  } catch (const vips::VError&) {
    vips_error_clear();
  } catch (const std::exception&) {
  }
  return std::nullopt;
}

std::optional<PreparedPhoto> PrepareEditedPhoto(const vips::VImage& picture,
                                                const std::string& source) {
  try {
    std::optional<PhotoBytes> read = ReadPhotoBytes(source);
    if (!read) {
      return std::nullopt;
    }
    std::optional<std::vector<Bytes>> segments =
        ReadMetadataSegments(read->bytes);
    std::optional<JpegInfo> info;
    if (segments) {
      info = ReadJpegInfo(read->bytes);
    }
    const vips::VImage ready = EncoderReady(picture);
    std::optional<Bytes> jpeg =
        EncodeRgb(static_cast<const std::uint8_t*>(ready.data()), ready.width(),
                  ready.height(), info ? info->subsampling : kSubsampling444,
                  kEditQuality);
    if (!jpeg) {
      return std::nullopt;
    }
    if (segments && info) {
      const NewPicture shape{ready.width(), ready.height(),
                             [&ready] { return MakePreview(ready); }};
      if (!PutMetadata(*jpeg, *segments, shape)) {
        return std::nullopt;
      }
    }
    PreparedPhoto prepared;
    prepared.source_path = source;
    prepared.jpeg = std::move(*jpeg);
    prepared.source = std::move(*read);
    prepared.source.bytes.clear();
    return prepared;
  } catch (const vips::VError&) {
    vips_error_clear();
  } catch (const std::exception&) {
  }
  return std::nullopt;
}

bool WritePrepared(const PreparedPhoto& photo, const std::string& destination) {
  if (photo.jpeg.empty()) {
    return false;
  }
  struct stat source_status {};
  struct stat destination_status {};
  const bool same_file =
      ::stat(photo.source_path.c_str(), &source_status) == 0 &&
      ::stat(destination.c_str(), &destination_status) == 0 &&
      source_status.st_dev == destination_status.st_dev &&
      source_status.st_ino == destination_status.st_ino;
  if ((same_file || destination == photo.source_path) &&
      !StillTheSame(photo.source_path, photo.source)) {
    return false;
  }
  return WriteFileAtomically(destination, photo.jpeg.data(), photo.jpeg.size());
}

}  // namespace qbpd
