# The preferences and the desktop: the default viewer of JPEG photos in the
# user's mimeapps.list (the handler before given back, other associations
# kept), the device monitor's autostart entry, and Cancel and Escape
# writing nothing.
make photos 1 "${PICTURES}/Start"
write file "${HOME}/.config/mimeapps.list" "[Default Applications]\ntext/plain=org.gnome.TextEditor.desktop\nimage/jpeg=org.gnome.eog.desktop;\n\n[Added Associations]\nimage/png=gimp.desktop;\n"
setting "Software\Quillbay Picture Desk\Preferences\Display" NoOfRecentFolders = "5"
setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
setting "Software\Quillbay Picture Desk\Preferences\Display" SlideshowImageIntervalInSeconds = "6"
setting "Software\Quillbay Picture Desk\Preferences\Settings" LastOpenFolderInPreviousSession = "False"
setting "Software\Quillbay Picture Desk\Preferences\Settings" DefaultFolder = "${PICTURES}/Start"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" BaseFolder = "${PICTURES}/Camera"
setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DetectUSBDevices = "True"
setting "Software\Quillbay Picture Desk" Version = "1.0.0"

start
wait 200

# Cancel and Escape write nothing.
menu frmMainWindow.mnuEPref
click frmPreferences.chkDefViewer
click frmPreferences.optOriginalSize
set frmPreferences.txtSlideShowImageInterval.Text = "9"
click frmPreferences.cmdCancel
expect form frmPreferences gone
menu frmMainWindow.mnuEPref
expect frmPreferences.chkDefViewer.Value = 0
tab frmPreferences.tbsPref 4
click frmPreferences.ChkDetectUSB
press frmPreferences "{ESC}"
expect form frmPreferences gone
expect setting "Software\Quillbay Picture Desk\Preferences\Display" ZoomSettings = "FitToWidth"
expect setting "Software\Quillbay Picture Desk\Preferences\Display" SlideshowImageIntervalInSeconds = "6"
expect setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DetectUSBDevices = "True"
expect setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" FolderName = ""
expect setting "Classes\.jpg" "" = ""
expect file "${HOME}/.config/mimeapps.list" contains "image/jpeg=org.gnome.eog.desktop;"
expect file "${HOME}/.config/autostart/qbpd-devmon.desktop" missing

# Ticked: this program is the default of image/jpeg; the rest stays.
menu frmMainWindow.mnuEPref
click frmPreferences.chkDefViewer
click frmPreferences.cmdOK
expect form frmPreferences gone
expect setting "Classes\.jpg" "" = "QBPDJPG"
expect setting "Classes\.jpe" "" = "QBPDJPG"
expect setting "Classes\.jpeg" "" = "QBPDJPG"
expect file "${HOME}/.config/mimeapps.list" contains "[Default Applications]\ntext/plain=org.gnome.TextEditor.desktop\nimage/jpeg=quillbay-picture-desk.desktop;\n\n[Added Associations]\nimage/png=gimp.desktop;\n"

# Unticked: the handler before has it back.
menu frmMainWindow.mnuEPref
expect frmPreferences.chkDefViewer.Value = 1
click frmPreferences.chkDefViewer
click frmPreferences.cmdOK
expect setting "Classes\.jpeg" "" = "jpegfile"
expect file "${HOME}/.config/mimeapps.list" contains "[Default Applications]\ntext/plain=org.gnome.TextEditor.desktop\nimage/jpeg=org.gnome.eog.desktop;\n\n[Added Associations]\nimage/png=gimp.desktop;\n"

# The device monitor: off hides its autostart entry, on shows it again.
menu frmMainWindow.mnuEPref
tab frmPreferences.tbsPref 4
click frmPreferences.ChkDetectUSB
expect frmPreferences.chkDisplayCameraCopyImages.Enabled = False
click frmPreferences.cmdOK
expect setting "Software\Quillbay Picture Desk\Preferences\CameraTransfer" DetectUSBDevices = "False"
expect file "${HOME}/.config/autostart/qbpd-devmon.desktop" contains "Hidden=true"
menu frmMainWindow.mnuEPref
tab frmPreferences.tbsPref 4
expect frmPreferences.ChkDetectUSB.Value = 0
click frmPreferences.ChkDetectUSB
click frmPreferences.cmdOK
expect file "${HOME}/.config/autostart/qbpd-devmon.desktop" contains "Hidden=false"
expect file "${HOME}/.config/autostart/qbpd-devmon.desktop" contains "qbpd-devmon\"\n"
expect no errors
