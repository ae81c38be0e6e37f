#include "platform/decode_ahead.h"
#include "platform/forms/user_input.h"
#include "tests/browser/main_window_fixture.h"

#include <filesystem>
#include <stdexcept>
#include <string>

namespace qbpd::testing_support {
namespace {

using WorkAheadTest = MainWindowTest;

// The photo view's model, which decodes ahead what the window hints.
DecodeAheadDisplay& AheadView(frmMainWindow& window) {
  auto* view =
      dynamic_cast<DecodeAheadDisplay*>(window.ctlDisplayImage.Display());
  if (view == nullptr) {
    throw std::runtime_error("the photo view decodes nothing ahead");
  }
  return *view;
}

TEST_F(WorkAheadTest, NextPhotoIsShownFromItsDecodingAhead) {
  WritePhoto("a.jpg", 640, 480, 60);
  WritePhoto("b.jpg", 800, 600, 120);
  Start();
  DecodeAheadDisplay& view = AheadView(main());
  view.WaitUntilReady();
  const int served = view.LoadsDecodedAhead();

  user::Click(main().imgNext);
  EXPECT_EQ(session().giCurrentPhotoIndex, 1);
  EXPECT_EQ(main().ctlDisplayImage.PhotoWidth(), 800);
  EXPECT_EQ(main().ctlDisplayImage.PhotoHeight(), 600);
  EXPECT_EQ(view.LoadsDecodedAhead(), served + 1);
}

TEST_F(WorkAheadTest, NextPhotoReplacedAfterItsDecodingIsShownAsItIsNow) {
  WritePhoto("a.jpg", 640, 480, 60);
  WritePhoto("b.jpg", 800, 600, 120);
  Start();
  DecodeAheadDisplay& view = AheadView(main());
  view.WaitUntilReady();
  const int served = view.LoadsDecodedAhead();
  // Replaced as an editor saves it: a new file renamed over the old one.
  const std::string replacement = WritePhoto("new.tmp.jpg", 300, 500, 200);
  std::filesystem::rename(replacement, photos() / "b.jpg");

  user::Click(main().imgNext);
  EXPECT_EQ(session().giCurrentPhotoIndex, 1);
  EXPECT_EQ(main().ctlDisplayImage.PhotoWidth(), 300);
  EXPECT_EQ(main().ctlDisplayImage.PhotoHeight(), 500);
  EXPECT_EQ(view.LoadsDecodedAhead(), served);
}

}  // namespace
}  // namespace qbpd::testing_support
