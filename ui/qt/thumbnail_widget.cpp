#include "ui/qt/thumbnail_widget.h"

#include "platform/forms/controls.h"
#include "platform/forms/host.h"
#include "platform/forms/keys.h"
#include "ui/qt/control_widget.h"
#include "ui/qt/qt_convert.h"
#include "ui/qt/widget_handle.h"

#include <QFileInfo>
#include <QImageReader>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>

#include <algorithm>
#include <cmath>
#include <utility>

namespace qbpd {
namespace {

// The margin around the picture box; the frame of the current photo is drawn
// in it.
constexpr int kMarginPx = 4;
constexpr int kFramePx = 2;
// The strip under the picture that holds the check box.
constexpr int kCheckRowPx = 18;
// A click this close to the check box still hits it.
constexpr int kCheckSlopPx = 3;

// The rectangle of size `inner` fitted into `box` with its aspect kept,
// centred; never larger than `inner` itself.
QRectF FitCentred(const QSizeF& inner, const QRectF& box) {
  if (inner.isEmpty() || box.isEmpty()) {
    return {};
  }
  const double scale = std::min(
      {box.width() / inner.width(), box.height() / inner.height(), 1.0});
  const QSizeF shown = inner * scale;
  return QRectF(box.left() + (box.width() - shown.width()) / 2,
                box.top() + (box.height() - shown.height()) / 2, shown.width(),
                shown.height());
}

}  // namespace

ThumbnailWidget::ThumbnailWidget(Thumbnail& control, QWidget* parent)
    : QWidget(parent), control_(control) {
  setMouseTracking(true);
  setFocusPolicy(Qt::ClickFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);
  Sync();
}

QRect ThumbnailWidget::PictureBox() const {
  return QRect(kMarginPx, kMarginPx, std::max(0, width() - 2 * kMarginPx),
               std::max(0, height() - kCheckRowPx - 2 * kMarginPx));
}

QRect ThumbnailWidget::CheckBoxRect() const {
  const int w = style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, this);
  const int h = style()->pixelMetric(QStyle::PM_IndicatorHeight, nullptr, this);
  const int row_top = height() - kCheckRowPx;
  return QRect((width() - w) / 2, row_top + (kCheckRowPx - h) / 2, w, h);
}

void ThumbnailWidget::Sync() {
  if (detached_) {
    return;
  }
  LoadPicture();
  const std::string& tip = control_.ToolTipText().empty()
                               ? control_.ToolText()
                               : control_.ToolTipText();
  setToolTip(QString::fromStdString(tip));
  setEnabled(control_.Enabled());
  setVisible(control_.Visible());
  update();
}

void ThumbnailWidget::LoadPicture() {
  const QString file = QString::fromStdString(control_.ThumbnailFile());
  const QFileInfo info(file);
  const qint64 size = info.exists() ? info.size() : -1;
  const QDateTime time = info.exists() ? info.lastModified() : QDateTime();
  if (file == picture_file_ && size == picture_size_ && time == picture_time_) {
    return;
  }
  picture_file_ = file;
  picture_size_ = size;
  picture_time_ = time;
  picture_ = QImage();
  scaled_ = QImage();
  if (file.isEmpty() || size < 0) {
    return;
  }
  // The cache's ".qpd" files are pictures under a name of their own: the
  // reader goes by the content.
  QImageReader reader(file);
  reader.setDecideFormatFromContent(true);
  reader.setAutoTransform(false);
  picture_ = reader.read();
}

void ThumbnailWidget::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().window());
  const QRect box = PictureBox();
  if (!picture_.isNull()) {
    const QRectF target = FitCentred(picture_.size(), box);
    // Scale once to the device pixels the picture covers, so that a screen
    // of high density gets a picture made for it rather than a stretched one.
    const double dpr = devicePixelRatioF();
    const QSize device_size(
        std::max(1, static_cast<int>(std::lround(target.width() * dpr))),
        std::max(1, static_cast<int>(std::lround(target.height() * dpr))));
    if (scaled_.size() != device_size || scaled_.devicePixelRatio() != dpr) {
      scaled_ = device_size == picture_.size()
                    ? picture_
                    : picture_.scaled(device_size, Qt::IgnoreAspectRatio,
                                      Qt::SmoothTransformation);
      scaled_.setDevicePixelRatio(dpr);
    }
    painter.drawImage(target.topLeft(), scaled_);
  } else {
    painter.fillRect(box, palette().base());
  }
  if (control_.Current() && !detached_) {
    QPen pen(palette().highlight(), kFramePx);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    const double half = kFramePx / 2.0;
    painter.drawRect(
        QRectF(box).adjusted(-half - 1, -half - 1, half + 1, half + 1));
  }
  QStyleOptionButton option;
  option.initFrom(this);
  option.rect = CheckBoxRect();
  option.state |=
      (!detached_ && control_.Checked()) ? QStyle::State_On : QStyle::State_Off;
  style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &option, &painter, this);
}

ThumbnailWidget::Area ThumbnailWidget::AreaAt(const QPoint& p) const {
  if (CheckBoxRect()
          .adjusted(-kCheckSlopPx, -kCheckSlopPx, kCheckSlopPx, kCheckSlopPx)
          .contains(p)) {
    return Area::kCheck;
  }
  if (PictureBox().contains(p)) {
    return Area::kPicture;
  }
  return Area::kNone;
}

void ThumbnailWidget::RaiseMouse(const char* event, QMouseEvent* e) {
  EventArgs args;
  args.Button = ButtonOf(e->button());
  args.Shift = (e->modifiers() & Qt::ShiftModifier ? kShiftMask : 0) |
               (e->modifiers() & Qt::ControlModifier ? kCtrlMask : 0) |
               (e->modifiers() & Qt::AltModifier ? kAltMask : 0);
  const QPoint p = e->position().toPoint();
  args.X = p.x() * kTwipsPerPixel;
  args.Y = p.y() * kTwipsPerPixel;
  control_.Raise(event, args);
}

void ThumbnailWidget::mousePressEvent(QMouseEvent* event) {
  if (detached_) {
    return;
  }
  pressed_ = event->button() == Qt::LeftButton
                 ? AreaAt(event->position().toPoint())
                 : Area::kNone;
  control_.SetFocus();
  if (!detached_) {
    RaiseMouse("MouseDown", event);
  }
}

void ThumbnailWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (detached_) {
    return;
  }
  const Area pressed = std::exchange(pressed_, Area::kNone);
  const bool was_double = std::exchange(in_double_click_, false);
  RaiseMouse("MouseUp", event);
  if (detached_ || event->button() != Qt::LeftButton || was_double ||
      pressed != AreaAt(event->position().toPoint())) {
    return;
  }
  switch (pressed) {
    case Area::kPicture:
      control_.SelectThumbnail();
      break;
    case Area::kCheck:
      control_.SetCheck(!control_.Checked(), /*raise_event=*/true);
      break;
    case Area::kNone:
      break;
  }
  if (!detached_) {
    update();
  }
}

void ThumbnailWidget::mouseDoubleClickEvent(QMouseEvent* event) {
  if (detached_) {
    return;
  }
  // The first press of a double click already clicked; the second press is
  // the double click, and its release clicks nothing more.
  in_double_click_ = true;
  RaiseMouse("MouseDown", event);
  if (!detached_ && event->button() == Qt::LeftButton &&
      AreaAt(event->position().toPoint()) == Area::kPicture) {
    control_.Raise("DblClick");
  }
}

void ThumbnailWidget::mouseMoveEvent(QMouseEvent* event) {
  if (detached_) {
    return;
  }
  EventArgs args;
  const QPoint p = event->position().toPoint();
  args.Button = (event->buttons() & Qt::LeftButton ? 1 : 0) |
                (event->buttons() & Qt::RightButton ? 2 : 0);
  args.X = p.x() * kTwipsPerPixel;
  args.Y = p.y() * kTwipsPerPixel;
  control_.Raise("MouseMove", args);
}

void ThumbnailWidget::keyPressEvent(QKeyEvent* event) {
  if (!detached_ && event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
    control_.SetCheck(!control_.Checked(), /*raise_event=*/true);
    if (!detached_) {
      update();
    }
    return;
  }
  QWidget::keyPressEvent(event);
}

std::unique_ptr<ControlWidget> MakeThumbnailWidget(Thumbnail& control,
                                                   QWidget* parent) {
  return std::make_unique<WidgetHandle<ThumbnailWidget>>(
      new ThumbnailWidget(control, parent));
}

}  // namespace qbpd
