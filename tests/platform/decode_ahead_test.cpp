#include "platform/decode_ahead.h"

#include "platform/display_model.h"
#include "platform/vips_photo_view.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

constexpr int kViewWidth = 320;
constexpr int kViewHeight = 200;

// A picture whose every region differs, so that a wrong zoom or a wrong
// photo shows in the pixels.
void SavePicture(const fs::path& path, int width, int height, int seed) {
  const vips::VImage xy = vips::VImage::xyz(width, height);
  const vips::VImage r = xy[0] * (255.0 / width);
  const vips::VImage g = xy[1] * (255.0 / height);
  const vips::VImage b = (xy[0] + xy[1] + seed * 40) % 256;
  r.bandjoin(g)
      .bandjoin(b)
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .write_to_file(path.c_str());
}

// What the program can read of a model after a load and its zooms, and
// what a view draws of it.
struct Seen {
  bool loaded = false;
  int width = 0;
  int height = 0;
  int percent = 0;
  int shown_width = 0;
  int shown_height = 0;
  bool fitted = false;
  int fitted_percent = 0;
  std::vector<std::uint8_t> drawn_fitted;
  std::vector<std::uint8_t> drawn_at_100;

  bool operator==(const Seen&) const = default;
};

// Loads `path` and reads the model as the main window does: the answers of
// the load, then a fit, then the zoom of 100% and what each draws.
Seen LoadAndLook(DisplayControl& model, const std::string& path) {
  Seen seen;
  seen.loaded = model.LoadPhoto(path);
  seen.width = model.PhotoWidth();
  seen.height = model.PhotoHeight();
  seen.percent = model.ZoomPercent();
  seen.shown_width = model.ShownWidth();
  seen.shown_height = model.ShownHeight();
  seen.fitted = model.ZoomFitToWidth();
  seen.fitted_percent = model.ZoomPercent();
  model.Render(0, 0, kViewWidth, kViewHeight, seen.drawn_fitted);
  model.ZoomTo(100);
  model.Render(10, 10, 50, 40, seen.drawn_at_100);
  return seen;
}

std::unique_ptr<DisplayControl> Plain() {
  auto model = MakeVipsDisplayControl(/*work_ahead=*/false);
  model->SetViewSize(kViewWidth, kViewHeight);
  return model;
}

std::unique_ptr<DecodeAheadDisplay> Ahead() {
  auto model = MakeDecodeAheadDisplay([]() -> std::shared_ptr<DisplayControl> {
    return MakeVipsDisplayControl(/*work_ahead=*/false);
  });
  model->SetViewSize(kViewWidth, kViewHeight);
  return model;
}

class DecodeAheadTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(VIPS_INIT("decode_ahead_test"), 0); }
  TempDir dir_;
};

TEST_F(DecodeAheadTest, PhotoDecodedAheadAnswersAsAPlainLoad) {
  struct Case {
    const char* name;
    // Writes the file; an empty name is left missing.
    void (*make)(const fs::path& path);
    bool loads;
  };
  const Case cases[] = {
      // A JPEG wider than the view: decoded ahead at the fit's detail.
      {"wide.jpg", [](const fs::path& p) { SavePicture(p, 1200, 800, 1); },
       true},
      // A tall one, whose fit leaves room for the scroll bar.
      {"tall.jpg", [](const fs::path& p) { SavePicture(p, 500, 1400, 2); },
       true},
      // Smaller than the view: the fit enlarges it.
      {"small.png", [](const fs::path& p) { SavePicture(p, 90, 60, 3); }, true},
      // Cut short: refused ahead and on the spot alike.
      {"cut.jpg",
       [](const fs::path& p) {
         SavePicture(p, 800, 600, 4);
         fs::resize_file(p, fs::file_size(p) / 2);
       },
       false},
      // No image at all under a photo's name.
      {"text.jpg", [](const fs::path& p) { std::ofstream(p) << "not a photo"; },
       false},
      // Gone.
      {"missing.jpg", [](const fs::path&) {}, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const fs::path path = dir_ / c.name;
    c.make(path);
    const Seen plain = LoadAndLook(*Plain(), path.string());
    auto ahead = Ahead();
    ahead->PrepareLoad({path.string()});
    ahead->WaitUntilReady();
    const Seen seen = LoadAndLook(*ahead, path.string());
    EXPECT_EQ(seen.loaded, c.loads);
    EXPECT_EQ(ahead->LoadsDecodedAhead(), c.loads ? 1 : 0);
    EXPECT_TRUE(seen == plain);
    if (c.loads) {
      EXPECT_EQ(seen.percent, 100);
      EXPECT_FALSE(seen.drawn_fitted.empty());
    }
  }
}

TEST_F(DecodeAheadTest, DrawingBeforeAnyZoomShowsTheLoadsOwnHundredPercent) {
  const fs::path path = dir_ / "photo.jpg";
  SavePicture(path, 1000, 700, 5);
  auto plain = Plain();
  ASSERT_TRUE(plain->LoadPhoto(path.string()));
  std::vector<std::uint8_t> expected;
  ASSERT_TRUE(plain->Render(100, 100, 40, 30, expected));

  auto ahead = Ahead();
  ahead->PrepareLoad({path.string()});
  ahead->WaitUntilReady();
  ASSERT_TRUE(ahead->LoadPhoto(path.string()));
  ASSERT_EQ(ahead->LoadsDecodedAhead(), 1);
  std::vector<std::uint8_t> drawn;
  ASSERT_TRUE(ahead->Render(100, 100, 40, 30, drawn));
  EXPECT_EQ(drawn, expected);
  EXPECT_EQ(ahead->ZoomPercent(), 100);
  EXPECT_EQ(ahead->ShownWidth(), 1000);
}

TEST_F(DecodeAheadTest, PhotoChangedAfterTheHintIsLoadedAsItIsNow) {
  const fs::path path = dir_ / "photo.jpg";
  SavePicture(path, 1000, 700, 6);
  auto ahead = Ahead();
  ahead->PrepareLoad({path.string()});
  ahead->WaitUntilReady();
  // Replaced as an editor saves: a new file renamed over the old one.
  const fs::path replacement = dir_ / "new.jpg";
  SavePicture(replacement, 600, 900, 7);
  fs::rename(replacement, path);

  ASSERT_TRUE(ahead->LoadPhoto(path.string()));
  EXPECT_EQ(ahead->LoadsDecodedAhead(), 0);
  EXPECT_EQ(ahead->PhotoWidth(), 600);
  EXPECT_EQ(ahead->PhotoHeight(), 900);
}

TEST_F(DecodeAheadTest, DroppedHintIsNotServed) {
  const fs::path first = dir_ / "first.jpg";
  const fs::path second = dir_ / "second.jpg";
  SavePicture(first, 800, 600, 8);
  SavePicture(second, 800, 600, 9);
  auto ahead = Ahead();
  ahead->PrepareLoad({first.string()});
  ahead->WaitUntilReady();
  // The wish moves on: what was decoded for the first is thrown away.
  ahead->PrepareLoad({second.string()});
  ahead->WaitUntilReady();
  ASSERT_TRUE(ahead->LoadPhoto(first.string()));
  EXPECT_EQ(ahead->LoadsDecodedAhead(), 0);
  ASSERT_TRUE(ahead->LoadPhoto(second.string()));
  EXPECT_EQ(ahead->LoadsDecodedAhead(), 1);
}

TEST_F(DecodeAheadTest, FailedLoadKeepsThePhotoOnShowAndItsZoom) {
  const fs::path good = dir_ / "good.jpg";
  const fs::path broken = dir_ / "broken.jpg";
  SavePicture(good, 900, 600, 10);
  std::ofstream(broken) << "broken";
  auto ahead = Ahead();
  ahead->PrepareLoad({good.string()});
  ahead->WaitUntilReady();
  ASSERT_TRUE(ahead->LoadPhoto(good.string()));
  ahead->PrepareLoad({broken.string()});
  ahead->WaitUntilReady();
  EXPECT_FALSE(ahead->LoadPhoto(broken.string()));
  // Still the good photo, still at the 100% its load left.
  EXPECT_EQ(ahead->PhotoWidth(), 900);
  EXPECT_EQ(ahead->ZoomPercent(), 100);
}

// The caller's thread waits through the injected wait, which paints the
// view as a desktop window does meanwhile: every paint shows the photo
// that was on show, whole, and the load then answers as a plain one.
TEST_F(DecodeAheadTest, LoadWaitsThroughTheWaitWhilePaintsShowTheOldPhoto) {
  const fs::path old_photo = dir_ / "old.jpg";
  const fs::path big = dir_ / "big.png";
  const fs::path broken = dir_ / "broken.jpg";
  SavePicture(old_photo, 700, 500, 11);
  SavePicture(big, 3000, 2000, 12);
  std::ofstream(broken) << "broken";
  struct Case {
    const char* name;
    fs::path path;
    bool hinted;  // being decoded ahead when the load comes
    bool loads;
  };
  const Case cases[] = {
      {"not hinted", big, false, true},
      {"hinted", big, true, true},
      {"refused", broken, false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    DecodeAheadDisplay* view = nullptr;
    int waits = 0;
    bool only_old = true;
    std::vector<std::uint8_t> old_drawn;
    auto model = MakeDecodeAheadDisplay(
        []() -> std::shared_ptr<DisplayControl> {
          return MakeVipsDisplayControl(/*work_ahead=*/false);
        },
        [&](const std::function<bool()>& done) {
          ++waits;
          do {
            std::vector<std::uint8_t> drawn;
            only_old = only_old && view->PhotoWidth() == 700 &&
                       view->Render(0, 0, 64, 48, drawn) && drawn == old_drawn;
          } while (!done());
        });
    view = model.get();
    model->SetViewSize(kViewWidth, kViewHeight);
    ASSERT_TRUE(model->LoadPhoto(old_photo.string()));
    ASSERT_TRUE(model->Render(0, 0, 64, 48, old_drawn));
    ASSERT_GE(waits, 1);
    waits = 0;
    only_old = true;  // from now on there is an old photo to show
    if (c.hinted) {
      model->PrepareLoad({c.path.string()});
    }
    const Seen seen = LoadAndLook(*model, c.path.string());
    if (!c.hinted) {
      EXPECT_GE(waits, 1);
    }
    EXPECT_TRUE(only_old);
    EXPECT_EQ(seen.loaded, c.loads);
    if (c.loads) {
      EXPECT_TRUE(seen == LoadAndLook(*Plain(), c.path.string()));
    } else {
      EXPECT_EQ(seen.width, 700);
    }
  }
}

// An edit's save runs on a thread of its own while the view's thread waits
// and paints the photo as it is shown; a write that fails answers False.
TEST_F(DecodeAheadTest, SaveWaitsThroughTheWaitWhilePaintsShowThePhoto) {
  const fs::path photo = dir_ / "photo.png";
  SavePicture(photo, 900, 600, 13);
  VipsDisplayControl* view = nullptr;
  int waits = 0;
  bool paints_as_shown = true;
  std::vector<std::uint8_t> shown;
  VipsDisplayControl model(
      [&](const std::function<bool()>& done) {
        ++waits;
        do {
          std::vector<std::uint8_t> drawn;
          paints_as_shown = paints_as_shown &&
                            view->Render(0, 0, 64, 48, drawn) && drawn == shown;
        } while (!done());
      },
      std::this_thread::get_id());
  view = &model;
  model.SetViewSize(kViewWidth, kViewHeight);
  ASSERT_TRUE(model.LoadPhoto(photo.string()));
  ASSERT_TRUE(model.RotateView(90));
  ASSERT_TRUE(model.Render(0, 0, 64, 48, shown));
  waits = 0;
  const fs::path saved = dir_ / "turned.png";
  EXPECT_TRUE(model.SaveShownPhoto(saved.string()));
  EXPECT_GE(waits, 1);
  EXPECT_TRUE(paints_as_shown);
  const vips::VImage written = vips::VImage::new_from_file(saved.c_str());
  EXPECT_EQ(written.width(), 600);
  EXPECT_EQ(written.height(), 900);
  EXPECT_FALSE(
      model.SaveShownPhoto((dir_ / "no such folder" / "x.png").string()));
}

}  // namespace
}  // namespace qbpd
