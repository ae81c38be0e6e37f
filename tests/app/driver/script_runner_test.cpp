#include "app/driver/script_runner.h"

#include "tests/support/fixture_program.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <sstream>

namespace qbpd {
namespace {

struct ScriptRun {
  ScriptResult result;
  std::string transcript;
};

ScriptRun RunText(const std::string& script) {
  testing::TempDir dir;
  ScriptOptions options;
  options.script_path = dir.WriteFile("test.qbs", script).string();
  std::ostringstream out;
  ScriptRun run;
  run.result = RunScript(options, testing::RegisterFixtureProgram, out);
  run.transcript = out.str();
  return run;
}

TEST(ScriptRunnerTest, FailedExpectationsNameTheLineAndBothValues) {
  struct Case {
    std::string script;
    std::string failure;
  };
  for (const Case& c : std::vector<Case>{
           {"start\nexpect frmFixture.lblStatus.Caption = \"busy\"\n",
            "line 2: Expected frmFixture.lblStatus.Caption = \"busy\", but it "
            "is \"\""},
           {"start\nclick frmFixture.cmdAsk\nexpect message \"Do you?\" "
            "answer Yes\n",
            "line 3: Expected a message box \"Do you?\", but it says \"Do you "
            "like it?\""},
           {"start\nclick frmFixture.cmdAsk\nexpect form frmFixture shown\n",
            "line 2: Unexpected message box \"Do you like it?\" (style 36, "
            "caption \"Fixture\"); the next step is: line 3: expect form "
            "frmFixture shown"},
           {"start\nclick frmFixture.cmdDialog\n",
            "line 2: Form frmFixtureDialog is still shown modal after the "
            "last step"},
           {"start\nclick frmFixture.cmdDialog\nclick frmFixture.cmdAsk\n",
            "line 3: frmFixture.cmdAsk can't be reached: form "
            "frmFixtureDialog is shown modal"},
           {"start\nclick frmFixture.cmdNope\n",
            "line 2: Form frmFixture has no control cmdNope"},
           {"click frmFixture.cmdAsk\n",
            "line 1: Form frmFixture is not loaded"},
           {"start\nexpect form frmFixtureDialog shown\n",
            "line 2: Expected form frmFixtureDialog shown, but it is gone"},
           {"start\nanswer Yes\n",
            "line 1: The script answers a message box (line 2: answer Yes), "
            "but none is shown"},
       }) {
    ScriptRun run = RunText(c.script);
    EXPECT_EQ(run.result.exit_code, 1) << c.script;
    EXPECT_EQ(run.result.failure, c.failure) << c.script;
  }
}

TEST(ScriptRunnerTest, BadScriptsAreRefusedBeforeAnythingRuns) {
  struct Case {
    std::string script;
    std::string failure;
  };
  for (const Case& c : std::vector<Case>{
           {"start\nfly frmFixture\n", "line 2: unknown step \"fly\""},
           {"start\nclick\n",
            "line 2: expected: click FORM.CONTROL [at X,Y | at photo X,Y]"},
           {"type frmFixture.txtName \"abc\n",
            "line 1: a text is not closed with \""},
           {"expect message \"x\" colour 5\n",
            "line 1: unknown word \"colour\" in expect message"},
           {"answer Maybe\n", "line 1: unknown button \"Maybe\""},
           {"write file \"${NOPE_NOT_SET_ANYWHERE}\" \"x\"\n",
            "line 1: unknown variable ${NOPE_NOT_SET_ANYWHERE}"},
       }) {
    ScriptRun run = RunText(c.script);
    EXPECT_EQ(run.result.exit_code, 2) << c.script;
    EXPECT_EQ(run.result.failure, c.failure) << c.script;
    EXPECT_EQ(run.result.steps_run, 0);
  }
}

TEST(ScriptRunnerTest, TranscriptShowsStepsAndWhatTheProgramShowed) {
  ScriptRun run = RunText(
      "start\n"
      "click frmFixture.cmdAsk\n"
      "answer No\n"
      "expect frmFixture.lblAnswer.Caption = \"No\"\n"
      "write file \"${TMP}/note.txt\" \"hello\"\n"
      "expect file \"${TMP}/note.txt\" contains \"ell\"\n");
  ASSERT_EQ(run.result.exit_code, 0) << run.result.failure;
  EXPECT_EQ(run.result.steps_run, 6);
  const std::string& t = run.transcript;
  size_t click = t.find("   2  click frmFixture.cmdAsk");
  size_t box =
      t.find("message box [36] \"Do you like it?\" caption \"Fixture\"");
  size_t answer = t.find("   3  answer No");
  size_t answered = t.find("answered 7");
  ASSERT_NE(click, std::string::npos) << t;
  ASSERT_NE(box, std::string::npos) << t;
  ASSERT_NE(answer, std::string::npos) << t;
  ASSERT_NE(answered, std::string::npos) << t;
  EXPECT_LT(click, box);
  EXPECT_LT(box, answer);
  EXPECT_LT(answer, answered);
}

}  // namespace
}  // namespace qbpd
