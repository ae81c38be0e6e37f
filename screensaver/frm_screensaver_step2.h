#ifndef QBPD_SCREENSAVER_FRM_SCREENSAVER_STEP2_H_
#define QBPD_SCREENSAVER_FRM_SCREENSAVER_STEP2_H_

#include "core/application.h"
#include "platform/forms/control_array.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "screensaver/thumbnail_strip.h"

#include <string>
#include <string_view>

namespace qbpd {

// The second step: says that gsCurrentScrName was created or updated, shows
// its photos, and offers to make it the current screensaver, to preview it
// (frmPreview, a photo a second) or to edit it (frmEditscreensaver).
// scr.ini is already written; Continue makes it current (or not) and closes.
class frmScreensaverstep2 : public Form {
 public:
  static constexpr std::string_view kName = "frmScreensaverstep2";
  explicit frmScreensaverstep2(Application& app);

  Label lblScrUpdated{*this, "lblScrUpdated"};
  PictureBox picStrip{*this, "picStrip"};
  PictureBox picStripInner{*this, "picStripInner"};
  ControlArray<Thumbnail> ctlQuilThumbnail{*this, "ctlQuilThumbnail"};
  ScrollBar ctrlImageListVScroll{*this, "ctrlImageListVScroll"};
  Label lblPhotosSelect{*this, "lblPhotosSelect"};
  CheckBox chkDefScrSaver{*this, "chkDefScrSaver"};
  CommandButton imgPreview{*this, "imgPreview"};
  Label lblPreview{*this, "lblPreview"};
  CommandButton imgEditScrSaver{*this, "imgEditScrSaver"};
  PictureButton imgContinue{*this, "imgContinue"};

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void imgContinue_Click();
  void imgEditScrSaver_Click();
  void imgPreview_Click();
  void chkDefScrSaver_Click();
  // Reads the section's interval, effects and photos into the form.
  void LoadScreensaver();

  Application& app_;
  ThumbnailStrip strip_{picStrip, picStripInner, ctlQuilThumbnail,
                        ctrlImageListVScroll};
};

}  // namespace qbpd

#endif  // QBPD_SCREENSAVER_FRM_SCREENSAVER_STEP2_H_
