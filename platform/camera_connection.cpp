#include "platform/camera_connection.h"

namespace qbpd {

bool CameraConnection::Download(const CameraFile& file,
                                std::string& content,
                                std::string& error) {
  content.clear();
  const bool whole = DownloadPieces(
      file,
      [&content](const unsigned char* data, std::size_t size) {
        content.append(reinterpret_cast<const char*>(data), size);
        return true;
      },
      error);
  if (!whole) {
    content.clear();
  }
  return whole;
}

}  // namespace qbpd
