#include "platform/forms/value.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace qbpd {
namespace {

std::string Trimmed(const std::string& s) {
  size_t b = 0;
  size_t e = s.size();
  while (b < e && std::isspace(static_cast<unsigned char>(s[b]))) {
    ++b;
  }
  while (e > b && std::isspace(static_cast<unsigned char>(s[e - 1]))) {
    --e;
  }
  return s.substr(b, e - b);
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (size_t i = 0; i < a.size(); ++i) {
    if (std::toupper(static_cast<unsigned char>(a[i])) !=
        std::toupper(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return true;
}

// Parses the whole of `text` as a number; false when it is not one.
bool ParseNumber(const std::string& text, double& out) {
  std::string t = Trimmed(text);
  if (t.empty()) {
    return false;
  }
  char* end = nullptr;
  out = std::strtod(t.c_str(), &end);
  return end == t.c_str() + t.size();
}

}  // namespace

std::string FormatNumber(double v) {
  if (std::isfinite(v) && v == std::floor(v) && std::fabs(v) < 1e15) {
    return std::to_string(static_cast<long long>(v));
  }
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.15g", v);
  return buf;
}

std::string Value::ToText() const {
  struct Visitor {
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(bool b) const { return b ? "True" : "False"; }
    std::string operator()(long long n) const { return std::to_string(n); }
    std::string operator()(double d) const { return FormatNumber(d); }
    std::string operator()(const std::string& s) const { return s; }
  };
  return std::visit(Visitor{}, v_);
}

double Value::ToDouble() const {
  struct Visitor {
    double operator()(std::monostate) const { return 0; }
    // The runtime's True is -1.
    double operator()(bool b) const { return b ? -1 : 0; }
    double operator()(long long n) const { return static_cast<double>(n); }
    double operator()(double d) const { return d; }
    double operator()(const std::string& s) const {
      if (EqualsNoCase(Trimmed(s), "True")) {
        return -1;
      }
      double d = 0;
      return ParseNumber(s, d) ? d : 0;
    }
  };
  return std::visit(Visitor{}, v_);
}

long long Value::ToLong() const {
  if (const auto* n = std::get_if<long long>(&v_)) {
    return *n;
  }
  return std::llround(ToDouble());
}

bool Value::ToBool() const {
  if (const auto* b = std::get_if<bool>(&v_)) {
    return *b;
  }
  if (const auto* s = std::get_if<std::string>(&v_)) {
    std::string t = Trimmed(*s);
    if (EqualsNoCase(t, "True")) {
      return true;
    }
    double d = 0;
    return ParseNumber(t, d) && d != 0;
  }
  return ToDouble() != 0;
}

bool operator==(const Value& a, const Value& b) {
  auto numeric = [](const Value& v) { return !v.IsText() && !v.IsEmpty(); };
  if (numeric(a) && numeric(b)) {
    return a.ToDouble() == b.ToDouble();
  }
  if (a.IsBool() || b.IsBool()) {
    return EqualsNoCase(a.ToText(), b.ToText());
  }
  return a.ToText() == b.ToText();
}

}  // namespace qbpd
