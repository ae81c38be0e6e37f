#include "editor/frm_rotate.h"

#include "core/button_pictures.h"
#include "core/quil_mod.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 6000;
constexpr int kFormHeight = 2700;
constexpr int kBarLeft = 300;
constexpr int kBarTop = 1300;
constexpr int kBarWidth = 5400;
constexpr int kBarHeight = 300;
constexpr int kButtonWidth = 1200;
constexpr int kButtonHeight = 390;
constexpr std::string_view kCancelButton = "25";
constexpr long kBarColour = 0xB57A2E;  // the program's blue, as BGR
constexpr int kCloseDelayMs = 1000;
constexpr int kCheckMs = 100;
constexpr int kStartMs = 50;
constexpr size_t kLongestName = 40;

}  // namespace

frmRotate::frmRotate(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblHead.Move(kBarLeft, 150, kBarWidth, 400);
  lblHead.SetCaption("rotating photos");
  lblHead.SetFontSize(14);
  lblHead.SetFontBold(true);
  lblRotating.Move(kBarLeft, 650, 1800, 300);
  lblRotating.SetCaption("Rotating Photo");
  lblRotatingPhotoNo.Move(kBarLeft + 1800, 650, 1800, 300);
  lblRotateImageName.Move(kBarLeft, 950, kBarWidth, 300);
  shProgressBar.Move(kBarLeft, kBarTop, kBarWidth, kBarHeight);
  ImgProgressBar.Move(kBarLeft, kBarTop, 0, kBarHeight);
  ImgProgressBar.SetFilled(true);
  ImgProgressBar.SetFillColor(kBarColour);
  ImgProgressBar.SetBorderColor(kBarColour);
  lblPercent.Move(kBarLeft + kBarWidth - 800, kBarTop + kBarHeight + 60, 800,
                  300);
  lblPercent.SetAlignment(1);
  imgCancel.Move((kFormWidth - kButtonWidth) / 2, kFormHeight - 900,
                 kButtonWidth, kButtonHeight);
  tmrCheck.SetInterval(kCheckMs);
  tmrStart.SetInterval(kStartMs);
  On("imgCancel", "Click", &frmRotate::imgCancel_Click);
  On("tmrCheck", "Timer", &frmRotate::tmrCheck_Timer);
  On("tmrStart", "Timer", &frmRotate::tmrStart_Timer);
  Field("mbCancel", mbCancel);
  Field("miTotal", miTotal);
  Field("mbBusy", mbBusy);
  Field("mbStopped", mbStopped);
}

void frmRotate::Form_Load() {
  const Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  ShowButtonState(s, imgCancel, kCancelButton, kPictureNormal);
  ImgProgressBar.SetWidth(0);
  mbCancel = false;
  mbStopped = false;
  mbBusy = true;
  miTotal = s.gdicSelectedPhotos.Count();
  tmrCheck.SetEnabled(false);
  lblRotatingPhotoNo.SetCaption("0 of " + std::to_string(miTotal));
}

void frmRotate::Form_Activate() {
  // The run starts once the dialog is drawn, so that its progress shows.
  tmrStart.SetEnabled(true);
}

void frmRotate::tmrStart_Timer() {
  tmrStart.SetEnabled(false);
  MultiImageRotation(app_.session().giCurrentOperation);
}

void frmRotate::MultiImageRotation(int direction) {
  Session& s = app_.session();
  s.gbRotationBusy = true;
  int count = 0;
  // The selection as it stood when the run began.
  const std::vector<int> keys = s.gdicSelectedPhotos.Keys();
  // The library may work on the next photo while this one is written.
  auto prepare = [&](std::size_t at) {
    if (at < keys.size() && s.gdicSelectedPhotos.Exists(keys[at])) {
      PrepareFileRotation(app_, s.gdicSelectedPhotos.Item(keys[at]), direction);
    }
  };
  prepare(0);
  for (std::size_t at = 0; at < keys.size(); ++at) {
    const int key = keys[at];
    if (mbCancel) {
      mbStopped = true;
      break;
    }
    ++count;
    lblRotatingPhotoNo.SetCaption(std::to_string(count) + " of " +
                                  std::to_string(miTotal));
    host().DoEvents();
    if (mbCancel) {
      // Cancel was pressed while the events ran: this photo stays as it is,
      // and the count says so.
      lblRotatingPhotoNo.SetCaption(std::to_string(count - 1) + " of " +
                                    std::to_string(miTotal));
      mbStopped = true;
      break;
    }
    if (!s.gdicSelectedPhotos.Exists(key)) {
      continue;
    }
    const std::string path = s.gdicSelectedPhotos.Item(key);
    const std::string name = FileNamePart(path);
    lblRotateImageName.SetCaption(
        CharacterCount(name) > kLongestName
            ? DoubleAmpersands(FirstCharacters(name, kLongestName - 1)) + "..."
            : DoubleAmpersands(name));
    prepare(at + 1);
    RotateOneFile(app_, key, path, direction, RotationNotice::kSelectedPhotos,
                  hooks_);
    const double frame = shProgressBar.Width();
    ImgProgressBar.SetWidth(miTotal > 0 ? count * frame / miTotal : frame);
    lblPercent.SetCaption(
        std::to_string(static_cast<int>(ImgProgressBar.Width() * 100 / frame)) +
        "%");
    lblPercent.SetVisible(true);
    if (mbCancel) {
      mbStopped = true;
    }
  }
  s.gbRotationBusy = false;
  mbBusy = false;
  host().Sleep(kCloseDelayMs);
  if (!IsUnloaded()) {
    Unload();
  }
}

void frmRotate::Form_QueryUnload(int& Cancel, int UnloadMode) {
  (void)UnloadMode;
  if (!mbBusy) {
    return;
  }
  // The close box while photos are turned: the run stops after the photo
  // in hand, and the timer closes the dialog then.
  mbCancel = true;
  tmrCheck.SetEnabled(true);
  Cancel = 1;
}

void frmRotate::tmrCheck_Timer() {
  if (mbStopped || !mbBusy) {
    tmrCheck.SetEnabled(false);
    mbBusy = false;
    Unload();
  }
}

void frmRotate::imgCancel_Click() {
  mbCancel = true;
}

}  // namespace qbpd
