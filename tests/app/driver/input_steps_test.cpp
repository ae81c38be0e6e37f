// What the user does: menu shortcuts, keys on message boxes and pop-up
// menus, and the mouse at points of a control.
#include "tests/app/driver/script_run.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

using testing::RunText;

void ExpectPasses(const std::string& script) {
  testing::ScriptRun run = RunText(script);
  EXPECT_EQ(run.result.exit_code, 0) << script << run.result.failure << "\n"
                                     << run.transcript;
}

void ExpectFailure(const std::string& script, const std::string& failure) {
  testing::ScriptRun run = RunText(script);
  EXPECT_EQ(run.result.exit_code, 1) << script << run.transcript;
  EXPECT_EQ(run.result.failure, failure) << script;
}

TEST(InputStepsTest, PressedShortcutsPickTheirMenuEntryWhenEnabled) {
  // Ctrl+S saves; Ctrl+Z opens the Edit menu first, whose Click enables
  // Undo only after a save.
  ExpectPasses(
      "start\n"
      "press frmFixture \"^z\"\n"
      "expect frmFixture.lblStatus.Caption = \"\"\n"
      "press frmFixture \"^s\"\n"
      "expect frmFixture.miSaves = 1\n"
      "press frmFixture \"^z\"\n"
      "expect frmFixture.lblStatus.Caption = \"undone\"\n");
  // In a text box, Ctrl+A is the box's own (the menu's Ask stays shut);
  // Ctrl+S is still the menu's.
  ExpectPasses(
      "start\n"
      "type frmFixture.txtName \"ab^a\"\n"
      "expect frmFixture.lblStatus.Caption = \"name: ab\"\n"
      "type frmFixture.txtName \"^s\"\n"
      "expect frmFixture.lblStatus.Caption = \"saved 1\"\n");
  // Elsewhere Ctrl+A is the menu's: it asks.
  ExpectPasses(
      "start\n"
      "press frmFixture \"^a\"\n"
      "answer Yes\n"
      "expect frmFixture.lblAnswer.Caption = \"Yes\"\n");
}

TEST(InputStepsTest, KeysAnswerAMessageBoxAsOnTheScreen) {
  for (const auto& [keys, answer] :
       std::vector<std::pair<std::string, std::string>>{
           {"{ENTER}", "Yes"},
           {"{TAB}{ENTER}", "No"},
           {"{RIGHT} ", "No"},
           {"{TAB}{TAB}{ENTER}", "Yes"},
           {"n", "No"},
           {"%y", "Yes"},
       }) {
    ExpectPasses("start\nclick frmFixture.cmdAsk\npress message \"" + keys +
                 "\"\nexpect frmFixture.lblAnswer.Caption = \"" + answer +
                 "\"\n");
  }
  ExpectFailure(
      "start\nclick frmFixture.cmdAsk\npress message \"{ESC}\"\n",
      "line 3: The keys \"{ESC}\" press no button of the message box [36] "
      "\"Do you like it?\"");
  ExpectFailure("start\nclick frmFixture.cmdAsk\npress message \"yn\"\n",
                "line 3: The message box closed at key 1 of \"yn\"; the keys "
                "after it would go to a window the script doesn't name");
}

TEST(InputStepsTest, KeysChooseFromAPopUpMenu) {
  ExpectPasses(
      "start\n"
      "click frmFixture.cmdMenu\n"
      "press popup \"{DOWN}{DOWN}{ENTER}\"\n"
      "expect frmFixture.lblStatus.Caption = \"saved 1\"\n"
      "click frmFixture.cmdMenu\n"
      "press popup \"{UP}{ENTER}\"\n"
      "expect frmFixture.lblStatus.Caption = \"recent 2\"\n"
      "click frmFixture.cmdMenu\n"
      "press popup \"1\"\n"
      "expect frmFixture.lblStatus.Caption = \"recent 1\"\n"
      "click frmFixture.cmdMenu\n"
      "press popup \"{DOWN}{ESC}\"\n"
      "expect frmFixture.miSaves = 1\n");
  ExpectFailure("start\nclick frmFixture.cmdMenu\npress popup \"{DOWN}\"\n",
                "line 3: The pop-up menu mnuFile is still open after the keys "
                "\"{DOWN}\"");
}

TEST(InputStepsTest, MouseAtPointsOfAControl) {
  testing::ScriptRun run = RunText(
      "start\n"
      "click frmFixture.picPad at 300,450\n"
      "hover frmFixture.picPad at 15,30\n"
      "double-click frmFixture.picPad at 0,0\n"
      "expect frmFixture.msMouseLog = \"MouseDown 1 300,450;MouseUp 1 "
      "300,450;Click;MouseMove 0 15,30;MouseDown 1 0,0;MouseUp 1 "
      "0,0;Click;DblClick;\"\n");
  EXPECT_EQ(run.result.exit_code, 0) << run.result.failure << run.transcript;
  EXPECT_NE(run.transcript.find("mouse at twips 300,450"), std::string::npos);

  // A drag that leaves the control raises no Click.
  ExpectPasses(
      "start\n"
      "drag frmFixture.picPad from 100,100 to 1400,1000 in 2 steps\n"
      "expect frmFixture.msMouseLog = \"MouseDown 1 100,100;MouseMove 1 "
      "750,550;MouseMove 1 1400,1000;MouseUp 1 1400,1000;\"\n");
  ExpectFailure("start\nclick frmFixture.picPad at 1500,10\n",
                "line 2: Point 1500,10 is not on frmFixture.picPad, which is "
                "1500 x 900 twips");
  ExpectFailure("start\nclick frmFixture.picPad at photo 1,1\n",
                "line 2: frmFixture.picPad is not a photo view: its points "
                "are in twips");
}

TEST(InputStepsTest, ADraggedSplitterFollowsTheMouse) {
  // Each move reaches the bar relative to where it stands then, so the bar
  // ends where the mouse let go: 1500 twips lower.
  ExpectPasses(
      "start\n"
      "drag frmFixture.picSplit from 700,30 to 700,1530 in 5 steps\n"
      "expect frmFixture.picSplit.Top = 6000\n");
}

TEST(InputStepsTest, BadMouseStepsAreScriptErrors) {
  for (const char* script : {
           "click frmFixture.picPad at\n",
           "click frmFixture.picPad at 1;2\n",
           "click frmFixture.picPad at 1.5,2\n",
           "hover frmFixture.picPad\n",
           "drag frmFixture.picPad from 1,1 to photo 2,2\n",
           "drag frmFixture.picPad from 1,1 to 2,2 in 0 steps\n",
           "press message\n",
       }) {
    EXPECT_EQ(RunText(script).result.exit_code, 2) << script;
  }
}

}  // namespace
}  // namespace qbpd
