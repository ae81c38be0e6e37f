# Viewing photos: each opens fitted to the display's width, the zoom menu and
# the zoom button set a fixed zoom, and next and previous step through the
# folder, wrapping around at either end.
make photos 3 "${PICTURES}/Walk" 1600x1200
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Walk"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"

start
wait 200
expect session giCurrentPhotoIndex = 0
expect frmMainWindow.ctlDisplayImage.PhotoPath = "${PICTURES}/Walk/photo001.jpg"
expect frmMainWindow.ctlDisplayImage.PhotoWidth = 1600
expect frmMainWindow.ctlDisplayImage.Visible = True
expect frmMainWindow.mnuVZoomFit.Checked = True
expect frmMainWindow.mnuVZoomFit.Caption contains "Fit To Width("
expect frmMainWindow.lblDisplayImageName.Caption = "photo001"
expect frmMainWindow.ctrlQuilImage(0).Current = True

# A fixed zoom from the menu.
menu frmMainWindow.mnuVZoom50
expect frmMainWindow.ctlDisplayImage.ZoomPercent = 50
expect frmMainWindow.mnuVZoom50.Checked = True
expect frmMainWindow.mnuVZoomFit.Checked = False
expect frmMainWindow.mnuVZoomFit.Caption = "Fit To Width"

# Next opens the following photo, fitted again as the setting says.
click frmMainWindow.imgNext
expect session giCurrentPhotoIndex = 1
expect frmMainWindow.lblDisplayImageName.Caption = "photo002"
expect frmMainWindow.mnuVZoomFit.Checked = True
expect frmMainWindow.ctrlQuilImage(1).Current = True
expect frmMainWindow.ctrlQuilImage(0).Current = False
click frmMainWindow.imgNext
click frmMainWindow.imgNext
# From the last photo, next goes to the first.
expect session giCurrentPhotoIndex = 0
# From the first photo, previous goes to the last.
click frmMainWindow.imgPrev
expect session giCurrentPhotoIndex = 2
expect frmMainWindow.ctlDisplayImage.PhotoPath = "${PICTURES}/Walk/photo003.jpg"

# The zoom button opens the same menu as a pop-up.
click frmMainWindow.imgZoom
popup frmMainWindow.mnuVZoom100
expect frmMainWindow.ctlDisplayImage.ZoomPercent = 100
expect frmMainWindow.mnuVZoom100.Checked = True
expect no errors
