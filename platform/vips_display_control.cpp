#include "platform/decode_ahead.h"
#include "platform/display_model.h"
#include "platform/photo_decode.h"
#include "platform/photo_edits.h"
#include "platform/photo_writer.h"
#include "platform/rgb_picture.h"
#include "platform/vips_photo_view.h"

#include <vips/vips8>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace qbpd {
namespace {

constexpr int kMinPercent = 1;
constexpr int kMaxPercent = 1600;
// libvips' own limit on a side; a zoom that would pass it is refused.
constexpr double kMaxShownSide = 10'000'000;
// The most pixels a stand-in is enlarged to in memory at once.
constexpr std::int64_t kMaxEnlargedStandIn = 8'000'000;

}  // namespace

VipsDisplayControl::VipsDisplayControl(DecodeWait wait,
                                       std::thread::id waiting_thread)
    : wait_(std::move(wait)), waiting_thread_(waiting_thread) {}

VipsDisplayControl::~VipsDisplayControl() = default;

std::optional<VipsDisplayControl::Photo> VipsDisplayControl::PhotoOf(
    const std::string& path) {
  std::optional<PhotoHeader> header = ReadHeader(path);
  if (!header) {
    return std::nullopt;
  }
  Photo photo;
  photo.path = path;
  photo.header = *header;
  return photo;
}

void VipsDisplayControl::Show(Photo photo) {
  edits_.Reset();
  photo_ = std::move(photo);
  rotation_ = 0;
  scale_ = 1.0;
}

bool VipsDisplayControl::LoadPhoto(const std::string& path) {
  return Guarded([&] {
    std::optional<Photo> photo = PhotoOf(path);
    // The picture is decoded now, at the detail the view's fit will want,
    // so that a broken file is refused by the load itself.
    if (!photo ||
        !Decode(*photo,
                view_width_ > 0 ? FitScale(*photo, /*rotation=*/0) : 1.0)) {
      return false;
    }
    Show(std::move(*photo));
    return true;
  });
}

bool VipsDisplayControl::LoadPhotoStandIn(
    const std::string& path,
    int width,
    int height,
    const std::vector<std::uint8_t>& rgb) {
  if (width < 1 || height < 1 ||
      rgb.size() != static_cast<std::size_t>(width) * height * 3) {
    return false;
  }
  return Guarded([&] {
    std::optional<Photo> shown = PhotoOf(path);
    if (!shown) {
      return false;
    }
    Photo& photo = *shown;
    // A stand-in of another shape would show the photo distorted: a
    // rounded side may be off by a pixel, no more.
    const double upright_width = UprightWidth(photo, 0);
    const double upright_height = UprightHeight(photo, 0);
    if (std::abs(width * upright_height - height * upright_width) >
        std::max(upright_width, upright_height)) {
      return false;
    }
    photo.decoded = vips::VImage::new_from_memory(
                        const_cast<std::uint8_t*>(rgb.data()), rgb.size(),
                        width, height, /*bands=*/3, VIPS_FORMAT_UCHAR)
                        .copy(vips::VImage::option()->set(
                            "interpretation", VIPS_INTERPRETATION_sRGB))
                        .copy_memory();
    photo.stand_in = true;
    Show(std::move(photo));
    return true;
  });
}

void VipsDisplayControl::Clear() {
  edits_.Reset();
  photo_.reset();
  rotation_ = 0;
  scale_ = 1.0;
}

bool VipsDisplayControl::ZoomFitToWidth() {
  if (!photo_ || view_width_ <= 0) {
    return false;
  }
  return SetScale(FitScale(*photo_, rotation_));
}

bool VipsDisplayControl::ZoomTo(int percent) {
  if (!photo_ || percent < kMinPercent || percent > kMaxPercent) {
    return false;
  }
  // A zoom the user asks for may decode the whole photo again: it does so
  // while the window keeps painting.
  return SetScale(percent / 100.0, /*may_wait=*/true);
}

int VipsDisplayControl::ZoomPercent() const {
  if (!photo_) {
    return 0;
  }
  // A photo fitted into far fewer pixels still reports a zoom it can be
  // set back to.
  return std::max(kMinPercent, static_cast<int>(std::lround(scale_ * 100)));
}

bool VipsDisplayControl::RotateView(int degrees) {
  if (!photo_ || degrees % 90 != 0) {
    return false;
  }
  rotation_ = ((rotation_ + degrees) % 360 + 360) % 360;
  // A box drawn on the photo as it stood is no box on the turned one.
  edits_.Crop().Reset();
  return true;
}

bool VipsDisplayControl::Render(int x,
                                int y,
                                int w,
                                int h,
                                std::vector<std::uint8_t>& rgb) {
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
    // Appended row by row: the buffer is never filled with zeros first.
    rgb.clear();
    rgb.reserve(row_bytes * static_cast<std::size_t>(height));
    for (int row = 0; row < height; ++row) {
      const std::uint8_t* begin = from + static_cast<std::size_t>(row) * stride;
      rgb.insert(rgb.end(), begin, begin + row_bytes);
    }
    // The colour correction is laid over the cached picture as it is
    // copied, so showing and hiding it costs no resampling.
    if (const ColourLevels* levels =
            edits_.ColourShown() ? edits_.Levels() : nullptr) {
      for (std::size_t i = 0; i < rgb.size(); ++i) {
        rgb[i] = levels->table[i % 3][rgb[i]];
      }
    }
    return true;
  });
}

int VipsDisplayControl::UprightWidth(const Photo& photo, int rotation) {
  const bool swap =
      IsQuarterTurn(photo.header.orientation.turn) != IsQuarterTurn(rotation);
  return swap ? photo.header.stored_height : photo.header.stored_width;
}

int VipsDisplayControl::UprightHeight(const Photo& photo, int rotation) {
  const bool swap =
      IsQuarterTurn(photo.header.orientation.turn) != IsQuarterTurn(rotation);
  return swap ? photo.header.stored_width : photo.header.stored_height;
}

double VipsDisplayControl::FitScale(const Photo& photo, int rotation) const {
  const double width = UprightWidth(photo, rotation);
  const double height = UprightHeight(photo, rotation);
  int room = view_width_;
  if (view_height_ > 0 && height * view_width_ / width > view_height_ &&
      view_width_ > kDisplayScrollBarPx) {
    room -= kDisplayScrollBarPx;
  }
  return room / width;
}

bool VipsDisplayControl::SetScale(double scale, bool may_wait) {
  const double longest = std::max(PhotoWidth(), PhotoHeight()) * scale;
  if (longest > kMaxShownSide) {
    return false;
  }
  return Guarded([&] {
    if (!Decode(*photo_, scale, may_wait)) {
      return false;
    }
    scale_ = scale;
    return true;
  });
}

bool VipsDisplayControl::Decode(Photo& photo, double scale, bool may_wait) {
  auto side = [scale](int stored) {
    return std::clamp(static_cast<int>(std::ceil(stored * scale - 1e-9)), 1,
                      stored);
  };
  // A stand-in serves the fits and the paints; what asks to wait for the
  // photo's own pixels gets them.
  if (photo.stand_in && !may_wait) {
    return true;
  }
  const Needed needed{side(photo.header.stored_width),
                      side(photo.header.stored_height)};
  if (photo.decoded && !photo.stand_in &&
      Covers(photo.decoded->width(), photo.decoded->height(), needed)) {
    return true;
  }
  // The photo is left as it is until the new decoding is there: a paint
  // during a wait shows it at the zoom it had.
  vips::VImage decoded;
  auto decode = [&decoded, &photo, needed] {
    decoded = DecodeStored(photo.path, photo.header, needed);
  };
  if (may_wait) {
    RunWaiting(decode);
  } else {
    decode();
  }
  photo.decoded = std::move(decoded);
  photo.stand_in = false;
  photo.shown.reset();
  return true;
}

bool VipsDisplayControl::Settle() {
  return !photo_ || !photo_->stand_in ||
         Guarded([&] { return Decode(*photo_, scale_, /*may_wait=*/true); });
}

void VipsDisplayControl::RunWaiting(const std::function<void()>& work) {
  if (!wait_ || waiting_ || std::this_thread::get_id() != waiting_thread_) {
    work();
    return;
  }
  std::exception_ptr failure;
  waiting_ = true;
  RunApart(
      [&work, &failure] {
        try {
          work();
        } catch (...) {
          failure = std::current_exception();
        }
      },
      wait_);
  waiting_ = false;
  if (failure) {
    std::rethrow_exception(failure);
  }
}

const vips::VImage* VipsDisplayControl::CachedShown(int width, int height) {
  Photo& photo = *photo_;
  if (photo.shown && photo.shown_scale == scale_ &&
      photo.shown_rotation == rotation_ &&
      photo.shown_version == edits_.Version()) {
    return &*photo.shown;
  }
  photo.shown.reset();
  if (photo.stand_in) {
    // Enlarged whole once, cheaply, unless that takes a lot of memory
    // (a zoom of 100%): then each area is resampled as it is drawn.
    if (std::int64_t{width} * height > kMaxEnlargedStandIn) {
      return nullptr;
    }
    photo.shown = EnlargedStandIn(width, height);
  } else if (std::int64_t{width} * height >=
             std::int64_t{photo.decoded->width()} * photo.decoded->height()) {
    return nullptr;
  } else {
    photo.shown = RgbInMemory(Shown(width, height, /*with_colour=*/false));
  }
  photo.shown_scale = scale_;
  photo.shown_rotation = rotation_;
  photo.shown_version = edits_.Version();
  return &*photo.shown;
}

vips::VImage VipsDisplayControl::EnlargedStandIn(int width, int height) {
  vips::VImage small = *photo_->decoded;
  if (rotation_ != 0) {
    small = small.rot(AngleOf(rotation_));
  }
  RgbPicture from;
  from.width = small.width();
  from.height = small.height();
  std::size_t size = 0;
  void* pixels = small.write_to_memory(&size);
  const auto* bytes = static_cast<const std::uint8_t*>(pixels);
  from.pixels.assign(bytes, bytes + size);
  g_free(pixels);
  const RgbPicture enlarged = Enlarge(from, width, height);
  return vips::VImage::new_from_memory(
             const_cast<std::uint8_t*>(enlarged.pixels.data()),
             enlarged.pixels.size(), width, height, /*bands=*/3,
             VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .copy_memory();
}

vips::VImage VipsDisplayControl::Shown(int width,
                                       int height,
                                       bool with_colour) {
  vips::VImage image = *photo_->decoded;
  int turn = rotation_;
  // The red-eye tool's full-resolution picture, already upright, once it
  // is there: until then the view shows the same photo from its decoding.
  if (const WorkPicture* work =
          edits_.RedEyeActive() ? edits_.ReadyWork() : nullptr) {
    image = PhotoEdits::Wrap(*work);
    turn = (rotation_ - work->rotation + 360) % 360;
  } else if (!photo_->stand_in) {
    image = Oriented(image, photo_->header.orientation);
  }
  if (turn != 0) {
    image = image.rot(AngleOf(turn));
  }
  if (image.width() != width || image.height() != height) {
    image = image.resize(
        static_cast<double>(width) / image.width(),
        vips::VImage::option()->set(
            "vscale", static_cast<double>(height) / image.height()));
    // Rounding inside the resampler may miss by a pixel.
    if (image.width() != width || image.height() != height) {
      image =
          image.embed(0, 0, width, height,
                      vips::VImage::option()->set("extend", VIPS_EXTEND_COPY));
    }
  }
  if (with_colour && edits_.ColourShown()) {
    image = edits_.ApplyColour(image);
  }
  return image;
}

bool VipsDisplayControl::PatchShown(int version_before,
                                    const CropRect& changed) {
  Photo& photo = *photo_;
  const WorkPicture* work = edits_.ReadyWork();
  if (!photo.shown || photo.shown_version != version_before ||
      photo.shown_scale != scale_ || photo.shown_rotation != rotation_ ||
      work == nullptr || work->rotation != rotation_) {
    return false;
  }
  const int width = photo.shown->width();
  const int height = photo.shown->height();
  // A margin for the resampler's reach.
  const int left = std::max(0, static_cast<int>(changed.x * scale_) - 3);
  const int top = std::max(0, static_cast<int>(changed.y * scale_) - 3);
  const int right =
      std::min(width, static_cast<int>((changed.x + changed.w) * scale_) + 4);
  const int bottom =
      std::min(height, static_cast<int>((changed.y + changed.h) * scale_) + 4);
  if (right <= left || bottom <= top) {
    return false;
  }
  const vips::VImage area = Shown(width, height, /*with_colour=*/false)
                                .crop(left, top, right - left, bottom - top)
                                .copy_memory();
  const auto* from = static_cast<const std::uint8_t*>(area.data());
  auto* to = static_cast<std::uint8_t*>(const_cast<void*>(photo.shown->data()));
  const std::size_t row_bytes = static_cast<std::size_t>(right - left) * 3;
  for (int row = top; row < bottom; ++row) {
    std::memcpy(to + (static_cast<std::size_t>(row) * width + left) * 3,
                from + static_cast<std::size_t>(row - top) * row_bytes,
                row_bytes);
  }
  photo.shown_version = edits_.Version();
  return true;
}

vips::VImage VipsDisplayControl::FullPicture() {
  if (const WorkPicture* work =
          edits_.RedEyeActive() ? edits_.Work() : nullptr) {
    return PhotoEdits::Wrap(*work).rot(
        AngleOf((rotation_ - work->rotation + 360) % 360));
  }
  return DecodeUpright(photo_->path, photo_->header).rot(AngleOf(rotation_));
}

void VipsDisplayControl::Raise(const std::string& event) {
  if (sink_) {
    sink_(event);
  }
}

std::unique_ptr<DisplayControl> MakeVipsDisplayControl(bool work_ahead,
                                                       DecodeWait wait,
                                                       StandInLookup stand_in) {
  // Starting libvips again is harmless. Its operation cache stays off, as
  // for the thumbnails: cached loaders would keep photo files open.
  if (VIPS_INIT("qbpd") == 0) {
    vips_cache_set_max(0);
  }
  if (!work_ahead) {
    return std::make_unique<VipsDisplayControl>();
  }
  // The models' zooms wait on the thread that makes the view.
  const std::thread::id here = std::this_thread::get_id();
  return MakeDecodeAheadDisplay(
      [wait, here]() -> std::shared_ptr<DisplayControl> {
        return std::make_unique<VipsDisplayControl>(wait, here);
      },
      wait, std::move(stand_in));
}

}  // namespace qbpd
