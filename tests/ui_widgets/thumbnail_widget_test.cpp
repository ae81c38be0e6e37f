#include "ui/qt/thumbnail_widget.h"

#include "platform/forms/controls.h"
#include "tests/support/temp_dir.h"
#include "tests/ui_widgets/widget_test_form.h"
#include "ui/qt/control_widget.h"

#include <QApplication>
#include <QImage>
#include <QPalette>
#include <QTest>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace qbpd::testing {
namespace {

constexpr int kSidePx = 97;  // 1455 twips, the grid's thumbnail

class ThumbnailWidgetTest : public ::testing::Test {
 protected:
  ThumbnailWidgetTest() : form_(host_) {
    thumb().Move(0, 0, kSidePx * kTwipsPerPixel, kSidePx * kTwipsPerPixel);
    thumb().SetToolTipText("IMG_0001.JPG");
  }

  Thumbnail& thumb() { return form_.ctrlQuilImage[0]; }

  ThumbnailWidget& Show() {
    handle_ = MakeThumbnailWidget(thumb(), nullptr);
    QWidget* w = handle_->widget();
    w->resize(kSidePx, kSidePx);
    w->show();
    return static_cast<ThumbnailWidget&>(*w);
  }

  // A picture file of one colour; the cache's files end in ".qpd".
  std::string WritePicture(const std::string& name, QSize size, QColor color) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    const std::string path = (dir_ / name).string();
    EXPECT_TRUE(image.save(QString::fromStdString(path), "PNG"));
    return path;
  }

  ScriptedHost host_;
  frmWidgets form_;
  TempDir dir_;
  std::unique_ptr<ControlWidget> handle_;
};

TEST_F(ThumbnailWidgetTest, ClickOnPictureRaisesMouseThenClickAndMarksCurrent) {
  ThumbnailWidget& w = Show();
  const QPoint centre = w.PictureBox().center();
  QTest::mouseClick(&w, Qt::LeftButton, {}, centre);

  const std::string at = std::to_string(centre.x() * kTwipsPerPixel) + "," +
                         std::to_string(centre.y() * kTwipsPerPixel);
  EXPECT_EQ(form_.events,
            (std::vector<std::string>{"ctrlQuilImage(0).MouseDown 1 " + at,
                                      "ctrlQuilImage(0).MouseUp 1 " + at,
                                      "ctrlQuilImage(0).Click"}));
  EXPECT_EQ(form_.handled_on_entry, std::vector<bool>{false});
  EXPECT_TRUE(thumb().Current());
  EXPECT_FALSE(thumb().Checked());
  EXPECT_EQ(form_.ActiveControl(), &thumb());

  // A right click, and a press that leaves the picture before its release,
  // click nothing.
  form_.events.clear();
  QTest::mouseClick(&w, Qt::RightButton, {}, centre);
  QTest::mousePress(&w, Qt::LeftButton, {}, centre);
  QTest::mouseRelease(&w, Qt::LeftButton, {}, w.CheckBoxRect().center());
  ASSERT_EQ(form_.events.size(), 4u);
  for (const std::string& e : form_.events) {
    EXPECT_EQ(e.find(".Click"), std::string::npos) << e;
  }
}

TEST_F(ThumbnailWidgetTest, CheckBoxFlipsWithMouseAndSpaceAndNeverClicks) {
  ThumbnailWidget& w = Show();
  QTest::mouseClick(&w, Qt::LeftButton, {}, w.CheckBoxRect().center());
  EXPECT_TRUE(thumb().Checked());
  QTest::keyClick(&w, Qt::Key_Space);
  EXPECT_FALSE(thumb().Checked());
  QTest::mouseClick(&w, Qt::LeftButton, {}, w.CheckBoxRect().center());
  EXPECT_TRUE(thumb().Checked());

  std::vector<std::string> checks;
  for (const std::string& e : form_.events) {
    EXPECT_EQ(e.find(".Click"), std::string::npos) << e;
    if (e == "ctrlQuilImage(0).CheckClick") {
      checks.push_back(e);
    }
  }
  EXPECT_EQ(checks.size(), 3u);
  EXPECT_FALSE(thumb().Current());

  // The program's own SetCheck without the event shows in the widget after a
  // Sync and raises nothing.
  form_.events.clear();
  thumb().SetCheck(false, /*raise_event=*/false);
  handle_->Sync();
  EXPECT_TRUE(form_.events.empty());
}

TEST_F(ThumbnailWidgetTest, DoubleClickClicksOnceThenRaisesDblClick) {
  ThumbnailWidget& w = Show();
  // What a window system sends: press, release, double click, release.
  const QPoint at = w.PictureBox().center();
  QTest::mouseClick(&w, Qt::LeftButton, {}, at);
  QTest::mouseDClick(&w, Qt::LeftButton, {}, at);
  QTest::mouseRelease(&w, Qt::LeftButton, {}, at);
  std::vector<std::string> kinds;
  for (const std::string& e : form_.events) {
    if (e.find("Mouse") == std::string::npos) {
      kinds.push_back(e);
    }
  }
  EXPECT_EQ(kinds, (std::vector<std::string>{"ctrlQuilImage(0).Click",
                                             "ctrlQuilImage(0).DblClick"}));
}

TEST_F(ThumbnailWidgetTest, MouseMoveCarriesTwips) {
  ThumbnailWidget& w = Show();
  QTest::mouseMove(&w, QPoint(10, 20));
  ASSERT_FALSE(form_.events.empty());
  EXPECT_EQ(form_.events.back(), "ctrlQuilImage(0).MouseMove 0 150,300");
}

TEST_F(ThumbnailWidgetTest, DrawsPictureFittedCentredWithFrameAndCheck) {
  // A wide red picture: fitted to the box's width, centred in its height,
  // with the window colour above and below it.
  thumb().LoadThumbnail(WritePicture("wide.qpd", QSize(85, 40), Qt::red));
  thumb().MarkCurrent();
  thumb().SetCheck(true, /*raise_event=*/false);
  ThumbnailWidget& w = Show();
  ASSERT_TRUE(w.HasPicture());
  const QImage shot = w.grab().toImage();
  SavePicture(shot, "thumbnail_current_checked");

  const QRect box = w.PictureBox();
  EXPECT_EQ(shot.pixelColor(box.center()), QColor(Qt::red));
  const int picture_top = box.top() + (box.height() - 40) / 2;
  EXPECT_EQ(shot.pixelColor(box.center().x(), picture_top + 1),
            QColor(Qt::red));
  EXPECT_EQ(shot.pixelColor(box.center().x(), picture_top - 2),
            w.palette().window().color());
  // The frame of the current photo runs just outside the box.
  EXPECT_EQ(shot.pixelColor(box.center().x(), box.top() - 2),
            w.palette().highlight().color());

  // Released, the frame goes; a picture taller than the box shrinks into it.
  thumb().ReleaseThumbnail(true);
  thumb().LoadThumbnail(WritePicture("tall.jpg", QSize(60, 300), Qt::blue));
  handle_->Sync();
  const QImage released = w.grab().toImage();
  SavePicture(released, "thumbnail_tall_released");
  EXPECT_NE(released.pixelColor(box.center().x(), box.top() - 2),
            w.palette().highlight().color());
  const QColor top_middle = released.pixelColor(box.center().x(), box.top());
  EXPECT_EQ(top_middle.blue(), 255);
  EXPECT_EQ(released.pixelColor(box.left() + 1, box.center().y()),
            w.palette().window().color());
}

TEST_F(ThumbnailWidgetTest, SyncFollowsFileTooltipAndVisibility) {
  const std::string file = WritePicture("a.qpd", QSize(20, 20), Qt::green);
  thumb().LoadThumbnail(file);
  ThumbnailWidget& w = Show();
  EXPECT_TRUE(w.HasPicture());
  EXPECT_EQ(w.toolTip(), "IMG_0001.JPG");

  // A rename gives the tooltip the new name; a cleared picture empties the
  // box; a file that is no picture leaves it empty without a fault.
  thumb().SetToolTipText("");
  thumb().SetToolText("Beach.jpg");
  thumb().LoadThumbnail("");
  handle_->Sync();
  EXPECT_EQ(w.toolTip(), "Beach.jpg");
  EXPECT_FALSE(w.HasPicture());

  const std::string junk = (dir_ / "junk.qpd").string();
  FILE* f = fopen(junk.c_str(), "wb");
  ASSERT_NE(f, nullptr);
  fputs("not a picture", f);
  fclose(f);
  thumb().LoadThumbnail(junk);
  handle_->Sync();
  EXPECT_FALSE(w.HasPicture());
  (void)w.grab();

  // The same name, rewritten with a new picture (a rotation does this), is
  // read again.
  thumb().LoadThumbnail(file);
  handle_->Sync();
  ASSERT_TRUE(w.HasPicture());
  WritePicture("a.qpd", QSize(30, 20), Qt::yellow);
  handle_->Sync();
  EXPECT_EQ(w.grab().toImage().pixelColor(w.PictureBox().center()),
            QColor(Qt::yellow));

  thumb().SetVisible(false);
  handle_->Sync();
  EXPECT_FALSE(w.isVisible());
}

TEST_F(ThumbnailWidgetTest, HandlerThatUnloadsTheControlEndsTheWidgetSafely) {
  Thumbnail& loaded = form_.ctrlQuilImage.Load(1);
  loaded.Move(0, 0, kSidePx * kTwipsPerPixel, kSidePx * kTwipsPerPixel);
  loaded.SetVisible(true);
  auto handle = MakeThumbnailWidget(loaded, nullptr);
  QPointer<QWidget> w = handle->widget();
  w->resize(kSidePx, kSidePx);
  w->show();
  // As a folder change does: the handler unloads the control, and the form
  // window drops its widget, in the middle of the widget's own mouse event.
  form_.On("ctrlQuilImage", "CheckClick", [&](EventArgs&) {
    handle.reset();
    form_.ctrlQuilImage.Unload(1);
  });
  const QPoint check =
      static_cast<ThumbnailWidget*>(w.data())->CheckBoxRect().center();
  QTest::mouseClick(w.data(), Qt::LeftButton, {}, check);
  EXPECT_FALSE(form_.ctrlQuilImage.Exists(1));
  ASSERT_FALSE(w.isNull());
  EXPECT_FALSE(w->isVisible());
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(w.isNull());
}

}  // namespace
}  // namespace qbpd::testing
