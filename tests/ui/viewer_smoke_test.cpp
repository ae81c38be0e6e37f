// The main window as people use a Linux photo viewer: the wheel over the
// grid, the grid under its header, the next photo at its top left, pop-up
// menus at their buttons, the zoom and step keys, Ctrl with the wheel,
// panning a zoomed photo by dragging, and message boxes that are dialogs.
// Each case leaves a screenshot under the build folder.
#include "browser/frm_main_window.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/form_window.h"
#include "ui/qt/photo_view_widget.h"
#include "ui/qt/qt_convert.h"
#include "ui/qt/qt_host.h"

#include <QApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

// A wheel reports 120 for one notch.
constexpr int kNotch = 120;

// Turns the wheel over `widget` at `at` by `notches` (away from the user
// positive), with `modifiers` held. A wheel the widget leaves goes to its
// parents, as Qt passes on a wheel that comes from the window system (one
// sent by a program stays with its receiver).
void TurnWheel(QWidget* widget,
               QPoint at,
               int notches,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  for (QWidget* w = widget; w != nullptr; w = w->parentWidget()) {
    const QPoint here = w->mapFromGlobal(widget->mapToGlobal(at));
    QWheelEvent event(QPointF(here), QPointF(widget->mapToGlobal(at)), QPoint(),
                      QPoint(0, notches * kNotch), Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    event.setAccepted(true);
    QApplication::sendEvent(w, &event);
    if (event.isAccepted() || w->isWindow()) {
      return;
    }
  }
}

// A mouse event with the left button as the state after it.
void SendMouse(QWidget* widget, QEvent::Type type, QPoint at) {
  const Qt::MouseButtons held =
      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
  const Qt::MouseButton button =
      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
  QMouseEvent event(type, QPointF(at), QPointF(widget->mapToGlobal(at)), button,
                    held, Qt::NoModifier);
  QApplication::sendEvent(widget, &event);
}

// Where a pop-up menu opened, seen while it was open; it is then closed.
struct SeenPopup {
  bool shown = false;
  QRect geometry;
};

// Whether a pop-up opened at `point`: Qt puts its corner there, or, where the
// menu would leave the screen (the offscreen screen is small), moves or
// flips it so that it still borders on the point.
bool Touches(const QRect& menu, QPoint point) {
  return menu.adjusted(-1, -1, 1, 1).contains(point);
}

void WatchNextPopup(QWidget* window, const std::string& shot, SeenPopup* seen) {
  auto* poll = new QTimer();
  auto tries = std::make_shared<int>(0);
  QObject::connect(poll, &QTimer::timeout, [=] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (menu == nullptr) {
      if (++*tries > 250) {
        poll->deleteLater();
      }
      return;
    }
    seen->shown = true;
    seen->geometry = menu->geometry();
    testing::SaveScreenshotWithPopup(window, menu, shot);
    menu->close();
    poll->stop();
    poll->deleteLater();
  });
  poll->start(20);
}

class ViewerSmokeTest : public testing::DesktopTest {
 protected:
  ViewerSmokeTest() {
    photo_count_ = 14;
    photo_width_ = 1200;
    photo_height_ = 900;
  }
  PhotoViewWidget* View() {
    return dynamic_cast<PhotoViewWidget*>(WidgetFor(main_->ctlDisplayImage));
  }
  // Where the program asks for a pop-up at (x, y) twips of the form.
  QPoint FormPoint(int x, int y) {
    return window_->client()->mapToGlobal(
        QPoint(TwipsToPixels(x), TwipsToPixels(y)));
  }
  void Key(Qt::Key key, char text = 0) {
    window_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_));
    if (text != 0) {
      QTest::keyClick(window_, text);
    } else {
      QTest::keyClick(window_, key);
    }
  }
};

TEST_F(ViewerSmokeTest, TheWheelOverTheThumbnailsScrollsTheGridUnderItsHeader) {
  ScrollBar& bar = main_->ctrlImageListVScroll;
  ASSERT_TRUE(bar.Visible());
  ASSERT_GT(bar.Max(), 1);
  ASSERT_EQ(bar.Value(), 0);
  QWidget* thumb = WidgetFor(main_->ctrlQuilImage[2]);
  ASSERT_NE(thumb, nullptr);
  TurnWheel(thumb, thumb->rect().center(), -1);
  EXPECT_EQ(bar.Value(), std::max(1, bar.SmallChange()));
  // Over the panel between the thumbnails too, and back up.
  QWidget* panel = WidgetFor(main_->picImagelistInnerCont);
  TurnWheel(panel, QPoint(2, 2), -1);
  const int down = bar.Value();
  EXPECT_GT(down, 1);
  EXPECT_LT(main_->picImagelistInnerCont.Top(),
            main_->cmdImageListHead.Height());
  // The header stays above the panel that went up under it.
  QWidget* head = WidgetFor(main_->cmdImageListHead);
  QWidget* list = WidgetFor(main_->picImageListCont);
  ASSERT_NE(head, nullptr);
  ASSERT_NE(list, nullptr);
  QWidget* on_top = list->childAt(head->geometry().center());
  ASSERT_NE(on_top, nullptr);
  EXPECT_TRUE(on_top == head || head->isAncestorOf(on_top))
      << on_top->objectName().toStdString();
  testing::SaveScreenshot(window_, "grid_scrolled_by_wheel");
  TurnWheel(thumb, thumb->rect().center(), 5);
  EXPECT_EQ(bar.Value(), 0);
}

// Photos open at 100%, larger than the view.
class ViewerAtOriginalSizeTest : public ViewerSmokeTest {
 protected:
  ViewerAtOriginalSizeTest() {
    photo_count_ = 3;
    photo_width_ = 1600;
    zoom_setting_ = "OriginalSize";
  }
};

TEST_F(ViewerAtOriginalSizeTest,
       SpaceAndBackspaceStepAndTheNextPhotoOpensAtItsTopLeft) {
  ASSERT_EQ(main_->ctlDisplayImage.ZoomPercent(), 100);
  PhotoViewWidget* view = View();
  ASSERT_NE(view, nullptr);
  ASSERT_TRUE(view->HorizontalBar()->isVisible());
  ASSERT_TRUE(view->VerticalBar()->isVisible());
  view->HorizontalBar()->setValue(view->HorizontalBar()->maximum());
  view->VerticalBar()->setValue(view->VerticalBar()->maximum());
  ASSERT_GT(view->VerticalBar()->value(), 0);
  Key(Qt::Key_Space);
  EXPECT_EQ(session().giCurrentPhotoIndex, 1);
  EXPECT_EQ(main_->ctlDisplayImage.PhotoPath(),
            (folder_ / "photo002.jpg").string());
  EXPECT_EQ(view->HorizontalBar()->value(), 0);
  EXPECT_EQ(view->VerticalBar()->value(), 0);
  testing::SaveScreenshot(window_, "next_photo_by_space");
  EXPECT_EQ(main_->ctlDisplayImage.ZoomPercent(), 100);
  view->VerticalBar()->setValue(view->VerticalBar()->maximum());
  Key(Qt::Key_Backspace);
  EXPECT_EQ(session().giCurrentPhotoIndex, 0);
  EXPECT_EQ(view->VerticalBar()->value(), 0);
  // The arrow button's way opens it at its top left too.
  view->VerticalBar()->setValue(view->VerticalBar()->maximum());
  QWidget* next = WidgetFor(main_->imgNext);
  ASSERT_NE(next, nullptr);
  QTest::mouseClick(next, Qt::LeftButton, {}, next->rect().center());
  EXPECT_EQ(session().giCurrentPhotoIndex, 1);
  EXPECT_EQ(view->VerticalBar()->value(), 0);
  EXPECT_EQ(view->HorizontalBar()->value(), 0);
}

TEST_F(ViewerSmokeTest, TheZoomKeysAndCtrlWithTheWheelZoom) {
  const int fitted = main_->ctlDisplayImage.ZoomPercent();
  ASSERT_TRUE(main_->mnuVZoomFit.Checked());
  Key(Qt::Key_1, '1');
  EXPECT_EQ(main_->ctlDisplayImage.ZoomPercent(), 100);
  Key(Qt::Key_Plus, '+');
  EXPECT_EQ(main_->ctlDisplayImage.ZoomPercent(), 125);
  EXPECT_TRUE(window_->ActionOf(main_->mnuVZoom125) == nullptr ||
              window_->ActionOf(main_->mnuVZoom125)->isChecked());
  Key(Qt::Key_Minus, '-');
  EXPECT_EQ(main_->ctlDisplayImage.ZoomPercent(), 100);
  Key(Qt::Key_0, '0');
  EXPECT_EQ(main_->ctlDisplayImage.ZoomPercent(), fitted);
  EXPECT_TRUE(main_->mnuVZoomFit.Checked());

  PhotoViewWidget* view = View();
  ASSERT_NE(view, nullptr);
  TurnWheel(view, view->rect().center(), 1, Qt::ControlModifier);
  const int up = main_->ctlDisplayImage.ZoomPercent();
  EXPECT_GT(up, fitted);
  EXPECT_EQ(up % 25, 0);
  EXPECT_FALSE(main_->mnuVZoomFit.Checked());
  testing::SaveScreenshot(window_, "zoomed_by_ctrl_wheel");
  TurnWheel(view, view->rect().center(), -1, Qt::ControlModifier);
  EXPECT_EQ(main_->ctlDisplayImage.ZoomPercent(), up - 25);
}

TEST_F(ViewerSmokeTest, DraggingAZoomedPhotoPansIt) {
  Key(Qt::Key_1, '1');
  PhotoViewWidget* view = View();
  ASSERT_NE(view, nullptr);
  ASSERT_TRUE(view->HorizontalBar()->isVisible());
  view->HorizontalBar()->setValue(200);
  view->VerticalBar()->setValue(150);
  const QPoint from = view->rect().center();
  SendMouse(view, QEvent::MouseButtonPress, from);
  SendMouse(view, QEvent::MouseMove, from + QPoint(30, 20));
  SendMouse(view, QEvent::MouseMove, from + QPoint(60, 40));
  EXPECT_EQ(view->HorizontalBar()->value(), 140);
  EXPECT_EQ(view->VerticalBar()->value(), 110);
  SendMouse(view, QEvent::MouseButtonRelease, from + QPoint(60, 40));
  testing::SaveScreenshot(window_, "panned_by_drag");
  // A plain click does not move it.
  SendMouse(view, QEvent::MouseButtonPress, from);
  SendMouse(view, QEvent::MouseButtonRelease, from);
  EXPECT_EQ(view->HorizontalBar()->value(), 140);
}

TEST_F(ViewerSmokeTest, PopUpMenusOpenAtTheirButtons) {
  window_->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window_));
  QWidget* zoom = WidgetFor(main_->imgZoom);
  ASSERT_NE(zoom, nullptr);
  SeenPopup zoom_menu;
  WatchNextPopup(window_, "zoom_popup", &zoom_menu);
  QTest::mouseClick(zoom, Qt::LeftButton, {}, zoom->rect().center());
  ASSERT_TRUE(zoom_menu.shown);
  EXPECT_TRUE(
      Touches(zoom_menu.geometry,
              FormPoint(main_->picManipCont.Left() + main_->imgZoom.Left() +
                            main_->imgZoom.Width() / 2,
                        main_->picManipCont.Top())));

  // The trash button offers its two entries with every photo ticked.
  QTest::keyClick(window_, Qt::Key_A, Qt::ControlModifier);
  ASSERT_GE(session().gdicSelectedPhotos.Count(), 2);
  QWidget* trash = WidgetFor(main_->imgTrash);
  ASSERT_NE(trash, nullptr);
  SeenPopup trash_menu;
  WatchNextPopup(window_, "trash_popup", &trash_menu);
  QTest::mouseClick(trash, Qt::LeftButton, {}, trash->rect().center());
  ASSERT_TRUE(trash_menu.shown);
  EXPECT_TRUE(
      Touches(trash_menu.geometry, trash->mapToGlobal(trash->rect().center())));
  EXPECT_EQ(session().gdicPhotoList.Count(), 14);
}

TEST_F(ViewerSmokeTest, DeleteAsksAsCtrlDAndMessageBoxesAreDialogs) {
  testing::SeenMessageBox seen;
  testing::AnswerNextMessageBox(QMessageBox::No, &seen);
  Key(Qt::Key_Delete);
  ASSERT_TRUE(seen.shown);
  EXPECT_EQ(seen.text, "Do you want to permanently delete the current photo?");
  EXPECT_TRUE(fs::exists(folder_ / "photo001.jpg"));
  EXPECT_EQ(seen.flags & Qt::WindowType_Mask, Qt::Dialog);
  EXPECT_FALSE(seen.flags.testFlag(Qt::WindowMinimizeButtonHint));
  EXPECT_FALSE(seen.flags.testFlag(Qt::WindowMaximizeButtonHint));

  // A form of the program shown modally (the about box) is a dialog too.
  QTimer::singleShot(0, [this] {
    Form* about = app_->forms().Find("frmAboutUs");
    ASSERT_NE(about, nullptr);
    FormWindow* window = host_->WindowOf(*about);
    ASSERT_NE(window, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    const Qt::WindowFlags flags = window->windowFlags();
    EXPECT_EQ(flags & Qt::WindowType_Mask, Qt::Dialog);
    EXPECT_FALSE(flags.testFlag(Qt::WindowMinimizeButtonHint));
    EXPECT_FALSE(flags.testFlag(Qt::WindowMaximizeButtonHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowCloseButtonHint));
    testing::SaveScreenshot(window, "about_box_dialog");
    window->close();
  });
  QAction* about = window_->ActionOf(main_->mnuHAboutus);
  ASSERT_NE(about, nullptr);
  about->trigger();
  EXPECT_EQ(app_->forms().Find("frmAboutUs"), nullptr);
  // The main window stays a window with all its buttons.
  EXPECT_EQ(window_->windowFlags() & Qt::WindowType_Mask, Qt::Window);
}

}  // namespace
}  // namespace qbpd
