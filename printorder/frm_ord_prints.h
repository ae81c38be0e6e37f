#ifndef QBPD_PRINTORDER_FRM_ORD_PRINTS_H_
#define QBPD_PRINTORDER_FRM_ORD_PRINTS_H_

#include "core/application.h"
#include "online/order_data.h"
#include "online/service_client.h"
#include "platform/forms/control_array.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "printorder/order_pricing.h"

#include <memory>
#include <string>
#include <string_view>

namespace qbpd {

// The print order dialog: three steps on one form, each a left and a right
// frame. Step 1 sets the quantities per photo and size in two photo slots
// that page through the order, with the express choices, the coupon and
// the price summary; step 2 takes the card, the account's address and the
// ship-to address and stores them at the service; step 3 shows the whole
// order read-only and its buy button hands the order to the upload engine
// (frmUploadImgs), which uploads the photos and places and confirms the
// order. Nothing of the order is written to disk.
class frmOrdPrints : public Form {
 public:
  static constexpr std::string_view kName = "frmOrdPrints";
  static constexpr int kSlots = 2;
  static constexpr int kRows = 8;  // slot x 4 + size row
  explicit frmOrdPrints(Application& app);

  Label lblHead{*this, "lblHead"};

  // --- step 1 -------------------------------------------------------------
  Frame fraS1Left{*this, "fraS1Left"};
  Frame fraS1Right{*this, "fraS1Right"};
  Label lblS1ExpressHead{*this, "lblS1ExpressHead"};
  OptionButton opt4x6singles{*this, "opt4x6singles"};
  OptionButton opt4x6dbls{*this, "opt4x6dbls"};
  OptionButton opt5x7singles{*this, "opt5x7singles"};
  PictureButton imgClearSizes{*this, "imgClearSizes"};
  Label lblcouponinfo{*this, "lblcouponinfo"};
  TextBox txtcouponnumber{*this, "txtcouponnumber"};
  PictureButton imgS1LeftUpdate{*this, "imgS1LeftUpdate"};
  Label lblS1BillHead{*this, "lblS1BillHead"};
  Label lblS1CCInfo{*this, "lblS1CCInfo"};
  Label lblS1ShipHead{*this, "lblS1ShipHead"};
  Label lblS1ShipInfo{*this, "lblS1ShipInfo"};
  PictureButton imgS1EditInfo{*this, "imgS1EditInfo"};
  Label lblS1Help{*this, "lblS1Help"};
  Label lblS1PhotoHead{*this, "lblS1PhotoHead"};
  Label lblS1SizeHead{*this, "lblS1SizeHead"};
  Label lblS1PriceHead{*this, "lblS1PriceHead"};
  Label lblS1TotalPriceHead{*this, "lblS1TotalPriceHead"};
  ControlArray<Shape> shpS1Slot{*this, "shpS1Slot"};
  ControlArray<PictureBox> imgS1Display{*this, "imgS1Display"};
  ControlArray<PictureButton> imgS1Remove{*this, "imgS1Remove"};
  ControlArray<TextBox> txtQty{*this, "txtQty"};
  ControlArray<PictureButton> imgS1Up{*this, "imgS1Up"};
  ControlArray<PictureButton> imgS1Down{*this, "imgS1Down"};
  ControlArray<Label> lblS1Size{*this, "lblS1Size"};
  ControlArray<Label> lblS1Price{*this, "lblS1Price"};
  ControlArray<Label> lblS1Total{*this, "lblS1Total"};
  ControlArray<PictureBox> imgS1Red{*this, "imgS1Red"};
  ScrollBar ctrlS1VScroll{*this, "ctrlS1VScroll"};
  Label lblS1ResAlertMsg{*this, "lblS1ResAlertMsg"};
  PictureBox imgS1LeftRed{*this, "imgS1LeftRed"};
  Label lblS1FreePrintsLabel{*this, "lblS1FreePrintsLabel"};
  Label lblS1FreePrintsCost{*this, "lblS1FreePrintsCost"};
  Label lblS1PrintsCostHead{*this, "lblS1PrintsCostHead"};
  Label lblS1PrintsCostVal{*this, "lblS1PrintsCostVal"};
  Label lblS1CouponPerc{*this, "lblS1CouponPerc"};
  Label lblS1CouponValue{*this, "lblS1CouponValue"};
  Label lblS1SubTotalHead{*this, "lblS1SubTotalHead"};
  Label lblS1SubTotalVal{*this, "lblS1SubTotalVal"};
  Label lblS1ShipCostHead{*this, "lblS1ShipCostHead"};
  Label lblS1ShipCostVal{*this, "lblS1ShipCostVal"};
  Label lblS1TaxCostLabel{*this, "lblS1TaxCostLabel"};
  Label lblS1TaxCostVal{*this, "lblS1TaxCostVal"};
  Label lblS1OrderCostHead{*this, "lblS1OrderCostHead"};
  Label lblS1OrderCostVal{*this, "lblS1OrderCostVal"};
  PictureButton imgS1RightUpdate{*this, "imgS1RightUpdate"};
  PictureButton imgS1Continue{*this, "imgS1Continue"};
  PictureButton imgS1Cancel{*this, "imgS1Cancel"};
  PictureButton imgS1Back{*this, "imgS1Back"};

  // --- step 2 -------------------------------------------------------------
  Frame fraS2Left{*this, "fraS2Left"};
  Frame fraS2Right{*this, "fraS2Right"};
  Label lbldesc1{*this, "lbldesc1"};
  Label lblDesc2{*this, "lblDesc2"};
  Label lblS2Error{*this, "lblS2Error"};
  Label lblS2CCName{*this, "lblS2CCName"};
  TextBox txtS2CCName{*this, "txtS2CCName"};
  Label lblS2CCNumber{*this, "lblS2CCNumber"};
  TextBox txtS2CCNumber{*this, "txtS2CCNumber"};
  Label lblS2ExpDate{*this, "lblS2ExpDate"};
  ComboBox cboS2Month{*this, "cboS2Month"};
  ComboBox cboS2Year{*this, "cboS2Year"};
  Label lblS2BillZip{*this, "lblS2BillZip"};
  TextBox txtS2BillZip{*this, "txtS2BillZip"};
  Label lblS2MyAddressHead{*this, "lblS2MyAddressHead"};
  Label lblS2MyAddressValue{*this, "lblS2MyAddressValue"};
  Label lblEditmyaddress{*this, "lblEditmyaddress"};
  PictureBox picS2MyAddressCont{*this, "picS2MyAddressCont"};
  Label lblS2MyStreet{*this, "lblS2MyStreet"};
  TextBox txtS2MyStreet1{*this, "txtS2MyStreet1"};
  TextBox txtS2MyStreet2{*this, "txtS2MyStreet2"};
  Label lblS2MyCity{*this, "lblS2MyCity"};
  TextBox txtS2MyCity{*this, "txtS2MyCity"};
  Label lblS2MyState{*this, "lblS2MyState"};
  ComboBox cboS2MyState{*this, "cboS2MyState"};
  Label lblS2MyZip{*this, "lblS2MyZip"};
  TextBox txtS2MyZip{*this, "txtS2MyZip"};
  OptionButton optS2ShipToMyadd{*this, "optS2ShipToMyadd"};
  OptionButton optS2ShipToDiffadd{*this, "optS2ShipToDiffadd"};
  Label lblS2FName{*this, "lblS2FName"};
  TextBox txtS2FName{*this, "txtS2FName"};
  Label lblS2Lname{*this, "lblS2Lname"};
  TextBox txtS2LastName{*this, "txtS2LastName"};
  Label lblS2Street{*this, "lblS2Street"};
  TextBox txtS2Street1{*this, "txtS2Street1"};
  TextBox txtS2Street2{*this, "txtS2Street2"};
  Label lblS2City{*this, "lblS2City"};
  TextBox txtS2City{*this, "txtS2City"};
  Label lblS2State{*this, "lblS2State"};
  ComboBox cboS2State{*this, "cboS2State"};
  Label lblS2MailZip{*this, "lblS2MailZip"};
  TextBox txtS2MailZip{*this, "txtS2MailZip"};
  PictureButton imgS2Continue{*this, "imgS2Continue"};
  PictureButton imgS2Back{*this, "imgS2Back"};
  PictureButton imgS2Cancel{*this, "imgS2Cancel"};

  // --- step 3 -------------------------------------------------------------
  Frame fraS3Left{*this, "fraS3Left"};
  Frame fraS3Right{*this, "fraS3Right"};
  Label lblS3BillHead{*this, "lblS3BillHead"};
  Label lblS3CCVal{*this, "lblS3CCVal"};
  Label lblS3ShipHead{*this, "lblS3ShipHead"};
  Label lblS3ShipVal{*this, "lblS3ShipVal"};
  PictureButton imgS3EditInfo{*this, "imgS3EditInfo"};
  ControlArray<Label> lblS3Qty{*this, "lblS3Qty"};
  ControlArray<Label> lblS3Size{*this, "lblS3Size"};
  ControlArray<Label> lblS3PrintsVal{*this, "lblS3PrintsVal"};
  ControlArray<Line> lnS3PrintsSep{*this, "lnS3PrintsSep"};
  Label lblS3FreePrintsQty{*this, "lblS3FreePrintsQty"};
  Label lblS3FreePrintsHead{*this, "lblS3FreePrintsHead"};
  Label lblS3FreePrintsVal{*this, "lblS3FreePrintsVal"};
  Label lblS3PrintsCostHead{*this, "lblS3PrintsCostHead"};
  Label lblS3PrintsCostVal{*this, "lblS3PrintsCostVal"};
  Label lblS3CouponHead{*this, "lblS3CouponHead"};
  Label lblS3CouponVal{*this, "lblS3CouponVal"};
  Label lblS3SubTotalHead{*this, "lblS3SubTotalHead"};
  Label lblS3SubTotalVal{*this, "lblS3SubTotalVal"};
  Label lblS3SHHead{*this, "lblS3SHHead"};
  Label lblS3SHVal{*this, "lblS3SHVal"};
  Label lblS3TaxHead{*this, "lblS3TaxHead"};
  Label lblS3TaxVal{*this, "lblS3TaxVal"};
  Label lblS3OrderTotalHead{*this, "lblS3OrderTotalHead"};
  Label lblS3ORderTotalVal{*this, "lblS3ORderTotalVal"};
  Label lblS3EditOrder{*this, "lblS3EditOrder"};
  PictureButton imgS3Continue{*this, "imgS3Continue"};
  PictureButton imgS3Cancel{*this, "imgS3Cancel"};

  ctlExtAPI& ExtAPI() { return *ExtAPI_; }
  // The order's values while the dialog runs.
  PrintOrderData& order() { return order_; }

  // Shows step 1 for the working lines.
  void AddingIntoOrderPrints();
  // Restores the last button picture changed by a mouse-over.
  void ShowDefImages();

 protected:
  void Form_Load() override;
  void Form_Activate() override;
  void Form_KeyPress(int& KeyAscii) override;
  void Form_QueryUnload(int& Cancel, int UnloadMode) override;

 private:
  // --- the form (frm_ord_prints.cpp) ---------------------------------------
  void LayOutStep1();
  void LayOutStep2();
  void LayOutStep3();
  void BindHandlers();
  void ReadExpressChoice();
  void InitOrderLines();
  void ShowStep(int step, bool shown);
  void CancelOrder();
  bool ConnectionCancelled() const;
  // The sixteen- or seventeen-argument PlaceOrder with the working lists.
  bool CallPlaceOrder(bool ship_to_other, std::string& code, std::string& text);
  // Today's date from the host's clock.
  struct Today {
    int year;
    int month;  // 1 to 12
    int day;
  };
  Today TodayFromClock() const;
  std::string CardText() const;
  std::string AddressText(const StringArray& address) const;

  // --- step 1 (frm_ord_prints_step1.cpp) -----------------------------------
  void txtQty_KeyPress(EventArgs& e);
  void txtQty_Change(EventArgs& e);
  void txtcouponnumber_Change();
  void imgS1Up_Click(EventArgs& e);
  void imgS1Down_Click(EventArgs& e);
  void ExpressOption_Click(const std::string& choice);
  void imgClearSizes_Click();
  void ctrlS1VScroll_Change();
  void imgS1Remove_Click(EventArgs& e);
  void imgS1RightUpdate_Click();
  void imgS1LeftUpdate_Click();
  void Update_Click(bool left);
  void imgS1Continue_Click();
  void imgS1Back_Click();
  void imgS1EditInfo_Click();
  bool ValidateVisibleRows();
  void SaveVisibleRows();
  void ShowOrderPage(int v);
  void ShowLinePrices();
  void ShowOrderSummary();
  bool UpdateOrderTotals();
  // The status is "FUL", a coupon was typed and the service refused it.
  bool CouponRefused() const;
  void EnableStep1(bool enabled);
  void ShowSlot(int slot, bool shown);
  void CheckPrintResolution(const std::string& path,
                            int slot,
                            const std::string& picture);
  void FitPhotoInBox(int slot, const std::string& thumbnail);
  // The order thumbnail of a photo: the cached one, or one made in the
  // thumbnail folder; "" when none can be made.
  std::string ThumbnailOf(const std::string& photo);
  void RebuildEditRecords();

  // --- step 2 (frm_ord_prints_step2.cpp) -----------------------------------
  void FillBillingLists();
  void ShowBillingStep();
  bool ValidateCardFields();
  bool ValidateAddressFields();
  void MarkFieldInvalid(bool mark, Label* label);
  void ShowServiceFieldError(const std::string& code, const std::string& text);
  void CopyStep2Fields();
  bool IsCardChanged() const;
  bool IsUserInfoStale() const;
  void imgS2Continue_Click();
  void imgS2Back_Click();
  void optS2ShipToMyadd_Click();
  void optS2ShipToDiffadd_Click();
  void lblEditmyaddress_Click();
  void txtS2CCNumber_KeyPress(EventArgs& e);
  void EnableStep2(bool enabled);
  void EnableOtherAddress(bool enabled);

  // --- step 3 (frm_ord_prints_step3.cpp) -----------------------------------
  void ShowReviewStep();
  void imgS3EditInfo_Click();
  void lblS3EditOrder_Click();
  void imgS3Continue_Click();
  void RefillWorkingLists();

  Application& app_;
  std::unique_ptr<ctlExtAPI> ExtAPI_;
  PrintOrderData order_;
  int miCurrentStep = 0;
  int miPreviousStep = 0;
  bool mbPriced = false;
  bool mbShipToMyAddress = true;
  int miExpressSize = 0;
  int miExpressQty = 0;
  int miVisibleSlots = 1;
  bool mbLoading = false;
  bool mbClosing = false;
  // The scroll bar is being set by the program, not moved by the user.
  bool mbPaging = false;
  int miShownPage = 0;
  std::string msExpressChoice;
  std::string msStatusAtStep2;
  std::string msSavedCoupon;
  double mdCostOfPrints = 0;
  double mdOrderTotal = 0;
  std::string msShipping;
  StringArray msaCard;
  StringArray msaShipTo;
  StringArray msaMyAddress;
  std::string msErrCode;
  std::string msErrText;
};

}  // namespace qbpd

#endif  // QBPD_PRINTORDER_FRM_ORD_PRINTS_H_
