# A file of another type that exists gets the unsupported-format message, and
# the program goes on to its usual folder.
copy "${SCRIPT_DIR}/photos" "${PICTURES}/Trip"
write file "${PICTURES}/notes.txt" "not a photo"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "3"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"

start "\"${PICTURES}/notes.txt\""
wait 200
expect message "Quillbay Picture Desk doesn't support this file format.\r\nLoad Recent Viewed photos." style 64 caption "Quillbay Picture Desk"
wait 200
expect session gsSelectedFolder = "${PICTURES}/Trip/"
expect session gdicPhotoList.Count = 4
expect no errors
