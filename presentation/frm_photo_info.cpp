#include "presentation/frm_photo_info.h"

#include "browser/frm_main_window.h"
#include "core/button_pictures.h"
#include "core/quil_mod.h"
#include "core/validations.h"
#include "platform/access_check.h"
#include "platform/forms/keys.h"
#include "platform/image_header.h"
#include "presentation/name_text.h"
#include "presentation/picture_buttons.h"

#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace qbpd {
namespace {

constexpr int kFormWidth = 7800;
constexpr int kMargin = 240;
constexpr int kHeadTop = 180;
constexpr int kFirstRow = 720;
constexpr int kRowHeight = 330;
constexpr int kLabelHeight = 255;
constexpr int kFrameSide = 1620;
constexpr int kHeadLeft = kMargin + kFrameSide + 240;
constexpr int kHeadWidth = 1470;
constexpr int kValueLeft = kHeadLeft + kHeadWidth;
constexpr int kValueWidth = kFormWidth - kValueLeft - kMargin;
constexpr int kButtonWidth = 1200;
constexpr int kButtonHeight = 390;
constexpr int kBytesPerK = 1024;

constexpr char kOkButton[] = "26";
constexpr char kCancelButton[] = "25";

constexpr char kThumbnailFailed[] = "Error in generating the thumbnail";
constexpr char kEnterName[] = "Enter file name";
constexpr char kNameExists[] = "With this name, file already exists";

constexpr int kCtrlA = 1;
constexpr int kCtrlC = 3;
constexpr int kCtrlV = 22;
constexpr int kCtrlX = 24;

// The file's creation time where the file system keeps one, else the
// earlier of its last change and its last status change.
struct FileTimes {
  long long created = 0;
  long long modified = 0;
  long long bytes = 0;
  bool ok = false;
};

FileTimes TimesOf(const std::string& path) {
  FileTimes times;
  struct statx info {};
  if (::statx(AT_FDCWD, path.c_str(), 0,
              STATX_BTIME | STATX_MTIME | STATX_CTIME | STATX_SIZE,
              &info) != 0) {
    return times;
  }
  times.ok = true;
  times.modified = info.stx_mtime.tv_sec;
  times.bytes = static_cast<long long>(info.stx_size);
  if ((info.stx_mask & STATX_BTIME) != 0) {
    times.created = info.stx_btime.tv_sec;
  } else {
    times.created =
        std::min<long long>(info.stx_mtime.tv_sec, info.stx_ctime.tv_sec);
  }
  return times;
}

// A name the file system can't hold, or that the dialog refuses: a control
// character (the classes of blanks other than the space and of other
// characters) or one of the nine refused characters.
bool HoldsRefusedCharacter(const std::string& name) {
  for (const char c : name) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 32 || code == 127) {
      return true;
    }
  }
  return !IsValidFileNameText(name);
}

std::string ExtensionOf(const std::string& path) {
  const std::string name = FileNamePart(path);
  const auto dot = name.rfind('.');
  return dot == std::string::npos ? std::string() : name.substr(dot + 1);
}

std::string AccessDenied(const std::string& name) {
  return "Cannot rename " + name +
         ": Access is denied. \r\n\r\nMake sure the disk is not full or "
         "write-protected \r\nand that the file is not currently in use.";
}

std::string Exposure(const CameraFacts& c) {
  if (c.exposure_denominator == 0 || c.exposure_numerator == 0) {
    return {};
  }
  const double seconds =
      static_cast<double>(c.exposure_numerator) / c.exposure_denominator;
  char text[48];
  if (seconds < 1.0) {
    std::snprintf(text, sizeof text, "1/%.0f s", 1.0 / seconds);
  } else if (seconds == std::floor(seconds)) {
    std::snprintf(text, sizeof text, "%.0f s", seconds);
  } else {
    std::snprintf(text, sizeof text, "%.1f s", seconds);
  }
  return text;
}

std::string FocalLength(double mm) {
  if (mm <= 0) {
    return {};
  }
  char text[32];
  std::snprintf(text, sizeof text, mm == std::floor(mm) ? "%.0f mm" : "%.1f mm",
                mm);
  return text;
}

std::string CameraName(const CameraFacts& c) {
  // Most cameras repeat their maker in the model's name.
  if (c.model.empty() || c.make.empty() ||
      UpperCase(c.model).rfind(UpperCase(c.make), 0) == 0) {
    return c.model.empty() ? c.make : c.model;
  }
  return c.make + " " + c.model;
}

}  // namespace

frmPhotoInfo::frmPhotoInfo(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetKeyPreview(true);
  lblPhotoInfo.Move(kMargin, kHeadTop, kFormWidth - 2 * kMargin, 330);
  lblPhotoInfo.SetFontBold(true);
  lblPhotoInfo.SetCaption("Photo Information");
  fraPicCont.Move(kMargin, kFirstRow, kFrameSide, kFrameSide);
  imgInfoImage.SetContainer("fraPicCont");
  lblFileName.Move(kMargin, kFirstRow + kFrameSide + 90, kFrameSide,
                   kLabelHeight);
  lblFileName.SetAlignment(2);

  const std::vector<std::pair<Label*, const char*>> heads = {
      {&lblFileNameHead, "File Name:"},
      {&lblLocationHead, "Location:"},
      {&lblDateCreatedHead, "Date Created:"},
      {&lblDateModifiedHead, "Date Modified:"},
      {&lblDimensionsHead, "Dimensions:"},
      {&lblColorsHead, "Colors:"},
      {&lblFileSizeHead, "File Size:"},
      {&lblImageFormatHead, "Image Format:"},
      {&lblCameraHead, "Camera:"},
      {&lblDateTakenHead, "Date Taken:"},
      {&lblExposureHead, "Exposure:"},
      {&lblFocalLengthHead, "Focal Length:"},
      {&lblIsoHead, "ISO:"},
  };
  int top = kFirstRow;
  for (const auto& [label, caption] : heads) {
    label->Move(kHeadLeft, top, kHeadWidth, kLabelHeight);
    label->SetCaption(caption);
    top += kRowHeight;
  }
  txtFileName.Move(kValueLeft, kFirstRow - 45, kValueWidth, 300);
  Label* values[] = {
      &lblLocation,        &lbDispDateCreated,  &lblDispDateModified,
      &lbldispDimensions,  &lblDispColors,      &lblDispFilesSize,
      &lblDispImageFormat, &lblDispCamera,      &lblDispDateTaken,
      &lblDispExposure,    &lblDispFocalLength, &lblDispIso};
  top = kFirstRow + kRowHeight;
  for (Label* value : values) {
    value->Move(kValueLeft, top, kValueWidth, kLabelHeight);
    top += kRowHeight;
  }
  imgOK.Move(0, 0, kButtonWidth, kButtonHeight);
  imgCancel.Move(0, 0, kButtonWidth, kButtonHeight);

  On("txtFileName", "KeyPress", &frmPhotoInfo::txtFileName_KeyPress);
  On("txtFileName", "LostFocus", &frmPhotoInfo::txtFileName_LostFocus);
  On("imgOK", "Click", &frmPhotoInfo::imgOK_Click);
  On("imgCancel", "Click", &frmPhotoInfo::imgCancel_Click);
}

void frmPhotoInfo::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  WirePictureButton(*this, s, imgOK, kOkButton);
  WirePictureButton(*this, s, imgCancel, kCancelButton);

  auto& main = app_.forms().Get<frmMainWindow>();
  if (!main.GenerateThumbnail(s.gsSelectedImage)) {
    host().MsgBox(kThumbnailFailed, kMbStop, s.gsAppTitle);
  } else {
    // The thumbnail at its own size, in the middle of its frame.
    ImageOperations& images = app_.images();
    const int w = images.GetImageWidth(s.gsThumbnailPath) * kTwipsPerPixel;
    const int h = images.GetImageHeight(s.gsThumbnailPath) * kTwipsPerPixel;
    imgInfoImage.Move((kFrameSide - w) / 2, (kFrameSide - h) / 2, w, h);
    imgInfoImage.SetPicture(s.gsThumbnailPath);
  }
  FillFields();
  LayCameraRows();
}

void frmPhotoInfo::ShowDefImages() {
  const Session& s = app_.session();
  ShowButtonState(s, imgOK, kOkButton, kPictureNormal);
  ShowButtonState(s, imgCancel, kCancelButton, kPictureNormal);
}

void frmPhotoInfo::FillFields() {
  const Session& s = app_.session();
  const std::string& path = s.gsSelectedImage;
  ImageOperations& images = app_.images();
  const std::string base = BaseName(path);
  txtFileName.SetText(base);
  lblFileName.SetCaption(ShortenedName(base, kNameLabelCharacters));
  lblLocation.SetCaption(ParentFolder(path));

  const FileTimes times = TimesOf(path);
  if (times.ok) {
    lbDispDateCreated.SetCaption(LongDateTime(times.created));
    lblDispDateModified.SetCaption(LongDateTime(times.modified));
    const long long k = (times.bytes + kBytesPerK / 2) / kBytesPerK;
    lblDispFilesSize.SetCaption(std::to_string(k) + "k");
  }
  lbldispDimensions.SetCaption(
      std::to_string(images.GetImageWidth(path)) + "(w) x " +
      std::to_string(images.GetImageHeight(path)) + "(h)");
  lblDispColors.SetCaption(std::to_string(images.GetBitRate(path)) + " bit (" +
                           std::to_string(images.GetNoOfColors(path)) +
                           ") RGB");
  lblDispImageFormat.SetCaption(ImageKindName(SniffPhotoFile(path)));

  const CameraFacts camera = images.GetCameraFacts(path);
  lblDispCamera.SetCaption(CameraName(camera));
  lblDispDateTaken.SetCaption(LongDateTimeOfExif(camera.date_taken));
  lblDispExposure.SetCaption(Exposure(camera));
  lblDispFocalLength.SetCaption(FocalLength(camera.focal_length_mm));
  lblDispIso.SetCaption(camera.iso > 0 ? std::to_string(camera.iso) : "");
}

void frmPhotoInfo::LayCameraRows() {
  const std::pair<Label*, Label*> rows[] = {
      {&lblCameraHead, &lblDispCamera},
      {&lblDateTakenHead, &lblDispDateTaken},
      {&lblExposureHead, &lblDispExposure},
      {&lblFocalLengthHead, &lblDispFocalLength},
      {&lblIsoHead, &lblDispIso},
  };
  int top = lblDispImageFormat.Top() + kRowHeight;
  for (const auto& [head, value] : rows) {
    const bool shown = !value->Caption().empty();
    head->SetVisible(shown);
    value->SetVisible(shown);
    if (shown) {
      head->SetTop(top);
      value->SetTop(top);
      top += kRowHeight;
    }
  }
  const int under_picture = lblFileName.Top() + kLabelHeight;
  const int buttons_top = std::max(top, under_picture) + 240;
  imgCancel.Move(kFormWidth - kMargin - kButtonWidth, buttons_top, kButtonWidth,
                 kButtonHeight);
  imgOK.Move(imgCancel.Left() - 120 - kButtonWidth, buttons_top, kButtonWidth,
             kButtonHeight);
  const int height = buttons_top + kButtonHeight + 300;
  Move((host().ScreenWidth() - kFormWidth) / 2,
       (host().ScreenHeight() - height) / 2, kFormWidth, height);
}

void frmPhotoInfo::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    imgCancel_Click();
  }
}

void frmPhotoInfo::txtFileName_KeyPress(EventArgs& e) {
  const int key = e.KeyAscii;
  switch (key) {
    case kCtrlA:
      e.KeyAscii = 0;
      txtFileName.SetSelStart(0);
      txtFileName.SetSelLength(static_cast<int>(txtFileName.Text().size()));
      return;
    case kCtrlC:
    case kCtrlV:
    case kCtrlX:
    case kKeyBack:
    case kKeyReturn:
      return;
    default:
      break;
  }
  if (!IsValidFileNameKey(key)) {
    e.KeyAscii = 0;
    host().MsgBox(std::string(kFileNameRuleMessage), kMbInformation,
                  app_.session().gsAppTitle);
  }
}

void frmPhotoInfo::txtFileName_LostFocus() {
  if (HoldsRefusedCharacter(txtFileName.Text())) {
    host().MsgBox(std::string(kFileNameRuleMessage), kMbInformation,
                  app_.session().gsAppTitle);
  }
}

void frmPhotoInfo::imgOK_Click() {
  Session& s = app_.session();
  const std::string name = Trim(txtFileName.Text());
  if (name.empty()) {
    host().MsgBox(kEnterName, kMbInformation, s.gsAppTitle);
    return;
  }
  if (name == "." || HoldsRefusedCharacter(name)) {
    host().MsgBox(
        "A file name cannot contain any of the following characters \r\n"
        "\\ / : * ? \" < > |",
        kMbInformation, s.gsAppTitle);
    return;
  }
  const std::string old_path = s.gsSelectedImage;
  const std::string base = BaseName(old_path);
  if (name == base) {
    Unload();
    return;
  }
  // The photo's own folder: a photo opened from the command line may lie
  // outside the folder the grid shows.
  const std::string folder = ParentFolder(old_path);
  const std::string new_path = folder + name + "." + ExtensionOf(old_path);
  struct stat status {};
  if (::lstat(new_path.c_str(), &status) == 0) {
    host().MsgBox(kNameExists, kMbInformation, s.gsAppTitle);
    return;
  }
  // The check answers for a read-only mount too.
  if (s.gbHasAccessChecks &&
      CheckAccess(folder, kFileGenericWrite) != kFileGenericWrite) {
    host().MsgBox(AccessDenied(base), kMbStop, s.gsAppTitle);
    return;
  }
  // The main window's rename moves the file without replacing one, and
  // gives the thumbnail, the photo list and the selection the new path.
  app_.forms().Get<frmMainWindow>().RenamePhoto(name);
  if (s.gsSelectedImage == old_path &&
      UpperCase(new_path) != UpperCase(old_path)) {
    return;  // it said why; the name stays in the box
  }
  Unload();
}

void frmPhotoInfo::imgCancel_Click() {
  Unload();
}

}  // namespace qbpd
