#ifndef QBPD_ONLINE_FRM_LOGIN_H_
#define QBPD_ONLINE_FRM_LOGIN_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string>
#include <string_view>

namespace qbpd {

// The login form: the account's e-mail address and password, "remember
// me", the forgot-password link and the way to sign-up. OK checks the
// entries and hands over to the connection window (frmNetConn), which comes
// back to this form with the failure in lblError when the login fails.
class frmLogin : public Form {
 public:
  static constexpr std::string_view kName = "frmLogin";
  explicit frmLogin(Application& app);

  Label lbltoQuillbay{*this, "lbltoQuillbay"};
  Label lblError{*this, "lblError"};
  Label lblEmailAdd{*this, "lblEmailAdd"};
  TextBox txtEmailAdd{*this, "txtEmailAdd"};
  Label lblPassword{*this, "lblPassword"};
  TextBox txtPassword{*this, "txtPassword"};
  CheckBox chkRemember{*this, "chkRemember"};
  Label lblForgotpass{*this, "lblForgotpass"};
  PictureButton imgOK{*this, "imgOK"};
  PictureButton imgCancel{*this, "imgCancel"};
  Label lblNeedAcc{*this, "lblNeedAcc"};
  Label lblSignUp{*this, "lblSignUp"};

  // Shows `text` in lblError in place of the greeting; an empty text leaves
  // the greeting.
  void ShowError(const std::string& text);
  // Both buttons on or off.
  void EnableButtons(bool enabled);

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void imgOK_Click();
  void imgCancel_Click();
  void lblForgotpass_Click();
  void lblSignUp_Click();
  // A failed check: the message, the buttons back on, the focus on `box`.
  void Refuse(const std::string& message, TextBox& box);

  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_FRM_LOGIN_H_
