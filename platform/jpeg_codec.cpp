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

int TransformOf(int turn, bool mirror) {
  // A turn followed by a flip left to right is one of the transposes.
  switch (turn) {
    case 90:
      return mirror ? TJXOP_TRANSPOSE : TJXOP_ROT90;
    case 180:
      return mirror ? TJXOP_VFLIP : TJXOP_ROT180;
    case 270:
      return mirror ? TJXOP_TRANSVERSE : TJXOP_ROT270;
    default:
      return mirror ? TJXOP_HFLIP : TJXOP_NONE;
  }
}

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

std::optional<Bytes> TurnLosslessly(const Bytes& jpeg, int turn, bool mirror) {
  const TurboHandle handle(tjInitTransform());
  if (!handle) {
    return std::nullopt;
  }
  tjtransform transform{};
  transform.op = TransformOf(turn, mirror);
  transform.options = TJXOPT_PERFECT | TJXOPT_COPYNONE;
  TurboBuffer out;
  if (tjTransform(handle.get(), jpeg.data(), jpeg.size(), 1, &out.data,
                  &out.size, &transform, /*flags=*/0) != 0) {
    return std::nullopt;
  }
  return Bytes(out.data, out.data + out.size);
}

}  // namespace qbpd
