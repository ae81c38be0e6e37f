#ifndef QBPD_PLATFORM_PHOTO_DECODE_H_
#define QBPD_PLATFORM_PHOTO_DECODE_H_

// For the platform's libvips implementations only: how the photo view and
// the editor's saves read a photo file.
#include "platform/photo_kind.h"

#include <vips/vips8>

#include <optional>
#include <string>
#include <vector>

namespace qbpd {

// Decoding is refused above this many pixels.
inline constexpr std::uint64_t kMaxPhotoPixels = 256'000'000;
// The grey of the view's background, under a transparent photo.
inline constexpr double kBackgroundGrey = 206.0;

// How the stored pixels are turned to stand upright: a clockwise turn, then
// a mirror left to right. This is what the EXIF orientation tag means.
struct Orientation {
  int turn = 0;
  bool mirror = false;
};
Orientation FromExif(int tag);
// `first`, then a clockwise turn by `degrees` (any multiple of 90).
Orientation ThenTurned(Orientation first, int degrees);
// Applies `orientation` to a picture.
vips::VImage Oriented(vips::VImage image, Orientation orientation);

VipsAngle AngleOf(int degrees);
bool IsQuarterTurn(int degrees);

// What the file's header says, before any pixel is decoded.
struct PhotoHeader {
  PhotoKind kind = PhotoKind::kJpeg;
  int stored_width = 0;
  int stored_height = 0;
  Orientation orientation;
};

// The header of a photo the view shows (JPEG, PNG, TIFF, bitmap); nothing
// for a file refused (see display_model.h for what is).
std::optional<PhotoHeader> ReadHeader(const std::string& path);

// The size a decoding must at least have: one decoded pixel for each shown
// pixel.
struct Needed {
  int width = 0;
  int height = 0;
};
bool Covers(int width, int height, Needed needed);

// The stored picture decoded into memory, covering `needed`, as 8-bit RGB,
// not yet turned upright. A JPEG is read from its file a block at a time as
// it is decoded, never held whole. Throws vips::VError on failure.
vips::VImage DecodeStored(const std::string& path,
                          const PhotoHeader& header,
                          Needed needed);
// The whole stored picture at full size, turned upright; throws on failure.
vips::VImage DecodeUpright(const std::string& path, const PhotoHeader& header);

// `image` computed into memory of its own, as copy_memory() would, without
// filling that memory with zeros first when it is 8-bit RGB.
vips::VImage RgbInMemory(const vips::VImage& image);

// Brings any decoded picture to three 8-bit sRGB bands: grey, 16-bit and
// CMYK photos are converted, and transparency is laid on the view's grey.
vips::VImage ToDisplayRgb(vips::VImage image);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_PHOTO_DECODE_H_
