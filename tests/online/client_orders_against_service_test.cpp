// The service client against a real qbpd-service: prices, quotes with
// coupons and shipping, confirmation, and the address update of an order.
#include "tests/online/client_against_service_fixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qbpd::against_service {
namespace {

TEST_F(ClientAgainstServiceTest, PriceListHasTheTiersAndTheSurchargeRow) {
  // No login is needed for the prices.
  PriceTierDictionary gdicPriceTiers;
  TextGrid gsaShippingBands;
  ASSERT_TRUE(client_->GetPriceList(gsSiteUrl, gdicPriceTiers, gsaShippingBands,
                                    errCode, errText))
      << errCode << " " << errText;
  ASSERT_EQ(gdicPriceTiers.Count(), 4);
  EXPECT_EQ(gdicPriceTiers.Item(1),
            TextGrid::FromRows({{"1", "24", "0.29"},
                                {"25", "99", "0.25"},
                                {"100", "9999", "0.19"}}));
  EXPECT_EQ(gdicPriceTiers.Item(3)(0, 2), "3.99");
  EXPECT_EQ(gdicPriceTiers.Item(4)(2, 2), "1.09");
  EXPECT_EQ(gsaShippingBands, TextGrid::FromRows({{"1", "25", "2.99"},
                                                  {"26", "50", "4.99"},
                                                  {"51", "100", "6.99"},
                                                  {"101", "0", "1.5"}}));
}

TEST_F(ClientAgainstServiceTest, QuoteAppliesOneCouponAndRefusesOthers) {
  LogIn(kDemoEmail, demo_password_);
  // Two photos, 15 prints of 4 x 6 each: 30 at the 25-99 price of 0.25.
  const auto [lines, index] = OrderOf({15, 15});

  const Quote saved = PlaceOrder("SAVE10", lines, index);
  ASSERT_TRUE(saved.ok) << saved.errCode << " " << saved.errText;
  EXPECT_FALSE(saved.gsOrderId.empty());
  EXPECT_EQ(saved.gsaSizeTotals(0, 0), "30");
  EXPECT_EQ(saved.gsaSizeTotals(0, 1), "0.25");
  EXPECT_NEAR(std::stod(saved.gsaSizeTotals(0, 2)), 7.50, kCents);
  EXPECT_EQ(saved.gsaSizeTotals(1, 0), "0");
  // The account's free offer: ten 4 x 6 prints, worth 2.50.
  EXPECT_EQ(saved.gsaFreePrints(0, 0), "10");
  EXPECT_NEAR(std::stod(saved.gsaFreePrints(0, 1)), 2.50, kCents);
  EXPECT_EQ(saved.gsaFreePrints(0, 2), "4 x 6");
  // Ten percent of the 5.00 left after the free prints.
  ASSERT_EQ(saved.gsaCouponResult.size(), 4u);
  EXPECT_EQ(saved.gsaCouponResult[0], "SAVE10");
  EXPECT_EQ(saved.gsaCouponResult[1], "10");
  EXPECT_NEAR(std::stod(saved.gsaCouponResult[2]), -0.50, kCents);
  EXPECT_EQ(saved.gsaCouponResult[3], "1");
  EXPECT_NEAR(saved.mdCostOfPrints, 4.50, kCents);
  EXPECT_NEAR(std::stod(saved.msShipping), 4.99, kCents);
  // California tax, 7.25 % of 9.49, rounded to cents.
  EXPECT_EQ(saved.gsaOrderTax(0, 0), "CA");
  EXPECT_EQ(saved.gsaOrderTax(0, 1), "7.25");
  EXPECT_NEAR(std::stod(saved.gsaOrderTax(0, 2)), 0.69, kCents);
  EXPECT_NEAR(saved.orderTotal, 10.18, kCents);
  // Each line comes back priced, under its own key.
  ASSERT_EQ(saved.gcolOrderLines.Count(), 2);
  EXPECT_EQ(saved.gcolOrderLines.KeyAt(2), "/photos/p2.jpg");
  EXPECT_EQ(saved.gcolOrderLines.Item(2)(0, 1), "0.25");
  EXPECT_NEAR(std::stod(saved.gcolOrderLines.Item(2)(0, 2)), 3.75, kCents);
  EXPECT_EQ(saved.gdicOrderIndex.Item("2"), "/photos/p2.jpg");

  struct Refusal {
    const char* coupon;
    const char* message;
  };
  const Refusal refusals[] = {
      {"FIVEOFF", "The coupon FIVEOFF needs an order of at least 10."},
      {"OLD2001", "The coupon OLD2001 has expired."},
      {"NOPE", "The coupon code NOPE is not valid."},
  };
  for (const Refusal& r : refusals) {
    const Quote refused = PlaceOrder(r.coupon, lines, index);
    ASSERT_TRUE(refused.ok) << refused.errText;
    EXPECT_EQ(refused.gsaCouponResult,
              (StringArray{r.coupon, r.message, "0", "0"}));
    // The order is priced as if no coupon had been typed.
    EXPECT_NEAR(refused.mdCostOfPrints, 5.00, kCents);
    EXPECT_NE(refused.gsOrderId, saved.gsOrderId);
  }

  // Enough prints for the fixed coupon's minimum: 50 at 0.25 is 12.50.
  const auto [big_lines, big_index] = OrderOf({50});
  const Quote fixed = PlaceOrder("FIVEOFF", big_lines, big_index);
  ASSERT_TRUE(fixed.ok);
  EXPECT_EQ(fixed.gsaCouponResult[1], "5");
  EXPECT_EQ(fixed.gsaCouponResult[3], "1");
  EXPECT_NEAR(fixed.mdCostOfPrints, 12.50 - 2.50 - 5.00, kCents);

  // Without prints it is a price quote only: first-tier prices, no order.
  const auto [empty_lines, empty_index] = OrderOf({0, 0});
  const Quote nothing = PlaceOrder("", empty_lines, empty_index);
  EXPECT_TRUE(nothing.ok);
  EXPECT_EQ(nothing.gsOrderId, "");
  EXPECT_EQ(nothing.gsaSizeTotals(0, 1), "0.29");
}

TEST_F(ClientAgainstServiceTest, ShippingAddsASurchargePerStartedTwentyFive) {
  LogIn(kDemoEmail, demo_password_);
  struct Case {
    int prints;
    double shipping;
  };
  const Case cases[] = {
      {25, 2.99},    // end of the first band
      {26, 4.99},    // start of the second
      {100, 6.99},   // end of the last real band
      {101, 8.49},   // first print beyond: one surcharge
      {125, 8.49},   // 24 beyond the surcharge row's lower: still one
      {126, 9.99},   // 25 beyond: two
      {151, 11.49},  // 50 beyond: three
  };
  for (const Case& c : cases) {
    const auto [lines, index] = OrderOf({c.prints});
    const Quote q = PlaceOrder("", lines, index);
    ASSERT_TRUE(q.ok) << q.errText;
    EXPECT_NEAR(std::stod(q.msShipping), c.shipping, kCents) << c.prints;
    // What the order form shows needs no more than cents.
    EXPECT_LE(q.msShipping.size() - q.msShipping.find('.'), 3u) << q.msShipping;
  }

  // Shipped elsewhere, the order is taxed by the state it goes to.
  const auto [lines, index] = OrderOf({30});
  const StringArray gsaShipTo = {"", "Max",    "Moe", "1 Broadway",
                                 "", "Albany", "NY",  "12207"};
  const Quote q = PlaceOrder("", lines, index, &gsaShipTo);
  ASSERT_TRUE(q.ok) << q.errText;
  EXPECT_EQ(q.gsaOrderTax(0, 0), "NY");
  EXPECT_EQ(q.gsaOrderTax(0, 1), "4");
  // 30 x 0.25 = 7.50 less 2.50 free, plus 4.99 shipping: 4 % of 9.99.
  EXPECT_NEAR(std::stod(q.gsaOrderTax(0, 2)), 0.40, kCents);
}

TEST_F(ClientAgainstServiceTest, ConfirmNeedsTheUploadedPhotosAndTheCoupon) {
  LogIn(kDemoEmail, demo_password_);
  gsAlbumName = "Prints";
  std::string first;
  std::string second;
  bool fatal = false;
  ASSERT_TRUE(Upload(Photo("one.jpg", 6), first, fatal)) << errText;
  ASSERT_TRUE(Upload(Photo("two.jpg", 7), second, fatal)) << errText;

  // After the upload the order index is the album's photos by image id.
  TextDictionary gdicOrderIndex;
  ASSERT_TRUE(client_->GetAlbumPhotos(gsSiteUrl, session_.gsAuthCode,
                                      session_.gsAlbumId, gdicOrderIndex,
                                      errCode, errText));
  PrintLineCollection gcolOrderLines;
  gcolOrderLines.Add(PrintLine(12, 1), first);
  gcolOrderLines.Add(PrintLine(0, 0, 2), second);
  const Quote quote = PlaceOrder("SAVE10", gcolOrderLines, gdicOrderIndex);
  ASSERT_TRUE(quote.ok) << quote.errText;
  ASSERT_EQ(quote.gsaCouponResult[3], "1");

  struct Attempt {
    const char* coupon;
    const char* code;
  };
  // The coupon of the confirmation must be the quote's.
  const Attempt wrong_coupons[] = {{"", "4004"}, {"FIVEOFF", "4004"}};
  for (const Attempt& a : wrong_coupons) {
    errCode.clear();
    EXPECT_FALSE(client_->ConfirmOrder(gsSiteUrl, session_.gsAuthCode,
                                       quote.gsOrderId, a.coupon, errCode,
                                       errText));
    EXPECT_EQ(errCode, a.code) << a.coupon;
  }
  errCode.clear();
  ASSERT_TRUE(client_->ConfirmOrder(gsSiteUrl, session_.gsAuthCode,
                                    quote.gsOrderId, "SAVE10", errCode,
                                    errText))
      << errCode << " " << errText;
  EXPECT_EQ(errCode, "");
  // A confirmed order can't be confirmed again.
  EXPECT_FALSE(client_->ConfirmOrder(gsSiteUrl, session_.gsAuthCode,
                                     quote.gsOrderId, "SAVE10", errCode,
                                     errText));
  EXPECT_EQ(errCode, "4001");

  // The free offer is used up by the confirmed order.
  const Quote after = PlaceOrder("", gcolOrderLines, gdicOrderIndex);
  ASSERT_TRUE(after.ok);
  EXPECT_EQ(after.gsaFreePrints(0, 0), "");

  // A quote keyed by paths, made before any upload, can't be made final.
  const auto [lines, index] = OrderOf({5});
  const Quote unuploaded = PlaceOrder("", lines, index);
  ASSERT_TRUE(unuploaded.ok);
  EXPECT_FALSE(client_->ConfirmOrder(gsSiteUrl, session_.gsAuthCode,
                                     unuploaded.gsOrderId, "", errCode,
                                     errText));
  EXPECT_EQ(errCode, "4003");
}

TEST_F(ClientAgainstServiceTest, AddressUpdateRenewsTheSessionCode) {
  LogIn(kDemoEmail, demo_password_);
  const std::string old_code = session_.gsAuthCode;
  const StringArray address = {"", "Dana",   "Demo", "2 Pine St",
                               "", "Austin", "TX",   "78701"};
  const StringArray card = {"Dana Demo", "XXXXXXXXXXXX1111", "11", "2035",
                            "94105"};
  StringArray codes;
  ASSERT_TRUE(client_->UpdateUserAddress(
      gsSiteUrl, session_.gsAuthCode, kDemoEmail, demo_password_, address, card,
      codes, errCode, errText, false, ""))
      << errCode << " " << errText;
  ASSERT_FALSE(codes.empty());
  EXPECT_NE(codes[0], old_code);
  session_.gsAuthCode = codes[0];

  // The old code is spent.
  TextGrid albums;
  EXPECT_FALSE(
      client_->GetAlbumList(gsSiteUrl, old_code, albums, errCode, errText));
  EXPECT_EQ(errCode, "1001");

  std::string status;
  StringArray name;
  StringArray stored_address;
  StringArray stored_card;
  ASSERT_TRUE(client_->GetUserInfo(gsSiteUrl, session_.gsAuthCode, status, name,
                                   stored_address, stored_card, errCode,
                                   errText));
  EXPECT_EQ(stored_address[3], "2 Pine St");
  EXPECT_EQ(stored_address[6], "TX");
  EXPECT_EQ(stored_card[1], "XXXXXXXXXXXX1111");

  // A new number is checked and stored masked.
  StringArray new_card = card;
  new_card[1] = "5555 5555 5555 4444";
  ASSERT_TRUE(client_->UpdateUserAddress(
      gsSiteUrl, session_.gsAuthCode, kDemoEmail, demo_password_, address,
      new_card, codes, errCode, errText, true, "XXXXXXXXXXXX1111"))
      << errCode << " " << errText;
  session_.gsAuthCode = codes[0];
  ASSERT_TRUE(client_->GetUserInfo(gsSiteUrl, session_.gsAuthCode, status, name,
                                   stored_address, stored_card, errCode,
                                   errText));
  EXPECT_EQ(stored_card[1], "XXXXXXXXXXXX4444");

  // A refused address keeps the session as it was.
  StringArray bad = address;
  bad[7] = "787";
  codes = {"kept"};
  EXPECT_FALSE(client_->UpdateUserAddress(gsSiteUrl, session_.gsAuthCode,
                                          kDemoEmail, demo_password_, bad, card,
                                          codes, errCode, errText, false, ""));
  EXPECT_EQ(errCode, "2012");
  EXPECT_EQ(codes, StringArray{"kept"});
  EXPECT_TRUE(client_->GetAlbumList(gsSiteUrl, session_.gsAuthCode, albums,
                                    errCode, errText));
}

}  // namespace
}  // namespace qbpd::against_service
