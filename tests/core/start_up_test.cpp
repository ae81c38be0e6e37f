#include "core/application.h"
#include "core/quil_mod.h"
#include "platform/forms/scripted_host.h"
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

}  // namespace
}  // namespace qbpd
