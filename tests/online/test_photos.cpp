#include "tests/online/test_photos.h"

#include <turbojpeg.h>

#include <vector>

namespace qbpd::testing {

std::string MakeJpeg(int width, int height, std::uint32_t seed, int quality) {
  std::vector<unsigned char> pixels(static_cast<size_t>(width) * height * 3);
  std::uint32_t state = seed * 2654435761u + 1;
  size_t at = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int channel = 0; channel < 3; ++channel) {
        // A small linear congruential step is noise enough for a codec.
        state = state * 1664525u + 1013904223u;
        const int noise = static_cast<int>(state >> 26) - 32;
        const int base = channel == 0   ? x * 255 / width
                         : channel == 1 ? y * 255 / height
                                        : (x + y) * 127 / (width + height);
        const int value = base + noise;
        pixels[at++] = static_cast<unsigned char>(
            value < 0 ? 0 : (value > 255 ? 255 : value));
      }
    }
  }
  tjhandle handle = tjInitCompress();
  if (handle == nullptr) {
    return {};
  }
  unsigned char* jpeg = nullptr;
  unsigned long size = 0;
  std::string out;
  if (tjCompress2(handle, pixels.data(), width, 0, height, TJPF_RGB, &jpeg,
                  &size, TJSAMP_444, quality, /*flags=*/0) == 0) {
    out.assign(reinterpret_cast<const char*>(jpeg), size);
  }
  tjFree(jpeg);
  tjDestroy(handle);
  return out;
}

}  // namespace qbpd::testing
