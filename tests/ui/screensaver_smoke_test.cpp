// The screensaver dialogs on the desktop: a screensaver made from the
// button, its second step with the strip of thumbnails, the preview playing
// full screen with the cursor hidden (and given back), the edit dialog and
// the list of screensavers. Each leaves a screenshot under the build folder.
#include "browser/frm_main_window.h"
#include "platform/forms/user_input.h"
#include "screensaver/frm_display_scr_list.h"
#include "screensaver/frm_editscreensaver.h"
#include "screensaver/frm_preview.h"
#include "screensaver/frm_screen_saver.h"
#include "screensaver/frm_screensaver_step2.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/control_widget.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_host.h"

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QImage>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>

namespace qbpd {
namespace {

class ScreensaverSmokeTest : public testing::DesktopTest {
 protected:
  ScreensaverSmokeTest() {
    photo_count_ = 3;
    photo_width_ = 1200;
    photo_height_ = 800;
  }

  // Runs `inside` once the form `name` is on the screen; it must close it.
  // `open` is what opens it (and returns when it has closed).
  void WhenShown(const char* name,
                 const std::function<void(Form&, FormWindow*)>& inside,
                 bool* ran) {
    QTimer::singleShot(0, [this, name, inside, ran] {
      Form* form = app_->forms().Find(name);
      ASSERT_NE(form, nullptr) << name;
      FormWindow* window = host_->WindowOf(*form);
      ASSERT_NE(window, nullptr) << name;
      ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
      QTest::qWait(50);
      *ran = true;
      inside(*form, window);
    });
  }

  QWidget* WidgetIn(FormWindow* window, const Control& c) {
    ControlWidget* w = window->WidgetOf(c);
    return w != nullptr ? w->widget() : nullptr;
  }

  void ClickIn(FormWindow* window, const Control& c) {
    QWidget* w = WidgetIn(window, c);
    ASSERT_NE(w, nullptr) << c.Name();
    QTest::mouseClick(w, Qt::LeftButton);
  }
};

TEST_F(ScreensaverSmokeTest, MakeOnePreviewItAndEditIt) {
  user::SetCheck(main_->ctrlQuilImage[0], true);
  user::SetCheck(main_->ctrlQuilImage[1], true);
  user::SetCheck(main_->ctrlQuilImage[2], true);
  bool named = false;
  bool stepped = false;
  bool previewed = false;
  bool edited = false;
  WhenShown(
      "frmScreenSaver",
      [&](Form& form, FormWindow* w) {
        auto& dialog = static_cast<frmScreenSaver&>(form);
        EXPECT_TRUE(dialog.fraSingleCont.Visible());
        dialog.txtSingleScrSaver.SetText("Garden");
        testing::SaveScreenshot(w, "screensaver_name");
        WhenShown(
            "frmScreensaverstep2",
            [&](Form& form2, FormWindow* w2) {
              auto& step2 = static_cast<frmScreensaverstep2&>(form2);
              EXPECT_EQ(step2.lblPhotosSelect.Caption(), "3 photo(s)");
              testing::SaveScreenshot(w2, "screensaver_step2");
              WhenShown(
                  "frmPreview",
                  [&](Form&, FormWindow* w3) {
                    EXPECT_TRUE(w3->isFullScreen());
                    ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
                    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(),
                              Qt::BlankCursor);
                    // A photo a second: after 1.7 s the first change is
                    // under way or done.
                    QTest::qWait(1700);
                    testing::SaveScreenshot(w3, "screensaver_preview");
                    const QImage shot = w3->grab().toImage();
                    // Fitted on black: the band above the photo is black,
                    // the middle is the photo.
                    EXPECT_EQ(shot.pixelColor(shot.width() / 2, 2),
                              QColor(Qt::black));
                    EXPECT_NE(
                        shot.pixelColor(shot.width() / 2, shot.height() / 2),
                        QColor(Qt::black));
                    QTest::keyClick(w3, Qt::Key_Space);
                  },
                  &previewed);
              ClickIn(w2, step2.imgPreview);
              EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
              WhenShown(
                  "frmEditscreensaver",
                  [&](Form& form4, FormWindow* w4) {
                    auto& edit = static_cast<frmEditscreensaver&>(form4);
                    EXPECT_EQ(edit.cboScreensaverTitles.Text(), "Garden");
                    EXPECT_EQ(edit.chkFromCentre.Value(), 1);
                    testing::SaveScreenshot(w4, "screensaver_edit");
                    QTest::keyClick(w4, Qt::Key_Escape);
                  },
                  &edited);
              ClickIn(w2, step2.imgEditScrSaver);
              step2.chkDefScrSaver.SetValue(0);
              ClickIn(w2, step2.imgContinue);
            },
            &stepped);
        ClickIn(w, dialog.imgSingleContinue);
      },
      &named);
  QWidget* button = WidgetFor(main_->imgScrSaver);
  ASSERT_NE(button, nullptr);
  QTest::mouseClick(button, Qt::LeftButton);
  EXPECT_TRUE(named);
  EXPECT_TRUE(stepped);
  EXPECT_TRUE(previewed);
  EXPECT_TRUE(edited);
  EXPECT_EQ(app_->forms().Find("frmScreensaverstep2"), nullptr);

  bool listed = false;
  WhenShown(
      "frmDisplayScrList",
      [&](Form& form, FormWindow* w) {
        auto& list = static_cast<frmDisplayScrList&>(form);
        EXPECT_EQ(list.optScrSaverName[0].Caption(), "Garden");
        testing::SaveScreenshot(w, "screensaver_list");
        QTest::keyClick(w, Qt::Key_Escape);
      },
      &listed);
  QAction* action = window_->ActionOf(main_->mnuScrSelect);
  ASSERT_NE(action, nullptr);
  action->trigger();
  EXPECT_TRUE(listed);
}

}  // namespace
}  // namespace qbpd
