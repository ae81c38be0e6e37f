#include "tests/support/fake_display_control.h"

#include "platform/image_operations.h"

#include <algorithm>
#include <filesystem>

namespace qbpd::testing {

std::vector<std::string> FakeDisplayState::CallsStartingWith(
    const std::string& prefix) const {
  std::vector<std::string> found;
  for (const std::string& call : calls) {
    if (call.starts_with(prefix)) {
      found.push_back(call);
    }
  }
  return found;
}

FakeDisplayControl::FakeDisplayControl(std::unique_ptr<DisplayControl> view,
                                       std::shared_ptr<FakeDisplayState> state)
    : view_(std::move(view)), state_(std::move(state)) {
  state_->current = this;
}

FakeDisplayControl::~FakeDisplayControl() {
  if (state_->current == this) {
    state_->current = nullptr;
  }
}

void FakeDisplayControl::RaiseEvent(const std::string& event) {
  if (sink_) {
    sink_(event);
  }
}

void FakeDisplayControl::SetViewSize(int width_px, int height_px) {
  view_->SetViewSize(width_px, height_px);
}
bool FakeDisplayControl::LoadPhoto(const std::string& path) {
  state_->calls.push_back("LoadPhoto(" + path + ")");
  tool_ = Tool::kNone;
  corrected_ = false;
  return view_->LoadPhoto(path);
}
void FakeDisplayControl::Clear() {
  view_->Clear();
}
bool FakeDisplayControl::HasPhoto() const {
  return view_->HasPhoto();
}
bool FakeDisplayControl::ZoomFitToWidth() {
  return view_->ZoomFitToWidth();
}
bool FakeDisplayControl::ZoomTo(int percent) {
  return view_->ZoomTo(percent);
}
int FakeDisplayControl::ZoomPercent() const {
  return view_->ZoomPercent();
}
bool FakeDisplayControl::RotateView(int degrees) {
  state_->calls.push_back("RotateView(" + std::to_string(degrees) + ")");
  return view_->RotateView(degrees);
}
int FakeDisplayControl::ViewRotation() const {
  return view_->ViewRotation();
}
int FakeDisplayControl::PhotoWidth() const {
  return view_->PhotoWidth();
}
int FakeDisplayControl::PhotoHeight() const {
  return view_->PhotoHeight();
}
int FakeDisplayControl::ShownWidth() const {
  return view_->ShownWidth();
}
int FakeDisplayControl::ShownHeight() const {
  return view_->ShownHeight();
}
bool FakeDisplayControl::Render(int x,
                                int y,
                                int w,
                                int h,
                                std::vector<std::uint8_t>& rgb) {
  return view_->Render(x, y, w, h, rgb);
}

bool FakeDisplayControl::ToolMouseDown(double x, double y, int button) {
  if (button != 1) {
    return false;
  }
  if (tool_ == Tool::kRedEye) {
    state_->calls.push_back("RedEyeClick");
    if (state_->red_eye_found) {
      RaiseEvent("RedEyeRemoved");
    }
    return true;
  }
  if (tool_ == Tool::kCrop && x >= box_x_ && x <= box_x_ + box_w_ &&
      y >= box_y_ && y <= box_y_ + box_h_) {
    dragging_ = true;
    grab_x_ = x - box_x_;
    grab_y_ = y - box_y_;
    return true;
  }
  return false;
}

bool FakeDisplayControl::ToolMouseMove(double x, double y, int buttons) {
  if (!dragging_ || (buttons & 1) == 0) {
    return false;
  }
  box_x_ = std::clamp(x - grab_x_, 0.0, PhotoWidth() - box_w_);
  box_y_ = std::clamp(y - grab_y_, 0.0, PhotoHeight() - box_h_);
  return true;
}

void FakeDisplayControl::ToolMouseUp(double x, double y, int button) {
  (void)button;
  if (dragging_) {
    ToolMouseMove(x, y, 1);
    dragging_ = false;
  }
}

void FakeDisplayControl::SetEventSink(EventSink sink) {
  sink_ = std::move(sink);
}

bool FakeDisplayControl::SetCropAspect(int aspect_x, int aspect_y) {
  state_->calls.push_back("SetCropAspect(" + std::to_string(aspect_x) + "," +
                          std::to_string(aspect_y) + ")");
  if (state_->fail_set_crop_aspect || aspect_x <= 0 || aspect_y <= 0 ||
      !HasPhoto()) {
    return false;
  }
  const double w = PhotoWidth();
  const double h = PhotoHeight();
  double box_w = w;
  double box_h = w * aspect_y / aspect_x;
  if (box_h > h) {
    box_h = h;
    box_w = h * aspect_x / aspect_y;
  }
  if (std::min(box_w, box_h) < state_->min_crop_short_side) {
    return false;
  }
  tool_ = Tool::kCrop;
  box_w_ = box_w;
  box_h_ = box_h;
  box_x_ = (w - box_w) / 2;
  box_y_ = (h - box_h) / 2;
  return true;
}

void FakeDisplayControl::ClearEdit() {
  state_->calls.push_back("ClearEdit");
  tool_ = Tool::kNone;
  dragging_ = false;
}

void FakeDisplayControl::BeginRedEye(int mode, int option) {
  state_->calls.push_back("BeginRedEye(" + std::to_string(mode) + "," +
                          std::to_string(option) + ")");
  tool_ = Tool::kRedEye;
}

bool FakeDisplayControl::ShowCorrected() {
  state_->calls.push_back("ShowCorrected");
  if (state_->fail_show_corrected) {
    return false;
  }
  tool_ = Tool::kCorrection;
  corrected_ = true;
  return true;
}

void FakeDisplayControl::ShowOriginal() {
  state_->calls.push_back("ShowOriginal");
  corrected_ = false;
}

int FakeDisplayControl::FinishCorrection(bool write, const std::string& path) {
  state_->calls.push_back("FinishCorrection(" + std::to_string(write ? 1 : 0) +
                          "," + path + ")");
  tool_ = Tool::kNone;
  if (!write) {
    return 1;
  }
  if (state_->fail_finish_correction) {
    return 0;
  }
  return WritePhoto(path, PhotoWidth(), PhotoHeight()) ? 1 : 0;
}

bool FakeDisplayControl::SaveShownPhoto(const std::string& path) {
  state_->calls.push_back("SaveShownPhoto(" + path + ")");
  if (state_->fail_save_shown) {
    return false;
  }
  return WritePhoto(path, PhotoWidth(), PhotoHeight());
}

bool FakeDisplayControl::SaveCropped(const std::string& path) {
  state_->calls.push_back("SaveCropped(" + path + ")");
  if (state_->fail_save_cropped || tool_ != Tool::kCrop) {
    return false;
  }
  return WritePhoto(path, static_cast<int>(box_w_), static_cast<int>(box_h_));
}

bool FakeDisplayControl::CropBox(double& x,
                                 double& y,
                                 double& w,
                                 double& h) const {
  if (tool_ != Tool::kCrop) {
    return false;
  }
  x = box_x_;
  y = box_y_;
  w = box_w_;
  h = box_h_;
  return true;
}

bool FakeDisplayControl::WritePhoto(const std::string& path,
                                    int width,
                                    int height) {
  if (width <= 0 || height <= 0) {
    return false;
  }
  // Written beside the target and renamed over it, as the real model does:
  // a failure leaves the target as it was.
  const std::filesystem::path target(path);
  const std::filesystem::path temporary =
      target.parent_path() / ("." + target.filename().string() + ".fake.jpg");
  if (!WriteTestPhoto(temporary.string(), width, height, /*seed=*/7)) {
    return false;
  }
  std::error_code error;
  std::filesystem::rename(temporary, target, error);
  if (error) {
    std::filesystem::remove(temporary, error);
    return false;
  }
  return true;
}

}  // namespace qbpd::testing
