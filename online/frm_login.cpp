#include "online/frm_login.h"

#include "core/button_pictures.h"
#include "core/settings.h"
#include "core/validations.h"
#include "core/web_links.h"
#include "online/online_common.h"
#include "online/password_characters.h"
#include "platform/forms/keys.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 5520;
constexpr int kFormHeight = 3900;
constexpr int kMargin = 240;
constexpr int kFieldLeft = 1800;
constexpr int kFieldWidth = 3360;
constexpr int kFieldHeight = 315;
constexpr int kButtonWidth = 1200;
constexpr int kButtonHeight = 390;
constexpr std::string_view kOkButton = "26";
constexpr std::string_view kCancelButton = "25";

}  // namespace

frmLogin::frmLogin(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  Move(0, 0, kFormWidth, kFormHeight);
  lbltoQuillbay.Move(kMargin, kMargin, kFormWidth - 2 * kMargin, 480);
  lbltoQuillbay.SetWordWrap(true);
  lbltoQuillbay.SetCaption(
      "Log into your Quillbay account.  If you don't have one, you can "
      "create one now.");
  lblError.Move(kMargin, kMargin, kFormWidth - 2 * kMargin, 480);
  lblError.SetWordWrap(true);
  lblError.SetForeColor(kErrorColour);
  lblError.SetVisible(false);
  lblEmailAdd.Move(kMargin, 900, kFieldLeft - kMargin, kFieldHeight);
  lblEmailAdd.SetCaption("email address:");
  txtEmailAdd.Move(kFieldLeft, 870, kFieldWidth, kFieldHeight);
  lblPassword.Move(kMargin, 1320, kFieldLeft - kMargin, kFieldHeight);
  lblPassword.SetCaption("password:");
  txtPassword.Move(kFieldLeft, 1290, kFieldWidth, kFieldHeight);
  txtPassword.SetPasswordChar("*");
  chkRemember.Move(kFieldLeft, 1740, 1700, 255);
  chkRemember.SetCaption("remember me");
  lblForgotpass.Move(3600, 1760, 1560, 255);
  lblForgotpass.SetCaption("forgot password?");
  imgOK.Move(kFieldLeft, 2340, kButtonWidth, kButtonHeight);
  imgCancel.Move(kFieldLeft + kButtonWidth + 240, 2340, kButtonWidth,
                 kButtonHeight);
  lblNeedAcc.Move(kMargin, 3060, 1500, 255);
  lblNeedAcc.SetCaption("new to quillbay?");
  lblSignUp.Move(kMargin + 1500, 3060, 1500, 255);
  lblSignUp.SetCaption("sign up now!");
  SetKeyPreview(true);
  On("imgOK", "Click", &frmLogin::imgOK_Click);
  On("imgCancel", "Click", &frmLogin::imgCancel_Click);
  On("lblForgotpass", "Click", &frmLogin::lblForgotpass_Click);
  On("lblSignUp", "Click", &frmLogin::lblSignUp_Click);
}

void frmLogin::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  ShowButtonState(s, imgOK, kOkButton, kPictureNormal);
  ShowButtonState(s, imgCancel, kCancelButton, kPictureNormal);
  s.gsLoginOrigin = std::string(1, 'L');
  if (s.gsUserEmail.empty() && !s.gsPrevUserEmail.empty()) {
    txtEmailAdd.SetText(s.gsPrevUserEmail);
    txtPassword.SetText(s.gsPrevPassword);
  } else {
    txtEmailAdd.SetText(s.gsUserEmail);
    txtPassword.SetText(s.gsUserPassword);
  }
  chkRemember.SetValue(s.gbRememberLogin ? 1 : 0);
}

void frmLogin::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyReturn) {
    KeyAscii = 0;
    if (imgOK.Enabled()) {
      imgOK_Click();
    }
  } else if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    Unload();
  }
}

void frmLogin::ShowError(const std::string& text) {
  lblError.SetCaption(text);
  if (!text.empty()) {
    lbltoQuillbay.SetVisible(false);
    lblError.SetVisible(true);
  }
}

void frmLogin::EnableButtons(bool enabled) {
  imgOK.SetEnabled(enabled);
  imgCancel.SetEnabled(enabled);
}

void frmLogin::Refuse(const std::string& message, TextBox& box) {
  ShowError(message);
  EnableButtons(true);
  box.SetFocus();
}

void frmLogin::imgOK_Click() {
  Session& s = app_.session();
  EnableButtons(false);
  lblError.SetVisible(false);
  lbltoQuillbay.SetVisible(true);

  if (TrimSpaces(txtEmailAdd.Text()).empty()) {
    Refuse("Email address cannot be empty", txtEmailAdd);
    return;
  }
  if (TrimSpaces(txtPassword.Text()).empty()) {
    Refuse("Password cannot be empty", txtPassword);
    return;
  }
  txtEmailAdd.SetText(TrimSpaces(txtEmailAdd.Text()));
  const std::string email = txtEmailAdd.Text();
  for (unsigned char c : email) {
    int key = c;
    std::string message;
    if (!IsValidEmail(key, email, message)) {
      Refuse(message, txtEmailAdd);
      return;
    }
  }
  const std::string before_email = s.gsUserEmail;
  const std::string before_password = s.gsUserPassword;
  s.gsUserEmail = email;
  const std::string password = TrimSpaces(txtPassword.Text());
  if (!IsValidPassword(password)) {
    Refuse("Please enter valid password", txtPassword);
    return;
  }
  s.gsUserPassword = password;
  if (s.gsUserEmail != before_email || s.gsUserPassword != before_password) {
    s.gsPrevUserEmail.clear();
    s.gsPrevPassword.clear();
  }
  s.gbRememberLogin = chkRemember.Value() == 1;
  s.gbUserCancelled = false;

  Form& connection = app_.forms().Get("frmNetConn");
  EnableButtons(true);
  Unload();
  connection.Show(/*modal=*/true);
}

void frmLogin::imgCancel_Click() {
  Unload();
}

void frmLogin::lblForgotpass_Click() {
  if (app_.CheckInternetConnection()) {
    std::string url = app_.session().gsSiteAddress;
    url.append("/forgotpassword/t_=0");
    OpenInBrowser(app_, url);
  } else {
    host().MsgBox(std::string(kCheckConnectionBox), kMbInformation,
                  app_.session().gsAppTitle);
  }
}

void frmLogin::lblSignUp_Click() {
  // The sign-up form comes with its own work; until it is part of the
  // program the link leaves the login form as it is.
  if (!app_.forms().IsRegistered("frmRegistration")) {
    return;
  }
  app_.session().gbUserCancelled = false;
  Form& registration = app_.forms().Get("frmRegistration");
  Unload();
  registration.Show(/*modal=*/true);
}

}  // namespace qbpd
