#ifndef QBPD_PLATFORM_VIPS_JPEG_H_
#define QBPD_PLATFORM_VIPS_JPEG_H_

// For the platform's libvips implementations only.
#include "platform/photo_kind.h"

#include <vips/vips8>

namespace qbpd {

// The picture as a baseline JPEG holds it: 8-bit sRGB or grey, with any
// transparency laid on white.
vips::VImage ForJpeg(vips::VImage image);

// The nickname of the libvips loader that must claim a photo of `kind` read
// from a source (a descriptor); nullptr for a bitmap (the program reads those
// itself) or an unknown kind. Any other loader, ImageMagick's above all, is
// never given a photo.
const char* SourceLoaderFor(PhotoKind kind);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_VIPS_JPEG_H_
