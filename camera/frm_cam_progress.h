#ifndef QBPD_CAMERA_FRM_CAM_PROGRESS_H_
#define QBPD_CAMERA_FRM_CAM_PROGRESS_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string_view>

namespace qbpd {

// The progress of a transfer. With txtDeviceType "CR" it copies the card of
// txtCamerastring into gsTransferFolder; with "CM" it waits for the camera
// transfer helper's last answer. The bar steps while the work runs, then
// runs up to its end and the dialog closes.
class frmCamProgress : public Form {
 public:
  static constexpr std::string_view kName = "frmCamProgress";
  explicit frmCamProgress(Application& app);

  Label lblMessage{*this, "lblMessage"};
  ProgressBar ctlProgCam{*this, "ctlProgCam"};
  TextBox txtCamerastring{*this, "txtCamerastring"};
  TextBox txtDeviceType{*this, "txtDeviceType"};
  Timer tmrProg{*this, "tmrProg"};
  Timer tmrCameraProg{*this, "tmrCameraProg"};

 protected:
  void Form_Load() override;
  void Form_Activate() override;
  void Form_QueryUnload(int& Cancel, int UnloadMode) override;

 private:
  void tmrProg_Timer();
  void tmrCameraProg_Timer();

  Application& app_;
  int miMode = 1;
  bool mbDone = false;
  bool mbStarted = false;
  bool mbWorking = false;
};

}  // namespace qbpd

#endif  // QBPD_CAMERA_FRM_CAM_PROGRESS_H_
