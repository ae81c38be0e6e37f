#include "service/pricing.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace qbpd::service {

namespace {

constexpr int kSurchargeStep = 25;

}  // namespace

double TierPrice(const std::vector<Tier>& tiers, int quantity) {
  if (tiers.empty()) {
    return 0;
  }
  if (quantity == 0) {
    return tiers.front().price;
  }
  for (const auto& tier : tiers) {
    if (tier.lower <= quantity && quantity <= tier.upper) {
      return tier.price;
    }
  }
  return tiers.back().price;
}

double ShippingCost(const std::vector<Band>& bands, int prints) {
  if (prints <= 0 || bands.empty()) {
    return 0;
  }
  const size_t last = bands.size() - 1;
  for (size_t i = 0; i < last; ++i) {
    if (bands[i].lower <= prints && prints <= bands[i].upper) {
      return bands[i].cost;
    }
  }
  const Band& surcharge = bands[last];
  if (last == 0 || prints < surcharge.lower) {
    return 0;
  }
  const int started = (prints - surcharge.lower) / kSurchargeStep + 1;
  return bands[last - 1].cost + surcharge.cost * started;
}

double RoundCents(double amount) {
  return std::round(amount * 100.0) / 100.0;
}

std::string SizeText(int size) {
  switch (size) {
    case 1:
      return "4 x 6";
    case 2:
      return "5 x 7";
    case 3:
      return "8 x 10";
    case 4:
      return "wallet set (4)";
    default:
      return "";
  }
}

Quote PriceOrder(const QuoteInput& input) {
  Quote quote;
  for (const auto& line : input.lines) {
    for (int row = 0; row < kSizeCount; ++row) {
      quote.size_quantity[row] += std::max(0, line[row]);
    }
  }
  double prints_amount = 0;
  for (int row = 0; row < kSizeCount; ++row) {
    const auto it = input.tiers.find(row + 1);
    quote.unit_price[row] =
        it == input.tiers.end()
            ? 0
            : TierPrice(it->second, quote.size_quantity[row]);
    quote.size_amount[row] =
        RoundCents(quote.unit_price[row] * quote.size_quantity[row]);
    prints_amount += quote.size_amount[row];
    quote.total_prints += quote.size_quantity[row];
  }

  double free_value = 0;
  for (const auto& offer : input.free_offers) {
    if (offer.size < 1 || offer.size > kSizeCount) {
      continue;
    }
    const int row = offer.size - 1;
    const int quantity = std::min(offer.quantity, quote.size_quantity[row]);
    if (quantity <= 0) {
      continue;
    }
    const double value = RoundCents(quantity * quote.unit_price[row]);
    quote.free_prints.push_back({quantity, value, SizeText(offer.size)});
    free_value += value;
  }
  const double after_free = std::max(0.0, prints_amount - free_value);

  if (!input.coupon_code.empty()) {
    if (!input.coupon) {
      quote.coupon_label =
          "The coupon code " + input.coupon_code + " is not valid.";
    } else if (input.coupon->expired) {
      quote.coupon_label = "The coupon " + input.coupon_code + " has expired.";
    } else if (prints_amount < input.coupon->min_order) {
      quote.coupon_label = "The coupon " + input.coupon_code +
                           " needs an order of at least " +
                           FormatAmount(input.coupon->min_order) + ".";
    } else {
      quote.coupon_applied = true;
      quote.coupon_label = FormatAmount(input.coupon->value);
      const double discount =
          input.coupon->percent
              ? RoundCents(after_free * input.coupon->value / 100.0)
              : std::min(input.coupon->value, after_free);
      quote.coupon_discount = discount == 0 ? 0 : -discount;
    }
  }

  quote.cost_of_prints =
      RoundCents(std::max(0.0, after_free + quote.coupon_discount));
  quote.shipping = ShippingCost(input.bands, quote.total_prints);
  quote.tax = RoundCents((quote.cost_of_prints + quote.shipping) *
                         input.tax_percent / 100.0);
  quote.total = RoundCents(quote.cost_of_prints + quote.shipping + quote.tax);
  return quote;
}

std::string FormatAmount(double amount) {
  if (amount == 0) {
    return "0";  // also turns -0 into 0
  }
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, amount);
  return std::string(buffer, result.ptr);
}

}  // namespace qbpd::service
