#ifndef QBPD_PLATFORM_RGB_PICTURE_H_
#define QBPD_PLATFORM_RGB_PICTURE_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qbpd {

// A small picture of 8-bit RGB pixels, row after row.
struct RgbPicture {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels;
  const std::uint8_t* At(int x, int y) const {
    return pixels.data() + (static_cast<std::size_t>(y) * width + x) * 3;
  }
};

// `source` reduced to `width` x `height` (no larger than it), each pixel the
// mean of the area it covers.
RgbPicture Reduce(const RgbPicture& source, int width, int height);

// `source` enlarged (or kept) to `width` x `height`, each pixel blended
// from the four nearest of the source (pixel centres kept in place). For a
// picture shown only for a moment: fast rather than sharp.
RgbPicture Enlarge(const RgbPicture& source, int width, int height);

// The picture stood upright as the EXIF orientation (1 to 8) says.
RgbPicture Upright(const RgbPicture& stored, int orientation);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_RGB_PICTURE_H_
