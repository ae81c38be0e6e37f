#ifndef QBPD_SERVICE_PRICING_H_
#define QBPD_SERVICE_PRICING_H_

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qbpd::service {

// The number of print sizes; size number n (1 to 4) is row n-1.
inline constexpr int kSizeCount = 4;

struct Tier {
  int lower = 0, upper = 0;
  double price = 0;
};

// A shipping band. The last band of a table is the surcharge row: its lower
// value starts the surcharge and its cost is added per started 25 prints.
struct Band {
  int lower = 0, upper = 0;
  double cost = 0;
};

struct Coupon {
  std::string code;
  bool percent = true;  // else a fixed amount
  double value = 0;
  double min_order = 0;
  bool expired = false;
};

struct FreeOffer {
  int size = 1;  // size number
  int quantity = 0;
};

struct QuoteInput {
  std::map<int, std::vector<Tier>> tiers;  // by size number
  std::vector<Band> bands;
  std::vector<std::array<int, kSizeCount>> lines;  // quantities per photo
  std::string coupon_code;
  std::optional<Coupon> coupon;        // the stored coupon of that code, if any
  std::vector<FreeOffer> free_offers;  // the offers the account still has
  std::string tax_state;
  double tax_percent = 0;
};

struct FreePrintsRow {
  int quantity = 0;
  double value = 0;
  std::string size_text;
};

struct Quote {
  std::array<int, kSizeCount> size_quantity{};
  std::array<double, kSizeCount> unit_price{};
  std::array<double, kSizeCount> size_amount{};
  std::vector<FreePrintsRow> free_prints;
  bool coupon_applied = false;
  std::string coupon_label;    // percent, amount or the refusal message
  double coupon_discount = 0;  // zero or negative
  double cost_of_prints = 0;
  double shipping = 0;
  double tax = 0;
  double total = 0;
  int total_prints = 0;
};

// The unit price of `quantity` prints by a tier table: the first row for 0,
// else the first row that holds it, else the last row.
double TierPrice(const std::vector<Tier>& tiers, int quantity);
// The shipping cost of `prints` by the bands, surcharge row last.
double ShippingCost(const std::vector<Band>& bands, int prints);
double RoundCents(double amount);
// The size text of a size number ("4 x 6", ...).
std::string SizeText(int size);

Quote PriceOrder(const QuoteInput& input);

// Shortest text that reads back as the same number ("2.5", "0.19").
std::string FormatAmount(double amount);

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_PRICING_H_
