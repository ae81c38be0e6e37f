#include "online/frm_share_info.h"

#include "browser/frm_main_window.h"
#include "core/button_pictures.h"
#include "core/quil_mod.h"
#include "core/settings.h"
#include "core/validations.h"
#include "core/web_links.h"
#include "online/album_name.h"
#include "online/client_factory.h"
#include "online/frm_web_content.h"
#include "online/online_common.h"
#include "platform/forms/keys.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace qbpd {
namespace {

constexpr int kFormWidth = 10200;
constexpr int kFormHeight = 7260;
constexpr int kMargin = 240;
constexpr int kLabelWidth = 1200;
constexpr int kFieldLeft = kMargin + kLabelWidth;
constexpr int kFieldWidth = 5100;
constexpr int kFieldHeight = 315;
constexpr int kPreviewLeft = 7200;
constexpr int kPreviewTop = 1560;
constexpr int kPreviewWidth = 2760;
constexpr int kPreviewHeight = 4560;
constexpr int kScrollWidth = 255;
constexpr int kThumbSide = 1200;
constexpr int kThumbGap = 60;
constexpr int kRowHeight = kThumbSide + kThumbGap;
constexpr int kShortNameLength = 13;
constexpr int kShownNameLength = 10;
constexpr std::string_view kContinueButton = "26";
constexpr std::string_view kCancelButton = "25";
constexpr std::string_view kAddressBookButton = "8";
constexpr char kEnterRecipients[] = "Please enter the email id's to share";
constexpr char kValidRecipients[] = "Please enter valid email id's to share";
constexpr char kEnterAlbum[] = "Please enter album name";
constexpr char kAlbumRule[] =
    "Please enter valid characters (alphanumeric, special characters, ', \", "
    "!, -, ., :, ;,?, #, &, %, $, +, *, ), (, /, , <, =, >, @, [, \\, ], ^, _ "
    ", space and comma ) for album name ";
constexpr char kToWithBook[] =
    "Enter email addresses seperated by commas or add from ";
constexpr char kToWithoutBook[] = "Enter email addresses seperated by commas ";

std::string ReplaceAll(std::string text,
                       std::string_view from,
                       std::string_view to) {
  size_t at = 0;
  while ((at = text.find(from, at)) != std::string::npos) {
    text.replace(at, from.size(), to);
    at += to.size();
  }
  return text;
}

std::string Lower(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c - 'A' + 'a');
    }
  }
  return text;
}

// The byte offsets of the first `count` characters of UTF-8 `text`; a byte
// that starts no sequence counts as a character of its own.
size_t CharacterBytes(const std::string& text, size_t count) {
  size_t at = 0;
  for (size_t n = 0; n < count && at < text.size(); ++n) {
    ++at;
    while (at < text.size() &&
           (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) {
      ++at;
    }
  }
  return at;
}

size_t CharacterCount(const std::string& text) {
  size_t count = 0;
  for (unsigned char c : text) {
    if ((c & 0xC0) != 0x80) {
      ++count;
    }
  }
  return count;
}

}  // namespace

std::vector<std::string> SplitRecipients(const std::string& text) {
  std::string list = ReplaceAll(text, ";", ",");
  if (!list.empty() && list.back() == ',') {
    list.pop_back();
  }
  std::vector<std::string> out;
  if (list.find(',') == std::string::npos) {
    out.push_back(list);
    return out;
  }
  std::vector<std::string> lowered;
  size_t at = 0;
  while (true) {
    const size_t comma = list.find(',', at);
    const std::string part = TrimSpaces(list.substr(at, comma - at));
    const std::string lower = Lower(part);
    if (!part.empty() &&
        std::find(lowered.begin(), lowered.end(), lower) == lowered.end()) {
      out.push_back(part);
      lowered.push_back(lower);
    }
    if (comma == std::string::npos) {
      break;
    }
    at = comma + 1;
  }
  return out;
}

std::string EncodeShareText(const std::string& text) {
  std::string out = ReplaceAll(text, "&", "&amp;");
  out = ReplaceAll(out, "<", "&lt;");
  return ReplaceAll(out, ">", "&gt;");
}

std::string PreviewAlbumName(const std::string& name) {
  if (CharacterCount(name) < kShortNameLength) {
    return name;
  }
  return name.substr(0, CharacterBytes(name, kShownNameLength)) + "..";
}

frmShareInfo::frmShareInfo(Application& app)
    : Form(app.host(), std::string(kName)),
      app_(app),
      ExtAPI_(NewServiceClient(app)) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblHeading.Move(kMargin, kMargin, 4800, 360);
  lblHeading.SetFontBold(true);
  lblHeading.SetCaption("share your photos");
  imgQuillbayLogo.Move(kFormWidth - kMargin - 1800, kMargin, 1800, 360);
  lblFrom.Move(kMargin, 840, kLabelWidth, kFieldHeight);
  lblFrom.SetCaption("from:");
  lblFromText.Move(kFieldLeft, 840, kFieldWidth, kFieldHeight);
  lblTo.Move(kMargin, 1260, kLabelWidth, kFieldHeight);
  lblTo.SetCaption("to:");
  lblToText.Move(kFieldLeft, 1260, 4200, kFieldHeight);
  imgAddressBook.Move(kFieldLeft + 4260, 1200, 1800, 450);
  txtTo.Move(kFieldLeft, 1680, kFieldWidth, 600);
  txtTo.SetMultiLine(true);
  lblSubject.Move(kMargin, 2460, kLabelWidth, kFieldHeight);
  lblSubject.SetCaption("subject:");
  txtSubject.Move(kFieldLeft, 2430, kFieldWidth, kFieldHeight);
  lblMessage.Move(kMargin, 2940, kLabelWidth, kFieldHeight);
  lblMessage.SetCaption("message:");
  txtMessage.Move(kFieldLeft, 2910, kFieldWidth, 1200);
  txtMessage.SetMultiLine(true);
  lblAlbum.Move(kMargin, 4320, kLabelWidth, kFieldHeight);
  lblAlbum.SetCaption("album name:");
  txtAlbum.Move(kFieldLeft, 4290, kFieldWidth, kFieldHeight);
  optFullAccess.Move(kMargin, 4860, 5400, kFieldHeight);
  optFullAccess.SetCaption(
      "Give my friends' full access to the photos in this album. ");
  lblMoreInfo.Move(kMargin + 5460, 4860, 1200, kFieldHeight);
  lblMoreInfo.SetCaption("more info...");
  optRestrict.Move(kMargin, 5280, 5400, kFieldHeight);
  optRestrict.SetCaption(
      "Restrict my friends' access to the photos in this album.");
  lblMoreInfoRestrict.Move(kMargin + 5460, 5280, 1200, kFieldHeight);
  lblMoreInfoRestrict.SetCaption("more info...");
  lblPrivacyPolicy.Move(kMargin, 5820, 1800, kFieldHeight);
  lblPrivacyPolicy.SetCaption("Privacy Policy");
  lblHelp.Move(kMargin + 1920, 5820, 900, kFieldHeight);
  lblHelp.SetCaption("help");
  imgContinue.Move(kFieldLeft + 1800, 6420, 1200, 390);
  imgCancel.Move(kFieldLeft + 3240, 6420, 1200, 390);

  lblLeftAlbum.Move(kPreviewLeft, 840, 1200, kFieldHeight);
  lblLeftAlbum.SetCaption("album:");
  lblLeftAlbumVal.Move(kPreviewLeft + 1200, 840, kPreviewWidth - 1200,
                       kFieldHeight);
  lblPhotosSelect.Move(kPreviewLeft, 1200, kPreviewWidth, kFieldHeight);
  picImageListCont.Move(kPreviewLeft, kPreviewTop, kPreviewWidth,
                        kPreviewHeight);
  picImageListInner.SetContainer("picImageListCont");
  picImageListInner.Move(0, 0, kPreviewWidth - kScrollWidth, kPreviewHeight);
  ctrlQuilImage[0].SetContainer("picImageListInner");
  ctrlQuilImage[0].Move(kThumbGap, kThumbGap, kThumbSide, kThumbSide);
  ctrlQuilImage[0].SetVisible(false);
  ctrlImageListVScroll.SetContainer("picImageListCont");
  ctrlImageListVScroll.Move(kPreviewWidth - kScrollWidth, 0, kScrollWidth,
                            kPreviewHeight);
  ctrlImageListVScroll.SetVisible(false);
  SetKeyPreview(true);
  On("txtAlbum", "Change", &frmShareInfo::txtAlbum_Change);
  On("ctrlImageListVScroll", "Change",
     &frmShareInfo::ctrlImageListVScroll_Change);
  On("ctrlImageListVScroll", "Scroll",
     &frmShareInfo::ctrlImageListVScroll_Change);
  On("lblMoreInfo", "Click", &frmShareInfo::lblMoreInfo_Click);
  On("lblMoreInfoRestrict", "Click", &frmShareInfo::lblMoreInfoRestrict_Click);
  On("lblPrivacyPolicy", "Click", &frmShareInfo::lblPrivacyPolicy_Click);
  On("lblHelp", "Click", &frmShareInfo::lblHelp_Click);
  On("imgQuillbayLogo", "Click", &frmShareInfo::imgQuillbayLogo_Click);
  On("imgAddressBook", "Click", &frmShareInfo::imgAddressBook_Click);
  On("imgCancel", "Click", &frmShareInfo::imgCancel_Click);
  On("imgContinue", "Click", &frmShareInfo::imgContinue_Click);
}

void frmShareInfo::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  ShowButtonState(s, imgContinue, kContinueButton, kPictureNormal);
  ShowButtonState(s, imgCancel, kCancelButton, kPictureNormal);
  ShowButtonState(s, imgAddressBook, kAddressBookButton, kPictureNormal);
  imgQuillbayLogo.SetPicture(ButtonPicture(s, "G5"));
  // A share always makes a new album, whose id the first upload gives back;
  // an id left from an earlier run would send these photos to that album's
  // recipients.
  s.gsAlbumId.clear();
  CollectPhotos();
  auto name = [&s](size_t i) {
    return i < s.gsaUserName.size() ? s.gsaUserName[i] : std::string();
  };
  lblFromText.SetCaption(name(1) + " " + name(2) + " <" + name(0) + ">");
  txtSubject.SetText(s.gsShareSubject);
  txtMessage.SetText(s.gsShareMessage);
  txtTo.SetText(s.gsShareRecipients);
  if (!s.gsAlbumName.empty()) {
    txtAlbum.SetText(s.gsAlbumName);
  } else {
    const auto today = std::chrono::floor<std::chrono::days>(host().Now());
    const std::chrono::year_month_day date{today};
    char text[16];
    std::snprintf(text, sizeof text, "%02u/%02u",
                  static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()));
    txtAlbum.SetText(std::string("album ") + text);
  }
  txtAlbum_Change();
  optFullAccess.SetValue(true);
  StringArray emails;
  msErrCode.clear();
  msErrText.clear();
  if (ExtAPI_->GetAddressBook(s.gsSiteUrl, s.gsAuthCode, emails, msErrCode,
                              msErrText)) {
    imgAddressBook.SetVisible(true);
    lblToText.SetCaption(kToWithBook);
  } else {
    imgAddressBook.SetVisible(false);
    lblToText.SetCaption(kToWithoutBook);
  }
  LayOutPreview();
}

void frmShareInfo::CollectPhotos() {
  Session& s = app_.session();
  s.gcolOrderPhotos = KeyedCollection<std::string>();
  for (int key : s.gdicSelectedPhotos.Keys()) {
    const std::string path = s.gdicSelectedPhotos.Item(key);
    if (FileExists(path) && UpperCase(path) != "DELETED") {
      s.gcolOrderPhotos.Add(path, std::to_string(key));
    }
  }
}

void frmShareInfo::LayOutPreview() {
  Session& s = app_.session();
  auto* main = app_.forms().Find<frmMainWindow>();
  const int count = s.gcolOrderPhotos.Count();
  for (int i = 0; i < count; ++i) {
    Thumbnail& thumb = i == 0 ? ctrlQuilImage[0] : ctrlQuilImage.Load(i);
    thumb.Move(kThumbGap + (i % kPreviewColumns) * (kThumbSide + kThumbGap),
               kThumbGap + (i / kPreviewColumns) * kRowHeight, kThumbSide,
               kThumbSide);
    const std::string& path = s.gcolOrderPhotos.Item(i + 1);
    thumb.SetPhotoPath(path);
    thumb.SetToolText(path);
    if (main != nullptr && main->GenerateThumbnail(path)) {
      thumb.LoadThumbnail(s.gsThumbnailPath);
    }
    thumb.SetVisible(true);
  }
  lblPhotosSelect.SetCaption(std::to_string(count) + " photo(s)");
  const int rows = (count + kPreviewColumns - 1) / kPreviewColumns;
  const int inner = std::max(kPreviewHeight, rows * kRowHeight + kThumbGap);
  picImageListInner.Move(0, 0, kPreviewWidth - kScrollWidth, inner);
  const bool scrolls = inner > kPreviewHeight;
  ctrlImageListVScroll.SetVisible(scrolls);
  if (scrolls) {
    ctrlImageListVScroll.SetMin(0);
    ctrlImageListVScroll.SetMax(inner - kPreviewHeight);
    ctrlImageListVScroll.SetSmallChange(kRowHeight / 4);
    ctrlImageListVScroll.SetLargeChange(kRowHeight);
    ctrlImageListVScroll.SetValue(0);
  }
}

void frmShareInfo::ctrlImageListVScroll_Change() {
  picImageListInner.SetTop(-ctrlImageListVScroll.Value());
}

void frmShareInfo::Form_Activate() {
  if (app_.session().gbUserCancelled) {
    Unload();
  }
}

void frmShareInfo::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    imgCancel_Click();
  }
}

void frmShareInfo::txtAlbum_Change() {
  lblLeftAlbumVal.SetCaption(PreviewAlbumName(txtAlbum.Text()));
}

void frmShareInfo::ShowPage(const std::string& heading,
                            const std::string& page) {
  app_.forms().Get<frmWebContent>().ShowPage(heading, page);
}

void frmShareInfo::lblMoreInfo_Click() {
  ShowPage("more info...", "With full access.htm");
}

void frmShareInfo::lblMoreInfoRestrict_Click() {
  ShowPage("more info...", "With restrict access.htm");
}

void frmShareInfo::lblPrivacyPolicy_Click() {
  ShowPage("Privacy Policy", "Privacy Policy.htm");
}

void frmShareInfo::lblHelp_Click() {
  host().SendKeys("{F1}");
}

void frmShareInfo::imgQuillbayLogo_Click() {
  OpenServiceHome(app_);
}

void frmShareInfo::imgAddressBook_Click() {
  app_.forms().Get("frmAddressBook").Show(/*modal=*/true);
}

void frmShareInfo::AppendRecipients(const std::string& emails) {
  std::string text = txtTo.Text();
  if (!text.empty() && text.back() != ',') {
    text += ", ";
  }
  txtTo.SetText(text + emails);
}

void frmShareInfo::imgCancel_Click() {
  Session& s = app_.session();
  ResetShareTexts(app_);
  s.gsShareRecipients.clear();
  s.gsAlbumName.clear();
  Unload();
}

void frmShareInfo::Refuse(const std::string& text, TextBox& box) {
  host().MsgBox(text, kMbInformation, app_.session().gsAppTitle);
  box.SetFocus();
}

void frmShareInfo::imgContinue_Click() {
  Session& s = app_.session();
  const std::string to = TrimSpaces(txtTo.Text());
  if (to.empty()) {
    Refuse(kEnterRecipients, txtTo);
    return;
  }
  const std::vector<std::string> emails = SplitRecipients(to);
  if (emails.empty()) {
    host().MsgBox(kValidRecipients, kMbInformation, s.gsAppTitle);
    txtTo.SetFocus();
    txtTo.SetSelStart(0);
    txtTo.SetSelLength(static_cast<int>(txtTo.Text().size()));
    return;
  }
  s.gasShareEmails = emails;
  for (const std::string& address : emails) {
    for (unsigned char c : address) {
      int key = c;
      std::string message;
      if (!IsValidEmail(key, address, message)) {
        Refuse(message, txtTo);
        return;
      }
    }
  }
  const std::string album = TrimSpaces(txtAlbum.Text());
  if (album.empty()) {
    Refuse(kEnterAlbum, txtAlbum);
    return;
  }
  if (!IsValidAlbumName(album)) {
    Refuse(kAlbumRule, txtAlbum);
    return;
  }
  s.gsAlbumName = album;
  s.gsShareSubject = EncodeShareText(TrimSpaces(txtSubject.Text()));
  s.gsShareMessage = EncodeShareText(TrimSpaces(txtMessage.Text()));
  s.gsShareRecipients = to;
  s.gsShareAccess = optFullAccess.Value() ? "1" : "0";
  if (TrimSpaces(txtTo.Text()).empty()) {
    Refuse(kEnterRecipients, txtTo);
    return;
  }
  Unload();
  app_.forms().Get("frmUploadImgs").Show(/*modal=*/true);
}

}  // namespace qbpd
