#ifndef QBPD_PLATFORM_IMAGE_HEADER_H_
#define QBPD_PLATFORM_IMAGE_HEADER_H_

#include "platform/photo_kind.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace qbpd {

// The measures of an image file that its header tells, read without
// decoding a pixel: a JPEG's frame header, a PNG's IHDR (and PLTE for a
// palette), a TIFF's first directory, a bitmap's info header.
struct ImageHeader {
  PhotoKind kind = PhotoKind::kOther;
  int width = 0;
  int height = 0;
  // Bits per pixel as stored, alpha and every sample included (24 for an
  // 8-bit RGB photo, 32 for RGBA or CMYK, 8 for grey or a 256-entry
  // palette, 48 for 16-bit RGB).
  int bits = 0;
  // How many colours the pixels can take: the palette's entries for a
  // palette image, else 2 to the power of the colour bits (alpha left out),
  // held to the largest 32-bit number (2147483647) when that is more.
  std::int32_t colours = 0;
};

// Reads the header of the image at `path`, whatever its name says (its kind
// comes from its first bytes). Only a plain file is read, and the open never
// waits (OpenPhotoFile). False, and `header` left as it was, for a file that
// is missing, of another kind, or whose header is cut short or makes no
// sense (a zero side, a side above 2^31 - 1, bits a format can't hold).
bool ReadImageHeader(const std::string& path, ImageHeader& header);

// The same for an image held in memory (an uploaded file, say).
bool ParseImageHeader(std::string_view bytes, ImageHeader& header);

// The kind of an image as a person names it: "JPEG image", "PNG image",
// "TIFF image", "Bitmap image"; "" for kOther.
std::string ImageKindName(PhotoKind kind);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_IMAGE_HEADER_H_
