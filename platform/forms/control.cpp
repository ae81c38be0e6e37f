#include "platform/forms/control.h"

#include "platform/forms/form.h"
#include "platform/forms/runtime_error.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace qbpd {
namespace {

constexpr std::array<std::pair<ControlKind, std::string_view>, 23> kKindNames{{
    {ControlKind::kLabel, "Label"},
    {ControlKind::kTextBox, "TextBox"},
    {ControlKind::kCheckBox, "CheckBox"},
    {ControlKind::kOptionButton, "OptionButton"},
    {ControlKind::kComboBox, "ComboBox"},
    {ControlKind::kListBox, "ListBox"},
    {ControlKind::kCommandButton, "CommandButton"},
    {ControlKind::kPictureButton, "PictureButton"},
    {ControlKind::kPictureBox, "PictureBox"},
    {ControlKind::kFrame, "Frame"},
    {ControlKind::kShape, "Shape"},
    {ControlKind::kLine, "Line"},
    {ControlKind::kTimer, "Timer"},
    {ControlKind::kMenu, "Menu"},
    {ControlKind::kScrollBar, "ScrollBar"},
    {ControlKind::kProgressBar, "ProgressBar"},
    {ControlKind::kSlider, "Slider"},
    {ControlKind::kTabStrip, "TabStrip"},
    {ControlKind::kThumbnail, "Thumbnail"},
    {ControlKind::kPhotoView, "PhotoView"},
    {ControlKind::kFolderTree, "FolderTree"},
    {ControlKind::kScreensaverPlayer, "ScreensaverPlayer"},
    {ControlKind::kWebView, "WebView"},
}};

}  // namespace

std::string_view KindName(ControlKind kind) {
  for (const auto& [k, name] : kKindNames) {
    if (k == kind) {
      return name;
    }
  }
  return "?";
}

const std::vector<ControlKind>& AllControlKinds() {
  static const std::vector<ControlKind> kinds = [] {
    std::vector<ControlKind> v;
    for (const auto& [k, name] : kKindNames) {
      v.push_back(k);
    }
    return v;
  }();
  return kinds;
}

Control::Control(Form& form, ControlKind kind, std::string name, int index)
    : form_(form), kind_(kind), name_(std::move(name)), index_(index) {
  form_.Register(this);
}

Control::~Control() {
  form_.Unregister(this);
}

std::string Control::DisplayName() const {
  if (index_ < 0) {
    return name_;
  }
  return name_ + "(" + std::to_string(index_) + ")";
}

void Control::SetLeft(Twips v) {
  common_.left = v;
  Changed();
}
void Control::SetTop(Twips v) {
  common_.top = v;
  Changed();
}
void Control::SetWidth(Twips v) {
  Move(common_.left, common_.top, v, common_.height);
}
void Control::SetHeight(Twips v) {
  Move(common_.left, common_.top, common_.width, v);
}
void Control::Move(Twips left, Twips top, Twips width, Twips height) {
  const bool resized = width != common_.width || height != common_.height;
  common_.left = left;
  common_.top = top;
  common_.width = width;
  common_.height = height;
  Changed();
  // A picture box tells its form when its size changed.
  if (resized && Kind() == ControlKind::kPictureBox) {
    Raise("Resize");
  }
}

void Control::SetVisible(bool v) {
  common_.visible = v;
  Changed();
}

void Control::SetEnabled(bool v) {
  common_.enabled = v;
  Changed();
}

bool Control::IsReachable() const {
  if (!form_.Visible() || !form_.Enabled()) {
    return false;
  }
  const Control* c = this;
  // A container chain can't loop in a well-formed form; the bound keeps a
  // broken one from hanging the check.
  for (int depth = 0; c != nullptr && depth < 64; ++depth) {
    if (!c->Visible() || !c->Enabled()) {
      return false;
    }
    if (c->Container().empty()) {
      return true;
    }
    c = form_.FindControl(c->Container());
  }
  return true;
}

void Control::SetTag(const std::string& v) {
  common_.tag = v;
  Changed();
}
void Control::SetToolTipText(const std::string& v) {
  common_.tool_tip_text = v;
  Changed();
}
void Control::SetForeColor(long v) {
  common_.fore_color = v;
  Changed();
}
void Control::SetBackColor(long v) {
  common_.back_color = v;
  Changed();
}
void Control::SetFontSize(double v) {
  common_.font.size = v;
  Changed();
}
void Control::SetFontBold(bool v) {
  common_.font.bold = v;
  Changed();
}
void Control::SetContainer(const std::string& v) {
  common_.container = v;
  Changed();
}

void Control::SetFocus() {
  Control* previous = form_.ActiveControl();
  if (previous == this) {
    return;
  }
  form_.SetActiveControl(this);
  if (previous != nullptr) {
    previous->Raise("LostFocus");
  }
  // A LostFocus handler may move the focus on by itself.
  if (form_.ActiveControl() == this) {
    Raise("GotFocus");
  }
}

const PropertyInfo* Control::FindProperty(std::string_view name) const {
  for (const PropertyInfo& p : Properties()) {
    if (p.name.size() == name.size() &&
        std::equal(p.name.begin(), p.name.end(), name.begin(),
                   [](char a, char b) {
                     return std::tolower(static_cast<unsigned char>(a)) ==
                            std::tolower(static_cast<unsigned char>(b));
                   })) {
      return &p;
    }
  }
  return nullptr;
}

Value Control::Property(std::string_view name, int item) const {
  const PropertyInfo* p = FindProperty(name);
  if (p == nullptr) {
    throw RuntimeError(kErrNoSuchProperty,
                       std::string(KindName(kind_)) + " " + DisplayName() +
                           " has no property " + std::string(name));
  }
  return p->get(*this, item);
}

void Control::SetProperty(std::string_view name, const Value& v, int item) {
  const PropertyInfo* p = FindProperty(name);
  if (p == nullptr) {
    throw RuntimeError(kErrNoSuchProperty,
                       std::string(KindName(kind_)) + " " + DisplayName() +
                           " has no property " + std::string(name));
  }
  if (!p->writable) {
    throw RuntimeError(kErrNoSuchProperty, "Property " + p->name + " of " +
                                               DisplayName() + " is read-only");
  }
  p->set(*this, v, item);
}

bool Control::Raise(std::string_view event, EventArgs& e) {
  e.Index = index_;
  return form_.Raise(*this, event, e);
}

bool Control::Raise(std::string_view event) {
  EventArgs e;
  return Raise(event, e);
}

void Control::CopyStateFrom(const Control& other) {
  common_ = other.common_;
  Changed();
}

PropertyTable Control::CommonProperties() {
  PropertyTable t;
  t.push_back(PropertyInfo{
      "Name", false, false,
      [](const Control& c, int) { return Value(c.Name()); }, nullptr});
  t.push_back(PropertyInfo{
      "Index", false, false,
      [](const Control& c, int) { return Value(c.Index()); }, nullptr});
  t.push_back(PropertyInfo{
      "Kind", false, false,
      [](const Control& c, int) { return Value(KindName(c.Kind())); },
      nullptr});
  t.push_back(RwProperty("Left", &Control::Left, &Control::SetLeft));
  t.push_back(RwProperty("Top", &Control::Top, &Control::SetTop));
  t.push_back(RwProperty("Width", &Control::Width, &Control::SetWidth));
  t.push_back(RwProperty("Height", &Control::Height, &Control::SetHeight));
  t.push_back(RwProperty("Visible", &Control::Visible, &Control::SetVisible));
  t.push_back(RwProperty("Enabled", &Control::Enabled, &Control::SetEnabled));
  t.push_back(RwProperty("Tag", &Control::Tag, &Control::SetTag));
  t.push_back(RwProperty("ToolTipText", &Control::ToolTipText,
                         &Control::SetToolTipText));
  t.push_back(
      RwProperty("ForeColor", &Control::ForeColor, &Control::SetForeColor));
  t.push_back(
      RwProperty("BackColor", &Control::BackColor, &Control::SetBackColor));
  t.push_back(
      RwProperty("FontSize", &Control::FontSize, &Control::SetFontSize));
  t.push_back(
      RwProperty("FontBold", &Control::FontBold, &Control::SetFontBold));
  t.push_back(
      RwProperty("Container", &Control::Container, &Control::SetContainer));
  return t;
}

}  // namespace qbpd
