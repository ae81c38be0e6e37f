#ifndef QBPD_SCREENSAVER_FRM_SCR_ERRMSG_H_
#define QBPD_SCREENSAVER_FRM_SCR_ERRMSG_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string_view>

namespace qbpd {

// The small dialog of a screensaver command with no photo checked. Close and
// Esc close it; its Help label sends F1.
class frmScrErrmsg : public Form {
 public:
  static constexpr std::string_view kName = "frmScrErrmsg";
  explicit frmScrErrmsg(Application& app);

  Label lblMessage{*this, "lblMessage"};
  Label lblHelp{*this, "lblHelp"};
  PictureButton imgClose{*this, "imgClose"};

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_SCREENSAVER_FRM_SCR_ERRMSG_H_
