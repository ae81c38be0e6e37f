#ifndef QBPD_PLATFORM_CAMERA_DEVICES_H_
#define QBPD_PLATFORM_CAMERA_DEVICES_H_

#include <memory>
#include <string>
#include <vector>

namespace qbpd {

// A camera as libgphoto2 finds it: the model's name and the port it is on
// ("usb:001,004", or "disk:/folder" for the directory-browsing driver).
struct DetectedCamera {
  std::string model;
  std::string port;
};

// The device text of a camera: "model (port)". The camera transfer helper
// takes this text, or a model's name alone (the first camera of that model),
// or a port alone.
std::string CameraDeviceText(const DetectedCamera& camera);
// Splits a device text into model and port (either may come back empty).
DetectedCamera ParseCameraDeviceText(const std::string& device);

// The devices of a camera import, as the program sees them.
class CameraDevices {
 public:
  virtual ~CameraDevices() = default;
  // GetAvailableDeviceList: the devices attached now as one text, each entry
  // followed by "|": the cameras libgphoto2 detects (by device text) and the
  // removable media (by drive token, see drive_tokens.h). "" when there are
  // none.
  virtual std::string GetAvailableDeviceList() = 0;
  // The folder a drive token stands for now; "" when none.
  virtual std::string DriveFolder(const std::string& token) = 0;
  // Starts the camera transfer helper with `argument` (device, destination
  // and base name joined by "*") as its one argument, without waiting and
  // without a shell. False when it could not be started.
  [[nodiscard]] virtual bool StartImageAcq(const std::string& argument) = 0;
  // Whether the helper last started still runs; a helper that ended is
  // reaped here.
  virtual bool HelperRunning() = 0;
};

// The real devices: libgphoto2's detection, the mount table, the table of
// drive tokens in `data_folder`, and `helper` (the path of qbpd-imgacq).
std::unique_ptr<CameraDevices> MakeLinuxCameraDevices(std::string helper,
                                                      std::string data_folder);

// Devices of a run without any: no device is attached and no helper starts.
std::unique_ptr<CameraDevices> MakeNoCameraDevices();

// The cameras libgphoto2 detects now (USB and the other ports it scans).
std::vector<DetectedCamera> DetectCameras();

// Whether libgphoto2 knows a USB device of this vendor and product as a
// camera (a model of its own, or any device of the still-image class, which
// its PTP driver serves).
bool IsCameraUsbDevice(int vendor, int product, int device_class);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_CAMERA_DEVICES_H_
