#ifndef QBPD_ONLINE_REGISTRATION_RULES_H_
#define QBPD_ONLINE_REGISTRATION_RULES_H_

#include <string_view>

namespace qbpd {

// What the sign-up form says above its fields when one fails.
inline constexpr char kRegistrationOops[] =
    "Oops\xE2\x80\x94there's invalid or missing info. Please review the "
    "information below and re-enter the fields marked in red.";

// Whether a card's expiry, month 1 to 12 of `year`, lies before the month
// of `this_year` and `this_month`.
bool CardExpired(int month, int year, int this_month, int this_year);

// The key filter of the sign-up form's card number: digits, "-" and blank
// (Backspace always passes). The key itself, or 0 when it is dropped.
int RegistrationCardKey(int key);

}  // namespace qbpd

#endif  // QBPD_ONLINE_REGISTRATION_RULES_H_
