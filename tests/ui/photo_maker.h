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

// Makes a baseline JPEG of `width` x `height` at `path` with detail in
// every block (noise), slow to decode for its size.
void MakeDetailedPhoto(const std::string& path, int width, int height);

// Writes a JPEG card with a face's two eyes at `path`, 1200 x 800: skin, the
// white of each eye, a brown iris, a red pupil of radius 20 with a white
// catch-light; the pupils' centres at (400, 350) and (800, 350).
void MakeRedEyeCard(const std::string& path);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_UI_PHOTO_MAKER_H_
