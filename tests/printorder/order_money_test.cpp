#include "printorder/order_money.h"

#include <gtest/gtest.h>

#include <string>

namespace qbpd {
namespace {

TEST(TextValue, ReadsTheLeadingNumberAndZeroForNothing) {
  struct Case {
    const char* text;
    double value;
  } cases[] = {
      {"", 0},           // empty text is 0
      {"abc", 0},        // no number at all
      {"12", 12},        //
      {"  3.25", 3.25},  // leading blanks skipped
      {"12abc", 12},     // the leading number only
      {"1,234.50", 1},   // the "," ends the number
      {"-0.38", -0.38},  // a negative discount
      {"1.5.2", 1.5},    // a second point ends it
      {"2e2", 200},      // an exponent
      {"2e", 2},         // an exponent without digits is not one
      {".5", 0.5},       //
      {"-", 0},          //
  };
  for (const Case& c : cases) {
    EXPECT_DOUBLE_EQ(TextValue(c.text), c.value) << c.text;
  }
}

TEST(NumberText, WritesBackWithoutRounding) {
  EXPECT_EQ(NumberText(0.19 * 3), "0.57");      // 0.5700000000000001 in binary
  EXPECT_EQ(NumberText(1.95 * 3), "5.85");      //
  EXPECT_EQ(NumberText(0.123456), "0.123456");  // no rounding to cents
  EXPECT_EQ(NumberText(12), "12");
  EXPECT_EQ(NumberText(-0.0), "0");
  EXPECT_EQ(NumberText(-2.5), "-2.5");
  // A text written back reads as the same number.
  for (double v : {0.29, 4.99, 1234.5, 0.1 + 0.2, 99.99 * 7}) {
    EXPECT_NEAR(TextValue(NumberText(v)), v, 1e-12) << v;
  }
}

TEST(FormatAmount, TwoDecimalsWithGrouping) {
  struct Case {
    double value;
    const char* shown;
  } cases[] = {
      {0, "0.00"},           //
      {5, "5.00"},           //
      {0.575, "0.58"},       // half away from zero as the text reads
      {1.005, "1.01"},       // binary 1.00499999... still shows 1.01
      {2.675, "2.68"},       //
      {1234.5, "1,234.50"},  // grouping
      {1234567.891, "1,234,567.89"},
      {999.995, "1,000.00"},  // the carry reaches the grouping
      {-0.38, "-0.38"},       // a discount
      {-0.001, "0.00"},       // no "-0.00"
      {0.004, "0.00"},        //
      {0.1 + 0.2, "0.30"},    //
  };
  for (const Case& c : cases) {
    EXPECT_EQ(FormatAmount(c.value), c.shown) << c.value;
  }
  EXPECT_EQ(FormatAmountText("7.5"), "7.50");
  EXPECT_EQ(FormatAmountText(""), "0.00");
}

TEST(ShownValue, KeepingTheGroupsReadsOnlyTheDecimalSign) {
  const NumberFormat german{",", ".", "\3"};
  EXPECT_DOUBLE_EQ(ShownValueKeepingGroups("12,50", german), 12.5);
  EXPECT_DOUBLE_EQ(ShownValueKeepingGroups("1.234,50", german), 1.234);
  EXPECT_DOUBLE_EQ(ShownValueKeepingGroups("1,234.50"), 1);
}

TEST(ShownValue, RemovesTheGroupingBeforeReading) {
  EXPECT_DOUBLE_EQ(ShownValue("1,234.50"), 1234.5);
  EXPECT_DOUBLE_EQ(ShownValue("1,000.00"), 1000);
  EXPECT_DOUBLE_EQ(ShownValue("0.00"), 0);
  // Without the removal the same caption would read 1.
  EXPECT_DOUBLE_EQ(TextValue("1,234.50"), 1);
}

TEST(FormatAmount, FollowsTheLocalesSignsAndGroups) {
  const NumberFormat german{",", ".", "\3"};
  const NumberFormat french{",", "\u202f", "\3"};  // a narrow space
  const NumberFormat indian{".", ",", "\3\2"};     // lakh and crore
  const NumberFormat plain{".", "", ""};           // the C locale
  const NumberFormat once{".", ",", "\3\x7f"};     // one group, no more
  struct Case {
    const NumberFormat* format;
    double value;
    const char* shown;
  } cases[] = {
      {&german, 1234567.891, "1.234.567,89"},
      {&german, -0.38, "-0,38"},
      {&german, 999.995, "1.000,00"},
      {&french, 1234.5, "1\u202f234,50"},
      {&indian, 123456789, "12,34,56,789.00"},
      {&indian, 1234, "1,234.00"},
      {&plain, 1234567.5, "1234567.50"},
      {&once, 1234567.5, "1234,567.50"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(FormatAmount(c.value, *c.format), c.shown) << c.value;
    // What is shown reads back as the amount it shows.
    EXPECT_DOUBLE_EQ(ShownValue(c.shown, *c.format),
                     ShownValue(FormatAmount(c.value)))
        << c.shown;
  }
}

// The tiers of the reference price list for 4 x 6 prints.
TextGrid Tiers() {
  return TextGrid::FromRows(
      {{"1", "25", "0.29"}, {"26", "100", "0.25"}, {"101", "200", "0.22"}});
}

TEST(TierUnitPrice, ByTotalQuantity) {
  struct Case {
    long quantity;
    const char* price;
  } cases[] = {
      {0, "0.29"},    // 0 takes the first tier
      {1, "0.29"},    //
      {25, "0.29"},   // upper bound is inside
      {26, "0.25"},   // lower bound of the next tier
      {100, "0.25"},  //
      {101, "0.22"},  //
      {500, "0.22"},  // past every tier: the last row
  };
  for (const Case& c : cases) {
    EXPECT_EQ(TierUnitPrice(Tiers(), c.quantity), c.price) << c.quantity;
  }
  EXPECT_EQ(TierUnitPrice(TextGrid(), 5), "");
  // A gap between tiers also falls to the last row.
  TextGrid gap = TextGrid::FromRows({{"1", "10", "1"}, {"20", "30", "2"}});
  EXPECT_EQ(TierUnitPrice(gap, 15), "2");
}

// Bands ending at 100 and the surcharge row from 101.
TextGrid Bands() {
  return TextGrid::FromRows({{"1", "25", "1.99"},
                             {"26", "50", "3.49"},
                             {"51", "100", "5.99"},
                             {"101", "0", "1.5"}});
}

TEST(ShippingFor, BandsAndStartedSurcharges) {
  struct Case {
    long prints;
    const char* shipping;
  } cases[] = {
      {1, "1.99"},     // first band
      {25, "1.99"},    //
      {26, "3.49"},    //
      {100, "5.99"},   // last real band
      {101, "7.49"},   // 5.99 + 1 x 1.5: (101-101)/25+1 = 1
      {125, "7.49"},   // (125-101)/25+1 = 0+1 = 1
      {126, "8.99"},   // (126-101)/25+1 = 1+1 = 2: 5.99 + 3.0
      {151, "10.49"},  // (151-101)/25+1 = 2+1 = 3: 5.99 + 4.5
  };
  for (const Case& c : cases) {
    EXPECT_EQ(FormatAmountText(ShippingFor(Bands(), c.prints, "x")), c.shipping)
        << c.prints;
  }
  // Below every band and the surcharge row: the value stays as it was.
  EXPECT_EQ(ShippingFor(Bands(), 0, "4.00"), "4.00");
  EXPECT_EQ(ShippingFor(TextGrid(), 10, "4.00"), "4.00");
}

TEST(PrintLine, TotalsAreUnitPriceTimesQuantityUnrounded) {
  TextGrid line = NewPrintLine();
  EXPECT_EQ(line(0, kQuantityColumn), "0");
  line(0, kQuantityColumn) = "3";
  line(0, kPriceColumn) = "0.19";
  line(2, kQuantityColumn) = "2";
  line(2, kPriceColumn) = "3.995";
  RecomputeLineTotals(line);
  EXPECT_EQ(line(0, kTotalColumn), "0.57");  // 3 x 0.19
  EXPECT_EQ(line(2, kTotalColumn), "7.99");  // 2 x 3.995, kept unrounded
  EXPECT_EQ(line(1, kTotalColumn), "0");     // 0 x ""
}

}  // namespace
}  // namespace qbpd
