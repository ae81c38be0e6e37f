#include "platform/desktop_screensaver.h"

#include "platform/atomic_file.h"
#include "platform/wallpaper.h"
#include "platform/xscreensaver_config.h"

#include <cerrno>
#include <fstream>
#include <optional>
#include <sstream>
#include <sys/stat.h>

namespace qbpd {
namespace {

constexpr char kConfigName[] = "/.xscreensaver";
constexpr char kSaverTitle[] = "Quillbay Picture Desk";
constexpr mode_t kNewConfigMode = 0644;

std::string Lookup(const std::map<std::string, std::string>& env,
                   const std::string& name) {
  const auto it = env.find(name);
  return it == env.end() ? std::string() : it->second;
}

std::string FileNameOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The file's text: "" for a missing file, nothing for one that can't be
// read or isn't a regular file.
std::optional<std::string> ReadConfig(const std::string& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) {
    return errno == ENOENT ? std::optional<std::string>("") : std::nullopt;
  }
  if (!S_ISREG(info.st_mode)) {
    return std::nullopt;
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    return std::nullopt;
  }
  std::ostringstream text;
  text << in.rdbuf();
  return in.bad() ? std::nullopt : std::optional<std::string>(text.str());
}

bool WriteConfig(const std::string& path, const std::string& text) {
  struct stat info {};
  AtomicWrite how;
  how.mode =
      stat(path.c_str(), &info) == 0 ? (info.st_mode & 07777) : kNewConfigMode;
  return WriteFileAtomically(path, text.data(), text.size(), how);
}

class LinuxScreensaver : public DesktopScreensaver {
 public:
  LinuxScreensaver(std::shared_ptr<ProgramRunner> runner,
                   std::map<std::string, std::string> environment,
                   std::string saver)
      : runner_(std::move(runner)),
        environment_(std::move(environment)),
        saver_(std::move(saver)) {}

  int WriteDefaultScr(const std::string& scr_ini) override {
    if (!UsesXScreenSaver()) {
      return 0;
    }
    const std::string entry = XScreenSaverEntry(saver_, scr_ini);
    if (entry.empty()) {
      return 0;
    }
    return EditConfig([&](const std::string& text) {
      return SelectSaverEntry(text, entry, FileNameOf(saver_));
    })
               ? 1
               : 0;
  }

  bool SetIdleDelay(int seconds) override {
    if (seconds <= 0) {
      return false;
    }
    if (UsesXScreenSaver()) {
      return EditConfig([&](const std::string& text) {
        return SetSaverTimeout(text, seconds);
      });
    }
    switch (DetectDesktop(environment_)) {
      case DesktopKind::kGnome:
        return runner_ &&
               runner_
                   ->Run({"gsettings", "set", "org.gnome.desktop.session",
                          "idle-delay", "uint32 " + std::to_string(seconds)})
                   .ok();
      case DesktopKind::kKde: {
        if (!runner_) {
          return false;
        }
        // The locker counts whole minutes.
        const std::string minutes = std::to_string((seconds + 59) / 60);
        for (const char* tool : {"kwriteconfig6", "kwriteconfig5"}) {
          if (runner_->Has(tool)) {
            return runner_
                ->Run({tool, "--file", "kscreenlockerrc", "--group", "Daemon",
                       "--key", "Timeout", minutes})
                .ok();
          }
        }
        return false;
      }
      case DesktopKind::kXfce:
      case DesktopKind::kMate:
      case DesktopKind::kCinnamon:
      case DesktopKind::kUnknown:
        return false;
    }
    return false;
  }

 private:
  std::string ConfigPath() const {
    const std::string home = Lookup(environment_, "HOME");
    return home.empty() ? std::string() : home + kConfigName;
  }

  // XScreenSaver is the session's screen saver when its daemon answers, or
  // when the user has its settings file and the desktop has no locker of
  // its own.
  bool UsesXScreenSaver() const {
    if (runner_ && runner_->Has("xscreensaver-command") &&
        runner_->Run({"xscreensaver-command", "-version"}).ok()) {
      return true;
    }
    const DesktopKind desktop = DetectDesktop(environment_);
    if (desktop == DesktopKind::kGnome || desktop == DesktopKind::kKde) {
      return false;
    }
    struct stat info {};
    const std::string path = ConfigPath();
    return !path.empty() && stat(path.c_str(), &info) == 0;
  }

  template <class Edit>
  bool EditConfig(Edit edit) const {
    const std::string path = ConfigPath();
    if (path.empty()) {
      return false;
    }
    const std::optional<std::string> text = ReadConfig(path);
    if (!text) {
      return false;
    }
    const std::optional<std::string> edited = edit(*text);
    if (!edited) {
      return false;
    }
    return *edited == *text || WriteConfig(path, *edited);
  }

  std::shared_ptr<ProgramRunner> runner_;
  std::map<std::string, std::string> environment_;
  std::string saver_;
};

}  // namespace

std::string XScreenSaverEntry(const std::string& saver,
                              const std::string& scr_ini) {
  for (const std::string* path : {&saver, &scr_ini}) {
    if (path->empty() ||
        path->find_first_of("'\\\n\r\"") != std::string::npos) {
      return {};
    }
  }
  return std::string("\"") + kSaverTitle + "\" '" + saver + "' -root --ini '" +
         scr_ini + "'";
}

std::unique_ptr<DesktopScreensaver> MakeDesktopScreensaver(
    std::shared_ptr<ProgramRunner> runner,
    std::map<std::string, std::string> environment,
    std::string saver) {
  return std::make_unique<LinuxScreensaver>(
      std::move(runner), std::move(environment), std::move(saver));
}

}  // namespace qbpd
