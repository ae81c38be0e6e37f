// libFuzzer target: the image header reader over any bytes (the service
// checks every upload with it, the photo information dialog every photo).
// It must refuse or read without reading out of bounds, and what it accepts
// must be a photo of a known kind with sides and bits that make sense.

#include "platform/image_header.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

void Check(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  qbpd::ImageHeader header;
  const bool read = qbpd::ParseImageHeader(
      std::string_view(reinterpret_cast<const char*>(data), size), header);
  if (read) {
    Check(header.kind != qbpd::PhotoKind::kOther);
    Check(header.width > 0 && header.height > 0);
    // At most eight samples of 32 bits (a TIFF can say so).
    Check(header.bits > 0 && header.bits <= 8 * 32);
    Check(header.colours > 0);
  } else {
    Check(header.kind == qbpd::PhotoKind::kOther && header.width == 0);
  }
  return 0;
}
