// The upgrade check: the main window's minute timer, the Help menu's check
// (frmCheckUpgrade) and the download (frmDisplayDownload) with its signature,
// against the scripted service double and a throwaway signing key.
#include "online/frm_check_upgrade.h"
#include "online/frm_display_download.h"
#include "platform/signature.h"
#include "tests/online/online_fixture.h"
#include "tests/support/fake_launcher.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace qbpd::testing_support {
namespace {

namespace fs = std::filesystem;

constexpr char kLocation[] = "http://127.0.0.1:8931/download/upgrade1.exe";
constexpr char kInstaller[] = "#!/bin/sh\necho 'Quillbay Picture Desk 2.0'\n";
constexpr int kMinute = 60000;

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

GetUpgradeInfoReply Offer(bool newer, long long wait_ms = 0) {
  GetUpgradeInfoReply reply;
  reply.ok = newer;
  reply.downloadLocation = kLocation;
  reply.newVersion = "2.0.0";
  reply.wait_ms = wait_ms;
  return reply;
}

DownloadFileReply File(const std::string& content) {
  DownloadFileReply reply;
  reply.content = content;
  return reply;
}

class UpgradeTest : public OnlineTest {
 protected:
  UpgradeTest() : keys_(MakeSigningKeyPair()) {
    auto installer = std::make_unique<testing::FakeLauncher>();
    started_ = installer->record();
    installer_ = std::move(installer);
    upgrade_key_ = keys_.public_key;
  }

  // Starts the program and lets the start-up's own check go by unasked: the
  // tests below say what the service answers.
  void StartWithoutTimer() {
    WritePhotos(1);
    Start();
    main().tmrUpgrade.SetEnabled(false);
  }

  // The service's answers to a download: the file and its signature.
  void ServeDownload(const std::string& file, const std::string& signature) {
    client().Queue(File(file));
    client().Queue(File(signature));
  }

  std::string Sign(const std::string& data) {
    return SignBytes(data, keys_.secret_key);
  }

  std::string Downloaded() { return session().gsTempLoc + "upgrade1.exe"; }

  frmCheckUpgrade* Check() {
    return dynamic_cast<frmCheckUpgrade*>(Find("frmCheckUpgrade"));
  }
  frmDisplayDownload* Download() {
    return dynamic_cast<frmDisplayDownload*>(Find("frmDisplayDownload"));
  }

  SigningKeyPair keys_;
  std::shared_ptr<testing::FakeLauncher::Record> started_;
};

// --- the Help menu's check ------------------------------------------------

TEST_F(UpgradeTest, ANewerVersionIsDownloadedCheckedAndStarted) {
  StartWithoutTimer();
  client().Queue(Offer(true));
  ServeDownload(kInstaller, Sign(kInstaller));
  QueueClick("frmMainWindow", "mnuHUpgrade");
  Queue("the check has answered", [this] {
    frmCheckUpgrade* check = Check();
    ASSERT_NE(check, nullptr);
    EXPECT_EQ(check->lblConnecting.Caption(), kUpgradeQuestion);
    EXPECT_TRUE(check->imgOK.Enabled());
    EXPECT_EQ(check->ProgressBar1.Value(), check->ProgressBar1.Max());
    EXPECT_EQ(Download()->lblDownloadPath.Caption(), kLocation);
  });
  QueueClick("frmCheckUpgrade", "imgOK");
  Run();
  ASSERT_EQ(client().Calls().size(), 3u);
  EXPECT_EQ(client().Calls()[0].Input("url"),
            "http://127.0.0.1:8931/download/upgrade.xml");
  EXPECT_EQ(client().Calls()[0].Input("currentVersion"), "1.0.0");
  EXPECT_EQ(client().Calls()[1].Input("url"), kLocation);
  EXPECT_EQ(client().Calls()[1].Input("targetFolder"), session().gsTempLoc);
  EXPECT_EQ(client().Calls()[2].Input("url"), std::string(kLocation) + ".sig");
  // The checked file is started, the signature file is gone, both forms are
  // closed and nothing was said.
  EXPECT_EQ(started_->opened, std::vector<std::string>{Downloaded()});
  EXPECT_EQ(ReadAll(Downloaded()), kInstaller);
  EXPECT_FALSE(fs::exists(Downloaded() + ".sig"));
  EXPECT_EQ(Find("frmCheckUpgrade"), nullptr);
  EXPECT_EQ(Find("frmDisplayDownload"), nullptr);
  EXPECT_TRUE(Messages().empty());
}

// A download that doesn't match its signature is deleted and not started;
// the window stays, its bar where it got to, and says nothing.
TEST_F(UpgradeTest, ADownloadThatDoesNotMatchItsSignatureIsRefused) {
  const std::string good = kInstaller;
  struct Case {
    const char* what;
    std::string file;
    std::string signature;
  };
  const Case cases[] = {
      {"changed", "#!/bin/sh\nrm -rf ~\n", Sign(good)},
      {"cut short", good.substr(0, good.size() / 2), Sign(good)},
      {"empty", "", Sign(good)},
      {"signed by another key", good,
       SignBytes(good, MakeSigningKeyPair().secret_key)},
      {"signature not base64", good, "not a signature"},
      {"signature empty", good, ""},
  };
  StartWithoutTimer();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    client().Queue(Offer(true));
    ServeDownload(c.file, c.signature);
    QueueClick("frmMainWindow", "mnuHUpgrade");
    QueueClick("frmCheckUpgrade", "imgOK");
    Queue("the download stands", [this] {
      frmDisplayDownload* download = Download();
      ASSERT_NE(download, nullptr);
      EXPECT_TRUE(download->Visible());
      EXPECT_EQ(download->lblConnecting.Caption(),
                "Downloading the file......");
      EXPECT_LT(download->ProgressBar1.Value(), download->ProgressBar1.Max());
      EXPECT_NE(download->FieldValue("msRefusal").ToText(), "");
      download->Unload(kUnloadFromUser);
    });
    Run();
    EXPECT_TRUE(started_->opened.empty());
    EXPECT_FALSE(fs::exists(Downloaded()));
    EXPECT_FALSE(fs::exists(Downloaded() + ".sig"));
    EXPECT_TRUE(Messages().empty());
  }
}

TEST_F(UpgradeTest, ADownloadWithoutASignatureIsRefused) {
  StartWithoutTimer();
  client().Queue(Offer(true));
  client().Queue(File(kInstaller));
  client().Queue(Failure<DownloadFileReply>("", "HTTP status 404"));
  QueueClick("frmMainWindow", "mnuHUpgrade");
  QueueClick("frmCheckUpgrade", "imgOK");
  Queue("the download stands", [this] {
    ASSERT_NE(Download(), nullptr);
    EXPECT_EQ(Download()->FieldValue("msRefusal").ToText(),
              "The download has no signature.");
    Download()->Unload(kUnloadFromUser);
  });
  Run();
  EXPECT_TRUE(started_->opened.empty());
  EXPECT_FALSE(fs::exists(Downloaded()));
}

TEST_F(UpgradeTest, WithoutAnInstalledKeyEveryDownloadIsRefused) {
  upgrade_key_.clear();
  StartWithoutTimer();
  client().Queue(Offer(true));
  ServeDownload(kInstaller, Sign(kInstaller));
  QueueClick("frmMainWindow", "mnuHUpgrade");
  QueueClick("frmCheckUpgrade", "imgOK");
  Queue("the download stands", [this] {
    ASSERT_NE(Download(), nullptr);
    EXPECT_TRUE(Download()->Visible());
    EXPECT_EQ(Download()->FieldValue("msRefusal").ToText(),
              "No key to check the download with is installed.");
    Download()->Unload(kUnloadFromUser);
  });
  Run();
  EXPECT_TRUE(started_->opened.empty());
  EXPECT_FALSE(fs::exists(Downloaded()));
}

// A failed download says nothing either: the window stays up.
TEST_F(UpgradeTest, AFailedDownloadLeavesTheWindowStanding) {
  StartWithoutTimer();
  client().Queue(Offer(true));
  client().Queue(Failure<DownloadFileReply>("", "connection lost"));
  QueueClick("frmMainWindow", "mnuHUpgrade");
  QueueClick("frmCheckUpgrade", "imgOK");
  Queue("five seconds later", [this] {
    host().Advance(5000);
    ASSERT_NE(Download(), nullptr);
    EXPECT_TRUE(Download()->Visible());
    // tmrProg counts on, one a second, below the maximum.
    EXPECT_EQ(Download()->ProgressBar1.Value(), 6);
    Download()->Unload(kUnloadFromUser);
  });
  Run();
  EXPECT_EQ(client().Operations(),
            (std::vector<std::string>{"GetUpgradeInfo", "DownloadFile"}));
  EXPECT_TRUE(Messages().empty());
}

// The starter can fail; that isn't told either, and the window closes.
TEST_F(UpgradeTest, AStartThatFailsClosesTheWindowSilently) {
  StartWithoutTimer();
  started_->failure = "Could not start /bin/sh";
  client().Queue(Offer(true));
  ServeDownload(kInstaller, Sign(kInstaller));
  QueueClick("frmMainWindow", "mnuHUpgrade");
  QueueClick("frmCheckUpgrade", "imgOK");
  Run();
  EXPECT_EQ(started_->opened, std::vector<std::string>{Downloaded()});
  EXPECT_EQ(Find("frmDisplayDownload"), nullptr);
  EXPECT_TRUE(Messages().empty());
}

TEST_F(UpgradeTest, NoNewerVersionSaysSoAndOkCloses) {
  StartWithoutTimer();
  client().Queue(Offer(false));
  QueueClick("frmMainWindow", "mnuHUpgrade");
  Queue("the check has answered", [this] {
    ASSERT_NE(Check(), nullptr);
    EXPECT_EQ(Check()->lblConnecting.Caption(), kUpgradeLatest);
    EXPECT_FALSE(Check()->FieldValue("mbUpgradeAvailable").ToBool());
    EXPECT_TRUE(Check()->imgOK.Enabled());
  });
  QueueClick("frmCheckUpgrade", "imgOK");
  Run();
  EXPECT_EQ(Find("frmCheckUpgrade"), nullptr);
  EXPECT_EQ(client().Operations(), std::vector<std::string>{"GetUpgradeInfo"});
  EXPECT_TRUE(started_->opened.empty());
}

TEST_F(UpgradeTest, AnEmptyVersionIsAnErrorOfTheManualCheck) {
  StartWithoutTimer();
  ASSERT_TRUE(settings().Write(kRootKey, "Version", std::string(1, '\0')));
  QueueClick("frmMainWindow", "mnuHUpgrade");
  host().QueueMsgBoxAnswer("details", [](const MsgBoxCall& call) {
    EXPECT_EQ(call.prompt, kUpgradeNoDetails);
    EXPECT_EQ(call.style, kMbStop);
    return kIdOk;
  });
  Run();
  EXPECT_EQ(Find("frmCheckUpgrade"), nullptr);
  EXPECT_TRUE(client().Operations().empty());
}

TEST_F(UpgradeTest, NoConnectionLeavesTheCheckStandingSilently) {
  StartWithoutTimer();
  internet_ = false;
  QueueClick("frmMainWindow", "mnuHUpgrade");
  Queue("the check stands", [this] {
    ASSERT_NE(Check(), nullptr);
    EXPECT_EQ(Check()->lblConnecting.Caption(), "Connecting to quillbay");
    EXPECT_FALSE(Check()->imgOK.Enabled());
    EXPECT_EQ(Check()->ProgressBar1.Value(), 1);
  });
  QueueClick("frmCheckUpgrade", "imgCancel");
  Run();
  EXPECT_EQ(Find("frmCheckUpgrade"), nullptr);
  EXPECT_TRUE(client().Operations().empty());
  EXPECT_TRUE(Messages().empty());
}

// Cancel while the service is asked: the request is cancelled and its answer
// (a newer version) goes nowhere.
TEST_F(UpgradeTest, ACancelDuringTheCheckDropsTheAnswer) {
  StartWithoutTimer();
  client().Queue(Offer(true, /*wait_ms=*/5000));
  QueueClick("frmMainWindow", "mnuHUpgrade");
  QueueClickInside("frmCheckUpgrade", "imgCancel");
  Run();
  EXPECT_EQ(client().CancelRequests(), 1);
  EXPECT_EQ(Find("frmCheckUpgrade"), nullptr);
  EXPECT_EQ(Find("frmDisplayDownload"), nullptr);
  EXPECT_TRUE(started_->opened.empty());
}

// The IP setting loses a trailing NUL and trailing blanks before the file's
// path goes after it.
TEST_F(UpgradeTest, TheAddressIsMadeFromTheIpSetting) {
  EXPECT_EQ(UpgradeXmlUrl(std::string("http://h:1  \0", 13)),
            "http://h:1/download/upgrade.xml");
  EXPECT_EQ(UpgradeXmlUrl("https://photos.example"),
            "https://photos.example/download/upgrade.xml");
}

// --- the minute timer -----------------------------------------------------

TEST_F(UpgradeTest, TheTimerAsksOnceAMinuteAfterStartAndOnlyOnce) {
  WritePhotos(1);
  Start();
  EXPECT_TRUE(main().tmrUpgrade.Enabled());
  EXPECT_EQ(main().tmrUpgrade.Interval(), kMinute);
  client().Queue(Offer(true));
  ServeDownload(kInstaller, Sign(kInstaller));
  host().QueueMsgBoxAnswer("upgrade?", [](const MsgBoxCall& call) {
    EXPECT_EQ(call.prompt, kUpgradeQuestion);
    EXPECT_EQ(call.style, kMbQuestionYesNo);
    return kIdYes;
  });
  host().Advance(kMinute);
  Run();
  EXPECT_EQ(started_->opened, std::vector<std::string>{Downloaded()});
  EXPECT_FALSE(main().tmrUpgrade.Enabled());
  EXPECT_TRUE(main().timerCamera.Enabled());
  // No second question in this run.
  host().Advance(5 * kMinute);
  EXPECT_EQ(client().Operations().size(), 3u);
}

TEST_F(UpgradeTest, NoAtTheQuestionDownloadsNothing) {
  WritePhotos(1);
  Start();
  client().Queue(Offer(true));
  host().QueueMsgBoxAnswer("upgrade?", [](const MsgBoxCall&) { return kIdNo; });
  host().Advance(kMinute);
  Run();
  EXPECT_EQ(client().Operations(), std::vector<std::string>{"GetUpgradeInfo"});
  EXPECT_EQ(Find("frmDisplayDownload"), nullptr);
  EXPECT_FALSE(main().tmrUpgrade.Enabled());
}

// No newer version, or one the service can't tell: the check is over
// without a word.
TEST_F(UpgradeTest, NoNewerVersionEndsTheTimerSilently) {
  WritePhotos(1);
  Start();
  client().Queue(Offer(false));
  host().Advance(kMinute);
  host().Advance(3 * kMinute);
  EXPECT_EQ(client().Operations(), std::vector<std::string>{"GetUpgradeInfo"});
  EXPECT_TRUE(Messages().empty());
  EXPECT_TRUE(main().timerCamera.Enabled());
}

TEST_F(UpgradeTest, WithoutAConnectionTheTimerTriesAgainEachMinute) {
  WritePhotos(1);
  Start();
  internet_ = false;
  const int before = internet_checks_;
  host().Advance(3 * kMinute);
  EXPECT_EQ(internet_checks_ - before, 3);
  EXPECT_TRUE(main().tmrUpgrade.Enabled());
  EXPECT_TRUE(client().Operations().empty());
  internet_ = true;
  client().Queue(Offer(false));
  host().Advance(kMinute);
  EXPECT_EQ(client().Operations(), std::vector<std::string>{"GetUpgradeInfo"});
  EXPECT_FALSE(main().tmrUpgrade.Enabled());
}

TEST_F(UpgradeTest, AnEmptyVersionEndsTheTimerForGood) {
  WritePhotos(1);
  Start();
  ASSERT_TRUE(settings().Write(kRootKey, "Version", ""));
  const int before = internet_checks_;
  host().Advance(3 * kMinute);
  EXPECT_EQ(internet_checks_, before);
  EXPECT_FALSE(main().tmrUpgrade.Enabled());
  EXPECT_TRUE(main().timerCamera.Enabled());
  EXPECT_TRUE(Messages().empty());
}

// The program is closed while the service is asked: the request is
// cancelled and no question comes.
TEST_F(UpgradeTest, ACloseDuringTheTimersCheckDropsTheAnswer) {
  WritePhotos(1);
  Start();
  client().Queue(Offer(true, /*wait_ms=*/5000));
  // The close comes at the first pump while the service is asked.
  client().OnCall([this](const RecordedCall& call) {
    if (call.operation == "GetUpgradeInfo") {
      QueueInside("close the program",
                  [this] { main().Unload(kUnloadFromUser); });
    }
  });
  host().Advance(kMinute);
  Run();
  EXPECT_EQ(client().CancelRequests(), 1);
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(Find("frmDisplayDownload"), nullptr);
  EXPECT_FALSE(app().IsRunning());
}

}  // namespace
}  // namespace qbpd::testing_support
