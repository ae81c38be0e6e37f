#include "preferences/pref_numbers.h"

namespace qbpd {
namespace {

constexpr long long kLargest = 1000000000;

}  // namespace

std::optional<long long> FieldNumber(std::string_view text) {
  while (!text.empty() && text.front() == ' ') {
    text.remove_prefix(1);
  }
  while (!text.empty() && text.back() == ' ') {
    text.remove_suffix(1);
  }
  bool negative = false;
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
    negative = text.front() == '-';
    text.remove_prefix(1);
  }
  if (text.empty()) {
    return std::nullopt;
  }
  long long value = 0;
  for (char c : text) {
    if (c < '0' || c > '9') {
      return std::nullopt;
    }
    value = value >= kLargest ? kLargest : value * 10 + (c - '0');
  }
  if (value > kLargest) {
    value = kLargest;
  }
  return negative ? -value : value;
}

}  // namespace qbpd
