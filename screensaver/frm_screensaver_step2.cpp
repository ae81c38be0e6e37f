#include "screensaver/frm_screensaver_step2.h"

#include "core/quil_mod.h"
#include "core/settings.h"
#include "platform/forms/keys.h"
#include "presentation/picture_buttons.h"
#include "screensaver/scr_default.h"
#include "screensaver/scr_store.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 6000;
constexpr int kFormHeight = 6600;
constexpr int kMargin = 240;
constexpr int kStripTop = 840;
constexpr int kStripHeight = 3300;
constexpr int kWide = kFormWidth - 2 * kMargin;

constexpr char kContinueButton[] = "26";
constexpr char kMakeCurrent[] = "Make this my current screensaver";
constexpr char kPreviewText[] = "Preview your screensaver for 15 seconds";
constexpr int kPreviewSeconds = 1;

}  // namespace

frmScreensaverstep2::frmScreensaverstep2(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetKeyPreview(true);
  Move(0, 0, kFormWidth, kFormHeight);
  lblScrUpdated.Move(kMargin, 240, kWide, 500);
  lblScrUpdated.SetFontBold(true);
  strip_.Place(kMargin, kStripTop, kWide, kStripHeight);
  lblPhotosSelect.Move(kMargin, kStripTop + kStripHeight + 60, kWide, 285);
  chkDefScrSaver.Move(kMargin, kStripTop + kStripHeight + 420, kWide, 285);
  chkDefScrSaver.SetCaption(kMakeCurrent);
  const int row = kStripTop + kStripHeight + 840;
  imgPreview.Move(kMargin, row, 1300, 390);
  imgPreview.SetCaption("Preview");
  lblPreview.Move(kMargin + 1400, row + 60, kWide - 1400, 285);
  lblPreview.SetCaption(kPreviewText);
  const int last = kFormHeight - 390 - 600;
  imgEditScrSaver.Move(kMargin, last, 2000, 390);
  imgEditScrSaver.SetCaption("Edit screensaver");
  imgContinue.Move(kFormWidth - kMargin - 1200, last, 1200, 390);
  On("imgContinue", "Click", &frmScreensaverstep2::imgContinue_Click);
  On("imgEditScrSaver", "Click", &frmScreensaverstep2::imgEditScrSaver_Click);
  On("imgPreview", "Click", &frmScreensaverstep2::imgPreview_Click);
  On("chkDefScrSaver", "Click", &frmScreensaverstep2::chkDefScrSaver_Click);
  On("ctrlImageListVScroll", "Change",
     [this](EventArgs&) { strip_.Scrolled(); });
}

void frmScreensaverstep2::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  WirePictureButton(*this, s, imgContinue, kContinueButton);
  imgContinue.SetTag("Continue");
  lblScrUpdated.SetCaption(
      "Your screensaver named " + s.gsCurrentScrName +
      (s.gbScrUpdated ? " has been updated." : " has been created."));
  std::string current;
  ReadIniValue(s.gsScrIniPath, kScrGeneral, kScrDefaultKey, "", current);
  bool make_current = UpperCase(current) == UpperCase(s.gsCurrentScrName);
  // One just made is checked in any case.
  if ((!s.gbScrFromMenu && !s.gbScrUpdated) ||
      (s.gbScrFromMenu && s.gbScrCreateNew)) {
    make_current = true;
  }
  s.gbMakeCurrent = make_current;
  chkDefScrSaver.SetValue(make_current ? 1 : 0);
  LoadScreensaver();
}

void frmScreensaverstep2::LoadScreensaver() {
  Session& s = app_.session();
  std::string text;
  ReadIniValue(s.gsScrIniPath, s.gsCurrentScrName, kScrIntervalKey, "", text);
  s.giPreviewInterval = ScrNumber(text);
  ReadIniValue(s.gsScrIniPath, s.gsCurrentScrName, kScrEffectsKey, "", text);
  s.gsPreviewEffects = DecodeTransitionEffects(ScrNumber(text));
  const std::vector<std::string> photos =
      ReadScreensaverPhotos(s.gsScrIniPath, s.gsCurrentScrName);
  strip_.Show(app_, photos);
  lblPhotosSelect.SetCaption(std::to_string(photos.size()) + " photo(s)");
}

void frmScreensaverstep2::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    imgContinue_Click();
  }
}

void frmScreensaverstep2::chkDefScrSaver_Click() {
  app_.session().gbMakeCurrent = chkDefScrSaver.Value() == 1;
}

void frmScreensaverstep2::imgContinue_Click() {
  Session& s = app_.session();
  if (chkDefScrSaver.Value() == 1) {
    SetDefaultScreensaver(app_, s.gsCurrentScrName);
  } else {
    std::string current;
    ReadIniValue(s.gsScrIniPath, kScrGeneral, kScrDefaultKey, "", current);
    if (UpperCase(current) == UpperCase(s.gsCurrentScrName)) {
      WriteIniValue(s.gsScrIniPath, kScrGeneral, kScrDefaultKey, "");
    }
  }
  Unload();
}

void frmScreensaverstep2::imgEditScrSaver_Click() {
  app_.forms().Get("frmEditscreensaver").Show(/*modal=*/true);
  Session& s = app_.session();
  // The edit may have deleted it.
  if (!HasScreensaverName(ReadScreensaverNames(s.gsScrIniPath),
                          s.gsCurrentScrName)) {
    Unload();
    return;
  }
  LoadScreensaver();
  std::string current;
  ReadIniValue(s.gsScrIniPath, kScrGeneral, kScrDefaultKey, "", current);
  if (UpperCase(current) == UpperCase(s.gsCurrentScrName)) {
    chkDefScrSaver.SetValue(1);
  }
}

void frmScreensaverstep2::imgPreview_Click() {
  Session& s = app_.session();
  s.gsPreviewIniPath = s.gsScrIniPath;
  s.gsPreviewName = s.gsCurrentScrName;
  s.giPreviewInterval = kPreviewSeconds;
  app_.forms().Get("frmPreview").Show(/*modal=*/true);
}

}  // namespace qbpd
