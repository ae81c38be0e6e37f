#ifndef QBPD_SCREENSAVER_SCR_DEFAULT_H_
#define QBPD_SCREENSAVER_SCR_DEFAULT_H_

#include <string>
#include <string_view>

namespace qbpd {

class Application;
class SettingsStore;

// Where the start delay lives: the desktop's own value, kept in the settings
// store under the key it has on the program's first system, in seconds.
inline constexpr std::string_view kDesktopKey = "Control Panel\\Desktop";
inline constexpr std::string_view kScreenSaveTimeOut = "ScreenSaveTimeOut";
// The start delay's text holds at most this many characters.
inline constexpr size_t kTimeOutDigits = 6;

inline constexpr char kSetDefaultFailed[] =
    "Unable to set the screensaver as default.";

// SetDefaultScreensaver: writes DefaultSsaver := `name` in scr.ini, then has
// the session's screen saver play it (DesktopScreensaver::WriteDefaultScr);
// when that fails the user is told "Unable to set the screensaver as
// default." (stop icon). DefaultSsaver stays written either way.
void SetDefaultScreensaver(Application& app, const std::string& name);

// The start delay in minutes, as the edit dialog shows it: the stored
// seconds divided by 60 ("0" when none is stored; a part of a minute shows
// as a decimal fraction).
std::string ReadStartDelayMinutes(SettingsStore& settings);

// Saves the start delay: the text minutes times 60 (at most 6 characters)
// in the settings store, then the session's screen saver starts after that
// many idle seconds. A desktop that refuses the delay is not reported.
void SaveStartDelay(Application& app, int minutes);

}  // namespace qbpd

#endif  // QBPD_SCREENSAVER_SCR_DEFAULT_H_
