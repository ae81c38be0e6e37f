#ifndef QBPD_ONLINE_FRM_REGISTRATION_H_
#define QBPD_ONLINE_FRM_REGISTRATION_H_

#include "core/application.h"
#include "online/service_client.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

// Sign-up in three steps: account info, mailing address, card. Each step's
// fields are checked on Continue, every failing label marked at once; the
// address and the card may stay wholly empty. After the third step
// RegisterUser makes the account, the user is logged in with it and the
// connection window goes on with the online action in hand. An answer
// about a field brings its step back with the field's label marked.
class frmRegistration : public Form {
 public:
  static constexpr std::string_view kName = "frmRegistration";
  static constexpr int kFieldCount = 16;
  explicit frmRegistration(Application& app);

  Label lblActMailCCInfoTitle{*this, "lblActMailCCInfoTitle"};
  Label lblInfo{*this, "lblInfo"};
  Label lblErrInfm{*this, "lblErrInfm"};
  // Step 1: account info.
  Frame fraStep1{*this, "fraStep1"};
  Label lblFName{*this, "lblFName"};
  TextBox txtFirstName{*this, "txtFirstName"};
  Label lblLName{*this, "lblLName"};
  TextBox txtLastName{*this, "txtLastName"};
  Label lblEmail{*this, "lblEmail"};
  TextBox txtEmailId{*this, "txtEmailId"};
  Label lblPwd{*this, "lblPwd"};
  TextBox txtPwd{*this, "txtPwd"};
  Label lblRePwd{*this, "lblRePwd"};
  TextBox txtRePwd{*this, "txtRePwd"};
  CheckBox chkRememberme{*this, "chkRememberme"};
  CheckBox chkAcceptterms{*this, "chkAcceptterms"};
  Label lblTermsCond{*this, "lblTermsCond"};
  // Step 2: mailing address.
  Frame fraStep2{*this, "fraStep2"};
  Label lblStreet{*this, "lblStreet"};
  TextBox txtStreet1{*this, "txtStreet1"};
  TextBox txtStreet2{*this, "txtStreet2"};
  Label lblcity{*this, "lblcity"};
  TextBox txtCity{*this, "txtCity"};
  Label lblState{*this, "lblState"};
  ComboBox cboState{*this, "cboState"};
  Label lblZip{*this, "lblZip"};
  TextBox txtZipMailingAddrs{*this, "txtZipMailingAddrs"};
  Label lblPhone{*this, "lblPhone"};
  TextBox txtPhone1{*this, "txtPhone1"};
  TextBox txtPhone2{*this, "txtPhone2"};
  Label lblOptional{*this, "lblOptional"};
  // Step 3: card.
  Frame frastep3{*this, "frastep3"};
  Label lblNameOnCard{*this, "lblNameOnCard"};
  TextBox txtNameonCard{*this, "txtNameonCard"};
  Label lblCardNumber{*this, "lblCardNumber"};
  TextBox txtCardNumber{*this, "txtCardNumber"};
  Label lblExpDate{*this, "lblExpDate"};
  ComboBox cboMonth{*this, "cboMonth"};
  ComboBox cboYear{*this, "cboYear"};
  Label lblBillZip{*this, "lblBillZip"};
  TextBox txtBillZip{*this, "txtBillZip"};
  PictureButton imgBack{*this, "imgBack"};
  PictureButton imgContinue{*this, "imgContinue"};
  PictureButton imgCancel{*this, "imgCancel"};

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void LayOut();
  void ShowStep(int step);
  void AddMonthYearValues();
  // Every field label back to its normal caption, in black.
  void ResetFieldLabels();
  void MarkLabel(Label& label);
  void AddError(const std::string& sentence);
  bool ValidateAccountStep();
  bool ValidateAddressStep();
  bool ValidateCardStep();
  void SubmitRegistration();
  void ShowServerError(const std::string& code, const std::string& text);
  void EnableButtons();

  void imgContinue_Click();
  void imgBack_Click();
  void imgCancel_Click();
  void lblTermsCond_Click();
  void chkAcceptterms_Click();
  void ZipKeyPress(EventArgs& e);
  void txtPhone1_KeyPress(EventArgs& e);
  void txtPhone2_KeyPress(EventArgs& e);
  void txtCardNumber_KeyPress(EventArgs& e);

  Application& app_;
  std::unique_ptr<ctlExtAPI> ExtAPI_;
  std::vector<std::string> msaFields;
  int miStep = 1;
  std::string msErrCode;
  std::string msErrText;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_FRM_REGISTRATION_H_
