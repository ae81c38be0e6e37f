#include "app/saver_options.h"

#include "platform/profile_file.h"
#include "screensaver/scr_store.h"

#include <cstdlib>

namespace qbpd {
namespace {

bool ParseWindow(const std::string& text, unsigned long& window) {
  if (text.empty()) {
    return false;
  }
  char* end = nullptr;
  window = std::strtoul(text.c_str(), &end, 0);
  return end != nullptr && *end == '\0' && window != 0;
}

}  // namespace

SaverOptions ParseSaverOptions(const std::vector<std::string>& args,
                               const std::string& window_env) {
  SaverOptions o;
  bool root = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto value = [&](std::string& out) {
      if (i + 1 >= args.size()) {
        o.error = a + " needs a value";
        return false;
      }
      out = args[++i];
      return true;
    };
    std::string v;
    if (a == "--help" || a == "-h") {
      o.help = true;
    } else if (a == "--ini") {
      value(o.ini);
    } else if (a == "--section") {
      value(o.section);
    } else if (a == "--interval") {
      if (value(v)) {
        o.interval = std::atoi(v.c_str());
        if (o.interval < 1) {
          o.error = "--interval takes whole seconds, 1 or more";
        }
      }
    } else if (a == "--effects") {
      if (value(v)) {
        o.effects = v;
      }
    } else if (a == "-window-id" || a == "--window-id") {
      if (value(v) && !ParseWindow(v, o.window)) {
        o.error = "not a window id: " + v;
      }
    } else if (a == "-root" || a == "--root") {
      root = true;
    } else if (a == "--duration") {
      if (value(v)) {
        o.duration = std::atof(v.c_str());
      }
    } else if (a == "--freeze-at") {
      if (value(v)) {
        o.freeze_at = std::atoll(v.c_str());
      }
    } else if (a == "--frame-times") {
      value(o.frame_times);
    } else {
      o.error = "unknown option: " + a;
    }
    if (!o.error.empty()) {
      return o;
    }
  }
  if (o.window == 0 && !window_env.empty() &&
      !ParseWindow(window_env, o.window)) {
    o.error = "XSCREENSAVER_WINDOW is not a window id: " + window_env;
  } else if (root && o.window == 0) {
    o.error = "-root needs the window in XSCREENSAVER_WINDOW";
  }
  return o;
}

SaverShow LoadSaverShow(const SaverOptions& options, std::string& error) {
  SaverShow show;
  const ProfileContents store = ReadProfile(options.ini);
  std::string section = options.section;
  if (section.empty()) {
    section = store.Get(kScrGeneral, kScrDefaultKey, "");
  }
  if (section.empty()) {
    section = store.Get(kScrGeneral, std::string(kScrNameKeyPrefix) + "1", "");
  }
  if (section.empty()) {
    error = "no screensaver in " + options.ini;
    return show;
  }
  show.photos = ReadScreensaverPhotos(options.ini, section);
  if (show.photos.empty()) {
    error = "the screensaver " + section + " has no photos";
  }
  show.interval_seconds =
      options.interval > 0 ? options.interval
                           : ScrNumber(store.Get(section, kScrIntervalKey, ""));
  if (show.interval_seconds < 1) {
    show.interval_seconds = kScrNewInterval;
  }
  const std::string effects =
      options.effects ? *options.effects
                      : DecodeTransitionEffects(
                            ScrNumber(store.Get(section, kScrEffectsKey, "")));
  show.transitions = ParseSaverEffects(effects);
  return show;
}

}  // namespace qbpd
