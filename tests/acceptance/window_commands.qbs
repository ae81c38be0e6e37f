# The main window's commands: the folder pane closes and opens again, menus
# are enabled by the state when they open, and Ctrl+D deletes the photo on
# display after the question.
make photos 6 "${PICTURES}/Garden"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Garden"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"

start
wait 200
expect session gdicPhotoList.Count = 6
expect frmMainWindow.mnuEDelSingle.Shortcut = "Ctrl+D"
expect frmMainWindow.mnuFGetPhotos.Caption = "&Get Photos"

# The folder pane gives its room to the grid and comes back.
click frmMainWindow.imgBrowseClose
expect frmMainWindow.imgHorzSplit.Visible = False
expect frmMainWindow.imgBrowseClose.Tag = "Expand"
menu frmMainWindow.mnuFGetPhotos
expect frmMainWindow.imgHorzSplit.Visible = True
expect frmMainWindow.imgBrowseClose.Tag = "Collapse"

# Delete all selected is on only with a selection.
menu frmMainWindow.mnuEClear
expect frmMainWindow.mnuEDelMultiple.Enabled = False
tick frmMainWindow.ctrlQuilImage(3)
menu frmMainWindow.mnuEClear
expect frmMainWindow.mnuEDelMultiple.Enabled = True

# Ctrl+D asks, and No keeps the photo.
press frmMainWindow "^d"
expect message "Do you want to permanently delete the current photo?" style 36 answer No
expect file "${PICTURES}/Garden/photo001.jpg" exists
press frmMainWindow "^d"
expect message "Do you want to permanently delete the current photo?" style 36 answer Yes
expect file "${PICTURES}/Garden/photo001.jpg" missing
expect session gdicPhotoList.Count = 5
expect frmMainWindow.lblPhotosSelect.Caption = "0 of 5 photo(s) selected"
expect no errors
