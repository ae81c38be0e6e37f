#ifndef QBPD_PLATFORM_FORMS_CONTROL_ARRAY_H_
#define QBPD_PLATFORM_FORMS_CONTROL_ARRAY_H_

#include "platform/forms/form.h"
#include "platform/forms/runtime_error.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qbpd {

// A control array: member 0 made with the form, further members loaded and
// unloaded by index. A loaded member copies member 0's properties and starts
// hidden. Using a member that isn't loaded is error 340, loading one that is
// is error 360, and member 0 cannot be unloaded. A member unloaded while an
// event handler runs leaves the form at once but is destroyed only when no
// handler runs any more, so that the event of the member itself can end.
template <class T>
class ControlArray {
 public:
  ControlArray(Form& form, std::string name) : form_(form), name_(name) {
    members_.emplace(0, std::make_unique<T>(form, name, 0));
  }

  const std::string& Name() const { return name_; }

  T& operator[](int index) const {
    auto it = members_.find(index);
    if (it == members_.end()) {
      throw RuntimeError(kErrNoSuchControl, "Control array element '" +
                                                std::to_string(index) +
                                                "' doesn't exist: " + name_);
    }
    return *it->second;
  }

  bool Exists(int index) const { return members_.count(index) != 0; }

  T& Load(int index) {
    ReleaseUnloaded();
    if (index < 0 || Exists(index)) {
      throw RuntimeError(kErrElementExists, "Object already loaded: " + name_ +
                                                "(" + std::to_string(index) +
                                                ")");
    }
    auto member = std::make_unique<T>(form_, name_, index);
    member->CopyStateFrom(*members_.at(0));
    member->SetVisible(false);
    T& ref = *member;
    members_.emplace(index, std::move(member));
    return ref;
  }

  void Unload(int index) {
    if (index == 0) {
      throw RuntimeError(
          kErrInvalidCall,
          "Can't unload controls created at design time: " + name_ + "(0)");
    }
    auto it = members_.find(index);
    if (it == members_.end()) {
      throw RuntimeError(kErrNoSuchControl, "Control array element '" +
                                                std::to_string(index) +
                                                "' doesn't exist: " + name_);
    }
    // While a handler runs, the member may be the one whose event it is:
    // it leaves the form now and is destroyed once no handler runs.
    std::unique_ptr<T> member = std::move(it->second);
    members_.erase(it);
    form_.Unregister(member.get());
    released_.push_back(std::move(member));
    ReleaseUnloaded();
  }

  // Destroys the members unloaded while handlers ran, once none runs.
  void ReleaseUnloaded() {
    if (form_.host().dispatch_depth() == 0) {
      released_.clear();
    }
  }

  int LBound() const { return members_.begin()->first; }
  int UBound() const { return members_.rbegin()->first; }
  int Count() const { return static_cast<int>(members_.size()); }
  // The loaded indexes, ascending.
  std::vector<int> Indexes() const {
    std::vector<int> out;
    for (const auto& [i, m] : members_) {
      out.push_back(i);
    }
    return out;
  }

 private:
  Form& form_;
  std::string name_;
  std::map<int, std::unique_ptr<T>> members_;
  std::vector<std::unique_ptr<T>> released_;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_CONTROL_ARRAY_H_
