// The mouse at points of a photo view: photo pixels placed as the desktop
// view places them, and the editor's tools taking the press.
#include "platform/forms/controls.h"
#include "platform/forms/display_control.h"
#include "platform/forms/form.h"
#include "platform/forms/photo_view_mapping.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/scripted_host.h"
#include "platform/forms/user_input.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace qbpd {
namespace {

// A photo of a given size shown at a given scale, with a tool that takes
// presses when told to and records what reaches it.
class FakePhoto : public DisplayControl {
 public:
  FakePhoto(int width, int height, double scale)
      : width_(width), height_(height), scale_(scale) {}

  void SetViewSize(int, int) override {}
  bool LoadPhoto(const std::string&) override { return true; }
  void Clear() override {}
  bool HasPhoto() const override { return width_ > 0; }
  bool ZoomFitToWidth() override { return true; }
  bool ZoomTo(int) override { return true; }
  int ZoomPercent() const override { return static_cast<int>(scale_ * 100); }
  bool RotateView(int) override { return true; }
  int ViewRotation() const override { return 0; }
  int PhotoWidth() const override { return width_; }
  int PhotoHeight() const override { return height_; }
  int ShownWidth() const override { return static_cast<int>(width_ * scale_); }
  int ShownHeight() const override {
    return static_cast<int>(height_ * scale_);
  }
  bool Render(int, int, int, int, std::vector<std::uint8_t>&) override {
    return false;
  }
  bool ToolMouseDown(double x, double y, int button) override {
    log.push_back("down " + Point(x, y) + " " + std::to_string(button));
    return take;
  }
  bool ToolMouseMove(double x, double y, int buttons) override {
    log.push_back("move " + Point(x, y) + " " + std::to_string(buttons));
    return take;
  }
  void ToolMouseUp(double x, double y, int button) override {
    log.push_back("up " + Point(x, y) + " " + std::to_string(button));
  }

  bool take = false;
  std::vector<std::string> log;

 private:
  static std::string Point(double x, double y) {
    return FormatNumber(x) + "," + FormatNumber(y);
  }
  int width_;
  int height_;
  double scale_;
};

class ViewForm : public Form {
 public:
  explicit ViewForm(Host& host) : Form(host, "frmView") {
    ctlView.Move(0, 0, 400 * kTwipsPerPixel, 300 * kTwipsPerPixel);
    for (const char* e : {"MouseDown", "MouseMove", "MouseUp"}) {
      On("ctlView", e, [this, e](EventArgs& a) {
        events.push_back(std::string(e) + " " + std::to_string(a.Button) + " " +
                         std::to_string(a.X) + "," + std::to_string(a.Y));
      });
    }
    On("ctlView", "Click", [this](EventArgs&) { events.push_back("Click"); });
  }
  PhotoView ctlView{*this, "ctlView"};
  std::vector<std::string> events;
};

class UserMouseTest : public ::testing::Test {
 protected:
  void ShowPhoto(int width, int height, double scale) {
    photo_ = std::make_shared<FakePhoto>(width, height, scale);
    form_.ctlView.AttachDisplay(photo_);
    form_.Show();
  }
  ScriptedHost host_;
  ViewForm form_{host_};
  std::shared_ptr<FakePhoto> photo_;
};

TEST_F(UserMouseTest, APhotoSmallerThanTheViewIsCentred) {
  // 200 x 100 at 50%: shown 100 x 50 in a 400 x 300 view, at (150, 125).
  ShowPhoto(200, 100, 0.5);
  user::PointOnControl at =
      user::Locate(form_.ctlView, user::ControlPoint{40, 20, true});
  EXPECT_EQ(at.x, 170 * kTwipsPerPixel);
  EXPECT_EQ(at.y, 135 * kTwipsPerPixel);
  EXPECT_DOUBLE_EQ(at.photo_x, 40);
  EXPECT_DOUBLE_EQ(at.photo_y, 20);
  user::ClickAt(form_.ctlView, user::ControlPoint{40, 20, true});
  EXPECT_EQ(form_.events,
            (std::vector<std::string>{"MouseDown 1 2550,2025",
                                      "MouseUp 1 2550,2025", "Click"}));
  EXPECT_EQ(photo_->log, (std::vector<std::string>{"down 40,20 1"}));
}

TEST_F(UserMouseTest, TheMouseStandsOnAWholeViewPixel) {
  // At 50% two photo pixels share a view pixel: 41 lands on the nearest
  // one, which stands for photo pixel 42 (the rounding of 20.5 up).
  ShowPhoto(200, 100, 0.5);
  user::PointOnControl at =
      user::Locate(form_.ctlView, user::ControlPoint{41, 20, true});
  EXPECT_EQ(at.x, 171 * kTwipsPerPixel);
  EXPECT_DOUBLE_EQ(at.photo_x, 42);
}

TEST_F(UserMouseTest, AToolThatTakesThePressGetsTheDragAndNoClickFollows) {
  ShowPhoto(200, 100, 1.0);  // shown 200 x 100 at (100, 100)
  photo_->take = true;
  user::Drag(form_.ctlView, user::ControlPoint{10, 10, true},
             user::ControlPoint{50, 30, true}, 2);
  EXPECT_EQ(photo_->log,
            (std::vector<std::string>{"down 10,10 1", "move 30,20 1",
                                      "move 50,30 1", "up 50,30 1"}));
  EXPECT_EQ(form_.events.back(), "MouseUp 1 2250,1950");
  for (const std::string& e : form_.events) {
    EXPECT_NE(e, "Click");
  }
}

TEST_F(UserMouseTest, ALargerPhotoTakesScrollBarsAndShowsItsTopLeft) {
  // 1000 x 800 at 100% in 400 x 300: both bars, a 384 x 284 drawing area.
  ShowPhoto(1000, 800, 1.0);
  user::PointOnControl at =
      user::Locate(form_.ctlView, user::ControlPoint{383, 283, true});
  EXPECT_EQ(at.x, 383 * kTwipsPerPixel);
  try {
    user::Locate(form_.ctlView, user::ControlPoint{384, 10, true});
    FAIL() << "a point under the scroll bar was reached";
  } catch (const HostAbort& e) {
    EXPECT_EQ(e.message(),
              "Photo point 384,10 is not on view in frmView.ctlView: the "
              "photo is 1000 x 800 pixels and the view shows 0,0 to 384,284");
  }
  EXPECT_THROW(user::Locate(form_.ctlView, user::ControlPoint{-1, 0, true}),
               HostAbort);
}

TEST_F(UserMouseTest, AViewWithoutAPhotoOrHiddenCannotBeClicked) {
  ShowPhoto(0, 0, 1.0);
  EXPECT_THROW(user::ClickAt(form_.ctlView, user::ControlPoint{1, 1, true}),
               HostAbort);
  ShowPhoto(200, 100, 1.0);
  form_.ctlView.SetVisible(false);
  EXPECT_THROW(user::ClickAt(form_.ctlView, user::ControlPoint{1, 1, true}),
               HostAbort);
  EXPECT_TRUE(photo_->log.empty());
}

TEST(PhotoViewMappingTest, ViewAndPhotoPointsMapBothWays) {
  PhotoViewMapping m;
  m.view_width = 384;
  m.view_height = 284;
  m.shown_width = 500;
  m.shown_height = 400;
  m.photo_width = 1000;
  m.photo_height = 800;
  m.scroll_x = 50;
  m.scroll_y = 20;
  EXPECT_EQ(m.OriginX(), -50);
  EXPECT_DOUBLE_EQ(m.ViewToPhotoX(0), 100);
  EXPECT_DOUBLE_EQ(m.ViewToPhotoY(10), 60);
  EXPECT_DOUBLE_EQ(m.PhotoToViewX(m.ViewToPhotoX(123)), 123);
  // No photo: the scale is 1.
  PhotoViewMapping empty;
  EXPECT_DOUBLE_EQ(empty.ScaleX(), 1.0);

  PhotoViewScrollBars bars = LayOutPhotoViewScrollBars(400, 300, 390, 290, 16);
  EXPECT_FALSE(bars.horizontal);
  EXPECT_FALSE(bars.vertical);
  // A vertical bar narrows the view; the width then needs a bar too.
  bars = LayOutPhotoViewScrollBars(400, 300, 390, 310, 16);
  EXPECT_TRUE(bars.vertical);
  EXPECT_TRUE(bars.horizontal);
  EXPECT_EQ(bars.view_width, 384);
  EXPECT_EQ(bars.view_height, 284);
}

}  // namespace
}  // namespace qbpd
