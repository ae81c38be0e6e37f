# The upload road against the scripted service double: a stored login, the
# album list, a new album, three photos (one a bitmap that goes as a JPEG
# copy from the temp folder), the result page and its links.
service double
make folder "${PICTURES}/Trip"
copy "${SCRIPT_DIR}/photos/sunset.jpg" "${PICTURES}/Trip/sunset.jpg"
copy "${SCRIPT_DIR}/photos/meadow.jpg" "${PICTURES}/Trip/meadow.jpg"
copy "${SCRIPT_DIR}/photos/lighthouse.bmp" "${PICTURES}/Trip/lighthouse.bmp"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"
setting "Software\Quillbay Picture Desk" URL = "http://127.0.0.1:8931/api"
setting "Software\Quillbay Picture Desk" IP = "http://127.0.0.1:8931"
setting "Software\Quillbay Picture Desk\SiteSettings" SourceCode = "QBPDLINUX"
setting "Software\Quillbay Picture Desk\Preferences\Settings" AutoLogin = "False"

start
wait 200
expect session gdicPhotoList.Count = 3
click frmMainWindow.imgSelectAll

service answers LoginUser ok "SESSION7" "USER7"
service answers GetAlbumList ok "11" "Holidays"
service answers UploadFile ok album "A42" image "I1" after 300 ms
service answers always UploadFile ok album "A42" image "I2"
service answers GetAlbumList ok "A42" "album 01/15" "11" "Holidays"

click frmMainWindow.imgUpload
expect form frmLogin modal
set frmLogin.txtEmailAdd.Text = "ann@example.com"
set frmLogin.txtPassword.Text = "pa55word"
tick frmLogin.chkRemember
click frmLogin.imgOK
expect form frmUploadAlbumInfm modal
expect frmUploadAlbumInfm.txtNewAlbumConn.Text = "album 01/15"
expect frmUploadAlbumInfm.cboPrevAlbum.List(0) = "Holidays"
click frmUploadAlbumInfm.imgContinue
expect form frmUploadCongrats modal
expect frmUploadCongrats.lblPhotosUploaded.Caption = "Your photos have been successfully added to your online album."
expect frmUploadCongrats.lblAlbumName.Caption = "album 01/15"
expect session giUploadedCount = 3
expect service calls LoginUser GetAlbumList UploadFile UploadFile UploadFile GetAlbumList
expect service call 1 LoginUser email = "ann@example.com"
expect service call 3 UploadFile url contains "&albumid=&albumname=album 01/15&sourcecode=QBPDLINUX&file="
expect service call 4 UploadFile url contains "&albumid=A42&"
# The bitmap went as a JPEG copy from the temp folder, which is gone again.
expect service call 3 UploadFile filePath contains "lighthouse.jpg"
expect file "${PICTURES}/Trip/lighthouse.bmp" exists
# Remembered: the password is kept scrambled only.
expect setting "Software\Quillbay Picture Desk\Preferences\Settings" AutoLogin = "True"
expect setting "Software\Quillbay Picture Desk\Preferences\Settings" EncryptedPassword = "uf::|twi"
click frmUploadCongrats.lblViewLink
expect launched "http://127.0.0.1:8931/thumbnailshare/AlbumID=A42/u_=SESSION7"
click frmUploadCongrats.imgOK
expect form frmUploadCongrats gone
expect session gsAlbumId = ""
expect no errors
