// The headless driver's transcript of service calls with the scripted
// double: each call shows where it was made, among the lines of what the
// program showed meanwhile.
#include "app/driver/script_runner.h"
#include "app/program/program.h"
#include "platform/launcher.h"
#include "platform/settings_store.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace qbpd {
namespace {

std::string RunScriptText(const std::string& script, int& exit_code) {
  testing::TempDir dir;
  ScriptOptions options;
  options.script_path = dir.WriteFile("road.qbs", script).string();
  options.make_services = [] {
    PlatformServices services = MakePlatformServices(MakeMemorySettingsStore());
    services.default_settings.clear();
    services.launcher = MakeRecordingLauncher();
    return services;
  };
  std::ostringstream out;
  exit_code = RunScript(options, RegisterProgram, out).exit_code;
  return out.str();
}

constexpr char kSetUp[] = R"(service double
make photos 2 "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"
setting "Software\Quillbay Picture Desk" URL = "http://127.0.0.1:8931/api"
setting "Software\Quillbay Picture Desk" IP = "http://127.0.0.1:8931"
setting "Software\Quillbay Picture Desk\Preferences\Settings" AutoLogin = "True"
setting "Software\Quillbay Picture Desk\Preferences\Settings" UserName = "ann@example.com"
setting "Software\Quillbay Picture Desk\Preferences\Settings" EncryptedPassword = "xjhwjy"
start
wait 200
click frmMainWindow.imgSelectAll
service answers LoginUser ok "S" "U"
service answers GetAlbumList ok
)";

size_t Find(const std::string& transcript, const std::string& part) {
  const size_t at = transcript.find(part);
  EXPECT_NE(at, std::string::npos) << part << "\n" << transcript;
  return at;
}

TEST(DriverTranscript, ACallShowsBeforeTheMessageBoxItLeadsTo) {
  int exit_code = 0;
  const std::string transcript = RunScriptText(
      std::string(kSetUp) +
          "service answers UploadFile fails \"Photo refused\" \"Photo "
          "refused\"\n"
          "click frmMainWindow.imgUpload\n"
          "click frmUploadAlbumInfm.imgContinue\n"
          "expect message \"Photo refused\"\n",
      exit_code);
  EXPECT_EQ(exit_code, 0) << transcript;
  const size_t call = Find(transcript, "service called UploadFile");
  const size_t box = Find(transcript, "message box [");
  EXPECT_LT(call, box) << transcript;
  // The login and the album list came before, in their order.
  EXPECT_LT(Find(transcript, "service called LoginUser"),
            Find(transcript, "service called GetAlbumList"));
  EXPECT_LT(Find(transcript, "service called GetAlbumList"), call);
}

TEST(DriverTranscript, ACallThatWaitsShowsBeforeTheStepsRunInsideIt) {
  int exit_code = 0;
  const std::string transcript = RunScriptText(
      std::string(kSetUp) +
          "service answers UploadFile ok album \"A1\" image \"I1\" waits\n"
          "click frmMainWindow.imgUpload\n"
          "click frmUploadAlbumInfm.imgContinue\n"
          "inside pump 3: echo \"while the photo goes\"\n"
          "inside: click frmUploadImgs.imgCancelconn\n",
      exit_code);
  EXPECT_EQ(exit_code, 0) << transcript;
  EXPECT_LT(Find(transcript, "service called UploadFile"),
            Find(transcript, "        while the photo goes\n"))
      << transcript;
}

// A run that fails in the middle still shows the calls made before.
TEST(DriverTranscript, CallsShowAlsoWhenTheRunFailsBeforeItIsIdle) {
  int exit_code = 0;
  const std::string transcript = RunScriptText(
      std::string(kSetUp) +
          "service answers UploadFile fails \"Photo refused\" \"Photo "
          "refused\"\n"
          "click frmMainWindow.imgUpload\n"
          "click frmUploadAlbumInfm.imgContinue\n",
      exit_code);
  EXPECT_EQ(exit_code, 1);
  Find(transcript, "service called UploadFile");
}

}  // namespace
}  // namespace qbpd
