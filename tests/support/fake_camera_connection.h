#ifndef QBPD_TESTS_SUPPORT_FAKE_CAMERA_CONNECTION_H_
#define QBPD_TESTS_SUPPORT_FAKE_CAMERA_CONNECTION_H_

#include "platform/camera_connection.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qbpd::testing {

// A camera in memory: its files in order, handed over in small pieces, and
// switches that make the listing, a download (from the n-th on: the camera
// pulled out midway through that file) or the deletes fail.
class FakeCameraConnection final : public CameraConnection {
 public:
  struct Photo {
    CameraFile file;
    std::string content;
  };

  bool ListFiles(std::vector<CameraFile>& files, std::string& error) override {
    if (fail_list) {
      error = "the camera is busy";
      return false;
    }
    files.clear();
    for (const Photo& photo : photos) {
      files.push_back(photo.file);
    }
    return true;
  }
  bool DownloadPieces(const CameraFile& file,
                      const CameraPieces& take,
                      std::string& error) override {
    ++*downloads;
    const bool pulled =
        fail_download_from > 0 && *downloads >= fail_download_from;
    for (const Photo& photo : photos) {
      if (photo.file.folder != file.folder || photo.file.name != file.name) {
        continue;
      }
      const auto* bytes =
          reinterpret_cast<const unsigned char*>(photo.content.data());
      // Pulled out, the camera hands over the first half of the file.
      const std::size_t end =
          pulled ? photo.content.size() / 2 : photo.content.size();
      for (std::size_t at = 0; at < end; at += piece_size) {
        if (!take(bytes + at, std::min(piece_size, end - at))) {
          error = "the piece was refused";
          return false;
        }
      }
      if (pulled) {
        error = "the camera went away";
        return false;
      }
      return true;
    }
    error = "no such file";
    return false;
  }
  bool Delete(const CameraFile& file, std::string& error) override {
    if (fail_delete) {
      error = "write-protected";
      return false;
    }
    deleted->push_back(file.folder + "/" + file.name);
    if (on_delete) {
      on_delete(file.folder + "/" + file.name);
    }
    return true;
  }

  std::vector<Photo> photos;
  // Told of each photo deleted, when set (the order of a run's steps).
  std::function<void(const std::string&)> on_delete;
  // The size of the pieces a download hands over.
  std::size_t piece_size = 3;
  bool fail_list = false;
  bool fail_delete = false;
  // The download of this number (1-based) and every later one fails; 0 never.
  int fail_download_from = 0;
  // Shared by copies, so that a test sees what an opened copy did after the
  // run has closed it.
  std::shared_ptr<int> downloads = std::make_shared<int>(0);
  std::shared_ptr<std::vector<std::string>> deleted =
      std::make_shared<std::vector<std::string>>();
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAKE_CAMERA_CONNECTION_H_
