// Step 2 of the order: the card, the account's address and the ship-to
// address, their rules and marks, the updates at the service only when
// something changed, the service's field errors; and the address dialog.
#include "platform/forms/user_input.h"
#include "printorder/frm_edit_address.h"
#include "tests/printorder/workflow/order_fixture.h"

namespace qbpd::testing_support {
namespace {

class Billing : public OrderTest {
 protected:
  // An account without address or card, one photo as a 4 x 6 single; step
  // 1's Continue leads to step 2.
  void ReachBilling() {
    OpenOrder(1, Account("LTE", false, false), "4x6Singles");
    QueueClick("frmOrdPrints", "imgS1Continue");
  }
  void FillCard(frmOrdPrints& d) {
    d.txtS2CCName.SetText("Ann Lee");
    d.txtS2CCNumber.SetText("4111 1111 1111 1111");
    d.cboS2Month.SetListIndex(5);  // "05", item data 4
    d.cboS2Year.SetListIndex(2);   // 2027
    d.txtS2BillZip.SetText("90210");
  }
  void FillMyAddress(frmOrdPrints& d) {
    d.txtS2MyStreet1.SetText(" 12 Elm St ");
    d.txtS2MyCity.SetText("Springfield");
    d.cboS2MyState.SetListIndex(FindIndex(d.cboS2MyState, "CA"));
    d.txtS2MyZip.SetText("90210-1234");
  }
  static int FindIndex(const ComboBox& list, const std::string& text) {
    for (int i = 0; i < list.ListCount(); ++i) {
      if (list.List(i) == text) {
        return i;
      }
    }
    return -1;
  }
  // The account as the service then stores it.
  static GetUserInfoReply Stored() {
    GetUserInfoReply r = Account("FUL", false, false);
    r.address = {"Ms.", "Ann",         "Lee", "12 Elm St",
                 "",    "Springfield", "CA",  "90210-1234"};
    r.card = {"Ann Lee", "XXXX-XXXX-XXXX-1111", "4", "2027", "90210"};
    return r;
  }
};

TEST_F(Billing, EveryFailingFieldIsMarkedAtOnceAndNothingIsSent) {
  ReachBilling();
  OnDialog("step 2", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblHead.Caption(), "Billing && Shipping");
    EXPECT_TRUE(d.picS2MyAddressCont.Visible());
    EXPECT_FALSE(d.lblEditmyaddress.Visible());
    EXPECT_TRUE(d.optS2ShipToMyadd.Value());
    EXPECT_FALSE(d.txtS2FName.Enabled());
    // The name comes from the profile when neither card nor address has it.
    EXPECT_EQ(d.txtS2CCName.Text(), "Ann Lee");
    EXPECT_EQ(d.cboS2Month.ListCount(), 13);
    EXPECT_EQ(d.cboS2Month.ItemData(1), 0);  // "01" counts from 0
    EXPECT_EQ(d.cboS2Year.List(1), "2026");  // this year first
    EXPECT_EQ(d.cboS2Year.ListCount(), 14);
    d.txtS2CCName.SetText("");
    d.txtS2BillZip.SetText("1234567890");  // ten digits without "-"
  });
  QueueClick("frmOrdPrints", "imgS2Continue");
  OnDialog("marks", [](frmOrdPrints& d) {
    EXPECT_TRUE(d.lblS2Error.Visible());
    EXPECT_EQ(d.lblS2Error.Caption(),
              "Oops! There's invalid or missing info. Please review the "
              "information below and re-enter the fields marked in red.");
    for (Label* l :
         {&d.lblS2CCName, &d.lblS2CCNumber, &d.lblS2ExpDate, &d.lblS2BillZip,
          &d.lblS2MyStreet, &d.lblS2MyCity, &d.lblS2MyState, &d.lblS2MyZip}) {
      EXPECT_EQ(l->Caption().substr(l->Caption().size() - 2), " *")
          << l->Name();
      EXPECT_EQ(l->ForeColor(), 255) << l->Name();
    }
    EXPECT_EQ(d.lblS2CCName.Caption(), "name on card *");
    // The other address is not in use: not checked.
    EXPECT_EQ(d.lblS2FName.Caption(), "first name");
  });
  QueueClick("frmOrdPrints", "imgS2Continue");
  OnDialog("marked once", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblS2CCName.Caption(), "name on card *");
  });
  QueueClick("frmOrdPrints", "imgS2Cancel");
  Run();
  EXPECT_EQ(Operations(), (std::vector<std::string>{"LoginUser", "GetUserInfo",
                                                    "GetPriceList"}));
}

TEST_F(Billing, ANewCardAndAddressAreStoredThenThePriceIsAskedAndReviewed) {
  ReachBilling();
  OnDialog("fill", [this](frmOrdPrints& d) {
    FillCard(d);
    FillMyAddress(d);
  });
  UpdateUserAddressReply stored;
  stored.session = {"CODE2"};
  client().Queue(stored);
  client().Queue(Stored());
  client().Queue(Quote({"1", "0", "0", "0"}, {"0.29", "0.99", "3.99", "1.49"},
                       {"0.29", "0", "0", "0"}, 0.29, "1.99",
                       {"CA", "7.25", "0.16"}));
  QueueClick("frmOrdPrints", "imgS2Continue");
  OnDialog("review", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblHead.Caption(), "review print order");
    EXPECT_TRUE(d.fraS3Right.Visible());
    EXPECT_EQ(d.lblS3CCVal.Caption(),
              "Ann Lee\ncard: XXXX-XXXX-XXXX-1111\nexpiration date: "
              "5/2027\nbilling zip:90210");
    EXPECT_TRUE(d.lblS3TaxHead.Visible());
    EXPECT_EQ(d.lblS3TaxHead.Caption(), "7.25% CA sales tax : ");
    EXPECT_EQ(d.lblS3TaxVal.Caption(), "0.16");
  });
  QueueClick("frmOrdPrints", "imgS3Cancel");
  Run();
  EXPECT_EQ(Operations(),
            (std::vector<std::string>{"LoginUser", "GetUserInfo",
                                      "GetPriceList", "UpdateUserAddress",
                                      "GetUserInfo", "PlaceOrder"}));
  const RecordedCall& update = client().Calls()[3];
  EXPECT_EQ(update.Input("cardChanged"), "True");
  // An account without address: only the street to the zip are the user's
  // (the service takes cells 3 to 7).
  EXPECT_EQ(update.Input("address"),
            R"(["","","","12 Elm St","","Springfield","CA","90210-1234"])");
  EXPECT_EQ(update.Input("card"),
            R"(["Ann Lee","4111 1111 1111 1111","4","2027","90210"])");
  EXPECT_EQ(session().gsAuthCode, "CODE2");
  EXPECT_EQ(session().gsAccountStatus, "FUL");
}

TEST_F(Billing, AStoredMaskedCardUnchangedCallsNothing) {
  OpenOrder(1, Account("FUL"), "4x6Singles");
  client().Queue(Quote({"1", "0", "0", "0"}, {"0.29", "0.99", "3.99", "1.49"},
                       {"0.29", "0", "0", "0"}, 0.29, "1.99"));
  QueueClick("frmOrdPrints", "imgS1EditInfo");
  OnDialog("step 2 of a full account", [](frmOrdPrints& d) {
    EXPECT_FALSE(d.picS2MyAddressCont.Visible());
    EXPECT_TRUE(d.lblEditmyaddress.Visible());
    EXPECT_EQ(d.txtS2CCNumber.Text(), "XXXX-XXXX-XXXX-1111");
    EXPECT_EQ(d.cboS2Month.ListIndex(), 5);  // stored "4" is May
    EXPECT_EQ(d.lblS2MyAddressValue.Caption(),
              "Ann Lee,\n12 Elm St,\nSpringfield,\nCA, 90210");
  });
  QueueClick("frmOrdPrints", "imgS2Continue");
  OnDialog("back at step 1", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblHead.Caption(), "edit print order");
    EXPECT_EQ(d.FieldValue("miCurrentStep").As<int>(), 1);
  });
  QueueClick("frmOrdPrints", "imgS1Cancel");
  Run();
  EXPECT_EQ(Operations(),
            (std::vector<std::string>{"LoginUser", "GetUserInfo",
                                      "GetPriceList", "PlaceOrder"}));
}

TEST_F(Billing, TheExpiryIsJudgedAgainstTodaysMonth) {
  ReachBilling();
  OnDialog("this month", [this](frmOrdPrints& d) {
    FillCard(d);
    FillMyAddress(d);
    d.cboS2Month.SetListIndex(1);  // January
    d.cboS2Year.SetListIndex(1);   // 2026: the clock stands in January 2026
  });
  UpdateUserAddressReply stored;
  stored.session = {"CODE2"};
  client().Queue(Failure<UpdateUserAddressReply>("2016", "Bad card number."));
  QueueClick("frmOrdPrints", "imgS2Continue");
  OnDialog("the service's field error", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblS2ExpDate.Caption(), "exp. date");  // passed
    EXPECT_EQ(d.lblS2CCNumber.Caption(), "card number *");
    EXPECT_EQ(d.lblS2Error.Caption(), "Bad card number.");
    EXPECT_TRUE(d.lblS2Error.Visible());
    EXPECT_TRUE(d.imgS2Continue.Enabled());
  });
  client().Queue(Failure<UpdateUserAddressReply>("2013", "Mismatch"));
  QueueClick("frmOrdPrints", "imgS2Continue");
  OnDialog("state and zip", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblS2Error.Caption(), "State and Zip do not match.");
    EXPECT_EQ(d.lblS2MyState.Caption(), "state *");
    EXPECT_EQ(d.lblS2MyZip.Caption(), "zip *");
  });
  client().Queue(Failure<UpdateUserAddressReply>("9999", "x"));
  QueueClick("frmOrdPrints", "imgS2Continue");
  OnDialog("service failed", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblS2Error.Caption(), "Unable to update user information");
  });
  QueueClick("frmOrdPrints", "imgS2Cancel");
  Run();
}

TEST_F(Billing, AnotherAddressIsCheckedAndQuotedWithTheShipTo) {
  OpenOrder(1, Account("FUL"), "4x6Singles");
  client().Queue(Quote({"1", "0", "0", "0"}, {"0.29", "0.99", "3.99", "1.49"},
                       {"0.29", "0", "0", "0"}, 0.29, "1.99"));
  QueueClick("frmOrdPrints", "imgS1EditInfo");
  QueueClick("frmOrdPrints", "optS2ShipToDiffadd");
  OnDialog("other address", [](frmOrdPrints& d) {
    EXPECT_TRUE(d.txtS2FName.Enabled());
    d.txtS2FName.SetText("Bob");
    d.txtS2LastName.SetText("Ray");
    d.txtS2Street1.SetText("1 Oak Ave, Apt 2");  // a "," passes here
    d.txtS2City.SetText("Austin");
    d.cboS2State.SetListIndex(52);  // a "---" separator: the service decides
    d.txtS2MailZip.SetText("1234-56789");
  });
  client().Queue(Failure<PlaceOrderReply>("2011", "Pick a state."));
  QueueClick("frmOrdPrints", "imgS2Continue");
  OnDialog("the service refused the state", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblS2State.Caption(), "state *");
    EXPECT_EQ(d.lblS2Error.Caption(), "Pick a state.");
    d.cboS2State.SetListIndex(44);  // TX
  });
  client().Queue(Quote({"1", "0", "0", "0"}, {"0.29", "0.99", "3.99", "1.49"},
                       {"0.29", "0", "0", "0"}, 0.29, "1.99"));
  QueueClick("frmOrdPrints", "imgS2Continue");
  OnDialog("back at step 1", [](frmOrdPrints& d) {
    EXPECT_EQ(d.lblS1ShipInfo.Caption(),
              "Bob Ray,\n1 Oak Ave, Apt 2,\nAustin,\nTX, 1234-56789");
    EXPECT_TRUE(d.order().gbShipToOther);
  });
  QueueClick("frmOrdPrints", "imgS1Cancel");
  Run();
  const RecordedCall& last = client().Calls().back();
  EXPECT_EQ(last.operation, "PlaceOrder");
  EXPECT_EQ(
      last.Input("shipTo"),
      R"(["Ms.","Bob","Ray","1 Oak Ave, Apt 2","","Austin","TX","1234-56789"])");
}

using AddressDialog = OrderTest;

TEST_F(AddressDialog, ChecksEveryFieldThenStoresTheAddress) {
  OpenOrder(1, Account("FUL"), "4x6Singles");
  client().Queue(Quote({"1", "0", "0", "0"}, {"0.29", "0.99", "3.99", "1.49"},
                       {"0.29", "0", "0", "0"}, 0.29, "1.99"));
  QueueClick("frmOrdPrints", "imgS1EditInfo");
  QueueClick("frmOrdPrints", "lblEditmyaddress");
  Queue("bad fields", [this] {
    auto& a = app().forms().Get<frmEditAddress>();
    EXPECT_EQ(a.lblHeading.Caption(), "edit shipping address");
    EXPECT_EQ(a.lblName.Caption(), "Ann Lee");
    EXPECT_EQ(a.txtStreet1.Text(), "12 Elm St");
    EXPECT_EQ(a.cboState.Text(), "CA");
    user::TypeKeys(a.txtZipMailingAddrs, "{BACKSPACE 5}9a8-");
    EXPECT_EQ(a.txtZipMailingAddrs.Text(), "98-");
    a.txtStreet2.SetText("Apt 2, rear");
    a.cboState.SetListIndex(0);
    user::Click(a.imgOK);
    EXPECT_TRUE(a.lblErrInfm.Visible());
    EXPECT_EQ(a.lblStreet.Caption(), "street *");
    EXPECT_EQ(a.lblState.Caption(), "state *");
    EXPECT_EQ(a.lblZip.Caption(), "zip *");
    EXPECT_EQ(a.lblCity.Caption(), "city");
    a.txtStreet2.SetText("");
    a.cboState.SetListIndex(44);  // TX
    a.txtZipMailingAddrs.SetText("73301");
  });
  client().Queue(Failure<UpdateUserAddressReply>("9999", ""));
  QueueClick("frmEditAddress", "imgOK");
  Queue("refused", [this] {
    auto& a = app().forms().Get<frmEditAddress>();
    EXPECT_EQ(a.lblErrInfm.Caption(),
              "Unable to update address in your account");
    EXPECT_EQ(dialog().order().gsaUserAddress[6], "CA");  // unchanged
  });
  UpdateUserAddressReply ok;
  ok.session = {"CODE3"};
  client().Queue(ok);
  QueueClick("frmEditAddress", "imgOK");
  OnDialog("after the dialog", [](frmOrdPrints& d) {
    EXPECT_EQ(d.order().gsaUserAddress[6], "TX");
    EXPECT_TRUE(d.order().gbAddressChanged);
    EXPECT_EQ(d.lblS2MyAddressValue.Caption(),
              "Ann Lee,\n12 Elm St,\nSpringfield,\nTX, 73301");
  });
  QueueClick("frmOrdPrints", "imgS2Cancel");
  Run();
  EXPECT_EQ(session().gsAuthCode, "CODE3");
  EXPECT_EQ(Find("frmEditAddress"), nullptr);
}

}  // namespace
}  // namespace qbpd::testing_support
