// The desktop's screen saver really plays the current screensaver: a real
// XScreenSaver daemon on a private X server, the user's ~/.xscreensaver
// edited by the program as it edits it for "set as default", the screen
// blanked, and the photos of the store read back from the screen.
#include "platform/desktop_screensaver.h"
#include "platform/program_runner.h"
#include "tests/screensaver_x11/saver_pictures.h"
#include "tests/support/temp_dir.h"
#include "tests/ui_x11/x11_server.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::ChildProcess;
using testing::Picture;
using testing::TempDir;
using testing::XConnection;

// XScreenSaver runs no modules for root; a test run as root runs the daemon
// as this user instead.
constexpr unsigned kNobody = 65534;

bool OnPath(const std::string& program) {
  return MakeSpawnRunner()->Has(program);
}

// Settings of the user's that the program must keep as they are.
constexpr char kUsersSettings[] =
    "# XScreenSaver Preferences File\n"
    "lock:\t\tFalse\n"
    "fade:\t\tFalse\n"
    "unfade:\t\tFalse\n"
    "splash:\t\tFalse\n"
    "dpmsEnabled:\tFalse\n"
    "textLiteral:\tA line the user wrote\n";

TEST(XScreenSaverTest, BlankingPlaysTheCurrentScreensaver) {
  VIPS_INIT("xscreensaver_tests");
  if (!OnPath("xscreensaver") || !OnPath("xscreensaver-command")) {
    GTEST_SKIP() << "XScreenSaver is not installed (scripts/setup installs it)";
  }
  std::string why;
  const std::string display = testing::PrivateXDisplay(&why);
  if (display.empty()) {
    GTEST_SKIP() << why;
  }
  XConnection x(display);
  ASSERT_TRUE(x.ok());

  TempDir dir;
  const bool root = geteuid() == 0;
  const fs::path home = dir / "home";
  fs::create_directories(home);
  const std::string store = testing::MakeSaverStore(dir.path());
  const fs::path config = home / ".xscreensaver";
  std::ofstream(config) << kUsersSettings;
  if (root) {
    // The daemon's user reads the store, the photos and its own home.
    fs::permissions(dir.path(), fs::perms::owner_all | fs::perms::group_read |
                                    fs::perms::group_exec |
                                    fs::perms::others_read |
                                    fs::perms::others_exec);
    ASSERT_EQ(chown(home.c_str(), kNobody, kNobody), 0);
    ASSERT_EQ(chown(config.c_str(), kNobody, kNobody), 0);
  }

  const std::vector<std::string> env = {"DISPLAY=" + display,
                                        "HOME=" + home.string()};
  std::vector<std::string> daemon = {"xscreensaver", "-no-splash"};
  if (root) {
    daemon.insert(daemon.begin(),
                  {"setpriv", "--reuid=" + std::to_string(kNobody),
                   "--regid=" + std::to_string(kNobody), "--clear-groups"});
  }
  ChildProcess xscreensaver(daemon, env);
  auto runner = MakeSpawnRunner({{"DISPLAY", display}, {"HOME", home.string()}},
                                /*timeout_ms=*/5000);
  bool answering = false;
  for (int i = 0; i < 100 && !answering; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    answering = runner->Run({"xscreensaver-command", "-version"}).ok();
  }
  ASSERT_TRUE(answering) << "the XScreenSaver daemon did not start";
  // The daemon rereads the file when it was written after its last reading,
  // counted in whole seconds: a person's click comes later than the start.
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));

  // What "set as default" and the start delay do, through the same runner.
  auto desktop = MakeDesktopScreensaver(
      MakeSpawnRunner({{"DISPLAY", display}, {"HOME", home.string()}}),
      {{"HOME", home.string()}, {"DISPLAY", display}}, QBPD_SAVER_PROGRAM);
  EXPECT_EQ(desktop->WriteDefaultScr(store), 1);
  EXPECT_TRUE(desktop->SetIdleDelay(600));
  const std::string written = testing::ReadFile(config);
  EXPECT_NE(written.find(QBPD_SAVER_PROGRAM), std::string::npos) << written;
  EXPECT_NE(written.find("textLiteral:\tA line the user wrote"),
            std::string::npos)
      << written;
  EXPECT_NE(written.find("timeout:\t0:10:00"), std::string::npos) << written;

  ASSERT_TRUE(runner->Run({"xscreensaver-command", "-activate"}).ok());
  // The daemon reads the edited file when it blanks and starts the module
  // in its window; the show's first photo comes up over the whole screen.
  const int w = x.width();
  const int h = x.height();
  Picture shot;
  bool shown = false;
  for (int i = 0; i < 300 && !shown; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    shot = x.Grab(x.root(), w, h);
    // Its own "Loading..." comes first: a photo fills the middle row from
    // edge to edge.
    shown = !shot.rgb.empty() && shot.PhotoAt(60, h / 2) >= 0 &&
            shot.PhotoAt(w / 2, h / 2) >= 0 && shot.PhotoAt(w - 60, h / 2) >= 0;
  }
  shot.Save("xscreensaver_playing.png");
  ASSERT_TRUE(shown) << "XScreenSaver never showed a photo of the store\n"
                     << written;
  // Fitted on black across the screen: 1600 x 1000 on 1280 x 1024 leaves
  // bands above and below.
  EXPECT_EQ(shot.PhotoAt(w / 2, 40), -1);
  EXPECT_EQ(shot.PhotoAt(w / 2, h - 40), -1);

  EXPECT_TRUE(runner->Run({"xscreensaver-command", "-exit"}).ok());
  xscreensaver.Stop();
}

}  // namespace
}  // namespace qbpd
