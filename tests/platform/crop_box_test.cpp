#include "platform/crop_box.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

constexpr double kGrip = 8;

// The printable minimum of each print size, in the box's orientation.
TEST(CropMinimumTest, FollowsThePrintSizeAndOrientation) {
  struct Case {
    int x, y;
    double w, h;
  };
  const Case cases[] = {
      {6, 4, 900, 600},    {4, 6, 600, 900},     // 4 x 6
      {7, 5, 900, 600},    {5, 7, 600, 900},     // 5 x 7
      {10, 8, 1280, 1024}, {8, 10, 1024, 1280},  // 8 x 10
      {3, 2, 419, 279},    {2, 3, 279, 419},     // wallets, terms unreduced
      {16, 9, 900, 600},   {1, 1, 900, 600},     // other shapes: 4 x 6 rule
  };
  for (const Case& c : cases) {
    const CropMinimum m = MinimumCropSize(c.x, c.y);
    EXPECT_EQ(m.w, c.w) << c.x << ":" << c.y;
    EXPECT_EQ(m.h, c.h) << c.x << ":" << c.y;
  }
}

TEST(CropBoxToolTest, StartsWithTheLargestCentredBox) {
  CropBoxTool tool;
  // A 4:3 photo with a 6:4 box: full width, centred vertically.
  ASSERT_TRUE(tool.Start(4000, 3000, 6, 4));
  EXPECT_DOUBLE_EQ(tool.Box().w, 4000);
  EXPECT_NEAR(tool.Box().h, 4000.0 * 4 / 6, 1e-9);
  EXPECT_NEAR(tool.Box().y, (3000 - 4000.0 * 4 / 6) / 2, 1e-9);
  EXPECT_DOUBLE_EQ(tool.Box().x, 0);
  // An upright 4:6 box on the same photo: full height, centred across.
  ASSERT_TRUE(tool.Start(4000, 3000, 4, 6));
  EXPECT_DOUBLE_EQ(tool.Box().h, 3000);
  EXPECT_DOUBLE_EQ(tool.Box().w, 2000);
  EXPECT_DOUBLE_EQ(tool.Box().x, 1000);
}

TEST(CropBoxToolTest, RefusesAPhotoTooSmallForThePrint) {
  CropBoxTool tool;
  // 900 x 600 is just printable at 4 x 6; one pixel less in height is not.
  EXPECT_TRUE(tool.Start(900, 600, 6, 4));
  EXPECT_FALSE(tool.Start(900, 599, 6, 4));
  EXPECT_FALSE(tool.Active());
  // The same photo is too small for 8 x 10 but enough for wallets.
  EXPECT_FALSE(tool.Start(1200, 1000, 10, 8));
  EXPECT_TRUE(tool.Start(1200, 1000, 3, 2));
  // Upright boxes need the height: 600 x 900 at least.
  EXPECT_FALSE(tool.Start(2000, 800, 4, 6));
  // Nonsense terms give no box.
  EXPECT_FALSE(tool.Start(4000, 3000, 0, 4));
  EXPECT_FALSE(tool.Start(4000, 3000, -6, 4));
}

TEST(CropBoxToolTest, FindsTheGrips) {
  CropBoxTool tool;
  ASSERT_TRUE(tool.Start(3000, 2000, 6, 4));  // the whole photo
  ASSERT_TRUE(tool.Start(3000, 3000, 6, 4));  // 3000 x 2000 at y = 500
  EXPECT_EQ(tool.GripAt(1500, 1500, kGrip), CropGrip::kMove);
  EXPECT_EQ(tool.GripAt(2, 503, kGrip), CropGrip::kTopLeft);
  EXPECT_EQ(tool.GripAt(2998, 2497, kGrip), CropGrip::kBottomRight);
  EXPECT_EQ(tool.GripAt(1500, 495, kGrip), CropGrip::kTop);
  EXPECT_EQ(tool.GripAt(3000, 1500, kGrip), CropGrip::kRight);
  EXPECT_EQ(tool.GripAt(1500, 100, kGrip), CropGrip::kNone);
}

TEST(CropBoxToolTest, MovesOnlyWithinThePhoto) {
  CropBoxTool tool;
  ASSERT_TRUE(tool.Start(4000, 3000, 4, 6));  // 2000 x 3000 at x = 1000
  ASSERT_TRUE(tool.Press(2000, 1500, kGrip));
  EXPECT_FALSE(tool.Drag(2500, 1500));
  EXPECT_DOUBLE_EQ(tool.Box().x, 1500);
  // Far past the right edge: the box stops against it, and can't go down.
  EXPECT_FALSE(tool.Drag(9000, 4000));
  EXPECT_DOUBLE_EQ(tool.Box().x, 2000);
  EXPECT_DOUBLE_EQ(tool.Box().y, 0);
  EXPECT_FALSE(tool.Drag(-9000, 1500));
  EXPECT_DOUBLE_EQ(tool.Box().x, 0);
  tool.Release();
  EXPECT_FALSE(tool.Dragging());
}

TEST(CropBoxToolTest, ResizesFromACornerKeepingTheAspect) {
  CropBoxTool tool;
  ASSERT_TRUE(tool.Start(4000, 3000, 6, 4));  // 4000 x 2666.7 at y = 166.7
  const CropRect start = tool.Box();
  ASSERT_TRUE(tool.Press(start.x + start.w, start.y + start.h, kGrip));
  EXPECT_FALSE(tool.Drag(3000, 2000));
  const CropRect& box = tool.Box();
  EXPECT_NEAR(box.w / box.h, 1.5, 1e-9);
  // The opposite corner stays where it was.
  EXPECT_DOUBLE_EQ(box.x, start.x);
  EXPECT_DOUBLE_EQ(box.y, start.y);
  EXPECT_NEAR(box.x + box.w, 3000, 1e-9);
  // Growing past the photo stops at its edge, still at the aspect.
  EXPECT_FALSE(tool.Drag(9000, 9000));
  EXPECT_LE(tool.Box().x + tool.Box().w, 4000 + 1e-9);
  EXPECT_LE(tool.Box().y + tool.Box().h, 3000 + 1e-9);
  EXPECT_NEAR(tool.Box().w / tool.Box().h, 1.5, 1e-9);
}

TEST(CropBoxToolTest, ResizesFromAnEdgeCentredAcrossIt) {
  CropBoxTool tool;
  ASSERT_TRUE(tool.Start(4000, 3000, 4, 6));   // 2000 x 3000 at x = 1000
  ASSERT_TRUE(tool.Press(1000, 1500, kGrip));  // the left edge
  EXPECT_FALSE(tool.Drag(1600, 1500));
  const CropRect& box = tool.Box();
  EXPECT_NEAR(box.x + box.w, 3000, 1e-9);  // the right edge stays
  EXPECT_NEAR(box.w, 1400, 1e-9);
  EXPECT_NEAR(box.h, 2100, 1e-9);
  EXPECT_NEAR(box.y, 450, 1e-9);  // centred on the old middle
}

TEST(CropBoxToolTest, RefusesToShrinkBelowThePrintableSize) {
  CropBoxTool tool;
  ASSERT_TRUE(tool.Start(1200, 900, 6, 4));   // 1200 x 800
  ASSERT_TRUE(tool.Press(1200, 850, kGrip));  // bottom right corner
  // Asking for 600 x 400 is refused: the box stays at 900 x 600.
  EXPECT_TRUE(tool.Drag(600, 450));
  EXPECT_NEAR(tool.Box().w, 900, 1e-9);
  EXPECT_NEAR(tool.Box().h, 600, 1e-9);
  // Just at the minimum is allowed.
  EXPECT_FALSE(tool.Drag(900, 650));
  EXPECT_NEAR(tool.Box().w, 900, 1e-9);
}

}  // namespace
}  // namespace qbpd
