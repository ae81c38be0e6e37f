#include "online/frm_display_download.h"

#include "core/settings.h"
#include "online/client_factory.h"
#include "online/upgrade_info.h"
#include "platform/signature.h"

#include <filesystem>

namespace qbpd {
namespace {

constexpr int kFormWidth = 5400;
constexpr int kFormHeight = 1920;
constexpr int kMargin = 240;
constexpr int kProgMs = 1000;
constexpr char kCentred = 2;

void RemoveFile(const std::string& path) {
  if (path.empty()) {
    return;
  }
  std::error_code ignored;
  std::filesystem::remove(path, ignored);
}

}  // namespace

frmDisplayDownload::frmDisplayDownload(Application& app)
    : Form(app.host(), std::string(kName)),
      app_(app),
      ctlInet_(NewServiceClient(app)) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblConnecting.Move(kMargin, 300, kFormWidth - 2 * kMargin, 300);
  lblConnecting.SetAlignment(kCentred);
  lblConnecting.SetCaption("Downloading the file......");
  ProgressBar1.Move(kMargin, 840, kFormWidth - 2 * kMargin, 300);
  lblDownloadPath.Move(kMargin, 1320, kFormWidth - 2 * kMargin, 255);
  lblDownloadPath.SetVisible(false);
  tmrProg.SetInterval(kProgMs);
  Field("mbStarted", mbStarted);
  Field("msRefusal", msRefusal);
  On("tmrProg", "Timer", &frmDisplayDownload::tmrProg_Timer);
}

void frmDisplayDownload::Form_Load() {
  SetCaption(app_.session().gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
}

void frmDisplayDownload::Form_Activate() {
  if (mbStarted) {
    return;
  }
  mbStarted = true;
  // The bar counts from the moment the window shows (it may have been
  // loaded hidden well before, when the check found the upgrade).
  tmrProg.SetEnabled(true);
  ProgressBar1.SetValue(1);
  std::string saved;
  const bool ok = FetchSignedDownload(lblDownloadPath.Caption(), saved);
  if (IsUnloaded()) {
    // Closed while it downloaded: nothing is started, nothing is kept.
    RemoveFile(saved);
    return;
  }
  if (!ok) {
    return;
  }
  tmrProg.SetEnabled(false);
  ProgressBar1.SetValue(ProgressBar1.Max());
  // A start that fails is not told, as a failed download isn't; the file
  // stays in the private temp folder, checked.
  const LaunchResult started = app_.installer().OpenDocument(saved);
  if (!started.ok) {
    msRefusal = started.error;
  }
  Unload();
}

bool frmDisplayDownload::FetchSignedDownload(const std::string& url,
                                             std::string& saved) {
  const std::string& folder = app_.session().gsTempLoc;
  std::string error;
  msRefusal.clear();
  if (!ctlInet_->DownloadFile(url, folder, saved, error)) {
    msRefusal = error.empty() ? "The download failed." : error;
    saved.clear();
    return false;
  }
  std::string signature_file;
  std::string signature;
  const bool fetched =
      !IsUnloaded() &&
      ctlInet_->DownloadFile(SignatureUrl(url), folder, signature_file, error);
  const bool read = fetched && ReadKeyFile(signature_file, signature);
  RemoveFile(signature_file);
  if (!read) {
    msRefusal = "The download has no signature.";
  } else {
    msRefusal = VerifyFileSignature(saved, signature, app_.upgrade_key());
  }
  if (!msRefusal.empty()) {
    RemoveFile(saved);
    saved.clear();
    return false;
  }
  return true;
}

void frmDisplayDownload::Form_Unload(int& Cancel) {
  (void)Cancel;
  tmrProg.SetEnabled(false);
  if (ctlInet_->IsBusy()) {
    ctlInet_->CancelRequest(true);
  }
}

void frmDisplayDownload::tmrProg_Timer() {
  if (ProgressBar1.Value() < ProgressBar1.Max()) {
    ProgressBar1.SetValue(ProgressBar1.Value() + 1);
  }
}

}  // namespace qbpd
