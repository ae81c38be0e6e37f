#include "camera/device_monitor.h"

#include "camera/camera_lines.h"
#include "core/quil_mod.h"
#include "core/settings.h"
#include "platform/atomic_file.h"
#include "platform/drive_tokens.h"
#include "platform/settings_store.h"

namespace qbpd {

DeviceMonitor::DeviceMonitor(Options options) : options_(std::move(options)) {}

void DeviceMonitor::SetMountedMedia(const std::vector<std::string>& folders) {
  known_media_ = std::set<std::string>(folders.begin(), folders.end());
}

bool DeviceMonitor::Watching() const {
  // Only an explicit "False" turns the watch off; a store without the value
  // (the program never ran) watches, as the installer's default does.
  return UpperCase(DropTrailingNul(options_.settings->Read(
             kCameraTransferKey, "DetectUSBDevices"))) != "FALSE";
}

std::string DeviceMonitor::Report(const std::string& code,
                                  const std::string& device) {
  const std::string line = MakeDevMonLine(code, device);
  const std::string path = options_.data_folder + "/" + kDevMonFile;
  if (!WriteFileAtomically(path, line.data(), line.size())) {
    return "";
  }
  if (options_.program_running && !options_.program_running() &&
      options_.start_program) {
    (void)options_.start_program();
  }
  return line;
}

std::string DeviceMonitor::CameraArrived(const std::string& camera) {
  if (!Watching() || camera.empty()) {
    return "";
  }
  const bool known = !options_.settings->Read(kCameraListKey, camera).empty();
  return Report(known ? kKnownDevice : kNewDevice, camera);
}

std::vector<std::string> DeviceMonitor::MediaChanged(
    const std::vector<std::string>& mounted) {
  std::vector<std::string> lines;
  std::vector<DriveToken> tokens;
  (void)AssignDriveTokens(options_.data_folder + "/" + kDriveTableName, mounted,
                          tokens);
  const bool watching = Watching();
  for (const DriveToken& token : tokens) {
    if (known_media_.count(token.folder) > 0 || !watching) {
      continue;
    }
    const std::string line = Report(kKnownDevice, token.token);
    if (!line.empty()) {
      lines.push_back(line);
    }
  }
  known_media_ = std::set<std::string>(mounted.begin(), mounted.end());
  return lines;
}

}  // namespace qbpd
