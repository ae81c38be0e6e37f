click frmMainWindow.imgThumbnail(3) at photo 12.5,40
