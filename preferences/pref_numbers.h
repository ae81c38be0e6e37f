#ifndef QBPD_PREFERENCES_PREF_NUMBERS_H_
#define QBPD_PREFERENCES_PREF_NUMBERS_H_

#include <optional>
#include <string_view>

namespace qbpd {

// The number a preferences field holds: blanks around it are allowed, then
// an optional sign and decimal digits. Anything else (letters, a blank
// inside, a decimal point, nothing at all) is no number: the settings take
// whole numbers only. Values beyond a billion count as a billion, so that a
// pasted run of digits is simply out of range.
std::optional<long long> FieldNumber(std::string_view text);

}  // namespace qbpd

#endif  // QBPD_PREFERENCES_PREF_NUMBERS_H_
