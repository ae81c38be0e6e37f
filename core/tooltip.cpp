#include "core/tooltip.h"

#include "platform/forms/control.h"

#include <algorithm>

namespace qbpd {

int cToolTip::SetToolTipObj(const Control& control, const std::string& tip) {
  return SetToolTipObj(control.DisplayName(), tip);
}

int cToolTip::SetToolTipObj(std::string_view window, const std::string& tip) {
  for (ToolTipTool& tool : tools_) {
    if (tool.whole_window && tool.window == window) {
      tool.text = tip;
      return tool.id;
    }
  }
  ToolTipTool tool;
  tool.id = next_id_++;
  tool.window = std::string(window);
  tool.whole_window = true;
  tool.text = tip;
  tools_.push_back(std::move(tool));
  return tools_.back().id;
}

int cToolTip::SetToolTipItem(std::string_view window,
                             int left,
                             int top,
                             int right,
                             int bottom,
                             const std::string& tip) {
  ToolTipTool tool;
  tool.id = next_id_++;
  tool.window = std::string(window);
  tool.rect = PixelRect{left, top, right, bottom};
  tool.text = tip;
  tools_.push_back(std::move(tool));
  return tools_.back().id;
}

bool cToolTip::AjustItemRect(std::string_view window,
                             int left,
                             int top,
                             int right,
                             int bottom,
                             int id) {
  for (ToolTipTool& tool : tools_) {
    if (tool.id == id && tool.window == window && !tool.whole_window) {
      tool.rect = PixelRect{left, top, right, bottom};
      return true;
    }
  }
  return false;
}

void cToolTip::SetSource(int id, const std::string& source) {
  for (ToolTipTool& tool : tools_) {
    if (tool.id == id) {
      tool.source = source;
    }
  }
}

bool cToolTip::SetToolText(std::string_view window,
                           int id,
                           const std::string& tip) {
  for (ToolTipTool& tool : tools_) {
    if (tool.id == id && tool.window == window) {
      tool.text = tip;
      return true;
    }
  }
  return false;
}

const ToolTipTool* cToolTip::FindTool(std::string_view window, int id) const {
  auto it =
      std::find_if(tools_.begin(), tools_.end(), [&](const ToolTipTool& tool) {
        return tool.id == id && tool.window == window;
      });
  return it != tools_.end() ? &*it : nullptr;
}

const ToolTipTool* cToolTip::ToolAt(std::string_view window,
                                    int x,
                                    int y) const {
  const ToolTipTool* whole = nullptr;
  for (auto it = tools_.rbegin(); it != tools_.rend(); ++it) {
    if (it->window != window) {
      continue;
    }
    if (it->whole_window) {
      whole = &*it;
    } else if (it->rect.Contains(x, y)) {
      return &*it;
    }
  }
  return whole;
}

void cToolTip::PointerAt(std::string_view window,
                         int x,
                         int y,
                         long long now_ms) {
  const ToolTipTool* tool = ToolAt(window, x, y);
  const int id = tool != nullptr ? tool->id : 0;
  if (id != hover_id_) {
    hover_id_ = id;
    hover_since_ = now_ms;
  }
}

void cToolTip::PointerGone() {
  hover_id_ = 0;
}

const ToolTipTool* cToolTip::ShownTip(long long now_ms) const {
  if (hover_id_ == 0) {
    return nullptr;
  }
  const long long rested = now_ms - hover_since_;
  if (rested < kInitialDelayMs || rested >= kInitialDelayMs + kPopUpTimeMs) {
    return nullptr;
  }
  auto it =
      std::find_if(tools_.begin(), tools_.end(),
                   [this](const ToolTipTool& t) { return t.id == hover_id_; });
  if (it == tools_.end() || it->text.empty()) {
    return nullptr;
  }
  return &*it;
}

void SetToolTips(cToolTip& tips,
                 std::span<const Control* const> buttons,
                 int twips_per_pixel) {
  if (twips_per_pixel <= 0) {
    return;
  }
  for (const Control* button : buttons) {
    if (button == nullptr) {
      continue;
    }
    const int left = static_cast<int>(button->Left() / twips_per_pixel);
    const int top = static_cast<int>(button->Top() / twips_per_pixel);
    const int right =
        static_cast<int>((button->Left() + button->Width()) / twips_per_pixel);
    const int bottom =
        static_cast<int>((button->Top() + button->Height()) / twips_per_pixel);
    const std::string source = button->DisplayName();
    auto made = std::find_if(
        tips.Tools().begin(), tips.Tools().end(), [&](const ToolTipTool& t) {
          return t.source == source && t.window == button->Container();
        });
    if (made != tips.Tools().end()) {
      const int id = made->id;
      tips.AjustItemRect(button->Container(), left, top, right, bottom, id);
      tips.SetToolText(button->Container(), id, button->Tag());
      continue;
    }
    if (button->Tag().empty()) {
      continue;
    }
    const int id = tips.SetToolTipItem(button->Container(), left, top, right,
                                       bottom, button->Tag());
    tips.SetSource(id, source);
  }
}

}  // namespace qbpd
