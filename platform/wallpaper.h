#ifndef QBPD_PLATFORM_WALLPAPER_H_
#define QBPD_PLATFORM_WALLPAPER_H_

#include "platform/program_runner.h"

#include <map>
#include <memory>
#include <string>

namespace qbpd {

// How a wallpaper is laid on the desktop, by the program's numbers.
inline constexpr int kWallpaperTiled = 0;
inline constexpr int kWallpaperCentered = 1;
inline constexpr int kWallpaperStretched = 2;

// The desktops whose wallpaper the program knows how to set.
enum class DesktopKind {
  kGnome,  // GNOME and its relatives (Unity, Budgie, Pantheon, ...)
  kKde,    // KDE Plasma
  kXfce,
  kMate,
  kCinnamon,
  kUnknown,
};

// The desktop of the session that `environment` describes: the first known
// name of XDG_CURRENT_DESKTOP (a list split by ":", compared without regard
// to case), else XDG_SESSION_DESKTOP, else DESKTOP_SESSION, else
// KDE_FULL_SESSION.
DesktopKind DetectDesktop(
    const std::map<std::string, std::string>& environment);

// The variables of this process's environment.
std::map<std::string, std::string> ProcessEnvironment();

// The desktop's wallpaper.
class Wallpaper {
 public:
  virtual ~Wallpaper() = default;
  // Makes the picture at `bitmap` the desktop's wallpaper, laid as
  // `arrangement` says (kWallpaperTiled, kWallpaperCentered or
  // kWallpaperStretched), through the desktop's own settings, which the
  // desktop follows at once. 1 on success; 0 when no known desktop runs, a
  // settings tool is missing or refuses, or the arrangement is unknown.
  virtual int ChangeWallpaper(const std::string& bitmap, int arrangement) = 0;
};

// The real wallpaper of the session described by `environment`, set with
// the desktop's own tools run by `runner`:
//   GNOME   gsettings, org.gnome.desktop.background picture-uri and
//           picture-uri-dark (when the schema has it), picture-options
//   Cinnamon gsettings, org.cinnamon.desktop.background picture-uri,
//           picture-options
//   MATE    gsettings, org.mate.background picture-filename, picture-options
//   Xfce    xfconf-query, channel xfce4-desktop: every monitor and
//           workspace's last-image and image-style
//   KDE     the Plasma shell's scripting interface over D-Bus (dbus-send, or
//           qdbus): every desktop's org.kde.image Image and FillMode
// A setting that already names the same file is first reset, so that the
// desktop reads the file (which was overwritten) again.
std::unique_ptr<Wallpaper> MakeDesktopWallpaper(
    std::shared_ptr<ProgramRunner> runner,
    std::map<std::string, std::string> environment);

// A file's path as a file URI, its bytes percent-encoded where a URI needs
// it.
std::string FileUri(const std::string& path);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_WALLPAPER_H_
