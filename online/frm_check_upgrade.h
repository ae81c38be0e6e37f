#ifndef QBPD_ONLINE_FRM_CHECK_UPGRADE_H_
#define QBPD_ONLINE_FRM_CHECK_UPGRADE_H_

#include "core/application.h"
#include "online/service_client.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <memory>
#include <string_view>

namespace qbpd {

// The upgrade check that the Help menu opens: asks the service whether a
// newer version is on offer and says so; OK then leads to the download
// (frmDisplayDownload) when there is one. Its work runs in Form_Activate
// inside the client's blocking call; a close meanwhile drops the answer.
class frmCheckUpgrade : public Form {
 public:
  static constexpr std::string_view kName = "frmCheckUpgrade";
  explicit frmCheckUpgrade(Application& app);

  Label lblConnecting{*this, "lblConnecting"};
  ProgressBar ProgressBar1{*this, "ProgressBar1"};
  PictureButton imgOK{*this, "imgOK"};
  PictureButton imgCancel{*this, "imgCancel"};
  Timer tmrProg{*this, "tmrProg"};

  ctlExtAPI& ctlInet() { return *ctlInet_; }

 protected:
  void Form_Load() override;
  void Form_Activate() override;
  void Form_Unload(int& Cancel) override;

 private:
  void imgOK_Click();
  void imgCancel_Click();
  void tmrProg_Timer();

  Application& app_;
  std::unique_ptr<ctlExtAPI> ctlInet_;
  // A newer version is on offer.
  bool mbUpgradeAvailable = false;
  // The check ran (activation comes again after a message box).
  bool mbChecked = false;
};

// The texts of the upgrade check, in the program's own words.
inline constexpr std::string_view kUpgradeQuestion =
    "A newer version of Quillbay Picture Desk is available. Do you want to "
    "upgrade?";
inline constexpr std::string_view kUpgradeLatest =
    "You already have the latest version of the Quillbay Picture Desk.  Please "
    "check back in a month or so for a newer version.";
inline constexpr std::string_view kUpgradeNoDetails =
    "Error in getting the details. Please contact the Quillbay customer "
    "support team.";

// The address of the upgrade description for the `IP` setting as read:
// one trailing NUL and trailing blanks dropped, then "/download/upgrade.xml".
std::string UpgradeXmlUrl(std::string ip);

}  // namespace qbpd

#endif  // QBPD_ONLINE_FRM_CHECK_UPGRADE_H_
