#ifndef QBPD_PRINTORDER_ORDER_MONEY_H_
#define QBPD_PRINTORDER_ORDER_MONEY_H_

#include "online/service_types.h"
#include "platform/number_format.h"

#include <string>
#include <string_view>

namespace qbpd {

// The money arithmetic of a print order. Prices, quantities and amounts are
// kept as text; a calculation reads the text as a number, works on doubles
// and writes the result back as text without rounding. Rounding to cents
// happens only where a value is shown.

// The number of print sizes; size number n (1 to 4) is row n-1 of a line.
inline constexpr int kSizeRows = 4;
// The columns of a print line and of the size totals.
inline constexpr int kQuantityColumn = 0;
inline constexpr int kPriceColumn = 1;
inline constexpr int kTotalColumn = 2;

// The lenient reading of a text (the program's Val): blanks are skipped, the
// leading number is read ("12abc" is 12, "1,234.50" is 1) and anything that
// isn't a number gives 0, as does empty text.
double TextValue(std::string_view text);

// A number written back as text with no rounding: up to 15 significant
// digits, no trailing zeros ("5.85", "0.19", "12"); -0 is "0".
std::string NumberText(double value);

// A value as shown: rounded half away from zero to two decimals as the
// value's 15-digit text reads, with the decimal sign and the grouping of
// `format` ("1,234.50", "-0.38", "0.00"; "1.234,50" in a German locale).
std::string FormatAmount(double value, const NumberFormat& format = {});

// The same for a text value (read by TextValue).
std::string FormatAmountText(std::string_view text,
                             const NumberFormat& format = {});

// A shown amount read back: every grouping sign of `format` removed, its
// decimal sign read as ".", then TextValue ("1,234.50" is 1234.5).
double ShownValue(std::string_view caption, const NumberFormat& format = {});

// A shown amount read as it stands, grouping signs and all: only the decimal
// sign is read as "." ("1,234.50" is 1, "12.50" is 12.5).
double ShownValueKeepingGroups(std::string_view caption,
                               const NumberFormat& format = {});

// The unit price of a size by its tier table (rows of lower, upper, unit
// price) for a total quantity: for 0 the first row; otherwise the first row
// with lower <= quantity <= upper; when none holds it, the last row. A
// table without rows gives "".
std::string TierUnitPrice(const TextGrid& tiers, long quantity);

// The shipping rule for `prints` with bands whose last row is the surcharge
// row L. The first of rows 0 to L-1 that holds `prints` gives its cost.
// When none does and L's lower <= prints, the cost of row L-1 plus L's cost
// for each started 25 prints from L's lower (a difference of 24 gives one
// surcharge, 25 two). Below L's lower, or with fewer than two rows past the
// walk, `current` is kept.
std::string ShippingFor(const TextGrid& bands,
                        long prints,
                        const std::string& current);

// A new print line: four size rows of quantity "0", price "" and total "".
TextGrid NewPrintLine();

// Column 2 of every row becomes column 1 times column 0, as text.
void RecomputeLineTotals(TextGrid& line);

}  // namespace qbpd

#endif  // QBPD_PRINTORDER_ORDER_MONEY_H_
