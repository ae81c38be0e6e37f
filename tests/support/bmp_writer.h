#ifndef QBPD_TESTS_SUPPORT_BMP_WRITER_H_
#define QBPD_TESTS_SUPPORT_BMP_WRITER_H_

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qbpd::testing {

// What kind of Windows bitmap EncodeBmp writes.
struct BmpLayout {
  BmpLayout(int width_in,
            int height_in,
            int bits_in = 24,
            bool top_down_in = false,
            bool bit_fields_in = false)
      : width(width_in),
        height(height_in),
        bits(bits_in),
        top_down(top_down_in),
        bit_fields(bit_fields_in) {}

  int width = 0;
  int height = 0;
  int bits = 24;  // 8 (palette), 24 or 32
  bool top_down = false;
  // 32-bit only: writes the red, green and blue bit masks (compression 3).
  bool bit_fields = false;
  // 8-bit only: red, green, blue of each entry.
  std::vector<std::array<std::uint8_t, 3>> palette;
};

// The bytes of a bitmap file. `pixel(x, y)` (y counted from the top) gives a
// palette index for 8-bit files and 0xRRGGBB otherwise.
std::string EncodeBmp(const BmpLayout& layout,
                      const std::function<std::uint32_t(int, int)>& pixel);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_BMP_WRITER_H_
