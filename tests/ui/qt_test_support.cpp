#include "tests/ui/qt_test_support.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QPixmap>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

#include <memory>

namespace qbpd::testing {

void EnsureQtApplication() {
  static int argc = 1;
  static char name[] = "ui_smoke_tests";
  static char* argv[] = {name, nullptr};
  if (QApplication::instance() != nullptr) {
    return;
  }
  qputenv("QT_QPA_PLATFORM", "offscreen");
  // Lives until the process ends and is never destroyed: destroying it among
  // the static objects at exit would run after parts of Qt have gone.
  new QApplication(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
}

std::string SaveScreenshot(QWidget* widget, const std::string& name) {
  QDir().mkpath(QBPD_SCREENSHOT_DIR);
  std::string path = std::string(QBPD_SCREENSHOT_DIR) + "/" + name + ".png";
  widget->grab().save(QString::fromStdString(path));
  return path;
}

std::string SaveScreenshotWithPopup(QWidget* window,
                                    QWidget* popup,
                                    const std::string& name) {
  QDir().mkpath(QBPD_SCREENSHOT_DIR);
  std::string path = std::string(QBPD_SCREENSHOT_DIR) + "/" + name + ".png";
  QPixmap shot = window->grab();
  if (popup != nullptr) {
    QPainter painter(&shot);
    painter.drawPixmap(window->mapFromGlobal(popup->mapToGlobal(QPoint(0, 0))),
                       popup->grab());
  }
  shot.save(QString::fromStdString(path));
  return path;
}

void AnswerNextMessageBox(QMessageBox::StandardButton button,
                          SeenMessageBox* seen) {
  auto* poll = new QTimer();
  auto tries = std::make_shared<int>(0);
  QObject::connect(poll, &QTimer::timeout, [poll, tries, button, seen] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr) {
      if (++*tries > 250) {
        poll->deleteLater();
      }
      return;
    }
    if (seen != nullptr) {
      seen->shown = true;
      seen->text = box->text();
      seen->title = box->windowTitle();
      seen->icon = box->icon();
      seen->default_button = box->standardButton(box->defaultButton());
      seen->flags = box->windowFlags();
    }
    if (QAbstractButton* b = box->button(button)) {
      b->click();
    } else {
      box->reject();
    }
    poll->stop();
    poll->deleteLater();
  });
  poll->start(20);
}

}  // namespace qbpd::testing
