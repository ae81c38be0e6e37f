#include "platform/image_header.h"

#include "tests/support/bmp_writer.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace qbpd {
namespace {

using qbpd::testing::BmpLayout;
using qbpd::testing::EncodeBmp;
using qbpd::testing::TempDir;

// A picture of `bands` bands of 8 bits (or 16 with `wide`).
vips::VImage Picture(int width, int height, int bands, bool wide = false) {
  vips::VImage x = vips::VImage::xyz(width, height)[0];
  vips::VImage image =
      vips::VImage::black(width, height,
                          vips::VImage::option()->set("bands", bands)) +
      x;
  image = wide ? (image * 200).cast(VIPS_FORMAT_USHORT)
               : image.cast(VIPS_FORMAT_UCHAR);
  const VipsInterpretation kind =
      bands >= 3
          ? (wide ? VIPS_INTERPRETATION_RGB16 : VIPS_INTERPRETATION_sRGB)
          : (wide ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_B_W);
  return image.copy(vips::VImage::option()->set("interpretation", kind));
}

struct Case {
  const char* name;  // what the row stands for
  const char* file;
  int width;
  int height;
  int bits;
  std::int32_t colours;
};

class ImageHeaderTest : public ::testing::Test {
 protected:
  ImageHeaderTest() { VIPS_INIT("image_header_test"); }
  std::string PathOf(const std::string& name) const {
    return (dir_ / name).string();
  }
  void WriteBmp(const std::string& name, const BmpLayout& layout) const {
    dir_.WriteFile(name, EncodeBmp(layout, [](int x, int y) {
                     return static_cast<std::uint32_t>((x * 7 + y) % 4);
                   }));
  }
  TempDir dir_;
};

TEST_F(ImageHeaderTest, EveryFormatGivesItsSizeBitsAndColours) {
  Picture(641, 481, 3).jpegsave(PathOf("rgb.jpg").c_str());
  Picture(300, 200, 1).jpegsave(PathOf("grey.jpg").c_str());
  Picture(33, 17, 3).pngsave(PathOf("rgb.png").c_str());
  Picture(33, 17, 4).pngsave(PathOf("rgba.png").c_str());
  Picture(33, 17, 1).pngsave(PathOf("grey.png").c_str());
  Picture(33, 17, 3, /*wide=*/true).pngsave(PathOf("rgb16.png").c_str());
  Picture(40, 30, 3).tiffsave(PathOf("rgb.tif").c_str());
  Picture(40, 30, 4).tiffsave(PathOf("rgba.tif").c_str());
  Picture(40, 30, 1).tiffsave(
      PathOf("grey.tif").c_str(),
      vips::VImage::option()->set("bigtiff", false)->set("pyramid", false));
  Picture(40, 30, 3).tiffsave(
      PathOf("big-endian.tif").c_str(),
      vips::VImage::option()->set("compression",
                                  VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE));
  WriteBmp("rgb.bmp", BmpLayout(21, 11, 24));
  WriteBmp("rgbx.bmp", BmpLayout(21, 11, 32));
  WriteBmp("top-down.bmp", BmpLayout(21, 11, 24, /*top_down=*/true));
  BmpLayout palette(9, 5, 8);
  palette.palette = {{0, 0, 0}, {255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
  WriteBmp("palette.bmp", palette);

  const Case cases[] = {
      {"8-bit RGB JPEG", "rgb.jpg", 641, 481, 24, 16777216},
      {"grey JPEG", "grey.jpg", 300, 200, 8, 256},
      {"RGB PNG", "rgb.png", 33, 17, 24, 16777216},
      {"alpha adds bits, not colours", "rgba.png", 33, 17, 32, 16777216},
      {"grey PNG", "grey.png", 33, 17, 8, 256},
      {"16 bits a sample: more colours than 32 bits hold", "rgb16.png", 33, 17,
       48, 2147483647},
      {"RGB TIFF", "rgb.tif", 40, 30, 24, 16777216},
      {"RGBA TIFF", "rgba.tif", 40, 30, 32, 16777216},
      {"grey TIFF", "grey.tif", 40, 30, 8, 256},
      {"compressed TIFF", "big-endian.tif", 40, 30, 24, 16777216},
      {"24-bit bitmap", "rgb.bmp", 21, 11, 24, 16777216},
      {"32-bit bitmap: the fourth byte is no colour", "rgbx.bmp", 21, 11, 32,
       16777216},
      {"top-down bitmap (negative height)", "top-down.bmp", 21, 11, 24,
       16777216},
      {"palette bitmap: the entries it uses", "palette.bmp", 9, 5, 8, 4},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ImageHeader header;
    ASSERT_TRUE(ReadImageHeader(PathOf(c.file), header));
    EXPECT_EQ(header.width, c.width);
    EXPECT_EQ(header.height, c.height);
    EXPECT_EQ(header.bits, c.bits);
    EXPECT_EQ(header.colours, c.colours);
  }
}

TEST_F(ImageHeaderTest, PalettePngCountsItsPaletteEntries) {
  // Four grey levels saved with a palette.
  vips::VImage levels =
      (vips::VImage::xyz(16, 8)[0] / 4).cast(VIPS_FORMAT_UCHAR) * 60;
  levels.cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_B_W))
      .bandjoin(
          {levels.cast(VIPS_FORMAT_UCHAR), levels.cast(VIPS_FORMAT_UCHAR)})
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .pngsave(PathOf("palette.png").c_str(),
               vips::VImage::option()->set("palette", true));
  ImageHeader header;
  ASSERT_TRUE(ReadImageHeader(PathOf("palette.png"), header));
  EXPECT_EQ(header.kind, PhotoKind::kPng);
  EXPECT_EQ(header.width, 16);
  EXPECT_LE(header.bits, 8);
  EXPECT_GE(header.colours, 2);
  EXPECT_LE(header.colours, 1 << header.bits);
}

TEST_F(ImageHeaderTest, OnlyTheHeaderIsRead) {
  // A JPEG cut right after its frame header still tells its measures: no
  // pixel is decoded.
  Picture(1000, 700, 3).jpegsave(PathOf("whole.jpg").c_str());
  std::ifstream in(PathOf("whole.jpg"), std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(in)), {});
  const auto sos = bytes.find("\xFF\xDA");
  ASSERT_NE(sos, std::string::npos);
  dir_.WriteFile("cut.jpg", bytes.substr(0, sos + 2));
  ImageHeader header;
  ASSERT_TRUE(ReadImageHeader(PathOf("cut.jpg"), header));
  EXPECT_EQ(header.width, 1000);
  EXPECT_EQ(header.height, 700);
}

TEST_F(ImageHeaderTest, KindComesFromTheBytesNotTheName) {
  Picture(12, 10, 3).pngsave(PathOf("really-a-png.jpg").c_str());
  ImageHeader header;
  ASSERT_TRUE(ReadImageHeader(PathOf("really-a-png.jpg"), header));
  EXPECT_EQ(header.kind, PhotoKind::kPng);
  EXPECT_EQ(ImageKindName(header.kind), "PNG image");
  EXPECT_EQ(ImageKindName(PhotoKind::kJpeg), "JPEG image");
  EXPECT_EQ(ImageKindName(PhotoKind::kTiff), "TIFF image");
  EXPECT_EQ(ImageKindName(PhotoKind::kBmp), "Bitmap image");
}

TEST_F(ImageHeaderTest, BadFilesAreRefusedAndLeaveTheHeaderAlone) {
  Picture(64, 48, 3).pngsave(PathOf("good.png").c_str());
  std::ifstream in(PathOf("good.png"), std::ios::binary);
  std::string png((std::istreambuf_iterator<char>(in)), {});
  std::string zero_width = png;
  zero_width[16] = zero_width[17] = zero_width[18] = zero_width[19] = 0;
  dir_.WriteFile("zero-width.png", zero_width);
  dir_.WriteFile("short.png", png.substr(0, 20));
  dir_.WriteFile("text.jpg", "not an image at all");
  dir_.WriteFile("empty.jpg", "");
  dir_.WriteFile("soi-only.jpg", "\xFF\xD8\xFF\xD9");
  dir_.WriteFile("short.bmp", "BM\x10\x00");
  dir_.WriteFile("tiff-no-directory.tif", std::string("II*\0\xFF\xFF\0\0", 8));
  std::filesystem::create_directory(dir_ / "folder.jpg");
  const char* bad[] = {"zero-width.png",
                       "short.png",
                       "text.jpg",
                       "empty.jpg",
                       "soi-only.jpg",
                       "short.bmp",
                       "tiff-no-directory.tif",
                       "folder.jpg",
                       "missing.jpg"};
  for (const char* name : bad) {
    SCOPED_TRACE(name);
    ImageHeader header;
    header.width = 77;
    EXPECT_FALSE(ReadImageHeader(PathOf(name), header));
    EXPECT_EQ(header.width, 77);
  }
}

}  // namespace
}  // namespace qbpd
