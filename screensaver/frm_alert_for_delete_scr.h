#ifndef QBPD_SCREENSAVER_FRM_ALERT_FOR_DELETE_SCR_H_
#define QBPD_SCREENSAVER_FRM_ALERT_FOR_DELETE_SCR_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string>
#include <string_view>

namespace qbpd {

// Asks before a screensaver is deleted. Remove deletes msName from scr.ini
// (its section, its name with the later names moved down, DefaultSsaver
// emptied when it was current) and from the program's list; the photos stay
// on disk. Cancel and Esc only close. mbDeleted tells the caller what came
// of it.
class frmAlertForDeleteScr : public Form {
 public:
  static constexpr std::string_view kName = "frmAlertForDeleteScr";
  explicit frmAlertForDeleteScr(Application& app);

  Label lblMessage{*this, "lblMessage"};
  Label lblNote{*this, "lblNote"};
  Label lblHelp{*this, "lblHelp"};
  PictureButton imgRemove{*this, "imgRemove"};
  PictureButton imgCancel{*this, "imgCancel"};

  // The screensaver to delete, set before the form is shown.
  std::string msName;
  bool mbDeleted = false;

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void imgRemove_Click();

  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_SCREENSAVER_FRM_ALERT_FOR_DELETE_SCR_H_
