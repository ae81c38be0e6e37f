# A rename in progress is committed, as Enter would, before the folder tree
# changes the folder and before a refresh; while the name stays open the
# folder does not change.
make folder "${PICTURES}/Trip"
copy "${SCRIPT_DIR}/photos/sunset.jpg" "${PICTURES}/Trip/sunset.jpg"
make folder "${PICTURES}/Home"
copy "${SCRIPT_DIR}/photos/meadow.jpg" "${PICTURES}/Home/meadow.jpg"
copy "${SCRIPT_DIR}/photos/harbour.jpg" "${PICTURES}/Home/harbour.jpg"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"

start
wait 200
expect session gdicPhotoList.Count = 1

# A name that starts with "." keeps the name open: the folder stays.
double-click frmMainWindow.lblDisplayImageName
type frmMainWindow.txtFileName "^a.hidden"
folder frmMainWindow.ExpTreeView "${PICTURES}/Home"
wait 300
expect message "You must type a file name" style 64 answer OK
expect session gsSelectedFolder = "${PICTURES}/Trip/"
expect frmMainWindow.txtFileName.Visible = True
expect file "${PICTURES}/Trip/sunset.jpg" exists

# A good name is committed first, then the folder changes.
type frmMainWindow.txtFileName "^aevening"
folder frmMainWindow.ExpTreeView "${PICTURES}/Home"
wait 300
expect file "${PICTURES}/Trip/evening.jpg" exists
expect file "${PICTURES}/Trip/sunset.jpg" missing
expect session gsSelectedFolder = "${PICTURES}/Home/"
expect session gdicPhotoList.Count = 2
expect frmMainWindow.txtFileName.Visible = False

# The same before a refresh.
double-click frmMainWindow.lblDisplayImageName
type frmMainWindow.txtFileName "^afirst"
menu frmMainWindow.mnuERefresh
expect session gdicPhotoList.Count = 2
expect frmMainWindow.txtFileName.Visible = False
expect no errors
