#include "ui/qt/window_activation.h"

#include <QGuiApplication>
#include <QWidget>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <memory>

#if QT_CONFIG(xcb)
#include <xcb/xcb.h>
#endif

namespace qbpd {
namespace {

#if QT_CONFIG(xcb)

// A startup notification message travels in pieces of this many bytes.
constexpr size_t kStartupPiece = 20;
// _NET_ACTIVE_WINDOW's source indication of a normal application.
constexpr std::uint32_t kSourceApplication = 1;

struct FreeDeleter {
  void operator()(void* p) const { std::free(p); }
};

xcb_atom_t Atom(xcb_connection_t* c, const char* name) {
  std::unique_ptr<xcb_intern_atom_reply_t, FreeDeleter> reply(
      xcb_intern_atom_reply(
          c,
          xcb_intern_atom(c, 0, static_cast<uint16_t>(std::strlen(name)), name),
          nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

xcb_window_t RootOf(xcb_connection_t* c, xcb_window_t window) {
  std::unique_ptr<xcb_get_geometry_reply_t, FreeDeleter> reply(
      xcb_get_geometry_reply(c, xcb_get_geometry(c, window), nullptr));
  return reply ? reply->root : xcb_window_t{XCB_WINDOW_NONE};
}

// Sends `message` (with its final NUL) to the root window in pieces, as the
// startup notification protocol says.
void SendStartupMessage(xcb_connection_t* c,
                        xcb_window_t root,
                        xcb_window_t from,
                        const std::string& message) {
  const xcb_atom_t begin = Atom(c, "_NET_STARTUP_INFO_BEGIN");
  const xcb_atom_t more = Atom(c, "_NET_STARTUP_INFO");
  const size_t total = message.size() + 1;
  for (size_t at = 0; at < total; at += kStartupPiece) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 8;
    event.window = from;
    event.type = at == 0 ? begin : more;
    const size_t n = std::min(kStartupPiece, total - at);
    std::memcpy(event.data.data8, message.c_str() + at, n);
    xcb_send_event(c, 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                   reinterpret_cast<const char*>(&event));
  }
}

void ActivateOnX11(QWidget* window, const std::string& id) {
  auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  xcb_connection_t* c = x11 != nullptr ? x11->connection() : nullptr;
  if (c == nullptr) {
    return;
  }
  const auto w = static_cast<xcb_window_t>(window->winId());
  const xcb_window_t root = RootOf(c, w);
  if (root == XCB_WINDOW_NONE) {
    return;
  }
  xcb_change_property(c, XCB_PROP_MODE_REPLACE, w, Atom(c, "_NET_STARTUP_ID"),
                      Atom(c, "UTF8_STRING"), 8,
                      static_cast<uint32_t>(id.size()), id.data());
  if (const std::uint32_t time = StartupIdTime(id); time != 0) {
    // The window counts as used at the moment of the user's action, and asks
    // to be activated for it: a window manager that prevents focus stealing
    // compares that moment with the last use of the window in front.
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, w,
                        Atom(c, "_NET_WM_USER_TIME"), XCB_ATOM_CARDINAL, 32, 1,
                        &time);
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = w;
    event.type = Atom(c, "_NET_ACTIVE_WINDOW");
    event.data.data32[0] = kSourceApplication;
    event.data.data32[1] = time;
    event.data.data32[2] = XCB_WINDOW_NONE;
    xcb_send_event(c, 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT |
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
  }
  SendStartupMessage(c, root, w, StartupRemoveMessage(id));
  xcb_flush(c);
}

#endif  // QT_CONFIG(xcb)

}  // namespace

std::uint32_t StartupIdTime(std::string_view id) {
  constexpr std::string_view kMark = "_TIME";
  const size_t at = id.rfind(kMark);
  if (at == std::string_view::npos) {
    return 0;
  }
  const char* first = id.data() + at + kMark.size();
  const char* last = id.data() + id.size();
  std::uint32_t time = 0;
  auto [end, error] = std::from_chars(first, last, time);
  if (error != std::errc() || end != last) {
    return 0;
  }
  return time;
}

std::string StartupRemoveMessage(std::string_view id) {
  std::string out = "remove: ID=";
  for (char ch : id) {
    if (ch == ' ' || ch == '"' || ch == '\\') {
      out += '\\';
    }
    out += ch;
  }
  return out;
}

void ActivateWithToken(QWidget* window, const ActivationToken& token) {
  if (window == nullptr) {
    return;
  }
  const QString platform = QGuiApplication::platformName();
  const bool wayland = platform.startsWith("wayland");
  if (wayland && !token.xdg_activation.empty()) {
    qputenv("XDG_ACTIVATION_TOKEN",
            QByteArray::fromStdString(token.xdg_activation));
  }
  if (window->isMinimized()) {
    window->showNormal();
  }
  window->raise();
  window->activateWindow();
#if QT_CONFIG(xcb)
  if (platform == "xcb" && !token.startup_id.empty()) {
    ActivateOnX11(window, token.startup_id);
  }
#endif
}

}  // namespace qbpd
