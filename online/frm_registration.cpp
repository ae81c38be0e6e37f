#include "online/frm_registration.h"

#include "core/button_pictures.h"
#include "core/settings.h"
#include "core/validations.h"
#include "online/client_factory.h"
#include "online/frm_web_content.h"
#include "online/online_common.h"
#include "online/password_characters.h"
#include "online/registration_rules.h"
#include "platform/forms/keys.h"
#include "printorder/address_rules.h"

#include <chrono>
#include <cstdio>

namespace qbpd {
namespace {

constexpr int kFormWidth = 7440;
constexpr int kFormHeight = 6900;
constexpr int kMargin = 240;
constexpr int kFrameTop = 1980;
constexpr int kFrameWidth = kFormWidth - 2 * kMargin;
constexpr int kFrameHeight = 3780;
constexpr int kLabelLeft = 120;
constexpr int kLabelWidth = 1920;
constexpr int kFieldLeft = 2160;
constexpr int kFieldWidth = 3600;
constexpr int kFieldHeight = 315;
constexpr int kRow = 450;
constexpr int kButtonTop = 6000;
constexpr int kButtonWidth = 1200;
constexpr int kButtonHeight = 390;
constexpr long kBlack = 0;
constexpr int kYearsAhead = 12;
constexpr int kServiceFailure = 9999;
constexpr std::string_view kContinueButton = "26";
constexpr std::string_view kCancelButton = "25";
constexpr std::string_view kBackButton = "16";

struct StepTexts {
  const char* title;
  const char* info;
};
constexpr StepTexts kSteps[] = {
    {"account info",
     "To create your free Quillbay account, just fillout the form below. The "
     "information you provide remains confidential."},
    {"mailing address",
     "We'll send your free postage-paid film mailers to this address."},
    {"Credit Card Info(optional)",
     "You can provide this now or later. Your card will not be charged "
     "untill process an order"},
};

// The labels' normal captions.
struct LabelCaption {
  const char* name;
  const char* caption;
};
constexpr LabelCaption kCaptions[] = {
    {"lblFName", "first name"},
    {"lblLName", "last name"},
    {"lblEmail", "email address"},
    {"lblPwd", "password"},
    {"lblRePwd", "re-type password"},
    {"lblStreet", "street"},
    {"lblcity", "city"},
    {"lblState", "state"},
    {"lblZip", "zip"},
    {"lblPhone", "phone"},
    {"lblCardNumber", "card number"},
    {"lblNameOnCard", "name on card"},
    {"lblExpDate", "exp. date"},
    {"lblBillZip", "billing zip"},
};

}  // namespace

frmRegistration::frmRegistration(Application& app)
    : Form(app.host(), std::string(kName)),
      app_(app),
      ExtAPI_(NewServiceClient(app)),
      msaFields(kFieldCount) {
  LayOut();
  SetKeyPreview(true);
  Field("miStep", miStep);
  On("imgContinue", "Click", &frmRegistration::imgContinue_Click);
  On("imgBack", "Click", &frmRegistration::imgBack_Click);
  On("imgCancel", "Click", &frmRegistration::imgCancel_Click);
  On("lblTermsCond", "Click", &frmRegistration::lblTermsCond_Click);
  On("chkAcceptterms", "Click", &frmRegistration::chkAcceptterms_Click);
  On("txtZipMailingAddrs", "KeyPress", &frmRegistration::ZipKeyPress);
  On("txtBillZip", "KeyPress", &frmRegistration::ZipKeyPress);
  On("txtPhone1", "KeyPress", &frmRegistration::txtPhone1_KeyPress);
  On("txtPhone2", "KeyPress", &frmRegistration::txtPhone2_KeyPress);
  On("txtCardNumber", "KeyPress", &frmRegistration::txtCardNumber_KeyPress);
}

void frmRegistration::LayOut() {
  Move(0, 0, kFormWidth, kFormHeight);
  lblActMailCCInfoTitle.Move(kMargin, kMargin, kFrameWidth, 360);
  lblActMailCCInfoTitle.SetFontBold(true);
  lblInfo.Move(kMargin, 660, kFrameWidth, 510);
  lblInfo.SetWordWrap(true);
  lblErrInfm.Move(kMargin, 1200, kFrameWidth, 720);
  lblErrInfm.SetWordWrap(true);
  lblErrInfm.SetForeColor(kErrorColour);
  lblErrInfm.SetVisible(false);
  for (Frame* frame : {&fraStep1, &fraStep2, &frastep3}) {
    frame->Move(kMargin, kFrameTop, kFrameWidth, kFrameHeight);
    frame->SetBorder(false);
  }
  auto row = [](const char* frame, Label& label, Control& field, int n,
                int width = kFieldWidth) {
    label.SetContainer(frame);
    label.Move(kLabelLeft, 120 + n * kRow + 30, kLabelWidth, kFieldHeight);
    field.SetContainer(frame);
    field.Move(kFieldLeft, 120 + n * kRow, width, kFieldHeight);
  };
  row("fraStep1", lblFName, txtFirstName, 0);
  row("fraStep1", lblLName, txtLastName, 1);
  row("fraStep1", lblEmail, txtEmailId, 2);
  row("fraStep1", lblPwd, txtPwd, 3);
  row("fraStep1", lblRePwd, txtRePwd, 4);
  txtPwd.SetPasswordChar("*");
  txtRePwd.SetPasswordChar("*");
  chkRememberme.SetContainer("fraStep1");
  chkRememberme.Move(kFieldLeft, 120 + 5 * kRow, 2400, 255);
  chkRememberme.SetCaption("remember me.");
  chkAcceptterms.SetContainer("fraStep1");
  chkAcceptterms.Move(kFieldLeft, 120 + 6 * kRow, 2100, 255);
  chkAcceptterms.SetCaption("I accept the Quillbay ");
  lblTermsCond.SetContainer("fraStep1");
  lblTermsCond.Move(kFieldLeft + 2100, 120 + 6 * kRow + 15, 1800, 255);
  lblTermsCond.SetCaption("Terms and Conditions");
  lblTermsCond.SetForeColor(0xC00000);

  row("fraStep2", lblStreet, txtStreet1, 0);
  txtStreet2.SetContainer("fraStep2");
  txtStreet2.Move(kFieldLeft, 120 + kRow, kFieldWidth, kFieldHeight);
  row("fraStep2", lblcity, txtCity, 2);
  row("fraStep2", lblState, cboState, 3, 1200);
  cboState.SetStyle(2);
  row("fraStep2", lblZip, txtZipMailingAddrs, 4, 1500);
  row("fraStep2", lblPhone, txtPhone1, 5, 1500);
  txtPhone2.SetContainer("fraStep2");
  txtPhone2.Move(kFieldLeft + 1620, 120 + 5 * kRow, 1500, kFieldHeight);
  lblOptional.SetContainer("fraStep2");
  lblOptional.Move(kFieldLeft, 120 + 6 * kRow, kFieldWidth, 255);
  lblOptional.SetCaption("(phone is optional)");

  row("frastep3", lblNameOnCard, txtNameonCard, 0);
  row("frastep3", lblCardNumber, txtCardNumber, 1);
  row("frastep3", lblExpDate, cboMonth, 2, 1200);
  cboMonth.SetStyle(2);
  cboYear.SetContainer("frastep3");
  cboYear.Move(kFieldLeft + 1320, 120 + 2 * kRow, 1200, kFieldHeight);
  cboYear.SetStyle(2);
  row("frastep3", lblBillZip, txtBillZip, 3, 1500);

  imgBack.Move(kMargin, kButtonTop, kButtonWidth, kButtonHeight);
  imgContinue.Move(kFormWidth - kMargin - 2 * kButtonWidth - 240, kButtonTop,
                   kButtonWidth, kButtonHeight);
  imgCancel.Move(kFormWidth - kMargin - kButtonWidth, kButtonTop, kButtonWidth,
                 kButtonHeight);
  ResetFieldLabels();
}

void frmRegistration::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  ShowButtonState(s, imgContinue, kContinueButton, kPictureNormal);
  ShowButtonState(s, imgCancel, kCancelButton, kPictureNormal);
  ShowButtonState(s, imgBack, kBackButton, kPictureNormal);
  s.gsLoginOrigin = "R";
  AddStateValues(cboState);
  cboState.SetListIndex(0);
  AddMonthYearValues();
  ShowStep(1);
}

void frmRegistration::AddMonthYearValues() {
  cboMonth.AddItem("Month");
  for (int month = 1; month <= 12; ++month) {
    char text[4];
    std::snprintf(text, sizeof text, "%02d", month);
    cboMonth.AddItem(text);
  }
  cboMonth.SetListIndex(0);
  const auto today = std::chrono::floor<std::chrono::days>(host().Now());
  const int year = static_cast<int>(std::chrono::year_month_day{today}.year());
  cboYear.AddItem("Year");
  for (int y = year; y <= year + kYearsAhead; ++y) {
    cboYear.AddItem(std::to_string(y));
  }
  cboYear.SetListIndex(0);
}

void frmRegistration::ShowStep(int step) {
  miStep = step;
  fraStep1.SetVisible(step == 1);
  fraStep2.SetVisible(step == 2);
  frastep3.SetVisible(step == 3);
  lblActMailCCInfoTitle.SetCaption(kSteps[step - 1].title);
  lblInfo.SetCaption(kSteps[step - 1].info);
  imgBack.SetVisible(step > 1);
}

void frmRegistration::ResetFieldLabels() {
  for (const LabelCaption& entry : kCaptions) {
    Control* control = FindControl(entry.name);
    control->SetProperty("Caption", Value(std::string(entry.caption)));
    control->SetForeColor(kBlack);
  }
}

void frmRegistration::MarkLabel(Label& label) {
  MarkLabelInvalid(label);
}

void frmRegistration::AddError(const std::string& sentence) {
  lblErrInfm.SetCaption(lblErrInfm.Caption() + sentence);
}

void frmRegistration::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    imgCancel_Click();
  }
}

void frmRegistration::EnableButtons() {
  imgCancel.SetEnabled(true);
  imgContinue.SetEnabled(true);
  imgBack.SetEnabled(imgBack.Visible());
}

void frmRegistration::imgContinue_Click() {
  imgCancel.SetEnabled(false);
  imgBack.SetEnabled(false);
  imgContinue.SetEnabled(false);
  lblErrInfm.SetCaption(kRegistrationOops);
  const bool ok = miStep == 1   ? ValidateAccountStep()
                  : miStep == 2 ? ValidateAddressStep()
                                : ValidateCardStep();
  if (ok) {
    lblErrInfm.SetVisible(false);
    if (miStep < 3) {
      ShowStep(miStep + 1);
    } else {
      EnableButtons();
      SubmitRegistration();
      return;
    }
  } else {
    lblErrInfm.SetVisible(true);
  }
  EnableButtons();
}

void frmRegistration::imgBack_Click() {
  if (miStep > 1) {
    ShowStep(miStep - 1);
  }
}

void frmRegistration::imgCancel_Click() {
  Unload();
}

void frmRegistration::lblTermsCond_Click() {
  app_.forms().Get<frmWebContent>().ShowPage("more info...",
                                             "Terms Conditions.htm");
}

void frmRegistration::chkAcceptterms_Click() {
  if (chkAcceptterms.Value() == 1) {
    chkAcceptterms.SetForeColor(kBlack);
  }
}

void frmRegistration::ZipKeyPress(EventArgs& e) {
  e.KeyAscii = ZipKey(e.KeyAscii);
}

void frmRegistration::txtPhone1_KeyPress(EventArgs& e) {
  e.KeyAscii = DigitKey(e.KeyAscii);
}

void frmRegistration::txtPhone2_KeyPress(EventArgs& e) {
  if (e.KeyAscii != kKeyReturn) {
    e.KeyAscii = DigitOrDashKey(e.KeyAscii);
  }
}

void frmRegistration::txtCardNumber_KeyPress(EventArgs& e) {
  e.KeyAscii = RegistrationCardKey(e.KeyAscii);
}

void frmRegistration::SubmitRegistration() {
  Session& s = app_.session();
  msErrCode.clear();
  msErrText.clear();
  imgContinue.SetEnabled(false);
  host().SetMousePointer(kPointerHourglass);
  // The subscriber's id is read as the program always did, but
  // RegisterUser has no place for it.
  (void)CutAtFirstNul(app_.settings().Read(kSiteSettingsKey, "SubscriberId"));
  StringArray result;
  const bool ok = ExtAPI_->RegisterUser(s.gsSiteUrl, msaFields, result,
                                        msErrCode, msErrText);
  if (ok) {
    s.gsUserEmail = TrimSpaces(txtEmailId.Text());
    s.gsUserPassword = TrimSpaces(txtPwd.Text());
    chkAcceptterms.SetValue(0);
    s.gsAuthCode = result.empty() ? std::string() : result[0];
    s.gsUserCode = result.size() > 1 ? result[1] : std::string();
    SettingsStore& settings = app_.settings();
    if (chkRememberme.Value() == 1) {
      (void)settings.Write(kSettingsKey, "UserName", s.gsUserEmail);
      (void)settings.Write(kSettingsKey, "EncryptedPassword",
                           EncryptPassword(s.gsUserPassword));
      (void)settings.Write(kSettingsKey, "AutoLogin", "True");
    } else {
      (void)settings.Write(kSettingsKey, "UserName", "");
      (void)settings.Write(kSettingsKey, "EncryptedPassword", "");
      (void)settings.Write(kSettingsKey, "AutoLogin", "False");
    }
    host().SetMousePointer(kPointerDefault);
    s.gsLoginOrigin = "R";
    Form& connection = app_.forms().Get("frmNetConn");
    Unload();
    connection.Show(/*modal=*/true);
    return;
  }
  host().SetMousePointer(kPointerDefault);
  EnableButtons();
  if (std::atoi(msErrCode.c_str()) == kServiceFailure) {
    host().MsgBox(std::string(kServerProblemBox), kMbInformation, s.gsAppTitle);
    return;
  }
  ShowServerError(msErrCode, msErrText);
}

}  // namespace qbpd
