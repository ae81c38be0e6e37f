#include "tests/support/camera_photo.h"

#include <vips/vips8>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <vector>

namespace qbpd::testing {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Light from one side, two scales of textured surface, a few hard-edged
// shapes and sensor noise: decoding and comparing it behaves as with a
// photo, unlike a flat gradient.
vips::VImage Picture(int width, int height, int seed) {
  const vips::VImage xy = vips::VImage::xyz(width, height);
  const vips::VImage light = xy[0] * (90.0 / width) + xy[1] * (50.0 / height);
  const vips::VImage coarse =
      vips::VImage::perlin(width, height,
                           vips::VImage::option()
                               ->set("cell_size", std::max(8, width / 6))
                               ->set("seed", seed));
  const vips::VImage fine =
      vips::VImage::perlin(width, height,
                           vips::VImage::option()
                               ->set("cell_size", std::max(4, width / 60))
                               ->set("seed", seed + 1));
  const vips::VImage blobs =
      vips::VImage::perlin(width, height,
                           vips::VImage::option()
                               ->set("cell_size", std::max(8, width / 16))
                               ->set("seed", seed + 2));
  const vips::VImage shapes = (blobs > 0.25).ifthenelse(45.0, 0.0);
  const vips::VImage base = light + coarse * 45 + fine * 18 + shapes + 30;
  std::vector<vips::VImage> bands;
  for (int c = 0; c < 3; ++c) {
    const vips::VImage noise = vips::VImage::gaussnoise(
        width, height,
        vips::VImage::option()->set("sigma", 5.0)->set("seed", seed * 3 + c));
    bands.push_back(base * (0.75 + 0.12 * c) + noise + 8 * c);
  }
  return vips::VImage::bandjoin(bands)
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .copy_memory();
}

Bytes Jpeg(const vips::VImage& image, int quality, bool progressive) {
  void* buffer = nullptr;
  size_t size = 0;
  image.write_to_buffer(
      ".jpg", &buffer, &size,
      vips::VImage::option()->set("Q", quality)->set("interlace", progressive));
  Bytes bytes(static_cast<std::uint8_t*>(buffer),
              static_cast<std::uint8_t*>(buffer) + size);
  g_free(buffer);
  return bytes;
}

void Put16(Bytes& b, unsigned v) {
  b.push_back(static_cast<std::uint8_t>(v & 0xFF));
  b.push_back(static_cast<std::uint8_t>(v >> 8));
}

void Put32(Bytes& b, unsigned v) {
  Put16(b, v & 0xFFFF);
  Put16(b, v >> 16);
}

void Entry(Bytes& b, unsigned tag, unsigned type, unsigned value) {
  Put16(b, tag);
  Put16(b, type);
  Put32(b, 1);
  Put32(b, value);
}

// The APP1 segment: little-endian TIFF data with the orientation in the
// first directory and the preview behind the second.
Bytes ExifSegment(int orientation, const Bytes& preview) {
  Bytes tiff = {'I', 'I', 42, 0};
  Put32(tiff, 8);
  Put16(tiff, 1);  // the first directory, at 8
  Entry(tiff, 0x0112, 3, static_cast<unsigned>(orientation));
  Put32(tiff, preview.empty() ? 0 : 26);
  if (!preview.empty()) {
    Put16(tiff, 3);  // the second directory, at 26: 2 + 3 * 12 + 4 bytes
    Entry(tiff, 0x0103, 3, 6);   // compression: JPEG
    Entry(tiff, 0x0201, 4, 68);  // where the preview starts
    Entry(tiff, 0x0202, 4, static_cast<unsigned>(preview.size()));
    Put32(tiff, 0);
    tiff.insert(tiff.end(), preview.begin(), preview.end());
  }
  const std::size_t length = 2 + 6 + tiff.size();
  Bytes segment = {0xFF,
                   0xE1,
                   static_cast<std::uint8_t>(length >> 8),
                   static_cast<std::uint8_t>(length & 0xFF),
                   'E',
                   'x',
                   'i',
                   'f',
                   0,
                   0};
  segment.insert(segment.end(), tiff.begin(), tiff.end());
  return segment;
}

}  // namespace

bool WriteCameraPhoto(const std::string& path,
                      int width,
                      int height,
                      int seed,
                      int orientation,
                      CameraPreview preview) {
  if (VIPS_INIT("qbpd-tests") != 0 || width < 16 || height < 16 ||
      orientation < 1 || orientation > 8) {
    return false;
  }
  try {
    vips::VImage taken = Picture(width, height, seed);
    if (preview == CameraPreview::kPlainTop ||
        preview == CameraPreview::kPlainTopCropped) {
      const vips::VImage sky =
          vips::VImage::black(width, height / 10,
                              vips::VImage::option()->set("bands", 3)) +
          std::vector<double>{150, 175, 215};
      taken = taken.insert(sky.cast(VIPS_FORMAT_UCHAR), 0, 0).copy_memory();
    }
    vips::VImage stored = taken;
    vips::VImage small = taken.thumbnail_image(160);
    switch (preview) {
      case CameraPreview::kTurned:
        stored = taken.rot180();
        break;
      case CameraPreview::kMirrored:
        stored = taken.flip(VIPS_DIRECTION_HORIZONTAL);
        break;
      case CameraPreview::kRecoloured:
        stored =
            vips::VImage::bandjoin({taken[0] * 1.08, taken[1], taken[2] * 0.9})
                .cast(VIPS_FORMAT_UCHAR);
        break;
      case CameraPreview::kBrightened:
        stored = (taken + 12).cast(VIPS_FORMAT_UCHAR);
        break;
      case CameraPreview::kCropped:
        stored = taken.crop(width / 20, height / 20, width - width / 10,
                            height - height / 10);
        break;
      case CameraPreview::kSlightlyCropped:
        stored = taken.crop(width / 50, height / 50, width - 2 * (width / 50),
                            height - 2 * (height / 50));
        break;
      case CameraPreview::kPlainTopCropped:
        stored = taken.crop(width / 20, height / 20, width - width / 10,
                            height - height / 10);
        break;
      case CameraPreview::kOtherPicture:
        stored = Picture(width, height, seed + 101);
        break;
      case CameraPreview::kLetterboxed: {
        const vips::VImage inner = taken.thumbnail_image(
            160, vips::VImage::option()->set("height", 120));
        small = inner.embed(0, (120 - inner.height()) / 2, 160, 120);
        break;
      }
      case CameraPreview::kTiny:
        small = taken.thumbnail_image(64);
        break;
      default:
        break;
    }
    Bytes jpeg = Jpeg(stored.copy(vips::VImage::option()->set(
                          "interpretation", VIPS_INTERPRETATION_sRGB)),
                      92, preview == CameraPreview::kProgressive);
    if (preview != CameraPreview::kNone) {
      const Bytes segment = ExifSegment(orientation, Jpeg(small, 85, false));
      if (segment.size() > 0xFFFF) {
        return false;
      }
      jpeg.insert(jpeg.begin() + 2, segment.begin(), segment.end());
    }
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(jpeg.data()),
              static_cast<std::streamsize>(jpeg.size()));
    return static_cast<bool>(out);
  } catch (const vips::VError& e) {
    fprintf(stderr, "%s\n", e.what());
    vips_error_clear();
    return false;
  }
}

}  // namespace qbpd::testing
