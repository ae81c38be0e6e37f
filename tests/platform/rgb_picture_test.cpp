#include "platform/rgb_picture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace qbpd {
namespace {

// A picture whose red channel is `red` (row after row), green and blue
// fixed, so that a pixel's place shows in its value.
RgbPicture Picture(int width, int height, const std::vector<int>& red) {
  RgbPicture picture;
  picture.width = width;
  picture.height = height;
  for (int value : red) {
    picture.pixels.push_back(static_cast<std::uint8_t>(value));
    picture.pixels.push_back(10);
    picture.pixels.push_back(200);
  }
  return picture;
}

std::vector<int> Reds(const RgbPicture& picture) {
  std::vector<int> reds;
  for (std::size_t i = 0; i < picture.pixels.size(); i += 3) {
    reds.push_back(picture.pixels[i]);
  }
  return reds;
}

TEST(RgbPictureTest, EachReducedPixelIsTheMeanOfTheAreaItCovers) {
  struct Case {
    const char* what;
    int width, height;
    std::vector<int> red;
    int to_width, to_height;
    std::vector<int> expected;
  };
  const std::vector<Case> cases = {
      {"halved", 4, 2, {0, 100, 200, 40, 50, 150, 0, 80}, 2, 1, {75, 80}},
      // Three pixels to two: each takes one whole and half of the middle.
      {"by one and a half", 3, 1, {0, 90, 240}, 2, 1, {30, 190}},
      {"unchanged", 2, 1, {7, 250}, 2, 1, {7, 250}},
      {"a column", 1, 4, {0, 40, 80, 121}, 1, 2, {20, 101}},
  };
  for (const Case& c : cases) {
    const RgbPicture reduced =
        Reduce(Picture(c.width, c.height, c.red), c.to_width, c.to_height);
    ASSERT_EQ(reduced.width, c.to_width) << c.what;
    ASSERT_EQ(reduced.height, c.to_height) << c.what;
    EXPECT_EQ(Reds(reduced), c.expected) << c.what;
    // A channel that is flat stays exactly as it was.
    EXPECT_EQ(reduced.pixels[1], 10) << c.what;
    EXPECT_EQ(reduced.pixels[2], 200) << c.what;
  }
}

TEST(RgbPictureTest, EnlargingBlendsTheTwoNearestPixelsEachWay) {
  struct Case {
    const char* what;
    int width, height;
    std::vector<int> red;
    int to_width, to_height;
    std::vector<int> expected;
  };
  const std::vector<Case> cases = {
      // The outer pixels keep their values; between them a quarter and
      // three quarters of the way.
      {"doubled across", 2, 1, {0, 200}, 4, 1, {0, 50, 150, 200}},
      {"doubled down", 1, 2, {0, 100}, 1, 4, {0, 25, 75, 100}},
      {"both ways",
       2,
       2,
       {0, 200, 0, 200},
       4,
       2,
       {0, 50, 150, 200, 0, 50, 150, 200}},
      {"unchanged", 2, 1, {7, 250}, 2, 1, {7, 250}},
      {"a single pixel", 1, 1, {90}, 3, 2, {90, 90, 90, 90, 90, 90}},
  };
  for (const Case& c : cases) {
    const RgbPicture enlarged =
        Enlarge(Picture(c.width, c.height, c.red), c.to_width, c.to_height);
    ASSERT_EQ(enlarged.width, c.to_width) << c.what;
    ASSERT_EQ(enlarged.height, c.to_height) << c.what;
    EXPECT_EQ(Reds(enlarged), c.expected) << c.what;
    for (std::size_t i = 0; i < enlarged.pixels.size(); i += 3) {
      EXPECT_EQ(enlarged.pixels[i + 1], 10) << c.what;
      EXPECT_EQ(enlarged.pixels[i + 2], 200) << c.what;
    }
  }
  EXPECT_EQ(Enlarge(Picture(2, 1, {1, 2}), 0, 5).pixels.size(), 0u);
}

TEST(RgbPictureTest, EveryOrientationStandsThePictureUpright) {
  // Stored 3 x 2:  1 2 3
  //                4 5 6
  const RgbPicture stored = Picture(3, 2, {1, 2, 3, 4, 5, 6});
  struct Case {
    int orientation;
    int width, height;
    std::vector<int> upright;
  };
  const std::vector<Case> cases = {
      {1, 3, 2, {1, 2, 3, 4, 5, 6}}, {2, 3, 2, {3, 2, 1, 6, 5, 4}},
      {3, 3, 2, {6, 5, 4, 3, 2, 1}}, {4, 3, 2, {4, 5, 6, 1, 2, 3}},
      {5, 2, 3, {1, 4, 2, 5, 3, 6}}, {6, 2, 3, {4, 1, 5, 2, 6, 3}},
      {7, 2, 3, {6, 3, 5, 2, 4, 1}}, {8, 2, 3, {3, 6, 2, 5, 1, 4}},
  };
  for (const Case& c : cases) {
    const RgbPicture upright = Upright(stored, c.orientation);
    EXPECT_EQ(upright.width, c.width) << c.orientation;
    EXPECT_EQ(upright.height, c.height) << c.orientation;
    EXPECT_EQ(Reds(upright), c.upright) << c.orientation;
  }
}

}  // namespace
}  // namespace qbpd
