#ifndef QBPD_PLATFORM_CAMERA_FACTS_H_
#define QBPD_PLATFORM_CAMERA_FACTS_H_

#include <string>

namespace qbpd {

// What a camera wrote about a photo in its EXIF data. An empty text or a
// zero stands for a fact the photo doesn't hold.
struct CameraFacts {
  std::string make;   // "Canon"
  std::string model;  // "Canon EOS 5D"
  // When the picture was taken, as EXIF writes it: "YYYY:MM:DD HH:MM:SS".
  std::string date_taken;
  // The exposure as a fraction of seconds (1 / 250 for 1/250 s).
  unsigned exposure_numerator = 0;
  unsigned exposure_denominator = 0;
  double focal_length_mm = 0;
  int iso = 0;

  bool Empty() const {
    return make.empty() && model.empty() && date_taken.empty() &&
           exposure_denominator == 0 && focal_length_mm == 0 && iso == 0;
  }
};

// Reads the camera facts of the photo at `path` from its EXIF data (a JPEG
// or a TIFF-based file libexif can parse); nothing for a file without EXIF
// data, a missing or unreadable file, or a damaged EXIF block. Only a plain
// file is read, and the read never waits.
CameraFacts ReadCameraFacts(const std::string& path);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_CAMERA_FACTS_H_
