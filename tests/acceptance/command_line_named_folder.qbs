# A folder named on the command line loads the usual folder silently.
copy "${SCRIPT_DIR}/photos" "${PICTURES}/Trip"
make folder "${PICTURES}/Empty"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "3"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"

start "\"${PICTURES}/Empty\""
wait 200
expect session gsSelectedFolder = "${PICTURES}/Trip/"
expect session gdicPhotoList.Count = 4
expect no errors
