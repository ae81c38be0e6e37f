#include "service/request.h"

#include "service/pricing.h"
#include "service/service_core.h"

#include <map>

namespace qbpd::service {

using nlohmann::json;

namespace {

// Text that holds a NUL character is no text of the protocol: no name,
// address, code or message has one, and one of the stores (PostgreSQL)
// cannot keep it.
std::string Checked(const json& value, const char* name) {
  std::string text = value.get<std::string>();
  if (text.find('\0') != std::string::npos) {
    throw BadRequest(std::string("field ") + name + " holds a NUL character");
  }
  return text;
}

}  // namespace

std::string Text(const json& request, const char* name) {
  const auto it = request.find(name);
  if (it == request.end() || it->is_null()) {
    return {};
  }
  if (!it->is_string()) {
    throw BadRequest(std::string("field ") + name + " is not text");
  }
  return Checked(*it, name);
}

std::vector<std::string> TextArray(const json& request, const char* name) {
  std::vector<std::string> out;
  const auto it = request.find(name);
  if (it == request.end() || it->is_null()) {
    return out;
  }
  if (!it->is_array()) {
    throw BadRequest(std::string("field ") + name + " is not an array");
  }
  for (const auto& item : *it) {
    if (!item.is_string()) {
      throw BadRequest(std::string("field ") + name + " holds a non-text");
    }
    out.push_back(Checked(item, name));
  }
  return out;
}

bool Flag(const json& request, const char* name) {
  const auto it = request.find(name);
  if (it == request.end() || it->is_null()) {
    return false;
  }
  if (!it->is_boolean()) {
    throw BadRequest(std::string("field ") + name + " is not a Boolean");
  }
  return it->get<bool>();
}

namespace {

// The field as an array; a missing or null field is an empty one.
json ArrayField(const json& request, const char* name) {
  const auto it = request.find(name);
  if (it == request.end() || it->is_null()) {
    return json::array();
  }
  if (!it->is_array()) {
    throw BadRequest(std::string("field ") + name + " is not an array");
  }
  return *it;
}

}  // namespace

std::vector<OrderLine> OrderLines(const json& request) {
  std::vector<OrderLine> out;
  for (const auto& line : ArrayField(request, "orderLines")) {
    if (!line.is_object()) {
      throw BadRequest("an order line is not an object");
    }
    const auto rows = line.find("rows");
    if (rows == line.end() || !rows->is_array()) {
      throw BadRequest("an order line has no rows");
    }
    OrderLine read;
    read.key = Text(line, "key");
    for (size_t row = 0; row < rows->size() && row < kSizeCount; ++row) {
      const json& cells = (*rows)[row];
      if (!cells.is_array() || cells.empty() || !cells[0].is_string()) {
        throw BadRequest("an order row is not a row of text");
      }
      read.quantities.push_back(cells[0].get<std::string>());
    }
    out.push_back(std::move(read));
  }
  return out;
}

json OrderIndex(const json& request, std::vector<std::string>* keys) {
  json index = ArrayField(request, "orderIndex");
  for (const auto& pair : index) {
    if (!pair.is_array() || pair.size() != 2 || !pair[0].is_string() ||
        !pair[1].is_string()) {
      throw BadRequest("orderIndex holds something other than pairs");
    }
    if (keys != nullptr) {
      keys->push_back(pair[0].get<std::string>());
    }
  }
  return index;
}

namespace {

enum class Shape { kText, kTextArray, kFlag };

struct Field {
  const char* name;
  Shape shape;
};

// The fields each operation reads, as the protocol lists them. The order
// lines and the order index have shapes of their own, which PlaceOrder
// checks as it reads them, before anything else.
const std::map<std::string, std::vector<Field>>& Fields() {
  using enum Shape;
  static const std::map<std::string, std::vector<Field>> kFields = {
      {"LoginUser", {{"email", kText}, {"password", kText}}},
      {"RegisterUser", {{"fields", kTextArray}}},
      {"GetPriceList", {}},
      {"GetUserInfo", {{"authCode", kText}}},
      {"GetAlbumList", {{"authCode", kText}}},
      {"GetAddressBook", {{"authCode", kText}}},
      {"ShareAlbum",
       {{"authCode", kText},
        {"albumId", kText},
        {"emails", kTextArray},
        {"subject", kText},
        {"message", kText},
        {"access", kText}}},
      {"GetAlbumPhotos", {{"authCode", kText}, {"albumId", kText}}},
      {"PlaceOrder",
       {{"authCode", kText},
        {"userCode", kText},
        {"couponCode", kText},
        {"shipTo", kTextArray}}},
      {"ConfirmOrder",
       {{"authCode", kText}, {"orderId", kText}, {"couponCode", kText}}},
      {"UpdateUserAddress",
       {{"authCode", kText},
        {"email", kText},
        {"password", kText},
        {"address", kTextArray},
        {"card", kTextArray},
        {"cardChanged", kFlag},
        {"storedCardNumber", kText}}},
  };
  return kFields;
}

}  // namespace

void CheckRequestShape(const std::string& operation, const json& request) {
  if (!request.is_object()) {
    throw BadRequest("the request is not a JSON object");
  }
  const auto it = Fields().find(operation);
  if (it == Fields().end()) {
    return;
  }
  if (operation == "PlaceOrder") {
    OrderLines(request);
    OrderIndex(request, nullptr);
  }
  for (const auto& field : it->second) {
    switch (field.shape) {
      case Shape::kText:
        Text(request, field.name);
        break;
      case Shape::kTextArray:
        TextArray(request, field.name);
        break;
      case Shape::kFlag:
        Flag(request, field.name);
        break;
    }
  }
}

}  // namespace qbpd::service
