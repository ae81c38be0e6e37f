#ifndef QBPD_SCREENSAVER_FRM_SCREEN_SAVER_H_
#define QBPD_SCREENSAVER_FRM_SCREEN_SAVER_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string>
#include <string_view>

namespace qbpd {

// The first step of making a screensaver of the checked photos: a name for a
// new one, or an existing one to add them to. On load it makes scr.ini when
// missing and repairs every screensaver (photos gone from the disk drop out;
// a screensaver with none left goes). One of three frames shows:
// fraSingleCont (a name only: Create new, or no screensaver yet),
// fraPrevCont (an existing one only: Add photos), or fraMultiCont (either,
// from the main window's button). Creating or adding goes on to
// frmScreensaverstep2; Cancel and Esc close.
class frmScreenSaver : public Form {
 public:
  static constexpr std::string_view kName = "frmScreenSaver";
  explicit frmScreenSaver(Application& app);

  Label lblHead{*this, "lblHead"};
  Frame fraMultiCont{*this, "fraMultiCont"};
  OptionButton optnewscreensaver{*this, "optnewscreensaver"};
  Label lblNewName{*this, "lblNewName"};
  TextBox txtNewscreensaver{*this, "txtNewscreensaver"};
  OptionButton optAddtoprev{*this, "optAddtoprev"};
  ComboBox cboPrevSsaver{*this, "cboPrevSsaver"};
  PictureButton imgOK{*this, "imgOK"};
  PictureButton imgCancel{*this, "imgCancel"};
  Frame fraSingleCont{*this, "fraSingleCont"};
  Label lblSingleName{*this, "lblSingleName"};
  TextBox txtSingleScrSaver{*this, "txtSingleScrSaver"};
  PictureButton imgSingleContinue{*this, "imgSingleContinue"};
  PictureButton imgSingleCancel{*this, "imgSingleCancel"};
  Frame fraPrevCont{*this, "fraPrevCont"};
  Label lblPrevName{*this, "lblPrevName"};
  ComboBox cboScrSaverList{*this, "cboScrSaverList"};
  PictureButton imgPrevAddPhotos{*this, "imgPrevAddPhotos"};
  PictureButton imgPrevCancel{*this, "imgPrevCancel"};

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void imgOK_Click();
  void imgSingleContinue_Click();
  void imgPrevAddPhotos_Click();
  void Cancel_Click();
  // The trimmed name written back to `box`; false (after its message) when
  // it breaks a rule. `exists_message` is the wording of the dialog's
  // button.
  bool ValidName(TextBox& box, const char* exists_message);
  void Create(const std::string& name);
  void AddTo(const std::string& name);
  // Unloads this dialog and shows the second step.
  void ShowStep2();

  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_SCREENSAVER_FRM_SCREEN_SAVER_H_
