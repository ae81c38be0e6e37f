// Sign-up through the program's forms with the real client against a real
// qbpd-service: three steps, the service's answer about an account that
// exists bringing step 1 back, then the new account logged in at once and
// the upload that was under way going into it.
#include "core/settings.h"
#include "online/frm_registration.h"
#include "online/frm_upload_congrats.h"
#include "platform/http_transport.h"
#include "tests/online/online_fixture.h"
#include "tests/online/service_process.h"

namespace qbpd::testing_support {
namespace {

class SignUpRoadTest : public OnlineTest {
 protected:
  void SetUp() override {
    service_ = std::make_unique<testing::ServiceProcess>(
        QBPD_SERVICE_PROGRAM, service_dir_.path(),
        std::vector<std::string>{"--seed-demo"});
    ASSERT_TRUE(service_->ok()) << service_->error();
    site_ = service_->site();
    address_ = service_->base();
    real_client_ = true;
  }

  void Set(const std::string& control, const std::string& text) {
    QueueText("frmRegistration", control, text);
  }

  testing::TempDir service_dir_;
  std::unique_ptr<testing::ServiceProcess> service_;
};

TEST_F(SignUpRoadTest, ThreeStepsThenTheUploadGoesIntoTheNewAccount) {
  WritePhotos(2);
  Start();
  Select(2);
  QueueClick("frmMainWindow", "imgUpload");
  QueueClick("frmLogin", "lblSignUp");
  // Step 1, first with the demo account's address, which exists.
  Set("txtFirstName", "Zoë");
  Set("txtLastName", "Ng");
  Set("txtEmailId", "demo@quillbay.test");
  Set("txtPwd", "secret1");
  Set("txtRePwd", "secret1");
  Queue("accept the terms", [this] {
    auto& form = app().forms().Get<frmRegistration>();
    user::Click(form.chkAcceptterms);
    user::Click(form.chkRememberme);
  });
  QueueClick("frmRegistration", "imgContinue");
  // Step 2: the address.
  Set("txtStreet1", "1 Main Street");
  Set("txtCity", "San Francisco");
  Queue("state", [this] {
    auto& form = app().forms().Get<frmRegistration>();
    user::ChooseItem(form.cboState, form.cboState.FindItem("CA"));
  });
  Set("txtZipMailingAddrs", "94105");
  Set("txtPhone1", "4155550100");
  QueueClick("frmRegistration", "imgContinue");
  // Step 3: a card that expires next year.
  Set("txtCardNumber", "4111 1111 1111 1111");
  Queue("expiry", [this] {
    auto& form = app().forms().Get<frmRegistration>();
    user::ChooseItem(form.cboMonth, 12);
    user::ChooseItem(form.cboYear, 2);
  });
  Set("txtBillZip", "94105");
  QueueClick("frmRegistration", "imgContinue");
  Queue("the account exists", [this] {
    auto& form = app().forms().Get<frmRegistration>();
    EXPECT_TRUE(form.fraStep1.Visible());
    EXPECT_EQ(form.lblEmail.Caption(), "email address *");
    EXPECT_NE(form.lblErrInfm.Caption().find(
                  "A Quillbay account with your email address already "
                  "exists."),
              std::string::npos);
  });
  Set("txtEmailId", "zoe@example.test");
  QueueClick("frmRegistration", "imgContinue");
  QueueClick("frmRegistration", "imgContinue");
  QueueClick("frmRegistration", "imgContinue");
  QueueText("frmUploadAlbumInfm", "txtNewAlbumConn", "First album");
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  Queue("result", [this] {
    EXPECT_EQ(
        app().forms().Get<frmUploadCongrats>().lblPhotosUploaded.Caption(),
        "Your photos have been successfully added to your online "
        "album.");
  });
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(session().giUploadedCount, 2);
  EXPECT_EQ(session().gsUserEmail, "zoe@example.test");
  EXPECT_EQ(settings().Read(kSettingsKey, "AutoLogin"), "True");
  EXPECT_EQ(settings().Read(kSettingsKey, "UserName"), "zoe@example.test");
  EXPECT_EQ(settings().Read(kSettingsKey, "EncryptedPassword"),
            EncryptPassword("secret1"));

  // The service holds the account with its address, card and album.
  std::unique_ptr<ctlExtAPI> client =
      MakeServiceClient(host(), [] { return MakeCurlTransport(); });
  StringArray login;
  std::string code, text;
  ASSERT_TRUE(client->LoginUser(site_, "zoe@example.test", "secret1", login,
                                code, text))
      << code << " " << text;
  std::string type;
  StringArray profile, address, card;
  ASSERT_TRUE(client->GetUserInfo(site_, login[0], type, profile, address, card,
                                  code, text));
  EXPECT_EQ(type, "FUL");
  EXPECT_EQ(profile[1], "Zoë");
  EXPECT_EQ(address[6], "CA");
  EXPECT_EQ(card[1], "XXXXXXXXXXXX1111");
  TextGrid albums;
  ASSERT_TRUE(client->GetAlbumList(site_, login[0], albums, code, text));
  EXPECT_EQ(albums.ToRows()[1], std::vector<std::string>{"First album"});
}

}  // namespace
}  // namespace qbpd::testing_support
