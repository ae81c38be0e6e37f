#ifndef QBPD_PRINTORDER_FRM_EDIT_ADDRESS_H_
#define QBPD_PRINTORDER_FRM_EDIT_ADDRESS_H_

#include "core/application.h"
#include "online/order_data.h"
#include "online/service_client.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <memory>
#include <string>
#include <string_view>

namespace qbpd {

// The address dialog ("edit shipping address"): changes the account's
// street, city, state and zip from within the print order. OK checks every
// field (marking each failing label), stores the address with
// UpdateUserAddress and, when the service took it, replaces gsaUserAddress,
// sets gbAddressChanged and closes. A failure keeps the boxes as typed and
// the stored address unchanged. The phone boxes are checked but go nowhere.
class frmEditAddress : public Form {
 public:
  static constexpr std::string_view kName = "frmEditAddress";
  explicit frmEditAddress(Application& app);

  Label lblHeading{*this, "lblHeading"};
  Label lblErrInfm{*this, "lblErrInfm"};
  Label lblNameHead{*this, "lblNameHead"};
  Label lblName{*this, "lblName"};
  Label lblStreet{*this, "lblStreet"};
  TextBox txtStreet1{*this, "txtStreet1"};
  TextBox txtStreet2{*this, "txtStreet2"};
  Label lblCity{*this, "lblCity"};
  TextBox txtCity{*this, "txtCity"};
  Label lblState{*this, "lblState"};
  ComboBox cboState{*this, "cboState"};
  Label lblZip{*this, "lblZip"};
  TextBox txtZipMailingAddrs{*this, "txtZipMailingAddrs"};
  Label lblPhone{*this, "lblPhone"};
  TextBox txtPhone1{*this, "txtPhone1"};
  TextBox txtPhone2{*this, "txtPhone2"};
  PictureButton imgOK{*this, "imgOK"};
  PictureButton imgCancel{*this, "imgCancel"};
  Timer tmrClose{*this, "tmrClose"};

  ctlExtAPI& ExtAPI() { return *ExtAPI_; }
  // The order whose account records the dialog edits (gsaUserAddress,
  // gsaUserCard, gbAddressChanged); without one it edits a record of its
  // own, empty at first.
  void EditAccountOf(PrintOrderData& order) { account_ = &order; }

 protected:
  void Form_Load() override;
  void Form_Activate() override;
  void Form_KeyPress(int& KeyAscii) override;
  void Form_QueryUnload(int& Cancel, int UnloadMode) override;

 private:
  void imgOK_Click();
  void imgCancel_Click();
  void tmrClose_Timer();
  void txtZipMailingAddrs_KeyPress(EventArgs& e);
  void txtPhone1_KeyPress(EventArgs& e);
  void txtPhone2_KeyPress(EventArgs& e);
  void EnableButtons(bool enabled);
  // Step 2 of OK: every field checked, every failure marked.
  bool CheckFields();

  Application& app_;
  std::unique_ptr<ctlExtAPI> ExtAPI_;
  // The copy of gsaUserAddress that OK fills and stores.
  StringArray msaAddress;
  PrintOrderData own_;
  PrintOrderData* account_ = &own_;
  bool mbClosing = false;
};

}  // namespace qbpd

#endif  // QBPD_PRINTORDER_FRM_EDIT_ADDRESS_H_
