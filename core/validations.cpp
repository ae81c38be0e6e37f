#include "core/validations.h"

#include <algorithm>
#include <array>
#include <vector>

namespace qbpd {
namespace {

constexpr int kBackspace = 8;
constexpr int kTab = 9;
constexpr int kBlank = 32;

bool IsDigit(int key) {
  return key >= '0' && key <= '9';
}

bool IsAsciiLetter(int key) {
  return (key >= 'A' && key <= 'Z') || (key >= 'a' && key <= 'z');
}

// Letters of the upper half of the 8-bit code page count as letters too.
bool IsLetter(int key) {
  return IsAsciiLetter(key) || (key >= 192 && key <= 255);
}

bool IsQuote(int key) {
  return key == '\'' || key == '"';
}

bool IsPunctuation(int key) {
  switch (key) {
    case '!':
    case ',':
    case '-':
    case '.':
    case ':':
    case ';':
    case '?':
      return true;
    default:
      return false;
  }
}

bool IsSymbol(int key) {
  return (key >= '#' && key <= '&') || (key >= '(' && key <= '+') ||
         key == '/' || (key >= '<' && key <= '>') || key == '@' ||
         (key >= '[' && key <= '_');
}

bool IsBlank(int key) {
  return key == kBlank || key == kTab;
}

bool IsSeparator(int key) {
  // The separators are compared as texts; "&#32" is one of them although a
  // single typed character can never equal it.
  static constexpr std::array<std::string_view, 6> kSeparators = {
      ".", ",", "&#32", "\t", "\n", "@"};
  if (key < 0 || key > 127) {
    return false;
  }
  const char c = static_cast<char>(key);
  const std::string_view typed(&c, 1);
  return std::find(kSeparators.begin(), kSeparators.end(), typed) !=
         kSeparators.end();
}

bool IsAllDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return IsDigit(static_cast<unsigned char>(c));
  });
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  size_t start = 0;
  while (true) {
    size_t at = text.find(separator, start);
    if (at == std::string_view::npos) {
      parts.push_back(text.substr(start));
      return parts;
    }
    parts.push_back(text.substr(start, at - start));
    start = at + 1;
  }
}

// Every failure of the e-mail rule drops the key and says why.
bool Fail(int& key, std::string& message, std::string_view text) {
  key = 0;
  message = std::string(text);
  return false;
}

constexpr std::string_view kStartWithLetter =
    "Enter a valid email address starting aplhabet";
constexpr std::string_view kNoSpaces = "Email address cannot have spaces";
constexpr std::string_view kBadCharacter = "Enter a valid email address ";
constexpr std::string_view kBadAddress = "Enter a valid email address";
constexpr std::string_view kBadHyphen = "Enter a valid Email address";

}  // namespace

int IsValidKey(int key,
               const std::string& apostrophe_flag,
               const std::string& punctuation_flag,
               const std::string& symbol_flag,
               const std::string& blank_flag) {
  if (key == kBackspace || IsDigit(key) || IsLetter(key)) {
    return key;
  }
  const bool refused = (!apostrophe_flag.empty() && IsQuote(key)) ||
                       (!punctuation_flag.empty() && IsPunctuation(key)) ||
                       (!symbol_flag.empty() && IsSymbol(key)) ||
                       (!blank_flag.empty() && IsBlank(key));
  return refused ? 0 : key;
}

bool IsValidCharacter(int key, const CharacterGroups& groups) {
  if (key == kBackspace) {
    return true;
  }
  return (groups.letters && IsLetter(key)) || (groups.digits && IsDigit(key)) ||
         (groups.quotes && IsQuote(key)) ||
         (groups.punctuation && IsPunctuation(key)) ||
         (groups.symbols && IsSymbol(key)) || (groups.blanks && IsBlank(key)) ||
         (groups.separators && IsSeparator(key));
}

bool IsValidEmail(int& key, const std::string& address, std::string& message) {
  // Copy, paste, cut, undo and the keys that edit in place are let through
  // while the user types; the address is judged when it is complete.
  static constexpr std::array<int, 9> kEditKeys = {8,  46, 13, 3, 22,
                                                   24, 48, 26, 45};
  if (std::find(kEditKeys.begin(), kEditKeys.end(), key) != kEditKeys.end()) {
    return true;
  }

  int at_count = 0;
  int dot_count = 0;
  for (size_t i = 0; i < address.size(); ++i) {
    const int c = static_cast<unsigned char>(address[i]);
    if (i == 0 && c == '@') {
      return Fail(key, message, kStartWithLetter);
    }
    if (c == '@') {
      ++at_count;
      continue;
    }
    if (c == '.') {
      ++dot_count;
      continue;
    }
    if (c == kBlank) {
      return Fail(key, message, kNoSpaces);
    }
    if (c != '-' && c != '_' && !IsAsciiLetter(c) && !IsDigit(c)) {
      return Fail(key, message, kBadCharacter);
    }
  }

  if (at_count != 1 || dot_count == 0 || address == "@") {
    return Fail(key, message, kBadAddress);
  }
  const size_t at = address.find('@');
  if ((at > 0 && address[at - 1] == '-') ||
      (at + 1 < address.size() && address[at + 1] == '-')) {
    return Fail(key, message, kBadHyphen);
  }
  for (size_t i = 0; i < address.size(); ++i) {
    if (address[i] != '.') {
      continue;
    }
    if ((i > 0 && address[i - 1] == '-') ||
        (i + 1 < address.size() && address[i + 1] == '-')) {
      return Fail(key, message, kBadHyphen);
    }
  }
  const size_t last_dot = address.rfind('.');
  if (last_dot <= at + 1) {
    return Fail(key, message, kBadAddress);
  }
  const size_t last = address.size() - 1;
  if (last_dot == last || at == last) {
    return Fail(key, message, kBadAddress);
  }
  return true;
}

bool IsValidCardNumber(const std::string& text) {
  const bool has_blank = text.find(' ') != std::string::npos;
  const bool has_hyphen = text.find('-') != std::string::npos;
  if (!has_blank && !has_hyphen) {
    return IsAllDigits(text) && (text.size() == 15 || text.size() == 16);
  }
  const std::vector<std::string_view> groups =
      Split(text, has_blank ? ' ' : '-');
  std::string joined;
  for (std::string_view g : groups) {
    joined += g;
  }
  if (groups.size() == 4) {
    return std::all_of(groups.begin(), groups.end(),
                       [](std::string_view g) {
                         return IsAllDigits(g) && g.size() == 4;
                       }) &&
           joined.size() == 16;
  }
  if (groups.size() == 3) {
    constexpr std::array<size_t, 3> kLengths = {4, 6, 5};
    for (size_t i = 0; i < groups.size(); ++i) {
      if (!IsAllDigits(groups[i]) || groups[i].size() != kLengths[i]) {
        return false;
      }
    }
    return joined.size() == 15;
  }
  return false;
}

bool IsValidUserId(const std::string& text) {
  const std::vector<std::string_view> parts = Split(text, '@');
  return parts.size() == 2 && !parts[0].empty() && !parts[1].empty() &&
         parts[1].find('.') != std::string_view::npos;
}

bool IsValidFileNameKey(int key) {
  if (key < 0 || key > 127) {
    return true;
  }
  return kFileNameRefusedCharacters.find(static_cast<char>(key)) ==
         std::string_view::npos;
}

bool IsValidFileNameText(std::string_view name) {
  return name.find_first_of(kFileNameRefusedCharacters) ==
         std::string_view::npos;
}

}  // namespace qbpd
