# A photo given on the command line opens with its folder; a second start
# hands its photo to the running instance, which picks it up when it comes
# forward; a close in the middle of a load waits for the load to stop.
copy "${SCRIPT_DIR}/photos" "${PICTURES}/Trip"
make folder "${PICTURES}/Other"
copy "${SCRIPT_DIR}/photos/sunset.jpg" "${PICTURES}/Other/evening.jpg"
copy "${SCRIPT_DIR}/photos/harbour.jpg" "${PICTURES}/Other/port.jpg"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "3"

start "\"${PICTURES}/Trip/meadow.jpg\""
wait 200
# The commanded photo comes first, then the rest of its folder.
expect session gdicPhotoList(0) = "${PICTURES}/Trip/meadow.jpg"
expect session gdicPhotoList.Count = 4
expect session gsSelectedImage = "${PICTURES}/Trip/meadow.jpg"
expect frmMainWindow.ctlDisplayImage.PhotoPath = "${PICTURES}/Trip/meadow.jpg"
expect setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder1 = "${PICTURES}/Trip"
expect no errors

# The first instance is minimised; a second start brings it back with its
# photo, and the hand-over file is gone afterwards.
set frmMainWindow.WindowState = 1
second start "\"${PICTURES}/Other/evening.jpg\""
wait 100
expect frmMainWindow.WindowState = 0
expect session gsSelectedImage = "${PICTURES}/Other/evening.jpg"
expect session gsSelectedFolder = "${PICTURES}/Other/"
expect session gdicPhotoList.Count = 2
expect file "${DATA}/CommandImage.txt" missing

# A second start without a photo only brings the window forward.
set frmMainWindow.WindowState = 1
second start
wait 100
expect frmMainWindow.WindowState = 0
expect session gdicPhotoList.Count = 2
expect no errors
