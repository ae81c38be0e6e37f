#include "ui/qt/photo_view_widget.h"

#include "platform/display_model.h"
#include "platform/forms/controls.h"
#include "platform/forms/display_control.h"
#include "platform/forms/host.h"
#include "platform/forms/keys.h"
#include "ui/qt/control_widget.h"
#include "ui/qt/editor_overlay.h"
#include "ui/qt/qt_convert.h"
#include "ui/qt/widget_handle.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTimer>
#include <QWheelEvent>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace qbpd {
namespace {

// One notch of the wheel, or an arrow key, moves this many view pixels.
constexpr int kScrollStepPx = 40;
// A wheel reports 120 for one notch.
constexpr int kWheelNotch = 120;
// How soon a view showing a stand-in looks again for the photo's own
// picture.
constexpr int kRefinePollMs = 10;

// The value that keeps the same fraction of the picture at the centre of a
// view `view` wide when the picture goes from `old_shown` to `new_shown`.
int KeepCentre(int value, int view, int old_shown, int new_shown) {
  if (old_shown <= 0) {
    return 0;
  }
  const double centre = (value + view / 2.0) / old_shown;
  return static_cast<int>(centre * new_shown - view / 2.0);
}

}  // namespace

PhotoViewWidget::PhotoViewWidget(PhotoView& control, QWidget* parent)
    : QWidget(parent),
      control_(control),
      h_bar_(new QScrollBar(Qt::Horizontal, this)),
      v_bar_(new QScrollBar(Qt::Vertical, this)) {
  setMouseTracking(true);
  setFocusPolicy(Qt::ClickFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);
  h_bar_->hide();
  v_bar_->hide();
  for (QScrollBar* bar : {h_bar_, v_bar_}) {
    bar->setFocusPolicy(Qt::NoFocus);
    connect(bar, &QScrollBar::valueChanged, this, [this] { update(); });
  }
  Sync();
}

PhotoViewWidget::~PhotoViewWidget() = default;

DisplayControl* PhotoViewWidget::Model() const {
  if (detached_) {
    return nullptr;
  }
  DisplayControl* model = control_.Display();
  return model != nullptr && model->HasPhoto() ? model : nullptr;
}

QSize PhotoViewWidget::ShownSize() const {
  const DisplayControl* model = Model();
  return model ? QSize(model->ShownWidth(), model->ShownHeight()) : QSize();
}

QSize PhotoViewWidget::PhotoSize() const {
  const DisplayControl* model = Model();
  return model ? QSize(model->PhotoWidth(), model->PhotoHeight()) : QSize();
}

ViewMapping PhotoViewWidget::Mapping() const {
  ViewMapping mapping;
  mapping.shown = ShownSize().expandedTo(QSize(0, 0));
  mapping.photo = PhotoSize().expandedTo(QSize(0, 0));
  mapping.viewport =
      LayOutScrollBars(size(), mapping.shown, kDisplayScrollBarPx).viewport;
  mapping.scroll = QPoint(!h_bar_->isHidden() ? h_bar_->value() : 0,
                          !v_bar_->isHidden() ? v_bar_->value() : 0);
  return mapping;
}

void PhotoViewWidget::Sync() {
  if (detached_) {
    return;
  }
  const QString path = QString::fromStdString(control_.PhotoPath());
  const QSize shown = ShownSize();
  const int rotation = Model() ? Model()->ViewRotation() : 0;
  const QSize view = Mapping().viewport;
  int x = h_bar_->value();
  int y = v_bar_->value();
  const QSize photo = PhotoSize();
  if (path != last_path_ ||
      (photo != last_photo_ && rotation == last_rotation_)) {
    x = 0;
    y = 0;
  } else if (shown != last_shown_ || rotation != last_rotation_) {
    x = KeepCentre(x, view.width(), last_shown_.width(), shown.width());
    y = KeepCentre(y, view.height(), last_shown_.height(), shown.height());
  }
  last_path_ = path;
  last_photo_ = photo;
  last_shown_ = shown;
  last_rotation_ = rotation;
  LayOut();
  h_bar_->setValue(x);
  v_bar_->setValue(y);
  InvalidatePicture();
  setEnabled(control_.Enabled());
  setVisible(control_.Visible());
  setToolTip(QString::fromStdString(control_.ToolTipText()));
}

void PhotoViewWidget::LayOut() {
  const QSize shown = ShownSize().expandedTo(QSize(0, 0));
  const ScrollBarLayout layout =
      LayOutScrollBars(size(), shown, kDisplayScrollBarPx);
  const QSize view = layout.viewport;
  h_bar_->setGeometry(0, height() - kDisplayScrollBarPx, view.width(),
                      kDisplayScrollBarPx);
  v_bar_->setGeometry(width() - kDisplayScrollBarPx, 0, kDisplayScrollBarPx,
                      view.height());
  h_bar_->setRange(0, std::max(0, shown.width() - view.width()));
  v_bar_->setRange(0, std::max(0, shown.height() - view.height()));
  h_bar_->setPageStep(std::max(1, view.width()));
  v_bar_->setPageStep(std::max(1, view.height()));
  h_bar_->setSingleStep(kScrollStepPx);
  v_bar_->setSingleStep(kScrollStepPx);
  h_bar_->setVisible(layout.horizontal);
  v_bar_->setVisible(layout.vertical);
  if (!layout.horizontal) {
    h_bar_->setValue(0);
  }
  if (!layout.vertical) {
    v_bar_->setValue(0);
  }
}

void PhotoViewWidget::AddOverlay(std::unique_ptr<ViewOverlay> overlay) {
  overlay->SetRepaint([this] { update(); });
  overlays_.push_back(std::move(overlay));
  update();
}

void PhotoViewWidget::InvalidatePicture() {
  cache_ = QImage();
  cache_rect_ = QRect();
  update();
}

void PhotoViewWidget::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  // Around the photo, the colour the program gave the view (grey in the
  // main window, black in the slide show).
  painter.fillRect(rect(), QColor(control_.BackRed(), control_.BackGreen(),
                                  control_.BackBlue()));
  const ViewMapping mapping = Mapping();
  DisplayControl* model = Model();
  const QRect visible = mapping.VisibleShownRect();
  if (model != nullptr && !visible.isEmpty()) {
    if (cache_.isNull() || cache_rect_ != visible ||
        cache_shown_ != mapping.shown) {
      std::vector<std::uint8_t> rgb;
      cache_ = QImage();
      ++render_count_;
      if (model->Render(visible.x(), visible.y(), visible.width(),
                        visible.height(), rgb) &&
          rgb.size() >=
              static_cast<size_t>(visible.width()) * visible.height() * 3) {
        QImage image(visible.size(), QImage::Format_RGB888);
        const size_t row = static_cast<size_t>(visible.width()) * 3;
        for (int line = 0; line < visible.height(); ++line) {
          std::memcpy(image.scanLine(line), rgb.data() + row * line, row);
        }
        cache_ = std::move(image);
      }
      cache_rect_ = visible;
      cache_shown_ = mapping.shown;
      // A stand-in is on show: the photo's own picture replaces it soon.
      if (model->Refining()) {
        QTimer::singleShot(kRefinePollMs, this,
                           [this] { InvalidatePicture(); });
      }
    }
    if (!cache_.isNull()) {
      painter.drawImage(mapping.Origin() + visible.topLeft(), cache_);
    }
  }
  painter.setClipRect(QRect(QPoint(0, 0), mapping.viewport));
  for (const auto& overlay : overlays_) {
    painter.save();
    overlay->Paint(painter, mapping);
    painter.restore();
  }
}

void PhotoViewWidget::resizeEvent(QResizeEvent*) {
  LayOut();
  InvalidatePicture();
}

PhotoMouse PhotoViewWidget::MouseAt(QMouseEvent* event) const {
  const ViewMapping mapping = Mapping();
  PhotoMouse mouse;
  mouse.view = event->position();
  mouse.photo = mapping.ViewToPhoto(mouse.view);
  mouse.on_photo = mapping.OnPhoto(mouse.view);
  mouse.button = event->button();
  mouse.buttons = event->buttons();
  mouse.modifiers = event->modifiers();
  return mouse;
}

void PhotoViewWidget::RaiseMouse(const char* name, QMouseEvent* event) {
  EventArgs args;
  args.Button = std::string_view(name) == "MouseMove"
                    ? ((event->buttons() & Qt::LeftButton ? 1 : 0) |
                       (event->buttons() & Qt::RightButton ? 2 : 0))
                    : ButtonOf(event->button());
  args.Shift = ShiftOf(event->modifiers());
  const QPoint p = event->position().toPoint();
  args.X = p.x() * kTwipsPerPixel;
  args.Y = p.y() * kTwipsPerPixel;
  control_.Raise(name, args);
}

void PhotoViewWidget::mousePressEvent(QMouseEvent* event) {
  if (detached_) {
    return;
  }
  control_.SetFocus();
  if (detached_) {
    return;
  }
  RaiseMouse("MouseDown", event);
  if (detached_) {
    return;
  }
  const PhotoMouse mouse = MouseAt(event);
  grabbed_ = nullptr;
  for (auto it = overlays_.rbegin(); it != overlays_.rend(); ++it) {
    if ((*it)->MousePress(mouse)) {
      grabbed_ = it->get();
      break;
    }
  }
  click_pending_ = grabbed_ == nullptr && event->button() == Qt::LeftButton;
  pan_armed_ = click_pending_ && CanPan();
  panning_ = false;
  pan_start_ = event->position().toPoint();
  pan_scroll_ = QPoint(h_bar_->value(), v_bar_->value());
}

bool PhotoViewWidget::CanPan() const {
  return !h_bar_->isHidden() || !v_bar_->isHidden();
}

void PhotoViewWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (detached_) {
    return;
  }
  const PhotoMouse mouse = MouseAt(event);
  if (ViewOverlay* overlay = std::exchange(grabbed_, nullptr)) {
    overlay->MouseRelease(mouse);
  }
  pan_armed_ = false;
  if (std::exchange(panning_, false)) {
    click_pending_ = false;
    UpdateCursor(mouse);
  }
  const bool click =
      std::exchange(click_pending_, false) &&
      event->button() == Qt::LeftButton &&
      QRect(QPoint(0, 0), Mapping().viewport).contains(mouse.view.toPoint());
  RaiseMouse("MouseUp", event);
  if (click && !detached_) {
    control_.Raise("Click");
  }
}

void PhotoViewWidget::mouseMoveEvent(QMouseEvent* event) {
  if (detached_) {
    return;
  }
  const PhotoMouse mouse = MouseAt(event);
  if (grabbed_ != nullptr) {
    grabbed_->MouseMove(mouse);
  } else if (pan_armed_ && (event->buttons() & Qt::LeftButton)) {
    const QPoint moved = event->position().toPoint() - pan_start_;
    if (!panning_ &&
        moved.manhattanLength() >= QApplication::startDragDistance()) {
      panning_ = true;
      setCursor(Qt::ClosedHandCursor);
    }
    if (panning_) {
      // The photo follows the pointer, as a sheet of paper under the hand.
      h_bar_->setValue(pan_scroll_.x() - moved.x());
      v_bar_->setValue(pan_scroll_.y() - moved.y());
    }
  } else if (event->buttons() == Qt::NoButton) {
    for (auto it = overlays_.rbegin(); it != overlays_.rend(); ++it) {
      if ((*it)->MouseMove(mouse)) {
        break;
      }
    }
    UpdateCursor(mouse);
  }
  RaiseMouse("MouseMove", event);
}

void PhotoViewWidget::UpdateCursor(const PhotoMouse& mouse) {
  for (auto it = overlays_.rbegin(); it != overlays_.rend(); ++it) {
    if (std::optional<Qt::CursorShape> shape = (*it)->CursorAt(mouse.photo)) {
      setCursor(*shape);
      return;
    }
  }
  // A photo larger than the view can be taken by the hand and moved.
  if (CanPan()) {
    setCursor(Qt::OpenHandCursor);
  } else {
    unsetCursor();
  }
}

void PhotoViewWidget::wheelEvent(QWheelEvent* event) {
  const QPoint delta = event->angleDelta();
  if (event->modifiers() & Qt::ControlModifier) {
    // Ctrl with the wheel is the program's (it zooms); whole notches only.
    event->accept();
    if (detached_) {
      return;
    }
    wheel_rest_ += delta.y();
    const int notches = wheel_rest_ / kWheelNotch;
    wheel_rest_ -= notches * kWheelNotch;
    if (notches == 0) {
      return;
    }
    EventArgs args;
    args.Delta = notches;
    args.Shift = ShiftOf(event->modifiers());
    const QPoint p = event->position().toPoint();
    args.X = p.x() * kTwipsPerPixel;
    args.Y = p.y() * kTwipsPerPixel;
    control_.Raise("MouseWheel", args);
    return;
  }
  const bool across = event->modifiers() & Qt::ShiftModifier ||
                      std::abs(delta.x()) > std::abs(delta.y());
  const int notches = (across && delta.x() != 0 ? delta.x() : delta.y());
  QScrollBar* bar = across ? h_bar_ : v_bar_;
  if (bar->isHidden()) {
    bar = across ? v_bar_ : h_bar_;
  }
  if (bar->isHidden() || notches == 0) {
    event->ignore();
    return;
  }
  bar->setValue(bar->value() - notches * kScrollStepPx / kWheelNotch);
  event->accept();
}

void PhotoViewWidget::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Up:
      v_bar_->triggerAction(QAbstractSlider::SliderSingleStepSub);
      break;
    case Qt::Key_Down:
      v_bar_->triggerAction(QAbstractSlider::SliderSingleStepAdd);
      break;
    case Qt::Key_Left:
      h_bar_->triggerAction(QAbstractSlider::SliderSingleStepSub);
      break;
    case Qt::Key_Right:
      h_bar_->triggerAction(QAbstractSlider::SliderSingleStepAdd);
      break;
    case Qt::Key_PageUp:
      v_bar_->triggerAction(QAbstractSlider::SliderPageStepSub);
      break;
    case Qt::Key_PageDown:
      v_bar_->triggerAction(QAbstractSlider::SliderPageStepAdd);
      break;
    case Qt::Key_Home:
      v_bar_->setValue(v_bar_->minimum());
      h_bar_->setValue(h_bar_->minimum());
      break;
    case Qt::Key_End:
      v_bar_->setValue(v_bar_->maximum());
      break;
    default:
      QWidget::keyPressEvent(event);
      return;
  }
  event->accept();
}

std::unique_ptr<ControlWidget> MakePhotoViewWidget(PhotoView& control,
                                                   QWidget* parent) {
  auto* widget = new PhotoViewWidget(control, parent);
  // The editor's crop box and red-eye loupe, worked through the model.
  widget->AddOverlay(std::make_unique<EditorToolsOverlay>(
      control, [widget] { widget->InvalidatePicture(); }));
  return std::make_unique<WidgetHandle<PhotoViewWidget>>(widget);
}

}  // namespace qbpd
