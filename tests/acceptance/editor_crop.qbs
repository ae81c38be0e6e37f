# The crop panel: the print size from the ExpressPrints setting, the
# orientation from the photo's shape, a size too large for the photo refused
# (and the apply refused with it), and a crop written to a _Fixed copy that
# joins the grid while the photo stays as it was.
make photos 1 "${PICTURES}/Trip" 1800x1200
make photo "${PICTURES}/Trip/small.jpg" 700x500
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk\Preferences\ExpressPrints" ExpressPrints = "5x7Singles"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
expect session gdicPhotoList.Count = 2
click frmMainWindow.ctrlQuilImage(0)
expect session gsSelectedImage = "${PICTURES}/Trip/photo001.jpg"

click frmMainWindow.imgCrop
expect session giCurrentOperation = 1
expect frmMainWindow.fraCrop.Visible = True
expect frmMainWindow.picImageListCont.Visible = False
expect frmMainWindow.lblManipHead.Caption = "crop"
expect frmMainWindow.optHor.Value = True
expect frmMainWindow.opt5x7.Value = True
expect frmMainWindow.miCropAspectX = 7
expect frmMainWindow.miCropAspectY = 5
click frmMainWindow.optVer
expect frmMainWindow.miCropAspectX = 5
expect frmMainWindow.miCropAspectY = 7
click frmMainWindow.imgApplyChanges
expect session giCurrentOperation = 0
expect file "${PICTURES}/Trip/photo001_Fixed(1).Jpg" exists
expect image "${PICTURES}/Trip/photo001_Fixed(1).Jpg" height = 1200
expect image "${PICTURES}/Trip/photo001.jpg" width = 1800
expect session gdicPhotoList.Count = 3
expect session gsSelectedImage = "${PICTURES}/Trip/photo001_Fixed(1).Jpg"
expect frmMainWindow.fraCrop.Visible = False
expect frmMainWindow.picImageListCont.Visible = True

# The small photo can't give an 8 x 10 print: the size is refused, and so
# is the apply, until a size that fits.
click frmMainWindow.ctrlQuilImage(1)
expect session gsSelectedImage = "${PICTURES}/Trip/small.jpg"
menu frmMainWindow.mnuPCrop8x10
expect message "Sorry! Your photo is too small to further crop and then print at this size" style 64
expect frmMainWindow.mbCropTooSmall = True
click frmMainWindow.imgApplyChanges
expect message "Sorry! Your photo is too small to further crop and then print at this size"
expect session giCurrentOperation = 1
click frmMainWindow.optWallet
expect frmMainWindow.mbCropTooSmall = False
click frmMainWindow.imgCancel
expect session giCurrentOperation = 0
expect file "${PICTURES}/Trip/small_Fixed(1).Jpg" missing
expect no errors
