// Whole print orders through the dialog with the real client against a real
// qbpd-service: a table of orders (print counts across the tiers and the
// shipping surcharges, each coupon, several tax states, the free prints)
// whose review step must show what the service then stores for the
// confirmed order, row by row; and the service dying after the order was
// placed and before it was confirmed.
#include "online/frm_upload_congrats.h"
#include "platform/http_transport.h"
#include "printorder/order_money.h"
#include "tests/online/service_process.h"
#include "tests/printorder/workflow/order_fixture.h"

#include <filesystem>
#include <regex>

namespace qbpd::testing_support {
namespace {

constexpr char kDemoEmail[] = "demo@quillbay.test";
// The size texts of the order page, as regular expressions.
const char* const kSizes[] = {"4 x 6", "5 x 7", "8 x 10", "wallet set \\(4\\)"};

// What the review step showed.
struct Shown {
  std::string quantity[4];
  std::string amount[4];
  std::string free_qty, free_value;
  std::string subtotal, shipping, tax, total;
  bool tax_shown = false;
};

// What the service stored, read from its order page.
struct Stored {
  std::string status;
  std::string quantity[4];
  std::string amount[4];
  std::string cost, shipping, tax, total;
};

// Kills the service when the program sends ConfirmOrder, before it arrives.
class KillBeforeConfirm : public HttpTransport {
 public:
  KillBeforeConfirm(testing::ServiceProcess& service) : service_(service) {}
  HttpResponse Perform(const HttpRequest& request, const Pump& pump) override {
    if (request.url.ends_with("/ConfirmOrder")) {
      service_.Kill();
    }
    return inner_->Perform(request, pump);
  }
  void Cancel() override { inner_->Cancel(); }

 private:
  testing::ServiceProcess& service_;
  std::unique_ptr<HttpTransport> inner_ = MakeCurlTransport();
};

class OrderAgainstService : public OrderTest {
 protected:
  void SetUp() override {
    service_ = std::make_unique<testing::ServiceProcess>(
        QBPD_SERVICE_PROGRAM, service_dir_.path(),
        std::vector<std::string>{"--seed-demo"});
    ASSERT_TRUE(service_->ok()) << service_->error();
    site_ = service_->site();
    address_ = service_->base();
    real_client_ = true;
  }

  void StartWithPhotos(int count) {
    WritePhotos(count);
    Start();
    Select(count);
    StoreLogin(kDemoEmail, service_->demo_password(), "True");
  }

  // One order of `quantities` per size for one photo, with `coupon` and,
  // when `state` isn't empty, shipped to another address in that state;
  // what the review showed comes back.
  Shown PlaceOrder(const std::vector<int>& quantities,
                   const std::string& coupon,
                   const std::string& state) {
    Shown shown;
    QueueClick("frmMainWindow", "imgOrdPrints");
    OnDialog("quantities", [=](frmOrdPrints& d) {
      for (int row = 0; row < 4; ++row) {
        d.txtQty[row].SetText(std::to_string(quantities[row]));
      }
      d.txtcouponnumber.SetText(coupon);
    });
    QueueClick("frmOrdPrints", "imgS1RightUpdate");
    if (!state.empty()) {
      QueueClick("frmOrdPrints", "imgS1EditInfo");
      QueueClick("frmOrdPrints", "optS2ShipToDiffadd");
      OnDialog("other address", [=](frmOrdPrints& d) {
        d.txtS2FName.SetText("Bob");
        d.txtS2LastName.SetText("Ray");
        d.txtS2Street1.SetText("9 Side St");
        d.txtS2City.SetText("Elsewhere");
        for (int i = 0; i < d.cboS2State.ListCount(); ++i) {
          if (d.cboS2State.List(i) == state) {
            d.cboS2State.SetListIndex(i);
            break;
          }
        }
        d.txtS2MailZip.SetText("10001");
      });
      QueueClick("frmOrdPrints", "imgS2Continue");
    }
    QueueClick("frmOrdPrints", "imgS1Continue");
    OnDialog("review", [&shown](frmOrdPrints& d) {
      EXPECT_EQ(d.lblHead.Caption(), "review print order");
      for (int row = 0; row < 4; ++row) {
        if (d.lblS3Qty[row].Visible()) {
          shown.quantity[row] = d.lblS3Qty[row].Caption();
          shown.amount[row] = d.lblS3PrintsVal[row].Caption();
        }
      }
      if (d.lblS3FreePrintsQty.Visible()) {
        shown.free_qty = d.lblS3FreePrintsQty.Caption();
        shown.free_value = d.lblS3FreePrintsVal.Caption();
      }
      shown.subtotal = d.lblS3SubTotalVal.Caption();
      shown.shipping = d.lblS3SHVal.Caption();
      shown.tax_shown = d.lblS3TaxVal.Visible();
      shown.tax = d.lblS3TaxVal.Caption();
      shown.total = d.lblS3ORderTotalVal.Caption();
    });
    QueueClick("frmOrdPrints", "imgS3Continue");
    Queue("receipt", [this] {
      EXPECT_EQ(
          app().forms().Get<frmUploadCongrats>().lblPhotosUploaded.Caption(),
          "Your order has been received.");
    });
    QueueClick("frmUploadCongrats", "imgOK");
    Run();
    return shown;
  }

  Stored ReadOrder(const std::string& base, const std::string& order_id) {
    Stored stored;
    auto transport = MakeCurlTransport();
    HttpRequest request;
    request.url =
        base + "/orderstatus/o=" + order_id + "/u_=" + session().gsAuthCode;
    const HttpResponse page = transport->Perform(request, [] {});
    EXPECT_EQ(page.status, 200) << page.body;
    std::smatch m;
    if (std::regex_search(page.body, m,
                          std::regex("<p>Order [0-9]+: ([a-z]+)</p>"))) {
      stored.status = m[1];
    }
    for (int row = 0; row < 4; ++row) {
      const std::regex line("<tr><td>" + std::string(kSizes[row]) +
                            "</td><td>([^<]*)</td><td>[^<]*</td><td>([^<]*)"
                            "</td></tr>");
      if (std::regex_search(page.body, m, line)) {
        stored.quantity[row] = m[1];
        stored.amount[row] = m[2];
      }
    }
    const auto value = [&page](const std::string& label) {
      std::smatch v;
      return std::regex_search(page.body, v,
                               std::regex("<p>" + label + ": ([^<]*)</p>"))
                 ? std::string(v[1])
                 : std::string("missing");
    };
    stored.cost = value("cost of prints");
    stored.shipping = value("shipping");
    stored.tax = value("tax");
    stored.total = value("order total");
    return stored;
  }

  testing::TempDir service_dir_;
  std::unique_ptr<testing::ServiceProcess> service_;
};

TEST_F(OrderAgainstService, WhatTheReviewShowsIsWhatTheServiceStores) {
  struct Case {
    std::vector<int> quantities;  // per size row
    const char* coupon;
    const char* state;  // "" ships to the account's address (CA)
  } cases[] = {
      {{1, 0, 0, 0}, "", ""},             // the account's free prints
      {{25, 0, 0, 0}, "SAVE10", ""},      // second tier, 10 % off
      {{26, 0, 0, 0}, "", "NY"},          // second band, 4 % tax
      {{100, 0, 0, 0}, "FIVEOFF", "TX"},  // third tier, 5 off
      {{101, 0, 0, 0}, "SAVE10", "WA"},   // one surcharge
      {{125, 0, 2, 0}, "", ""},           // one surcharge, two sizes
      {{126, 0, 0, 0}, "FIVEOFF", "FL"},  // two surcharges
      {{151, 0, 0, 3}, "SAVE10", "OR"},   // three surcharges, no tax
  };
  StartWithPhotos(1);
  for (size_t i = 0; i < std::size(cases); ++i) {
    const Case& c = cases[i];
    SCOPED_TRACE("case " + std::to_string(i));
    const Shown shown = PlaceOrder(c.quantities, c.coupon, c.state);
    const Stored stored = ReadOrder(address_, session().gsOrderId);
    EXPECT_EQ(stored.status, "confirmed");
    for (int row = 0; row < 4; ++row) {
      if (c.quantities[row] == 0) {
        EXPECT_EQ(shown.quantity[row], "") << row;
        continue;
      }
      EXPECT_EQ(shown.quantity[row], std::to_string(c.quantities[row]));
      EXPECT_EQ(shown.quantity[row], stored.quantity[row]) << row;
      EXPECT_EQ(shown.amount[row], stored.amount[row]) << row;
    }
    EXPECT_EQ(shown.subtotal, FormatAmountText(stored.cost));
    EXPECT_EQ(shown.shipping, FormatAmountText(stored.shipping));
    if (TextValue(stored.tax) > 0) {
      EXPECT_TRUE(shown.tax_shown);
      EXPECT_EQ(shown.tax, stored.tax);
    } else {
      EXPECT_FALSE(shown.tax_shown);
    }
    EXPECT_EQ(shown.total, "$" + FormatAmountText(stored.total));
    if (i == 0) {
      // One free 4 x 6 of the offer: its value is taken off the prints.
      EXPECT_EQ(shown.free_qty, "1");
      EXPECT_EQ(shown.subtotal, "0.00");
    } else {
      EXPECT_EQ(shown.free_qty, "");  // the offer was used
    }
  }
}

TEST_F(OrderAgainstService,
       TheServiceDyingBeforeTheConfirmationLeavesTheOrderOpen) {
  make_transport_ = [this] {
    return std::make_unique<KillBeforeConfirm>(*service_);
  };
  StartWithPhotos(2);
  const std::string before1 = testing::ReadFile(Photo(1));
  const std::string before2 = testing::ReadFile(Photo(2));
  QueueClick("frmMainWindow", "imgOrdPrints");
  OnDialog("quantities", [](frmOrdPrints& d) {
    d.txtQty[0].SetText("2");
    d.txtQty[4].SetText("1");
  });
  QueueClick("frmOrdPrints", "imgS1Continue");
  QueueClick("frmOrdPrints", "imgS3Continue");
  host().QueueMsgBoxAnswer("the confirmation failed", [](const MsgBoxCall& c) {
    EXPECT_EQ(c.prompt.rfind("Unable to order the photos for printing\n", 0),
              0u)
        << c.prompt;
    EXPECT_EQ(c.style, kMbStop);
    return kIdOk;
  });
  Run();
  EXPECT_EQ(Find("frmUploadCongrats"), nullptr);
  const std::string order_id = session().gsOrderId;
  ASSERT_FALSE(order_id.empty());
  // The service comes back on its data: the order stayed quoted, and the
  // photos on disk are as they were.
  testing::ServiceProcess again(QBPD_SERVICE_PROGRAM, service_dir_.path(),
                                std::vector<std::string>{"--seed-demo"});
  ASSERT_TRUE(again.ok()) << again.error();
  EXPECT_EQ(ReadOrder(again.base(), order_id).status, "quoted");
  EXPECT_EQ(testing::ReadFile(Photo(1)), before1);
  EXPECT_EQ(testing::ReadFile(Photo(2)), before2);
}

}  // namespace
}  // namespace qbpd::testing_support
