# The photo information dialog: its fields, the rename with its refusals,
# and the main window's name afterwards.
make folder "${PICTURES}/Info"
copy "${SCRIPT_DIR}/photos/harbour.jpg" "${PICTURES}/Info/a harbour at dusk with boats.jpg"
# Not a photo, so the grid leaves it out; its name is still taken.
write file "${PICTURES}/Info/photo001.jpg" "the user's own file"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Info"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
expect session gdicPhotoList.Count = 1

menu frmMainWindow.mnuPInfo
expect form frmPhotoInfo modal
expect session giCurrentOperation = 6
expect frmPhotoInfo.txtFileName.Text = "a harbour at dusk with boats"
# 28 characters: the label shows 25 and "...".
expect frmPhotoInfo.lblFileName.Caption = "a harbour at dusk with bo..."
expect frmPhotoInfo.lbldispDimensions.Caption = "160(w) x 120(h)"
expect frmPhotoInfo.lblDispColors.Caption = "24 bit (16777216) RGB"
expect frmPhotoInfo.lblDispImageFormat.Caption = "JPEG image"
expect frmPhotoInfo.lblDispFilesSize.Caption contains "k"
expect frmPhotoInfo.lbDispDateCreated.Caption contains ", 20"
expect frmPhotoInfo.lblLocation.Caption = "${PICTURES}/Info/"

# A typed refused character, then names OK refuses.
type frmPhotoInfo.txtFileName "{END}*"
expect message "Please enter valid characters for file name" style 64 answer OK
expect frmPhotoInfo.txtFileName.Text = "a harbour at dusk with boats"
set frmPhotoInfo.txtFileName.Text = ""
click frmPhotoInfo.imgOK
expect message "Enter file name" style 64 answer OK
set frmPhotoInfo.txtFileName.Text = "."
click frmPhotoInfo.imgOK
expect message "A file name cannot contain any of the following characters \r\n\\ / : * ? \" < > |" style 64 answer OK
set frmPhotoInfo.txtFileName.Text = "photo001"
click frmPhotoInfo.imgOK
expect message "With this name, file already exists" style 64 answer OK
expect form frmPhotoInfo modal
expect file "${PICTURES}/Info/a harbour at dusk with boats.jpg" exists
expect file "${PICTURES}/Info/photo001.jpg" contains "the user's own file"

# A new name renames the file, keeps its extension and shows on the main
# window.
set frmPhotoInfo.txtFileName.Text = "harbour"
click frmPhotoInfo.imgOK
expect form frmPhotoInfo gone
expect file "${PICTURES}/Info/harbour.jpg" exists
expect file "${PICTURES}/Info/a harbour at dusk with boats.jpg" missing
expect session gsSelectedImage = "${PICTURES}/Info/harbour.jpg"
expect frmMainWindow.lblDisplayImageName.Caption = "harbour"
expect session giCurrentOperation = 0

# Esc closes; the same name changes nothing.
click frmMainWindow.imgInfo
press frmPhotoInfo "{ESC}"
expect form frmPhotoInfo gone
click frmMainWindow.imgInfo
click frmPhotoInfo.imgOK
expect form frmPhotoInfo gone
expect file "${PICTURES}/Info/harbour.jpg" exists
expect no errors
