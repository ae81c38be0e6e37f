#include "platform/settings_store.h"

#include <algorithm>
#include <cctype>
#include <map>

namespace qbpd {
namespace {

std::string Upper(std::string_view s) {
  std::string out(s);
  for (char& c : out) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return out;
}

class MemorySettingsStore : public SettingsStore {
 public:
  std::string Read(std::string_view key, std::string_view value) override {
    auto k = keys_.find(Upper(key));
    if (k == keys_.end()) {
      return {};
    }
    for (const Entry& e : k->second.values) {
      if (Upper(e.name) == Upper(value)) {
        return e.data;
      }
    }
    return {};
  }

  bool Write(std::string_view key,
             std::string_view value,
             std::string_view data) override {
    Key& k = keys_[Upper(key)];
    if (k.path.empty()) {
      k.path = std::string(key);
    }
    for (Entry& e : k.values) {
      if (Upper(e.name) == Upper(value)) {
        e.data = std::string(data);
        return true;
      }
    }
    k.values.push_back(Entry{std::string(value), std::string(data)});
    return true;
  }

  bool Delete(std::string_view key, std::string_view value) override {
    auto k = keys_.find(Upper(key));
    if (k == keys_.end()) {
      return false;
    }
    auto& values = k->second.values;
    auto it = std::find_if(values.begin(), values.end(), [&](const Entry& e) {
      return Upper(e.name) == Upper(value);
    });
    if (it == values.end()) {
      return false;
    }
    values.erase(it);
    return true;
  }

  std::vector<std::pair<std::string, std::string>> List(
      std::string_view key) override {
    std::vector<std::pair<std::string, std::string>> out;
    auto k = keys_.find(Upper(key));
    if (k != keys_.end()) {
      for (const Entry& e : k->second.values) {
        out.emplace_back(e.name, e.data);
      }
    }
    return out;
  }

  std::vector<std::string> Keys() override {
    std::vector<std::string> out;
    for (const auto& [upper, k] : keys_) {
      if (!k.values.empty()) {
        out.push_back(k.path);
      }
    }
    std::sort(out.begin(), out.end());
    return out;
  }

 private:
  struct Entry {
    std::string name;
    std::string data;
  };
  struct Key {
    std::string path;
    std::vector<Entry> values;
  };
  std::map<std::string, Key> keys_;
};

}  // namespace

std::unique_ptr<SettingsStore> MakeMemorySettingsStore() {
  return std::make_unique<MemorySettingsStore>();
}

}  // namespace qbpd
