// The desktop window while the photo view decodes a very large photo: the
// decoding runs on another thread and the window keeps painting and Qt's
// timers keep running, while what a window would tell its form (here a
// request made during the load) reaches the program only once the load has
// answered. A run with the decoding on the window's own thread shows the
// freeze this is about. (User input waits in the window system's queue,
// which a test on the offscreen platform cannot fill.)
#include "app/program/program.h"
#include "platform/display_model.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/photo_maker.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_host.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace qbpd::testing {
namespace {

namespace fs = std::filesystem;

// The paints of the photo view's widget, during the load and after.
class Watch : public QObject {
 public:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) {
      ++(loading ? paints_during : paints_after);
    }
    return QObject::eventFilter(watched, event);
  }

  bool loading = false;
  int paints_during = 0;
  int paints_after = 0;
};

struct LoadSeen {
  bool loaded = false;
  int ticks_during = 0;
  // A request to the form, made at the first tick of the load: whether it
  // was made, whether it ran, and whether it ran during the load.
  bool requested = false;
  bool request_ran = false;
  bool request_ran_during = false;
  qint64 longest_gap_ms = 0;
  qint64 load_ms = 0;
  // Of those, the ticks and paints while the zoom decoded.
  int zoom_ticks = 0;
  int zoom_paints = 0;
  Watch watch;
};

class PhotoWaitTest : public DesktopTest {
 protected:
  PhotoWaitTest() { photo_count_ = 1; }

  // With a percentage, the photo is also zoomed to it within the same
  // event, and the wait measured is the load's and the zoom's.
  int zoom_percent_ = 0;

  // Loads the large photo and fits it, from within an event as a click on
  // its thumbnail does, with a 10 ms timer ticking and asking for paints.
  void LoadLargePhoto(LoadSeen& seen) {
    const fs::path big = tmp_.path() / "large.jpg";
    // 64 megapixels with detail everywhere: even at the 1/8 scale of a
    // fitted view its decoding takes a good part of a second.
    MakeDetailedPhoto(big.string(), 8000, 8000);
    QWidget* view = WidgetFor(main_->ctlDisplayImage);
    ASSERT_NE(view, nullptr);
    view->installEventFilter(&seen.watch);
    QElapsedTimer since_tick;
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    QObject::connect(&tick, &QTimer::timeout, [&] {
      const qint64 gap = since_tick.restart();
      if (seen.watch.loading) {
        seen.longest_gap_ms = std::max(seen.longest_gap_ms, gap);
        ++seen.ticks_during;
        if (seen.ticks_during == 2) {
          // The window as it is painted while the large photo decodes.
          SaveScreenshot(window_, "photo_wait_during_load");
        }
        if (!seen.requested) {
          seen.requested = true;
          window_->ActOnForm([&] {
            seen.request_ran = true;
            seen.request_ran_during = seen.watch.loading;
          });
        }
      }
      view->update();
    });
    bool done = false;
    QTimer::singleShot(0, [&] {
      window_->ActOnForm([&] {
        seen.watch.loading = true;
        QElapsedTimer load;
        load.start();
        seen.loaded = main_->ctlDisplayImage.LoadPhoto(big.string());
        if (seen.loaded && zoom_percent_ > 0) {
          // Shown first, then zoomed in: the zoom decodes finer detail.
          main_->ctlDisplayImage.ZoomFitToWidth();
          const int ticks_before = seen.ticks_during;
          const int paints_before = seen.watch.paints_during;
          seen.loaded = main_->ctlDisplayImage.ZoomTo(zoom_percent_);
          seen.zoom_ticks = seen.ticks_during - ticks_before;
          seen.zoom_paints = seen.watch.paints_during - paints_before;
        }
        seen.load_ms = load.elapsed();
        seen.longest_gap_ms =
            std::max(seen.longest_gap_ms, since_tick.elapsed());
        seen.watch.loading = false;
        if (zoom_percent_ == 0) {
          main_->ctlDisplayImage.ZoomFitToWidth();
        }
      });
      done = true;
    });
    since_tick.start();
    tick.start(10);
    while (!done) {
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    // What waited is handled now.
    for (int i = 0; i < 20; ++i) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    tick.stop();
    view->removeEventFilter(&seen.watch);
    std::printf(
        "large photo load: %lld ms, longest gap of the 10 ms timer %lld ms, "
        "%d ticks and %d paints during it\n",
        static_cast<long long>(seen.load_ms),
        static_cast<long long>(seen.longest_gap_ms), seen.ticks_during,
        seen.watch.paints_during);
  }
};

TEST_F(PhotoWaitTest,
       WindowPaintsAndTicksButHoldsFormRequestsWhileALargePhotoLoads) {
  LoadSeen seen;
  LoadLargePhoto(seen);
  EXPECT_TRUE(seen.loaded);
  EXPECT_EQ(main_->ctlDisplayImage.PhotoWidth(), 8000);
  EXPECT_GE(seen.ticks_during, 1);
  EXPECT_GE(seen.watch.paints_during, 1);
  // The request reached the form only once the load had answered.
  EXPECT_TRUE(seen.requested);
  EXPECT_TRUE(seen.request_ran);
  EXPECT_FALSE(seen.request_ran_during);
  SaveScreenshot(window_, "photo_wait_loaded");
}

// A zoom to original size decodes the whole photo again, finer: the window
// keeps painting (the photo as it was fitted) meanwhile too.
TEST_F(PhotoWaitTest, WindowPaintsWhileAZoomDecodesFinerDetail) {
  zoom_percent_ = 100;
  LoadSeen seen;
  LoadLargePhoto(seen);
  EXPECT_TRUE(seen.loaded);
  EXPECT_EQ(main_->ctlDisplayImage.ZoomPercent(), 100);
  EXPECT_GE(seen.zoom_ticks, 1);
  EXPECT_GE(seen.zoom_paints, 1);
  EXPECT_FALSE(seen.request_ran_during);
  SaveScreenshot(window_, "photo_wait_zoomed");
}

// The same load with the decoding on the window's own thread: no tick and
// no paint while it runs (what the test above would see if the wait were
// not there).
class PhotoOnWindowThreadTest : public PhotoWaitTest {
 protected:
  PhotoOnWindowThreadTest() {
    adjust_services_ = [](PlatformServices& services) {
      services.make_display = [] {
        return MakeVipsDisplayControl(/*work_ahead=*/false);
      };
    };
  }
};

TEST_F(PhotoOnWindowThreadTest, WindowFreezesWhileALargePhotoLoads) {
  LoadSeen seen;
  LoadLargePhoto(seen);
  EXPECT_TRUE(seen.loaded);
  EXPECT_EQ(seen.ticks_during, 0);
  EXPECT_EQ(seen.watch.paints_during, 0);
  EXPECT_GE(seen.longest_gap_ms, seen.load_ms);
}

}  // namespace
}  // namespace qbpd::testing
