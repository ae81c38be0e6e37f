// The upgrade through the program's forms with the real client against a
// real qbpd-service that signs its upgrade file with a throwaway key: a good
// download is started (through the fake starter), a changed one, a cut one
// and an unsigned one are refused and deleted; and the service's default
// offer is never newer than this build.
#include "core/settings.h"
#include "online/frm_check_upgrade.h"
#include "online/frm_display_download.h"
#include "platform/signature.h"
#include "tests/online/online_fixture.h"
#include "tests/online/service_process.h"
#include "tests/support/fake_launcher.h"

#include <filesystem>
#include <fstream>
#include <functional>

namespace qbpd::testing_support {
namespace {

namespace fs = std::filesystem;

constexpr char kInstaller[] =
    "#!/bin/sh\n# Quillbay Picture Desk 9.0.0 installer\n"
    "echo 'Installing Quillbay Picture Desk 9.0.0'\nexit 0\n";

class UpgradeRoadTest : public OnlineTest {
 protected:
  UpgradeRoadTest() : keys_(MakeSigningKeyPair()) {
    auto installer = std::make_unique<testing::FakeLauncher>();
    started_ = installer->record();
    installer_ = std::move(installer);
    upgrade_key_ = keys_.public_key;
    upgrade_file_ = files_.WriteFile("upgrade1.exe", kInstaller);
    secret_file_ = files_.WriteFile("signing.key", keys_.secret_key + "\n");
  }

  // Starts the service with `arguments` and the program against it.
  void StartAgainst(const std::vector<std::string>& arguments) {
    service_ = std::make_unique<testing::ServiceProcess>(
        QBPD_SERVICE_PROGRAM, service_dir_.path(), arguments);
    ASSERT_TRUE(service_->ok()) << service_->error();
    site_ = service_->site();
    address_ = service_->base();
    real_client_ = true;
    WritePhotos(1);
    Start();
    main().tmrUpgrade.SetEnabled(false);
  }
  std::vector<std::string> Signed() {
    return {"--upgrade-version",    "9.0.0",         "--upgrade-file",
            upgrade_file_.string(), "--signing-key", secret_file_.string()};
  }

  // The Help menu's check, and OK on its answer; `while_standing` runs when
  // the download has ended and its window still stands.
  void CheckAndDownload(std::function<void()> while_standing = nullptr) {
    QueueClick("frmMainWindow", "mnuHUpgrade");
    Queue("the check answered", [this] {
      auto* check = dynamic_cast<frmCheckUpgrade*>(Find("frmCheckUpgrade"));
      ASSERT_NE(check, nullptr);
      EXPECT_EQ(check->lblConnecting.Caption(), kUpgradeQuestion);
    });
    QueueClick("frmCheckUpgrade", "imgOK");
    if (while_standing) {
      Queue("the download window stands", std::move(while_standing));
    }
    Run();
  }

  // The download is refused for `why`: nothing started, nothing kept,
  // nothing said; the user then closes the window.
  std::function<void()> ExpectRefused(std::string why) {
    return [this, why] {
      EXPECT_TRUE(started_->opened.empty());
      EXPECT_FALSE(fs::exists(Downloaded()));
      EXPECT_FALSE(fs::exists(Downloaded() + ".sig"));
      auto* download =
          dynamic_cast<frmDisplayDownload*>(Find("frmDisplayDownload"));
      ASSERT_NE(download, nullptr);
      EXPECT_TRUE(download->Visible());
      EXPECT_EQ(download->FieldValue("msRefusal").ToText(), why);
      EXPECT_TRUE(Messages().empty());
      download->Unload(kUnloadFromUser);
    };
  }

  std::string Downloaded() { return session().gsTempLoc + "upgrade1.exe"; }

  SigningKeyPair keys_;
  testing::TempDir files_;
  testing::TempDir service_dir_;
  fs::path upgrade_file_;
  fs::path secret_file_;
  std::unique_ptr<testing::ServiceProcess> service_;
  std::shared_ptr<testing::FakeLauncher::Record> started_;
};

TEST_F(UpgradeRoadTest, AWellSignedUpgradeIsStarted) {
  StartAgainst(Signed());
  CheckAndDownload();
  ASSERT_EQ(started_->opened, std::vector<std::string>{Downloaded()});
  EXPECT_EQ(testing::ReadFile(Downloaded()), kInstaller);
  EXPECT_EQ(fs::status(session().gsTempLoc).permissions() & fs::perms::all,
            fs::perms::owner_all);
  EXPECT_EQ(Find("frmDisplayDownload"), nullptr);
  EXPECT_TRUE(Messages().empty());
}

// The file on the server is changed after it was signed.
TEST_F(UpgradeRoadTest, AChangedUpgradeIsRefusedAndDeleted) {
  StartAgainst(Signed());
  std::string changed = kInstaller;
  changed.replace(changed.find("exit 0"), 6, "rm -r ");
  std::ofstream(upgrade_file_, std::ios::binary | std::ios::trunc) << changed;
  CheckAndDownload(ExpectRefused("The download doesn't match its signature."));
}

TEST_F(UpgradeRoadTest, ACutUpgradeIsRefusedAndDeleted) {
  StartAgainst(Signed());
  fs::resize_file(upgrade_file_, std::string(kInstaller).size() / 2);
  CheckAndDownload(ExpectRefused("The download doesn't match its signature."));
}

TEST_F(UpgradeRoadTest, AnUnsignedUpgradeIsRefusedAndDeleted) {
  StartAgainst(
      {"--upgrade-version", "9.0.0", "--upgrade-file", upgrade_file_.string()});
  CheckAndDownload(ExpectRefused("The download has no signature."));
}

// Unless told another version, the service offers this build's own: the
// program of this build is never asked to upgrade.
TEST_F(UpgradeRoadTest, TheDefaultServiceOffersNoNewerVersion) {
  StartAgainst({});
  ASSERT_TRUE(
      settings().Write(kRootKey, "Version", std::string(ProgramVersion())));
  QueueClick("frmMainWindow", "mnuHUpgrade");
  Queue("the check answered", [this] {
    auto* check = dynamic_cast<frmCheckUpgrade*>(Find("frmCheckUpgrade"));
    ASSERT_NE(check, nullptr);
    EXPECT_EQ(check->lblConnecting.Caption(), kUpgradeLatest);
    EXPECT_TRUE(check->imgOK.Enabled());
  });
  QueueClick("frmCheckUpgrade", "imgOK");
  // The minute timer asks the same service and keeps quiet.
  Queue("the timer", [this] {
    main().tmrUpgrade.SetEnabled(true);
    host().Advance(60000);
  });
  Run();
  EXPECT_TRUE(Messages().empty());
  EXPECT_FALSE(main().tmrUpgrade.Enabled());
  EXPECT_TRUE(started_->opened.empty());
}

}  // namespace
}  // namespace qbpd::testing_support
