#ifndef QBPD_CAMERA_FRM_CAMERA_COPY_H_
#define QBPD_CAMERA_FRM_CAMERA_COPY_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string_view>

namespace qbpd {

// Asks whether to download the photos of a device just attached. OK writes
// DisplayDialogtoCopy from the box (clearing it turns the question off for
// good) and sets gbCopyAllowed; Cancel and Escape clear it.
class frmCameraCopy : public Form {
 public:
  static constexpr std::string_view kName = "frmCameraCopy";
  explicit frmCameraCopy(Application& app);

  Label lblMessage{*this, "lblMessage"};
  CheckBox chkDisplayCameraCopyImages{*this, "chkDisplayCameraCopyImages"};
  PictureButton imgOK{*this, "imgOK"};
  PictureButton imgCancel{*this, "imgCancel"};

 protected:
  void Form_Load() override;
  void Form_Activate() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void imgOK_Click();
  void imgCancel_Click();

  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_CAMERA_FRM_CAMERA_COPY_H_
