# The wallpaper: a bitmap photo and a turned JPEG become the one bitmap of
# the system folder, upright, and the desktop is told (the driver's desktop
# is GNOME with its settings in memory: gsettings checks every value).
make folder "${PICTURES}/Bitmap"
copy "${SCRIPT_DIR}/photos/lighthouse.bmp" "${PICTURES}/Bitmap/lighthouse.bmp"
make folder "${PICTURES}/Turned"
make photo "${PICTURES}/Turned/turned.jpg" 80x40 orientation 6
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Bitmap"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
expect session gdicPhotoList.Count = 1

click frmMainWindow.imgWallpaper
expect form frmWallpaper modal
expect session giCurrentOperation = 8
expect frmWallpaper.lblWPapHead.Caption = "set as wallpaper"
expect frmWallpaper.lblWPapImageName.Caption = "lighthouse"
expect frmWallpaper.optWPapStretch.Value = True
click frmWallpaper.optWPapTiled
click frmWallpaper.imgWPapOK
expect form frmMsgInfrm modal
expect frmMsgInfrm.lblHead.Caption = "congratulations!"
expect frmMsgInfrm.lblMessage.Caption = "Selected image has been successfully set as wallpaper."
click frmMsgInfrm.imgOK
expect form frmWallpaper gone
expect image "${DATA}/system/Quillbay picture desk.bmp" width = 90
expect image "${DATA}/system/Quillbay picture desk.bmp" height = 60
expect session giCurrentOperation = 0
expect pointer = 0

# Cancel changes nothing.
menu frmMainWindow.mnuPWallPaper
click frmWallpaper.imgWPapCancel
expect form frmWallpaper gone

# A second wallpaper overwrites the same file, upright.
folder frmMainWindow.ExpTreeView "${PICTURES}/Turned"
wait 500
expect session gdicPhotoList.Count = 1
menu frmMainWindow.mnuPWallPaper
press frmWallpaper "{ESC}"
expect form frmWallpaper gone
click frmMainWindow.imgWallpaper
click frmWallpaper.optWPapCentered
click frmWallpaper.imgWPapOK
click frmMsgInfrm.imgOK
expect image "${DATA}/system/Quillbay picture desk.bmp" width = 40
expect image "${DATA}/system/Quillbay picture desk.bmp" height = 80
expect no errors
