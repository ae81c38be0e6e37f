// Step 1 of the order: quantity boxes, arrows, paging, Remove, Clear sizes,
// local pricing of an account without card and the messages of each rule.
#include "platform/forms/user_input.h"
#include "tests/printorder/workflow/order_fixture.h"

namespace qbpd::testing_support {
namespace {

using Quantities = OrderTest;

TEST_F(Quantities, KeysArrowsAndTheLimitOfTheArrows) {
  OpenOrder(1, Account("LTE", false, false));
  OnDialog("keys", [](frmOrdPrints& d) {
    // One photo: one slot, no scroll bar, no second Remove button.
    EXPECT_FALSE(d.ctrlS1VScroll.Visible());
    EXPECT_FALSE(d.imgS1Remove[1].Visible());
    EXPECT_EQ(d.FieldValue("miVisibleSlots").As<int>(), 1);
    // No express setting: all 0 and the first tier's prices.
    for (int row = 0; row < 4; ++row) {
      EXPECT_EQ(d.txtQty[row].Text(), "0");
    }
    EXPECT_EQ(d.lblS1Price[1].Caption(), "0.99");
    EXPECT_EQ(d.txtQty[0].MaxLength(), 3);
    d.txtQty[0].SetText("");
    user::TypeKeys(d.txtQty[0], "1a2.");
    EXPECT_EQ(d.txtQty[0].Text(), "12");  // the letter and the point dropped
    d.txtQty[0].SetText("999");
    d.SetFieldValue("mbPriced", Value(true));
    user::Click(d.imgS1Up[0]);
    EXPECT_EQ(d.txtQty[0].Text(), "999");
    EXPECT_TRUE(d.FieldValue("mbPriced").As<bool>());  // nothing happened
    user::Click(d.imgS1Down[0]);
    EXPECT_EQ(d.txtQty[0].Text(), "998");
    EXPECT_FALSE(d.FieldValue("mbPriced").As<bool>());
    d.txtQty[1].SetText("0");
    d.SetFieldValue("mbPriced", Value(true));
    user::Click(d.imgS1Down[1]);
    EXPECT_EQ(d.txtQty[1].Text(), "0");
    EXPECT_FALSE(d.FieldValue("mbPriced").As<bool>());  // cleared at 0 too
  });
  Queue("a pasted negative on the arrow", [this] {
    dialog().txtQty[2].SetText("-4");
    user::Click(dialog().imgS1Up[2]);
  });
  ExpectBox("Enter numerics only");
  QueueClick("frmOrdPrints", "imgS1Cancel");
  Run();
}

TEST_F(Quantities, PastedDecimalsAndNegativesAndAnEmptyOrder) {
  OpenOrder(1, Account("LTE", false, false));
  QueueText("frmOrdPrints", "txtQty", "");
  Queue("a decimal", [this] { dialog().txtQty[0].SetText("1.5"); });
  QueueClick("frmOrdPrints", "imgS1RightUpdate");
  ExpectBox("Enter only integers");
  Queue("a negative", [this] { dialog().txtQty[0].SetText("-2"); });
  QueueClick("frmOrdPrints", "imgS1RightUpdate");
  ExpectBox("Enter only positive integers");
  Queue("letters", [this] { dialog().txtQty[0].SetText("x"); });
  QueueClick("frmOrdPrints", "imgS1RightUpdate");
  ExpectBox("Enter only numerics");
  Queue("nothing at all", [this] { dialog().txtQty[0].SetText("0"); });
  QueueClick("frmOrdPrints", "imgS1Continue");
  ExpectBox("Enter quantity for atleast one image");
  OnDialog("still step 1", [](frmOrdPrints& d) {
    EXPECT_EQ(d.FieldValue("miCurrentStep").As<int>(), 1);
    EXPECT_TRUE(d.fraS1Right.Visible());
  });
  QueueClick("frmOrdPrints", "imgS1Cancel");
  Run();
  EXPECT_EQ(Operations(), (std::vector<std::string>{"LoginUser", "GetUserInfo",
                                                    "GetPriceList"}));
}

TEST_F(Quantities, LocalPricingForAnAccountWithoutCard) {
  // 13 photos as 4 x 6 doubles: Q = 26, the second tier and second band.
  OpenOrder(13, Account("LTE", false, false), "4x6Doubles");
  OnDialog("opened", [](frmOrdPrints& d) {
    EXPECT_EQ(d.txtQty[0].Text(), "2");
    EXPECT_EQ(d.lblS1Price[0].Caption(), "0.25");
    EXPECT_EQ(d.lblS1Total[0].Caption(), "0.50");
    EXPECT_EQ(d.lblS1SubTotalVal.Caption(), "6.50");  // 26 x 0.25
    EXPECT_EQ(d.lblS1ShipCostVal.Caption(), "3.49");  // band 26-50
    EXPECT_EQ(d.lblS1OrderCostVal.Caption(), "$9.99");
    EXPECT_FALSE(d.lblS1BillHead.Visible());
    EXPECT_FALSE(d.imgS1EditInfo.Visible());
  });
  Queue("a coupon and one more 8 x 10", [this] {
    dialog().txtcouponnumber.SetText("SAVE10");
    user::Click(dialog().imgS1Up[2]);
  });
  QueueClick("frmOrdPrints", "imgS1RightUpdate");
  ExpectBox("Your coupon will be applied in the review order page");
  OnDialog("repriced", [](frmOrdPrints& d) {
    // 26 x 0.25 + 1 x 3.99 = 10.49; Q = 27.
    EXPECT_EQ(d.lblS1SubTotalVal.Caption(), "10.49");
    EXPECT_EQ(d.lblS1Total[2].Caption(), "3.99");
    EXPECT_FALSE(d.lblS1CouponPerc.Visible());
    EXPECT_TRUE(d.FieldValue("mbPriced").As<bool>());
  });
  QueueClick("frmOrdPrints", "imgS1Cancel");
  Run();
  EXPECT_EQ(session().gsCouponCode, "");
}

TEST_F(Quantities, PagingKeepsEachPhotosRowsAndRemoveStepsBack) {
  OpenOrder(4, Account("LTE", false, false), "4x6Singles");
  Queue("page and remove", [this] {
    frmOrdPrints& d = dialog();
    EXPECT_EQ(d.imgS1Display[0].Tag(), "1");
    d.txtQty[0].SetText("5");
    user::ScrollTo(d.ctrlS1VScroll, 2);
    EXPECT_EQ(d.imgS1Display[0].Tag(), "3");
    EXPECT_EQ(d.txtQty[0].Text(), "1");
    user::ScrollTo(d.ctrlS1VScroll, 0);
    EXPECT_EQ(d.txtQty[0].Text(), "5");  // saved when the page moved
    user::ScrollTo(d.ctrlS1VScroll, 2);
    // At the end of the bar Remove shows the previous photo in slot 1.
    user::Click(d.imgS1Remove[1]);
    EXPECT_EQ(d.order().gcolEditPhotos.Count(), 3);
    EXPECT_EQ(d.ctrlS1VScroll.Max(), 1);
    EXPECT_EQ(d.ctrlS1VScroll.Value(), 1);
    EXPECT_EQ(d.imgS1Display[0].Tag(), "2");
    EXPECT_FALSE(d.FieldValue("mbPriced").As<bool>());
    user::Click(d.imgS1Remove[0]);
    user::Click(d.imgS1Remove[0]);
    EXPECT_EQ(d.order().gcolEditPhotos.Count(), 1);
    EXPECT_FALSE(d.txtQty[4].Visible());
    EXPECT_FALSE(d.ctrlS1VScroll.Visible());
    user::Click(d.imgS1Remove[0]);
  });
  ExpectBox("The order must contain atleast one photo");
  QueueClick("frmOrdPrints", "imgS1Cancel");
  Run();
}

TEST_F(Quantities, ClearSizesEmptiesEveryLineAndTheSummary) {
  OpenOrder(3, Account("LTE", false, false), "5x7Singles");
  Queue("clear", [this] {
    frmOrdPrints& d = dialog();
    EXPECT_EQ(d.txtQty[1].Text(), "1");
    user::Click(d.imgClearSizes);
    EXPECT_FALSE(d.opt5x7singles.Value());
    EXPECT_EQ(d.FieldValue("msExpressChoice").As<std::string>(), "CS");
    EXPECT_EQ(d.txtQty[1].Text(), "0");
    EXPECT_EQ(d.lblS1OrderCostVal.Caption(), "$0.00");
    EXPECT_EQ(d.order().gcolEditLines.Item(3)(1, 0), "0");
    user::Click(d.opt4x6dbls);
    EXPECT_EQ(d.txtQty[0].Text(), "2");
    EXPECT_EQ(d.order().gcolEditLines.Item(3)(0, 0), "2");
  });
  QueueClick("frmOrdPrints", "imgS1Cancel");
  Run();
}

TEST_F(Quantities, ASmallPhotoIsMarkedAtTheSizesItCannotFill) {
  // photo001 at 1000 x 800: only 8 x 10 is marked; photo002 passes all.
  ASSERT_TRUE(WriteTestPhoto(Photo(1), 1000, 800, 1));
  ASSERT_TRUE(WriteTestPhoto(Photo(2), 1400, 1100, 2));
  OpenOrder(2, Account("LTE", false, false), "", /*write_photos=*/false);
  OnDialog("markers", [](frmOrdPrints& d) {
    EXPECT_FALSE(d.imgS1Red[0].Visible());
    EXPECT_FALSE(d.imgS1Red[1].Visible());
    EXPECT_TRUE(d.imgS1Red[2].Visible());
    EXPECT_FALSE(d.imgS1Red[3].Visible());
    // The first slot has the light shading and its marker.
    EXPECT_NE(d.imgS1Red[2].Picture().find("G8"), std::string::npos);
    for (int i = 4; i < 8; ++i) {
      EXPECT_FALSE(d.imgS1Red[i].Visible()) << i;
    }
    EXPECT_TRUE(d.lblS1ResAlertMsg.Visible());
    EXPECT_EQ(d.lblS1ResAlertMsg.Caption(),
              "Sizes marked with         are not  recommended for printing.");
  });
  QueueClick("frmOrdPrints", "imgS1Cancel");
  Run();
}

}  // namespace
}  // namespace qbpd::testing_support
