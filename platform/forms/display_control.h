#ifndef QBPD_PLATFORM_FORMS_DISPLAY_CONTROL_H_
#define QBPD_PLATFORM_FORMS_DISPLAY_CONTROL_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qbpd {

// The width in pixels that a fit to width leaves for a vertical scroll bar.
// When the photo fitted to the whole view width would be taller than the view,
// the fit uses the view width less this much, so the desktop widget's
// vertical scroll bar never hides the right edge and no horizontal scroll bar
// is needed. A photo that fits in height uses the whole width. The widget
// draws its scroll bar this wide.
inline constexpr int kDisplayScrollBarPx = 16;

// The picture behind a photo view: one photo, the zoom it is shown at and its
// on-screen rotation. The form's photo view control owns one and passes its
// own size in; a desktop widget only draws what Render gives and forwards the
// mouse.
//
// The photo is decoded at the resolution the view needs (a large JPEG shown
// fitted is decoded at a reduced scale); the file stays the source of the full
// resolution for the editor's saves. The editor's tools (crop box, red eye,
// auto colour) and its saves work over the same picture; their results are
// computed on the full-resolution photo when written.
//
// Every operation reports failure by its result only: a missing, corrupt,
// truncated or oversized file (above 256 megapixels) or a zoom that cannot be
// shown gives False and leaves the view as it was, never a crash.
class DisplayControl {
 public:
  virtual ~DisplayControl() = default;

  // The size of the visible area in pixels. A fit to width follows it on the
  // next ZoomFitToWidth; nothing is re-decoded here.
  virtual void SetViewSize(int width_px, int height_px) = 0;

  // Loads a JPEG, BMP, PNG or TIFF file, honouring its EXIF orientation, and
  // drops any rotation and edit on screen. The zoom is 100% until told.
  virtual bool LoadPhoto(const std::string& path) = 0;
  // Drops the photo; the view shows only its background.
  virtual void Clear() = 0;
  // A hint that LoadPhoto may soon be asked for `paths`, the likeliest
  // first: a model may decode them ahead on another core at the view size of
  // now. Every later call answers as it would without the hint; a photo
  // changed since is loaded as it is then. Replaces the previous hint; an
  // empty list drops it. A model without work ahead ignores it.
  virtual void PrepareLoad(const std::vector<std::string>& paths) {
    (void)paths;
  }
  virtual bool HasPhoto() const = 0;

  // Loads the photo at `path` with `rgb` (`width` x `height` 8-bit RGB
  // pixels, upright, the photo's shape) standing in for its picture: every
  // answer is the one LoadPhoto would give, but Render shows the stand-in
  // scaled until something needs the photo's own pixels, which are then
  // decoded. Only for a caller certain that the photo decodes (see
  // ImageOperations::CachedStandIn). False, and the view as it was, when
  // the model has no stand-ins or the stand-in doesn't fit the photo.
  virtual bool LoadPhotoStandIn(const std::string& path,
                                int width,
                                int height,
                                const std::vector<std::uint8_t>& rgb) {
    (void)path;
    (void)width;
    (void)height;
    (void)rgb;
    return false;
  }
  // True while Render shows a stand-in that the photo's own picture will
  // replace by itself soon: a desktop widget paints again shortly.
  virtual bool Refining() const { return false; }

  // Scales the photo to the view's width, at any height.
  virtual bool ZoomFitToWidth() = 0;
  // Scales the photo to `percent` (1 to 1600).
  virtual bool ZoomTo(int percent) = 0;
  // The current scale in whole percent, also after a fit.
  virtual int ZoomPercent() const = 0;

  // Turns the shown photo by 90 or -90 degrees, or any multiple of 90 (the
  // negated net angle undoes a series). The file is not touched.
  virtual bool RotateView(int degrees) = 0;
  // The net on-screen rotation, 0, 90, 180 or 270.
  virtual int ViewRotation() const = 0;

  // The size of the loaded photo in pixels, as it stands upright on screen
  // (EXIF orientation and on-screen rotation applied); 0 without a photo.
  virtual int PhotoWidth() const = 0;
  virtual int PhotoHeight() const = 0;

  // The size in pixels of the photo as shown at the current zoom.
  virtual int ShownWidth() const = 0;
  virtual int ShownHeight() const = 0;
  // Renders the rectangle (x, y, w, h) of the shown picture, in shown pixels,
  // as 8-bit RGB rows into `rgb` (w * h * 3 bytes). The rectangle is clipped
  // to the shown picture; False when nothing is left of it.
  virtual bool Render(int x,
                      int y,
                      int w,
                      int h,
                      std::vector<std::uint8_t>& rgb) = 0;

  // --- the editor's tools on the photo ------------------------------------
  // The mouse over the photo, in photo pixels of the upright photo (fractions
  // kept), for the tools the editor puts on it (the crop box, the red-eye
  // tool). A host offers a press to the tools first: one that takes it (true)
  // receives the moves and the release of that drag, and the view then
  // raises no Click. With no button held, moves are offered too. `button` is
  // 1 left, 2 right, 4 middle; `buttons` the buttons held. Without a tool
  // nothing is taken.
  virtual bool ToolMouseDown(double x, double y, int button) {
    (void)x;
    (void)y;
    (void)button;
    return false;
  }
  virtual bool ToolMouseMove(double x, double y, int buttons) {
    (void)x;
    (void)y;
    (void)buttons;
    return false;
  }
  virtual void ToolMouseUp(double x, double y, int button) {
    (void)x;
    (void)y;
    (void)button;
  }

  // --- the editor's operations ---------------------------------------------
  // A model without them refuses each one (False, 0) and shows nothing.
  //
  // Events the tools raise on the photo view control that owns the model,
  // by name: "CropTooSmall" when the user drags the crop box below the
  // printable size (the box stays at the smallest allowed), "RedEyeRemoved"
  // when a red-eye click changed pixels. The control sets the sink when it
  // attaches the model; an event is raised from within ToolMouse*.
  using EventSink = std::function<void(const std::string& event)>;
  virtual void SetEventSink(EventSink sink) { (void)sink; }

  // Shows a crop box of aspect `aspect_x` : `aspect_y` (width to height of
  // the upright photo as shown, e.g. 6 : 4 for a landscape 4 x 6 print),
  // the largest such box centred on the photo. False, and no box, when no box
  // of that aspect reaches the printable size on this photo.
  virtual bool SetCropAspect(int aspect_x, int aspect_y) {
    (void)aspect_x;
    (void)aspect_y;
    return false;
  }
  // Removes the crop box or the red-eye tool (and the red-eye changes not
  // yet saved); the photo shows as loaded, with its on-screen rotation.
  virtual void ClearEdit() {}
  // Starts the red-eye tool: a click over an eye removes its red.
  virtual void BeginRedEye(int mode, int option) {
    (void)mode;
    (void)option;
  }
  // Computes the automatic colour correction and shows the corrected photo;
  // False when it can't.
  virtual bool ShowCorrected() { return false; }
  // Shows the uncorrected photo again (the correction stays computed).
  virtual void ShowOriginal() {}
  // Ends the colour correction. With `write` the photo as shown is written
  // to `path` as a JPEG file; without, nothing is written and `path` is not
  // used. Non-zero on success.
  virtual int FinishCorrection(bool write, const std::string& path) {
    (void)write;
    (void)path;
    return 0;
  }
  // Writes the photo as it stands on screen (rotation, red-eye corrections)
  // as a JPEG file at `path`, which may be the loaded photo's own path: the
  // file is replaced atomically or not at all.
  virtual bool SaveShownPhoto(const std::string& path) {
    (void)path;
    return false;
  }
  // Writes the contents of the crop box as a JPEG file at `path`.
  virtual bool SaveCropped(const std::string& path) {
    (void)path;
    return false;
  }

  // What a desktop widget draws over the picture. The active tool:
  enum class Tool { kNone, kCrop, kRedEye, kCorrection };
  virtual Tool ActiveTool() const { return Tool::kNone; }
  // The crop box in pixels of the upright photo; False without one.
  virtual bool CropBox(double& x, double& y, double& w, double& h) const {
    (void)x;
    (void)y;
    (void)w;
    (void)h;
    return false;
  }
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_DISPLAY_CONTROL_H_
