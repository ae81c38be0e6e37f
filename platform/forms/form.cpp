#include "platform/forms/form.h"

#include "platform/forms/controls.h"
#include "platform/forms/form_set.h"
#include "platform/forms/runtime_error.h"

#include <algorithm>
#include <exception>

namespace qbpd {

Form::Form(Host& host, std::string name)
    : host_(host), name_(std::move(name)), fields_("Form " + name_) {}

Form::~Form() {
  // Controls are members of the derived class and are gone by now; drop any
  // that were registered from elsewhere.
  controls_.clear();
  by_name_.clear();
}

Control& Form::control(std::string_view name, int index) const {
  Control* c = FindControl(name, index);
  if (c == nullptr) {
    std::string what = std::string(name);
    if (index >= 0) {
      what += "(" + std::to_string(index) + ")";
    }
    throw RuntimeError(kErrNoSuchControl,
                       "Form " + name_ + " has no control " + what);
  }
  return *c;
}

Control* Form::FindControl(std::string_view name, int index) const {
  auto it =
      by_name_.find(std::pair<std::string, int>(std::string(name), index));
  if (it != by_name_.end()) {
    return it->second;
  }
  // A lone name may refer to member 0 of an array, as containers do.
  if (index < 0) {
    it = by_name_.find(std::pair<std::string, int>(std::string(name), 0));
    if (it != by_name_.end()) {
      return it->second;
    }
  }
  return nullptr;
}

std::vector<Control*> Form::ControlsIn(std::string_view container) const {
  std::vector<Control*> out;
  for (Control* c : controls_) {
    if (c->Container() == container) {
      out.push_back(c);
    }
  }
  return out;
}

void Form::Register(Control* control) {
  auto key = std::make_pair(control->Name(), control->Index());
  if (by_name_.count(key) != 0) {
    throw RuntimeError(
        kErrElementExists,
        "Form " + name_ + " has two controls named " + control->DisplayName());
  }
  by_name_.emplace(std::move(key), control);
  controls_.push_back(control);
  ++revision_;
}

void Form::Unregister(Control* control) {
  // A member unloaded during its own event is destroyed later; by then a new
  // member may hold its name and index.
  auto it = by_name_.find(std::make_pair(control->Name(), control->Index()));
  if (it != by_name_.end() && it->second == control) {
    by_name_.erase(it);
  }
  controls_.erase(std::remove(controls_.begin(), controls_.end(), control),
                  controls_.end());
  if (active_control_ == control) {
    active_control_ = nullptr;
  }
  ++revision_;
}

void Form::On(std::string_view control,
              std::string_view event,
              Handler handler) {
  handlers_[HandlerKey(std::string(control), std::string(event))] =
      std::move(handler);
}

bool Form::HasHandler(std::string_view control, std::string_view event) const {
  return handlers_.count(
             HandlerKey(std::string(control), std::string(event))) != 0;
}

bool Form::Raise(const Control& control, std::string_view event, EventArgs& e) {
  auto it = handlers_.find(HandlerKey(control.Name(), std::string(event)));
  if (it == handlers_.end()) {
    return false;
  }
  // Copy the handler: it may unload the control (or rebind) while it runs.
  Handler handler = it->second;
  std::string where =
      name_ + "." + control.DisplayName() + "_" + std::string(event);
  Dispatch(where, [&] { handler(e); });
  return true;
}

void Form::Dispatch(std::string_view where, const std::function<void()>& fn) {
  struct DepthGuard {
    Host& host;
    explicit DepthGuard(Host& h) : host(h) { host.EnterDispatch(); }
    ~DepthGuard() { host.LeaveDispatch(); }
  } guard(host_);
  try {
    fn();
  } catch (const HostAbort&) {
    throw;
  } catch (const std::exception& ex) {
    host_.HandlerFailed(std::string(where), ex.what());
  } catch (...) {
    host_.HandlerFailed(std::string(where), "unknown error");
  }
}

void Form::Load() {
  if (loaded_) {
    return;
  }
  loaded_ = true;
  host_.FormLoaded(*this);
  Dispatch(name_ + ".Form_Load", [this] { Form_Load(); });
}

void Form::Show(bool modal) {
  if (unloaded_) {
    throw RuntimeError(kErrNoSuchForm, "Form " + name_ + " is unloaded");
  }
  Load();
  if (unloaded_) {
    return;  // Form_Load unloaded it
  }
  host_.ShowForm(*this, modal);
}

void Form::HostShown(bool modal) {
  bool was_visible = visible_;
  visible_ = true;
  modal_ = modal;
  ++revision_;
  if (!was_visible) {
    FormEvents::Resize(*this);
  }
  if (!activated_ || !was_visible) {
    activated_ = true;
    FormEvents::Activate(*this);
  }
}

void Form::HostHidden() {
  visible_ = false;
  modal_ = false;
  ++revision_;
}

void Form::Hide() {
  if (!visible_) {
    return;
  }
  host_.HideForm(*this);
}

bool Form::Unload(int unload_mode) {
  if (unloaded_) {
    return true;
  }
  int cancel = 0;
  Dispatch(name_ + ".Form_QueryUnload",
           [&] { Form_QueryUnload(cancel, unload_mode); });
  if (cancel != 0 || unloaded_) {
    return unloaded_;
  }
  Dispatch(name_ + ".Form_Unload", [&] { Form_Unload(cancel); });
  if (cancel != 0 || unloaded_) {
    return unloaded_;
  }
  Discard();
  return true;
}

void Form::Discard() {
  if (unloaded_) {
    return;
  }
  unloaded_ = true;
  if (visible_) {
    host_.HideForm(*this);
  }
  // Timers stop with their form.
  for (Control* c : controls_) {
    if (c->Kind() == ControlKind::kTimer) {
      host_.TimerChanged(static_cast<Timer&>(*c), /*removed=*/true);
    }
  }
  host_.FormUnloaded(*this);
  if (set_ != nullptr) {
    set_->Release(*this);
  }
}

void Form::PopupMenu(Menu& menu, int x, int y) {
  host_.PopupMenu(*this, menu, x, y);
}

void Form::SetCaption(const std::string& v) {
  caption_ = v;
  ++revision_;
}

void Form::Move(int left, int top, int width, int height) {
  bool resized = width != width_ || height != height_;
  left_ = left;
  top_ = top;
  width_ = width;
  height_ = height;
  ++revision_;
  if (resized && visible_) {
    FormEvents::Resize(*this);
  }
}

void Form::SetWindowState(int v) {
  if (v == window_state_) {
    return;
  }
  window_state_ = v;
  ++revision_;
  if (visible_) {
    FormEvents::Resize(*this);
  }
}

void Form::SetEnabled(bool v) {
  enabled_ = v;
  ++revision_;
}

Value Form::Property(std::string_view name) const {
  if (name == "Caption") {
    return caption_;
  }
  if (name == "Left") {
    return left_;
  }
  if (name == "Top") {
    return top_;
  }
  if (name == "Width") {
    return width_;
  }
  if (name == "Height") {
    return height_;
  }
  if (name == "WindowState") {
    return window_state_;
  }
  if (name == "Visible") {
    return visible_;
  }
  if (name == "Enabled") {
    return enabled_;
  }
  if (name == "KeyPreview") {
    return key_preview_;
  }
  if (name == "BorderStyle") {
    return border_style_;
  }
  if (name == "HelpContextID") {
    return help_context_id_;
  }
  if (name == "Name") {
    return name_;
  }
  throw RuntimeError(kErrNoSuchProperty,
                     "Form " + name_ + " has no property " + std::string(name));
}

void Form::SetProperty(std::string_view name, const Value& v) {
  if (name == "Caption") {
    SetCaption(v.ToText());
  } else if (name == "Left") {
    SetLeft(static_cast<int>(v.ToLong()));
  } else if (name == "Top") {
    SetTop(static_cast<int>(v.ToLong()));
  } else if (name == "Width") {
    SetWidth(static_cast<int>(v.ToLong()));
  } else if (name == "Height") {
    SetHeight(static_cast<int>(v.ToLong()));
  } else if (name == "WindowState") {
    SetWindowState(static_cast<int>(v.ToLong()));
  } else if (name == "Enabled") {
    SetEnabled(v.ToBool());
  } else if (name == "KeyPreview") {
    SetKeyPreview(v.ToBool());
  } else if (name == "BorderStyle") {
    SetBorderStyle(static_cast<int>(v.ToLong()));
  } else if (name == "HelpContextID") {
    SetHelpContextID(static_cast<int>(v.ToLong()));
  } else if (name == "Visible") {
    if (v.ToBool()) {
      Show();
    } else {
      Hide();
    }
  } else {
    throw RuntimeError(
        kErrNoSuchProperty,
        "Form " + name_ + " has no writable property " + std::string(name));
  }
}

void FormEvents::KeyDown(Form& f, int& key_code, int shift) {
  f.Dispatch(f.name_ + ".Form_KeyDown",
             [&] { f.Form_KeyDown(key_code, shift); });
}

void FormEvents::KeyPress(Form& f, int& key_ascii) {
  f.Dispatch(f.name_ + ".Form_KeyPress", [&] { f.Form_KeyPress(key_ascii); });
}

void FormEvents::KeyUp(Form& f, int& key_code, int shift) {
  f.Dispatch(f.name_ + ".Form_KeyUp", [&] { f.Form_KeyUp(key_code, shift); });
}

void FormEvents::Resize(Form& f) {
  f.Dispatch(f.name_ + ".Form_Resize", [&] { f.Form_Resize(); });
}

void FormEvents::Activate(Form& f) {
  f.Dispatch(f.name_ + ".Form_Activate", [&] { f.Form_Activate(); });
}

void FormEvents::Help(Form& f) {
  if (f.set_ == nullptr) {
    return;
  }
  f.Dispatch(f.name_ + " help", [&] { f.set_->ShowHelp(f); });
}

}  // namespace qbpd
