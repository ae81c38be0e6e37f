// Kept apart from the Qt code: glib's headers and Qt's keywords don't mix.
#include "bench/ui/photo_folder.h"

#include <vips/vips8>

#include <cstdio>
#include <string>
#include <vector>

namespace qbpd::bench {

void MakePhotoFolder(const std::filesystem::path& folder,
                     int photos,
                     int distinct,
                     int width,
                     int height) {
  namespace fs = std::filesystem;
  if (VIPS_INIT("ui_bench") != 0) {
    return;
  }
  fs::create_directories(folder);
  std::vector<fs::path> originals;
  for (int d = 0; d < distinct && d < photos; ++d) {
    // A gradient with noise, so that decoding has real work to do.
    vips::VImage noise = vips::VImage::gaussnoise(
        width, height, vips::VImage::option()->set("sigma", 30.0));
    vips::VImage x = vips::VImage::xyz(width, height)[0];
    vips::VImage image = vips::VImage::bandjoin(
        {(x * (255.0 / width) + noise).cast(VIPS_FORMAT_UCHAR),
         (noise + 40 + d * 7).cast(VIPS_FORMAT_UCHAR),
         (x * (-255.0 / width) + 255 + noise).cast(VIPS_FORMAT_UCHAR)});
    char name[32];
    std::snprintf(name, sizeof name, "photo%05d.jpg", d);
    fs::path path = folder / name;
    originals.push_back(path);
    if (fs::exists(path)) {
      continue;  // kept from an earlier run (--dir), with its thumbnails
    }
    image.jpegsave(path.c_str(), vips::VImage::option()->set("Q", 85));
  }
  for (int i = static_cast<int>(originals.size()); i < photos; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "photo%05d.jpg", i);
    if (!fs::exists(folder / name)) {
      fs::create_hard_link(originals[i % originals.size()], folder / name);
    }
  }
}

}  // namespace qbpd::bench
