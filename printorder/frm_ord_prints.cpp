#include "printorder/frm_ord_prints.h"

#include "core/button_pictures.h"
#include "core/settings.h"
#include "online/client_factory.h"
#include "online/frm_net_conn.h"
#include "online/online_common.h"
#include "platform/forms/keys.h"
#include "printorder/order_layout.h"
#include "printorder/order_money.h"

#include <algorithm>
#include <cctype>
#include <chrono>

namespace qbpd {

frmOrdPrints::frmOrdPrints(Application& app)
    : Form(app.host(), std::string(kName)),
      app_(app),
      ExtAPI_(NewServiceClient(app)) {
  Move(0, 0, order_layout::kFormWidth, order_layout::kFormHeight);
  lblHead.Move(240, 120, 6000, 400);
  lblHead.SetFontBold(true);
  lblHead.SetFontSize(14);
  for (Frame* frame : {&fraS1Left, &fraS2Left, &fraS3Left}) {
    frame->Move(order_layout::kLeftFrameX, order_layout::kFrameY,
                order_layout::kLeftFrameWidth, order_layout::kFrameHeight);
  }
  for (Frame* frame : {&fraS1Right, &fraS2Right, &fraS3Right}) {
    frame->Move(order_layout::kRightFrameX, order_layout::kFrameY,
                order_layout::kRightFrameWidth, order_layout::kFrameHeight);
  }
  LayOutStep1();
  LayOutStep2();
  LayOutStep3();
  for (int step = 1; step <= 3; ++step) {
    ShowStep(step, false);
  }
  SetKeyPreview(true);
  Field("miCurrentStep", miCurrentStep);
  Field("miPreviousStep", miPreviousStep);
  Field("mbPriced", mbPriced);
  Field("mbShipToMyAddress", mbShipToMyAddress);
  Field("miExpressSize", miExpressSize);
  Field("miExpressQty", miExpressQty);
  Field("miVisibleSlots", miVisibleSlots);
  Field("mbLoading", mbLoading);
  Field("msExpressChoice", msExpressChoice);
  Field("msStatusAtStep2", msStatusAtStep2);
  Field("msSavedCoupon", msSavedCoupon);
  Field("mdCostOfPrints", mdCostOfPrints);
  Field("msShipping", msShipping);
  BindHandlers();
}

void frmOrdPrints::ShowStep(int step, bool shown) {
  Frame* left = step == 1 ? &fraS1Left : step == 2 ? &fraS2Left : &fraS3Left;
  Frame* right = step == 1   ? &fraS1Right
                 : step == 2 ? &fraS2Right
                             : &fraS3Right;
  left->SetVisible(shown);
  right->SetVisible(shown);
  left->SetEnabled(shown);
  right->SetEnabled(shown);
}

void frmOrdPrints::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  if (auto* conn = app_.forms().Find<frmNetConn>()) {
    order_ = conn->TakeOrderData();
  }
  order_.gsaUserName.resize(5);
  order_.gsaUserAddress.resize(8);
  order_.gsaUserCard.resize(5);
  // 1.
  mbLoading = true;
  s.gsCouponCode.clear();
  msSavedCoupon.clear();
  miVisibleSlots = s.gcolOrderPhotos.Count() == 1 ? 1 : kSlots;
  // 2.
  order_.gsaShipTo.assign(8, "");
  for (size_t i = 0; i < order_.gsaShipTo.size(); ++i) {
    std::string cell = order_.gsaUserAddress[i];
    for (size_t at; (at = cell.find("\r\n")) != std::string::npos;) {
      cell.erase(at, 2);
    }
    order_.gsaShipTo[i] = cell;
  }
  // 3.
  order_.gdicOrderIndex.RemoveAll();
  for (int k = 1; k <= s.gcolOrderPhotos.Count(); ++k) {
    order_.gdicOrderIndex.Add(std::to_string(k), s.gcolOrderPhotos.Item(k));
  }
  // 4.
  ReadExpressChoice();
  // 5.
  InitOrderLines();
  if (ConnectionCancelled()) {
    mbClosing = true;
    return;
  }
  // 6.
  order_.gcolEditPhotos = s.gcolOrderPhotos;
  order_.gcolEditLines = order_.gcolOrderLines;
  order_.gbShipToOther = false;
  // 7.
  FillBillingLists();
  miPreviousStep = 0;
  miCurrentStep = 1;
  for (PictureButton* b :
       {&imgS1Continue, &imgS2Continue, &imgS1Cancel, &imgS2Cancel,
        &imgS3Cancel, &imgS1Back, &imgS2Back, &imgS3Continue, &imgS1RightUpdate,
        &imgS1LeftUpdate, &imgClearSizes, &imgS1EditInfo, &imgS3EditInfo}) {
    b->SetEnabled(true);
  }
  ShowDefImages();
  AddingIntoOrderPrints();
  // 8.
  mbLoading = false;
  mbShipToMyAddress = true;
  msaCard.assign(6, "");
  msaShipTo.assign(8, "");
  msaMyAddress.assign(8, "");
  // 9.
  if (s.gsAccountStatus == "FUL") {
    std::copy(order_.gsaUserCard.begin(), order_.gsaUserCard.end(),
              msaCard.begin());
  }
  if (s.gsAccountStatus != "LTE") {
    msaShipTo = order_.gsaUserAddress;
    msaMyAddress = order_.gsaUserAddress;
    order_.gsaShipTo = order_.gsaUserAddress;
  }
  // 10.
  mbPriced = true;
}

void frmOrdPrints::Form_Activate() {
  if (mbClosing) {
    Unload();
  }
}

bool frmOrdPrints::ConnectionCancelled() const {
  return app_.session().gbUserCancelled || ExtAPI_->IsCancelled();
}

void frmOrdPrints::ReadExpressChoice() {
  Session& s = app_.session();
  std::string value = ReadSetting(
      app_.settings(), s.gsPrefKey + "ExpressPrints", "ExpressPrints");
  std::transform(value.begin(), value.end(), value.begin(),
                 [](unsigned char c) { return std::tolower(c); });
  miExpressSize = 0;
  miExpressQty = 0;
  const bool was_loading = mbLoading;
  if (value == "4x6singles") {
    opt4x6singles.SetValue(true);
    miExpressQty = 1;
  } else if (value == "4x6doubles") {
    opt4x6dbls.SetValue(true);
    miExpressQty = 2;
  } else if (value == "5x7singles") {
    opt5x7singles.SetValue(true);
    miExpressSize = 1;
    miExpressQty = 1;
  }
  mbLoading = was_loading;
}

void frmOrdPrints::InitOrderLines() {
  Session& s = app_.session();
  OrderAmounts amounts{0, msShipping};
  qbpd::InitOrderLines(order_, s.gcolOrderPhotos, miExpressSize, miExpressQty,
                       amounts, FileExists);
  mdCostOfPrints = amounts.cost_of_prints;
  msShipping = amounts.shipping;
  if (s.gsAccountStatus != "FUL") {
    return;
  }
  msErrCode.clear();
  msErrText.clear();
  order_.gcolEditLines = order_.gcolOrderLines;
  const bool ok = CallPlaceOrder(/*ship_to_other=*/false, msErrCode, msErrText);
  if (ConnectionCancelled()) {
    return;
  }
  if (ok) {
    order_.gcolOrderLines = order_.gcolEditLines;
    ApplySizePrices(order_.gcolOrderLines, order_.gsaSizeTotals);
    return;
  }
  host().MsgBox(msErrText, kMbInformation, s.gsAppTitle);
}

bool frmOrdPrints::CallPlaceOrder(bool ship_to_other,
                                  std::string& code,
                                  std::string& text) {
  Session& s = app_.session();
  return ExtAPI_->PlaceOrder(
      s.gsSiteUrl, s.gsAuthCode, s.gsUserCode, s.gsCouponCode,
      order_.gcolEditLines, order_.gdicOrderIndex, order_.gsaSizeTotals,
      order_.gsaFreePrints, s.gsOrderId, msShipping, order_.gsaOrderTax,
      order_.gsaCouponResult, mdCostOfPrints, mdOrderTotal, code, text,
      ship_to_other ? &msaShipTo : nullptr);
}

void frmOrdPrints::CancelOrder() {
  app_.session().gsCouponCode.clear();
  Unload();
}

void frmOrdPrints::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    CancelOrder();
  }
}

void frmOrdPrints::Form_QueryUnload(int& Cancel, int UnloadMode) {
  (void)Cancel;
  if (UnloadMode == kUnloadFromUser) {
    app_.session().gsCouponCode.clear();
  }
}

void frmOrdPrints::ShowDefImages() {
  const Session& s = app_.session();
  const auto show = [&s](PictureButton& b, std::string_view name) {
    const bool numbered = std::isdigit(static_cast<unsigned char>(name[0]));
    b.SetPicture(ButtonPicture(
        s, numbered ? std::string(name) + kPictureNormal : std::string(name)));
  };
  show(imgS1Continue, order_layout::kContinueButton);
  show(imgS2Continue, order_layout::kContinueButton);
  show(imgS3Continue, order_layout::kBuyNowButton);
  show(imgS1Cancel, order_layout::kCancelButton);
  show(imgS2Cancel, order_layout::kCancelButton);
  show(imgS3Cancel, order_layout::kCancelButton);
  show(imgS1Back, order_layout::kBackButton);
  show(imgS2Back, order_layout::kBackButton);
  show(imgS1RightUpdate, order_layout::kUpdateButton);
  show(imgS1LeftUpdate, order_layout::kUpdateButton);
  show(imgClearSizes, order_layout::kClearButton);
  show(imgS1EditInfo, order_layout::kEditInfoButton);
  show(imgS3EditInfo, order_layout::kEditInfoButton);
  for (int i = 0; i < kSlots; ++i) {
    show(imgS1Remove[i], order_layout::kRemoveButton);
  }
  for (int i = 0; i < kRows; ++i) {
    show(imgS1Up[i], order_layout::kUpButton);
    show(imgS1Down[i], order_layout::kDownButton);
  }
}

frmOrdPrints::Today frmOrdPrints::TodayFromClock() const {
  using namespace std::chrono;
  const year_month_day date{floor<days>(host().Now())};
  return Today{static_cast<int>(date.year()),
               static_cast<int>(static_cast<unsigned>(date.month())),
               static_cast<int>(static_cast<unsigned>(date.day()))};
}

std::string frmOrdPrints::CardText() const {
  const StringArray& c = order_.gsaUserCard;
  const auto cell = [&c](size_t i) {
    return i < c.size() ? c[i] : std::string();
  };
  const long month = static_cast<long>(TextValue(cell(2))) + 1;
  return cell(0) + "\ncard: " + cell(1) +
         "\nexpiration date: " + std::to_string(month) + "/" + cell(3) +
         "\nbilling zip:" + cell(4);
}

std::string frmOrdPrints::AddressText(const StringArray& a) const {
  const auto cell = [&a](size_t i) {
    return i < a.size() ? a[i] : std::string();
  };
  std::string text;
  const auto part = [&text](const std::string& p) {
    if (p.empty() || p == " ") {
      return;
    }
    if (!text.empty()) {
      text += ",\n";
    }
    text += p;
  };
  part(cell(1) + " " + cell(2));
  part(cell(3));
  part(cell(4));
  part(cell(5));
  return text + ",\n" + cell(6) + ", " + cell(7);
}

}  // namespace qbpd
