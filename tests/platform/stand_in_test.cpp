// A photo shown at once from its cached thumbnail while it is decoded: the
// mark that makes a thumbnail a trusted stand-in, the cache's lookup of it,
// and the photo view that shows it and then the photo.
#include "platform/decode_ahead.h"
#include "platform/display_model.h"
#include "platform/image_operations.h"
#include "platform/whole_decode_mark.h"
#include "tests/support/camera_photo.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <future>
#include <limits>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::CameraPreview;
using testing::TempDir;
using testing::WriteCameraPhoto;

constexpr int kViewWidth = 320;
constexpr int kViewHeight = 200;
constexpr int kThumbnailSize = 85;
constexpr int kThumbnailQuality = 70;

// Waits (a few milliseconds at most) until the file's last change lies in
// a passed tick of the file system's clock: a thumbnail made before that
// is not trusted.
void LetTheClockPass(const std::string& path) {
  while (!ChangedBeforeNow(IdentityOfPath(path).value())) {
    std::this_thread::yield();
  }
}

std::vector<std::uint8_t> ReadBytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST(WholeDecodeMarkTest, ReadsBackOnlyAWellFormedMark) {
  const FileIdentity identity{2049, 1234567, 5'000'000, 1'700'000'000'123456789,
                              1'700'000'001'987654321};
  const std::vector<std::uint8_t> jpeg = {0xFF, 0xD8, 0xFF, 0xDB,
                                          0x00, 0x02, 0xFF, 0xD9};
  const std::vector<std::uint8_t> marked = WithWholeDecodeMark(jpeg, identity);
  ASSERT_EQ(ReadWholeDecodeMark(marked.data(), marked.size()), identity);
  // Marked again, it holds one mark, the new one.
  FileIdentity later = identity;
  later.changed_ns += 1;
  const std::vector<std::uint8_t> again = WithWholeDecodeMark(marked, later);
  EXPECT_EQ(again.size(), marked.size());
  EXPECT_EQ(ReadWholeDecodeMark(again.data(), again.size()), later);
  EXPECT_EQ(WithoutWholeDecodeMark(marked), jpeg);
  EXPECT_EQ(ReadWholeDecodeMark(jpeg.data(), jpeg.size()), std::nullopt);

  struct Case {
    const char* name;
    std::vector<std::uint8_t> bytes;
  };
  auto edited = [&](std::size_t at, std::uint8_t value) {
    std::vector<std::uint8_t> bytes = marked;
    bytes[at] = value;
    return bytes;
  };
  std::vector<std::uint8_t> trailing = marked;
  trailing.insert(trailing.begin() + 4 + marked[5], 'x');
  trailing[5] = static_cast<std::uint8_t>(marked[5] + 1);
  const Case refused[] = {
      {"no JPEG start", edited(1, 0xD9)},
      {"another comment", edited(6, 'Q')},
      {"a digit made a letter", edited(std::size_t{marked[5]} + 3, 'z')},
      {"longer than the file", edited(5, 0xF0)},
      {"words after the numbers", trailing},
      {"cut inside the mark", {marked.begin(), marked.begin() + 12}},
  };
  for (const Case& c : refused) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(ReadWholeDecodeMark(c.bytes.data(), c.bytes.size()),
              std::nullopt);
  }
  // Only a change in a passed tick of the clock is settled.
  FileIdentity old_change = identity;
  old_change.changed_ns = 1'000'000'000;
  FileIdentity future_change = identity;
  future_change.changed_ns = std::numeric_limits<std::int64_t>::max();
  EXPECT_TRUE(ChangedBeforeNow(old_change));
  EXPECT_FALSE(ChangedBeforeNow(future_change));
  // Not a JPEG: nothing put in.
  const std::vector<std::uint8_t> png = {0x89, 'P', 'N', 'G', 0, 0};
  EXPECT_EQ(WithWholeDecodeMark(png, identity), png);
}

class CachedStandInTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(VIPS_INIT("stand_in_test"), 0);
    images_ = MakeVipsImageOperations((dir_ / "cache").string());
  }

  std::string Photo(const std::string& name,
                    CameraPreview preview = CameraPreview::kNone) {
    const fs::path path = dir_ / name;
    EXPECT_TRUE(WriteCameraPhoto(path.string(), 600, 400, 3, /*orientation=*/1,
                                 preview));
    LetTheClockPass(path.string());
    return path.string();
  }

  // The grid's thumbnail of `photo`, through the cache; its entry's path.
  std::string Thumbnail(const std::string& photo) {
    std::string entry;
    EXPECT_EQ(images_->GenerateThumbnailAndBuffer(photo, entry, kThumbnailSize,
                                                  kThumbnailQuality),
              1);
    return entry;
  }

  TempDir dir_;
  std::unique_ptr<ImageOperations> images_;
};

TEST_F(CachedStandInTest, GivenOnlyForTheFileItsThumbnailWasDecodedFrom) {
  const std::string photo = Photo("photo.jpg");
  EXPECT_EQ(images_->CachedStandIn(photo), std::nullopt)
      << "no thumbnail made yet";
  Thumbnail(photo);
  const std::optional<RgbPicture> stand_in = images_->CachedStandIn(photo);
  ASSERT_TRUE(stand_in.has_value());
  EXPECT_EQ(stand_in->width, 85);
  EXPECT_EQ(stand_in->height, 57);

  // Touched with its old times put back: the grid keeps the thumbnail (its
  // name is the photo's path, size and modification time), but what the
  // file holds is no longer known.
  struct stat before {};
  ASSERT_EQ(::stat(photo.c_str(), &before), 0);
  const timespec times[2] = {before.st_atim, before.st_mtim};
  ASSERT_EQ(::utimensat(AT_FDCWD, photo.c_str(), times, 0), 0);
  EXPECT_EQ(Thumbnail(photo), Thumbnail(photo));
  EXPECT_EQ(images_->CachedStandIn(photo), std::nullopt) << "touched";

  // Made again, it stands in again; replaced by a copy with the same size
  // and times (another inode), it doesn't.
  ASSERT_EQ(images_->DeleteThumbnailFile(photo), 1);
  LetTheClockPass(photo);
  Thumbnail(photo);
  EXPECT_TRUE(images_->CachedStandIn(photo).has_value());
  const fs::path copy = dir_ / "copy.jpg";
  fs::copy_file(photo, copy);
  const timespec copy_times[2] = {before.st_atim, before.st_mtim};
  ASSERT_EQ(::utimensat(AT_FDCWD, copy.c_str(), copy_times, 0), 0);
  fs::rename(copy, photo);
  EXPECT_EQ(images_->CachedStandIn(photo), std::nullopt) << "replaced";
}

TEST_F(CachedStandInTest, NoneWithoutAWholeDecodingOfAJpeg) {
  // A thumbnail taken from the camera's preview decoded only the top of the
  // photo; a PNG or a bitmap went through another decoder than the view's
  // JPEG one.
  const std::string from_preview = Photo("camera.jpg", CameraPreview::kGood);
  const fs::path png = dir_ / "drawing.png";
  vips::VImage::black(300, 200, vips::VImage::option()->set("bands", 3))
      .write_to_file(png.c_str());
  for (const std::string& photo : {from_preview, png.string()}) {
    SCOPED_TRACE(photo);
    Thumbnail(photo);
    EXPECT_EQ(images_->CachedStandIn(photo), std::nullopt);
  }
  // A thumbnail written anywhere but the cache carries no mark.
  const std::string photo = Photo("photo.jpg");
  const fs::path outside = dir_ / "outside.jpg";
  ASSERT_EQ(images_->GenerateThumbnailExt(photo, outside.string(),
                                          kThumbnailSize, kThumbnailQuality),
            1);
  const std::vector<std::uint8_t> bytes = ReadBytes(outside);
  EXPECT_EQ(ReadWholeDecodeMark(bytes.data(), bytes.size()), std::nullopt);
  const std::vector<std::uint8_t> cached = ReadBytes(Thumbnail(photo));
  EXPECT_TRUE(ReadWholeDecodeMark(cached.data(), cached.size()).has_value());
}

// --- the photo view ----------------------------------------------------------

// A picture whose every region differs, so that a wrong zoom or a wrong
// photo shows in the pixels.
void SavePicture(const fs::path& path, int width, int height) {
  const vips::VImage xy = vips::VImage::xyz(width, height);
  (xy[0] * (255.0 / width))
      .bandjoin(xy[1] * (255.0 / height))
      .bandjoin((xy[0] + xy[1]) % 256)
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .write_to_file(path.c_str());
}

RgbPicture Solid(int width, int height, std::uint8_t red) {
  RgbPicture picture;
  picture.width = width;
  picture.height = height;
  picture.pixels.assign(static_cast<std::size_t>(width) * height * 3, 0);
  for (std::size_t i = 0; i < picture.pixels.size(); i += 3) {
    picture.pixels[i] = red;
  }
  return picture;
}

// What the program reads of a view after each step.
struct Answers {
  int width = 0;
  int height = 0;
  int percent = 0;
  int shown_width = 0;
  int shown_height = 0;
  int rotation = 0;
  bool operator==(const Answers&) const = default;
};

Answers Read(const DisplayControl& view) {
  return {view.PhotoWidth(), view.PhotoHeight(), view.ZoomPercent(),
          view.ShownWidth(), view.ShownHeight(), view.ViewRotation()};
}

// A view whose decodings on the worker wait until the test lets them go.
class StandInViewTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(VIPS_INIT("stand_in_test"), 0); }

  std::unique_ptr<DecodeAheadDisplay> View(StandInLookup lookup,
                                           DecodeWait wait = {}) {
    const std::thread::id main = std::this_thread::get_id();
    std::shared_future<void> gate = gate_.get_future().share();
    auto view = MakeDecodeAheadDisplay(
        [main, gate]() -> std::shared_ptr<DisplayControl> {
          if (std::this_thread::get_id() != main) {
            gate.wait();
          }
          return MakeVipsDisplayControl(/*work_ahead=*/false);
        },
        std::move(wait), std::move(lookup));
    view->SetViewSize(kViewWidth, kViewHeight);
    return view;
  }

  void LetDecodingsGo() { gate_.set_value(); }

  std::unique_ptr<DisplayControl> Plain() {
    auto view = MakeVipsDisplayControl(/*work_ahead=*/false);
    view->SetViewSize(kViewWidth, kViewHeight);
    return view;
  }

  TempDir dir_;
  std::promise<void> gate_;
};

TEST_F(StandInViewTest, AnswersAtOnceAsAPlainLoadAndThenShowsThePhoto) {
  const fs::path photo = dir_ / "photo.jpg";
  SavePicture(photo, 1200, 800);
  auto view = View([](const std::string&) { return Solid(120, 80, 250); });
  auto plain = Plain();

  // The load answers while no decoding could have run.
  ASSERT_TRUE(view->LoadPhoto(photo.string()));
  ASSERT_TRUE(plain->LoadPhoto(photo.string()));
  EXPECT_TRUE(view->Refining());
  EXPECT_EQ(Read(*view), Read(*plain));
  ASSERT_TRUE(view->ZoomFitToWidth());
  ASSERT_TRUE(plain->ZoomFitToWidth());
  EXPECT_EQ(Read(*view), Read(*plain));
  // The stand-in, scaled to the fit, is what is drawn meanwhile.
  std::vector<std::uint8_t> drawn;
  ASSERT_TRUE(view->Render(0, 0, kViewWidth, kViewHeight, drawn));
  ASSERT_FALSE(drawn.empty());
  EXPECT_GE(drawn[0], 240);
  EXPECT_LE(drawn[1], 10);
  // Turned and shown in a narrower view: the same answers still.
  ASSERT_TRUE(view->RotateView(90));
  ASSERT_TRUE(plain->RotateView(90));
  view->SetViewSize(200, 200);
  plain->SetViewSize(200, 200);
  ASSERT_TRUE(view->ZoomFitToWidth());
  ASSERT_TRUE(plain->ZoomFitToWidth());
  EXPECT_EQ(Read(*view), Read(*plain));

  // Once decoded, the photo replaces the stand-in with everything done to
  // it since, and draws as the plain view does.
  LetDecodingsGo();
  view->WaitUntilReady();
  std::vector<std::uint8_t> plain_drawn;
  ASSERT_TRUE(view->Render(0, 0, 200, 200, drawn));
  ASSERT_TRUE(plain->Render(0, 0, 200, 200, plain_drawn));
  EXPECT_FALSE(view->Refining());
  EXPECT_EQ(Read(*view), Read(*plain));
  EXPECT_EQ(drawn, plain_drawn);
}

TEST_F(StandInViewTest, WhatNeedsThePhotosPixelsWaitsForThem) {
  const fs::path photo = dir_ / "photo.jpg";
  SavePicture(photo, 900, 600);
  auto view = View([](const std::string&) { return Solid(90, 60, 250); });
  auto plain = Plain();
  ASSERT_TRUE(view->LoadPhoto(photo.string()));
  ASSERT_TRUE(plain->LoadPhoto(photo.string()));
  // A zoom to 100% waits for the decoding, and the turn done before it
  // carries over.
  ASSERT_TRUE(view->RotateView(-90));
  ASSERT_TRUE(plain->RotateView(-90));
  std::thread letting_go([this] { LetDecodingsGo(); });
  ASSERT_TRUE(view->ZoomTo(100));
  letting_go.join();
  ASSERT_TRUE(plain->ZoomTo(100));
  EXPECT_FALSE(view->Refining());
  EXPECT_EQ(Read(*view), Read(*plain));
  std::vector<std::uint8_t> drawn, plain_drawn;
  ASSERT_TRUE(view->Render(100, 50, 60, 40, drawn));
  ASSERT_TRUE(plain->Render(100, 50, 60, 40, plain_drawn));
  EXPECT_EQ(drawn, plain_drawn);
}

TEST_F(StandInViewTest, APaintDuringTheWaitThatBringsThePhotoInIsKept) {
  // As in the desktop program: while a zoom waits for the photo, the window
  // paints, and a paint may put the photo in the stand-in's place first.
  const fs::path photo = dir_ / "photo.jpg";
  SavePicture(photo, 900, 600);
  DecodeAheadDisplay* painted = nullptr;
  bool let_go = false;
  auto view = View([](const std::string&) { return Solid(90, 60, 250); },
                   [&](const std::function<bool()>& done) {
                     if (!let_go) {
                       let_go = true;
                       LetDecodingsGo();
                     }
                     // Paints keep coming, one after the end too.
                     std::vector<std::uint8_t> drawn;
                     for (bool finished = false; !finished;) {
                       finished = done();
                       painted->Render(0, 0, 10, 10, drawn);
                       std::this_thread::yield();
                     }
                   });
  painted = view.get();
  auto plain = Plain();
  for (DisplayControl* each : {static_cast<DisplayControl*>(view.get()),
                               static_cast<DisplayControl*>(plain.get())}) {
    ASSERT_TRUE(each->LoadPhoto(photo.string()));
    ASSERT_TRUE(each->ZoomFitToWidth());
    ASSERT_TRUE(each->RotateView(90));
    ASSERT_TRUE(each->ZoomTo(50));
  }
  EXPECT_TRUE(let_go);
  EXPECT_FALSE(view->Refining());
  EXPECT_EQ(Read(*view), Read(*plain));
}

TEST_F(StandInViewTest, LoadsThePlainWayWithoutAFittingStandIn) {
  const fs::path photo = dir_ / "photo.jpg";
  SavePicture(photo, 900, 600);
  struct Case {
    const char* name;
    std::optional<RgbPicture> stand_in;
  };
  const Case cases[] = {
      {"none", std::nullopt},
      {"another shape", Solid(60, 60, 250)},
      {"pixels missing", RgbPicture{90, 60, {1, 2, 3}}},
  };
  LetDecodingsGo();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    auto view = View([&c](const std::string&) { return c.stand_in; });
    ASSERT_TRUE(view->LoadPhoto(photo.string()));
    EXPECT_FALSE(view->Refining());
    ASSERT_TRUE(view->ZoomFitToWidth());
    std::vector<std::uint8_t> drawn, plain_drawn;
    auto plain = Plain();
    ASSERT_TRUE(plain->LoadPhoto(photo.string()));
    ASSERT_TRUE(plain->ZoomFitToWidth());
    ASSERT_TRUE(view->Render(0, 0, kViewWidth, kViewHeight, drawn));
    ASSERT_TRUE(plain->Render(0, 0, kViewWidth, kViewHeight, plain_drawn));
    EXPECT_EQ(drawn, plain_drawn);
    gate_ = std::promise<void>();
    LetDecodingsGo();
  }
}

TEST_F(StandInViewTest, AFileBrokenAfterItsLookupLeavesTheStandInShown) {
  // The lookup vouched for a photo that is broken by the time it is
  // decoded: the load has answered, the view keeps the stand-in, and what
  // needs the pixels fails cleanly.
  const fs::path photo = dir_ / "photo.jpg";
  SavePicture(photo, 900, 600);
  auto view = View([](const std::string&) { return Solid(90, 60, 250); });
  ASSERT_TRUE(view->LoadPhoto(photo.string()));
  std::ofstream(photo, std::ios::trunc) << "no photo any more";
  LetDecodingsGo();
  view->WaitUntilReady();
  std::vector<std::uint8_t> drawn;
  EXPECT_TRUE(view->ZoomFitToWidth());
  EXPECT_TRUE(view->Render(0, 0, kViewWidth, kViewHeight, drawn));
  EXPECT_FALSE(view->Refining());
  EXPECT_FALSE(view->ZoomTo(100));
  EXPECT_EQ(view->PhotoWidth(), 900);
}

}  // namespace
}  // namespace qbpd
