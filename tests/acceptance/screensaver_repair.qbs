# Opening the screensaver dialog repairs the store: photos gone from the disk
# drop out and the rest close up; a screensaver with none left goes silently,
# the names close up and the current one is emptied when it was that one.
make photos 3 "${PICTURES}/Trip"
make photos 1 "${PICTURES}/Other"
make folder "${DATA}"
write file "${DATA}/scr.ini" "[General]\nScreensaverFileName=Quillbay.scr\nNumberOfSsavers=3\nDefaultSsaver=gone\nSsaver1=Trip\nSsaver2=Gone\nSsaver3=Other\n[Trip]\nNumberofImages=3\nImage1=${PICTURES}/Trip/photo001.jpg\nImage2=${PICTURES}/Trip/photo002.jpg\nImage3=${PICTURES}/Trip/photo003.jpg\nImageInterval=4\nTransitionEffects=12\n[Gone]\nNumberofImages=1\nImage1=${PICTURES}/Nowhere/lost.jpg\nImageInterval=10\nTransitionEffects=15\n[Other]\nNumberofImages=1\nImage1=${PICTURES}/Other/photo001.jpg\n"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
# The second photo goes behind the program's back.
delete "${PICTURES}/Trip/photo002.jpg"
tick frmMainWindow.ctrlQuilImage(0)
click frmMainWindow.imgScrSaver
expect form frmScreenSaver modal
expect frmScreenSaver.cboPrevSsaver.ListCount = 2
expect frmScreenSaver.cboPrevSsaver.List(0) = "Trip"
expect frmScreenSaver.cboPrevSsaver.List(1) = "Other"
expect session giSsaverCount = 2
expect file "${DATA}/scr.ini" contains "NumberOfSsavers=2\n"
expect file "${DATA}/scr.ini" contains "Ssaver2=Other\n"
expect file "${DATA}/scr.ini" contains "DefaultSsaver=\n"
expect file "${DATA}/scr.ini" contains "Image2=${PICTURES}/Trip/photo003.jpg\n"
expect file "${DATA}/scr.ini" contains "NumberofImages=2\n"
# Its interval and effects are kept.
expect file "${DATA}/scr.ini" contains "TransitionEffects=12"
press frmScreenSaver "{ESC}"
expect form frmScreenSaver gone
# The photo files are as they were.
expect file "${PICTURES}/Trip/photo001.jpg" exists
expect file "${PICTURES}/Trip/photo003.jpg" exists
expect file "${PICTURES}/Other/photo001.jpg" exists

# The second step shows the effects decoded with the first test against 15.
click frmMainWindow.imgScrSaver
click frmScreenSaver.optAddtoprev
click frmScreenSaver.imgOK
expect frmScreensaverstep2.lblScrUpdated.Caption = "Your screensaver named Trip has been updated."
expect session gsPreviewEffects = "2007>2007>2007"
expect session giPreviewInterval = 4
expect frmScreensaverstep2.lblPhotosSelect.Caption = "2 photo(s)"
click frmScreensaverstep2.imgContinue
expect no errors
