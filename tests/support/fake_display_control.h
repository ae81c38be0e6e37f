#ifndef QBPD_TESTS_SUPPORT_FAKE_DISPLAY_CONTROL_H_
#define QBPD_TESTS_SUPPORT_FAKE_DISPLAY_CONTROL_H_

#include "platform/forms/display_control.h"

#include <memory>
#include <string>
#include <vector>

namespace qbpd::testing {

class FakeDisplayControl;

// What a test sees of and tells the fake photo view model: every editor
// call in order, switches that make each operation fail, and the events to
// raise. The program makes the model; the test keeps this.
struct FakeDisplayState {
  std::vector<std::string> calls;
  bool fail_set_crop_aspect = false;
  // A box whose shorter side would be below this many photo pixels is
  // refused, as a box too small to print.
  int min_crop_short_side = 0;
  bool fail_show_corrected = false;
  bool fail_finish_correction = false;
  bool fail_save_shown = false;
  bool fail_save_cropped = false;
  // Whether a red-eye click finds red to remove (and raises RedEyeRemoved).
  bool red_eye_found = true;
  // The model the program made last; null before.
  FakeDisplayControl* current = nullptr;

  // The calls whose text starts with `prefix`.
  std::vector<std::string> CallsStartingWith(const std::string& prefix) const;
};

// The photo view model for tests: the view itself (loading, zoom, rotation
// on screen, rendering) is the real model's, the editor's operations are
// imitated. Saves write a JPEG test photo of the size that would be written
// (the photo as shown, or the crop box), to a temporary file renamed over
// the target; a failing switch writes nothing. The crop box is the largest
// box of the aspect, centred, and a press inside it drags it along; a
// red-eye press raises RedEyeRemoved when the state says red was found.
class FakeDisplayControl : public DisplayControl {
 public:
  FakeDisplayControl(std::unique_ptr<DisplayControl> view,
                     std::shared_ptr<FakeDisplayState> state);
  ~FakeDisplayControl() override;

  // Raises an event on the photo view control, as the tools do.
  void RaiseEvent(const std::string& event);

  void SetViewSize(int width_px, int height_px) override;
  bool LoadPhoto(const std::string& path) override;
  void Clear() override;
  bool HasPhoto() const override;
  bool ZoomFitToWidth() override;
  bool ZoomTo(int percent) override;
  int ZoomPercent() const override;
  bool RotateView(int degrees) override;
  int ViewRotation() const override;
  int PhotoWidth() const override;
  int PhotoHeight() const override;
  int ShownWidth() const override;
  int ShownHeight() const override;
  bool Render(int x,
              int y,
              int w,
              int h,
              std::vector<std::uint8_t>& rgb) override;

  bool ToolMouseDown(double x, double y, int button) override;
  bool ToolMouseMove(double x, double y, int buttons) override;
  void ToolMouseUp(double x, double y, int button) override;
  void SetEventSink(EventSink sink) override;
  bool SetCropAspect(int aspect_x, int aspect_y) override;
  void ClearEdit() override;
  void BeginRedEye(int mode, int option) override;
  bool ShowCorrected() override;
  void ShowOriginal() override;
  int FinishCorrection(bool write, const std::string& path) override;
  bool SaveShownPhoto(const std::string& path) override;
  bool SaveCropped(const std::string& path) override;
  Tool ActiveTool() const override { return tool_; }
  bool CropBox(double& x, double& y, double& w, double& h) const override;

 private:
  bool WritePhoto(const std::string& path, int width, int height);

  std::unique_ptr<DisplayControl> view_;
  std::shared_ptr<FakeDisplayState> state_;
  EventSink sink_;
  Tool tool_ = Tool::kNone;
  bool corrected_ = false;
  double box_x_ = 0, box_y_ = 0, box_w_ = 0, box_h_ = 0;
  bool dragging_ = false;
  double grab_x_ = 0, grab_y_ = 0;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAKE_DISPLAY_CONTROL_H_
