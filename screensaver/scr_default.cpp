#include "screensaver/scr_default.h"

#include "core/application.h"
#include "core/settings.h"
#include "platform/forms/host.h"
#include "screensaver/scr_store.h"

#include <cstdio>

namespace qbpd {

void SetDefaultScreensaver(Application& app, const std::string& name) {
  Session& s = app.session();
  WriteIniValue(s.gsScrIniPath, kScrGeneral, kScrDefaultKey, name);
  // The saver program reads the store itself; the session's screen saver is
  // told to run it on this store.
  if (app.screensaver().WriteDefaultScr(s.gsScrIniPath) == 0) {
    app.host().MsgBox(kSetDefaultFailed, kMbStop, s.gsAppTitle);
  }
}

std::string ReadStartDelayMinutes(SettingsStore& settings) {
  const int seconds =
      ScrNumber(ReadSetting(settings, kDesktopKey, kScreenSaveTimeOut));
  if (seconds % 60 == 0) {
    return std::to_string(seconds / 60);
  }
  char text[32];
  std::snprintf(text, sizeof text, "%g", seconds / 60.0);
  return text;
}

void SaveStartDelay(Application& app, int minutes) {
  const int seconds = minutes * 60;
  const std::string text = std::to_string(seconds).substr(0, kTimeOutDigits);
  (void)app.settings().Write(kDesktopKey, kScreenSaveTimeOut, text);
  (void)app.screensaver().SetIdleDelay(seconds);
}

}  // namespace qbpd
