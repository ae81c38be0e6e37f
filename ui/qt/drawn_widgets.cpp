// The widgets of the controls that draw themselves: picture buttons,
// picture boxes, frames, shapes and lines, and the pictures of the
// program's set that they show.
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "ui/qt/generic_widget_base.h"
#include "ui/qt/qt_convert.h"

#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>
#include <filesystem>

namespace qbpd {
namespace {

class PictureButtonWidget : public GenericWidget {
 public:
  PictureButtonWidget(PictureButton& control,
                      QWidget* parent,
                      FormWindow& window)
      : GenericWidget(control, window), button_(control) {
    auto* w = new PaintedWidget(parent);
    w->setCursor(Qt::PointingHandCursor);
    w->SetPainter([this, w](QPainter& p, const QRect& r) {
      const QPixmap& pixmap =
          cache_.Get(picture_, r.size(), w->devicePixelRatioF(), stretch_);
      if (!pixmap.isNull()) {
        DrawCentred(p, r, pixmap);
        return;
      }
      // Without its picture the button still shows where it is and which
      // picture it wants.
      p.setPen(w->palette().color(QPalette::Mid));
      p.setBrush(w->palette().color(QPalette::Button));
      p.drawRoundedRect(QRectF(r).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
      p.setPen(w->palette().color(QPalette::ButtonText));
      p.drawText(r, Qt::AlignCenter,
                 QFileInfo(QString::fromStdString(picture_)).baseName());
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    picture_ = button_.Picture();
    stretch_ = button_.Stretch();
    widget_->update();
  }

 private:
  PictureButton& button_;
  PictureCache cache_;
  std::string picture_;
  bool stretch_ = false;
};

class PictureBoxWidget : public GenericWidget {
 public:
  PictureBoxWidget(PictureBox& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), box_(control) {
    auto* w = new PaintedWidget(parent);
    w->SetPainter([this, w](QPainter& p, const QRect& r) {
      if (!IsSystemColor(back_)) {
        p.fillRect(r, ColorFromProgram(back_));
      }
      if (picture_.empty()) {
        return;
      }
      // A picture box shows its picture at its own size from the corner;
      // one larger than the box is fitted into it.
      QPixmap natural =
          cache_.Get(picture_, QSize(), w->devicePixelRatioF(), false);
      if (natural.isNull()) {
        return;
      }
      QSizeF own = natural.deviceIndependentSize();
      if (own.width() > r.width() || own.height() > r.height()) {
        natural =
            fitted_.Get(picture_, r.size(), w->devicePixelRatioF(), false);
      }
      p.drawPixmap(QPointF(0, 0), natural);
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    picture_ = box_.Picture();
    back_ = box_.BackColor();
    widget_->update();
  }

 private:
  PictureBox& box_;
  PictureCache cache_;
  PictureCache fitted_;
  std::string picture_;
  long back_ = 0xFFFFFF;
};

class FrameWidget : public GenericWidget {
 public:
  FrameWidget(Frame& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), frame_(control) {
    auto* w = new PaintedWidget(parent);
    w->SetPainter([this, w](QPainter& p, const QRect& r) {
      if (!IsSystemColor(back_)) {
        p.fillRect(r, ColorFromProgram(back_));
      }
      if (!border_) {
        return;
      }
      QFontMetrics metrics(w->font());
      int half = metrics.height() / 2;
      p.setPen(w->palette().color(QPalette::Mid));
      p.setBrush(Qt::NoBrush);
      p.drawRect(QRectF(r).adjusted(0.5, half + 0.5, -0.5, -0.5));
      if (caption_.isEmpty()) {
        return;
      }
      QRect text(8, 0, metrics.horizontalAdvance(caption_) + 6,
                 metrics.height());
      p.fillRect(text, IsSystemColor(back_)
                           ? w->palette().color(QPalette::Window)
                           : ColorFromProgram(back_));
      p.setPen(IsSystemColor(fore_) ? w->palette().color(QPalette::WindowText)
                                    : ColorFromProgram(fore_));
      p.drawText(text, Qt::AlignCenter, caption_);
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    caption_ = PlainCaption(frame_.Caption());
    border_ = frame_.Border();
    back_ = frame_.BackColor();
    fore_ = frame_.ForeColor();
    widget_->update();
  }

 private:
  Frame& frame_;
  QString caption_;
  bool border_ = true;
  long back_ = 0xFFFFFF;
  long fore_ = 0;
};

class ShapeWidget : public GenericWidget {
 public:
  ShapeWidget(Shape& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), shape_(control) {
    auto* w = new PaintedWidget(parent);
    w->setAttribute(Qt::WA_TransparentForMouseEvents);
    w->SetPainter([this](QPainter& p, const QRect& r) {
      const int pen = std::max(1, shape_state_.border_width);
      QRectF box =
          QRectF(r).adjusted(pen / 2.0, pen / 2.0, -pen / 2.0, -pen / 2.0);
      if (shape_state_.shape == 1 || shape_state_.shape == 3) {
        double side = std::min(box.width(), box.height());
        box = QRectF(box.center().x() - side / 2, box.center().y() - side / 2,
                     side, side);
      }
      p.setPen(QPen(ColorFromProgram(shape_state_.border_color), pen));
      p.setBrush(shape_state_.filled
                     ? QBrush(ColorFromProgram(shape_state_.fill_color))
                     : QBrush(Qt::NoBrush));
      switch (shape_state_.shape) {
        case 2:
        case 3:
          p.drawEllipse(box);
          break;
        case 4:
          p.drawRoundedRect(box, 6, 6);
          break;
        default:
          p.drawRect(box);
          break;
      }
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    shape_state_.shape = shape_.ShapeKind();
    shape_state_.border_color = shape_.BorderColor();
    shape_state_.border_width = shape_.BorderWidth();
    shape_state_.fill_color = shape_.FillColor();
    shape_state_.filled = shape_.Filled();
    widget_->update();
  }

 private:
  Shape& shape_;
  ShapeState shape_state_;
};

// A line is placed by its end points; its widget is their bounding box.
class LineWidget : public GenericWidget {
 public:
  LineWidget(Line& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), line_(control) {
    auto* w = new PaintedWidget(parent);
    w->setAttribute(Qt::WA_TransparentForMouseEvents);
    w->SetPainter([this](QPainter& p, const QRect&) {
      p.setPen(QPen(ColorFromProgram(color_), 1));
      p.drawLine(from_, to_);
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    int x1 = TwipsToPixels(line_.X1());
    int y1 = TwipsToPixels(line_.Y1());
    int x2 = TwipsToPixels(line_.X2());
    int y2 = TwipsToPixels(line_.Y2());
    QRect box = QRect(QPoint(std::min(x1, x2), std::min(y1, y2)),
                      QPoint(std::max(x1, x2), std::max(y1, y2)));
    widget_->setGeometry(box);
    from_ = QPointF(x1 - box.x() + 0.5, y1 - box.y() + 0.5);
    to_ = QPointF(x2 - box.x() + 0.5, y2 - box.y() + 0.5);
    color_ = line_.BorderColor();
    widget_->update();
  }

 private:
  Line& line_;
  QPointF from_;
  QPointF to_;
  long color_ = 0;
};

}  // namespace

std::string PictureFile(const std::string& file) {
  namespace fs = std::filesystem;
  if (file.empty()) {
    return "";
  }
  std::error_code ec;
  if (fs::is_regular_file(file, ec)) {
    return file;
  }
  fs::path svg = fs::path(file).replace_extension(".svg");
  if (fs::is_regular_file(svg, ec)) {
    return svg.string();
  }
  return "";
}

QPixmap RenderPicture(const std::string& file,
                      QSize size,
                      qreal ratio,
                      bool stretch) {
  std::string found = PictureFile(file);
  if (found.empty()) {
    return QPixmap();
  }
  QString path = QString::fromStdString(found);
  const bool svg = path.endsWith(".svg", Qt::CaseInsensitive);
  QSvgRenderer renderer;
  QImageReader reader;
  QSizeF own;
  if (svg) {
    if (!renderer.load(path)) {
      return QPixmap();
    }
    own = renderer.defaultSize();
  } else {
    reader.setFileName(path);
    reader.setAutoTransform(true);
    own = reader.size();
    if (!own.isValid()) {
      return QPixmap();
    }
  }
  QSizeF target = own;
  if (!size.isEmpty()) {
    target = own.scaled(QSizeF(size),
                        stretch ? Qt::IgnoreAspectRatio : Qt::KeepAspectRatio);
  }
  QSize device(std::max(1, qRound(target.width() * ratio)),
               std::max(1, qRound(target.height() * ratio)));
  QImage image;
  if (svg) {
    // A vector picture is drawn afresh at the device's size: crisp at any
    // density.
    image = QImage(device, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    renderer.render(&p, QRectF(QPointF(0, 0), QSizeF(device)));
  } else {
    image = reader.read();
    if (image.isNull()) {
      return QPixmap();
    }
    if (image.size() != device) {
      image =
          image.scaled(device, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
  }
  QPixmap pixmap = QPixmap::fromImage(image);
  pixmap.setDevicePixelRatio(ratio);
  return pixmap;
}

std::unique_ptr<ControlWidget> MakeDrawnWidget(Control& control,
                                               QWidget* parent,
                                               FormWindow& window) {
  switch (control.Kind()) {
    case ControlKind::kPictureButton:
      return std::make_unique<PictureButtonWidget>(
          static_cast<PictureButton&>(control), parent, window);
    case ControlKind::kPictureBox:
      return std::make_unique<PictureBoxWidget>(
          static_cast<PictureBox&>(control), parent, window);
    case ControlKind::kFrame:
      return std::make_unique<FrameWidget>(static_cast<Frame&>(control), parent,
                                           window);
    case ControlKind::kShape:
      return std::make_unique<ShapeWidget>(static_cast<Shape&>(control), parent,
                                           window);
    case ControlKind::kLine:
      return std::make_unique<LineWidget>(static_cast<Line&>(control), parent,
                                          window);
    default:
      return nullptr;
  }
}

}  // namespace qbpd
