#include "platform/forms/controls.h"
#include "platform/forms/property_tables.h"

namespace qbpd {

namespace {

// The colour around a photo until the program gives the view another: the
// desktop's grey, each term 206 (the picture model lays transparent photos
// on the same grey).
constexpr int kViewGrey = 206;

}  // namespace

PhotoView::PhotoView(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kPhotoView, std::move(name), index) {
  state_.back_red = kViewGrey;
  state_.back_green = kViewGrey;
  state_.back_blue = kViewGrey;
}

PhotoView::~PhotoView() {
  if (state_.display)
    state_.display->SetEventSink(nullptr);
}

void PhotoView::AttachDisplay(std::shared_ptr<DisplayControl> display) {
  if (state_.display)
    state_.display->SetEventSink(nullptr);
  state_.display = std::move(display);
  state_.photo_path.clear();
  if (state_.display) {
    state_.display->SetEventSink([this](const std::string& event) {
      Changed();
      Raise(event);
    });
  }
  Changed();
}

void PhotoView::PassSize() const {
  if (state_.display) {
    state_.display->SetViewSize(Width() / kTwipsPerPixel,
                                Height() / kTwipsPerPixel);
  }
}

bool PhotoView::LoadPhoto(const std::string& path) {
  if (!state_.display)
    return false;
  PassSize();
  bool ok = state_.display->LoadPhoto(path);
  if (ok)
    state_.photo_path = path;
  Changed();
  return ok;
}

void PhotoView::PrepareLoad(const std::vector<std::string>& paths) {
  if (state_.display) {
    PassSize();
    state_.display->PrepareLoad(paths);
  }
}

void PhotoView::ClearPhoto() {
  if (state_.display)
    state_.display->Clear();
  state_.photo_path.clear();
  Changed();
}

bool PhotoView::ZoomFitToWidth() {
  if (!state_.display)
    return false;
  PassSize();
  bool ok = state_.display->ZoomFitToWidth();
  Changed();
  return ok;
}

bool PhotoView::ZoomTo(int percent) {
  if (!state_.display)
    return false;
  PassSize();
  bool ok = state_.display->ZoomTo(percent);
  Changed();
  return ok;
}

int PhotoView::ZoomPercent() const {
  return state_.display ? state_.display->ZoomPercent() : 0;
}

bool PhotoView::RotateView(int degrees) {
  if (!state_.display)
    return false;
  bool ok = state_.display->RotateView(degrees);
  Changed();
  return ok;
}

int PhotoView::PhotoWidth() const {
  return state_.display ? state_.display->PhotoWidth() : 0;
}

int PhotoView::PhotoHeight() const {
  return state_.display ? state_.display->PhotoHeight() : 0;
}

bool PhotoView::SetCropAspect(int aspect_x, int aspect_y) {
  if (!state_.display)
    return false;
  PassSize();
  bool ok = state_.display->SetCropAspect(aspect_x, aspect_y);
  Changed();
  return ok;
}

void PhotoView::ClearEdit() {
  if (state_.display)
    state_.display->ClearEdit();
  Changed();
}

void PhotoView::BeginRedEye(int mode, int option) {
  if (state_.display)
    state_.display->BeginRedEye(mode, option);
  Changed();
}

bool PhotoView::ShowCorrected() {
  if (!state_.display)
    return false;
  bool ok = state_.display->ShowCorrected();
  Changed();
  return ok;
}

void PhotoView::ShowOriginal() {
  if (state_.display)
    state_.display->ShowOriginal();
  Changed();
}

int PhotoView::FinishCorrection(bool write, const std::string& path) {
  if (!state_.display)
    return 0;
  int result = state_.display->FinishCorrection(write, path);
  Changed();
  return result;
}

bool PhotoView::SaveShownPhoto(const std::string& path) {
  return state_.display && state_.display->SaveShownPhoto(path);
}

bool PhotoView::SaveCropped(const std::string& path) {
  return state_.display && state_.display->SaveCropped(path);
}

void PhotoView::SetBackRed(int v) {
  state_.back_red = v;
  Changed();
}

void PhotoView::SetBackGreen(int v) {
  state_.back_green = v;
  Changed();
}

void PhotoView::SetBackBlue(int v) {
  state_.back_blue = v;
  Changed();
}

void PhotoView::SetScaleBase(int v) {
  state_.scale_base = v;
  Changed();
}

const PropertyTable& PhotoView::Properties() const {
  static const PropertyTable table = WithCommon(
      {RoProperty("PhotoPath", &PhotoView::PhotoPath),
       RoProperty("ZoomPercent", &PhotoView::ZoomPercent),
       RoProperty("PhotoWidth", &PhotoView::PhotoWidth),
       RoProperty("PhotoHeight", &PhotoView::PhotoHeight),
       RwProperty("BackRed", &PhotoView::BackRed, &PhotoView::SetBackRed),
       RwProperty("BackGreen", &PhotoView::BackGreen, &PhotoView::SetBackGreen),
       RwProperty("BackBlue", &PhotoView::BackBlue, &PhotoView::SetBackBlue),
       RwProperty("ScaleBase", &PhotoView::ScaleBase,
                  &PhotoView::SetScaleBase)},
      CommonProperties());
  return table;
}

}  // namespace qbpd
