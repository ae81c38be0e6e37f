#include "platform/forms/photo_view_mapping.h"

#include <algorithm>

namespace qbpd {
namespace {

int AxisOrigin(int view, int shown, int scroll) {
  return shown < view ? (view - shown) / 2 : -scroll;
}

double AxisScale(int shown, int photo) {
  return photo > 0 && shown > 0 ? static_cast<double>(shown) / photo : 1.0;
}

}  // namespace

int PhotoViewMapping::OriginX() const {
  return AxisOrigin(view_width, shown_width, scroll_x);
}

int PhotoViewMapping::OriginY() const {
  return AxisOrigin(view_height, shown_height, scroll_y);
}

double PhotoViewMapping::ScaleX() const {
  return AxisScale(shown_width, photo_width);
}

double PhotoViewMapping::ScaleY() const {
  return AxisScale(shown_height, photo_height);
}

double PhotoViewMapping::ViewToPhotoX(double view_x) const {
  return (view_x - OriginX()) / ScaleX();
}

double PhotoViewMapping::ViewToPhotoY(double view_y) const {
  return (view_y - OriginY()) / ScaleY();
}

double PhotoViewMapping::PhotoToViewX(double photo_x) const {
  return photo_x * ScaleX() + OriginX();
}

double PhotoViewMapping::PhotoToViewY(double photo_y) const {
  return photo_y * ScaleY() + OriginY();
}

PhotoViewScrollBars LayOutPhotoViewScrollBars(int widget_width,
                                              int widget_height,
                                              int shown_width,
                                              int shown_height,
                                              int bar) {
  PhotoViewScrollBars layout;
  // A bar on one axis takes room from the other, which may then need its
  // own: two passes settle it.
  layout.vertical = shown_height > widget_height;
  layout.horizontal = shown_width > widget_width - (layout.vertical ? bar : 0);
  if (layout.horizontal && !layout.vertical) {
    layout.vertical = shown_height > widget_height - bar;
  }
  layout.view_width = std::max(0, widget_width - (layout.vertical ? bar : 0));
  layout.view_height =
      std::max(0, widget_height - (layout.horizontal ? bar : 0));
  return layout;
}

}  // namespace qbpd
