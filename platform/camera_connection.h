#ifndef QBPD_PLATFORM_CAMERA_CONNECTION_H_
#define QBPD_PLATFORM_CAMERA_CONNECTION_H_

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qbpd {

// A file on a camera: its folder there ("/DCIM/100CANON") and its name.
struct CameraFile {
  std::string folder;
  std::string name;
};

// Takes one piece of a file as the camera hands it over; false stops the
// download (the piece could not be kept).
using CameraPieces =
    std::function<bool(const unsigned char* data, std::size_t size)>;

// An open camera, for the camera transfer helper. Every call may fail (the
// camera pulled out, a busy camera); it then says why in `error`.
class CameraConnection {
 public:
  virtual ~CameraConnection() = default;
  // Every file of the camera, folder by folder from the root, breadth first.
  [[nodiscard]] virtual bool ListFiles(std::vector<CameraFile>& files,
                                       std::string& error) = 0;
  // One file's bytes, handed to `take` piece by piece in order as they
  // come. When it fails midway (the camera pulled out) or `take` refuses a
  // piece, the pieces already taken are not the whole file.
  [[nodiscard]] virtual bool DownloadPieces(const CameraFile& file,
                                            const CameraPieces& take,
                                            std::string& error) = 0;
  // The whole content of one file (the pieces collected; "" on a failure).
  [[nodiscard]] bool Download(const CameraFile& file,
                              std::string& content,
                              std::string& error);
  // Deletes one file from the camera.
  [[nodiscard]] virtual bool Delete(const CameraFile& file,
                                    std::string& error) = 0;
};

// Opens the camera of a device text (see camera_devices.h): its port when
// the text names one, else the first detected camera of that model. Null,
// with the reason in `error`, when there is no such camera.
std::unique_ptr<CameraConnection> OpenCamera(const std::string& device,
                                             std::string& error);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_CAMERA_CONNECTION_H_
