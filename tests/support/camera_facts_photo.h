#ifndef QBPD_TESTS_SUPPORT_CAMERA_FACTS_PHOTO_H_
#define QBPD_TESTS_SUPPORT_CAMERA_FACTS_PHOTO_H_

#include <string>

namespace qbpd::testing {

// What a test camera writes into a photo's EXIF data; empty texts and zeros
// are left out.
struct TestCameraFacts {
  std::string make;
  std::string model;
  std::string date_taken;  // "YYYY:MM:DD HH:MM:SS"
  unsigned exposure_numerator = 0;
  unsigned exposure_denominator = 0;
  unsigned focal_numerator = 0;
  unsigned focal_denominator = 0;
  int iso = 0;
  int orientation = 0;  // 1 to 8; 0 leaves the tag out
};

// Writes a JPEG photo of `width` x `height` (a gradient, the left half
// darker than the right and the top than the bottom, so a turn shows) with
// the given EXIF data, as a camera would. False when it can't be written.
bool WriteCameraFactsPhoto(const std::string& path,
                           int width,
                           int height,
                           const TestCameraFacts& facts);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_CAMERA_FACTS_PHOTO_H_
