#ifndef QBPD_PLATFORM_FORMS_VALUE_H_
#define QBPD_PLATFORM_FORMS_VALUE_H_

#include <string>
#include <string_view>
#include <variant>

namespace qbpd {

// The value of a control property or session value as reflection sees it:
// empty, a Boolean, a whole number, a real number or text. Conversions follow
// the program's rules: Booleans are the words "True" and "False", text that
// is not a number converts to 0 and a failed conversion to a Boolean is False.
class Value {
 public:
  Value() = default;
  Value(bool v) : v_(v) {}  // NOLINT: implicit by design
  Value(int v) : v_(static_cast<long long>(v)) {}
  Value(long v) : v_(static_cast<long long>(v)) {}
  Value(long long v) : v_(v) {}
  Value(double v) : v_(v) {}
  Value(std::string v) : v_(std::move(v)) {}
  Value(std::string_view v) : v_(std::string(v)) {}
  Value(const char* v) : v_(std::string(v)) {}

  bool IsEmpty() const { return std::holds_alternative<std::monostate>(v_); }
  bool IsText() const { return std::holds_alternative<std::string>(v_); }
  bool IsBool() const { return std::holds_alternative<bool>(v_); }

  std::string ToText() const;
  long long ToLong() const;
  double ToDouble() const;
  bool ToBool() const;

  // Converts to T, one of the types above; used by the property tables.
  template <class T>
  T As() const;

  // Equal when both are numbers (or Booleans) of the same value, or when the
  // text forms are equal.
  friend bool operator==(const Value& a, const Value& b);

 private:
  std::variant<std::monostate, bool, long long, double, std::string> v_;
};

template <>
inline std::string Value::As<std::string>() const {
  return ToText();
}
template <>
inline bool Value::As<bool>() const {
  return ToBool();
}
template <>
inline int Value::As<int>() const {
  return static_cast<int>(ToLong());
}
template <>
inline long Value::As<long>() const {
  return static_cast<long>(ToLong());
}
template <>
inline long long Value::As<long long>() const {
  return ToLong();
}
template <>
inline double Value::As<double>() const {
  return ToDouble();
}

// Formats a number as the program's runtime writes it: whole numbers without
// a decimal point, others with up to 15 significant digits.
std::string FormatNumber(double v);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_VALUE_H_
