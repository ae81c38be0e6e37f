#include "platform/forms/named_values.h"

#include "platform/forms/runtime_error.h"

namespace qbpd {

bool NamedValues::Has(std::string_view name) const {
  return bindings_.find(name) != bindings_.end();
}

const NamedValues::Binding& NamedValues::Find(std::string_view name) const {
  auto it = bindings_.find(name);
  if (it == bindings_.end()) {
    throw RuntimeError(kErrNoSuchProperty,
                       owner_ + " has no value " + std::string(name));
  }
  return it->second;
}

Value NamedValues::Get(std::string_view name) const {
  return Find(name).get();
}

void NamedValues::Set(std::string_view name, const Value& v) const {
  Find(name).set(v);
}

std::vector<std::string> NamedValues::Names() const {
  std::vector<std::string> out;
  for (const auto& [name, binding] : bindings_) {
    out.push_back(name);
  }
  return out;
}

}  // namespace qbpd
