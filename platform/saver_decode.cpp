// The saver player's photos: decoded with the photo view's bounded reader,
// turned upright, fitted and centred on black.
#include "platform/photo_decode.h"
#include "platform/saver_player.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace qbpd {

SaverFrame DecodeSaverPhoto(const std::string& path, int width, int height) {
  if (width <= 0 || height <= 0) {
    return {};
  }
  try {
    const std::optional<PhotoHeader> header = ReadHeader(path);
    if (!header || header->stored_width <= 0 || header->stored_height <= 0) {
      return {};
    }
    const bool swaps = header->orientation.turn % 180 != 0;
    const int upright_w = swaps ? header->stored_height : header->stored_width;
    const int upright_h = swaps ? header->stored_width : header->stored_height;
    const double scale = std::min(static_cast<double>(width) / upright_w,
                                  static_cast<double>(height) / upright_h);
    const int fit_w =
        std::clamp(static_cast<int>(std::lround(upright_w * scale)), 1, width);
    const int fit_h =
        std::clamp(static_cast<int>(std::lround(upright_h * scale)), 1, height);
    // Decoded only as finely as the screen needs (shrink on load).
    const Needed needed{
        std::clamp(swaps ? fit_h : fit_w, 1, header->stored_width),
        std::clamp(swaps ? fit_w : fit_h, 1, header->stored_height)};
    vips::VImage image = DecodeStored(path, *header, needed);
    image = ToDisplayRgb(Oriented(image, header->orientation));
    image = image.resize(
        static_cast<double>(fit_w) / image.width(),
        vips::VImage::option()->set(
            "vscale", static_cast<double>(fit_h) / image.height()));
    // The resize may round a pixel either way.
    image = image.crop(0, 0, std::min(fit_w, image.width()),
                       std::min(fit_h, image.height()));
    const int left = (width - image.width()) / 2;
    const int top = (height - image.height()) / 2;
    image =
        image.embed(left, top, width, height,
                    vips::VImage::option()->set("extend", VIPS_EXTEND_BLACK));
    image = image.cast(VIPS_FORMAT_UCHAR);
    size_t size = 0;
    auto* data = static_cast<unsigned char*>(image.write_to_memory(&size));
    if (data == nullptr) {
      return {};
    }
    SaverFrame frame;
    frame.width = width;
    frame.height = height;
    frame.pixels.resize(static_cast<size_t>(width) * height);
    const int bands = image.bands();
    for (size_t i = 0; i < frame.pixels.size(); ++i) {
      const unsigned char* p = data + i * bands;
      const std::uint32_t r = p[0];
      const std::uint32_t g = bands >= 3 ? p[1] : p[0];
      const std::uint32_t b = bands >= 3 ? p[2] : p[0];
      frame.pixels[i] = 0xFF000000u | (r << 16) | (g << 8) | b;
    }
    g_free(data);
    return frame;
  } catch (const vips::VError&) {
    return {};
  }
}

}  // namespace qbpd
