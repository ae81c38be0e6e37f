#ifndef QBPD_SCREENSAVER_FRM_PREVIEW_H_
#define QBPD_SCREENSAVER_FRM_PREVIEW_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string_view>

namespace qbpd {

// Plays a screensaver for 15 seconds over the whole screen: the section
// gsPreviewName of gsPreviewIniPath, giPreviewInterval seconds a photo, with
// the transitions of gsPreviewEffects. A key or the mouse ends it at once.
// The mouse cursor is hidden while it plays and given back when it closes.
class frmPreview : public Form {
 public:
  static constexpr std::string_view kName = "frmPreview";
  explicit frmPreview(Application& app);

  ScreensaverPlayer ctlScr{*this, "ctlScr"};
  Timer tmrOneSecond{*this, "tmrOneSecond"};
  Timer tmr15Seconds{*this, "tmr15Seconds"};

 protected:
  void Form_Load() override;
  void Form_Resize() override;
  void Form_KeyDown(int& KeyCode, int Shift) override;
  void Form_Unload(int& Cancel) override;

 private:
  void tmr15Seconds_Timer();
  void Close();

  Application& app_;
  bool mbStarted = false;
  bool mbPlaying = false;
  bool mbCursorHidden = false;
};

}  // namespace qbpd

#endif  // QBPD_SCREENSAVER_FRM_PREVIEW_H_
