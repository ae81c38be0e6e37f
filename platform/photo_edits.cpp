#include "platform/photo_edits.h"

#include "platform/red_eye.h"

#include <chrono>
#include <utility>

namespace qbpd {
namespace {

// The automatic colour is measured on a sample of about this many pixels.
constexpr std::size_t kColourSamplePixels = 1'000'000;

}  // namespace

void PhotoEdits::Reset() {
  crop_.Reset();
  StopRedEye();
  StopColour();
}

void PhotoEdits::StartRedEye(std::function<WorkPicture()> decode) {
  StopRedEye();
  red_eye_active_ = true;
  pending_work_ = std::async(std::launch::async, std::move(decode));
}

const WorkPicture* PhotoEdits::Work() {
  if (pending_work_.valid()) {
    try {
      work_ = pending_work_.get();
    } catch (...) {
      work_.reset();
    }
  }
  return work_ && !work_->rgb.empty() ? &*work_ : nullptr;
}

const WorkPicture* PhotoEdits::ReadyWork() {
  if (pending_work_.valid() && pending_work_.wait_for(std::chrono::seconds(
                                   0)) != std::future_status::ready) {
    return nullptr;
  }
  return Work();
}

int PhotoEdits::RedEyeClick(double x,
                            double y,
                            double reach,
                            CropRect* changed_box) {
  if (!red_eye_active_) {
    return 0;
  }
  const WorkPicture* work = Work();
  if (work == nullptr) {
    return 0;
  }
  const int changed =
      RemoveRedEye({work_->rgb.data(), work_->width, work_->height}, x, y,
                   reach, changed_box);
  if (changed > 0) {
    red_eye_changed_ = true;
    ++version_;
  }
  return changed;
}

vips::VImage PhotoEdits::Wrap(const WorkPicture& work) {
  return vips::VImage::new_from_memory(
             const_cast<std::uint8_t*>(work.rgb.data()), work.rgb.size(),
             work.width, work.height, /*bands=*/3, VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB));
}

void PhotoEdits::StopRedEye() {
  if (pending_work_.valid()) {
    pending_work_.wait();
    pending_work_ = {};
  }
  if (red_eye_changed_) {
    ++version_;
  }
  work_.reset();
  red_eye_active_ = false;
  red_eye_changed_ = false;
}

void PhotoEdits::ComputeColour(const vips::VImage& decoded) {
  const vips::VImage memory = decoded.copy_memory();
  const std::size_t pixels =
      static_cast<std::size_t>(memory.width()) * memory.height();
  colour_ = ComputeColourLevels(static_cast<const std::uint8_t*>(memory.data()),
                                pixels, pixels / kColourSamplePixels + 1);
}

void PhotoEdits::ShowColour(bool shown) {
  colour_shown_ = shown;
}

void PhotoEdits::StopColour() {
  colour_.reset();
  colour_shown_ = false;
}

vips::VImage PhotoEdits::ApplyColour(const vips::VImage& picture) const {
  if (!colour_) {
    return picture;
  }
  std::vector<std::uint8_t> lut(256 * 3);
  for (int v = 0; v < 256; ++v) {
    for (int c = 0; c < 3; ++c) {
      lut[static_cast<std::size_t>(v) * 3 + c] = colour_->table[c][v];
    }
  }
  const vips::VImage table =
      vips::VImage::new_from_memory(lut.data(), lut.size(), 256, 1,
                                    /*bands=*/3, VIPS_FORMAT_UCHAR)
          .copy_memory();
  return picture.maplut(table);
}

}  // namespace qbpd
