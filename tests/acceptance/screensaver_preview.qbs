# The preview plays for 15 seconds and ends by itself, or at once on a key;
# the edit dialog's preview plays the unsaved photos from TempScr.ini. The
# list of screensavers makes the chosen one current.
make photos 3 "${PICTURES}/Trip"
make folder "${DATA}"
write file "${DATA}/scr.ini" "[General]\nScreensaverFileName=Quillbay.scr\nNumberOfSsavers=2\nDefaultSsaver=B\nSsaver1=A\nSsaver2=B\n[A]\nNumberofImages=2\nImage1=${PICTURES}/Trip/photo001.jpg\nImage2=${PICTURES}/Trip/photo002.jpg\nImageInterval=7\nTransitionEffects=6\n[B]\nNumberofImages=1\nImage1=${PICTURES}/Trip/photo003.jpg\nImageInterval=10\nTransitionEffects=15\n"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
tick frmMainWindow.ctrlQuilImage(1)
click frmMainWindow.imgScrSaver
click frmScreenSaver.optAddtoprev
choose frmScreenSaver.cboPrevSsaver "A"
click frmScreenSaver.imgOK
expect frmScreensaverstep2.lblPhotosSelect.Caption = "2 photo(s)"
click frmScreensaverstep2.imgPreview
expect form frmPreview modal
expect frmPreview.WindowState = 2
expect frmPreview.ctlScr.Playing = True
expect frmPreview.ctlScr.Section = "A"
expect frmPreview.ctlScr.IniPath = "${DATA}/scr.ini"
expect frmPreview.ctlScr.IntervalSeconds = 1
expect frmPreview.ctlScr.Effects = "2007>7002"
expect frmPreview.ctlScr.FileCount = 2
wait 14 s
expect form frmPreview modal
wait 1 s
expect form frmPreview gone
expect form frmScreensaverstep2 modal

# A key ends it at once.
click frmScreensaverstep2.imgPreview
wait 3 s
press frmPreview "a"
expect form frmPreview gone

# The edit dialog previews what isn't saved yet.
click frmScreensaverstep2.imgEditScrSaver
expect form frmEditscreensaver modal
expect frmEditscreensaver.cboScreensaverTitles.Text = "A"
tick frmEditscreensaver.ctlQuilThumbnail(0)
click frmEditscreensaver.imgRemovePhotos
click frmEditscreensaver.chkDiagonal
set frmEditscreensaver.txtImageInterval.Text = "x"
click frmEditscreensaver.imgPreview
expect form frmPreview modal
expect frmPreview.ctlScr.IniPath = "${DATA}/TempScr.ini"
expect frmPreview.ctlScr.IntervalSeconds = 2
expect frmPreview.ctlScr.Effects = "7002"
expect frmPreview.ctlScr.FileCount = 1
expect file "${DATA}/TempScr.ini" contains "[A]\nNumberOfImages=1\nImage1=${PICTURES}/Trip/photo002.jpg\n"
wait 15 s
expect form frmPreview gone
click frmEditscreensaver.imgCancel
# Nothing was saved; the strip is read again.
expect frmScreensaverstep2.lblPhotosSelect.Caption = "2 photo(s)"
expect file "${DATA}/scr.ini" contains "Image2=${PICTURES}/Trip/photo002.jpg"
click frmScreensaverstep2.imgContinue

# The list of screensavers: the current one set; OK makes the chosen one
# current (the run's desktop takes no saver program, and says so).
menu frmMainWindow.mnuScrSelect
expect form frmDisplayScrList modal
expect frmDisplayScrList.optScrSaverName(0).Caption = "A"
expect frmDisplayScrList.optScrSaverName(1).Caption = "B"
expect frmDisplayScrList.optScrSaverName(1).Value = True
click frmDisplayScrList.imgCancel
expect file "${DATA}/scr.ini" contains "DefaultSsaver=B"
menu frmMainWindow.mnuScrSelect
click frmDisplayScrList.optScrSaverName(0)
click frmDisplayScrList.imgOK
expect message "Unable to set the screensaver as default." style 16
expect form frmDisplayScrList gone
expect file "${DATA}/scr.ini" contains "DefaultSsaver=A"
expect no errors
