// The upgrade check in the desktop program under the offscreen platform,
// against a real qbpd-service that signs its upgrade with a throwaway key:
// the Help menu's check and the download, on screen and saved as screenshots
// (tests/ui/screenshots/upgrade_*.png). The downloaded installer goes to a
// fake starter.
#include "core/settings.h"
#include "online/frm_check_upgrade.h"
#include "online/frm_display_download.h"
#include "platform/forms/user_input.h"
#include "platform/signature.h"
#include "tests/online/service_process.h"
#include "tests/support/fake_launcher.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_host.h"

#include <QTest>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

namespace qbpd {
namespace {

using testing::RunSteps;
using testing::ScreenStep;

constexpr char kInstaller[] =
    "#!/bin/sh\necho 'Installing Quillbay Picture Desk 9.0.0'\n";

class UpgradeSmokeTest : public testing::DesktopTest {
 protected:
  UpgradeSmokeTest() : keys_(MakeSigningKeyPair()) {
    photo_count_ = 2;
    started_ = std::make_shared<testing::FakeLauncher::Record>();
    adjust_services_ = [this](PlatformServices& services) {
      services.installer = std::make_unique<testing::FakeLauncher>(started_);
      services.upgrade_key = keys_.public_key;
    };
  }

  void SetUp() override {
    DesktopTest::SetUp();
    upgrade_file_ = files_.WriteFile("upgrade1.exe", kInstaller);
    const auto secret = files_.WriteFile("signing.key", keys_.secret_key);
    service_ = std::make_unique<testing::ServiceProcess>(
        QBPD_SERVICE_PROGRAM, data_.path(),
        std::vector<std::string>{"--upgrade-version", "9.0.0", "--upgrade-file",
                                 upgrade_file_.string(), "--signing-key",
                                 secret.string()});
    ASSERT_TRUE(service_->ok()) << service_->error();
    SettingsStore& settings = app_->settings();
    ASSERT_TRUE(settings.Write(kRootKey, "URL", service_->site()));
    ASSERT_TRUE(settings.Write(kRootKey, "IP", service_->base()));
    main_->tmrUpgrade.SetEnabled(false);
  }

  bool Ready(const char* name) { return Shown(name) != nullptr; }
  void Shot(const char* form, const char* name) {
    Form* f = Shown(form);
    ASSERT_NE(f, nullptr) << form;
    host_->WindowOf(*f)->Sync();
    QWidget* w = static_cast<QWidget*>(host_->WindowOf(*f));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(w));
    testing::SaveScreenshot(w, name);
  }

  // The Help menu's check up to its answer, shot as `name`, then OK.
  void CheckSteps(std::vector<ScreenStep>& steps, const char* name) {
    steps.push_back(
        {[this] {
           return Ready("frmCheckUpgrade") &&
                  app_->forms().Get<frmCheckUpgrade>().imgOK.Enabled();
         },
         [this, name] {
           auto& check = app_->forms().Get<frmCheckUpgrade>();
           EXPECT_EQ(check.lblConnecting.Caption(), kUpgradeQuestion);
           Shot("frmCheckUpgrade", name);
           user::Click(check.imgOK);
         }});
  }

  SigningKeyPair keys_;
  std::shared_ptr<testing::FakeLauncher::Record> started_;
  testing::TempDir files_;
  testing::TempDir data_;
  std::filesystem::path upgrade_file_;
  std::unique_ptr<testing::ServiceProcess> service_;
};

TEST_F(UpgradeSmokeTest, ASignedUpgradeIsDownloadedAndStarted) {
  auto steps = std::make_shared<std::vector<ScreenStep>>();
  CheckSteps(*steps, "upgrade_check");
  RunSteps(steps, 0);
  user::Click(main_->mnuHUpgrade);
  ASSERT_TRUE(
      QTest::qWaitFor([this] { return !started_->opened.empty(); }, 60000));
  ASSERT_TRUE(QTest::qWaitFor(
      [this] { return app_->forms().Find("frmDisplayDownload") == nullptr; },
      10000));
  EXPECT_EQ(testing::ReadFile(started_->opened[0]), kInstaller);
}

// A file changed on the server after it was signed: the download window
// stays with its bar where it got to, and nothing is started.
TEST_F(UpgradeSmokeTest, AChangedUpgradeLeavesTheDownloadWindowStanding) {
  std::ofstream(upgrade_file_, std::ios::trunc) << "#!/bin/sh\nrm -r ~\n";
  bool done = false;
  auto steps = std::make_shared<std::vector<ScreenStep>>();
  CheckSteps(*steps, "upgrade_check_newer");
  steps->push_back({[this] {
                      return Ready("frmDisplayDownload") &&
                             !app_->forms()
                                  .Get<frmDisplayDownload>()
                                  .FieldValue("msRefusal")
                                  .ToText()
                                  .empty();
                    },
                    [this, &done] {
                      Shot("frmDisplayDownload", "upgrade_download_refused");
                      done = true;
                      app_->forms().Get<frmDisplayDownload>().Unload();
                    }});
  RunSteps(steps, 0);
  user::Click(main_->mnuHUpgrade);
  ASSERT_TRUE(QTest::qWaitFor([&done] { return done; }, 60000));
  EXPECT_TRUE(started_->opened.empty());
}

}  // namespace
}  // namespace qbpd
