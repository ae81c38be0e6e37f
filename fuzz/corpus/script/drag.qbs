drag frmMainWindow.picDisplay from 10,20 to photo 300,200
