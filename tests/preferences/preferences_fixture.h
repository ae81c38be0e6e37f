#ifndef QBPD_TESTS_PREFERENCES_PREFERENCES_FIXTURE_H_
#define QBPD_TESTS_PREFERENCES_PREFERENCES_FIXTURE_H_

#include "core/settings.h"
#include "platform/forms/user_input.h"
#include "preferences/frm_preferences.h"
#include "tests/browser/main_window_fixture.h"
#include "tests/support/fake_default_viewer.h"
#include "tests/support/fake_session_autostart.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace qbpd::testing_support {

using testing::FakeDefaultViewer;
using testing::FakeSessionAutostart;

// The whole program on the scripted host with the preferences' settings in
// place and fakes of the desktop's default viewer and autostart; the dialog
// is opened from the Edit menu and driven by queued steps.
class PreferencesTest : public MainWindowTest {
 protected:
  PreferencesTest() {
    // Each start gets fresh fakes, told to fail when a test asks.
    adjust_services_ = [this](PlatformServices& services) {
      auto viewer =
          std::make_unique<FakeDefaultViewer>("org.gnome.eog.desktop");
      auto autostart = std::make_unique<FakeSessionAutostart>();
      if (fail_desktop_) {
        viewer->Fail();
        autostart->Fail();
      }
      viewer_ = viewer.get();
      autostart_ = autostart.get();
      services.default_viewer = std::move(viewer);
      services.autostart = std::move(autostart);
    };
    WritePhoto("a.jpg");
    base_ = (photos().parent_path() / "Camera").string();
    Set(kDisplayKey, "SlideshowImageIntervalInSeconds", "5");
    Set(kDisplayKey, "ExplorerCloseIntervalInSeconds", "30");
    Set(kCameraTransferKey, "BaseFolder", base_);
    Set(kCameraTransferKey, "FolderName", "1");
    Set(kCameraTransferKey, "PhotoName", "0");
    Set(kCameraTransferKey, "DetectUSBDevices", "True");
  }

  void Set(std::string_view key, std::string name, std::string value) {
    extra_settings_.emplace_back(std::string(key), name, value);
  }
  std::string Setting(std::string_view key, std::string_view name) {
    return app().settings().Read(key, name);
  }
  frmPreferences& prefs() { return app().forms().Get<frmPreferences>(); }

  // Opens the dialog from the Edit menu; `steps` then run on it.
  void Open() {
    host().Queue("open", [this] { user::PickMenu(main().mnuEPref); });
  }
  void Do(std::function<void(frmPreferences&)> step) {
    host().Queue("step", [this, step] { step(prefs()); });
  }
  // The next message box says `text`; OK answers it.
  void Told(const std::string& text) {
    host().QueueMsgBoxAnswer("told", [text](const MsgBoxCall& call) {
      EXPECT_EQ(call.prompt, text);
      EXPECT_EQ(call.style, kMbInformation);
      return 1;
    });
  }
  void Ok() {
    Do([](frmPreferences& f) { user::Click(f.cmdOK); });
  }
  void Cancel() {
    Do([](frmPreferences& f) { user::Click(f.cmdCancel); });
  }
  bool PrefsOpen() { return app().forms().Find("frmPreferences") != nullptr; }

  bool fail_desktop_ = false;
  FakeDefaultViewer* viewer_ = nullptr;
  FakeSessionAutostart* autostart_ = nullptr;
  std::string base_;
};

}  // namespace qbpd::testing_support

#endif  // QBPD_TESTS_PREFERENCES_PREFERENCES_FIXTURE_H_
