# A field the window doesn't declare.
# expect: FAILED line 13: Form frmMainWindow has no property or named field mbNothing
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
expect frmMainWindow.mbNothing = True
