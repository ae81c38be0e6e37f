// Expectations: numbers, control-array members, form fields and session
// values, the launcher's calls and facts about image files.
#include "platform/image_operations.h"
#include "tests/app/driver/script_run.h"
#include "tests/support/fake_launcher.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

using testing::RunText;

void ExpectFailure(const std::string& script,
                   const std::string& failure,
                   std::function<PlatformServices()> services = nullptr) {
  testing::ScriptRun run = RunText(script, std::move(services));
  EXPECT_EQ(run.result.exit_code, 1) << script << run.transcript;
  EXPECT_EQ(run.result.failure, failure) << script;
}

TEST(ExpectStepsTest, NumbersCompareByValue) {
  testing::ScriptRun run = RunText(
      "start\n"
      "wait 3000\n"
      "expect frmFixture.lblTicks.Caption > 2.5\n"
      "expect frmFixture.lblTicks.Caption >= 3\n"
      "expect frmFixture.lblTicks.Caption <= 3\n"
      "expect frmFixture.lblTicks.Caption < 10\n"
      "expect frmFixture.Width>8999\n"
      "expect session gdicPhotoList.Count < 1\n");
  EXPECT_EQ(run.result.exit_code, 0) << run.result.failure << run.transcript;
  ExpectFailure("start\nwait 3000\nexpect frmFixture.lblTicks.Caption < 3\n",
                "line 3: Expected frmFixture.lblTicks.Caption < \"3\", but it "
                "is \"3\"");
  ExpectFailure("start\nexpect frmFixture.Caption >= 1\n",
                "line 2: Expected frmFixture.Caption >= 1, but it is "
                "\"Fixture\", which is not a number");
  testing::ScriptRun bad =
      RunText("start\nexpect frmFixture.Width < \"wide\"\n");
  EXPECT_EQ(bad.result.exit_code, 2);
  EXPECT_EQ(bad.result.failure,
            "line 2: < compares numbers, and \"wide\" is not one");
}

TEST(ExpectStepsTest, ControlArrayMembersLoadedOrNot) {
  testing::ScriptRun run = RunText(
      "start\n"
      "expect frmFixture.txtQty(2) loaded\n"
      "expect frmFixture.txtQty(3) not loaded\n");
  EXPECT_EQ(run.result.exit_code, 0) << run.result.failure;
  ExpectFailure("start\nexpect frmFixture.txtQty(1) not loaded\n",
                "line 2: Expected frmFixture.txtQty(1) not to be loaded, but "
                "it is");
  ExpectFailure("start\nexpect frmFixture.txtQty(7) loaded\n",
                "line 2: Expected frmFixture.txtQty(7) to be loaded, but it "
                "is not");
  ExpectFailure("start\nexpect frmFixture.txtNope(1) not loaded\n",
                "line 2: Form frmFixture has no control array txtNope");
  EXPECT_EQ(RunText("expect frmFixture.txtQty not loaded\n").result.exit_code,
            2);
}

TEST(ExpectStepsTest, FormFieldsAndSessionValuesReadAndSetByName) {
  testing::ScriptRun run = RunText(
      "start\n"
      "wait 2000\n"
      "expect frmFixture.miTicks = 2\n"
      "expect frmFixture.mbWorking = False\n"
      "set frmFixture.mbUndoable = True\n"
      "expect frmFixture.mbUndoable = True\n"
      "set frmFixture.msMouseLog = \"x\\0y\"\n"
      "expect frmFixture.msMouseLog = \"x\\0y\"\n"
      "set session gsInfoHead = \"Done\"\n"
      "expect session gsInfoHead = \"Done\"\n"
      "set session giCurrentOperation = 6\n"
      "expect session giCurrentOperation > 5\n");
  EXPECT_EQ(run.result.exit_code, 0) << run.result.failure << run.transcript;
  ExpectFailure(
      "start\nexpect frmFixture.miNothing = 1\n",
      "line 2: Form frmFixture has no property or named field miNothing");
  ExpectFailure("start\nset session gsNothing = 1\n",
                "line 2: The session has no value gsNothing");
  ExpectFailure("start\nwait 1000\nexpect frmFixture.miTicks = 2\n",
                "line 3: Expected frmFixture.miTicks = \"2\", but it is \"1\"");
}

PlatformServices WithLauncher(
    std::shared_ptr<testing::FakeLauncher::Record> r) {
  PlatformServices services;
  services.launcher = std::make_unique<testing::FakeLauncher>(std::move(r));
  return services;
}

TEST(ExpectStepsTest, LauncherCallsShowInTheTranscript) {
  auto record = std::make_shared<testing::FakeLauncher::Record>();
  testing::ScriptRun run = RunText(
      "start\n"
      "expect launched nothing\n"
      "click frmFixture.cmdWeb\n"
      "expect launched \"https://example.com/a b\"\n"
      "expect launched containing \"example.com\"\n"
      "expect launched count = 1\n",
      [record] { return WithLauncher(record); });
  EXPECT_EQ(run.result.exit_code, 0) << run.result.failure << run.transcript;
  EXPECT_NE(run.transcript.find("launcher opens \"https://example.com/a b\"\n"),
            std::string::npos)
      << run.transcript;
  EXPECT_EQ(record->opened,
            std::vector<std::string>{"https://example.com/a b"});

  auto failing = std::make_shared<testing::FakeLauncher::Record>();
  failing->failure = "no browser";
  run = RunText(
      "start\n"
      "click frmFixture.cmdWeb\n"
      "expect frmFixture.lblStatus.Caption = \"not opened: no browser\"\n",
      [failing] { return WithLauncher(failing); });
  EXPECT_EQ(run.result.exit_code, 0) << run.result.failure;
  EXPECT_NE(run.transcript.find("launcher opens \"https://example.com/a b\", "
                                "which fails: no browser"),
            std::string::npos)
      << run.transcript;

  ExpectFailure("start\nexpect launched \"x\"\n",
                "line 2: Expected the launcher to open \"x\", but it opened "
                "nothing");
  ExpectFailure("start\nclick frmFixture.cmdWeb\nexpect launched nothing\n",
                "line 3: Expected the launcher to open nothing, but it opened "
                "\"https://example.com/a b\"");
  ExpectFailure(
      "start\nclick frmFixture.cmdWeb\n"
      "expect launched containing \"help\"\n",
      "line 3: Expected the launcher to open something containing "
      "\"help\", but the last it opened is \"https://example.com/a "
      "b\"");
}

TEST(ExpectStepsTest, ImageFactsComeFromTheImageLibrary) {
  testing::TempDir cache;
  auto with_images = [&cache] {
    PlatformServices services;
    services.images = MakeVipsImageOperations(cache.path().string());
    return services;
  };
  testing::ScriptRun run = RunText(
      "make photo \"${TMP}/plain.jpg\" 64x48\n"
      "make photo \"${TMP}/cam.jpg\" 120x80 orientation 6 preview same\n"
      "make photo \"${TMP}/stale.jpg\" 90x90 orientation 8 preview turned\n"
      "expect image \"${TMP}/plain.jpg\" width = 64\n"
      "expect image \"${TMP}/plain.jpg\" height = 48\n"
      "expect image \"${TMP}/plain.jpg\" orientation = 1\n"
      "expect image \"${TMP}/plain.jpg\" preview missing\n"
      "expect image \"${TMP}/cam.jpg\" width > 100\n"
      "expect image \"${TMP}/cam.jpg\" orientation = 6\n"
      "expect image \"${TMP}/cam.jpg\" preview matches\n"
      "expect image \"${TMP}/stale.jpg\" preview differs\n",
      with_images);
  EXPECT_EQ(run.result.exit_code, 0) << run.result.failure << run.transcript;

  testing::TempDir dir;
  run = RunText(
      "make photo \"${TMP}/cam.jpg\" 120x80 orientation 6 preview same\n"
      "expect image \"${TMP}/cam.jpg\" preview differs\n",
      with_images, &dir);
  EXPECT_EQ(run.result.failure, "line 2: Expected the EXIF preview of " +
                                    (dir.path() / "tmp" / "cam.jpg").string() +
                                    " to be differs, but it matches");

  run = RunText(
      "write file \"${TMP}/not.jpg\" \"plain text\"\n"
      "expect image \"${TMP}/not.jpg\" width = 1\n",
      with_images);
  EXPECT_EQ(run.result.exit_code, 1);
  EXPECT_NE(run.result.failure.find("it is no readable image"),
            std::string::npos)
      << run.result.failure;

  // A run without an image library says so.
  ExpectFailure("expect image \"/x.jpg\" width = 1\n",
                "line 1: The run has no image library");
}

}  // namespace
}  // namespace qbpd
