# Start-up: the program opens on the last folder, lists its photos and makes
# the thumbnails; the recent-folder menu follows; the window state is kept.
copy "${SCRIPT_DIR}/photos" "${PICTURES}/Holiday & Home"
write file "${PICTURES}/Holiday & Home/notes.txt" "not a photo"
write file "${PICTURES}/Holiday & Home/broken.jpg" "not really a jpeg"
make folder "${PICTURES}/Empty"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Holiday & Home"
setting "Software\Quillbay Picture Desk" PrevHt = "8999"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
expect form frmMainWindow shown
expect frmMainWindow.Caption = "Quillbay Picture Desk"
expect frmMainWindow.Height = 9000
expect frmMainWindow.Width = 12845
wait 200
expect session gsSelectedFolder = "${PICTURES}/Holiday & Home/"
# Four photos; the text file and the broken photo are left out silently.
expect session gdicPhotoList.Count = 4
expect session giPhotoCount = 4
expect session gdicLoadedControls.Count = 4
expect frmMainWindow.lblPhotosSelect.Caption = "0 of 4 photo(s) selected"
expect frmMainWindow.lblExpFolderPath.Caption = "Holiday && Home"
expect frmMainWindow.ctrlQuilImage(0).Visible = True
expect frmMainWindow.ctrlQuilImage(1).Left = 1585
expect frmMainWindow.ctrlQuilImage(2).Top = 1655
expect frmMainWindow.picImagelistInnerCont.Height = 3170
expect session giCurrentPhotoIndex = 0
expect frmMainWindow.mnuFRecFolders(0).Caption = "Holiday && Home &1"
expect frmMainWindow.mnuFSep2.Visible = True
expect setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder1 = "${PICTURES}/Holiday & Home"
expect setting "Software\Quillbay Picture Desk\Preferences\Display" RecentFolder2 = ""
expect no errors

# A folder without photos.
folder frmMainWindow.ExpTreeView "${PICTURES}/Empty"
wait 300
expect session gdicPhotoList.Count = 0
expect frmMainWindow.lblPhotosSelect.Caption = "No photo(s) exists."
# An empty folder does not join the recent folders.
expect frmMainWindow.mnuFRecFolders(0).Caption = "Holiday && Home &1"

# Back through the recent-folder menu.
menu frmMainWindow.mnuFRecFolders(0)
expect session gdicPhotoList.Count = 4

# Closing keeps the window's size for the next start.
close frmMainWindow
expect form frmMainWindow gone
expect setting "Software\Quillbay Picture Desk" PrevMode = "0"
expect setting "Software\Quillbay Picture Desk" PrevHt = "9000"
expect setting "Software\Quillbay Picture Desk" PrevWidth = "12845"
