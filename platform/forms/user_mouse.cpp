// The mouse at a point of a control: clicks, drags and moves, in twips or,
// on a photo view, in photo pixels.
#include "platform/forms/controls.h"
#include "platform/forms/display_control.h"
#include "platform/forms/form.h"
#include "platform/forms/photo_view_mapping.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/user_input.h"
#include "platform/forms/user_input_internal.h"
#include "platform/forms/value.h"

#include <algorithm>
#include <cmath>

namespace qbpd::user {
namespace {

using detail::RaiseMouse;
using detail::RequireReachable;

constexpr int kLeftButton = 1;

std::string NameOf(const Control& c) {
  return c.form().Name() + "." + c.DisplayName();
}

std::string PointText(double x, double y) {
  return FormatNumber(x) + "," + FormatNumber(y);
}

// The photo of a photo view, or nothing when it shows none.
DisplayControl* PhotoOf(Control& control) {
  if (control.Kind() != ControlKind::kPhotoView) {
    return nullptr;
  }
  DisplayControl* model = static_cast<PhotoView&>(control).Display();
  return model != nullptr && model->HasPhoto() ? model : nullptr;
}

// Where the photo stands in the view now, as the desktop widget lays it out
// (the control's size in whole pixels, scroll bars where the photo is
// larger, scrolled to the top-left).
PhotoViewMapping MappingOf(const Control& control, const DisplayControl& m) {
  PhotoViewMapping mapping;
  mapping.shown_width = std::max(0, m.ShownWidth());
  mapping.shown_height = std::max(0, m.ShownHeight());
  mapping.photo_width = std::max(0, m.PhotoWidth());
  mapping.photo_height = std::max(0, m.PhotoHeight());
  // Whole pixels, as the control passes its size to the model.
  const PhotoViewScrollBars bars = LayOutPhotoViewScrollBars(
      static_cast<int>(control.Width() / kTwipsPerPixel),
      static_cast<int>(control.Height() / kTwipsPerPixel), mapping.shown_width,
      mapping.shown_height, kDisplayScrollBarPx);
  mapping.view_width = bars.view_width;
  mapping.view_height = bars.view_height;
  return mapping;
}

bool InsideControl(const Control& c, double x, double y) {
  return x >= 0 && y >= 0 && x < c.Width() && y < c.Height();
}

bool InsideView(const PhotoViewMapping& m, int view_x, int view_y) {
  return view_x >= 0 && view_y >= 0 && view_x < m.view_width &&
         view_y < m.view_height;
}

// A view pixel as an event point: twips, and the photo point under it.
PointOnControl FromView(const PhotoViewMapping& m, int view_x, int view_y) {
  PointOnControl p;
  p.x = view_x * kTwipsPerPixel;
  p.y = view_y * kTwipsPerPixel;
  p.on_photo_view = true;
  p.photo_x = m.ViewToPhotoX(view_x);
  p.photo_y = m.ViewToPhotoY(view_y);
  return p;
}

// The press of a drag or click: where it went, whether a tool took it.
struct Press {
  DisplayControl* photo = nullptr;
  bool taken = false;
};

Press PressAt(Control& control, const PointOnControl& at) {
  RequireReachable(control);
  if (detail::TakesFocus(control)) {
    control.SetFocus();
  }
  Press press;
  RaiseMouse(control, "MouseDown", kLeftButton, at.x, at.y);
  if (at.on_photo_view) {
    press.photo = PhotoOf(control);
    press.taken =
        press.photo != nullptr &&
        press.photo->ToolMouseDown(at.photo_x, at.photo_y, kLeftButton);
  }
  return press;
}

// Lets go at `at`; Click when the pointer is still over the control.
void ReleaseAt(Control& control, const Press& press, const PointOnControl& at) {
  if (press.taken && PhotoOf(control) == press.photo) {
    press.photo->ToolMouseUp(at.photo_x, at.photo_y, kLeftButton);
  }
  RaiseMouse(control, "MouseUp", kLeftButton, at.x, at.y);
  bool over = InsideControl(control, at.x, at.y);
  if (at.on_photo_view) {
    DisplayControl* photo = PhotoOf(control);
    over = !press.taken &&
           (photo == nullptr ||
            InsideView(MappingOf(control, *photo), at.x / kTwipsPerPixel,
                       at.y / kTwipsPerPixel));
  }
  if (over &&
      control.form().FindControl(control.Name(), control.Index()) == &control) {
    detail::ClickEffect(control);
  }
}

}  // namespace

PointOnControl Locate(Control& control, const ControlPoint& point) {
  if (!point.photo) {
    PointOnControl p;
    p.x = static_cast<int>(std::lround(point.x));
    p.y = static_cast<int>(std::lround(point.y));
    if (!InsideControl(control, p.x, p.y)) {
      throw HostAbort("Point " + PointText(point.x, point.y) + " is not on " +
                      NameOf(control) + ", which is " +
                      FormatNumber(control.Width()) + " x " +
                      FormatNumber(control.Height()) + " twips");
    }
    return p;
  }
  if (control.Kind() != ControlKind::kPhotoView) {
    throw HostAbort(NameOf(control) +
                    " is not a photo view: its points are in twips");
  }
  DisplayControl* photo = PhotoOf(control);
  if (photo == nullptr) {
    throw HostAbort(NameOf(control) + " shows no photo");
  }
  const PhotoViewMapping m = MappingOf(control, *photo);
  // The mouse stands on a whole view pixel: the one nearest the point.
  const int view_x = static_cast<int>(std::lround(m.PhotoToViewX(point.x)));
  const int view_y = static_cast<int>(std::lround(m.PhotoToViewY(point.y)));
  const bool on_photo = point.x >= 0 && point.y >= 0 &&
                        point.x <= m.photo_width && point.y <= m.photo_height;
  if (!on_photo || !InsideView(m, view_x, view_y)) {
    const double left = std::max(0.0, m.ViewToPhotoX(0));
    const double top = std::max(0.0, m.ViewToPhotoY(0));
    const double right =
        std::min<double>(m.photo_width, m.ViewToPhotoX(m.view_width));
    const double bottom =
        std::min<double>(m.photo_height, m.ViewToPhotoY(m.view_height));
    throw HostAbort(
        "Photo point " + PointText(point.x, point.y) + " is not on view in " +
        NameOf(control) + ": the photo is " + std::to_string(m.photo_width) +
        " x " + std::to_string(m.photo_height) + " pixels and the view shows " +
        PointText(left, top) + " to " + PointText(right, bottom));
  }
  return FromView(m, view_x, view_y);
}

void ClickAt(Control& control, const ControlPoint& point) {
  RequireReachable(control);
  const PointOnControl at = Locate(control, point);
  Press press = PressAt(control, at);
  ReleaseAt(control, press, at);
}

void DblClickAt(Control& control, const ControlPoint& point) {
  ClickAt(control, point);
  control.Raise("DblClick");
}

void Drag(Control& control,
          const ControlPoint& from,
          const ControlPoint& to,
          int steps) {
  RequireReachable(control);
  steps = std::max(1, steps);
  const PointOnControl start = Locate(control, from);
  // The end may lie outside the control (the mouse leaves it while the
  // button is held), but a photo point must still be on the photo.
  PointOnControl end;
  if (to.photo) {
    DisplayControl* photo = PhotoOf(control);
    if (photo == nullptr) {
      throw HostAbort(NameOf(control) + " shows no photo");
    }
    const PhotoViewMapping m = MappingOf(control, *photo);
    end = FromView(m, static_cast<int>(std::lround(m.PhotoToViewX(to.x))),
                   static_cast<int>(std::lround(m.PhotoToViewY(to.y))));
  } else {
    end.x = static_cast<int>(std::lround(to.x));
    end.y = static_cast<int>(std::lround(to.y));
  }
  // The screen stays put; the control may move under the mouse.
  const double left0 = control.Left();
  const double top0 = control.Top();
  auto at_step = [&](int i) {
    PointOnControl p;
    const double f = static_cast<double>(i) / steps;
    const double screen_x = left0 + std::round(start.x + (end.x - start.x) * f);
    const double screen_y = top0 + std::round(start.y + (end.y - start.y) * f);
    p.x = static_cast<int>(std::lround(screen_x - control.Left()));
    p.y = static_cast<int>(std::lround(screen_y - control.Top()));
    if (start.on_photo_view) {
      if (DisplayControl* photo = PhotoOf(control)) {
        p = FromView(MappingOf(control, *photo), p.x / kTwipsPerPixel,
                     p.y / kTwipsPerPixel);
      }
    }
    return p;
  };
  Press press = PressAt(control, start);
  Form& form = control.form();
  auto alive = [&] {
    return !form.IsUnloaded() &&
           form.FindControl(control.Name(), control.Index()) == &control;
  };
  for (int i = 1; i <= steps && alive(); ++i) {
    const PointOnControl p = at_step(i);
    if (press.taken && PhotoOf(control) == press.photo) {
      press.photo->ToolMouseMove(p.photo_x, p.photo_y, kLeftButton);
    }
    RaiseMouse(control, "MouseMove", kLeftButton, p.x, p.y);
  }
  if (alive()) {
    ReleaseAt(control, press, at_step(steps));
  }
}

void Hover(Control& control, const ControlPoint& point) {
  RequireReachable(control);
  const PointOnControl at = Locate(control, point);
  if (at.on_photo_view) {
    if (DisplayControl* photo = PhotoOf(control)) {
      photo->ToolMouseMove(at.photo_x, at.photo_y, 0);
    }
  }
  RaiseMouse(control, "MouseMove", 0, at.x, at.y);
}

}  // namespace qbpd::user
