#include "platform/forms/controls.h"

#include "platform/forms/form.h"
#include "platform/forms/property_tables.h"
#include "platform/forms/runtime_error.h"

#include <algorithm>
#include <cctype>

namespace qbpd {
namespace {}  // namespace

// --- Label ---------------------------------------------------------------

Label::Label(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kLabel, std::move(name), index) {}

void Label::SetCaption(const std::string& v) {
  state_.caption = v;
  Changed();
}
void Label::SetAlignment(int v) {
  state_.alignment = v;
  Changed();
}
void Label::SetWordWrap(bool v) {
  state_.word_wrap = v;
  Changed();
}

const PropertyTable& Label::Properties() const {
  static const PropertyTable table = WithCommon(
      {RwProperty("Caption", &Label::Caption, &Label::SetCaption),
       RwProperty("Alignment", &Label::Alignment, &Label::SetAlignment),
       RwProperty("WordWrap", &Label::WordWrap, &Label::SetWordWrap)},
      CommonProperties());
  return table;
}

// --- TextBox -------------------------------------------------------------

TextBox::TextBox(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kTextBox, std::move(name), index) {}

void TextBox::SetText(const std::string& v) {
  bool differs = v != state_.text;
  state_.text = v;
  state_.sel_start = static_cast<int>(v.size());
  state_.sel_length = 0;
  Changed();
  if (differs) {
    Raise("Change");
  }
}

void TextBox::SetMaxLength(int v) {
  state_.max_length = std::max(0, v);
  Changed();
}

void TextBox::SetSelStart(int v) {
  int size = static_cast<int>(state_.text.size());
  state_.sel_start = std::clamp(v, 0, size);
  state_.sel_length = 0;
  Changed();
}

void TextBox::SetSelLength(int v) {
  int size = static_cast<int>(state_.text.size());
  state_.sel_length = std::clamp(v, 0, size - state_.sel_start);
  Changed();
}

std::string TextBox::SelText() const {
  return state_.text.substr(state_.sel_start, state_.sel_length);
}

void TextBox::SetSelText(const std::string& v) {
  std::string text = state_.text;
  text.replace(state_.sel_start, state_.sel_length, v);
  int caret = state_.sel_start + static_cast<int>(v.size());
  SetText(text);
  state_.sel_start = std::min(caret, static_cast<int>(state_.text.size()));
  state_.sel_length = 0;
}

void TextBox::SetLocked(bool v) {
  state_.locked = v;
  Changed();
}
void TextBox::SetPasswordChar(const std::string& v) {
  state_.password_char = v.substr(0, 1);
  Changed();
}
void TextBox::SetMultiLine(bool v) {
  state_.multi_line = v;
  Changed();
}

std::string TextBox::ShownText() const {
  if (state_.password_char.empty()) {
    return state_.text;
  }
  return std::string(state_.text.size(), state_.password_char[0]);
}

const PropertyTable& TextBox::Properties() const {
  static const PropertyTable table = WithCommon(
      {RwProperty("Text", &TextBox::Text, &TextBox::SetText),
       RwProperty("MaxLength", &TextBox::MaxLength, &TextBox::SetMaxLength),
       RwProperty("SelStart", &TextBox::SelStart, &TextBox::SetSelStart),
       RwProperty("SelLength", &TextBox::SelLength, &TextBox::SetSelLength),
       RwProperty("SelText", &TextBox::SelText, &TextBox::SetSelText),
       RwProperty("Locked", &TextBox::Locked, &TextBox::SetLocked),
       RwProperty("PasswordChar", &TextBox::PasswordChar,
                  &TextBox::SetPasswordChar),
       RwProperty("MultiLine", &TextBox::MultiLine, &TextBox::SetMultiLine)},
      CommonProperties());
  return table;
}

// --- CheckBox ------------------------------------------------------------

CheckBox::CheckBox(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kCheckBox, std::move(name), index) {}

void CheckBox::SetCaption(const std::string& v) {
  state_.caption = v;
  Changed();
}

void CheckBox::SetValue(int v) {
  if (v < 0 || v > 2) {
    throw RuntimeError(kErrInvalidCall,
                       "Invalid property value for " + DisplayName());
  }
  if (v == state_.value) {
    return;
  }
  state_.value = v;
  Changed();
  Raise("Click");
}

const PropertyTable& CheckBox::Properties() const {
  static const PropertyTable table = WithCommon(
      {RwProperty("Caption", &CheckBox::Caption, &CheckBox::SetCaption),
       RwProperty("Value", &CheckBox::Value, &CheckBox::SetValue)},
      CommonProperties());
  return table;
}

// --- OptionButton --------------------------------------------------------

OptionButton::OptionButton(Form& form, std::string name, int index)
    : StatefulControl(form,
                      ControlKind::kOptionButton,
                      std::move(name),
                      index) {}

void OptionButton::SetCaption(const std::string& v) {
  state_.caption = v;
  Changed();
}

void OptionButton::SetValue(bool v) {
  if (v == state_.value) {
    return;
  }
  state_.value = v;
  Changed();
  if (!v) {
    return;
  }
  for (Control* c : form().ControlsIn(Container())) {
    if (c != this && c->Kind() == ControlKind::kOptionButton) {
      auto* other = static_cast<OptionButton*>(c);
      if (other->state_.value) {
        other->state_.value = false;
        other->Changed();
      }
    }
  }
  Raise("Click");
}

const PropertyTable& OptionButton::Properties() const {
  static const PropertyTable table = WithCommon(
      {RwProperty("Caption", &OptionButton::Caption, &OptionButton::SetCaption),
       RwProperty("Value", &OptionButton::Value, &OptionButton::SetValue)},
      CommonProperties());
  return table;
}

// --- ComboBox and ListBox ------------------------------------------------

ListControl::ListControl(Form& form,
                         ControlKind kind,
                         std::string name,
                         int index)
    : StatefulControl(form, kind, std::move(name), index) {}

ComboBox::ComboBox(Form& form, std::string name, int index)
    : ListControl(form, ControlKind::kComboBox, std::move(name), index) {}

ListBox::ListBox(Form& form, std::string name, int index)
    : ListControl(form, ControlKind::kListBox, std::move(name), index) {}

void ListControl::CheckItem(int i) const {
  CheckRange(i, ListCount(), *this);
}

void ListControl::AddItem(const std::string& text, int at) {
  if (at < 0) {
    at = ListCount();
  }
  CheckRange(at, ListCount() + 1, *this);
  state_.items.insert(state_.items.begin() + at, ListState::Item{text});
  state_.new_index = at;
  if (state_.list_index >= at) {
    ++state_.list_index;
  }
  Changed();
}

void ListControl::RemoveItem(int i) {
  CheckItem(i);
  state_.items.erase(state_.items.begin() + i);
  if (state_.list_index == i) {
    state_.list_index = -1;
    state_.text.clear();
  } else if (state_.list_index > i) {
    --state_.list_index;
  }
  Changed();
}

void ListControl::Clear() {
  state_.items.clear();
  state_.list_index = -1;
  state_.new_index = -1;
  state_.text.clear();
  Changed();
}

std::string ListControl::List(int i) const {
  // Reading past the end gives an empty text, as the list does.
  if (i < 0 || i >= ListCount()) {
    return {};
  }
  return state_.items[i].text;
}

void ListControl::SetList(int i, const std::string& v) {
  CheckItem(i);
  state_.items[i].text = v;
  if (i == state_.list_index) {
    state_.text = v;
  }
  Changed();
}

long ListControl::ItemData(int i) const {
  CheckItem(i);
  return state_.items[i].data;
}

void ListControl::SetItemData(int i, long v) {
  CheckItem(i);
  state_.items[i].data = v;
  Changed();
}

bool ListControl::Selected(int i) const {
  CheckItem(i);
  return state_.items[i].selected;
}

void ListControl::SetSelected(int i, bool v) {
  CheckItem(i);
  if (state_.items[i].selected == v) {
    return;
  }
  state_.items[i].selected = v;
  Changed();
  EventArgs e;
  e.Item = i;
  Raise("ItemCheck", e);
}

void ListControl::SetListIndex(int v) {
  if (v < -1 || v >= ListCount()) {
    throw RuntimeError(
        kErrInvalidCall,
        "Invalid ListIndex " + std::to_string(v) + " of " + DisplayName());
  }
  bool differs = v != state_.list_index;
  state_.list_index = v;
  state_.text = v >= 0 ? state_.items[v].text : std::string();
  Changed();
  if (differs) {
    Raise("Click");
  }
}

void ListControl::SetStyle(int v) {
  state_.style = v;
  Changed();
}

void ListControl::SetText(const std::string& v) {
  bool differs = v != state_.text;
  int found = FindItem(v);
  state_.text = v;
  if (found >= 0 || Kind() == ControlKind::kListBox || state_.style == 2) {
    if (found >= 0 && found != state_.list_index) {
      SetListIndex(found);
      return;
    }
  } else {
    state_.list_index = -1;
  }
  Changed();
  if (differs && Kind() == ControlKind::kComboBox && state_.style == 0) {
    Raise("Change");
  }
}

int ListControl::FindItem(const std::string& text) const {
  for (int i = 0; i < ListCount(); ++i) {
    if (state_.items[i].text == text) {
      return i;
    }
  }
  return -1;
}

const PropertyTable& ListControl::Properties() const {
  static const PropertyTable table = WithCommon(
      {RwProperty("Text", &ListControl::Text, &ListControl::SetText),
       RwProperty("ListIndex", &ListControl::ListIndex,
                  &ListControl::SetListIndex),
       RoProperty("ListCount", &ListControl::ListCount),
       RoProperty("NewIndex", &ListControl::NewIndex),
       RwProperty("Style", &ListControl::Style, &ListControl::SetStyle),
       IndexedProperty("List", &ListControl::List, &ListControl::SetList),
       IndexedProperty("ItemData", &ListControl::ItemData,
                       &ListControl::SetItemData),
       IndexedProperty("Selected", &ListControl::Selected,
                       &ListControl::SetSelected)},
      CommonProperties());
  return table;
}

// --- CommandButton -------------------------------------------------------

CommandButton::CommandButton(Form& form, std::string name, int index)
    : StatefulControl(form,
                      ControlKind::kCommandButton,
                      std::move(name),
                      index) {}

void CommandButton::SetCaption(const std::string& v) {
  state_.caption = v;
  Changed();
}
void CommandButton::SetDefault(bool v) {
  state_.is_default = v;
  Changed();
}
void CommandButton::SetCancel(bool v) {
  state_.is_cancel = v;
  Changed();
}

const PropertyTable& CommandButton::Properties() const {
  static const PropertyTable table = WithCommon(
      {RwProperty("Caption", &CommandButton::Caption,
                  &CommandButton::SetCaption),
       RwProperty("Default", &CommandButton::Default,
                  &CommandButton::SetDefault),
       RwProperty("Cancel", &CommandButton::Cancel, &CommandButton::SetCancel)},
      CommonProperties());
  return table;
}

// --- PictureButton, PictureBox, Frame ------------------------------------

PictureButton::PictureButton(Form& form, std::string name, int index)
    : StatefulControl(form,
                      ControlKind::kPictureButton,
                      std::move(name),
                      index) {}

void PictureButton::SetPicture(const std::string& v) {
  state_.picture = v;
  Changed();
}
void PictureButton::SetStretch(bool v) {
  state_.stretch = v;
  Changed();
}

const PropertyTable& PictureButton::Properties() const {
  static const PropertyTable table =
      WithCommon({RwProperty("Picture", &PictureButton::Picture,
                             &PictureButton::SetPicture),
                  RwProperty("Stretch", &PictureButton::Stretch,
                             &PictureButton::SetStretch)},
                 CommonProperties());
  return table;
}

PictureBox::PictureBox(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kPictureBox, std::move(name), index) {}

void PictureBox::SetPicture(const std::string& v) {
  state_.picture = v;
  Changed();
}

const PropertyTable& PictureBox::Properties() const {
  static const PropertyTable table = WithCommon(
      {RwProperty("Picture", &PictureBox::Picture, &PictureBox::SetPicture)},
      CommonProperties());
  return table;
}

Frame::Frame(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kFrame, std::move(name), index) {}

void Frame::SetCaption(const std::string& v) {
  state_.caption = v;
  Changed();
}
void Frame::SetBorder(bool v) {
  state_.border = v;
  Changed();
}

const PropertyTable& Frame::Properties() const {
  static const PropertyTable table =
      WithCommon({RwProperty("Caption", &Frame::Caption, &Frame::SetCaption),
                  RwProperty("Border", &Frame::Border, &Frame::SetBorder)},
                 CommonProperties());
  return table;
}

// --- Shape, Line ---------------------------------------------------------

Shape::Shape(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kShape, std::move(name), index) {}

void Shape::SetShapeKind(int v) {
  state_.shape = v;
  Changed();
}
void Shape::SetBorderColor(long v) {
  state_.border_color = v;
  Changed();
}
void Shape::SetBorderWidth(int v) {
  state_.border_width = v;
  Changed();
}
void Shape::SetFillColor(long v) {
  state_.fill_color = v;
  Changed();
}
void Shape::SetFilled(bool v) {
  state_.filled = v;
  Changed();
}

const PropertyTable& Shape::Properties() const {
  static const PropertyTable table = WithCommon(
      {RwProperty("Shape", &Shape::ShapeKind, &Shape::SetShapeKind),
       RwProperty("BorderColor", &Shape::BorderColor, &Shape::SetBorderColor),
       RwProperty("BorderWidth", &Shape::BorderWidth, &Shape::SetBorderWidth),
       RwProperty("FillColor", &Shape::FillColor, &Shape::SetFillColor),
       RwProperty("Filled", &Shape::Filled, &Shape::SetFilled)},
      CommonProperties());
  return table;
}

Line::Line(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kLine, std::move(name), index) {}

void Line::SetX1(int v) {
  state_.x1 = v;
  Changed();
}
void Line::SetY1(int v) {
  state_.y1 = v;
  Changed();
}
void Line::SetX2(int v) {
  state_.x2 = v;
  Changed();
}
void Line::SetY2(int v) {
  state_.y2 = v;
  Changed();
}
void Line::SetBorderColor(long v) {
  state_.border_color = v;
  Changed();
}

const PropertyTable& Line::Properties() const {
  static const PropertyTable table = WithCommon(
      {RwProperty("X1", &Line::X1, &Line::SetX1),
       RwProperty("Y1", &Line::Y1, &Line::SetY1),
       RwProperty("X2", &Line::X2, &Line::SetX2),
       RwProperty("Y2", &Line::Y2, &Line::SetY2),
       RwProperty("BorderColor", &Line::BorderColor, &Line::SetBorderColor)},
      CommonProperties());
  return table;
}

}  // namespace qbpd
