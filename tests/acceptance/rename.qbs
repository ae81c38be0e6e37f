# Renaming the photo on display in the name strip under it: a name that is
# taken is refused, a change of case alone is no rename, refused characters
# are dropped as they are typed, Esc brings the shown name back, and a new
# name renames the file on disk.
make folder "${PICTURES}/Trip"
copy "${SCRIPT_DIR}/photos/sunset.jpg" "${PICTURES}/Trip/sunset.jpg"
# Not a photo, so the grid leaves it out; its name is still taken.
write file "${PICTURES}/Trip/beach.jpg" "the user's own file"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
expect session gdicPhotoList.Count = 1
expect frmMainWindow.lblDisplayImageName.Caption = "sunset"

# A name that another file has.
double-click frmMainWindow.lblDisplayImageName
expect frmMainWindow.txtFileName.Visible = True
expect frmMainWindow.txtFileName.Text = "sunset"
type frmMainWindow.txtFileName "^abeach{ENTER}"
expect message "Cannot rename sunset: A file with the name you specified already exists." style 16 caption "Quillbay Picture Desk" answer OK
expect file "${PICTURES}/Trip/beach.jpg" contains "the user's own file"
expect file "${PICTURES}/Trip/sunset.jpg" exists
expect frmMainWindow.lblDisplayImageName.Caption = "sunset"
expect frmMainWindow.txtFileName.Visible = False

# Capitals only: nothing changes on disk.
double-click frmMainWindow.lblDisplayImageName
type frmMainWindow.txtFileName "^aSUNSET{ENTER}"
expect file "${PICTURES}/Trip/sunset.jpg" exists
expect file "${PICTURES}/Trip/SUNSET.jpg" missing

# A refused character, then Esc.
double-click frmMainWindow.lblDisplayImageName
type frmMainWindow.txtFileName "{END}?"
expect message "Please enter valid characters for file name" style 64 answer OK
expect frmMainWindow.txtFileName.Text = "sunset"
type frmMainWindow.txtFileName "{BACKSPACE 3}{ESC}"
expect frmMainWindow.txtFileName.Visible = False
expect frmMainWindow.lblDisplayImageName.Caption = "sunset"

# The rename.
double-click frmMainWindow.lblDisplayImageName
type frmMainWindow.txtFileName "^aharbour at dusk{ENTER}"
expect file "${PICTURES}/Trip/harbour at dusk.jpg" exists
expect file "${PICTURES}/Trip/sunset.jpg" missing
expect session gsSelectedImage = "${PICTURES}/Trip/harbour at dusk.jpg"
expect session gdicPhotoList(0) = "${PICTURES}/Trip/harbour at dusk.jpg"
expect frmMainWindow.ctrlQuilImage(0).ToolTipText = "harbour at dusk.jpg"
expect frmMainWindow.lblDisplayImageName.Caption = "harbour at dusk"
expect no errors
