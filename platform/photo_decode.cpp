#include "platform/photo_decode.h"

#include "platform/atomic_file.h"
#include "platform/bmp_reader.h"
#include "platform/jpeg_fd_source.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

// After the C++ headers: jpeglib.h needs size_t and FILE declared first.
#include <jerror.h>
#include <jpeglib.h>

namespace qbpd {
namespace {

// libvips' JPEG loader, which reads the JPEG files that libjpeg-turbo's
// direct path leaves to it, scales by 1/2, 1/4 and 1/8 for nearly nothing;
// the other kinds are box-shrunk while they are read, which may go further.
constexpr int kMaxJpegShrink = 8;
constexpr int kMaxOtherShrink = 64;
// libjpeg scales by eighths.
constexpr int kEighths = 8;

// The kind of a photo file; nothing for a file the view doesn't show.
std::optional<PhotoKind> SniffKind(const std::string& path) {
  const PhotoKind kind = SniffPhotoFile(path);
  if (kind == PhotoKind::kOther) {
    return std::nullopt;
  }
  return kind;
}

vips::VOption* LoaderOptions() {
  // A truncated file or a serious decoding error fails the load, rather than
  // showing a photo that turns grey halfway down.
  return vips::VImage::option()
      ->set("access", VIPS_ACCESS_SEQUENTIAL)
      ->set("fail_on", VIPS_FAIL_ON_ERROR);
}

// Opens the photo at `path` for reading: a plain file only, and never
// waiting on the open (see OpenPhotoFile).
int OpenPhoto(const std::string& path) {
  const int fd = OpenPhotoFile(path);
  if (fd < 0) {
    throw vips::VError("not a photo file");
  }
  return fd;
}

// Opens the file with the loader of its kind only, so no general-purpose
// loader is ever handed a photo. Nothing is decoded yet.
vips::VImage OpenLazily(const std::string& path,
                        PhotoKind kind,
                        vips::VOption* options) {
  // Held here until a loader takes it: a file that went or can't be opened
  // throws before that, and must not leave the options behind.
  std::unique_ptr<vips::VOption> owned(options);
  const FileDescriptor fd(OpenPhoto(path));
  // The source reads a duplicate of the descriptor.
  const vips::VSource source = vips::VSource::new_from_descriptor(fd.get());
  switch (kind) {
    case PhotoKind::kJpeg:
      return vips::VImage::jpegload_source(source, owned.release());
    case PhotoKind::kPng:
      return vips::VImage::pngload_source(source, owned.release());
    case PhotoKind::kTiff:
      return vips::VImage::tiffload_source(source, owned.release());
    case PhotoKind::kBmp:
    case PhotoKind::kOther:
      break;
  }
  throw vips::VError("not a kind that libvips opens here");
}

// The largest power of two up to `most` that shrinks the stored picture no
// smaller than `needed`, the shrunk sides rounded down.
int BoxShrink(const PhotoHeader& header, Needed needed, int most) {
  int shrink = 1;
  while (shrink * 2 <= most &&
         Covers(header.stored_width / (shrink * 2),
                header.stored_height / (shrink * 2), needed)) {
    shrink *= 2;
  }
  return shrink;
}

// The pixels of a picture that libvips did not allocate: freed with the
// image that wraps them.
void FreePixels(VipsImage*, gpointer pixels) {
  g_free(pixels);
}

// `size` bytes of `width` x `height` RGB at `pixels` as an image that owns
// them; the pixels are freed (and an exception thrown) when that fails.
vips::VImage WrapPixels(void* pixels, std::size_t size, int width, int height) {
  VipsImage* image = vips_image_new_from_memory(pixels, size, width, height,
                                                /*bands=*/3, VIPS_FORMAT_UCHAR);
  if (image == nullptr) {
    g_free(pixels);
    throw vips::VError("cannot wrap the decoded photo");
  }
  g_signal_connect(image, "postclose", G_CALLBACK(FreePixels), pixels);
  return vips::VImage(image);
}

}  // namespace

Orientation FromExif(int tag) {
  switch (tag) {
    case 2:
      return {0, true};
    case 3:
      return {180, false};
    case 4:
      return {180, true};
    case 5:
      return {90, true};
    case 6:
      return {90, false};
    case 7:
      return {270, true};
    case 8:
      return {270, false};
    default:
      return {};
  }
}

VipsAngle AngleOf(int degrees) {
  switch (degrees) {
    case 90:
      return VIPS_ANGLE_D90;
    case 180:
      return VIPS_ANGLE_D180;
    case 270:
      return VIPS_ANGLE_D270;
    default:
      return VIPS_ANGLE_D0;
  }
}

bool IsQuarterTurn(int degrees) {
  return degrees == 90 || degrees == 270;
}

Orientation ThenTurned(Orientation first, int degrees) {
  // A turn after a mirror is the mirror after the opposite turn.
  const int turn = first.mirror ? -degrees : degrees;
  first.turn = ((first.turn + turn) % 360 + 360) % 360;
  return first;
}

vips::VImage Oriented(vips::VImage image, Orientation orientation) {
  if (orientation.turn != 0) {
    image = image.rot(AngleOf(orientation.turn));
  }
  if (orientation.mirror) {
    image = image.flip(VIPS_DIRECTION_HORIZONTAL);
  }
  return image;
}

vips::VImage DecodeUpright(const std::string& path, const PhotoHeader& header) {
  const Needed all{header.stored_width, header.stored_height};
  return Oriented(DecodeStored(path, header, all), header.orientation)
      .copy_memory();
}

vips::VImage ToDisplayRgb(vips::VImage image) {
  if (image.interpretation() != VIPS_INTERPRETATION_sRGB ||
      image.format() != VIPS_FORMAT_UCHAR) {
    image = image.colourspace(VIPS_INTERPRETATION_sRGB);
  }
  if (image.has_alpha()) {
    image = image.flatten(vips::VImage::option()->set(
        "background", std::vector<double>{kBackgroundGrey}));
  }
  if (image.format() != VIPS_FORMAT_UCHAR) {
    image = image.cast(VIPS_FORMAT_UCHAR);
  }
  if (image.bands() > 3) {
    image = image.extract_band(0, vips::VImage::option()->set("n", 3));
  }
  return image;
}

bool Covers(int width, int height, Needed needed) {
  return width >= std::max(needed.width, 1) &&
         height >= std::max(needed.height, 1);
}

std::optional<PhotoHeader> ReadHeader(const std::string& path) {
  const std::optional<PhotoKind> kind = SniffKind(path);
  if (!kind) {
    return std::nullopt;
  }
  PhotoHeader header;
  header.kind = *kind;
  {
    // A JPEG cut short is refused the same way every time, whatever the
    // decoder's threads would make of it; a photo whose decoding would take
    // more than one photo may is refused before it starts.
    const FileDescriptor fd(OpenPhoto(path));
    if ((*kind == PhotoKind::kJpeg && !JpegIsWhole(fd.get())) ||
        !WithinDecodeBudget(fd.get(), *kind)) {
      return std::nullopt;
    }
  }
  if (*kind == PhotoKind::kBmp) {
    const FileDescriptor fd(OpenPhoto(path));
    PhotoStream in(fd.get());
    BmpInfo info;
    if (!in || !ReadBmpInfo(in, kMaxPhotoPixels, info).ok()) {
      return std::nullopt;
    }
    header.stored_width = info.width;
    header.stored_height = info.height;
  } else {
    const vips::VImage image = OpenLazily(path, *kind, LoaderOptions());
    header.stored_width = image.width();
    header.stored_height = image.height();
    if (image.get_typeof(VIPS_META_ORIENTATION) != 0) {
      header.orientation = FromExif(image.get_int(VIPS_META_ORIENTATION));
    }
  }
  if (header.stored_width <= 0 || header.stored_height <= 0 ||
      static_cast<std::uint64_t>(header.stored_width) *
              static_cast<std::uint64_t>(header.stored_height) >
          kMaxPhotoPixels) {
    return std::nullopt;
  }
  return header;
}

namespace {

// The decoder's errors end a decoding; its warnings (data it had to skip or
// make up) are noted, and a decoding that had one is not used, so that
// libvips decides on such a file.
struct StreamErrors {
  jpeg_error_mgr pub;
  std::jmp_buf jump;
  bool warned;
};

void OnStreamError(j_common_ptr info) {
  std::longjmp(reinterpret_cast<StreamErrors*>(info->err)->jump, 1);
}

void OnStreamMessage(j_common_ptr info, int level) {
  if (level < 0) {
    reinterpret_cast<StreamErrors*>(info->err)->warned = true;
  }
}

// What a decoding is asked for: the stored size it must find, and the scale
// in eighths with the size that scale gives.
struct StreamTarget {
  int stored_width = 0;
  int stored_height = 0;
  int eighths = kEighths;
  int width = 0;
  int height = 0;
};

// Decodes the JPEG that `source` reads into `pixels` (target.width x
// target.height RGB). False on an error, a warning, an unusual file (CMYK,
// another size) or a size other than the target's. All C++ objects that the
// decoder's error exit could skip live in the caller.
bool StreamDecode(JpegFdSource& source,
                  const StreamTarget& target,
                  unsigned char* pixels) {
  jpeg_decompress_struct info;
  StreamErrors errors;
  info.err = jpeg_std_error(&errors.pub);
  errors.pub.error_exit = OnStreamError;
  errors.pub.emit_message = OnStreamMessage;
  errors.warned = false;
  if (setjmp(errors.jump) != 0) {
    jpeg_destroy_decompress(&info);
    return false;
  }
  jpeg_create_decompress(&info);
  UseJpegFdSource(&info, source);
  jpeg_read_header(&info, TRUE);
  if (static_cast<int>(info.image_width) != target.stored_width ||
      static_cast<int>(info.image_height) != target.stored_height ||
      info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK) {
    jpeg_destroy_decompress(&info);
    return false;
  }
  info.out_color_space = JCS_RGB;
  info.scale_num = static_cast<unsigned int>(target.eighths);
  info.scale_denom = kEighths;
  jpeg_start_decompress(&info);
  if (static_cast<int>(info.output_width) != target.width ||
      static_cast<int>(info.output_height) != target.height ||
      info.output_components != 3) {
    jpeg_destroy_decompress(&info);
    return false;
  }
  const std::size_t stride = static_cast<std::size_t>(target.width) * 3;
  while (info.output_scanline < info.output_height) {
    JSAMPROW row = pixels + info.output_scanline * stride;
    jpeg_read_scanlines(&info, &row, 1);
  }
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
  return !errors.warned;
}

// libjpeg-turbo's decoding of an ordinary JPEG, at the smallest of its
// scales (eighths of the size) that covers `needed`: for a fit it decodes
// fewer pixels than libvips' halving scales would. Nothing when the file
// holds anything unusual (CMYK, a warning such as a truncation): libvips
// then decides.
std::optional<vips::VImage> TurboDecode(const std::string& path,
                                        const PhotoHeader& header,
                                        Needed needed) {
  StreamTarget target;
  target.stored_width = header.stored_width;
  target.stored_height = header.stored_height;
  target.width = header.stored_width;
  target.height = header.stored_height;
  for (int eighths = kEighths; eighths >= 1; --eighths) {
    // The decoder's own rounding: up.
    const int w = (header.stored_width * eighths + kEighths - 1) / kEighths;
    const int h = (header.stored_height * eighths + kEighths - 1) / kEighths;
    if (!Covers(w, h, needed)) {
      break;
    }
    target.eighths = eighths;
    target.width = w;
    target.height = h;
  }
  const FileDescriptor fd(OpenPhotoFile(path));
  if (fd.get() < 0) {
    return std::nullopt;
  }
  const std::size_t size =
      static_cast<std::size_t>(target.width) * target.height * 3;
  // Not zero-filled: the decoding writes every byte before it is used, and
  // a failed one is thrown away.
  auto* pixels = static_cast<unsigned char*>(g_try_malloc(size));
  if (pixels == nullptr) {
    return std::nullopt;
  }
  const JpegFdSourcePtr source = MakeJpegFdSource(fd.get());
  if (!StreamDecode(*source, target, pixels)) {
    g_free(pixels);
    return std::nullopt;
  }
  return WrapPixels(pixels, size, target.width, target.height);
}

}  // namespace

vips::VImage RgbInMemory(const vips::VImage& image) {
  if (image.bands() != 3 || image.format() != VIPS_FORMAT_UCHAR) {
    return image.copy_memory();
  }
  std::size_t size = 0;
  void* pixels = image.write_to_memory(&size);
  return WrapPixels(pixels, size, image.width(), image.height());
}

// The stored picture decoded into memory, covering `needed`, as RGB, not
// yet turned upright.
vips::VImage DecodeStored(const std::string& path,
                          const PhotoHeader& header,
                          Needed needed) {
  switch (header.kind) {
    case PhotoKind::kJpeg: {
      if (std::optional<vips::VImage> fast =
              TurboDecode(path, header, needed)) {
        return *fast;
      }
      // Sides rounded down, as libvips checks them: a side of 4 pixels is
      // not shrunk by 8, which would leave it none at all.
      const int shrink = BoxShrink(header, needed, kMaxJpegShrink);
      return ToDisplayRgb(OpenLazily(path, header.kind,
                                     LoaderOptions()->set("shrink", shrink)))
          .copy_memory();
    }
    case PhotoKind::kPng:
    case PhotoKind::kTiff: {
      const int shrink = BoxShrink(header, needed, kMaxOtherShrink);
      vips::VImage image =
          ToDisplayRgb(OpenLazily(path, header.kind, LoaderOptions()));
      if (shrink > 1) {
        image = image.shrink(shrink, shrink);
      }
      return image.copy_memory();
    }
    case PhotoKind::kOther:
      break;
    case PhotoKind::kBmp: {
      const int shrink = BoxShrink(header, needed, kMaxOtherShrink);
      const FileDescriptor fd(OpenPhoto(path));
      PhotoStream in(fd.get());
      BmpPixels pixels;
      if (!in || !DecodeBmp(in, kMaxPhotoPixels, shrink, pixels).ok()) {
        throw vips::VError("unreadable bitmap");
      }
      return vips::VImage::new_from_memory(pixels.rgb.data(), pixels.rgb.size(),
                                           pixels.width, pixels.height,
                                           /*bands=*/3, VIPS_FORMAT_UCHAR)
          .copy(vips::VImage::option()->set("interpretation",
                                            VIPS_INTERPRETATION_sRGB))
          .copy_memory();
    }
  }
  throw vips::VError("unknown kind of photo");
}

}  // namespace qbpd
