#ifndef QBPD_SCREENSAVER_FRM_DISPLAY_SCR_LIST_H_
#define QBPD_SCREENSAVER_FRM_DISPLAY_SCR_LIST_H_

#include "core/application.h"
#include "platform/forms/control_array.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string>
#include <string_view>

namespace qbpd {

// Picks the current screensaver: one option a screensaver, named by it, the
// current one set; the scroll bar moves them when they don't fit. OK makes
// the chosen one current (SetDefaultScreensaver); Cancel and Esc only close.
class frmDisplayScrList : public Form {
 public:
  static constexpr std::string_view kName = "frmDisplayScrList";
  explicit frmDisplayScrList(Application& app);

  Label lblHead{*this, "lblHead"};
  PictureBox picList{*this, "picList"};
  PictureBox picListInner{*this, "picListInner"};
  ControlArray<OptionButton> optScrSaverName{*this, "optScrSaverName"};
  ScrollBar ctlScrListScroll{*this, "ctlScrListScroll"};
  Label lblHelp{*this, "lblHelp"};
  PictureButton imgOK{*this, "imgOK"};
  PictureButton imgCancel{*this, "imgCancel"};

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void imgOK_Click();

  Application& app_;
  // The caption of the option clicked last.
  std::string msChosen;
};

}  // namespace qbpd

#endif  // QBPD_SCREENSAVER_FRM_DISPLAY_SCR_LIST_H_
