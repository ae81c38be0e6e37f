// qbpd-saver: plays a screensaver of the store full screen, or inside the
// window XScreenSaver gives it (-window-id ID, or -root with
// XSCREENSAVER_WINDOW). Standalone, a key or the mouse ends it.
#include "app/saver_options.h"
#include "core/settings.h"
#include "platform/places.h"
#include "platform/saver_player.h"
#include "platform/settings_store.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QKeyEvent>
#include <QPainter>
#include <QRasterWindow>
#include <QScreen>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <xcb/xcb.h>

namespace qbpd {
namespace {

constexpr int kFrameMs = 16;
// A mouse move shorter than this (pixels) doesn't end a standalone show.
constexpr int kMouseSlack = 8;

constexpr char kUsage[] =
    "usage: qbpd-saver [--ini FILE] [--section NAME] [--interval SECONDS]\n"
    "                  [--effects CODES] [-root | -window-id ID]\n"
    "                  [--duration SECONDS] [--freeze-at MS]\n"
    "                  [--frame-times FILE]\n"
    "Plays a screensaver of Quillbay Picture Desk's store (the current one\n"
    "unless --section names another) full screen, or in the window that\n"
    "XScreenSaver gives it. Standalone, a key or the mouse ends it.\n";

// The program's own store: the AppPath setting's folder, else its data
// folder.
std::string DefaultIni() {
  const Places places = FindPlaces();
  std::string folder;
  {
    auto settings = MakeSqliteSettingsStore(places.config + "/settings.db");
    folder = TrimSpaces(DropTrailingNul(settings->Read(kRootKey, "AppPath")));
  }
  return (folder.empty() ? places.data : folder) + "/scr.ini";
}

// The size of another program's window, asked of the X server: Qt doesn't
// learn the size of a window it didn't make. Empty when it can't be told.
QSize ForeignWindowSize(WId id) {
  auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr || x11->connection() == nullptr) {
    return QSize();
  }
  xcb_connection_t* connection = x11->connection();
  xcb_get_geometry_reply_t* reply = xcb_get_geometry_reply(
      connection, xcb_get_geometry(connection, static_cast<xcb_drawable_t>(id)),
      nullptr);
  if (reply == nullptr) {
    return QSize();
  }
  const QSize size(reply->width, reply->height);
  std::free(reply);
  return size;
}

class SaverWindow : public QRasterWindow {
 public:
  SaverWindow(SaverShow show, const SaverOptions& options)
      : show_(std::move(show)), options_(options) {
    setCursor(Qt::BlankCursor);
    connect(&tick_, &QTimer::timeout, this, [this] {
      if (options_.duration > 0 && clock_.isValid() &&
          clock_.elapsed() >= options_.duration * 1000) {
        QGuiApplication::quit();
        return;
      }
      if (embedded_ != nullptr) {
        const QSize given = ForeignWindowSize(embedded_->winId());
        if (!given.isEmpty() && given != size()) {
          resize(given);
        }
      }
      update();
    });
    tick_.start(kFrameMs);
  }

  void EmbedIn(QWindow* parent) {
    embedded_ = parent;
    setParent(parent);
    const QSize given = ForeignWindowSize(parent->winId());
    setGeometry(QRect(QPoint(0, 0), given.isEmpty() ? parent->size() : given));
  }

  const std::vector<double>& FrameTimes() const { return frame_times_; }

 protected:
  void paintEvent(QPaintEvent*) override {
    const qreal ratio = devicePixelRatio();
    const int w = static_cast<int>(width() * ratio);
    const int h = static_cast<int>(height() * ratio);
    if (!player_ || w != player_w_ || h != player_h_) {
      player_ = std::make_unique<SaverPlayer>(show_, w, h);
      player_w_ = w;
      player_h_ = h;
      clock_.start();
      if (options_.freeze_at >= 0) {
        Freeze();
      }
    }
    QElapsedTimer drawing;
    drawing.start();
    const long long at =
        options_.freeze_at >= 0 ? options_.freeze_at : clock_.elapsed();
    const SaverFrame& frame = player_->FrameAt(at);
    if (player_->InTransition()) {
      frame_times_.push_back(drawing.nsecsElapsed() / 1e6);
    }
    QPainter painter(this);
    if (frame.empty()) {
      painter.fillRect(QRect(QPoint(0, 0), size()), Qt::black);
      return;
    }
    const QImage image(reinterpret_cast<const uchar*>(frame.pixels.data()),
                       frame.width, frame.height, frame.width * 4,
                       QImage::Format_RGB32);
    painter.drawImage(QRectF(0, 0, width(), height()), image);
  }

  void keyPressEvent(QKeyEvent*) override { EndStandalone(); }
  void mousePressEvent(QMouseEvent*) override { EndStandalone(); }
  void mouseMoveEvent(QMouseEvent* e) override {
    const QPoint at = e->position().toPoint();
    if (!mouse_seen_) {
      mouse_seen_ = true;
      mouse_at_ = at;
    } else if ((at - mouse_at_).manhattanLength() > kMouseSlack) {
      EndStandalone();
    }
  }

 private:
  // Runs the player up to the frozen time, waiting for each photo, so that
  // the frame shown is the one of that moment of the show.
  void Freeze() {
    for (long long t = 0; t <= options_.freeze_at; t += kFrameMs) {
      player_->FrameAt(t);
      while (player_->Waiting()) {
        player_->WaitForDecoding();
        player_->FrameAt(t);
      }
    }
  }

  void EndStandalone() {
    if (embedded_ == nullptr && options_.duration <= 0) {
      QGuiApplication::quit();
    }
  }

  SaverShow show_;
  SaverOptions options_;
  std::unique_ptr<SaverPlayer> player_;
  int player_w_ = 0;
  int player_h_ = 0;
  QElapsedTimer clock_;
  QTimer tick_;
  QWindow* embedded_ = nullptr;
  bool mouse_seen_ = false;
  QPoint mouse_at_;
  std::vector<double> frame_times_;
};

}  // namespace
}  // namespace qbpd

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  const char* env = std::getenv("XSCREENSAVER_WINDOW");
  qbpd::SaverOptions options =
      qbpd::ParseSaverOptions(args, env != nullptr ? env : "");
  if (options.help) {
    std::fputs(qbpd::kUsage, stdout);
    return 0;
  }
  if (!options.error.empty()) {
    std::fprintf(stderr, "qbpd-saver: %s\n%s", options.error.c_str(),
                 qbpd::kUsage);
    return 2;
  }
  if (options.ini.empty()) {
    options.ini = qbpd::DefaultIni();
  }
  std::string why;
  qbpd::SaverShow show = qbpd::LoadSaverShow(options, why);
  if (!why.empty()) {
    // Nothing to play: the screen stays black, as a screen saver's should.
    std::fprintf(stderr, "qbpd-saver: %s\n", why.c_str());
  }
  QGuiApplication app(argc, argv);
  qbpd::SaverWindow window(std::move(show), options);
  if (options.window != 0) {
    QWindow* parent = QWindow::fromWinId(options.window);
    if (parent == nullptr) {
      std::fprintf(stderr, "qbpd-saver: no window 0x%lx\n", options.window);
      return 1;
    }
    window.EmbedIn(parent);
    window.show();
  } else {
    // The screen's whole area is asked for directly as well: without a
    // window manager nobody answers the full-screen request, and the window
    // would keep its default size in the corner.
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
      window.setGeometry(screen->geometry());
    }
    window.showFullScreen();
  }
  const int status = app.exec();
  if (!options.frame_times.empty()) {
    std::ofstream out(options.frame_times);
    for (double ms : window.FrameTimes()) {
      out << ms << '\n';
    }
  }
  return status;
}
