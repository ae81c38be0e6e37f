#include "online/service_json.h"

#include <cstdlib>
#include <string>
#include <utility>

namespace qbpd {
namespace {

bool IsScalar(const JsonValue& v) {
  return !v.is_array() && !v.is_object();
}

const JsonValue* PairValue(const JsonValue& pair, std::string& key) {
  if (!pair.is_array() || pair.items().size() != 2 ||
      !ReadText(pair.items()[0], key)) {
    return nullptr;
  }
  return &pair.items()[1];
}

}  // namespace

bool ReadText(const JsonValue& v, std::string& out) {
  if (!IsScalar(v)) {
    return false;
  }
  out = v.AsText();
  return true;
}

bool ReadStrings(const JsonValue& v, StringArray& out) {
  if (!v.is_array()) {
    return false;
  }
  StringArray result;
  for (const JsonValue& item : v.items()) {
    if (!IsScalar(item)) {
      return false;
    }
    result.push_back(item.AsText());
  }
  out = std::move(result);
  return true;
}

bool ReadGrid(const JsonValue& v, TextGrid& out) {
  if (!v.is_array()) {
    return false;
  }
  std::vector<std::vector<std::string>> rows;
  for (const JsonValue& row : v.items()) {
    StringArray cells;
    if (!ReadStrings(row, cells)) {
      return false;
    }
    rows.push_back(std::move(cells));
  }
  out = TextGrid::FromRows(rows);
  return true;
}

// A [key, value] pair of a dictionary.
bool ReadDictionary(const JsonValue& v, TextDictionary& out) {
  if (!v.is_array()) {
    return false;
  }
  TextDictionary result;
  for (const JsonValue& pair : v.items()) {
    std::string key;
    const JsonValue* item = PairValue(pair, key);
    std::string text;
    if (item == nullptr || !ReadText(*item, text) || result.Exists(key)) {
      return false;
    }
    result.Add(key, text);
  }
  out = std::move(result);
  return true;
}

bool ReadPriceTiers(const JsonValue& v, PriceTierDictionary& out) {
  if (!v.is_array()) {
    return false;
  }
  PriceTierDictionary result;
  for (const JsonValue& pair : v.items()) {
    std::string key;
    const JsonValue* item = PairValue(pair, key);
    TextGrid tiers;
    if (item == nullptr || !ReadGrid(*item, tiers)) {
      return false;
    }
    char* end = nullptr;
    long size_number = std::strtol(key.c_str(), &end, 10);
    if (key.empty() || *end != '\0' || size_number < 0 || size_number > 99 ||
        result.Exists(static_cast<int>(size_number))) {
      return false;
    }
    result.Add(static_cast<int>(size_number), std::move(tiers));
  }
  out = std::move(result);
  return true;
}

bool ReadPrintLines(const JsonValue& v, PrintLineCollection& out) {
  if (!v.is_array()) {
    return false;
  }
  PrintLineCollection result;
  for (const JsonValue& line : v.items()) {
    const JsonValue* key = line.Find("key");
    const JsonValue* rows = line.Find("rows");
    std::string key_text;
    TextGrid grid;
    if (key == nullptr || rows == nullptr || !ReadText(*key, key_text) ||
        !ReadGrid(*rows, grid) ||
        (!key_text.empty() && result.Exists(key_text))) {
      return false;
    }
    result.Add(std::move(grid), key_text);
  }
  out = std::move(result);
  return true;
}

// Amounts travel as text; a number is read as the program reads one: the
// leading number, 0 for none.
bool ReadAmount(const JsonValue& v, double& out) {
  if (v.kind() == JsonValue::Kind::kNumber) {
    out = v.number();
    return true;
  }
  std::string text;
  if (!ReadText(v, text)) {
    return false;
  }
  out = std::strtod(text.c_str(), nullptr);
  return true;
}

JsonValue GridJson(const TextGrid& grid) {
  JsonValue rows = JsonValue::Array();
  for (const auto& row : grid.ToRows()) {
    rows.Append(JsonValue::Strings(row));
  }
  return rows;
}

JsonValue DictionaryJson(const TextDictionary& dic) {
  JsonValue pairs = JsonValue::Array();
  for (const auto& [key, item] : dic) {
    pairs.Append(JsonValue::Array({JsonValue(key), JsonValue(item)}));
  }
  return pairs;
}

JsonValue PrintLinesJson(const PrintLineCollection& lines) {
  JsonValue out = JsonValue::Array();
  for (int i = 1; i <= lines.Count(); ++i) {
    JsonValue line = JsonValue::Object();
    line.Set("key", lines.KeyAt(i));
    line.Set("rows", GridJson(lines.Item(i)));
    out.Append(std::move(line));
  }
  return out;
}

JsonValue PriceTiersJson(const PriceTierDictionary& dic) {
  JsonValue pairs = JsonValue::Array();
  for (const auto& [key, tiers] : dic) {
    pairs.Append(
        JsonValue::Array({JsonValue(std::to_string(key)), GridJson(tiers)}));
  }
  return pairs;
}

}  // namespace qbpd
