#include "platform/display_model.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

using Pixels = std::vector<std::uint8_t>;
using Painter = std::function<void(int x, int y, std::uint8_t* rgb)>;

// Writes a PNG (lossless, so the view shows exactly what was painted).
std::string Paint(const fs::path& path, int width, int height, Painter paint) {
  Pixels rgb(static_cast<std::size_t>(width) * height * 3);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      paint(x, y, &rgb[(static_cast<std::size_t>(y) * width + x) * 3]);
    }
  }
  vips::VImage::new_from_memory(rgb.data(), rgb.size(), width, height, 3,
                                VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .write_to_file(path.c_str());
  return path.string();
}

Pixels RenderAll(DisplayControl& display) {
  Pixels rgb;
  EXPECT_TRUE(
      display.Render(0, 0, display.ShownWidth(), display.ShownHeight(), rgb));
  return rgb;
}

void Set(std::uint8_t* p, double r, double g, double b) {
  p[0] = static_cast<std::uint8_t>(std::lround(std::clamp(r, 0.0, 255.0)));
  p[1] = static_cast<std::uint8_t>(std::lround(std::clamp(g, 0.0, 255.0)));
  p[2] = static_cast<std::uint8_t>(std::lround(std::clamp(b, 0.0, 255.0)));
}

// --- red eye ----------------------------------------------------------------

// A face-like card: warm skin, two eyes with a white, a brown iris, a red
// pupil whose edge blends into the iris over a pixel, and a white
// catch-light in each pupil; a red scarf below.
constexpr int kFaceWidth = 480;
constexpr int kFaceHeight = 360;
constexpr double kPupilRadius = 10;
constexpr double kIrisRadius = 20;
constexpr double kCatchLightRadius = 2.5;
struct Eye {
  double x;
  double y;
};
constexpr Eye kEyes[] = {{160, 140}, {320, 140}};

double CatchLightDistance(const Eye& eye, int x, int y) {
  return std::hypot(x + 0.5 - (eye.x - 4), y + 0.5 - (eye.y - 4));
}

void FacePixel(int x, int y, std::uint8_t* p) {
  Set(p, 224, 178, 148);  // skin
  if (y >= 280) {
    Set(p, 200, 30, 40);  // the scarf: red, and far larger than a pupil
  }
  for (const Eye& eye : kEyes) {
    const double dx = x + 0.5 - eye.x;
    const double dy = y + 0.5 - eye.y;
    const double d = std::hypot(dx, dy);
    if ((dx * dx) / (46.0 * 46) + (dy * dy) / (26.0 * 26) <= 1) {
      Set(p, 236, 232, 226);  // the white of the eye
    }
    if (d <= kIrisRadius) {
      Set(p, 112, 76, 44);  // a brown iris
    }
    const double pupil = std::clamp(kPupilRadius + 0.5 - d, 0.0, 1.0);
    if (pupil > 0) {
      // A red pupil with a little texture, blended at its edge.
      const double grain = ((x * 7 + y * 13) % 9) - 4;
      const double r = 196 + grain;
      const double g = 38 + grain / 2;
      const double b = 44 + grain / 2;
      Set(p, p[0] + (r - p[0]) * pupil, p[1] + (g - p[1]) * pupil,
          p[2] + (b - p[2]) * pupil);
    }
    if (CatchLightDistance(eye, x, y) <= kCatchLightRadius) {
      Set(p, 252, 252, 250);
    }
  }
}

double Redness(const std::uint8_t* p) {
  return std::max(0, p[0] - std::max(p[1], p[2]));
}

struct EyeFigures {
  double redness_before = 0;
  double redness_after = 0;
  int catch_light_changed = 0;
  int outside_changed = 0;
  int green_blue_changed = 0;
};

EyeFigures Measure(const Pixels& before, const Pixels& after, const Eye& eye) {
  EyeFigures f;
  int pupil_pixels = 0;
  for (int y = 0; y < kFaceHeight; ++y) {
    for (int x = 0; x < kFaceWidth; ++x) {
      const std::size_t i = (static_cast<std::size_t>(y) * kFaceWidth + x) * 3;
      const double d = std::hypot(x + 0.5 - eye.x, y + 0.5 - eye.y);
      const double c = CatchLightDistance(eye, x, y);
      const bool changed = before[i] != after[i] ||
                           before[i + 1] != after[i + 1] ||
                           before[i + 2] != after[i + 2];
      if (d <= kPupilRadius && c > kCatchLightRadius + 1) {
        f.redness_before += Redness(&before[i]);
        f.redness_after += Redness(&after[i]);
        ++pupil_pixels;
      }
      if (c <= kCatchLightRadius - 0.5 && changed) {
        ++f.catch_light_changed;
      }
      if (d > kPupilRadius + 0.5 + 2 && d < 3 * kIrisRadius && changed) {
        ++f.outside_changed;
      }
      if (before[i + 1] != after[i + 1] || before[i + 2] != after[i + 2]) {
        ++f.green_blue_changed;
      }
    }
  }
  f.redness_before /= pupil_pixels;
  f.redness_after /= pupil_pixels;
  return f;
}

class RedEyeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    display_ = MakeVipsDisplayControl();
    display_->SetEventSink(
        [this](const std::string& event) { events_.push_back(event); });
    path_ = Paint(dir_ / "face.png", kFaceWidth, kFaceHeight, FacePixel);
    ASSERT_TRUE(display_->LoadPhoto(path_));
    ASSERT_TRUE(display_->ZoomTo(100));
    before_ = RenderAll(*display_);
    display_->BeginRedEye(2, 1);
    ASSERT_EQ(display_->ActiveTool(), DisplayControl::Tool::kRedEye);
  }

  // A click of the tool; True when it was taken.
  bool Click(double x, double y) {
    const bool taken = display_->ToolMouseDown(x, y, 1);
    display_->ToolMouseUp(x, y, 1);
    return taken;
  }

  TempDir dir_;
  std::unique_ptr<DisplayControl> display_;
  std::vector<std::string> events_;
  std::string path_;
  Pixels before_;
};

TEST_F(RedEyeTest, RemovesTheRedOfThePupilAndNothingElse) {
  // A click a little off the pupil's middle, as a user's is.
  ASSERT_TRUE(Click(kEyes[0].x + 3, kEyes[0].y + 2));
  EXPECT_EQ(events_, std::vector<std::string>{"RedEyeRemoved"});
  const Pixels after = RenderAll(*display_);
  const EyeFigures f = Measure(before_, after, kEyes[0]);
  std::printf(
      "[ figures  ] red eye: mean pupil redness %.1f before, %.1f after "
      "(%.0f%% removed); catch-light pixels changed %d; pixels "
      "changed more than 2 px outside the pupil %d\n",
      f.redness_before, f.redness_after,
      100 * (1 - f.redness_after / f.redness_before), f.catch_light_changed,
      f.outside_changed);
  EXPECT_LE(f.redness_after, 0.2 * f.redness_before);
  EXPECT_EQ(f.catch_light_changed, 0);
  EXPECT_EQ(f.outside_changed, 0);
  // Only red moved: the pupil keeps its texture and is no grey disc.
  EXPECT_EQ(f.green_blue_changed, 0);
  // The other eye is untouched until it is clicked.
  EXPECT_EQ(Measure(before_, after, kEyes[1]).redness_after,
            Measure(before_, before_, kEyes[1]).redness_before);
}

TEST_F(RedEyeTest, RepeatedClicksRemoveWhatIsLeftAndThenNothing) {
  ASSERT_TRUE(Click(kEyes[0].x, kEyes[0].y));
  ASSERT_TRUE(Click(kEyes[1].x - 2, kEyes[1].y));
  EXPECT_EQ(events_.size(), 2u);
  const Pixels after = RenderAll(*display_);
  EXPECT_LE(Measure(before_, after, kEyes[1]).redness_after,
            0.2 * Measure(before_, after, kEyes[1]).redness_before);
  // Nothing red is left there: no change, no event.
  events_.clear();
  ASSERT_TRUE(Click(kEyes[0].x, kEyes[0].y));
  EXPECT_TRUE(events_.empty());
  EXPECT_EQ(RenderAll(*display_), after);
}

TEST_F(RedEyeTest, LeavesSkinAndALargeRedAreaAlone) {
  ASSERT_TRUE(Click(40, 40));    // skin
  ASSERT_TRUE(Click(240, 320));  // the scarf, red but no pupil
  ASSERT_TRUE(Click(kEyes[0].x + kIrisRadius - 3, kEyes[0].y - 14));  // iris
  EXPECT_TRUE(events_.empty());
  EXPECT_EQ(RenderAll(*display_), before_);
}

TEST_F(RedEyeTest, TheSavedPhotoCarriesTheCorrectionAndClearEditDropsIt) {
  ASSERT_TRUE(Click(kEyes[0].x, kEyes[0].y));
  const std::string saved = (dir_ / "face_Fixed(1).Jpg").string();
  ASSERT_TRUE(display_->SaveShownPhoto(saved));
  const vips::VImage picture =
      vips::VImage::new_from_file(saved.c_str()).copy_memory();
  ASSERT_EQ(picture.width(), kFaceWidth);
  const auto* data = static_cast<const std::uint8_t*>(picture.data());
  const Pixels written(data, data + before_.size());
  // Through a JPEG the pupil stays clean within the encoder's error.
  EXPECT_LE(Measure(before_, written, kEyes[0]).redness_after,
            0.2 * Measure(before_, written, kEyes[0]).redness_before);
  display_->ClearEdit();
  EXPECT_EQ(display_->ActiveTool(), DisplayControl::Tool::kNone);
  EXPECT_EQ(RenderAll(*display_), before_);
  // Clicks without the tool are not taken.
  EXPECT_FALSE(display_->ToolMouseDown(kEyes[1].x, kEyes[1].y, 1));
}

TEST_F(RedEyeTest, AZoomedOutViewShowsTheClickAtOnce) {
  ASSERT_TRUE(display_->ZoomTo(50));
  const Pixels shown_before = RenderAll(*display_);
  ASSERT_TRUE(Click(kEyes[0].x, kEyes[0].y));
  const Pixels patched = RenderAll(*display_);
  EXPECT_NE(patched, shown_before);
  // The same view made afresh: the patched area matches it.
  ASSERT_TRUE(display_->ZoomTo(75));
  RenderAll(*display_);
  ASSERT_TRUE(display_->ZoomTo(50));
  const Pixels fresh = RenderAll(*display_);
  ASSERT_EQ(fresh.size(), patched.size());
  int most = 0;
  for (std::size_t i = 0; i < fresh.size(); ++i) {
    most = std::max(most, std::abs(fresh[i] - patched[i]));
  }
  EXPECT_LE(most, 2);
}

// --- automatic colour -------------------------------------------------------

// A colour chart under a cast: neutral patches from black to white and six
// colours, red raised and blue lowered as by warm light (a white balance off
// by its gains, nothing clipped).
constexpr int kPatch = 60;
constexpr double kNeutrals[] = {18, 64, 128, 186, 226};
constexpr double kColours[][3] = {{180, 60, 50},  {60, 160, 70},
                                  {50, 70, 170},  {210, 190, 60},
                                  {170, 80, 160}, {70, 170, 180}};

void Cast(std::uint8_t* p, double r, double g, double b) {
  Set(p, r * 1.12, g, b * 0.80);
}

void ChartPixel(int x, int y, std::uint8_t* p) {
  const int column = x / kPatch;
  if (y < kPatch * 2) {
    const double v = kNeutrals[std::min(column, 4)];
    Cast(p, v, v, v);
  } else {
    const double* c = kColours[std::min(column, 5)];
    Cast(p, c[0], c[1], c[2]);
  }
}

// The spread of the three channels over the middle of the mid-grey patch.
double GreyCast(const Pixels& rgb, int width) {
  const int x = 2 * kPatch + kPatch / 2;
  const int y = kPatch / 2;
  const std::uint8_t* p = &rgb[(static_cast<std::size_t>(y) * width + x) * 3];
  return std::max({p[0], p[1], p[2]}) - std::min({p[0], p[1], p[2]});
}

TEST(AutoColourTest, TakesTheCastOutOfANeutralGrey) {
  TempDir dir;
  std::unique_ptr<DisplayControl> display = MakeVipsDisplayControl();
  const int width = 6 * kPatch;
  const int height = 4 * kPatch;
  ASSERT_TRUE(
      display->LoadPhoto(Paint(dir / "chart.png", width, height, ChartPixel)));
  ASSERT_TRUE(display->ZoomTo(100));
  const Pixels original = RenderAll(*display);
  ASSERT_TRUE(display->ShowCorrected());
  EXPECT_EQ(display->ActiveTool(), DisplayControl::Tool::kCorrection);
  const Pixels corrected = RenderAll(*display);
  const double before = GreyCast(original, width);
  const double after = GreyCast(corrected, width);
  std::printf(
      "[ figures  ] auto colour: cast of the neutral grey %.0f levels "
      "before, %.0f after (%.0f%% removed)\n",
      before, after, 100 * (1 - after / before));
  EXPECT_LE(after, 0.2 * before);
  // The original comes back, and the correction again.
  display->ShowOriginal();
  EXPECT_EQ(RenderAll(*display), original);
  ASSERT_TRUE(display->ShowCorrected());
  EXPECT_EQ(RenderAll(*display), corrected);
}

// A well-balanced photo, as a good camera writes it: smooth colour fields
// between a neutral black of 4 and a neutral white of 250 in every channel.
// The correction must leave it nearly alone.
void BalancedPixel(int x, int y, std::uint8_t* p) {
  const double u = x / 399.0;
  const double v = y / 299.0;
  auto level = [](double t) { return 4 + 246 * t; };
  Set(p, level(u), level(0.5 + 0.5 * std::sin(6 * u + 3 * v)), level(v));
  if (x < 40 && y < 40) {
    Set(p, 4, 4, 4);
  }
  if (x >= 360 && y >= 260) {
    Set(p, 250, 250, 250);
  }
}

TEST(AutoColourTest, BarelyChangesAWellBalancedPhoto) {
  TempDir dir;
  std::unique_ptr<DisplayControl> display = MakeVipsDisplayControl();
  ASSERT_TRUE(
      display->LoadPhoto(Paint(dir / "good.png", 400, 300, BalancedPixel)));
  ASSERT_TRUE(display->ZoomTo(100));
  const Pixels original = RenderAll(*display);
  ASSERT_TRUE(display->ShowCorrected());
  const Pixels corrected = RenderAll(*display);
  double total = 0;
  int most = 0;
  for (std::size_t i = 0; i < original.size(); ++i) {
    const int d = std::abs(original[i] - corrected[i]);
    total += d;
    most = std::max(most, d);
  }
  const double mean = total / original.size();
  std::printf(
      "[ figures  ] auto colour on a well-balanced photo: mean change "
      "%.2f levels, largest %d\n",
      mean, most);
  // The stated bound: at most 3 levels on average, 8 at any pixel.
  EXPECT_LE(mean, 3.0);
  EXPECT_LE(most, 8);
}

TEST(AutoColourTest, FinishWritesTheCorrectedPhotoOrNothing) {
  TempDir dir;
  std::unique_ptr<DisplayControl> display = MakeVipsDisplayControl();
  const int width = 6 * kPatch;
  const std::string source =
      Paint(dir / "chart.png", width, 4 * kPatch, ChartPixel);
  ASSERT_TRUE(display->LoadPhoto(source));
  ASSERT_TRUE(display->ShowCorrected());
  const fs::path dummy = dir / "xxx.jpg";
  EXPECT_NE(display->FinishCorrection(false, dummy.string()), 0);
  EXPECT_FALSE(fs::exists(dummy));
  EXPECT_EQ(display->ActiveTool(), DisplayControl::Tool::kNone);
  // Nothing to write once it has ended.
  EXPECT_EQ(display->FinishCorrection(true, dummy.string()), 0);
  EXPECT_FALSE(fs::exists(dummy));
  ASSERT_TRUE(display->ShowCorrected());
  const fs::path target = dir / "chart_Fixed(1).Jpg";
  ASSERT_NE(display->FinishCorrection(true, target.string()), 0);
  const vips::VImage written =
      vips::VImage::new_from_file(target.c_str()).copy_memory();
  const auto* data = static_cast<const std::uint8_t*>(written.data());
  const Pixels rgb(data, data + static_cast<std::size_t>(written.width()) *
                                    written.height() * 3);
  EXPECT_LE(GreyCast(rgb, width), 6);
}

}  // namespace
}  // namespace qbpd
