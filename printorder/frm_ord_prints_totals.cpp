#include "core/settings.h"
#include "printorder/frm_ord_prints.h"
#include "printorder/order_layout.h"
#include "printorder/order_money.h"

namespace qbpd {
namespace {

constexpr int kRowHeight = 255;

}  // namespace

void frmOrdPrints::EnableStep1(bool enabled) {
  fraS1Left.SetEnabled(enabled);
  for (int slot = 0; slot < kSlots; ++slot) {
    imgS1Remove[slot].SetEnabled(enabled);
  }
  for (int i = 0; i < kRows; ++i) {
    txtQty[i].SetEnabled(enabled);
    imgS1Up[i].SetEnabled(enabled);
    imgS1Down[i].SetEnabled(enabled);
  }
  for (PictureButton* b :
       {&imgS1Cancel, &imgS1Back, &imgS1RightUpdate, &imgS1Continue}) {
    b->SetEnabled(enabled);
  }
}

bool frmOrdPrints::UpdateOrderTotals() {
  Session& s = app_.session();
  s.gsCouponCode = txtcouponnumber.Text();
  EnableStep1(false);
  if (!ValidateVisibleRows()) {
    return false;
  }
  if (msExpressChoice == "CS") {
    msExpressChoice.clear();
  }
  SaveVisibleRows();
  if (OrderQuantity(order_.gcolEditLines) == 0) {
    host().MsgBox("Enter quantity for atleast one image", kMbInformation,
                  s.gsAppTitle);
    return false;
  }
  if (s.gsAccountStatus == "FUL") {
    msErrCode.clear();
    msErrText.clear();
    if (!CallPlaceOrder(order_.gbShipToOther, msErrCode, msErrText)) {
      return false;
    }
    ApplySizePrices(order_.gcolEditLines, order_.gsaSizeTotals);
  } else {
    OrderAmounts amounts{0, msShipping};
    PriceOrderLocally(order_, amounts);
    mdCostOfPrints = amounts.cost_of_prints;
    msShipping = amounts.shipping;
    if (!s.gsCouponCode.empty()) {
      host().MsgBox("Your coupon will be applied in the review order page",
                    kMbInformation, s.gsAppTitle);
    }
  }
  s.gcolOrderPhotos = order_.gcolEditPhotos;
  order_.gcolOrderLines = order_.gcolEditLines;
  return true;
}

bool frmOrdPrints::CouponRefused() const {
  const Session& s = app_.session();
  return !s.gsCouponCode.empty() && s.gsAccountStatus == "FUL" &&
         order_.gsaCouponResult.size() > 3 && order_.gsaCouponResult[3] == "0";
}

void frmOrdPrints::Update_Click(bool left) {
  Session& s = app_.session();
  if (left) {
    txtcouponnumber.SetText(TrimSpaces(txtcouponnumber.Text()));
  }
  if (mbPriced) {
    return;
  }
  host().SetMousePointer(kPointerHourglass);
  if (UpdateOrderTotals()) {
    mbPriced = true;
    if (CouponRefused()) {
      mbPriced = false;
      host().MsgBox(
          left ? "The coupon you entered could not be applied to this order"
               : order_.gsaCouponResult[1],
          kMbInformation, s.gsAppTitle);
    }
    ShowLinePrices();
    ShowOrderSummary();
  } else {
    mbPriced = false;
  }
  EnableStep1(true);
  host().SetMousePointer(kPointerDefault);
}

void frmOrdPrints::imgS1RightUpdate_Click() {
  Update_Click(/*left=*/false);
}

void frmOrdPrints::imgS1LeftUpdate_Click() {
  Update_Click(/*left=*/true);
}

void frmOrdPrints::RebuildEditRecords() {
  const Session& s = app_.session();
  msaCard.assign(6, "");
  msaMyAddress.assign(8, "");
  if (s.gsAccountStatus == "FUL") {
    std::copy(order_.gsaUserCard.begin(), order_.gsaUserCard.end(),
              msaCard.begin());
  }
  if (s.gsAccountStatus != "LTE") {
    msaMyAddress = order_.gsaUserAddress;
  }
  msaShipTo = order_.gsaShipTo;
}

void frmOrdPrints::imgS1Continue_Click() {
  Session& s = app_.session();
  host().SetMousePointer(kPointerHourglass);
  if (mbPriced) {
    EnableStep1(false);
  } else {
    if (!UpdateOrderTotals()) {
      mbPriced = false;
      EnableStep1(true);
      host().SetMousePointer(kPointerDefault);
      return;
    }
    mbPriced = true;
    if (CouponRefused()) {
      mbPriced = false;
      host().MsgBox(order_.gsaCouponResult[1], kMbInformation, s.gsAppTitle);
      ShowLinePrices();
      ShowOrderSummary();
      EnableStep1(true);
      host().SetMousePointer(kPointerDefault);
      return;
    }
    ShowLinePrices();
    ShowOrderSummary();
  }
  RebuildEditRecords();
  if (s.gsAccountStatus != "FUL") {
    ShowBillingStep();
    lblHead.SetCaption("Billing && Shipping");
  } else {
    ShowReviewStep();
    lblHead.SetCaption("review print order");
  }
  miPreviousStep = 1;
  ShowStep(1, false);
  mbPriced = true;
  EnableStep1(true);
  host().SetMousePointer(kPointerDefault);
}

void frmOrdPrints::imgS1Back_Click() {
  msSavedCoupon = TrimSpaces(txtcouponnumber.Text());
  SaveVisibleRows();
  if (miPreviousStep == 2) {
    ShowBillingStep();
    lblHead.SetCaption("Billing && Shipping");
  } else if (miPreviousStep == 3) {
    ShowReviewStep();
    lblHead.SetCaption("review print order");
  } else {
    return;
  }
  miPreviousStep = 1;
  ShowStep(1, false);
}

void frmOrdPrints::imgS1EditInfo_Click() {
  msSavedCoupon = TrimSpaces(txtcouponnumber.Text());
  SaveVisibleRows();
  ShowBillingStep();
  lblHead.SetCaption("Billing && Shipping");
  miPreviousStep = 1;
  ShowStep(1, false);
}

void frmOrdPrints::ShowOrderSummary() {
  using order_layout::kSummaryGap;
  const Session& s = app_.session();
  const bool ful = s.gsAccountStatus == "FUL";
  int top = order_layout::kSummaryTop;
  const auto place = [&top](Label& head, Label& value, int height) {
    head.SetTop(top);
    value.SetTop(top);
    head.SetHeight(height);
    value.SetHeight(height);
    top += height + kSummaryGap;
  };
  lblS1FreePrintsLabel.SetCaption("");
  lblS1FreePrintsCost.SetCaption("");
  lblS1FreePrintsLabel.SetVisible(false);
  lblS1FreePrintsCost.SetVisible(false);
  lblS1FreePrintsLabel.SetHeight(order_layout::kLineHeight);
  lblS1FreePrintsCost.SetHeight(order_layout::kLineHeight);
  bool coupon_rows = false;
  if (ful) {
    const TextGrid& free = order_.gsaFreePrints;
    if (free.Rows() > 0 && free.Columns() >= 3 && !free(0, 0).empty()) {
      std::string label;
      std::string cost;
      for (int r = 0; r < free.Rows(); ++r) {
        label += (label.empty() ? "" : "\n") + free(r, 0) + " " + free(r, 2) +
                 " Print(s)";
        cost += (cost.empty() ? "" : "\n") +
                FormatAmountText(free(r, 1), app_.numbers());
      }
      lblS1FreePrintsLabel.SetCaption(label);
      lblS1FreePrintsCost.SetCaption(cost);
      lblS1FreePrintsLabel.SetVisible(true);
      lblS1FreePrintsCost.SetVisible(true);
      place(lblS1FreePrintsLabel, lblS1FreePrintsCost,
            order_layout::kLineHeight * free.Rows());
    }
    const StringArray& c = order_.gsaCouponResult;
    coupon_rows =
        !s.gsCouponCode.empty() && c.size() > 3 && c[3] == "1" && !c[2].empty();
    if (coupon_rows) {
      const bool cost_row = mdCostOfPrints > 0;
      lblS1PrintsCostHead.SetVisible(cost_row);
      lblS1PrintsCostVal.SetVisible(cost_row);
      if (cost_row) {
        lblS1PrintsCostHead.SetCaption("cost of prints:");
        lblS1PrintsCostVal.SetCaption(FormatAmount(
            std::abs(TextValue(c[2])) + mdCostOfPrints, app_.numbers()));
        place(lblS1PrintsCostHead, lblS1PrintsCostVal, kRowHeight);
      }
      lblS1CouponPerc.SetCaption("coupon #" + s.gsCouponCode + " -- " + c[1] +
                                 "%  off prints:");
      lblS1CouponValue.SetCaption(FormatAmountText(c[2], app_.numbers()));
      lblS1CouponPerc.SetVisible(true);
      lblS1CouponValue.SetVisible(true);
      place(lblS1CouponPerc, lblS1CouponValue, kRowHeight);
    }
  }
  if (!coupon_rows) {
    for (Label* l : {&lblS1PrintsCostHead, &lblS1PrintsCostVal,
                     &lblS1CouponPerc, &lblS1CouponValue}) {
      l->SetVisible(false);
    }
  }
  lblS1SubTotalVal.SetCaption(FormatAmount(mdCostOfPrints, app_.numbers()));
  place(lblS1SubTotalHead, lblS1SubTotalVal, kRowHeight);
  lblS1ShipCostVal.SetCaption(FormatAmountText(msShipping, app_.numbers()));
  place(lblS1ShipCostHead, lblS1ShipCostVal, kRowHeight);
  const TextGrid& tax = order_.gsaOrderTax;
  if (!ful || tax.Rows() == 0 || tax.Columns() < 3) {
    lblS1TaxCostLabel.SetVisible(false);
    lblS1TaxCostVal.SetVisible(false);
  } else if (TextValue(tax(0, 1)) <= 0) {
    lblS1TaxCostLabel.SetCaption("0% Tax will be added ");
    lblS1TaxCostVal.SetCaption("0.00");
    lblS1TaxCostLabel.SetVisible(false);
    lblS1TaxCostVal.SetVisible(false);
  } else {
    lblS1TaxCostLabel.SetCaption(tax(0, 1) + "% Tax will be added : ");
    lblS1TaxCostVal.SetCaption(FormatAmountText(tax(0, 2), app_.numbers()));
    lblS1TaxCostLabel.SetVisible(true);
    lblS1TaxCostVal.SetVisible(true);
    place(lblS1TaxCostLabel, lblS1TaxCostVal, kRowHeight);
  }
  const double total = ShownValue(lblS1ShipCostVal.Caption(), app_.numbers()) +
                       ShownValue(lblS1TaxCostVal.Caption(), app_.numbers()) +
                       mdCostOfPrints;
  lblS1OrderCostVal.SetCaption("$" + FormatAmount(total, app_.numbers()));
  place(lblS1OrderCostHead, lblS1OrderCostVal, kRowHeight);
  imgS1RightUpdate.SetTop(top + 150 - kSummaryGap);
  const int buttons = imgS1RightUpdate.Top() + imgS1RightUpdate.Height() + 300;
  imgS1Continue.SetTop(buttons);
  imgS1Cancel.SetTop(buttons);
  imgS1Back.SetTop(buttons);
}

}  // namespace qbpd
