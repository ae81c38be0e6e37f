#include "presentation/frm_slide_show.h"

#include "browser/frm_main_window.h"
#include "core/button_pictures.h"
#include "core/quil_mod.h"
#include "core/settings.h"
#include "platform/decode_ahead.h"
#include "platform/forms/keys.h"
#include "presentation/name_text.h"
#include "presentation/picture_buttons.h"

#include <sys/stat.h>

namespace qbpd {
namespace {

constexpr char kNoImages[] = "There are no images to display";

constexpr char kPreviousButton[] = "31";
constexpr char kPauseButton[] = "32";  // shown while playing
constexpr char kPlayButton[] = "29";   // shown while paused
constexpr char kNextButton[] = "30";
constexpr char kExitButton[] = "33";

constexpr int kButtonSide = 495;  // 33 pixels
constexpr int kButtonGap = 90;
constexpr int kPhotoLeft = 100;
constexpr int kNameLeft = 150;
constexpr int kLabelHeight = 255;
constexpr long kBlack = 0;
constexpr long kWhite = 0xFFFFFF;
// The interval when the setting holds no whole number of seconds: the
// installer's default.
constexpr int kDefaultIntervalSeconds = 5;
constexpr int kMillisecondsPerSecond = 1000;

}  // namespace

frmSlideShow::frmSlideShow(Application& app)
    : Form(app.host(), std::string(kName)), app_(app), s_(app.session()) {
  SetKeyPreview(true);
  // The window covers the screen, without a border.
  SetBorderStyle(0);
  picBackground.SetBackColor(kBlack);
  fraButtonContainer.SetBackColor(kBlack);
  fraImageName.SetBackColor(kBlack);
  fraButtonContainer.SetBorder(false);
  fraImageName.SetBorder(false);
  lblImageName.SetBackColor(kBlack);
  lblImageName.SetForeColor(kWhite);
  lblImageName.SetContainer("fraImageName");
  for (PictureButton* b : {&imgPrevious, &imgPlayPause, &imgNext, &imgExit}) {
    b->SetContainer("fraButtonContainer");
    b->Move(0, 0, kButtonSide, kButtonSide);
  }
  fraImageName.SetHeight(kButtonSide);
  Field("miCurrentIndex", miCurrentIndex);
  Field("mbPlaying", mbPlaying);
  Field("mbBusy", mbBusy);
  Field("mbLaidOut", mbLaidOut);
  Field("miLastIndex", miLastIndex);

  On("tmrPlay", "Timer", &frmSlideShow::tmrPlay_Timer);
  On("imgPlayPause", "Click", &frmSlideShow::imgPlayPause_Click);
  On("imgNext", "Click", &frmSlideShow::imgNext_Click);
  On("imgPrevious", "Click", &frmSlideShow::imgPrevious_Click);
  On("imgExit", "Click", &frmSlideShow::imgExit_Click);
  // The play button's pictures follow the state it is in.
  auto play_number = [this] {
    return std::string(mbPlaying ? kPauseButton : kPlayButton);
  };
  On("imgPlayPause", "MouseDown", [this, play_number](EventArgs& e) {
    if (e.Button == 1) {
      ShowButtonState(s_, imgPlayPause, play_number(), kPicturePressed);
    }
  });
  On("imgPlayPause", "MouseUp", [this, play_number](EventArgs&) {
    ShowButtonState(s_, imgPlayPause, play_number(), kPictureNormal);
  });
  On("imgPlayPause", "MouseMove", [this, play_number](EventArgs& e) {
    if (e.Button == 0) {
      ShowButtonState(s_, imgPlayPause, play_number(), kPictureHover);
    }
  });
}

frmSlideShow::~frmSlideShow() = default;

void frmSlideShow::Form_Load() {
  SetCaption(s_.gsAppTitle);
  Move(0, 0, host().ScreenWidth(), host().ScreenHeight());
  SetWindowState(kWindowMaximized);
  fraButtonContainer.SetTop(0);
  // The show's own view, which decodes the photos next in turn ahead; a
  // photo not decoded ahead is decoded while the window keeps painting.
  std::unique_ptr<DecodeAheadDisplay> view =
      MakeDecodeAheadDisplay([app = &app_] { return app->NewDisplayControl(); },
                             [h = &host()](const std::function<bool()>& done) {
                               h->WaitUnnoticed(done);
                             });
  mpDecodeAhead = view.get();
  if (view) {
    ctlDisplayImage.AttachDisplay(std::move(view));
  }
  ctlDisplayImage.SetBackRed(0);
  ctlDisplayImage.SetBackGreen(0);
  ctlDisplayImage.SetBackBlue(0);
  miCurrentIndex = s_.giCurrentPhotoIndex;
  moToolTip = std::make_unique<cToolTip>();
}

void frmSlideShow::FirstLayout() {
  fraButtonContainer.SetVisible(false);
  WirePictureButton(*this, s_, imgPrevious, kPreviousButton);
  WirePictureButton(*this, s_, imgNext, kNextButton);
  WirePictureButton(*this, s_, imgExit, kExitButton);
  const bool playing = s_.gsSlideShowMode == "S";
  ShowButtonState(s_, imgPlayPause, playing ? kPauseButton : kPlayButton,
                  kPictureNormal);
  imgPlayPause.SetTag(playing ? kPauseTip : kPlayTip);
  miPlayTip = moToolTip->SetToolTipObj(imgPlayPause, imgPlayPause.Tag());
  int left = 0;
  for (PictureButton* b : {&imgPrevious, &imgPlayPause, &imgNext, &imgExit}) {
    b->Move(left, 0, kButtonSide, kButtonSide);
    left += kButtonSide + kButtonGap;
  }
  fraButtonContainer.Move((Width() - (left - kButtonGap)) / 2, 0,
                          left - kButtonGap, kButtonSide);
  fraButtonContainer.SetVisible(true);
  mbLaidOut = true;
  miLastIndex = s_.giNextPhotoIndex;
}

void frmSlideShow::Form_Resize() {
  if (!mbLaidOut) {
    FirstLayout();
  }
  picBackground.Move(0, 0, Width(), Height());
  fraButtonContainer.SetLeft((Width() - fraButtonContainer.Width()) / 2);
  ShowPhoto();
  // The interval is set in both modes, so that Play in Full Screen plays at
  // the user's pace too.
  int seconds = 0;
  try {
    seconds = std::stoi(ReadSetting(app_.settings(), s_.gsPrefKey + "Display",
                                    "SlideshowImageIntervalInSeconds"));
  } catch (const std::exception&) {
    seconds = 0;
  }
  if (seconds <= 0) {
    seconds = kDefaultIntervalSeconds;
  }
  tmrPlay.SetInterval(seconds * kMillisecondsPerSecond);
  const bool play = s_.gsSlideShowMode == "S";
  tmrPlay.SetEnabled(play);
  mbPlaying = play;
}

void frmSlideShow::ShowPhoto() {
  const int inside_width = Width();
  const int inside_height = Height();
  ctlDisplayImage.Move(kPhotoLeft, 0, inside_width - 2 * kPhotoLeft,
                       inside_height - fraImageName.Height());
  const std::string path = s_.gdicPhotoList.Exists(miCurrentIndex)
                               ? s_.gdicPhotoList.Item(miCurrentIndex)
                               : std::string();
  // A photo that can't be decoded shows an empty surface for its turn.
  if (!ctlDisplayImage.LoadPhoto(path)) {
    ctlDisplayImage.ClearPhoto();
  }
  ctlDisplayImage.ZoomFitToWidth();
  ctlDisplayImage.SetVisible(true);
  ctlDisplayImage.SetBackRed(0);
  ctlDisplayImage.SetBackGreen(0);
  ctlDisplayImage.SetBackBlue(0);

  lblImageName.SetCaption(ShortenedName(BaseName(path), kNameCharacters));
  lblImageName.SetWidth(
      host().TextWidth(lblImageName.Caption(), lblImageName.font()));
  lblImageName.SetHeight(kLabelHeight);
  fraImageName.Move(kNameLeft, inside_height - fraImageName.Height(),
                    inside_width - 2 * kNameLeft, fraImageName.Height());
  lblImageName.Move((fraImageName.Width() - lblImageName.Width()) / 2,
                    (imgExit.Height() - lblImageName.Height()) / 2,
                    lblImageName.Width(), lblImageName.Height());
  DecodeNeighboursAhead();
}

void frmSlideShow::DecodeNeighboursAhead() {
  if (mpDecodeAhead == nullptr) {
    return;
  }
  std::vector<std::string> wanted;
  int next = FindUp(miCurrentIndex);
  if (next < 0) {
    next = FindUp(-1);
  }
  int previous = FindDown(miCurrentIndex);
  if (previous < 0) {
    previous = FindDown(miLastIndex + 1);
  }
  for (int index : {next, previous}) {
    if (index >= 0 && index != miCurrentIndex) {
      wanted.push_back(s_.gdicPhotoList.Item(index));
    }
  }
  mpDecodeAhead->DecodeAhead(std::move(wanted));
}

bool frmSlideShow::FileExists(int index) const {
  if (!s_.gdicPhotoList.Exists(index)) {
    return false;
  }
  struct stat status {};
  return ::stat(s_.gdicPhotoList.Item(index).c_str(), &status) == 0 &&
         S_ISREG(status.st_mode);
}

int frmSlideShow::FindUp(int from) const {
  for (int i = from + 1; i <= miLastIndex; ++i) {
    if (FileExists(i)) {
      return i;
    }
  }
  return -1;
}

int frmSlideShow::FindDown(int from) const {
  for (int i = from - 1; i >= 0; --i) {
    if (FileExists(i)) {
      return i;
    }
  }
  return -1;
}

void frmSlideShow::tmrPlay_Timer() {
  if (mbBusy) {
    return;
  }
  mbBusy = true;
  // Searched twice at most: from the photo after this one, then from the
  // start. A file that went is forgotten on the way.
  for (int pass = 0; pass < 2; ++pass) {
    int found = -1;
    for (int i = miCurrentIndex + 1; i <= miLastIndex; ++i) {
      if (FileExists(i)) {
        found = i;
        break;
      }
      if (s_.gdicPhotoList.Exists(i)) {
        s_.gdicPhotoList.Remove(i);
      }
    }
    if (found >= 0) {
      miCurrentIndex = found;
      break;
    }
    if (s_.gdicPhotoList.Count() == 0) {
      tmrPlay.SetEnabled(false);
      host().MsgBox(kNoImages, kMbInformation, s_.gsAppTitle);
      s_.gdicPhotoList.RemoveAll();
      mbBusy = false;
      Unload();
      return;
    }
    miCurrentIndex = -1;
  }
  ShowPhoto();
  mbBusy = false;
}

void frmSlideShow::SetPlaying(bool playing) {
  mbPlaying = playing;
  ShowButtonState(s_, imgPlayPause, playing ? kPauseButton : kPlayButton,
                  kPictureNormal);
  imgPlayPause.SetTag(playing ? kPauseTip : kPlayTip);
  moToolTip->SetToolText(imgPlayPause.DisplayName(), miPlayTip,
                         imgPlayPause.Tag());
}

void frmSlideShow::imgPlayPause_Click() {
  if (!mbPlaying) {
    SetPlaying(true);
    tmrPlay_Timer();
    if (IsUnloaded()) {
      return;
    }
    tmrPlay.SetEnabled(true);
  } else {
    SetPlaying(false);
    tmrPlay.SetEnabled(false);
  }
}

void frmSlideShow::Step(int direction) {
  if (mbBusy) {
    return;
  }
  host().SetMousePointer(kPointerHourglass);
  mbBusy = true;
  if (mbPlaying) {
    SetPlaying(false);
    tmrPlay.SetEnabled(false);
  }
  int found = direction > 0 ? FindUp(miCurrentIndex) : FindDown(miCurrentIndex);
  if (found < 0) {
    found = direction > 0 ? FindUp(-1) : FindDown(miLastIndex + 1);
  }
  if (found >= 0) {
    miCurrentIndex = found;
  }
  ShowPhoto();
  host().SetMousePointer(kPointerDefault);
  mbBusy = false;
}

void frmSlideShow::imgNext_Click() {
  Step(1);
}

void frmSlideShow::imgPrevious_Click() {
  Step(-1);
}

void frmSlideShow::imgExit_Click() {
  host().SetMousePointer(kPointerHourglass);
  tmrPlay.SetEnabled(false);
  auto& main = app_.forms().Get<frmMainWindow>();
  main.ShowPhotoAfterSlideShow(miCurrentIndex);
  s_.giCurrentPhotoIndex = miCurrentIndex;
  host().SetMousePointer(kPointerDefault);
  Unload();
}

void frmSlideShow::Form_KeyDown(int& KeyCode, int Shift) {
  (void)Shift;
  if (KeyCode == kKeyEscape) {
    KeyCode = 0;
    imgExit_Click();
  }
}

std::string frmSlideShow::ToolTipAt(std::string_view window,
                                    int x,
                                    int y) const {
  const ToolTipTool* tool =
      moToolTip ? moToolTip->ToolAt(window, x, y) : nullptr;
  return tool != nullptr ? tool->text : std::string();
}

}  // namespace qbpd
