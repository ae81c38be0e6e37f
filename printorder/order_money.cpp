#include "printorder/order_money.h"

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace qbpd {
namespace {

constexpr int kSignificantDigits = 15;
constexpr long kSurchargeStep = 25;

bool IsDigitChar(char c) {
  return c >= '0' && c <= '9';
}

// Adds one to the decimal digits of `digits` (no sign, no point) from the
// right, growing it by a "1" in front when every digit carries.
void AddOne(std::string& digits) {
  for (size_t i = digits.size(); i-- > 0;) {
    if (digits[i] == '9') {
      digits[i] = '0';
    } else {
      ++digits[i];
      return;
    }
  }
  digits.insert(digits.begin(), '1');
}

std::string Grouped(const std::string& whole, const NumberFormat& format) {
  if (format.grouping.empty() || format.thousands_sign.empty()) {
    return whole;
  }
  // Groups are cut from the decimal sign leftwards; the last size repeats.
  std::vector<std::string> groups;
  size_t end = whole.size();
  size_t next = 0;
  int size = format.grouping[0];
  while (size > 0 && size != CHAR_MAX && end > static_cast<size_t>(size)) {
    groups.push_back(whole.substr(end - size, size));
    end -= size;
    if (next + 1 < format.grouping.size()) {
      size = format.grouping[++next];
    }
  }
  std::string out = whole.substr(0, end);
  for (auto group = groups.rbegin(); group != groups.rend(); ++group) {
    out += format.thousands_sign + *group;
  }
  return out;
}

// Replaces every `from` in `text` by `to`.
std::string Replaced(std::string_view text,
                     std::string_view from,
                     std::string_view to) {
  std::string out;
  size_t at = 0;
  while (!from.empty()) {
    const size_t found = text.find(from, at);
    if (found == std::string_view::npos) {
      break;
    }
    out.append(text.substr(at, found - at));
    out.append(to);
    at = found + from.size();
  }
  out.append(text.substr(at));
  return out;
}

}  // namespace

double TextValue(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) {
    ++i;
  }
  std::string number;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    number.push_back(text[i++]);
  }
  bool point = false;
  bool any_digit = false;
  while (i < text.size() && (IsDigitChar(text[i]) || text[i] == '.')) {
    if (text[i] == '.') {
      if (point) {
        break;
      }
      point = true;
    } else {
      any_digit = true;
    }
    number.push_back(text[i++]);
  }
  if (!any_digit) {
    return 0;
  }
  if (i + 1 < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    size_t j = i + 1;
    std::string exponent = "e";
    if (text[j] == '+' || text[j] == '-') {
      exponent.push_back(text[j++]);
    }
    if (j < text.size() && IsDigitChar(text[j])) {
      while (j < text.size() && IsDigitChar(text[j])) {
        exponent.push_back(text[j++]);
      }
      number += exponent;
    }
  }
  return std::strtod(number.c_str(), nullptr);
}

std::string NumberText(double value) {
  if (value == 0 || !std::isfinite(value)) {
    return "0";
  }
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*g", kSignificantDigits, value);
  return buffer;
}

std::string FormatAmount(double value, const NumberFormat& format) {
  if (!std::isfinite(value)) {
    return "0" + format.decimal_sign + "00";
  }
  char buffer[400];
  // The value as its 15 significant digits read, in fixed notation, so that
  // 1.005 rounds as the text "1.005" does and not as its binary neighbour.
  std::snprintf(buffer, sizeof buffer, "%.*e", kSignificantDigits - 1,
                std::fabs(value));
  const std::string sci = buffer;
  const size_t e = sci.find('e');
  const int exponent = std::atoi(sci.c_str() + e + 1);
  std::string digits = sci.substr(0, 1) + sci.substr(2, e - 2);
  // digits d0 d1 ... with the point after d0, shifted by the exponent.
  std::string whole;
  std::string fraction;
  const int point = 1 + exponent;
  if (point <= 0) {
    whole = "0";
    fraction = std::string(static_cast<size_t>(-point), '0') + digits;
  } else if (point >= static_cast<int>(digits.size())) {
    whole = digits + std::string(point - digits.size(), '0');
  } else {
    whole = digits.substr(0, point);
    fraction = digits.substr(point);
  }
  fraction.resize(std::max<size_t>(fraction.size(), 3), '0');
  std::string kept = whole + fraction.substr(0, 2);
  if (fraction[2] >= '5') {
    AddOne(kept);
  }
  whole = kept.substr(0, kept.size() - 2);
  std::string cents = kept.substr(kept.size() - 2);
  const size_t first = whole.find_first_not_of('0');
  whole = first == std::string::npos ? "0" : whole.substr(first);
  const bool negative = value < 0 && (whole != "0" || cents != "00");
  return (negative ? "-" : "") + Grouped(whole, format) + format.decimal_sign +
         cents;
}

std::string FormatAmountText(std::string_view text,
                             const NumberFormat& format) {
  return FormatAmount(TextValue(text), format);
}

double ShownValue(std::string_view caption, const NumberFormat& format) {
  return ShownValueKeepingGroups(Replaced(caption, format.thousands_sign, ""),
                                 format);
}

double ShownValueKeepingGroups(std::string_view caption,
                               const NumberFormat& format) {
  return TextValue(format.decimal_sign == "."
                       ? std::string(caption)
                       : Replaced(caption, format.decimal_sign, "."));
}

std::string TierUnitPrice(const TextGrid& tiers, long quantity) {
  if (tiers.Rows() == 0 || tiers.Columns() < 3) {
    return "";
  }
  if (quantity == 0) {
    return tiers(0, 2);
  }
  for (int r = 0; r < tiers.Rows(); ++r) {
    if (TextValue(tiers(r, 0)) <= static_cast<double>(quantity) &&
        static_cast<double>(quantity) <= TextValue(tiers(r, 1))) {
      return tiers(r, 2);
    }
  }
  return tiers(tiers.Rows() - 1, 2);
}

std::string ShippingFor(const TextGrid& bands,
                        long prints,
                        const std::string& current) {
  if (bands.Rows() == 0 || bands.Columns() < 3) {
    return current;
  }
  const int last = bands.Rows() - 1;
  const auto q = static_cast<double>(prints);
  for (int r = 0; r < last; ++r) {
    if (TextValue(bands(r, 0)) <= q && q <= TextValue(bands(r, 1))) {
      return bands(r, 2);
    }
  }
  const double lower = TextValue(bands(last, 0));
  if (last == 0 || q < lower) {
    return current;
  }
  const long started = (prints - static_cast<long>(lower)) / kSurchargeStep + 1;
  double shipping = TextValue(bands(last - 1, 2));
  const double surcharge = TextValue(bands(last, 2));
  for (long k = 0; k < started; ++k) {
    shipping += surcharge;
  }
  return NumberText(shipping);
}

TextGrid NewPrintLine() {
  TextGrid line(kSizeRows, 3);
  for (int r = 0; r < kSizeRows; ++r) {
    line(r, kQuantityColumn) = "0";
  }
  return line;
}

void RecomputeLineTotals(TextGrid& line) {
  for (int r = 0; r < line.Rows(); ++r) {
    line(r, kTotalColumn) = NumberText(TextValue(line(r, kPriceColumn)) *
                                       TextValue(line(r, kQuantityColumn)));
  }
}

}  // namespace qbpd
