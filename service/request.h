#ifndef QBPD_SERVICE_REQUEST_H_
#define QBPD_SERVICE_REQUEST_H_

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace qbpd::service {

// The readers of a data operation's request object. A missing or null field
// reads as empty; a field of another JSON type throws BadRequest.
std::string Text(const nlohmann::json& request, const char* name);
std::vector<std::string> TextArray(const nlohmann::json& request,
                                   const char* name);
bool Flag(const nlohmann::json& request, const char* name);

// One line of an order's `orderLines`: its key and the quantity cell (the
// first) of each of its rows, at most `kSizeCount` of them.
struct OrderLine {
  std::string key;
  std::vector<std::string> quantities;
};
std::vector<OrderLine> OrderLines(const nlohmann::json& request);

// An order's `orderIndex` as handed in (an array of [key, value] pairs of
// text), and its keys.
nlohmann::json OrderIndex(const nlohmann::json& request,
                          std::vector<std::string>* keys);

// Checks the type of every field `operation` reads before it reads any, so
// that a field of the wrong type is a malformed request whatever else the
// request holds. Fields the operation does not read are ignored. Throws
// BadRequest.
void CheckRequestShape(const std::string& operation,
                       const nlohmann::json& request);

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_REQUEST_H_
