#include "platform/vips_image_facts.h"

#include <libexif/exif-data.h>
#include <libexif/exif-utils.h>
#include <vips/vips8>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <vector>

namespace qbpd {
namespace {

// How far apart the preview and the reduced photo may be, as the mean of
// their pixels' absolute differences over 0..255: two JPEG encodings of one
// picture stay well below it, another picture far above. A turn of the same
// picture may come closer; it is told by the turned photo fitting better.
constexpr double kSamePictureDifference = 24.0;
// How far the preview's shape may be from the photo's (its sides are whole
// pixels).
constexpr double kSameShapeTolerance = 0.05;

bool StartVips() {
  return VIPS_INIT("qbpd") == 0;
}

// The image's header (and pixels on demand), as stored: no turn applied.
std::optional<vips::VImage> Open(const std::string& path) {
  if (!StartVips() || path.empty()) {
    return std::nullopt;
  }
  try {
    return vips::VImage::new_from_file(path.c_str());
  } catch (const vips::VError&) {
    vips_error_clear();
    return std::nullopt;
  }
}

// Three 8-bit sRGB bands.
vips::VImage AsRgb(vips::VImage image) {
  if (image.has_alpha()) {
    image = image.flatten();
  }
  image = image.colourspace(VIPS_INTERPRETATION_sRGB);
  if (image.bands() > 3) {
    image = image.extract_band(0, vips::VImage::option()->set("n", 3));
  }
  return image.cast(VIPS_FORMAT_UCHAR);
}

// The EXIF preview's bytes; nothing when the file has none.
std::vector<unsigned char> ExifPreviewBytes(const std::string& path) {
  std::vector<unsigned char> bytes;
  ExifData* data = exif_data_new_from_file(path.c_str());
  if (data == nullptr) {
    return bytes;
  }
  if (data->data != nullptr && data->size > 0) {
    bytes.assign(data->data, data->data + data->size);
  }
  exif_data_unref(data);
  return bytes;
}

vips::VImage TestPicture(int width, int height, int seed) {
  vips::VImage x = vips::VImage::xyz(width, height)[0];
  vips::VImage y = vips::VImage::xyz(width, height)[1];
  const double shade = (seed * 37) % 200 + 30;
  vips::VImage red = x * (200.0 / width) + shade / 4;
  vips::VImage green = y * (200.0 / height) + (255 - shade) / 4;
  vips::VImage blue = red * 0 + shade;
  return vips::VImage::bandjoin({red, green, blue})
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB));
}

std::vector<unsigned char> JpegBytes(const vips::VImage& image, int quality) {
  void* buffer = nullptr;
  size_t size = 0;
  image.write_to_buffer(".jpg", &buffer, &size,
                        vips::VImage::option()->set("Q", quality));
  std::vector<unsigned char> bytes(static_cast<unsigned char*>(buffer),
                                   static_cast<unsigned char*>(buffer) + size);
  g_free(buffer);
  return bytes;
}

// The APP1 segment of EXIF data with `orientation` and `preview`.
std::vector<unsigned char> ExifSegment(
    int orientation,
    const std::vector<unsigned char>& preview) {
  ExifData* data = exif_data_new();
  exif_data_set_byte_order(data, EXIF_BYTE_ORDER_INTEL);
  ExifEntry* entry = exif_entry_new();
  exif_content_add_entry(data->ifd[EXIF_IFD_0], entry);
  exif_entry_initialize(entry, EXIF_TAG_ORIENTATION);
  exif_set_short(entry->data, EXIF_BYTE_ORDER_INTEL,
                 static_cast<ExifShort>(orientation));
  exif_entry_unref(entry);
  if (!preview.empty()) {
    data->data = static_cast<unsigned char*>(std::malloc(preview.size()));
    std::memcpy(data->data, preview.data(), preview.size());
    data->size = static_cast<unsigned int>(preview.size());
  }
  unsigned char* saved = nullptr;
  unsigned int length = 0;
  exif_data_save_data(data, &saved, &length);
  exif_data_unref(data);
  std::vector<unsigned char> segment;
  if (saved != nullptr && length + 2 <= 0xFFFF) {
    segment = {0xFF, 0xE1, static_cast<unsigned char>((length + 2) >> 8),
               static_cast<unsigned char>((length + 2) & 0xFF)};
    segment.insert(segment.end(), saved, saved + length);
  }
  std::free(saved);
  return segment;
}

}  // namespace

int VipsImageWidth(const std::string& path) {
  std::optional<vips::VImage> image = Open(path);
  return image ? image->width() : 0;
}

int VipsImageHeight(const std::string& path) {
  std::optional<vips::VImage> image = Open(path);
  return image ? image->height() : 0;
}

int VipsExifOrientation(const std::string& path) {
  std::optional<vips::VImage> image = Open(path);
  if (!image) {
    return 0;
  }
  if (image->get_typeof(VIPS_META_ORIENTATION) == 0) {
    return 1;
  }
  const int tag = image->get_int(VIPS_META_ORIENTATION);
  return tag >= 1 && tag <= 8 ? tag : 1;
}

ExifPreview VipsCompareExifPreview(const std::string& path) {
  std::optional<vips::VImage> photo = Open(path);
  if (!photo) {
    return ExifPreview::kUnreadable;
  }
  const std::vector<unsigned char> bytes = ExifPreviewBytes(path);
  if (bytes.empty()) {
    return ExifPreview::kMissing;
  }
  try {
    vips::VImage preview =
        AsRgb(vips::VImage::new_from_buffer(bytes.data(), bytes.size(), ""));
    const double photo_shape =
        static_cast<double>(photo->width()) / photo->height();
    const double preview_shape =
        static_cast<double>(preview.width()) / preview.height();
    if (std::fabs(photo_shape - preview_shape) / photo_shape >
        kSameShapeTolerance) {
      return ExifPreview::kDiffers;
    }
    // The photo reduced to the preview's size, as stored and turned: the
    // preview matches when the photo as stored is the closest of them and
    // close enough to be the same picture.
    const vips::VImage rgb = AsRgb(*photo);
    auto difference = [&preview](const vips::VImage& candidate) {
      vips::VImage reduced = candidate.resize(
          static_cast<double>(preview.width()) / candidate.width(),
          vips::VImage::option()->set(
              "vscale",
              static_cast<double>(preview.height()) / candidate.height()));
      const int w = std::min(reduced.width(), preview.width());
      const int h = std::min(reduced.height(), preview.height());
      return (reduced.crop(0, 0, w, h).cast(VIPS_FORMAT_FLOAT) -
              preview.crop(0, 0, w, h).cast(VIPS_FORMAT_FLOAT))
          .abs()
          .avg();
    };
    const double as_stored = difference(rgb);
    if (as_stored >= kSamePictureDifference) {
      return ExifPreview::kDiffers;
    }
    std::vector<vips::VImage> turned = {rgb.rot180()};
    if (rgb.width() == rgb.height()) {
      turned.push_back(rgb.rot90());
      turned.push_back(rgb.rot270());
    }
    for (const vips::VImage& t : turned) {
      if (difference(t) < as_stored) {
        return ExifPreview::kDiffers;
      }
    }
    return ExifPreview::kMatches;
  } catch (const vips::VError&) {
    vips_error_clear();
    return ExifPreview::kUnreadable;
  }
}

bool WriteTestPhoto(const std::string& path, int width, int height, int seed) {
  if (!StartVips() || width <= 0 || height <= 0) {
    return false;
  }
  try {
    TestPicture(width, height, seed)
        .jpegsave(path.c_str(), vips::VImage::option()->set("Q", 85));
    return true;
  } catch (const vips::VError&) {
    vips_error_clear();
    return false;
  }
}

bool WriteTestPhotoWithExif(const std::string& path,
                            int width,
                            int height,
                            int seed,
                            int orientation,
                            TestPreview preview) {
  if (!StartVips() || width <= 0 || height <= 0 || orientation < 1 ||
      orientation > 8) {
    return false;
  }
  try {
    const vips::VImage picture = TestPicture(width, height, seed);
    std::vector<unsigned char> preview_bytes;
    if (preview != TestPreview::kNone) {
      vips::VImage small =
          picture.thumbnail_image(std::min(160, std::max(width, height)));
      if (preview == TestPreview::kTurned) {
        small = small.rot90();
      }
      preview_bytes = JpegBytes(small, 80);
    }
    const std::vector<unsigned char> segment =
        ExifSegment(orientation, preview_bytes);
    std::vector<unsigned char> jpeg = JpegBytes(picture, 85);
    if (segment.empty() || jpeg.size() < 2) {
      return false;
    }
    jpeg.insert(jpeg.begin() + 2, segment.begin(), segment.end());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(jpeg.data()),
              static_cast<std::streamsize>(jpeg.size()));
    return static_cast<bool>(out);
  } catch (const vips::VError&) {
    vips_error_clear();
    return false;
  }
}

}  // namespace qbpd
