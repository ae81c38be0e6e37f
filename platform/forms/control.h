#ifndef QBPD_PLATFORM_FORMS_CONTROL_H_
#define QBPD_PLATFORM_FORMS_CONTROL_H_

#include "platform/forms/host.h"
#include "platform/forms/value.h"

#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace qbpd {

class Form;

// Every kind of control the program's forms use.
enum class ControlKind {
  kLabel,
  kTextBox,
  kCheckBox,
  kOptionButton,
  kComboBox,
  kListBox,
  kCommandButton,
  kPictureButton,
  kPictureBox,
  kFrame,
  kShape,
  kLine,
  kTimer,
  kMenu,
  kScrollBar,
  kProgressBar,
  kSlider,
  kTabStrip,
  kThumbnail,
  kPhotoView,
  kFolderTree,
  kScreensaverPlayer,
  kWebView,
};

// The kind's name as scripts and docs write it ("Label", "TextBox", ...).
std::string_view KindName(ControlKind kind);
// Every kind, in declaration order.
const std::vector<ControlKind>& AllControlKinds();

// The arguments of an event. Handlers read what their event carries and may
// write the by-reference ones (KeyAscii, KeyCode, Cancel, Handled).
struct EventArgs {
  int Index = -1;    // member of a control array; -1 for a single control
  int KeyAscii = 0;  // KeyPress: set to 0 to swallow the key
  int KeyCode = 0;   // KeyDown, KeyUp: set to 0 to swallow the key
  int Shift = 0;     // 1 Shift, 2 Ctrl, 4 Alt
  int Button = 0;    // mouse events: 1 left, 2 right
  int Item = -1;     // ItemCheck: the list item whose check mark changed
  int X = 0;         // mouse events, twips from the control's corner
  int Y = 0;
  int Delta = 0;   // MouseWheel: notches turned, positive away from the user
  int Cancel = 0;  // QueryUnload, Unload: nonzero refuses
  int UnloadMode = 0;    // QueryUnload: 0 the user closed, 1 the program did
  bool Handled = false;  // component events that answer by reference
  std::string Text;      // component events that carry text (a path, a URL)
};

using Handler = std::function<void(EventArgs&)>;

// One property of a control kind, declared once and read by reflection
// (the scripted driver, the desktop renderer, the docs).
struct PropertyInfo {
  std::string name;
  bool indexed = false;  // takes an item number: List(i), ItemData(i)
  bool writable = true;
  std::function<Value(const Control&, int)> get;
  std::function<void(Control&, const Value&, int)> set;
};
using PropertyTable = std::vector<PropertyInfo>;

// Properties every control has.
struct CommonState {
  Twips left = 0;
  Twips top = 0;
  Twips width = 0;
  Twips height = 0;
  bool visible = true;
  bool enabled = true;
  std::string tag;
  std::string tool_tip_text;
  long fore_color = 0x000000;
  long back_color = 0xFFFFFF;
  Font font;
  std::string container;  // name of the frame or picture box; "" the form
};

// A control: a plain state holder with the program's name (and index, for a
// member of a control array), registered with its form for reflection and
// events. Setting a property that the program's runtime answers with an event
// (a text box's Text raises Change, a check box's Value raises Click) raises
// it here, so that the program and the user see the same behaviour.
class Control {
 public:
  Control(Form& form, ControlKind kind, std::string name, int index = -1);
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;
  virtual ~Control();

  const std::string& Name() const { return name_; }
  // The index in its control array, or -1.
  int Index() const { return index_; }
  ControlKind Kind() const { return kind_; }
  Form& form() const { return form_; }
  // "txtQty(3)" for an array member, "lblError" otherwise.
  std::string DisplayName() const;

  // Geometry in twips; a rule that halves a length keeps the half.
  Twips Left() const { return common_.left; }
  Twips Top() const { return common_.top; }
  Twips Width() const { return common_.width; }
  Twips Height() const { return common_.height; }
  void SetLeft(Twips v);
  void SetTop(Twips v);
  void SetWidth(Twips v);
  void SetHeight(Twips v);
  void Move(Twips left, Twips top, Twips width, Twips height);

  bool Visible() const { return common_.visible; }
  virtual void SetVisible(bool v);
  bool Enabled() const { return common_.enabled; }
  virtual void SetEnabled(bool v);
  // Visible and enabled, together with its containers and its form: whether
  // a person could reach it now.
  bool IsReachable() const;

  const std::string& Tag() const { return common_.tag; }
  void SetTag(const std::string& v);
  const std::string& ToolTipText() const { return common_.tool_tip_text; }
  void SetToolTipText(const std::string& v);
  long ForeColor() const { return common_.fore_color; }
  void SetForeColor(long v);
  long BackColor() const { return common_.back_color; }
  void SetBackColor(long v);
  const Font& font() const { return common_.font; }
  double FontSize() const { return common_.font.size; }
  void SetFontSize(double v);
  bool FontBold() const { return common_.font.bold; }
  void SetFontBold(bool v);
  const std::string& Container() const { return common_.container; }
  void SetContainer(const std::string& v);

  // Gives the focus to this control: LostFocus on the one that had it, then
  // GotFocus here.
  void SetFocus();

  // Reflection: reads or writes a property by name. An unknown name is a
  // RuntimeError that names it; `item` is the item number of an indexed one.
  Value Property(std::string_view name, int item = -1) const;
  void SetProperty(std::string_view name, const Value& v, int item = -1);
  const PropertyInfo* FindProperty(std::string_view name) const;
  virtual const PropertyTable& Properties() const = 0;

  // Raises `event` on this control's handler (if the form has one).
  bool Raise(std::string_view event, EventArgs& e);
  bool Raise(std::string_view event);

  // Bumped by every change, so that a renderer can tell what to redraw.
  unsigned long long revision() const { return revision_; }

  // Copies every property but the name and index from `other`, which is of
  // the same kind, without raising events: how a control array loads a new
  // member from member 0.
  virtual void CopyStateFrom(const Control& other);

 protected:
  void Changed() { ++revision_; }
  static PropertyTable CommonProperties();

 private:
  Form& form_;
  ControlKind kind_;
  std::string name_;
  int index_;
  CommonState common_;
  unsigned long long revision_ = 0;
};

// Builds a property entry from a getter and a setter of a control class.
template <class C, class R, class P>
PropertyInfo RwProperty(std::string name,
                        R (C::*get)() const,
                        void (C::*set)(P)) {
  using Arg = std::remove_cvref_t<P>;
  return PropertyInfo{std::move(name), false, true,
                      [get](const Control& c, int) {
                        return Value((static_cast<const C&>(c).*get)());
                      },
                      [set](Control& c, const Value& v, int) {
                        (static_cast<C&>(c).*set)(v.As<Arg>());
                      }};
}

template <class C, class R>
PropertyInfo RoProperty(std::string name, R (C::*get)() const) {
  return PropertyInfo{std::move(name), false, false,
                      [get](const Control& c, int) {
                        return Value((static_cast<const C&>(c).*get)());
                      },
                      nullptr};
}

// An indexed property: getter and setter take the item number first.
template <class C, class R, class P>
PropertyInfo IndexedProperty(std::string name,
                             R (C::*get)(int) const,
                             void (C::*set)(int, P)) {
  using Arg = std::remove_cvref_t<P>;
  return PropertyInfo{std::move(name), true, true,
                      [get](const Control& c, int i) {
                        return Value((static_cast<const C&>(c).*get)(i));
                      },
                      [set](Control& c, const Value& v, int i) {
                        (static_cast<C&>(c).*set)(i, v.As<Arg>());
                      }};
}

template <class C, class R>
PropertyInfo IndexedRoProperty(std::string name, R (C::*get)(int) const) {
  return PropertyInfo{std::move(name), true, false,
                      [get](const Control& c, int i) {
                        return Value((static_cast<const C&>(c).*get)(i));
                      },
                      nullptr};
}

// A control whose own properties (those of its kind) live in one State struct,
// so that copying a member of a control array is one assignment.
template <class State>
class StatefulControl : public Control {
 public:
  using Control::Control;

  void CopyStateFrom(const Control& other) override {
    Control::CopyStateFrom(other);
    state_ = static_cast<const StatefulControl&>(other).state_;
    Changed();
  }

 protected:
  State state_;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_CONTROL_H_
