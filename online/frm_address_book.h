#ifndef QBPD_ONLINE_FRM_ADDRESS_BOOK_H_
#define QBPD_ONLINE_FRM_ADDRESS_BOOK_H_

#include "core/application.h"
#include "online/service_client.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <memory>
#include <string>
#include <string_view>

namespace qbpd {

// The account's address book, opened from the share form: a list with
// check marks; Continue puts the checked addresses behind the share form's
// recipients. An empty book says so and offers Continue alone.
class frmAddressBook : public Form {
 public:
  static constexpr std::string_view kName = "frmAddressBook";
  explicit frmAddressBook(Application& app);

  Label lblHeading{*this, "lblHeading"};
  Label lblEmailListText{*this, "lblEmailListText"};
  ListBox lstEmailList{*this, "lstEmailList"};
  Label lblSelectAll{*this, "lblSelectAll"};
  Label lblDeselectAll{*this, "lblDeselectAll"};
  Label lblEmptyBuddys{*this, "lblEmptyBuddys"};
  PictureButton imgContinue{*this, "imgContinue"};
  PictureButton imgCancel{*this, "imgCancel"};

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void lblSelectAll_Click();
  void lblDeselectAll_Click();
  void CheckAll(bool value);
  void imgContinue_Click();
  void imgCancel_Click();

  Application& app_;
  std::unique_ptr<ctlExtAPI> ExtAPI_;
  std::string msErrCode;
  std::string msErrText;
  // The list's horizontal extent in pixels.
  int miHorizontalExtent = 0;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_FRM_ADDRESS_BOOK_H_
