#ifndef QBPD_ONLINE_SERVICE_JSON_H_
#define QBPD_ONLINE_SERVICE_JSON_H_

#include "online/service_types.h"
#include "platform/json_value.h"

#include <string>

namespace qbpd {

// The shapes in which the service's values travel: a grid as an array of
// rows, a dictionary as an array of [key, item] pairs in order, print lines
// as an array of {"key", "rows"} objects in order.
JsonValue GridJson(const TextGrid& grid);
JsonValue DictionaryJson(const TextDictionary& dic);
JsonValue PriceTiersJson(const PriceTierDictionary& dic);
JsonValue PrintLinesJson(const PrintLineCollection& lines);

// Reading the same shapes back out of an answer. Each reader returns false
// when the value has the wrong shape (the caller then treats the whole
// answer as unreadable) and leaves `out` as it was. A scalar reads as text.
bool ReadText(const JsonValue& v, std::string& out);
bool ReadStrings(const JsonValue& v, StringArray& out);
bool ReadGrid(const JsonValue& v, TextGrid& out);
bool ReadDictionary(const JsonValue& v, TextDictionary& out);
bool ReadPriceTiers(const JsonValue& v, PriceTierDictionary& out);
bool ReadPrintLines(const JsonValue& v, PrintLineCollection& out);
// Amounts travel as text; a number is read as the program reads one: the
// leading number, 0 for none.
bool ReadAmount(const JsonValue& v, double& out);

}  // namespace qbpd

#endif  // QBPD_ONLINE_SERVICE_JSON_H_
