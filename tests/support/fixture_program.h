#ifndef QBPD_TESTS_SUPPORT_FIXTURE_PROGRAM_H_
#define QBPD_TESTS_SUPPORT_FIXTURE_PROGRAM_H_

#include "core/application.h"
#include "platform/forms/control_array.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string>
#include <string_view>

namespace qbpd::testing {

// A small program of two forms that exercises the form runtime the way the
// real program does: a message box question, a modal dialog, timers (one
// repeating, one that stops itself), a long loop that pumps events and
// watches a cancel flag, a filtered text box, a control array, menus with a
// menu array, and a close that can be refused. Tests and the runtime's own
// driver scripts run against it.
class frmFixture : public Form {
 public:
  static constexpr std::string_view kName = "frmFixture";
  explicit frmFixture(Application& app);

  Label lblAnswer{*this, "lblAnswer"};
  Label lblTicks{*this, "lblTicks"};
  Label lblStatus{*this, "lblStatus"};
  CommandButton cmdAsk{*this, "cmdAsk"};
  CommandButton cmdDialog{*this, "cmdDialog"};
  CommandButton cmdWork{*this, "cmdWork"};
  CommandButton cmdCancel{*this, "cmdCancel"};
  TextBox txtName{*this, "txtName"};
  ControlArray<TextBox> txtQty{*this, "txtQty"};
  CheckBox chkKeepOpen{*this, "chkKeepOpen"};
  Frame fraOptions{*this, "fraOptions"};
  OptionButton optSmall{*this, "optSmall"};
  OptionButton optLarge{*this, "optLarge"};
  ComboBox cboSize{*this, "cboSize"};
  Timer tmrTick{*this, "tmrTick"};
  Timer tmrOnce{*this, "tmrOnce"};
  Menu mnuFile{*this, "mnuFile"};
  Menu mnuFAsk{*this, "mnuFAsk"};
  ControlArray<Menu> mnuFRecent{*this, "mnuFRecent"};
  Menu mnuFSave{*this, "mnuFSave"};
  Menu mnuEdit{*this, "mnuEdit"};
  Menu mnuEUndo{*this, "mnuEUndo"};
  // A pad that logs its mouse events, and a bar that moves with a drag as a
  // splitter does.
  PictureBox picPad{*this, "picPad"};
  PictureBox picSplit{*this, "picSplit"};
  CommandButton cmdWeb{*this, "cmdWeb"};
  CommandButton cmdMenu{*this, "cmdMenu"};

  // Set by the dialog when it closes with OK; read by cmdDialog_Click.
  std::string dialog_value;

 protected:
  void Form_Load() override;
  void Form_QueryUnload(int& Cancel, int UnloadMode) override;

 private:
  void cmdAsk_Click();
  void cmdDialog_Click();
  void cmdWork_Click();
  void cmdCancel_Click();
  void txtName_KeyPress(EventArgs& e);
  void txtName_Change();
  void txtQty_Change(int Index);
  void optSmall_Click();
  void optLarge_Click();
  void tmrTick_Timer();
  void tmrOnce_Timer();
  void mnuFile_Click();
  void mnuFRecent_Click(int Index);
  void mnuFSave_Click();
  void mnuEdit_Click();
  void mnuEUndo_Click();
  void picPad_Mouse(EventArgs& e, const char* what);
  void picSplit_MouseDown(EventArgs& e);
  void picSplit_MouseMove(EventArgs& e);
  void cmdWeb_Click();
  void cmdMenu_Click();

  Application& app_;
  int ticks_ = 0;
  bool cancel_requested_ = false;
  bool working_ = false;
  // The form's named fields (see the constructor).
  int miSaves = 0;
  bool mbUndoable = false;
  std::string msMouseLog;
  int miSplitGrabY = 0;
};

class frmFixtureDialog : public Form {
 public:
  static constexpr std::string_view kName = "frmFixtureDialog";
  explicit frmFixtureDialog(Application& app);

  Label lblPrompt{*this, "lblPrompt"};
  TextBox txtValue{*this, "txtValue"};
  CommandButton cmdOK{*this, "cmdOK"};
  CommandButton cmdCancel{*this, "cmdCancel"};
  CommandButton cmdNote{*this, "cmdNote"};

 protected:
  void Form_Load() override;

 private:
  void cmdOK_Click();
  void cmdCancel_Click();
  void cmdNote_Click();

  Application& app_;
};

// A second modal level, shown from the dialog.
class frmFixtureNote : public Form {
 public:
  static constexpr std::string_view kName = "frmFixtureNote";
  explicit frmFixtureNote(Application& app);

  Label lblNote{*this, "lblNote"};
  CommandButton cmdClose{*this, "cmdClose"};

 private:
  void cmdClose_Click();
};

// Declares the three forms, with frmFixture as the entry.
void RegisterFixtureProgram(Application& app);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FIXTURE_PROGRAM_H_
