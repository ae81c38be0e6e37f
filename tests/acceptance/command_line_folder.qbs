# A folder on the command line is no file of another type: the program starts
# on its usual folder without the unsupported-format message. So does a path
# whose long-name expansion stops at a folder.
copy "${SCRIPT_DIR}/photos" "${PICTURES}/Trip"
make folder "${PICTURES}/Old~Scans"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "3"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"

# The part after "Old~Scans" does not exist: the expansion ends at the folder.
start "\"${PICTURES}/Old~Scans/gone.jpg\""
wait 200
expect session gsSelectedFolder = "${PICTURES}/Trip/"
expect session gdicPhotoList.Count = 4
expect session gsCommandLine = ""
expect no errors
