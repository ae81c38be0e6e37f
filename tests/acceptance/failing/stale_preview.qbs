# A preview that a turn left behind differs from the photo.
# expect: FAILED line 14: Expected the EXIF preview of
make folder "${PICTURES}/Trip"
copy "${SCRIPT_DIR}/../photos/sunset.jpg" "${PICTURES}/Trip/sunset.jpg"
copy "${SCRIPT_DIR}/../photos/meadow.jpg" "${PICTURES}/Trip/meadow.jpg"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"
start
wait 200
make photo "${PICTURES}/Trip/turned.jpg" 90x60 orientation 6 preview turned
expect image "${PICTURES}/Trip/turned.jpg" preview matches
