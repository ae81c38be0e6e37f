# The preferences' "Display" tab: the slide interval with its slider, its
# check on leaving the field, on leaving the tab and on OK; the number
# fields' keys (letters, signs and backspace dropped, blanks let through);
# the explorer interval's limits; the zoom setting taken up at once.
make photos 2 "${PICTURES}/Start"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Display" SlideshowImageIntervalInSeconds = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ExplorerCloseIntervalInSeconds = "30"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Start"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" BaseFolder = "${PICTURES}/Camera"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200
menu frmMainWindow.mnuEPref
expect form frmPreferences modal
expect frmPreferences.Caption = "Preferences"
expect frmPreferences.tbsPref.SelectedTab = 1
expect frmPreferences.fraDisplay.Visible = True
expect frmPreferences.fraAccount.Visible = False
expect frmPreferences.lblSlideShowInterval.Caption = "Time interval between images :           seconds"
expect frmPreferences.lblZoomSett.Caption = "Size of the image displayed when the application starts :"
expect frmPreferences.optFitToWidth.Caption = "Fit to width"
expect frmPreferences.optOriginalSize.Caption = "Original size"
expect frmPreferences.optFitToWidth.Value = True
expect frmPreferences.txtSlideShowImageInterval.Text = "5"
expect frmPreferences.sliderImageInterval.Value = 5

# The slider and the text mirror each other.
scroll frmPreferences.sliderImageInterval 14
expect frmPreferences.txtSlideShowImageInterval.Text = "14"
type frmPreferences.txtSlideShowImageInterval "{BACKSPACE 2}8"
expect frmPreferences.sliderImageInterval.Value = 8

# Letters, signs and the decimal point are dropped; backspace works here.
type frmPreferences.txtSlideShowImageInterval "{BACKSPACE}a-+.x9"
expect frmPreferences.txtSlideShowImageInterval.Text = "9"

# Out of range on leaving the field: the message, and the edge passed.
type frmPreferences.txtSlideShowImageInterval "{BACKSPACE}21"
click frmPreferences.optOriginalSize
expect message "Slide show photo interval should be between 2 and 20" style 64
expect frmPreferences.txtSlideShowImageInterval.Text = "20"
type frmPreferences.txtSlideShowImageInterval "{BACKSPACE 2}1"
click frmPreferences.chkDefViewer
expect message "Slide show photo interval should be between 2 and 20" style 64
expect frmPreferences.txtSlideShowImageInterval.Text = "2"
click frmPreferences.chkDefViewer

# Leaving the tab with a bad interval keeps the "Display" tab.
set frmPreferences.txtSlideShowImageInterval.Text = "1"
tab frmPreferences.tbsPref 2
expect message "Slide show photo interval between 2 and 20" style 64
expect frmPreferences.tbsPref.SelectedTab = 1
expect frmPreferences.fraDisplay.Visible = True
expect frmPreferences.fraAccount.Visible = False
set frmPreferences.txtSlideShowImageInterval.Text = "21"
tab frmPreferences.tbsPref 3
expect message "Slide show photo interval between 2 and 20" style 64
expect frmPreferences.tbsPref.SelectedTab = 1
set frmPreferences.txtSlideShowImageInterval.Text = "2 0"
tab frmPreferences.tbsPref 4
expect message "Enter valid slide show photo interval. " style 64
expect frmPreferences.tbsPref.SelectedTab = 1

# On OK: not a number, a sign, out of range (the text becomes 2). OK's own
# checks meet a text set while the field hasn't the focus; a click on OK
# from the field judges it on leaving first.
click frmPreferences.cmdOK
expect message "Enter numerics for slide show photo Interval" style 64
expect form frmPreferences modal
click frmPreferences.optFitToWidth
set frmPreferences.txtSlideShowImageInterval.Text = "-7"
click frmPreferences.cmdOK
expect message "photo interval for slide show should not be -ve values" style 64
expect frmPreferences.txtSlideShowImageInterval.Text = "2"
click frmPreferences.optFitToWidth
set frmPreferences.txtSlideShowImageInterval.Text = "1"
click frmPreferences.cmdOK
expect message "Slide show photo interval between 2 and 20" style 64
expect frmPreferences.txtSlideShowImageInterval.Text = "2"
click frmPreferences.optFitToWidth
set frmPreferences.txtSlideShowImageInterval.Text = "21"
click frmPreferences.cmdOK
expect message "Slide show photo interval between 2 and 20" style 64
expect frmPreferences.txtSlideShowImageInterval.Text = "2"
click frmPreferences.optFitToWidth
set frmPreferences.txtSlideShowImageInterval.Text = "x1"
click frmPreferences.cmdOK
expect message "Enter numerics for slide show photo Interval" style 64
# The explorer field drops backspace and letters.
type frmPreferences.txtExpCloseTime "{BACKSPACE}x"
expect frmPreferences.txtExpCloseTime.Text = "30"
# From the slide field, OK's click judges it on leaving first (25 becomes
# 20), then runs its checks: the explorer interval 9 is refused.
set frmPreferences.txtExpCloseTime.Text = "9"
type frmPreferences.txtSlideShowImageInterval "{BACKSPACE 2}25"
tab frmPreferences.tbsPref 4
expect message "Slide show photo interval between 2 and 20" style 64
type frmPreferences.txtSlideShowImageInterval "{BACKSPACE 2}25"
click frmPreferences.cmdOK
expect message "Slide show photo interval should be between 2 and 20" style 64
expect message "Enter time interval for automatic explorer close which should in between 10 and 60" style 64
expect frmPreferences.txtSlideShowImageInterval.Text = "20"
expect frmPreferences.tbsPref.SelectedTab = 1

# The explorer interval: 61, 0, nothing and a blank inside are refused too,
# from another tab.
tab frmPreferences.tbsPref 4
set frmPreferences.txtExpCloseTime.Text = "61"
click frmPreferences.cmdOK
expect message "Enter time interval for automatic explorer close which should in between 10 and 60" style 64
set frmPreferences.txtExpCloseTime.Text = "0"
click frmPreferences.cmdOK
expect message "Enter time interval for automatic explorer close which should in between 10 and 60" style 64
set frmPreferences.txtExpCloseTime.Text = ""
click frmPreferences.cmdOK
expect message "Enter time interval for automatic explorer close which should in between 10 and 60" style 64
set frmPreferences.txtExpCloseTime.Text = "1 0"
click frmPreferences.cmdOK
expect message "Enter time interval for automatic explorer close which should in between 10 and 60" style 64
# With the box off the text doesn't matter.
click frmPreferences.chkCloseExplorer
expect frmPreferences.txtExpCloseTime.Enabled = False
expect frmPreferences.txtExpCloseTime.Text = ""
click frmPreferences.chkCloseExplorer
expect frmPreferences.txtExpCloseTime.Text = "10"
set frmPreferences.txtExpCloseTime.Text = "60"
click frmPreferences.optOriginalSize
click frmPreferences.cmdOK
expect form frmPreferences gone
expect setting "Software\Quillbay Picture Desk\Preferences\Display" SlideshowImageIntervalInSeconds = "20"
expect setting "Software\Quillbay Picture Desk\Preferences\Display" ExplorerCloseIntervalInSeconds = "60"
expect setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "OriginalSize"
expect frmMainWindow.tmrExplorer.Interval = 60000
expect session gbExplorerTimerOn = True
expect frmMainWindow.msZoomMode = "O"

# Explorer 10 passes, and the box off stops the timer.
menu frmMainWindow.mnuEPref
expect frmPreferences.optOriginalSize.Value = True
expect frmPreferences.sliderImageInterval.Value = 20
set frmPreferences.txtExpCloseTime.Text = "10"
click frmPreferences.cmdOK
expect form frmPreferences gone
expect frmMainWindow.tmrExplorer.Interval = 10000
menu frmMainWindow.mnuEPref
click frmPreferences.chkCloseExplorer
click frmPreferences.cmdOK
expect setting "Software\Quillbay Picture Desk\Preferences\Display" ExplorerCloseIntervalInSeconds = ""
expect frmMainWindow.tmrExplorer.Enabled = False
expect session gbExplorerTimerOn = False
expect no errors
