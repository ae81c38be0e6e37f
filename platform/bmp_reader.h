#ifndef QBPD_PLATFORM_BMP_READER_H_
#define QBPD_PLATFORM_BMP_READER_H_

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace qbpd {

// A small, bounds-checked reader of the Windows bitmap files that photo
// programs write: uncompressed 8-bit (palette), 24-bit and 32-bit pixels, and
// 32-bit pixels with the usual red, green and blue bit masks, stored
// bottom-up or top-down. Everything else (run-length compression, 1-, 4- and
// 16-bit pixels, OS/2 headers, embedded JPEG or PNG) is refused.

// What a bitmap's headers say.
struct BmpInfo {
  int width = 0;
  int height = 0;  // always positive; see `top_down`
  int bits_per_pixel = 0;
  bool top_down = false;
};

// Decoded pixels, rows from the top, three bytes (red, green, blue) a pixel.
struct BmpPixels {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> rgb;
};

// The outcome of a read: `error` is empty on success, else it says in words
// why the file was refused.
struct BmpResult {
  std::string error;
  bool ok() const { return error.empty(); }
};

// Reads and checks the headers from the start of `in`. A file whose pixel
// rows do not all fit in the stream counts as truncated, and one of more than
// `max_pixels` pixels as too large; both are errors.
[[nodiscard]] BmpResult ReadBmpInfo(std::istream& in,
                                    std::uint64_t max_pixels,
                                    BmpInfo& info);

// Decodes the bitmap in `in`, averaging each `shrink` x `shrink` block of
// pixels into one (blocks at the right and bottom edges may be smaller), so
// a large picture is never held at full size. `shrink` is clamped to
// 1..1024. Rows are read once, in file order. On an error `pixels` is left
// empty.
[[nodiscard]] BmpResult DecodeBmp(std::istream& in,
                                  std::uint64_t max_pixels,
                                  int shrink,
                                  BmpPixels& pixels);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_BMP_READER_H_
