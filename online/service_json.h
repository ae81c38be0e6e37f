#ifndef QBPD_ONLINE_SERVICE_JSON_H_
#define QBPD_ONLINE_SERVICE_JSON_H_

#include "online/service_types.h"
#include "platform/json_value.h"

namespace qbpd {

// The shapes in which the service's values travel: a grid as an array of
// rows, a dictionary as an array of [key, item] pairs in order, print lines
// as an array of {"key", "rows"} objects in order.
JsonValue GridJson(const TextGrid& grid);
JsonValue DictionaryJson(const TextDictionary& dic);
JsonValue PriceTiersJson(const PriceTierDictionary& dic);
JsonValue PrintLinesJson(const PrintLineCollection& lines);

}  // namespace qbpd

#endif  // QBPD_ONLINE_SERVICE_JSON_H_
