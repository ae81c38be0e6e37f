#include "ui/qt/generic_widget_base.h"

#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/keys.h"
#include "platform/forms/user_input.h"
#include "ui/qt/qt_convert.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

namespace qbpd {
namespace {

// A wheel reports 120 for one notch.
constexpr int kWheelNotch = 120;

class InputRouter : public QObject {
 public:
  InputRouter(QWidget* widget,
              Control& control,
              FormWindow& window,
              bool passive)
      : QObject(widget),
        control_(&control),
        window_(window),
        passive_(passive) {
    widget->setMouseTracking(true);
    widget->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    switch (event->type()) {
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonRelease:
      case QEvent::MouseButtonDblClick:
      case QEvent::MouseMove:
        Mouse(static_cast<QWidget*>(watched), static_cast<QMouseEvent*>(event));
        break;
      case QEvent::Wheel:
        return Wheel(static_cast<QWheelEvent*>(event));
      case QEvent::FocusIn: {
        auto reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason == Qt::MouseFocusReason || reason == Qt::TabFocusReason ||
            reason == Qt::BacktabFocusReason ||
            reason == Qt::ShortcutFocusReason) {
          Control* c = control_;
          window_.Act(c, [c] {
            if (c->form().ActiveControl() != c) {
              c->SetFocus();
            }
          });
        }
        break;
      }
      default:
        break;
    }
    return false;
  }

 private:
  // The wheel anywhere over a box (a picture box or a frame) scrolls the
  // box's own vertical scroll bar, one small change a notch, as it does over
  // the bar itself; a wheel that a control inside did not take comes here
  // through its containers. True when the box took it.
  bool Wheel(QWheelEvent* e) {
    const ControlKind kind = control_->Kind();
    if (kind != ControlKind::kPictureBox && kind != ControlKind::kFrame) {
      return false;
    }
    ScrollBar* bar = nullptr;
    for (Control* c : control_->form().Controls()) {
      if (c->Kind() == ControlKind::kScrollBar &&
          c->Container() == control_->Name() && c->Visible() && c->Enabled() &&
          static_cast<ScrollBar*>(c)->Vertical()) {
        bar = static_cast<ScrollBar*>(c);
        break;
      }
    }
    if (bar == nullptr) {
      return false;
    }
    e->accept();
    wheel_rest_ += e->angleDelta().y();
    const int notches = wheel_rest_ / kWheelNotch;
    wheel_rest_ -= notches * kWheelNotch;
    if (notches == 0) {
      return true;
    }
    const int low = std::min(bar->Min(), bar->Max());
    const int high = std::max(bar->Min(), bar->Max());
    const int step = std::max(1, bar->SmallChange());
    const int value = std::clamp(bar->Value() - notches * step, low, high);
    if (value != bar->Value()) {
      window_.Act(bar, [bar, value] { user::ScrollTo(*bar, value); });
    }
    return true;
  }

  void Mouse(QWidget* w, QMouseEvent* e) {
    const int x = PixelsToTwips(static_cast<int>(e->position().x()));
    const int y = PixelsToTwips(static_cast<int>(e->position().y()));
    const int shift = ShiftOf(e->modifiers());
    Control* c = control_;
    auto raise = [this, c, x, y, shift](const char* name, int button) {
      window_.Act(c, [c, name, button, x, y, shift] {
        EventArgs args;
        args.Button = button;
        args.X = x;
        args.Y = y;
        args.Shift = shift;
        c->Raise(name, args);
      });
    };
    switch (e->type()) {
      case QEvent::MouseMove:
        raise("MouseMove", ButtonsOf(e->buttons()));
        return;
      case QEvent::MouseButtonPress:
        if (passive_) {
          pressed_inside_ = true;
          raise("MouseDown", ButtonOf(e->button()));
        }
        return;
      case QEvent::MouseButtonDblClick:
        if (passive_) {
          after_double_ = true;
          window_.Act(c, [c] { c->Raise("DblClick"); });
        }
        return;
      case QEvent::MouseButtonRelease: {
        if (!passive_) {
          return;
        }
        raise("MouseUp", ButtonOf(e->button()));
        bool click = pressed_inside_ && !after_double_ &&
                     e->button() == Qt::LeftButton &&
                     w->rect().contains(e->position().toPoint());
        pressed_inside_ = false;
        after_double_ = false;
        if (click) {
          window_.Act(c, [c] { c->Raise("Click"); });
        }
        return;
      }
      default:
        return;
    }
  }

  Control* control_;
  FormWindow& window_;
  bool passive_;
  bool pressed_inside_ = false;
  bool after_double_ = false;
  int wheel_rest_ = 0;
};

}  // namespace

void SetRole(QWidget* w, QPalette::ColorRole role, long color) {
  if (IsSystemColor(color)) {
    return;
  }
  QPalette p = w->palette();
  QColor c = ColorFromProgram(color);
  if (p.color(role) != c) {
    p.setColor(role, c);
    w->setPalette(p);
  }
}

void RouteInput(QWidget* widget,
                Control& control,
                FormWindow& window,
                bool passive) {
  new InputRouter(widget, control, window, passive);
}

void DrawCentred(QPainter& p, const QRect& area, const QPixmap& pixmap) {
  QSizeF logical = pixmap.deviceIndependentSize();
  QPointF at(area.x() + (area.width() - logical.width()) / 2,
             area.y() + (area.height() - logical.height()) / 2);
  p.drawPixmap(at, pixmap);
}

}  // namespace qbpd
