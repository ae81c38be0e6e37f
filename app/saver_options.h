#ifndef QBPD_APP_SAVER_OPTIONS_H_
#define QBPD_APP_SAVER_OPTIONS_H_

#include "platform/saver_player.h"

#include <optional>
#include <string>
#include <vector>

namespace qbpd {

// What qbpd-saver was asked to do.
struct SaverOptions {
  // The screensaver store; empty: the program's own scr.ini.
  std::string ini;
  // The section to play; empty: the current screensaver (DefaultSsaver), or
  // the first one.
  std::string section;
  // Seconds a photo; 0: the section's ImageInterval.
  int interval = 0;
  // Effect codes; unset: the section's TransitionEffects.
  std::optional<std::string> effects;
  // The X window to draw in (XScreenSaver's); 0: a full-screen window.
  unsigned long window = 0;
  // Ends after this many seconds; 0: runs until told to stop.
  double duration = 0;
  // Shows, and keeps showing, the frame of this many milliseconds after the
  // start, every photo decoded before (for pictures of a transition).
  long long freeze_at = -1;
  // Writes the drawing time of every frame (ms, one a line) here at the end.
  std::string frame_times;
  bool help = false;
  // Why the command line was refused; empty when it wasn't.
  std::string error;
};

// Reads the command line. "-window-id ID" (XScreenSaver's spelling, also
// "--window-id"), or "-root" with XSCREENSAVER_WINDOW in `window_env`, names
// the window; an ID is decimal or "0x" hexadecimal.
SaverOptions ParseSaverOptions(const std::vector<std::string>& args,
                               const std::string& window_env);

// The show of the options: the section's photos, interval and effects read
// from the store. `error` says why there is nothing to play.
SaverShow LoadSaverShow(const SaverOptions& options, std::string& error);

}  // namespace qbpd

#endif  // QBPD_APP_SAVER_OPTIONS_H_
