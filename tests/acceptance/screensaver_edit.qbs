# Editing a screensaver: the start delay and the interval with their spin
# buttons and every message (the "." test before the range test), the
# effects, removing photos (never the last), Cancel writing nothing, OK
# writing everything, deleting (the list closed up, the current one
# emptied), choosing the current one from the list, and XScreenSaver told.
make photos 3 "${PICTURES}/Trip"
make folder "${DATA}"
write file "${DATA}/scr.ini" "[General]\nScreensaverFileName=Quillbay.scr\nNumberOfSsavers=3\nDefaultSsaver=Two\nSsaver1=One\nSsaver2=Two\nSsaver3=Three\n[One]\nNumberofImages=1\nImage1=${PICTURES}/Trip/photo001.jpg\nImageInterval=10\nTransitionEffects=15\n[Two]\nNumberofImages=3\nImage1=${PICTURES}/Trip/photo001.jpg\nImage2=${PICTURES}/Trip/photo002.jpg\nImage3=${PICTURES}/Trip/photo003.jpg\nImageInterval=10\nTransitionEffects=8\n[Three]\nNumberofImages=1\nImage1=${PICTURES}/Trip/photo003.jpg\nImageInterval=5\nTransitionEffects=1\n"
# This run's screen saver is XScreenSaver, with the user's own settings.
write file "${HOME}/.xscreensaver" "timeout:\t0:10:00\nlock:\t\tTrue\nmode:\t\trandom\nprograms:\t\\\n\t\tmaze -root\t\\n\\\n\n"
setting "Control Panel\Desktop" ScreenSaveTimeOut = "600"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
menu frmMainWindow.mnuScrEdit
expect form frmEditscreensaver modal
expect session gbScrFromMenu = True
expect frmEditscreensaver.cboScreensaverTitles.ListCount = 3
expect frmEditscreensaver.cboScreensaverTitles.Text = "One"
expect frmEditscreensaver.txtScrSaverTimeOut.Text = "10"
expect frmEditscreensaver.chkDefScrSaver.Value = 0
choose frmEditscreensaver.cboScreensaverTitles "Two"
expect frmEditscreensaver.lblPhotosSelect.Caption = "3 photo(s)"
expect frmEditscreensaver.txtImageInterval.Text = "10"
expect frmEditscreensaver.chkDefScrSaver.Value = 1
# A saved 8 shows as the diagonal box.
expect frmEditscreensaver.chkFromCentre.Value = 0
expect frmEditscreensaver.chkDiagonal.Value = 1
expect frmEditscreensaver.chkTopToBottom.Value = 0
expect frmEditscreensaver.chkLeftToRight.Value = 0

# The spin buttons.
click frmEditscreensaver.imgUp(1)
expect frmEditscreensaver.txtImageInterval.Text = "11"
set frmEditscreensaver.txtImageInterval.Text = "3"
click frmEditscreensaver.imgDown(1)
expect frmEditscreensaver.txtImageInterval.Text = "2"
expect frmEditscreensaver.imgDown(1).Enabled = False
set frmEditscreensaver.txtImageInterval.Text = "999"
click frmEditscreensaver.imgUp(1)
expect frmEditscreensaver.txtImageInterval.Text = "999"
expect frmEditscreensaver.imgUp(1).Enabled = False
set frmEditscreensaver.txtImageInterval.Text = "2.5"
click frmEditscreensaver.imgDown(1)
expect message "Enter a valid interval in seconds" style 64
set frmEditscreensaver.txtScrSaverTimeOut.Text = "abc"
click frmEditscreensaver.imgUp(0)
expect message "Enter a valid number" style 64
set frmEditscreensaver.txtScrSaverTimeOut.Text = ""
click frmEditscreensaver.imgUp(0)
expect frmEditscreensaver.txtScrSaverTimeOut.Text = "1"
expect frmEditscreensaver.imgDown(0).Enabled = False
click frmEditscreensaver.imgUp(0)
expect frmEditscreensaver.txtScrSaverTimeOut.Text = "2"
expect frmEditscreensaver.imgDown(0).Enabled = True

# Removing photos.
click frmEditscreensaver.imgRemovePhotos
expect message "Please select the photos you would like to remove by clicking on the checkbox below each photo." style 64
tick frmEditscreensaver.ctlQuilThumbnail(0)
tick frmEditscreensaver.ctlQuilThumbnail(1)
tick frmEditscreensaver.ctlQuilThumbnail(2)
click frmEditscreensaver.imgRemovePhotos
expect message "Please unselect atleast one image as there should be atleast one image in the screensaver" style 64
untick frmEditscreensaver.ctlQuilThumbnail(1)
click frmEditscreensaver.imgRemovePhotos
expect frmEditscreensaver.lblPhotosSelect.Caption = "1 photo(s)"
expect frmEditscreensaver.ctlQuilThumbnail(0).PhotoPath = "${PICTURES}/Trip/photo002.jpg"
tick frmEditscreensaver.ctlQuilThumbnail(0)
click frmEditscreensaver.imgRemovePhotos
expect message "There should be atleast one photo in the screensaver" style 64
# Cancel leaves the file as it was.
click frmEditscreensaver.imgCancel
expect form frmEditscreensaver gone
expect session gbScrFromMenu = False
expect file "${DATA}/scr.ini" contains "NumberofImages=3\nImage1=${PICTURES}/Trip/photo001.jpg\nImage2=${PICTURES}/Trip/photo002.jpg\nImage3="
expect file "${PICTURES}/Trip/photo001.jpg" exists

# OK checks the fields in order.
menu frmMainWindow.mnuScrEdit
choose frmEditscreensaver.cboScreensaverTitles "Two"
set frmEditscreensaver.txtScrSaverTimeOut.Text = "5.5"
set frmEditscreensaver.txtImageInterval.Text = "1"
click frmEditscreensaver.imgOK
expect message "Enter a valid number." style 64
set frmEditscreensaver.txtScrSaverTimeOut.Text = "0"
click frmEditscreensaver.imgOK
expect message "Enter a value between 1 and 9999 for Start screensaver" style 64
set frmEditscreensaver.txtScrSaverTimeOut.Text = "10000"
click frmEditscreensaver.imgOK
expect message "Enter a value between 1 and 9999 for Start screensaver" style 64
set frmEditscreensaver.txtScrSaverTimeOut.Text = "5"
click frmEditscreensaver.imgOK
expect message "Enter a value between 2 and 999 for image interval" style 64
set frmEditscreensaver.txtImageInterval.Text = "1000"
click frmEditscreensaver.imgOK
expect message "Enter a value between 2 and 999 for image interval" style 64
set frmEditscreensaver.txtImageInterval.Text = "x"
click frmEditscreensaver.imgOK
expect message "Enter a valid interval in seconds" style 64
set frmEditscreensaver.txtImageInterval.Text = "2"
tick frmEditscreensaver.ctlQuilThumbnail(0)
click frmEditscreensaver.imgRemovePhotos
click frmEditscreensaver.chkFromCentre
click frmEditscreensaver.chkLeftToRight
click frmEditscreensaver.imgOK
expect form frmEditscreensaver gone
expect file "${DATA}/scr.ini" contains "[Two]\nNumberofImages=2\nImage1=${PICTURES}/Trip/photo002.jpg\nImage2=${PICTURES}/Trip/photo003.jpg\nImageInterval=2\nTransitionEffects=13\n"
expect setting "Control Panel\Desktop" ScreenSaveTimeOut = "300"
# Still current: XScreenSaver plays the saver, after five idle minutes.
expect file "${HOME}/.xscreensaver" contains "qbpd-saver' -root --ini '${DATA}/scr.ini'"
expect file "${HOME}/.xscreensaver" contains "selected:\t1"
expect file "${HOME}/.xscreensaver" contains "mode:\tone"
expect file "${HOME}/.xscreensaver" contains "timeout:\t0:05:00"
expect file "${HOME}/.xscreensaver" contains "lock:\t\tTrue"
expect file "${HOME}/.xscreensaver" contains "maze -root"

# Deleting the current one, the second of three.
menu frmMainWindow.mnuScrEdit
expect frmEditscreensaver.txtScrSaverTimeOut.Text = "5"
choose frmEditscreensaver.cboScreensaverTitles "Two"
click frmEditscreensaver.imgDeleteScrsaver
expect form frmAlertForDeleteScr modal
expect frmAlertForDeleteScr.lblMessage.Caption = "Are you sure you want to delete this screensaver?"
expect frmAlertForDeleteScr.lblNote.Caption = "Note: Deleting this screensaver will not remove the photos from your computer"
click frmAlertForDeleteScr.imgCancel
expect file "${DATA}/scr.ini" contains "Ssaver2=Two"
click frmEditscreensaver.imgDeleteScrsaver
click frmAlertForDeleteScr.imgRemove
expect form frmAlertForDeleteScr gone
expect frmEditscreensaver.cboScreensaverTitles.ListCount = 2
expect frmEditscreensaver.cboScreensaverTitles.Text = "Three"
expect file "${DATA}/scr.ini" contains "NumberOfSsavers=2\nDefaultSsaver=\nSsaver1=One\nSsaver2=Three\n"
expect file "${PICTURES}/Trip/photo002.jpg" exists
# Deleting the last entry selects the one before; the last of all closes.
click frmEditscreensaver.imgDeleteScrsaver
click frmAlertForDeleteScr.imgRemove
expect frmEditscreensaver.cboScreensaverTitles.Text = "One"
click frmEditscreensaver.imgDeleteScrsaver
click frmAlertForDeleteScr.imgRemove
expect form frmEditscreensaver gone
expect file "${DATA}/scr.ini" contains "NumberOfSsavers=0"
menu frmMainWindow.mnuPScrSaver
expect frmMainWindow.mnuScrEdit.Enabled = False
expect no errors
