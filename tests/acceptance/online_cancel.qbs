# Cancels on the online road with the scripted double: inside LoginUser the
# window ends at its timer's next tick; inside UploadFile after one photo
# went, the notice says the upload was cancelled; and the codes of a failed
# login come back to the login form in the order the service's text needs.
service double
make photos 3 "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"
setting "Software\Quillbay Picture Desk" URL = "http://127.0.0.1:8931/api"
setting "Software\Quillbay Picture Desk" IP = "http://127.0.0.1:8931"
setting "Software\Quillbay Picture Desk\Preferences\Settings" AutoLogin = "False"

start
wait 200
click frmMainWindow.imgSelectAll

# No connection: nothing is called.
service connection down
click frmMainWindow.imgUpload
expect message "Please, check internet connection..." style 64
service connection up

# A login that fails with 2006, then one that waits until it is cancelled.
service answers LoginUser fails "2006" "no such account"
service answers LoginUser ok "S" "U" waits
click frmMainWindow.imgUpload
set frmLogin.txtEmailAdd.Text = "ann@example.com"
set frmLogin.txtPassword.Text = "secret"
click frmLogin.imgOK
expect frmLogin.lblError.Caption = "Please try again.\nOops! There is no Quillbay account with this email address."
click frmLogin.imgOK
inside pump 5: click frmNetConn.imgCancel
expect form frmNetConn modal
expect frmNetConn.lblLogin.Caption = "Disconnecting from Quillbay…"
wait 500
expect form frmNetConn gone
expect service cancels = 1
expect session gsAuthCode = ""

# Logged in now; the second photo's transfer is cancelled.
service answers LoginUser ok "S2" "U2"
service answers GetAlbumList ok
service answers UploadFile ok album "A1" image "I1"
service answers UploadFile ok album "A1" image "I2" waits
click frmMainWindow.imgUpload
# The login form starts empty again: nothing was stored or logged in.
expect frmLogin.txtEmailAdd.Text = ""
set frmLogin.txtEmailAdd.Text = "ann@example.com"
set frmLogin.txtPassword.Text = "secret"
click frmLogin.imgOK
click frmUploadAlbumInfm.imgContinue
inside pump 5: click frmUploadImgs.imgCancelconn
expect form frmMsgInfrm modal
expect frmMsgInfrm.lblHead.Caption = "Sorry, Uploading Photo(s) has been cancelled."
click frmMsgInfrm.imgOK
expect service cancels = 2
expect session giUploadedCount = 1
expect form frmUploadImgs gone
expect no errors
