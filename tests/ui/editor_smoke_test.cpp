// The editor on the desktop: the edit panels in place of the browse layout,
// the crop box with its handles and pointer shapes, the red-eye loupe, the
// colour panel, the rotation pop-up and frmRotate, and Save As's dialog.
// Each case leaves a screenshot under the build folder.
//
// Where the photo view model or the image library can't yet do an editing
// operation (they refuse it until it is built), the tests put the fakes of
// tests/support in their place, over the real view; each test says which it
// used in its output.
#include "browser/frm_main_window.h"
#include "editor/frm_rotate.h"
#include "platform/display_model.h"
#include "platform/forms/user_input.h"
#include "platform/image_operations.h"
#include "tests/support/fake_display_control.h"
#include "tests/support/fake_image_operations.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/editor_overlay.h"
#include "ui/qt/form_window.h"
#include "ui/qt/photo_view_widget.h"
#include "ui/qt/qt_host.h"

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

void SendMouse(QWidget* widget,
               QEvent::Type type,
               QPointF at,
               Qt::MouseButtons held) {
  const Qt::MouseButton button =
      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
  QMouseEvent event(type, at, widget->mapToGlobal(at), button, held,
                    Qt::NoModifier);
  QApplication::sendEvent(widget, &event);
}

// Whether the real photo view model can show a crop box yet.
bool RealModelEdits(const std::string& photo) {
  std::unique_ptr<DisplayControl> probe = MakeVipsDisplayControl();
  probe->SetViewSize(800, 600);
  return probe->LoadPhoto(photo) && probe->SetCropAspect(6, 4);
}

// Whether the real image library turns photos yet (tried on a copy).
bool RealLibraryRotates(const std::string& photo, const fs::path& scratch) {
  const fs::path copy = scratch / "probe.jpg";
  fs::copy_file(photo, copy, fs::copy_options::overwrite_existing);
  std::unique_ptr<ImageOperations> images =
      MakeVipsImageOperations((scratch / "probe-cache").string());
  return images->ImageRotation(copy.string(), copy.string(), 90) == 1;
}

// Runs `act` on the next modal dialog of type T that opens, then leaves it
// to `act` to close it.
template <class T>
void OnNextDialog(std::function<void(T*)> act) {
  auto* poll = new QTimer();
  auto tries = std::make_shared<int>(0);
  QObject::connect(poll, &QTimer::timeout, [=] {
    auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget());
    if (dialog == nullptr) {
      if (++*tries > 400) {
        poll->deleteLater();
      }
      return;
    }
    poll->stop();
    poll->deleteLater();
    act(dialog);
  });
  poll->start(20);
}

class EditorSmokeTest : public testing::DesktopTest {
 protected:
  EditorSmokeTest() {
    photo_count_ = 3;
    photo_width_ = 1500;
    photo_height_ = 1000;
    adjust_services_ = [this](PlatformServices& services) {
      const std::string first = (folder_ / "photo001.jpg").string();
      if (!RealModelEdits(first)) {
        std::printf("editor smoke: the photo view's editing is the fake's\n");
        services.make_display = [this]() -> std::unique_ptr<DisplayControl> {
          return std::make_unique<testing::FakeDisplayControl>(
              MakeVipsDisplayControl(), display_);
        };
      }
      if (!RealLibraryRotates(first, tmp_.path())) {
        std::printf("editor smoke: the batch rotation is the fake's\n");
        services.images = std::make_unique<testing::FakeImageOperations>(
            std::move(services.images), rotation_);
      }
    };
  }
  PhotoViewWidget* View() {
    return dynamic_cast<PhotoViewWidget*>(WidgetFor(main_->ctlDisplayImage));
  }
  void ClickWidget(const Control& c) {
    QWidget* w = WidgetFor(c);
    ASSERT_NE(w, nullptr) << c.Name();
    QTest::mouseClick(w, Qt::LeftButton, {}, w->rect().center());
  }
  // An option button takes a click on its circle or its text.
  void ClickOption(const Control& c) {
    QWidget* w = WidgetFor(c);
    ASSERT_NE(w, nullptr) << c.Name();
    QTest::mouseClick(w, Qt::LeftButton, {}, QPoint(8, w->height() / 2));
  }
  std::shared_ptr<testing::FakeDisplayState> display_ =
      std::make_shared<testing::FakeDisplayState>();
  std::shared_ptr<testing::FakeRotationState> rotation_ =
      std::make_shared<testing::FakeRotationState>();
};

TEST_F(EditorSmokeTest, TheCropBoxIsDrawnWithHandlesAndFollowsTheMouse) {
  ClickWidget(main_->imgCrop);
  ASSERT_EQ(session().giCurrentOperation, 1);
  QWidget* panel = WidgetFor(main_->edit.fraCrop);
  ASSERT_NE(panel, nullptr);
  EXPECT_TRUE(panel->isVisible());
  EXPECT_FALSE(WidgetFor(main_->picImageListCont)->isVisible());
  EXPECT_TRUE(main_->edit.optHor.Value());
  EXPECT_TRUE(main_->edit.opt4x6.Value());
  DisplayControl* model = main_->ctlDisplayImage.Display();
  ASSERT_EQ(model->ActiveTool(), DisplayControl::Tool::kCrop);
  double x = 0, y = 0, w = 0, h = 0;
  ASSERT_TRUE(model->CropBox(x, y, w, h));
  EXPECT_NEAR(w / h, 1.5, 0.01);

  PhotoViewWidget* view = View();
  ASSERT_NE(view, nullptr);
  QTest::qWait(50);
  const ViewMapping mapping = view->Mapping();
  const QRectF box = mapping.PhotoToView(QRectF(x, y, w, h));
  // The pointer tells what a press would do.
  SendMouse(view, QEvent::MouseMove, box.topLeft(), Qt::NoButton);
  EXPECT_EQ(view->cursor().shape(), Qt::SizeFDiagCursor);
  SendMouse(view, QEvent::MouseMove, QPointF(box.right(), box.center().y()),
            Qt::NoButton);
  EXPECT_EQ(view->cursor().shape(), Qt::SizeHorCursor);
  SendMouse(view, QEvent::MouseMove, box.center(), Qt::NoButton);
  EXPECT_EQ(view->cursor().shape(), Qt::SizeAllCursor);
  // The 5 x 7 print, upright, through the panel.
  ClickOption(main_->edit.optVer);
  ClickOption(main_->edit.opt5x7);
  ASSERT_TRUE(main_->edit.opt5x7.Value());
  ASSERT_TRUE(model->CropBox(x, y, w, h));
  EXPECT_NEAR(w / h, 5.0 / 7.0, 0.01);
  // A drag inside moves the box within the photo.
  const QRectF upright = view->Mapping().PhotoToView(QRectF(x, y, w, h));
  SendMouse(view, QEvent::MouseButtonPress, upright.center(), Qt::LeftButton);
  for (int i = 1; i <= 4; ++i) {
    SendMouse(view, QEvent::MouseMove, upright.center() + QPointF(40 * i, 0),
              Qt::LeftButton);
  }
  SendMouse(view, QEvent::MouseButtonRelease,
            upright.center() + QPointF(160, 0), Qt::NoButton);
  double moved_x = 0, moved_y = 0, moved_w = 0, moved_h = 0;
  ASSERT_TRUE(model->CropBox(moved_x, moved_y, moved_w, moved_h));
  EXPECT_GT(moved_x, x);
  EXPECT_LE(moved_x + moved_w, model->PhotoWidth() + 0.5);
  EXPECT_EQ(session().giCurrentOperation, 1);
  QTest::qWait(50);
  testing::SaveScreenshot(window_, "editor_crop");
  ClickWidget(main_->imgApplyChanges);
  EXPECT_EQ(session().giCurrentOperation, 0);
  EXPECT_TRUE(fs::exists(folder_ / "photo001_Fixed(1).Jpg"));
  EXPECT_TRUE(WidgetFor(main_->picImageListCont)->isVisible());
  testing::SaveScreenshot(window_, "editor_crop_applied");
}

TEST_F(EditorSmokeTest, RedEyeShowsALoupeAroundThePointer) {
  ClickWidget(main_->imgRedeye);
  ASSERT_EQ(session().giCurrentOperation, 4);
  EXPECT_TRUE(WidgetFor(main_->edit.fraRedEye)->isVisible());
  PhotoViewWidget* view = View();
  ASSERT_NE(view, nullptr);
  QTest::qWait(50);
  const QPointF middle = view->Mapping().PhotoToView(
      QPointF(main_->ctlDisplayImage.PhotoWidth() / 2.0,
              main_->ctlDisplayImage.PhotoHeight() / 2.0));
  SendMouse(view, QEvent::MouseMove, middle, Qt::NoButton);
  EXPECT_EQ(view->cursor().shape(), Qt::CrossCursor);
  QTest::qWait(50);
  testing::SaveScreenshot(window_, "editor_red_eye");
  SendMouse(view, QEvent::MouseButtonPress, middle, Qt::LeftButton);
  SendMouse(view, QEvent::MouseButtonRelease, middle, Qt::NoButton);
  // A click that found red lets the change be applied.
  if (main_->FieldValue("mbRedEyeRemoved").ToBool()) {
    ClickWidget(main_->imgApplyChanges);
    EXPECT_TRUE(fs::exists(folder_ / "photo001_Fixed(1).Jpg"));
  } else {
    ClickWidget(main_->imgCancel);
  }
  EXPECT_EQ(session().giCurrentOperation, 0);
}

TEST_F(EditorSmokeTest, ARedEyeClickOnACardOfEyes) {
  const std::string card = (folder_ / "photo001.jpg").string();
  testing::MakeRedEyeCard(card);
  // Shown afresh: another photo, then the card again.
  user::Click(main_->ctrlQuilImage[1]);
  user::Click(main_->ctrlQuilImage[0]);
  ASSERT_EQ(main_->ctlDisplayImage.PhotoWidth(), 1200);
  ClickWidget(main_->imgRedeye);
  ASSERT_EQ(session().giCurrentOperation, 4);
  PhotoViewWidget* view = View();
  ASSERT_NE(view, nullptr);
  QTest::qWait(50);
  const QPointF pupil = view->Mapping().PhotoToView(QPointF(400, 350));
  SendMouse(view, QEvent::MouseMove, pupil, Qt::NoButton);
  QTest::qWait(50);
  testing::SaveScreenshot(window_, "red_eye_loupe_on_eye");
  for (int i = 0; i < 2; ++i) {
    SendMouse(view, QEvent::MouseButtonPress, pupil, Qt::LeftButton);
    SendMouse(view, QEvent::MouseButtonRelease, pupil, Qt::NoButton);
  }
  const QPointF other = view->Mapping().PhotoToView(QPointF(800, 350));
  SendMouse(view, QEvent::MouseButtonPress, other, Qt::LeftButton);
  SendMouse(view, QEvent::MouseButtonRelease, other, Qt::NoButton);
  SendMouse(view, QEvent::MouseMove, pupil, Qt::NoButton);
  QTest::qWait(50);
  testing::SaveScreenshot(window_, "red_eye_after_clicks");
  EXPECT_TRUE(main_->FieldValue("mbRedEyeRemoved").ToBool());
  ClickWidget(main_->imgApplyChanges);
  EXPECT_TRUE(fs::exists(folder_ / "photo001_Fixed(1).Jpg"));
  QTest::qWait(50);
  testing::SaveScreenshot(window_, "red_eye_applied");
}

TEST_F(EditorSmokeTest, TheColourPanelComparesCorrectedAndOriginal) {
  testing::SeenMessageBox seen;
  if (display_->current == nullptr) {
    // The real model: a correction it can't compute is said in a box.
    testing::AnswerNextMessageBox(QMessageBox::Ok, &seen);
  }
  ClickWidget(main_->imgAutocolor);
  ASSERT_EQ(session().giCurrentOperation, 5);
  EXPECT_TRUE(WidgetFor(main_->edit.fraAutoColor)->isVisible());
  EXPECT_TRUE(main_->edit.optViewCorrected.Value());
  QTest::qWait(50);
  testing::SaveScreenshot(window_, "editor_colour");
  ClickWidget(main_->edit.lblViewOriginal);
  EXPECT_TRUE(main_->edit.optViewOriginal.Value());
  ClickWidget(main_->imgCancel);
  EXPECT_EQ(session().giCurrentOperation, 0);
  EXPECT_FALSE(fs::exists(folder_ / "photo001_Fixed(1).Jpg"));
}

TEST_F(EditorSmokeTest, TheRotationPopUpAndTheProgressDialogAreWindows) {
  for (int i : {1, 2}) {
    QWidget* thumb = WidgetFor(main_->ctrlQuilImage[i]);
    ASSERT_NE(thumb, nullptr);
    user::SetCheck(main_->ctrlQuilImage[i], true);
  }
  QTest::qWait(20);
  // The pop-up: its picture is taken, then "All Selected" is picked.
  bool popped = false;
  auto* poll = new QTimer();
  QObject::connect(poll, &QTimer::timeout, [&, poll] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (menu == nullptr) {
      return;
    }
    popped = true;
    poll->stop();
    poll->deleteLater();
    testing::SaveScreenshotWithPopup(window_, menu, "rotate_popup");
    for (QAction* action : menu->actions()) {
      if (action->text().contains("All Selected")) {
        menu->setActiveAction(action);
        QTest::keyClick(menu, Qt::Key_Return);
        return;
      }
    }
    menu->close();
  });
  poll->start(20);
  // The progress dialog, taken while the batch runs (with the real image
  // library the photos are turned on disk meanwhile) or stays its second.
  // Taken twice: as it shows, and at the end of the run (the dialog stays a
  // second after the last photo with the whole bar).
  bool progress_seen = false;
  bool end_seen = false;
  auto* watch = new QTimer();
  QObject::connect(watch, &QTimer::timeout, [&, watch] {
    frmRotate* dialog = app_->forms().Find<frmRotate>();
    FormWindow* w = dialog == nullptr ? nullptr : host_->WindowOf(*dialog);
    if (w == nullptr || !w->isVisible()) {
      return;
    }
    if (!progress_seen) {
      progress_seen = true;
      testing::SaveScreenshot(w, "rotate_progress");
      return;
    }
    if (dialog->lblPercent.Caption() == "100%") {
      end_seen = true;
      watch->stop();
      watch->deleteLater();
      testing::SaveScreenshot(w, "rotate_progress_end");
    }
  });
  watch->start(10);
  ClickWidget(main_->imgRightRotate);
  ASSERT_TRUE(QTest::qWaitFor([&] { return popped; }, 5000));
  ASSERT_TRUE(QTest::qWaitFor(
      [&] { return app_->forms().Find<frmRotate>() == nullptr; }, 15000));
  if (!end_seen) {
    delete watch;  // never stopped: it must not outlive this test
  }
  EXPECT_TRUE(progress_seen);
  EXPECT_TRUE(end_seen);
  if (!rotation_->rotations.empty()) {
    EXPECT_EQ(rotation_->rotations.size(), 2u);
  }
  // Photos turned on disk: now 1000 wide.
  std::unique_ptr<ImageOperations> images =
      MakeVipsImageOperations((tmp_.path() / "check").string());
  EXPECT_EQ(images->GetImageWidth((folder_ / "photo002.jpg").string()), 1000);
  EXPECT_EQ(images->GetImageWidth((folder_ / "photo003.jpg").string()), 1000);
  EXPECT_EQ(images->GetImageWidth((folder_ / "photo001.jpg").string()), 1500);
  testing::SaveScreenshot(window_, "rotate_done");
}

TEST_F(EditorSmokeTest, SaveAsWritesTheTurnedPhotoUnderANewName) {
  ClickWidget(main_->imgLeftRotate);
  ASSERT_EQ(session().glRotationAngle, -90);
  QTest::qWait(50);
  testing::SaveScreenshot(window_, "rotated_on_screen");
  const std::string target = (folder_ / "turned copy.jpg").string();
  std::string proposed;
  OnNextDialog<QFileDialog>([&](QFileDialog* dialog) {
    proposed = dialog->selectedFiles().value(0).toStdString();
    testing::SaveScreenshot(dialog, "save_as_dialog");
    // The dialog fills its list of the folder meanwhile; the name is typed
    // once it has settled, and the dialog is accepted as Enter would.
    QTimer::singleShot(300, dialog, [dialog, target] {
      dialog->selectFile(QString::fromStdString(target));
      if (auto* edit = dialog->findChild<QLineEdit*>("fileNameEdit")) {
        edit->setText(QString::fromStdString(target));
      }
      QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
    });
  });
  user::PickMenu(main_->mnuFSaveAs);
  EXPECT_TRUE(proposed.ends_with("Copy of photo001.jpg")) << proposed;
  ASSERT_TRUE(fs::exists(target));
  std::unique_ptr<ImageOperations> images =
      MakeVipsImageOperations((tmp_.path() / "check").string());
  EXPECT_EQ(images->GetImageWidth(target), 1000);
  EXPECT_EQ(images->GetImageWidth((folder_ / "photo001.jpg").string()), 1500);
  EXPECT_EQ(session().gsSelectedImage, target);
  EXPECT_EQ(session().gdicPhotoList.Count(), 4);
  QTest::qWait(50);
  testing::SaveScreenshot(window_, "save_as_done");
}

}  // namespace
}  // namespace qbpd
