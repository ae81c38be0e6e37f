#include "platform/bmp_reader.h"
#include "platform/display_model.h"

#include <vips/vips8>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qbpd {
namespace {

constexpr std::uint64_t kMaxPixels = 256'000'000;
constexpr int kMinPercent = 1;
constexpr int kMaxPercent = 1600;
// libvips' own limit on a side; a zoom that would pass it is refused.
constexpr double kMaxShownSide = 10'000'000;
// The grey of the view's background, under a transparent photo.
constexpr double kBackgroundGrey = 206.0;
// The JPEG decoder scales by 1/2, 1/4 and 1/8 for nearly nothing; the other
// kinds are box-shrunk while they are read, which may go further.
constexpr int kMaxJpegShrink = 8;
constexpr int kMaxOtherShrink = 64;

enum class PhotoKind { kJpeg, kPng, kTiff, kBmp };

// Tells the kind of a file from its first bytes, whatever its name says.
std::optional<PhotoKind> SniffKind(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::array<unsigned char, 8> head{};
  in.read(reinterpret_cast<char*>(head.data()), head.size());
  const std::streamsize got = in.gcount();
  if (got >= 3 && head[0] == 0xFF && head[1] == 0xD8 && head[2] == 0xFF) {
    return PhotoKind::kJpeg;
  }
  static constexpr std::array<unsigned char, 8> kPngSignature = {
      0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
  if (got >= 8 && head == kPngSignature) {
    return PhotoKind::kPng;
  }
  if (got >= 4 &&
      ((head[0] == 'I' && head[1] == 'I' && head[2] == 42 && head[3] == 0) ||
       (head[0] == 'M' && head[1] == 'M' && head[2] == 0 && head[3] == 42))) {
    return PhotoKind::kTiff;
  }
  if (got >= 2 && head[0] == 'B' && head[1] == 'M') {
    return PhotoKind::kBmp;
  }
  return std::nullopt;
}

// How the stored pixels are turned to stand upright: a clockwise turn, then
// a mirror left to right. This is what the EXIF orientation tag means.
struct Orientation {
  int turn = 0;
  bool mirror = false;
};

Orientation FromExif(int tag) {
  switch (tag) {
    case 2:
      return {0, true};
    case 3:
      return {180, false};
    case 4:
      return {180, true};
    case 5:
      return {90, true};
    case 6:
      return {90, false};
    case 7:
      return {270, true};
    case 8:
      return {270, false};
    default:
      return {};
  }
}

VipsAngle AngleOf(int degrees) {
  switch (degrees) {
    case 90:
      return VIPS_ANGLE_D90;
    case 180:
      return VIPS_ANGLE_D180;
    case 270:
      return VIPS_ANGLE_D270;
    default:
      return VIPS_ANGLE_D0;
  }
}

bool IsQuarterTurn(int degrees) {
  return degrees == 90 || degrees == 270;
}

// What the file's header says, before any pixel is decoded.
struct PhotoHeader {
  PhotoKind kind = PhotoKind::kJpeg;
  int stored_width = 0;
  int stored_height = 0;
  Orientation orientation;
};

vips::VOption* LoaderOptions() {
  // A truncated file or a serious decoding error fails the load, rather than
  // showing a photo that turns grey halfway down.
  return vips::VImage::option()
      ->set("access", VIPS_ACCESS_SEQUENTIAL)
      ->set("fail_on", VIPS_FAIL_ON_ERROR);
}

// Opens the file with the loader of its kind only, so no general-purpose
// loader is ever handed a photo. Nothing is decoded yet.
vips::VImage OpenLazily(const std::string& path,
                        PhotoKind kind,
                        vips::VOption* options) {
  switch (kind) {
    case PhotoKind::kJpeg:
      return vips::VImage::jpegload(path.c_str(), options);
    case PhotoKind::kPng:
      return vips::VImage::pngload(path.c_str(), options);
    case PhotoKind::kTiff:
      return vips::VImage::tiffload(path.c_str(), options);
    case PhotoKind::kBmp:
      break;
  }
  throw vips::VError("the bitmap reader reads bitmaps");
}

std::optional<PhotoHeader> ReadHeader(const std::string& path) {
  const std::optional<PhotoKind> kind = SniffKind(path);
  if (!kind) {
    return std::nullopt;
  }
  PhotoHeader header;
  header.kind = *kind;
  if (*kind == PhotoKind::kBmp) {
    std::ifstream in(path, std::ios::binary);
    BmpInfo info;
    if (!in || !ReadBmpInfo(in, kMaxPixels, info).ok()) {
      return std::nullopt;
    }
    header.stored_width = info.width;
    header.stored_height = info.height;
  } else {
    const vips::VImage image = OpenLazily(path, *kind, LoaderOptions());
    header.stored_width = image.width();
    header.stored_height = image.height();
    if (image.get_typeof(VIPS_META_ORIENTATION) != 0) {
      header.orientation = FromExif(image.get_int(VIPS_META_ORIENTATION));
    }
  }
  if (header.stored_width <= 0 || header.stored_height <= 0 ||
      static_cast<std::uint64_t>(header.stored_width) *
              static_cast<std::uint64_t>(header.stored_height) >
          kMaxPixels) {
    return std::nullopt;
  }
  return header;
}

// Brings any decoded picture to three 8-bit sRGB bands: grey, 16-bit and
// CMYK photos are converted, and transparency is laid on the view's grey.
vips::VImage ToDisplayRgb(vips::VImage image) {
  if (image.interpretation() != VIPS_INTERPRETATION_sRGB ||
      image.format() != VIPS_FORMAT_UCHAR) {
    image = image.colourspace(VIPS_INTERPRETATION_sRGB);
  }
  if (image.has_alpha()) {
    image = image.flatten(vips::VImage::option()->set(
        "background", std::vector<double>{kBackgroundGrey}));
  }
  if (image.format() != VIPS_FORMAT_UCHAR) {
    image = image.cast(VIPS_FORMAT_UCHAR);
  }
  if (image.bands() > 3) {
    image = image.extract_band(0, vips::VImage::option()->set("n", 3));
  }
  return image;
}

// The stored picture decoded into memory at 1/`shrink` of its size, as RGB,
// not yet turned upright.
vips::VImage DecodeStored(const std::string& path,
                          const PhotoHeader& header,
                          int shrink) {
  switch (header.kind) {
    case PhotoKind::kJpeg:
      return ToDisplayRgb(
                 vips::VImage::jpegload(path.c_str(),
                                        LoaderOptions()->set("shrink", shrink)))
          .copy_memory();
    case PhotoKind::kPng:
    case PhotoKind::kTiff: {
      vips::VImage image =
          ToDisplayRgb(OpenLazily(path, header.kind, LoaderOptions()));
      if (shrink > 1) {
        image = image.shrink(shrink, shrink);
      }
      return image.copy_memory();
    }
    case PhotoKind::kBmp: {
      std::ifstream in(path, std::ios::binary);
      BmpPixels pixels;
      if (!in || !DecodeBmp(in, kMaxPixels, shrink, pixels).ok()) {
        throw vips::VError("unreadable bitmap");
      }
      return vips::VImage::new_from_memory(pixels.rgb.data(), pixels.rgb.size(),
                                           pixels.width, pixels.height,
                                           /*bands=*/3, VIPS_FORMAT_UCHAR)
          .copy(vips::VImage::option()->set("interpretation",
                                            VIPS_INTERPRETATION_sRGB))
          .copy_memory();
    }
  }
  throw vips::VError("unknown kind of photo");
}

// Swallows libvips' warnings while a model lives: a broken photo fails by
// its result and prints nothing.
void IgnoreLogMessage(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

class VipsDisplayControl final : public DisplayControl {
 public:
  VipsDisplayControl()
      : log_handler_(g_log_set_handler(
            "VIPS",
            static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING |
                                        G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO),
            IgnoreLogMessage,
            nullptr)) {}

  ~VipsDisplayControl() override { g_log_remove_handler("VIPS", log_handler_); }

  VipsDisplayControl(const VipsDisplayControl&) = delete;
  VipsDisplayControl& operator=(const VipsDisplayControl&) = delete;

  void SetViewSize(int width_px, int height_px) override {
    view_width_ = std::max(0, width_px);
    view_height_ = std::max(0, height_px);
  }

  bool LoadPhoto(const std::string& path) override {
    return Guarded([&] {
      std::optional<PhotoHeader> header = ReadHeader(path);
      if (!header) {
        return false;
      }
      Photo photo;
      photo.path = path;
      photo.header = *header;
      // The picture is decoded now, at the detail the view's fit will want,
      // so that a broken file is refused by the load itself.
      const double scale =
          view_width_ > 0 ? FitScale(photo, /*rotation=*/0) : 1.0;
      if (!Decode(photo, scale)) {
        return false;
      }
      photo_ = std::move(photo);
      rotation_ = 0;
      scale_ = 1.0;
      return true;
    });
  }

  void Clear() override {
    photo_.reset();
    rotation_ = 0;
    scale_ = 1.0;
  }

  bool HasPhoto() const override { return photo_.has_value(); }

  bool ZoomFitToWidth() override {
    if (!photo_ || view_width_ <= 0) {
      return false;
    }
    return SetScale(FitScale(*photo_, rotation_));
  }

  bool ZoomTo(int percent) override {
    if (!photo_ || percent < kMinPercent || percent > kMaxPercent) {
      return false;
    }
    return SetScale(percent / 100.0);
  }

  int ZoomPercent() const override {
    if (!photo_) {
      return 0;
    }
    // A photo fitted into far fewer pixels still reports a zoom it can be
    // set back to.
    return std::max(kMinPercent, static_cast<int>(std::lround(scale_ * 100)));
  }

  bool RotateView(int degrees) override {
    if (!photo_ || degrees % 90 != 0) {
      return false;
    }
    rotation_ = ((rotation_ + degrees) % 360 + 360) % 360;
    return true;
  }

  int ViewRotation() const override { return rotation_; }

  int PhotoWidth() const override {
    return photo_ ? UprightWidth(*photo_, rotation_) : 0;
  }
  int PhotoHeight() const override {
    return photo_ ? UprightHeight(*photo_, rotation_) : 0;
  }

  int ShownWidth() const override {
    return photo_ ? ShownSide(PhotoWidth(), scale_) : 0;
  }
  int ShownHeight() const override {
    return photo_ ? ShownSide(PhotoHeight(), scale_) : 0;
  }

  bool Render(int x,
              int y,
              int w,
              int h,
              std::vector<std::uint8_t>& rgb) override {
    if (!photo_) {
      return false;
    }
    const int shown_width = ShownWidth();
    const int shown_height = ShownHeight();
    const int left = std::max(x, 0);
    const int top = std::max(y, 0);
    const int right = static_cast<int>(
        std::min<std::int64_t>(std::int64_t{x} + w, shown_width));
    const int bottom = static_cast<int>(
        std::min<std::int64_t>(std::int64_t{y} + h, shown_height));
    if (right <= left || bottom <= top) {
      return false;
    }
    return Guarded([&] {
      if (!Decode(*photo_, scale_)) {
        return false;
      }
      const vips::VImage area =
          Shown(shown_width, shown_height)
              .crop(left, top, right - left, bottom - top);
      std::size_t size = 0;
      void* pixels = area.write_to_memory(&size);
      const auto* bytes = static_cast<const std::uint8_t*>(pixels);
      rgb.assign(bytes, bytes + size);
      g_free(pixels);
      return true;
    });
  }

 private:
  // The photo on show and what has been decoded of it.
  struct Photo {
    std::string path;
    PhotoHeader header;
    // The stored picture in memory at 1/`shrink` of its size (RGB, not
    // turned upright); empty until decoded.
    std::optional<vips::VImage> decoded;
    int shrink = 0;
  };

  // Runs `step`, turning any failure of the library into False.
  template <typename Step>
  static bool Guarded(Step&& step) {
    try {
      return step();
    } catch (const vips::VError&) {
      vips_error_clear();
    } catch (const std::exception&) {
    }
    return false;
  }

  static int UprightWidth(const Photo& photo, int rotation) {
    const bool swap =
        IsQuarterTurn(photo.header.orientation.turn) != IsQuarterTurn(rotation);
    return swap ? photo.header.stored_height : photo.header.stored_width;
  }
  static int UprightHeight(const Photo& photo, int rotation) {
    const bool swap =
        IsQuarterTurn(photo.header.orientation.turn) != IsQuarterTurn(rotation);
    return swap ? photo.header.stored_width : photo.header.stored_height;
  }

  static int ShownSide(int photo_side, double scale) {
    return std::max(1, static_cast<int>(std::lround(photo_side * scale)));
  }

  // The scale that makes the photo, turned by `rotation`, as wide as the
  // view; the scroll bar's width is left free when the photo will scroll.
  double FitScale(const Photo& photo, int rotation) const {
    const double width = UprightWidth(photo, rotation);
    const double height = UprightHeight(photo, rotation);
    int room = view_width_;
    if (view_height_ > 0 && height * view_width_ / width > view_height_ &&
        view_width_ > kDisplayScrollBarPx) {
      room -= kDisplayScrollBarPx;
    }
    return room / width;
  }

  bool SetScale(double scale) {
    const double longest = std::max(PhotoWidth(), PhotoHeight()) * scale;
    if (longest > kMaxShownSide || !Decode(*photo_, scale)) {
      return false;
    }
    scale_ = scale;
    return true;
  }

  // The coarsest decoding that still gives at least one decoded pixel per
  // shown pixel at `scale`.
  static int CoarsestShrink(const Photo& photo, double scale) {
    const int most = photo.header.kind == PhotoKind::kJpeg ? kMaxJpegShrink
                                                           : kMaxOtherShrink;
    const int smallest_side =
        std::min(photo.header.stored_width, photo.header.stored_height);
    int shrink = 1;
    while (shrink * 2 <= most && shrink * 2 <= smallest_side &&
           scale * (shrink * 2) <= 1.0) {
      shrink *= 2;
    }
    return shrink;
  }

  // Makes sure `photo` is decoded finely enough for `scale`, decoding the
  // file again when it is not. A finer decoding already held is kept. On
  // failure the photo keeps what it had.
  static bool Decode(Photo& photo, double scale) {
    const int wanted = CoarsestShrink(photo, scale);
    if (photo.decoded && photo.shrink <= wanted) {
      return true;
    }
    vips::VImage decoded = DecodeStored(photo.path, photo.header, wanted);
    photo.decoded = std::move(decoded);
    photo.shrink = wanted;
    return true;
  }

  // The photo as shown: turned upright, turned by the view's rotation and
  // scaled to exactly `width` x `height`. The editor's corrections belong
  // between the upright picture and the view's rotation.
  vips::VImage Shown(int width, int height) const {
    const Orientation orientation = photo_->header.orientation;
    vips::VImage image = *photo_->decoded;
    if (orientation.turn != 0) {
      image = image.rot(AngleOf(orientation.turn));
    }
    if (orientation.mirror) {
      image = image.flip(VIPS_DIRECTION_HORIZONTAL);
    }
    if (rotation_ != 0) {
      image = image.rot(AngleOf(rotation_));
    }
    if (image.width() != width || image.height() != height) {
      image = image.resize(
          static_cast<double>(width) / image.width(),
          vips::VImage::option()->set(
              "vscale", static_cast<double>(height) / image.height()));
      // Rounding inside the resampler may miss by a pixel.
      if (image.width() != width || image.height() != height) {
        image = image.embed(
            0, 0, width, height,
            vips::VImage::option()->set("extend", VIPS_EXTEND_COPY));
      }
    }
    return image;
  }

  int view_width_ = 0;
  int view_height_ = 0;
  std::optional<Photo> photo_;
  // The net on-screen rotation, clockwise: 0, 90, 180 or 270.
  int rotation_ = 0;
  // Shown pixels per upright photo pixel.
  double scale_ = 1.0;
  guint log_handler_;
};

}  // namespace

std::unique_ptr<DisplayControl> MakeVipsDisplayControl() {
  // Starting libvips again is harmless. Its operation cache stays off, as
  // for the thumbnails: cached loaders would keep photo files open.
  if (VIPS_INIT("qbpd") == 0) {
    vips_cache_set_max(0);
  }
  return std::make_unique<VipsDisplayControl>();
}

}  // namespace qbpd
