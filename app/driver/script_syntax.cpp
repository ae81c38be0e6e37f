#include "app/driver/script_syntax.h"

#include "platform/forms/host.h"
#include "platform/forms/value.h"

#include <cctype>
#include <cmath>
#include <cstdlib>

namespace qbpd::script {
namespace {

bool IsSpace(char c) {
  return std::isspace(static_cast<unsigned char>(c)) != 0;
}

// The length of the comparison operator at `i`, or 0.
size_t OperatorAt(const std::string& line, size_t i) {
  const char c = line[i];
  const bool equals_next = i + 1 < line.size() && line[i + 1] == '=';
  if (c == '=') {
    return 1;
  }
  if (c == '!' && equals_next) {
    return 2;
  }
  if (c == '<' || c == '>') {
    return equals_next ? 2 : 1;
  }
  return 0;
}

// Reads a quoted text from just after its opening quote.
std::string ReadText(const std::string& line, size_t& i) {
  std::string s;
  while (i < line.size()) {
    char d = line[i++];
    if (d == '"') {
      return s;
    }
    if (d == '\\' && i < line.size()) {
      // Only the escapes below; any other backslash stands for itself, as
      // in the settings' key paths.
      char e = line[i++];
      switch (e) {
        case 'n':
          s += '\n';
          break;
        case 'r':
          s += '\r';
          break;
        case 't':
          s += '\t';
          break;
        case '0':
          s += '\0';
          break;
        case '"':
        case '\\':
          s += e;
          break;
        default:
          s += '\\';
          s += e;
      }
    } else {
      s += d;
    }
  }
  throw ScriptSyntaxError("a text is not closed with \"");
}

// Splits "name(3)" into name and 3.
std::pair<std::string, int> NameAndIndex(const std::string& part) {
  size_t open = part.find('(');
  if (open == std::string::npos) {
    return {part, -1};
  }
  if (part.back() != ')') {
    throw ScriptSyntaxError("bad index in \"" + part + "\"");
  }
  std::string number = part.substr(open + 1, part.size() - open - 2);
  char* end = nullptr;
  long n = std::strtol(number.c_str(), &end, 10);
  if (number.empty() || *end != '\0') {
    throw ScriptSyntaxError("bad index in \"" + part + "\"");
  }
  return {part.substr(0, open), static_cast<int>(n)};
}

bool ReadCoordinate(const std::string& text, double& out) {
  char* end = nullptr;
  out = std::strtod(text.c_str(), &end);
  return !text.empty() && *end == '\0' && std::isfinite(out);
}

}  // namespace

std::vector<Token> Tokenize(const std::string& line) {
  std::vector<Token> out;
  size_t i = 0;
  while (i < line.size()) {
    char c = line[i];
    if (IsSpace(c)) {
      ++i;
      continue;
    }
    if (c == '#' && (i == 0 || IsSpace(line[i - 1])) &&
        (i + 1 >= line.size() ||
         !std::isdigit(static_cast<unsigned char>(line[i + 1])))) {
      break;  // a comment to the end of the line
    }
    if (c == '"') {
      ++i;
      out.push_back({ReadText(line, i), true});
      continue;
    }
    if (size_t n = OperatorAt(line, i); n > 0) {
      out.push_back({line.substr(i, n), false});
      i += n;
      continue;
    }
    size_t start = i;
    while (i < line.size() && !IsSpace(line[i]) && line[i] != '"' &&
           OperatorAt(line, i) == 0) {
      ++i;
    }
    out.push_back({line.substr(start, i - start), false});
  }
  return out;
}

Target ParseTarget(const std::string& text, bool with_property) {
  std::vector<std::string> parts;
  std::string part;
  int depth = 0;
  for (char c : text) {
    if (c == '(') {
      ++depth;
    } else if (c == ')') {
      --depth;
    }
    if (c == '.' && depth == 0) {
      parts.push_back(part);
      part.clear();
    } else {
      part += c;
    }
  }
  parts.push_back(part);
  Target t;
  t.text = text;
  if (parts.empty() || parts[0].empty()) {
    throw ScriptSyntaxError("a form name is missing in \"" + text + "\"");
  }
  t.form = parts[0];
  size_t next = 1;
  size_t controls = parts.size() - 1 - (with_property ? 1 : 0);
  if (controls > 1) {
    throw ScriptSyntaxError("too many parts in \"" + text + "\"");
  }
  if (controls == 1) {
    auto [name, index] = NameAndIndex(parts[next++]);
    t.control = name;
    t.index = index;
  }
  if (with_property) {
    if (next >= parts.size()) {
      throw ScriptSyntaxError("a property is missing in \"" + text + "\"");
    }
    auto [name, item] = NameAndIndex(parts[next]);
    t.property = name;
    t.item = item;
  }
  return t;
}

int ButtonId(const std::string& word) {
  std::string w;
  for (char c : word) {
    w += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  if (w == "ok") {
    return kIdOk;
  }
  if (w == "cancel") {
    return kIdCancel;
  }
  if (w == "abort") {
    return 3;
  }
  if (w == "retry") {
    return 4;
  }
  if (w == "ignore") {
    return 5;
  }
  if (w == "yes") {
    return kIdYes;
  }
  if (w == "no") {
    return kIdNo;
  }
  throw ScriptSyntaxError("unknown button \"" + word + "\"");
}

int DefaultButton(int style) {
  int buttons = style & 7;
  bool second = (style & kMbDefaultButton2) != 0;
  switch (buttons) {
    case 1:
      return second ? kIdCancel : kIdOk;
    case 3:
      return second ? kIdNo : kIdYes;
    case 4:
      return second ? kIdNo : kIdYes;
    default:
      return kIdOk;
  }
}

std::string Quote(const std::string& s) {
  std::string out = "\"";
  for (char c : s) {
    if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == '\0') {
      out += "\\0";
    } else {
      out += c;
    }
  }
  return out + "\"";
}

int Number(const Token& t) {
  char* end = nullptr;
  long n = std::strtol(t.text.c_str(), &end, 10);
  if (t.text.empty() || *end != '\0') {
    throw ScriptSyntaxError("expected a number, not \"" + t.text + "\"");
  }
  return static_cast<int>(n);
}

void Require(const std::vector<Token>& t, size_t n, const std::string& usage) {
  if (t.size() != n) {
    throw ScriptSyntaxError("expected: " + usage);
  }
}

bool IsOrderOperator(const std::string& op) {
  return op == "<" || op == ">" || op == "<=" || op == ">=";
}

void CheckOperator(const std::string& op) {
  if (op != "=" && op != "!=" && op != "contains" && !IsOrderOperator(op)) {
    throw ScriptSyntaxError("expected =, !=, <, >, <=, >= or contains, not \"" +
                            op + "\"");
  }
}

ScriptPoint ParsePoint(const std::vector<Token>& t, size_t& i) {
  ScriptPoint p;
  if (i < t.size() && !t[i].quoted && t[i].text == "photo") {
    p.photo = true;
    ++i;
  }
  const std::string usage = p.photo ? "photo X,Y" : "X,Y";
  if (i >= t.size() || t[i].quoted) {
    throw ScriptSyntaxError("expected a point " + usage);
  }
  const std::string& text = t[i].text;
  size_t comma = text.find(',');
  if (comma == std::string::npos ||
      !ReadCoordinate(text.substr(0, comma), p.x) ||
      !ReadCoordinate(text.substr(comma + 1), p.y) ||
      (!p.photo && (p.x != std::floor(p.x) || p.y != std::floor(p.y)))) {
    throw ScriptSyntaxError("expected a point " + usage + ", not \"" + text +
                            "\"");
  }
  ++i;
  return p;
}

std::string Describe(const ScriptPoint& p) {
  return std::string(p.photo ? "photo " : "") + FormatNumber(p.x) + "," +
         FormatNumber(p.y);
}

}  // namespace qbpd::script
