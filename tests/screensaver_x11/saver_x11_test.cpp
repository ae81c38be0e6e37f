// qbpd-saver on a real X server: full screen (frozen at the middle of each
// of its four transitions, and in a real-time run), and drawing into a
// window it is given as XScreenSaver gives one. Each picture is taken from
// the X server, saved as a screenshot, and read back pixel by pixel.
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

extern char** environ;

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

struct Rgb {
  int r;
  int g;
  int b;
};
// The five photos' colours, far apart.
const Rgb kColours[] = {{210, 40, 40},
                        {40, 190, 60},
                        {50, 70, 220},
                        {230, 210, 40},
                        {200, 60, 210}};
constexpr int kPhotos = 5;

// A screen or window picture, 8-bit RGB.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<unsigned char> rgb;
  Rgb At(int x, int y) const {
    const size_t i = (static_cast<size_t>(y) * width + x) * 3;
    return {rgb[i], rgb[i + 1], rgb[i + 2]};
  }
  // The photo whose colour is nearest to the average around (x, y); -1 for
  // black.
  int PhotoAt(int x, int y) const {
    int r = 0, g = 0, b = 0, n = 0;
    for (int dy = -3; dy <= 3; ++dy) {
      for (int dx = -3; dx <= 3; ++dx) {
        const Rgb p = At(std::clamp(x + dx, 0, width - 1),
                         std::clamp(y + dy, 0, height - 1));
        r += p.r;
        g += p.g;
        b += p.b;
        ++n;
      }
    }
    r /= n;
    g /= n;
    b /= n;
    if (r + g + b < 60) {
      return -1;
    }
    int best = 0;
    long best_d = -1;
    for (int i = 0; i < kPhotos; ++i) {
      const long d = (r - kColours[i].r) * (r - kColours[i].r) +
                     (g - kColours[i].g) * (g - kColours[i].g) +
                     (b - kColours[i].b) * (b - kColours[i].b);
      if (best_d < 0 || d < best_d) {
        best_d = d;
        best = i;
      }
    }
    return best;
  }
  void Save(const std::string& name) const {
    fs::create_directories(QBPD_SCREENSHOT_DIR);
    vips::VImage::new_from_memory(const_cast<unsigned char*>(rgb.data()),
                                  rgb.size(), width, height, 3,
                                  VIPS_FORMAT_UCHAR)
        .pngsave((fs::path(QBPD_SCREENSHOT_DIR) / name).c_str());
  }
};

class XConnection {
 public:
  explicit XConnection(const std::string& display) {
    connection_ = xcb_connect(display.c_str(), nullptr);
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
  }
  ~XConnection() { xcb_disconnect(connection_); }
  bool ok() const { return xcb_connection_has_error(connection_) == 0; }
  xcb_window_t root() const { return screen_->root; }
  int width() const { return screen_->width_in_pixels; }
  int height() const { return screen_->height_in_pixels; }

  // A plain mapped window, as XScreenSaver makes for its modules.
  xcb_window_t MakeWindow(int x, int y, int w, int h) {
    const xcb_window_t window = xcb_generate_id(connection_);
    const uint32_t values[] = {screen_->black_pixel};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root(),
                      static_cast<int16_t>(x), static_cast<int16_t>(y),
                      static_cast<uint16_t>(w), static_cast<uint16_t>(h), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual,
                      XCB_CW_BACK_PIXEL, values);
    xcb_map_window(connection_, window);
    xcb_flush(connection_);
    return window;
  }

  Picture Grab(xcb_window_t window, int w, int h) {
    Picture picture;
    xcb_get_image_reply_t* reply = xcb_get_image_reply(
        connection_,
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0,
                      static_cast<uint16_t>(w), static_cast<uint16_t>(h), ~0u),
        nullptr);
    if (reply == nullptr) {
      return picture;
    }
    const uint8_t* data = xcb_get_image_data(reply);
    picture.width = w;
    picture.height = h;
    picture.rgb.resize(static_cast<size_t>(w) * h * 3);
    // 24-bit depth is stored as 32-bit B, G, R, X.
    for (size_t i = 0; i < static_cast<size_t>(w) * h; ++i) {
      picture.rgb[i * 3] = data[i * 4 + 2];
      picture.rgb[i * 3 + 1] = data[i * 4 + 1];
      picture.rgb[i * 3 + 2] = data[i * 4];
    }
    std::free(reply);
    return picture;
  }

 private:
  xcb_connection_t* connection_ = nullptr;
  xcb_screen_t* screen_ = nullptr;
};

// qbpd-saver as a child process, killed (by its id) at the end.
class Saver {
 public:
  Saver(const std::vector<std::string>& args,
        const std::vector<std::string>& env) {
    std::vector<std::string> environment;
    for (char** e = environ; *e != nullptr; ++e) {
      environment.emplace_back(*e);
    }
    environment.insert(environment.end(), env.begin(), env.end());
    pid_ = fork();
    if (pid_ == 0) {
      std::vector<char*> argv{const_cast<char*>(QBPD_SAVER_PROGRAM)};
      for (const std::string& a : args) {
        argv.push_back(const_cast<char*>(a.c_str()));
      }
      argv.push_back(nullptr);
      std::vector<char*> envp;
      for (std::string& e : environment) {
        envp.push_back(e.data());
      }
      envp.push_back(nullptr);
      execve(QBPD_SAVER_PROGRAM, argv.data(), envp.data());
      _exit(127);
    }
  }
  ~Saver() { Stop(); }
  void Stop() {
    if (pid_ > 0) {
      kill(pid_, SIGTERM);
      waitpid(pid_, nullptr, 0);
      pid_ = -1;
    }
  }
  // Waits for it to end by itself; its exit status.
  int Wait() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t pid_ = -1;
};

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
    // Five 1600 x 1000 photos, each its colour with a soft gradient; the
    // third is stored on its side with an EXIF orientation that stands it
    // up again.
    std::string ini =
        "[General]\nNumberOfSsavers=1\nDefaultSsaver=Show\n"
        "Ssaver1=Show\n[Show]\nNumberofImages=5\n";
    for (int i = 0; i < kPhotos; ++i) {
      const std::string path =
          (dir_ / ("photo" + std::to_string(i + 1) + ".jpg")).string();
      vips::VImage x = vips::VImage::xyz(1600, 1000)[0] * (30.0 / 1600);
      vips::VImage photo =
          x.bandjoin(x)
              .bandjoin(x)
              .linear({1.0, 1.0, 1.0},
                      {static_cast<double>(kColours[i].r) - 15,
                       static_cast<double>(kColours[i].g) - 15,
                       static_cast<double>(kColours[i].b) - 15})
              .cast(VIPS_FORMAT_UCHAR);
      if (i == 2) {
        photo = photo.rot(VIPS_ANGLE_D270).copy();
        photo.set("orientation", 6);
      }
      photo.jpegsave(path.c_str());
      ini += "Image" + std::to_string(i + 1) + "=" + path + "\n";
    }
    ini += "ImageInterval=2\nTransitionEffects=15\n";
    ini_ = dir_.WriteFile("scr.ini", ini).string();
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
    Saver saver({"--ini", ini_, "--effects", "3001>2007>7002>2000",
                 "--freeze-at", std::to_string(c.at)},
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
  Saver saver({"-root", "--ini", ini_, "--freeze-at", "1500"}, [&] {
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
  Saver saver({"--ini", ini_, "--duration", "7", "--frame-times", times},
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
