#include "platform/launcher.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

// An opener that writes the arguments it got, one a line, and what its
// standard input held, so that a test sees exactly what arrived.
fs::path WriteOpener(const testing::TempDir& dir) {
  const fs::path opener = dir.WriteFile(
      "opener",
      "#!/bin/sh\n"
      "out=\"$(dirname \"$0\")/args\"\n"
      "for a in \"$@\"; do printf '%s\\n' \"$a\" >> \"$out\"; done\n"
      "cat > \"$(dirname \"$0\")/stdin\"\n");
  chmod(opener.c_str(), 0755);
  return opener;
}

int WaitFor(int pid) {
  int status = 0;
  EXPECT_EQ(waitpid(pid, &status, 0), pid);
  return status;
}

TEST(XdgLauncherTest, TargetArrivesAsOneArgumentWithoutAShell) {
  testing::TempDir dir;
  auto launcher = MakeXdgLauncher(WriteOpener(dir).string());
  // Quotes, blanks and shell syntax stay plain characters.
  const std::string target =
      (dir / "My Photos/it's $(touch pwned); a&b.html").string();
  LaunchResult result = launcher->OpenDocument(target);
  ASSERT_TRUE(result.ok) << result.error;
  ASSERT_GT(result.pid, 0);
  int status = WaitFor(result.pid);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_EQ(testing::ReadFile(dir / "args"), target + "\n");
  EXPECT_FALSE(fs::exists("pwned"));
  EXPECT_FALSE(fs::exists(dir / "My Photos"));
  // Standard input is empty, not the program's terminal.
  EXPECT_EQ(testing::ReadFile(dir / "stdin"), "");
}

TEST(XdgLauncherTest, ATargetLikeAnOptionIsPassedAsAPath) {
  testing::TempDir dir;
  auto launcher = MakeXdgLauncher(WriteOpener(dir).string());
  LaunchResult result = launcher->OpenDocument("--help");
  ASSERT_TRUE(result.ok) << result.error;
  WaitFor(result.pid);
  EXPECT_EQ(testing::ReadFile(dir / "args"), "./--help\n");
}

TEST(XdgLauncherTest, MissingOpenerOrEmptyTargetFailsWithAMessage) {
  testing::TempDir dir;
  auto launcher = MakeXdgLauncher((dir / "no-such-opener").string());
  LaunchResult result = launcher->OpenDocument("/tmp/page.html");
  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.pid, -1);
  EXPECT_NE(result.error.find("no-such-opener"), std::string::npos)
      << result.error;

  auto real = MakeXdgLauncher(WriteOpener(dir).string());
  result = real->OpenDocument("");
  EXPECT_FALSE(result.ok);
  EXPECT_FALSE(result.error.empty());
  EXPECT_FALSE(fs::exists(dir / "args"));
}

TEST(RecordingLauncherTest, KeepsTargetsInOrderAndStartsNothing) {
  auto launcher = MakeRecordingLauncher();
  EXPECT_TRUE(launcher->OpenDocument("/a.html").ok);
  EXPECT_TRUE(launcher->OpenDocument("https://example.com/x?y=1").ok);
  EXPECT_EQ(launcher->Opened(),
            (std::vector<std::string>{"/a.html", "https://example.com/x?y=1"}));
}

}  // namespace
}  // namespace qbpd
