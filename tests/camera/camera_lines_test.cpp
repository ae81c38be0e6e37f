#include "camera/camera_lines.h"

#include <gtest/gtest.h>

#include <set>

namespace qbpd {
namespace {

TEST(CameraLinesTest, DevMonLineTakesTheTextBetweenSeparatorAndTerminator) {
  struct Case {
    const char* line;
    const char* code;
    const char* device;
  };
  for (const Case& c : {
           Case{"100 E:|", "100", "E:"},                // a drive
           Case{"200 Canon EOS|", "200", "Canon EOS"},  // a camera
           Case{"100 E:", "100", "E"},  // no terminator: one cut
           Case{"100", "100", ""},      // code alone
           Case{"10", "10", ""},        // short line
       }) {
    const DevMonLine line = ParseDevMonLine(c.line);
    EXPECT_EQ(line.code, c.code) << c.line;
    EXPECT_EQ(line.device, c.device) << c.line;
  }
  EXPECT_EQ(MakeDevMonLine("100", "E:"), "100 E:|\n");
  EXPECT_EQ(ParseDevMonLine("100 E:|").device, "E:");
}

TEST(CameraLinesTest, ImgAcqLineCutsNulAndBar) {
  EXPECT_EQ(ParseImgAcqLine("300 /p/01-02-2026|").folder, "/p/01-02-2026");
  EXPECT_EQ(ParseImgAcqLine(std::string("300 /p/x|\0", 10)).folder, "/p/x");
  EXPECT_EQ(ParseImgAcqLine("300 /p/x").folder, "/p/x");
  EXPECT_EQ(ParseImgAcqLine("410").code, "410");
  EXPECT_EQ(ParseImgAcqLine("410").folder, "");
}

TEST(CameraLinesTest, DeviceListDropsBlanksDuplicatesAndTheEnd) {
  using V = std::vector<std::string>;
  EXPECT_EQ(DeviceListEntries(std::string("Cam A|E:| |cam a|F:|\0", 21)),
            (V{"Cam A", "E:", "F:"}));
  EXPECT_EQ(DeviceListEntries(""), V{});
  EXPECT_EQ(DeviceListEntries("|"), V{});
  EXPECT_EQ(DeviceListEntries(std::string("\0", 1)), V{});
  EXPECT_EQ(DeviceListEntries("X"), V{"X"});
}

TEST(CameraLinesTest, DateFolderNames) {
  EXPECT_EQ(DateFolderName("0", 2026, 3, 7), "03-07-2026");
  EXPECT_EQ(DateFolderName("1", 2026, 3, 7), "07-03-2026");
  EXPECT_EQ(DateFolderName("2", 2026, 3, 7), "");
  EXPECT_EQ(DateFolderName("x", 2026, 3, 7), "");
}

TEST(CameraLinesTest, NumberedFolderCountsOnInThreeDigits) {
  std::set<std::string> taken;
  auto exists = [&](const std::string& p) { return taken.count(p) > 0; };
  EXPECT_EQ(NumberedFolder("/b/d", exists), "/b/d");
  taken = {"/b/d"};
  EXPECT_EQ(NumberedFolder("/b/d", exists), "/b/d_001");
  // "_001" to "_003" taken too: "_004".
  taken = {"/b/d", "/b/d_001", "/b/d_002", "/b/d_003"};
  EXPECT_EQ(NumberedFolder("/b/d", exists), "/b/d_004");
  // Every candidate taken: the last one tried is kept.
  EXPECT_EQ(NumberedFolder("/b/d", [](const std::string&) { return true; }),
            "/b/d_999");
}

TEST(CameraLinesTest, FreeFileNamesAndPictureNames) {
  std::set<std::string> taken{"IMG_1.JPG", "IMG_1_001.JPG"};
  auto is_taken = [&](const std::string& n) { return taken.count(n) > 0; };
  EXPECT_EQ(FreeFileName("IMG_2.JPG", is_taken), "IMG_2.JPG");
  EXPECT_EQ(FreeFileName("IMG_1.JPG", is_taken), "IMG_1_002.JPG");
  taken = {"README"};
  EXPECT_EQ(FreeFileName("README", is_taken), "README_001");
  EXPECT_EQ(PictureName("Picture", 1, "IMG_0001.JPG"), "Picture 1.JPG");
  EXPECT_EQ(PictureName("03-07-2026", 12, "a.cr2"), "03-07-2026 12.cr2");
  EXPECT_EQ(PictureName("", 3, "noext"), "3");
}

}  // namespace
}  // namespace qbpd
