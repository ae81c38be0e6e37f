// The preferences dialog on the desktop: opened from the Edit menu, each of
// its four tabs shown in a real window, with a screenshot of each under the
// build folder; Cancel closes it and writes nothing.
#include "browser/frm_main_window.h"
#include "core/settings.h"
#include "platform/forms/user_input.h"
#include "preferences/frm_preferences.h"
#include "tests/support/fake_default_viewer.h"
#include "tests/support/fake_session_autostart.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/control_widget.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_host.h"

#include <QAction>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace qbpd {
namespace {

class PreferencesSmokeTest : public testing::DesktopTest {
 protected:
  PreferencesSmokeTest() {
    adjust_services_ = [](PlatformServices& services) {
      services.default_viewer = std::make_unique<testing::FakeDefaultViewer>();
      services.autostart = std::make_unique<testing::FakeSessionAutostart>();
      SettingsStore& s = *services.settings;
      (void)s.Write(kDisplayKey, "SlideshowImageIntervalInSeconds", "7");
      (void)s.Write(kDisplayKey, "ExplorerCloseIntervalInSeconds", "30");
      (void)s.Write(kSettingsKey, "UserName", "ann@example.com");
      (void)s.Write(kSettingsKey, "EncryptedPassword",
                    EncryptPassword("secret") + '\0');
      (void)s.Write(kSettingsKey, "AutoLogin", "True");
      (void)s.Write(kExpressPrintsKey, "ExpressPrints", "4x6Doubles");
      (void)s.Write(kCameraTransferKey, "BaseFolder", "/home/ann/Imports");
      (void)s.Write(kCameraTransferKey, "FolderName", "2");
      (void)s.Write(kCameraTransferKey, "PhotoName", "1");
      (void)s.Write(kCameraTransferKey, "DetectUSBDevices", "True");
    };
  }
};

TEST_F(PreferencesSmokeTest, EachTabShowsInARealWindow) {
  bool shown = false;
  auto poll = std::make_shared<std::function<void()>>();
  *poll = [&, poll] {
    Form* form = app_->forms().Find("frmPreferences");
    FormWindow* w = form != nullptr ? host_->WindowOf(*form) : nullptr;
    if (w == nullptr || !w->isVisible()) {
      QTimer::singleShot(10, *poll);
      return;
    }
    ASSERT_TRUE(QTest::qWaitForWindowExposed(w));
    auto& prefs = static_cast<frmPreferences&>(*form);
    EXPECT_EQ(w->windowTitle().toStdString(), "Preferences");
    const char* names[] = {"preferences_display", "preferences_account",
                           "preferences_folders", "preferences_camera"};
    Frame* frames[] = {&prefs.fraDisplay, &prefs.fraAccount, &prefs.fraFolders,
                       &prefs.fraCamera};
    for (int tab = 1; tab <= 4; ++tab) {
      user::SelectTab(prefs.tbsPref, tab);
      host_->SyncWindows();
      QTest::qWait(50);
      ControlWidget* frame = w->WidgetOf(*frames[tab - 1]);
      ASSERT_NE(frame, nullptr);
      EXPECT_TRUE(frame->widget()->isVisible());
      testing::SaveScreenshot(w, names[tab - 1]);
    }
    shown = true;
    user::Click(prefs.cmdCancel);
  };
  QTimer::singleShot(0, *poll);
  QAction* action = window_->ActionOf(main_->mnuEPref);
  ASSERT_NE(action, nullptr);
  action->trigger();
  EXPECT_TRUE(shown);
  EXPECT_EQ(app_->forms().Find("frmPreferences"), nullptr);
  EXPECT_EQ(app_->settings().Read(kCameraTransferKey, "FolderName"), "2");
}

}  // namespace
}  // namespace qbpd
