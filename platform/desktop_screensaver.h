#ifndef QBPD_PLATFORM_DESKTOP_SCREENSAVER_H_
#define QBPD_PLATFORM_DESKTOP_SCREENSAVER_H_

#include "platform/program_runner.h"

#include <map>
#include <memory>
#include <string>

namespace qbpd {

// The session's screen saver, which the program's screensavers play in.
class DesktopScreensaver {
 public:
  virtual ~DesktopScreensaver() = default;
  // Makes the saver program play the current screensaver of the store at
  // `scr_ini` when the screen is idle. 1 on success; 0 when the session's
  // screen saver takes no saver programs, or its settings can't be changed
  // (a settings file it can't read is left as it is).
  virtual int WriteDefaultScr(const std::string& scr_ini) = 0;
  // Sets after how many idle seconds the screen saver starts. False when it
  // couldn't.
  virtual bool SetIdleDelay(int seconds) = 0;
};

// The real one, for the session `environment` describes (HOME,
// XDG_CURRENT_DESKTOP, ...), with outside tools run by `runner`:
// - XScreenSaver (its daemon answers xscreensaver-command, or the user has a
//   ~/.xscreensaver on a desktop without a locker of its own): `saver` is
//   entered in ~/.xscreensaver's programs, selected in mode "one", and the
//   idle delay is its timeout. The file is rewritten atomically with every
//   other line kept; a file that isn't of XScreenSaver's form is not touched.
// - GNOME and KDE Plasma, whose lockers take no saver programs: the idle
//   delay is the desktop's (gsettings org.gnome.desktop.session idle-delay;
//   kscreenlockerrc's Daemon Timeout in minutes), and WriteDefaultScr fails.
// - Anything else: both fail.
std::unique_ptr<DesktopScreensaver> MakeDesktopScreensaver(
    std::shared_ptr<ProgramRunner> runner,
    std::map<std::string, std::string> environment,
    std::string saver);

// The programs entry that runs `saver` on the store at `scr_ini` in the
// window XScreenSaver gives it; the paths are quoted for the shell that
// XScreenSaver runs the entry with. Empty when a path holds a character that
// can't stand in an entry (a quote, a backslash, a line break).
std::string XScreenSaverEntry(const std::string& saver,
                              const std::string& scr_ini);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_DESKTOP_SCREENSAVER_H_
