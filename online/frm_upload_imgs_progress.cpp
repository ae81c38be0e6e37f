// The transfer screen's progress: the photo's caption, the upload address,
// the progress bar and the two time estimates with their timer.
#include "online/frm_upload_imgs.h"

#include <algorithm>
#include <cmath>

namespace qbpd {
namespace {

constexpr long kBytesPerSecond56k = 29491;  // 28.8 x 1024, rounded
constexpr long kDslKilobytesPerSecond = 128;
constexpr int kCaptionLimit = 2010;
constexpr int kCaptionRoom = 1910;

std::string Split(long seconds) {
  if (seconds > 60) {
    return std::to_string(seconds / 60) + " mins and " +
           std::to_string(seconds % 60) + " secs";
  }
  return std::to_string(seconds) + " secs";
}

}  // namespace

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

}  // namespace qbpd
