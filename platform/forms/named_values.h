#ifndef QBPD_PLATFORM_FORMS_NAMED_VALUES_H_
#define QBPD_PLATFORM_FORMS_NAMED_VALUES_H_

#include "platform/forms/value.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

// Plain variables reachable by the names the program gives them, for the
// headless driver and the tests: the session's values, a form's m-fields.
// The owner declares each variable once; the variable stays an ordinary
// member and is read and written through its reference.
class NamedValues {
 public:
  // `owner` names the holder in errors ("The session", "Form frmLogin").
  explicit NamedValues(std::string owner) : owner_(std::move(owner)) {}
  NamedValues(const NamedValues&) = delete;
  NamedValues& operator=(const NamedValues&) = delete;

  // `field` must outlive this object (a member of the same owner).
  template <class T>
  void Declare(std::string name, T& field) {
    T* p = &field;
    bindings_[std::move(name)] =
        Binding{[p] { return Value(*p); },
                [p](const Value& v) { *p = v.template As<T>(); }};
  }

  bool Has(std::string_view name) const;
  // An unknown name is a RuntimeError that names the owner and the value.
  Value Get(std::string_view name) const;
  void Set(std::string_view name, const Value& v) const;
  // Every declared name, in order of name.
  std::vector<std::string> Names() const;

 private:
  struct Binding {
    std::function<Value()> get;
    std::function<void(const Value&)> set;
  };
  const Binding& Find(std::string_view name) const;

  std::string owner_;
  std::map<std::string, Binding, std::less<>> bindings_;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_NAMED_VALUES_H_
