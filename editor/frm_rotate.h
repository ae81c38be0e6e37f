#ifndef QBPD_EDITOR_FRM_ROTATE_H_
#define QBPD_EDITOR_FRM_ROTATE_H_

#include "core/application.h"
#include "editor/file_rotation.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string_view>

namespace qbpd {

// The progress dialog of a rotation of the checked photos. Shown modally,
// it turns every photo of gdicSelectedPhotos in the direction of
// giCurrentOperation, one file after the other, shows which one and how far
// it has come, and closes itself a second after the last. Cancel, or the
// window's close box, stops the run between two photos: a photo is turned
// whole or not at all.
class frmRotate : public Form {
 public:
  static constexpr std::string_view kName = "frmRotate";
  explicit frmRotate(Application& app);

  Label lblHead{*this, "lblHead"};
  Label lblRotating{*this, "lblRotating"};
  Label lblRotatingPhotoNo{*this, "lblRotatingPhotoNo"};
  Label lblRotateImageName{*this, "lblRotateImageName"};
  Shape shProgressBar{*this, "shProgressBar"};
  Shape ImgProgressBar{*this, "ImgProgressBar"};
  Label lblPercent{*this, "lblPercent"};
  PictureButton imgCancel{*this, "imgCancel"};
  Timer tmrCheck{*this, "tmrCheck"};
  // Starts the run once the dialog is on the screen.
  Timer tmrStart{*this, "tmrStart"};

  // What the run does to the grid of the window that showed the dialog; set
  // before it is shown.
  void SetHooks(RotationHooks hooks) { hooks_ = std::move(hooks); }

  // Turns the checked photos, `direction` kRotateLeft or kRotateRight.
  void MultiImageRotation(int direction);

 protected:
  void Form_Load() override;
  void Form_Activate() override;
  void Form_QueryUnload(int& Cancel, int UnloadMode) override;

 private:
  void tmrStart_Timer();
  void tmrCheck_Timer();
  void imgCancel_Click();

  Application& app_;
  RotationHooks hooks_;
  bool mbCancel = false;
  int miTotal = 0;
  bool mbBusy = false;
  bool mbStopped = false;
};

}  // namespace qbpd

#endif  // QBPD_EDITOR_FRM_ROTATE_H_
