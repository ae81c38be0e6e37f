#include "platform/forms/user_input.h"

#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/keys.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/user_input_internal.h"

namespace qbpd::user {
namespace detail {

void RequireNotBehindModal(const Form& f, const std::string& what) {
  Form* modal = f.host().ModalForm();
  if (modal != nullptr && modal != &f) {
    throw HostAbort(what + " can't be reached: form " + modal->Name() +
                    " is shown modal");
  }
}

void RequireReachable(const Control& c) {
  RequireNotBehindModal(c.form(), c.form().Name() + "." + c.DisplayName());
  if (!c.form().Visible()) {
    throw HostAbort(c.form().Name() + "." + c.DisplayName() +
                    " can't be reached: form " + c.form().Name() +
                    " is not shown");
  }
  if (!c.IsReachable()) {
    throw HostAbort(c.form().Name() + "." + c.DisplayName() +
                    " can't be reached: it or its container is " +
                    (c.Visible() ? "disabled" : "hidden"));
  }
}

bool TakesFocus(const Control& c) {
  switch (c.Kind()) {
    case ControlKind::kTextBox:
    case ControlKind::kCheckBox:
    case ControlKind::kOptionButton:
    case ControlKind::kComboBox:
    case ControlKind::kListBox:
    case ControlKind::kCommandButton:
    case ControlKind::kScrollBar:
    case ControlKind::kSlider:
    case ControlKind::kTabStrip:
    case ControlKind::kThumbnail:
    case ControlKind::kPhotoView:
    case ControlKind::kFolderTree:
    case ControlKind::kWebView:
      return true;
    case ControlKind::kLabel:
    case ControlKind::kPictureButton:
    case ControlKind::kPictureBox:
    case ControlKind::kFrame:
    case ControlKind::kShape:
    case ControlKind::kLine:
    case ControlKind::kTimer:
    case ControlKind::kMenu:
    case ControlKind::kProgressBar:
    case ControlKind::kScreensaverPlayer:
      return false;
  }
  return false;
}

void RaiseMouse(Control& c, std::string_view event, int button, int x, int y) {
  EventArgs e;
  e.Button = button;
  e.X = x;
  e.Y = y;
  c.Raise(event, e);
}

void ClickEffect(Control& control) {
  if (control.Kind() == ControlKind::kCheckBox) {
    auto& box = static_cast<CheckBox&>(control);
    box.SetValue(box.Value() == 1 ? 0 : 1);  // raises Click
    return;
  }
  if (control.Kind() == ControlKind::kOptionButton) {
    auto& option = static_cast<OptionButton&>(control);
    if (!option.Value()) {
      option.SetValue(true);  // raises Click
    }
    return;
  }
  if (control.Kind() == ControlKind::kThumbnail) {
    static_cast<Thumbnail&>(control).SelectThumbnail();
    return;
  }
  control.Raise("Click");
}

}  // namespace detail

namespace {

using detail::RaiseMouse;
using detail::RequireNotBehindModal;
using detail::RequireReachable;

// Clicks the visible, enabled command button with Default (or Cancel) set.
bool ClickButton(Form& form, bool want_default) {
  for (Control* c : form.Controls()) {
    if (c->Kind() != ControlKind::kCommandButton || !c->IsReachable()) {
      continue;
    }
    auto* b = static_cast<CommandButton*>(c);
    if (want_default ? b->Default() : b->Cancel()) {
      b->SetFocus();
      b->Raise("Click");
      return true;
    }
  }
  return false;
}

// Applies one key to a text box as its edit would.
void EditText(TextBox& box, const KeyStroke& key, int ascii) {
  if (box.Locked()) {
    return;
  }
  std::string text = box.Text();
  int start = box.SelStart();
  int length = box.SelLength();
  if (ascii == kKeyBack) {
    if (length > 0) {
      text.erase(start, length);
    } else if (start > 0) {
      // Step back over a whole UTF-8 character.
      int from = start - 1;
      while (from > 0 &&
             (static_cast<unsigned char>(text[from]) & 0xC0) == 0x80) {
        --from;
      }
      text.erase(from, start - from);
      start = from;
    }
    box.SetText(text);
    box.SetSelStart(start);
    return;
  }
  if (ascii < 32 && !(ascii == kKeyTab && box.MultiLine()) &&
      !(ascii == kKeyReturn && box.MultiLine())) {
    return;  // control codes type nothing into a single-line box
  }
  (void)key;
  std::string typed;
  AppendUtf8(typed, ascii == kKeyReturn ? '\n' : ascii);
  int max = box.MaxLength();
  if (max > 0 && static_cast<int>(text.size()) - length + 1 > max) {
    return;
  }
  text.replace(start, length, typed);
  box.SetText(text);
  box.SetSelStart(start + static_cast<int>(typed.size()));
}

void NavigateText(TextBox& box, int key_code) {
  int start = box.SelStart();
  int size = static_cast<int>(box.Text().size());
  switch (key_code) {
    case kKeyLeft:
      box.SetSelStart(std::max(0, start - 1));
      break;
    case kKeyRight:
      box.SetSelStart(std::min(size, start + box.SelLength() + 1));
      break;
    case kKeyHome:
      box.SetSelStart(0);
      break;
    case kKeyEnd:
      box.SetSelStart(size);
      break;
    case kKeyDelete:
      if (!box.Locked() && (box.SelLength() > 0 || start < size)) {
        std::string text = box.Text();
        text.erase(start, std::max(1, box.SelLength()));
        box.SetText(text);
        box.SetSelStart(start);
      }
      break;
    default:
      break;
  }
}

// Keys a text box keeps for its own editing even when a menu entry has them
// as its shortcut, as the desktop's edit boxes do: select all, copy, cut,
// paste, undo and redo, and the keys that move in or delete text.
bool EditKeyOfTextBox(const Control* target, const KeyStroke& key) {
  if (target == nullptr || target->Kind() != ControlKind::kTextBox) {
    return false;
  }
  if (key.shift == kCtrlMask) {
    switch (key.key_code) {
      case 'A':
      case 'C':
      case 'V':
      case 'X':
      case 'Y':
      case 'Z':
        return true;
      default:
        return false;
    }
  }
  switch (key.key_code) {
    case kKeyDelete:
    case kKeyBack:
    case kKeyHome:
    case kKeyEnd:
    case kKeyLeft:
    case kKeyRight:
      return (key.shift & kAltMask) == 0;
    default:
      return false;
  }
}

void Press(Form& form, Control* target, const KeyStroke& key) {
  // The window system's accelerators come before the form and its controls,
  // but for the keys a text box edits with.
  if (!EditKeyOfTextBox(target, key) && PressShortcut(form, key)) {
    return;
  }
  int key_code = key.key_code;
  if (form.KeyPreview()) {
    FormEvents::KeyDown(form, key_code, key.shift);
  }
  if (key_code != 0 && target != nullptr) {
    EventArgs e;
    e.KeyCode = key_code;
    e.Shift = key.shift;
    target->Raise("KeyDown", e);
    key_code = e.KeyCode;
    if (key_code != 0 && target->Kind() == ControlKind::kTextBox) {
      NavigateText(static_cast<TextBox&>(*target), key_code);
    }
  }
  if (key_code == kKeyF1) {
    FormEvents::Help(form);
  }
  int ascii = key.ascii;
  // A KeyDown handler that zeroed the key code swallowed the key. A
  // character without a key code of its own (an accented letter) still
  // types.
  const bool swallowed = key.key_code != 0 && key_code == 0;
  if (!swallowed && ascii != 0) {
    if (form.KeyPreview()) {
      FormEvents::KeyPress(form, ascii);
    }
    if (ascii != 0 && target != nullptr) {
      EventArgs e;
      e.KeyAscii = ascii;
      target->Raise("KeyPress", e);
      ascii = e.KeyAscii;
    }
    if (ascii != 0) {
      if (target != nullptr && target->Kind() == ControlKind::kTextBox) {
        EditText(static_cast<TextBox&>(*target), key, ascii);
      }
      bool multi_line_enter = ascii == kKeyReturn && target != nullptr &&
                              target->Kind() == ControlKind::kTextBox &&
                              static_cast<TextBox*>(target)->MultiLine();
      bool on_button =
          target != nullptr && target->Kind() == ControlKind::kCommandButton;
      if (ascii == kKeyReturn && !multi_line_enter) {
        if (on_button) {
          target->Raise("Click");
        } else {
          ClickButton(form, /*want_default=*/true);
        }
      } else if (ascii == kKeyEscape) {
        ClickButton(form, /*want_default=*/false);
      } else if (ascii == kKeySpace && on_button) {
        target->Raise("Click");
      }
    }
  }
  int up_code = key.key_code;
  if (form.KeyPreview()) {
    FormEvents::KeyUp(form, up_code, key.shift);
  }
  if (up_code != 0 && target != nullptr &&
      form.FindControl(target->Name(), target->Index()) == target) {
    EventArgs e;
    e.KeyCode = up_code;
    e.Shift = key.shift;
    target->Raise("KeyUp", e);
  }
}

}  // namespace

void MouseDown(Control& control, int button, int x, int y) {
  RequireReachable(control);
  RaiseMouse(control, "MouseDown", button, x, y);
}

void MouseUp(Control& control, int button, int x, int y) {
  RequireReachable(control);
  RaiseMouse(control, "MouseUp", button, x, y);
}

void MouseMove(Control& control, int x, int y, int buttons) {
  RequireReachable(control);
  RaiseMouse(control, "MouseMove", buttons, x, y);
}

void Click(Control& control) {
  if (control.Kind() == ControlKind::kMenu) {
    PickMenu(static_cast<Menu&>(control));
    return;
  }
  RequireReachable(control);
  if (detail::TakesFocus(control)) {
    control.SetFocus();
  }
  int x = control.Width() / 2;
  int y = control.Height() / 2;
  RaiseMouse(control, "MouseDown", 1, x, y);
  RaiseMouse(control, "MouseUp", 1, x, y);
  detail::ClickEffect(control);
}

void DblClick(Control& control) {
  Click(control);
  control.Raise("DblClick");
}

void TypeKeys(Control& control, std::string_view keys) {
  RequireReachable(control);
  std::vector<KeyStroke> strokes = ParseKeys(keys);
  control.SetFocus();
  Form& form = control.form();
  for (const KeyStroke& k : strokes) {
    // A key may close the form or move the focus; follow the focus.
    if (form.IsUnloaded() || !form.Visible()) {
      break;
    }
    Press(form, form.ActiveControl(), k);
  }
}

void PressKeys(Form& form, std::string_view keys) {
  RequireNotBehindModal(form, "Form " + form.Name());
  if (!form.Visible()) {
    throw HostAbort("Keys can't reach form " + form.Name() +
                    ": it is not shown");
  }
  for (const KeyStroke& k : ParseKeys(keys)) {
    if (form.IsUnloaded() || !form.Visible()) {
      break;
    }
    Press(form, form.ActiveControl(), k);
  }
}

void ChooseItem(Control& list, int index) {
  RequireReachable(list);
  if (list.Kind() != ControlKind::kComboBox &&
      list.Kind() != ControlKind::kListBox) {
    throw HostAbort(list.DisplayName() + " is not a list");
  }
  auto& l = static_cast<ListControl&>(list);
  if (index < 0 || index >= l.ListCount()) {
    throw HostAbort(list.DisplayName() + " has no entry " +
                    std::to_string(index));
  }
  list.SetFocus();
  l.SetListIndex(index);
}

void ChooseItem(Control& list, const std::string& text) {
  if (list.Kind() != ControlKind::kComboBox &&
      list.Kind() != ControlKind::kListBox) {
    throw HostAbort(list.DisplayName() + " is not a list");
  }
  int index = static_cast<ListControl&>(list).FindItem(text);
  if (index < 0) {
    throw HostAbort(list.DisplayName() + " has no entry \"" + text + "\"");
  }
  ChooseItem(list, index);
}

void CheckItem(Control& list, int index, bool checked) {
  RequireReachable(list);
  if (list.Kind() != ControlKind::kListBox) {
    throw HostAbort(list.DisplayName() + " is not a list with check marks");
  }
  auto& l = static_cast<ListControl&>(list);
  if (index < 0 || index >= l.ListCount()) {
    throw HostAbort(list.DisplayName() + " has no entry " +
                    std::to_string(index));
  }
  list.SetFocus();
  l.SetSelected(index, checked);
  if (l.ListIndex() != index) {
    l.SetListIndex(index);
  } else {
    l.Raise("Click");
  }
}

void SetCheck(Control& control, bool checked) {
  RequireReachable(control);
  if (control.Kind() == ControlKind::kCheckBox) {
    auto& box = static_cast<CheckBox&>(control);
    if ((box.Value() == 1) != checked) {
      Click(control);
    }
    return;
  }
  if (control.Kind() == ControlKind::kThumbnail) {
    auto& thumb = static_cast<Thumbnail&>(control);
    if (thumb.Checked() != checked) {
      thumb.SetCheck(checked, /*raise_event=*/true);
    }
    return;
  }
  throw HostAbort(control.DisplayName() + " has no check box");
}

void ScrollTo(Control& control, int value) {
  RequireReachable(control);
  if (control.Kind() != ControlKind::kScrollBar &&
      control.Kind() != ControlKind::kSlider) {
    throw HostAbort(control.DisplayName() + " is not a scroll bar or slider");
  }
  auto& range = static_cast<RangeControl&>(control);
  if (value < std::min(range.Min(), range.Max()) ||
      value > std::max(range.Min(), range.Max())) {
    throw HostAbort(control.DisplayName() + " can't go to " +
                    std::to_string(value));
  }
  control.Raise("Scroll");
  range.SetValue(value);
}

void SelectTab(Control& tab_strip, int tab) {
  RequireReachable(tab_strip);
  if (tab_strip.Kind() != ControlKind::kTabStrip) {
    throw HostAbort(tab_strip.DisplayName() + " is not a tab strip");
  }
  auto& strip = static_cast<TabStrip&>(tab_strip);
  if (tab < 1 || tab > strip.TabCount()) {
    throw HostAbort(tab_strip.DisplayName() + " has no tab " +
                    std::to_string(tab));
  }
  strip.SetSelectedTab(tab);
}

void SelectFolder(Control& tree, const std::string& folder) {
  RequireReachable(tree);
  if (tree.Kind() != ControlKind::kFolderTree) {
    throw HostAbort(tree.DisplayName() + " is not a folder tree");
  }
  tree.SetFocus();
  RaiseMouse(tree, "MouseDown", 1, 0, 0);
  static_cast<FolderTree&>(tree).SetSelectedFolder(folder);
  RaiseMouse(tree, "MouseUp", 1, 0, 0);
}

void PickMenu(Menu& entry) {
  RequireNotBehindModal(entry.form(), "Menu " + entry.DisplayName());
  if (!entry.form().Visible()) {
    throw HostAbort("Menu " + entry.DisplayName() + " can't be reached: form " +
                    entry.form().Name() + " is not shown");
  }
  std::vector<Menu*> chain;
  for (Menu* m = entry.ParentMenu(); m != nullptr; m = m->ParentMenu()) {
    chain.insert(chain.begin(), m);
  }
  // Opening a menu raises its Click, where the program sets up its entries.
  for (Menu* m : chain) {
    if (!m->Visible() || !m->Enabled()) {
      throw HostAbort("Menu " + m->DisplayName() + " is " +
                      (m->Visible() ? "disabled" : "hidden"));
    }
    m->Raise("Click");
  }
  if (!entry.Visible() || !entry.Enabled()) {
    throw HostAbort("Menu entry " + entry.DisplayName() + " is " +
                    (entry.Visible() ? "disabled" : "hidden"));
  }
  entry.Raise("Click");
}

void CloseForm(Form& form) {
  RequireNotBehindModal(form, "Form " + form.Name());
  if (!form.Visible()) {
    throw HostAbort("Form " + form.Name() + " is not shown");
  }
  form.Unload(kUnloadFromUser);
}

}  // namespace qbpd::user
