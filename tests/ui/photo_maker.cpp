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

void MakeDetailedPhoto(const std::string& path, int width, int height) {
  const vips::VImage noise = vips::VImage::gaussnoise(
      width, height, vips::VImage::option()->set("sigma", 60.0));
  noise
      .bandjoin({noise.flip(VIPS_DIRECTION_VERTICAL),
                 noise.flip(VIPS_DIRECTION_HORIZONTAL)})
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .jpegsave(path.c_str(), vips::VImage::option()->set("Q", 90));
}

void MakeRedEyeCard(const std::string& path) {
  using vips::VImage;
  VImage card = VImage::black(1200, 800, VImage::option()->set("bands", 3))
                    .new_from_image({205.0, 160.0, 135.0})
                    .cast(VIPS_FORMAT_UCHAR)
                    .copy_memory();
  for (int x : {400, 800}) {
    card.draw_circle({245.0, 245.0, 240.0}, x, 350, 70,
                     VImage::option()->set("fill", true));
    card.draw_circle({95.0, 60.0, 35.0}, x, 350, 38,
                     VImage::option()->set("fill", true));
    card.draw_circle({205.0, 25.0, 30.0}, x, 350, 20,
                     VImage::option()->set("fill", true));
    card.draw_circle({255.0, 255.0, 255.0}, x - 7, 343, 4,
                     VImage::option()->set("fill", true));
  }
  card.jpegsave(path.c_str(), VImage::option()->set("Q", 95));
}

}  // namespace qbpd::testing
