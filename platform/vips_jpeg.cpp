#include "platform/vips_jpeg.h"

#include <vector>

namespace qbpd {

vips::VImage ForJpeg(vips::VImage image) {
  if (image.has_alpha()) {
    image = image.flatten(
        vips::VImage::option()->set("background", std::vector<double>{255.0}));
  }
  const VipsInterpretation interpretation = image.interpretation();
  if (interpretation == VIPS_INTERPRETATION_B_W ||
      interpretation == VIPS_INTERPRETATION_GREY16) {
    image = image.colourspace(VIPS_INTERPRETATION_B_W);
  } else if (interpretation != VIPS_INTERPRETATION_sRGB) {
    image = image.colourspace(VIPS_INTERPRETATION_sRGB);
  }
  if (image.format() != VIPS_FORMAT_UCHAR) {
    image = image.cast(VIPS_FORMAT_UCHAR);
  }
  return image;
}

const char* SourceLoaderFor(PhotoKind kind) {
  switch (kind) {
    case PhotoKind::kJpeg:
      return "jpegload_source";
    case PhotoKind::kPng:
      return "pngload_source";
    case PhotoKind::kTiff:
      return "tiffload_source";
    case PhotoKind::kBmp:
    case PhotoKind::kOther:
      break;
  }
  return nullptr;
}

}  // namespace qbpd
