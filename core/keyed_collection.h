#ifndef QBPD_CORE_KEYED_COLLECTION_H_
#define QBPD_CORE_KEYED_COLLECTION_H_

#include "platform/forms/runtime_error.h"

#include <cctype>
#include <optional>
#include <string>
#include <vector>

namespace qbpd {

// The program's collection: items in order, counted from 1, each with an
// optional text key compared without regard to case. A position out of range
// is error 9, a missing key error 5, a duplicate key error 457; none crashes.
template <class T>
class KeyedCollection {
 public:
  int Count() const { return static_cast<int>(entries_.size()); }

  // Adds `item` at the end, or before/after the item at a position from 1.
  // An empty key adds the item without one.
  void Add(T item, const std::string& key = {}, int before = 0, int after = 0) {
    if (!key.empty() && FindKey(key)) {
      throw RuntimeError(kErrKeyExists,
                         "This key is already associated with an element of "
                         "this collection: " +
                             key);
    }
    size_t at = entries_.size();
    if (before != 0) {
      CheckPosition(before);
      at = before - 1;
    } else if (after != 0) {
      CheckPosition(after);
      at = after;
    }
    entries_.insert(entries_.begin() + at, Entry{std::move(item), key});
  }

  bool Exists(const std::string& key) const { return FindKey(key).has_value(); }

  const T& Item(int position) const {
    CheckPosition(position);
    return entries_[position - 1].item;
  }
  T& Item(int position) {
    CheckPosition(position);
    return entries_[position - 1].item;
  }
  const T& Item(const std::string& key) const {
    return entries_[RequireKey(key)].item;
  }
  T& Item(const std::string& key) { return entries_[RequireKey(key)].item; }

  // The key of the item at a position ("" when it has none).
  const std::string& KeyAt(int position) const {
    CheckPosition(position);
    return entries_[position - 1].key;
  }

  void Remove(int position) {
    CheckPosition(position);
    entries_.erase(entries_.begin() + (position - 1));
  }
  void Remove(const std::string& key) {
    entries_.erase(entries_.begin() + RequireKey(key));
  }
  void Clear() { entries_.clear(); }

  std::vector<T> Items() const {
    std::vector<T> out;
    out.reserve(entries_.size());
    for (const Entry& e : entries_) {
      out.push_back(e.item);
    }
    return out;
  }

 private:
  struct Entry {
    T item;
    std::string key;
  };

  static bool SameKey(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) {
      return false;
    }
    for (size_t i = 0; i < a.size(); ++i) {
      if (std::toupper(static_cast<unsigned char>(a[i])) !=
          std::toupper(static_cast<unsigned char>(b[i]))) {
        return false;
      }
    }
    return true;
  }

  std::optional<size_t> FindKey(const std::string& key) const {
    if (key.empty()) {
      return std::nullopt;
    }
    for (size_t i = 0; i < entries_.size(); ++i) {
      if (SameKey(entries_[i].key, key)) {
        return i;
      }
    }
    return std::nullopt;
  }

  size_t RequireKey(const std::string& key) const {
    std::optional<size_t> i = FindKey(key);
    if (!i) {
      throw RuntimeError(
          kErrInvalidCall,
          "Invalid procedure call or argument: no item with key " + key);
    }
    return *i;
  }

  void CheckPosition(int position) const {
    if (position < 1 || position > Count()) {
      throw RuntimeError(kErrSubscript,
                         "Subscript out of range: " + std::to_string(position));
    }
  }

  std::vector<Entry> entries_;
};

}  // namespace qbpd

#endif  // QBPD_CORE_KEYED_COLLECTION_H_
