#ifndef QBPD_PRINTORDER_ORDER_PRICING_H_
#define QBPD_PRINTORDER_ORDER_PRICING_H_

#include "core/keyed_collection.h"
#include "core/ordered_dictionary.h"
#include "online/order_data.h"
#include "online/service_types.h"

#include <functional>
#include <string>

namespace qbpd {

// The order's prices as the dialog works them out without the service, and
// the rewrite of the lines with the service's prices. Every amount stays
// text; nothing is rounded.

using PrintLines = KeyedCollection<TextGrid>;

// The sum of every quantity of every line.
long OrderQuantity(const PrintLines& lines);

// The lines' quantities summed per size row.
long SizeQuantity(const PrintLines& lines, int row);

// The priced state of an order that the dialog shows: the cost of prints
// and the shipping text.
struct OrderAmounts {
  double cost_of_prints = 0;
  std::string shipping;
};

// InitOrderLines: the template line of an order that opens with
// `express_qty` prints of size row `express_size` for each photo (0 and 0:
// nothing), priced by the tier of Q = express_qty x photos for all four
// sizes; gsaSizeTotals, the shipping by Q, and gcolOrderLines made new with
// a copy of the template under each photo's key whose file `exists`.
void InitOrderLines(PrintOrderData& d,
                    const KeyedCollection<std::string>& photos,
                    int express_size,
                    int express_qty,
                    OrderAmounts& amounts,
                    const std::function<bool(const std::string&)>& exists);

// The local pricing of UpdateOrderTotals: gsaSizeTotals from the working
// lines (each size by the tier of its own total), the cost of prints, the
// shipping by the order's total, and each working line repriced. No tax,
// coupon or free prints.
void PriceOrderLocally(PrintOrderData& d, OrderAmounts& amounts);

// The service's prices into the lines: column 1 of each row takes the unit
// price of `size_totals` unless that cell is empty, column 2 becomes column
// 1 times column 0.
void ApplySizePrices(PrintLines& lines, const TextGrid& size_totals);

// The first-tier unit price of a size row (Clear sizes, an empty order).
std::string FirstTierPrice(const PrintOrderData& d, int row);

}  // namespace qbpd

#endif  // QBPD_PRINTORDER_ORDER_PRICING_H_
