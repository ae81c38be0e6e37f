#ifndef QBPD_UI_QT_WIDGET_HANDLE_H_
#define QBPD_UI_QT_WIDGET_HANDLE_H_

#include "ui/qt/control_widget.h"

#include <QPointer>
#include <QWidget>

namespace qbpd {

// The ControlWidget of one of our own widget classes W (which has Sync() and
// Detach()). The Qt parent owns the widget. When the handle goes first (the
// control is unloaded while its window stays), the widget is detached from
// the control at once, so that it raises no further event on it, hidden, and
// deleted by the event loop: the unload may happen inside a handler that the
// widget's own mouse event is running. When the parent went first, widget()
// is nullptr and Sync does nothing.
template <class W>
class WidgetHandle : public ControlWidget {
 public:
  explicit WidgetHandle(W* widget) : widget_(widget) {}
  ~WidgetHandle() override {
    if (widget_) {
      widget_->Detach();
      widget_->hide();
      widget_->deleteLater();
    }
  }

  QWidget* widget() override { return widget_.data(); }
  void Sync() override {
    if (widget_) {
      widget_->Sync();
    }
  }
  W* typed() const { return widget_.data(); }

 private:
  QPointer<W> widget_;
};

}  // namespace qbpd

#endif  // QBPD_UI_QT_WIDGET_HANDLE_H_
