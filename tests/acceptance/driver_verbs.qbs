# The driver's verbs on the real program: files changed behind its back,
# the mouse at points (photo pixels on the photo view), keys on a message
# box, menu shortcuts, the window's named fields and session values, image
# facts and the help that the launcher opens.
make folder "${PICTURES}/Trip"
copy "${SCRIPT_DIR}/photos/sunset.jpg" "${PICTURES}/Trip/sunset.jpg"
copy "${SCRIPT_DIR}/photos/meadow.jpg" "${PICTURES}/Trip/meadow.jpg"
make photo "${PICTURES}/Trip/upright.jpg" 120x80 orientation 6 preview same
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth\0"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
expect session gdicPhotoList.Count = 3
expect session giPhotoCount >= 3
expect frmMainWindow.mbFitToWidth = True
expect frmMainWindow.miLastLoadedControl >= 2
expect frmMainWindow.ctrlQuilImage(2) loaded
expect frmMainWindow.ctrlQuilImage(3) not loaded

# The camera photo stands upright on screen; its file keeps its own measures.
expect image "${PICTURES}/Trip/upright.jpg" width = 120
expect image "${PICTURES}/Trip/upright.jpg" orientation = 6
expect image "${PICTURES}/Trip/upright.jpg" preview matches

# The name strip takes a new name; a click on the photo commits it.
expect frmMainWindow.lblDisplayImageName.Caption = "meadow"
double-click frmMainWindow.lblDisplayImageName
type frmMainWindow.txtFileName "^aevening"
expect frmMainWindow.mbEditImageText = True
click frmMainWindow.ctlDisplayImage at photo 10,10
expect frmMainWindow.mbEditImageText = False
expect file "${PICTURES}/Trip/evening.jpg" exists

# Ctrl+D is the delete entry's shortcut; the keys answer its question.
press frmMainWindow "^d"
press message "{TAB}{ENTER}"
expect file "${PICTURES}/Trip/evening.jpg" exists
press frmMainWindow "^d"
press message "y"
expect file "${PICTURES}/Trip/evening.jpg" missing
expect session gdicPhotoList.Count = 2

# A photo deleted behind the program's back.
delete "${PICTURES}/Trip/sunset.jpg"
press frmMainWindow "{F5}"
expect session gdicPhotoList.Count = 1

# The splitter follows a drag: the mouse went 600 twips down, and so did it.
expect frmMainWindow.imgHorzSplit.Top = 2940
drag frmMainWindow.imgHorzSplit from 300,30 to 300,630
expect frmMainWindow.imgHorzSplit.Top = 3540
expect frmMainWindow.miSplitTop = 3540

# The help page opens in the user's browser.
press frmMainWindow "{F1}"
expect launched containing "/help/"
set session gsInfoHead = "Upload complete"
expect session gsInfoHead = "Upload complete"
expect no errors
