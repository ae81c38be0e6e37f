#include "platform/bitmap_save.h"

#include "platform/bmp_reader.h"
#include "platform/image_header.h"
#include "tests/support/bmp_writer.h"
#include "tests/support/camera_facts_photo.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using qbpd::testing::TempDir;

// The bitmap's pixels as its reader gives them.
BmpPixels ReadBitmap(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  BmpPixels pixels;
  EXPECT_TRUE(DecodeBmp(in, 1u << 30, 1, pixels).ok()) << path;
  return pixels;
}

// The source decoded upright by libvips, as 8-bit RGB on white.
BmpPixels Upright(const std::string& path) {
  vips::VImage image = vips::VImage::new_from_file(path.c_str()).autorot();
  if (image.has_alpha()) {
    image = image.flatten(
        vips::VImage::option()->set("background", std::vector<double>{255}));
  }
  image = image.colourspace(VIPS_INTERPRETATION_sRGB).cast(VIPS_FORMAT_UCHAR);
  if (image.bands() > 3) {
    image = image.extract_band(0, vips::VImage::option()->set("n", 3));
  }
  size_t size = 0;
  void* data = image.write_to_memory(&size);
  BmpPixels pixels;
  pixels.width = image.width();
  pixels.height = image.height();
  pixels.rgb.assign(static_cast<std::uint8_t*>(data),
                    static_cast<std::uint8_t*>(data) + size);
  g_free(data);
  return pixels;
}

// The largest difference of one sample between the two pictures.
int LargestDifference(const BmpPixels& a, const BmpPixels& b) {
  int largest = 0;
  for (size_t i = 0; i < a.rgb.size() && i < b.rgb.size(); ++i) {
    largest = std::max(largest, std::abs(a.rgb[i] - b.rgb[i]));
  }
  return largest;
}

vips::VImage Gradient(int width, int height, int bands) {
  vips::VImage x = vips::VImage::xyz(width, height)[0];
  vips::VImage y = vips::VImage::xyz(width, height)[1];
  vips::VImage rgb =
      (x * (255.0 / width)).bandjoin({y * (255.0 / height), x * 0 + 60});
  if (bands == 4) {
    rgb = rgb.bandjoin(x * 0 + 128);
  }
  return rgb.cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB));
}

class BitmapSaveTest : public ::testing::Test {
 protected:
  BitmapSaveTest() { VIPS_INIT("bitmap_save_test"); }
  std::string P(const std::string& name) const {
    return (dir_ / name).string();
  }
  TempDir dir_;
};

TEST_F(BitmapSaveTest, EveryKindBecomesTheSamePictureAsABitmap) {
  Gradient(63, 41, 3).jpegsave(P("a.jpg").c_str(),
                               vips::VImage::option()->set("Q", 95));
  Gradient(63, 41, 3).pngsave(P("a.png").c_str());
  Gradient(63, 41, 4).pngsave(P("alpha.png").c_str());
  Gradient(63, 41, 3).tiffsave(P("a.tif").c_str());
  dir_.WriteFile("a.bmp",
                 qbpd::testing::EncodeBmp(
                     qbpd::testing::BmpLayout(63, 41, 24), [](int x, int y) {
                       return static_cast<std::uint32_t>((x * 4) << 16 |
                                                         (y * 6) << 8 | 60);
                     }));
  for (const char* name : {"a.jpg", "a.png", "alpha.png", "a.tif", "a.bmp"}) {
    SCOPED_TRACE(name);
    const std::string target = P(std::string(name) + ".bmp");
    ASSERT_TRUE(SaveUprightBitmap(P(name), target));
    ImageHeader header;
    ASSERT_TRUE(ReadImageHeader(target, header));
    EXPECT_EQ(header.kind, PhotoKind::kBmp);
    EXPECT_EQ(header.bits, 24);
    const BmpPixels saved = ReadBitmap(target);
    ASSERT_EQ(saved.width, 63);
    ASSERT_EQ(saved.height, 41);
    if (std::string(name) != "a.bmp") {
      // Lossless from the decoded picture.
      EXPECT_EQ(LargestDifference(saved, Upright(P(name))), 0);
    } else {
      std::ifstream in(P(name), std::ios::binary);
      BmpPixels source;
      ASSERT_TRUE(DecodeBmp(in, 1u << 30, 1, source).ok());
      EXPECT_EQ(saved.rgb, source.rgb);
    }
  }
}

TEST_F(BitmapSaveTest, TheCamerasTurnIsApplied) {
  // Stored 80 x 40, to be shown turned a quarter to the right.
  qbpd::testing::TestCameraFacts camera;
  camera.orientation = 6;
  ASSERT_TRUE(
      qbpd::testing::WriteCameraFactsPhoto(P("turned.jpg"), 80, 40, camera));
  ASSERT_TRUE(SaveUprightBitmap(P("turned.jpg"), P("turned.bmp")));
  const BmpPixels saved = ReadBitmap(P("turned.bmp"));
  EXPECT_EQ(saved.width, 40);
  EXPECT_EQ(saved.height, 80);
  EXPECT_LE(LargestDifference(saved, Upright(P("turned.jpg"))), 0);
}

TEST_F(BitmapSaveTest, ASecondSaveOverwritesAndAFailureLeavesTheFile) {
  Gradient(30, 20, 3).pngsave(P("first.png").c_str());
  Gradient(50, 10, 3).pngsave(P("second.png").c_str());
  const std::string target = P("Quillbay picture desk.bmp");
  ASSERT_TRUE(SaveUprightBitmap(P("first.png"), target));
  ASSERT_TRUE(SaveUprightBitmap(P("second.png"), target));
  EXPECT_EQ(ReadBitmap(target).width, 50);
  const std::string before = qbpd::testing::ReadFile(target);

  dir_.WriteFile("text.jpg", "not a photo");
  std::string jpeg;
  Gradient(40, 40, 3).jpegsave(P("whole.jpg").c_str());
  jpeg = qbpd::testing::ReadFile(P("whole.jpg"));
  dir_.WriteFile("cut.jpg", jpeg.substr(0, jpeg.size() / 2));
  fs::create_directory(P("folder.png"));
  for (const char* bad : {"text.jpg", "cut.jpg", "folder.png", "missing.png"}) {
    SCOPED_TRACE(bad);
    EXPECT_FALSE(SaveUprightBitmap(P(bad), target));
    EXPECT_EQ(qbpd::testing::ReadFile(target), before);
  }
  // Nothing half written is left beside it.
  for (const auto& entry : fs::directory_iterator(dir_.path())) {
    EXPECT_NE(entry.path().filename().string().front(), '.') << entry.path();
  }
}

}  // namespace
}  // namespace qbpd
