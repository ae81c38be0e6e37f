#include "platform/json_value.h"

#include <nlohmann/json.hpp>

#include <cctype>
#include <cmath>
#include <cstdio>

namespace qbpd {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kMaxDepth = 100;

struct TooDeep {};

JsonValue FromLibrary(const Json& j) {
  switch (j.type()) {
    case Json::value_t::null:
    case Json::value_t::discarded:
    case Json::value_t::binary:
      return JsonValue();
    case Json::value_t::boolean:
      return JsonValue(j.get<bool>());
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
    case Json::value_t::number_float:
      return JsonValue(j.get<double>());
    case Json::value_t::string:
      return JsonValue(j.get<std::string>());
    case Json::value_t::array: {
      JsonValue out = JsonValue::Array();
      for (const Json& item : j) {
        out.Append(FromLibrary(item));
      }
      return out;
    }
    case Json::value_t::object: {
      JsonValue out = JsonValue::Object();
      for (const auto& [key, item] : j.items()) {
        out.Set(key, FromLibrary(item));
      }
      return out;
    }
  }
  return JsonValue();
}

Json ToLibrary(const JsonValue& v) {
  switch (v.kind()) {
    case JsonValue::Kind::kNull:
      return nullptr;
    case JsonValue::Kind::kBool:
      return v.boolean();
    case JsonValue::Kind::kNumber: {
      double n = v.number();
      if (std::isfinite(n) && n == std::trunc(n) && std::fabs(n) < 9e15) {
        return static_cast<long long>(n);
      }
      return n;
    }
    case JsonValue::Kind::kString:
      return v.text();
    case JsonValue::Kind::kArray: {
      Json out = Json::array();
      for (const JsonValue& item : v.items()) {
        out.push_back(ToLibrary(item));
      }
      return out;
    }
    case JsonValue::Kind::kObject: {
      Json out = Json::object();
      for (const auto& [key, item] : v.members()) {
        out[key] = ToLibrary(item);
      }
      return out;
    }
  }
  return nullptr;
}

}  // namespace

JsonValue JsonValue::Array(std::vector<JsonValue> items) {
  JsonValue v;
  v.kind_ = Kind::kArray;
  v.items_ = std::move(items);
  return v;
}

JsonValue JsonValue::Object() {
  JsonValue v;
  v.kind_ = Kind::kObject;
  return v;
}

JsonValue JsonValue::Strings(const std::vector<std::string>& texts) {
  JsonValue v = Array();
  for (const std::string& t : texts) {
    v.Append(JsonValue(t));
  }
  return v;
}

std::string JsonValue::AsText() const {
  switch (kind_) {
    case Kind::kString:
      return text_;
    case Kind::kBool:
      return bool_ ? "True" : "False";
    case Kind::kNumber: {
      if (std::isfinite(number_) && number_ == std::trunc(number_) &&
          std::fabs(number_) < 9e15) {
        return std::to_string(static_cast<long long>(number_));
      }
      char buffer[64];
      std::snprintf(buffer, sizeof buffer, "%.15g", number_);
      return buffer;
    }
    case Kind::kNull:
    case Kind::kArray:
    case Kind::kObject:
      return "";
  }
  return "";
}

bool JsonValue::AsBool() const {
  switch (kind_) {
    case Kind::kBool:
      return bool_;
    case Kind::kNumber:
      return number_ != 0;
    case Kind::kString: {
      std::string lower;
      for (char c : text_) {
        lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      }
      return lower == "true" || lower == "1";
    }
    case Kind::kNull:
    case Kind::kArray:
    case Kind::kObject:
      return false;
  }
  return false;
}

void JsonValue::Append(JsonValue item) {
  if (kind_ == Kind::kNull) {
    kind_ = Kind::kArray;
  }
  items_.push_back(std::move(item));
}

void JsonValue::Set(const std::string& key, JsonValue value) {
  if (kind_ == Kind::kNull) {
    kind_ = Kind::kObject;
  }
  for (Member& m : members_) {
    if (m.first == key) {
      m.second = std::move(value);
      return;
    }
  }
  members_.emplace_back(key, std::move(value));
}

const JsonValue* JsonValue::Find(std::string_view key) const {
  for (const Member& m : members_) {
    if (m.first == key) {
      return &m.second;
    }
  }
  return nullptr;
}

std::optional<JsonValue> ParseJson(std::string_view text, std::string* error) {
  // The depth guard keeps a hostile answer from exhausting the stack in the
  // conversion below.
  Json::parser_callback_t guard = [](int depth, Json::parse_event_t,
                                     Json&) -> bool {
    if (depth > kMaxDepth) {
      throw TooDeep{};
    }
    return true;
  };
  try {
    Json parsed = Json::parse(text.begin(), text.end(), guard);
    return FromLibrary(parsed);
  } catch (const TooDeep&) {
    if (error != nullptr) {
      *error = "the JSON text nests too deeply";
    }
  } catch (const Json::exception& e) {
    if (error != nullptr) {
      *error = e.what();
    }
  }
  return std::nullopt;
}

std::string SerializeJson(const JsonValue& value) {
  // Text that isn't valid UTF-8 (a path in a legacy encoding) is written with
  // replacement characters rather than refused.
  return ToLibrary(value).dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace qbpd
