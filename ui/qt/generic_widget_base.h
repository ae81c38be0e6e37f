// What the widgets of the standard control kinds share: the input router,
// the common base, the self-drawing widget and the picture cache.
#ifndef QBPD_UI_QT_GENERIC_WIDGET_BASE_H_
#define QBPD_UI_QT_GENERIC_WIDGET_BASE_H_

#include "ui/qt/control_widget.h"
#include "ui/qt/form_window.h"
#include "ui/qt/generic_widgets.h"

#include <QPainter>
#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <string>
#include <tuple>

namespace qbpd {

class Control;

// Gives widget `w` the program's colour `color` in `role`; a system colour
// leaves the widget's own.
void SetRole(QWidget* w, QPalette::ColorRole role, long color);

// Turns the mouse and focus events of `widget` into the control's events.
// A passive control (a label, a picture) raises MouseDown, MouseUp, Click
// and DblClick itself; an active one (a button, a list) gets its Click from
// its own signal, so only MouseMove and the focus come through here.
void RouteInput(QWidget* widget,
                Control& control,
                FormWindow& window,
                bool passive);

// The part every generic widget shares: the control, the window, the Qt
// widget (owned by its parent) and the input router.
class GenericWidget : public ControlWidget {
 public:
  GenericWidget(Control& control, FormWindow& window)
      : control_(control), window_(window) {}
  QWidget* widget() override { return widget_; }

 protected:
  void Attach(QWidget* w, bool passive) {
    widget_ = w;
    RouteInput(w, control_, window_, passive);
  }
  void Act(const std::function<void()>& fn) { window_.Act(&control_, fn); }

  Control& control_;
  FormWindow& window_;
  QPointer<QWidget> widget_;
};

// A widget that draws itself through a function, for the controls that are
// pictures, frames and shapes.
class PaintedWidget : public QWidget {
 public:
  using Painter = std::function<void(QPainter&, const QRect&)>;
  explicit PaintedWidget(QWidget* parent) : QWidget(parent) {}
  void SetPainter(Painter painter) { painter_ = std::move(painter); }

 protected:
  void paintEvent(QPaintEvent*) override {
    if (!painter_) {
      return;
    }
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    painter_(p, rect());
  }

 private:
  Painter painter_;
};

// Draws a picture of the program's set, made again only when the file, the
// size or the density changes.
class PictureCache {
 public:
  const QPixmap& Get(const std::string& file,
                     QSize size,
                     qreal ratio,
                     bool stretch) {
    auto key =
        std::make_tuple(file, size.width(), size.height(), ratio, stretch);
    if (key != key_) {
      key_ = key;
      pixmap_ = RenderPicture(file, size, ratio, stretch);
    }
    return pixmap_;
  }

 private:
  std::tuple<std::string, int, int, qreal, bool> key_;
  QPixmap pixmap_;
};

// Draws `pixmap` in the middle of `area`.
void DrawCentred(QPainter& p, const QRect& area, const QPixmap& pixmap);

// The widgets of the drawn kinds (picture buttons, picture boxes, frames,
// shapes, lines) and of the program's components (web view, screensaver
// player); null for any other kind.
std::unique_ptr<ControlWidget> MakeDrawnWidget(Control& control,
                                               QWidget* parent,
                                               FormWindow& window);
std::unique_ptr<ControlWidget> MakeComponentWidget(Control& control,
                                                   QWidget* parent,
                                                   FormWindow& window);

}  // namespace qbpd

#endif  // QBPD_UI_QT_GENERIC_WIDGET_BASE_H_
