#include "core/application.h"
#include "core/frm_about_us.h"
#include "core/quil_mod.h"
#include "core/settings.h"
#include "platform/forms/scripted_host.h"
#include "platform/places.h"
#include "platform/settings_store.h"
#include "platform/single_instance.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

TEST(StartUpTest, LongPathNameKeepsWhatExistsAndCutsAtTheFirstMissingPart) {
  testing::TempDir dir;
  fs::create_directories(dir / "a" / "b~1");
  const std::string base = dir.path().string();
  struct Case {
    std::string path;
    std::string expected;
  };
  const Case cases[] = {
      // An existing path comes back as it stands.
      {base + "/a/b~1", base + "/a/b~1"},
      // Cut at the part that doesn't exist.
      {base + "/a/missing/c.jpg", base + "/a"},
      // A trailing separator is a part with no name.
      {base + "/a/", base + "/a"},
      // Network-style paths are not looked at.
      {"//server/share/x", "//server/share/x"},
      // Fewer than two parts.
      {"photo.jpg", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(GetLongPathName(c.path), c.expected) << c.path;
  }
}

TEST(StartUpTest, EnsureFolderPathMakesEveryMissingFolder) {
  testing::TempDir dir;
  const std::string path = (dir / "x" / "y" / "z").string();
  EnsureFolderPath(path);
  EXPECT_TRUE(fs::is_directory(path));
}

class WorkingFoldersTest : public ::testing::Test {
 protected:
  WorkingFoldersTest() {
    PlatformServices services;
    services.places.data = (dir_ / "data").string();
    services.places.cache = (dir_ / "cache" / "qbpd").string();
    services.places.desktop = (dir_ / "Desktop").string();
    app_ = std::make_unique<Application>(std::make_unique<ScriptedHost>(),
                                         std::move(services), nullptr);
  }

  testing::TempDir dir_;
  std::unique_ptr<Application> app_;
};

TEST_F(WorkingFoldersTest, TempFolderIsPrivateAndHoldsTheWorkFolders) {
  InitWorkingFolders(*app_);
  const Session& s = app_->session();
  ASSERT_FALSE(s.gsTempLoc.empty());
  EXPECT_EQ(s.gsTempLoc.back(), '/');
  struct stat info {};
  ASSERT_EQ(stat(s.gsTempLoc.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0700u);
  EXPECT_TRUE(fs::is_directory(s.gsThumbnailFolder));
  EXPECT_EQ(s.gsThumbnailFolder, s.gsTempLoc + "Thumbnails/");
  EXPECT_EQ(s.gsToJpgFolder, s.gsTempLoc + "ToJpgs/");
  EXPECT_EQ(s.gsDesktopPath, (dir_ / "Desktop").string() + "/");
  EXPECT_EQ(s.gsScrIniPath, (dir_ / "data").string() + "/scr.ini");
}

TEST_F(WorkingFoldersTest, AFolderSomeoneElseCouldReadIsNeverUsed) {
  // A temp folder left open to others (or planted) is passed over.
  fs::create_directories(dir_ / "cache" / "qbpd" / "temp");
  chmod((dir_ / "cache" / "qbpd" / "temp").c_str(), 0777);
  InitWorkingFolders(*app_);
  EXPECT_NE(app_->session().gsTempLoc,
            (dir_ / "cache" / "qbpd" / "temp").string() + "/");
  EXPECT_FALSE(app_->session().gsTempLoc.empty());
}

TEST_F(WorkingFoldersTest, AppPathSettingMovesTheScreensaverFile) {
  ASSERT_TRUE(app_->settings().Write(kRootKey, "AppPath",
                                     std::string(" /opt/qbpd ") + '\0'));
  InitWorkingFolders(*app_);
  EXPECT_EQ(app_->session().gsScrIniPath, "/opt/qbpd/scr.ini");
}

TEST_F(WorkingFoldersTest, CommandImageRoundTripAndDelete) {
  std::string path = "unchanged";
  ReadCommandImage(*app_, path);
  EXPECT_EQ(path, "unchanged");  // no file: left as it is

  WriteCommandImage(*app_, "/home/u/My Photos/a.jpg");
  ReadCommandImage(*app_, path);
  EXPECT_EQ(path, "/home/u/My Photos/a.jpg");
  const fs::path file = dir_ / "data" / "CommandImage.txt";
  EXPECT_EQ(fs::file_size(file), std::string("/home/u/My Photos/a.jpg").size());

  WriteCommandImage(*app_, "");
  EXPECT_FALSE(fs::exists(file));
}

TEST(SingleInstanceTest, SecondClaimFailsAndAsksTheFirstToComeForward) {
  testing::TempDir dir;
  auto first = MakeSingleInstance((dir / "run").string());
  auto second = MakeSingleInstance((dir / "run").string());
  ASSERT_TRUE(first->Claim());
  EXPECT_FALSE(second->Claim());
  EXPECT_FALSE(first->TakeComeForwardRequest());
  EXPECT_TRUE(second->AskFirstToComeForward());
  EXPECT_TRUE(first->TakeComeForwardRequest());
  EXPECT_FALSE(first->TakeComeForwardRequest());  // taken once
}

TEST(SingleInstanceTest, LockOfACrashedInstanceDoesNotBlockANewStart) {
  testing::TempDir dir;
  const std::string folder = (dir / "run").string();
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    auto instance = MakeSingleInstance(folder);
    char ok = instance->Claim() ? '1' : '0';
    (void)!write(ready[1], &ok, 1);
    pause();  // killed below, never cleaned up
    _exit(0);
  }
  char ok = 0;
  ASSERT_EQ(read(ready[0], &ok, 1), 1);
  ASSERT_EQ(ok, '1');
  auto blocked = MakeSingleInstance(folder);
  EXPECT_FALSE(blocked->Claim());

  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  auto next = MakeSingleInstance(folder);
  EXPECT_TRUE(next->Claim());
  // The crashed instance's socket is replaced by a working one.
  auto third = MakeSingleInstance(folder);
  EXPECT_TRUE(third->AskFirstToComeForward());
  EXPECT_TRUE(next->TakeComeForwardRequest());
  close(ready[0]);
  close(ready[1]);
}

// Every start lays the installer's default set where a value is missing, so
// a fresh home shows the version in the About box; the user's own values
// stay. A run without a default set (tests, scripts) lays nothing.
class DefaultSettingsAtStartTest : public ::testing::Test {
 protected:
  std::unique_ptr<Application> StartWith(std::string default_settings) {
    PlatformServices services;
    services.places.pictures = (dir_ / "Pictures").string();
    services.resources = FindResourcesFolder(FindPlaces());
    services.default_settings = std::move(default_settings);
    services.settings = MakeMemorySettingsStore();
    (void)services.settings->Write(kRootKey, "CacheEnable", "FALSE");
    auto app = std::make_unique<Application>(
        std::make_unique<ScriptedHost>(), std::move(services),
        [](Application& a) {
          a.forms().Register<frmAboutUs>(
              [&a] { return std::make_unique<frmAboutUs>(a); });
          a.SetEntryForm(std::string(frmAboutUs::kName));
        });
    app->Start("");
    return app;
  }

  testing::TempDir dir_;
};

TEST_F(DefaultSettingsAtStartTest, MissingValuesAreLaidBeforeTheFirstForm) {
  const std::string shipped =
      FindResourcesFolder(FindPlaces()) + "/default-settings.ini";
  auto app = StartWith(shipped);
  auto* about = app->forms().Find<frmAboutUs>();
  ASSERT_NE(about, nullptr);
  EXPECT_EQ(about->lblVersion.Caption(),
            "Version " + std::string(ProgramVersion()));
  EXPECT_EQ(app->settings().Read(kDisplayKey, "RecentFolder1"),
            (dir_ / "Pictures").string());
  // The user's value is kept.
  EXPECT_EQ(app->settings().Read(kRootKey, "CacheEnable"), "FALSE");
}

TEST_F(DefaultSettingsAtStartTest, NoDefaultSetOrAMissingOneLaysNothing) {
  for (const std::string& file :
       {std::string(), (dir_ / "missing.ini").string()}) {
    auto app = StartWith(file);
    auto* about = app->forms().Find<frmAboutUs>();
    ASSERT_NE(about, nullptr) << file;
    EXPECT_EQ(about->lblVersion.Caption(), "Version ") << file;
    EXPECT_EQ(app->settings().Keys().size(), 1u) << file;
  }
}

}  // namespace
}  // namespace qbpd
