#ifndef QBPD_CORE_TOOLTIP_H_
#define QBPD_CORE_TOOLTIP_H_

#include "platform/forms/host.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

class Control;

// A rectangle in pixels of the window that holds it; right and bottom are
// one past the last pixel.
struct PixelRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  bool Contains(int x, int y) const {
    return x >= left && x < right && y >= top && y < bottom;
  }
  bool operator==(const PixelRect&) const = default;
};

// One tip: over a whole window, or over a rectangle of it.
struct ToolTipTool {
  int id = 0;
  // The window the tip belongs to: a control's display name ("imgUpload",
  // "txtQty(2)"), or "" for the form itself.
  std::string window;
  bool whole_window = false;
  PixelRect rect;  // for a rectangle tip
  std::string text;
  // The control a rectangle tip was made for by SetToolTips ("" otherwise).
  std::string source;
};

// The tooltip object of a form, without any toolkit: the tips of its
// windows and the timing they show with. A host reads it, and tells it where
// the pointer is; it answers which tip is up.
//
// Timing: a tip comes up once the pointer has rested over its tool for the
// initial delay, and goes after the pop-up time; moving within the same tool
// doesn't start it again, moving to another tool does.
class cToolTip {
 public:
  static constexpr int kMaxTipWidth = 300;  // pixels
  static constexpr int kInitialDelayMs = 500;
  static constexpr int kPopUpTimeMs = 2000;

  int MaxTipWidth() const { return kMaxTipWidth; }
  int InitialDelay() const { return kInitialDelayMs; }
  int PopUpTime() const { return kPopUpTimeMs; }

  // A tip over the whole of `control`. Setting it again replaces the text.
  // Returns the tool's id.
  int SetToolTipObj(const Control& control, const std::string& tip);
  // The same for a window known by name ("" for the form).
  int SetToolTipObj(std::string_view window, const std::string& tip);
  // A tip over the rectangle (left, top)-(right, bottom), in pixels of
  // `window`. Returns the new tool's id.
  int SetToolTipItem(std::string_view window,
                     int left,
                     int top,
                     int right,
                     int bottom,
                     const std::string& tip);
  // Moves the rectangle tip `id` of `window`. False, changing nothing, when
  // the window has no rectangle tip of that id.
  bool AjustItemRect(std::string_view window,
                     int left,
                     int top,
                     int right,
                     int bottom,
                     int id);

  // Marks tip `id` as made for the control named `source`.
  void SetSource(int id, const std::string& source);
  // Gives the tip `id` of `window` a new text. False when there is none.
  bool SetToolText(std::string_view window, int id, const std::string& tip);

  const std::vector<ToolTipTool>& Tools() const { return tools_; }
  const ToolTipTool* FindTool(std::string_view window, int id) const;
  // The tool under the point (x, y), in pixels of `window`: a rectangle tip
  // that holds it (the last one added wins), else the window's whole tip.
  const ToolTipTool* ToolAt(std::string_view window, int x, int y) const;

  // The pointer is at (x, y) pixels of `window` at `now_ms`.
  void PointerAt(std::string_view window, int x, int y, long long now_ms);
  // The pointer left the form.
  void PointerGone();
  // The tip on show at `now_ms`, or nullptr.
  const ToolTipTool* ShownTip(long long now_ms) const;

 private:
  std::vector<ToolTipTool> tools_;
  int next_id_ = 1;
  int hover_id_ = 0;  // 0: over no tool
  long long hover_since_ = 0;
};

// Gives each of `buttons` a rectangle tip on its container (the window that
// holds it) with the text of its Tag; its rectangle is its Left, Top, Width
// and Height in twips, in pixels of `twips_per_pixel`. A button with an
// empty Tag gets no tip. Called again (after a resize), a button's tip is
// moved to its new rectangle and takes its Tag anew (AjustItemRect), and is
// not added twice.
void SetToolTips(cToolTip& tips,
                 std::span<const Control* const> buttons,
                 int twips_per_pixel = kTwipsPerPixel);

}  // namespace qbpd

#endif  // QBPD_CORE_TOOLTIP_H_
