#ifndef QBPD_PLATFORM_FORMS_FORM_H_
#define QBPD_PLATFORM_FORMS_FORM_H_

#include "platform/forms/control.h"
#include "platform/forms/host.h"
#include "platform/forms/named_values.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qbpd {

class FormSet;

// How Unload was asked for, as QueryUnload reports it.
inline constexpr int kUnloadFromUser = 0;  // the window's close box
inline constexpr int kUnloadFromCode = 1;

// Window states.
inline constexpr int kWindowNormal = 0;
inline constexpr int kWindowMinimized = 1;
inline constexpr int kWindowMaximized = 2;

// A window of the program: a state holder with named controls and event
// handlers, and no toolkit in it. A derived class declares its controls as
// members (they register themselves here), binds its handlers with On(), and
// overrides the life-cycle events it needs.
//
// Life cycle: a FormSet creates the form and runs Form_Load; Show makes it
// visible (Resize, then Activate) modelessly or modally; Hide hides it;
// Unload asks QueryUnload and Unload, either of which may refuse, and then
// the form is gone: its fields die with it, and the next use makes a new one.
class Form {
 public:
  Form(Host& host, std::string name);
  Form(const Form&) = delete;
  Form& operator=(const Form&) = delete;
  virtual ~Form();

  const std::string& Name() const { return name_; }
  Host& host() const { return host_; }

  // --- controls ---------------------------------------------------------
  // The control of that name (and index, for an array member). An unknown
  // name or index is a RuntimeError that names it.
  Control& control(std::string_view name, int index = -1) const;
  Control* FindControl(std::string_view name, int index = -1) const;
  // Every control, in the order they were made (array members as loaded).
  const std::vector<Control*>& Controls() const { return controls_; }
  // The controls whose Container is `container` ("" for the form itself).
  std::vector<Control*> ControlsIn(std::string_view container) const;
  Control* ActiveControl() const { return active_control_; }

  // --- named fields -----------------------------------------------------
  // The form's own m-variables that it declared with Field, by name, for the
  // headless driver and the tests (mbFitToWidth, miLastLoadedControl). An
  // unknown name is a RuntimeError that names the form.
  bool HasField(std::string_view name) const { return fields_.Has(name); }
  Value FieldValue(std::string_view name) const { return fields_.Get(name); }
  void SetFieldValue(std::string_view name, const Value& v) {
    fields_.Set(name, v);
  }
  std::vector<std::string> FieldNames() const { return fields_.Names(); }

  // --- events -----------------------------------------------------------
  // Binds a handler to an event of a control (or of every member of a
  // control array, which then receives EventArgs::Index).
  void On(std::string_view control, std::string_view event, Handler handler);
  template <class F>
  void On(std::string_view control, std::string_view event, void (F::*fn)());
  template <class F>
  void On(std::string_view control,
          std::string_view event,
          void (F::*fn)(EventArgs&));
  // A handler of an array's event that takes the member's index.
  template <class F>
  void On(std::string_view control, std::string_view event, void (F::*fn)(int));
  bool HasHandler(std::string_view control, std::string_view event) const;
  // Runs the handler of `event` on `control`, if there is one. A handler that
  // throws does not end the program: the error is handed to the host and the
  // run goes on (HostAbort alone passes through).
  bool Raise(const Control& control, std::string_view event, EventArgs& e);
  // Runs `fn` as an event handler would run: counted in the host's dispatch
  // depth, with its errors caught.
  void Dispatch(std::string_view where, const std::function<void()>& fn);

  // --- life cycle -------------------------------------------------------
  // Runs Form_Load once; FormSet calls it when it makes the form.
  void Load();
  bool IsLoaded() const { return loaded_ && !unloaded_; }
  bool IsUnloaded() const { return unloaded_; }
  void Show(bool modal = false);
  void Hide();
  // Asks QueryUnload, then Unload; true when the form went away.
  bool Unload(int unload_mode = kUnloadFromCode);
  // Takes the form away without its QueryUnload and Unload events, as the
  // end of the process does.
  void Discard();
  bool Visible() const { return visible_; }
  bool IsModal() const { return modal_; }

  // Opens `menu` as a pop-up at (x, y) twips; returns after the pick.
  void PopupMenu(Menu& menu, int x, int y);

  // --- the window -------------------------------------------------------
  const std::string& Caption() const { return caption_; }
  void SetCaption(const std::string& v);
  int Left() const { return left_; }
  int Top() const { return top_; }
  int Width() const { return width_; }
  int Height() const { return height_; }
  // Moving or sizing a shown form raises Resize when the size changed.
  void Move(int left, int top, int width, int height);
  void SetWidth(int v) { Move(left_, top_, v, height_); }
  void SetHeight(int v) { Move(left_, top_, width_, v); }
  void SetLeft(int v) { Move(v, top_, width_, height_); }
  void SetTop(int v) { Move(left_, v, width_, height_); }
  int WindowState() const { return window_state_; }
  void SetWindowState(int v);
  bool Enabled() const { return enabled_; }
  void SetEnabled(bool v);
  // The window's border: 2 (sizable, the default) or 0 (none). A form with
  // no border shown maximised covers the whole screen.
  int BorderStyle() const { return border_style_; }
  void SetBorderStyle(int v) { border_style_ = v; }
  // With KeyPreview the form sees every key before its controls do.
  bool KeyPreview() const { return key_preview_; }
  void SetKeyPreview(bool v) { key_preview_ = v; }
  // The topic of the help that F1 opens on this form; 0 for the help's
  // contents.
  int HelpContextID() const { return help_context_id_; }
  void SetHelpContextID(int v) { help_context_id_ = v; }
  unsigned long long revision() const { return revision_; }

  // Reflection on the form's own properties (Caption, Left, Top, Width,
  // Height, WindowState, BorderStyle, Visible, Enabled, KeyPreview,
  // HelpContextID).
  Value Property(std::string_view name) const;
  void SetProperty(std::string_view name, const Value& v);

  // --- used by the runtime ----------------------------------------------
  void Register(Control* control);
  void Unregister(Control* control);
  void SetActiveControl(Control* control) { active_control_ = control; }
  void AttachTo(FormSet* set) { set_ = set; }
  // Called by the host when it makes the form visible or hides it.
  void HostShown(bool modal);
  void HostHidden();

  // The tip that the form's tooltip object shows at (x, y), in pixels of
  // `window` (a control's display name, "" for the form); "" for none. A
  // form without a tooltip object has none.
  virtual std::string ToolTipAt(std::string_view window, int x, int y) const {
    (void)window;
    (void)x;
    (void)y;
    return {};
  }

 protected:
  // Declares one of the form's member variables by its name (a bool, int,
  // long, long long, double or std::string), as controls register
  // themselves; a form lists its fields once, in its constructor.
  template <class T>
  void Field(std::string name, T& field) {
    fields_.Declare(std::move(name), field);
  }

  // Life-cycle events; the defaults do nothing.
  virtual void Form_Load() {}
  virtual void Form_Activate() {}
  virtual void Form_Resize() {}
  virtual void Form_QueryUnload(int& Cancel, int UnloadMode) {
    (void)Cancel;
    (void)UnloadMode;
  }
  virtual void Form_Unload(int& Cancel) { (void)Cancel; }
  // Keys seen first when KeyPreview is set.
  virtual void Form_KeyDown(int& KeyCode, int Shift) {
    (void)KeyCode;
    (void)Shift;
  }
  virtual void Form_KeyPress(int& KeyAscii) { (void)KeyAscii; }
  virtual void Form_KeyUp(int& KeyCode, int Shift) {
    (void)KeyCode;
    (void)Shift;
  }

 private:
  friend class FormEvents;
  using HandlerKey = std::pair<std::string, std::string>;

  Host& host_;
  std::string name_;
  NamedValues fields_;
  FormSet* set_ = nullptr;
  std::vector<Control*> controls_;
  std::map<std::pair<std::string, int>, Control*, std::less<>> by_name_;
  std::map<HandlerKey, Handler, std::less<>> handlers_;
  Control* active_control_ = nullptr;
  std::string caption_;
  int left_ = 0;
  int top_ = 0;
  int width_ = 4800;
  int height_ = 3600;
  int window_state_ = kWindowNormal;
  bool enabled_ = true;
  bool key_preview_ = false;
  int border_style_ = 2;
  int help_context_id_ = 0;
  bool loaded_ = false;
  bool unloaded_ = false;
  bool visible_ = false;
  bool modal_ = false;
  bool activated_ = false;
  unsigned long long revision_ = 0;
};

// Access to a form's life-cycle events for the runtime (hosts and user
// input), which raise them as a window system would.
class FormEvents {
 public:
  static void KeyDown(Form& f, int& key_code, int shift);
  static void KeyPress(Form& f, int& key_ascii);
  static void KeyUp(Form& f, int& key_code, int shift);
  static void Resize(Form& f);
  static void Activate(Form& f);
  // F1 reached the form and no KeyDown handler dropped it: asks the form's
  // set to open the help at the form's HelpContextID.
  static void Help(Form& f);
};

template <class F>
void Form::On(std::string_view control,
              std::string_view event,
              void (F::*fn)()) {
  F* self = static_cast<F*>(this);
  On(control, event, [self, fn](EventArgs&) { (self->*fn)(); });
}

template <class F>
void Form::On(std::string_view control,
              std::string_view event,
              void (F::*fn)(EventArgs&)) {
  F* self = static_cast<F*>(this);
  On(control, event, [self, fn](EventArgs& e) { (self->*fn)(e); });
}

template <class F>
void Form::On(std::string_view control,
              std::string_view event,
              void (F::*fn)(int)) {
  F* self = static_cast<F*>(this);
  On(control, event, [self, fn](EventArgs& e) { (self->*fn)(e.Index); });
}

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_FORM_H_
