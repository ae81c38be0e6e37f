#ifndef QBPD_PLATFORM_SESSION_AUTOSTART_H_
#define QBPD_PLATFORM_SESSION_AUTOSTART_H_

#include <memory>
#include <string>

namespace qbpd {

// Whether the device monitor starts with the user's desktop session.
class SessionAutostart {
 public:
  virtual ~SessionAutostart() = default;
  // Whether the monitor is set to start with the session.
  virtual bool DeviceMonitorStarts() = 0;
  // Turns its start with the session on or off. "" on success, else why it
  // failed (nothing is changed then).
  [[nodiscard]] virtual std::string SetDeviceMonitorStarts(bool on) = 0;
};

// The real one: the user's XDG autostart entry
// `config_home`/autostart/qbpd-devmon.desktop, which takes the place of the
// entry installed for every user of the same name. On writes an entry that
// runs `monitor`; off writes one marked Hidden, which the desktop doesn't
// start. Written atomically.
std::unique_ptr<SessionAutostart> MakeXdgAutostart(std::string config_home,
                                                   std::string monitor);

// One for a run that knows no session: the monitor doesn't start, and every
// change fails.
std::unique_ptr<SessionAutostart> MakeNoAutostart();

}  // namespace qbpd

#endif  // QBPD_PLATFORM_SESSION_AUTOSTART_H_
