# While a folder changes the grid's events do nothing: a tick given during
# the load is taken back. The folder label keeps whole characters.
copy "${SCRIPT_DIR}/photos" "${PICTURES}/Þingvellir í ágúst 2024"
copy "${SCRIPT_DIR}/photos" "${PICTURES}/Ólafsfjörður 24"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Ólafsfjörður 24"

start
wait 200
# Fifteen characters (eighteen bytes) show whole.
expect frmMainWindow.lblExpFolderPath.Caption = "Ólafsfjörður 24"
expect session gdicPhotoList.Count = 4

folder frmMainWindow.ExpTreeView "${PICTURES}/Þingvellir í ágúst 2024"
wait 300
inside pump 3: tick frmMainWindow.ctrlQuilImage(0)
expect session gdicPhotoList.Count = 4
expect session gdicSelectedPhotos.Count = 0
expect frmMainWindow.ctrlQuilImage(0).Checked = False
expect frmMainWindow.lblPhotosSelect.Caption = "0 of 4 photo(s) selected"
# The first fifteen whole characters, then "...".
expect frmMainWindow.lblExpFolderPath.Caption = "Þingvellir í ág..."

# Once the folder is there, a tick counts.
tick frmMainWindow.ctrlQuilImage(1)
expect session gdicSelectedPhotos.Count = 1
expect no errors
