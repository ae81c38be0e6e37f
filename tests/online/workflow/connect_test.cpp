// The road from an online button to the action's first form: the checks of
// ConnectToSite, the login form's rules, the connection window's calls,
// failures and cancels.
#include "online/frm_login.h"
#include "online/frm_net_conn.h"
#include "tests/online/online_fixture.h"

#include <filesystem>

namespace qbpd::testing_support {
namespace {

using ConnectTest = OnlineTest;

constexpr char kNoPhotos[] =
    "This action requires at least one photo to be chosen. Please choose "
    "some\n photos by clicking the checkbox next to the thumbnail and try "
    "again.";

TEST_F(ConnectTest, AnEmptySelectionStopsBeforeAnyCall) {
  WritePhotos(2);
  Start();
  QueueClick("frmMainWindow", "imgUpload");
  ExpectBox(kNoPhotos);
  Run();
  EXPECT_EQ(Messages().back(), kNoPhotos);
  EXPECT_EQ(session().giCurrentOperation, 0);
  EXPECT_TRUE(Operations().empty());
}

TEST_F(ConnectTest, NoConnectionEndsTheClickWithTheActionsOwnSpelling) {
  WritePhotos(1);
  Start();
  Select(1);
  internet_ = false;
  QueueClick("frmMainWindow", "imgUpload");
  ExpectBox("Please, check internet connection...");
  // The share button spells it its own way.
  QueueClick("frmMainWindow", "imgShare");
  ExpectBox("Please, Check Internet Connection...");
  Run();
  EXPECT_EQ(internet_checks_, 2);
  EXPECT_EQ(session().giCurrentOperation, 0);
  EXPECT_TRUE(Operations().empty());
}

TEST_F(ConnectTest, OneMissingPhotoStopsTheActionAndReloadsTheList) {
  WritePhotos(3);
  Start();
  Select(3);
  std::filesystem::remove(Photo(2));
  QueueClick("frmMainWindow", "imgUpload");
  ExpectBox("Some photo(s) does not exist");
  Run();
  EXPECT_EQ(session().giCurrentOperation, 0);
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
  EXPECT_TRUE(Operations().empty());
  EXPECT_EQ(Find("frmLogin"), nullptr);
}

TEST_F(ConnectTest, ASiteAddressOfOneCharacterCountsAsMissing) {
  WritePhotos(1);
  Start();
  Select(1);
  ASSERT_TRUE(settings().Write(kRootKey, "IP", "x"));
  QueueClick("frmMainWindow", "imgUpload");
  host().QueueMsgBoxAnswer("site", [](const MsgBoxCall& call) {
    EXPECT_EQ(call.prompt, "Enter site URL in registry");
    EXPECT_EQ(call.style, kMbStop);
    return kIdOk;
  });
  Run();
  EXPECT_EQ(session().gsSiteUrl, "");
  EXPECT_EQ(session().gsSiteAddress, "");
  EXPECT_EQ(session().giCurrentOperation, 0);
}

TEST_F(ConnectTest, AutoLoginWithAStoredPairLogsInWithoutTheLoginForm) {
  WritePhotos(2);
  Start();
  Select(2);
  StoreLogin("ann@example.com", "pa55word", "True");
  client().Queue(LoginOk("CODE1", "USER1"));
  client().Queue(Albums({"7"}, {"Holidays"}));
  QueueClick("frmMainWindow", "imgUpload");
  QueueClick("frmUploadAlbumInfm", "imgCancel");
  Run();
  ASSERT_EQ(Operations(),
            (std::vector<std::string>{"LoginUser", "GetAlbumList"}));
  const RecordedCall& login = client().Calls()[0];
  EXPECT_EQ(login.Input("site"), kSite);
  EXPECT_EQ(login.Input("email"), "ann@example.com");
  // The whole password, unscrambled, its last character included.
  EXPECT_EQ(login.Input("password"), "pa55word");
  EXPECT_EQ(client().Calls()[1].Input("authCode"), "CODE1");
  EXPECT_EQ(session().gsAuthCode, "CODE1");
  EXPECT_EQ(session().gsUserCode, "USER1");
  EXPECT_EQ(session().gsPrevUserEmail, "ann@example.com");
  for (const std::string& shown : host().ShownForms()) {
    EXPECT_NE(shown, "frmLogin modal");
  }
  // Remembered: the password is stored scrambled, never in plain text.
  EXPECT_EQ(settings().Read(kSettingsKey, "EncryptedPassword"),
            EncryptPassword("pa55word"));
  EXPECT_EQ(session().giCurrentOperation, 0);
  // The selection's photos went to the album form.
  EXPECT_EQ(session().gdicAlbumPhotos.Count(), 2);
}

TEST_F(ConnectTest, AutoLoginWithoutAPasswordShowsTheLoginFormRemembering) {
  WritePhotos(1);
  Start();
  Select(1);
  ASSERT_TRUE(settings().Write(kSettingsKey, "UserName", "ann@example.com"));
  ASSERT_TRUE(settings().Write(kSettingsKey, "AutoLogin", "TRUE"));
  QueueClick("frmMainWindow", "imgUpload");
  Queue("look", [this] {
    EXPECT_EQ(FieldOf("frmLogin", "chkRemember", "Value").ToLong(), 1);
    EXPECT_EQ(FieldOf("frmLogin", "txtEmailAdd", "Text").ToText(),
              "ann@example.com");
  });
  QueueClick("frmLogin", "imgCancel");
  Run();
  EXPECT_TRUE(session().gbRememberLogin);
  EXPECT_TRUE(Operations().empty());
}

// The login form's checks, each stopping before any call, in order.
struct LoginCase {
  const char* email;
  const char* password;
  const char* message;
};
class LoginChecks : public OnlineTest,
                    public ::testing::WithParamInterface<LoginCase> {};

TEST_P(LoginChecks, StopWithTheirMessageInTheErrorLabel) {
  const LoginCase& c = GetParam();
  WritePhotos(1);
  Start();
  Select(1);
  QueueClick("frmMainWindow", "imgUpload");
  QueueText("frmLogin", "txtEmailAdd", c.email);
  QueueText("frmLogin", "txtPassword", c.password);
  QueueClick("frmLogin", "imgOK");
  Queue("look", [this, c] {
    auto& login = app().forms().Get<frmLogin>();
    EXPECT_EQ(login.lblError.Caption(), c.message);
    EXPECT_TRUE(login.lblError.Visible());
    EXPECT_FALSE(login.lbltoQuillbay.Visible());
    EXPECT_TRUE(login.imgOK.Enabled());
  });
  QueueClick("frmLogin", "imgCancel");
  Run();
  EXPECT_TRUE(Operations().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Rules,
    LoginChecks,
    ::testing::Values(
        LoginCase{"  ", "x", "Email address cannot be empty"},
        LoginCase{"ann@example.com", "   ", "Password cannot be empty"},
        LoginCase{"@example.com", "x",
                  "Enter a valid email address starting aplhabet"},
        // Blanks inside a password are refused.
        LoginCase{"ann@example.com", "pass word",
                  "Please enter valid password"},
        // A blank of another script too, and a character of no group.
        LoginCase{"ann@example.com", "pass\xE3\x80\x80word",
                  "Please enter valid password"},
        LoginCase{"ann@example.com",
                  "\xC2\xA3"
                  "5",
                  "Please enter valid password"}));

// Each failure code of LoginUser and the text the login form shows.
struct FailureCase {
  const char* code;
  const char* text;
  const char* shown;
};
class LoginFailures : public OnlineTest,
                      public ::testing::WithParamInterface<FailureCase> {};

TEST_P(LoginFailures, ComeBackToTheLoginFormWithTheirText) {
  const FailureCase& c = GetParam();
  WritePhotos(1);
  Start();
  Select(1);
  client().Queue(Failure<LoginUserReply>(c.code, c.text));
  QueueClick("frmMainWindow", "imgUpload");
  QueueText("frmLogin", "txtEmailAdd", "ann@example.com");
  QueueText("frmLogin", "txtPassword", "secret");
  QueueClick("frmLogin", "imgOK");
  Queue("look", [this, c] {
    auto& login = app().forms().Get<frmLogin>();
    EXPECT_TRUE(login.Visible());
    EXPECT_EQ(login.lblError.Caption(), c.shown);
    EXPECT_TRUE(login.lblError.Visible());
    // The entries stay for a correction.
    EXPECT_EQ(login.txtEmailAdd.Text(), "ann@example.com");
    EXPECT_EQ(login.txtPassword.Text(), "secret");
    EXPECT_EQ(Find("frmNetConn"), nullptr);
  });
  QueueClick("frmLogin", "imgCancel");
  Run();
  EXPECT_EQ(Operations(), std::vector<std::string>{"LoginUser"});
  EXPECT_EQ(session().gsAuthCode, "");
  EXPECT_EQ(session().giCurrentOperation, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Codes,
    LoginFailures,
    ::testing::Values(
        FailureCase{"9999", "boom",
                    "There is some problem with the server, Please try after "
                    "some time..."},
        FailureCase{"0", "no route", "Please check Internet Connection"},
        // "Please try again." first, the service's sentence second.
        FailureCase{"2006", "no account",
                    "Please try again.\nOops! There is no Quillbay account "
                    "with this email address."},
        FailureCase{"2010", "Your account is locked.",
                    "Your account is locked."}));

TEST_F(ConnectTest, AFailedLoginCanBeCorrectedAndTriedAgain) {
  WritePhotos(1);
  Start();
  Select(1);
  client().Queue(Failure<LoginUserReply>("2006", "no"));
  client().Queue(LoginOk());
  client().Queue(Albums({""}, {""}));
  QueueClick("frmMainWindow", "imgUpload");
  QueueText("frmLogin", "txtEmailAdd", "ann@example.com");
  QueueText("frmLogin", "txtPassword", "wrong");
  QueueClick("frmLogin", "imgOK");
  QueueText("frmLogin", "txtPassword", "right");
  QueueClick("frmLogin", "imgOK");
  QueueClick("frmUploadAlbumInfm", "imgCancel");
  Run();
  ASSERT_EQ(Operations(), (std::vector<std::string>{"LoginUser", "LoginUser",
                                                    "GetAlbumList"}));
  EXPECT_EQ(client().Calls()[1].Input("password"), "right");
  // Not remembered: only AutoLogin is written, no password.
  EXPECT_EQ(settings().Read(kSettingsKey, "AutoLogin"), "False");
  EXPECT_EQ(settings().Read(kSettingsKey, "EncryptedPassword"), "");
  EXPECT_EQ(session().gsAuthCode, "S1");
}

TEST_F(ConnectTest, APasswordIsJudgedByTheCharactersTyped) {
  WritePhotos(1);
  Start();
  Select(1);
  client().Queue(LoginOk());
  client().Queue(Albums({""}, {""}));
  QueueClick("frmMainWindow", "imgUpload");
  QueueText("frmLogin", "txtEmailAdd", "ann@example.com");
  // "Pässwörd": two letters of the code page's upper half, two bytes each.
  QueueText("frmLogin", "txtPassword", "P\xC3\xA4ssw\xC3\xB6rd");
  QueueClick("frmLogin", "imgOK");
  QueueClick("frmUploadAlbumInfm", "imgCancel");
  Run();
  ASSERT_EQ(Operations(),
            (std::vector<std::string>{"LoginUser", "GetAlbumList"}));
  EXPECT_EQ(client().Calls()[0].Input("password"), "P\xC3\xA4ssw\xC3\xB6rd");
}

TEST_F(ConnectTest, ACancelWhileLoginUserWaitsEndsInTheTimer) {
  WritePhotos(1);
  Start();
  Select(1);
  StoreLogin("ann@example.com", "secret", "True");
  LoginUserReply slow = LoginOk();
  slow.wait_ms = 5000;
  client().Queue(slow);
  QueueClick("frmMainWindow", "imgUpload");
  QueueClickInside("frmNetConn", "imgCancel", /*skip=*/3);
  Queue("after the click", [this] {
    // The click only asked for the cancel; the window is still there.
    Form* conn = Find("frmNetConn");
    ASSERT_NE(conn, nullptr);
    EXPECT_TRUE(conn->FieldValue("mbCancelPending").ToBool());
    EXPECT_EQ(static_cast<frmNetConn*>(conn)->lblLogin.Caption(),
              "Disconnecting from Quillbay\xE2\x80\xA6");
    host().Wait(500);
  });
  Run();
  EXPECT_EQ(client().CancelRequests(), 1);
  EXPECT_EQ(Operations(), std::vector<std::string>{"LoginUser"});
  EXPECT_EQ(Find("frmNetConn"), nullptr);
  EXPECT_EQ(session().gsAuthCode, "");
  EXPECT_TRUE(session().gbUserCancelled);
  EXPECT_EQ(session().giCurrentOperation, 0);
}

TEST_F(ConnectTest, ALiveSessionSkipsLoginAndAChangedUserDropsIt) {
  WritePhotos(1);
  Start();
  Select(1);
  StoreLogin("ann@example.com", "secret", "True");
  client().Queue(LoginOk("FIRST"));
  client().SetDefault(Albums({"1"}, {"A"}));
  QueueClick("frmMainWindow", "imgUpload");
  QueueClick("frmUploadAlbumInfm", "imgCancel");
  // Second click: the session is alive, no login.
  QueueClick("frmMainWindow", "imgUpload");
  QueueClick("frmUploadAlbumInfm", "imgCancel");
  Queue("another user", [this] {
    ASSERT_TRUE(settings().Write(kSettingsKey, "UserName", "bob@example.com"));
  });
  QueueClick("frmMainWindow", "imgUpload");
  QueueClick("frmUploadAlbumInfm", "imgCancel");
  client().Queue(LoginOk("SECOND"));
  Run();
  EXPECT_EQ(Operations(), (std::vector<std::string>{"LoginUser", "GetAlbumList",
                                                    "GetAlbumList", "LoginUser",
                                                    "GetAlbumList"}));
  EXPECT_EQ(client().Calls()[3].Input("email"), "bob@example.com");
  EXPECT_EQ(session().gsAuthCode, "SECOND");
}

TEST_F(ConnectTest, CancelWithNoCallRunningPausesOneSecond) {
  WritePhotos(1);
  Start();
  Select(1);
  StoreLogin("ann@example.com", "secret", "True");
  GetAlbumListReply slow = Albums({"1"}, {"A"});
  client().Queue(LoginOk());
  client().Queue(Failure<GetAlbumListReply>("0", "gone"));
  QueueClick("frmMainWindow", "imgUpload");
  // The album list failed for want of a connection: the login form shows.
  Queue("look", [this] {
    auto& login = app().forms().Get<frmLogin>();
    EXPECT_EQ(login.lblError.Caption(), "Please check Internet Connection");
  });
  QueueClick("frmLogin", "imgCancel");
  Run();
  EXPECT_EQ(Operations(),
            (std::vector<std::string>{"LoginUser", "GetAlbumList"}));
}

TEST_F(ConnectTest, ThePhotoThatVanishesBeforeTheWorkerIsDroppedSilently) {
  WritePhotos(3);
  Start();
  Select(3);
  StoreLogin("ann@example.com", "secret", "True");
  LoginUserReply login = LoginOk();
  login.wait_ms = 100;
  client().Queue(login);
  client().Queue(Albums({"1"}, {"A"}));
  // The photo goes while LoginUser waits, after ConnectToSite's check.
  QueueClick("frmMainWindow", "imgUpload");
  QueueInside("delete photo 2", [this] { std::filesystem::remove(Photo(2)); });
  Queue("look", [this] {
    EXPECT_EQ(session().gdicAlbumPhotos.Count(), 2);
    EXPECT_FALSE(session().gdicAlbumPhotos.Exists(1));
  });
  QueueClick("frmUploadAlbumInfm", "imgCancel");
  Run();
  EXPECT_TRUE(Messages().empty());
  // With a photo gone the selection is emptied after the action.
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 0);
}

TEST_F(ConnectTest, ForgotPasswordOpensTheServicePageInTheBrowser) {
  WritePhotos(1);
  Start();
  Select(1);
  QueueClick("frmMainWindow", "imgUpload");
  QueueClick("frmLogin", "lblForgotpass");
  QueueClick("frmLogin", "imgCancel");
  Run();
  ASSERT_EQ(Opened().size(), 1u);
  EXPECT_EQ(Opened()[0], std::string(kAddress) + "/forgotpassword/t_=0");
}

}  // namespace
}  // namespace qbpd::testing_support
