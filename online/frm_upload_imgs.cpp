#include "online/frm_upload_imgs.h"

#include "browser/frm_main_window.h"
#include "core/button_pictures.h"
#include "core/jpeg_name.h"
#include "core/settings.h"
#include "online/client_factory.h"
#include "online/online_common.h"

#include <algorithm>
#include <filesystem>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

constexpr int kFormWidth = 6000;
constexpr int kFormHeight = 4200;
constexpr int kFrameSize = 1800;
constexpr int kBarWidth = 3000;
constexpr int kSettleMs = 200;
constexpr std::string_view kCancelButton = "25";
constexpr long kBarColour = 0xC08040;

}  // namespace

frmUploadImgs::frmUploadImgs(Application& app)
    : Form(app.host(), std::string(kName)),
      app_(app),
      ExtAPI_(NewServiceClient(app)),
      mAhead(app.images(),
             frmMainWindow::kThumbnailSize,
             frmMainWindow::kThumbnailQuality) {
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

void frmUploadImgs::PrepareCopies(Application& app) {
  const Session& s = app.session();
  std::vector<std::string> photos;
  for (int key : s.gdicAlbumPhotos.Keys()) {
    const std::string& photo = s.gdicAlbumPhotos.Item(key);
    if (!photo.empty() && !HasJpegExtension(photo)) {
      photos.push_back(photo);
    }
  }
  app.images().PrepareJpegCopies(photos);
}

long long frmUploadImgs::FileSize(const std::string& path) const {
  std::error_code error;
  const auto size = fs::file_size(path, error);
  return error ? 0 : static_cast<long long>(size);
}

void frmUploadImgs::NormalPointer() {
  host().SetMousePointer(kPointerDefault);
}

UploadAhead::Order frmUploadImgs::OrderFor(int n,
                                           const std::string& photo) const {
  const Session& s = app_.session();
  UploadAhead::Order order;
  order.photo = photo;
  if (!HasJpegExtension(photo)) {
    order.copy = s.gsTempLoc + fs::path(photo).stem().string() + ".jpg";
  }
  if (!s.gbCacheEnable) {
    // A name no thumbnail of the window takes (theirs end in ".jpg").
    const std::string& folder =
        s.gsThumbnailFolder.empty() ? s.gsTempLoc : s.gsThumbnailFolder;
    order.thumbnail = folder + "upload-" + std::to_string(n) + ".ahead";
  }
  return order;
}

void frmUploadImgs::AskAhead(int n, const std::string& sending) {
  const Session& s = app_.session();
  const int last = std::min(n + kPhotosAhead, s.giUploadTotal);
  for (int k = std::max(mNextToAsk, n + 1); k <= last; ++k) {
    const std::string photo = s.gcolOrderPhotos.Item(k);
    if (photo.empty()) {
      return;  // the run ends there
    }
    if (!FileExists(photo)) {
      mNextToAsk = k + 1;  // skipped at its turn, or asked for then
      continue;
    }
    UploadAhead::Order order = OrderFor(k, photo);
    if (!order.copy.empty() &&
        (order.copy == sending || mAhead.HoldsCopy(order.copy))) {
      return;  // asked for when the copy of that name is gone
    }
    mAhead.Ask(k, std::move(order));
    mNextToAsk = k + 1;
  }
}

std::optional<UploadAhead::Made> frmUploadImgs::PreparePhoto(
    int n,
    const std::string& photo) {
  for (int round = 0; round < 2; ++round) {
    if (!mAhead.Asked(n)) {
      if (n < mNextToAsk) {
        // Passed over while it was missing: the photos asked for after it
        // may hold its copy's name.
        mAhead.Drop();
      }
      mAhead.Ask(n, OrderFor(n, photo));
      mNextToAsk = n + 1;
    }
    std::optional<UploadAhead::Made> made =
        mAhead.Take(n, [this](const std::function<bool()>& done) {
          host().WaitForWork(done);
        });
    if (!made) {
      return std::nullopt;
    }
    if (!made->order.copy.empty()) {
      mCopies.insert(made->order.copy);
    }
    if (round == 1 || made->photo_stamp == FileStamp::Of(photo)) {
      return made;
    }
    // The photo changed after its work was made: it is made again.
    UploadAhead::Remove(*made);
  }
  return std::nullopt;
}

void frmUploadImgs::ShowPhotoInWork(const UploadAhead::Made& made) {
  auto* main = app_.forms().Find<frmMainWindow>();
  const std::string& thumbnail = made.order.thumbnail;
  if (main == nullptr ||
      !main->AdoptThumbnail(made.file(),
                            made.thumbnail_made ? thumbnail : std::string())) {
    if (!thumbnail.empty()) {
      std::error_code error;
      fs::remove(thumbnail, error);
    }
    return;
  }
  const std::string& thumb = app_.session().gsThumbnailPath;
  imgUpload.SetPicture(thumb);
  const int width = app_.images().GetImageWidth(thumb) * kTwipsPerPixel;
  const int height = app_.images().GetImageHeight(thumb) * kTwipsPerPixel;
  imgUpload.Move((FraImageCont.Width() - width) / 2,
                 (FraImageCont.Height() - height) / 2, width, height);
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
  mNextToAsk = 1;
  AskAhead(0, "");

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
    const std::optional<UploadAhead::Made> made = PreparePhoto(n, photo);
    if (IsUnloaded() || !made) {
      RemoveCopies();
      if (!IsUnloaded()) {
        Unload();
      }
      return;
    }
    const std::string file = made->file();
    ShowPhotoInWork(*made);
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
    AskAhead(n, file);
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

void frmUploadImgs::RemoveCopies() {
  mAhead.Drop();
  app_.images().PrepareJpegCopies({});
  for (const std::string& copy : mCopies) {
    std::error_code error;
    fs::remove(copy, error);
  }
  mCopies.clear();
}

}  // namespace qbpd
