#include "ui/qt/view_overlay.h"

#include "platform/forms/photo_view_mapping.h"

namespace qbpd {
namespace {

// The same placement as the scripted user's, computed in one place.
PhotoViewMapping Plain(const ViewMapping& m) {
  PhotoViewMapping p;
  p.view_width = m.viewport.width();
  p.view_height = m.viewport.height();
  p.shown_width = m.shown.width();
  p.shown_height = m.shown.height();
  p.photo_width = m.photo.width();
  p.photo_height = m.photo.height();
  p.scroll_x = m.scroll.x();
  p.scroll_y = m.scroll.y();
  return p;
}

}  // namespace

QPoint ViewMapping::Origin() const {
  const PhotoViewMapping p = Plain(*this);
  return QPoint(p.OriginX(), p.OriginY());
}

QPointF ViewMapping::ViewToPhoto(QPointF view) const {
  const PhotoViewMapping p = Plain(*this);
  return QPointF(p.ViewToPhotoX(view.x()), p.ViewToPhotoY(view.y()));
}

QPointF ViewMapping::PhotoToView(QPointF photo_point) const {
  const PhotoViewMapping p = Plain(*this);
  return QPointF(p.PhotoToViewX(photo_point.x()),
                 p.PhotoToViewY(photo_point.y()));
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
  const PhotoViewScrollBars bars = LayOutPhotoViewScrollBars(
      widget.width(), widget.height(), shown.width(), shown.height(), bar);
  ScrollBarLayout layout;
  layout.horizontal = bars.horizontal;
  layout.vertical = bars.vertical;
  layout.viewport = QSize(bars.view_width, bars.view_height);
  return layout;
}

}  // namespace qbpd
