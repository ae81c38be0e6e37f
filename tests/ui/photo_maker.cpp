// Kept apart from the Qt code: glib's headers and Qt's keywords don't mix.
#include "tests/ui/photo_maker.h"

#include <vips/vips8>

namespace qbpd::testing {

void MakePhoto(const std::string& path,
               int width,
               int height,
               int shade,
               int orientation) {
  if (VIPS_INIT("ui_smoke_tests") != 0) {
    return;
  }
  vips::VImage x = vips::VImage::xyz(width, height)[0];
  vips::VImage image = vips::VImage::bandjoin(
      {(x * (255.0 / width)).cast(VIPS_FORMAT_UCHAR),
       (x * 0 + 60 + shade).cast(VIPS_FORMAT_UCHAR),
       (x * (-255.0 / width) + 255).cast(VIPS_FORMAT_UCHAR)});
  if (orientation != 1) {
    image = image.copy();
    image.set("orientation", orientation);
  }
  image.jpegsave(path.c_str(), vips::VImage::option()->set("Q", 85));
}

}  // namespace qbpd::testing
