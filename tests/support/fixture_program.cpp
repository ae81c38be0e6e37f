#include "tests/support/fixture_program.h"

#include "platform/forms/keys.h"
#include "platform/launcher.h"

namespace qbpd::testing {

frmFixture::frmFixture(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetCaption("Fixture");
  Move(0, 0, 9000, 6000);
  cmdAsk.SetCaption("Ask");
  cmdDialog.SetCaption("Dialog...");
  cmdWork.SetCaption("Work");
  cmdCancel.SetCaption("Cancel");
  txtName.SetMaxLength(5);
  chkKeepOpen.SetCaption("Keep open");
  fraOptions.SetCaption("Size");
  optSmall.SetContainer("fraOptions");
  optLarge.SetContainer("fraOptions");
  optSmall.SetCaption("Small");
  optLarge.SetCaption("Large");
  mnuFile.SetCaption("&File");
  mnuFAsk.SetCaption("&Ask...");
  mnuFAsk.SetContainer("mnuFile");
  mnuFAsk.SetShortcut("Ctrl+A");
  mnuFRecent[0].SetContainer("mnuFile");
  mnuFRecent[0].SetVisible(false);
  mnuFSave.SetCaption("&Save");
  mnuFSave.SetContainer("mnuFile");
  mnuFSave.SetShortcut("Ctrl+S");
  mnuEdit.SetCaption("&Edit");
  mnuEUndo.SetCaption("&Undo");
  mnuEUndo.SetContainer("mnuEdit");
  mnuEUndo.SetShortcut("Ctrl+Z");
  picPad.Move(4000, 3000, 1500, 900);
  picSplit.Move(4000, 4500, 1500, 60);
  cmdWeb.SetCaption("Web");
  cmdMenu.SetCaption("Menu");
  Field("miTicks", ticks_);
  Field("mbWorking", working_);
  Field("miSaves", miSaves);
  Field("mbUndoable", mbUndoable);
  Field("msMouseLog", msMouseLog);

  On("cmdAsk", "Click", &frmFixture::cmdAsk_Click);
  On("cmdDialog", "Click", &frmFixture::cmdDialog_Click);
  On("cmdWork", "Click", &frmFixture::cmdWork_Click);
  On("cmdCancel", "Click", &frmFixture::cmdCancel_Click);
  On("txtName", "KeyPress", &frmFixture::txtName_KeyPress);
  On("txtName", "Change", &frmFixture::txtName_Change);
  On("txtQty", "Change", &frmFixture::txtQty_Change);
  On("optSmall", "Click", &frmFixture::optSmall_Click);
  On("optLarge", "Click", &frmFixture::optLarge_Click);
  On("tmrTick", "Timer", &frmFixture::tmrTick_Timer);
  On("tmrOnce", "Timer", &frmFixture::tmrOnce_Timer);
  On("mnuFile", "Click", &frmFixture::mnuFile_Click);
  On("mnuFAsk", "Click", &frmFixture::cmdAsk_Click);
  On("mnuFRecent", "Click", &frmFixture::mnuFRecent_Click);
  On("mnuFSave", "Click", &frmFixture::mnuFSave_Click);
  On("mnuEdit", "Click", &frmFixture::mnuEdit_Click);
  On("mnuEUndo", "Click", &frmFixture::mnuEUndo_Click);
  for (const char* event : {"MouseDown", "MouseMove", "MouseUp"}) {
    On("picPad", event,
       [this, event](EventArgs& e) { picPad_Mouse(e, event); });
  }
  On("picPad", "Click", [this](EventArgs&) { msMouseLog += "Click;"; });
  On("picPad", "DblClick", [this](EventArgs&) { msMouseLog += "DblClick;"; });
  On("picSplit", "MouseDown", &frmFixture::picSplit_MouseDown);
  On("picSplit", "MouseMove", &frmFixture::picSplit_MouseMove);
  On("cmdWeb", "Click", &frmFixture::cmdWeb_Click);
  On("cmdMenu", "Click", &frmFixture::cmdMenu_Click);
}

void frmFixture::Form_Load() {
  for (int i = 1; i <= 2; ++i) {
    TextBox& box = txtQty.Load(i);
    box.SetTop(txtQty[0].Top() + i * 400);
    box.SetVisible(true);
  }
  for (const char* size : {"4 x 6", "5 x 7", "8 x 10"}) {
    cboSize.AddItem(size);
    cboSize.SetItemData(cboSize.NewIndex(), cboSize.NewIndex() * 10);
  }
  for (int i = 1; i <= 2; ++i) {
    Menu& m = mnuFRecent.Load(i);
    m.SetCaption("&" + std::to_string(i) + " Folder && more");
    m.SetVisible(true);
  }
  tmrTick.SetInterval(1000);
  tmrTick.SetEnabled(true);
  tmrOnce.SetInterval(200);
  tmrOnce.SetEnabled(true);
  Show();
}

void frmFixture::Form_QueryUnload(int& Cancel, int UnloadMode) {
  (void)UnloadMode;
  if (chkKeepOpen.Value() == 1) {
    Cancel = 1;
    lblStatus.SetCaption("close refused");
  }
}

void frmFixture::cmdAsk_Click() {
  int answer = host().MsgBox("Do you like it?", kMbQuestionYesNo, Caption());
  lblAnswer.SetCaption(answer == kIdYes ? "Yes" : "No");
}

void frmFixture::cmdDialog_Click() {
  dialog_value.clear();
  auto& dialog = app_.forms().Get<frmFixtureDialog>();
  dialog.Show(/*modal=*/true);
  lblStatus.SetCaption(dialog_value.empty() ? "dialog cancelled"
                                            : "dialog: " + dialog_value);
}

void frmFixture::cmdWork_Click() {
  if (working_) {
    return;
  }
  working_ = true;
  cancel_requested_ = false;
  lblStatus.SetCaption("working");
  // Stands for a long call that keeps the message loop turning.
  for (int step = 0; step < 1000 && !cancel_requested_; ++step) {
    host().DoEvents();
  }
  lblStatus.SetCaption(cancel_requested_ ? "cancelled" : "finished");
  working_ = false;
}

void frmFixture::cmdCancel_Click() {
  cancel_requested_ = true;
}

void frmFixture::txtName_KeyPress(EventArgs& e) {
  // Digits are refused, as a name filter would.
  if (e.KeyAscii >= '0' && e.KeyAscii <= '9') {
    e.KeyAscii = 0;
  }
}

void frmFixture::txtName_Change() {
  lblStatus.SetCaption("name: " + txtName.Text());
}

void frmFixture::txtQty_Change(int Index) {
  lblStatus.SetCaption("qty " + std::to_string(Index) + ": " +
                       txtQty[Index].Text());
}

void frmFixture::optSmall_Click() {
  lblStatus.SetCaption("small");
}

void frmFixture::optLarge_Click() {
  lblStatus.SetCaption("large");
}

void frmFixture::tmrTick_Timer() {
  ++ticks_;
  lblTicks.SetCaption(std::to_string(ticks_));
}

void frmFixture::tmrOnce_Timer() {
  tmrOnce.SetEnabled(false);
  lblStatus.SetCaption("ready");
}

void frmFixture::mnuFile_Click() {
  mnuFAsk.SetEnabled(!working_);
}

void frmFixture::mnuFRecent_Click(int Index) {
  lblStatus.SetCaption("recent " + std::to_string(Index));
}

void frmFixture::mnuFSave_Click() {
  ++miSaves;
  lblStatus.SetCaption("saved " + std::to_string(miSaves));
}

void frmFixture::mnuEdit_Click() {
  // Undo is there only after a save, as an undo with nothing to undo isn't.
  mnuEUndo.SetEnabled(mbUndoable || miSaves > 0);
}

void frmFixture::mnuEUndo_Click() {
  lblStatus.SetCaption("undone");
}

void frmFixture::picPad_Mouse(EventArgs& e, const char* what) {
  msMouseLog += std::string(what) + " " + std::to_string(e.Button) + " " +
                std::to_string(e.X) + "," + std::to_string(e.Y) + ";";
}

void frmFixture::picSplit_MouseDown(EventArgs& e) {
  miSplitGrabY = e.Y;
}

void frmFixture::picSplit_MouseMove(EventArgs& e) {
  if (e.Button == 1) {
    picSplit.SetTop(picSplit.Top() + e.Y - miSplitGrabY);
  }
}

void frmFixture::cmdWeb_Click() {
  LaunchResult result = app_.launcher().OpenDocument("https://example.com/a b");
  lblStatus.SetCaption(result.ok ? "opened" : "not opened: " + result.error);
}

void frmFixture::cmdMenu_Click() {
  PopupMenu(mnuFile, cmdMenu.Left(), cmdMenu.Top() + cmdMenu.Height());
}

frmFixtureDialog::frmFixtureDialog(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetCaption("Fixture dialog");
  lblPrompt.SetCaption("Value:");
  cmdOK.SetCaption("OK");
  cmdOK.SetDefault(true);
  cmdCancel.SetCaption("Cancel");
  cmdCancel.SetCancel(true);
  On("cmdOK", "Click", &frmFixtureDialog::cmdOK_Click);
  On("cmdCancel", "Click", &frmFixtureDialog::cmdCancel_Click);
  cmdNote.SetCaption("Note...");
  On("cmdNote", "Click", &frmFixtureDialog::cmdNote_Click);
}

void frmFixtureDialog::Form_Load() {
  txtValue.SetText("");
}

void frmFixtureDialog::cmdOK_Click() {
  if (txtValue.Text().empty()) {
    host().MsgBox("Enter a value", kMbInformation, Caption());
    return;
  }
  app_.forms().Get<frmFixture>().dialog_value = txtValue.Text();
  Unload();
}

void frmFixtureDialog::cmdCancel_Click() {
  Unload();
}

void frmFixtureDialog::cmdNote_Click() {
  app_.forms().Get<frmFixtureNote>().Show(/*modal=*/true);
  // Back here only once the note has closed.
  lblPrompt.SetCaption("note read");
}

frmFixtureNote::frmFixtureNote(Application& app)
    : Form(app.host(), std::string(kName)) {
  SetCaption("Note");
  lblNote.SetCaption("A note on top of the dialog");
  cmdClose.SetCaption("Close");
  On("cmdClose", "Click", &frmFixtureNote::cmdClose_Click);
}

void frmFixtureNote::cmdClose_Click() {
  Unload();
}

void RegisterFixtureProgram(Application& app) {
  app.forms().Register<frmFixture>(
      [&app] { return std::make_unique<frmFixture>(app); });
  app.forms().Register<frmFixtureDialog>(
      [&app] { return std::make_unique<frmFixtureDialog>(app); });
  app.forms().Register<frmFixtureNote>(
      [&app] { return std::make_unique<frmFixtureNote>(app); });
  app.SetEntryForm(std::string(frmFixture::kName));
}

}  // namespace qbpd::testing
