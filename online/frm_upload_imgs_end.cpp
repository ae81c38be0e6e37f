// The transfer screen's ends: the final step of each action after the loop,
// and the cancel by the button, by the cancel step and by the close box.
#include "core/button_pictures.h"
#include "online/frm_upload_imgs.h"
#include "online/online_common.h"

namespace qbpd {
namespace {

constexpr int kPauseMs = 1000;
constexpr std::string_view kCancelButton = "25";

}  // namespace

void frmUploadImgs::FinishUpload() {
  Session& s = app_.session();
  NormalPointer();
  TextGrid albums;
  msErrCode.clear();
  msErrText.clear();
  (void)ExtAPI_->GetAlbumList(s.gsSiteUrl, s.gsAuthCode, albums, msErrCode,
                              msErrText);
  if (mbCancelRequested) {
    Unload();
    return;
  }
  Form& congrats = app_.forms().Get("frmUploadCongrats");
  mbFinished = true;
  congrats.Show(/*modal=*/true);
  NormalPointer();
  Unload();
}

void frmUploadImgs::FinishShare() {
  Session& s = app_.session();
  host().SetMousePointer(kPointerHourglass);
  std::string accepted;
  msErrCode.clear();
  msErrText.clear();
  const bool ok =
      ExtAPI_->ShareAlbum(s.gsSiteUrl, s.gsAuthCode, s.gsAlbumId,
                          s.gasShareEmails, s.gsShareSubject, s.gsShareMessage,
                          s.gsShareAccess, accepted, msErrCode, msErrText);
  NormalPointer();
  if (mbCancelRequested) {
    tmrCheck_Timer();
    return;
  }
  if (!ok) {
    host().MsgBox(msErrCode == kErrServiceFailed
                      ? std::string("There is some problem with the server, "
                                    "please try after some time...")
                      : msErrText + ", Unable to share the photos.",
                  kMbStop, s.gsAppTitle);
    Unload();
    return;
  }
  if (accepted.empty()) {
    host().MsgBox("Unable to share the photos as given emails are invalid.",
                  kMbStop, s.gsAppTitle);
    Unload();
    return;
  }
  for (std::string& email : s.gasShareEmails) {
    email.clear();
  }
  size_t at = 0;
  size_t i = 0;
  while (true) {
    const size_t comma = accepted.find(',', at);
    const std::string part = accepted.substr(at, comma - at);
    if (i < s.gasShareEmails.size()) {
      s.gasShareEmails[i] = part;
    } else {
      s.gasShareEmails.push_back(part);
    }
    ++i;
    if (comma == std::string::npos) {
      break;
    }
    at = comma + 1;
  }
  if (app_.forms().IsRegistered("frmShareCongrats")) {
    Form& congrats = app_.forms().Get("frmShareCongrats");
    mbFinished = true;
    congrats.Show(/*modal=*/true);
  }
  Unload();
}

void frmUploadImgs::OrderFailed(const std::string& text) {
  NormalPointer();
  host().MsgBox(text, kMbStop, app_.session().gsAppTitle);
  Unload();
}

void frmUploadImgs::FinishOrder() {
  Session& s = app_.session();
  host().SetMousePointer(kPointerHourglass);
  if (mbCancelRequested) {
    tmrCheck_Timer();
    return;
  }
  msErrCode.clear();
  msErrText.clear();
  TextDictionary photos;
  const bool listed = ExtAPI_->GetAlbumPhotos(
      s.gsSiteUrl, s.gsAuthCode, s.gsAlbumId, photos, msErrCode, msErrText);
  if (mbCancelRequested) {
    tmrCheck_Timer();
    return;
  }
  if (!listed || photos.Count() != s.gcolOrderPhotos.Count()) {
    OrderFailed("Unable to order the prints for printing.");
    return;
  }
  mdicOrderIndex = photos;
  mOrder.gdicOrderIndex = photos;
  msErrCode.clear();
  msErrText.clear();
  const bool placed = ExtAPI_->PlaceOrder(
      s.gsSiteUrl, s.gsAuthCode, s.gsUserCode, s.gsCouponCode,
      mOrder.gcolOrderLines, mOrder.gdicOrderIndex, mOrder.gsaSizeTotals,
      mOrder.gsaFreePrints, s.gsOrderId, mOrder.msShipping, mOrder.gsaOrderTax,
      mOrder.gsaCouponResult, mOrder.mdCostOfPrints, mdOrderTotal, msErrCode,
      msErrText, mOrder.gbShipToOther ? &mOrder.gsaShipTo : nullptr);
  if (mbCancelRequested) {
    tmrCheck_Timer();
    return;
  }
  if (!placed) {
    OrderFailed("Unable to order the photos for printing");
    return;
  }
  msErrCode.clear();
  msErrText.clear();
  const bool confirmed =
      ExtAPI_->ConfirmOrder(s.gsSiteUrl, s.gsAuthCode, s.gsOrderId,
                            s.gsCouponCode, msErrCode, msErrText);
  if (mbCancelRequested) {
    tmrCheck_Timer();
    return;
  }
  if (!confirmed) {
    OrderFailed("Unable to order the photos for printing\n" + msErrText);
    return;
  }
  NormalPointer();
  Form& congrats = app_.forms().Get("frmUploadCongrats");
  mbFinished = true;
  congrats.Show(/*modal=*/true);
  NormalPointer();
  Unload();
}

void frmUploadImgs::ResetShareValues() {
  Session& s = app_.session();
  ResetShareTexts(app_);
  s.gsShareRecipients.clear();
  s.gsAlbumName.clear();
}

void frmUploadImgs::imgCancelconn_Click() {
  Session& s = app_.session();
  mbCancelRequested = true;
  ShowButtonState(s, imgCancelconn, kCancelButton, kPicturePressed);
  ResetShareValues();
  if (!ExtAPI_->IsBusy()) {
    host().Sleep(kPauseMs);
    s.gbUserCancelled = true;
    mbCancelRequested = true;
    Unload();
    return;
  }
  ExtAPI_->CancelRequest(true);
  tmrCheck.SetEnabled(true);
}

void frmUploadImgs::tmrCheck_Timer() {
  Session& s = app_.session();
  if (!mbCancelRequested || !ExtAPI_->IsCancelled()) {
    return;
  }
  s.gbUploadCancelled = true;
  if (s.giUploadedCount > 0) {
    s.gsInfoHead = s.giCurrentOperation == kShare
                       ? "Sorry, Sharing Photo(s) has been cancelled."
                   : s.giCurrentOperation == kOrder
                       ? "Sorry, Your Order has been cancelled."
                       : "Sorry, Uploading Photo(s) has been cancelled.";
    s.gsInfoMessage.clear();
    Unload();
    app_.forms().Get("frmMsgInfrm").Show(/*modal=*/true);
    s.gsInfoHead.clear();
    s.gsInfoMessage.clear();
    return;
  }
  Unload();
}

void frmUploadImgs::Form_QueryUnload(int& Cancel, int UnloadMode) {
  if (UnloadMode != kUnloadFromUser || mbFinished) {
    return;
  }
  mbCancelRequested = true;
  ResetShareValues();
  if (!ExtAPI_->IsBusy()) {
    app_.session().gbUserCancelled = true;
    return;
  }
  Cancel = 1;
  ExtAPI_->CancelRequest(true);
  tmrCheck_Timer();
}

void frmUploadImgs::Form_Unload(int& Cancel) {
  (void)Cancel;
  tmrUpload.SetEnabled(false);
  RemoveCopies();
  NormalPointer();
}

}  // namespace qbpd
