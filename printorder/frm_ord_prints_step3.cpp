#include "online/frm_upload_imgs.h"
#include "printorder/frm_ord_prints.h"
#include "printorder/order_layout.h"
#include "printorder/order_money.h"

#include <cmath>
#include <cstdio>

namespace qbpd {
namespace {

constexpr int kSizeRowTop = 360;
constexpr int kSizeRowStep = 300;

const char* const kReviewSizes[] = {"4 x 6  print(s)", "5 x 7  print(s)",
                                    "8 x 10 print(s)", "wallet set(s)"};

}  // namespace

void frmOrdPrints::RefillWorkingLists() {
  order_.gcolEditPhotos = app_.session().gcolOrderPhotos;
  order_.gcolEditLines = order_.gcolOrderLines;
}

void frmOrdPrints::ShowReviewStep() {
  const Session& s = app_.session();
  // 1 to 3.
  miCurrentStep = 3;
  lblS3CCVal.SetCaption(CardText());
  lblS3ShipVal.SetCaption(AddressText(order_.gsaShipTo));
  // 4.
  const TextGrid& free = order_.gsaFreePrints;
  const bool any_free =
      free.Rows() > 0 && free.Columns() >= 3 && !free(0, 0).empty();
  int top = kSizeRowTop;
  for (int row = 0; row < kSizeRows; ++row) {
    const std::string& quantity = order_.gsaSizeTotals.Rows() > row
                                      ? order_.gsaSizeTotals(row, 0)
                                      : std::string();
    // A size with no prints has no row; the service writes "0" for it.
    const bool shown = !quantity.empty() && TextValue(quantity) != 0;
    for (Control* c : std::initializer_list<Control*>{
             &lblS3Qty[row], &lblS3Size[row], &lblS3PrintsVal[row],
             &lnS3PrintsSep[row]}) {
      c->SetVisible(shown);
    }
    if (!shown) {
      continue;
    }
    lblS3Qty[row].SetCaption(quantity);
    lblS3Size[row].SetCaption(kReviewSizes[row]);
    lblS3PrintsVal[row].SetCaption(order_.gsaSizeTotals(row, 2));
    for (Label* l : {&lblS3Qty[row], &lblS3Size[row], &lblS3PrintsVal[row]}) {
      l->SetTop(top);
    }
    lnS3PrintsSep[row].SetY1(top + 270);
    lnS3PrintsSep[row].SetY2(top + 270);
    top += kSizeRowStep;
  }
  for (Label* l :
       {&lblS3FreePrintsQty, &lblS3FreePrintsHead, &lblS3FreePrintsVal}) {
    l->SetVisible(any_free);
    l->SetCaption("");
    l->SetTop(top);
  }
  if (any_free) {
    std::string qty, head, value;
    for (int r = 0; r < free.Rows(); ++r) {
      const std::string nl = r == 0 ? "" : "\n";
      qty += nl + free(r, 0);
      head += nl + free(r, 2) + " prints";
      value += nl + FormatAmountText(free(r, 1), app_.numbers());
    }
    lblS3FreePrintsQty.SetCaption(qty);
    lblS3FreePrintsHead.SetCaption(head);
    lblS3FreePrintsVal.SetCaption(value);
    const int height = order_layout::kLineHeight * free.Rows();
    for (Label* l :
         {&lblS3FreePrintsQty, &lblS3FreePrintsHead, &lblS3FreePrintsVal}) {
      l->SetHeight(height);
    }
    top += height + 105;
  }
  // 6.
  const StringArray& c = order_.gsaCouponResult;
  const bool coupon = !s.gsCouponCode.empty() && c.size() > 3 &&
                      TextValue(c[3]) == 1 && !c[2].empty();
  const auto place = [&top](Label& head, Label& value) {
    head.SetTop(top);
    value.SetTop(top);
    top += 300;
  };
  const bool cost_row = coupon && mdCostOfPrints > 0;
  lblS3PrintsCostHead.SetVisible(cost_row);
  lblS3PrintsCostVal.SetVisible(cost_row);
  lblS3CouponHead.SetVisible(coupon);
  lblS3CouponVal.SetVisible(coupon);
  if (cost_row) {
    lblS3PrintsCostVal.SetCaption(FormatAmount(
        std::fabs(TextValue(c[2])) + mdCostOfPrints, app_.numbers()));
    place(lblS3PrintsCostHead, lblS3PrintsCostVal);
  }
  if (coupon) {
    lblS3CouponHead.SetCaption("coupon #" + s.gsCouponCode + " -- " + c[1] +
                               " prints:");
    lblS3CouponVal.SetCaption(FormatAmountText(c[2], app_.numbers()));
    place(lblS3CouponHead, lblS3CouponVal);
  }
  // 7.
  lblS3SubTotalVal.SetCaption(FormatAmount(mdCostOfPrints, app_.numbers()));
  place(lblS3SubTotalHead, lblS3SubTotalVal);
  lblS3SHVal.SetCaption(FormatAmountText(msShipping, app_.numbers()));
  place(lblS3SHHead, lblS3SHVal);
  // 8.
  const TextGrid& tax = order_.gsaOrderTax;
  if (tax.Rows() > 0 && tax.Columns() >= 3 && TextValue(tax(0, 1)) > 0) {
    lblS3TaxHead.SetCaption(tax(0, 1) + "% " + tax(0, 0) + " sales tax : ");
    lblS3TaxVal.SetCaption(tax(0, 2));
    lblS3TaxHead.SetVisible(true);
    lblS3TaxVal.SetVisible(true);
    place(lblS3TaxHead, lblS3TaxVal);
  } else {
    lblS3TaxHead.SetCaption("0% Tax will be added ");
    lblS3TaxVal.SetCaption("0.00");
    lblS3TaxHead.SetVisible(false);
    lblS3TaxVal.SetVisible(false);
  }
  // 9. The step-1 captions, without taking out the grouping.
  const double total =
      mdCostOfPrints +
      ShownValueKeepingGroups(lblS1ShipCostVal.Caption(), app_.numbers()) +
      ShownValueKeepingGroups(lblS1TaxCostVal.Caption(), app_.numbers());
  lblS3ORderTotalVal.SetCaption("$" + FormatAmount(total, app_.numbers()));
  place(lblS3OrderTotalHead, lblS3ORderTotalVal);
  // 10.
  ShowStep(3, true);
}

void frmOrdPrints::imgS3EditInfo_Click() {
  msaCard.assign(6, "");
  std::copy(order_.gsaUserCard.begin(), order_.gsaUserCard.end(),
            msaCard.begin());
  msaMyAddress = order_.gsaUserAddress;
  msaShipTo = order_.gsaShipTo;
  mbShipToMyAddress = !order_.gbShipToOther;
  ShowBillingStep();
  lblHead.SetCaption("Billing && Shipping");
  miPreviousStep = 3;
  ShowStep(3, false);
}

void frmOrdPrints::lblS3EditOrder_Click() {
  msSavedCoupon = app_.session().gsCouponCode;
  RefillWorkingLists();
  AddingIntoOrderPrints();
  lblHead.SetCaption("edit print order");
  miPreviousStep = 3;
  ShowStep(3, false);
}

void frmOrdPrints::imgS3Continue_Click() {
  Session& s = app_.session();
  // 1.
  for (Control* c : std::initializer_list<Control*>{
           &imgS3Continue, &imgS3Cancel, &imgS3EditInfo, &lblS3EditOrder}) {
    c->SetEnabled(false);
  }
  // 2.
  for (int k = order_.gcolOrderLines.Count(); k >= 1; --k) {
    const TextGrid& line = order_.gcolOrderLines.Item(k);
    bool any = false;
    for (int row = 0; row < kSizeRows; ++row) {
      any = any || TextValue(line(row, kQuantityColumn)) > 0;
    }
    if (!any) {
      const std::string key = order_.gcolOrderLines.KeyAt(k);
      if (s.gcolOrderPhotos.Exists(key)) {
        s.gcolOrderPhotos.Remove(key);
      }
      order_.gcolOrderLines.Remove(k);
    }
  }
  // 3, 4.
  host().SetMousePointer(kPointerHourglass);
  const Today now = TodayFromClock();
  char date[8];
  std::snprintf(date, sizeof date, "%02d/%02d", now.month, now.day);
  s.gsAlbumName = std::string("album ") + date;
  s.gsAlbumId.clear();
  // 5.
  for (Control* c : std::initializer_list<Control*>{
           &imgS3Continue, &imgS3Cancel, &imgS3EditInfo, &lblS3EditOrder}) {
    c->SetEnabled(true);
  }
  order_.mdCostOfPrints = mdCostOfPrints;
  order_.msShipping = msShipping;
  auto& engine = app_.forms().Get<frmUploadImgs>();
  engine.TakeOrder(std::move(order_));
  Unload();
  host().SetMousePointer(kPointerDefault);
  engine.Show(/*modal=*/true);
}

}  // namespace qbpd
