#ifndef QBPD_UI_QT_EDITOR_OVERLAY_H_
#define QBPD_UI_QT_EDITOR_OVERLAY_H_

#include "ui/qt/view_overlay.h"

#include <functional>
#include <vector>

namespace qbpd {

class DisplayControl;
class PhotoView;

// The part of a crop box a point is over, as the pointer shows it.
enum class CropHandle {
  kNone,
  kInside,
  kLeft,
  kRight,
  kTop,
  kBottom,
  kTopLeft,
  kTopRight,
  kBottomLeft,
  kBottomRight,
};

// Which part of `box` (photo pixels) the photo point `p` is over: a corner or
// an edge when within `reach` photo pixels of it (corners first), else inside
// or outside.
CropHandle CropHandleAt(const QRectF& box, QPointF p, double reach);

// The eight handles of the view rectangle `box`, each a square centred on
// its corner or edge middle, or moved inside `area` (the view) where it
// would stick out of it; in the order top left, top, top right, left, right,
// bottom left, bottom, bottom right.
std::vector<QRectF> CropHandleRects(const QRectF& box, const QRectF& area);

// How near a handle the pointer must be, in view pixels, and a handle's side.
inline constexpr double kHandleReach = 8.0;
inline constexpr double kHandleSize = 8.0;

// The pointer over each part: diagonal arrows at the corners, straight ones
// at the edges, the four-way arrow inside.
Qt::CursorShape CursorFor(CropHandle handle);

// The editor's tools over the photo view, as the model of the view's control
// says (DisplayControl::ActiveTool): the crop box drawn with its eight
// handles over a dimmed photo, and for red eye a loupe that magnifies the
// work area around the pointer. The mouse goes to the model's tool hooks in
// photo pixels; the model moves and sizes the box, keeps its aspect, its
// place on the photo and its smallest printable size, and removes red.
// `picture_changed` is called after a press that may have changed pixels.
class EditorToolsOverlay : public ViewOverlay {
 public:
  EditorToolsOverlay(PhotoView& control, std::function<void()> picture_changed);

  void Paint(QPainter& painter, const ViewMapping& mapping) override;
  bool MousePress(const PhotoMouse& mouse) override;
  bool MouseMove(const PhotoMouse& mouse) override;
  void MouseRelease(const PhotoMouse& mouse) override;
  std::optional<Qt::CursorShape> CursorAt(QPointF photo_point) const override;

  // Where the loupe stands, in view pixels; for tests and screenshots.
  void SetPointer(QPointF view, bool on_photo);

 private:
  DisplayControl* Model() const;
  void PaintCrop(QPainter& painter, const ViewMapping& mapping);
  void PaintLoupe(QPainter& painter, const ViewMapping& mapping);

  PhotoView& control_;
  std::function<void()> picture_changed_;
  // The photo pixels one view pixel covers, from the last paint.
  double photo_per_view_ = 1.0;
  QPointF pointer_;
  bool pointer_on_photo_ = false;
};

}  // namespace qbpd

#endif  // QBPD_UI_QT_EDITOR_OVERLAY_H_
