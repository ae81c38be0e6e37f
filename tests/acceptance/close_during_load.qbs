# Closing the window while a folder loads: the close is refused, the load
# stops at the next photo, and the window goes away by itself within the
# close timer's period (100 ms) once the load has stopped.
copy "${SCRIPT_DIR}/photos" "${PICTURES}/Big"
copy "${SCRIPT_DIR}/photos/sunset.jpg" "${PICTURES}/Big/sunset2.jpg"
copy "${SCRIPT_DIR}/photos/sunset.jpg" "${PICTURES}/Big/sunset3.jpg"
make folder "${PICTURES}/Small"
copy "${SCRIPT_DIR}/photos/meadow.jpg" "${PICTURES}/Small/meadow.jpg"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "3"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Small"

start
wait 200
expect session gdicPhotoList.Count = 1
folder frmMainWindow.ExpTreeView "${PICTURES}/Big"
wait 300
inside pump 3: close frmMainWindow
expect session gbQuitRequested = True
expect form frmMainWindow shown
# The load stopped after the first photo of six.
expect session gdicPhotoList.Count = 1
expect session gbLoadInProgress = False
wait 100
expect form frmMainWindow gone
expect setting "Software\Quillbay Picture Desk" PrevWidth = "12845"
