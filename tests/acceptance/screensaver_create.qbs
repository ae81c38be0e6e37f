# Making screensavers: the button with no photo checked, the first one made
# from the button (only the name frame, both name rules), a second one from
# Create new, photos added to an existing one (never twice, case ignored),
# the second step and its Continue, and the Screensaver menu's enable rule.
make photos 3 "${PICTURES}/Beach"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Beach"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
expect session gdicPhotoList.Count = 3

# No screensaver yet: the menu offers only Create new.
menu frmMainWindow.mnuPScrSaver
expect frmMainWindow.mnuScrAddPhotos.Enabled = False
expect frmMainWindow.mnuScrEdit.Enabled = False
expect frmMainWindow.mnuScrSelect.Enabled = False

# No photo checked.
click frmMainWindow.imgScrSaver
expect form frmScrErrmsg modal
expect frmScrErrmsg.lblMessage.Caption = "Please select photos for your screensaver by clicking on the checkbox below each photo."
press frmScrErrmsg "{ESC}"
expect form frmScrErrmsg gone
expect form frmScreenSaver gone

tick frmMainWindow.ctrlQuilImage(0)
tick frmMainWindow.ctrlQuilImage(1)
click frmMainWindow.imgScrSaver
expect form frmScreenSaver modal
expect session giCurrentOperation = 9
expect session gsRotationScope = "M"
expect frmScreenSaver.lblHead.Caption = "You can create a new screensaver or add photos to an existing one."
# With none yet only the name frame shows.
expect frmScreenSaver.fraSingleCont.Visible = True
expect frmScreenSaver.fraMultiCont.Visible = False
expect frmScreenSaver.fraPrevCont.Visible = False
expect file "${DATA}/scr.ini" contains "ScreensaverFileName=Quillbay.scr"
expect file "${DATA}/scr.ini" contains "NumberOfSsavers=0"
set frmScreenSaver.txtSingleScrSaver.Text = "   "
click frmScreenSaver.imgSingleContinue
expect message "Please enter a name for your screensaver." style 64
expect frmScreenSaver.txtSingleScrSaver.Text = ""
set frmScreenSaver.txtSingleScrSaver.Text = "Sea [1]"
click frmScreenSaver.imgSingleContinue
expect message "Screensaver name should not contain [ or ] ." style 64
set frmScreenSaver.txtSingleScrSaver.Text = "  Summer  "
click frmScreenSaver.imgSingleContinue
expect form frmScreenSaver gone
expect form frmScreensaverstep2 modal
expect frmScreensaverstep2.lblScrUpdated.Caption = "Your screensaver named Summer has been created."
expect frmScreensaverstep2.lblPhotosSelect.Caption = "2 photo(s)"
expect frmScreensaverstep2.ctlQuilThumbnail(1).PhotoPath = "${PICTURES}/Beach/photo002.jpg"
expect frmScreensaverstep2.ctlQuilThumbnail(0).PhotoPath = "${PICTURES}/Beach/photo001.jpg"
# One just made from the button is checked to become current.
expect frmScreensaverstep2.chkDefScrSaver.Value = 1
expect session giPreviewInterval = 10
expect session gsPreviewEffects = "3001>2007>7002>2000"
expect file "${DATA}/scr.ini" contains "NumberOfSsavers=1"
expect file "${DATA}/scr.ini" contains "Ssaver1=Summer"
expect file "${DATA}/scr.ini" contains "[Summer]"
expect file "${DATA}/scr.ini" contains "Image1=${PICTURES}/Beach/photo001.jpg"
expect file "${DATA}/scr.ini" contains "NumberofImages=2"
expect file "${DATA}/scr.ini" contains "ImageInterval=10"
expect file "${DATA}/scr.ini" contains "TransitionEffects=15"
# The run's desktop has no screen saver that takes programs: the name is
# current in the store, and the user is told.
click frmScreensaverstep2.imgContinue
expect message "Unable to set the screensaver as default." style 16
expect form frmScreensaverstep2 gone
expect session giCurrentOperation = 0
expect file "${DATA}/scr.ini" contains "DefaultSsaver=Summer"

# Now the menu offers everything.
menu frmMainWindow.mnuPScrSaver
expect frmMainWindow.mnuScrAddPhotos.Enabled = True
expect frmMainWindow.mnuScrEdit.Enabled = True
expect frmMainWindow.mnuScrSelect.Enabled = True

# The button with one saver: both choices; a name taken in another case.
untick frmMainWindow.ctrlQuilImage(1)
click frmMainWindow.imgScrSaver
expect session gsRotationScope = "S"
expect frmScreenSaver.fraMultiCont.Visible = True
expect frmScreenSaver.fraSingleCont.Visible = False
expect frmScreenSaver.optnewscreensaver.Value = True
expect frmScreenSaver.cboPrevSsaver.List(0) = "Summer"
set frmScreenSaver.txtNewscreensaver.Text = "SUMMER"
click frmScreenSaver.imgOK
expect message "A screensaver with this name exists already. Please provide another name for your screensaver" style 64
expect form frmScreenSaver modal
click frmScreenSaver.imgCancel
expect form frmScreenSaver gone

# Create new from the menu: only the name frame, the other wording.
menu frmMainWindow.mnuscrCreatenew
expect frmScreenSaver.fraSingleCont.Visible = True
set frmScreenSaver.txtSingleScrSaver.Text = "summer"
click frmScreenSaver.imgSingleContinue
expect message "A screensaver with this name already exists. Please provide another name for your screensaver." style 64
set frmScreenSaver.txtSingleScrSaver.Text = "Winter"
click frmScreenSaver.imgSingleContinue
expect frmScreensaverstep2.lblScrUpdated.Caption = "Your screensaver named Winter has been created."
expect frmScreensaverstep2.chkDefScrSaver.Value = 1
untick frmScreensaverstep2.chkDefScrSaver
click frmScreensaverstep2.imgContinue
expect file "${DATA}/scr.ini" contains "Ssaver2=Winter"
expect file "${DATA}/scr.ini" contains "NumberOfSsavers=2"
expect file "${DATA}/scr.ini" contains "DefaultSsaver=Summer"

# Add photos from the menu: only the list frame. The photo already in it
# (named in another case) isn't taken twice.
tick frmMainWindow.ctrlQuilImage(1)
tick frmMainWindow.ctrlQuilImage(2)
menu frmMainWindow.mnuScrAddPhotos
expect frmScreenSaver.fraPrevCont.Visible = True
expect frmScreenSaver.fraMultiCont.Visible = False
expect frmScreenSaver.cboScrSaverList.ListCount = 2
choose frmScreenSaver.cboScrSaverList "Summer"
click frmScreenSaver.imgPrevAddPhotos
expect frmScreensaverstep2.lblScrUpdated.Caption = "Your screensaver named Summer has been updated."
expect frmScreensaverstep2.lblPhotosSelect.Caption = "3 photo(s)"
# The current one stays checked; an update isn't checked otherwise.
expect frmScreensaverstep2.chkDefScrSaver.Value = 1
untick frmScreensaverstep2.chkDefScrSaver
click frmScreensaverstep2.imgContinue
expect file "${DATA}/scr.ini" contains "Image3=${PICTURES}/Beach/photo003.jpg"
expect file "${DATA}/scr.ini" contains "NumberofImages=3"
# Unchecked, the current one is current no more.
expect file "${DATA}/scr.ini" contains "DefaultSsaver=\n"

click frmMainWindow.imgScrSaver
click frmScreenSaver.optAddtoprev
choose frmScreenSaver.cboPrevSsaver "Summer"
click frmScreenSaver.imgOK
expect frmScreensaverstep2.lblPhotosSelect.Caption = "3 photo(s)"
expect frmScreensaverstep2.chkDefScrSaver.Value = 0
click frmScreensaverstep2.imgContinue
expect file "${DATA}/scr.ini" contains "NumberofImages=3"
expect no errors
