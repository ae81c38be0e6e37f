#ifndef QBPD_ONLINE_FRM_DISPLAY_DOWNLOAD_H_
#define QBPD_ONLINE_FRM_DISPLAY_DOWNLOAD_H_

#include "core/application.h"
#include "online/service_client.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <memory>
#include <string>
#include <string_view>

namespace qbpd {

// The download of an upgrade: fetches the file that lblDownloadPath names
// into the private temp folder (gsTempLoc), with its detached signature
// beside it, and starts it only when the signature is good. A download that
// fails, has no signature, or doesn't match it (changed, cut short) is
// deleted and nothing is said: the window stays with its bar where it got
// to until the user closes it.
class frmDisplayDownload : public Form {
 public:
  static constexpr std::string_view kName = "frmDisplayDownload";
  explicit frmDisplayDownload(Application& app);

  Label lblConnecting{*this, "lblConnecting"};
  ProgressBar ProgressBar1{*this, "ProgressBar1"};
  Timer tmrProg{*this, "tmrProg"};
  // Hidden: the address of the download.
  Label lblDownloadPath{*this, "lblDownloadPath"};

  ctlExtAPI& ctlInet() { return *ctlInet_; }

 protected:
  void Form_Load() override;
  void Form_Activate() override;
  void Form_Unload(int& Cancel) override;

 private:
  void tmrProg_Timer();
  // Fetches the download and its signature and checks the one against the
  // other; `saved` is the checked file. False (with msRefusal saying why)
  // leaves neither file behind.
  bool FetchSignedDownload(const std::string& url, std::string& saved);

  Application& app_;
  std::unique_ptr<ctlExtAPI> ctlInet_;
  bool mbStarted = false;
  // Why the last download was not started; "" when it was. Never shown.
  std::string msRefusal;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_FRM_DISPLAY_DOWNLOAD_H_
