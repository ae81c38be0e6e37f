#include "platform/decode_ahead.h"
#include "platform/display_model.h"
#include "platform/photo_decode.h"
#include "platform/photo_edits.h"
#include "platform/photo_writer.h"

#include <vips/vips8>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qbpd {
namespace {

constexpr int kMinPercent = 1;
constexpr int kMaxPercent = 1600;
// libvips' own limit on a side; a zoom that would pass it is refused.
constexpr double kMaxShownSide = 10'000'000;
// How near to the crop box's edge a press takes the edge, and how far from
// a red-eye click its pupil is looked for, in shown pixels.
constexpr double kGripShownPx = 8;
constexpr double kRedEyeReachShownPx = 8;
constexpr int kLeftButton = 1;

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
      edits_.Reset();
      photo_ = std::move(photo);
      rotation_ = 0;
      scale_ = 1.0;
      return true;
    });
  }

  void Clear() override {
    edits_.Reset();
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
    // A box drawn on the photo as it stood is no box on the turned one.
    edits_.Crop().Reset();
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

  // --- the editor's tools --------------------------------------------------
  void SetEventSink(EventSink sink) override { sink_ = std::move(sink); }

  bool SetCropAspect(int aspect_x, int aspect_y) override {
    if (!photo_) {
      return false;
    }
    return edits_.Crop().Start(PhotoWidth(), PhotoHeight(), aspect_x, aspect_y);
  }

  void ClearEdit() override {
    edits_.Crop().Reset();
    edits_.StopRedEye();
  }

  void BeginRedEye(int mode, int option) override {
    (void)mode;
    (void)option;
    if (!photo_) {
      return;
    }
    edits_.Crop().Reset();
    // The full-resolution picture is made on another thread while the panel
    // opens; a decoding at full size already held is used as it is.
    const Photo& photo = *photo_;
    const bool full = photo.decoded->width() == photo.header.stored_width &&
                      photo.decoded->height() == photo.header.stored_height;
    std::optional<vips::VImage> decoded;
    if (full) {
      decoded = photo.decoded;
    }
    edits_.StartRedEye([path = photo.path, header = photo.header, decoded,
                        rotation = rotation_] {
      vips::VImage picture = decoded ? Oriented(*decoded, header.orientation)
                                     : DecodeUpright(path, header);
      picture = ToDisplayRgb(picture.rot(AngleOf(rotation))).copy_memory();
      WorkPicture work;
      work.width = picture.width();
      work.height = picture.height();
      work.rotation = rotation;
      const auto* pixels = static_cast<const std::uint8_t*>(picture.data());
      work.rgb.assign(pixels,
                      pixels + std::size_t{3} * work.width * work.height);
      return work;
    });
  }

  bool ShowCorrected() override {
    if (!photo_) {
      return false;
    }
    return Guarded([&] {
      if (!edits_.HasColour()) {
        // The decoding held for the view is the reduced copy measured.
        edits_.ComputeColour(ToDisplayRgb(*photo_->decoded));
      }
      edits_.ShowColour(true);
      return true;
    });
  }

  void ShowOriginal() override { edits_.ShowColour(false); }

  int FinishCorrection(bool write, const std::string& path) override {
    bool written = false;
    if (write && photo_ && edits_.HasColour()) {
      written = Guarded([&] {
        const std::optional<PreparedPhoto> prepared =
            PrepareEditedPhoto(edits_.ApplyColour(FullPicture()), photo_->path);
        return prepared && WritePrepared(*prepared, path);
      });
    }
    edits_.StopColour();
    return !write || written ? 1 : 0;
  }

  bool SaveShownPhoto(const std::string& path) override {
    if (!photo_) {
      return false;
    }
    return Guarded([&] {
      std::optional<PreparedPhoto> prepared;
      if (edits_.RedEyeChanged() || edits_.ColourShown()) {
        vips::VImage picture = FullPicture();
        if (edits_.ColourShown()) {
          picture = edits_.ApplyColour(picture);
        }
        prepared = PrepareEditedPhoto(picture, photo_->path);
      } else {
        // Only turned: a JPEG is turned without decoding where it can be.
        prepared = PrepareTurnedPhoto(photo_->path, rotation_);
      }
      return prepared && WritePrepared(*prepared, path);
    });
  }

  bool SaveCropped(const std::string& path) override {
    if (!photo_ || !edits_.Crop().Active()) {
      return false;
    }
    return Guarded([&] {
      const vips::VImage picture = FullPicture();
      const CropRect& box = edits_.Crop().Box();
      const int left = std::clamp(static_cast<int>(std::lround(box.x)), 0,
                                  picture.width() - 1);
      const int top = std::clamp(static_cast<int>(std::lround(box.y)), 0,
                                 picture.height() - 1);
      const int width = std::clamp(static_cast<int>(std::lround(box.w)), 1,
                                   picture.width() - left);
      const int height = std::clamp(static_cast<int>(std::lround(box.h)), 1,
                                    picture.height() - top);
      const std::optional<PreparedPhoto> prepared = PrepareEditedPhoto(
          picture.crop(left, top, width, height), photo_->path);
      return prepared && WritePrepared(*prepared, path);
    });
  }

  Tool ActiveTool() const override {
    if (edits_.Crop().Active()) {
      return Tool::kCrop;
    }
    if (edits_.RedEyeActive()) {
      return Tool::kRedEye;
    }
    return edits_.HasColour() ? Tool::kCorrection : Tool::kNone;
  }

  bool CropBox(double& x, double& y, double& w, double& h) const override {
    if (!edits_.Crop().Active()) {
      return false;
    }
    const CropRect& box = edits_.Crop().Box();
    x = box.x;
    y = box.y;
    w = box.w;
    h = box.h;
    return true;
  }

  bool ToolMouseDown(double x, double y, int button) override {
    if (!photo_ || button != kLeftButton) {
      return false;
    }
    if (edits_.Crop().Active()) {
      crop_too_small_raised_ = false;
      return edits_.Crop().Press(x, y, kGripShownPx / scale_);
    }
    if (edits_.RedEyeActive()) {
      const double reach = std::max(2.0, kRedEyeReachShownPx / scale_);
      const int version = edits_.Version();
      CropRect changed;
      if (edits_.RedEyeClick(x, y, reach, &changed) > 0) {
        Guarded([&] { return PatchShown(version, changed); });
        Raise("RedEyeRemoved");
      }
      return true;
    }
    return false;
  }

  bool ToolMouseMove(double x, double y, int buttons) override {
    if (!edits_.Crop().Dragging() || (buttons & kLeftButton) == 0) {
      return false;
    }
    const bool too_small = edits_.Crop().Drag(x, y);
    if (too_small && !crop_too_small_raised_) {
      crop_too_small_raised_ = true;
      Raise("CropTooSmall");
    }
    return true;
  }

  void ToolMouseUp(double x, double y, int button) override {
    if (button == kLeftButton && edits_.Crop().Dragging()) {
      ToolMouseMove(x, y, kLeftButton);
      edits_.Crop().Release();
    }
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
    int shown_version = 0;
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
  bool Decode(Photo& photo, double scale) {
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
        photo.shown_rotation == rotation_ &&
        photo.shown_version == edits_.Version()) {
      return &*photo.shown;
    }
    photo.shown.reset();
    if (std::int64_t{width} * height >=
        std::int64_t{photo.decoded->width()} * photo.decoded->height()) {
      return nullptr;
    }
    photo.shown = Shown(width, height, /*with_colour=*/false).copy_memory();
    photo.shown_scale = scale_;
    photo.shown_rotation = rotation_;
    photo.shown_version = edits_.Version();
    return &*photo.shown;
  }

  // The photo as shown: turned upright, turned by the view's rotation and
  // scaled to exactly `width` x `height`. The editor's corrections belong
  // between the upright picture and the view's rotation.
  vips::VImage Shown(int width, int height, bool with_colour = true) {
    vips::VImage image = *photo_->decoded;
    int turn = rotation_;
    // The red-eye tool's full-resolution picture, already upright, once it
    // is there: until then the view shows the same photo from its decoding.
    if (const WorkPicture* work =
            edits_.RedEyeActive() ? edits_.ReadyWork() : nullptr) {
      image = PhotoEdits::Wrap(*work);
      turn = (rotation_ - work->rotation + 360) % 360;
    } else {
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
        image = image.embed(
            0, 0, width, height,
            vips::VImage::option()->set("extend", VIPS_EXTEND_COPY));
      }
    }
    if (with_colour && edits_.ColourShown()) {
      image = edits_.ApplyColour(image);
    }
    return image;
  }

  // Brings the cached shown picture up to date after a red-eye click that
  // changed `changed` (pixels of the work picture), by resampling only that
  // area: a click is answered without resampling the whole photo. A cache
  // that was stale before the click is left to be made again.
  bool PatchShown(int version_before, const CropRect& changed) {
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
    const int bottom = std::min(
        height, static_cast<int>((changed.y + changed.h) * scale_) + 4);
    if (right <= left || bottom <= top) {
      return false;
    }
    const vips::VImage area = Shown(width, height, /*with_colour=*/false)
                                  .crop(left, top, right - left, bottom - top)
                                  .copy_memory();
    const auto* from = static_cast<const std::uint8_t*>(area.data());
    auto* to =
        static_cast<std::uint8_t*>(const_cast<void*>(photo.shown->data()));
    const std::size_t row_bytes = static_cast<std::size_t>(right - left) * 3;
    for (int row = top; row < bottom; ++row) {
      std::memcpy(to + (static_cast<std::size_t>(row) * width + left) * 3,
                  from + static_cast<std::size_t>(row - top) * row_bytes,
                  row_bytes);
    }
    photo.shown_version = edits_.Version();
    return true;
  }

  // The whole photo at full resolution, upright and turned as on screen,
  // with the red-eye changes: what the saves write.
  vips::VImage FullPicture() {
    if (const WorkPicture* work =
            edits_.RedEyeActive() ? edits_.Work() : nullptr) {
      return PhotoEdits::Wrap(*work).rot(
          AngleOf((rotation_ - work->rotation + 360) % 360));
    }
    return DecodeUpright(photo_->path, photo_->header).rot(AngleOf(rotation_));
  }

  void Raise(const std::string& event) {
    if (sink_) {
      sink_(event);
    }
  }

  int view_width_ = 0;
  int view_height_ = 0;
  std::optional<Photo> photo_;
  PhotoEdits edits_;
  EventSink sink_;
  // The too-small event is raised once in a drag.
  bool crop_too_small_raised_ = false;
  // The net on-screen rotation, clockwise: 0, 90, 180 or 270.
  int rotation_ = 0;
  // Shown pixels per upright photo pixel.
  double scale_ = 1.0;
  guint log_handler_;
};

}  // namespace

std::unique_ptr<DisplayControl> MakeVipsDisplayControl(bool work_ahead,
                                                       DecodeWait wait) {
  // Starting libvips again is harmless. Its operation cache stays off, as
  // for the thumbnails: cached loaders would keep photo files open.
  if (VIPS_INIT("qbpd") == 0) {
    vips_cache_set_max(0);
  }
  if (!work_ahead) {
    return std::make_unique<VipsDisplayControl>();
  }
  return MakeDecodeAheadDisplay(
      []() -> std::shared_ptr<DisplayControl> {
        return std::make_unique<VipsDisplayControl>();
      },
      std::move(wait));
}

}  // namespace qbpd
