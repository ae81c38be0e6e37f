// What the X server shows while a saver plays: pictures taken from it, read
// photo by photo, and the store of five far-apart coloured photos they are
// read against.
#ifndef QBPD_TESTS_SCREENSAVER_X11_SAVER_PICTURES_H_
#define QBPD_TESTS_SCREENSAVER_X11_SAVER_PICTURES_H_

#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>
#include <xcb/xcb.h>

namespace qbpd::testing {

struct Rgb {
  int r;
  int g;
  int b;
};
// The five photos' colours, far apart.
inline constexpr Rgb kColours[] = {{210, 40, 40},
                                   {40, 190, 60},
                                   {50, 70, 220},
                                   {230, 210, 40},
                                   {200, 60, 210}};
inline constexpr int kPhotos = 5;
inline constexpr int kNoPhoto = -2;
// The largest squared RGB distance from a photo's colour that still counts
// as that photo (its gradient spans 30 levels, JPEG and scaling add a few).
inline constexpr long kNearEnough = 3 * 40 * 40;

// A screen or window picture, 8-bit RGB.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<unsigned char> rgb;

  Rgb At(int x, int y) const;
  // The photo whose colour is nearest to the average around (x, y); -1 for
  // black, kNoPhoto for a colour near none of them.
  int PhotoAt(int x, int y) const;
  // Saved as a PNG in the tests' screenshot folder.
  void Save(const std::string& name) const;
};

class XConnection {
 public:
  explicit XConnection(const std::string& display);
  ~XConnection();
  XConnection(const XConnection&) = delete;
  XConnection& operator=(const XConnection&) = delete;

  bool ok() const;
  xcb_window_t root() const { return screen_->root; }
  int width() const { return screen_->width_in_pixels; }
  int height() const { return screen_->height_in_pixels; }

  // A plain mapped window, as XScreenSaver makes for its modules.
  xcb_window_t MakeWindow(int x, int y, int w, int h);
  // What `window` shows; empty when the server refuses.
  Picture Grab(xcb_window_t window, int w, int h);

 private:
  xcb_connection_t* connection_ = nullptr;
  xcb_screen_t* screen_ = nullptr;
};

// A program run as a child process (found on PATH unless the path is
// given), with `env` ("NAME=value") added to this process's environment
// or replacing its values;
// stopped by its id at the end.
class ChildProcess {
 public:
  ChildProcess(const std::vector<std::string>& argv,
               const std::vector<std::string>& env);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // Sends SIGTERM and waits for the end.
  void Stop();
  // Waits for it to end by itself; its exit status, -1 when killed.
  int Wait();

 private:
  pid_t pid_ = -1;
};

// Five 1600 x 1000 photos in `dir`, each its colour with a soft gradient
// (the third stored on its side with an EXIF orientation that stands it up
// again), and a store "scr.ini" whose current screensaver "Show" holds them
// at two seconds a photo with every effect. Returns the store's path.
std::string MakeSaverStore(const std::filesystem::path& dir);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SCREENSAVER_X11_SAVER_PICTURES_H_
