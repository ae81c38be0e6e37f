# Copy and paste: with nothing on the clipboard a paste says so and makes no
# file; a copied photo pastes as the first free Untitled(n).jpg, a new photo
# at the end of the grid.
make folder "${PICTURES}/Trip"
copy "${SCRIPT_DIR}/photos/sunset.jpg" "${PICTURES}/Trip/Untitled(1).jpg"
copy "${SCRIPT_DIR}/photos/meadow.jpg" "${PICTURES}/Trip/Untitled(2).jpg"
copy "${SCRIPT_DIR}/photos/harbour.jpg" "${PICTURES}/Trip/harbour.jpg"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
expect session gdicPhotoList.Count = 3

menu frmMainWindow.mnuEPaste
expect message "Did not find an image in the clipboard" style 64 caption "Quillbay Picture Desk" answer OK
expect file "${PICTURES}/Trip/Untitled(3).jpg" missing
expect session gdicPhotoList.Count = 3

menu frmMainWindow.mnuECopy
menu frmMainWindow.mnuEPaste
expect file "${PICTURES}/Trip/Untitled(3).jpg" exists
expect session gdicPhotoList.Count = 4
expect session giPhotoCount = 4
expect session gdicPhotoList(3) = "${PICTURES}/Trip/Untitled(3).jpg"
expect frmMainWindow.ctrlQuilImage(3).Visible = True
expect frmMainWindow.ctrlQuilImage(3).ToolTipText = "Untitled(3).jpg"
expect frmMainWindow.ctrlQuilImage(3).Left = 1585
expect frmMainWindow.ctrlQuilImage(3).Top = 1655
expect frmMainWindow.lblPhotosSelect.Caption = "0 of 4 photo(s) selected"

# A second paste takes the next name.
menu frmMainWindow.mnuEPaste
expect file "${PICTURES}/Trip/Untitled(4).jpg" exists
expect session gdicPhotoList.Count = 5
expect no errors
