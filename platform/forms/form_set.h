#ifndef QBPD_PLATFORM_FORMS_FORM_SET_H_
#define QBPD_PLATFORM_FORMS_FORM_SET_H_

#include "platform/forms/form.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

class Host;

// The program's forms by name: how to make each, and the ones loaded now.
// Using a form that isn't loaded makes a new one and runs its Form_Load, as
// the program's runtime does. An unloaded form is destroyed once no event
// handler is on the stack, so that a handler may unload its own form.
class FormSet {
 public:
  using Factory = std::function<std::unique_ptr<Form>()>;

  explicit FormSet(Host& host);
  ~FormSet();

  // Declares a form. F must have `static constexpr std::string_view kName`.
  void Register(std::string name, Factory factory);
  template <class F>
  void Register(std::function<std::unique_ptr<F>()> factory) {
    Register(std::string(F::kName),
             [factory]() -> std::unique_ptr<Form> { return factory(); });
  }
  bool IsRegistered(std::string_view name) const;
  std::vector<std::string> RegisteredNames() const;

  // The loaded form of that name, loading it first when needed. An unknown
  // name is a RuntimeError.
  Form& Get(std::string_view name);
  template <class F>
  F& Get() {
    return static_cast<F&>(Get(F::kName));
  }
  // The loaded form of that name, or nullptr; never loads.
  Form* Find(std::string_view name) const;
  template <class F>
  F* Find() const {
    return static_cast<F*>(Find(F::kName));
  }
  // Loaded forms, in the order they were loaded.
  std::vector<Form*> Loaded() const;

  // Called by Form::Unload.
  void Release(Form& form);
  // Destroys released forms if no handler is running.
  void CollectGarbage();

  // Who opens the help when F1 reaches a form: it receives the form and the
  // form's HelpContextID. Without one, F1 does nothing.
  using HelpHandler = std::function<void(Form& form, int context)>;
  void SetHelpHandler(HelpHandler handler) { help_ = std::move(handler); }
  // Opens the help for `form` through the help handler, if there is one.
  void ShowHelp(Form& form);

 private:
  Host& host_;
  std::map<std::string, Factory, std::less<>> factories_;
  std::vector<std::unique_ptr<Form>> loaded_;
  std::vector<std::unique_ptr<Form>> released_;
  HelpHandler help_;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_FORM_SET_H_
