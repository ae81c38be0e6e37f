# Sign-up in three steps against the scripted double: every rule of the
# account step, a half-filled address, an empty card, the service's answer
# codes bringing the step of their field back with its labels marked, the
# login with the new account and the upload that was under way.
service double
make photos 2 "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Trip"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"
setting "Software\Quillbay Picture Desk" URL = "http://127.0.0.1:8931/api"
setting "Software\Quillbay Picture Desk" IP = "http://127.0.0.1:8931"
# An earlier run remembered another account; the sign-up decides anew.
setting "Software\Quillbay Picture Desk\Preferences\Settings" AutoLogin = "True"
setting "Software\Quillbay Picture Desk\Preferences\Settings" UserName = "old@example.com"

start
wait 200
click frmMainWindow.imgSelectAll
click frmMainWindow.imgUpload
expect form frmLogin modal
click frmLogin.lblSignUp
expect form frmLogin gone
expect form frmRegistration modal
expect session gsLoginOrigin = "R"
expect frmRegistration.lblActMailCCInfoTitle.Caption = "account info"
expect frmRegistration.fraStep1.Visible = True
expect frmRegistration.imgBack.Visible = False
expect frmRegistration.cboState.List(0) = "---"
expect frmRegistration.cboMonth.List(1) = "01"
expect frmRegistration.cboYear.List(1) = "2026"
expect frmRegistration.cboYear.List(13) = "2038"

# Nothing filled: every field of the step is marked at once.
click frmRegistration.imgContinue
expect frmRegistration.lblErrInfm.Visible = True
expect frmRegistration.lblErrInfm.Caption = "Oops—there's invalid or missing info. Please review the information below and re-enter the fields marked in red. Password should be atleast 5 characters."
expect frmRegistration.lblFName.Caption = "first name *"
expect frmRegistration.lblFName.ForeColor = 255
expect frmRegistration.lblLName.Caption = "last name *"
expect frmRegistration.lblEmail.Caption = "email address *"
expect frmRegistration.lblPwd.Caption = "password *"
expect frmRegistration.lblRePwd.Caption = "re-type password *"
expect frmRegistration.chkAcceptterms.ForeColor = 255
expect frmRegistration.imgContinue.Enabled = True

# A password of four characters, and two that differ.
set frmRegistration.txtFirstName.Text = "  Ann  "
set frmRegistration.txtLastName.Text = "O'Neil-Brown"
set frmRegistration.txtEmailId.Text = "ann@example.com"
set frmRegistration.txtPwd.Text = "abcd"
set frmRegistration.txtRePwd.Text = "abcd"
tick frmRegistration.chkAcceptterms
expect frmRegistration.chkAcceptterms.ForeColor = 0
click frmRegistration.imgContinue
expect frmRegistration.txtFirstName.Text = "Ann"
expect frmRegistration.lblFName.Caption = "first name"
expect frmRegistration.lblFName.ForeColor = 0
expect frmRegistration.lblPwd.Caption = "password *"
expect frmRegistration.lblRePwd.Caption = "re-type password *"
expect frmRegistration.lblErrInfm.Caption contains "re-enter the fields marked in red. Password should be atleast 5 characters."
set frmRegistration.txtPwd.Text = "secret1"
set frmRegistration.txtRePwd.Text = "secret2"
click frmRegistration.imgContinue
expect frmRegistration.lblErrInfm.Caption contains "marked in red. Your passwords don't match. Please retype both passwords."
set frmRegistration.txtEmailId.Text = "ann@example"
set frmRegistration.txtRePwd.Text = "secret1"
click frmRegistration.imgContinue
expect frmRegistration.lblEmail.Caption = "email address *"
expect frmRegistration.lblPwd.Caption = "password"
set frmRegistration.txtEmailId.Text = "ann@example.com"
set frmRegistration.txtFirstName.Text = "<Ann>&"
click frmRegistration.imgContinue
expect frmRegistration.lblFName.Caption = "first name"
expect frmRegistration.lblActMailCCInfoTitle.Caption = "mailing address"
expect frmRegistration.lblInfo.Caption = "We'll send your free postage-paid film mailers to this address."
expect frmRegistration.lblErrInfm.Visible = False
expect frmRegistration.imgBack.Visible = True

# Back and forth keeps what was typed.
click frmRegistration.imgBack
expect frmRegistration.lblActMailCCInfoTitle.Caption = "account info"
expect frmRegistration.txtPwd.Text = "secret1"
set frmRegistration.txtFirstName.Text = "Ann"
click frmRegistration.imgContinue
expect frmRegistration.fraStep2.Visible = True

# A half-filled address fails on every field it lacks.
set frmRegistration.txtStreet1.Text = "1 Main St, Apt 2"
type frmRegistration.txtZipMailingAddrs "94a1x05"
expect frmRegistration.txtZipMailingAddrs.Text = "94105"
type frmRegistration.txtPhone1 "415-555"
expect frmRegistration.txtPhone1.Text = "415555"
click frmRegistration.imgContinue
expect frmRegistration.lblStreet.Caption = "street *"
expect frmRegistration.lblcity.Caption = "city *"
expect frmRegistration.lblState.Caption = "state *"
expect frmRegistration.lblZip.Caption = "zip"
expect frmRegistration.lblPhone.Caption = "phone"
expect frmRegistration.fraStep2.Visible = True
# Emptied again, the address is optional.
set frmRegistration.txtStreet1.Text = ""
set frmRegistration.txtZipMailingAddrs.Text = ""
set frmRegistration.txtPhone1.Text = ""
click frmRegistration.imgContinue
expect frmRegistration.lblActMailCCInfoTitle.Caption = "Credit Card Info(optional)"
expect frmRegistration.lblInfo.Caption = "You can provide this now or later. Your card will not be charged untill process an order"

# A card that is half there fails: a month without its year, no zip.
type frmRegistration.txtCardNumber "4111 1111 1111 111x1"
expect frmRegistration.txtCardNumber.Text = "4111 1111 1111 1111"
choose frmRegistration.cboMonth "12"
click frmRegistration.imgContinue
expect frmRegistration.lblCardNumber.Caption = "card number"
expect frmRegistration.lblExpDate.Caption = "exp. date *"
expect frmRegistration.lblBillZip.Caption = "billing zip *"
expect frmRegistration.txtNameonCard.Text = "Ann O'Neil-Brown"
# Four groups of four with dashes pass as well; this month is not expired.
set frmRegistration.txtCardNumber.Text = "4111-1111-1111-1111"
choose frmRegistration.cboMonth "01"
choose frmRegistration.cboYear "2026"
set frmRegistration.txtBillZip.Text = "94105-1234"

# The service answers that the state is missing for the zip: step 2 again.
service answers RegisterUser fails "2013" "State and zip do not match"
click frmRegistration.imgContinue
expect service calls RegisterUser
expect service call 1 RegisterUser fields = "[\"Ann\",\"O'Neil-Brown\",\"ann@example.com\",\"secret1\",\"\",\"\",\"\",\"\",\"\",\"\",\"\",\"Ann O'Neil-Brown\",\"4111-1111-1111-1111\",\"01\",\"2026\",\"94105-1234\"]"
expect frmRegistration.fraStep2.Visible = True
expect frmRegistration.lblState.Caption = "state *"
expect frmRegistration.lblZip.Caption = "zip *"
expect frmRegistration.lblErrInfm.Caption = "Oops—there's invalid or missing info. Please review the information below and re-enter the fields marked in red.State and Zip do not match."
set frmRegistration.txtStreet1.Text = "1 Main St"
set frmRegistration.txtCity.Text = "San Francisco"
choose frmRegistration.cboState "CA"
set frmRegistration.txtZipMailingAddrs.Text = "94105"
click frmRegistration.imgContinue
expect frmRegistration.frastep3.Visible = True

# An account that exists already: step 1 with the e-mail address marked.
service answers RegisterUser fails "2021" "exists"
click frmRegistration.imgContinue
expect frmRegistration.fraStep1.Visible = True
expect frmRegistration.lblEmail.Caption = "email address *"
expect frmRegistration.lblErrInfm.Caption contains "red. A Quillbay account with your email address already exists."
# The service failing: its box, the form stays.
service answers RegisterUser fails "9999" "down"
click frmRegistration.imgContinue
click frmRegistration.imgContinue
click frmRegistration.imgContinue
expect message "There is some problem with the server, please try after some time..." style 64
expect form frmRegistration modal

# Signed up: logged in at once, the upload goes on from the album choice.
service answers RegisterUser ok "SNEW" "UNEW"
service answers GetAlbumList ok
service answers always UploadFile ok album "A1" image "I1"
service answers GetAlbumList ok "A1" "album 01/15"
click frmRegistration.imgContinue
expect form frmUploadAlbumInfm modal
expect session gsAuthCode = "SNEW"
expect session gsUserEmail = "ann@example.com"
expect setting "Software\Quillbay Picture Desk\Preferences\Settings" AutoLogin = "False"
expect setting "Software\Quillbay Picture Desk\Preferences\Settings" UserName = ""
click frmUploadAlbumInfm.imgContinue
expect form frmUploadCongrats modal
expect service calls RegisterUser RegisterUser RegisterUser RegisterUser GetAlbumList UploadFile UploadFile GetAlbumList
expect service call 4 RegisterUser fields contains "\"1 Main St\",\"\",\"San Francisco\",\"CA\",\"94105\",\"\""
expect service call 6 UploadFile url contains "authcode=SNEW&"
click frmUploadCongrats.imgOK
expect no errors
