#include "online/online_common.h"
#include "printorder/frm_ord_prints.h"
#include "printorder/order_layout.h"
#include "printorder/order_money.h"

namespace qbpd {
namespace {

using namespace order_layout;

constexpr int kFieldHeight = 315;
constexpr int kLabelHeight = 255;
constexpr int kButtonWidth = 1200;
constexpr int kButtonHeight = 390;
constexpr int kQtyWidth = 600;
constexpr int kArrowWidth = 270;
constexpr int kSizeX = kSlotLeft + kPhotoWidth + 240;
constexpr int kDownX = kSizeX + 1560;
constexpr int kQtyX = kDownX + kArrowWidth + 30;
constexpr int kUpX = kQtyX + kQtyWidth + 30;
constexpr int kPriceX = kUpX + kArrowWidth + 120;
constexpr int kTotalX = kPriceX + 1080;
constexpr int kRedX = kTotalX + 1080;
constexpr int kValueX = kTotalX;
constexpr int kValueWidth = 1000;
constexpr int kHeadX = 2400;
constexpr int kHeadWidth = kValueX - kHeadX - 120;
constexpr int kS2Label = 120;
constexpr int kS2Field = 1800;
constexpr const char* kSizeCaptions[] = {"4 x 6", "5 x 7", "8 x 10",
                                         "wallet set (4)"};

void In(Control& c, const char* frame) {
  c.SetContainer(frame);
}

}  // namespace

void frmOrdPrints::LayOutStep1() {
  const char* left = "fraS1Left";
  const char* right = "fraS1Right";
  fraS1Left.SetCaption("");
  fraS1Right.SetCaption("");
  int y = 240;
  In(lblS1ExpressHead, left);
  lblS1ExpressHead.Move(120, y, 3000, kLabelHeight);
  lblS1ExpressHead.SetCaption("express prints:");
  y += 330;
  const char* express[] = {"4 x 6 singles", "4 x 6 doubles", "5 x 7 singles"};
  OptionButton* options[] = {&opt4x6singles, &opt4x6dbls, &opt5x7singles};
  for (int i = 0; i < 3; ++i) {
    In(*options[i], left);
    options[i]->Move(240, y, 2600, kLabelHeight);
    options[i]->SetCaption(express[i]);
    y += 300;
  }
  In(imgClearSizes, left);
  imgClearSizes.Move(240, y + 60, kButtonWidth, kButtonHeight);
  y += 600;
  In(lblcouponinfo, left);
  lblcouponinfo.Move(120, y, 3240, 780);
  lblcouponinfo.SetWordWrap(true);
  lblcouponinfo.SetCaption(
      "if you have a coupon or a gift certificate enter the number in the box "
      "below, then click the 'update total' button");
  y += 840;
  In(txtcouponnumber, left);
  txtcouponnumber.Move(240, y, 1800, kFieldHeight);
  In(imgS1LeftUpdate, left);
  imgS1LeftUpdate.Move(2100, y - 30, kButtonWidth, kButtonHeight);
  y += 600;
  In(lblS1BillHead, left);
  lblS1BillHead.Move(120, y, 3000, kLabelHeight);
  lblS1BillHead.SetCaption("bill to:");
  lblS1BillHead.SetFontBold(true);
  In(lblS1CCInfo, left);
  lblS1CCInfo.Move(240, y + 270, 3120, 900);
  y += 1260;
  In(lblS1ShipHead, left);
  lblS1ShipHead.Move(120, y, 3000, kLabelHeight);
  lblS1ShipHead.SetCaption("ship to:");
  lblS1ShipHead.SetFontBold(true);
  In(lblS1ShipInfo, left);
  lblS1ShipInfo.Move(240, y + 270, 3120, 1100);
  lblS1ShipInfo.SetWordWrap(true);
  y += 1440;
  In(imgS1EditInfo, left);
  imgS1EditInfo.Move(240, y, kButtonWidth, kButtonHeight);
  In(lblS1Help, left);
  lblS1Help.Move(120, kFrameHeight - 400, 1200, kLabelHeight);
  lblS1Help.SetCaption("help");

  const struct {
    Label* label;
    const char* caption;
    int x;
    int width;
  } heads[] = {{&lblS1PhotoHead, "PHOTOS", kSlotLeft, kPhotoWidth},
               {&lblS1SizeHead, "SIZE", kSizeX, 1500},
               {&lblS1PriceHead, "PRICE EA.", kPriceX, 1000},
               {&lblS1TotalPriceHead, "TOTAL", kTotalX, 1000}};
  for (const auto& h : heads) {
    In(*h.label, right);
    h.label->Move(h.x, 90, h.width, kLabelHeight);
    h.label->SetCaption(h.caption);
    h.label->SetFontBold(true);
  }
  for (int slot = 0; slot < kSlots; ++slot) {
    if (slot > 0) {
      shpS1Slot.Load(slot);
      imgS1Display.Load(slot);
      imgS1Remove.Load(slot);
    }
    const int top = kSlotTop + slot * kSlotHeight;
    In(shpS1Slot[slot], right);
    shpS1Slot[slot].Move(kSlotLeft, top, kSlotWidth, kSlotHeight);
    shpS1Slot[slot].SetFilled(true);
    In(imgS1Display[slot], right);
    imgS1Display[slot].Move(kSlotLeft + kBoxInset, top + kBoxInset, kPhotoWidth,
                            kSlotHeight - 180 - kRemoveHeight);
    In(imgS1Remove[slot], right);
    imgS1Remove[slot].Move(kSlotLeft + kBoxInset,
                           top + kSlotHeight - kRemoveHeight - 60, 900,
                           kRemoveHeight);
    for (int row = 0; row < kSizeRows; ++row) {
      const int i = slot * kSizeRows + row;
      if (i > 0) {
        txtQty.Load(i);
        imgS1Up.Load(i);
        imgS1Down.Load(i);
        lblS1Size.Load(i);
        lblS1Price.Load(i);
        lblS1Total.Load(i);
        imgS1Red.Load(i);
      }
      const int y_row = top + 60 + row * kRowHeight;
      for (Control* c : std::initializer_list<Control*>{
               &txtQty[i], &imgS1Up[i], &imgS1Down[i], &lblS1Size[i],
               &lblS1Price[i], &lblS1Total[i], &imgS1Red[i]}) {
        In(*c, right);
      }
      lblS1Size[i].Move(kSizeX, y_row + 45, 1500, kLabelHeight);
      lblS1Size[i].SetCaption(kSizeCaptions[row]);
      imgS1Down[i].Move(kDownX, y_row, kArrowWidth, kFieldHeight);
      txtQty[i].Move(kQtyX, y_row, kQtyWidth, kFieldHeight);
      txtQty[i].SetMaxLength(3);
      txtQty[i].SetText("0");
      imgS1Up[i].Move(kUpX, y_row, kArrowWidth, kFieldHeight);
      lblS1Price[i].Move(kPriceX, y_row + 45, 1000, kLabelHeight);
      lblS1Price[i].SetAlignment(1);
      lblS1Total[i].Move(kTotalX, y_row + 45, 1000, kLabelHeight);
      lblS1Total[i].SetAlignment(1);
      imgS1Red[i].Move(kRedX, y_row + 45, 240, 240);
      imgS1Red[i].SetVisible(false);
    }
  }
  In(ctrlS1VScroll, right);
  ctrlS1VScroll.SetVertical(true);
  ctrlS1VScroll.Move(kSlotLeft + kSlotWidth + 60, kSlotTop, 255,
                     2 * kSlotHeight);
  ctrlS1VScroll.SetSmallChange(1);
  ctrlS1VScroll.SetLargeChange(2);
  In(lblS1ResAlertMsg, right);
  lblS1ResAlertMsg.Move(kSlotLeft, kSlotTop + 2 * kSlotHeight + 90, 6000,
                        kLabelHeight);
  lblS1ResAlertMsg.SetCaption(
      "Sizes marked with         are not  recommended for printing.");
  lblS1ResAlertMsg.SetVisible(false);
  In(imgS1LeftRed, right);
  imgS1LeftRed.Move(kSlotLeft + 1380, kSlotTop + 2 * kSlotHeight + 90, 240,
                    240);
  imgS1LeftRed.SetPicture("G8");
  imgS1LeftRed.SetVisible(false);
  const struct {
    Label* head;
    Label* value;
    const char* caption;
  } rows[] = {
      {&lblS1FreePrintsLabel, &lblS1FreePrintsCost, ""},
      {&lblS1PrintsCostHead, &lblS1PrintsCostVal, "cost of prints:"},
      {&lblS1CouponPerc, &lblS1CouponValue, ""},
      {&lblS1SubTotalHead, &lblS1SubTotalVal, "sub total:"},
      {&lblS1ShipCostHead, &lblS1ShipCostVal, "standard S&&H:"},
      {&lblS1TaxCostLabel, &lblS1TaxCostVal, "0% Tax will be added "},
      {&lblS1OrderCostHead, &lblS1OrderCostVal, "order total:"},
  };
  for (const auto& r : rows) {
    In(*r.head, right);
    In(*r.value, right);
    r.head->Move(kHeadX, kSummaryTop, kHeadWidth, kLabelHeight);
    r.head->SetAlignment(1);
    r.head->SetCaption(r.caption);
    r.value->Move(kValueX, kSummaryTop, kValueWidth, kLabelHeight);
    r.value->SetAlignment(1);
  }
  lblS1OrderCostHead.SetFontBold(true);
  lblS1OrderCostVal.SetFontBold(true);
  In(imgS1RightUpdate, right);
  imgS1RightUpdate.Move(kValueX - 200, kSummaryTop, kButtonWidth,
                        kButtonHeight);
  const int buttons_y = kFrameHeight - kButtonHeight - 120;
  In(imgS1Back, right);
  imgS1Back.Move(kSlotLeft + 2400, buttons_y, kButtonWidth, kButtonHeight);
  In(imgS1Cancel, right);
  imgS1Cancel.Move(kSlotLeft + 3735, buttons_y, kButtonWidth, kButtonHeight);
  In(imgS1Continue, right);
  imgS1Continue.Move(kSlotLeft + 5070, buttons_y, kButtonWidth, kButtonHeight);
}

void frmOrdPrints::LayOutStep2() {
  const char* left = "fraS2Left";
  const char* right = "fraS2Right";
  fraS2Left.SetCaption("");
  fraS2Right.SetCaption("");
  In(lbldesc1, left);
  lbldesc1.Move(120, 240, 3240, 780);
  lbldesc1.SetWordWrap(true);
  lbldesc1.SetCaption(
      "Enter your credit card and shipping info in the forms on the right");
  In(lblDesc2, left);
  lblDesc2.Move(120, 1140, 3240, 780);
  lblDesc2.SetWordWrap(true);
  lblDesc2.SetCaption(
      "When you are finished, click on the \"Continue\" button to proceed "
      "with your order");
  In(lblS2Error, right);
  lblS2Error.Move(120, 60, 7200, 480);
  lblS2Error.SetWordWrap(true);
  lblS2Error.SetForeColor(kErrorColour);
  lblS2Error.SetVisible(false);
  int y = 600;
  const auto field = [&](Label& label, const char* caption, Control& box,
                         int width, const char* frame) {
    In(label, frame);
    In(box, frame);
    label.Move(kS2Label, y + 30, kS2Field - kS2Label - 60, kLabelHeight);
    label.SetCaption(caption);
    box.Move(kS2Field, y, width, kFieldHeight);
    y += 390;
  };
  field(lblS2CCName, "name on card", txtS2CCName, 3000, right);
  txtS2CCName.SetMaxLength(30);
  field(lblS2CCNumber, "card number", txtS2CCNumber, 3000, right);
  txtS2CCNumber.SetMaxLength(20);
  field(lblS2ExpDate, "exp. date", cboS2Month, 1000, right);
  In(cboS2Year, right);
  cboS2Year.Move(kS2Field + 1080, y - 390, 1100, kFieldHeight);
  field(lblS2BillZip, "billing zip", txtS2BillZip, 1500, right);
  txtS2BillZip.SetMaxLength(10);
  y += 120;
  In(lblS2MyAddressHead, right);
  lblS2MyAddressHead.Move(kS2Label, y, 3000, kLabelHeight);
  lblS2MyAddressHead.SetCaption("my address");
  lblS2MyAddressHead.SetFontBold(true);
  y += 300;
  In(lblS2MyAddressValue, right);
  lblS2MyAddressValue.Move(kS2Field, y, 3600, 1000);
  lblS2MyAddressValue.SetWordWrap(true);
  In(lblEditmyaddress, right);
  lblEditmyaddress.Move(5520, y, 1600, kLabelHeight);
  lblEditmyaddress.SetCaption("edit my address");
  lblEditmyaddress.SetForeColor(0xC06000);
  In(picS2MyAddressCont, right);
  picS2MyAddressCont.Move(0, y, 7400, 1575);
  const int container_top = y;
  y = 0;
  field(lblS2MyStreet, "street", txtS2MyStreet1, 3000, "picS2MyAddressCont");
  In(txtS2MyStreet2, "picS2MyAddressCont");
  txtS2MyStreet2.Move(kS2Field + 3060, y - 390, 2400, kFieldHeight);
  field(lblS2MyCity, "city", txtS2MyCity, 3000, "picS2MyAddressCont");
  field(lblS2MyState, "state", cboS2MyState, 1000, "picS2MyAddressCont");
  field(lblS2MyZip, "zip", txtS2MyZip, 1500, "picS2MyAddressCont");
  for (TextBox* b : {&txtS2MyStreet1, &txtS2MyStreet2}) {
    b->SetMaxLength(30);
  }
  txtS2MyCity.SetMaxLength(20);
  txtS2MyZip.SetMaxLength(10);
  y = container_top + 1620;
  In(optS2ShipToMyadd, right);
  optS2ShipToMyadd.Move(kS2Label, y, 3000, kLabelHeight);
  optS2ShipToMyadd.SetCaption("ship to my address");
  In(optS2ShipToDiffadd, right);
  optS2ShipToDiffadd.Move(3600, y, 3400, kLabelHeight);
  optS2ShipToDiffadd.SetCaption("ship to different address");
  y += 360;
  field(lblS2FName, "first name", txtS2FName, 1800, right);
  txtS2FName.SetMaxLength(12);
  In(lblS2Lname, right);
  In(txtS2LastName, right);
  lblS2Lname.Move(3720, y - 360, 1000, kLabelHeight);
  lblS2Lname.SetCaption("last name");
  txtS2LastName.Move(4740, y - 390, 2400, kFieldHeight);
  txtS2LastName.SetMaxLength(14);
  field(lblS2Street, "street", txtS2Street1, 3000, right);
  In(txtS2Street2, right);
  txtS2Street2.Move(kS2Field + 3060, y - 390, 2400, kFieldHeight);
  txtS2Street1.SetMaxLength(30);
  txtS2Street2.SetMaxLength(30);
  field(lblS2City, "city", txtS2City, 3000, right);
  txtS2City.SetMaxLength(20);
  field(lblS2State, "state", cboS2State, 1000, right);
  field(lblS2MailZip, "zip", txtS2MailZip, 1500, right);
  txtS2MailZip.SetMaxLength(10);
  const int buttons_y = kFrameHeight - kButtonHeight - 120;
  In(imgS2Back, right);
  imgS2Back.Move(2520, buttons_y, kButtonWidth, kButtonHeight);
  In(imgS2Cancel, right);
  imgS2Cancel.Move(3855, buttons_y, kButtonWidth, kButtonHeight);
  In(imgS2Continue, right);
  imgS2Continue.Move(5190, buttons_y, kButtonWidth, kButtonHeight);
}

void frmOrdPrints::LayOutStep3() {
  const char* left = "fraS3Left";
  const char* right = "fraS3Right";
  fraS3Left.SetCaption("");
  fraS3Right.SetCaption("");
  In(lblS3BillHead, left);
  lblS3BillHead.Move(120, 240, 3000, kLabelHeight);
  lblS3BillHead.SetCaption("bill to:");
  lblS3BillHead.SetFontBold(true);
  In(lblS3CCVal, left);
  lblS3CCVal.Move(240, 540, 3120, 1000);
  In(lblS3ShipHead, left);
  lblS3ShipHead.Move(120, 1740, 3000, kLabelHeight);
  lblS3ShipHead.SetCaption("ship to:");
  lblS3ShipHead.SetFontBold(true);
  In(lblS3ShipVal, left);
  lblS3ShipVal.Move(240, 2040, 3120, 1200);
  lblS3ShipVal.SetWordWrap(true);
  In(imgS3EditInfo, left);
  imgS3EditInfo.Move(240, 3420, kButtonWidth, kButtonHeight);
  for (int row = 0; row < kSizeRows; ++row) {
    if (row > 0) {
      lblS3Qty.Load(row);
      lblS3Size.Load(row);
      lblS3PrintsVal.Load(row);
      lnS3PrintsSep.Load(row);
    }
    for (Control* c : std::initializer_list<Control*>{
             &lblS3Qty[row], &lblS3Size[row], &lblS3PrintsVal[row],
             &lnS3PrintsSep[row]}) {
      In(*c, right);
    }
    lblS3Qty[row].Move(kHeadX - 1320, 360, 600, kLabelHeight);
    lblS3Qty[row].SetAlignment(1);
    lblS3Size[row].Move(kHeadX - 600, 360, kHeadWidth + 600, kLabelHeight);
    lblS3PrintsVal[row].Move(kValueX, 360, kValueWidth, kLabelHeight);
    lblS3PrintsVal[row].SetAlignment(1);
    lnS3PrintsSep[row].SetX1(kHeadX - 1320);
    lnS3PrintsSep[row].SetX2(kValueX + kValueWidth);
  }
  In(lblS3FreePrintsQty, right);
  lblS3FreePrintsQty.Move(kHeadX - 1320, 360, 600, kLineHeight);
  lblS3FreePrintsQty.SetAlignment(1);
  In(lblS3FreePrintsHead, right);
  lblS3FreePrintsHead.Move(kHeadX - 600, 360, kHeadWidth + 600, kLineHeight);
  In(lblS3FreePrintsVal, right);
  lblS3FreePrintsVal.Move(kValueX, 360, kValueWidth, kLineHeight);
  lblS3FreePrintsVal.SetAlignment(1);
  const struct {
    Label* head;
    Label* value;
    const char* caption;
  } rows[] = {
      {&lblS3PrintsCostHead, &lblS3PrintsCostVal, "cost of prints:"},
      {&lblS3CouponHead, &lblS3CouponVal, "coupon:"},
      {&lblS3SubTotalHead, &lblS3SubTotalVal, "subTotal:"},
      {&lblS3SHHead, &lblS3SHVal, "standard S&&H:"},
      {&lblS3TaxHead, &lblS3TaxVal, "sales Tax:"},
      {&lblS3OrderTotalHead, &lblS3ORderTotalVal, "order total :"},
  };
  for (const auto& r : rows) {
    In(*r.head, right);
    In(*r.value, right);
    r.head->Move(kHeadX - 600, 2400, kHeadWidth + 600, kLabelHeight);
    r.head->SetAlignment(1);
    r.head->SetCaption(r.caption);
    r.value->Move(kValueX, 2400, kValueWidth, kLabelHeight);
    r.value->SetAlignment(1);
  }
  lblS3OrderTotalHead.SetFontBold(true);
  lblS3ORderTotalVal.SetFontBold(true);
  const int buttons_y = kFrameHeight - kButtonHeight - 120;
  In(lblS3EditOrder, right);
  lblS3EditOrder.Move(kSlotLeft, buttons_y + 60, 1500, kLabelHeight);
  lblS3EditOrder.SetCaption("edit order");
  lblS3EditOrder.SetForeColor(0xC06000);
  In(imgS3Cancel, right);
  imgS3Cancel.Move(3855, buttons_y, kButtonWidth, kButtonHeight);
  In(imgS3Continue, right);
  imgS3Continue.Move(5190, buttons_y, kButtonWidth, kButtonHeight);
}

void frmOrdPrints::BindHandlers() {
  On("txtQty", "KeyPress", &frmOrdPrints::txtQty_KeyPress);
  On("txtQty", "Change", &frmOrdPrints::txtQty_Change);
  On("txtcouponnumber", "Change", &frmOrdPrints::txtcouponnumber_Change);
  On("imgS1Up", "Click", &frmOrdPrints::imgS1Up_Click);
  On("imgS1Down", "Click", &frmOrdPrints::imgS1Down_Click);
  On("opt4x6singles", "Click",
     [this](EventArgs&) { ExpressOption_Click("4S"); });
  On("opt4x6dbls", "Click", [this](EventArgs&) { ExpressOption_Click("4D"); });
  On("opt5x7singles", "Click",
     [this](EventArgs&) { ExpressOption_Click("5S"); });
  On("imgClearSizes", "Click", &frmOrdPrints::imgClearSizes_Click);
  On("ctrlS1VScroll", "Change", &frmOrdPrints::ctrlS1VScroll_Change);
  On("imgS1Remove", "Click", &frmOrdPrints::imgS1Remove_Click);
  On("imgS1RightUpdate", "Click", &frmOrdPrints::imgS1RightUpdate_Click);
  On("imgS1LeftUpdate", "Click", &frmOrdPrints::imgS1LeftUpdate_Click);
  On("imgS1Continue", "Click", &frmOrdPrints::imgS1Continue_Click);
  On("imgS1Back", "Click", &frmOrdPrints::imgS1Back_Click);
  On("imgS1EditInfo", "Click", &frmOrdPrints::imgS1EditInfo_Click);
  On("imgS1Cancel", "Click", &frmOrdPrints::CancelOrder);
  On("imgS2Continue", "Click", &frmOrdPrints::imgS2Continue_Click);
  On("imgS2Back", "Click", &frmOrdPrints::imgS2Back_Click);
  On("imgS2Cancel", "Click", &frmOrdPrints::CancelOrder);
  On("optS2ShipToMyadd", "Click", &frmOrdPrints::optS2ShipToMyadd_Click);
  On("optS2ShipToDiffadd", "Click", &frmOrdPrints::optS2ShipToDiffadd_Click);
  On("lblEditmyaddress", "Click", &frmOrdPrints::lblEditmyaddress_Click);
  On("txtS2CCNumber", "KeyPress", &frmOrdPrints::txtS2CCNumber_KeyPress);
  On("imgS3EditInfo", "Click", &frmOrdPrints::imgS3EditInfo_Click);
  On("lblS3EditOrder", "Click", &frmOrdPrints::lblS3EditOrder_Click);
  On("imgS3Continue", "Click", &frmOrdPrints::imgS3Continue_Click);
  On("imgS3Cancel", "Click", &frmOrdPrints::CancelOrder);
}

}  // namespace qbpd
