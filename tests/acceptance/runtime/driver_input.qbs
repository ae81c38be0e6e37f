# Menu shortcuts as a person presses them, keys on message boxes and pop-up
# menus, the mouse at points, and the form's named fields.
start
wait 200
# Undo is off until something was saved: Ctrl+Z does nothing yet.
press frmFixture "^z"
expect frmFixture.lblStatus.Caption = "ready"
press frmFixture "^s"
expect frmFixture.miSaves = 1
press frmFixture "^z"
expect frmFixture.lblStatus.Caption = "undone"
# Ctrl+A is the Ask entry's; the box is answered from the keyboard.
press frmFixture "^a"
press message "{TAB}{ENTER}"
expect frmFixture.lblAnswer.Caption = "No"
click frmFixture.cmdMenu
press popup "{DOWN}{DOWN}{ENTER}"
expect frmFixture.miSaves = 2
click frmFixture.picPad at 300,450
expect frmFixture.msMouseLog contains "MouseDown 1 300,450;"
drag frmFixture.picSplit from 700,30 to 700,1530
expect frmFixture.picSplit.Top = 6000
expect frmFixture.picSplit.Top >= 6000
expect no errors
