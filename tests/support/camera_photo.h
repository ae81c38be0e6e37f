#ifndef QBPD_TESTS_SUPPORT_CAMERA_PHOTO_H_
#define QBPD_TESTS_SUPPORT_CAMERA_PHOTO_H_

#include <string>

namespace qbpd::testing {

// What a camera-like test photo's EXIF preview shows, and how the photo
// stands to it: as a camera wrote it, or after a tool changed the pixels and
// kept the old preview.
enum class CameraPreview {
  kNone,             // no EXIF data at all
  kGood,             // the photo reduced to 160 pixels wide, as cameras do
  kTurned,           // the pixels turned half round afterwards
  kMirrored,         // the pixels mirrored left to right afterwards
  kRecoloured,       // the pixels' colours corrected afterwards
  kBrightened,       // the pixels made a little brighter afterwards
  kCropped,          // the pixels cropped to nine tenths, same shape
  kSlightlyCropped,  // the pixels cropped to 24/25, same shape
  kPlainTop,         // a good preview; the top tenth one flat colour (a sky)
  kPlainTopCropped,  // that photo's pixels cropped to nine tenths
  kOtherPicture,     // another picture of the same size written over it
  kLetterboxed,      // a 4:3 preview with black bars over a 3:2 photo
  kTiny,             // a preview of 64 pixels, smaller than a thumbnail
  kProgressive,      // a good preview, the photo stored progressive
};

// Writes a JPEG photo of `width` x `height` with photo-like detail (light,
// textured surfaces and edges under fine noise, varying with `seed`), its
// EXIF orientation tag `orientation` (1 to 8) and a preview as `preview`
// says. The EXIF data is written by hand, not by the program's libraries.
// False when it can't be written.
bool WriteCameraPhoto(const std::string& path,
                      int width,
                      int height,
                      int seed,
                      int orientation,
                      CameraPreview preview);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_CAMERA_PHOTO_H_
