#include "online/frm_share_congrats.h"

#include "core/button_pictures.h"
#include "core/settings.h"
#include "core/web_links.h"
#include "online/online_common.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 5400;
constexpr int kFormHeight = 4560;
constexpr int kMargin = 240;
constexpr int kLineHeight = 240;
constexpr int kListTop = 1860;
constexpr std::string_view kOkButton = "26";

}  // namespace

std::string ShareRecipientLines(const std::vector<std::string>& emails,
                                size_t length) {
  std::string out;
  for (const std::string& email : emails) {
    if (email.empty()) {
      continue;
    }
    std::string lower = email;
    for (char& c : lower) {
      if (c >= 'A' && c <= 'Z') {
        c = static_cast<char>(c - 'A' + 'a');
      }
    }
    for (size_t at = 0; at < lower.size(); at += length) {
      out += (out.empty() ? "" : "\n") + lower.substr(at, length);
    }
  }
  return out;
}

frmShareCongrats::frmShareCongrats(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  Move(0, 0, kFormWidth, kFormHeight);
  imgQuillbayLogo.Move(kFormWidth - kMargin - 1800, kMargin, 1800, 360);
  lblCongratulations.Move(kMargin, 720, kFormWidth - 2 * kMargin, 360);
  lblCongratulations.SetFontBold(true);
  lblCongratulations.SetCaption("congratulations!");
  lblShared.Move(kMargin, 1140, kFormWidth - 2 * kMargin, 255);
  lblShared.SetCaption("Your photos have been shared.");
  lblSharedWith.Move(kMargin, 1560, 1500, 255);
  lblSharedWith.SetCaption("shared with:");
  lblMailId.Move(1800, kListTop, 3300, 0);
  lblMailId.SetWordWrap(true);
  lblYourAlbum.Move(kMargin, kListTop + 180, 1500, 255);
  lblYourAlbum.SetCaption("your album :");
  lblAlbumName.Move(1800, kListTop + 180, 3300, 255);
  lblWouldYou.Move(kMargin, kListTop + 660, kFormWidth - 2 * kMargin, 255);
  lblWouldYou.SetCaption("Would you like to :");
  lblOrdPrintsLink.Move(kMargin + 240, kListTop + 1020, 600, 255);
  lblOrdPrintsLink.SetCaption("order");
  lblQualityPrints.Move(kMargin + 900, kListTop + 1020, 3000, 255);
  lblQualityPrints.SetCaption("Quillbay quality prints");
  imgOK.Move((kFormWidth - 1200) / 2, kListTop + 1620, 1200, 390);
  Field("mbListed", mbListed);
  On("lblOrdPrintsLink", "Click", &frmShareCongrats::lblOrdPrintsLink_Click);
  On("imgOK", "Click", &frmShareCongrats::imgOK_Click);
}

void frmShareCongrats::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  ShowButtonState(s, imgOK, kOkButton, kPictureNormal);
  imgQuillbayLogo.SetPicture(ButtonPicture(s, "G5"));
  lblAlbumName.SetCaption(s.gsAlbumName);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
}

void frmShareCongrats::Form_Activate() {
  Session& s = app_.session();
  ResetShareTexts(app_);
  s.gsShareRecipients.clear();
  s.gsAlbumName.clear();
  if (mbListed) {
    return;
  }
  // The list and everything below it move once, however often the window
  // comes forward again.
  mbListed = true;
  const std::string lines =
      ShareRecipientLines(s.gasShareEmails, static_cast<size_t>(kLineLength));
  int count = lines.empty() ? 0 : 1;
  for (char c : lines) {
    count += c == '\n' ? 1 : 0;
  }
  const int grow = count * kLineHeight;
  lblMailId.SetCaption(lines);
  lblMailId.SetHeight(grow);
  for (Control* below : {static_cast<Control*>(&lblYourAlbum),
                         static_cast<Control*>(&lblAlbumName),
                         static_cast<Control*>(&lblWouldYou),
                         static_cast<Control*>(&lblOrdPrintsLink),
                         static_cast<Control*>(&lblQualityPrints),
                         static_cast<Control*>(&imgOK)}) {
    below->SetTop(below->Top() + grow);
  }
  SetHeight(Height() + grow);
}

void frmShareCongrats::Form_Unload(int& Cancel) {
  (void)Cancel;
  app_.session().gsAlbumId.clear();
}

void frmShareCongrats::lblOrdPrintsLink_Click() {
  const Session& s = app_.session();
  if (TrimSpaces(s.gsAuthCode).empty() || TrimSpaces(s.gsAlbumId).empty()) {
    return;
  }
  std::string url = s.gsSiteAddress;
  url.append("/thumbnailshare/AlbumID=").append(s.gsAlbumId);
  url.append("/u_=").append(s.gsAuthCode);
  OpenInBrowser(app_, url);
}

void frmShareCongrats::imgOK_Click() {
  Unload();
}

}  // namespace qbpd
