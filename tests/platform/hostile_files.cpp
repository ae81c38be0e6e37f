#include "tests/platform/hostile_files.h"

#include <gtest/gtest.h>

#include <zlib.h>

namespace qbpd::testing {

std::string Encoded(const vips::VImage& image, const char* suffix) {
  void* data = nullptr;
  std::size_t size = 0;
  image.write_to_buffer(suffix, &data, &size);
  std::string bytes(static_cast<const char*>(data), size);
  g_free(data);
  return bytes;
}

vips::VImage Gradient(int width, int height) {
  const vips::VImage xyz = vips::VImage::xyz(width, height);
  return vips::VImage::bandjoin(
             std::vector<vips::VImage>{xyz[0], xyz[1], xyz[0] + xyz[1]})
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB));
}

std::string WithFrameSize(std::string jpeg, int width, int height) {
  for (std::size_t i = 2; i + 9 < jpeg.size(); ++i) {
    const auto marker = static_cast<unsigned char>(jpeg[i + 1]);
    if (jpeg[i] == '\xFF' && (marker == 0xC0 || marker == 0xC2)) {
      jpeg[i + 5] = static_cast<char>(height >> 8);
      jpeg[i + 6] = static_cast<char>(height & 0xFF);
      jpeg[i + 7] = static_cast<char>(width >> 8);
      jpeg[i + 8] = static_cast<char>(width & 0xFF);
      return jpeg;
    }
  }
  ADD_FAILURE() << "no frame header";
  return jpeg;
}

std::string Chunk(const std::string& type, const std::string& data) {
  std::string out;
  for (int shift = 24; shift >= 0; shift -= 8) {
    out += static_cast<char>((data.size() >> shift) & 0xFF);
  }
  const std::string body = type + data;
  out += body;
  const uLong crc =
      crc32(0, reinterpret_cast<const Bytef*>(body.data()), body.size());
  for (int shift = 24; shift >= 0; shift -= 8) {
    out += static_cast<char>((crc >> shift) & 0xFF);
  }
  return out;
}

std::string Deflated(const std::string& text) {
  uLongf size = compressBound(text.size());
  std::string out(size, '\0');
  compress2(reinterpret_cast<Bytef*>(out.data()), &size,
            reinterpret_cast<const Bytef*>(text.data()), text.size(), 9);
  out.resize(size);
  return out;
}

std::string PngWith(const std::string& chunk) {
  const std::string png = Encoded(Gradient(16, 16), ".png");
  const std::size_t after_header = 8 + 4 + 4 + 13 + 4;
  return png.substr(0, after_header) + chunk + png.substr(after_header);
}

}  // namespace qbpd::testing
