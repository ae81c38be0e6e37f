# Sharing by e-mail against the scripted double: the share form's rules and
# messages one after another (recipients, album name, the preview, the
# entities of subject and message), the transfer into a new album, the
# share with only the accepted addresses kept, and the result page.
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

service answers LoginUser ok "SESSION7" "USER7"
service answers GetUserInfo ok "FUL" "ann@example.com" "Ann" "Lee"
service answers GetAddressBook fails "1002" "Your address book is empty."
click frmMainWindow.imgShare
expect form frmLogin modal
set frmLogin.txtEmailAdd.Text = "ann@example.com"
set frmLogin.txtPassword.Text = "pa55word"
click frmLogin.imgOK
expect form frmShareInfo modal
expect frmShareInfo.lblFromText.Caption = "Ann Lee <ann@example.com>"
expect frmShareInfo.txtSubject.Text = "You're invited to view my online photos"
expect frmShareInfo.txtAlbum.Text = "album 01/15"
expect frmShareInfo.lblLeftAlbumVal.Caption = "album 01/15"
expect frmShareInfo.lblPhotosSelect.Caption = "3 photo(s)"
expect frmShareInfo.ctrlQuilImage(2) loaded
expect frmShareInfo.ctrlQuilImage(3) not loaded
# An empty address book: no button at all.
expect frmShareInfo.imgAddressBook.Visible = False
expect frmShareInfo.lblToText.Caption = "Enter email addresses seperated by commas "

click frmShareInfo.imgContinue
expect message "Please enter the email id's to share" style 64
# Commas and blanks are not empty, but hold no address.
set frmShareInfo.txtTo.Text = " , ,  "
click frmShareInfo.imgContinue
expect message "Please enter valid email id's to share" style 64
expect frmShareInfo.txtTo.SelLength = 6
set frmShareInfo.txtTo.Text = "bob@example.com, a b@c.de"
click frmShareInfo.imgContinue
expect message "Email address cannot have spaces" style 64
set frmShareInfo.txtTo.Text = "@example.com"
click frmShareInfo.imgContinue
expect message "Enter a valid email address starting aplhabet" style 64
set frmShareInfo.txtTo.Text = "bob@example"
click frmShareInfo.imgContinue
expect message "Enter a valid email address" style 64
set frmShareInfo.txtTo.Text = "bob-@example.com"
click frmShareInfo.imgContinue
expect message "Enter a valid Email address" style 64
set frmShareInfo.txtTo.Text = "bob<script>@example.com"
click frmShareInfo.imgContinue
expect message "Enter a valid email address " style 64
expect service calls LoginUser GetUserInfo GetAddressBook

# Two addresses that differ in case, ";" between, a trailing ";".
set frmShareInfo.txtTo.Text = "Bob@Example.com; bob@example.com;carol@example.org;"
set frmShareInfo.txtAlbum.Text = "   "
click frmShareInfo.imgContinue
expect message "Please enter album name" style 64
set frmShareInfo.txtAlbum.Text = "Summer {2026}"
click frmShareInfo.imgContinue
expect message "Please enter valid characters (alphanumeric, special characters, ', \", !, -, ., :, ;,?, #, &, %, $, +, *, ), (, /, , <, =, >, @, [, \\, ], ^, _ , space and comma ) for album name " style 64
# Thirteen characters show as ten and "..".
set frmShareInfo.txtAlbum.Text = "Summer & sun!"
expect frmShareInfo.lblLeftAlbumVal.Caption = "Summer & s.."
set frmShareInfo.txtAlbum.Text = "Summer & sun"
expect frmShareInfo.lblLeftAlbumVal.Caption = "Summer & sun"
set frmShareInfo.txtSubject.Text = "Fish <&> chips"
set frmShareInfo.txtMessage.Text = "<script>alert(1)</script>"
click frmShareInfo.optRestrict

service answers UploadFile ok album "A5" image "I1"
service answers always UploadFile ok album "A5" image "I2"
service answers ShareAlbum ok "Bob@Example.com,carol@example.org"
click frmShareInfo.imgContinue
expect form frmShareCongrats modal
expect service calls LoginUser GetUserInfo GetAddressBook UploadFile UploadFile UploadFile ShareAlbum
expect service call 4 UploadFile url contains "&albumid=&albumname=Summer & sun&"
expect service call 5 UploadFile url contains "&albumid=A5&"
expect service call 7 ShareAlbum albumId = "A5"
expect service call 7 ShareAlbum emails = "[\"Bob@Example.com\",\"carol@example.org\"]"
expect service call 7 ShareAlbum subject = "Fish &lt;&amp;&gt; chips"
expect service call 7 ShareAlbum message = "&lt;script&gt;alert(1)&lt;/script&gt;"
expect service call 7 ShareAlbum access = "0"
expect frmShareCongrats.lblCongratulations.Caption = "congratulations!"
expect frmShareCongrats.lblAlbumName.Caption = "Summer & sun"
expect frmShareCongrats.lblMailId.Caption = "bob@example.com\ncarol@example.org"
# The share values are back to their defaults.
expect session gsShareSubject = "You're invited to view my online photos"
expect session gsShareRecipients = ""
expect session gsAlbumName = ""
click frmShareCongrats.lblOrdPrintsLink
expect launched "http://127.0.0.1:8931/thumbnailshare/AlbumID=A5/u_=SESSION7"
click frmShareCongrats.imgOK
expect form frmShareCongrats gone
expect session gsAlbumId = ""
expect no errors
