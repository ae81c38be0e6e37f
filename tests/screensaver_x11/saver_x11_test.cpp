// qbpd-saver on a real X server: full screen (frozen at the middle of each
// of its four transitions, and in a real-time run), and drawing into a
// window it is given as XScreenSaver gives one. Each picture is taken from
// the X server, saved as a screenshot, and read back pixel by pixel.
#include "tests/screensaver_x11/saver_pictures.h"
#include "tests/support/temp_dir.h"
#include "tests/ui_x11/x11_server.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::ChildProcess;
using testing::kPhotos;
using testing::Picture;
using testing::TempDir;
using testing::XConnection;

// qbpd-saver with `args`.
std::vector<std::string> SaverCommand(std::vector<std::string> args) {
  args.insert(args.begin(), QBPD_SAVER_PROGRAM);
  return args;
}

class SaverX11Test : public ::testing::Test {
 protected:
  void SetUp() override {
    VIPS_INIT("screensaver_x11_tests");
    std::string why;
    display_ = testing::PrivateXDisplay(&why);
    if (display_.empty()) {
      GTEST_SKIP() << why;
    }
    x_ = std::make_unique<XConnection>(display_);
    ASSERT_TRUE(x_->ok());
    ini_ = testing::MakeSaverStore(dir_.path());
  }

  std::vector<std::string> Env() const {
    return {"DISPLAY=" + display_, "QT_QPA_PLATFORM=xcb"};
  }

  // Grabs until the picture at (x, y) shows a photo and two grabs agree,
  // at most ten seconds.
  Picture Settled(xcb_window_t window, int w, int h, int x, int y) {
    Picture last;
    for (int attempt = 0; attempt < 200; ++attempt) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      Picture now = x_->Grab(window, w, h);
      if (!now.rgb.empty() && now.PhotoAt(x, y) >= 0 && now.rgb == last.rgb) {
        return now;
      }
      last = std::move(now);
    }
    return last;
  }

  TempDir dir_;
  std::string display_;
  std::string ini_;
  std::unique_ptr<XConnection> x_;
};

TEST_F(SaverX11Test, FullScreenMidTransitionForEachEffect) {
  const int w = x_->width();
  const int h = x_->height();
  // 1600 x 1000 fits the 1280 x 1024 screen as 1280 x 800, 112 rows of
  // black above and below.
  const int top = (h - 800) / 2;
  struct Case {
    const char* code;
    long long at;  // the middle of the transition into photo `to`
    int to;
    const char* file;
  };
  const Case cases[] = {{"3001", 1500, 1, "saver_3001_from_centre.png"},
                        {"2007", 3500, 2, "saver_2007_diagonal.png"},
                        {"7002", 5500, 3, "saver_7002_top_to_bottom.png"},
                        {"2000", 7500, 4, "saver_2000_left_to_right.png"}};
  for (const Case& c : cases) {
    ChildProcess saver(
        SaverCommand({"--ini", ini_, "--effects", "3001>2007>7002>2000",
                      "--freeze-at", std::to_string(c.at)}),
        Env());
    const Picture shot = Settled(x_->root(), w, h, w / 2, h / 2);
    saver.Stop();
    ASSERT_FALSE(shot.rgb.empty()) << c.code;
    shot.Save(c.file);
    const int from = c.to - 1;
    // Fitted on black: the bands above and below the photo are black.
    EXPECT_EQ(shot.PhotoAt(w / 2, top / 2), -1) << c.code;
    EXPECT_EQ(shot.PhotoAt(w / 2, h - top / 2), -1) << c.code;
    const int left = 40;
    const int right = w - 40;
    const int upper = top + 40;
    const int lower = h - top - 40;
    switch (c.to) {
      case 1:  // from the centre: the middle new, the corners old
        EXPECT_EQ(shot.PhotoAt(w / 2, h / 2), c.to);
        EXPECT_EQ(shot.PhotoAt(left, upper), from);
        EXPECT_EQ(shot.PhotoAt(right, lower), from);
        break;
      case 2:  // diagonal: the top-left corner new, the bottom-right old
        EXPECT_EQ(shot.PhotoAt(left, upper), c.to);
        EXPECT_EQ(shot.PhotoAt(right, lower), from);
        break;
      case 3:  // top to bottom: the top new, the bottom old (the photo
               // stored on its side shows upright: the bands stay black)
        EXPECT_EQ(shot.PhotoAt(w / 2, upper), c.to);
        EXPECT_EQ(shot.PhotoAt(w / 2, lower), from);
        EXPECT_EQ(shot.PhotoAt(left, h / 2 + 100), from);
        break;
      case 4:  // left to right: the left new, the right old
        EXPECT_EQ(shot.PhotoAt(left, h / 2), c.to);
        EXPECT_EQ(shot.PhotoAt(right, h / 2), from);
        break;
    }
  }
}

TEST_F(SaverX11Test, DrawsIntoTheWindowItIsGiven) {
  const xcb_window_t window = x_->MakeWindow(100, 100, 800, 500);
  ChildProcess saver(
      SaverCommand({"-root", "--ini", ini_, "--freeze-at", "1500"}), [&] {
        auto env = Env();
        char id[32];
        std::snprintf(id, sizeof id, "0x%x", window);
        env.push_back(std::string("XSCREENSAVER_WINDOW=") + id);
        return env;
      }());
  const Picture shot = Settled(window, 800, 500, 400, 250);
  saver.Stop();
  ASSERT_FALSE(shot.rgb.empty());
  shot.Save("saver_in_xscreensaver_window.png");
  // The whole window is the show: 1600 x 1000 fits 800 x 500 exactly.
  EXPECT_EQ(shot.PhotoAt(400, 250), 1);
  EXPECT_EQ(shot.PhotoAt(20, 20), 0);
  EXPECT_EQ(shot.PhotoAt(780, 480), 0);
  // The rest of the screen is not drawn on.
  const Picture screen = x_->Grab(x_->root(), x_->width(), x_->height());
  EXPECT_EQ(screen.PhotoAt(50, 50), -1);
  EXPECT_EQ(screen.PhotoAt(1000, 800), -1);
}

TEST_F(SaverX11Test, PlaysInRealTime) {
  const int w = x_->width();
  const int h = x_->height();
  const std::string times = (dir_ / "frame-times.txt").string();
  ChildProcess saver(
      SaverCommand({"--ini", ini_, "--duration", "7", "--frame-times", times}),
      Env());
  std::set<int> seen;
  int mixed = 0;
  for (int i = 0; i < 24; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    const Picture shot = x_->Grab(x_->root(), w, h);
    if (shot.rgb.empty()) {
      continue;
    }
    const int centre = shot.PhotoAt(w / 2, h / 2);
    seen.insert(centre);
    // A frame with two photos in it is one caught mid-transition.
    std::set<int> in_frame;
    for (int x = 40; x < w; x += 150) {
      for (int y = 152; y < h - 152; y += 150) {
        in_frame.insert(shot.PhotoAt(x, y));
      }
    }
    in_frame.erase(-1);
    if (in_frame.size() >= 2 && mixed < 4) {
      shot.Save("saver_realtime_mixed_" + std::to_string(mixed++) + ".png");
    }
  }
  EXPECT_EQ(saver.Wait(), 0);
  seen.erase(-1);
  // Over six seconds at two seconds a photo, several photos came up.
  EXPECT_GE(seen.size(), 2u);
  std::ifstream in(times);
  std::vector<double> frame_ms;
  for (double ms; in >> ms;) {
    frame_ms.push_back(ms);
  }
  ASSERT_FALSE(frame_ms.empty());
  std::sort(frame_ms.begin(), frame_ms.end());
  std::printf("transition frames drawn: %zu, median %.2f ms, max %.2f ms\n",
              frame_ms.size(), frame_ms[frame_ms.size() / 2], frame_ms.back());
}

}  // namespace
}  // namespace qbpd
