#ifndef QBPD_PLATFORM_JSON_VALUE_H_
#define QBPD_PLATFORM_JSON_VALUE_H_

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qbpd {

// A JSON document as plain data, so that the program proper can build and read
// the service's messages without a JSON library of its own. Object members
// keep the order in which they were set.
class JsonValue {
 public:
  enum class Kind { kNull, kBool, kNumber, kString, kArray, kObject };
  using Member = std::pair<std::string, JsonValue>;

  JsonValue() = default;
  JsonValue(bool b) : kind_(Kind::kBool), bool_(b) {}        // NOLINT
  JsonValue(int n) : kind_(Kind::kNumber), number_(n) {}     // NOLINT
  JsonValue(double n) : kind_(Kind::kNumber), number_(n) {}  // NOLINT
  JsonValue(std::string s)                                   // NOLINT
      : kind_(Kind::kString), text_(std::move(s)) {}
  JsonValue(const char* s) : JsonValue(std::string(s)) {}  // NOLINT

  static JsonValue Array(std::vector<JsonValue> items = {});
  static JsonValue Object();
  // An array of strings.
  static JsonValue Strings(const std::vector<std::string>& texts);

  Kind kind() const { return kind_; }
  bool is_null() const { return kind_ == Kind::kNull; }
  bool is_array() const { return kind_ == Kind::kArray; }
  bool is_object() const { return kind_ == Kind::kObject; }
  bool is_string() const { return kind_ == Kind::kString; }

  bool boolean() const { return bool_; }
  double number() const { return number_; }
  const std::string& text() const { return text_; }
  const std::vector<JsonValue>& items() const { return items_; }
  const std::vector<Member>& members() const { return members_; }

  // The value as text: a string as it stands, a whole number without a
  // decimal point, true and false as "True" and "False", null and containers
  // as "".
  std::string AsText() const;
  // The value as a truth: a Boolean, a non-zero number, or a string that
  // reads "true" or "1" (any case).
  bool AsBool() const;

  // Arrays: appends an item (a null value becomes an empty array first).
  void Append(JsonValue item);
  // Objects: sets a member, replacing one of the same name (a null value
  // becomes an empty object first).
  void Set(const std::string& key, JsonValue value);
  // The member of that name, or nullptr (also when this is no object).
  const JsonValue* Find(std::string_view key) const;

 private:
  Kind kind_ = Kind::kNull;
  bool bool_ = false;
  double number_ = 0;
  std::string text_;
  std::vector<JsonValue> items_;
  std::vector<Member> members_;
};

// Parses JSON text. Returns nothing for text that isn't one well-formed JSON
// value, or that nests deeper than 100 levels, and then puts the reason in
// `error` when given.
std::optional<JsonValue> ParseJson(std::string_view text,
                                   std::string* error = nullptr);

// Writes compact JSON text (UTF-8 passes through unchanged).
std::string SerializeJson(const JsonValue& value);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_JSON_VALUE_H_
