#ifndef QBPD_PLATFORM_JPEG_CODEC_H_
#define QBPD_PLATFORM_JPEG_CODEC_H_

// For the platform's implementations only: libjpeg-turbo's encoder, header
// reader over bytes in memory.
#include "platform/jpeg_metadata.h"
#include "platform/rgb_picture.h"

#include <optional>

namespace qbpd {

// The chroma subsampling of a JPEG, as libjpeg-turbo numbers it.
inline constexpr int kSubsampling444 = 0;
inline constexpr int kSubsampling420 = 2;
inline constexpr int kSubsamplingGrey = 3;

struct JpegInfo {
  int width = 0;
  int height = 0;
  int subsampling = kSubsampling420;
  // The pixels are YCbCr or grey (not CMYK), as the encoder writes them.
  bool plain_colour = true;
};
std::optional<JpegInfo> ReadJpegInfo(const Bytes& jpeg);

// A small JPEG (no side above `max_side`) decoded to RGB; nothing when it
// is broken or larger.
std::optional<RgbPicture> DecodeSmallJpeg(const Bytes& jpeg, int max_side);

// Encodes `width` x `height` RGB pixels (rows of width * 3 bytes) at
// `quality` with `subsampling`; nothing on failure.
std::optional<Bytes> EncodeRgb(const std::uint8_t* rgb,
                               int width,
                               int height,
                               int subsampling,
                               int quality);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_JPEG_CODEC_H_
