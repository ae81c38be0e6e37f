#include "printorder/order_pricing.h"

#include "printorder/order_money.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qbpd {
namespace {

// A price list in the shape GetPriceList gives: 4 x 6 in three tiers, 5 x 7
// in two, 8 x 10 and wallets in one; bands to 100 and the surcharge row.
void LayPriceList(PrintOrderData& s) {
  s.gdicPriceTiers.Add(1, TextGrid::FromRows({{"1", "25", "0.29"},
                                              {"26", "100", "0.25"},
                                              {"101", "9999", "0.22"}}));
  s.gdicPriceTiers.Add(
      2, TextGrid::FromRows({{"1", "25", "0.99"}, {"26", "9999", "0.89"}}));
  s.gdicPriceTiers.Add(3, TextGrid::FromRows({{"1", "9999", "3.99"}}));
  s.gdicPriceTiers.Add(4, TextGrid::FromRows({{"1", "9999", "1.49"}}));
  s.gsaShippingBands = TextGrid::FromRows({{"1", "25", "1.99"},
                                           {"26", "50", "3.49"},
                                           {"51", "100", "5.99"},
                                           {"101", "0", "1.5"}});
}

TextGrid Line(int q4x6, int q5x7 = 0, int q8x10 = 0, int wallets = 0) {
  TextGrid line = NewPrintLine();
  line(0, kQuantityColumn) = std::to_string(q4x6);
  line(1, kQuantityColumn) = std::to_string(q5x7);
  line(2, kQuantityColumn) = std::to_string(q8x10);
  line(3, kQuantityColumn) = std::to_string(wallets);
  return line;
}

TEST(PriceOrderLocally, TotalsAgainstHandComputation) {
  struct Case {
    std::vector<TextGrid> lines;
    const char* cost;      // cost of prints as shown
    const char* shipping;  // shipping as shown
  } cases[] = {
      // 1 x 0.29 = 0.29; band 1-25: 1.99
      {{Line(1)}, "0.29", "1.99"},
      // 25 x 0.29 = 7.25; band 1-25: 1.99
      {{Line(20), Line(5)}, "7.25", "1.99"},
      // 26 x 0.25 = 6.50; band 26-50: 3.49
      {{Line(13), Line(13)}, "6.50", "3.49"},
      // 100 x 0.25 = 25.00; band 51-100: 5.99
      {{Line(50), Line(50)}, "25.00", "5.99"},
      // 101 x 0.22 = 22.22; 5.99 + 1 x 1.5 ((101-101)/25+1 = 1) = 7.49
      {{Line(101)}, "22.22", "7.49"},
      // 125 x 0.22 = 27.50; (125-101)/25+1 = 1: 7.49
      {{Line(100), Line(25)}, "27.50", "7.49"},
      // 126 x 0.22 = 27.72; (126-101)/25+1 = 2: 5.99 + 3.00 = 8.99
      {{Line(126)}, "27.72", "8.99"},
      // 151 x 0.22 = 33.22; (151-101)/25+1 = 3: 5.99 + 4.50 = 10.49
      {{Line(151)}, "33.22", "10.49"},
      // Each size by its own total: 30 x 0.25 = 7.50, 2 x 0.99 = 1.98,
      // 1 x 3.99, 1 x 1.49; 7.50 + 1.98 + 3.99 + 1.49 = 14.96; Q = 34:
      // band 26-50: 3.49
      {{Line(30, 2), Line(0, 0, 1, 1)}, "14.96", "3.49"},
      // 3 x 0.29 = 0.87 (0.8699999... in binary, shown 0.87); 1.99
      {{Line(1), Line(1), Line(1)}, "0.87", "1.99"},
  };
  for (size_t i = 0; i < std::size(cases); ++i) {
    PrintOrderData s;
    LayPriceList(s);
    for (size_t k = 0; k < cases[i].lines.size(); ++k) {
      s.gcolEditLines.Add(cases[i].lines[k], std::to_string(k + 1));
    }
    OrderAmounts amounts;
    PriceOrderLocally(s, amounts);
    EXPECT_EQ(FormatAmount(amounts.cost_of_prints), cases[i].cost)
        << "case " << i;
    EXPECT_EQ(FormatAmountText(amounts.shipping), cases[i].shipping)
        << "case " << i;
  }
}

TEST(PriceOrderLocally, RepricesEveryLineAndTheSizeTotals) {
  PrintOrderData s;
  LayPriceList(s);
  s.gcolEditLines.Add(Line(20, 1), "1");
  s.gcolEditLines.Add(Line(10), "2");
  OrderAmounts amounts;
  PriceOrderLocally(s, amounts);
  // 4 x 6: 30 prints, the 26-100 tier for every line.
  EXPECT_EQ(s.gsaSizeTotals(0, 0), "30");
  EXPECT_EQ(s.gsaSizeTotals(0, 1), "0.25");
  EXPECT_EQ(s.gsaSizeTotals(0, 2), "7.5");
  EXPECT_EQ(s.gcolEditLines.Item(1)(0, kPriceColumn), "0.25");
  EXPECT_EQ(s.gcolEditLines.Item(1)(0, kTotalColumn), "5");    // 20 x 0.25
  EXPECT_EQ(s.gcolEditLines.Item(2)(0, kTotalColumn), "2.5");  // 10 x 0.25
  // 5 x 7: one print, first tier.
  EXPECT_EQ(s.gcolEditLines.Item(1)(1, kTotalColumn), "0.99");
  // A size without prints shows its first tier.
  EXPECT_EQ(s.gsaSizeTotals(2, 1), "3.99");
  EXPECT_EQ(s.gsaSizeTotals(2, 2), "0");
}

TEST(InitOrderLines, ExpressQuantityPicksTheTierForEverySize) {
  PrintOrderData s;
  LayPriceList(s);
  KeyedCollection<std::string> photos;
  for (int k = 1; k <= 13; ++k) {
    photos.Add("/p/" + std::to_string(k) + ".jpg", std::to_string(k));
  }
  OrderAmounts amounts;
  // 4 x 6 doubles: Q = 2 x 13 = 26.
  InitOrderLines(s, photos, /*express_size=*/0, /*express_qty=*/2, amounts,
                 [](const std::string& path) { return path != "/p/7.jpg"; });
  EXPECT_EQ(s.gsaSizeTotals(0, 0), "26");
  EXPECT_EQ(s.gsaSizeTotals(0, 1), "0.25");
  // The 5 x 7 price is the one of 26 prints too, though none are ordered.
  EXPECT_EQ(s.gsaSizeTotals(1, 1), "0.89");
  EXPECT_EQ(s.gsaSizeTotals(1, 0), "0");
  EXPECT_EQ(FormatAmount(amounts.cost_of_prints), "6.50");  // 26 x 0.25
  EXPECT_EQ(amounts.shipping, "3.49");
  // The vanished photo keeps its place but gets no line.
  EXPECT_EQ(s.gcolOrderLines.Count(), 12);
  EXPECT_FALSE(s.gcolOrderLines.Exists("7"));
  EXPECT_EQ(s.gcolOrderLines.Item("1")(0, kQuantityColumn), "2");
  EXPECT_EQ(s.gcolOrderLines.Item("1")(0, kTotalColumn), "0.5");
}

TEST(InitOrderLines, NoExpressChoiceStartsAtZeroWithFirstTiers) {
  PrintOrderData s;
  LayPriceList(s);
  KeyedCollection<std::string> photos;
  photos.Add("/p/1.jpg", "1");
  OrderAmounts amounts;
  amounts.shipping = "0";
  InitOrderLines(s, photos, 0, 0, amounts,
                 [](const std::string&) { return true; });
  const TextGrid& line = s.gcolOrderLines.Item(1);
  for (int row = 0; row < kSizeRows; ++row) {
    EXPECT_EQ(line(row, kQuantityColumn), "0") << row;
  }
  EXPECT_EQ(line(0, kPriceColumn), "0.29");
  EXPECT_EQ(line(1, kPriceColumn), "0.99");
  EXPECT_EQ(line(2, kPriceColumn), "3.99");
  EXPECT_EQ(line(3, kPriceColumn), "1.49");
  EXPECT_EQ(amounts.cost_of_prints, 0);
  EXPECT_EQ(amounts.shipping, "0");  // Q = 0 lies below every band
}

TEST(ApplySizePrices, ServicePricesReplaceAllButEmptyCells) {
  PrintLines lines;
  TextGrid line = Line(3, 2);
  line(0, kPriceColumn) = "0.29";
  line(1, kPriceColumn) = "0.99";
  lines.Add(line, "1");
  TextGrid totals(kSizeRows, 3);
  totals(0, kPriceColumn) = "0.19";
  ApplySizePrices(lines, totals);
  EXPECT_EQ(lines.Item(1)(0, kPriceColumn), "0.19");
  EXPECT_EQ(lines.Item(1)(0, kTotalColumn), "0.57");
  EXPECT_EQ(lines.Item(1)(1, kPriceColumn), "0.99");  // empty cell kept
  EXPECT_EQ(lines.Item(1)(1, kTotalColumn), "1.98");
}

}  // namespace
}  // namespace qbpd
