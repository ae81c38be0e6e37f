// The desktop program's pieces in one process (QApplication, the Qt host, the
// program with private places) on a folder of generated photos, driven
// through its widgets as a person would. Each case leaves a screenshot under
// the build folder (tests/ui/screenshots).
#include "app/program/program.h"
#include "browser/frm_main_window.h"
#include "core/settings.h"
#include "platform/display_model.h"
#include "platform/image_operations.h"
#include "platform/places.h"
#include "platform/settings_store.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/control_widget.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_clipboard.h"
#include "ui/qt/qt_convert.h"
#include "ui/qt/qt_host.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <gtest/gtest.h>

#include <filesystem>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

using DesktopSmokeTest = testing::DesktopTest;

TEST_F(DesktopSmokeTest, TheMainWindowShowsEveryControlAtItsGeometry) {
  ASSERT_TRUE(QTest::qWaitForWindowExposed(window_));
  EXPECT_EQ(window_->windowTitle(), "Quillbay Picture Desk");
  int checked = 0;
  for (Control* c : main_->Controls()) {
    QWidget* w = WidgetFor(*c);
    if (c->Kind() == ControlKind::kMenu || c->Kind() == ControlKind::kTimer) {
      EXPECT_EQ(w, nullptr) << c->DisplayName();
      continue;
    }
    ASSERT_NE(w, nullptr) << c->DisplayName();
    EXPECT_EQ(w->isVisibleTo(w->parentWidget()), c->Visible())
        << c->DisplayName();
    if (c->Kind() != ControlKind::kLine) {
      EXPECT_EQ(w->geometry(),
                PixelRect(c->Left(), c->Top(), c->Width(), c->Height()))
          << c->DisplayName();
    }
    if (!c->Container().empty()) {
      Control* container = main_->FindControl(c->Container());
      ASSERT_NE(container, nullptr);
      EXPECT_EQ(w->parentWidget(), WidgetFor(*container)) << c->DisplayName();
    }
    ++checked;
  }
  EXPECT_GT(checked, 20);
  QStringList titles;
  for (QAction* a : window_->menu_bar()->actions()) {
    if (a->isVisible()) {
      titles << a->text();
    }
  }
  EXPECT_TRUE(titles.contains("&File")) << titles.join(",").toStdString();
  EXPECT_TRUE(titles.contains("&View"));
  EXPECT_TRUE(titles.contains("&Help"));
  testing::SaveScreenshot(window_, "main_window");
}

TEST_F(DesktopSmokeTest, ClickingAThumbnailShowsItsPhoto) {
  QWidget* thumb = WidgetFor(main_->ctrlQuilImage[1]);
  ASSERT_NE(thumb, nullptr);
  QTest::mouseClick(thumb, Qt::LeftButton, {}, thumb->rect().center());
  EXPECT_TRUE(QTest::qWaitFor(
      [this] { return session().giCurrentPhotoIndex == 1; }, 5000));
  EXPECT_EQ(main_->ctlDisplayImage.PhotoPath(),
            (folder_ / "photo002.jpg").string());
  EXPECT_EQ(main_->lblDisplayImageName.Caption(), "photo002");
  testing::SaveScreenshot(window_, "thumbnail_clicked");
}

TEST_F(DesktopSmokeTest, TheViewMenusZoomEntryZooms) {
  int fitted = main_->ctlDisplayImage.ZoomPercent();
  ASSERT_NE(fitted, 50);
  QAction* view = window_->ActionOf(main_->mnuView);
  ASSERT_NE(view, nullptr);
  ASSERT_NE(view->menu(), nullptr);
  view->menu()->popup(window_->mapToGlobal(QPoint(10, 10)));
  QAction* zoom = window_->ActionOf(main_->mnuVZoom);
  ASSERT_NE(zoom, nullptr);
  ASSERT_NE(zoom->menu(), nullptr);
  zoom->menu()->popup(window_->mapToGlobal(QPoint(60, 10)));
  QAction* half = window_->ActionOf(main_->mnuVZoom50);
  ASSERT_NE(half, nullptr);
  ASSERT_TRUE(half->isEnabled());
  half->trigger();
  zoom->menu()->hide();
  view->menu()->hide();
  EXPECT_EQ(main_->ctlDisplayImage.ZoomPercent(), 50);
  EXPECT_TRUE(main_->mnuVZoom50.Checked());
  EXPECT_TRUE(window_->ActionOf(main_->mnuVZoom50)->isChecked());
  EXPECT_FALSE(window_->ActionOf(main_->mnuVZoomFit)->isChecked());
  testing::SaveScreenshot(window_, "zoomed");
}

TEST_F(DesktopSmokeTest, TickingAndClearingPhotosFromTheEditMenu) {
  QMenu* edit = window_->ActionOf(main_->mnuEdit)->menu();
  ASSERT_NE(edit, nullptr);
  edit->popup(window_->mapToGlobal(QPoint(0, 0)));
  window_->ActionOf(main_->mnuESelectAll)->trigger();
  edit->hide();
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 3);
  EXPECT_EQ(main_->lblPhotosSelect.Caption(), "3 of 3 photo(s) selected");
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(main_->ctrlQuilImage[i].Checked()) << i;
  }
  testing::SaveScreenshot(window_, "all_ticked");
  edit->popup(window_->mapToGlobal(QPoint(0, 0)));
  window_->ActionOf(main_->mnuEClear)->trigger();
  edit->hide();
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 0);
  EXPECT_EQ(main_->lblPhotosSelect.Caption(), "0 of 3 photo(s) selected");
}

TEST_F(DesktopSmokeTest, TheSelectionButtonsAndCtrlATickEveryPhoto) {
  QWidget* select_all = WidgetFor(main_->imgSelectAll);
  QWidget* clear = WidgetFor(main_->imgClear);
  ASSERT_NE(select_all, nullptr);
  ASSERT_NE(clear, nullptr);
  ASSERT_TRUE(select_all->isVisible());
  QTest::mouseClick(select_all, Qt::LeftButton, {},
                    select_all->rect().center());
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 3);
  QTest::mouseClick(clear, Qt::LeftButton, {}, clear->rect().center());
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 0);
  // The Edit menu's shortcut works from the window.
  window_->activateWindow();
  QTest::keyClick(window_, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 3);
  EXPECT_EQ(main_->lblPhotosSelect.Caption(), "3 of 3 photo(s) selected");
}

TEST_F(DesktopSmokeTest, RenamingInPlaceRenamesTheFile) {
  QWidget* name = WidgetFor(main_->lblDisplayImageName);
  ASSERT_NE(name, nullptr);
  ASSERT_TRUE(name->isVisible());
  QTest::mouseDClick(name, Qt::LeftButton, {}, name->rect().center());
  ASSERT_TRUE(main_->txtFileName.Visible());
  auto* edit = qobject_cast<QLineEdit*>(WidgetFor(main_->txtFileName));
  ASSERT_NE(edit, nullptr);
  EXPECT_TRUE(edit->isVisible());
  EXPECT_EQ(edit->text(), "photo001");
  QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
  QTest::keyClicks(edit, "harbour at dusk");
  EXPECT_EQ(edit->text(), "harbour at dusk");
  testing::SaveScreenshot(window_, "renaming");
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_TRUE(fs::exists(folder_ / "harbour at dusk.jpg"));
  EXPECT_FALSE(fs::exists(folder_ / "photo001.jpg"));
  EXPECT_EQ(main_->lblDisplayImageName.Caption(), "harbour at dusk");
  EXPECT_FALSE(edit->isVisible());
  testing::SaveScreenshot(window_, "renamed");
}

TEST_F(DesktopSmokeTest, DeletingThePhotoOnDisplayAfterItsQuestion) {
  testing::SeenMessageBox seen;
  testing::AnswerNextMessageBox(QMessageBox::Yes, &seen);
  QWidget* trash = WidgetFor(main_->imgTrash);
  ASSERT_NE(trash, nullptr);
  QTest::mouseClick(trash, Qt::LeftButton, {}, trash->rect().center());
  EXPECT_TRUE(seen.shown);
  EXPECT_EQ(seen.icon, QMessageBox::Question);
  EXPECT_EQ(seen.title, "Quillbay Picture Desk");
  EXPECT_FALSE(fs::exists(folder_ / "photo001.jpg"));
  EXPECT_TRUE(fs::exists(folder_ / "photo002.jpg"));
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
  testing::SaveScreenshot(window_, "deleted");

  // Ctrl+D, the shortcut of Edit > Delete > Current Photo: No keeps it.
  ASSERT_TRUE(QTest::qWaitFor(
      [this] { return !main_->ctlDisplayImage.PhotoPath().empty(); }, 5000));
  const std::string shown = main_->ctlDisplayImage.PhotoPath();
  window_->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window_));
  testing::SeenMessageBox kept;
  testing::AnswerNextMessageBox(QMessageBox::No, &kept);
  QTest::keyClick(window_, Qt::Key_D, Qt::ControlModifier);
  EXPECT_TRUE(kept.shown);
  EXPECT_TRUE(fs::exists(shown));
  window_->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window_));
  testing::SeenMessageBox gone;
  testing::AnswerNextMessageBox(QMessageBox::Yes, &gone);
  QTest::keyClick(window_, Qt::Key_D, Qt::ControlModifier);
  EXPECT_TRUE(gone.shown);
  EXPECT_FALSE(fs::exists(shown));
  EXPECT_EQ(session().gdicPhotoList.Count(), 1);
}

}  // namespace
}  // namespace qbpd
