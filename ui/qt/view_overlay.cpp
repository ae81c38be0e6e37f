#include "ui/qt/view_overlay.h"

namespace qbpd {
namespace {

int AxisOrigin(int view, int shown, int scroll) {
  return shown < view ? (view - shown) / 2 : -scroll;
}

double AxisScale(int shown, int photo) {
  return photo > 0 && shown > 0 ? static_cast<double>(shown) / photo : 1.0;
}

}  // namespace

QPoint ViewMapping::Origin() const {
  return QPoint(AxisOrigin(viewport.width(), shown.width(), scroll.x()),
                AxisOrigin(viewport.height(), shown.height(), scroll.y()));
}

QPointF ViewMapping::ViewToPhoto(QPointF view) const {
  const QPoint o = Origin();
  return QPointF(
      (view.x() - o.x()) / AxisScale(shown.width(), photo.width()),
      (view.y() - o.y()) / AxisScale(shown.height(), photo.height()));
}

QPointF ViewMapping::PhotoToView(QPointF photo_point) const {
  const QPoint o = Origin();
  return QPointF(
      photo_point.x() * AxisScale(shown.width(), photo.width()) + o.x(),
      photo_point.y() * AxisScale(shown.height(), photo.height()) + o.y());
}

QRectF ViewMapping::PhotoToView(const QRectF& photo_rect) const {
  return QRectF(PhotoToView(photo_rect.topLeft()),
                PhotoToView(photo_rect.bottomRight()));
}

QRect ViewMapping::VisibleShownRect() const {
  if (shown.isEmpty() || viewport.isEmpty()) {
    return {};
  }
  const QPoint o = Origin();
  const QRect on_view(-o.x(), -o.y(), viewport.width(), viewport.height());
  return on_view.intersected(QRect(QPoint(0, 0), shown));
}

bool ViewMapping::OnPhoto(QPointF view) const {
  const QPointF p = ViewToPhoto(view);
  return !photo.isEmpty() && p.x() >= 0 && p.y() >= 0 &&
         p.x() < photo.width() && p.y() < photo.height();
}

ScrollBarLayout LayOutScrollBars(QSize widget, QSize shown, int bar) {
  ScrollBarLayout layout;
  // A bar on one axis takes room from the other, which may then need its
  // own: two passes settle it.
  layout.vertical = shown.height() > widget.height();
  layout.horizontal =
      shown.width() > widget.width() - (layout.vertical ? bar : 0);
  if (layout.horizontal && !layout.vertical) {
    layout.vertical = shown.height() > widget.height() - bar;
  }
  layout.viewport = QSize(widget.width() - (layout.vertical ? bar : 0),
                          widget.height() - (layout.horizontal ? bar : 0))
                        .expandedTo(QSize(0, 0));
  return layout;
}

}  // namespace qbpd
