#include "printorder/frm_edit_address.h"

#include "core/button_pictures.h"
#include "core/settings.h"
#include "online/client_factory.h"
#include "online/online_common.h"
#include "platform/forms/keys.h"
#include "printorder/address_rules.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 5760;
constexpr int kFormHeight = 5100;
constexpr int kMargin = 240;
constexpr int kFieldLeft = 1680;
constexpr int kFieldWidth = 3600;
constexpr int kFieldHeight = 315;
constexpr int kAddressCells = 8;
constexpr int kStreet1 = 3;
constexpr int kZip = 7;
constexpr std::string_view kOkButton = "26";
constexpr std::string_view kCancelButton = "25";
constexpr char kOops[] =
    "Oops\xE2\x80\x94there 's invalid or missing info. Please review the "
    "information below and re-enter the fields marked in red.";

}  // namespace

frmEditAddress::frmEditAddress(Application& app)
    : Form(app.host(), std::string(kName)),
      app_(app),
      ExtAPI_(NewServiceClient(app)) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblHeading.Move(kMargin, kMargin, kFormWidth - 2 * kMargin, 300);
  lblHeading.SetFontBold(true);
  lblHeading.SetCaption("edit shipping address");
  lblErrInfm.Move(kMargin, 600, kFormWidth - 2 * kMargin, 480);
  lblErrInfm.SetWordWrap(true);
  lblErrInfm.SetForeColor(kErrorColour);
  lblErrInfm.SetVisible(false);
  int top = 1200;
  const auto row = [&](Label& label, const char* caption) {
    label.Move(kMargin, top + 30, kFieldLeft - kMargin, kFieldHeight);
    label.SetCaption(caption);
  };
  row(lblNameHead, "name");
  lblName.Move(kFieldLeft, top + 30, kFieldWidth, kFieldHeight);
  top += 420;
  row(lblStreet, "street");
  txtStreet1.Move(kFieldLeft, top, kFieldWidth, kFieldHeight);
  txtStreet2.Move(kFieldLeft, top + 390, kFieldWidth, kFieldHeight);
  top += 810;
  row(lblCity, "city");
  txtCity.Move(kFieldLeft, top, kFieldWidth, kFieldHeight);
  top += 420;
  row(lblState, "state");
  cboState.Move(kFieldLeft, top, 1200, kFieldHeight);
  top += 420;
  row(lblZip, "zip");
  txtZipMailingAddrs.Move(kFieldLeft, top, 1500, kFieldHeight);
  txtZipMailingAddrs.SetMaxLength(10);
  top += 420;
  row(lblPhone, "phone");
  txtPhone1.Move(kFieldLeft, top, 900, kFieldHeight);
  txtPhone1.SetMaxLength(3);
  txtPhone2.Move(kFieldLeft + 1020, top, 1500, kFieldHeight);
  txtPhone2.SetMaxLength(8);
  top += 600;
  imgOK.Move(kFieldLeft, top, 1200, 390);
  imgCancel.Move(kFieldLeft + 1440, top, 1200, 390);
  tmrClose.SetEnabled(false);
  tmrClose.SetInterval(1);
  SetKeyPreview(true);
  Field("mbClosing", mbClosing);
  On("imgOK", "Click", &frmEditAddress::imgOK_Click);
  On("imgCancel", "Click", &frmEditAddress::imgCancel_Click);
  On("tmrClose", "Timer", &frmEditAddress::tmrClose_Timer);
  On("txtZipMailingAddrs", "KeyPress",
     &frmEditAddress::txtZipMailingAddrs_KeyPress);
  On("txtPhone1", "KeyPress", &frmEditAddress::txtPhone1_KeyPress);
  On("txtPhone2", "KeyPress", &frmEditAddress::txtPhone2_KeyPress);
}

void frmEditAddress::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  ShowButtonState(s, imgOK, kOkButton, kPictureNormal);
  ShowButtonState(s, imgCancel, kCancelButton, kPictureNormal);
  AddStateValues(cboState);
  cboState.SetListIndex(0);
}

void frmEditAddress::Form_Activate() {
  msaAddress = account_->gsaUserAddress;
  msaAddress.resize(kAddressCells);
  lblName.SetCaption(msaAddress[1] + " " + msaAddress[2]);
  txtStreet1.SetText(msaAddress[kStreet1]);
  txtStreet2.SetText(msaAddress[4]);
  txtCity.SetText(msaAddress[5]);
  txtZipMailingAddrs.SetText(msaAddress[kZip]);
  const int state = FindState(msaAddress[6]);
  cboState.SetListIndex(state < 0 ? 0 : state);
  txtPhone1.SetText("");
  txtPhone2.SetText("");
}

void frmEditAddress::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    Unload();
  }
}

void frmEditAddress::txtZipMailingAddrs_KeyPress(EventArgs& e) {
  e.KeyAscii = ZipKey(e.KeyAscii);
}

void frmEditAddress::txtPhone1_KeyPress(EventArgs& e) {
  e.KeyAscii = DigitKey(e.KeyAscii);
}

void frmEditAddress::txtPhone2_KeyPress(EventArgs& e) {
  if (e.KeyAscii == kKeyReturn) {
    e.KeyAscii = 0;
    imgOK_Click();
    return;
  }
  e.KeyAscii = DigitOrDashKey(e.KeyAscii);
}

void frmEditAddress::EnableButtons(bool enabled) {
  imgOK.SetEnabled(enabled);
  imgCancel.SetEnabled(enabled);
}

bool frmEditAddress::CheckFields() {
  for (Label* label : {&lblStreet, &lblCity, &lblState, &lblZip, &lblPhone}) {
    ClearLabelMark(*label);
  }
  for (TextBox* box : {&txtStreet1, &txtStreet2, &txtCity, &txtZipMailingAddrs,
                       &txtPhone1, &txtPhone2}) {
    box->SetText(TrimSpaces(box->Text()));
  }
  bool good = true;
  const auto check = [&good](bool passes, Label& label) {
    if (!passes) {
      MarkLabelInvalid(label);
      good = false;
    }
  };
  check(!txtStreet1.Text().empty() &&
            IsValidDialogStreetLine(txtStreet1.Text()) &&
            IsValidDialogStreetLine(txtStreet2.Text()),
        lblStreet);
  check(IsValidCity(txtCity.Text()), lblCity);
  check(IsValidDialogState(cboState.Text()), lblState);
  check(IsValidDialogZip(txtZipMailingAddrs.Text()), lblZip);
  check(IsValidPhone(txtPhone1.Text()) && IsValidPhone(txtPhone2.Text()),
        lblPhone);
  return good;
}

void frmEditAddress::imgOK_Click() {
  Session& s = app_.session();
  lblErrInfm.SetVisible(false);
  lblErrInfm.SetCaption(kOops);
  EnableButtons(false);
  if (!CheckFields()) {
    lblErrInfm.SetVisible(true);
    EnableButtons(true);
    txtStreet1.SetFocus();
    return;
  }
  msaAddress[kStreet1] = txtStreet1.Text();
  msaAddress[4] = txtStreet2.Text();
  msaAddress[5] = txtCity.Text();
  const std::string state = TrimSpaces(cboState.Text());
  msaAddress[6] = (state.empty() || state == "--") ? "" : state;
  msaAddress[kZip] = txtZipMailingAddrs.Text();
  std::string code;
  std::string text;
  StringArray answer;
  const bool ok = ExtAPI_->UpdateUserAddress(
      s.gsSiteUrl, s.gsAuthCode, s.gsUserEmail, s.gsUserPassword, msaAddress,
      account_->gsaUserCard, answer, code, text, /*cardChanged=*/false, "");
  if (mbClosing) {
    return;
  }
  if (ok) {
    account_->gbAddressChanged = true;
    account_->gsaUserAddress = msaAddress;
    if (!answer.empty()) {
      s.gsAuthCode = answer[0];
    }
    Unload();
    return;
  }
  lblErrInfm.SetCaption(code == kErrServiceFailed
                            ? "Unable to update address in your account"
                            : text);
  lblErrInfm.SetVisible(true);
  EnableButtons(true);
}

void frmEditAddress::imgCancel_Click() {
  Unload();
}

void frmEditAddress::Form_QueryUnload(int& Cancel, int UnloadMode) {
  if (UnloadMode != kUnloadFromUser) {
    return;
  }
  if (ExtAPI_->IsBusy()) {
    mbClosing = true;
    ExtAPI_->CancelRequest(true);
    Cancel = 1;
    tmrClose.SetEnabled(true);
    return;
  }
  tmrClose.SetEnabled(false);
}

void frmEditAddress::tmrClose_Timer() {
  if (mbClosing && ExtAPI_->IsCancelled()) {
    tmrClose.SetEnabled(false);
    Unload();
  }
}

}  // namespace qbpd
