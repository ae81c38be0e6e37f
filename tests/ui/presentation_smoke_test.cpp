// The presentation on the desktop: the slide show and Full Screen cover the
// screen on black, and the wallpaper and photo information dialogs show
// their fields. Each case leaves a screenshot under the build folder.
#include "browser/frm_main_window.h"
#include "presentation/frm_photo_info.h"
#include "presentation/frm_slide_show.h"
#include "presentation/frm_wallpaper.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/control_widget.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_host.h"

#include <QAction>
#include <QApplication>
#include <QImage>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>

namespace qbpd {
namespace {

class PresentationSmokeTest : public testing::DesktopTest {
 protected:
  PresentationSmokeTest() {
    photo_count_ = 3;
    photo_width_ = 1200;
    photo_height_ = 800;
  }

  // Picks `entry` of the main window's menus; `inside` runs once the form
  // `name` it opens is on the screen, and must close it.
  void WithForm(Menu& entry,
                const char* name,
                const std::function<void(Form&, FormWindow*)>& inside) {
    bool ran = false;
    // The checks run once the program is between events: while it waits
    // for a photo's decoding (its window painting meanwhile) what it asked
    // of the window, such as the full screen, is not done yet, and a user
    // can't act on it either.
    std::function<void()> check;
    check = [&] {
      if (host_->Holding()) {
        QTimer::singleShot(10, check);
        return;
      }
      Form* form = app_->forms().Find(name);
      ASSERT_NE(form, nullptr);
      FormWindow* window = host_->WindowOf(*form);
      ASSERT_NE(window, nullptr);
      ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
      // Both forms cover the screen; the window may be put there a moment
      // after it shows.
      (void)QTest::qWaitFor([window] { return window->isFullScreen(); }, 3000);
      QTest::qWait(50);  // one paint after the layout
      ran = true;
      inside(*form, window);
    };
    QTimer::singleShot(0, check);
    QAction* action = window_->ActionOf(entry);
    ASSERT_NE(action, nullptr);
    action->trigger();
    EXPECT_TRUE(ran);
    EXPECT_EQ(app_->forms().Find(name), nullptr);
  }

  QWidget* WidgetIn(FormWindow* window, const Control& c) {
    ControlWidget* w = window->WidgetOf(c);
    return w != nullptr ? w->widget() : nullptr;
  }
};

TEST_F(PresentationSmokeTest, TheSlideShowCoversTheScreenOnBlack) {
  WithForm(
      main_->mnuVSlideShow, "frmSlideShow", [&](Form& form, FormWindow* w) {
        auto& show = static_cast<frmSlideShow&>(form);
        EXPECT_TRUE(w->isFullScreen());
        EXPECT_TRUE(w->windowFlags().testFlag(Qt::FramelessWindowHint));
        EXPECT_EQ(w->size(), QApplication::primaryScreen()->size());
        // The first paint on black may come a moment after the window
        // covers the screen.
        (void)QTest::qWaitFor(
            [w] {
              const QImage image = w->grab().toImage();
              return image.pixelColor(2, image.height() / 2) ==
                     QColor(Qt::black);
            },
            3000);
        testing::SaveScreenshot(w, "slide_show");
        const QImage shot = w->grab().toImage();
        // Black beside the photo (its left margin) and around the name.
        EXPECT_EQ(shot.pixelColor(2, shot.height() / 2), QColor(Qt::black));
        EXPECT_EQ(shot.pixelColor(2, shot.height() - 3), QColor(Qt::black));
        EXPECT_TRUE(show.FieldValue("mbPlaying").ToBool());
        // Next shows the next photo at once.
        const std::string before = show.ctlDisplayImage.PhotoPath();
        QWidget* next = WidgetIn(w, show.imgNext);
        ASSERT_NE(next, nullptr);
        QTest::mouseClick(next, Qt::LeftButton);
        EXPECT_NE(show.ctlDisplayImage.PhotoPath(), before);
        testing::SaveScreenshot(w, "slide_show_after_next");
        QTest::keyClick(w, Qt::Key_Escape);
      });
  EXPECT_EQ(main_->ctlDisplayImage.PhotoPath(), session().gsSelectedImage);
}

TEST_F(PresentationSmokeTest, FullScreenOpensPaused) {
  WithForm(
      main_->mnuVFullScreen, "frmSlideShow", [&](Form& form, FormWindow* w) {
        auto& show = static_cast<frmSlideShow&>(form);
        EXPECT_TRUE(w->isFullScreen());
        EXPECT_FALSE(show.tmrPlay.Enabled());
        EXPECT_EQ(show.ctlDisplayImage.PhotoPath(), session().gsSelectedImage);
        testing::SaveScreenshot(w, "full_screen");
        QTest::keyClick(w, Qt::Key_Escape);
      });
}

TEST_F(PresentationSmokeTest, TheWallpaperDialog) {
  WithForm(main_->mnuPWallPaper, "frmWallpaper",
           [&](Form& form, FormWindow* w) {
             auto& dialog = static_cast<frmWallpaper&>(form);
             EXPECT_TRUE(dialog.optWPapStretch.Value());
             EXPECT_EQ(dialog.lblWPapImageName.Caption(), "photo001");
             testing::SaveScreenshot(w, "wallpaper_dialog");
             QTest::keyClick(w, Qt::Key_Escape);
           });
}

TEST_F(PresentationSmokeTest, ThePhotoInformationDialog) {
  WithForm(main_->mnuPInfo, "frmPhotoInfo", [&](Form& form, FormWindow* w) {
    auto& info = static_cast<frmPhotoInfo&>(form);
    EXPECT_EQ(info.lbldispDimensions.Caption(), "1200(w) x 800(h)");
    testing::SaveScreenshot(w, "photo_info_dialog");
    QTest::keyClick(w, Qt::Key_Escape);
  });
}

}  // namespace
}  // namespace qbpd
