#include "platform/bitmap_save.h"
#include "platform/image_header.h"
#include "platform/image_operations.h"

namespace qbpd {

int ImageOperations::GetBitRate(const std::string& path) {
  ImageHeader header;
  return ReadImageHeader(path, header) ? header.bits : 0;
}

int ImageOperations::GetNoOfColors(const std::string& path) {
  ImageHeader header;
  return ReadImageHeader(path, header) ? header.colours : 0;
}

CameraFacts ImageOperations::GetCameraFacts(const std::string& path) {
  return ReadCameraFacts(path);
}

int ImageOperations::SaveImageAsBMP(const std::string& source,
                                    const std::string& target) {
  return SaveUprightBitmap(source, target) ? 1 : 0;
}

}  // namespace qbpd
