# The preferences' "Folders", "Account" and "Camera Transfer" tabs: each
# check of OK in its order, with its message and its tab; the start folder
# missing or a file; the base folder made piece by piece, or refused when it
# can't be made; the account rules and the scrambled password; the recent
# folders trimmed; the camera transfer values written.
make photos 2 "${PICTURES}/Start"
make photos 1 "${PICTURES}/Other"
write file "${PICTURES}/a-file.txt" "not a folder"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "4"
setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder3 = "/stale/three"
setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder4 = "/stale/four"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Display" SlideshowImageIntervalInSeconds = "4"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Start"
setting "Software\Quillbay Picture Desk\Preferences\Settings" UserName = "ann@example.com"
setting "Software\Quillbay Picture Desk\Preferences\Settings" EncryptedPassword = "xjhwjy\0"
setting "Software\Quillbay Picture Desk\Preferences\Settings" AutoLogin = "True"
setting "Software\Quillbay Picture Desk\Preferences\ExpressPrints" ExpressPrints = "4x6Singles"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" BaseFolder = "${PICTURES}/Camera"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" FolderName = "0"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" PhotoName = "1"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DeleteImagesStatus = "False"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DisplayDialogtoCopy = "True"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DetectUSBDevices = "True"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
folder frmMainWindow.ExpTreeView "${PICTURES}/Other"
wait 500
menu frmMainWindow.mnuEPref
expect form frmPreferences modal

# The account as stored: the password unscrambled ("secret"), shown as stars.
tab frmPreferences.tbsPref 2
expect frmPreferences.fraAccount.Visible = True
expect frmPreferences.lblAccountHead.Caption = "Please enter your Quillbay account information below"
expect frmPreferences.chkAutoLogin.Caption = "Remember my log info. every time I connect."
expect frmPreferences.txtLogin.Text = "ann@example.com"
expect frmPreferences.txtPassword.Text = "secret"
expect frmPreferences.txtPassword.PasswordChar = "*"
expect frmPreferences.chkAutoLogin.Value = 1

tab frmPreferences.tbsPref 3
expect frmPreferences.chkLastOpenFolder.Caption = "Use last open folder"
expect frmPreferences.lblOpenFolder.Caption = "Always open this folder:"
expect frmPreferences.lblRecentFolderHead.Caption = "List                  of the most recently viewed folders"
expect frmPreferences.txtRecentFolders.Text = "4"
expect frmPreferences.opt4x6Singles.Value = True

tab frmPreferences.tbsPref 4
expect frmPreferences.ChkDetectUSB.Caption = "Detect the USB device each time connected to the system."
expect frmPreferences.chkDisplayCameraCopyImages.Caption = "Ask me before downloading photos from my camera to the Quillbay Picture Desk."
expect frmPreferences.chkDeleteImagesFromCamera.Caption = "Delete the images after copying from camera"
expect frmPreferences.lblDefFolder.Caption = "Always download photos from my camera to this folder :"
expect frmPreferences.lblFolderName.Caption = "Folder naming :"
expect frmPreferences.lblPhotoName.Caption = "Photo naming :"
expect frmPreferences.cboFolderName.ListIndex = 0
expect frmPreferences.cboFolderName.List(2) = "Always ask me for a name"
expect frmPreferences.cboPhotoName.ListIndex = 1
expect frmPreferences.cboPhotoName.List(1) = "(Folder Name) 1"

# Recent folders: nothing, a blank, a sign, 0, 11; the "Folders" tab shows.
set frmPreferences.txtRecentFolders.Text = ""
click frmPreferences.cmdOK
expect message "Enter numerics for number of Recent folders" style 64
expect frmPreferences.tbsPref.SelectedTab = 3
expect frmPreferences.fraFolders.Visible = True
expect frmPreferences.fraCamera.Visible = False
# A blank can be typed (the field holds two characters); a pasted text
# with one inside, which no key filter sees, is not a number.
type frmPreferences.txtRecentFolders "{BACKSPACE}1 x"
expect frmPreferences.txtRecentFolders.Text = "1 "
set frmPreferences.txtRecentFolders.Text = "1 1"
click frmPreferences.cmdOK
expect message "Enter numerics for number of Recent folders" style 64
set frmPreferences.txtRecentFolders.Text = "-2"
click frmPreferences.cmdOK
expect message "Number of Recent folders should be greater than 0" style 64
set frmPreferences.txtRecentFolders.Text = "0"
click frmPreferences.cmdOK
expect message "Number of Recent folders should be greater than 0" style 64
set frmPreferences.txtRecentFolders.Text = "11"
click frmPreferences.cmdOK
expect message "Number of Recent folders should not be greater than 10" style 64
set frmPreferences.txtRecentFolders.Text = "10"

# The start folder: empty, missing, a file.
set frmPreferences.txtStartUpFolder.Text = "   "
tab frmPreferences.tbsPref 1
click frmPreferences.cmdOK
expect message "Enter startup folder" style 64
expect frmPreferences.tbsPref.SelectedTab = 3
set frmPreferences.txtStartUpFolder.Text = "${PICTURES}/Gone"
click frmPreferences.cmdOK
expect message "Enter existing folder for startup folder" style 64
set frmPreferences.txtStartUpFolder.Text = "${PICTURES}/a-file.txt"
click frmPreferences.cmdOK
expect message "Enter existing folder for startup folder" style 64
# With the last open folder used, a start folder that is gone is no matter.
click frmPreferences.chkLastOpenFolder
expect frmPreferences.txtStartUpFolder.Enabled = False

# The account: with "remember" on, an empty login, a bad one, no password.
set frmPreferences.txtLogin.Text = ""
click frmPreferences.cmdOK
expect message "Enter Login name" style 64
expect frmPreferences.tbsPref.SelectedTab = 2
set frmPreferences.txtLogin.Text = "ann.example.com"
click frmPreferences.cmdOK
expect message "Enter valid Login name" style 64
set frmPreferences.txtLogin.Text = "  ann@example.com  "
set frmPreferences.txtPassword.Text = " "
click frmPreferences.cmdOK
expect message "Enter Password" style 64
expect frmPreferences.txtLogin.Text = "ann@example.com"
# With it off a bad login is still refused.
click frmPreferences.chkAutoLogin
set frmPreferences.txtLogin.Text = "ann @example.com"
click frmPreferences.cmdOK
expect message "Enter valid Login name" style 64
set frmPreferences.txtLogin.Text = "bob@example.org"
set frmPreferences.txtPassword.Text = "n3w pass"

# The base folder: empty, one that can't be made, a file.
set frmPreferences.txtBaseFolder.Text = ""
click frmPreferences.cmdOK
expect message "Enter Base folder" style 64
expect frmPreferences.tbsPref.SelectedTab = 4
# Leaving the login field with both account fields filled ticked the box.
expect frmPreferences.chkAutoLogin.Value = 1
set frmPreferences.txtBaseFolder.Text = "/proc/qbpd-no-such-folder/Camera"
click frmPreferences.cmdOK
expect message "Could not create the default folder for camera." style 64
set frmPreferences.txtBaseFolder.Text = "${PICTURES}/a-file.txt"
click frmPreferences.cmdOK
expect message "Could not create the default folder for camera." style 64
set frmPreferences.txtBaseFolder.Text = " ${PICTURES}/Camera/2026/Trip "
choose frmPreferences.cboFolderName "Always ask me for a name"
choose frmPreferences.cboPhotoName #0
click frmPreferences.chkDeleteImagesFromCamera
click frmPreferences.chkDisplayCameraCopyImages
tab frmPreferences.tbsPref 3
click frmPreferences.opt5x7Singles
click frmPreferences.cmdOK
expect form frmPreferences gone
expect file "${PICTURES}/Camera/2026/Trip" exists
expect setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" BaseFolder = "${PICTURES}/Camera/2026/Trip"
expect setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" FolderName = "2"
expect setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" PhotoName = "0"
expect setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DeleteImagesStatus = "True"
expect setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DisplayDialogtoCopy = "False"
expect setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DetectUSBDevices = "True"
expect setting "Software\Quillbay Picture Desk\Preferences\Settings" UserName = "bob@example.org"
expect setting "Software\Quillbay Picture Desk\Preferences\Settings" EncryptedPassword = "s8|%ufxx"
expect setting "Software\Quillbay Picture Desk\Preferences\Settings" AutoLogin = "True"
expect setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "True"
expect setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/a-file.txt"
expect setting "Software\Quillbay Picture Desk\Preferences\ExpressPrints" ExpressPrints = "5x7Singles"
expect setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "10"
expect session giNoOfRecentFolders = 10
expect setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder1 = "${PICTURES}/Other"
expect setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder2 = "${PICTURES}/Start"
expect setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder5 = ""
expect frmMainWindow.mnuFRecFolders(1) loaded

# Fewer recent folders: the places above the new count are emptied, and
# the menu keeps one folder.
menu frmMainWindow.mnuEPref
expect frmPreferences.txtPassword.Text = "n3w pass"
tab frmPreferences.tbsPref 3
set frmPreferences.txtRecentFolders.Text = "1"
click frmPreferences.cmdOK
expect form frmPreferences gone
expect setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "1"
expect setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder1 = "${PICTURES}/Other"
expect setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder2 = ""
expect setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder10 = ""
expect frmMainWindow.mnuFRecFolders(1) not loaded
expect no errors
