expect frmMainWindow.lblName.Caption = "a \"b\"" # note
