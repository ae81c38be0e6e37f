#include "screensaver/frm_preview.h"

#include "screensaver/scr_store.h"

namespace qbpd {
namespace {

constexpr int kPreviewMs = 15000;
constexpr int kMaximized = 2;
constexpr int kMsPerSecond = 1000;

}  // namespace

frmPreview::frmPreview(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetKeyPreview(true);
  SetBorderStyle(0);
  tmr15Seconds.SetInterval(kPreviewMs);
  tmr15Seconds.SetEnabled(false);
  tmrOneSecond.SetEnabled(false);
  On("tmrOneSecond", "Timer", [this](EventArgs&) {
    mbStarted = true;
    tmrOneSecond.SetEnabled(false);
  });
  On("tmr15Seconds", "Timer", &frmPreview::tmr15Seconds_Timer);
  for (const char* event : {"UserInput", "MouseDown", "KeyDown"}) {
    On("ctlScr", event, [this](EventArgs&) { Close(); });
  }
  Field("mbStarted", mbStarted);
}

void frmPreview::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  host().ShowCursor(false);
  mbCursorHidden = true;
  mbStarted = false;
  tmrOneSecond.SetEnabled(false);
  tmrOneSecond.SetInterval(s.giPreviewInterval * kMsPerSecond);
  Move(0, 0, host().ScreenWidth(), host().ScreenHeight());
  SetWindowState(kMaximized);
  // The first size starts the play; a resize only follows it.
  Form_Resize();
}

void frmPreview::Form_Resize() {
  ctlScr.Move(0, 0, Width(), Height());
  if (mbPlaying) {
    return;
  }
  const Session& s = app_.session();
  ctlScr.SetFiles(ReadScreensaverPhotos(s.gsPreviewIniPath, s.gsPreviewName));
  ctlScr.Play(s.gsPreviewIniPath, s.giPreviewInterval, s.gsPreviewName,
              s.gsPreviewEffects);
  mbPlaying = true;
  tmrOneSecond.SetEnabled(true);
  tmr15Seconds.SetEnabled(true);
}

void frmPreview::Form_KeyDown(int& KeyCode, int Shift) {
  (void)Shift;
  KeyCode = 0;
  Close();
}

void frmPreview::tmr15Seconds_Timer() {
  tmr15Seconds.SetEnabled(false);
  ctlScr.Stop();
  Unload();
}

void frmPreview::Close() {
  ctlScr.Stop();
  Unload();
}

void frmPreview::Form_Unload(int& Cancel) {
  (void)Cancel;
  tmr15Seconds.SetEnabled(false);
  tmrOneSecond.SetEnabled(false);
  if (mbCursorHidden) {
    host().ShowCursor(true);
    mbCursorHidden = false;
  }
}

}  // namespace qbpd
