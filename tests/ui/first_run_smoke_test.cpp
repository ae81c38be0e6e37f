// The desktop program's real start path (its platform services found from
// the environment, the shipped default settings) on a fresh home under the
// offscreen platform: the first start shows Pictures, the About box the
// version, the File menu the recent folder, and a later start the folder
// opened last. Screenshots go to tests/ui/screenshots.
#include "app/program/program.h"
#include "browser/frm_main_window.h"
#include "core/frm_about_us.h"
#include "core/settings.h"
#include "tests/support/temp_dir.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_clipboard.h"
#include "ui/qt/qt_host.h"

#include <QApplication>
#include <QTest>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

class FirstRunSmokeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    testing::EnsureQtApplication();
    // A fresh home: no settings, the XDG places under it.
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME",
                             "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
      const char* value = std::getenv(name);
      saved_[name] = value ? std::optional<std::string>(value) : std::nullopt;
      unsetenv(name);
    }
    setenv("HOME", home_.path().c_str(), 1);
    fs::create_directory(home_ / "run", ec_);
    fs::permissions(home_ / "run", fs::perms::owner_all, ec_);
    setenv("XDG_RUNTIME_DIR", (home_ / "run").c_str(), 1);
    pictures_ = home_ / "Pictures";
    trip_ = pictures_ / "Trip";
    fs::create_directories(trip_);
    testing::MakePhoto((pictures_ / "harbour.jpg").string(), 1600, 1200, 40);
    testing::MakePhoto((pictures_ / "market.jpg").string(), 1200, 1600, 90);
    testing::MakePhoto((trip_ / "beach.jpg").string(), 1600, 1200, 150);
  }

  void TearDown() override {
    Stop();
    for (const auto& [name, value] : saved_) {
      if (value) {
        setenv(name.c_str(), value->c_str(), 1);
      } else {
        unsetenv(name.c_str());
      }
    }
  }

  // Starts the program as qbpd does and waits for its first photo.
  frmMainWindow& Start() {
    PlatformServices services = MakePlatformServices(nullptr);
    services.clipboard = MakeQtClipboard();
    auto owned = std::make_unique<QtHost>();
    host_ = owned.get();
    app_ = std::make_unique<Application>(std::move(owned), std::move(services),
                                         RegisterProgram);
    Application* app = app_.get();
    host_->SetIdleHook([app] { app->forms().CollectGarbage(); });
    app_->Start("");
    main_ = app_->forms().Find<frmMainWindow>();
    EXPECT_NE(main_, nullptr);
    EXPECT_TRUE(QTest::qWaitFor(
        [this] { return !main_->ctlDisplayImage.PhotoPath().empty(); }, 15000));
    return *main_;
  }

  void Stop() {
    if (app_) {
      app_->End();
      app_.reset();
      QCoreApplication::processEvents();
    }
  }

  testing::TempDir home_;
  fs::path pictures_;
  fs::path trip_;
  std::error_code ec_;
  std::map<std::string, std::optional<std::string>> saved_;
  QtHost* host_ = nullptr;
  std::unique_ptr<Application> app_;
  frmMainWindow* main_ = nullptr;
};

TEST_F(FirstRunSmokeTest, PicturesFirstTheVersionInAboutThenTheLastFolder) {
  frmMainWindow& main = Start();
  EXPECT_EQ(app_->session().gsSelectedFolder, pictures_.string() + "/");
  EXPECT_EQ(app_->session().gdicPhotoList.Count(), 2);
  // The recent-folder list of the File menu holds Pictures.
  EXPECT_TRUE(main.mnuFRecFolders[0].Visible());
  EXPECT_EQ(main.mnuFRecFolders[0].Tag(), pictures_.string() + "/");
  FormWindow* window = host_->WindowOf(main);
  ASSERT_NE(window, nullptr);
  testing::SaveScreenshot(window, "first_run_pictures");

  frmAboutUs& about = app_->forms().Get<frmAboutUs>();
  EXPECT_EQ(about.lblVersion.Caption(),
            "Version " + std::string(ProgramVersion()));
  about.Show();
  QCoreApplication::processEvents();
  FormWindow* about_window = host_->WindowOf(about);
  ASSERT_NE(about_window, nullptr);
  testing::SaveScreenshot(about_window, "first_run_about");
  about.Unload();

  // The user opens Trip; the next start opens it again.
  main.ExpTreeView.SetSelectedFolder(trip_.string() + "/");
  ASSERT_TRUE(QTest::qWaitFor(
      [this] { return app_->session().gdicPhotoList.Count() == 1; }, 15000));
  Stop();

  Start();
  EXPECT_EQ(app_->session().gsSelectedFolder, trip_.string() + "/");
  FormWindow* again = host_->WindowOf(*main_);
  ASSERT_NE(again, nullptr);
  EXPECT_EQ(main_->mnuFRecFolders[1].Tag(), pictures_.string() + "/");
  testing::SaveScreenshot(again, "first_run_later_start");
}

}  // namespace
}  // namespace qbpd
