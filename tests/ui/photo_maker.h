#ifndef QBPD_TESTS_UI_PHOTO_MAKER_H_
#define QBPD_TESTS_UI_PHOTO_MAKER_H_

#include <string>

namespace qbpd::testing {

// Makes a JPEG photo of `width` x `height` at `path` with libvips: blue on
// the left to red on the right, its green by `shade`; `orientation` is its
// EXIF note.
void MakePhoto(const std::string& path,
               int width,
               int height,
               int shade = 0,
               int orientation = 1);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_UI_PHOTO_MAKER_H_
