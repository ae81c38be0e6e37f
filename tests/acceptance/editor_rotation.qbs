# The photo on display turned on screen: the angle, Undo and its menu, the
# prompt when the photo is left (No reloads it unchanged), and four turns
# that ask nothing.
make photos 2 "${PICTURES}/Trip" 300x200
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
click frmMainWindow.imgRightRotate
click frmMainWindow.imgRightRotate
click frmMainWindow.imgRightRotate
expect session glRotationAngle = 270
expect session gbRotationPending = True
expect frmMainWindow.ctlDisplayImage.PhotoWidth = 200
menu frmMainWindow.mnuEUndo
expect session glRotationAngle = 0
expect frmMainWindow.ctlDisplayImage.PhotoWidth = 300
click frmMainWindow.mnuEdit
expect frmMainWindow.mnuEUndo.Enabled = False

click frmMainWindow.imgLeftRotate
expect session glRotationAngle = -90
click frmMainWindow.ctrlQuilImage(1)
expect message "Do you want to save current rotation?" style 36 answer No
expect image "${PICTURES}/Trip/photo001.jpg" width = 300
expect session glRotationAngle = 0

click frmMainWindow.imgRightRotate
click frmMainWindow.imgRightRotate
click frmMainWindow.imgRightRotate
click frmMainWindow.imgRightRotate
expect session glRotationAngle = 0
click frmMainWindow.ctrlQuilImage(0)
expect session gsSelectedImage = "${PICTURES}/Trip/photo001.jpg"
expect no errors
