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
