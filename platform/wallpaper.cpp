#include "platform/wallpaper.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <sstream>
#include <string_view>
#include <vector>

extern char** environ;

namespace qbpd {
namespace {

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return std::tolower(c); });
  return lower;
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::stringstream in(text);
  std::string part;
  while (std::getline(in, part, separator)) {
    parts.push_back(part);
  }
  return parts;
}

DesktopKind KindOfName(const std::string& name) {
  const std::string n = Lower(name);
  if (n == "gnome" || n == "gnome-classic" || n == "gnome-flashback" ||
      n == "unity" || n == "budgie" || n == "budgie-desktop" ||
      n == "pantheon" || n == "ubuntu" || n == "pop" || n == "zorin") {
    return DesktopKind::kGnome;
  }
  if (n == "kde" || n == "plasma" || n == "plasmawayland" || n == "plasmax11") {
    return DesktopKind::kKde;
  }
  if (n == "xfce" || n == "xfce4" || n == "xubuntu") {
    return DesktopKind::kXfce;
  }
  if (n == "mate") {
    return DesktopKind::kMate;
  }
  if (n == "x-cinnamon" || n == "cinnamon" || n == "cinnamon2d") {
    return DesktopKind::kCinnamon;
  }
  return DesktopKind::kUnknown;
}

// A text as a GVariant string for gsettings: quoted, with its quotes and
// backslashes escaped.
std::string GVariantString(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') {
      quoted += '\\';
    }
    quoted += c;
  }
  return quoted + "'";
}

std::string Trimmed(std::string text) {
  while (!text.empty() &&
         std::isspace(static_cast<unsigned char>(text.back()))) {
    text.pop_back();
  }
  return text;
}

// The names the desktops give the three arrangements.
const char* GnomeOption(int arrangement) {
  switch (arrangement) {
    case kWallpaperTiled:
      return "wallpaper";
    case kWallpaperCentered:
      return "centered";
    case kWallpaperStretched:
      return "stretched";
    default:
      return nullptr;
  }
}
// xfdesktop's image-style: 1 centred, 2 tiled, 3 stretched.
int XfceStyle(int arrangement) {
  return arrangement == kWallpaperTiled      ? 2
         : arrangement == kWallpaperCentered ? 1
                                             : 3;
}
// Plasma's image FillMode: 3 tile, 6 pad (centred), 0 stretch.
int PlasmaFillMode(int arrangement) {
  return arrangement == kWallpaperTiled      ? 3
         : arrangement == kWallpaperCentered ? 6
                                             : 0;
}

class DesktopWallpaper final : public Wallpaper {
 public:
  DesktopWallpaper(std::shared_ptr<ProgramRunner> runner,
                   std::map<std::string, std::string> environment)
      : runner_(std::move(runner)), environment_(std::move(environment)) {}

  int ChangeWallpaper(const std::string& bitmap, int arrangement) override {
    if (GnomeOption(arrangement) == nullptr || bitmap.empty() || !runner_) {
      return 0;
    }
    bool done = false;
    switch (DetectDesktop(environment_)) {
      case DesktopKind::kGnome:
        done = SetGsettings("org.gnome.desktop.background", "picture-uri",
                            FileUri(bitmap), arrangement, /*dark_key=*/true);
        break;
      case DesktopKind::kCinnamon:
        done = SetGsettings("org.cinnamon.desktop.background", "picture-uri",
                            FileUri(bitmap), arrangement, /*dark_key=*/false);
        break;
      case DesktopKind::kMate:
        done = SetGsettings("org.mate.background", "picture-filename", bitmap,
                            arrangement, /*dark_key=*/false);
        break;
      case DesktopKind::kXfce:
        done = SetXfce(bitmap, arrangement);
        break;
      case DesktopKind::kKde:
        done = SetPlasma(bitmap, arrangement);
        break;
      case DesktopKind::kUnknown:
        done = false;
        break;
    }
    return done ? 1 : 0;
  }

 private:
  bool Run(const std::vector<std::string>& argv,
           std::string* output = nullptr) {
    const ProgramResult result = runner_->Run(argv);
    if (output != nullptr) {
      *output = result.output;
    }
    return result.ok();
  }

  // Sets one picture key (and the dark one beside it, where the schema has
  // it) and the options key of a gsettings schema.
  bool SetGsettings(const std::string& schema,
                    const std::string& key,
                    const std::string& value,
                    int arrangement,
                    bool dark_key) {
    std::string keys;
    if (!Run({"gsettings", "list-keys", schema}, &keys)) {
      return false;  // no gsettings, or no such schema
    }
    std::vector<std::string> picture_keys = {key};
    const std::vector<std::string> listed = Split(keys, '\n');
    const std::string dark = key + "-dark";
    if (dark_key &&
        std::find(listed.begin(), listed.end(), dark) != listed.end()) {
      picture_keys.push_back(dark);
    }
    const std::string quoted = GVariantString(value);
    for (const std::string& k : picture_keys) {
      std::string current;
      // The file keeps its name when it is overwritten: a key that names it
      // already is reset first, or the desktop wouldn't read it again.
      if (Run({"gsettings", "get", schema, k}, &current) &&
          Trimmed(current) == quoted) {
        Run({"gsettings", "reset", schema, k});
      }
      if (!Run({"gsettings", "set", schema, k, quoted})) {
        return false;
      }
    }
    return Run({"gsettings", "set", schema, "picture-options",
                GVariantString(GnomeOption(arrangement))});
  }

  bool SetXfce(const std::string& bitmap, int arrangement) {
    const std::string channel = "xfce4-desktop";
    std::string listing;
    if (!Run({"xfconf-query", "-c", channel, "-l"}, &listing)) {
      return false;
    }
    const std::string style = std::to_string(XfceStyle(arrangement));
    std::vector<std::string> images;
    for (const std::string& line : Split(listing, '\n')) {
      const std::string property = Trimmed(line);
      const std::string suffix = "/last-image";
      if (property.size() > suffix.size() &&
          property.compare(property.size() - suffix.size(), suffix.size(),
                           suffix) == 0) {
        images.push_back(property);
      }
    }
    if (images.empty()) {
      // A desktop that never had a picture: the first monitor's first
      // workspace.
      const std::string base = "/backdrop/screen0/monitor0/workspace0/";
      return Run({"xfconf-query", "-c", channel, "-p", base + "last-image",
                  "-n", "-t", "string", "-s", bitmap}) &&
             Run({"xfconf-query", "-c", channel, "-p", base + "image-style",
                  "-n", "-t", "int", "-s", style});
    }
    for (const std::string& image : images) {
      const std::string style_property =
          image.substr(0, image.size() - std::string("last-image").size()) +
          "image-style";
      std::string current;
      if (Run({"xfconf-query", "-c", channel, "-p", image}, &current) &&
          Trimmed(current) == bitmap) {
        Run({"xfconf-query", "-c", channel, "-p", image, "-s", ""});
      }
      if (!Run({"xfconf-query", "-c", channel, "-p", image, "-s", bitmap}) ||
          !Run({"xfconf-query", "-c", channel, "-p", style_property, "-n", "-t",
                "int", "-s", style})) {
        return false;
      }
    }
    return true;
  }

  bool SetPlasma(const std::string& bitmap, int arrangement) {
    // Written empty first, so that Plasma reads the overwritten file again.
    const std::string uri = FileUri(bitmap);
    const std::string script =
        "var all = desktops();"
        "for (var i = 0; i < all.length; i++) {"
        " var d = all[i];"
        " d.wallpaperPlugin = 'org.kde.image';"
        " d.currentConfigGroup = ['Wallpaper', 'org.kde.image', 'General'];"
        " d.writeConfig('Image', '');"
        " d.writeConfig('Image', '" +
        uri +
        "');"
        " d.writeConfig('FillMode', " +
        std::to_string(PlasmaFillMode(arrangement)) +
        ");"
        "}";
    if (runner_->Has("dbus-send")) {
      return Run({"dbus-send", "--session", "--print-reply",
                  "--dest=org.kde.plasmashell", "/PlasmaShell",
                  "org.kde.PlasmaShell.evaluateScript", "string:" + script});
    }
    for (const char* qdbus : {"qdbus6", "qdbus", "qdbus-qt5"}) {
      if (runner_->Has(qdbus)) {
        return Run({qdbus, "org.kde.plasmashell", "/PlasmaShell",
                    "org.kde.PlasmaShell.evaluateScript", script});
      }
    }
    return false;
  }

  std::shared_ptr<ProgramRunner> runner_;
  std::map<std::string, std::string> environment_;
};

}  // namespace

DesktopKind DetectDesktop(
    const std::map<std::string, std::string>& environment) {
  auto value = [&](const char* name) {
    auto it = environment.find(name);
    return it == environment.end() ? std::string() : it->second;
  };
  for (const std::string& name : Split(value("XDG_CURRENT_DESKTOP"), ':')) {
    if (const DesktopKind kind = KindOfName(name);
        kind != DesktopKind::kUnknown) {
      return kind;
    }
  }
  for (const char* variable : {"XDG_SESSION_DESKTOP", "DESKTOP_SESSION"}) {
    std::string name = value(variable);
    // DESKTOP_SESSION may be a path to the session file.
    name = name.substr(name.find_last_of('/') + 1);
    if (const DesktopKind kind = KindOfName(name);
        kind != DesktopKind::kUnknown) {
      return kind;
    }
  }
  if (Lower(value("KDE_FULL_SESSION")) == "true") {
    return DesktopKind::kKde;
  }
  return DesktopKind::kUnknown;
}

std::map<std::string, std::string> ProcessEnvironment() {
  std::map<std::string, std::string> environment;
  for (char** e = environ; e != nullptr && *e != nullptr; ++e) {
    const std::string entry(*e);
    const auto equals = entry.find('=');
    if (equals != std::string::npos) {
      environment[entry.substr(0, equals)] = entry.substr(equals + 1);
    }
  }
  return environment;
}

std::string FileUri(const std::string& path) {
  std::string uri = "file://";
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) || c == '/' || c == '-' || c == '_' || c == '.' ||
        c == '~') {
      uri += c;
    } else {
      char escaped[4];
      std::snprintf(escaped, sizeof escaped, "%%%02X", byte);
      uri += escaped;
    }
  }
  return uri;
}

std::unique_ptr<Wallpaper> MakeDesktopWallpaper(
    std::shared_ptr<ProgramRunner> runner,
    std::map<std::string, std::string> environment) {
  return std::make_unique<DesktopWallpaper>(std::move(runner),
                                            std::move(environment));
}

}  // namespace qbpd
