#include "platform/camera_devices.h"
#include "platform/device_watch.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <libudev.h>
#include <poll.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace qbpd {
namespace {

constexpr int kDetectTries = 10;
constexpr int kDetectPauseMs = 300;
constexpr int kHex = 16;

int AttributeNumber(udev_device* device, const char* name, int base) {
  const char* text = udev_device_get_sysattr_value(device, name);
  return text == nullptr ? -1
                         : static_cast<int>(std::strtol(text, nullptr, base));
}

class UdevDeviceWatch final : public DeviceWatch {
 public:
  explicit UdevDeviceWatch(int stop_fd) : stop_fd_(stop_fd) {
    udev_ = udev_new();
    if (udev_ != nullptr) {
      monitor_ = udev_monitor_new_from_netlink(udev_, "udev");
    }
    if (monitor_ != nullptr) {
      udev_monitor_filter_add_match_subsystem_devtype(monitor_, "usb",
                                                      "usb_device");
      udev_monitor_enable_receiving(monitor_);
    }
    mounts_fd_ = ::open("/proc/self/mounts", O_RDONLY | O_CLOEXEC);
  }
  ~UdevDeviceWatch() override {
    if (mounts_fd_ >= 0) {
      ::close(mounts_fd_);
    }
    if (monitor_ != nullptr) {
      udev_monitor_unref(monitor_);
    }
    if (udev_ != nullptr) {
      udev_unref(udev_);
    }
  }

  DeviceEvent Next() override {
    for (;;) {
      pollfd fds[3] = {};
      int count = 0;
      const int udev_at = monitor_ != nullptr ? count++ : -1;
      if (udev_at >= 0) {
        fds[udev_at] = {udev_monitor_get_fd(monitor_), POLLIN, 0};
      }
      const int mounts_at = mounts_fd_ >= 0 ? count++ : -1;
      if (mounts_at >= 0) {
        fds[mounts_at] = {mounts_fd_, POLLPRI, 0};
      }
      const int stop_at = stop_fd_ >= 0 ? count++ : -1;
      if (stop_at >= 0) {
        fds[stop_at] = {stop_fd_, POLLIN, 0};
      }
      if (count == 0) {
        return {};
      }
      if (::poll(fds, count, -1) < 0) {
        if (errno == EINTR) {
          continue;
        }
        return {};
      }
      if (stop_at >= 0 && fds[stop_at].revents != 0) {
        return {};
      }
      if (mounts_at >= 0 && (fds[mounts_at].revents & (POLLPRI | POLLERR))) {
        // The notice stays raised until the table is read again.
        char buffer[4096];
        ::lseek(mounts_fd_, 0, SEEK_SET);
        while (::read(mounts_fd_, buffer, sizeof(buffer)) > 0) {
        }
        DeviceEvent event;
        event.kind = DeviceEvent::Kind::kMounts;
        return event;
      }
      if (udev_at >= 0 && (fds[udev_at].revents & POLLIN)) {
        DeviceEvent event;
        if (Camera(event)) {
          return event;
        }
      }
    }
  }

 private:
  bool Camera(DeviceEvent& event) {
    udev_device* device = udev_monitor_receive_device(monitor_);
    if (device == nullptr) {
      return false;
    }
    bool camera = false;
    const char* action = udev_device_get_action(device);
    if (action != nullptr && std::strcmp(action, "add") == 0) {
      const int vendor = AttributeNumber(device, "idVendor", kHex);
      const int product = AttributeNumber(device, "idProduct", kHex);
      int device_class = AttributeNumber(device, "bDeviceClass", kHex);
      const char* interfaces =
          udev_device_get_property_value(device, "ID_USB_INTERFACES");
      if (interfaces != nullptr &&
          std::strstr(interfaces, ":0601") != nullptr) {
        device_class = 6;  // an interface of the still-image class
      }
      if (IsCameraUsbDevice(vendor, product, device_class)) {
        char port[32];
        std::snprintf(port, sizeof(port), "usb:%03d,%03d",
                      AttributeNumber(device, "busnum", 10),
                      AttributeNumber(device, "devnum", 10));
        // libgphoto2 may see the device a moment after the kernel does.
        for (int i = 0; i < kDetectTries && !camera; ++i) {
          for (const DetectedCamera& found : DetectCameras()) {
            if (found.port == port) {
              event.kind = DeviceEvent::Kind::kCamera;
              event.camera = found.model;
              camera = true;
            }
          }
          if (!camera) {
            std::this_thread::sleep_for(
                std::chrono::milliseconds(kDetectPauseMs));
          }
        }
      }
    }
    udev_device_unref(device);
    return camera;
  }

  int stop_fd_;
  udev* udev_ = nullptr;
  udev_monitor* monitor_ = nullptr;
  int mounts_fd_ = -1;
};

}  // namespace

std::unique_ptr<DeviceWatch> MakeUdevDeviceWatch(int stop_fd) {
  return std::make_unique<UdevDeviceWatch>(stop_fd);
}

bool ProgramInstanceRunning(const std::string& runtime_folder) {
  const std::string lock = runtime_folder + "/instance.lock";
  const int fd = ::open(lock.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    return false;
  }
  const bool held = ::flock(fd, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  ::close(fd);
  return held;
}

}  // namespace qbpd
