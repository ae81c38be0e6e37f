#include "screensaver/frm_editscreensaver.h"

#include "core/quil_mod.h"
#include "core/settings.h"
#include "platform/forms/keys.h"
#include "presentation/picture_buttons.h"
#include "screensaver/frm_alert_for_delete_scr.h"
#include "screensaver/scr_default.h"
#include "screensaver/scr_store.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 9600;
constexpr int kFormHeight = 6900;
constexpr int kMargin = 240;
constexpr int kLeftWidth = 4200;
constexpr int kRightLeft = kMargin + kLeftWidth + 240;
constexpr int kRightWidth = kFormWidth - kRightLeft - kMargin;
constexpr int kRow = 285;
constexpr char kOkButton[] = "26";
constexpr char kCancelButton[] = "25";

// The two numbers, by the index of their spin buttons.
constexpr int kDelay = 0;
constexpr int kInterval = 1;
struct Bounds {
  int low;
  int high;
};
constexpr Bounds kBounds[] = {{1, 9999}, {2, 999}};

constexpr char kInitFailed[] =
    "Error in initializing the screen saver settings";
constexpr char kBadIntervalText[] = "Enter a valid interval in seconds";
constexpr char kBadNumberSpin[] = "Enter a valid number";
constexpr char kBadNumberOk[] = "Enter a valid number.";
constexpr char kDelayRange[] =
    "Enter a value between 1 and 9999 for Start screensaver";
constexpr char kIntervalRange[] =
    "Enter a value between 2 and 999 for image interval";
constexpr char kNoneChecked[] =
    "Please select the photos you would like to remove by clicking on the "
    "checkbox below each photo.";
constexpr char kOnlyOne[] =
    "There should be atleast one photo in the screensaver";
constexpr char kAllChecked[] =
    "Please unselect atleast one image as there should be atleast one image in "
    "the screensaver";
constexpr char kWriteFailed[] = "Unable to save the screensaver.";
constexpr char kTempScrName[] = "/TempScr.ini";

// Whether the text is a number as the program's test takes one: an
// optional sign, digits, and at most one "." among them.
bool IsNumeric(const std::string& text) {
  const std::string t = Trim(text);
  size_t at = (!t.empty() && (t[0] == '-' || t[0] == '+')) ? 1 : 0;
  bool digit = false;
  bool point = false;
  for (; at < t.size(); ++at) {
    if (t[at] >= '0' && t[at] <= '9') {
      digit = true;
    } else if (t[at] == '.' && !point) {
      point = true;
    } else {
      return false;
    }
  }
  return digit;
}

}  // namespace

frmEditscreensaver::frmEditscreensaver(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetKeyPreview(true);
  Move(0, 0, kFormWidth, kFormHeight);
  lblHead.Move(kMargin, 240, kLeftWidth, kRow);
  lblHead.SetCaption("Screensaver :");
  cboScreensaverTitles.Move(kMargin, 540, kLeftWidth, 315);
  cboScreensaverTitles.SetStyle(2);

  int top = 1080;
  struct NumberRow {
    Label* label;
    const char* caption;
    TextBox* box;
    Label* unit;
    const char* unit_caption;
  };
  const NumberRow rows[] = {{&lblTimeOut, "Start screensaver",
                             &txtScrSaverTimeOut, &lblMinutes, "minutes"},
                            {&lblInterval, "Image interval", &txtImageInterval,
                             &lblSeconds, "seconds"}};
  for (int i = 0; i < 2; ++i) {
    rows[i].label->Move(kMargin, top + 30, 1800, kRow);
    rows[i].label->SetCaption(rows[i].caption);
    rows[i].box->Move(kMargin + 1800, top, 900, 315);
    rows[i].box->SetMaxLength(4);
    CommandButton& up = i == 0 ? imgUp[0] : imgUp.Load(i);
    CommandButton& down = i == 0 ? imgDown[0] : imgDown.Load(i);
    up.Move(kMargin + 2700, top, 300, 158);
    up.SetCaption("+");
    up.SetVisible(true);
    down.Move(kMargin + 2700, top + 158, 300, 158);
    down.SetCaption("-");
    down.SetVisible(true);
    rows[i].unit->Move(kMargin + 3090, top + 30, 1000, kRow);
    rows[i].unit->SetCaption(rows[i].unit_caption);
    top += 480;
  }

  fraEffects.Move(kMargin, top + 60, kLeftWidth, 1560);
  fraEffects.SetCaption("Transition effects");
  int effect_top = 300;
  for (auto [box, caption] : {std::pair{&chkFromCentre, "From centre"},
                              std::pair{&chkDiagonal, "Diagonal"},
                              std::pair{&chkTopToBottom, "Top to bottom"},
                              std::pair{&chkLeftToRight, "Left to right"}}) {
    box->SetContainer("fraEffects");
    box->Move(240, effect_top, kLeftWidth - 480, kRow);
    box->SetCaption(caption);
    effect_top += 300;
  }
  top += 1800;
  chkDefScrSaver.Move(kMargin, top, kLeftWidth, kRow);
  chkDefScrSaver.SetCaption("Make this my current screensaver");
  top += 480;
  imgPreview.Move(kMargin, top, 1300, 390);
  imgPreview.SetCaption("Preview");
  imgDeleteScrsaver.Move(kMargin + 1450, top, 2000, 390);
  imgDeleteScrsaver.SetCaption("Delete screensaver");

  strip_.Place(kRightLeft, 240, kRightWidth, 4500);
  lblPhotosSelect.Move(kRightLeft, 4800, kRightWidth - 2100, kRow);
  imgRemovePhotos.Move(kFormWidth - kMargin - 2000, 4770, 2000, 390);
  imgRemovePhotos.SetCaption("Remove photos");

  const int buttons_top = kFormHeight - 390 - 600;
  lblHelp.Move(kMargin, buttons_top + 60, 900, kRow);
  lblHelp.SetCaption("Help");
  imgCancel.Move(kFormWidth - kMargin - 1200, buttons_top, 1200, 390);
  imgOK.Move(imgCancel.Left() - 120 - 1200, buttons_top, 1200, 390);

  On("cboScreensaverTitles", "Click",
     &frmEditscreensaver::cboScreensaverTitles_Click);
  On("imgUp", "Click", [this](EventArgs& e) { Spin(e.Index, true); });
  On("imgDown", "Click", [this](EventArgs& e) { Spin(e.Index, false); });
  On("ctlQuilThumbnail", "CheckClick", [this](EventArgs& e) {
    if (ctlQuilThumbnail[e.Index].Checked()) {
      mdicChecked.insert(e.Index);
    } else {
      mdicChecked.erase(e.Index);
    }
  });
  On("ctrlImageListVScroll", "Change",
     [this](EventArgs&) { strip_.Scrolled(); });
  On("imgRemovePhotos", "Click", &frmEditscreensaver::imgRemovePhotos_Click);
  On("imgPreview", "Click", &frmEditscreensaver::imgPreview_Click);
  On("imgDeleteScrsaver", "Click",
     &frmEditscreensaver::imgDeleteScrsaver_Click);
  On("imgOK", "Click", &frmEditscreensaver::imgOK_Click);
  On("imgCancel", "Click", [this](EventArgs&) { Unload(); });
  On("lblHelp", "Click", [this](EventArgs&) { host().SendKeys("{F1}"); });
  Field("msName", msName);
}

void frmEditscreensaver::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  WirePictureButton(*this, s, imgOK, kOkButton);
  WirePictureButton(*this, s, imgCancel, kCancelButton);

  txtScrSaverTimeOut.SetText(ReadStartDelayMinutes(app_.settings()));
  std::string count;
  if (!ReadIniValue(s.gsScrIniPath, kScrGeneral, kScrCountKey, "", count)) {
    host().MsgBox(kInitFailed, kMbStop, s.gsAppTitle);
  }
  s.gsaScrNames = ReadScreensaverNames(s.gsScrIniPath);
  s.giSsaverCount = static_cast<int>(s.gsaScrNames.size());
  cboScreensaverTitles.Clear();
  int chosen = 0;
  for (size_t i = 0; i < s.gsaScrNames.size(); ++i) {
    cboScreensaverTitles.AddItem(s.gsaScrNames[i]);
    if (UpperCase(s.gsaScrNames[i]) == UpperCase(s.gsCurrentScrName)) {
      chosen = static_cast<int>(i);
    }
  }
  if (cboScreensaverTitles.ListCount() > 0) {
    // Choosing the entry loads it.
    cboScreensaverTitles.SetListIndex(chosen);
  } else {
    SetButtonsEnabled(false);
    imgCancel.SetEnabled(true);
  }
}

void frmEditscreensaver::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    Unload();
  }
}

void frmEditscreensaver::SetButtonsEnabled(bool enabled) {
  for (Control* c : std::initializer_list<Control*>{
           &imgRemovePhotos, &imgPreview, &imgDeleteScrsaver, &imgOK,
           &imgCancel}) {
    c->SetEnabled(enabled);
  }
}

void frmEditscreensaver::cboScreensaverTitles_Click() {
  const int i = cboScreensaverTitles.ListIndex();
  if (i < 0) {
    return;
  }
  msName = cboScreensaverTitles.List(i);
  LoadScreensaver();
}

void frmEditscreensaver::LoadScreensaver() {
  const Session& s = app_.session();
  SetButtonsEnabled(false);
  msaPhotos = ReadScreensaverPhotos(s.gsScrIniPath, msName);
  ShowPhotos();
  std::string text;
  ReadIniValue(s.gsScrIniPath, msName, kScrIntervalKey, "", text);
  txtImageInterval.SetText(text);
  ReadIniValue(s.gsScrIniPath, msName, kScrEffectsKey, "", text);
  const EffectBoxes boxes = DecodeEffectBoxes(ScrNumber(text));
  chkFromCentre.SetValue(boxes.from_centre ? 1 : 0);
  chkDiagonal.SetValue(boxes.diagonal ? 1 : 0);
  chkTopToBottom.SetValue(boxes.top_to_bottom ? 1 : 0);
  chkLeftToRight.SetValue(boxes.left_to_right ? 1 : 0);
  std::string current;
  ReadIniValue(s.gsScrIniPath, kScrGeneral, kScrDefaultKey, "", current);
  chkDefScrSaver.SetValue(UpperCase(current) == UpperCase(msName) ? 1 : 0);
  SetButtonsEnabled(true);
}

void frmEditscreensaver::ShowPhotos() {
  mdicChecked.clear();
  strip_.Show(app_, msaPhotos);
  lblPhotosSelect.SetCaption(std::to_string(msaPhotos.size()) + " photo(s)");
}

void frmEditscreensaver::Spin(int index, bool up) {
  const Session& s = app_.session();
  TextBox& box = index == kDelay ? txtScrSaverTimeOut : txtImageInterval;
  const Bounds bounds = kBounds[index];
  const char* message = index == kDelay ? kBadNumberSpin : kBadIntervalText;
  const std::string text = Trim(box.Text());
  box.SetText(text);
  if (text.empty()) {
    box.SetText(std::to_string(bounds.low));
    imgDown[index].SetEnabled(false);
    return;
  }
  const int value = ScrNumber(text);
  if (text.find('.') != std::string::npos || !IsNumeric(text) ||
      value < bounds.low || value > bounds.high) {
    host().MsgBox(message, kMbInformation, s.gsAppTitle);
    box.SetFocus();
    return;
  }
  int next = value;
  if (up && value < bounds.high) {
    ++next;
  } else if (!up && value > bounds.low) {
    --next;
  }
  box.SetText(std::to_string(next));
  imgUp[index].SetEnabled(next < bounds.high);
  imgDown[index].SetEnabled(next > bounds.low);
}

void frmEditscreensaver::imgRemovePhotos_Click() {
  const Session& s = app_.session();
  const char* refusal = nullptr;
  if (mdicChecked.empty()) {
    refusal = kNoneChecked;
  } else if (msaPhotos.size() == 1) {
    refusal = kOnlyOne;
  } else if (mdicChecked.size() == msaPhotos.size()) {
    refusal = kAllChecked;
  }
  if (refusal != nullptr) {
    host().MsgBox(refusal, kMbInformation, s.gsAppTitle);
    return;
  }
  std::vector<std::string> kept;
  for (size_t i = 0; i < msaPhotos.size(); ++i) {
    if (mdicChecked.count(static_cast<int>(i)) == 0) {
      kept.push_back(msaPhotos[i]);
    }
  }
  msaPhotos = std::move(kept);
  ShowPhotos();
}

void frmEditscreensaver::imgOK_Click() {
  Session& s = app_.session();
  const std::string delay = Trim(txtScrSaverTimeOut.Text());
  const std::string interval = Trim(txtImageInterval.Text());
  auto refuse = [&](const char* message, TextBox& box) {
    host().MsgBox(message, kMbInformation, s.gsAppTitle);
    box.SetFocus();
  };
  if (!IsNumeric(delay) || delay.find('.') != std::string::npos) {
    refuse(kBadNumberOk, txtScrSaverTimeOut);
    return;
  }
  if (!IsNumeric(interval) || interval.find('.') != std::string::npos) {
    refuse(kBadIntervalText, txtImageInterval);
    return;
  }
  const int minutes = ScrNumber(delay);
  const int seconds = ScrNumber(interval);
  if (minutes < kBounds[kDelay].low || minutes > kBounds[kDelay].high) {
    refuse(kDelayRange, txtScrSaverTimeOut);
    return;
  }
  if (seconds < kBounds[kInterval].low || seconds > kBounds[kInterval].high) {
    refuse(kIntervalRange, txtImageInterval);
    return;
  }
  const EffectBoxes boxes{chkFromCentre.Value() == 1, chkDiagonal.Value() == 1,
                          chkTopToBottom.Value() == 1,
                          chkLeftToRight.Value() == 1};
  if (!SaveScreensaver(s.gsScrIniPath, msName, msaPhotos, seconds,
                       EffectsValue(boxes))) {
    host().MsgBox(kWriteFailed, kMbStop, s.gsAppTitle);
    return;
  }
  if (chkDefScrSaver.Value() == 1) {
    SetDefaultScreensaver(app_, msName);
  } else {
    std::string current;
    ReadIniValue(s.gsScrIniPath, kScrGeneral, kScrDefaultKey, "", current);
    if (UpperCase(current) == UpperCase(msName)) {
      WriteIniValue(s.gsScrIniPath, kScrGeneral, kScrDefaultKey, "");
    }
  }
  SaveStartDelay(app_, minutes);
  Unload();
}

void frmEditscreensaver::imgPreview_Click() {
  Session& s = app_.session();
  const std::string temp = AppPath(app_) + kTempScrName;
  WriteTempScr(temp, msName, msaPhotos);
  s.gsPreviewName = msName;
  const std::string interval = Trim(txtImageInterval.Text());
  s.giPreviewInterval = IsNumeric(interval) ? ScrNumber(interval) : 2;
  s.gsPreviewIniPath = temp;
  s.gsPreviewEffects =
      EffectCodes({chkFromCentre.Value() == 1, chkDiagonal.Value() == 1,
                   chkTopToBottom.Value() == 1, chkLeftToRight.Value() == 1});
  app_.forms().Get("frmPreview").Show(/*modal=*/true);
}

void frmEditscreensaver::imgDeleteScrsaver_Click() {
  Session& s = app_.session();
  const int place = cboScreensaverTitles.ListIndex();
  auto& alert = app_.forms().Get<frmAlertForDeleteScr>();
  alert.msName = msName;
  alert.Show(/*modal=*/true);
  if (HasScreensaverName(s.gsaScrNames, msName) || place < 0) {
    return;
  }
  cboScreensaverTitles.RemoveItem(place);
  const int left = cboScreensaverTitles.ListCount();
  if (left == 0) {
    Unload();
    return;
  }
  cboScreensaverTitles.SetListIndex(std::min(place, left - 1));
}

}  // namespace qbpd
