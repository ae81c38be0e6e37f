# Deleting photos: the selection from the trash button's pop-up, with a
# question for a read-only photo whose No keeps it ticked; then the photo on
# display, until the folder is empty and leaves the recent folders.
make folder "${PICTURES}/Trip"
copy "${SCRIPT_DIR}/photos/sunset.jpg" "${PICTURES}/Trip/sunset.jpg"
copy "${SCRIPT_DIR}/photos/meadow.jpg" "${PICTURES}/Trip/meadow.jpg"
make read-only "${PICTURES}/Trip/sunset.jpg"
make read-only "${PICTURES}/Trip/meadow.jpg"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
expect session gdicPhotoList.Count = 2
expect setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder1 = "${PICTURES}/Trip"

# One photo ticked that isn't on display: the pop-up offers both entries.
tick frmMainWindow.ctrlQuilImage(1)
click frmMainWindow.imgTrash
popup frmMainWindow.mnuEDelMultiple
expect message containing "' is a read-only file. Do you want to delete?" style 36 answer No
expect session gdicPhotoList.Count = 2
expect session gdicSelectedPhotos.Count = 1
expect frmMainWindow.ctrlQuilImage(1).Tag = "C"
expect frmMainWindow.lblPhotosSelect.Caption = "1 of 2 photo(s) selected"

click frmMainWindow.imgTrash
popup frmMainWindow.mnuEDelMultiple
expect message containing "' is a read-only file. Do you want to delete?" answer Yes
expect session gdicPhotoList.Count = 1
expect session gdicSelectedPhotos.Count = 0
expect frmMainWindow.lblPhotosSelect.Caption = "0 of 1 photo(s) selected"

# The photo on display, read-only too: No first, then Yes.
click frmMainWindow.imgTrash
expect message containing "' is a read-only file. Are you sure you want to delete it permanently?" style 36 answer No
expect session gdicPhotoList.Count = 1
click frmMainWindow.imgTrash
expect message containing "' is a read-only file. Are you sure you want to delete it permanently?" answer Yes
expect file "${PICTURES}/Trip/sunset.jpg" missing
expect file "${PICTURES}/Trip/meadow.jpg" missing
expect session gdicPhotoList.Count = 0
expect frmMainWindow.picImageText.Visible = False
expect frmMainWindow.ctlDisplayImage.Visible = False
expect frmMainWindow.lblPhotosSelect.Caption = "No photo(s) exists"
expect setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder1 = ""
expect no errors
