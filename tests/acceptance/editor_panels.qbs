# Red eye and colour: the apply refused before an eye was clicked, the
# colour panel cancelled with nothing written, and a photo handed over by a
# second start while a panel is open.
make photos 1 "${PICTURES}/Trip" 400x300
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
click frmMainWindow.imgRedeye
expect session giCurrentOperation = 4
expect frmMainWindow.fraRedEye.Visible = True
expect frmMainWindow.lblSelect.Caption = "Select an Eye"
click frmMainWindow.imgApplyChanges
expect message "The redeye should be removed first inorder to save the photo" style 64
click frmMainWindow.imgCancel
expect session giCurrentOperation = 0
expect frmMainWindow.picImageListCont.Visible = True

click frmMainWindow.imgAutocolor
expect session giCurrentOperation = 5
expect frmMainWindow.fraAutoColor.Visible = True
expect frmMainWindow.optViewCorrected.Value = True
click frmMainWindow.lblViewOriginal
expect frmMainWindow.optViewOriginal.Value = True
click frmMainWindow.imgCancel
expect session giCurrentOperation = 0
expect file "${PICTURES}/Trip/photo001_Fixed(1).Jpg" missing
expect no errors
