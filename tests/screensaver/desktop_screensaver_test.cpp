#include "platform/desktop_screensaver.h"

#include "platform/xscreensaver_config.h"
#include "tests/support/fake_program_runner.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::FakeProgramRunner;
using testing::ReadFile;
using testing::TempDir;

constexpr char kSaver[] = "/opt/qbpd/bin/qbpd-saver";
constexpr char kIni[] = "/home/ann/.local/share/quillbay-picture-desk/scr.ini";

// A settings file as XScreenSaver writes it, with the user's own choices.
constexpr char kUserConfig[] =
    "# XScreenSaver Preferences File\n"
    "# Written by xscreensaver-settings 6.06.\n"
    "\n"
    "timeout:\t0:07:00\n"
    "cycle:\t\t0:10:00\n"
    "lock:\t\tTrue\n"
    "mode:\t\trandom\n"
    "selected:\t-1\n"
    "fade:\t\tTrue\n"
    "\n"
    "programs:\t\t\t\t\t\t\t\t      \\\n"
    "\t\t\t\tmaze -root\t\t\t\t    \\n\\\n"
    "- GL: \t\t\t\tsuperquadrics -root\t\t\t    \\n\\\n"
    "  \"Qix (solid)\"  qix -root -solid -segments 100\t\t    \\n\\\n"
    "\n"
    "\n"
    "pointerHysteresis:\t10\n";

class XScreenSaverConfigTest : public ::testing::Test {
 protected:
  std::string Entry() const { return XScreenSaverEntry(kSaver, kIni); }
};

TEST_F(XScreenSaverConfigTest, EntryQuotesItsPathsForTheShell) {
  EXPECT_EQ(Entry(),
            "\"Quillbay Picture Desk\" '/opt/qbpd/bin/qbpd-saver' -root --ini "
            "'/home/ann/.local/share/quillbay-picture-desk/scr.ini'");
  // A path the entry can't hold gives no entry.
  EXPECT_EQ(XScreenSaverEntry(kSaver, "/home/o'neil/scr.ini"), "");
  EXPECT_EQ(XScreenSaverEntry(kSaver, "/a\\b/scr.ini"), "");
}

TEST_F(XScreenSaverConfigTest, AddsAndSelectsTheSaverKeepingTheRest) {
  const auto text = SelectSaverEntry(kUserConfig, Entry(), "qbpd-saver");
  ASSERT_TRUE(text);
  const auto entries = SaverEntries(*text);
  ASSERT_TRUE(entries);
  ASSERT_EQ(entries->size(), 4u);
  EXPECT_EQ((*entries)[0], "maze -root");
  EXPECT_EQ((*entries)[1], "- GL: \t\t\t\tsuperquadrics -root");
  EXPECT_EQ((*entries)[2], "\"Qix (solid)\"  qix -root -solid -segments 100");
  EXPECT_EQ((*entries)[3], Entry());
  EXPECT_EQ(SaverResource(*text, "selected"), "3");
  EXPECT_EQ(SaverResource(*text, "mode"), "one");
  // Every other setting is as it was, line for line.
  for (const char* line :
       {"# XScreenSaver Preferences File\n", "timeout:\t0:07:00\n",
        "cycle:\t\t0:10:00\n", "lock:\t\tTrue\n", "fade:\t\tTrue\n",
        "pointerHysteresis:\t10\n"}) {
    EXPECT_NE(text->find(line), std::string::npos) << line;
  }
}

TEST_F(XScreenSaverConfigTest, ASecondTimeReplacesItsOwnEntry) {
  auto once = SelectSaverEntry(kUserConfig, Entry(), "qbpd-saver");
  ASSERT_TRUE(once);
  const std::string other = XScreenSaverEntry(kSaver, "/elsewhere/scr.ini");
  auto twice = SelectSaverEntry(*once, other, "qbpd-saver");
  ASSERT_TRUE(twice);
  const auto entries = SaverEntries(*twice);
  ASSERT_EQ(entries->size(), 4u);
  EXPECT_EQ(entries->back(), other);
  EXPECT_EQ(SaverResource(*twice, "selected"), "3");
  // Doing it again with the same entry changes nothing.
  EXPECT_EQ(SelectSaverEntry(*twice, other, "qbpd-saver"), *twice);
}

TEST_F(XScreenSaverConfigTest, AnEmptyFileGetsTheSaverAlone) {
  const auto text = SelectSaverEntry("", Entry(), "qbpd-saver");
  ASSERT_TRUE(text);
  EXPECT_EQ(*SaverEntries(*text), std::vector<std::string>{Entry()});
  EXPECT_EQ(SaverResource(*text, "selected"), "0");
}

TEST_F(XScreenSaverConfigTest, TimeoutIsWrittenAsHoursMinutesSeconds) {
  auto text = SetSaverTimeout(kUserConfig, 300);
  ASSERT_TRUE(text);
  EXPECT_EQ(SaverResource(*text, "timeout"), "0:05:00");
  EXPECT_EQ(text->find("0:07:00"), std::string::npos);
  text = SetSaverTimeout("", 9999 * 60);
  EXPECT_EQ(SaverResource(*text, "timeout"), "166:39:00");
}

TEST_F(XScreenSaverConfigTest, AMalformedTextIsRefused) {
  for (const std::string& bad :
       {std::string("timeout 0:05:00\n"), std::string("lock: True\0x", 13),
        std::string("this is not a resource file\n")}) {
    EXPECT_FALSE(SelectSaverEntry(bad, Entry(), "qbpd-saver")) << bad;
    EXPECT_FALSE(SetSaverTimeout(bad, 60)) << bad;
  }
}

// --- the session's screen saver ----------------------------------------------

class DesktopScreensaverTest : public ::testing::Test {
 protected:
  std::unique_ptr<DesktopScreensaver> Make(const std::string& desktop) {
    std::map<std::string, std::string> env{{"HOME", home_.path().string()}};
    if (!desktop.empty()) {
      env["XDG_CURRENT_DESKTOP"] = desktop;
    }
    return MakeDesktopScreensaver(runner_, env, kSaver);
  }
  fs::path Config() const { return home_ / ".xscreensaver"; }
  void DaemonRuns() { runner_->Answer("xscreensaver-command -version", 0); }
  void NoDaemon() { runner_->Answer("xscreensaver-command -version", 1); }

  TempDir home_;
  std::shared_ptr<FakeProgramRunner> runner_ =
      std::make_shared<FakeProgramRunner>();
};

TEST_F(DesktopScreensaverTest, XScreenSaverGetsTheSaverAndTheDelay) {
  DaemonRuns();
  home_.WriteFile(".xscreensaver", kUserConfig);
  chmod(Config().c_str(), 0640);
  auto saver = Make("XFCE");
  ASSERT_EQ(saver->WriteDefaultScr(kIni), 1);
  ASSERT_TRUE(saver->SetIdleDelay(300));
  const std::string text = ReadFile(Config());
  EXPECT_EQ(SaverEntries(text)->back(), XScreenSaverEntry(kSaver, kIni));
  EXPECT_EQ(SaverResource(text, "selected"), "3");
  EXPECT_EQ(SaverResource(text, "timeout"), "0:05:00");
  EXPECT_EQ(SaverResource(text, "lock"), "True");
  // The file keeps its mode, and nothing else is left in the home.
  struct stat info {};
  ASSERT_EQ(stat(Config().c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0640u);
  int files = 0;
  for ([[maybe_unused]] const auto& e : fs::directory_iterator(home_.path())) {
    ++files;
  }
  EXPECT_EQ(files, 1);
}

TEST_F(DesktopScreensaverTest, AMalformedFileIsLeftUntouched) {
  DaemonRuns();
  const std::string bad = "lock: True\nthis line is no resource\n";
  home_.WriteFile(".xscreensaver", bad);
  auto saver = Make("");
  EXPECT_EQ(saver->WriteDefaultScr(kIni), 0);
  EXPECT_FALSE(saver->SetIdleDelay(60));
  EXPECT_EQ(ReadFile(Config()), bad);
}

TEST_F(DesktopScreensaverTest, TheUsersFileWithoutADaemonStillCounts) {
  NoDaemon();
  home_.WriteFile(".xscreensaver", "lock:\tFalse\n");
  EXPECT_EQ(Make("")->WriteDefaultScr(kIni), 1);
  EXPECT_EQ(SaverResource(ReadFile(Config()), "lock"), "False");
}

TEST_F(DesktopScreensaverTest, GnomeTakesTheDelayButNoSaver) {
  NoDaemon();
  auto saver = Make("ubuntu:GNOME");
  EXPECT_EQ(saver->WriteDefaultScr(kIni), 0);
  EXPECT_TRUE(saver->SetIdleDelay(600));
  EXPECT_EQ(
      runner_->Calls().back(),
      (std::vector<std::string>{"gsettings", "set", "org.gnome.desktop.session",
                                "idle-delay", "uint32 600"}));
  EXPECT_FALSE(fs::exists(Config()));
}

TEST_F(DesktopScreensaverTest, PlasmaCountsWholeMinutes) {
  NoDaemon();
  runner_->Remove("kwriteconfig6");
  auto saver = Make("KDE");
  EXPECT_EQ(saver->WriteDefaultScr(kIni), 0);
  EXPECT_TRUE(saver->SetIdleDelay(90));
  EXPECT_EQ(
      runner_->Calls().back(),
      (std::vector<std::string>{"kwriteconfig5", "--file", "kscreenlockerrc",
                                "--group", "Daemon", "--key", "Timeout", "2"}));
}

TEST_F(DesktopScreensaverTest, AToolThatFailsIsAFailure) {
  NoDaemon();
  runner_->Answer("gsettings", 1);
  EXPECT_FALSE(Make("GNOME")->SetIdleDelay(60));
}

TEST_F(DesktopScreensaverTest, NoKnownScreenSaverFailsBoth) {
  NoDaemon();
  auto saver = Make("");
  EXPECT_EQ(saver->WriteDefaultScr(kIni), 0);
  EXPECT_FALSE(saver->SetIdleDelay(60));
  EXPECT_FALSE(fs::exists(Config()));
}

}  // namespace
}  // namespace qbpd
