# The slide show and Full Screen: playing from the photo on display every
# interval and round again, play and pause with their tips, next and
# previous wrapping, Esc back to the main window on the last photo shown,
# and the message when every file went.
make folder "${PICTURES}/Show"
copy "${SCRIPT_DIR}/photos/harbour.jpg" "${PICTURES}/Show/harbour.jpg"
copy "${SCRIPT_DIR}/photos/meadow.jpg" "${PICTURES}/Show/meadow.jpg"
copy "${SCRIPT_DIR}/photos/sunset.jpg" "${PICTURES}/Show/sunset.jpg"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Display" SlideshowImageIntervalInSeconds = "2"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Show"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
expect session gdicPhotoList.Count = 3
expect session giCurrentPhotoIndex = 0

# Full Screen opens paused on the photo on display.
menu frmMainWindow.mnuVFullScreen
expect form frmSlideShow modal
expect session giCurrentOperation = 7
expect session gsSlideShowMode = "F"
expect frmSlideShow.BorderStyle = 0
expect frmSlideShow.WindowState = 2
expect frmSlideShow.miCurrentIndex = 0
expect frmSlideShow.mbPlaying = False
expect frmSlideShow.imgPlayPause.Tag = "play the slideshow"
wait 10 s
expect frmSlideShow.miCurrentIndex = 0
# Play shows the next photo at once, then every two seconds.
click frmSlideShow.imgPlayPause
expect frmSlideShow.miCurrentIndex = 1
expect frmSlideShow.mbPlaying = True
expect frmSlideShow.imgPlayPause.Tag = "pause the slideshow"
wait 2 s
expect frmSlideShow.miCurrentIndex = 2
# Round again from the last photo.
wait 2 s
expect frmSlideShow.miCurrentIndex = 0
# Next pauses; next and previous wrap.
click frmSlideShow.imgPrevious
expect frmSlideShow.mbPlaying = False
expect frmSlideShow.miCurrentIndex = 2
click frmSlideShow.imgNext
expect frmSlideShow.miCurrentIndex = 0
click frmSlideShow.imgNext
expect frmSlideShow.miCurrentIndex = 1
expect pointer = 0
wait 10 s
expect frmSlideShow.miCurrentIndex = 1
press frmSlideShow "{ESC}"
expect form frmSlideShow gone
expect session giCurrentPhotoIndex = 1
expect session giCurrentOperation = 0

# The slide show plays from the photo on display.
click frmMainWindow.imgSlideShow
expect session gsSlideShowMode = "S"
expect frmSlideShow.miCurrentIndex = 1
expect frmSlideShow.mbPlaying = True
expect frmSlideShow.tmrPlay.Interval = 2000
wait 2 s
expect frmSlideShow.miCurrentIndex = 2
# Every file goes while the show runs.
delete "${PICTURES}/Show/harbour.jpg"
delete "${PICTURES}/Show/meadow.jpg"
delete "${PICTURES}/Show/sunset.jpg"
wait 2 s
expect message "There are no images to display" style 64 answer OK
expect form frmSlideShow gone
expect session gdicPhotoList.Count = 0
expect frmMainWindow.ctlDisplayImage.Visible = False
expect session giCurrentOperation = 0
expect no errors
