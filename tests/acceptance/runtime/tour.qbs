# A tour of the form runtime: a question answered, a modal dialog, timers in
# virtual time, a cancel click inside a long call, filtered typing, control
# arrays, menus and a refused close.
start
expect form frmFixture shown
expect frmFixture.lblStatus.Caption = ""

# The one-shot timer fires once at 200 ms; the repeating one every second.
wait 200
expect frmFixture.lblStatus.Caption = "ready"
wait 2800
expect frmFixture.lblTicks.Caption = "3"
expect frmFixture.tmrOnce.Enabled = False

click frmFixture.cmdAsk
expect message "Do you like it?" style 36 caption "Fixture" answer Yes
expect frmFixture.lblAnswer.Caption = "Yes"

# A modal dialog: its OK refuses an empty value, then takes one.
click frmFixture.cmdDialog
expect form frmFixtureDialog modal
click frmFixtureDialog.cmdOK
expect message "Enter a value" style 64
type frmFixtureDialog.txtValue "hello{ENTER}"
expect form frmFixtureDialog gone
expect frmFixture.lblStatus.Caption = "dialog: hello"

# Escape answers the dialog's cancel button.
click frmFixture.cmdDialog
press frmFixtureDialog "{ESC}"
expect frmFixture.lblStatus.Caption = "dialog cancelled"

# The user clicks Cancel while the long call is on the stack.
click frmFixture.cmdWork
inside: click frmFixture.cmdCancel
expect frmFixture.lblStatus.Caption = "cancelled"

# Digits are filtered and MaxLength holds.
type frmFixture.txtName "ab1c2defg"
expect frmFixture.txtName.Text = "abcde"
type frmFixture.txtName "{BACKSPACE 2}"
expect frmFixture.txtName.Text = "abc"

type frmFixture.txtQty(2) "7"
expect frmFixture.lblStatus.Caption = "qty 2: 7"
choose frmFixture.cboSize "5 x 7"
expect frmFixture.cboSize.ItemData(1) = 10
expect frmFixture.cboSize.ListIndex = 1
click frmFixture.optLarge
expect frmFixture.optSmall.Value = False
expect frmFixture.lblStatus.Caption = "large"

menu frmFixture.mnuFRecent(2)
expect frmFixture.lblStatus.Caption = "recent 2"
expect frmFixture.mnuFRecent(1).Caption = "&1 Folder && more"

tick frmFixture.chkKeepOpen
close frmFixture
expect frmFixture.lblStatus.Caption = "close refused"
untick frmFixture.chkKeepOpen
close frmFixture
expect form frmFixture gone
expect no errors
