#include "platform/photo_kind.h"

#include <algorithm>
#include <array>
#include <fstream>

namespace qbpd {

PhotoKind SniffPhotoKind(const std::uint8_t* head, std::size_t size) {
  static constexpr std::array<std::uint8_t, 8> kPng = {0x89, 'P',  'N',  'G',
                                                       0x0D, 0x0A, 0x1A, 0x0A};
  if (size >= 3 && head[0] == 0xFF && head[1] == 0xD8 && head[2] == 0xFF) {
    return PhotoKind::kJpeg;
  }
  if (size >= kPng.size() && std::equal(kPng.begin(), kPng.end(), head)) {
    return PhotoKind::kPng;
  }
  if (size >= 4 &&
      ((head[0] == 'I' && head[1] == 'I' && head[2] == 42 && head[3] == 0) ||
       (head[0] == 'M' && head[1] == 'M' && head[2] == 0 && head[3] == 42))) {
    return PhotoKind::kTiff;
  }
  if (size >= 2 && head[0] == 'B' && head[1] == 'M') {
    return PhotoKind::kBmp;
  }
  return PhotoKind::kOther;
}

PhotoKind SniffPhotoFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::array<char, 8> head{};
  in.read(head.data(), head.size());
  return SniffPhotoKind(reinterpret_cast<const std::uint8_t*>(head.data()),
                        static_cast<std::size_t>(in.gcount()));
}

}  // namespace qbpd
