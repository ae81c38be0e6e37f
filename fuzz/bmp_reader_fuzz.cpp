// libFuzzer target: the bitmap reader over any bytes. The reader must refuse
// or decode without reading out of bounds, and what it decodes must have the
// size its headers and the shrink promise.

#include "platform/bmp_reader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

// Small enough that a decode of the largest picture allowed stays quick.
constexpr std::uint64_t kMaxPixels = 4'000'000;

void Check(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  if (size < 1) {
    return 0;
  }
  // The first byte picks the shrink, the rest is the file.
  const int shrink = 1 + data[0] % 9;
  const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);

  std::istringstream header_in(bytes);
  qbpd::BmpInfo info;
  const bool header_ok = qbpd::ReadBmpInfo(header_in, kMaxPixels, info).ok();
  if (header_ok) {
    Check(info.width > 0 && info.height > 0);
    Check(static_cast<std::uint64_t>(info.width) * info.height <= kMaxPixels);
  }

  std::istringstream in(bytes);
  qbpd::BmpPixels pixels;
  const bool decoded = qbpd::DecodeBmp(in, kMaxPixels, shrink, pixels).ok();
  if (decoded) {
    Check(header_ok);
    Check(pixels.width == (info.width + shrink - 1) / shrink);
    Check(pixels.height == (info.height + shrink - 1) / shrink);
    Check(pixels.rgb.size() ==
          static_cast<std::size_t>(pixels.width) * pixels.height * 3);
  } else {
    Check(pixels.rgb.empty());
  }
  return 0;
}
