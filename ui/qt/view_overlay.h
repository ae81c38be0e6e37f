#ifndef QBPD_UI_QT_VIEW_OVERLAY_H_
#define QBPD_UI_QT_VIEW_OVERLAY_H_

#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <Qt>

#include <functional>
#include <optional>
#include <utility>

class QPainter;

namespace qbpd {

// Where the photo stands in the photo view. Three measures meet here: view
// pixels (the drawing area, the widget less its scroll bars), shown pixels
// (the photo at its zoom, as the model renders it) and photo pixels (the
// upright photo, as the editor's crop box and red-eye clicks count them).
struct ViewMapping {
  QSize viewport;  // the drawing area, in view pixels
  QSize shown;     // the photo at its zoom
  QSize photo;     // the upright photo
  QPoint scroll;   // scroll bar values, in shown pixels

  // Where shown pixel (0, 0) lands in the view: centred on an axis where the
  // photo is smaller than the view, moved by the scroll bar where it is
  // larger.
  QPoint Origin() const;
  // View pixels to photo pixels and back. Points outside the photo map to
  // coordinates outside 0..photo size; without a photo (an empty size) the
  // scale is taken as 1.
  QPointF ViewToPhoto(QPointF view) const;
  QPointF PhotoToView(QPointF photo_point) const;
  QRectF PhotoToView(const QRectF& photo_rect) const;
  // The part of the shown photo that the view shows, in shown pixels; empty
  // when nothing of it is on view.
  QRect VisibleShownRect() const;
  // Whether a view point lies on the photo.
  bool OnPhoto(QPointF view) const;
};

// Which scroll bars a view of `widget` size needs for a photo shown at
// `shown` size, with bars `bar` pixels thick, and the drawing area left.
struct ScrollBarLayout {
  bool horizontal = false;
  bool vertical = false;
  QSize viewport;
};
ScrollBarLayout LayOutScrollBars(QSize widget, QSize shown, int bar);

// The mouse over the photo view, as an overlay receives it.
struct PhotoMouse {
  QPointF photo;  // photo pixels (fractions kept)
  QPointF view;   // view pixels
  bool on_photo = false;
  Qt::MouseButton button = Qt::NoButton;  // the button that changed
  Qt::MouseButtons buttons;               // the buttons held
  Qt::KeyboardModifiers modifiers;
};

// A layer drawn over the photo that may take the mouse: the editor's crop box
// with its handles, the red-eye tool. The photo view owns its overlays, paints
// them in the order they were added (the last on top) and offers the mouse to
// them from the top down; the first that takes a press receives the moves and
// the release of that drag, and the view then raises no Click for it. The
// view raises MouseDown, MouseMove and MouseUp on its control in every case.
class ViewOverlay {
 public:
  virtual ~ViewOverlay() = default;

  // Paints in view pixels; `mapping` places the photo.
  virtual void Paint(QPainter& painter, const ViewMapping& mapping) = 0;
  // True takes the press (and its drag).
  virtual bool MousePress(const PhotoMouse& mouse) {
    (void)mouse;
    return false;
  }
  // A move, during a drag that this overlay took or with no button held.
  // True when the overlay used it.
  virtual bool MouseMove(const PhotoMouse& mouse) {
    (void)mouse;
    return false;
  }
  // The release of a press that this overlay took.
  virtual void MouseRelease(const PhotoMouse& mouse) { (void)mouse; }
  // The pointer to show over a photo point (a resize arrow over a handle), or
  // nothing to leave it to the layers below.
  virtual std::optional<Qt::CursorShape> CursorAt(QPointF photo_point) const {
    (void)photo_point;
    return std::nullopt;
  }

  // Set by the view that owns the overlay.
  void SetRepaint(std::function<void()> repaint) {
    repaint_ = std::move(repaint);
  }

 protected:
  // Asks the view to paint again (the overlay's state changed).
  void RequestRepaint() const {
    if (repaint_) {
      repaint_();
    }
  }

 private:
  std::function<void()> repaint_;
};

}  // namespace qbpd

#endif  // QBPD_UI_QT_VIEW_OVERLAY_H_
