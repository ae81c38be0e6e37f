#include "tests/support/bmp_writer.h"

namespace qbpd::testing {
namespace {

void Put16(std::string& out, std::uint32_t value) {
  out.push_back(static_cast<char>(value & 0xFF));
  out.push_back(static_cast<char>((value >> 8) & 0xFF));
}

void Put32(std::string& out, std::uint32_t value) {
  Put16(out, value & 0xFFFF);
  Put16(out, value >> 16);
}

}  // namespace

std::string EncodeBmp(const BmpLayout& layout,
                      const std::function<std::uint32_t(int, int)>& pixel) {
  const std::uint32_t stride = (layout.width * layout.bits + 31) / 32 * 4;
  const std::uint32_t masks = layout.bit_fields ? 12 : 0;
  const auto palette_bytes = static_cast<std::uint32_t>(
      layout.bits == 8 ? layout.palette.size() * 4 : 0);
  const std::uint32_t offset = 14 + 40 + masks + palette_bytes;
  const std::uint32_t size = offset + stride * layout.height;

  std::string out = "BM";
  Put32(out, size);
  Put32(out, 0);
  Put32(out, offset);
  Put32(out, 40);
  Put32(out, static_cast<std::uint32_t>(layout.width));
  Put32(out, static_cast<std::uint32_t>(layout.top_down ? -layout.height
                                                        : layout.height));
  Put16(out, 1);
  Put16(out, static_cast<std::uint32_t>(layout.bits));
  Put32(out, layout.bit_fields ? 3 : 0);
  Put32(out, stride * layout.height);
  Put32(out, 2835);
  Put32(out, 2835);
  Put32(out, layout.bits == 8
                 ? static_cast<std::uint32_t>(layout.palette.size())
                 : 0);
  Put32(out, 0);
  if (layout.bit_fields) {
    Put32(out, 0x00FF0000);
    Put32(out, 0x0000FF00);
    Put32(out, 0x000000FF);
  }
  if (layout.bits == 8) {
    for (const auto& entry : layout.palette) {
      out.push_back(static_cast<char>(entry[2]));
      out.push_back(static_cast<char>(entry[1]));
      out.push_back(static_cast<char>(entry[0]));
      out.push_back(0);
    }
  }
  for (int row = 0; row < layout.height; ++row) {
    const int y = layout.top_down ? row : layout.height - 1 - row;
    std::string line;
    for (int x = 0; x < layout.width; ++x) {
      const std::uint32_t value = pixel(x, y);
      if (layout.bits == 8) {
        line.push_back(static_cast<char>(value));
        continue;
      }
      line.push_back(static_cast<char>(value & 0xFF));
      line.push_back(static_cast<char>((value >> 8) & 0xFF));
      line.push_back(static_cast<char>((value >> 16) & 0xFF));
      if (layout.bits == 32) {
        line.push_back(static_cast<char>(0xFF));
      }
    }
    line.resize(stride, '\0');
    out += line;
  }
  return out;
}

}  // namespace qbpd::testing
