// Sharing and sign-up in the desktop program under the offscreen platform,
// against a real qbpd-service: the share form, the result page and the
// three steps of sign-up, each
// on screen and saved as a screenshot (tests/ui/screenshots/share_*.png and
// signup_*.png).
#include "core/settings.h"
#include "online/frm_login.h"
#include "online/frm_registration.h"
#include "online/frm_share_congrats.h"
#include "online/frm_share_info.h"
#include "online/frm_upload_album_infm.h"
#include "platform/forms/user_input.h"
#include "tests/online/service_process.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_host.h"

#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace qbpd {
namespace {

using testing::RunSteps;
using testing::ScreenStep;

class ShareSignUpSmokeTest : public testing::DesktopTest {
 protected:
  ShareSignUpSmokeTest() { photo_count_ = 5; }

  void SetUp() override {
    DesktopTest::SetUp();
    service_ = std::make_unique<testing::ServiceProcess>(
        QBPD_SERVICE_PROGRAM, data_.path(),
        std::vector<std::string>{"--seed-demo"});
    ASSERT_TRUE(service_->ok()) << service_->error();
    SettingsStore& settings = app_->settings();
    ASSERT_TRUE(settings.Write(kRootKey, "URL", service_->site()));
    ASSERT_TRUE(settings.Write(kRootKey, "IP", service_->base()));
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
  void Run(std::shared_ptr<std::vector<ScreenStep>> steps,
           Control& start,
           bool& done) {
    RunSteps(steps, 0);
    user::Click(start);
    ASSERT_TRUE(QTest::qWaitFor([&done] { return done; }, 60000));
  }

  testing::TempDir data_;
  std::unique_ptr<testing::ServiceProcess> service_;
};

TEST_F(ShareSignUpSmokeTest, ShareFormResultAndAddressBook) {
  ASSERT_TRUE(app_->settings().Write(kSettingsKey, "AutoLogin", "False"));
  for (int i = 0; i < photo_count_; ++i) {
    user::SetCheck(main_->ctrlQuilImage[i], true);
  }
  const std::string password = service_->demo_password();
  bool done = false;
  auto steps = std::make_shared<std::vector<ScreenStep>>();
  steps->push_back({[this] { return Ready("frmLogin"); },
                    [this, password] {
                      auto& login = app_->forms().Get<frmLogin>();
                      login.txtEmailAdd.SetText("demo@quillbay.test");
                      login.txtPassword.SetText(password);
                      user::Click(login.imgOK);
                    }});
  steps->push_back({[this] { return Ready("frmShareInfo"); },
                    [this] {
                      auto& form = app_->forms().Get<frmShareInfo>();
                      form.txtTo.SetText("bob@example.com, cy@example.org");
                      form.txtAlbum.SetText("Walk by the sea");
                      Shot("frmShareInfo", "share_info");
                      user::Click(form.imgContinue);
                    }});
  steps->push_back({[this] { return Ready("frmShareCongrats"); },
                    [this, &done] {
                      Shot("frmShareCongrats", "share_congrats");
                      auto& page = app_->forms().Get<frmShareCongrats>();
                      EXPECT_EQ(page.lblMailId.Caption(),
                                "bob@example.com\ncy@example.org");
                      done = true;
                      user::Click(page.imgOK);
                    }});
  Run(steps, main_->imgShare, done);
}

TEST_F(ShareSignUpSmokeTest, TheThreeStepsOfSignUp) {
  ASSERT_TRUE(app_->settings().Write(kSettingsKey, "AutoLogin", "False"));
  for (int i = 0; i < 2; ++i) {
    user::SetCheck(main_->ctrlQuilImage[i], true);
  }
  bool done = false;
  auto steps = std::make_shared<std::vector<ScreenStep>>();
  steps->push_back(
      {[this] { return Ready("frmLogin"); },
       [this] { user::Click(app_->forms().Get<frmLogin>().lblSignUp); }});
  steps->push_back({[this] { return Ready("frmRegistration"); },
                    [this] {
                      auto& form = app_->forms().Get<frmRegistration>();
                      form.txtFirstName.SetText("Zo\xC3\xAB");
                      form.txtEmailId.SetText("zoe@example.test");
                      form.txtPwd.SetText("abcd");
                      form.txtRePwd.SetText("abcd");
                      user::Click(form.imgContinue);
                      Shot("frmRegistration", "signup_account_marked");
                      form.txtLastName.SetText("Ng");
                      form.txtPwd.SetText("secret1");
                      form.txtRePwd.SetText("secret1");
                      user::Click(form.chkAcceptterms);
                      user::Click(form.imgContinue);
                      form.txtStreet1.SetText("1 Main Street");
                      form.txtCity.SetText("San Francisco");
                      user::ChooseItem(form.cboState,
                                       form.cboState.FindItem("CA"));
                      form.txtZipMailingAddrs.SetText("94105");
                      Shot("frmRegistration", "signup_address");
                      user::Click(form.imgContinue);
                      form.txtCardNumber.SetText("4111 1111 1111 1111");
                      user::ChooseItem(form.cboMonth, 12);
                      user::ChooseItem(form.cboYear, 2);
                      form.txtBillZip.SetText("94105");
                      Shot("frmRegistration", "signup_card");
                      user::Click(form.imgContinue);
                    }});
  steps->push_back({[this] { return Ready("frmUploadAlbumInfm"); },
                    [this, &done] {
                      EXPECT_EQ(session().gsUserEmail, "zoe@example.test");
                      done = true;
                      user::Click(
                          app_->forms().Get<frmUploadAlbumInfm>().imgCancel);
                    }});
  Run(steps, main_->imgUpload, done);
}

}  // namespace
}  // namespace qbpd
