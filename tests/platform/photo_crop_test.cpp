#include "platform/display_model.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <filesystem>
#include <string>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;
using testing::TempDir;

// A picture whose left half is red and right half blue, so a crop tells by
// its colours where it was taken.
vips::VImage Halves(int width, int height) {
  const vips::VImage right = vips::VImage::xyz(width, height)[0] >= width / 2;
  return right
      .ifthenelse(std::vector<double>{30, 30, 220},
                  std::vector<double>{220, 30, 30})
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB));
}

class PhotoCropTest : public ::testing::Test {
 protected:
  void SetUp() override {
    display_ = MakeVipsDisplayControl();
    display_->SetEventSink(
        [this](const std::string& event) { events_.push_back(event); });
  }

  std::string Photo(int width, int height, const std::string& name) {
    const std::string path = (dir_ / name).string();
    Halves(width, height).write_to_file(path.c_str());
    return path;
  }

  TempDir dir_;
  std::unique_ptr<DisplayControl> display_;
  std::vector<std::string> events_;
};

TEST_F(PhotoCropTest, ShowsTheLargestBoxOrRefusesAPhotoTooSmall) {
  ASSERT_TRUE(display_->LoadPhoto(Photo(1200, 900, "a.png")));
  ASSERT_TRUE(display_->SetCropAspect(6, 4));
  EXPECT_EQ(display_->ActiveTool(), DisplayControl::Tool::kCrop);
  double x = 0, y = 0, w = 0, h = 0;
  ASSERT_TRUE(display_->CropBox(x, y, w, h));
  EXPECT_DOUBLE_EQ(w, 1200);
  EXPECT_DOUBLE_EQ(h, 800);
  EXPECT_DOUBLE_EQ(y, 50);
  // 8 x 10 needs 1280 x 1024 landscape: no box, and the old one is gone.
  EXPECT_FALSE(display_->SetCropAspect(10, 8));
  EXPECT_FALSE(display_->CropBox(x, y, w, h));
  EXPECT_EQ(display_->ActiveTool(), DisplayControl::Tool::kNone);
  // Wallets fit, in either orientation (279 x 419 upright).
  EXPECT_TRUE(display_->SetCropAspect(2, 3));
  display_->ClearEdit();
  EXPECT_FALSE(display_->CropBox(x, y, w, h));
  EXPECT_EQ(display_->ActiveTool(), DisplayControl::Tool::kNone);
}

TEST_F(PhotoCropTest, DraggingBelowThePrintableSizeRaisesTheEventOnce) {
  ASSERT_TRUE(display_->LoadPhoto(Photo(1200, 900, "a.png")));
  ASSERT_TRUE(display_->ZoomTo(100));
  ASSERT_TRUE(display_->SetCropAspect(6, 4));  // 1200 x 800 at y = 50
  // A press outside the box is not taken (the view's own click).
  EXPECT_FALSE(display_->ToolMouseDown(600, 10, 1));
  // The bottom right corner, dragged far in.
  ASSERT_TRUE(display_->ToolMouseDown(1199, 849, 1));
  EXPECT_TRUE(display_->ToolMouseMove(700, 500, 1));
  EXPECT_TRUE(display_->ToolMouseMove(500, 400, 1));
  display_->ToolMouseUp(500, 400, 1);
  EXPECT_EQ(events_, std::vector<std::string>{"CropTooSmall"});
  double x = 0, y = 0, w = 0, h = 0;
  ASSERT_TRUE(display_->CropBox(x, y, w, h));
  EXPECT_NEAR(w, 900, 1e-6);
  EXPECT_NEAR(h, 600, 1e-6);
  EXPECT_NEAR(x, 0, 1e-6);
  EXPECT_NEAR(y, 50, 1e-6);
  // A second drag within the limits raises nothing.
  events_.clear();
  ASSERT_TRUE(display_->ToolMouseDown(450, 350, 1));
  EXPECT_TRUE(display_->ToolMouseMove(650, 350, 1));
  display_->ToolMouseUp(650, 350, 1);
  EXPECT_TRUE(events_.empty());
  ASSERT_TRUE(display_->CropBox(x, y, w, h));
  EXPECT_NEAR(x, 200, 1e-6);
}

TEST_F(PhotoCropTest, SavesTheBoxFromTheFullPhoto) {
  const std::string source = Photo(2400, 1800, "b.png");
  ASSERT_TRUE(display_->LoadPhoto(source));
  display_->SetViewSize(600, 400);
  ASSERT_TRUE(display_->ZoomFitToWidth());
  ASSERT_TRUE(display_->SetCropAspect(4, 6));  // 1200 x 1800, centred
  // Moved to the left edge: all red.
  ASSERT_TRUE(display_->ToolMouseDown(1200, 900, 1));
  display_->ToolMouseMove(0, 900, 1);
  display_->ToolMouseUp(0, 900, 1);
  const std::string target = (dir_ / "b_Fixed(1).Jpg").string();
  ASSERT_TRUE(display_->SaveCropped(target));
  const vips::VImage saved = vips::VImage::new_from_file(target.c_str());
  EXPECT_EQ(saved.width(), 1200);
  EXPECT_EQ(saved.height(), 1800);
  const vips::VImage red = saved.extract_band(0);
  const vips::VImage blue = saved.extract_band(2);
  EXPECT_GT(red.avg(), 200);
  EXPECT_LT(blue.avg(), 50);
}

TEST_F(PhotoCropTest, SavesNothingWithoutABoxOrWhereItCannotWrite) {
  const std::string source = Photo(1200, 900, "c.png");
  const std::string before = ReadFile(source);
  ASSERT_TRUE(display_->LoadPhoto(source));
  const std::string target = (dir_ / "c_Fixed(1).Jpg").string();
  EXPECT_FALSE(display_->SaveCropped(target));
  EXPECT_FALSE(fs::exists(target));
  ASSERT_TRUE(display_->SetCropAspect(6, 4));
  EXPECT_FALSE(display_->SaveCropped((dir_ / "gone" / "c.jpg").string()));
  // The photo itself is never touched by a crop.
  ASSERT_TRUE(display_->SaveCropped(target));
  EXPECT_EQ(ReadFile(source), before);
}

TEST_F(PhotoCropTest, WorksOnThePhotoAsItStandsUpright) {
  // Stored 900 x 1350 landscape-wise turned: EXIF 6 shows it 1350 x 900.
  const std::string path = (dir_ / "turned.jpg").string();
  vips::VImage stored = Halves(1350, 900).rot270().copy();
  stored.set(VIPS_META_ORIENTATION, 6);
  stored.write_to_file(path.c_str(), vips::VImage::option()->set("Q", 95));
  ASSERT_TRUE(display_->LoadPhoto(path));
  ASSERT_EQ(display_->PhotoWidth(), 1350);
  ASSERT_TRUE(display_->SetCropAspect(6, 4));  // 1350 x 900
  const std::string target = (dir_ / "turned_Fixed(1).Jpg").string();
  ASSERT_TRUE(display_->SaveCropped(target));
  const vips::VImage saved = vips::VImage::new_from_file(target.c_str());
  EXPECT_EQ(saved.width(), 1350);
  EXPECT_EQ(saved.height(), 900);
  // Saved upright: red on the left, and no turn left to apply.
  EXPECT_GT(saved.crop(0, 0, 600, 900).extract_band(0).avg(), 200);
  EXPECT_LT(saved.crop(750, 0, 600, 900).extract_band(0).avg(), 50);
  const int orientation = saved.get_typeof(VIPS_META_ORIENTATION) != 0
                              ? saved.get_int(VIPS_META_ORIENTATION)
                              : 1;
  EXPECT_EQ(orientation, 1);
}

}  // namespace
}  // namespace qbpd
