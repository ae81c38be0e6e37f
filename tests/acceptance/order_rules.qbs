# The print order's first two steps against the scripted service double, for
# an account without card (status "LTE", prices worked out locally): the
# express prefill, the messages of pasted decimals and negatives, an empty
# order, the coupon note, the billing step's marks and key filter, Back, and
# Escape, which ends the order and forgets the coupon.
service double
make folder "${PICTURES}/Prints"
copy "${SCRIPT_DIR}/photos/sunset.jpg" "${PICTURES}/Prints/sunset.jpg"
copy "${SCRIPT_DIR}/photos/meadow.jpg" "${PICTURES}/Prints/meadow.jpg"
copy "${SCRIPT_DIR}/photos/lighthouse.bmp" "${PICTURES}/Prints/lighthouse.bmp"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Prints"
setting "Software\Quillbay Picture Desk\Preferences\ExpressPrints" ExpressPrints = "4x6singles"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"
setting "Software\Quillbay Picture Desk" URL = "http://127.0.0.1:8931/api"
setting "Software\Quillbay Picture Desk" IP = "http://127.0.0.1:8931"
setting "Software\Quillbay Picture Desk\Preferences\Settings" AutoLogin = "False"

start
wait 200
click frmMainWindow.imgSelectAll

service answers LoginUser ok "SESSION7" "USER7"
service answers GetUserInfo ok "LTE"
service answers GetPriceList ok

click frmMainWindow.imgOrdPrints
expect form frmLogin modal
set frmLogin.txtEmailAdd.Text = "ann@example.com"
set frmLogin.txtPassword.Text = "pa55word"
click frmLogin.imgOK
expect form frmOrdPrints modal
expect frmOrdPrints.lblHead.Caption = "edit print order"
# The express setting, read without regard to case, gives one 4 x 6 each.
expect frmOrdPrints.opt4x6singles.Value = True
expect frmOrdPrints.txtQty(0).Text = "1"
expect frmOrdPrints.txtQty(4).Text = "1"
expect frmOrdPrints.ctrlS1VScroll.Visible = True
expect frmOrdPrints.imgS1Back.Visible = False
expect frmOrdPrints.lblS1BillHead.Visible = False

# A decimal or a negative can only come by paste.
set frmOrdPrints.txtQty(0).Text = "1.5"
click frmOrdPrints.imgS1RightUpdate
expect message "Enter only integers" style 64 caption "Quillbay Picture Desk"
set frmOrdPrints.txtQty(0).Text = "-3"
click frmOrdPrints.imgS1RightUpdate
expect message "Enter only positive integers" style 64
set frmOrdPrints.txtQty(0).Text = ""
type frmOrdPrints.txtQty(0) "7x."
expect frmOrdPrints.txtQty(0).Text = "7"

# Nothing ordered at all.
click frmOrdPrints.imgClearSizes
expect frmOrdPrints.lblS1OrderCostVal.Caption = "$0.00"
click frmOrdPrints.imgS1Continue
expect message "Enter quantity for atleast one image" style 64

# Doubles, and a coupon that only the review can apply.
click frmOrdPrints.opt4x6dbls
expect frmOrdPrints.txtQty(0).Text = "2"
set frmOrdPrints.txtcouponnumber.Text = "SAVE10"
click frmOrdPrints.imgS1RightUpdate
expect message "Your coupon will be applied in the review order page" style 64
expect frmOrdPrints.lblS1CouponPerc.Visible = False

# Step 2: an empty name is marked, nothing goes to the service.
click frmOrdPrints.imgS1Continue
expect frmOrdPrints.lblHead.Caption = "Billing && Shipping"
expect frmOrdPrints.picS2MyAddressCont.Visible = True
set frmOrdPrints.txtS2CCName.Text = ""
type frmOrdPrints.txtS2CCNumber "4111-1111x"
expect frmOrdPrints.txtS2CCNumber.Text = "4111-1111"
click frmOrdPrints.imgS2Continue
expect frmOrdPrints.lblS2CCName.Caption = "name on card *"
expect frmOrdPrints.lblS2CCNumber.Caption = "card number *"
expect frmOrdPrints.lblS2Error.Visible = True
expect service calls LoginUser GetUserInfo GetPriceList

# Back to step 1, then Escape ends the order.
click frmOrdPrints.imgS2Back
expect frmOrdPrints.lblHead.Caption = "edit print order"
expect frmOrdPrints.imgS1Back.Visible = True
press frmOrdPrints "{ESC}"
expect form frmOrdPrints gone
expect session gsCouponCode = ""
expect no errors
