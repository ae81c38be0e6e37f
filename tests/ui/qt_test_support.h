#ifndef QBPD_TESTS_UI_QT_TEST_SUPPORT_H_
#define QBPD_TESTS_UI_QT_TEST_SUPPORT_H_

#include "tests/ui/photo_maker.h"

#include <QMessageBox>
#include <QString>

#include <string>

class QWidget;

namespace qbpd::testing {

// The process's QApplication on the offscreen platform, made at the first
// call.
void EnsureQtApplication();

// Writes what `widget` shows to screenshots/NAME.png under the build folder
// and returns the file's path.
std::string SaveScreenshot(QWidget* widget, const std::string& name);

// What a message box showed.
struct SeenMessageBox {
  bool shown = false;
  QString text;
  QString title;
  QMessageBox::Icon icon = QMessageBox::NoIcon;
  QMessageBox::StandardButton default_button = QMessageBox::NoButton;
  Qt::WindowFlags flags;
};

// Answers the next message box that opens within a few seconds by pressing
// `button`, as a person would; what the box showed lands in `*seen`, which
// must outlive the answer.
void AnswerNextMessageBox(QMessageBox::StandardButton button,
                          SeenMessageBox* seen = nullptr);

// Writes what `window` shows, with the pop-up menu open over it drawn where
// it stands, to screenshots/NAME.png; returns the file's path.
std::string SaveScreenshotWithPopup(QWidget* window,
                                    QWidget* popup,
                                    const std::string& name);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_UI_QT_TEST_SUPPORT_H_
