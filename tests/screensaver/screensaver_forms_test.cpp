#include "platform/desktop_screensaver.h"
#include "platform/forms/user_input.h"
#include "platform/profile_file.h"
#include "platform/xscreensaver_config.h"
#include "screensaver/frm_editscreensaver.h"
#include "screensaver/frm_preview.h"
#include "screensaver/frm_screen_saver.h"
#include "screensaver/frm_screensaver_step2.h"
#include "screensaver/scr_default.h"
#include "screensaver/scr_store.h"
#include "tests/browser/main_window_fixture.h"
#include "tests/support/fake_desktop_screensaver.h"
#include "tests/support/fake_program_runner.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::FakeProgramRunner;
using testing::ReadFile;
using testing::TempDir;
using testing_support::MainWindowTest;

class ScreensaverFormsTest : public MainWindowTest {
 protected:
  // The session's screen saver is XScreenSaver, whose daemon answers, with
  // its settings in a private home.
  void WithXScreenSaver() {
    runner_->Answer("xscreensaver-command -version", 0);
    adjust_services_ = [this](PlatformServices& services) {
      services.screensaver = MakeDesktopScreensaver(
          runner_, {{"HOME", home_.path().string()}}, "/opt/bin/qbpd-saver");
    };
  }
  // Checks the first photo and makes a screensaver of it from the button.
  void MakeSaver(const std::string& name, bool told = false) {
    user::SetCheck(main().ctrlQuilImage[0], true);
    host().Queue("name it", [this, name] {
      auto& dialog = app().forms().Get<frmScreenSaver>();
      dialog.txtSingleScrSaver.SetText(name);
      user::Click(dialog.imgSingleContinue);
    });
    host().Queue("continue", [this] {
      user::Click(app().forms().Get<frmScreensaverstep2>().imgContinue);
    });
    if (told) {
      Answer(1);
    }
    user::Click(main().imgScrSaver);
    host().Run();
  }
  std::string Ini() { return session().gsScrIniPath; }
  fs::path Config() const { return home_ / ".xscreensaver"; }

  TempDir home_;
  std::shared_ptr<FakeProgramRunner> runner_ =
      std::make_shared<FakeProgramRunner>();
};

TEST_F(ScreensaverFormsTest, MakingItCurrentEntersTheSaverInXScreenSaver) {
  WritePhoto("a.jpg");
  home_.WriteFile(".xscreensaver", "timeout:\t0:10:00\nlock:\tTrue\n");
  WithXScreenSaver();
  Start();
  MakeSaver("Beach");
  EXPECT_EQ(Messages(), std::vector<std::string>{});
  EXPECT_EQ(GetProfileString(Ini(), "General", "DefaultSsaver", ""), "Beach");
  const std::string text = ReadFile(Config());
  EXPECT_EQ(*SaverEntries(text), std::vector<std::string>{XScreenSaverEntry(
                                     "/opt/bin/qbpd-saver", Ini())});
  EXPECT_EQ(SaverResource(text, "lock"), "True");
  EXPECT_EQ(SaverResource(text, "timeout"), "0:10:00");
}

TEST_F(ScreensaverFormsTest, AMalformedSettingsFileIsLeftAndTheUserTold) {
  WritePhoto("a.jpg");
  const std::string bad = "lock: True\nnot a resource line\n";
  home_.WriteFile(".xscreensaver", bad);
  WithXScreenSaver();
  Start();
  MakeSaver("Beach", /*told=*/true);
  EXPECT_EQ(Messages(), std::vector<std::string>{kSetDefaultFailed});
  EXPECT_EQ(host().MessageBoxes().back().style, kMbStop);
  EXPECT_EQ(ReadFile(Config()), bad);
  // The store says what the user chose all the same.
  EXPECT_EQ(GetProfileString(Ini(), "General", "DefaultSsaver", ""), "Beach");
}

TEST_F(ScreensaverFormsTest, TheStartDelayGoesToTheDesktop) {
  runner_->Answer("xscreensaver-command -version", 1);
  adjust_services_ = [this](PlatformServices& services) {
    services.screensaver = MakeDesktopScreensaver(
        runner_, {{"XDG_CURRENT_DESKTOP", "GNOME"}}, "/opt/bin/qbpd-saver");
  };
  Start();
  SaveStartDelay(app(), 5);
  EXPECT_EQ(app().settings().Read(kDesktopKey, kScreenSaveTimeOut), "300");
  EXPECT_EQ(
      runner_->Calls().back(),
      (std::vector<std::string>{"gsettings", "set", "org.gnome.desktop.session",
                                "idle-delay", "uint32 300"}));
  EXPECT_EQ(ReadStartDelayMinutes(app().settings()), "5");
  ASSERT_TRUE(app().settings().Write(kDesktopKey, kScreenSaveTimeOut, "90"));
  EXPECT_EQ(ReadStartDelayMinutes(app().settings()), "1.5");
  ASSERT_TRUE(app().settings().Write(kDesktopKey, kScreenSaveTimeOut, ""));
  EXPECT_EQ(ReadStartDelayMinutes(app().settings()), "0");
}

TEST_F(ScreensaverFormsTest, AStoreThatCantBeWrittenSaysSoAndKeepsTheDialog) {
  WritePhoto("a.jpg");
  Start();
  // A folder stands where the store should be.
  fs::create_directories(Ini());
  user::SetCheck(main().ctrlQuilImage[0], true);
  host().Queue("name it", [this] {
    auto& dialog = app().forms().Get<frmScreenSaver>();
    dialog.txtSingleScrSaver.SetText("Beach");
    user::Click(dialog.imgSingleContinue);
    EXPECT_NE(app().forms().Find<frmScreenSaver>(), nullptr);
    EXPECT_EQ(app().forms().Find<frmScreensaverstep2>(), nullptr);
    user::Click(dialog.imgSingleCancel);
  });
  Answer(1);
  user::Click(main().imgScrSaver);
  host().Run();
  EXPECT_EQ(Messages(),
            std::vector<std::string>{"Unable to save the screensaver."});
  EXPECT_TRUE(fs::is_directory(Ini()));
}

TEST_F(ScreensaverFormsTest, ThePreviewHidesTheCursorAndGivesItBack) {
  WritePhoto("a.jpg");
  WritePhoto("b.jpg");
  Start();
  int count = 0;
  ASSERT_TRUE(MakeScrIniIfMissing(Ini()));
  ASSERT_TRUE(CreateScreensaver(
      Ini(), "S",
      {(photos() / "a.jpg").string(), (photos() / "b.jpg").string()}, count));
  Session& s = session();
  s.gsPreviewIniPath = Ini();
  s.gsPreviewName = "S";
  s.giPreviewInterval = 1;
  s.gsPreviewEffects = "3001";
  const int before = host().CursorCount();
  // It ends by itself after 15 seconds.
  host().Queue("watch", [this, before] {
    frmPreview* preview = app().forms().Find<frmPreview>();
    ASSERT_NE(preview, nullptr);
    EXPECT_EQ(host().CursorCount(), before - 1);
    EXPECT_TRUE(preview->ctlScr.Playing());
    EXPECT_EQ(preview->ctlScr.FileCount(), 2);
    host().Advance(14999);
    EXPECT_NE(app().forms().Find<frmPreview>(), nullptr);
    host().Advance(1);
  });
  app().forms().Get("frmPreview").Show(/*modal=*/true);
  host().Run();
  EXPECT_EQ(app().forms().Find<frmPreview>(), nullptr);
  EXPECT_EQ(host().CursorCount(), before);
  // A click on the player ends it at once.
  host().Queue("click", [this] {
    host().Advance(2000);
    EventArgs press;
    press.Button = 1;
    app().forms().Get<frmPreview>().ctlScr.Raise("MouseDown", press);
  });
  app().forms().Get("frmPreview").Show(/*modal=*/true);
  host().Run();
  EXPECT_EQ(app().forms().Find<frmPreview>(), nullptr);
  EXPECT_EQ(host().CursorCount(), before);
}

// The edit dialog's OK with a desktop that refuses both the saver and the
// delay: the refusal of the saver is told, that of the delay is not, and
// the store holds the edit either way.
TEST_F(ScreensaverFormsTest, EditingWithADesktopThatRefuses) {
  const std::string a = WritePhoto("a.jpg");
  auto* fake = new testing::FakeDesktopScreensaver;
  fake->FailDefault();
  fake->FailDelay();
  adjust_services_ = [fake](PlatformServices& services) {
    services.screensaver.reset(fake);
  };
  Start();
  int count = 0;
  ASSERT_TRUE(MakeScrIniIfMissing(Ini()));
  ASSERT_TRUE(CreateScreensaver(Ini(), "S", {a}, count));
  host().Queue("edit", [this] {
    auto& edit = app().forms().Get<frmEditscreensaver>();
    EXPECT_EQ(edit.txtScrSaverTimeOut.Text(), "0");
    edit.txtScrSaverTimeOut.SetText("7");
    edit.txtImageInterval.SetText("4");
    user::SetCheck(edit.chkDefScrSaver, true);
    user::Click(edit.imgOK);
  });
  Answer(1);
  user::PickMenu(main().mnuScrEdit);
  host().Run();
  EXPECT_EQ(Messages(), std::vector<std::string>{kSetDefaultFailed});
  EXPECT_EQ(fake->SaverStores(), std::vector<std::string>{Ini()});
  EXPECT_EQ(fake->Delays(), std::vector<int>{420});
  EXPECT_EQ(GetProfileString(Ini(), "S", "ImageInterval", ""), "4");
  EXPECT_EQ(GetProfileString(Ini(), "General", "DefaultSsaver", ""), "S");
  EXPECT_EQ(app().settings().Read(kDesktopKey, kScreenSaveTimeOut), "420");
}

}  // namespace
}  // namespace qbpd
