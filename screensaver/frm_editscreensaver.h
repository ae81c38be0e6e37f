#ifndef QBPD_SCREENSAVER_FRM_EDITSCREENSAVER_H_
#define QBPD_SCREENSAVER_FRM_EDITSCREENSAVER_H_

#include "core/application.h"
#include "platform/forms/control_array.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "screensaver/thumbnail_strip.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

// Changes a screensaver: its photos (checked ones removed, never the last),
// its interval (2 to 999 seconds), its transition effects, whether it is
// current, and the start delay of the desktop's screen saver (1 to 9999
// minutes). OK checks the two numbers and writes everything at once; Cancel
// and Esc write nothing. Preview plays the unsaved state from TempScr.ini;
// Delete asks frmAlertForDeleteScr.
class frmEditscreensaver : public Form {
 public:
  static constexpr std::string_view kName = "frmEditscreensaver";
  explicit frmEditscreensaver(Application& app);

  Label lblHead{*this, "lblHead"};
  ComboBox cboScreensaverTitles{*this, "cboScreensaverTitles"};
  Label lblTimeOut{*this, "lblTimeOut"};
  TextBox txtScrSaverTimeOut{*this, "txtScrSaverTimeOut"};
  Label lblMinutes{*this, "lblMinutes"};
  Label lblInterval{*this, "lblInterval"};
  TextBox txtImageInterval{*this, "txtImageInterval"};
  Label lblSeconds{*this, "lblSeconds"};
  ControlArray<CommandButton> imgUp{*this, "imgUp"};
  ControlArray<CommandButton> imgDown{*this, "imgDown"};
  Frame fraEffects{*this, "fraEffects"};
  CheckBox chkFromCentre{*this, "chkFromCentre"};
  CheckBox chkDiagonal{*this, "chkDiagonal"};
  CheckBox chkTopToBottom{*this, "chkTopToBottom"};
  CheckBox chkLeftToRight{*this, "chkLeftToRight"};
  CheckBox chkDefScrSaver{*this, "chkDefScrSaver"};
  PictureBox picStrip{*this, "picStrip"};
  PictureBox picStripInner{*this, "picStripInner"};
  ControlArray<Thumbnail> ctlQuilThumbnail{*this, "ctlQuilThumbnail"};
  ScrollBar ctrlImageListVScroll{*this, "ctrlImageListVScroll"};
  Label lblPhotosSelect{*this, "lblPhotosSelect"};
  CommandButton imgRemovePhotos{*this, "imgRemovePhotos"};
  CommandButton imgPreview{*this, "imgPreview"};
  CommandButton imgDeleteScrsaver{*this, "imgDeleteScrsaver"};
  Label lblHelp{*this, "lblHelp"};
  PictureButton imgOK{*this, "imgOK"};
  PictureButton imgCancel{*this, "imgCancel"};

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void cboScreensaverTitles_Click();
  void LoadScreensaver();
  void ShowPhotos();
  void Spin(int index, bool up);
  void imgRemovePhotos_Click();
  void imgOK_Click();
  void imgPreview_Click();
  void imgDeleteScrsaver_Click();
  void SetButtonsEnabled(bool enabled);

  Application& app_;
  ThumbnailStrip strip_{picStrip, picStripInner, ctlQuilThumbnail,
                        ctrlImageListVScroll};
  // The name being edited.
  std::string msName;
  // The photos in playing order, and the positions of the checked ones.
  std::vector<std::string> msaPhotos;
  std::set<int> mdicChecked;
};

}  // namespace qbpd

#endif  // QBPD_SCREENSAVER_FRM_EDITSCREENSAVER_H_
