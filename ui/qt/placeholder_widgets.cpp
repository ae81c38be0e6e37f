// Stand-ins for the folder tree, the thumbnail and the photo view until their
// real widgets join the tree: a label with the control's name that passes a
// click on. Delete this file when those widgets arrive.
#include "platform/forms/controls.h"
#include "platform/forms/user_input.h"
#include "ui/qt/control_widget.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPointer>

namespace qbpd {
namespace {

class NameLabel : public QLabel {
 public:
  NameLabel(Control& control, QWidget* parent)
      : QLabel(parent), control_(control) {
    setText(QString::fromStdString(control.DisplayName()));
    setAlignment(Qt::AlignCenter);
    setFrameShape(QFrame::Box);
  }

 protected:
  void mouseReleaseEvent(QMouseEvent* event) override {
    QLabel::mouseReleaseEvent(event);
    if (event->button() == Qt::LeftButton &&
        rect().contains(event->position().toPoint())) {
      try {
        user::Click(control_);
      } catch (...) {
        // Unreachable now: the click does nothing.
      }
    }
  }

 private:
  Control& control_;
};

class Placeholder : public ControlWidget {
 public:
  Placeholder(Control& control, QWidget* parent)
      : label_(new NameLabel(control, parent)) {}
  QWidget* widget() override { return label_; }
  void Sync() override {}

 private:
  QPointer<QLabel> label_;
};

}  // namespace

std::unique_ptr<ControlWidget> MakeFolderTreeWidget(FolderTree& control,
                                                    QWidget* parent) {
  return std::make_unique<Placeholder>(control, parent);
}

std::unique_ptr<ControlWidget> MakeThumbnailWidget(Thumbnail& control,
                                                   QWidget* parent) {
  return std::make_unique<Placeholder>(control, parent);
}

std::unique_ptr<ControlWidget> MakePhotoViewWidget(PhotoView& control,
                                                   QWidget* parent) {
  return std::make_unique<Placeholder>(control, parent);
}

}  // namespace qbpd
