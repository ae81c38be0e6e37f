#include "service/checks.h"

#include "service/html.h"
#include "service/pricing.h"

#include <gtest/gtest.h>

namespace qbpd::service {
namespace {

TEST(ServiceChecks, EmailAddresses) {
  struct Case {
    const char* email;
    bool valid;
  };
  const Case cases[] = {
      {"ann@example.test", true},   {"ann.o'neil+x@mail.example.co", true},
      {"ann@example", false},        // one label only
      {"@example.test", false},      // no local part
      {"ann@@example.test", false},  // two at signs
      {"ann@-bad.test", false},      // label starts with a dash
      {"ann@example.t", false},      // top level of one letter
      {"ann@exa mple.test", false},  // blank
      {".ann@example.test", false},  // local part starts with a dot
      {"ann@example.123", false},    // numeric top level
  };
  for (const auto& c : cases) {
    EXPECT_EQ(IsValidEmail(c.email), c.valid) << c.email;
  }
}

TEST(ServiceChecks, CardNumbersAndMasking) {
  struct Case {
    const char* number;
    const char* digits;  // "" when malformed
  };
  const Case cases[] = {
      {"4111111111111111", "4111111111111111"},
      {"4111 1111 1111 1111", "4111111111111111"},
      {"4111-1111-1111-1111", "4111111111111111"},
      {"3782 822463 10005", "378282246310005"},  // three groups
      {"4111 1111-1111 1111", ""},               // mixed separators
      {"4111 11111111 1111", ""},                // wrong grouping
      {"411111111111111111", ""},                // 18 digits
      {"4111x111111111111", ""},
      {"", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CardDigits(c.number), c.digits) << c.number;
  }
  EXPECT_TRUE(PassesLuhn("4111111111111111"));
  EXPECT_TRUE(PassesLuhn("378282246310005"));
  EXPECT_FALSE(PassesLuhn("4111111111111112"));
  EXPECT_EQ(MaskCardNumber("4111111111111111"), "XXXXXXXXXXXX1111");
  EXPECT_EQ(MaskCardNumber("378282246310005"), "XXXXXXXXXXX0005");
}

TEST(ServiceChecks, ZipAndState) {
  EXPECT_TRUE(IsValidZip("94105"));
  EXPECT_TRUE(IsValidZip("94105-1234"));
  EXPECT_FALSE(IsValidZip("9410"));
  EXPECT_FALSE(IsValidZip("94105-12"));
  EXPECT_FALSE(IsValidZip("9410a"));
  EXPECT_TRUE(IsKnownState("KA"));
  EXPECT_TRUE(IsKnownState("AP"));
  EXPECT_FALSE(IsKnownState("---"));
  EXPECT_FALSE(IsKnownState("ZZ"));
  EXPECT_TRUE(StateMatchesZip("CA", "94105"));
  EXPECT_FALSE(StateMatchesZip("NY", "94105"));
  EXPECT_TRUE(StateMatchesZip("GU", "96910"));  // territories are not checked
}

TEST(ServiceChecks, CardExpiryAgainstToday) {
  CardFields card{"Ann Lee", "4111111111111111", 3, "2026"};
  EXPECT_EQ(CheckCard(card, "94105", 2026, 3), "");  // expires this month
  EXPECT_EQ(CheckCard(card, "94105", 2026, 4), "2018");
  card.month = 0;
  EXPECT_EQ(CheckCard(card, "94105", 2026, 3), "2017");
  card.month = 12;
  card.year = "2060";
  EXPECT_EQ(CheckCard(card, "94105", 2026, 3), "2018");  // too far ahead
}

TEST(ServicePricing, TierChoice) {
  const std::vector<Tier> tiers = {
      {1, 24, 0.29}, {25, 99, 0.25}, {100, 500, 0.19}};
  EXPECT_DOUBLE_EQ(TierPrice(tiers, 0), 0.29);  // none ordered: first tier
  EXPECT_DOUBLE_EQ(TierPrice(tiers, 24), 0.29);
  EXPECT_DOUBLE_EQ(TierPrice(tiers, 25), 0.25);
  EXPECT_DOUBLE_EQ(TierPrice(tiers, 501), 0.19);  // beyond: last tier
  EXPECT_DOUBLE_EQ(TierPrice({}, 5), 0);
}

TEST(ServicePricing, ShippingSurchargeRows) {
  const std::vector<Band> bands = {
      {1, 25, 2.99}, {26, 50, 4.99}, {51, 100, 6.99}, {101, 0, 1.5}};
  struct Case {
    int prints;
    double cost;
  };
  const Case cases[] = {
      {0, 0},      {1, 2.99},    {25, 2.99},
      {26, 4.99},  {100, 6.99},  {101, 8.49},  // one started surcharge
      {125, 8.49}, {126, 9.99},  // 25 beyond the start: a second one
      {150, 9.99}, {151, 11.49},
  };
  for (const auto& c : cases) {
    EXPECT_NEAR(ShippingCost(bands, c.prints), c.cost, 1e-9) << c.prints;
  }
}

TEST(ServicePricing, QuoteWithFreePrintsCouponAndTax) {
  QuoteInput input;
  input.tiers[1] = {{1, 24, 0.29}, {25, 99, 0.25}};
  input.tiers[3] = {{1, 24, 3.99}};
  input.bands = {{1, 25, 2.99}, {26, 50, 4.99}, {51, 0, 1}};
  input.lines = {{20, 0, 1, 0}, {10, 0, 1, 0}};
  input.free_offers = {{1, 10}};
  input.coupon_code = "SAVE10";
  input.coupon = Coupon{"SAVE10", true, 10, 0, false};
  input.tax_percent = 7.25;
  const Quote quote = PriceOrder(input);
  EXPECT_EQ(quote.size_quantity[0], 30);
  EXPECT_DOUBLE_EQ(quote.unit_price[0], 0.25);  // tier by the size's total
  EXPECT_DOUBLE_EQ(quote.size_amount[2], 7.98);
  ASSERT_EQ(quote.free_prints.size(), 1u);
  EXPECT_DOUBLE_EQ(quote.free_prints[0].value, 2.5);
  // (7.5 + 7.98 - 2.5) less 10 percent.
  EXPECT_DOUBLE_EQ(quote.coupon_discount, -1.3);
  EXPECT_DOUBLE_EQ(quote.cost_of_prints, 11.68);
  EXPECT_DOUBLE_EQ(quote.shipping, 4.99);
  EXPECT_DOUBLE_EQ(quote.tax, 1.21);
  EXPECT_DOUBLE_EQ(quote.total, 17.88);
}

TEST(ServicePricing, CouponRefusals) {
  QuoteInput input;
  input.tiers[1] = {{1, 99, 1}};
  input.lines = {{4, 0, 0, 0}};
  input.coupon_code = "FIVEOFF";
  input.coupon = Coupon{"FIVEOFF", false, 5, 10, false};
  Quote quote = PriceOrder(input);
  EXPECT_FALSE(quote.coupon_applied);
  EXPECT_EQ(quote.coupon_label,
            "The coupon FIVEOFF needs an order of at least 10.");
  EXPECT_DOUBLE_EQ(quote.cost_of_prints, 4);

  input.lines = {{12, 0, 0, 0}};
  quote = PriceOrder(input);
  EXPECT_TRUE(quote.coupon_applied);
  EXPECT_EQ(quote.coupon_label, "5");
  EXPECT_DOUBLE_EQ(quote.coupon_discount, -5);
  EXPECT_DOUBLE_EQ(quote.cost_of_prints, 7);

  input.coupon->expired = true;
  EXPECT_EQ(PriceOrder(input).coupon_label, "The coupon FIVEOFF has expired.");
  input.coupon.reset();
  EXPECT_EQ(PriceOrder(input).coupon_label,
            "The coupon code FIVEOFF is not valid.");
}

TEST(ServicePricing, AmountsAsText) {
  EXPECT_EQ(FormatAmount(2.5), "2.5");
  EXPECT_EQ(FormatAmount(0.19), "0.19");
  EXPECT_EQ(FormatAmount(-0.0), "0");
  EXPECT_EQ(FormatAmount(-1.3), "-1.3");
}

TEST(ServiceHtml, EscapesMarkup) {
  EXPECT_EQ(EscapeHtml("<a href=\"x\">Tom & 'Jerry'</a>"),
            "&lt;a href=&quot;x&quot;&gt;Tom &amp; &#39;Jerry&#39;&lt;/a&gt;");
}

}  // namespace
}  // namespace qbpd::service
