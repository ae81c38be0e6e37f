#include "platform/forms/keys.h"

#include "platform/forms/runtime_error.h"

#include <cctype>
#include <cstdlib>
#include <map>

namespace qbpd {
namespace {

struct NamedKey {
  int key_code;
  int ascii;
};

const std::map<std::string, NamedKey, std::less<>>& NamedKeys() {
  static const std::map<std::string, NamedKey, std::less<>> keys = [] {
    std::map<std::string, NamedKey, std::less<>> m{
        {"BACKSPACE", {kKeyBack, 8}}, {"BS", {kKeyBack, 8}},
        {"BKSP", {kKeyBack, 8}},      {"TAB", {kKeyTab, 9}},
        {"ENTER", {kKeyReturn, 13}},  {"ESC", {kKeyEscape, 27}},
        {"ESCAPE", {kKeyEscape, 27}}, {"PGUP", {kKeyPageUp, 0}},
        {"PGDN", {kKeyPageDown, 0}},  {"END", {kKeyEnd, 0}},
        {"HOME", {kKeyHome, 0}},      {"LEFT", {kKeyLeft, 0}},
        {"UP", {kKeyUp, 0}},          {"RIGHT", {kKeyRight, 0}},
        {"DOWN", {kKeyDown, 0}},      {"INSERT", {kKeyInsert, 0}},
        {"INS", {kKeyInsert, 0}},     {"DELETE", {kKeyDelete, 0}},
        {"DEL", {kKeyDelete, 0}},     {"SPACE", {kKeySpace, 32}},
    };
    for (int i = 1; i <= 16; ++i) {
      m.emplace("F" + std::to_string(i), NamedKey{kKeyF1 + i - 1, 0});
    }
    // Literal characters that have a meaning of their own.
    for (char c : std::string("+^%~{}()[]")) {
      m.emplace(std::string(1, c), NamedKey{0, c});
    }
    return m;
  }();
  return keys;
}

// Decodes one UTF-8 character at `i`; a broken sequence reads as its byte.
int DecodeUtf8(std::string_view s, size_t& i) {
  auto byte = [&](size_t k) { return static_cast<unsigned char>(s[k]); };
  unsigned char b = byte(i);
  int len = b < 0x80         ? 1
            : (b >> 5) == 6  ? 2
            : (b >> 4) == 14 ? 3
            : (b >> 3) == 30 ? 4
                             : 1;
  if (len == 1 || i + len > s.size()) {
    ++i;
    return b;
  }
  int code = b & (0x7F >> len);
  for (int k = 1; k < len; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) {
      ++i;
      return b;
    }
    code = (code << 6) | (byte(i + k) & 0x3F);
  }
  i += len;
  return code;
}

KeyStroke ForCharacter(int code, int shift) {
  KeyStroke k;
  k.shift = shift;
  if (code < 128 && std::isalpha(code)) {
    k.key_code = std::toupper(code);
    if (std::isupper(code)) {
      k.shift |= kShiftMask;
    }
  } else if (code < 128 && std::isdigit(code)) {
    k.key_code = code;
  } else {
    k.key_code = code < 128 ? code : 0;
  }
  k.ascii = code;
  if ((shift & kCtrlMask) != 0 && code < 128 && std::isalpha(code)) {
    k.ascii = std::toupper(code) - 'A' + 1;  // Ctrl+C is 3, Ctrl+V is 22
  } else if ((shift & kAltMask) != 0) {
    k.ascii = 0;
  }
  return k;
}

}  // namespace

void AppendUtf8(std::string& out, int code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code >> 18));
    out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

std::vector<KeyStroke> ParseKeys(std::string_view keys) {
  std::vector<KeyStroke> out;
  int shift = 0;
  size_t i = 0;
  while (i < keys.size()) {
    char c = keys[i];
    if (c == '+' || c == '^' || c == '%') {
      shift |= c == '+' ? kShiftMask : c == '^' ? kCtrlMask : kAltMask;
      ++i;
      continue;
    }
    if (c == '~') {
      out.push_back({kKeyReturn, shift, 13});
      shift = 0;
      ++i;
      continue;
    }
    if (c == '{') {
      // "{}}" names the closing brace itself.
      size_t close = keys.find('}', i + 2);
      if (close == std::string_view::npos) {
        throw RuntimeError(kErrInvalidCall, "Unclosed key name in \"" +
                                                std::string(keys) + "\"");
      }
      std::string body(keys.substr(i + 1, close - i - 1));
      int repeat = 1;
      size_t space = body.rfind(' ');
      if (space != std::string::npos && space > 0) {
        repeat = std::atoi(body.c_str() + space + 1);
        body.resize(space);
      }
      std::string upper;
      for (char b : body) {
        upper += static_cast<char>(std::toupper(static_cast<unsigned char>(b)));
      }
      auto it = NamedKeys().find(upper);
      if (it == NamedKeys().end() || repeat < 0) {
        throw RuntimeError(kErrInvalidCall, "Unknown key {" + body + "} in \"" +
                                                std::string(keys) + "\"");
      }
      for (int r = 0; r < repeat; ++r) {
        if (it->second.key_code == 0) {
          out.push_back(ForCharacter(it->second.ascii, shift));
        } else {
          int ascii = it->second.ascii;
          if ((shift & (kCtrlMask | kAltMask)) != 0) {
            ascii = 0;
          }
          out.push_back({it->second.key_code, shift, ascii});
        }
      }
      shift = 0;
      i = close + 1;
      continue;
    }
    int code = DecodeUtf8(keys, i);
    out.push_back(ForCharacter(code, shift));
    shift = 0;
  }
  return out;
}

}  // namespace qbpd
