#ifndef QBPD_PLATFORM_VIPS_PHOTO_LOAD_H_
#define QBPD_PLATFORM_VIPS_PHOTO_LOAD_H_

// For the platform's libvips implementations only.
#include <vips/vips8>

#include <optional>
#include <string>

namespace qbpd {

// The whole photo at `path` (JPEG, PNG, TIFF or bitmap), decoded into memory
// upright (its EXIF orientation applied) as 8-bit sRGB or grey with any
// transparency laid on white, ready to be encoded as a JPEG. Nothing when it
// is no plain file (never waited on), no photo of a supported kind, cut
// short, broken, or larger than a photo may be. May throw vips::VError.
std::optional<vips::VImage> LoadUprightPhoto(const std::string& path);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_VIPS_PHOTO_LOAD_H_
