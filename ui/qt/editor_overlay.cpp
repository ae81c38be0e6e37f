#include "ui/qt/editor_overlay.h"

#include "platform/forms/controls.h"
#include "platform/forms/display_control.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace qbpd {
namespace {

// The loupe: its radius in view pixels and how much it enlarges.
constexpr int kLoupeRadius = 80;
constexpr int kLoupeZoom = 3;

int ButtonNumber(Qt::MouseButton button) {
  switch (button) {
    case Qt::LeftButton:
      return 1;
    case Qt::RightButton:
      return 2;
    case Qt::MiddleButton:
      return 4;
    default:
      return 0;
  }
}

int ButtonsHeld(Qt::MouseButtons buttons) {
  return (buttons & Qt::LeftButton ? 1 : 0) |
         (buttons & Qt::RightButton ? 2 : 0) |
         (buttons & Qt::MiddleButton ? 4 : 0);
}

}  // namespace

CropHandle CropHandleAt(const QRectF& box, QPointF p, double reach) {
  if (box.isEmpty()) {
    return CropHandle::kNone;
  }
  const bool in_x = p.x() >= box.left() - reach && p.x() <= box.right() + reach;
  const bool in_y = p.y() >= box.top() - reach && p.y() <= box.bottom() + reach;
  if (!in_x || !in_y) {
    return CropHandle::kNone;
  }
  const bool left = std::abs(p.x() - box.left()) <= reach;
  const bool right = !left && std::abs(p.x() - box.right()) <= reach;
  const bool top = std::abs(p.y() - box.top()) <= reach;
  const bool bottom = !top && std::abs(p.y() - box.bottom()) <= reach;
  if (top && left) {
    return CropHandle::kTopLeft;
  }
  if (top && right) {
    return CropHandle::kTopRight;
  }
  if (bottom && left) {
    return CropHandle::kBottomLeft;
  }
  if (bottom && right) {
    return CropHandle::kBottomRight;
  }
  if (left) {
    return CropHandle::kLeft;
  }
  if (right) {
    return CropHandle::kRight;
  }
  if (top) {
    return CropHandle::kTop;
  }
  if (bottom) {
    return CropHandle::kBottom;
  }
  return box.contains(p) ? CropHandle::kInside : CropHandle::kNone;
}

std::vector<QRectF> CropHandleRects(const QRectF& box, const QRectF& area) {
  const double half = kHandleSize / 2;
  const double xs[] = {box.left(), box.center().x(), box.right()};
  const double ys[] = {box.top(), box.center().y(), box.bottom()};
  std::vector<QRectF> handles;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      if (row == 1 && column == 1) {
        continue;
      }
      // Centred on its point, or pushed inside the area by at most half its
      // size: still well within the pointer's reach of the point.
      const double x =
          std::clamp(xs[column], area.left() + half,
                     std::max(area.left() + half, area.right() - half - 1));
      const double y =
          std::clamp(ys[row], area.top() + half,
                     std::max(area.top() + half, area.bottom() - half - 1));
      handles.emplace_back(x - half, y - half, kHandleSize, kHandleSize);
    }
  }
  return handles;
}

Qt::CursorShape CursorFor(CropHandle handle) {
  switch (handle) {
    case CropHandle::kTopLeft:
    case CropHandle::kBottomRight:
      return Qt::SizeFDiagCursor;
    case CropHandle::kTopRight:
    case CropHandle::kBottomLeft:
      return Qt::SizeBDiagCursor;
    case CropHandle::kLeft:
    case CropHandle::kRight:
      return Qt::SizeHorCursor;
    case CropHandle::kTop:
    case CropHandle::kBottom:
      return Qt::SizeVerCursor;
    case CropHandle::kInside:
      return Qt::SizeAllCursor;
    case CropHandle::kNone:
      return Qt::ArrowCursor;
  }
  return Qt::ArrowCursor;
}

EditorToolsOverlay::EditorToolsOverlay(PhotoView& control,
                                       std::function<void()> picture_changed)
    : control_(control), picture_changed_(std::move(picture_changed)) {}

DisplayControl* EditorToolsOverlay::Model() const {
  return control_.Display();
}

void EditorToolsOverlay::SetPointer(QPointF view, bool on_photo) {
  pointer_ = view;
  pointer_on_photo_ = on_photo;
  RequestRepaint();
}

void EditorToolsOverlay::Paint(QPainter& painter, const ViewMapping& mapping) {
  DisplayControl* model = Model();
  if (model == nullptr || mapping.photo.isEmpty() || mapping.shown.isEmpty()) {
    return;
  }
  photo_per_view_ =
      static_cast<double>(mapping.photo.width()) / mapping.shown.width();
  switch (model->ActiveTool()) {
    case DisplayControl::Tool::kCrop:
      PaintCrop(painter, mapping);
      break;
    case DisplayControl::Tool::kRedEye:
      PaintLoupe(painter, mapping);
      break;
    case DisplayControl::Tool::kCorrection:
    case DisplayControl::Tool::kNone:
      break;
  }
}

void EditorToolsOverlay::PaintCrop(QPainter& painter,
                                   const ViewMapping& mapping) {
  double x = 0, y = 0, w = 0, h = 0;
  if (!Model()->CropBox(x, y, w, h)) {
    return;
  }
  const QRectF photo = mapping.PhotoToView(
      QRectF(0, 0, mapping.photo.width(), mapping.photo.height()));
  const QRectF box = mapping.PhotoToView(QRectF(x, y, w, h));
  painter.setRenderHint(QPainter::Antialiasing, false);
  // What falls outside the box is dimmed, so the print's part stands out.
  QPainterPath outside;
  outside.addRect(photo);
  outside.addRect(box);
  outside.setFillRule(Qt::OddEvenFill);
  painter.fillPath(outside, QColor(0, 0, 0, 140));
  // The thirds, as a guide for placing the subject.
  painter.setPen(QPen(QColor(255, 255, 255, 90), 1));
  for (int i = 1; i < 3; ++i) {
    painter.drawLine(QPointF(box.left() + box.width() * i / 3, box.top()),
                     QPointF(box.left() + box.width() * i / 3, box.bottom()));
    painter.drawLine(QPointF(box.left(), box.top() + box.height() * i / 3),
                     QPointF(box.right(), box.top() + box.height() * i / 3));
  }
  // The outline and the handles stay inside the view, so that a box at the
  // edge of a photo fitted to the view keeps them whole in sight.
  const QRectF area(QPointF(0, 0), QSizeF(mapping.viewport));
  const QRectF outline = box.intersected(area.adjusted(1, 1, -2, -2));
  painter.setPen(QPen(QColor(20, 20, 20), 3));
  painter.drawRect(outline);
  painter.setPen(QPen(Qt::white, 1));
  painter.drawRect(outline);
  painter.setPen(QPen(QColor(20, 20, 20), 1));
  painter.setBrush(Qt::white);
  for (const QRectF& handle : CropHandleRects(box, area)) {
    painter.drawRect(handle);
  }
}

void EditorToolsOverlay::PaintLoupe(QPainter& painter,
                                    const ViewMapping& mapping) {
  if (!pointer_on_photo_) {
    return;
  }
  // The shown pixels around the pointer, enlarged.
  const QPoint origin = mapping.Origin();
  const int side = 2 * kLoupeRadius / kLoupeZoom;
  const QPoint centre = (pointer_ - QPointF(origin)).toPoint();
  QRect source(centre.x() - side / 2, centre.y() - side / 2, side, side);
  source = source.intersected(QRect(QPoint(0, 0), mapping.shown));
  if (source.isEmpty()) {
    return;
  }
  std::vector<std::uint8_t> rgb;
  if (!Model()->Render(source.x(), source.y(), source.width(), source.height(),
                       rgb) ||
      rgb.size() < static_cast<size_t>(source.width()) * source.height() * 3) {
    return;
  }
  QImage image(source.size(), QImage::Format_RGB888);
  const size_t row = static_cast<size_t>(source.width()) * 3;
  for (int line = 0; line < source.height(); ++line) {
    std::memcpy(image.scanLine(line), rgb.data() + row * line, row);
  }
  // The enlarged area keeps the pointer's spot at the loupe's centre.
  const QRectF target(pointer_.x() - (centre.x() - source.x()) * kLoupeZoom,
                      pointer_.y() - (centre.y() - source.y()) * kLoupeZoom,
                      source.width() * kLoupeZoom,
                      source.height() * kLoupeZoom);
  const QRectF circle(pointer_.x() - kLoupeRadius, pointer_.y() - kLoupeRadius,
                      2 * kLoupeRadius, 2 * kLoupeRadius);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  QPainterPath lens;
  lens.addEllipse(circle);
  painter.save();
  painter.setClipPath(lens);
  painter.fillRect(circle, QColor(206, 206, 206));
  painter.drawImage(target, image);
  painter.restore();
  painter.setPen(QPen(QColor(30, 30, 30), 3));
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(circle);
  painter.setPen(QPen(Qt::white, 1));
  painter.drawEllipse(circle.adjusted(1.5, 1.5, -1.5, -1.5));
  // A small cross marks where a click lands.
  painter.setPen(QPen(QColor(255, 255, 255, 200), 1));
  painter.drawLine(pointer_ - QPointF(6, 0), pointer_ + QPointF(6, 0));
  painter.drawLine(pointer_ - QPointF(0, 6), pointer_ + QPointF(0, 6));
}

bool EditorToolsOverlay::MousePress(const PhotoMouse& mouse) {
  DisplayControl* model = Model();
  if (model == nullptr) {
    return false;
  }
  const bool taken = model->ToolMouseDown(mouse.photo.x(), mouse.photo.y(),
                                          ButtonNumber(mouse.button));
  if (taken) {
    if (picture_changed_) {
      picture_changed_();
    }
    RequestRepaint();
  }
  return taken;
}

bool EditorToolsOverlay::MouseMove(const PhotoMouse& mouse) {
  DisplayControl* model = Model();
  if (model == nullptr) {
    return false;
  }
  pointer_ = mouse.view;
  pointer_on_photo_ = mouse.on_photo;
  const bool used = model->ToolMouseMove(mouse.photo.x(), mouse.photo.y(),
                                         ButtonsHeld(mouse.buttons));
  const DisplayControl::Tool tool = model->ActiveTool();
  if (used || tool == DisplayControl::Tool::kRedEye) {
    RequestRepaint();
  }
  return used;
}

void EditorToolsOverlay::MouseRelease(const PhotoMouse& mouse) {
  if (DisplayControl* model = Model()) {
    model->ToolMouseUp(mouse.photo.x(), mouse.photo.y(),
                       ButtonNumber(mouse.button));
    if (picture_changed_) {
      picture_changed_();
    }
    RequestRepaint();
  }
}

std::optional<Qt::CursorShape> EditorToolsOverlay::CursorAt(
    QPointF photo_point) const {
  DisplayControl* model = Model();
  if (model == nullptr) {
    return std::nullopt;
  }
  switch (model->ActiveTool()) {
    case DisplayControl::Tool::kCrop: {
      double x = 0, y = 0, w = 0, h = 0;
      if (!model->CropBox(x, y, w, h)) {
        return std::nullopt;
      }
      const CropHandle handle = CropHandleAt(QRectF(x, y, w, h), photo_point,
                                             kHandleReach * photo_per_view_);
      if (handle == CropHandle::kNone) {
        return std::nullopt;
      }
      return CursorFor(handle);
    }
    case DisplayControl::Tool::kRedEye:
      return Qt::CrossCursor;
    case DisplayControl::Tool::kCorrection:
    case DisplayControl::Tool::kNone:
      return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace qbpd
