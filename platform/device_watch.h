#ifndef QBPD_PLATFORM_DEVICE_WATCH_H_
#define QBPD_PLATFORM_DEVICE_WATCH_H_

#include <memory>
#include <string>

namespace qbpd {

// What the device monitor is woken for.
struct DeviceEvent {
  enum class Kind {
    // A USB device arrived that libgphoto2 takes for a camera; `camera` is
    // the model's name as libgphoto2 detects it.
    kCamera,
    // The mount table changed (a medium mounted or unmounted).
    kMounts,
    // The watch can't go on (or was asked to stop).
    kStop,
  };
  Kind kind = Kind::kStop;
  std::string camera;
};

// Waits for devices without using the processor meanwhile: the kernel's
// device events (libudev's monitor of USB devices) and the mount table's
// change notice, both in one poll() with no time-out.
class DeviceWatch {
 public:
  virtual ~DeviceWatch() = default;
  // Blocks until the next event.
  virtual DeviceEvent Next() = 0;
};

// The real watch; `stop_fd` (a pipe's read end, or -1) ends it when it
// becomes readable.
std::unique_ptr<DeviceWatch> MakeUdevDeviceWatch(int stop_fd);

// Whether the program runs now for this user: its single-instance lock in
// `runtime_folder` is held by a process.
bool ProgramInstanceRunning(const std::string& runtime_folder);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_DEVICE_WATCH_H_
