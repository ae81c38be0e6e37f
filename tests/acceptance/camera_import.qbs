# The camera import: the device monitor's lines, the copy question, the
# device list, a card copied and moved, and the camera transfer helper run
# for real on a folder camera (libgphoto2's directory driver, port "disk:").
make photos 2 "${PICTURES}/Photos"
make photos 3 "${PICTURES}/Camera/DCIM/100TEST"
make photos 2 "${PICTURES}/Card/DCIM/100A"
make photos 1 "${PICTURES}/Card/DCIM/101B"
write file "${PICTURES}/Card/.hidden" "not a photo"
make folder "${DATA}"
write file "${DATA}/Drives.dat" "E:\t${PICTURES}/Card\n"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Photos"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" BaseFolder = "${PICTURES}/Imports"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" FolderName = "0"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" PhotoName = "0"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DeleteImagesStatus = "False"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DisplayDialogtoCopy = "True"
start
wait 200
expect session gdicPhotoList.Count = 2

# A file of no length and an unknown code are deleted and ignored.
write file "${DATA}/DevMon.dat" ""
wait 1 s
expect file "${DATA}/DevMon.dat" missing
write file "${DATA}/DevMon.dat" "500 E:|"
wait 1 s
expect file "${DATA}/DevMon.dat" missing
expect form frmCameraCopy gone

# A known camera: the question; Cancel starts nothing.
write file "${DATA}/DevMon.dat" "100 Directory Browse (disk:${PICTURES}/Camera)|\n"
wait 1 s
expect form frmCameraCopy modal
expect frmCameraCopy.lblMessage.Caption = "We've detected a new device that contains images. Would you like to download the image(s) from this device to the Quillbay Picture Desk?"
expect frmCameraCopy.chkDisplayCameraCopyImages.Value = 1
click frmCameraCopy.imgCancel
expect form frmCameraCopy gone
expect file "${PICTURES}/Imports" missing

# OK: the helper copies the camera's photos into the dated folder, the
# progress dialog comes and goes, and the tree shows the new folder.
write file "${DATA}/DevMon.dat" "100 Directory Browse (disk:${PICTURES}/Camera)|\n"
wait 1 s
click frmCameraCopy.imgOK
expect form frmCamProgress modal
expect frmCamProgress.lblMessage.Caption = "Quillbay Picture Desk is copying images from the connected device."
wait 5 s
# The helper runs in real time; the program's polls move the virtual clock
# on meanwhile, so the dialog's own timers need a moment after it answered.
wait 1 s
expect form frmCamProgress gone
expect file "${PICTURES}/Imports/01-15-2026/Picture 1.jpg" exists
expect file "${PICTURES}/Imports/01-15-2026/Picture 3.jpg" exists
expect file "${PICTURES}/Camera/DCIM/100TEST/photo001.jpg" exists
expect frmMainWindow.ExpTreeView.SelectedFolder = "${PICTURES}/Imports/01-15-2026/"
expect file "${DATA}/ImgAcq.dat" missing
expect setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DisplayDialogtoCopy = "True"
expect frmMainWindow.timerCamera.Enabled = True

# The question turned off for good: the card comes in at once, numbered
# "_001" beside the camera's folder, every file in one folder, hidden files
# left out.
write file "${DATA}/DevMon.dat" "100 E:|\n"
wait 1 s
untick frmCameraCopy.chkDisplayCameraCopyImages
click frmCameraCopy.imgOK
wait 2 s
expect form frmCamProgress gone
expect setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DisplayDialogtoCopy = "False"
expect file "${PICTURES}/Imports/01-15-2026_001/photo001.jpg" exists
expect file "${PICTURES}/Imports/01-15-2026_001/photo002.jpg" exists
expect file "${PICTURES}/Imports/01-15-2026_001/.hidden" missing
expect file "${PICTURES}/Card/DCIM/100A/photo001.jpg" exists
expect frmMainWindow.ExpTreeView.SelectedFolder = "${PICTURES}/Imports/01-15-2026_001/"

# A move: the card is emptied; the two photo001.jpg both arrive.
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DeleteImagesStatus = "True"
write file "${DATA}/DevMon.dat" "100 E:|\n"
wait 1 s
expect form frmCamProgress modal
wait 1 s
expect form frmCamProgress gone
expect file "${PICTURES}/Imports/01-15-2026_002/photo001.jpg" exists
expect file "${PICTURES}/Imports/01-15-2026_002/photo001_001.jpg" exists
expect file "${PICTURES}/Imports/01-15-2026_002/photo002.jpg" exists
expect file "${PICTURES}/Card/DCIM/100A/photo001.jpg" missing
expect file "${PICTURES}/Card/DCIM/101B/photo001.jpg" missing
expect file "${PICTURES}/Card/.hidden" exists

# A new device with nothing attached (no camera, no mounted medium here):
# the list says so and the tree goes to the start folder.
write file "${DATA}/DevMon.dat" "200 usb-04a9-3176|\n"
wait 1 s
expect message "Sorry! There is no camera connected to your PC.  Please connect your camera and try again." style 64
wait 1 s
expect form frmDeviceList gone
expect frmMainWindow.ExpTreeView.SelectedFolder = "${PICTURES}/Photos/"
expect setting "Software\Quillbay Picture Desk\DeviceList\CameraList" usb-04a9-3176 = ""

# The menu entry: the same answer, and the timer runs again.
menu frmMainWindow.mnuFGetCameraPhotos
expect message "Sorry! There is no camera connected to your PC.  Please connect your camera and try again."
expect frmMainWindow.timerCamera.Enabled = True
expect no errors
