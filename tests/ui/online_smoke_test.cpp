// The upload road in the desktop program under the offscreen platform,
// against a real qbpd-service: the login form, the connection, the album
// choice, the transfer screen and the result page, each on screen and
// saved as a screenshot (tests/ui/screenshots/online_*.png).
#include "core/settings.h"
#include "online/frm_login.h"
#include "online/frm_upload_album_infm.h"
#include "online/frm_upload_congrats.h"
#include "platform/forms/user_input.h"
#include "tests/online/service_process.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_host.h"

#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

namespace qbpd {
namespace {

using testing::RunSteps;
using testing::ScreenStep;

class OnlineSmokeTest : public testing::DesktopTest {
 protected:
  OnlineSmokeTest() { photo_count_ = 8; }

  QWidget* WindowOf(const char* name) {
    Form* f = Shown(name);
    return f != nullptr ? static_cast<QWidget*>(host_->WindowOf(*f)) : nullptr;
  }
  void Shot(const char* form, const char* name) {
    QWidget* w = WindowOf(form);
    ASSERT_NE(w, nullptr) << form;
    ASSERT_TRUE(QTest::qWaitForWindowExposed(w));
    testing::SaveScreenshot(w, name);
  }
};

TEST_F(OnlineSmokeTest, UploadsThroughLoginAlbumChoiceAndTheResultPage) {
  testing::TempDir data;
  testing::ServiceProcess service(QBPD_SERVICE_PROGRAM, data.path(),
                                  {"--seed-demo"});
  ASSERT_TRUE(service.ok()) << service.error();
  SettingsStore& settings = app_->settings();
  ASSERT_TRUE(settings.Write(kRootKey, "URL", service.site()));
  ASSERT_TRUE(settings.Write(kRootKey, "IP", service.base()));
  ASSERT_TRUE(settings.Write(kSettingsKey, "AutoLogin", "False"));
  for (int i = 0; i < photo_count_; ++i) {
    user::SetCheck(main_->ctrlQuilImage[i], true);
  }

  bool saw_transfer = false;
  bool done = false;
  const std::string password = service.demo_password();
  auto steps = std::make_shared<std::vector<ScreenStep>>();
  steps->push_back({[this] { return Shown("frmLogin") != nullptr; },
                    [this, password] {
                      auto& login = app_->forms().Get<frmLogin>();
                      login.txtEmailAdd.SetText("demo@quillbay.test");
                      login.txtPassword.SetText(password);
                      host_->WindowOf(login)->Sync();
                      Shot("frmLogin", "online_login");
                      user::Click(login.imgOK);
                    }});
  steps->push_back({[this] { return Shown("frmUploadAlbumInfm") != nullptr; },
                    [this] {
                      auto& form = app_->forms().Get<frmUploadAlbumInfm>();
                      form.txtNewAlbumConn.SetText("Walk by the sea");
                      host_->WindowOf(form)->Sync();
                      Shot("frmUploadAlbumInfm", "online_album_choice");
                      user::Click(form.imgContinue);
                    }});
  steps->push_back({[this, &saw_transfer] {
                      // The transfer screen is grabbed as it stands while
                      // its engine runs (it pumps the events of the road).
                      QWidget* transfer = WindowOf("frmUploadImgs");
                      if (!saw_transfer && transfer != nullptr &&
                          transfer->isVisible()) {
                        saw_transfer = true;
                        host_->WindowOf(*Shown("frmUploadImgs"))->Sync();
                        testing::SaveScreenshot(transfer, "online_transfer");
                      }
                      return Shown("frmUploadCongrats") != nullptr;
                    },
                    [this, &done] {
                      Shot("frmUploadCongrats", "online_result_page");
                      auto& page = app_->forms().Get<frmUploadCongrats>();
                      EXPECT_EQ(page.lblPhotosUploaded.Caption(),
                                "Your photos have been successfully added to "
                                "your online album.");
                      done = true;
                      user::Click(page.imgOK);
                    }});
  RunSteps(steps, 0);
  user::Click(main_->imgUpload);
  ASSERT_TRUE(QTest::qWaitFor([&done] { return done; }, 60000));
  EXPECT_EQ(session().giUploadedCount, photo_count_);
  // The transfer screen is on screen only while the photos go, which on
  // loopback may be shorter than one look; its picture is taken when a look
  // falls inside it.
  if (!saw_transfer) {
    std::printf("the transfer screen was too quick for a screenshot\n");
  }
  EXPECT_EQ(app_->forms().Find("frmUploadCongrats"), nullptr);
}

}  // namespace
}  // namespace qbpd
