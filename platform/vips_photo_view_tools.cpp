#include "platform/photo_writer.h"
#include "platform/vips_photo_view.h"

#include <vips/vips8>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace qbpd {
namespace {

// How near to the crop box's edge a press takes the edge, and how far from
// a red-eye click its pupil is looked for, in shown pixels.
constexpr double kGripShownPx = 8;
constexpr double kRedEyeReachShownPx = 8;
constexpr int kLeftButton = 1;

}  // namespace

bool VipsDisplayControl::SetCropAspect(int aspect_x, int aspect_y) {
  if (!photo_) {
    return false;
  }
  return edits_.Crop().Start(PhotoWidth(), PhotoHeight(), aspect_x, aspect_y);
}

void VipsDisplayControl::BeginRedEye(int mode, int option) {
  (void)mode;
  (void)option;
  // The tool works over the photo's own pixels, not a stand-in's.
  if (!photo_ || !Settle()) {
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
    work.rgb.assign(pixels, pixels + std::size_t{3} * work.width * work.height);
    return work;
  });
}

bool VipsDisplayControl::ShowCorrected() {
  if (!photo_ || !Settle()) {
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

int VipsDisplayControl::FinishCorrection(bool write, const std::string& path) {
  bool written = false;
  if (write && photo_ && edits_.HasColour()) {
    written = WriteWaiting([&] {
      const std::optional<PreparedPhoto> prepared =
          PrepareEditedPhoto(edits_.ApplyColour(FullPicture()), photo_->path);
      return prepared && WritePrepared(*prepared, path);
    });
  }
  edits_.StopColour();
  return !write || written ? 1 : 0;
}

bool VipsDisplayControl::SaveShownPhoto(const std::string& path) {
  if (!photo_) {
    return false;
  }
  return WriteWaiting([&] {
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

bool VipsDisplayControl::SaveCropped(const std::string& path) {
  if (!photo_ || !edits_.Crop().Active()) {
    return false;
  }
  return WriteWaiting([&] {
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

bool VipsDisplayControl::WriteWaiting(const std::function<bool()>& write) {
  return Guarded([&] {
    if (edits_.RedEyeActive()) {
      (void)edits_.Work();  // settled here: a paint during the wait reads it
    }
    bool ok = false;
    RunWaiting([&] { ok = write(); });
    return ok;
  });
}

DisplayControl::Tool VipsDisplayControl::ActiveTool() const {
  if (edits_.Crop().Active()) {
    return Tool::kCrop;
  }
  if (edits_.RedEyeActive()) {
    return Tool::kRedEye;
  }
  return edits_.HasColour() ? Tool::kCorrection : Tool::kNone;
}

bool VipsDisplayControl::CropBox(double& x,
                                 double& y,
                                 double& w,
                                 double& h) const {
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

bool VipsDisplayControl::ToolMouseDown(double x, double y, int button) {
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

bool VipsDisplayControl::ToolMouseMove(double x, double y, int buttons) {
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

void VipsDisplayControl::ToolMouseUp(double x, double y, int button) {
  if (button == kLeftButton && edits_.Crop().Dragging()) {
    ToolMouseMove(x, y, kLeftButton);
    edits_.Crop().Release();
  }
}

}  // namespace qbpd
