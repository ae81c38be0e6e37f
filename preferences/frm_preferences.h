#ifndef QBPD_PREFERENCES_FRM_PREFERENCES_H_
#define QBPD_PREFERENCES_FRM_PREFERENCES_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string>
#include <string_view>

namespace qbpd {

class frmMainWindow;  // NOLINT(readability-identifier-naming)

// The user's settings on four tabs: display, account, folders and camera
// transfer. The form reads them all when it loads; OK checks them in a fixed
// order, stopping at the first failure with its message and its field's tab,
// writes them and has the main window take them up. Cancel and Escape close
// it and write nothing.
class frmPreferences : public Form {
 public:
  static constexpr std::string_view kName = "frmPreferences";
  explicit frmPreferences(Application& app);

  // The tabs, counted from 1 as the tab strip counts them.
  static constexpr int kDisplayTab = 1;
  static constexpr int kAccountTab = 2;
  static constexpr int kFoldersTab = 3;
  static constexpr int kCameraTab = 4;

  TabStrip tbsPref{*this, "tbsPref"};

  Frame fraDisplay{*this, "fraDisplay"};
  Label lblSlideShowInterval{*this, "lblSlideShowInterval"};
  TextBox txtSlideShowImageInterval{*this, "txtSlideShowImageInterval"};
  Slider sliderImageInterval{*this, "sliderImageInterval"};
  Label lblZoomSett{*this, "lblZoomSett"};
  OptionButton optFitToWidth{*this, "optFitToWidth"};
  OptionButton optOriginalSize{*this, "optOriginalSize"};
  CheckBox chkDefViewer{*this, "chkDefViewer"};
  CheckBox chkCloseExplorer{*this, "chkCloseExplorer"};
  Label lblExpCloseCont{*this, "lblExpCloseCont"};
  TextBox txtExpCloseTime{*this, "txtExpCloseTime"};

  Frame fraAccount{*this, "fraAccount"};
  Label lblAccountHead{*this, "lblAccountHead"};
  Label lblLogin{*this, "lblLogin"};
  TextBox txtLogin{*this, "txtLogin"};
  Label lblPassword{*this, "lblPassword"};
  TextBox txtPassword{*this, "txtPassword"};
  CheckBox chkAutoLogin{*this, "chkAutoLogin"};

  Frame fraFolders{*this, "fraFolders"};
  CheckBox chkLastOpenFolder{*this, "chkLastOpenFolder"};
  Label lblOpenFolder{*this, "lblOpenFolder"};
  TextBox txtStartUpFolder{*this, "txtStartUpFolder"};
  CommandButton cmdBrowseFolder{*this, "cmdBrowseFolder"};
  Label lblRecentFolderHead{*this, "lblRecentFolderHead"};
  TextBox txtRecentFolders{*this, "txtRecentFolders"};
  Label lblExpressPrints{*this, "lblExpressPrints"};
  OptionButton opt4x6Singles{*this, "opt4x6Singles"};
  OptionButton opt4x6Doubles{*this, "opt4x6Doubles"};
  OptionButton opt5x7Singles{*this, "opt5x7Singles"};

  Frame fraCamera{*this, "fraCamera"};
  CheckBox ChkDetectUSB{*this, "ChkDetectUSB"};
  CheckBox chkDisplayCameraCopyImages{*this, "chkDisplayCameraCopyImages"};
  Label lblDefFolder{*this, "lblDefFolder"};
  TextBox txtBaseFolder{*this, "txtBaseFolder"};
  CommandButton cmdBrowseForBaseFolder{*this, "cmdBrowseForBaseFolder"};
  Label lblFolderName{*this, "lblFolderName"};
  ComboBox cboFolderName{*this, "cboFolderName"};
  Label lblPhotoName{*this, "lblPhotoName"};
  ComboBox cboPhotoName{*this, "cboPhotoName"};
  CheckBox chkDeleteImagesFromCamera{*this, "chkDeleteImagesFromCamera"};

  CommandButton cmdOK{*this, "cmdOK"};
  CommandButton cmdCancel{*this, "cmdCancel"};

 protected:
  void Form_Load() override;
  // Escape acts as Cancel from every field, the number fields' key filter
  // included.
  void Form_KeyPress(int& KeyAscii) override;

 private:
  // The controls' places and captions (frm_preferences_layout.cpp).
  void LayOut();
  // Form_Load's steps.
  void LoadDisplay();
  void LoadAccount();
  void LoadFolders();
  void LoadCamera();

  // Shows the frame of `tab` and hides the other three.
  void ShowTab(int tab);
  void tbsPref_Click();
  void txtSlideShowImageInterval_Change();
  void txtSlideShowImageInterval_LostFocus();
  void sliderImageInterval_Change();
  void chkCloseExplorer_Click();
  void chkLastOpenFolder_Click();
  void ChkDetectUSB_Click();
  void cmdBrowseFolder_Click();
  void cmdBrowseForBaseFolder_Click();
  void AccountField_LostFocus();
  // The key filter of the number fields; `backspace` lets backspace through.
  static void NumberKeys(EventArgs& e, bool backspace);
  void SetExplorerField(bool enabled);

  // OK's checks and writes (frm_preferences_ok.cpp). Each check returns
  // false after showing its message and selecting its field.
  void cmdOK_Click();
  void cmdCancel_Click();
  bool Refuse(const std::string& message, int tab, Control& field);
  bool CheckSlideInterval();
  void WriteDefaultViewer();
  bool CheckAndWriteExplorerClose();
  bool CheckRecentFolders();
  bool CheckStartFolder();
  bool CheckAccount();
  bool CheckBaseFolder();
  void WriteSettings();
  void TellMainWindow();
  // A platform change that failed: recorded by the host, not shown, as the
  // program's other unplanned failures.
  void PlatformFailed(const std::string& what, const std::string& error);

  Application& app_;
  // Change events are ignored while the form loads.
  bool mbLoading = false;
  // The tab on show, for the check on leaving the "Display" tab.
  int miCurrentTab = kDisplayTab;
  bool mbTabChecking = false;
  // The number of recent folders read at load, for the trim on OK.
  int miOldRecentFolders = 0;
};

}  // namespace qbpd

#endif  // QBPD_PREFERENCES_FRM_PREFERENCES_H_
