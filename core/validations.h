#ifndef QBPD_CORE_VALIDATIONS_H_
#define QBPD_CORE_VALIDATIONS_H_

#include <string>
#include <string_view>

namespace qbpd {

// The checks that forms run on typed text. They keep no state and show
// nothing: a caller shows the message that comes back, in a box captioned
// with the program's title.

// The key filter of a text box. Letters (A-Z, a-z and codes 192 to 255),
// digits and backspace always pass. Each flag is a text; a non-empty one
// refuses its group:
//   apostrophe_flag   the quotes ' and "
//   punctuation_flag  ! , - . : ; ?
//   symbol_flag       # $ % & ( ) * + / < = > @ [ \ ] ^ _
//   blank_flag        blank and tab
// Gives 0 for a refused key and the key itself for any other (a key that
// belongs to no group, such as ~, passes).
int IsValidKey(int key,
               const std::string& apostrophe_flag,
               const std::string& punctuation_flag,
               const std::string& symbol_flag,
               const std::string& blank_flag);

// The groups that IsValidCharacter asks about.
struct CharacterGroups {
  bool letters = false;      // A-Z, a-z, 192-255
  bool digits = false;       // 0-9
  bool quotes = false;       // ' and "
  bool punctuation = false;  // ! , - . : ; ?
  bool symbols = false;      // as IsValidKey's symbol group
  bool blanks = false;       // blank and tab
  // The separators ".", ",", "\t", "\n", "@" (and "&#32", which a single key
  // never is), compared as whole texts.
  bool separators = false;
};

// True when `key` belongs to a group that `groups` asks for. Backspace (8)
// is always allowed.
bool IsValidCharacter(int key, const CharacterGroups& groups);

// The e-mail rule. When `key` is one of the edit keys (8, 46, 13, 3, 22, 24,
// 48, 26, 45) the key passes through: the result is true and nothing else is
// looked at. Otherwise `address` is checked; on a failure the result is
// false, `key` is set to 0 and `message` holds the text to show (the texts
// keep their own spellings: "Enter a valid email address starting aplhabet",
// "Email address cannot have spaces", "Enter a valid email address " with a
// trailing blank for a character that isn't a letter, digit, "-", "_", "@" or
// ".", then "Enter a valid email address" or "Enter a valid Email address"
// for the shape rules). On success `message` is left as it was.
bool IsValidEmail(int& key, const std::string& address, std::string& message);

// The shape of a card number, without any checksum: 15 or 16 digits with no
// separator; or four groups of 4 digits split by blanks (or by "-"); or
// three groups of 4, 6 and 5 digits.
bool IsValidCardNumber(const std::string& text);

// The shape of a login address: two non-empty parts around one "@", the
// second holding a ".".
bool IsValidUserId(const std::string& text);

// The file-name rule of the name strip and of Save As: nine characters are
// refused, both as a typed key and anywhere in a name.
inline constexpr std::string_view kFileNameRefusedCharacters = "/\\|<>:\"?*";
inline constexpr std::string_view kFileNameRuleMessage =
    "Please enter valid characters for file name";
// False for the code of a refused character.
bool IsValidFileNameKey(int key);
// False when `name` holds a refused character anywhere.
bool IsValidFileNameText(std::string_view name);

}  // namespace qbpd

#endif  // QBPD_CORE_VALIDATIONS_H_
