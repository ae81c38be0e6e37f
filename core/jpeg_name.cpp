#include "core/jpeg_name.h"

#include <cctype>
#include <filesystem>

namespace qbpd {

bool HasJpegExtension(const std::string& path) {
  std::string ext = std::filesystem::path(path).extension().string();
  if (!ext.empty()) {
    ext.erase(0, 1);
  }
  for (char& c : ext) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return ext == "JPG" || ext == "JPEG" || ext == "JPE";
}

}  // namespace qbpd
