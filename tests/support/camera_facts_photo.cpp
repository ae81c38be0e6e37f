#include "tests/support/camera_facts_photo.h"

#include <libexif/exif-data.h>
#include <libexif/exif-utils.h>
#include <vips/vips8>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

namespace qbpd::testing {
namespace {

constexpr ExifByteOrder kOrder = EXIF_BYTE_ORDER_INTEL;

ExifEntry* NewEntry(ExifData* data, ExifIfd ifd, ExifTag tag) {
  ExifEntry* entry = exif_entry_new();
  exif_content_add_entry(data->ifd[ifd], entry);
  exif_entry_initialize(entry, tag);
  return entry;
}

void AddText(ExifData* data,
             ExifIfd ifd,
             ExifTag tag,
             const std::string& text) {
  if (text.empty()) {
    return;
  }
  ExifEntry* entry = exif_entry_new();
  entry->tag = tag;
  entry->format = EXIF_FORMAT_ASCII;
  entry->components = text.size() + 1;
  entry->size = static_cast<unsigned>(text.size() + 1);
  entry->data = static_cast<unsigned char*>(std::malloc(entry->size));
  std::memcpy(entry->data, text.c_str(), entry->size);
  exif_content_add_entry(data->ifd[ifd], entry);
  exif_entry_unref(entry);
}

void AddRational(ExifData* data, ExifTag tag, unsigned n, unsigned d) {
  if (d == 0) {
    return;
  }
  ExifEntry* entry = NewEntry(data, EXIF_IFD_EXIF, tag);
  exif_set_rational(entry->data, kOrder, ExifRational{n, d});
  exif_entry_unref(entry);
}

}  // namespace

bool WriteCameraFactsPhoto(const std::string& path,
                           int width,
                           int height,
                           const TestCameraFacts& facts) {
  if (VIPS_INIT("camera_facts_photo") != 0) {
    return false;
  }
  vips::VImage x = vips::VImage::xyz(width, height)[0];
  vips::VImage y = vips::VImage::xyz(width, height)[1];
  vips::VImage red = x * (220.0 / width) + 20;
  vips::VImage green = y * (220.0 / height) + 20;
  vips::VImage blue = red * 0 + 90;
  void* buffer = nullptr;
  size_t size = 0;
  red.bandjoin({green, blue})
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .write_to_buffer(
          ".jpg", &buffer, &size,
          vips::VImage::option()->set("Q", 90)->set("strip", true));
  std::vector<unsigned char> jpeg(static_cast<unsigned char*>(buffer),
                                  static_cast<unsigned char*>(buffer) + size);
  g_free(buffer);

  ExifData* data = exif_data_new();
  exif_data_set_byte_order(data, kOrder);
  exif_data_unset_option(data, EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
  AddText(data, EXIF_IFD_0, EXIF_TAG_MAKE, facts.make);
  AddText(data, EXIF_IFD_0, EXIF_TAG_MODEL, facts.model);
  AddText(data, EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL, facts.date_taken);
  if (facts.orientation > 0) {
    ExifEntry* entry = NewEntry(data, EXIF_IFD_0, EXIF_TAG_ORIENTATION);
    exif_set_short(entry->data, kOrder,
                   static_cast<ExifShort>(facts.orientation));
    exif_entry_unref(entry);
  }
  AddRational(data, EXIF_TAG_EXPOSURE_TIME, facts.exposure_numerator,
              facts.exposure_denominator);
  AddRational(data, EXIF_TAG_FOCAL_LENGTH, facts.focal_numerator,
              facts.focal_denominator);
  if (facts.iso > 0) {
    ExifEntry* entry =
        NewEntry(data, EXIF_IFD_EXIF, EXIF_TAG_ISO_SPEED_RATINGS);
    exif_set_short(entry->data, kOrder, static_cast<ExifShort>(facts.iso));
    exif_entry_unref(entry);
  }
  unsigned char* saved = nullptr;
  unsigned int length = 0;
  exif_data_save_data(data, &saved, &length);
  exif_data_unref(data);
  if (saved == nullptr || length + 2 > 0xFFFF) {
    std::free(saved);
    return false;
  }
  std::vector<unsigned char> segment = {
      0xFF, 0xE1, static_cast<unsigned char>((length + 2) >> 8),
      static_cast<unsigned char>((length + 2) & 0xFF)};
  segment.insert(segment.end(), saved, saved + length);
  std::free(saved);
  // The EXIF block goes right after the start marker, as cameras put it.
  jpeg.insert(jpeg.begin() + 2, segment.begin(), segment.end());
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(jpeg.data()),
            static_cast<std::streamsize>(jpeg.size()));
  return static_cast<bool>(out);
}

}  // namespace qbpd::testing
