#ifndef QBPD_CAMERA_DEVICE_MONITOR_H_
#define QBPD_CAMERA_DEVICE_MONITOR_H_

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace qbpd {

class SettingsStore;

// The device monitor's decisions (qbpd-devmon): what a device's arrival
// writes to DevMon.dat, and when the program is started for it.
class DeviceMonitor {
 public:
  struct Options {
    // The program's data folder: DevMon.dat and the drive tokens.
    std::string data_folder;
    SettingsStore* settings = nullptr;
    // Whether the program runs now.
    std::function<bool()> program_running;
    // Starts the program with "DEVMON" on its command line; false when it
    // could not be started.
    std::function<bool()> start_program;
  };
  explicit DeviceMonitor(Options options);

  // The media mounted when the monitor starts: not new.
  void SetMountedMedia(const std::vector<std::string>& folders);
  // A camera arrived (by libgphoto2's model name): "100" when the settings'
  // CameraList knows it, else "200". Returns the line written, "" when
  // nothing was (DetectUSBDevices is "False", or the write failed).
  std::string CameraArrived(const std::string& camera);
  // The mount table changed: each newly mounted medium is reported by its
  // drive token with "100". Returns the lines written.
  std::vector<std::string> MediaChanged(
      const std::vector<std::string>& mounted);

 private:
  bool Watching() const;
  std::string Report(const std::string& code, const std::string& device);

  Options options_;
  std::set<std::string> known_media_;
};

}  // namespace qbpd

#endif  // QBPD_CAMERA_DEVICE_MONITOR_H_
