// Files a careful attacker would hand the program, made here in a private
// folder and put through the real image paths: the thumbnail, the photo view
// and its measures. Each fails cleanly or shows; none aborts or blocks.

#include "platform/display_model.h"
#include "platform/image_operations.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

constexpr int kThumbnailSize = 85;
constexpr int kQuality = 70;
constexpr std::pair<int, int> kViews[] = {{0, 0},
                                          {1, 1},
                                          {85, 85},
                                          {333, 200},
                                          {1920, 1080}};

vips::VImage Grey(int width, int height, int bands) {
  return (vips::VImage::black(width, height,
                              vips::VImage::option()->set("bands", bands)) +
          128)
      .cast(VIPS_FORMAT_UCHAR);
}

void SaveJpeg(const vips::VImage& image,
              const fs::path& path,
              bool progressive = false) {
  image.jpegsave(path.c_str(),
                 vips::VImage::option()->set("interlace", progressive));
}

class HostileImageTest : public ::testing::Test {
 protected:
  HostileImageTest()
      : images_(MakeVipsImageOperations((temp_ / "cache").string())),
        view_(MakeVipsDisplayControl()) {}

  // Runs `photo` through every image path. Returns whether the thumbnail
  // was made and whether the view took the photo.
  std::pair<bool, bool> Attack(const fs::path& photo) {
    const bool thumbnail = images_->GenerateThumbnailExt(
                               photo.string(), (temp_ / "thumb.jpg").string(),
                               kThumbnailSize, kQuality) == 1;
    std::string buffer;
    const bool cached =
        images_->GenerateThumbnailAndBuffer(photo.string(), buffer,
                                            kThumbnailSize, kQuality) == 1;
    EXPECT_EQ(thumbnail, cached) << photo;
    bool shown = false;
    // Views from a sliver to a wide screen, before and after the first
    // size is known.
    for (const auto& [width, height] : kViews) {
      view_->SetViewSize(width, height);
      const bool loaded = view_->LoadPhoto(photo.string());
      EXPECT_TRUE(!shown || loaded) << photo << " in " << width;
      shown = loaded;
      if (loaded) {
        TryEveryZoom(photo);
      }
    }
    return {thumbnail, shown};
  }

  // The measures, and every zoom and turn a person can reach; a zoom may be
  // refused (a fit that would pass the largest shown side) but never fail
  // the picture that is shown.
  void TryEveryZoom(const fs::path& photo) {
    EXPECT_GT(view_->PhotoWidth(), 0);
    EXPECT_GT(view_->PhotoHeight(), 0);
    std::vector<std::uint8_t> rgb;
    for (int turn = 0; turn < 4; ++turn) {
      for (const int percent : {1, 50, 1600}) {
        view_->ZoomTo(percent);
        EXPECT_GE(view_->ShownWidth(), 1);
        EXPECT_GE(view_->ShownHeight(), 1);
        EXPECT_TRUE(view_->Render(0, 0, 640, 480, rgb)) << photo;
      }
      if (view_->ZoomFitToWidth()) {
        EXPECT_TRUE(view_->Render(0, 0, 640, 480, rgb)) << photo;
      }
      view_->RotateView(90);
    }
  }

  // A thumbnail of `photo`, decoded; its width and height.
  std::pair<int, int> ThumbnailSize(const fs::path& photo) {
    const fs::path out = temp_ / "measured.jpg";
    if (images_->GenerateThumbnailExt(photo.string(), out.string(),
                                      kThumbnailSize, kQuality) != 1) {
      return {0, 0};
    }
    const vips::VImage image = vips::VImage::new_from_file(out.c_str());
    return {image.width(), image.height()};
  }

  TempDir temp_;
  std::unique_ptr<ImageOperations> images_;
  std::unique_ptr<DisplayControl> view_;
};

TEST_F(HostileImageTest, ExtremeAspectRatiosScaleToAtLeastOnePixel) {
  const fs::path wide = temp_ / "wide.jpg";
  SaveJpeg(Grey(65500, 1, 3), wide);
  const fs::path wide_progressive = temp_ / "wide-progressive.jpg";
  SaveJpeg(Grey(65500, 1, 3), wide_progressive, /*progressive=*/true);
  const fs::path tall = temp_ / "tall.jpg";
  SaveJpeg(Grey(1, 65500, 3), tall);
  const fs::path tall_png = temp_ / "tall.png";
  Grey(2, 60000, 3).pngsave(tall_png.c_str());
  const fs::path cmyk = temp_ / "cmyk.jpg";
  SaveJpeg(Grey(6000, 4, 4)
               .copy(vips::VImage::option()->set("interpretation",
                                                 VIPS_INTERPRETATION_CMYK)),
           cmyk);

  for (const fs::path& photo : {wide, wide_progressive, cmyk}) {
    EXPECT_EQ(Attack(photo), std::make_pair(true, true)) << photo;
    const auto [width, height] = ThumbnailSize(photo);
    EXPECT_EQ(width, kThumbnailSize) << photo;
    EXPECT_EQ(height, 1) << photo;
  }
  for (const fs::path& photo : {tall, tall_png}) {
    EXPECT_EQ(Attack(photo), std::make_pair(true, true)) << photo;
    const auto [width, height] = ThumbnailSize(photo);
    EXPECT_EQ(width, 1) << photo;
    EXPECT_EQ(height, kThumbnailSize) << photo;
  }
  view_->SetViewSize(800, 600);
  ASSERT_TRUE(view_->LoadPhoto(wide.string()));
  EXPECT_EQ(view_->PhotoWidth(), 65500);
  EXPECT_EQ(view_->PhotoHeight(), 1);
}

}  // namespace
}  // namespace qbpd
