#include "printorder/order_pricing.h"

#include "printorder/order_money.h"

namespace qbpd {
namespace {

const TextGrid* TiersOf(const PrintOrderData& d, int size_number) {
  if (!d.gdicPriceTiers.Exists(size_number)) {
    return nullptr;
  }
  return &d.gdicPriceTiers.Item(size_number);
}

std::string UnitPrice(const PrintOrderData& d, int size_number, long quantity) {
  const TextGrid* tiers = TiersOf(d, size_number);
  return tiers ? TierUnitPrice(*tiers, quantity) : std::string();
}

}  // namespace

long OrderQuantity(const PrintLines& lines) {
  long q = 0;
  for (int row = 0; row < kSizeRows; ++row) {
    q += SizeQuantity(lines, row);
  }
  return q;
}

long SizeQuantity(const PrintLines& lines, int row) {
  long q = 0;
  for (int k = 1; k <= lines.Count(); ++k) {
    q += static_cast<long>(TextValue(lines.Item(k)(row, kQuantityColumn)));
  }
  return q;
}

void InitOrderLines(PrintOrderData& d,
                    const KeyedCollection<std::string>& photos,
                    int express_size,
                    int express_qty,
                    OrderAmounts& amounts,
                    const std::function<bool(const std::string&)>& exists) {
  // A 16-bit count, as the program keeps it.
  const auto q = static_cast<short>(express_qty * photos.Count());
  amounts.cost_of_prints = 0;
  TextGrid line = NewPrintLine();
  d.gsaSizeTotals = TextGrid(kSizeRows, 3);
  for (int size = 1; size <= kSizeRows; ++size) {
    const int row = size - 1;
    const bool express = size == express_size + 1;
    line(row, kQuantityColumn) = std::to_string(express ? express_qty : 0);
    line(row, kPriceColumn) = UnitPrice(d, size, q);
    line(row, kTotalColumn) = NumberText(TextValue(line(row, kPriceColumn)) *
                                         TextValue(line(row, kQuantityColumn)));
    const long total = express ? q : 0;
    d.gsaSizeTotals(row, kQuantityColumn) = std::to_string(total);
    d.gsaSizeTotals(row, kPriceColumn) = line(row, kPriceColumn);
    const double amount =
        static_cast<double>(total) * TextValue(line(row, kPriceColumn));
    d.gsaSizeTotals(row, kTotalColumn) = NumberText(amount);
    amounts.cost_of_prints += amount;
  }
  amounts.shipping = ShippingFor(d.gsaShippingBands, q, amounts.shipping);
  d.gcolOrderLines = PrintLines();
  for (int k = 1; k <= photos.Count(); ++k) {
    if (exists(photos.Item(k))) {
      d.gcolOrderLines.Add(line, photos.KeyAt(k));
    }
  }
}

void PriceOrderLocally(PrintOrderData& d, OrderAmounts& amounts) {
  d.gsaSizeTotals = TextGrid(kSizeRows, 3);
  amounts.cost_of_prints = 0;
  for (int size = 1; size <= kSizeRows; ++size) {
    const int row = size - 1;
    const long total = SizeQuantity(d.gcolEditLines, row);
    const std::string price = UnitPrice(d, size, total);
    const double amount = static_cast<double>(total) * TextValue(price);
    d.gsaSizeTotals(row, kQuantityColumn) = std::to_string(total);
    d.gsaSizeTotals(row, kPriceColumn) = price;
    d.gsaSizeTotals(row, kTotalColumn) = NumberText(amount);
    amounts.cost_of_prints += amount;
  }
  amounts.shipping = ShippingFor(
      d.gsaShippingBands, OrderQuantity(d.gcolEditLines), amounts.shipping);
  for (int k = 1; k <= d.gcolEditLines.Count(); ++k) {
    TextGrid& line = d.gcolEditLines.Item(k);
    for (int row = 0; row < kSizeRows; ++row) {
      line(row, kPriceColumn) = d.gsaSizeTotals(row, kPriceColumn);
    }
    RecomputeLineTotals(line);
  }
}

void ApplySizePrices(PrintLines& lines, const TextGrid& size_totals) {
  if (size_totals.Rows() < kSizeRows || size_totals.Columns() < 2) {
    return;
  }
  for (int k = 1; k <= lines.Count(); ++k) {
    TextGrid& line = lines.Item(k);
    for (int row = 0; row < kSizeRows; ++row) {
      if (!size_totals(row, kPriceColumn).empty()) {
        line(row, kPriceColumn) = size_totals(row, kPriceColumn);
      }
    }
    RecomputeLineTotals(line);
  }
}

std::string FirstTierPrice(const PrintOrderData& d, int row) {
  return UnitPrice(d, row + 1, 0);
}

}  // namespace qbpd
