#ifndef QBPD_PLATFORM_VIPS_JPEG_H_
#define QBPD_PLATFORM_VIPS_JPEG_H_

// For the platform's libvips implementations only.
#include <vips/vips8>

namespace qbpd {

// The picture as a baseline JPEG holds it: 8-bit sRGB or grey, with any
// transparency laid on white.
vips::VImage ForJpeg(vips::VImage image);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_VIPS_JPEG_H_
