#include "online/frm_upload_imgs.h"

#include "browser/frm_main_window.h"
#include "core/button_pictures.h"
#include "core/settings.h"
#include "online/client_factory.h"
#include "online/online_common.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cmath>
#include <filesystem>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

constexpr int kFormWidth = 6000;
constexpr int kFormHeight = 4200;
constexpr int kFrameSize = 1800;
constexpr int kBarWidth = 3000;
constexpr int kUpload = 11;
constexpr int kShare = 12;
constexpr int kOrder = 13;
constexpr int kSettleMs = 200;
constexpr int kPauseMs = 1000;
constexpr long kBytesPerSecond56k = 29491;  // 28.8 x 1024, rounded
constexpr long kDslKilobytesPerSecond = 128;
constexpr int kCaptionLimit = 2010;
constexpr int kCaptionRoom = 1910;
constexpr std::string_view kCancelButton = "25";
constexpr long kBarColour = 0xC08040;

std::string Split(long seconds) {
  if (seconds > 60) {
    return std::to_string(seconds / 60) + " mins and " +
           std::to_string(seconds % 60) + " secs";
  }
  return std::to_string(seconds) + " secs";
}

bool IsJpegName(const std::string& path) {
  std::string ext = fs::path(path).extension().string();
  if (!ext.empty()) {
    ext.erase(0, 1);
  }
  for (char& c : ext) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return ext == "JPG" || ext == "JPEG" || ext == "JPE";
}

}  // namespace

frmUploadImgs::frmUploadImgs(Application& app)
    : Form(app.host(), std::string(kName)),
      app_(app),
      ExtAPI_(NewServiceClient(app)) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblHeading.Move(240, 200, kFormWidth - 480, 300);
  lblHeading.SetFontBold(true);
  FraImageCont.Move(240, 660, kFrameSize, kFrameSize);
  FraImageCont.SetCaption("");
  imgUpload.SetContainer("FraImageCont");
  imgUpload.Move(0, 0, kFrameSize, kFrameSize);
  lblCurrentPicCaption.Move(240, 2520, kFrameSize + 240, 255);
  const int right = 2400;
  lblProgress.Move(right, 700, 3000, 255);
  shpProgressBar.Move(right, 1060, kBarWidth, 240);
  ImgProgressBar.Move(right, 1060, 0, 240);
  ImgProgressBar.SetFilled(true);
  ImgProgressBar.SetFillColor(kBarColour);
  lblPercentUploaded.Move(right, 1380, 1000, 255);
  lblEstimateTimeCaption.Move(right, 1800, 3000, 255);
  lblEstimateTimeCaption.SetCaption("Total estimated time:");
  lblConnectonType_Time.Move(right, 2100, 3400, 255);
  lblDSLConnection.Move(right, 2400, 3400, 255);
  imgCancelconn.Move((kFormWidth - 1200) / 2, 3300, 1200, 390);
  tmrUpload.SetInterval(1000);
  Field("mbCancelRequested", mbCancelRequested);
  Field("mbFinished", mbFinished);
  Field("mlTotalBytes", mlTotalBytes);
  Field("mlSeconds56k", mlSeconds56k);
  Field("mlSecondsDsl", mlSecondsDsl);
  On("imgCancelconn", "Click", &frmUploadImgs::imgCancelconn_Click);
  On("tmrUpload", "Timer", &frmUploadImgs::tmrUpload_Timer);
  On("tmrCheck", "Timer", &frmUploadImgs::tmrCheck_Timer);
}

frmUploadImgs::~frmUploadImgs() {
  RemoveCopies();
}

std::string frmUploadImgs::ModemCaption(long seconds) {
  if (seconds < 10) {
    return "56k Modem....Less than 10 seconds";
  }
  return "56k Modem...." + Split(seconds);
}

std::string frmUploadImgs::DslCaption(long seconds) {
  if (seconds < 10) {
    return "DSL cable....Less than 10 seconds";
  }
  return "DSL cable.... " + Split(seconds);
}

std::string frmUploadImgs::PhotoCaption(const std::string& name, int width) {
  std::string doubled;
  for (char c : name) {
    doubled += c;
    if (c == '&') {
      doubled += '&';
    }
  }
  if (width + 100 <= kCaptionLimit || width <= 0) {
    return doubled;
  }
  const auto keep = static_cast<size_t>(
      std::lround(static_cast<double>(doubled.size()) * kCaptionRoom / width));
  return doubled.substr(0, std::min(keep, doubled.size())) + "...";
}

std::string frmUploadImgs::UploadUrl(const std::string& site_address,
                                     const std::string& auth_code,
                                     const std::string& album_id,
                                     const std::string& album_name,
                                     const std::string& tag,
                                     const std::string& file) {
  std::string url = site_address;
  url.append("/exuploadimages?authcode=").append(auth_code);
  url.append("&numimages=1&albumid=").append(album_id);
  url.append("&albumname=").append(album_name);
  url.append("&sourcecode=").append(tag);
  url.append("&file=").append(file);
  return url;
}

void frmUploadImgs::Form_Activate() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  ShowButtonState(s, imgCancelconn, kCancelButton, kPictureNormal);
  mbCancelRequested = false;
  mbFinished = false;
  mdicOrderIndex.RemoveAll();
  switch (s.giCurrentOperation) {
    case kShare:
      lblHeading.SetCaption("sharing your photo(s)");
      break;
    case kOrder:
      lblHeading.SetCaption("placing your print order");
      break;
    default:
      lblHeading.SetCaption("uploading your photo(s)");
      break;
  }
  if (s.giCurrentOperation == kUpload) {
    s.gcolOrderPhotos = KeyedCollection<std::string>();
    for (int key : s.gdicAlbumPhotos.Keys()) {
      s.gcolOrderPhotos.Add(s.gdicAlbumPhotos.Item(key), std::to_string(key));
    }
  }
  ImgProgressBar.SetWidth(0);
  RunUpload();
}

long long frmUploadImgs::FileSize(const std::string& path) const {
  std::error_code error;
  const auto size = fs::file_size(path, error);
  return error ? 0 : static_cast<long long>(size);
}

void frmUploadImgs::NormalPointer() {
  host().SetMousePointer(kPointerDefault);
}

std::string frmUploadImgs::FileToSend(const std::string& photo) {
  if (IsJpegName(photo)) {
    return photo;
  }
  const std::string copy =
      app_.session().gsTempLoc + fs::path(photo).stem().string() + ".jpg";
  if (mNext && mNext->photo == photo) {
    SettlePrefetch();
    if (FileExists(copy)) {
      return copy;
    }
  }
  mCopies.insert(copy);
  std::error_code error;
  fs::remove(copy, error);
  (void)app_.images().SaveImageAsJPEG(photo, copy);
  return copy;
}

void frmUploadImgs::PrefetchCopy(int n, const std::string& current) {
  const Session& s = app_.session();
  if (mNext || n > s.giUploadTotal) {
    return;
  }
  const std::string photo = s.gcolOrderPhotos.Item(n);
  if (photo.empty() || IsJpegName(photo) || !FileExists(photo)) {
    return;
  }
  const std::string copy =
      s.gsTempLoc + fs::path(photo).stem().string() + ".jpg";
  if (copy == current) {
    return;  // the current photo's own copy, still being sent
  }
  mCopies.insert(copy);
  std::error_code error;
  fs::remove(copy, error);
  ImageOperations* images = &app_.images();
  mNext = Prefetch{photo, copy,
                   std::async(std::launch::async, [images, photo, copy] {
                     return images->SaveImageAsJPEG(photo, copy);
                   })};
}

void frmUploadImgs::SettlePrefetch() {
  if (!mNext) {
    return;
  }
  using namespace std::chrono_literals;
  while (mNext->made.wait_for(10ms) != std::future_status::ready) {
    host().DoEvents();
  }
  mNext.reset();
}

void frmUploadImgs::ShowPhotoInWork(const std::string& file) {
  auto* main = app_.forms().Find<frmMainWindow>();
  if (main != nullptr && main->GenerateThumbnail(file)) {
    const std::string& thumb = app_.session().gsThumbnailPath;
    imgUpload.SetPicture(thumb);
    const int width = app_.images().GetImageWidth(thumb) * kTwipsPerPixel;
    const int height = app_.images().GetImageHeight(thumb) * kTwipsPerPixel;
    imgUpload.Move((FraImageCont.Width() - width) / 2,
                   (FraImageCont.Height() - height) / 2, width, height);
  }
}

void frmUploadImgs::RunUpload() {
  Session& s = app_.session();
  s.gbFileMissing = false;
  s.gbUploadCancelled = false;
  s.giUploadedCount = 0;
  s.giUploadTotal = s.gcolOrderPhotos.Count();
  mlTotalBytes = 0;
  for (int n = 1; n <= s.giUploadTotal; ++n) {
    if (!s.gcolOrderPhotos.Item(n).empty()) {
      mlTotalBytes += FileSize(s.gcolOrderPhotos.Item(n));
    }
  }
  host().SetMousePointer(kPointerHourglass);
  std::string tag =
      CutAtFirstNul(app_.settings().Read(kSiteSettingsKey, "SourceCode"));
  if (tag.empty()) {
    tag = "QBC";
  }
  mdicOrderIndex.RemoveAll();
  mSent.clear();
  mbLastFatal = false;

  bool ran_to_end = true;
  for (int n = 1; n <= s.giUploadTotal; ++n) {
    if (mbCancelRequested && ExtAPI_->IsCancelled()) {
      ran_to_end = false;
      break;
    }
    const std::string photo = s.gcolOrderPhotos.Item(n);
    WorkOutEstimates(n);
    // The window answers between photos, as while a photo is sent.
    host().DoEvents();
    if (IsUnloaded()) {
      // A cancel with no transfer running closed the window.
      RemoveCopies();
      return;
    }
    if (!photo.empty() && !FileExists(photo)) {
      s.gbFileMissing = true;
      continue;
    }
    if (photo.empty()) {
      ran_to_end = false;
      break;
    }
    const std::string file = FileToSend(photo);
    if (IsUnloaded()) {
      RemoveCopies();
      return;
    }
    ShowPhotoInWork(file);
    lblProgress.SetCaption(std::to_string(s.giUploadedCount + 1) + " of " +
                           std::to_string(s.giUploadTotal));
    const std::string name = fs::path(file).filename().string();
    lblCurrentPicCaption.SetCaption(PhotoCaption(
        name, host().TextWidth(name, lblCurrentPicCaption.font())));
    if (mbCancelRequested) {
      continue;
    }
    const std::string url = UploadUrl(s.gsSiteAddress, s.gsAuthCode,
                                      s.gsAlbumId, s.gsAlbumName, tag, file);
    PrefetchCopy(n + 1, file);
    msErrCode.clear();
    msErrText.clear();
    std::string album_id, image_id;
    bool fatal = false;
    const bool ok = ExtAPI_->UploadFile(url, file, msErrCode, msErrText, "File",
                                        album_id, image_id, fatal);
    if (file != photo) {
      std::error_code error;
      fs::remove(file, error);
    }
    if (IsUnloaded()) {
      RemoveCopies();
      return;
    }
    if (ok) {
      s.gsAlbumId = album_id;
      ++s.giUploadedCount;
      if (s.giCurrentOperation == kOrder && !image_id.empty()) {
        mdicOrderIndex.Add(image_id, std::to_string(n));
      }
      UpdateUploadProgress();
      mSent.push_back(photo);
      continue;
    }
    if (mbCancelRequested) {
      ran_to_end = false;
      break;
    }
    if (fatal) {
      mbLastFatal = true;
      ran_to_end = false;
      break;
    }
    if (!FileExists(photo)) {
      s.gbFileMissing = true;
      continue;
    }
    if (!msErrCode.empty() && msErrCode == msErrText) {
      NormalPointer();
      host().MsgBox(msErrText, kMbStop, s.gsAppTitle);
      RemoveCopies();
      Unload();
      return;
    }
  }
  RemoveCopies();
  tmrUpload.SetEnabled(false);
  host().Sleep(kSettleMs);
  if (IsUnloaded()) {
    return;
  }

  if (!ran_to_end && mbCancelRequested) {
    tmrCheck_Timer();
    NormalPointer();
    return;
  }
  if (s.giUploadedCount == 0) {
    NormalPointer();
    std::string what = s.giCurrentOperation == kOrder   ? "order the prints"
                       : s.giCurrentOperation == kShare ? "share the photos"
                                                        : "upload the photos";
    host().MsgBox("Unable to " + what, kMbStop, s.gsAppTitle);
    Unload();
    return;
  }
  if (mbLastFatal && s.giCurrentOperation != kUpload) {
    s.gsInfoHead =
        std::string("Sorry, Unable to ") +
        (s.giCurrentOperation == kShare ? "share the photos."
                                        : "order the photos for printing.") +
        " due to Internet Connectivity problem";
    s.gsInfoMessage.clear();
    NormalPointer();
    Unload();
    app_.forms().Get("frmMsgInfrm").Show(/*modal=*/true);
    s.gsInfoHead.clear();
    s.gsInfoMessage.clear();
    return;
  }
  switch (s.giCurrentOperation) {
    case kShare:
      FinishShare();
      break;
    case kOrder:
      FinishOrder();
      break;
    default:
      FinishUpload();
      break;
  }
}

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
  if (!ExtAPI_->GetAlbumPhotos(s.gsSiteUrl, s.gsAuthCode, s.gsAlbumId, photos,
                               msErrCode, msErrText)) {
    if (mbCancelRequested) {
      tmrCheck_Timer();
      return;
    }
    NormalPointer();
    host().MsgBox("Unable to order the prints for printing.", kMbStop,
                  s.gsAppTitle);
    Unload();
    return;
  }
  mdicOrderIndex = photos;
  // RemoveEmptyOrderLines, PlaceOrder and ConfirmOrder follow here with the
  // order's lines, which the print-order dialog fills; until it does, the
  // run has no lines, their count differs from the album's photos, and the
  // order stops with the message for that case.
  NormalPointer();
  host().MsgBox("Unable to order the prints for printing.", kMbStop,
                s.gsAppTitle);
  Unload();
}

void frmUploadImgs::WorkOutEstimates(int n) {
  const Session& s = app_.session();
  const long long r = mlTotalBytes - FileSize(s.gcolOrderPhotos.Item(n));
  mlSeconds56k = static_cast<long>(r / kBytesPerSecond56k);
  mlSecondsDsl = static_cast<long>(r / kDslKilobytesPerSecond / 1024);
  ShowEstimates();
}

void frmUploadImgs::ShowEstimates() {
  lblConnectonType_Time.SetCaption(ModemCaption(mlSeconds56k));
  lblDSLConnection.SetCaption(DslCaption(mlSecondsDsl));
  const bool run = mlSeconds56k >= 10;
  if (tmrUpload.Enabled() != run) {
    tmrUpload.SetEnabled(run);
  }
}

void frmUploadImgs::tmrUpload_Timer() {
  if (mlSeconds56k >= 1) {
    --mlSeconds56k;
  }
  if (mlSecondsDsl >= 1) {
    --mlSecondsDsl;
  }
  ShowEstimates();
}

void frmUploadImgs::UpdateUploadProgress() {
  const Session& s = app_.session();
  const int count = s.gcolOrderPhotos.Count();
  if (count == 0) {
    return;
  }
  const double percent = s.giUploadedCount * 100.0 / count;
  lblPercentUploaded.SetCaption(std::to_string(std::lround(percent)) + "%");
  ImgProgressBar.SetWidth(shpProgressBar.Width() * percent / 100);
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

void frmUploadImgs::RemoveCopies() {
  if (mNext) {
    mNext->made.wait();
    mNext.reset();
  }
  for (const std::string& copy : mCopies) {
    std::error_code error;
    fs::remove(copy, error);
  }
  mCopies.clear();
}

}  // namespace qbpd
