#ifndef QBPD_TESTS_UI_DESKTOP_FIXTURE_H_
#define QBPD_TESTS_UI_DESKTOP_FIXTURE_H_

#include "browser/frm_main_window.h"
#include "core/application.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QWidget;

namespace qbpd {

class Control;
class FormWindow;
class QtHost;

namespace testing {

// A step of a person at the screen: it waits until `ready` holds, then
// acts. The next step is scheduled before the action, because an action
// may open a modal form whose loop runs until the end of the road.
struct ScreenStep {
  std::function<bool()> ready;
  std::function<void()> act;
};
// Runs `steps` from the `i`th on the event loop, one every 50 ms at most.
void RunSteps(std::shared_ptr<std::vector<ScreenStep>> steps, size_t i);

// The desktop program's pieces in one process (QApplication on the offscreen
// platform, the Qt host, the program with private places) started on a
// folder of generated photos, ready to be driven through its widgets as a
// person would. A derived test sets the protected options in its
// constructor.
class DesktopTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // The widget of a control of the main window, or nullptr.
  QWidget* WidgetFor(const Control& c);
  Session& session() { return app_->session(); }
  // The form of that name when it is loaded and visible, or nullptr.
  Form* Shown(const char* name);

  // Options: how many photos, of what size, and the default zoom
  // ("FitToWidth" or "OriginalSize").
  int photo_count_ = 3;
  int photo_width_ = 1600;
  int photo_height_ = 1200;
  std::string zoom_setting_ = "FitToWidth";
  // Where the lock and socket of the running instance live; empty: the run
  // has no single-instance lock.
  std::string instance_folder_;
  // Changes the platform services before the program starts (a fake in the
  // place of a real service).
  std::function<void(PlatformServices&)> adjust_services_;

  TempDir tmp_;
  std::filesystem::path folder_;
  QtHost* host_ = nullptr;
  std::unique_ptr<Application> app_;
  frmMainWindow* main_ = nullptr;
  FormWindow* window_ = nullptr;
};

}  // namespace testing
}  // namespace qbpd

#endif  // QBPD_TESTS_UI_DESKTOP_FIXTURE_H_
