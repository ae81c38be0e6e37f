#ifndef QBPD_PLATFORM_VIPS_PHOTO_VIEW_H_
#define QBPD_PLATFORM_VIPS_PHOTO_VIEW_H_

// For the platform's implementations only: the photo view's model over
// libvips and libjpeg-turbo (made through MakeVipsDisplayControl). Its view
// (load, zoom, turn, render) is in vips_display_control.cpp, the editor's
// tools in vips_photo_view_tools.cpp.
#include "platform/decode_ahead.h"
#include "platform/photo_decode.h"
#include "platform/photo_edits.h"
#include "platform/vips_quiet.h"

#include <vips/vips8>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace qbpd {

class VipsDisplayControl final : public DisplayControl {
 public:
  // `wait`, when given, is how a zoom's finer decoding and an edit's save
  // are waited for on `waiting_thread` (the window's): the work runs on a
  // thread of its own meanwhile. Elsewhere, and without it, it runs on the
  // caller.
  explicit VipsDisplayControl(DecodeWait wait = {},
                              std::thread::id waiting_thread = {});

  ~VipsDisplayControl() override;

  VipsDisplayControl(const VipsDisplayControl&) = delete;
  VipsDisplayControl& operator=(const VipsDisplayControl&) = delete;

  void SetViewSize(int width_px, int height_px) override {
    view_width_ = std::max(0, width_px);
    view_height_ = std::max(0, height_px);
  }

  bool LoadPhoto(const std::string& path) override;

  bool LoadPhotoStandIn(const std::string& path,
                        int width,
                        int height,
                        const std::vector<std::uint8_t>& rgb) override;

  void Clear() override;

  bool HasPhoto() const override { return photo_.has_value(); }

  bool ZoomFitToWidth() override;

  bool ZoomTo(int percent) override;

  int ZoomPercent() const override;

  bool RotateView(int degrees) override;

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
              std::vector<std::uint8_t>& rgb) override;

  // --- the editor's tools --------------------------------------------------
  void SetEventSink(EventSink sink) override { sink_ = std::move(sink); }

  bool SetCropAspect(int aspect_x, int aspect_y) override;

  void ClearEdit() override {
    edits_.Crop().Reset();
    edits_.StopRedEye();
  }

  void BeginRedEye(int mode, int option) override;

  bool ShowCorrected() override;

  void ShowOriginal() override { edits_.ShowColour(false); }

  int FinishCorrection(bool write, const std::string& path) override;

  bool SaveShownPhoto(const std::string& path) override;

  bool SaveCropped(const std::string& path) override;

  Tool ActiveTool() const override;

  bool CropBox(double& x, double& y, double& w, double& h) const override;

  bool ToolMouseDown(double x, double y, int button) override;

  bool ToolMouseMove(double x, double y, int buttons) override;

  void ToolMouseUp(double x, double y, int button) override;

 private:
  // The photo on show and what has been decoded of it.
  struct Photo {
    std::string path;
    PhotoHeader header;
    // The stored picture in memory at the detail the zooms so far have
    // needed (RGB, not turned upright); empty until decoded.
    std::optional<vips::VImage> decoded;
    // `decoded` is a stand-in, upright already: it serves fits and paints
    // until anything needs the photo's own pixels.
    bool stand_in = false;
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

  // A photo of the file at `path` as its header tells, nothing decoded;
  // none when the file is refused.
  static std::optional<Photo> PhotoOf(const std::string& path);
  // Puts `photo` on show as a load leaves it: at 100%, unturned, unedited.
  void Show(Photo photo);

  static int UprightWidth(const Photo& photo, int rotation);
  static int UprightHeight(const Photo& photo, int rotation);

  static int ShownSide(int photo_side, double scale) {
    return std::max(1, static_cast<int>(std::lround(photo_side * scale)));
  }

  // The scale that makes the photo, turned by `rotation`, as wide as the
  // view; the scroll bar's width is left free when the photo will scroll.
  double FitScale(const Photo& photo, int rotation) const;

  bool SetScale(double scale, bool may_wait = false);

  // Makes sure `photo` is decoded finely enough for `scale`, decoding the
  // file again when it is not. A finer decoding already held is kept. On
  // failure the photo keeps what it had.
  bool Decode(Photo& photo, double scale, bool may_wait = false);
  // Replaces a stand-in by the photo's own decoding; true when there is
  // none (any more).
  bool Settle();
  // Runs `work` on a thread of its own while this one waits through `wait_`
  // when this is the waiting thread and no such wait is under way, else on
  // this thread; what `work` throws is thrown here. The work may only read
  // the model: a paint during the wait reads it too.
  void RunWaiting(const std::function<void()>& work);
  // Writes an edited photo through `write`, which may only read the model,
  // with RunWaiting; False when anything fails.
  bool WriteWaiting(const std::function<bool()>& write);

  // The whole shown picture in memory, made on first use at this zoom and
  // rotation. Nothing when it would be as large as the decoding or larger:
  // at 100% a render turns the decoding itself, and an enlargement is
  // computed only where it is asked for.
  const vips::VImage* CachedShown(int width, int height);

  // The photo as shown: turned upright, turned by the view's rotation and
  // scaled to exactly `width` x `height`. The editor's corrections belong
  // between the upright picture and the view's rotation.
  vips::VImage Shown(int width, int height, bool with_colour = true);

  // The stand-in, turned as shown, enlarged to `width` x `height` in memory.
  vips::VImage EnlargedStandIn(int width, int height);

  // Brings the cached shown picture up to date after a red-eye click that
  // changed `changed` (pixels of the work picture), by resampling only that
  // area: a click is answered without resampling the whole photo. A cache
  // that was stale before the click is left to be made again.
  bool PatchShown(int version_before, const CropRect& changed);

  // The whole photo at full resolution, upright and turned as on screen,
  // with the red-eye changes: what the saves write.
  vips::VImage FullPicture();

  void Raise(const std::string& event);

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
  DecodeWait wait_;
  std::thread::id waiting_thread_;
  bool waiting_ = false;
  QuietVipsLog quiet_;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_VIPS_PHOTO_VIEW_H_
