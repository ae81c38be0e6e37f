// A print order in the desktop program under the offscreen platform,
// against a real qbpd-service: three photos through the order dialog's
// three steps (quantities with a coupon, another ship-to address, the
// review), the upload and the placing, to the receipt page; each step on
// screen and saved as a screenshot (tests/ui/screenshots/order_*.png).
#include "core/settings.h"
#include "online/frm_login.h"
#include "online/frm_upload_congrats.h"
#include "platform/forms/user_input.h"
#include "printorder/frm_ord_prints.h"
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

class OrderSmokeTest : public testing::DesktopTest {
 protected:
  OrderSmokeTest() { photo_count_ = 3; }

  void Shot(const char* form, const char* name) {
    Form* f = Shown(form);
    ASSERT_NE(f, nullptr) << form;
    host_->WindowOf(*f)->Sync();
    auto* w = static_cast<QWidget*>(host_->WindowOf(*f));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(w));
    testing::SaveScreenshot(w, name);
  }
  frmOrdPrints& Dialog() { return app_->forms().Get<frmOrdPrints>(); }
  bool AtStep(int step) {
    return Shown("frmOrdPrints") != nullptr &&
           Dialog().FieldValue("miCurrentStep").As<int>() == step;
  }
};

TEST_F(OrderSmokeTest, ThreePhotosThroughTheThreeStepsToTheReceipt) {
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
  bool done = false;
  const std::string password = service.demo_password();
  auto steps = std::make_shared<std::vector<ScreenStep>>();
  steps->push_back({[this] { return Shown("frmLogin") != nullptr; },
                    [this, password] {
                      auto& login = app_->forms().Get<frmLogin>();
                      login.txtEmailAdd.SetText("demo@quillbay.test");
                      login.txtPassword.SetText(password);
                      user::Click(login.imgOK);
                    }});
  steps->push_back({[this] { return AtStep(1); },
                    [this] {
                      frmOrdPrints& d = Dialog();
                      d.txtQty[0].SetText("2");
                      d.txtQty[2].SetText("1");
                      d.txtQty[4].SetText("1");
                      d.txtcouponnumber.SetText("SAVE10");
                      user::Click(d.imgS1RightUpdate);
                      EXPECT_TRUE(d.lblS1CouponPerc.Visible());
                      Shot("frmOrdPrints", "order_step1_quantities");
                      user::Click(d.imgS1EditInfo);
                    }});
  steps->push_back({[this] { return AtStep(2); },
                    [this] {
                      frmOrdPrints& d = Dialog();
                      user::Click(d.optS2ShipToDiffadd);
                      d.txtS2FName.SetText("Robin");
                      d.txtS2LastName.SetText("Reed");
                      d.txtS2Street1.SetText("40 Harbour Road");
                      d.txtS2City.SetText("Austin");
                      d.cboS2State.SetListIndex(44);  // TX
                      d.txtS2MailZip.SetText("73301");
                      Shot("frmOrdPrints", "order_step2_billing");
                      user::Click(d.imgS2Continue);
                    }});
  steps->push_back({[this] { return AtStep(1); },
                    [this] { user::Click(Dialog().imgS1Continue); }});
  steps->push_back({[this] { return AtStep(3); },
                    [this] {
                      frmOrdPrints& d = Dialog();
                      EXPECT_TRUE(d.lblS3TaxHead.Visible());
                      Shot("frmOrdPrints", "order_step3_review");
                      user::Click(d.imgS3Continue);
                    }});
  steps->push_back({[this] { return Shown("frmUploadCongrats") != nullptr; },
                    [this, &done] {
                      Shot("frmUploadCongrats", "order_receipt");
                      auto& page = app_->forms().Get<frmUploadCongrats>();
                      EXPECT_EQ(page.lblPhotosUploaded.Caption(),
                                "Your order has been received.");
                      done = true;
                      user::Click(page.imgOK);
                    }});
  RunSteps(steps, 0);
  user::Click(main_->imgOrdPrints);
  ASSERT_TRUE(QTest::qWaitFor([&done] { return done; }, 90000));
  EXPECT_EQ(app_->forms().Find("frmOrdPrints"), nullptr);
  EXPECT_FALSE(session().gsOrderId.empty());
}

}  // namespace
}  // namespace qbpd
