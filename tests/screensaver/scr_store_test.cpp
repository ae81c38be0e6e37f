#include "screensaver/scr_store.h"

#include "platform/profile_file.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;
using testing::TempDir;

using Names = std::vector<std::string>;

// --- the effects -------------------------------------------------------------

TEST(EffectsTest, DecodingKeepsItsFirstTestAgainstFifteen) {
  const struct {
    int value;
    const char* codes;
  } cases[] = {
      {15, "3001>2007>7002>2000"},
      {12, "2007>2007>2007"},  // below 15: the top bit decodes as 2007
      {8, "2007>2007"},
      {9, "2007>2007>2000"},
      {14, "2007>2007>2007>7002"},
      {4, "2007"},
      {6, "2007>7002"},
      {3, "7002>2000"},
      {1, "2000"},
      {0, ""},
      {-3, ""},
      {31, "3001>3001>3001>2007"},  // at most four passes
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DecodeTransitionEffects(c.value), c.codes) << c.value;
  }
}

TEST(EffectsTest, BoxesDecodeByTheSamePasses) {
  // A saved 8 shows as the diagonal box, not "from centre".
  EXPECT_EQ(DecodeEffectBoxes(8), (EffectBoxes{false, true, false, false}));
  EXPECT_EQ(DecodeEffectBoxes(15), (EffectBoxes{true, true, true, true}));
  EXPECT_EQ(DecodeEffectBoxes(5), (EffectBoxes{false, true, false, true}));
  EXPECT_EQ(DecodeEffectBoxes(0), EffectBoxes{});
}

TEST(EffectsTest, BoxesGiveTheirSumAndCodesInTheirOrder) {
  EXPECT_EQ(EffectsValue({true, true, true, true}), 15);
  EXPECT_EQ(EffectsValue({true, false, false, true}), 9);
  EXPECT_EQ(EffectCodes({true, false, true, true}), "3001>7002>2000");
  EXPECT_EQ(EffectCodes({false, false, false, false}), "");
}

TEST(ScrNumberTest, LeadingDigitsOnly) {
  EXPECT_EQ(ScrNumber(" 12 "), 12);
  EXPECT_EQ(ScrNumber("3abc"), 3);
  EXPECT_EQ(ScrNumber("abc"), 0);
  EXPECT_EQ(ScrNumber(""), 0);
  EXPECT_EQ(ScrNumber("-2"), -2);
}

// --- the file ----------------------------------------------------------------

class ScrStoreTest : public ::testing::Test {
 protected:
  std::string Ini() const { return (dir_ / "scr.ini").string(); }
  std::string Photo(const std::string& name) const {
    return dir_.WriteFile("photos/" + name, "jpeg").string();
  }
  std::string Get(const std::string& section, const std::string& key) const {
    return GetProfileString(Ini(), section, key, "<none>");
  }
  TempDir dir_;
};

TEST_F(ScrStoreTest, FirstSaverInANewFile) {
  ASSERT_TRUE(MakeScrIniIfMissing(Ini()));
  EXPECT_EQ(ReadFile(Ini()),
            "[General]\nScreensaverFileName=Quillbay.scr\nNumberOfSsavers=0\n"
            "DefaultSsaver=\n");
  int count = 0;
  const std::string a = Photo("a.jpg");
  const std::string b = Photo("b.jpg");
  ASSERT_TRUE(CreateScreensaver(Ini(), "Summer", {a, b}, count));
  EXPECT_EQ(count, 1);
  EXPECT_EQ(Get("General", "NumberOfSsavers"), "1");
  EXPECT_EQ(Get("General", "Ssaver1"), "Summer");
  EXPECT_EQ(Get("Summer", "NumberofImages"), "2");
  EXPECT_EQ(Get("Summer", "Image1"), a);
  EXPECT_EQ(Get("Summer", "Image2"), b);
  EXPECT_EQ(Get("Summer", "ImageInterval"), "10");
  EXPECT_EQ(Get("Summer", "TransitionEffects"), "15");
  // The file is private to the user.
  struct stat info {};
  ASSERT_EQ(stat(Ini().c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
}

TEST_F(ScrStoreTest, AnExistingFileIsNotRemade) {
  dir_.WriteFile("scr.ini", "[General]\nNumberOfSsavers=2\n");
  ASSERT_TRUE(MakeScrIniIfMissing(Ini()));
  EXPECT_EQ(ReadFile(Ini()), "[General]\nNumberOfSsavers=2\n");
}

TEST_F(ScrStoreTest, NamesAndKeysMatchWithoutCase) {
  const std::string a = Photo("a.jpg");
  dir_.WriteFile("scr.ini",
                 "[general]\nnumberofssavers=1\nSSAVER1=Beach\n"
                 "[BEACH]\nNumberOfImages=1\nimage1=" +
                     a + "\n");
  EXPECT_EQ(ReadScreensaverNames(Ini()), Names{"Beach"});
  EXPECT_EQ(ReadScreensaverPhotos(Ini(), "beach"), Names{a});
  EXPECT_TRUE(HasScreensaverName({"Beach"}, "bEACH"));
  EXPECT_FALSE(HasScreensaverName({"Beach"}, "Beach2"));
}

TEST_F(ScrStoreTest, AddingNeverTakesAPhotoTwiceCaseIgnored) {
  const std::string a = Photo("a.jpg");
  const std::string b = Photo("b.jpg");
  const std::string c = Photo("c.jpg");
  int count = 0;
  ASSERT_TRUE(CreateScreensaver(Ini(), "S", {a, b}, count));
  std::string upper_a = a;
  for (char& ch : upper_a) {
    ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
  }
  int added = -1;
  ASSERT_TRUE(AddPhotosToScreensaver(Ini(), "s", {upper_a, c, b, c}, added));
  EXPECT_EQ(added, 1);
  EXPECT_EQ(ReadScreensaverPhotos(Ini(), "S"), (Names{a, b, c}));
  EXPECT_EQ(Get("S", "NumberofImages"), "3");
  // A photo already there leaves the count as it was.
  ASSERT_TRUE(AddPhotosToScreensaver(Ini(), "S", {b}, added));
  EXPECT_EQ(added, 0);
  EXPECT_EQ(Get("S", "NumberofImages"), "3");
}

TEST_F(ScrStoreTest, RepairClosesUpGapsAndDropsEmptySavers) {
  const std::string a = Photo("a.jpg");
  const std::string c = Photo("c.jpg");
  const std::string gone = (dir_ / "photos/gone.jpg").string();
  dir_.WriteFile("scr.ini",
                 "[General]\nScreensaverFileName=Quillbay.scr\n"
                 "NumberOfSsavers=3\nDefaultSsaver=empty\n"
                 "Ssaver1=Kept\nSsaver2=EMPTY\nSsaver3=Last\n"
                 "[Kept]\nNumberofImages=4\nImage1=" +
                     gone + "\nImage2=" + a + "\nImage4=" + c +
                     "\nImageInterval=7\nTransitionEffects=3\n"
                     "[Empty]\nNumberofImages=1\nImage1=" +
                     gone +
                     "\n"
                     "[Last]\nNumberofImages=1\nImage1=" +
                     c + "\n");
  ASSERT_TRUE(RepairScreensavers(Ini()));
  EXPECT_EQ(ReadScreensaverPhotos(Ini(), "Kept"), (Names{a, c}));
  EXPECT_EQ(Get("Kept", "NumberofImages"), "2");
  EXPECT_EQ(Get("Kept", "Image3"), "<none>");
  EXPECT_EQ(Get("Kept", "Image4"), "<none>");
  EXPECT_EQ(Get("Kept", "ImageInterval"), "7");
  // The saver with no photo left is gone, the list closed up, and the
  // current one (named in another case) emptied.
  EXPECT_EQ(GetProfileSectionNames(Ini()), (Names{"General", "Kept", "Last"}));
  EXPECT_EQ(ReadScreensaverNames(Ini()), (Names{"Kept", "Last"}));
  EXPECT_EQ(Get("General", "NumberOfSsavers"), "2");
  EXPECT_EQ(Get("General", "Ssaver3"), "<none>");
  EXPECT_EQ(Get("General", "DefaultSsaver"), "");
  // No photo file was touched.
  EXPECT_TRUE(fs::exists(a));
  EXPECT_TRUE(fs::exists(c));
}

TEST_F(ScrStoreTest, RepairOfAWholeStoreWritesNothing) {
  const std::string a = Photo("a.jpg");
  int count = 0;
  ASSERT_TRUE(CreateScreensaver(Ini(), "One", {a}, count));
  const std::string before = ReadFile(Ini());
  const auto mtime = fs::last_write_time(Ini());
  ASSERT_TRUE(RepairScreensavers(Ini()));
  EXPECT_EQ(ReadFile(Ini()), before);
  EXPECT_EQ(fs::last_write_time(Ini()), mtime);
}

TEST_F(ScrStoreTest, RepairKeepsTheCurrentSaverWhenItStays) {
  const std::string a = Photo("a.jpg");
  dir_.WriteFile("scr.ini",
                 "[General]\nNumberOfSsavers=2\nDefaultSsaver=B\n"
                 "Ssaver1=A\nSsaver2=B\n[B]\nNumberofImages=1\nImage1=" +
                     a + "\n");
  ASSERT_TRUE(RepairScreensavers(Ini()));
  EXPECT_EQ(ReadScreensaverNames(Ini()), Names{"B"});
  EXPECT_EQ(Get("General", "DefaultSsaver"), "B");
}

TEST_F(ScrStoreTest, DeletingTheSecondOfThreeClosesTheList) {
  const std::string a = Photo("a.jpg");
  int count = 0;
  for (const char* name : {"One", "Two", "Three"}) {
    ASSERT_TRUE(CreateScreensaver(Ini(), name, {a}, count));
  }
  ASSERT_TRUE(WriteProfileString(Ini(), "General", "DefaultSsaver", "two"));
  ASSERT_TRUE(DeleteScreensaver(Ini(), "Two"));
  EXPECT_EQ(ReadScreensaverNames(Ini()), (Names{"One", "Three"}));
  EXPECT_EQ(Get("General", "Ssaver3"), "<none>");
  EXPECT_EQ(Get("General", "NumberOfSsavers"), "2");
  EXPECT_EQ(Get("General", "DefaultSsaver"), "");
  EXPECT_EQ(Get("Two", "NumberofImages"), "<none>");
  EXPECT_TRUE(fs::exists(a));
}

TEST_F(ScrStoreTest, DeletingAnotherKeepsTheCurrentOne) {
  const std::string a = Photo("a.jpg");
  int count = 0;
  ASSERT_TRUE(CreateScreensaver(Ini(), "One", {a}, count));
  ASSERT_TRUE(CreateScreensaver(Ini(), "Two", {a}, count));
  ASSERT_TRUE(WriteProfileString(Ini(), "General", "DefaultSsaver", "One"));
  ASSERT_TRUE(DeleteScreensaver(Ini(), "Two"));
  EXPECT_EQ(Get("General", "DefaultSsaver"), "One");
}

TEST_F(ScrStoreTest, SavingRewritesTheListAndDropsWhatFollows) {
  const std::string a = Photo("a.jpg");
  const std::string b = Photo("b.jpg");
  const std::string c = Photo("c.jpg");
  int count = 0;
  ASSERT_TRUE(CreateScreensaver(Ini(), "S", {a, b, c}, count));
  ASSERT_TRUE(SaveScreensaver(Ini(), "S", {c}, 25, 9));
  EXPECT_EQ(ReadScreensaverPhotos(Ini(), "S"), Names{c});
  EXPECT_EQ(Get("S", "Image2"), "<none>");
  EXPECT_EQ(Get("S", "ImageInterval"), "25");
  EXPECT_EQ(Get("S", "TransitionEffects"), "9");
  EXPECT_TRUE(fs::exists(a));
  EXPECT_TRUE(fs::exists(b));
}

TEST_F(ScrStoreTest, TempScrHoldsOneSection) {
  const std::string temp = (dir_ / "TempScr.ini").string();
  ASSERT_TRUE(WriteTempScr(temp, "Old", {"/x/1.jpg", "/x/2.jpg"}));
  ASSERT_TRUE(WriteTempScr(temp, "New", {"/y/3.jpg"}));
  EXPECT_EQ(ReadFile(temp), "[New]\nNumberOfImages=1\nImage1=/y/3.jpg\n");
}

TEST_F(ScrStoreTest, AFileThatCantBeWrittenIsLeftAsItWas) {
  // A folder where the file should be: nothing can replace it.
  fs::create_directories(dir_ / "scr.ini");
  int count = 0;
  EXPECT_FALSE(CreateScreensaver(Ini(), "S", {"/a.jpg"}, count));
  EXPECT_EQ(count, 0);
  EXPECT_TRUE(fs::is_directory(dir_ / "scr.ini"));
}

TEST_F(ScrStoreTest, ANameTheFormatCantHoldChangesNothing) {
  ASSERT_TRUE(MakeScrIniIfMissing(Ini()));
  const std::string before = ReadFile(Ini());
  int count = 0;
  EXPECT_FALSE(CreateScreensaver(Ini(), "Bad]Name", {"/a.jpg"}, count));
  EXPECT_EQ(ReadFile(Ini()), before);
}

}  // namespace
}  // namespace qbpd
