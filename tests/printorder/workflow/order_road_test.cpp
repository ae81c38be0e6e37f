// A whole print order with the scripted double: the dialog's first and
// review steps, the buy button, the upload and the placing of the order,
// and the receipt link; the engine's failures after the upload.
#include "online/frm_upload_congrats.h"
#include "online/frm_upload_imgs.h"
#include "tests/printorder/workflow/order_fixture.h"

namespace qbpd::testing_support {
namespace {

UploadFileReply Sent(const std::string& album, const std::string& image) {
  UploadFileReply r;
  r.albumId = album;
  r.imageId = image;
  return r;
}

GetAlbumPhotosReply AlbumPhotos(int count) {
  GetAlbumPhotosReply r;
  for (int i = 1; i <= count; ++i) {
    r.photos.Add("I" + std::to_string(i), std::to_string(i));
  }
  return r;
}

// Three 4 x 6 prints at 0.29: 0.87, shipping 1.99, no tax.
PlaceOrderReply ThreeSingles() {
  return Quote({"3", "0", "0", "0"}, {"0.29", "0.99", "3.99", "1.49"},
               {"0.87", "0", "0", "0"}, 0.87, "1.99");
}

class OrderRoad : public OrderTest {
 protected:
  // Uploads `count` photos into album A1 and answers the album's photos.
  void QueueUploads(int count) {
    for (int i = 1; i <= count; ++i) {
      client().Queue(Sent("A1", "I" + std::to_string(i)));
    }
    client().Queue(AlbumPhotos(count));
  }
};

TEST_F(OrderRoad, AFullAccountGoesFromQuantitiesToReviewToTheReceipt) {
  OpenOrder(3, Account("FUL"), "4x6Singles");
  client().Queue(ThreeSingles());  // the quote when the dialog opens
  OnDialog("step 1", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblHead.Caption(), "edit print order");
    EXPECT_TRUE(d.fraS1Right.Visible());
    EXPECT_TRUE(d.opt4x6singles.Value());
    EXPECT_EQ(d.txtQty[0].Text(), "1");
    EXPECT_EQ(d.txtQty[1].Text(), "0");
    EXPECT_EQ(d.txtQty[4].Text(), "1");  // the second slot's 4 x 6 row
    EXPECT_EQ(d.lblS1Price[0].Caption(), "0.29");
    EXPECT_TRUE(d.ctrlS1VScroll.Visible());
    EXPECT_EQ(d.ctrlS1VScroll.Max(), 1);
    EXPECT_FALSE(d.imgS1Back.Visible());
    EXPECT_EQ(d.lblS1SubTotalVal.Caption(), "0.87");
    EXPECT_EQ(d.lblS1ShipCostVal.Caption(), "1.99");
    EXPECT_EQ(d.lblS1OrderCostVal.Caption(), "$2.86");
    EXPECT_FALSE(d.lblS1TaxCostVal.Visible());  // 0 % tax is hidden
    EXPECT_EQ(d.lblS1CCInfo.Caption(),
              "Ann Lee\ncard: XXXX-XXXX-XXXX-1111\nexpiration date: "
              "5/2027\nbilling zip:90210");
  });
  // Priced already: Continue asks nothing and goes to the review.
  QueueClick("frmOrdPrints", "imgS1Continue");
  OnDialog("review", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblHead.Caption(), "review print order");
    EXPECT_FALSE(d.fraS1Right.Visible());
    EXPECT_TRUE(d.fraS3Right.Visible());
    EXPECT_TRUE(d.lblS3Qty[0].Visible());
    EXPECT_EQ(d.lblS3Qty[0].Caption(), "3");
    EXPECT_EQ(d.lblS3Size[0].Caption(), "4 x 6  print(s)");
    EXPECT_EQ(d.lblS3PrintsVal[0].Caption(), "0.87");
    EXPECT_FALSE(d.lblS3Qty[1].Visible());
    EXPECT_FALSE(d.lblS3FreePrintsQty.Visible());
    EXPECT_FALSE(d.lblS3TaxHead.Visible());
    EXPECT_EQ(d.lblS3SubTotalVal.Caption(), "0.87");
    EXPECT_EQ(d.lblS3SHVal.Caption(), "1.99");
    EXPECT_EQ(d.lblS3ORderTotalVal.Caption(), "$2.86");
    EXPECT_EQ(d.lblS3ShipVal.Caption(),
              "Ann Lee,\n12 Elm St,\nSpringfield,\nCA, 90210");
  });
  QueueUploads(3);
  client().Queue(ThreeSingles());
  client().Queue(ConfirmOrderReply{});
  QueueClick("frmOrdPrints", "imgS3Continue");
  Queue("receipt", [this] {
    auto& page = app().forms().Get<frmUploadCongrats>();
    EXPECT_EQ(page.lblPhotosUploaded.Caption(),
              "Your order has been received.");
    EXPECT_EQ(page.lblOrdPrints.Caption(), " reciept of this order");
  });
  QueueClick("frmUploadCongrats", "lblOrdPrintsLink");
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  EXPECT_EQ(Operations(),
            (std::vector<std::string>{
                "LoginUser", "GetUserInfo", "GetPriceList", "PlaceOrder",
                "UploadFile", "UploadFile", "UploadFile", "GetAlbumPhotos",
                "PlaceOrder", "ConfirmOrder"}));
  const RecordedCall& place = client().Calls()[8];
  EXPECT_EQ(place.Input("orderIndex"), R"([["I1","1"],["I2","2"],["I3","3"]])");
  EXPECT_EQ(place.Input("shipTo"), "");
  EXPECT_EQ(client().Calls()[9].Input("orderId"), "77");
  EXPECT_EQ(session().gsAlbumName, "");
  ASSERT_EQ(Opened().size(), 1u);
  EXPECT_EQ(Opened()[0], std::string(kAddress) + "/orderstatus/o=77/u_=CODE");
  EXPECT_EQ(Find("frmOrdPrints"), nullptr);
}

// In a German locale amounts show "," as the decimal sign; the review's
// total, which reads the first step's shipping caption back, still adds up.
TEST_F(OrderRoad, AmountsFollowTheLocalesDecimalSign) {
  numbers_ = NumberFormat{",", ".", "\3"};
  OpenOrder(3, Account("FUL"), "4x6Singles");
  client().Queue(ThreeSingles());
  OnDialog("step 1", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblS1Price[0].Caption(), "0,29");
    EXPECT_EQ(d.lblS1SubTotalVal.Caption(), "0,87");
    EXPECT_EQ(d.lblS1ShipCostVal.Caption(), "1,99");
    EXPECT_EQ(d.lblS1OrderCostVal.Caption(), "$2,86");
  });
  QueueClick("frmOrdPrints", "imgS1Continue");
  OnDialog("review", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblS3SubTotalVal.Caption(), "0,87");
    EXPECT_EQ(d.lblS3SHVal.Caption(), "1,99");
    EXPECT_EQ(d.lblS3ORderTotalVal.Caption(), "$2,86");
  });
  QueueClick("frmOrdPrints", "imgS3Cancel");
  Run();
}

TEST_F(OrderRoad, APhotoWithoutPrintsIsNotUploaded) {
  OpenOrder(2, Account("FUL"), "4x6Singles");
  client().Queue(Quote({"2", "0", "0", "0"}, {"0.29", "0.99", "3.99", "1.49"},
                       {"0.58", "0", "0", "0"}, 0.58, "1.99"));
  Queue("the second photo to 0", [this] {
    user::Click(dialog().imgS1Down[4]);
    EXPECT_EQ(dialog().txtQty[4].Text(), "0");
    EXPECT_FALSE(dialog().FieldValue("mbPriced").As<bool>());
  });
  client().Queue(Quote({"1", "0", "0", "0"}, {"0.29", "0.99", "3.99", "1.49"},
                       {"0.29", "0", "0", "0"}, 0.29, "1.99"));
  QueueClick("frmOrdPrints", "imgS1Continue");
  client().Queue(Sent("A1", "I1"));
  client().Queue(AlbumPhotos(1));
  client().Queue(Quote({"1", "0", "0", "0"}, {"0.29", "0.99", "3.99", "1.49"},
                       {"0.29", "0", "0", "0"}, 0.29, "1.99"));
  client().Queue(ConfirmOrderReply{});
  QueueClick("frmOrdPrints", "imgS3Continue");
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  int uploads = 0;
  for (const RecordedCall& call : client().Calls()) {
    if (call.operation == "UploadFile") {
      ++uploads;
      EXPECT_NE(call.Input("url").find(Photo(1)), std::string::npos);
    }
  }
  EXPECT_EQ(uploads, 1);
}

TEST_F(OrderRoad, AFailedConfirmationSaysSoWithTheServicesTextAndStops) {
  OpenOrder(1, Account("FUL"), "4x6Singles");
  client().Queue(ThreeSingles());
  QueueClick("frmOrdPrints", "imgS1Continue");
  QueueUploads(1);
  client().Queue(ThreeSingles());
  client().Queue(Failure<ConfirmOrderReply>("4001", "The order is not known."));
  QueueClick("frmOrdPrints", "imgS3Continue");
  ExpectBox("Unable to order the photos for printing\nThe order is not known.");
  Run();
  EXPECT_EQ(Operations().back(), "ConfirmOrder");
  EXPECT_EQ(Find("frmUploadCongrats"), nullptr);
  EXPECT_EQ(Find("frmUploadImgs"), nullptr);
  // The photo on disk is untouched.
  EXPECT_TRUE(std::filesystem::exists(Photo(1)));
}

TEST_F(OrderRoad, AnAlbumThatDoesNotHoldEveryPhotoStopsBeforeThePlacing) {
  OpenOrder(2, Account("FUL"), "4x6Singles");
  client().Queue(ThreeSingles());
  QueueClick("frmOrdPrints", "imgS1Continue");
  client().Queue(Sent("A1", "I1"));
  client().Queue(Sent("A1", "I2"));
  client().Queue(AlbumPhotos(1));
  QueueClick("frmOrdPrints", "imgS3Continue");
  ExpectBox("Unable to order the prints for printing.");
  Run();
  EXPECT_EQ(Operations().back(), "GetAlbumPhotos");
}

TEST_F(OrderRoad, AFailedPlacingStopsWithoutAConfirmation) {
  OpenOrder(1, Account("FUL"), "4x6Singles");
  client().Queue(ThreeSingles());
  QueueClick("frmOrdPrints", "imgS1Continue");
  QueueUploads(1);
  client().Queue(Failure<PlaceOrderReply>("0", "No connection"));
  QueueClick("frmOrdPrints", "imgS3Continue");
  ExpectBox("Unable to order the photos for printing");
  Run();
  EXPECT_EQ(Operations().back(), "PlaceOrder");
}

TEST_F(OrderRoad, TheAlbumIsNamedByTodaysDate) {
  OpenOrder(1, Account("FUL"), "4x6Singles");
  client().Queue(ThreeSingles());
  QueueClick("frmOrdPrints", "imgS1Continue");
  QueueUploads(1);
  client().Queue(ThreeSingles());
  client().Queue(ConfirmOrderReply{});
  QueueClick("frmOrdPrints", "imgS3Continue");
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  for (const RecordedCall& call : client().Calls()) {
    if (call.operation == "UploadFile") {
      // The scripted clock stands on the 15th of January.
      EXPECT_NE(call.Input("url").find("albumname=album 01/15"),
                std::string::npos);
    }
  }
}

TEST_F(OrderRoad, FreePrintsInThreeRowsShowAsThreeLinesAndTaxAtZeroIsHidden) {
  OpenOrder(1, Account("FUL"), "4x6Singles");
  PlaceOrderReply quote = ThreeSingles();
  quote.freePrints = TextGrid::FromRows({{"1", "0.29", "4 x 6"},
                                         {"2", "1.98", "5 x 7"},
                                         {"1", "3.99", "8 x 10"}});
  quote.orderTax = TextGrid::FromRows({{"OR", "0", "0"}});
  client().Queue(quote);
  OnDialog("step 1", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblS1FreePrintsLabel.Caption(),
              "1 4 x 6 Print(s)\n2 5 x 7 Print(s)\n1 8 x 10 Print(s)");
    EXPECT_EQ(d.lblS1FreePrintsCost.Caption(), "0.29\n1.98\n3.99");
    EXPECT_EQ(d.lblS1FreePrintsLabel.Height(), 3 * 195);
    EXPECT_FALSE(d.lblS1TaxCostLabel.Visible());
    EXPECT_EQ(d.lblS1TaxCostLabel.Caption(), "0% Tax will be added ");
  });
  QueueClick("frmOrdPrints", "imgS1Continue");
  OnDialog("review", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblS3FreePrintsQty.Caption(), "1\n2\n1");
    EXPECT_EQ(d.lblS3FreePrintsHead.Caption(),
              "4 x 6 prints\n5 x 7 prints\n8 x 10 prints");
    EXPECT_EQ(d.lblS3FreePrintsVal.Caption(), "0.29\n1.98\n3.99");
    EXPECT_FALSE(d.lblS3TaxHead.Visible());
    EXPECT_EQ(d.lblS3TaxVal.Caption(), "0.00");
    // 0.87 + 1.99 + nothing for tax.
    EXPECT_EQ(d.lblS3ORderTotalVal.Caption(), "$2.86");
  });
  QueueClick("frmOrdPrints", "imgS3Cancel");
  Run();
  EXPECT_EQ(Find("frmOrdPrints"), nullptr);
}

}  // namespace
}  // namespace qbpd::testing_support
