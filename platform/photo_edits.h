#ifndef QBPD_PLATFORM_PHOTO_EDITS_H_
#define QBPD_PLATFORM_PHOTO_EDITS_H_

// For the platform's libvips implementations only: the editor's changes to
// the photo on view, kept apart from how the view shows it.
#include "platform/auto_colour.h"
#include "platform/crop_box.h"

#include <vips/vips8>

#include <cstdint>
#include <functional>
#include <future>
#include <optional>
#include <vector>

namespace qbpd {

// The full-resolution picture that the red-eye tool changes, upright and
// turned by `rotation` (the view's turn when it was made).
struct WorkPicture {
  std::vector<std::uint8_t> rgb;
  int width = 0;
  int height = 0;
  int rotation = 0;
};

class PhotoEdits {
 public:
  // Drops every edit; a decoding under way is waited for and thrown away.
  void Reset();
  // Bumped by every change of the photo's pixels (the red-eye picture and
  // its clicks); the colour correction is laid over what is shown, and the
  // crop box drawn over it.
  int Version() const { return version_; }

  CropBoxTool& Crop() { return crop_; }
  const CropBoxTool& Crop() const { return crop_; }

  // Starts the red-eye tool: `decode` makes the full-resolution picture on
  // another thread, so that the panel opens at once; the first click waits
  // for it.
  void StartRedEye(std::function<WorkPicture()> decode);
  bool RedEyeActive() const { return red_eye_active_; }
  // A click at (x, y) in pixels of the work picture; the number of pixels
  // changed (0 without a picture). `changed` gets the rectangle around them.
  int RedEyeClick(double x, double y, double reach, CropRect* changed);
  // True once a click changed pixels.
  bool RedEyeChanged() const { return red_eye_changed_; }
  // The work picture, waited for; nothing when there is none or its
  // decoding failed. The libvips image wraps the pixels without a copy.
  const WorkPicture* Work();
  // The work picture if it is there already, without waiting.
  const WorkPicture* ReadyWork();
  static vips::VImage Wrap(const WorkPicture& work);
  void StopRedEye();

  // The automatic colour correction, computed from a decoding of the photo
  // in memory (three bands), sampled.
  void ComputeColour(const vips::VImage& decoded);
  const ColourLevels* Levels() const { return colour_ ? &*colour_ : nullptr; }
  bool HasColour() const { return colour_.has_value(); }
  void ShowColour(bool shown);
  bool ColourShown() const { return colour_shown_ && colour_.has_value(); }
  void StopColour();
  // `picture` with the correction's tables applied.
  vips::VImage ApplyColour(const vips::VImage& picture) const;

 private:
  int version_ = 0;
  CropBoxTool crop_;
  bool red_eye_active_ = false;
  bool red_eye_changed_ = false;
  std::future<WorkPicture> pending_work_;
  std::optional<WorkPicture> work_;
  std::optional<ColourLevels> colour_;
  bool colour_shown_ = false;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_PHOTO_EDITS_H_
