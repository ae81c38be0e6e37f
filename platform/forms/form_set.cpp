#include "platform/forms/form_set.h"

#include "platform/forms/host.h"
#include "platform/forms/runtime_error.h"

#include <algorithm>

namespace qbpd {

FormSet::FormSet(Host& host) : host_(host) {}

FormSet::~FormSet() {
  // Destroy newest first: a later form may refer to an earlier one.
  while (!loaded_.empty()) {
    loaded_.pop_back();
  }
  released_.clear();
}

void FormSet::Register(std::string name, Factory factory) {
  factories_[std::move(name)] = std::move(factory);
}

bool FormSet::IsRegistered(std::string_view name) const {
  return factories_.find(name) != factories_.end();
}

std::vector<std::string> FormSet::RegisteredNames() const {
  std::vector<std::string> out;
  for (const auto& [name, factory] : factories_) {
    out.push_back(name);
  }
  return out;
}

Form& FormSet::Get(std::string_view name) {
  if (Form* f = Find(name)) {
    return *f;
  }
  auto it = factories_.find(name);
  if (it == factories_.end()) {
    throw RuntimeError(kErrNoSuchForm,
                       "The program has no form " + std::string(name));
  }
  std::unique_ptr<Form> form = it->second();
  Form& ref = *form;
  ref.AttachTo(this);
  loaded_.push_back(std::move(form));
  ref.Load();
  return ref;
}

Form* FormSet::Find(std::string_view name) const {
  for (const auto& f : loaded_) {
    if (f->Name() == name && !f->IsUnloaded()) {
      return f.get();
    }
  }
  return nullptr;
}

std::vector<Form*> FormSet::Loaded() const {
  std::vector<Form*> out;
  for (const auto& f : loaded_) {
    if (!f->IsUnloaded()) {
      out.push_back(f.get());
    }
  }
  return out;
}

void FormSet::Release(Form& form) {
  auto it = std::find_if(loaded_.begin(), loaded_.end(),
                         [&](const auto& f) { return f.get() == &form; });
  if (it == loaded_.end()) {
    return;
  }
  released_.push_back(std::move(*it));
  loaded_.erase(it);
  CollectGarbage();
}

void FormSet::CollectGarbage() {
  if (host_.dispatch_depth() == 0) {
    released_.clear();
  }
}

void FormSet::ShowHelp(Form& form) {
  if (help_) {
    help_(form, form.HelpContextID());
  }
}

}  // namespace qbpd
