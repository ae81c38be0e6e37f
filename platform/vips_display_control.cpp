#include "platform/atomic_file.h"
#include "platform/bmp_reader.h"
#include "platform/display_model.h"
#include "platform/photo_kind.h"

#include <turbojpeg.h>
#include <vips/vips8>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
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
// libvips' JPEG loader, which reads the JPEG files that libjpeg-turbo's
// direct path leaves to it, scales by 1/2, 1/4 and 1/8 for nearly nothing;
// the other kinds are box-shrunk while they are read, which may go further.
constexpr int kMaxJpegShrink = 8;
constexpr int kMaxOtherShrink = 64;

// The kind of a photo file; nothing for a file the view doesn't show.
std::optional<PhotoKind> SniffKind(const std::string& path) {
  const PhotoKind kind = SniffPhotoFile(path);
  if (kind == PhotoKind::kOther) {
    return std::nullopt;
  }
  return kind;
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

// Opens the photo at `path` for reading: a plain file only, and never
// waiting on the open (see OpenPhotoFile).
int OpenPhoto(const std::string& path) {
  const int fd = OpenPhotoFile(path);
  if (fd < 0) {
    throw vips::VError("not a photo file");
  }
  return fd;
}

// Opens the file with the loader of its kind only, so no general-purpose
// loader is ever handed a photo. Nothing is decoded yet.
vips::VImage OpenLazily(const std::string& path,
                        PhotoKind kind,
                        vips::VOption* options) {
  const FileDescriptor fd(OpenPhoto(path));
  // The source reads a duplicate of the descriptor.
  const vips::VSource source = vips::VSource::new_from_descriptor(fd.get());
  switch (kind) {
    case PhotoKind::kJpeg:
      return vips::VImage::jpegload_source(source, options);
    case PhotoKind::kPng:
      return vips::VImage::pngload_source(source, options);
    case PhotoKind::kTiff:
      return vips::VImage::tiffload_source(source, options);
    case PhotoKind::kBmp:
    case PhotoKind::kOther:
      break;
  }
  throw vips::VError("not a kind that libvips opens here");
}

std::optional<PhotoHeader> ReadHeader(const std::string& path) {
  const std::optional<PhotoKind> kind = SniffKind(path);
  if (!kind) {
    return std::nullopt;
  }
  PhotoHeader header;
  header.kind = *kind;
  {
    // A JPEG cut short is refused the same way every time, whatever the
    // decoder's threads would make of it; a photo whose decoding would take
    // more than one photo may is refused before it starts.
    const FileDescriptor fd(OpenPhoto(path));
    if ((*kind == PhotoKind::kJpeg && !JpegIsWhole(fd.get())) ||
        !WithinDecodeBudget(fd.get(), *kind)) {
      return std::nullopt;
    }
  }
  if (*kind == PhotoKind::kBmp) {
    const FileDescriptor fd(OpenPhoto(path));
    PhotoStream in(fd.get());
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

// The size a decoding must at least have: one decoded pixel for each shown
// pixel.
struct Needed {
  int width = 0;
  int height = 0;
};

bool Covers(int width, int height, Needed needed) {
  return width >= std::max(needed.width, 1) &&
         height >= std::max(needed.height, 1);
}

// The largest power of two up to `most` that shrinks the stored picture no
// smaller than `needed`, the shrunk sides rounded down.
int BoxShrink(const PhotoHeader& header, Needed needed, int most) {
  int shrink = 1;
  while (shrink * 2 <= most &&
         Covers(header.stored_width / (shrink * 2),
                header.stored_height / (shrink * 2), needed)) {
    shrink *= 2;
  }
  return shrink;
}

// The pixels of a decoding that libvips did not allocate: freed with the
// image that wraps them.
void FreeTracked(VipsImage*, gpointer pixels) {
  vips_tracked_free(pixels);
}

struct TurboDeleter {
  void operator()(void* handle) const { tjDestroy(handle); }
};
using TurboHandle = std::unique_ptr<void, TurboDeleter>;

std::optional<std::vector<unsigned char>> ReadWholeFile(
    const std::string& path) {
  const int fd = OpenPhotoFile(path);
  if (fd < 0) {
    return std::nullopt;
  }
  std::vector<unsigned char> bytes;
  struct stat status {};
  if (::fstat(fd, &status) == 0 && status.st_size > 0) {
    bytes.resize(static_cast<std::size_t>(status.st_size));
    std::size_t got = 0;
    while (got < bytes.size()) {
      const ssize_t n = ::read(fd, bytes.data() + got, bytes.size() - got);
      if (n < 0 && errno == EINTR) {
        continue;
      }
      if (n <= 0) {
        break;
      }
      got += static_cast<std::size_t>(n);
    }
    bytes.resize(got);
  }
  ::close(fd);
  return bytes;
}

// libjpeg-turbo's decoding of an ordinary JPEG, at the smallest of its
// scales (eighths of the size) that covers `needed`: for a fit it decodes
// fewer pixels than libvips' halving scales would. Nothing when the file
// holds anything unusual (CMYK, a warning such as a truncation): libvips
// then decides.
std::optional<vips::VImage> TurboDecode(const std::string& path,
                                        const PhotoHeader& header,
                                        Needed needed) {
  const std::optional<std::vector<unsigned char>> jpeg = ReadWholeFile(path);
  const TurboHandle handle(tjInitDecompress());
  if (!jpeg || !handle) {
    return std::nullopt;
  }
  int width = 0;
  int height = 0;
  int subsampling = 0;
  int colourspace = 0;
  if (tjDecompressHeader3(handle.get(), jpeg->data(), jpeg->size(), &width,
                          &height, &subsampling, &colourspace) != 0 ||
      width != header.stored_width || height != header.stored_height ||
      colourspace == TJCS_CMYK || colourspace == TJCS_YCCK) {
    return std::nullopt;
  }
  int count = 0;
  const tjscalingfactor* factors = tjGetScalingFactors(&count);
  int scaled_width = width;
  int scaled_height = height;
  for (int i = 0; factors != nullptr && i < count; ++i) {
    const tjscalingfactor f = factors[i];
    const int w = TJSCALED(width, f);
    const int h = TJSCALED(height, f);
    if (f.num <= f.denom && Covers(w, h, needed) && w < scaled_width) {
      scaled_width = w;
      scaled_height = h;
    }
  }
  const std::size_t size =
      static_cast<std::size_t>(scaled_width) * scaled_height * 3;
  auto* pixels = static_cast<unsigned char*>(vips_tracked_malloc(size));
  if (pixels == nullptr) {
    return std::nullopt;
  }
  if (tjDecompress2(handle.get(), jpeg->data(), jpeg->size(), pixels,
                    scaled_width, /*pitch=*/0, scaled_height, TJPF_RGB,
                    /*flags=*/0) != 0) {
    vips_tracked_free(pixels);
    return std::nullopt;
  }
  VipsImage* image =
      vips_image_new_from_memory(pixels, size, scaled_width, scaled_height,
                                 /*bands=*/3, VIPS_FORMAT_UCHAR);
  if (image == nullptr) {
    vips_tracked_free(pixels);
    throw vips::VError("cannot wrap the decoded photo");
  }
  g_signal_connect(image, "postclose", G_CALLBACK(FreeTracked), pixels);
  return vips::VImage(image);
}

// The stored picture decoded into memory, covering `needed`, as RGB, not
// yet turned upright.
vips::VImage DecodeStored(const std::string& path,
                          const PhotoHeader& header,
                          Needed needed) {
  switch (header.kind) {
    case PhotoKind::kJpeg: {
      if (std::optional<vips::VImage> fast =
              TurboDecode(path, header, needed)) {
        return *fast;
      }
      // Sides rounded down, as libvips checks them: a side of 4 pixels is
      // not shrunk by 8, which would leave it none at all.
      const int shrink = BoxShrink(header, needed, kMaxJpegShrink);
      return ToDisplayRgb(OpenLazily(path, header.kind,
                                     LoaderOptions()->set("shrink", shrink)))
          .copy_memory();
    }
    case PhotoKind::kPng:
    case PhotoKind::kTiff: {
      const int shrink = BoxShrink(header, needed, kMaxOtherShrink);
      vips::VImage image =
          ToDisplayRgb(OpenLazily(path, header.kind, LoaderOptions()));
      if (shrink > 1) {
        image = image.shrink(shrink, shrink);
      }
      return image.copy_memory();
    }
    case PhotoKind::kOther:
      break;
    case PhotoKind::kBmp: {
      const int shrink = BoxShrink(header, needed, kMaxOtherShrink);
      const FileDescriptor fd(OpenPhoto(path));
      PhotoStream in(fd.get());
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
      const int width = right - left;
      const int height = bottom - top;
      const vips::VImage* shown = CachedShown(shown_width, shown_height);
      if (shown == nullptr) {
        const vips::VImage area =
            Shown(shown_width, shown_height).crop(left, top, width, height);
        std::size_t size = 0;
        void* pixels = area.write_to_memory(&size);
        const auto* bytes = static_cast<const std::uint8_t*>(pixels);
        rgb.assign(bytes, bytes + size);
        g_free(pixels);
        return true;
      }
      const std::size_t row_bytes = static_cast<std::size_t>(width) * 3;
      const std::size_t stride = static_cast<std::size_t>(shown_width) * 3;
      const auto* from = static_cast<const std::uint8_t*>(shown->data()) +
                         static_cast<std::size_t>(top) * stride +
                         static_cast<std::size_t>(left) * 3;
      rgb.resize(row_bytes * static_cast<std::size_t>(height));
      for (int row = 0; row < height; ++row) {
        std::memcpy(rgb.data() + row * row_bytes, from + row * stride,
                    row_bytes);
      }
      return true;
    });
  }

 private:
  // The photo on show and what has been decoded of it.
  struct Photo {
    std::string path;
    PhotoHeader header;
    // The stored picture in memory at the detail the zooms so far have
    // needed (RGB, not turned upright); empty until decoded.
    std::optional<vips::VImage> decoded;
    // The picture as last shown, in memory, while it is smaller than the
    // decoding: a scrolled view copies from it instead of resampling again.
    std::optional<vips::VImage> shown;
    double shown_scale = 0;
    int shown_rotation = 0;
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
    if (longest > kMaxShownSide) {
      return false;
    }
    return Guarded([&] {
      if (!Decode(*photo_, scale)) {
        return false;
      }
      scale_ = scale;
      return true;
    });
  }

  // Makes sure `photo` is decoded finely enough for `scale`, decoding the
  // file again when it is not. A finer decoding already held is kept. On
  // failure the photo keeps what it had.
  static bool Decode(Photo& photo, double scale) {
    auto side = [scale](int stored) {
      return std::clamp(static_cast<int>(std::ceil(stored * scale - 1e-9)), 1,
                        stored);
    };
    const Needed needed{side(photo.header.stored_width),
                        side(photo.header.stored_height)};
    if (photo.decoded &&
        Covers(photo.decoded->width(), photo.decoded->height(), needed)) {
      return true;
    }
    vips::VImage decoded = DecodeStored(photo.path, photo.header, needed);
    photo.decoded = std::move(decoded);
    photo.shown.reset();
    return true;
  }

  // The whole shown picture in memory, made on first use at this zoom and
  // rotation. Nothing when it would be as large as the decoding or larger:
  // at 100% a render turns the decoding itself, and an enlargement is
  // computed only where it is asked for.
  const vips::VImage* CachedShown(int width, int height) {
    Photo& photo = *photo_;
    if (photo.shown && photo.shown_scale == scale_ &&
        photo.shown_rotation == rotation_) {
      return &*photo.shown;
    }
    photo.shown.reset();
    if (std::int64_t{width} * height >=
        std::int64_t{photo.decoded->width()} * photo.decoded->height()) {
      return nullptr;
    }
    photo.shown = Shown(width, height).copy_memory();
    photo.shown_scale = scale_;
    photo.shown_rotation = rotation_;
    return &*photo.shown;
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
