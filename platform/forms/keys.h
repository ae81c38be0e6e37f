#ifndef QBPD_PLATFORM_FORMS_KEYS_H_
#define QBPD_PLATFORM_FORMS_KEYS_H_

#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

// Key codes, as KeyDown and KeyUp report them.
inline constexpr int kKeyBack = 8;
inline constexpr int kKeyTab = 9;
inline constexpr int kKeyReturn = 13;
inline constexpr int kKeyEscape = 27;
inline constexpr int kKeySpace = 32;
inline constexpr int kKeyPageUp = 33;
inline constexpr int kKeyPageDown = 34;
inline constexpr int kKeyEnd = 35;
inline constexpr int kKeyHome = 36;
inline constexpr int kKeyLeft = 37;
inline constexpr int kKeyUp = 38;
inline constexpr int kKeyRight = 39;
inline constexpr int kKeyDown = 40;
inline constexpr int kKeyInsert = 45;
inline constexpr int kKeyDelete = 46;
inline constexpr int kKeyF1 = 112;

// Shift states.
inline constexpr int kShiftMask = 1;
inline constexpr int kCtrlMask = 2;
inline constexpr int kAltMask = 4;

// One key as a person presses it: the key code, the shift state and the
// character it types (0 for a key that types none, such as an arrow).
struct KeyStroke {
  int key_code = 0;
  int shift = 0;
  int ascii = 0;
};

// Parses keys written as SendKeys writes them: plain characters, "{ENTER}",
// "{F1}", "{BACKSPACE 3}", "~" for Enter, and "+", "^", "%" for Shift, Ctrl
// and Alt on the next key ("^d"). Text is UTF-8; a character's code is its
// code point. Bad syntax is a RuntimeError that quotes it.
std::vector<KeyStroke> ParseKeys(std::string_view keys);

// Appends the UTF-8 form of code point `code` to `out`.
void AppendUtf8(std::string& out, int code);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_KEYS_H_
