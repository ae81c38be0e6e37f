#include "presentation/frm_wallpaper.h"

#include "browser/frm_main_window.h"
#include "core/button_pictures.h"
#include "core/frm_msg_infrm.h"
#include "core/quil_mod.h"
#include "platform/forms/keys.h"
#include "platform/wallpaper.h"
#include "presentation/picture_buttons.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 4800;
constexpr int kFormHeight = 4530;
constexpr int kMargin = 240;
constexpr int kFrameSide = 1800;
constexpr int kFrameTop = 660;
constexpr int kOptionLeft = kMargin + kFrameSide + 360;
constexpr int kOptionWidth = 1800;
constexpr int kOptionHeight = 285;
constexpr int kButtonWidth = 1200;
constexpr int kButtonHeight = 390;

constexpr char kOkButton[] = "26";
constexpr char kCancelButton[] = "25";

constexpr char kThumbnailFailed[] = "Error in generating the thumbnail";
constexpr char kBitmapFailed[] =
    "Unable to set the selected file as wallpaper.";
constexpr char kWallpaperFailed[] = "Unable to set the Wallpaper";
constexpr char kDoneHead[] = "congratulations!";
constexpr char kDoneMessage[] =
    "Selected image has been successfully set as wallpaper.";

}  // namespace

frmWallpaper::frmWallpaper(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetKeyPreview(true);
  Move(0, 0, kFormWidth, kFormHeight);
  lblWPapHead.Move(kMargin, 180, kFormWidth - 2 * kMargin, 330);
  lblWPapHead.SetFontBold(true);
  lblWPapHead.SetCaption("set as wallpaper");
  FraImageCont.Move(kMargin, kFrameTop, kFrameSide, kFrameSide);
  imgWallpaper.SetContainer("FraImageCont");
  lblWPapImageName.Move(kMargin, kFrameTop + kFrameSide + 90, kFrameSide, 255);
  lblWPapImageName.SetAlignment(2);
  lblWPapImageName.SetCaption("Original Photo");
  int top = kFrameTop + 240;
  for (auto [option, caption] : {std::pair{&optWPapTiled, "Tiled"},
                                 std::pair{&optWPapCentered, "Centered"},
                                 std::pair{&optWPapStretch, "Stretch"}}) {
    option->Move(kOptionLeft, top, kOptionWidth, kOptionHeight);
    option->SetCaption(caption);
    top += kOptionHeight + 180;
  }
  optWPapStretch.SetValue(true);
  const int buttons_top = kFormHeight - kButtonHeight - 420;
  imgWPapCancel.Move(kFormWidth - kMargin - kButtonWidth, buttons_top,
                     kButtonWidth, kButtonHeight);
  imgWPapOK.Move(imgWPapCancel.Left() - 120 - kButtonWidth, buttons_top,
                 kButtonWidth, kButtonHeight);
  On("imgWPapOK", "Click", &frmWallpaper::imgWPapOK_Click);
  On("imgWPapCancel", "Click", &frmWallpaper::imgWPapCancel_Click);
}

void frmWallpaper::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  WirePictureButton(*this, s, imgWPapOK, kOkButton);
  WirePictureButton(*this, s, imgWPapCancel, kCancelButton);
  // The main window's one way to a thumbnail, from the cache when it is on.
  if (!app_.forms().Get<frmMainWindow>().GenerateThumbnail(s.gsSelectedImage)) {
    host().MsgBox(kThumbnailFailed, kMbStop, s.gsAppTitle);
  } else {
    ImageOperations& images = app_.images();
    const int w = images.GetImageWidth(s.gsThumbnailPath) * kTwipsPerPixel;
    const int h = images.GetImageHeight(s.gsThumbnailPath) * kTwipsPerPixel;
    imgWallpaper.Move((kFrameSide - w) / 2, (kFrameSide - h) / 2, w, h);
    imgWallpaper.SetPicture(s.gsThumbnailPath);
  }
  lblWPapImageName.SetCaption(FittedName(BaseName(s.gsSelectedImage)));
}

std::string frmWallpaper::FittedName(const std::string& base) const {
  const std::string doubled = DoubleAmpersands(base);
  const Font& font = lblWPapImageName.font();
  const int room = lblWPapImageName.Width();
  if (host().TextWidth(doubled, font) <= room) {
    return doubled;
  }
  size_t count = CharacterCount(base);
  while (count > 0 &&
         host().TextWidth(
             DoubleAmpersands(FirstCharacters(base, count)) + "...", font) >
             room) {
    --count;
  }
  return DoubleAmpersands(FirstCharacters(base, count)) + "...";
}

void frmWallpaper::ShowDefImages() {
  const Session& s = app_.session();
  ShowButtonState(s, imgWPapOK, kOkButton, kPictureNormal);
  ShowButtonState(s, imgWPapCancel, kCancelButton, kPictureNormal);
}

void frmWallpaper::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    imgWPapCancel_Click();
  }
}

void frmWallpaper::imgWPapOK_Click() {
  Session& s = app_.session();
  host().SetMousePointer(kPointerHourglass);
  const std::string bitmap = s.gsSystemFolder + kBitmapName;
  if (app_.images().SaveImageAsBMP(s.gsSelectedImage, bitmap) != 1) {
    host().MsgBox(kBitmapFailed, kMbStop, s.gsAppTitle);
    host().SetMousePointer(kPointerDefault);
    Unload();
    return;
  }
  int arrangement = kWallpaperStretched;
  if (optWPapTiled.Value()) {
    arrangement = kWallpaperTiled;
  } else if (optWPapCentered.Value()) {
    arrangement = kWallpaperCentered;
  } else if (optWPapStretch.Value()) {
    arrangement = kWallpaperStretched;
  }
  if (app_.wallpaper().ChangeWallpaper(bitmap, arrangement) == 1) {
    s.gsInfoHead = kDoneHead;
    s.gsInfoMessage = kDoneMessage;
    app_.forms().Get<frmMsgInfrm>().Show(/*modal=*/true);
  } else {
    // The bitmap stays on disk.
    host().MsgBox(kWallpaperFailed, kMbStop, s.gsAppTitle);
  }
  host().SetMousePointer(kPointerDefault);
  Unload();
}

void frmWallpaper::imgWPapCancel_Click() {
  Unload();
}

}  // namespace qbpd
