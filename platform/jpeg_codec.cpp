#include "platform/jpeg_codec.h"

#include <turbojpeg.h>

#include <memory>

namespace qbpd {
namespace {

struct TurboDeleter {
  void operator()(void* handle) const { tjDestroy(handle); }
};
using TurboHandle = std::unique_ptr<void, TurboDeleter>;

struct TurboBuffer {
  unsigned char* data = nullptr;
  unsigned long size = 0;
  ~TurboBuffer() { tjFree(data); }
};

}  // namespace

std::optional<JpegInfo> ReadJpegInfo(const Bytes& jpeg) {
  const TurboHandle handle(tjInitDecompress());
  JpegInfo info;
  int colourspace = 0;
  if (!handle ||
      tjDecompressHeader3(handle.get(), jpeg.data(), jpeg.size(), &info.width,
                          &info.height, &info.subsampling, &colourspace) != 0) {
    return std::nullopt;
  }
  info.plain_colour = colourspace == TJCS_YCbCr || colourspace == TJCS_GRAY;
  if (info.subsampling < 0 || info.subsampling >= TJ_NUMSAMP) {
    info.subsampling = kSubsampling420;
  }
  return info;
}

std::optional<RgbPicture> DecodeSmallJpeg(const Bytes& jpeg, int max_side) {
  const TurboHandle handle(tjInitDecompress());
  RgbPicture rgb;
  int subsampling = 0;
  int colourspace = 0;
  if (!handle ||
      tjDecompressHeader3(handle.get(), jpeg.data(), jpeg.size(), &rgb.width,
                          &rgb.height, &subsampling, &colourspace) != 0 ||
      rgb.width < 1 || rgb.height < 1 || rgb.width > max_side ||
      rgb.height > max_side) {
    return std::nullopt;
  }
  rgb.pixels.resize(static_cast<std::size_t>(rgb.width) * rgb.height * 3);
  if (tjDecompress2(handle.get(), jpeg.data(), jpeg.size(), rgb.pixels.data(),
                    rgb.width, rgb.width * 3, rgb.height, TJPF_RGB,
                    TJFLAG_STOPONWARNING) != 0) {
    return std::nullopt;
  }
  return rgb;
}

std::optional<Bytes> EncodeRgb(const std::uint8_t* rgb,
                               int width,
                               int height,
                               int subsampling,
                               int quality) {
  const TurboHandle handle(tjInitCompress());
  TurboBuffer out;
  if (!handle || tjCompress2(handle.get(), rgb, width, /*pitch=*/0, height,
                             TJPF_RGB, &out.data, &out.size, subsampling,
                             quality, TJFLAG_ACCURATEDCT) != 0) {
    return std::nullopt;
  }
  return Bytes(out.data, out.data + out.size);
}

}  // namespace qbpd
