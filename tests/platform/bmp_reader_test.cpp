#include "platform/bmp_reader.h"

#include "tests/support/bmp_writer.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace qbpd {
namespace {

using testing::BmpLayout;
using testing::EncodeBmp;

constexpr std::uint64_t kNoLimit = 1'000'000;

// A colour that differs in every channel from pixel to pixel and row to row,
// so a swapped channel, a flipped row or a shifted column shows.
std::uint32_t Pattern(int x, int y) {
  return static_cast<std::uint32_t>(((x * 40 + 7) << 16) | ((y * 50 + 3) << 8) |
                                    (x * 10 + y * 20 + 1));
}

std::uint32_t At(const BmpPixels& pixels, int x, int y) {
  const std::size_t at = (static_cast<std::size_t>(y) * pixels.width + x) * 3;
  return static_cast<std::uint32_t>(
      pixels.rgb[at] << 16 | pixels.rgb[at + 1] << 8 | pixels.rgb[at + 2]);
}

BmpPixels Decode(const std::string& bytes, int shrink, BmpResult& result) {
  std::istringstream in(bytes);
  BmpPixels pixels;
  result = DecodeBmp(in, kNoLimit, shrink, pixels);
  return pixels;
}

TEST(BmpReaderTest, DecodesEverySupportedLayoutPixelForPixel) {
  struct Case {
    const char* what;
    BmpLayout layout;
  };
  // Odd widths make the rows padded to four bytes.
  const Case cases[] = {
      {"24-bit bottom-up", BmpLayout(5, 3)},
      {"24-bit top-down", BmpLayout(5, 3, 24, /*top_down_in=*/true)},
      {"32-bit", BmpLayout(3, 4, 32)},
      {"32-bit with bit masks",
       BmpLayout(3, 2, 32, false, /*bit_fields_in=*/true)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    BmpResult result;
    const BmpPixels pixels = Decode(EncodeBmp(c.layout, Pattern), 1, result);
    ASSERT_TRUE(result.ok()) << result.error;
    ASSERT_EQ(pixels.width, c.layout.width);
    ASSERT_EQ(pixels.height, c.layout.height);
    for (int y = 0; y < c.layout.height; ++y) {
      for (int x = 0; x < c.layout.width; ++x) {
        EXPECT_EQ(At(pixels, x, y), Pattern(x, y)) << x << "," << y;
      }
    }
  }
}

TEST(BmpReaderTest, MapsPaletteIndexesAndBlackensUnlistedOnes) {
  BmpLayout layout(3, 2, 8);
  layout.palette = {{255, 0, 0}, {0, 255, 0}, {10, 20, 30}};
  // Index 7 lies beyond the three listed colours.
  const int indexes[2][3] = {{0, 1, 2}, {2, 7, 0}};
  BmpResult result;
  const BmpPixels pixels =
      Decode(EncodeBmp(layout, [&](int x, int y) { return indexes[y][x]; }), 1,
             result);
  ASSERT_TRUE(result.ok()) << result.error;
  EXPECT_EQ(At(pixels, 0, 0), 0xFF0000u);
  EXPECT_EQ(At(pixels, 1, 0), 0x00FF00u);
  EXPECT_EQ(At(pixels, 2, 0), 0x0A141Eu);
  EXPECT_EQ(At(pixels, 0, 1), 0x0A141Eu);
  EXPECT_EQ(At(pixels, 1, 1), 0x000000u);
  EXPECT_EQ(At(pixels, 2, 1), 0xFF0000u);
}

TEST(BmpReaderTest, ShrinkAveragesBlocksIncludingPartialEdgeBlocks) {
  // 5 x 3 grey ramp, value 10 * (x + 5 * y); shrink 2 gives 3 x 2 with the
  // right column one pixel wide and the bottom row one pixel high.
  const BmpLayout layout(5, 3);
  BmpResult result;
  const BmpPixels pixels = Decode(
      EncodeBmp(layout,
                [](int x, int y) {
                  const auto v = static_cast<std::uint32_t>(10 * (x + 5 * y));
                  return v << 16 | v << 8 | v;
                }),
      2, result);
  ASSERT_TRUE(result.ok()) << result.error;
  ASSERT_EQ(pixels.width, 3);
  ASSERT_EQ(pixels.height, 2);
  const int expected[2][3] = {
      {(0 + 10 + 50 + 60) / 4, (20 + 30 + 70 + 80) / 4, (40 + 90) / 2},
      {(100 + 110) / 2, (120 + 130) / 2, 140}};
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 3; ++x) {
      EXPECT_EQ(pixels.rgb[(y * 3 + x) * 3], expected[y][x]) << x << "," << y;
    }
  }
}

TEST(BmpReaderTest, ReadsHeaderWithoutPixels) {
  const std::string bytes =
      EncodeBmp(BmpLayout(7, 4, 32, /*top_down_in=*/true), Pattern);
  std::istringstream in(bytes);
  BmpInfo info;
  ASSERT_TRUE(ReadBmpInfo(in, kNoLimit, info).ok());
  EXPECT_EQ(info.width, 7);
  EXPECT_EQ(info.height, 4);
  EXPECT_EQ(info.bits_per_pixel, 32);
  EXPECT_TRUE(info.top_down);
}

// Overwrites four little-endian bytes of `bytes` at `offset`.
std::string Patch32(std::string bytes, std::size_t offset, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) {
    bytes[offset + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
  }
  return bytes;
}

std::string Patch16(std::string bytes, std::size_t offset, std::uint16_t v) {
  bytes[offset] = static_cast<char>(v & 0xFF);
  bytes[offset + 1] = static_cast<char>(v >> 8);
  return bytes;
}

TEST(BmpReaderTest, RefusesBrokenAndUnsupportedFiles) {
  const std::string good = EncodeBmp(BmpLayout(4, 4), Pattern);
  BmpLayout paletted(4, 4, 8);
  paletted.palette.assign(4, {1, 2, 3});
  const std::string good8 =
      EncodeBmp(paletted, [](int x, int) { return x % 4; });
  // Header fields: width at 18, height at 22, planes 26, bits 28,
  // compression 30, colours used 46; pixel offset at 10.
  struct Case {
    const char* what;
    std::string bytes;
    std::uint64_t max_pixels = kNoLimit;
    // A word the error text must hold, where the reason matters.
    const char* says = "";
  };
  const Case cases[] = {
      {"empty", ""},
      {"not a bitmap", "GIF89a" + good.substr(6)},
      {"last row cut off", good.substr(0, good.size() - 1), kNoLimit,
       "truncated"},
      {"header cut off", good.substr(0, 30)},
      {"OS/2 header", Patch32(good, 14, 12)},
      {"run-length compressed", Patch32(good, 30, 1)},
      {"16-bit pixels", Patch16(good, 28, 16)},
      {"bit masks on 24-bit pixels", Patch32(good, 30, 3)},
      {"two planes", Patch16(good, 26, 2)},
      {"zero width", Patch32(good, 18, 0)},
      {"negative width", Patch32(good, 18, 0xFFFFFFFF)},
      {"zero height", Patch32(good, 22, 0)},
      {"lowest height", Patch32(good, 22, 0x80000000)},
      {"pixel offset past the end", Patch32(good, 10, 0x7FFFFFFF)},
      {"pixel offset inside the header", Patch32(good, 10, 20)},
      {"palette of 300 colours", Patch32(good8, 46, 300)},
      {"palette running into the pixels", Patch32(good8, 46, 200)},
      // The header claims 20000 x 20000; refused before the size check of
      // the rows could even matter.
      {"too many pixels", Patch32(Patch32(good, 18, 20000), 22, 20000),
       256'000'000, "too large"},
      {"over the caller's limit", good, 15, "too large"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    std::istringstream info_in(c.bytes);
    BmpInfo info;
    EXPECT_FALSE(ReadBmpInfo(info_in, c.max_pixels, info).ok());
    std::istringstream in(c.bytes);
    BmpPixels pixels;
    const BmpResult result = DecodeBmp(in, c.max_pixels, 1, pixels);
    EXPECT_FALSE(result.ok());
    EXPECT_FALSE(result.error.empty());
    EXPECT_NE(result.error.find(c.says), std::string::npos) << result.error;
    EXPECT_TRUE(pixels.rgb.empty());
  }
}

}  // namespace
}  // namespace qbpd
