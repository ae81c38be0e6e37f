#include "ui/qt/photo_view_widget.h"

#include "platform/display_model.h"
#include "platform/forms/controls.h"
#include "tests/support/bmp_writer.h"
#include "tests/support/temp_dir.h"
#include "tests/ui_widgets/widget_test_form.h"
#include "ui/qt/control_widget.h"
#include "ui/qt/view_overlay.h"

#include <QApplication>
#include <QPainter>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace qbpd::testing {
namespace {

const QColor kGrey(206, 206, 206);
// The test photo's quadrants, exact in a bitmap: top left, top right, bottom
// left, bottom right.
const QColor kQuadrants[4] = {QColor(220, 30, 30), QColor(30, 200, 30),
                              QColor(30, 30, 220), QColor(230, 220, 40)};

TEST(ViewMappingTest, PlacesThePhotoAndMapsBothWays) {
  struct Case {
    const char* what;
    ViewMapping m;
    QPoint origin;
    QRect visible;
    QPointF view;   // a view point ...
    QPointF photo;  // ... and the photo point under it
  };
  const Case cases[] = {
      // 40 x 30 at 200% in a 200 x 150 view: centred both ways.
      {"small, zoomed in",
       {QSize(200, 150), QSize(80, 60), QSize(40, 30), QPoint(0, 0)},
       QPoint(60, 45),
       QRect(0, 0, 80, 60),
       QPointF(100, 75),
       QPointF(20, 15)},
      // 4000 x 3000 shown at 10%: 400 x 300, scrolled by (50, 120).
      {"large, scrolled",
       {QSize(184, 134), QSize(400, 300), QSize(4000, 3000), QPoint(50, 120)},
       QPoint(-50, -120),
       QRect(50, 120, 184, 134),
       QPointF(10, 20),
       QPointF(600, 1400)},
      // Wider than the view, lower than it: scrolled across, centred down.
      {"wide",
       {QSize(100, 100), QSize(300, 50), QSize(300, 50), QPoint(200, 0)},
       QPoint(-200, 25),
       QRect(200, 0, 100, 50),
       QPointF(0, 25),
       QPointF(200, 0)},
      // Scrolled past the end (a stale value): only what is left shows.
      {"scrolled past",
       {QSize(100, 100), QSize(300, 300), QSize(300, 300), QPoint(250, 0)},
       QPoint(-250, 0),
       QRect(250, 0, 50, 100),
       QPointF(49, 0),
       QPointF(299, 0)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(c.m.Origin(), c.origin);
    EXPECT_EQ(c.m.VisibleShownRect(), c.visible);
    EXPECT_EQ(c.m.ViewToPhoto(c.view), c.photo);
    EXPECT_EQ(c.m.PhotoToView(c.photo), c.view);
    EXPECT_TRUE(c.m.OnPhoto(c.view));
  }
  // Off the photo: the grey margin of the small case.
  EXPECT_FALSE(cases[0].m.OnPhoto(QPointF(59, 75)));
  EXPECT_FALSE(cases[0].m.OnPhoto(QPointF(140, 75)));
  // No photo at all: nothing is on it, and the mapping stays finite.
  const ViewMapping empty{QSize(100, 100), QSize(), QSize(), QPoint()};
  EXPECT_FALSE(empty.OnPhoto(QPointF(50, 50)));
  EXPECT_TRUE(empty.VisibleShownRect().isEmpty());
}

TEST(ViewMappingTest, ScrollBarsTakeRoomOnlyWhenNeeded) {
  struct Case {
    QSize shown;
    bool horizontal;
    bool vertical;
    QSize viewport;
  };
  const QSize widget(200, 150);
  const Case cases[] = {
      {QSize(200, 150), false, false, QSize(200, 150)},  // fits exactly
      {QSize(184, 400), false, true, QSize(184, 150)},   // a fit to width
      {QSize(190, 400), true, true, QSize(184, 134)},    // the bar forces both
      {QSize(400, 140), true, true, QSize(184, 134)},    // likewise across
      {QSize(400, 100), true, false, QSize(200, 134)},
  };
  for (const Case& c : cases) {
    const ScrollBarLayout layout =
        LayOutScrollBars(widget, c.shown, kDisplayScrollBarPx);
    EXPECT_EQ(layout.horizontal, c.horizontal) << c.shown.width();
    EXPECT_EQ(layout.vertical, c.vertical) << c.shown.width();
    EXPECT_EQ(layout.viewport, c.viewport) << c.shown.width();
  }
}

// Records where the mouse went in photo pixels, takes presses on the photo,
// and paints a 10 x 10 photo-pixel square at the photo's corner.
class RecordingOverlay : public ViewOverlay {
 public:
  void Paint(QPainter& painter, const ViewMapping& mapping) override {
    painter.fillRect(mapping.PhotoToView(QRectF(0, 0, 10, 10)), Qt::magenta);
  }
  bool MousePress(const PhotoMouse& mouse) override {
    presses.push_back(mouse.photo);
    return mouse.on_photo;
  }
  bool MouseMove(const PhotoMouse& mouse) override {
    moves.push_back(mouse.photo);
    return false;
  }
  void MouseRelease(const PhotoMouse& mouse) override {
    releases.push_back(mouse.photo);
  }
  std::vector<QPointF> presses;
  std::vector<QPointF> moves;
  std::vector<QPointF> releases;
};

class PhotoViewWidgetTest : public ::testing::Test {
 protected:
  static constexpr int kViewW = 200;
  static constexpr int kViewH = 150;

  PhotoViewWidgetTest() : form_(host_) {
    view().AttachDisplay(MakeVipsDisplayControl());
    view().Move(0, 0, kViewW * kTwipsPerPixel, kViewH * kTwipsPerPixel);
  }

  PhotoView& view() { return form_.ctlDisplayImage; }

  // A bitmap of the four quadrants.
  std::string WritePhoto(int width,
                         int height,
                         const std::string& name = "photo.bmp") {
    const std::string bytes =
        EncodeBmp(BmpLayout(width, height), [&](int x, int y) {
          const QColor& c =
              kQuadrants[(y < height / 2 ? 0 : 2) + (x < width / 2 ? 0 : 1)];
          return static_cast<std::uint32_t>(c.rgb() & 0xFFFFFF);
        });
    return dir_.WriteFile(name, bytes).string();
  }

  PhotoViewWidget& Show() {
    handle_ = MakePhotoViewWidget(view(), nullptr);
    auto& w = static_cast<PhotoViewWidget&>(*handle_->widget());
    w.resize(kViewW, kViewH);
    w.show();
    handle_->Sync();
    return w;
  }

  ScriptedHost host_;
  frmWidgets form_;
  TempDir dir_;
  std::unique_ptr<ControlWidget> handle_;
};

TEST_F(PhotoViewWidgetTest, SmallPhotoSitsCentredOnTheGrey) {
  ASSERT_TRUE(view().LoadPhoto(WritePhoto(40, 30)));
  ASSERT_TRUE(view().ZoomTo(200));
  PhotoViewWidget& w = Show();
  EXPECT_TRUE(w.HorizontalBar()->isHidden());
  EXPECT_TRUE(w.VerticalBar()->isHidden());

  const QImage shot = w.grab().toImage();
  SavePicture(shot, "photo_view_small_200");
  // 80 x 60 shown, from (60, 45): a quadrant is 40 x 30 view pixels.
  EXPECT_EQ(shot.pixelColor(80, 60), kQuadrants[0]);
  EXPECT_EQ(shot.pixelColor(120, 60), kQuadrants[1]);
  EXPECT_EQ(shot.pixelColor(80, 100), kQuadrants[2]);
  EXPECT_EQ(shot.pixelColor(139, 104), kQuadrants[3]);
  for (QPoint grey : {QPoint(0, 0), QPoint(59, 75), QPoint(140, 75),
                      QPoint(100, 44), QPoint(100, 105), QPoint(199, 149)}) {
    EXPECT_EQ(shot.pixelColor(grey), kGrey) << grey.x() << "," << grey.y();
  }

  // Painting again with nothing changed reuses the rendered pixels.
  const int renders = w.RenderCount();
  (void)w.grab();
  EXPECT_EQ(w.RenderCount(), renders);

  // Cleared, the view is all grey.
  view().ClearPhoto();
  handle_->Sync();
  const QImage cleared = w.grab().toImage();
  EXPECT_EQ(cleared.pixelColor(100, 75), kGrey);
}

TEST_F(PhotoViewWidgetTest, AroundThePhotoIsTheColourTheProgramGaveTheView) {
  ASSERT_TRUE(view().LoadPhoto(WritePhoto(40, 30)));
  view().SetBackRed(0);
  view().SetBackGreen(0);
  view().SetBackBlue(0);
  PhotoViewWidget& w = Show();
  QImage shot = w.grab().toImage();
  EXPECT_EQ(shot.pixelColor(0, 0), QColor(Qt::black));
  EXPECT_EQ(shot.pixelColor(199, 149), QColor(Qt::black));
  EXPECT_EQ(shot.pixelColor(90, 65), kQuadrants[0]);
  view().SetBackRed(10);
  view().SetBackGreen(20);
  view().SetBackBlue(30);
  handle_->Sync();
  shot = w.grab().toImage();
  EXPECT_EQ(shot.pixelColor(0, 0), QColor(10, 20, 30));
}

TEST_F(PhotoViewWidgetTest, LargePhotoScrollsByBarWheelAndKeys) {
  ASSERT_TRUE(view().LoadPhoto(WritePhoto(400, 300)));
  ASSERT_TRUE(view().ZoomTo(100));
  PhotoViewWidget& w = Show();
  QScrollBar* h = w.HorizontalBar();
  QScrollBar* v = w.VerticalBar();
  ASSERT_FALSE(h->isHidden());
  ASSERT_FALSE(v->isHidden());
  EXPECT_EQ(h->maximum(), 400 - (kViewW - kDisplayScrollBarPx));
  EXPECT_EQ(v->maximum(), 300 - (kViewH - kDisplayScrollBarPx));
  EXPECT_EQ(v->geometry().width(), kDisplayScrollBarPx);

  QImage shot = w.grab().toImage();
  SavePicture(shot, "photo_view_large_top_left");
  EXPECT_EQ(shot.pixelColor(10, 10), kQuadrants[0]);

  // End and a scroll across to the end show the bottom right quadrant.
  w.setFocus();
  QTest::keyClick(&w, Qt::Key_End);
  EXPECT_EQ(v->value(), v->maximum());
  h->setValue(h->maximum());
  const int renders = w.RenderCount();
  shot = w.grab().toImage();
  SavePicture(shot, "photo_view_large_bottom_right");
  EXPECT_EQ(w.RenderCount(), renders + 1);
  EXPECT_EQ(shot.pixelColor(170, 120), kQuadrants[3]);
  EXPECT_EQ(shot.pixelColor(kViewW - kDisplayScrollBarPx - 1,
                            kViewH - kDisplayScrollBarPx - 1),
            kQuadrants[3]);

  // One notch of the wheel up, and Home.
  const int before = v->value();
  QWheelEvent wheel(QPointF(50, 50), w.mapToGlobal(QPointF(50, 50)), QPoint(),
                    QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                    Qt::NoScrollPhase, false);
  QApplication::sendEvent(&w, &wheel);
  EXPECT_LT(v->value(), before);
  QTest::keyClick(&w, Qt::Key_Home);
  EXPECT_EQ(v->value(), 0);
  EXPECT_EQ(h->value(), 0);
}

TEST_F(PhotoViewWidgetTest, FitToWidthLeavesRoomForTheVerticalBarOnly) {
  // A tall photo fitted to the view's width: the model leaves the bar's
  // width, so only the vertical bar shows and nothing is cut off at the right.
  ASSERT_TRUE(view().LoadPhoto(WritePhoto(100, 300)));
  ASSERT_TRUE(view().ZoomFitToWidth());
  PhotoViewWidget& w = Show();
  EXPECT_TRUE(w.HorizontalBar()->isHidden());
  EXPECT_FALSE(w.VerticalBar()->isHidden());
  EXPECT_EQ(w.Mapping().shown.width(), kViewW - kDisplayScrollBarPx);
  EXPECT_EQ(w.Mapping().viewport.width(), kViewW - kDisplayScrollBarPx);
  const QImage shot = w.grab().toImage();
  SavePicture(shot, "photo_view_fit_tall");
  EXPECT_EQ(shot.pixelColor(kViewW - kDisplayScrollBarPx - 2, 5),
            kQuadrants[1]);

  // Zooming the same photo keeps the centre of the view where it was.
  QScrollBar* v = w.VerticalBar();
  v->setValue(v->maximum() / 2);
  const QPointF centre_before = w.Mapping().ViewToPhoto(QPointF(92, 75));
  ASSERT_TRUE(view().ZoomTo(200));
  handle_->Sync();
  const QPointF centre_after = w.Mapping().ViewToPhoto(QPointF(92, 75));
  EXPECT_NEAR(centre_after.y(), centre_before.y(), 2.0);

  // Another photo starts at the top.
  ASSERT_TRUE(view().LoadPhoto(WritePhoto(100, 300, "next.bmp")));
  ASSERT_TRUE(view().ZoomTo(200));
  handle_->Sync();
  EXPECT_EQ(v->value(), 0);
}

TEST_F(PhotoViewWidgetTest, ClickRaisesEventsAndOverlaysGetPhotoPixels) {
  ASSERT_TRUE(view().LoadPhoto(WritePhoto(40, 30)));
  ASSERT_TRUE(view().ZoomTo(200));
  PhotoViewWidget& w = Show();

  // A click on the grey: mouse events in twips, then Click.
  QTest::mouseClick(&w, Qt::LeftButton, {}, QPoint(10, 20));
  EXPECT_EQ(form_.events,
            (std::vector<std::string>{"ctlDisplayImage.MouseDown 1 150,300",
                                      "ctlDisplayImage.MouseUp 1 150,300",
                                      "ctlDisplayImage.Click"}));

  auto owned = std::make_unique<RecordingOverlay>();
  RecordingOverlay& overlay = *owned;
  w.AddOverlay(std::move(owned));
  const QImage shot = w.grab().toImage();
  SavePicture(shot, "photo_view_overlay");
  // The overlay's 10 x 10 photo pixels are 20 x 20 view pixels from (60, 45).
  EXPECT_EQ(shot.pixelColor(61, 46), QColor(Qt::magenta));
  EXPECT_EQ(shot.pixelColor(79, 64), QColor(Qt::magenta));
  EXPECT_EQ(shot.pixelColor(81, 66), kQuadrants[0]);

  // A drag on the photo goes to the overlay in photo pixels, and clicks
  // nothing; the control still sees the mouse.
  form_.events.clear();
  QTest::mousePress(&w, Qt::LeftButton, {}, QPoint(100, 75));
  QTest::mouseMove(&w, QPoint(110, 85));
  QTest::mouseRelease(&w, Qt::LeftButton, {}, QPoint(110, 85));
  ASSERT_EQ(overlay.presses.size(), 1u);
  EXPECT_EQ(overlay.presses[0], QPointF(20, 15));
  ASSERT_FALSE(overlay.moves.empty());
  EXPECT_EQ(overlay.moves.back(), QPointF(25, 20));
  ASSERT_EQ(overlay.releases.size(), 1u);
  EXPECT_EQ(overlay.releases[0], QPointF(25, 20));
  ASSERT_FALSE(form_.events.empty());
  EXPECT_EQ(form_.events.front(), "ctlDisplayImage.MouseDown 1 1500,1125");
  EXPECT_EQ(form_.events.back(), "ctlDisplayImage.MouseUp 1 1650,1275");
  for (const std::string& e : form_.events) {
    EXPECT_NE(e, "ctlDisplayImage.Click");
  }

  // Off the photo the overlay declines, and the view clicks.
  form_.events.clear();
  QTest::mouseClick(&w, Qt::LeftButton, {}, QPoint(10, 10));
  EXPECT_EQ(form_.events.back(), "ctlDisplayImage.Click");
}

}  // namespace
}  // namespace qbpd::testing
