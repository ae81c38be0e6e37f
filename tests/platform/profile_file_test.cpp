#include "platform/profile_file.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace qbpd {
namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

constexpr char kScrIni[] =
    "; made by hand\n"
    "[General]\n"
    "ScreensaverFileName=Quillbay.scr\n"
    "NumberOfSsavers=2\n"
    "DefaultSsaver=  Holiday  \n"
    "Ssaver1=Holiday\n"
    "Ssaver2=Garden\n"
    "\n"
    "[Holiday]\n"
    "NumberofImages=1\n"
    "Image1=/home/u/Pictures/beach.jpg\n"
    "ImageInterval=10\n"
    "TransitionEffects=15\n"
    "\n"
    "[Garden]\n"
    "NumberOfImages=0\n";

std::vector<std::string> FilesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST(ProfileFileTest, ReadsWithCaseRulesTrimAndDefault) {
  testing::TempDir dir;
  const std::string ini = dir.WriteFile("scr.ini", kScrIni).string();
  struct Case {
    const char* section;
    const char* key;
    const char* expected;
  };
  const Case cases[] = {
      // Both spellings of the key name are in use and are the same key.
      {"Holiday", "NumberOfImages", "1"},
      {"Holiday", "NUMBEROFIMAGES", "1"},
      {"holiday", "numberofimages", "1"},
      {"GENERAL", "ssaver2", "Garden"},
      // Values come back trimmed.
      {"General", "DefaultSsaver", "Holiday"},
      // Missing section, missing key: the default.
      {"Nowhere", "Image1", "dflt"},
      {"Garden", "Image1", "dflt"},
      // A key of another section is not found.
      {"Garden", "ImageInterval", "dflt"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(GetProfileString(ini, c.section, c.key, "dflt"), c.expected)
        << c.section << "/" << c.key;
  }
  EXPECT_EQ(GetProfileString((dir / "missing.ini").string(), "General",
                             "NumberOfSsavers", "0"),
            "0");
  // A folder is not a profile file: the default, no crash.
  EXPECT_EQ(GetProfileString(dir.path().string(), "General", "x", "d"), "d");
}

TEST(ProfileFileTest, LongValuesAreCutToTheBuffer) {
  testing::TempDir dir;
  const std::string ini = (dir / "scr.ini").string();
  const std::string fits(kProfileValueBuffer - 1, 'a');
  ASSERT_TRUE(WriteProfileString(ini, "S", "Fits", fits));
  ASSERT_TRUE(WriteProfileString(ini, "S", "Long", fits + "bcd"));
  // A two-byte letter across the cut is dropped whole.
  const std::string accent =
      std::string(kProfileValueBuffer - 2, 'x') + "\xC3\xA9";
  ASSERT_TRUE(WriteProfileString(ini, "S", "Accent", accent));

  EXPECT_EQ(GetProfileString(ini, "S", "Fits", ""), fits);
  EXPECT_EQ(GetProfileString(ini, "S", "Long", ""), fits);
  EXPECT_EQ(GetProfileString(ini, "S", "Accent", ""),
            std::string(kProfileValueBuffer - 2, 'x'));
  EXPECT_EQ(GetProfileString(ini, "S", "Missing", fits + "zz"), fits);
  // The whole-section reader gives the full text.
  EXPECT_EQ(GetProfileSection(ini, "s")[1].second, fits + "bcd");
}

TEST(ProfileFileTest, WriteKeepsOtherContentAndOrder) {
  testing::TempDir dir;
  const std::string ini = dir.WriteFile("scr.ini", kScrIni).string();
  // An existing key in other case is replaced in place, not duplicated.
  ASSERT_TRUE(WriteProfileString(ini, "general", "NUMBEROFSSAVERS", "3"));
  ASSERT_TRUE(WriteProfileString(ini, "General", "Ssaver3", "Night"));
  ASSERT_TRUE(WriteProfileString(ini, "Night", "NumberOfImages", "0"));

  EXPECT_EQ(
      GetProfileSectionNames(ini),
      (std::vector<std::string>{"General", "Holiday", "Garden", "Night"}));
  EXPECT_EQ(GetProfileSection(ini, "General"),
            (Pairs{{"ScreensaverFileName", "Quillbay.scr"},
                   {"NumberOfSsavers", "3"},
                   {"DefaultSsaver", "Holiday"},
                   {"Ssaver1", "Holiday"},
                   {"Ssaver2", "Garden"},
                   {"Ssaver3", "Night"}}));
  EXPECT_EQ(GetProfileSection(ini, "Holiday").size(), 4u);
  const std::string text = testing::ReadFile(ini);
  EXPECT_NE(text.find("; made by hand"), std::string::npos) << text;
  EXPECT_NE(text.find("NumberOfSsavers=3\n"), std::string::npos) << text;
}

TEST(ProfileFileTest, FirstWriteMakesAPrivateFileAndNoTempFilesStay) {
  testing::TempDir dir;
  const auto ini = dir / "scr.ini";
  ASSERT_TRUE(WriteProfileString(ini.string(), "General", "ScreensaverFileName",
                                 "Quillbay.scr"));
  ASSERT_TRUE(
      WriteProfileString(ini.string(), "General", "NumberOfSsavers", "0"));
  EXPECT_EQ(FilesIn(dir.path()), (std::vector<std::string>{"scr.ini"}));
  struct stat info {};
  ASSERT_EQ(stat(ini.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  EXPECT_EQ(testing::ReadFile(ini),
            "[General]\nScreensaverFileName=Quillbay.scr\nNumberOfSsavers=0\n");

  // The file's own mode survives a rewrite.
  ASSERT_EQ(chmod(ini.c_str(), 0644), 0);
  ASSERT_TRUE(WriteProfileString(ini.string(), "General", "DefaultSsaver", ""));
  ASSERT_EQ(stat(ini.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0644u);
  EXPECT_EQ(FilesIn(dir.path()), (std::vector<std::string>{"scr.ini"}));
}

TEST(ProfileFileTest, RefusesWhatTheFormatCannotHold) {
  testing::TempDir dir;
  const std::string ini = dir.WriteFile("scr.ini", kScrIni).string();
  struct Case {
    const char* section;
    const char* key;
    const char* value;
  };
  const Case cases[] = {
      {"General", "", "x"},             // no key
      {"General", "A\nB", "x"},         // line break in a key
      {"General", "Image1", "a\nb=c"},  // line break would forge a key
      {"Gen]eral", "Image1", "x"},      // "]" ends a section name
      {"General", "a=b", "x"},          // "=" ends a key
      {"General", ";Image1", "x"},      // would read as a comment
      {"General", "[Image1", "x"},      // would read as a section
  };
  for (const Case& c : cases) {
    EXPECT_FALSE(WriteProfileString(ini, c.section, c.key, c.value))
        << c.section << "/" << c.key;
  }
  EXPECT_EQ(testing::ReadFile(ini), kScrIni);
  // A file in a folder that doesn't exist is not made.
  EXPECT_FALSE(
      WriteProfileString((dir / "no" / "scr.ini").string(), "S", "K", "V"));
  EXPECT_FALSE(std::filesystem::exists(dir / "no"));
}

TEST(ProfileFileTest, RemovesKeysAndSections) {
  testing::TempDir dir;
  const std::string ini = dir.WriteFile("scr.ini", kScrIni).string();
  EXPECT_NE(RemoveProfileKey(ini, "GENERAL", "ssaver2"), 0);
  EXPECT_EQ(GetProfileString(ini, "General", "Ssaver2", "gone"), "gone");
  EXPECT_EQ(GetProfileString(ini, "General", "Ssaver1", ""), "Holiday");

  EXPECT_NE(RemoveProfileSection(ini, "garden"), 0);
  EXPECT_EQ(GetProfileSectionNames(ini),
            (std::vector<std::string>{"General", "Holiday"}));
  EXPECT_EQ(GetProfileString(ini, "Holiday", "Image1", ""),
            "/home/u/Pictures/beach.jpg");

  // Removing what isn't there succeeds and changes nothing.
  const std::string before = testing::ReadFile(ini);
  EXPECT_NE(RemoveProfileKey(ini, "General", "Ssaver9"), 0);
  EXPECT_NE(RemoveProfileSection(ini, "Nowhere"), 0);
  EXPECT_EQ(testing::ReadFile(ini), before);

  // On a missing file nothing is made.
  const auto missing = dir / "TempScr.ini";
  EXPECT_NE(RemoveProfileSection(missing.string(), "Any"), 0);
  EXPECT_FALSE(std::filesystem::exists(missing));

  // A folder in place of the file can't be changed.
  EXPECT_EQ(RemoveProfileKey(dir.path().string(), "General", "x"), 0);
}

// Holds the process's file size limit low, so that writing a file fails half
// way (for root too), as a full disk would.
class ScopedFileSizeLimit {
 public:
  explicit ScopedFileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &old_);
    old_handler_ = signal(SIGXFSZ, SIG_IGN);
    rlimit low = old_;
    low.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &low);
  }
  ~ScopedFileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &old_);
    signal(SIGXFSZ, old_handler_);
  }

 private:
  rlimit old_{};
  sighandler_t old_handler_;
};

// When the new text can't be written in full, the old file stays whole and
// no temporary file is left behind.
TEST(ProfileFileTest, FailedWriteLeavesTheOldFile) {
  testing::TempDir dir;
  const auto ini = dir.WriteFile("scr.ini", kScrIni);
  {
    ScopedFileSizeLimit limit(64);
    EXPECT_FALSE(WriteProfileString(ini.string(), "General", "A", "1"));
    EXPECT_EQ(RemoveProfileSection(ini.string(), "Garden"), 0);
  }
  EXPECT_EQ(testing::ReadFile(ini), kScrIni);
  EXPECT_EQ(FilesIn(dir.path()), (std::vector<std::string>{"scr.ini"}));
}

// A stray NUL byte would hide the rest of the file from the parser; such a
// file is read as far as it goes but never rewritten.
TEST(ProfileFileTest, FileWithANulByteIsNotRewritten) {
  testing::TempDir dir;
  const std::string damaged =
      std::string("[General]\nA=1\n") + '\0' + "\n[Holiday]\nImage1=x\n";
  const auto ini = dir.WriteFile("scr.ini", damaged);
  EXPECT_EQ(GetProfileString(ini.string(), "General", "A", ""), "1");
  EXPECT_FALSE(WriteProfileString(ini.string(), "General", "B", "2"));
  EXPECT_EQ(RemoveProfileKey(ini.string(), "General", "A"), 0);
  EXPECT_EQ(testing::ReadFile(ini), damaged);
}

// Found by the fuzz target: a section line without its "]" is read as a name
// running on through the next lines, and a rewrite merged those lines into
// it. Such a file is never rewritten.
TEST(ProfileFileTest, FileWithAnUnclosedSectionIsNotRewritten) {
  testing::TempDir dir;
  const std::string damaged =
      "[Screen Saver]\nDelay=0\n; a comment\n[Photos\nCount=3\n";
  const auto ini = dir.WriteFile("scr.ini", damaged);
  EXPECT_EQ(GetProfileString(ini.string(), "Screen Saver", "Delay", ""), "0");
  EXPECT_FALSE(WriteProfileString(ini.string(), "Fuzz", "Key", "value"));
  EXPECT_EQ(RemoveProfileKey(ini.string(), "Screen Saver", "Delay"), 0);
  EXPECT_EQ(testing::ReadFile(ini), damaged);
  // After a byte-order mark, and with a line ended by a carriage return.
  for (const std::string text :
       {"\xEF\xBB\xBF[Photos\nCount=3\n[A]\n", "[A]\nx=1\n[Photos\r]\n"}) {
    const auto other = dir.WriteFile("other.ini", text);
    EXPECT_FALSE(WriteProfileString(other.string(), "A", "y", "2"));
    EXPECT_EQ(testing::ReadFile(other), text);
  }
  // A "]" later on the line closes it; indented headers count too.
  const auto fine = dir.WriteFile("fine.ini", "  [A] ; note\nx=1\n");
  EXPECT_TRUE(WriteProfileString(fine.string(), "A", "y", "2"));
  EXPECT_EQ(GetProfileString(fine.string(), "A", "x", ""), "1");
}

TEST(ProfileFileTest, WriteThroughASymbolicLinkKeepsTheLink) {
  testing::TempDir dir;
  const auto real = dir.WriteFile("real.ini", "[General]\nA=1\n");
  const auto link = dir / "scr.ini";
  std::filesystem::create_symlink(real, link);
  ASSERT_TRUE(WriteProfileString(link.string(), "General", "B", "2"));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(testing::ReadFile(real), "[General]\nA=1\nB=2\n");
}

}  // namespace
}  // namespace qbpd
