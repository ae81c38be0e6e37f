#include "platform/session_autostart.h"

#include "platform/atomic_file.h"
#include "platform/places.h"

#include <fstream>
#include <string_view>

namespace qbpd {
namespace {

constexpr std::string_view kEntryName = "qbpd-devmon.desktop";

// A path as one argument of an Exec key: quoted, with the characters that
// desktop entries reserve inside quotes escaped.
std::string QuotedExec(const std::string& path) {
  std::string quoted = "\"";
  for (char c : path) {
    if (c == '"' || c == '`' || c == '$' || c == '\\') {
      quoted += "\\\\";
      quoted += c;
      continue;
    }
    quoted += c;
  }
  return quoted + "\"";
}

class XdgAutostart : public SessionAutostart {
 public:
  XdgAutostart(std::string config_home, std::string monitor)
      : folder_(std::move(config_home) + "/autostart"),
        monitor_(std::move(monitor)) {}

  bool DeviceMonitorStarts() override {
    std::ifstream in(Entry());
    if (!in) {
      // No entry of the user's own: the one installed for every user starts.
      return true;
    }
    std::string line;
    bool starts = true;
    while (std::getline(in, line)) {
      if (line == "Hidden=true" || line == "X-GNOME-Autostart-enabled=false") {
        starts = false;
      }
    }
    return starts;
  }

  std::string SetDeviceMonitorStarts(bool on) override {
    if (monitor_.find('\n') != std::string::npos) {
      return "the monitor's path can't stand in an entry";
    }
    if (!MakeFolders(folder_, 0700)) {
      return folder_ + " can't be made";
    }
    const char* flag = on ? "false" : "true";
    std::string text =
        "[Desktop Entry]\n"
        "Type=Application\n"
        "Name=Quillbay Picture Desk device monitor\n"
        "Comment=Offers to import photos when a camera or memory card is "
        "attached\n"
        "Exec=" +
        QuotedExec(monitor_) +
        "\n"
        "Icon=quillbay-picture-desk\n"
        "NoDisplay=true\n"
        "Hidden=" +
        flag + "\nX-GNOME-Autostart-enabled=" + (on ? "true" : "false") + "\n";
    if (!WriteFileAtomically(Entry(), text.data(), text.size())) {
      return Entry() + " can't be written";
    }
    return "";
  }

 private:
  std::string Entry() const { return folder_ + "/" + std::string(kEntryName); }

  std::string folder_;
  std::string monitor_;
};

class NoAutostart : public SessionAutostart {
 public:
  bool DeviceMonitorStarts() override { return false; }
  std::string SetDeviceMonitorStarts(bool) override {
    return "no desktop session is known";
  }
};

}  // namespace

std::unique_ptr<SessionAutostart> MakeNoAutostart() {
  return std::make_unique<NoAutostart>();
}

std::unique_ptr<SessionAutostart> MakeXdgAutostart(std::string config_home,
                                                   std::string monitor) {
  return std::make_unique<XdgAutostart>(std::move(config_home),
                                        std::move(monitor));
}

}  // namespace qbpd
