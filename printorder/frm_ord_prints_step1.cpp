#include "browser/frm_main_window.h"
#include "core/button_pictures.h"
#include "core/quil_mod.h"
#include "core/settings.h"
#include "online/online_common.h"
#include "printorder/address_rules.h"
#include "printorder/frm_ord_prints.h"
#include "printorder/order_layout.h"
#include "printorder/order_money.h"
#include "printorder/print_resolution.h"

#include <algorithm>
#include <filesystem>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

constexpr int kCopy = 3;
constexpr int kPaste = 22;
constexpr int kCut = 24;
constexpr int kBackspace = 8;
constexpr int kArrowLimit = 999;
constexpr int kPixelTwips = 15;
constexpr char kNumericsOnly[] = "Enter numerics only";

int Position(const Control& c) {
  return static_cast<int>(TextValue(c.Tag()));
}

}  // namespace

void frmOrdPrints::txtQty_KeyPress(EventArgs& e) {
  const int k = e.KeyAscii;
  if (!((k >= '0' && k <= '9') || k == kBackspace || k == kCopy ||
        k == kPaste || k == kCut)) {
    e.KeyAscii = 0;
  }
}

void frmOrdPrints::txtQty_Change(EventArgs& e) {
  (void)e;
  mbPriced = false;
}

void frmOrdPrints::txtcouponnumber_Change() {
  mbPriced = false;
}

void frmOrdPrints::imgS1Up_Click(EventArgs& e) {
  TextBox& box = txtQty[e.Index];
  if (!IsNumericText(box.Text()) || TextValue(box.Text()) < 0) {
    host().MsgBox(kNumericsOnly, kMbInformation, app_.session().gsAppTitle);
    box.SetSelStart(0);
    return;
  }
  const long value = static_cast<long>(TextValue(box.Text()));
  if (value == kArrowLimit) {
    return;
  }
  box.SetText(std::to_string(value + 1));
  mbPriced = false;
}

void frmOrdPrints::imgS1Down_Click(EventArgs& e) {
  TextBox& box = txtQty[e.Index];
  box.SetText(TrimSpaces(box.Text()));
  if (!IsNumericText(box.Text()) || TextValue(box.Text()) < 0) {
    host().MsgBox(kNumericsOnly, kMbInformation, app_.session().gsAppTitle);
    box.SetSelStart(0);
    return;
  }
  const long value = static_cast<long>(TextValue(box.Text()));
  if (value > 0) {
    box.SetText(std::to_string(value - 1));
  }
  mbPriced = false;
}

void frmOrdPrints::ExpressOption_Click(const std::string& choice) {
  if (mbLoading) {
    return;
  }
  msExpressChoice = choice;
  const int chosen = choice == "5S" ? 1 : 0;
  const std::string quantity = choice == "4D" ? "2" : "1";
  for (int slot = 0; slot < miVisibleSlots; ++slot) {
    for (int row = 0; row < kSizeRows; ++row) {
      txtQty[slot * kSizeRows + row].SetText(row == chosen ? quantity : "0");
    }
  }
  for (int k = 1; k <= order_.gcolEditLines.Count(); ++k) {
    TextGrid& line = order_.gcolEditLines.Item(k);
    for (int row = 0; row < kSizeRows; ++row) {
      line(row, kQuantityColumn) = row == chosen ? quantity : "0";
    }
  }
}

void frmOrdPrints::imgClearSizes_Click() {
  if (mbLoading) {
    return;
  }
  const bool was_loading = mbLoading;
  mbLoading = true;
  opt4x6singles.SetValue(false);
  opt4x6dbls.SetValue(false);
  opt5x7singles.SetValue(false);
  mbLoading = was_loading;
  msExpressChoice = "CS";
  for (int slot = 0; slot < miVisibleSlots; ++slot) {
    for (int row = 0; row < kSizeRows; ++row) {
      const int i = slot * kSizeRows + row;
      txtQty[i].SetText("0");
      lblS1Price[i].SetCaption(
          FormatAmountText(FirstTierPrice(order_, row), app_.numbers()));
      lblS1Total[i].SetCaption("0");
    }
  }
  for (int k = 1; k <= order_.gcolEditLines.Count(); ++k) {
    TextGrid& line = order_.gcolEditLines.Item(k);
    for (int row = 0; row < kSizeRows; ++row) {
      line(row, kQuantityColumn) = "0";
      line(row, kPriceColumn) = FirstTierPrice(order_, row);
      line(row, kTotalColumn) = "0";
    }
  }
  for (Control* c : std::initializer_list<Control*>{
           &lblS1FreePrintsLabel, &lblS1FreePrintsCost, &lblS1PrintsCostHead,
           &lblS1PrintsCostVal, &lblS1CouponPerc, &lblS1CouponValue}) {
    c->SetVisible(false);
  }
  lblS1SubTotalVal.SetCaption("0.00");
  lblS1ShipCostVal.SetCaption("0.00");
  lblS1TaxCostVal.SetCaption("0.00");
  lblS1OrderCostVal.SetCaption("$0.00");
}

bool frmOrdPrints::ValidateVisibleRows() {
  for (int i = 0; i < miVisibleSlots * kSizeRows; ++i) {
    TextBox& box = txtQty[i];
    box.SetText(TrimSpaces(box.Text()));
    const std::string& text = box.Text();
    if (text.empty()) {
      continue;
    }
    const char* message = nullptr;
    if (!IsNumericText(text)) {
      message = "Enter only numerics";
    } else if (text.find('.') != std::string::npos) {
      message = "Enter only integers";
    } else if (TextValue(text) < 0) {
      message = "Enter only positive integers";
    }
    if (message != nullptr) {
      host().MsgBox(message, kMbInformation, app_.session().gsAppTitle);
      box.SetFocus();
      return false;
    }
  }
  return true;
}

void frmOrdPrints::SaveVisibleRows() {
  for (int slot = 0; slot < miVisibleSlots; ++slot) {
    const int position = Position(imgS1Display[slot]);
    if (position < 1 || position > order_.gcolEditLines.Count()) {
      continue;
    }
    TextGrid& line = order_.gcolEditLines.Item(position);
    for (int row = 0; row < kSizeRows; ++row) {
      const std::string& text = txtQty[slot * kSizeRows + row].Text();
      line(row, kQuantityColumn) = text.empty() ? "0" : text;
    }
    RecomputeLineTotals(line);
  }
}

void frmOrdPrints::ctrlS1VScroll_Change() {
  if (mbPaging) {
    return;
  }
  for (int slot = 0; slot < miVisibleSlots; ++slot) {
    imgS1Remove[slot].SetEnabled(false);
  }
  if (!ValidateVisibleRows()) {
    mbPaging = true;
    ctrlS1VScroll.SetValue(miShownPage);
    mbPaging = false;
    for (int slot = 0; slot < miVisibleSlots; ++slot) {
      imgS1Remove[slot].SetEnabled(true);
    }
    return;
  }
  SaveVisibleRows();
  ShowOrderPage(ctrlS1VScroll.Value());
  for (int slot = 0; slot < miVisibleSlots; ++slot) {
    imgS1Remove[slot].SetEnabled(true);
  }
}

void frmOrdPrints::ShowOrderPage(int v) {
  using order_layout::kDark;
  using order_layout::kLight;
  miShownPage = v;
  lblS1ResAlertMsg.SetVisible(false);
  imgS1LeftRed.SetVisible(false);
  const bool odd = (v + 1) % 2 == 1;
  for (int slot = 0; slot < miVisibleSlots; ++slot) {
    const int position = v + slot + 1;
    if (position > order_.gcolEditPhotos.Count()) {
      break;
    }
    const order_layout::Shading& shade = (slot == 0) == odd ? kLight : kDark;
    shpS1Slot[slot].SetFillColor(shade.back);
    shpS1Slot[slot].SetBorderColor(shade.lines);
    const std::string photo = order_.gcolEditPhotos.Item(position);
    FitPhotoInBox(slot, ThumbnailOf(photo));
    imgS1Display[slot].SetTag(std::to_string(position));
    imgS1Remove[slot].SetTag(std::to_string(position));
    const TextGrid& line = order_.gcolEditLines.Item(position);
    for (int row = 0; row < kSizeRows; ++row) {
      const int i = slot * kSizeRows + row;
      txtQty[i].SetText(line(row, kQuantityColumn));
      lblS1Price[i].SetCaption(
          FormatAmountText(line(row, kPriceColumn), app_.numbers()));
      lblS1Total[i].SetCaption(
          FormatAmountText(line(row, kTotalColumn), app_.numbers()));
    }
    CheckPrintResolution(photo, slot, std::string(shade.marker));
  }
}

std::string frmOrdPrints::ThumbnailOf(const std::string& photo) {
  Session& s = app_.session();
  if (s.gbCacheEnable) {
    if (auto* main = app_.forms().Find<frmMainWindow>()) {
      if (main->GenerateThumbnail(photo)) {
        return s.gsThumbnailPath;
      }
    }
    return "";
  }
  const std::string thumbnail = PhotoThumbnailFile(s.gsThumbnailFolder, photo);
  if (!FileExists(thumbnail) &&
      app_.images().GenerateThumbnailExt(photo, thumbnail, 85, 70) == 0) {
    return "";
  }
  return thumbnail;
}

void frmOrdPrints::FitPhotoInBox(int slot, const std::string& thumbnail) {
  using namespace order_layout;
  PictureBox& box = imgS1Display[slot];
  box.SetPicture(thumbnail);
  const int box_width = kPhotoWidth;
  const int box_height = kSlotHeight - 180 - kRemoveHeight;
  const int slot_top = kSlotTop + slot * kSlotHeight;
  int width = thumbnail.empty() ? 0 : app_.images().GetImageWidth(thumbnail);
  int height = thumbnail.empty() ? 0 : app_.images().GetImageHeight(thumbnail);
  width *= kPixelTwips;
  height *= kPixelTwips;
  if (width <= 0 || height <= 0) {
    box.Move(kSlotLeft + kBoxInset, slot_top + kBoxInset, box_width,
             box_height);
    return;
  }
  if (width > box_width || height > box_height) {
    const int percent =
        std::min(100 * box_width / width, 100 * box_height / height);
    width = width * percent / 100;
    height = height * percent / 100;
  }
  box.Move(kSlotLeft + kBoxInset + (box_width - width) / 2,
           slot_top + kBoxInset + (box_height - height) / 2, width, height);
}

void frmOrdPrints::CheckPrintResolution(const std::string& path,
                                        int slot,
                                        const std::string& picture) {
  bool flag = false;
  if (path.empty()) {
    for (int k = 1; k <= order_.gcolEditPhotos.Count() && !flag; ++k) {
      const std::string& photo = order_.gcolEditPhotos.Item(k);
      const PhotoSize size{app_.images().GetImageWidth(photo),
                           app_.images().GetImageHeight(photo)};
      for (int row = 0; row < kSizeRows && !flag; ++row) {
        flag = !MeetsPrintSize(size, row);
      }
    }
    lblS1ResAlertMsg.SetVisible(flag);
    imgS1LeftRed.SetVisible(flag);
    return;
  }
  const PhotoSize size{app_.images().GetImageWidth(path),
                       app_.images().GetImageHeight(path)};
  for (int row = 0; row < kSizeRows; ++row) {
    PictureBox& marker = imgS1Red[slot * kSizeRows + row];
    if (MeetsPrintSize(size, row)) {
      marker.SetVisible(false);
    } else {
      marker.SetPicture(ButtonPicture(app_.session(), picture));
      marker.SetVisible(true);
      flag = true;
    }
  }
  if (flag) {
    lblS1ResAlertMsg.SetVisible(true);
    imgS1LeftRed.SetVisible(true);
  }
}

void frmOrdPrints::ShowSlot(int slot, bool shown) {
  shpS1Slot[slot].SetVisible(shown);
  imgS1Display[slot].SetVisible(shown);
  imgS1Remove[slot].SetVisible(shown);
  for (int row = 0; row < kSizeRows; ++row) {
    const int i = slot * kSizeRows + row;
    for (Control* c : std::initializer_list<Control*>{
             &txtQty[i], &imgS1Up[i], &imgS1Down[i], &lblS1Size[i],
             &lblS1Price[i], &lblS1Total[i]}) {
      c->SetVisible(shown);
    }
    if (!shown) {
      imgS1Red[i].SetVisible(false);
    }
  }
}

void frmOrdPrints::imgS1Remove_Click(EventArgs& e) {
  const int slot = e.Index;
  const int count = order_.gcolEditPhotos.Count();
  if (count == 1) {
    host().MsgBox("The order must contain atleast one photo", kMbInformation,
                  app_.session().gsAppTitle);
    return;
  }
  int v = ctrlS1VScroll.Value();
  const int position = Position(imgS1Remove[slot]);
  SaveVisibleRows();
  if (count == 2) {
    ShowSlot(1, false);
    miVisibleSlots = 1;
    v = 0;
  } else if (v == ctrlS1VScroll.Max() && v > 0) {
    --v;
  }
  order_.gcolEditPhotos.Remove(position);
  order_.gcolEditLines.Remove(position);
  ShowOrderPage(v);
  const int left = order_.gcolEditPhotos.Count();
  mbPaging = true;
  ctrlS1VScroll.SetMin(0);
  ctrlS1VScroll.SetMax(std::max(0, left - 2));
  ctrlS1VScroll.SetVisible(left >= 3);
  ctrlS1VScroll.SetValue(v);
  mbPaging = false;
  mbPriced = false;
}

void frmOrdPrints::AddingIntoOrderPrints() {
  Session& s = app_.session();
  miCurrentStep = 1;
  ShowSlot(1, miVisibleSlots > 1 && order_.gcolEditPhotos.Count() > 1);
  ShowSlot(0, true);
  txtcouponnumber.SetText(msSavedCoupon);
  const bool lte = s.gsAccountStatus == "LTE";
  const bool ful = s.gsAccountStatus == "FUL";
  lblS1BillHead.SetVisible(!lte && ful);
  lblS1CCInfo.SetVisible(!lte && ful);
  lblS1ShipHead.SetVisible(!lte);
  lblS1ShipInfo.SetVisible(!lte);
  imgS1EditInfo.SetVisible(!lte);
  lblS1CCInfo.SetCaption(CardText());
  lblS1ShipInfo.SetCaption(AddressText(order_.gsaShipTo));
  const int count = order_.gcolEditPhotos.Count();
  mbPaging = true;
  ctrlS1VScroll.SetMin(0);
  ctrlS1VScroll.SetMax(std::max(0, count - 2));
  ctrlS1VScroll.SetValue(std::min(ctrlS1VScroll.Value(), ctrlS1VScroll.Max()));
  mbPaging = false;
  ShowOrderPage(ctrlS1VScroll.Value());
  ShowLinePrices();
  ShowOrderSummary();
  CheckPrintResolution("", 0, "");
  ctrlS1VScroll.SetVisible(count >= 3);
  imgS1Back.SetVisible(!mbLoading);
  lblHead.SetCaption("edit print order");
  ShowStep(1, true);
  if (!mbLoading) {
    txtQty[0].SetFocus();
  }
}

void frmOrdPrints::ShowLinePrices() {
  for (int slot = 0; slot < miVisibleSlots; ++slot) {
    const int position = Position(imgS1Display[slot]);
    if (position < 1 || position > order_.gcolEditLines.Count()) {
      continue;
    }
    const TextGrid& line = order_.gcolEditLines.Item(position);
    for (int row = 0; row < kSizeRows; ++row) {
      const int i = slot * kSizeRows + row;
      lblS1Price[i].SetCaption(
          FormatAmountText(line(row, kPriceColumn), app_.numbers()));
      lblS1Total[i].SetCaption(
          FormatAmountText(line(row, kTotalColumn), app_.numbers()));
    }
  }
}

}  // namespace qbpd
