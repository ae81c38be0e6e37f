// The crop panel: the preset from the settings or the menu, the orientation
// from the photo's shape, the six handlers, the too-small rule in its two
// forms, and the box made afresh when the layout changes.
#include "core/settings.h"
#include "tests/editor/editor_fixture.h"

namespace qbpd {
namespace {

using testing_support::EditorTest;

class CropTest : public EditorTest {
 protected:
  void StartWith(int width, int height, const std::string& express = "") {
    if (!express.empty()) {
      extra_settings_.emplace_back(std::string(kExpressPrintsKey),
                                   "ExpressPrints", express);
    }
    photo_ = WritePhoto("IMG1.jpg", width, height);
    Start();
  }
  std::string LastAspect() const {
    std::vector<std::string> calls =
        display_->CallsStartingWith("SetCropAspect");
    return calls.empty() ? std::string() : calls.back();
  }
  std::string photo_;
};

TEST_F(CropTest, TheSettingPresetsTheSizeAndThePhotoTheOrientation) {
  struct Case {
    int width;
    int height;
    const char* express;
    const char* aspect;
  };
  const Case cases[] = {
      // A landscape photo: horizontal, 6 : 4 for the default 4 x 6.
      {320, 240, "", "SetCropAspect(6,4)"},
      {320, 240, "4x6Doubles", "SetCropAspect(6,4)"},
      {320, 240, "5x7Singles", "SetCropAspect(7,5)"},
      {240, 320, "8x10", "SetCropAspect(8,10)"},
      // A square photo opens vertical.
      {300, 300, "Wallets", "SetCropAspect(2,3)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.express);
    extra_settings_.clear();
    StartWith(c.width, c.height, c.express);
    user::Click(main().imgCrop);
    EXPECT_EQ(main().edit.optHor.Value(), c.width > c.height);
    EXPECT_EQ(main().edit.optVer.Value(), c.width <= c.height);
    // One box only: the orientation found no size set yet.
    EXPECT_EQ(display_->CallsStartingWith("SetCropAspect").size(), 1u);
    EXPECT_EQ(LastAspect(), c.aspect);
    EXPECT_FALSE(main().FieldValue("mbCropTooSmall").ToBool());
    user::Click(main().imgCancel);
    display_->calls.clear();
  }
}

TEST_F(CropTest, TheMenuChoosesTheSizeWhateverTheSetting) {
  StartWith(320, 240, "5x7Singles");
  user::PickMenu(main().mnuPCrop8x10);
  EXPECT_TRUE(main().edit.opt8x10.Value());
  EXPECT_EQ(LastAspect(), "SetCropAspect(10,8)");
  // Turning the box: with Wallets the vertical pair is 2, 3.
  user::Click(main().edit.optWallet);
  EXPECT_EQ(LastAspect(), "SetCropAspect(3,2)");
  user::Click(main().edit.imgCropVert);
  EXPECT_TRUE(main().edit.optVer.Value());
  EXPECT_EQ(LastAspect(), "SetCropAspect(2,3)");
  // Each choice starts with a fresh box.
  EXPECT_EQ(display_->CallsStartingWith("ClearEdit").size(), 3u);
  // After the panel closed, the setting's size counts again.
  user::Click(main().imgCancel);
  EXPECT_EQ(main().FieldValue("miCropPreset").ToLong(), -1);
  EXPECT_FALSE(main().edit.opt8x10.Value());
  user::Click(main().imgCrop);
  EXPECT_TRUE(main().edit.opt5x7.Value());
}

TEST_F(CropTest, FromTheMenuAPhotoThatIsGoneOpensNothing) {
  StartWith(320, 240);
  std::filesystem::remove(photo_);
  Answer(kIdOk);
  user::PickMenu(main().mnuPCrop4x6);
  EXPECT_EQ(LastMessage(), "Selected photo does not exist");
  EXPECT_EQ(host().MessageBoxes().back().style, kMbStop);
  EXPECT_EQ(session().giCurrentOperation, 0);
  EXPECT_FALSE(main().edit.fraCrop.Visible());
}

TEST_F(CropTest, ARefusedSizeBlocksApplyUntilASizeThatFits) {
  // Vertical boxes of a 320 x 240 photo: 4 x 6 is 160 wide, 8 x 10 192.
  display_->min_crop_short_side = 180;
  StartWith(320, 240);
  user::Click(main().imgCrop);
  EXPECT_FALSE(main().FieldValue("mbCropTooSmall").ToBool());
  // Turned upright, the 4 x 6 box is too narrow.
  Answer(kIdOk);
  user::Click(main().edit.optVer);
  EXPECT_EQ(LastAspect(), "SetCropAspect(4,6)");
  EXPECT_EQ(LastMessage(),
            "Sorry! Your photo is too small to further crop and then print at "
            "this size");
  EXPECT_EQ(host().MessageBoxes().back().style, kMbInformation);
  EXPECT_TRUE(main().FieldValue("mbCropTooSmall").ToBool());
  EXPECT_EQ(main().ctlDisplayImage.Display()->ActiveTool(),
            DisplayControl::Tool::kNone);
  // Apply repeats the message and writes nothing.
  Answer(kIdOk);
  user::Click(main().imgApplyChanges);
  EXPECT_EQ(host().MessageBoxes().size(), 2u);
  EXPECT_TRUE(display_->CallsStartingWith("SaveCropped").empty());
  EXPECT_EQ(session().giCurrentOperation, 1);
  // A size that fits clears the refusal, and the crop can be applied.
  user::Click(main().edit.opt8x10);
  EXPECT_FALSE(main().FieldValue("mbCropTooSmall").ToBool());
  user::Click(main().imgApplyChanges);
  const std::string made = InPhotos("IMG1_Fixed(1).Jpg");
  EXPECT_TRUE(Exists(made));
  EXPECT_EQ(HeightOf(made), 240);
  EXPECT_EQ(WidthOf(made), 192);
  EXPECT_EQ(WidthOf(photo_), 320);
}

TEST_F(CropTest, DraggingBelowThePrintableSizeSaysSoAndKeepsTheBox) {
  StartWith(320, 240);
  user::Click(main().imgCrop);
  Answer(kIdOk);
  display_->current->RaiseEvent("CropTooSmall");
  EXPECT_EQ(LastMessage(),
            "Sorry! Your photo is too small to further crop and then print at "
            "this size");
  EXPECT_FALSE(main().FieldValue("mbCropTooSmall").ToBool());
  EXPECT_EQ(main().ctlDisplayImage.Display()->ActiveTool(),
            DisplayControl::Tool::kCrop);
}

TEST_F(CropTest, ANewLayoutMakesTheBoxAfresh) {
  StartWith(320, 240);
  user::Click(main().imgCrop);
  // The user moved the box.
  user::Drag(main().ctlDisplayImage, {160, 120, true}, {170, 120, true}, 2);
  display_->calls.clear();
  main().Move(0, 0, 16000, 12000);
  ASSERT_GE(Calls().size(), 2u);
  EXPECT_EQ(display_->CallsStartingWith("ClearEdit").size(), 1u);
  EXPECT_EQ(LastAspect(), "SetCropAspect(6,4)");
  double x = 0, y = 0, w = 0, h = 0;
  ASSERT_TRUE(main().ctlDisplayImage.Display()->CropBox(x, y, w, h));
  EXPECT_DOUBLE_EQ(x, 0);
  // In red-eye mode the tool is only cleared.
  user::Click(main().imgCancel);
  user::Click(main().imgRedeye);
  display_->calls.clear();
  main().Move(0, 0, 17000, 12500);
  EXPECT_EQ(display_->CallsStartingWith("ClearEdit").size(), 1u);
  EXPECT_TRUE(display_->CallsStartingWith("SetCropAspect").empty());
}

TEST_F(CropTest, CancelWritesNothingAndTheZoomComesBack) {
  zoom_setting_ = "OriginalSize";
  StartWith(320, 240);
  user::PickMenu(main().mnuVZoom50);
  ASSERT_EQ(main().ctlDisplayImage.ZoomPercent(), 50);
  user::Click(main().imgCrop);
  EXPECT_NE(main().ctlDisplayImage.ZoomPercent(), 50);
  user::Click(main().imgCancel);
  EXPECT_EQ(main().ctlDisplayImage.ZoomPercent(), 50);
  EXPECT_TRUE(main().mnuVZoom50.Checked());
  EXPECT_TRUE(display_->CallsStartingWith("SaveCropped").empty());
  EXPECT_EQ(session().gdicPhotoList.Count(), 1);
}

}  // namespace
}  // namespace qbpd
