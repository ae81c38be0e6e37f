#ifndef QBPD_TESTS_EDITOR_EDITOR_FIXTURE_H_
#define QBPD_TESTS_EDITOR_EDITOR_FIXTURE_H_

#include "platform/forms/user_input.h"
#include "tests/browser/main_window_fixture.h"
#include "tests/support/fake_display_control.h"
#include "tests/support/fake_image_operations.h"

#include <filesystem>
#include <memory>
#include <string>

namespace qbpd::testing_support {

// The whole program on the scripted host, with the photo view's editor
// operations and the batch rotation imitated by the fakes of tests/support
// (the view, thumbnails and measures stay real). A test writes photos, starts
// the program, and drives the main window as a person would.
class EditorTest : public MainWindowTest {
 protected:
  EditorTest() {
    adjust_services_ = [this](PlatformServices& services) {
      services.make_display = [this]() -> std::unique_ptr<DisplayControl> {
        return std::make_unique<testing::FakeDisplayControl>(
            MakeVipsDisplayControl(), display_);
      };
      services.images = std::make_unique<testing::FakeImageOperations>(
          std::move(services.images), rotation_);
    };
  }

  // The photo's size in pixels as stored.
  int WidthOf(const std::string& path) {
    return app().images().GetImageWidth(path);
  }
  int HeightOf(const std::string& path) {
    return app().images().GetImageHeight(path);
  }
  bool Exists(const std::string& path) const {
    std::error_code error;
    return std::filesystem::exists(path, error);
  }
  std::string InPhotos(const std::string& name) const {
    return (photos() / name).string();
  }
  // The calls the program made on the photo view model.
  const std::vector<std::string>& Calls() const { return display_->calls; }
  bool Called(const std::string& call) const {
    for (const std::string& c : display_->calls) {
      if (c == call) {
        return true;
      }
    }
    return false;
  }
  // Clicks the thumbnail of photo `index`.
  void ClickPhoto(int index) { user::Click(main().ctrlQuilImage[index]); }
  // The last message box's text; "" when none was shown.
  std::string LastMessage() const {
    std::vector<std::string> texts = Messages();
    return texts.empty() ? std::string() : texts.back();
  }
  // Answers the next pop-up menu by picking `entry` in it.
  void PickPopup(Menu& entry) {
    host().QueuePopupPick("pick", [&entry](Menu&) {
      ASSERT_TRUE(entry.Visible() && entry.Enabled()) << entry.Name();
      entry.Raise("Click");
    });
  }

  std::shared_ptr<testing::FakeDisplayState> display_ =
      std::make_shared<testing::FakeDisplayState>();
  std::shared_ptr<testing::FakeRotationState> rotation_ =
      std::make_shared<testing::FakeRotationState>();
};

}  // namespace qbpd::testing_support

#endif  // QBPD_TESTS_EDITOR_EDITOR_FIXTURE_H_
