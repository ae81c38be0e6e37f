#include "editor/fixed_names.h"

#include "editor/crop_sizes.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <fstream>

namespace qbpd {
namespace {

class FixedNamesTest : public ::testing::Test {
 protected:
  void Touch(const std::string& name) {
    std::ofstream((dir_.path() / name).string()) << "x";
  }
  std::string Next(const std::string& photo, const std::string& also = "") {
    return GetFixedFileName((dir_.path() / photo).string(),
                            dir_.path().string() + "/", also);
  }
  testing::TempDir dir_;
};

TEST_F(FixedNamesTest, TheMarkIsFoundInAnyCaseAndWrittenBackAsFixed) {
  struct Case {
    const char* photo;
    const char* expected;
  };
  const Case cases[] = {
      {"IMG1.jpg", "IMG1_Fixed(1)"},
      // The number behind the mark is continued.
      {"IMG1_FIXED(7).JPG", "IMG1_Fixed(8)"},
      {"IMG1_Fixed(1).Jpg", "IMG1_Fixed(2)"},
      // A mark without a bracketed number starts at 1.
      {"holiday_fixed.bmp", "holiday_Fixed(1)"},
      // The tail doesn't end in ")": its number isn't read, the rest is lost.
      {"a_Fixed(2)b.jpg", "a_Fixed(1)"},
      // Spaces before the mark are trimmed from the stem.
      {"trip  _fixed(3).png", "trip_Fixed(4)"},
      // The last mark counts.
      {"x_fixed(2)_FIXED(5).jpg", "x_fixed(2)_Fixed(6)"},
      {"(9).jpg", "(9)_Fixed(1)"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Next(c.photo), c.expected) << c.photo;
  }
}

TEST_F(FixedNamesTest, ANameThatIsTakenMovesTheNumberOn) {
  Touch("IMG1_Fixed(1).Jpg");
  EXPECT_EQ(Next("IMG1.jpg"), "IMG1_Fixed(2)");
  Touch("IMG1_Fixed(2).Jpg");
  EXPECT_EQ(Next("IMG1_Fixed(1).Jpg"), "IMG1_Fixed(3)");
  // Gaps below the start are not reused.
  EXPECT_EQ(Next("IMG1_Fixed(5).Jpg"), "IMG1_Fixed(6)");
}

TEST_F(FixedNamesTest, ATakenNameInAnotherLetterCaseIsNeverReplaced) {
  // The rule looks for ".Jpg"; here names differ by case, so a file the
  // user has as ".jpg" or ".JPG" is taken too.
  Touch("IMG2_Fixed(1).jpg");
  EXPECT_EQ(Next("IMG2.jpg"), "IMG2_Fixed(2)");
  Touch("img3_fixed(1).JPG");
  EXPECT_EQ(Next("img3.png"), "img3_Fixed(2)");
  // The extension the caller will write is looked at as well.
  Touch("IMG4_Fixed(1).JPEG");
  EXPECT_EQ(Next("IMG4.JPEG"), "IMG4_Fixed(1)");
  EXPECT_EQ(Next("IMG4.JPEG", "JPEG"), "IMG4_Fixed(2)");
  // Another type of the same name is no obstacle.
  Touch("IMG5_Fixed(1).png");
  EXPECT_EQ(Next("IMG5.jpg"), "IMG5_Fixed(1)");
}

TEST_F(FixedNamesTest, APrefixNameCountsFromItsBracketedNumber) {
  EXPECT_EQ(GetPrefixFixedName((dir_.path() / "beach.jpg").string(),
                               dir_.path().string()),
            "Fixed_(1) beach");
  EXPECT_EQ(GetPrefixFixedName((dir_.path() / "fixed_(4) beach.jpg").string(),
                               dir_.path().string()),
            "Fixed_(5) beach");
  Touch("Fixed_(1) sea.Jpg");
  EXPECT_EQ(GetPrefixFixedName((dir_.path() / "sea.jpg").string(),
                               dir_.path().string()),
            "Fixed_(2) sea");
}

TEST(CropSizesTest, TheExpressPrintsSettingChoosesBySubstring) {
  struct Case {
    std::string value;
    int preset;
  };
  const Case cases[] = {
      {"5x7Singles", 1},
      {"8x10", 2},
      {"Wallets", 3},
      {"WALLET set", 3},
      {"4x6Doubles", 0},
      {"", 0},
      // A trailing NUL, as a value read back may have, is cut.
      {std::string("8x10\0", 5), 2},
      // "5x7" is looked for first.
      {"5x7 and 8x10", 1},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(CropPresetFromExpressPrints(c.value), c.preset) << c.value;
  }
}

TEST(CropSizesTest, TheAspectTermsStandAsThePrintIsNamed) {
  ASSERT_EQ(kCropSizes.size(), 4u);
  EXPECT_EQ(kCropSizes[0].horizontal_x, 6);
  EXPECT_EQ(kCropSizes[0].horizontal_y, 4);
  EXPECT_EQ(kCropSizes[1].vertical_x, 5);
  EXPECT_EQ(kCropSizes[1].vertical_y, 7);
  EXPECT_EQ(kCropSizes[2].horizontal_x, 10);
  EXPECT_EQ(kCropSizes[2].horizontal_y, 8);
  // The wallet pair is not reduced to 4 x 6's.
  EXPECT_EQ(kCropSizes[3].vertical_x, 2);
  EXPECT_EQ(kCropSizes[3].vertical_y, 3);
}

}  // namespace
}  // namespace qbpd
