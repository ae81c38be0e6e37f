#include "screensaver/frm_display_scr_list.h"

#include "core/quil_mod.h"
#include "core/settings.h"
#include "platform/forms/keys.h"
#include "presentation/picture_buttons.h"
#include "screensaver/scr_default.h"
#include "screensaver/scr_store.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 5400;
constexpr int kFormHeight = 4800;
constexpr int kMargin = 240;
constexpr int kListTop = 720;
constexpr int kListHeight = 2700;
constexpr int kScrollWidth = 255;
constexpr int kRow = 360;
constexpr char kOkButton[] = "26";
constexpr char kCancelButton[] = "25";

}  // namespace

frmDisplayScrList::frmDisplayScrList(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetKeyPreview(true);
  Move(0, 0, kFormWidth, kFormHeight);
  lblHead.Move(kMargin, 240, kFormWidth - 2 * kMargin, 400);
  lblHead.SetCaption("Select the screensaver you would like to display :");
  const int list_width = kFormWidth - 2 * kMargin - kScrollWidth;
  picList.Move(kMargin, kListTop, list_width, kListHeight);
  picListInner.SetContainer("picList");
  picListInner.Move(0, 0, list_width, kListHeight);
  optScrSaverName[0].SetContainer("picListInner");
  optScrSaverName[0].Move(120, 60, list_width - 240, 285);
  ctlScrListScroll.Move(kMargin + list_width, kListTop, kScrollWidth,
                        kListHeight);
  const int buttons_top = kListTop + kListHeight + 480;
  lblHelp.Move(kMargin, buttons_top + 60, 900, 285);
  lblHelp.SetCaption("Help");
  imgCancel.Move(kFormWidth - kMargin - 1200, buttons_top, 1200, 390);
  imgOK.Move(imgCancel.Left() - 120 - 1200, buttons_top, 1200, 390);
  On("optScrSaverName", "Click",
     [this](EventArgs& e) { msChosen = optScrSaverName[e.Index].Caption(); });
  On("ctlScrListScroll", "Change", [this](EventArgs&) {
    picListInner.SetTop(-ctlScrListScroll.Value() * kRow);
  });
  On("imgOK", "Click", &frmDisplayScrList::imgOK_Click);
  On("imgCancel", "Click", [this](EventArgs&) { Unload(); });
  On("lblHelp", "Click", [this](EventArgs&) { host().SendKeys("{F1}"); });
  Field("msChosen", msChosen);
}

void frmDisplayScrList::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  WirePictureButton(*this, s, imgOK, kOkButton);
  WirePictureButton(*this, s, imgCancel, kCancelButton);
  std::string current;
  ReadIniValue(s.gsScrIniPath, kScrGeneral, kScrDefaultKey, "", current);
  s.gsaScrNames = ReadScreensaverNames(s.gsScrIniPath);
  const int count = static_cast<int>(s.gsaScrNames.size());
  for (int i = 0; i < count; ++i) {
    OptionButton& option =
        i == 0 ? optScrSaverName[0] : optScrSaverName.Load(i);
    option.Move(120, 60 + i * kRow, option.Width(), option.Height());
    option.SetCaption(s.gsaScrNames[i]);
    option.SetVisible(true);
  }
  optScrSaverName[0].SetVisible(count > 0);
  for (int i = 0; i < count; ++i) {
    if (UpperCase(s.gsaScrNames[i]) == UpperCase(current)) {
      // Setting it raises its Click, which takes its caption.
      optScrSaverName[i].SetValue(true);
    }
  }
  const int height = 120 + count * kRow;
  picListInner.SetHeight(std::max(height, static_cast<int>(picList.Height())));
  const int extra = std::max(
      0, (height - static_cast<int>(picList.Height()) + kRow - 1) / kRow);
  ctlScrListScroll.SetMax(extra);
  ctlScrListScroll.SetEnabled(extra > 0);
}

void frmDisplayScrList::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    Unload();
  }
}

void frmDisplayScrList::imgOK_Click() {
  if (!msChosen.empty()) {
    SetDefaultScreensaver(app_, msChosen);
  }
  Unload();
}

}  // namespace qbpd
