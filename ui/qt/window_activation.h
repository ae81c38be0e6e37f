#ifndef QBPD_UI_QT_WINDOW_ACTIVATION_H_
#define QBPD_UI_QT_WINDOW_ACTIVATION_H_

#include "platform/single_instance.h"

#include <cstdint>
#include <string>
#include <string_view>

class QWidget;

namespace qbpd {

// Brings top-level `window` to the front and gives it the focus on behalf of
// a second start of the program, with the token the desktop gave that start,
// so that the window manager (X11) or the compositor (Wayland) lets it take
// the focus from the program the user is in:
// - on X11 the window takes the startup id (_NET_STARTUP_ID) and the time of
//   the user's action in it (_NET_WM_USER_TIME), the activation request
//   carries that time, and the desktop's launch feedback ends (the startup
//   notification "remove" message);
// - on Wayland the token goes with the xdg-activation request, as Qt takes
//   it from XDG_ACTIVATION_TOKEN.
// Without a token for the platform the window is raised and activated as
// the toolkit does on its own.
void ActivateWithToken(QWidget* window, const ActivationToken& token);

// The time of the user's action in a startup id ("..._TIME<n>"), or 0.
std::uint32_t StartupIdTime(std::string_view id);

// The startup notification message that ends the launch `id`: "remove:
// ID=" and the id, with blanks, quotes and backslashes escaped.
std::string StartupRemoveMessage(std::string_view id);

}  // namespace qbpd

#endif  // QBPD_UI_QT_WINDOW_ACTIVATION_H_
