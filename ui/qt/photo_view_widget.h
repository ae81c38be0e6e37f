#ifndef QBPD_UI_QT_PHOTO_VIEW_WIDGET_H_
#define QBPD_UI_QT_PHOTO_VIEW_WIDGET_H_

#include "ui/qt/view_overlay.h"

#include <QImage>
#include <QRect>
#include <QString>
#include <QWidget>

#include <memory>
#include <vector>

class QScrollBar;

namespace qbpd {

class DisplayControl;
class PhotoView;

// The photo view: draws the control's picture model at its zoom on the
// control's back colour (the desktop's grey until the program sets another),
// centred on an axis where the photo is smaller than the view, with a scroll
// bar (kDisplayScrollBarPx thick) on an axis where it is larger. Only the
// visible part is rendered through the model, and kept until the scroll
// position, the zoom or the control changes (Sync) or InvalidatePicture is
// called. The wheel scrolls (Shift or a sideways wheel: across); the arrow
// keys, Page Up/Down and Home/End scroll a focused view; a left drag that no
// overlay takes pans a photo larger than the view.
//
// Events on the control, X and Y in twips from the control's corner: a press
// raises MouseDown, a release MouseUp, a move MouseMove; a left press and
// release on the view raise Click, unless an overlay took the press or the
// press became a pan. The wheel with Ctrl raises MouseWheel instead of
// scrolling, with the notches turned in Delta (away from the user positive)
// and the shift state in Shift.
class PhotoViewWidget : public QWidget {
 public:
  PhotoViewWidget(PhotoView& control, QWidget* parent);
  ~PhotoViewWidget() override;

  // Pulls the control's state. Another photo (a new path or a new size)
  // starts at the top left; a new zoom or turn of the same photo keeps the
  // point at the centre of the view there.
  void Sync();
  void Detach() { detached_ = true; }

  // Adds a layer over the photo (painted last, offered the mouse first).
  void AddOverlay(std::unique_ptr<ViewOverlay> overlay);
  // Drops the cached pixels: the model changed behind the control's back.
  void InvalidatePicture();

  // Where the photo stands now.
  ViewMapping Mapping() const;
  QScrollBar* HorizontalBar() const { return h_bar_; }
  QScrollBar* VerticalBar() const { return v_bar_; }
  // How many times the model was asked to render (the cache's misses).
  int RenderCount() const { return render_count_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  DisplayControl* Model() const;
  QSize ShownSize() const;
  QSize PhotoSize() const;
  void LayOut();
  PhotoMouse MouseAt(QMouseEvent* event) const;
  void RaiseMouse(const char* name, QMouseEvent* event);
  void UpdateCursor(const PhotoMouse& mouse);
  // Whether the photo is larger than the view on some axis.
  bool CanPan() const;

  PhotoView& control_;
  QScrollBar* h_bar_;
  QScrollBar* v_bar_;
  std::vector<std::unique_ptr<ViewOverlay>> overlays_;
  ViewOverlay* grabbed_ = nullptr;  // took the press of the drag under way
  bool click_pending_ = false;
  // A left press that no overlay took, on a photo larger than the view: the
  // pointer and the scroll position where it started, and whether it moved
  // far enough to be a pan.
  bool pan_armed_ = false;
  bool panning_ = false;
  QPoint pan_start_;
  QPoint pan_scroll_;
  // Wheel turns of less than a notch (a touchpad's), kept until they add up.
  int wheel_rest_ = 0;
  bool detached_ = false;

  // What the last Sync saw, to tell a new photo from a new zoom.
  QString last_path_;
  QSize last_photo_;
  QSize last_shown_;
  int last_rotation_ = 0;

  // The rendered visible part and the shown rectangle and size it is of.
  QImage cache_;
  QRect cache_rect_;
  QSize cache_shown_;
  int render_count_ = 0;
};

}  // namespace qbpd

#endif  // QBPD_UI_QT_PHOTO_VIEW_WIDGET_H_
