#ifndef QBPD_CORE_FRM_ABOUT_US_H_
#define QBPD_CORE_FRM_ABOUT_US_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string_view>

namespace qbpd {

// The about box: the program's picture, its version from the settings, and
// an OK button. Enter, Esc or OK closes it.
class frmAboutUs : public Form {
 public:
  static constexpr std::string_view kName = "frmAboutUs";
  explicit frmAboutUs(Application& app);

  PictureBox imgLogo{*this, "imgLogo"};
  Label lblVersion{*this, "lblVersion"};
  PictureButton imgOK{*this, "imgOK"};

  // Puts the button back to its normal picture.
  void ShowDefImages();

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void imgOK_Click();
  void imgOK_MouseDown();
  void imgOK_MouseUp();
  void imgOK_MouseMove();

  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_CORE_FRM_ABOUT_US_H_
