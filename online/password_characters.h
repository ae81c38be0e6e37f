#ifndef QBPD_ONLINE_PASSWORD_CHARACTERS_H_
#define QBPD_ONLINE_PASSWORD_CHARACTERS_H_

#include <string_view>

namespace qbpd {

// The login's character rule for a password, judged per character as the
// user typed it (the text is UTF-8): everything is allowed but blanks, tabs
// and the codes that belong to no group of the character check (control
// codes, and the codes 127 to 191 of the program's code page such as "£" or
// the no-break space). A character is judged by its code in that code page
// (Windows-1252: "é" is 233, a letter; "€" is 128); a character the code
// page doesn't hold (another script's letter) is allowed unless it is a
// blank. A text that isn't valid UTF-8 is refused.
bool IsValidPassword(std::string_view password);

}  // namespace qbpd

#endif  // QBPD_ONLINE_PASSWORD_CHARACTERS_H_
