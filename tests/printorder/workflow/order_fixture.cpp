#include "tests/printorder/workflow/order_fixture.h"

#include "core/settings.h"

namespace qbpd::testing_support {

GetUserInfoReply Account(const std::string& status,
                         bool with_address,
                         bool with_card) {
  GetUserInfoReply r;
  r.accountType = status;
  r.profile = {"ann@example.com", "Ann", "Lee", "", ""};
  r.address = {"Ms.", "Ann", "Lee", "", "", "", "", ""};
  if (with_address) {
    r.address = {"Ms.", "Ann",         "Lee", "12 Elm St",
                 "",    "Springfield", "CA",  "90210"};
  }
  r.card = {"", "", "", "", ""};
  if (with_card) {
    r.card = {"Ann Lee", "XXXX-XXXX-XXXX-1111", "4", "2027", "90210"};
  }
  return r;
}

GetPriceListReply PriceList() {
  GetPriceListReply r;
  r.prices.Add(1, TextGrid::FromRows({{"1", "25", "0.29"},
                                      {"26", "100", "0.25"},
                                      {"101", "9999", "0.22"}}));
  r.prices.Add(
      2, TextGrid::FromRows({{"1", "25", "0.99"}, {"26", "9999", "0.89"}}));
  r.prices.Add(3, TextGrid::FromRows({{"1", "9999", "3.99"}}));
  r.prices.Add(4, TextGrid::FromRows({{"1", "9999", "1.49"}}));
  r.rates = TextGrid::FromRows({{"1", "25", "1.99"},
                                {"26", "50", "3.49"},
                                {"51", "100", "5.99"},
                                {"101", "0", "1.5"}});
  return r;
}

PlaceOrderReply Quote(const std::vector<std::string>& quantities,
                      const std::vector<std::string>& prices,
                      const std::vector<std::string>& amounts,
                      double cost,
                      const std::string& shipping,
                      const std::vector<std::string>& tax) {
  PlaceOrderReply r;
  r.sizeTotals = TextGrid(4, 3);
  for (int row = 0; row < 4; ++row) {
    r.sizeTotals(row, 0) = quantities[row];
    r.sizeTotals(row, 1) = prices[row];
    r.sizeTotals(row, 2) = amounts[row];
  }
  r.freePrints = TextGrid::FromRows({{"", "", ""}});
  r.orderTax = TextGrid::FromRows({tax});
  r.couponResult = {"", "", "0", "0"};
  r.orderId = "77";
  r.shipping = shipping;
  r.costOfPrints = cost;
  return r;
}

void OrderTest::OpenOrder(int photos,
                          GetUserInfoReply account,
                          const std::string& express,
                          bool write_photos) {
  if (write_photos) {
    WritePhotos(photos);
  }
  Start();
  if (!express.empty()) {
    ASSERT_TRUE(settings().Write(session().gsPrefKey + "ExpressPrints",
                                 "ExpressPrints", express));
  }
  Select(photos);
  StoreLogin("ann@example.com", "secret", "True");
  client().Queue(LoginOk("CODE", "USER"));
  client().Queue(std::move(account));
  client().Queue(PriceList());
  QueueClick("frmMainWindow", "imgOrdPrints");
}

void OrderTest::OnDialog(const std::string& what,
                         std::function<void(frmOrdPrints&)> check) {
  Queue(what, [this, check] { check(dialog()); });
}

}  // namespace qbpd::testing_support
