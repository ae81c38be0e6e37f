#include "core/settings.h"
#include "core/validations.h"
#include "printorder/address_rules.h"
#include "printorder/frm_edit_address.h"
#include "printorder/frm_ord_prints.h"
#include "printorder/order_money.h"

#include <algorithm>
#include <cstdio>

namespace qbpd {
namespace {

constexpr int kMonths = 12;
constexpr int kYears = 13;
constexpr int kMyAddressHeight = 1575;

// Every "Mr.", "Mrs." and "Ms." taken out of a name.
std::string WithoutTitles(std::string name) {
  for (const char* title : {"Mrs.", "Mr.", "Ms."}) {
    for (size_t at; (at = name.find(title)) != std::string::npos;) {
      name.erase(at, std::string_view(title).size());
    }
  }
  return name;
}

void SelectState(ComboBox& list, const std::string& state) {
  const int found = FindState(state);
  list.SetListIndex(found < 0 ? 0 : found);
}

}  // namespace

void frmOrdPrints::FillBillingLists() {
  cboS2Month.AddItem("Month");
  cboS2Month.SetItemData(0, 0);
  for (int m = 1; m <= kMonths; ++m) {
    char text[4];
    std::snprintf(text, sizeof text, "%02d", m);
    cboS2Month.AddItem(text);
    cboS2Month.SetItemData(cboS2Month.NewIndex(), m - 1);
  }
  cboS2Year.AddItem("Year");
  cboS2Year.SetItemData(0, 0);
  const int year = TodayFromClock().year;
  for (int y = year; y < year + kYears; ++y) {
    cboS2Year.AddItem(std::to_string(y));
    cboS2Year.SetItemData(cboS2Year.NewIndex(), y);
  }
  AddStateValues(cboS2State);
  AddStateValues(cboS2MyState);
  for (ComboBox* list : {&cboS2Month, &cboS2Year, &cboS2State, &cboS2MyState}) {
    list->SetListIndex(0);
  }
}

void frmOrdPrints::EnableOtherAddress(bool enabled) {
  for (Control* c : std::initializer_list<Control*>{
           &txtS2FName, &txtS2LastName, &txtS2Street1, &txtS2Street2,
           &txtS2City, &cboS2State, &txtS2MailZip}) {
    c->SetEnabled(enabled);
  }
}

void frmOrdPrints::ShowBillingStep() {
  Session& s = app_.session();
  msStatusAtStep2 = s.gsAccountStatus;
  order_.gbAddressChanged = false;
  miCurrentStep = 2;
  MarkFieldInvalid(false, nullptr);
  lblS2Error.SetVisible(false);
  std::string name = msaCard[0];
  if (name.empty()) {
    name = TrimSpaces(WithoutTitles(msaShipTo[1]) + " " + msaShipTo[2]);
  }
  if (TrimSpaces(name).empty()) {
    name = TrimSpaces(order_.gsaUserName[1] + " " + order_.gsaUserName[2]);
  }
  txtS2CCName.SetText(name);
  txtS2CCNumber.SetText(msaCard[1]);
  cboS2Month.SetListIndex(
      msaCard[2].empty() ? 0 : static_cast<int>(TextValue(msaCard[2])) + 1);
  int year = 0;
  for (int i = 1; i < cboS2Year.ListCount(); ++i) {
    if (cboS2Year.List(i) == msaCard[3]) {
      year = i;
    }
  }
  cboS2Year.SetListIndex(year);
  txtS2BillZip.SetText(msaCard[4]);
  const bool on_file = !order_.gsaUserAddress[3].empty();
  picS2MyAddressCont.SetVisible(!on_file);
  picS2MyAddressCont.SetEnabled(!on_file);
  lblS2MyAddressValue.SetVisible(on_file);
  lblEditmyaddress.SetVisible(on_file);
  if (on_file) {
    const std::string text = AddressText(order_.gsaUserAddress);
    const int lines =
        1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
    lblS2MyAddressValue.SetCaption(text);
    lblS2MyAddressValue.SetHeight(lines * 220 + 50);
  } else {
    lblS2MyAddressValue.SetCaption("");
    picS2MyAddressCont.SetHeight(kMyAddressHeight);
    txtS2MyStreet1.SetText(msaMyAddress[3]);
    txtS2MyStreet2.SetText(msaMyAddress[4]);
    txtS2MyCity.SetText(msaMyAddress[5]);
    SelectState(cboS2MyState, msaMyAddress[6]);
    txtS2MyZip.SetText(msaMyAddress[7]);
  }
  if (mbShipToMyAddress) {
    optS2ShipToDiffadd.SetValue(false);
    EnableOtherAddress(false);
    optS2ShipToMyadd.SetValue(true);
  } else {
    optS2ShipToDiffadd.SetValue(true);
    txtS2FName.SetText(msaShipTo[1]);
    txtS2LastName.SetText(msaShipTo[2]);
    txtS2Street1.SetText(msaShipTo[3]);
    txtS2Street2.SetText(msaShipTo[4]);
    txtS2City.SetText(msaShipTo[5]);
    SelectState(cboS2State, msaShipTo[6]);
    txtS2MailZip.SetText(msaShipTo[7]);
    EnableOtherAddress(true);
  }
  ShowStep(2, true);
  txtS2CCName.SetFocus();
}

void frmOrdPrints::optS2ShipToMyadd_Click() {
  for (TextBox* box : {&txtS2FName, &txtS2LastName, &txtS2Street1,
                       &txtS2Street2, &txtS2City, &txtS2MailZip}) {
    box->SetText("");
  }
  cboS2State.SetListIndex(0);
  EnableOtherAddress(false);
}

void frmOrdPrints::optS2ShipToDiffadd_Click() {
  for (TextBox* box : {&txtS2FName, &txtS2LastName, &txtS2Street1,
                       &txtS2Street2, &txtS2City, &txtS2MailZip}) {
    box->SetText("");
  }
  cboS2State.SetListIndex(-1);
  EnableOtherAddress(true);
  txtS2FName.SetFocus();
}

void frmOrdPrints::MarkFieldInvalid(bool mark, Label* label) {
  if (mark) {
    MarkLabelInvalid(*label);
    return;
  }
  for (Label* l :
       {&lblS2CCName, &lblS2CCNumber, &lblS2ExpDate, &lblS2BillZip, &lblS2FName,
        &lblS2Lname, &lblS2Street, &lblS2City, &lblS2State, &lblS2MailZip}) {
    ClearLabelMark(*l);
  }
  if (picS2MyAddressCont.Visible()) {
    for (Label* l :
         {&lblS2MyStreet, &lblS2MyCity, &lblS2MyState, &lblS2MyZip}) {
      ClearLabelMark(*l);
    }
  }
}

bool frmOrdPrints::ValidateCardFields() {
  bool good = true;
  const auto check = [this, &good](bool passes, Label& label) {
    if (!passes) {
      MarkFieldInvalid(true, &label);
      good = false;
    }
  };
  for (TextBox* box : {&txtS2CCName, &txtS2CCNumber, &txtS2BillZip}) {
    box->SetText(TrimSpaces(box->Text()));
  }
  check(IsValidCardName(txtS2CCName.Text()), lblS2CCName);
  const std::string& number = txtS2CCNumber.Text();
  check(!number.empty() &&
            (number == order_.gsaUserCard[1] || IsValidCardNumber(number)),
        lblS2CCNumber);
  bool expiry = cboS2Month.ListIndex() > 0 && cboS2Year.ListIndex() > 0;
  if (expiry) {
    const Today now = TodayFromClock();
    const int month = static_cast<int>(TextValue(cboS2Month.Text()));
    const int year = static_cast<int>(TextValue(cboS2Year.Text()));
    // The first of this month must not lie after the first of the expiry
    // month: a card expiring this month passes.
    expiry = year * 12 + month >= now.year * 12 + now.month;
  }
  check(expiry, lblS2ExpDate);
  check(IsValidZip(txtS2BillZip.Text()), lblS2BillZip);
  return good;
}

bool frmOrdPrints::ValidateAddressFields() {
  bool good = true;
  const auto check = [this, &good](bool passes, Label& label) {
    if (!passes) {
      MarkFieldInvalid(true, &label);
      good = false;
    }
  };
  const auto trim = [](std::initializer_list<TextBox*> boxes) {
    for (TextBox* box : boxes) {
      box->SetText(TrimSpaces(box->Text()));
    }
  };
  if (picS2MyAddressCont.Visible()) {
    trim({&txtS2MyStreet1, &txtS2MyStreet2, &txtS2MyCity, &txtS2MyZip});
    check(!txtS2MyStreet1.Text().empty() &&
              IsValidStreetLine(txtS2MyStreet1.Text()) &&
              IsValidStreetLine(txtS2MyStreet2.Text()),
          lblS2MyStreet);
    check(IsValidCity(txtS2MyCity.Text()), lblS2MyCity);
    check(!cboS2MyState.Text().empty() && cboS2MyState.ListIndex() != 0,
          lblS2MyState);
    check(IsValidZip(txtS2MyZip.Text()), lblS2MyZip);
  }
  if (optS2ShipToDiffadd.Value()) {
    trim({&txtS2FName, &txtS2LastName, &txtS2Street1, &txtS2Street2, &txtS2City,
          &txtS2MailZip});
    check(IsValidPersonName(txtS2FName.Text()), lblS2FName);
    check(IsValidPersonName(txtS2LastName.Text()), lblS2Lname);
    check(!txtS2Street1.Text().empty() &&
              IsValidStreetLine(txtS2Street1.Text()) &&
              IsValidStreetLine(txtS2Street2.Text()),
          lblS2Street);
    check(IsValidCity(txtS2City.Text()), lblS2City);
    const std::string state = TrimSpaces(cboS2State.Text());
    check(!state.empty() && state != "--", lblS2State);
    check(IsValidZip(txtS2MailZip.Text()), lblS2MailZip);
  }
  return good;
}

void frmOrdPrints::CopyStep2Fields() {
  if (picS2MyAddressCont.Visible()) {
    msaMyAddress[3] = TrimSpaces(txtS2MyStreet1.Text());
    msaMyAddress[4] = TrimSpaces(txtS2MyStreet2.Text());
    msaMyAddress[5] = TrimSpaces(txtS2MyCity.Text());
    const std::string state = TrimSpaces(cboS2MyState.Text());
    msaMyAddress[6] = state == "--" ? "" : state;
    msaMyAddress[7] = TrimSpaces(txtS2MyZip.Text());
  }
  if (optS2ShipToDiffadd.Value()) {
    mbShipToMyAddress = false;
    msaShipTo[0] = order_.gsaUserAddress[0];
    msaShipTo[1] = TrimSpaces(txtS2FName.Text());
    msaShipTo[2] = TrimSpaces(txtS2LastName.Text());
    msaShipTo[3] = TrimSpaces(txtS2Street1.Text());
    msaShipTo[4] = TrimSpaces(txtS2Street2.Text());
    msaShipTo[5] = TrimSpaces(txtS2City.Text());
    msaShipTo[6] = TrimSpaces(cboS2State.Text());
    msaShipTo[7] = TrimSpaces(txtS2MailZip.Text());
  } else {
    mbShipToMyAddress = true;
    msaShipTo = order_.gsaUserAddress;
    std::string& street2 = msaShipTo[4];
    for (size_t at;
         (at = street2.find_first_of("\r\n")) != std::string::npos;) {
      street2.erase(at, 1);
    }
  }
}

bool frmOrdPrints::IsCardChanged() const {
  const StringArray& c = order_.gsaUserCard;
  const long month = cboS2Month.ListIndex() < 0
                         ? 0
                         : cboS2Month.ItemData(cboS2Month.ListIndex());
  return TrimSpaces(txtS2CCName.Text()) != c[0] ||
         TrimSpaces(txtS2CCNumber.Text()) != c[1] ||
         static_cast<double>(month) != TextValue(c[2]) ||
         TrimSpaces(cboS2Year.Text()) != c[3] ||
         TrimSpaces(txtS2BillZip.Text()) != c[4];
}

bool frmOrdPrints::IsUserInfoStale() const {
  const StringArray& c = order_.gsaUserCard;
  const long month = cboS2Month.ListIndex() < 0
                         ? 0
                         : cboS2Month.ItemData(cboS2Month.ListIndex());
  const bool card_matches = c[0] == TrimSpaces(txtS2CCName.Text()) &&
                            TextValue(c[2]) == static_cast<double>(month) &&
                            c[3] == TrimSpaces(cboS2Year.Text()) &&
                            c[4] == TrimSpaces(txtS2BillZip.Text());
  bool address_matches = true;
  if (!lblS2MyAddressValue.Visible()) {
    for (int i = 3; i <= 7; ++i) {
      address_matches =
          address_matches && order_.gsaUserAddress[i] == msaMyAddress[i];
    }
  }
  return !(card_matches && address_matches);
}

void frmOrdPrints::ShowServiceFieldError(const std::string& code,
                                         const std::string& text) {
  lblS2Error.SetCaption(text);
  const bool mine = !optS2ShipToDiffadd.Value();
  const auto mark = [this](Label& l) { MarkFieldInvalid(true, &l); };
  if (code == "2001") {
    mark(lblS2FName);
  } else if (code == "2008" || code == "2009") {
    mark(mine ? lblS2MyStreet : lblS2Street);
  } else if (code == "2010") {
    mark(mine ? lblS2MyCity : lblS2City);
  } else if (code == "2011") {
    mark(mine ? lblS2MyState : lblS2State);
  } else if (code == "2012") {
    mark(lblS2MailZip);
  } else if (code == "2013") {
    mark(mine ? lblS2MyState : lblS2State);
    mark(mine ? lblS2MyZip : lblS2MailZip);
    lblS2Error.SetCaption("State and Zip do not match.");
  } else if (code == "2016" || code == "2019") {
    mark(lblS2CCNumber);
  } else if (code == "2017" || code == "2018") {
    mark(lblS2ExpDate);
  } else if (code == "2020") {
    mark(lblS2BillZip);
  }
  lblS2Error.SetVisible(true);
}

void frmOrdPrints::EnableStep2(bool enabled) {
  fraS2Right.SetEnabled(enabled);
  for (PictureButton* b : {&imgS2Continue, &imgS2Back, &imgS2Cancel}) {
    b->SetEnabled(enabled);
  }
}

void frmOrdPrints::txtS2CCNumber_KeyPress(EventArgs& e) {
  e.KeyAscii = CardNumberKey(e.KeyAscii);
}

void frmOrdPrints::lblEditmyaddress_Click() {
  auto& dialog = app_.forms().Get<frmEditAddress>();
  dialog.EditAccountOf(order_);
  dialog.Show(/*modal=*/true);
  lblS2MyAddressValue.SetCaption(AddressText(order_.gsaUserAddress));
}

void frmOrdPrints::imgS2Back_Click() {
  CopyStep2Fields();
  if (IsCardChanged()) {
    msaCard[0] = TrimSpaces(txtS2CCName.Text());
    msaCard[1] = TrimSpaces(txtS2CCNumber.Text());
    msaCard[2] =
        std::to_string(cboS2Month.ListIndex() < 0
                           ? 0
                           : cboS2Month.ItemData(cboS2Month.ListIndex()));
    msaCard[3] = TrimSpaces(cboS2Year.Text());
    msaCard[4] = TrimSpaces(txtS2BillZip.Text());
  }
  if (miPreviousStep == 1) {
    ShowStep(1, true);
    // No longer the first showing of step 1: Back leads to this step.
    imgS1Back.SetVisible(true);
    if (msExpressChoice == "CS") {
      mbLoading = true;
      opt4x6singles.SetValue(false);
      opt4x6dbls.SetValue(false);
      opt5x7singles.SetValue(false);
      mbLoading = false;
    }
    miCurrentStep = 1;
    lblHead.SetCaption("edit print order");
  } else if (miPreviousStep == 3) {
    ShowReviewStep();
    miCurrentStep = 3;
    lblHead.SetCaption("review print order");
  } else {
    return;
  }
  miPreviousStep = 2;
  ShowStep(2, false);
}

}  // namespace qbpd
