#ifndef QBPD_PLATFORM_VIPS_IMAGE_FACTS_H_
#define QBPD_PLATFORM_VIPS_IMAGE_FACTS_H_

#include "platform/image_operations.h"

#include <string>

namespace qbpd {

// The measures of image files behind VipsImageOperations: libvips reads the
// headers and pixels, libexif the EXIF data and its preview.
int VipsImageWidth(const std::string& path);
int VipsImageHeight(const std::string& path);
int VipsExifOrientation(const std::string& path);
ExifPreview VipsCompareExifPreview(const std::string& path);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_VIPS_IMAGE_FACTS_H_
