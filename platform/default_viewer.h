#ifndef QBPD_PLATFORM_DEFAULT_VIEWER_H_
#define QBPD_PLATFORM_DEFAULT_VIEWER_H_

#include <memory>
#include <string>

namespace qbpd {

// Which program the desktop opens JPEG photos (.jpg, .jpe, .jpeg: the type
// image/jpeg) with, for this user.
class DefaultViewer {
 public:
  virtual ~DefaultViewer() = default;
  // Whether this program is the user's default application of image/jpeg.
  virtual bool IsDefault() = 0;
  // On: makes this program the default, remembering the handler that was
  // the default before (nothing is remembered when this program already is
  // it). Off: when this program is the default, gives the type back to the
  // remembered handler, or to none; a default the user chose since is left
  // alone. "" on success, else why it failed (nothing is changed then).
  [[nodiscard]] virtual std::string SetDefault(bool on) = 0;
};

// The real one: the "Default Applications" entry of image/jpeg in
// `config_home`/mimeapps.list, in the layout xdg-mime reads and writes,
// edited in place with every other line kept byte for byte and
// written atomically. `desktop_id` is this program's desktop entry
// ("quillbay-picture-desk.desktop"); the handler before is remembered in the
// file `memory`.
std::unique_ptr<DefaultViewer> MakeXdgDefaultViewer(std::string config_home,
                                                    std::string desktop_id,
                                                    std::string memory);

// One for a run that knows no desktop: nothing is the default, and every
// change fails.
std::unique_ptr<DefaultViewer> MakeNoDefaultViewer();

// The user's XDG configuration folder: $XDG_CONFIG_HOME, else $HOME/.config.
std::string XdgConfigHome();

}  // namespace qbpd

#endif  // QBPD_PLATFORM_DEFAULT_VIEWER_H_
