#include "platform/camera_facts.h"

#include "platform/atomic_file.h"
#include "platform/photo_kind.h"

#include <libexif/exif-data.h>
#include <libexif/exif-loader.h>
#include <libexif/exif-utils.h>

#include <array>
#include <string_view>
#include <unistd.h>

namespace qbpd {
namespace {

// Bytes handed to the EXIF loader at most: its block lies in the first
// 64 kB of a JPEG, and the loader stops by itself once it has it.
constexpr std::size_t kMostRead = 1024 * 1024;

std::string Text(ExifData* data, ExifIfd ifd, ExifTag tag) {
  ExifEntry* entry = exif_content_get_entry(data->ifd[ifd], tag);
  if (entry == nullptr || entry->format != EXIF_FORMAT_ASCII ||
      entry->data == nullptr) {
    return {};
  }
  std::string text(reinterpret_cast<const char*>(entry->data), entry->size);
  text = text.substr(0, text.find('\0'));
  const auto last = text.find_last_not_of(' ');
  text.erase(last == std::string::npos ? 0 : last + 1);
  const auto first = text.find_first_not_of(' ');
  return first == std::string::npos ? std::string() : text.substr(first);
}

bool Rational(ExifData* data, ExifIfd ifd, ExifTag tag, ExifRational& out) {
  ExifEntry* entry = exif_content_get_entry(data->ifd[ifd], tag);
  if (entry == nullptr || entry->format != EXIF_FORMAT_RATIONAL ||
      entry->components < 1 || entry->size < 8) {
    return false;
  }
  out = exif_get_rational(entry->data, exif_data_get_byte_order(data));
  return out.denominator != 0 && out.numerator != 0;
}

int Short(ExifData* data, ExifIfd ifd, ExifTag tag) {
  ExifEntry* entry = exif_content_get_entry(data->ifd[ifd], tag);
  if (entry == nullptr || entry->components < 1) {
    return 0;
  }
  const ExifByteOrder order = exif_data_get_byte_order(data);
  if (entry->format == EXIF_FORMAT_SHORT && entry->size >= 2) {
    return exif_get_short(entry->data, order);
  }
  if (entry->format == EXIF_FORMAT_LONG && entry->size >= 4) {
    return static_cast<int>(exif_get_long(entry->data, order));
  }
  return 0;
}

}  // namespace

CameraFacts ReadCameraFacts(const std::string& path) {
  CameraFacts facts;
  const FileDescriptor fd(OpenPhotoFile(path));
  if (fd.get() < 0) {
    return facts;
  }
  ExifLoader* loader = exif_loader_new();
  if (loader == nullptr) {
    return facts;
  }
  std::array<unsigned char, 16384> buffer{};
  std::size_t total = 0;
  while (total < kMostRead) {
    const ssize_t got = ::read(fd.get(), buffer.data(), buffer.size());
    if (got <= 0) {
      break;
    }
    total += static_cast<std::size_t>(got);
    if (exif_loader_write(loader, buffer.data(), static_cast<unsigned>(got)) ==
        0) {
      break;  // the loader has what it needs
    }
  }
  // The data as the camera wrote it: no mandatory entry is made up (libexif's
  // option that completes missing entries would fill in today's date).
  const unsigned char* raw = nullptr;
  unsigned int raw_size = 0;
  exif_loader_get_buf(loader, &raw, &raw_size);
  ExifData* data = exif_data_new();
  if (data == nullptr) {
    exif_loader_unref(loader);
    return facts;
  }
  exif_data_unset_option(data, EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
  if (raw == nullptr || raw_size == 0) {
    exif_data_unref(data);
    exif_loader_unref(loader);
    return facts;
  }
  exif_data_load_data(data, raw, raw_size);
  exif_loader_unref(loader);
  facts.make = Text(data, EXIF_IFD_0, EXIF_TAG_MAKE);
  facts.model = Text(data, EXIF_IFD_0, EXIF_TAG_MODEL);
  facts.date_taken = Text(data, EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL);
  if (facts.date_taken.empty()) {
    facts.date_taken = Text(data, EXIF_IFD_0, EXIF_TAG_DATE_TIME);
  }
  ExifRational r{};
  if (Rational(data, EXIF_IFD_EXIF, EXIF_TAG_EXPOSURE_TIME, r)) {
    facts.exposure_numerator = r.numerator;
    facts.exposure_denominator = r.denominator;
  }
  if (Rational(data, EXIF_IFD_EXIF, EXIF_TAG_FOCAL_LENGTH, r)) {
    facts.focal_length_mm = static_cast<double>(r.numerator) / r.denominator;
  }
  facts.iso = Short(data, EXIF_IFD_EXIF, EXIF_TAG_ISO_SPEED_RATINGS);
  exif_data_unref(data);
  return facts;
}

}  // namespace qbpd
