// Timers and menu entries.
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/property_tables.h"

#include <algorithm>

namespace qbpd {

// --- Timer ---------------------------------------------------------------

Timer::Timer(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kTimer, std::move(name), index) {
  // A timer made by the form starts disabled; the form enables what it needs.
  Control::SetEnabled(false);
}

Timer::~Timer() {
  form().host().TimerChanged(*this, /*removed=*/true);
}

void Timer::SetInterval(int v) {
  if (v < 0) {
    throw RuntimeError(kErrInvalidCall,
                       "Invalid interval for " + DisplayName());
  }
  state_.interval = v;
  Changed();
  form().host().TimerChanged(*this, /*removed=*/false);
}

void Timer::SetEnabled(bool v) {
  Control::SetEnabled(v);
  form().host().TimerChanged(*this, /*removed=*/false);
}

bool Timer::IsRunning() const {
  return Enabled() && state_.interval > 0 && form().IsLoaded();
}

const PropertyTable& Timer::Properties() const {
  static const PropertyTable table = WithCommon(
      {RwProperty("Interval", &Timer::Interval, &Timer::SetInterval)},
      CommonProperties());
  return table;
}

// --- Menu ----------------------------------------------------------------

Menu::Menu(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kMenu, std::move(name), index) {}

void Menu::SetCaption(const std::string& v) {
  state_.caption = v;
  Changed();
}
void Menu::SetShortcut(const std::string& v) {
  state_.shortcut = v;
  Changed();
}
void Menu::SetChecked(bool v) {
  state_.checked = v;
  Changed();
}

Menu* Menu::ParentMenu() const {
  if (Container().empty()) {
    return nullptr;
  }
  Control* c = form().FindControl(Container());
  if (c == nullptr || c->Kind() != ControlKind::kMenu) {
    return nullptr;
  }
  return static_cast<Menu*>(c);
}

std::vector<Menu*> Menu::Entries() const {
  std::vector<Menu*> out;
  for (Control* c : form().ControlsIn(Name())) {
    if (c->Kind() == ControlKind::kMenu) {
      out.push_back(static_cast<Menu*>(c));
    }
  }
  return out;
}

char Menu::AccessKey() const {
  const std::string& c = state_.caption;
  for (size_t i = 0; i + 1 < c.size(); ++i) {
    if (c[i] == '&') {
      if (c[i + 1] == '&') {
        ++i;  // "&&" is a literal ampersand
        continue;
      }
      return static_cast<char>(
          std::toupper(static_cast<unsigned char>(c[i + 1])));
    }
  }
  return 0;
}

const PropertyTable& Menu::Properties() const {
  static const PropertyTable table =
      WithCommon({RwProperty("Caption", &Menu::Caption, &Menu::SetCaption),
                  RwProperty("Shortcut", &Menu::Shortcut, &Menu::SetShortcut),
                  RwProperty("Checked", &Menu::Checked, &Menu::SetChecked)},
                 CommonProperties());
  return table;
}

}  // namespace qbpd
