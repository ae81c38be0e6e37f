#include "tests/screensaver_x11/saver_pictures.h"

#include <vips/vips8>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

namespace qbpd::testing {

namespace fs = std::filesystem;

Rgb Picture::At(int x, int y) const {
  const size_t i = (static_cast<size_t>(y) * width + x) * 3;
  return {rgb[i], rgb[i + 1], rgb[i + 2]};
}

int Picture::PhotoAt(int x, int y) const {
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
  // Far from every photo's colour: something else is shown there.
  return best_d <= kNearEnough ? best : kNoPhoto;
}

void Picture::Save(const std::string& name) const {
  fs::create_directories(QBPD_SCREENSHOT_DIR);
  vips::VImage::new_from_memory(const_cast<unsigned char*>(rgb.data()),
                                rgb.size(), width, height, 3, VIPS_FORMAT_UCHAR)
      .pngsave((fs::path(QBPD_SCREENSHOT_DIR) / name).c_str());
}

XConnection::XConnection(const std::string& display) {
  connection_ = xcb_connect(display.c_str(), nullptr);
  screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
}

XConnection::~XConnection() {
  xcb_disconnect(connection_);
}

bool XConnection::ok() const {
  return xcb_connection_has_error(connection_) == 0;
}

xcb_window_t XConnection::MakeWindow(int x, int y, int w, int h) {
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

Picture XConnection::Grab(xcb_window_t window, int w, int h) {
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

ChildProcess::ChildProcess(const std::vector<std::string>& argv,
                           const std::vector<std::string>& env) {
  // A name given in `env` replaces this process's value (the first of two
  // would win).
  auto given = [&env](const std::string& entry) {
    const std::string name = entry.substr(0, entry.find('=') + 1);
    return std::any_of(env.begin(), env.end(), [&](const std::string& e) {
      return e.compare(0, name.size(), name) == 0;
    });
  };
  std::vector<std::string> environment;
  for (char** e = environ; *e != nullptr; ++e) {
    if (!given(*e)) {
      environment.emplace_back(*e);
    }
  }
  environment.insert(environment.end(), env.begin(), env.end());
  std::vector<char*> args;
  for (const std::string& a : argv) {
    args.push_back(const_cast<char*>(a.c_str()));
  }
  args.push_back(nullptr);
  std::vector<char*> envp;
  for (std::string& e : environment) {
    envp.push_back(e.data());
  }
  envp.push_back(nullptr);
  pid_ = fork();
  if (pid_ == 0) {
    execvpe(args[0], args.data(), envp.data());
    _exit(127);
  }
}

ChildProcess::~ChildProcess() {
  Stop();
}

void ChildProcess::Stop() {
  if (pid_ > 0) {
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }
}

int ChildProcess::Wait() {
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string MakeSaverStore(const fs::path& dir) {
  std::string ini =
      "[General]\nNumberOfSsavers=1\nDefaultSsaver=Show\n"
      "Ssaver1=Show\n[Show]\nNumberofImages=5\n";
  for (int i = 0; i < kPhotos; ++i) {
    const std::string path =
        (dir / ("photo" + std::to_string(i + 1) + ".jpg")).string();
    vips::VImage x = vips::VImage::xyz(1600, 1000)[0] * (30.0 / 1600);
    vips::VImage photo =
        x.bandjoin(x)
            .bandjoin(x)
            .linear({1.0, 1.0, 1.0}, {static_cast<double>(kColours[i].r) - 15,
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
  const fs::path store = dir / "scr.ini";
  std::ofstream(store, std::ios::binary) << ini;
  return store.string();
}

}  // namespace qbpd::testing
