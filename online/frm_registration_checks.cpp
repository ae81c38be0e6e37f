// The sign-up form's steps checked: each validator marks every label whose
// field fails and fills its part of the fields array when all is well; the
// service's answer codes bring the step of their field back.
#include "core/settings.h"
#include "core/validations.h"
#include "online/frm_registration.h"
#include "online/online_common.h"
#include "online/password_characters.h"
#include "online/registration_rules.h"
#include "printorder/address_rules.h"

#include <chrono>
#include <cstdlib>

namespace qbpd {
namespace {

constexpr size_t kMinPassword = 5;
constexpr char kShortPassword[] = " Password should be atleast 5 characters.";
constexpr char kPasswordsDiffer[] =
    " Your passwords don't match. Please retype both passwords.";

std::string WithoutDashes(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c != '-') {
      out += c;
    }
  }
  return out;
}

bool IsBlank(const std::string& text) {
  return TrimSpaces(text).empty();
}

}  // namespace

bool frmRegistration::ValidateAccountStep() {
  ResetFieldLabels();
  bool ok = true;
  for (auto [box, label] : {std::pair{&txtFirstName, &lblFName},
                            std::pair{&txtLastName, &lblLName}}) {
    box->SetText(TrimSpaces(box->Text()));
    if (box->Text().empty() || !IsValidPersonName(box->Text())) {
      MarkLabel(*label);
      ok = false;
    }
  }
  const std::string email = TrimSpaces(txtEmailId.Text());
  bool email_ok = !email.empty() && IsValidUserId(email);
  for (size_t i = 0; email_ok && i < email.size(); ++i) {
    int key = static_cast<unsigned char>(email[i]);
    std::string message;
    email_ok = IsValidEmail(key, email, message);
  }
  if (!email_ok) {
    MarkLabel(lblEmail);
    ok = false;
  }
  const std::string password = TrimSpaces(txtPwd.Text());
  if (password.size() < kMinPassword) {
    MarkLabel(lblPwd);
    MarkLabel(lblRePwd);
    AddError(kShortPassword);
    ok = false;
  }
  if (txtPwd.Text() != txtRePwd.Text()) {
    MarkLabel(lblPwd);
    MarkLabel(lblRePwd);
    AddError(kPasswordsDiffer);
    ok = false;
  }
  if (!IsValidPassword(password)) {
    MarkLabel(lblPwd);
    ok = false;
  }
  if (chkAcceptterms.Value() != 1) {
    chkAcceptterms.SetForeColor(kErrorColour);
    ok = false;
  }
  if (ok) {
    msaFields[0] = txtFirstName.Text();
    msaFields[1] = txtLastName.Text();
    msaFields[2] = email;
    msaFields[3] = password;
  }
  return ok;
}

bool frmRegistration::ValidateAddressStep() {
  ResetFieldLabels();
  for (TextBox* box : {&txtStreet1, &txtStreet2, &txtCity, &txtZipMailingAddrs,
                       &txtPhone1, &txtPhone2}) {
    box->SetText(TrimSpaces(box->Text()));
  }
  const std::string state = TrimSpaces(WithoutDashes(cboState.Text()));
  const bool untouched =
      txtStreet1.Text().empty() && txtStreet2.Text().empty() &&
      txtCity.Text().empty() && txtZipMailingAddrs.Text().empty() &&
      txtPhone1.Text().empty() && txtPhone2.Text().empty() && state.empty();
  if (untouched) {
    for (int i = 4; i <= 9; ++i) {
      msaFields[i].clear();
    }
    return true;
  }
  bool ok = true;
  if (txtStreet1.Text().empty() ||
      !IsValidDialogStreetLine(txtStreet1.Text()) ||
      !IsValidDialogStreetLine(txtStreet2.Text())) {
    MarkLabel(lblStreet);
    ok = false;
  }
  if (!IsValidCity(txtCity.Text())) {
    MarkLabel(lblcity);
    ok = false;
  }
  if (!IsValidDialogState(state)) {
    MarkLabel(lblState);
    ok = false;
  }
  if (!IsValidDialogZip(txtZipMailingAddrs.Text())) {
    MarkLabel(lblZip);
    ok = false;
  }
  if (!IsValidPhone(txtPhone1.Text()) || !IsValidPhone(txtPhone2.Text())) {
    MarkLabel(lblPhone);
    ok = false;
  }
  if (ok) {
    msaFields[4] = txtStreet1.Text();
    msaFields[5] = txtStreet2.Text();
    msaFields[6] = txtCity.Text();
    msaFields[7] = state;
    msaFields[8] = txtZipMailingAddrs.Text();
    const std::string& first = txtPhone1.Text();
    const std::string& second = txtPhone2.Text();
    msaFields[9] =
        first.empty() || second.empty() ? first + second : first + "-" + second;
  }
  return ok;
}

bool frmRegistration::ValidateCardStep() {
  ResetFieldLabels();
  const bool untouched = IsBlank(txtNameonCard.Text()) &&
                         IsBlank(txtCardNumber.Text()) &&
                         cboMonth.ListIndex() <= 0 &&
                         cboYear.ListIndex() <= 0 && IsBlank(txtBillZip.Text());
  if (untouched) {
    for (int i = 11; i <= 15; ++i) {
      msaFields[i].clear();
    }
    return true;
  }
  bool ok = true;
  if (IsBlank(txtNameonCard.Text())) {
    txtNameonCard.SetText(TrimSpaces(txtFirstName.Text()) + " " +
                          TrimSpaces(txtLastName.Text()));
  }
  const std::string name = TrimSpaces(txtNameonCard.Text());
  if (!IsValidCardName(name)) {
    MarkLabel(lblNameOnCard);
    ok = false;
  }
  const std::string number = TrimSpaces(txtCardNumber.Text());
  if (!IsValidCardNumber(number)) {
    MarkLabel(lblCardNumber);
    ok = false;
  }
  if (cboMonth.ListIndex() <= 0 || cboYear.ListIndex() <= 0) {
    MarkLabel(lblExpDate);
    ok = false;
  } else {
    const auto today = std::chrono::floor<std::chrono::days>(host().Now());
    const std::chrono::year_month_day date{today};
    if (CardExpired(std::atoi(cboMonth.Text().c_str()),
                    std::atoi(cboYear.Text().c_str()),
                    static_cast<int>(static_cast<unsigned>(date.month())),
                    static_cast<int>(date.year()))) {
      MarkLabel(lblExpDate);
      ok = false;
    }
  }
  const std::string zip = TrimSpaces(txtBillZip.Text());
  if (!IsValidDialogZip(zip)) {
    MarkLabel(lblBillZip);
    ok = false;
  }
  if (ok) {
    msaFields[11] = name;
    msaFields[12] = number;
    msaFields[13] = cboMonth.Text();
    msaFields[14] = cboYear.Text();
    msaFields[15] = zip;
  }
  return ok;
}

void frmRegistration::ShowServerError(const std::string& code,
                                      const std::string& text) {
  struct Answer {
    const char* code;
    int step;
    Label* first;
    Label* second;
    const char* sentence;
  };
  const Answer answers[] = {
      {"2001", 1, &lblFName, nullptr, ""},
      {"2003", 1, &lblEmail, nullptr,
       " Email address contains invalid domain name."},
      {"2004", 1, &lblPwd, nullptr, ""},
      {"2021", 1, &lblEmail, nullptr,
       " A Quillbay account with your email address already exists."},
      {"2008", 2, &lblStreet, nullptr, ""},
      {"2009", 2, &lblStreet, nullptr, ""},
      {"2010", 2, &lblcity, nullptr, ""},
      {"2011", 2, &lblState, nullptr, ""},
      {"2012", 2, &lblZip, nullptr, ""},
      {"2013", 2, &lblState, &lblZip, "State and Zip do not match."},
      {"2016", 3, &lblCardNumber, nullptr, ""},
      {"2017", 3, &lblExpDate, nullptr, ""},
      {"2018", 3, &lblExpDate, nullptr, ""},
      {"2019", 3, &lblCardNumber, nullptr, ""},
      {"2020", 3, &lblBillZip, nullptr, ""},
  };
  ResetFieldLabels();
  lblErrInfm.SetCaption(kRegistrationOops);
  int step = 1;
  bool known = false;
  for (const Answer& answer : answers) {
    if (code != answer.code) {
      continue;
    }
    known = true;
    step = answer.step;
    MarkLabel(*answer.first);
    if (answer.second != nullptr) {
      MarkLabel(*answer.second);
    }
    AddError(answer.sentence);
  }
  if (!known) {
    AddError(text);
  }
  ShowStep(step);
  lblErrInfm.SetVisible(true);
  EnableButtons();
}

}  // namespace qbpd
