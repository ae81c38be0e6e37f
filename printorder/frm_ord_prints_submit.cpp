#include "core/settings.h"
#include "online/service_client.h"
#include "printorder/frm_ord_prints.h"

namespace qbpd {
namespace {

constexpr int kGetUserInfoTries = 5;
constexpr char kOops[] =
    "Oops! There's invalid or missing info. Please review the information "
    "below and re-enter the fields marked in red.";

}  // namespace

void frmOrdPrints::imgS2Continue_Click() {
  Session& s = app_.session();
  // 1, 2.
  lblS2Error.SetVisible(false);
  lblS2Error.SetCaption(kOops);
  MarkFieldInvalid(false, nullptr);
  const bool card_good = ValidateCardFields();
  const bool address_good = ValidateAddressFields();
  if (!card_good || !address_good) {
    lblS2Error.SetVisible(true);
    return;
  }
  // 3.
  host().SetMousePointer(kPointerHourglass);
  EnableStep2(false);
  const auto finish = [this] {
    EnableStep2(true);
    host().SetMousePointer(kPointerDefault);
  };
  // 4, 5.
  CopyStep2Fields();
  // 6.
  const bool card_changed = IsCardChanged();
  if (card_changed) {
    msaCard[0] = TrimSpaces(txtS2CCName.Text());
    msaCard[1] = TrimSpaces(txtS2CCNumber.Text());
    msaCard[2] = std::to_string(cboS2Month.ItemData(cboS2Month.ListIndex()));
    msaCard[3] = TrimSpaces(cboS2Year.Text());
    msaCard[4] = TrimSpaces(txtS2BillZip.Text());
  }
  // 7 to 9.
  const bool call = picS2MyAddressCont.Visible() || card_changed;
  if (call) {
    StringArray answer;
    msErrCode.clear();
    msErrText.clear();
    StringArray card(msaCard.begin(), msaCard.begin() + 5);
    const bool ok = ExtAPI_->UpdateUserAddress(
        s.gsSiteUrl, s.gsAuthCode, s.gsUserEmail, s.gsUserPassword,
        msaMyAddress, card, answer, msErrCode, msErrText, card_changed,
        order_.gsaUserCard[1]);
    if (!ok) {
      if (msErrCode == kErrServiceFailed) {
        lblS2Error.SetCaption("Unable to update user information");
      } else {
        ShowServiceFieldError(msErrCode, msErrText);
      }
      lblS2Error.SetVisible(true);
      finish();
      return;
    }
    lblS2Error.SetVisible(false);
    if (!answer.empty()) {
      s.gsAuthCode = answer[0];
    }
    bool fresh = false;
    for (int attempt = 0; attempt < kGetUserInfoTries && !fresh; ++attempt) {
      msErrCode.clear();
      msErrText.clear();
      std::string status;
      StringArray profile, address, stored_card;
      if (ExtAPI_->GetUserInfo(s.gsSiteUrl, s.gsAuthCode, status, profile,
                               address, stored_card, msErrCode, msErrText)) {
        order_.gsaUserName = profile;
        order_.gsaUserAddress = address;
        order_.gsaUserCard = stored_card;
        order_.gsaUserName.resize(5);
        order_.gsaUserAddress.resize(8);
        order_.gsaUserCard.resize(5);
        fresh = !IsUserInfoStale();
      }
    }
    if (!fresh) {
      lblS2Error.SetCaption(msErrCode == kErrServiceFailed
                                ? "Try again as there is some problem with "
                                  "server"
                                : msErrText);
      lblS2Error.SetVisible(true);
      finish();
      return;
    }
    // The number on file is the service's (masked) one.
    msaCard[1] = order_.gsaUserCard[1];
  }
  // 10.
  const bool other = optS2ShipToDiffadd.Value();
  if (other || call || order_.gbAddressChanged) {
    order_.gbShipToOther = other;
    msErrCode.clear();
    msErrText.clear();
    if (!CallPlaceOrder(other, msErrCode, msErrText)) {
      ShowServiceFieldError(msErrCode, msErrText);
      finish();
      return;
    }
  }
  // 11.
  if (other) {
    order_.gsaShipTo = msaShipTo;
    order_.gbShipToOther = true;
  } else {
    order_.gsaShipTo = order_.gsaUserAddress;
    order_.gbShipToOther = false;
  }
  // 12.
  if (msStatusAtStep2 == "FUL" && miPreviousStep == 1) {
    s.gsAccountStatus = "FUL";
    if (mbPriced) {
      AddingIntoOrderPrints();
    } else {
      miPreviousStep = 2;
      miCurrentStep = 1;
      ShowStep(1, true);
      imgS1Back.SetVisible(true);
    }
    lblHead.SetCaption("edit print order");
  } else {
    msSavedCoupon = s.gsCouponCode;
    RefillWorkingLists();
    s.gsAccountStatus = "FUL";
    ShowReviewStep();
    lblHead.SetCaption("review print order");
  }
  // 13.
  miPreviousStep = 2;
  ShowStep(2, false);
  if (msStatusAtStep2 == "FUL" && !mbPriced && miCurrentStep == 1) {
    host().MsgBox(
        "The Pricing details including shipping charges and tax details will "
        "be applied after pressing \"update total\" or \"continue\" button ",
        kMbInformation, s.gsAppTitle);
  }
  // 14.
  finish();
}

}  // namespace qbpd
