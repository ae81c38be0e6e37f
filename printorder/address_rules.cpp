#include "printorder/address_rules.h"

#include "platform/forms/controls.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace qbpd {
namespace {

constexpr int kBackspace = 8;
constexpr int kCopy = 3;
constexpr int kPaste = 22;
constexpr int kCut = 24;
constexpr long kRed = 255;
constexpr long kBlack = 0;

bool IsDigitChar(char c) {
  return c >= '0' && c <= '9';
}

bool AllDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), IsDigitChar);
}

// The next character of `text` from `at` as a code point; nothing for a
// byte sequence that isn't UTF-8.
std::optional<char32_t> NextCodePoint(std::string_view text, size_t& at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  int more = 0;
  char32_t c = 0;
  if (lead < 0x80) {
    ++at;
    return lead;
  }
  if ((lead & 0xE0) == 0xC0) {
    more = 1;
    c = lead & 0x1F;
  } else if ((lead & 0xF0) == 0xE0) {
    more = 2;
    c = lead & 0x0F;
  } else if ((lead & 0xF8) == 0xF0) {
    more = 3;
    c = lead & 0x07;
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
  at += static_cast<size_t>(more) + 1;
  return c;
}

CharacterGroups AllBut(bool quotes, bool separators) {
  CharacterGroups g;
  g.letters = true;
  g.digits = true;
  g.quotes = quotes;
  g.punctuation = true;
  g.symbols = true;
  g.blanks = true;
  g.separators = separators;
  return g;
}

}  // namespace

constexpr std::string_view kStates[] = {
    "---", "AL", "AK", "AZ", "AR", "CA", "CO",  "CT", "DE",  "DC", "FL",
    "GA",  "HI", "ID", "IL", "IN", "IA", "KS",  "KA", "LA",  "ME", "MD",
    "MA",  "MI", "MN", "MS", "MO", "MT", "NE",  "NV", "NH",  "NJ", "NM",
    "NY",  "NC", "ND", "OH", "OK", "OR", "PA",  "RI", "SC",  "SD", "TN",
    "TX",  "UT", "VT", "VA", "WA", "WV", "WI",  "WY", "---", "AS", "FM",
    "GU",  "MS", "MH", "PW", "PR", "VI", "---", "AA", "AE",  "AP"};

std::span<const std::string_view> StateList() {
  return kStates;
}

void AddStateValues(ComboBox& list) {
  for (std::string_view state : StateList()) {
    list.AddItem(std::string(state));
  }
}

int FindState(std::string_view state) {
  if (state.empty() || state == "---") {
    return -1;
  }
  const auto states = StateList();
  for (size_t i = 0; i < states.size(); ++i) {
    if (states[i] == state) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

bool IsNumericText(std::string_view text) {
  size_t i = 0;
  const auto skip_blanks = [&] {
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) {
      ++i;
    }
  };
  skip_blanks();
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    ++i;
  }
  int digits = 0;
  bool point = false;
  while (i < text.size() && (IsDigitChar(text[i]) || text[i] == '.')) {
    if (text[i] == '.') {
      if (point) {
        return false;
      }
      point = true;
    } else {
      ++digits;
    }
    ++i;
  }
  if (digits == 0) {
    return false;
  }
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
      ++i;
    }
    if (i >= text.size() || !IsDigitChar(text[i])) {
      return false;
    }
    while (i < text.size() && IsDigitChar(text[i])) {
      ++i;
    }
  }
  skip_blanks();
  return i == text.size();
}

bool CharactersPass(std::string_view text,
                    const CharacterGroups& groups,
                    std::string_view skip) {
  size_t at = 0;
  while (at < text.size()) {
    const std::optional<char32_t> c = NextCodePoint(text, at);
    if (!c) {
      return false;
    }
    if (*c < 0x80 && skip.find(static_cast<char>(*c)) != std::string::npos) {
      continue;
    }
    // A character beyond the code page is judged as a letter.
    const int code = *c > 0xFF ? 'A' : static_cast<int>(*c);
    if (code == kBackspace || !IsValidCharacter(code, groups)) {
      return false;
    }
  }
  return true;
}

bool IsValidStreetLine(std::string_view line) {
  return CharactersPass(line, AllBut(/*quotes=*/false, /*separators=*/false),
                        ",");
}

bool IsValidDialogStreetLine(std::string_view line) {
  return line.find(',') == std::string_view::npos &&
         CharactersPass(line, AllBut(/*quotes=*/false, /*separators=*/true));
}

bool IsValidCity(std::string_view city) {
  CharacterGroups g;
  g.letters = true;
  g.digits = true;
  g.blanks = true;
  return !city.empty() && CharactersPass(city, g);
}

bool IsValidDialogState(std::string_view state) {
  return std::any_of(state.begin(), state.end(),
                     [](char c) { return c != '-'; });
}

bool IsValidZip(std::string_view zip) {
  if (zip.size() == 5) {
    return IsNumericText(zip);
  }
  if (zip.size() != 10) {
    return false;
  }
  const size_t dash = zip.find('-');
  if (dash == std::string_view::npos) {
    return false;
  }
  return IsNumericText(zip.substr(0, dash)) &&
         IsNumericText(zip.substr(dash + 1));
}

bool IsValidDialogZip(std::string_view zip) {
  if (zip.size() == 5) {
    return AllDigits(zip);
  }
  const size_t dash = zip.find('-');
  return zip.size() == 10 && dash != std::string_view::npos &&
         AllDigits(zip.substr(0, dash)) && AllDigits(zip.substr(dash + 1));
}

bool IsValidPhone(std::string_view phone) {
  return std::all_of(phone.begin(), phone.end(),
                     [](char c) { return (c >= '0' && c <= ':') || c == '-'; });
}

bool IsValidCardName(std::string_view name) {
  CharacterGroups g;
  g.letters = true;
  g.digits = true;
  g.quotes = true;
  g.blanks = true;
  return !name.empty() && CharactersPass(name, g, ".-");
}

bool IsValidPersonName(std::string_view name) {
  return !name.empty() &&
         CharactersPass(name, AllBut(/*quotes=*/true, /*separators=*/false));
}

void MarkLabelInvalid(Label& label) {
  if (label.Caption().find('*') == std::string::npos) {
    label.SetCaption(label.Caption() + " *");
  }
  label.SetForeColor(kRed);
}

void ClearLabelMark(Label& label) {
  const std::string& caption = label.Caption();
  if (caption.find('*') == std::string::npos) {
    return;
  }
  label.SetCaption(caption.size() >= 2 ? caption.substr(0, caption.size() - 2)
                                       : std::string());
  label.SetForeColor(kBlack);
}

int ZipKey(int key) {
  return (key == kBackspace || key == '-' || (key >= '0' && key <= '9')) ? key
                                                                         : 0;
}

int DigitKey(int key) {
  return (key == kBackspace || (key >= '0' && key <= '9')) ? key : 0;
}

int DigitOrDashKey(int key) {
  return ZipKey(key);
}

int CardNumberKey(int key) {
  const bool passes = (key >= '0' && key <= '9') || key == ' ' || key == '-' ||
                      key == '.' || key == kBackspace || key == kCopy ||
                      key == kPaste || key == kCut;
  return passes ? key : 0;
}

}  // namespace qbpd
