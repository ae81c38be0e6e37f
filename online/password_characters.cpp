#include "online/password_characters.h"

#include "core/validations.h"

#include <algorithm>
#include <array>
#include <optional>

namespace qbpd {
namespace {

// Everything but blanks and tabs: the password's groups.
CharacterGroups PasswordGroups() {
  CharacterGroups groups;
  groups.letters = true;
  groups.digits = true;
  groups.quotes = true;
  groups.punctuation = true;
  groups.symbols = true;
  return groups;
}

// The characters of Windows-1252's codes 128 to 159, by code.
constexpr std::array<char32_t, 32> kCodes128To159 = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// The blanks of other scripts and of typesetting.
bool IsWideBlank(char32_t c) {
  return c == 0x1680 || (c >= 0x2000 && c <= 0x200B) || c == 0x2028 ||
         c == 0x2029 || c == 0x202F || c == 0x205F || c == 0x3000 ||
         c == 0xFEFF;
}

// The next character of `text` from `at`, which moves past it; nothing when
// the bytes there are no well-formed UTF-8 character.
std::optional<char32_t> NextCharacter(std::string_view text, size_t& at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  int more = 0;
  char32_t c = 0;
  char32_t least = 0;
  if (lead < 0x80) {
    ++at;
    return lead;
  } else if ((lead & 0xE0) == 0xC0) {
    more = 1;
    c = lead & 0x1F;
    least = 0x80;
  } else if ((lead & 0xF0) == 0xE0) {
    more = 2;
    c = lead & 0x0F;
    least = 0x800;
  } else if ((lead & 0xF8) == 0xF0) {
    more = 3;
    c = lead & 0x07;
    least = 0x10000;
  } else {
    return std::nullopt;
  }
  if (text.size() - at <= static_cast<size_t>(more)) {
    return std::nullopt;
  }
  for (int i = 1; i <= more; ++i) {
    const auto next = static_cast<unsigned char>(text[at + i]);
    if ((next & 0xC0) != 0x80) {
      return std::nullopt;
    }
    c = (c << 6) | (next & 0x3F);
  }
  if (c < least || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
    return std::nullopt;  // an overlong form or no character at all
  }
  at += static_cast<size_t>(more) + 1;
  return c;
}

}  // namespace

bool IsValidPassword(std::string_view password) {
  const CharacterGroups allowed = PasswordGroups();
  size_t at = 0;
  while (at < password.size()) {
    const std::optional<char32_t> c = NextCharacter(password, at);
    if (!c) {
      return false;
    }
    int code = static_cast<int>(*c);
    if (*c > 0xFF) {
      const auto* found =
          std::find(kCodes128To159.begin(), kCodes128To159.end(), *c);
      if (found != kCodes128To159.end()) {
        code = 128 + static_cast<int>(found - kCodes128To159.begin());
      } else if (IsWideBlank(*c)) {
        return false;
      } else {
        continue;  // a letter or sign the code page doesn't hold
      }
    }
    if (!IsValidCharacter(code, allowed)) {
      return false;
    }
  }
  return true;
}

}  // namespace qbpd
