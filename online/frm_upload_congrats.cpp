#include "online/frm_upload_congrats.h"

#include "core/button_pictures.h"
#include "core/settings.h"
#include "core/web_links.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 6000;
constexpr int kFormHeight = 3900;
constexpr int kOrder = 13;
constexpr int kAboveResult = 75;
constexpr std::string_view kOkButton = "26";
constexpr long kLinkColour = 0xC04000;

}  // namespace

frmUploadCongrats::frmUploadCongrats(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblCongratulations.Move(240, 240, kFormWidth - 480, 300);
  lblCongratulations.SetFontBold(true);
  lblCongratulations.SetCaption("congratulations!");
  lblPhotosUploaded.Move(240, 615, kFormWidth - 480, 480);
  lblPhotosUploaded.SetWordWrap(true);
  lblAlbumHead.Move(240, 1200, 900, 255);
  lblAlbumHead.SetCaption("album:");
  lblAlbumName.Move(1140, 1200, kFormWidth - 1380, 255);
  lblAlbumName.SetFontBold(true);
  shpView.Move(240, 1680, kFormWidth - 480, 1200);
  int row = 1800;
  for (auto [link, text] : {std::pair{&lblViewLink, &lblView},
                            std::pair{&lblOrdPrintsLink, &lblOrdPrints},
                            std::pair{&lblShareLink, &lblShare}}) {
    link->Move(480, row, 600, 255);
    link->SetForeColor(kLinkColour);
    text->Move(1080, row, kFormWidth - 1380, 255);
    row += 360;
  }
  imgOK.Move((kFormWidth - 1200) / 2, 3120, 1200, 390);
  On("lblViewLink", "Click", &frmUploadCongrats::lblViewLink_Click);
  On("lblOrdPrintsLink", "Click", &frmUploadCongrats::lblOrdPrintsLink_Click);
  On("lblShareLink", "Click", &frmUploadCongrats::lblShareLink_Click);
  On("imgOK", "Click", &frmUploadCongrats::imgOK_Click);
}

void frmUploadCongrats::Form_Load() {
  const Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  ShowButtonState(s, imgOK, kOkButton, kPictureNormal);
  const bool order = s.giCurrentOperation == kOrder;
  lblAlbumName.SetCaption(s.gsAlbumName);
  if (s.giUploadedCount >= s.giUploadTotal) {
    lblPhotosUploaded.SetCaption(
        order ? "Your order has been received."
              : "Your photos have been successfully added to your online "
                "album.");
    lblCongratulations.SetVisible(true);
    lblCongratulations.SetTop(lblPhotosUploaded.Top() - kAboveResult -
                              lblCongratulations.Height());
  } else {
    lblCongratulations.SetVisible(false);
    if (!s.gbUploadCancelled) {
      lblPhotosUploaded.SetCaption(
          s.gbFileMissing
              ? "Sorry, some images could not be uploaded as they are not "
                "exists in your computer."
              : "Sorry, some images could not be uploaded due to internet "
                "connectivity problem.");
    }
  }
  if (!order) {
    lblOrdPrints.SetCaption(" Quillbay quality prints.");
    lblOrdPrintsLink.SetCaption("order");
    lblView.SetCaption(" your album online.");
    lblViewLink.SetCaption("view");
    lblView.SetVisible(true);
    lblViewLink.SetVisible(true);
    lblShare.SetCaption(" your photos with family && friends.");
    lblShareLink.SetCaption("share");
    lblShare.SetVisible(true);
    lblShareLink.SetVisible(true);
  } else {
    lblOrdPrints.SetCaption(" reciept of this order");
    lblOrdPrintsLink.SetCaption("view");
    lblViewLink.SetVisible(false);
    lblView.SetVisible(false);
    shpView.SetVisible(false);
    lblAlbumHead.SetVisible(false);
    lblAlbumName.SetVisible(false);
  }
}

void frmUploadCongrats::Form_Unload(int& Cancel) {
  (void)Cancel;
  Session& s = app_.session();
  s.gsAlbumId.clear();
  s.gsAlbumName.clear();
}

std::string frmUploadCongrats::AlbumUrl() const {
  const Session& s = app_.session();
  std::string url = s.gsSiteAddress;
  url.append("/thumbnailshare/AlbumID=").append(s.gsAlbumId);
  url.append("/u_=").append(s.gsAuthCode);
  return url;
}

std::string frmUploadCongrats::ShareUrl() const {
  const Session& s = app_.session();
  std::string url = s.gsSiteAddress;
  url.append("/addressbook/AlbumID=").append(s.gsAlbumId);
  url.append("/u_=").append(s.gsAuthCode);
  return url;
}

std::string frmUploadCongrats::OrderUrl() const {
  const Session& s = app_.session();
  std::string url = s.gsSiteAddress;
  url.append("/orderstatus/o=").append(s.gsOrderId);
  url.append("/u_=").append(s.gsAuthCode);
  return url;
}

bool frmUploadCongrats::LinksActive() const {
  const Session& s = app_.session();
  return !TrimSpaces(s.gsAuthCode).empty() && !TrimSpaces(s.gsAlbumId).empty();
}

void frmUploadCongrats::lblViewLink_Click() {
  if (LinksActive()) {
    OpenInBrowser(app_, AlbumUrl());
  }
}

void frmUploadCongrats::lblOrdPrintsLink_Click() {
  if (!LinksActive()) {
    return;
  }
  OpenInBrowser(app_, app_.session().giCurrentOperation == kOrder ? OrderUrl()
                                                                  : AlbumUrl());
}

void frmUploadCongrats::lblShareLink_Click() {
  if (LinksActive()) {
    OpenInBrowser(app_, ShareUrl());
  }
}

void frmUploadCongrats::imgOK_Click() {
  Unload();
}

}  // namespace qbpd
