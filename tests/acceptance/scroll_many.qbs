# A folder of a few hundred photos: only the first thumbnails are made at the
# start; scrolling makes those that come into view; a click far down shows
# that photo, and the selection counts every photo of the folder.
make photos 300 "${PICTURES}/Many"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Many"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk" PrevHt = "15300"
setting "Software\Quillbay Picture Desk" PrevWidth = "20000"

start
wait 200
expect session gdicPhotoList.Count = 300
expect session gdicLoadedControls.Count = 10
expect frmMainWindow.lblPhotosSelect.Caption = "0 of 300 photo(s) selected"
expect frmMainWindow.ctrlImageListVScroll.Visible = True
# 150 rows, four on view in a window of this size.
expect frmMainWindow.ctrlImageListVScroll.Max = 146
expect frmMainWindow.picImagelistInnerCont.Height = 237750

scroll frmMainWindow.ctrlImageListVScroll 100
expect frmMainWindow.picImagelistInnerCont.Top = -155200
expect frmMainWindow.ctrlQuilImage(200).Visible = True
expect frmMainWindow.ctrlQuilImage(200).Top = 155600
expect frmMainWindow.ctrlQuilImage(201).Left = 1585
expect frmMainWindow.ctrlQuilImage(210).ToolTipText = "photo211.jpg"
expect session gdicLoadedControls.Count = 21

click frmMainWindow.ctrlQuilImage(205)
expect session giCurrentPhotoIndex = 205
expect frmMainWindow.ctlDisplayImage.PhotoPath = "${PICTURES}/Many/photo206.jpg"
expect frmMainWindow.ctrlImageListVScroll.Value = 100

tick frmMainWindow.ctrlQuilImage(201)
expect frmMainWindow.lblPhotosSelect.Caption = "1 of 300 photo(s) selected"

# To the end: the last row holds photos 298 and 299.
scroll frmMainWindow.ctrlImageListVScroll 146
expect frmMainWindow.ctrlQuilImage(299).Visible = True
expect frmMainWindow.ctrlQuilImage(299).Left = 1585
expect frmMainWindow.ctrlQuilImage(299).ToolTipText = "photo300.jpg"

click frmMainWindow.imgSelectAll
expect frmMainWindow.lblPhotosSelect.Caption = "300 of 300 photo(s) selected"
expect frmMainWindow.ctrlQuilImage(299).Checked = True
expect no errors
