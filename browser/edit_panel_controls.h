#ifndef QBPD_BROWSER_EDIT_PANEL_CONTROLS_H_
#define QBPD_BROWSER_EDIT_PANEL_CONTROLS_H_

#include "platform/forms/controls.h"
#include "platform/forms/form.h"

namespace qbpd {

// The main window's three edit panels (crop, red eye, correct colour) and
// the name and small copy of the photo being edited. They register with the
// window under their own names (frmMainWindow.fraCrop); the window lays them
// out in place of the folder pane and the grid while a panel is open.
class EditPanelControls {
 public:
  explicit EditPanelControls(Form& form) : form_(form) {}

 private:
  Form& form_;

 public:
  PictureBox imgAutoThumb{form_, "imgAutoThumb"};
  Label lblLeftImageName{form_, "lblLeftImageName"};
  Label lblManipHead{form_, "lblManipHead"};

  Frame fraCrop{form_, "fraCrop"};
  Label lblCropShape{form_, "lblCropShape"};
  Label lblChooseSize{form_, "lblChooseSize"};
  OptionButton opt4x6{form_, "opt4x6"};
  OptionButton opt5x7{form_, "opt5x7"};
  OptionButton opt8x10{form_, "opt8x10"};
  OptionButton optWallet{form_, "optWallet"};
  Label lblCropOrientation{form_, "lblCropOrientation"};
  PictureBox picCropOrntCont{form_, "picCropOrntCont"};
  OptionButton optHor{form_, "optHor"};
  OptionButton optVer{form_, "optVer"};
  PictureButton imgCropHor{form_, "imgCropHor"};
  PictureButton imgCropVert{form_, "imgCropVert"};
  Label lblResize{form_, "lblResize"};
  Label lblResizeText{form_, "lblResizeText"};
  Label lblCropFinished{form_, "lblCropFinished"};

  Frame fraRedEye{form_, "fraRedEye"};
  Label lblGetRedOut{form_, "lblGetRedOut"};
  Label lblGetRedOutText{form_, "lblGetRedOutText"};
  Label lblSelect{form_, "lblSelect"};
  Label lblSelectText{form_, "lblSelectText"};
  Label lblRedEyeFinished{form_, "lblRedEyeFinished"};

  Frame fraAutoColor{form_, "fraAutoColor"};
  Label lblChooseOne{form_, "lblChooseOne"};
  Label lblChooseOneText{form_, "lblChooseOneText"};
  OptionButton optViewOriginal{form_, "optViewOriginal"};
  Label lblViewOriginal{form_, "lblViewOriginal"};
  OptionButton optViewCorrected{form_, "optViewCorrected"};
  Label lblViewCorrected{form_, "lblViewCorrected"};
  Label lblAutoFixFinished{form_, "lblAutoFixFinished"};
};

}  // namespace qbpd

#endif  // QBPD_BROWSER_EDIT_PANEL_CONTROLS_H_
