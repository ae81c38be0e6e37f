#include "core/settings.h"

#include "platform/places.h"
#include "platform/profile_file.h"
#include "platform/settings_store.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>

namespace qbpd {
namespace {

using namespace std::string_literals;

TEST(SettingsTest, NulRulesOfTheReaders) {
  struct Case {
    std::string read;
    std::string dropped;  // DropTrailingNul
    std::string cut;      // CutAtFirstNul
  };
  const Case cases[] = {
      {"", "", ""},
      {"FitToWidth", "FitToWidth", "FitToWidth"},
      // The usual case: the terminating NUL came along.
      {"FitToWidth\0"s, "FitToWidth", "FitToWidth"},
      // Only one NUL goes at the end; the first-NUL rule takes the rest.
      {"ab\0\0"s, "ab\0"s, "ab"},
      {"ab\0cd"s, "ab\0cd"s, "ab"},
      {"\0"s, "", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(DropTrailingNul(c.read), c.dropped);
    EXPECT_EQ(CutAtFirstNul(c.read), c.cut);
  }
  EXPECT_EQ(TrimSpaces("  a b  "), "a b");
  // Only spaces are trimmed, as the program always did.
  EXPECT_EQ(TrimSpaces("\ta\t"), "\ta\t");
  EXPECT_EQ(TrimSpaces("   "), "");
  for (const char* yes : {"True", "TRUE", "true", "tRUE"}) {
    EXPECT_TRUE(IsTrueText(yes)) << yes;
  }
  for (const char* no : {"False", "", "1", "True ", "Yes"}) {
    EXPECT_FALSE(IsTrueText(no)) << no;
  }

  auto store = MakeMemorySettingsStore();
  ASSERT_TRUE(store->Write(kDisplayKey, "ZoomSettings", "FitToWidth\0"s));
  EXPECT_EQ(ReadSetting(*store, kDisplayKey, "zoomsettings"), "FitToWidth");
}

TEST(SettingsTest, PasswordScrambling) {
  struct Case {
    std::string plain;
    std::string encrypted;
  };
  const Case forward[] = {
      {"", ""},
      {"abc", "fgh"},
      {"Pa55!", "Uf::&"},
      // Code 250 is the highest that can be raised.
      {"\xFA"s, "\xFF"s},
      // One code above 250 empties the whole result.
      {"\xFB"s, ""},
      {"ab\xFF"s, ""},
  };
  for (const Case& c : forward) {
    EXPECT_EQ(EncryptPassword(c.plain), c.encrypted) << c.plain;
  }

  const Case reverse[] = {
      // The last character is taken for the stored value's NUL.
      {"abc", "fgh\0"s},
      // Without it the last password character is lost.
      {"ab", "fgh"},
      {"", "f"},
      {"", ""},
      // Code 5 goes down to 0; anything below 5 empties the result.
      {"\0"s, "\x05x"s},
      {"", "\x04x"s},
      {"", "ab\x02z"s},
      // The last character is never looked at, so a low one does no harm.
      {"a", "f\x01"s},
  };
  for (const Case& c : reverse) {
    EXPECT_EQ(DecryptPassword(c.encrypted), c.plain);
  }

  // Every code that can be raised comes back once the NUL is there.
  std::string all;
  for (int code = 0; code <= 250; ++code) {
    all.push_back(static_cast<char>(code));
  }
  EXPECT_EQ(DecryptPassword(EncryptPassword(all) + '\0'), all);
  EXPECT_EQ(DecryptPassword(EncryptPassword("secret")), "secre");
}

TEST(SettingsTest, FindsDeclaredValues) {
  struct Case {
    std::string_view key;
    std::string_view name;
    bool found;
  };
  const Case cases[] = {
      {kRootKey, "AppPath", true},
      {"SOFTWARE\\QUILLBAY PICTURE DESK", "apppath", true},
      {kDisplayKey, "RecentFolder1", true},
      {kDisplayKey, "recentfolder10", true},
      {kDisplayKey, "RecentFolder", false},
      {kDisplayKey, "RecentFolderX", false},
      {kCameraListKey, "USB\\VID_04A9&PID_3176", true},
      {kCameraListKey, "", false},
      {kJpgClassKey, "", true},
      {kSettingsKey, "ZoomSettings", false},
      {kRootKey, "NoSuchValue", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(FindSetting(c.key, c.name) != nullptr, c.found)
        << c.key << " / " << c.name;
  }
  const SettingValue* zoom = FindSetting(kDisplayKey, "ZoomSettings");
  ASSERT_NE(zoom, nullptr);
  EXPECT_EQ(zoom->name, "ZoomSettings");
  const SettingValue* slideshow =
      FindSetting(kDisplayKey, "SlideshowImageIntervalInSeconds");
  ASSERT_NE(slideshow, nullptr);
  EXPECT_EQ(slideshow->minimum, 2);
  EXPECT_EQ(slideshow->maximum, 20);
}

TEST(SettingsTest, ReadIniValueTrimsAndTellsEmptyFromFound) {
  testing::TempDir dir;
  const std::string ini = dir.WriteFile("scr.ini",
                                        "[General]\n"
                                        "NumberOfSsavers=  2  \n"
                                        "DefaultSsaver=\n"
                                        "[Holiday]\n"
                                        "NumberofImages=3\n")
                              .string();
  std::string value = "stale";
  EXPECT_TRUE(ReadIniValue(ini, "general", "NUMBEROFSSAVERS", "", value));
  EXPECT_EQ(value, "2");
  EXPECT_FALSE(ReadIniValue(ini, "General", "DefaultSsaver", "x", value));
  EXPECT_EQ(value, "");
  EXPECT_TRUE(ReadIniValue(ini, "Holiday", "NumberOfImages", "", value));
  EXPECT_EQ(value, "3");
  // A missing key gives the default, trimmed.
  EXPECT_TRUE(ReadIniValue(ini, "Holiday", "ImageInterval", " 10 ", value));
  EXPECT_EQ(value, "10");
  // A default that ends in its NUL is cleaned like a read value.
  EXPECT_TRUE(ReadIniValue(ini, "Holiday", "Missing", " a\0\0 "s, value));
  EXPECT_EQ(value, "a");

  ASSERT_TRUE(WriteIniValue(ini, "Holiday", "Image1", "/p/beach.jpg"));
  EXPECT_TRUE(ReadIniValue(ini, "HOLIDAY", "image1", "", value));
  EXPECT_EQ(value, "/p/beach.jpg");
  EXPECT_NE(RemoveFieldAndItsValue("Holiday", "Image1", ini), 0);
  EXPECT_FALSE(ReadIniValue(ini, "Holiday", "Image1", "", value));
  EXPECT_NE(RemoveSectionAndItsData("holiday", ini), 0);
  EXPECT_EQ(GetProfileSectionNames(ini), (std::vector<std::string>{"General"}));
}

TEST(SettingsTest, LayDefaultsKeepsWhatIsThereAndExpandsPlaces) {
  testing::TempDir dir;
  const std::string defaults = dir.WriteFile("defaults.ini",
                                             "[Software\\Q]\n"
                                             "AppPath=\n"
                                             "Version=1.0.0\n"
                                             "[Software\\Q\\Prefs]\n"
                                             "ZoomSettings=FitToWidth\n"
                                             "Base=${PICTURES}/Camera\n"
                                             "Both=${PICTURES}:${HOME}\n")
                                   .string();
  const std::map<std::string, std::string> places = {
      {"PICTURES", "/home/u/Pictures"}, {"HOME", "/home/u"}};
  auto store = MakeMemorySettingsStore();
  // The user's own values, an empty one too, stay as they are.
  ASSERT_TRUE(
      store->Write("software\\q\\PREFS", "zoomsettings", "OriginalSize"));
  ASSERT_TRUE(store->Write("Software\\Q", "Version", ""));

  int laid = -1;
  EXPECT_TRUE(LayDefaultSettings(*store, defaults, places, &laid));
  EXPECT_EQ(laid, 3);
  EXPECT_EQ(store->Read("Software\\Q\\Prefs", "ZoomSettings"), "OriginalSize");
  EXPECT_EQ(store->Read("Software\\Q", "Version"), "");
  EXPECT_EQ(store->List("Software\\Q").size(), 2u);
  EXPECT_EQ(store->Read("Software\\Q\\Prefs", "Base"),
            "/home/u/Pictures/Camera");
  EXPECT_EQ(store->Read("Software\\Q\\Prefs", "Both"),
            "/home/u/Pictures:/home/u");

  // A second run lays nothing.
  EXPECT_TRUE(LayDefaultSettings(*store, defaults, places, &laid));
  EXPECT_EQ(laid, 0);
}

TEST(SettingsTest, LayDefaultsReportsBadInput) {
  testing::TempDir dir;
  auto store = MakeMemorySettingsStore();
  int laid = -1;
  EXPECT_FALSE(
      LayDefaultSettings(*store, (dir / "missing.ini").string(), {}, &laid));
  EXPECT_EQ(laid, 0);
  EXPECT_TRUE(store->Keys().empty());

  // An unknown or unclosed placeholder is not laid; the rest is.
  const std::string defaults = dir.WriteFile("defaults.ini",
                                             "[K]\n"
                                             "Unknown=${NOPE}/x\n"
                                             "Open=${PICTURES\n"
                                             "Fine=1\n")
                                   .string();
  EXPECT_FALSE(
      LayDefaultSettings(*store, defaults, {{"PICTURES", "/p"}}, &laid));
  EXPECT_EQ(laid, 1);
  EXPECT_EQ(store->List("K"),
            (std::vector<std::pair<std::string, std::string>>{{"Fine", "1"}}));
}

// The shipped default set and the declared tree must agree: every value of
// the file is a declared one, and every value the installer lays is there.
TEST(SettingsTest, ShippedDefaultsMatchTheSchema) {
  const std::string resources = FindResourcesFolder(FindPlaces());
  ASSERT_FALSE(resources.empty());
  const std::string file = resources + "/default-settings.ini";
  std::set<std::pair<std::string, std::string>> in_file;
  for (const std::string& key : GetProfileSectionNames(file)) {
    for (const auto& [name, data] : GetProfileSection(file, key)) {
      EXPECT_NE(FindSetting(key, name), nullptr) << key << " / " << name;
      in_file.insert({key, name});
    }
  }
  for (const SettingValue& value : SettingsSchema()) {
    EXPECT_EQ(in_file.count({std::string(value.key), std::string(value.name)}),
              value.installed ? 1u : 0u)
        << value.key << " / " << value.name;
  }

  auto store = MakeMemorySettingsStore();
  ASSERT_TRUE(
      LayDefaultSettings(*store, file, InstallerVariables("/home/u/Pics")));
  EXPECT_EQ(store->Read(kSettingsKey, "DefaultFolder"), "/home/u/Pics");
  // The About box shows the build's version; the thumbnail cache is on.
  EXPECT_EQ(store->Read(kRootKey, "Version"), ProgramVersion());
  EXPECT_FALSE(ProgramVersion().empty());
  EXPECT_NE(store->Read(kRootKey, "CacheEnable").find("TRUE"),
            std::string::npos);
  // The first start opens Pictures: the newest recent folder, and the start
  // opens the newest recent folder; the list has room for more.
  EXPECT_EQ(store->Read(kDisplayKey, "RecentFolder1"), "/home/u/Pics");
  EXPECT_TRUE(
      IsTrueText(store->Read(kSettingsKey, "LastOpenFolderInPreviousSession")));
  EXPECT_GE(std::atoi(store->Read(kDisplayKey, "NoOfRecentFolders").c_str()),
            1);
  EXPECT_TRUE(store->Read(kCameraTransferKey, "BaseFolder")
                  .starts_with("/home/u/Pics/"));
  // The service is reached on this machine; both values are long enough.
  EXPECT_TRUE(store->Read(kRootKey, "IP").starts_with("http://127.0.0.1"));
  EXPECT_GE(store->Read(kRootKey, "URL").size(), 2u);
  EXPECT_EQ(store->Read(kDisplayKey, "ExplorerCloseIntervalInSeconds"), "");
  EXPECT_TRUE(IsTrueText(store->Read(kCameraTransferKey, "DetectUSBDevices")));
}

TEST(SettingsTest, JpegAssociation) {
  auto store = MakeMemorySettingsStore();
  EXPECT_FALSE(ReadJpegAssociation(*store));
  ASSERT_TRUE(WriteJpegAssociation(*store, true));
  for (std::string_view key : {kJpgClassKey, kJpeClassKey, kJpegClassKey}) {
    // The 8-character buffer's padding is trimmed before the write.
    EXPECT_EQ(store->Read(key, ""), "QBPDJPG") << key;
  }
  EXPECT_TRUE(ReadJpegAssociation(*store));
  ASSERT_TRUE(WriteJpegAssociation(*store, false));
  EXPECT_EQ(store->Read(kJpegClassKey, ""), "jpegfile");
  EXPECT_FALSE(ReadJpegAssociation(*store));

  struct Case {
    std::string stored;
    bool opens_here;
  };
  const Case cases[] = {
      {"QBPDJPG\0"s, true},
      {"QBPDJPG\0garbage"s, true},
      {"  QBPDJPG  ", true},
      // The comparison is exact.
      {"qbpdjpg", false},
      {"QBPDJPG2", false},
      // What lies beyond the read buffer is never seen.
      {std::string(255, ' ') + "QBPDJPG", false},
  };
  for (const Case& c : cases) {
    ASSERT_TRUE(store->Write(kJpgClassKey, "", c.stored));
    EXPECT_EQ(ReadJpegAssociation(*store), c.opens_here) << c.stored;
  }
}

}  // namespace
}  // namespace qbpd
