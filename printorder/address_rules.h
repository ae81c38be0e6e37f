#ifndef QBPD_PRINTORDER_ADDRESS_RULES_H_
#define QBPD_PRINTORDER_ADDRESS_RULES_H_

#include "core/validations.h"

#include <span>
#include <string>
#include <string_view>

namespace qbpd {

class ComboBox;
class Label;

// The rules of the address and card fields, shared by the billing step of
// the print order, the address dialog and the account sign-up. They keep no
// state and show nothing.

// The state list, in the service's order: "---", the states with "DC" (and
// "KA" behind "KS"), "---", the territories (with a second "MS"), "---", the
// military addresses. The "---" entries are separators, no valid choice.
std::span<const std::string_view> StateList();

// AddStateValues: fills `list` with the state list; nothing is selected.
void AddStateValues(ComboBox& list);

// The index of `state` in the state list, or -1 when it isn't there. A
// separator is never found by a state's text.
int FindState(std::string_view state);

// The program's IsNumeric: after blanks, an optional sign, digits with at
// most one decimal point (at least one digit), an optional exponent, then
// blanks. An empty text is not numeric.
bool IsNumericText(std::string_view text);

// Each character of `text`, decoded from UTF-8 and judged by its code in the
// program's code page (codes 192 to 255 are accented letters), passes
// IsValidCharacter with `groups`; a character beyond the code page counts
// as a letter. Characters in `skip` are not judged. Text that isn't valid
// UTF-8 fails.
bool CharactersPass(std::string_view text,
                    const CharacterGroups& groups,
                    std::string_view skip = {});

// A street line of the billing step: every character other than "," is a
// letter, digit, punctuation, symbol or blank; quotes fail. An empty line
// passes (the caller decides whether line 1 may be empty).
bool IsValidStreetLine(std::string_view line);

// A street line of the address dialog: no "," at all, and every character
// passes with everything allowed but the quotes.
bool IsValidDialogStreetLine(std::string_view line);

// A city: not empty; letters, digits, accented letters, blank and tab.
bool IsValidCity(std::string_view city);

// The state of the address dialog: not empty once every "-" is removed, so
// neither "---" nor "--" counts.
bool IsValidDialogState(std::string_view state);

// The zip of the billing step (billing and mailing zip): exactly 5
// characters, numeric; or exactly 10 characters holding a "-", with the
// pieces before and after the first "-" numeric ("12345-6789" and
// "1234-56789" pass, ten digits fail). Empty fails.
bool IsValidZip(std::string_view zip);

// The zip of the address dialog: five digits, or ten characters of digits,
// "-", digits.
bool IsValidDialogZip(std::string_view zip);

// An optional phone number: character codes 48 to 58 or "-".
bool IsValidPhone(std::string_view phone);

// A person's name on a card: not empty; every character other than "." and
// "-" is a letter, digit, accented letter, quote or blank.
bool IsValidCardName(std::string_view name);

// A first or last name of another address: not empty; every character
// passes with all groups allowed but the separators.
bool IsValidPersonName(std::string_view name);

// The label mark of an invalid field: " *" behind the caption (unless it
// already holds "*") and the colour red.
void MarkLabelInvalid(Label& label);
// Takes the mark off a label that holds "*": its last two characters go
// and it turns black.
void ClearLabelMark(Label& label);

// The key filters, as KeyPress sees them: the key itself when it passes,
// 0 when it is dropped. Backspace always passes.
int ZipKey(int key);          // digits and "-"
int DigitKey(int key);        // digits
int DigitOrDashKey(int key);  // digits and "-"
int CardNumberKey(int key);   // digits, blank, "-", ".", copy, paste, cut

}  // namespace qbpd

#endif  // QBPD_PRINTORDER_ADDRESS_RULES_H_
