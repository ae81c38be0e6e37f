#ifndef QBPD_CORE_ORDERED_DICTIONARY_H_
#define QBPD_CORE_ORDERED_DICTIONARY_H_

#include "platform/forms/runtime_error.h"

#include <cctype>
#include <list>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qbpd {

// Error numbers of the dictionary, as the program's handlers see them.
inline constexpr int kErrDictionaryNoKey = 32811;  // element not found

// How text keys are compared: exactly, or without regard to case.
enum class CompareMode { kBinary, kText };

// The program's dictionary: keyed items that enumerate in the order they were
// added. Add refuses a key that exists (error 457); reading or removing a key
// that doesn't exist is an error (32811), never a crash. Assigning through
// Set adds a missing key, as the program's dictionary does.
template <class K, class V>
class OrderedDictionary {
 public:
  explicit OrderedDictionary(CompareMode mode = CompareMode::kBinary)
      : mode_(mode) {}

  OrderedDictionary(const OrderedDictionary& other) : mode_(other.mode_) {
    for (const auto& [k, v] : other.entries_) {
      Add(k, v);
    }
  }
  OrderedDictionary& operator=(const OrderedDictionary& other) {
    if (this != &other) {
      RemoveAll();
      mode_ = other.mode_;
      for (const auto& [k, v] : other.entries_) {
        Add(k, v);
      }
    }
    return *this;
  }
  OrderedDictionary(OrderedDictionary&&) noexcept = default;
  OrderedDictionary& operator=(OrderedDictionary&&) noexcept = default;

  int Count() const { return static_cast<int>(entries_.size()); }
  bool Exists(const K& key) const { return index_.count(Norm(key)) != 0; }

  void Add(const K& key, V item) {
    auto norm = Norm(key);
    if (index_.count(norm) != 0) {
      throw RuntimeError(kErrKeyExists,
                         "This key is already associated with an element of "
                         "this collection: " +
                             KeyText(key));
    }
    entries_.emplace_back(key, std::move(item));
    index_.emplace(std::move(norm), std::prev(entries_.end()));
  }

  const V& Item(const K& key) const { return Find(key)->second; }
  V& Item(const K& key) { return Find(key)->second; }

  // Sets the item of `key`, adding the key when it is missing.
  void Set(const K& key, V item) {
    auto it = index_.find(Norm(key));
    if (it == index_.end()) {
      Add(key, std::move(item));
    } else {
      it->second->second = std::move(item);
    }
  }

  // Renames a key in place; the new key must not exist.
  void RenameKey(const K& from, const K& to) {
    auto it = Find(from);
    if (Exists(to) && Norm(from) != Norm(to)) {
      throw RuntimeError(kErrKeyExists,
                         "This key is already associated with an element of "
                         "this collection: " +
                             KeyText(to));
    }
    index_.erase(Norm(from));
    it->first = to;
    index_.emplace(Norm(to), it);
  }

  void Remove(const K& key) {
    auto it = Find(key);
    index_.erase(Norm(key));
    entries_.erase(it);
  }

  void RemoveAll() {
    entries_.clear();
    index_.clear();
  }

  std::vector<K> Keys() const {
    std::vector<K> out;
    out.reserve(entries_.size());
    for (const auto& [k, v] : entries_) {
      out.push_back(k);
    }
    return out;
  }

  std::vector<V> Items() const {
    std::vector<V> out;
    out.reserve(entries_.size());
    for (const auto& [k, v] : entries_) {
      out.push_back(v);
    }
    return out;
  }

  // Iteration in insertion order over (key, item) pairs.
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }

 private:
  using Entries = std::list<std::pair<K, V>>;
  using NormKey =
      std::conditional_t<std::is_same_v<K, std::string>, std::string, K>;

  NormKey Norm(const K& key) const {
    if constexpr (std::is_same_v<K, std::string>) {
      if (mode_ == CompareMode::kText) {
        std::string upper = key;
        for (char& c : upper) {
          c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        return upper;
      }
    }
    return key;
  }

  static std::string KeyText(const K& key) {
    if constexpr (std::is_same_v<K, std::string>) {
      return key;
    } else {
      return std::to_string(key);
    }
  }

  typename Entries::iterator Find(const K& key) const {
    auto it = index_.find(Norm(key));
    if (it == index_.end()) {
      throw RuntimeError(kErrDictionaryNoKey,
                         "Element not found: " + KeyText(key));
    }
    return it->second;
  }

  CompareMode mode_;
  mutable Entries entries_;
  std::unordered_map<NormKey, typename Entries::iterator> index_;
};

}  // namespace qbpd

#endif  // QBPD_CORE_ORDERED_DICTIONARY_H_
