#ifndef QBPD_SERVICE_CHECKS_H_
#define QBPD_SERVICE_CHECKS_H_

#include <string>
#include <string_view>
#include <vector>

namespace qbpd::service {

// Field checks of the account data. Each returns the error code of the first
// failing field ("" when all pass); the codes are those of the protocol
// document.

struct AddressFields {
  std::string street1, street2, city, state, zip, phone;
};

struct CardFields {
  std::string name, number;
  int month = 0;  // 1 to 12; 0 when missing or unreadable
  std::string year;
};

std::string Trim(std::string_view text);

bool IsValidEmail(std::string_view email);
bool IsValidZip(std::string_view zip);
// True for the state codes the program offers (the "---" separators are not).
bool IsKnownState(std::string_view state);
// False only when a state of the fifty (and DC) and a zip of another region
// are given; the zip must already be valid.
bool StateMatchesZip(std::string_view state, std::string_view zip);
bool PassesLuhn(std::string_view digits);
// The digits of a card number of 15 or 16 digits, written plain or in groups
// of four (or 4-6-5) separated by blanks or dashes; "" when malformed.
std::string CardDigits(std::string_view number);
// All but the last four digits replaced by "X".
std::string MaskCardNumber(std::string_view digits);

std::string CheckName(std::string_view name, const char* code);
std::string CheckEmail(std::string_view email);
std::string CheckPassword(std::string_view password);
std::string CheckPhone(std::string_view phone);
// An address with every field empty passes: it is optional.
bool AddressIsEmpty(const AddressFields& address);
std::string CheckAddress(const AddressFields& address);
// `card_zip` is the billing zip; `year_now` and `month_now` (1 to 12) date
// the expiry check.
std::string CheckCard(const CardFields& card,
                      std::string_view card_zip,
                      int year_now,
                      int month_now);

// The user's sentence for an error code.
std::string ErrorText(std::string_view code);

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_CHECKS_H_
