# A "~" is an ordinary character of a Linux name: a photo in "My~Photos"
# opens first, with the rest of its folder behind it.
make folder "${PICTURES}/My~Photos"
copy "${SCRIPT_DIR}/photos/harbour.jpg" "${PICTURES}/My~Photos/a~1.jpg"
copy "${SCRIPT_DIR}/photos/meadow.jpg" "${PICTURES}/My~Photos/b.jpg"
copy "${SCRIPT_DIR}/photos/sunset.jpg" "${PICTURES}/My~Photos/c~2.jpg"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "3"

start "\"${PICTURES}/My~Photos/c~2.jpg\""
wait 200
expect session gdicPhotoList(0) = "${PICTURES}/My~Photos/c~2.jpg"
expect session gdicPhotoList.Count = 3
expect session gsSelectedImage = "${PICTURES}/My~Photos/c~2.jpg"
expect session gsSelectedFolder = "${PICTURES}/My~Photos/"
expect frmMainWindow.ctlDisplayImage.PhotoPath = "${PICTURES}/My~Photos/c~2.jpg"
expect frmMainWindow.lblExpFolderPath.Caption = "My~Photos"
expect no errors
