// Scroll bars, progress bars, sliders and tab strips.
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/property_tables.h"

#include <algorithm>

namespace qbpd {

// --- ScrollBar, ProgressBar, Slider --------------------------------------

RangeControl::RangeControl(Form& form,
                           ControlKind kind,
                           std::string name,
                           int index)
    : StatefulControl(form, kind, std::move(name), index) {}

void RangeControl::SetMin(int v) {
  state_.min = v;
  Changed();
}
void RangeControl::SetMax(int v) {
  state_.max = v;
  Changed();
}

void RangeControl::SetValue(int v) {
  int lo = std::min(state_.min, state_.max);
  int hi = std::max(state_.min, state_.max);
  if (v < lo || v > hi || v == state_.value) {
    return;
  }
  state_.value = v;
  Changed();
  if (RaisesChange()) {
    Raise("Change");
  }
}

void RangeControl::SetSmallChange(int v) {
  state_.small_change = v;
  Changed();
}
void RangeControl::SetLargeChange(int v) {
  state_.large_change = v;
  Changed();
}

const PropertyTable& RangeControl::Properties() const {
  static const PropertyTable table = WithCommon(
      {RwProperty("Min", &RangeControl::Min, &RangeControl::SetMin),
       RwProperty("Max", &RangeControl::Max, &RangeControl::SetMax),
       RwProperty("Value", &RangeControl::Value, &RangeControl::SetValue),
       RwProperty("SmallChange", &RangeControl::SmallChange,
                  &RangeControl::SetSmallChange),
       RwProperty("LargeChange", &RangeControl::LargeChange,
                  &RangeControl::SetLargeChange)},
      CommonProperties());
  return table;
}

ScrollBar::ScrollBar(Form& form, std::string name, int index)
    : RangeControl(form, ControlKind::kScrollBar, std::move(name), index) {
  state_.max = 32767;
}

void ScrollBar::SetVertical(bool v) {
  state_.vertical = v;
  Changed();
}

const PropertyTable& ScrollBar::Properties() const {
  static const PropertyTable table = [] {
    PropertyTable t = WithCommon(
        {RwProperty("Min", &RangeControl::Min, &RangeControl::SetMin),
         RwProperty("Max", &RangeControl::Max, &RangeControl::SetMax),
         RwProperty("Value", &RangeControl::Value, &RangeControl::SetValue),
         RwProperty("SmallChange", &RangeControl::SmallChange,
                    &RangeControl::SetSmallChange),
         RwProperty("LargeChange", &RangeControl::LargeChange,
                    &RangeControl::SetLargeChange)},
        CommonProperties());
    t.push_back(
        RwProperty("Vertical", &ScrollBar::Vertical, &ScrollBar::SetVertical));
    return t;
  }();
  return table;
}

ProgressBar::ProgressBar(Form& form, std::string name, int index)
    : RangeControl(form, ControlKind::kProgressBar, std::move(name), index) {}

Slider::Slider(Form& form, std::string name, int index)
    : RangeControl(form, ControlKind::kSlider, std::move(name), index) {
  state_.max = 10;
}

// --- TabStrip ------------------------------------------------------------

TabStrip::TabStrip(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kTabStrip, std::move(name), index) {}

void TabStrip::AddTab(const std::string& caption) {
  state_.tabs.push_back(caption);
  if (state_.selected == 0) {
    state_.selected = 1;
  }
  Changed();
}

std::string TabStrip::TabCaption(int i) const {
  CheckRange(i - 1, TabCount(), *this);
  return state_.tabs[i - 1];
}

void TabStrip::SetTabCaption(int i, const std::string& v) {
  CheckRange(i - 1, TabCount(), *this);
  state_.tabs[i - 1] = v;
  Changed();
}

void TabStrip::SetSelectedTab(int v) {
  CheckRange(v - 1, TabCount(), *this);
  if (v == state_.selected) {
    return;
  }
  state_.selected = v;
  Changed();
  Raise("Click");
}

const PropertyTable& TabStrip::Properties() const {
  static const PropertyTable table = WithCommon(
      {RoProperty("TabCount", &TabStrip::TabCount),
       RwProperty("SelectedTab", &TabStrip::SelectedTab,
                  &TabStrip::SetSelectedTab),
       IndexedProperty("Tab", &TabStrip::TabCaption, &TabStrip::SetTabCaption)},
      CommonProperties());
  return table;
}

}  // namespace qbpd
