// The transfer screen's work made ahead on another thread: what it makes,
// in which order, what it hands over, and that nothing it made outlives the
// run when nobody takes it.
#include "online/upload_ahead.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

// An image library whose conversions and thumbnails write small marker
// files naming their source, that can fail on purpose, and whose work can be
// held until the test lets it go.
class MarkerImages final : public ImageOperations {
 public:
  int GenerateThumbnailExt(const std::string& source,
                           const std::string& thumbnail,
                           int size,
                           int quality) override {
    Note("thumbnail " + source + " " + std::to_string(size) + " " +
         std::to_string(quality));
    if (!fs::exists(source) || fail_thumbnails) {
      return 0;
    }
    std::ofstream(thumbnail) << "thumbnail of " << source;
    return 1;
  }
  int GenerateThumbnailAndBuffer(const std::string& source,
                                 std::string& buffer,
                                 int size,
                                 int quality) override {
    Note("cached " + source + " " + std::to_string(size) + " " +
         std::to_string(quality));
    buffer = "cache entry";
    return fs::exists(source) ? 1 : 0;
  }
  int SaveImageAsJPEG(const std::string& source,
                      const std::string& target) override {
    Note("convert " + source);
    {
      std::unique_lock<std::mutex> lock(mutex_);
      released_.wait(lock, [this] { return !held_; });
    }
    if (fail_conversions || !fs::exists(source)) {
      return 0;
    }
    std::ofstream(target) << "copy of " << source;
    return 1;
  }
  int GetImageWidth(const std::string&) override { return 0; }
  int GetImageHeight(const std::string&) override { return 0; }
  int GetExifOrientation(const std::string&) override { return 1; }
  ExifPreview CompareExifPreview(const std::string&) override {
    return ExifPreview::kMissing;
  }
  int DeleteThumbnailFile(const std::string&) override { return 1; }
  int DeleteThumbnailFolder(const std::string&) override { return 1; }

  void Hold() {
    std::lock_guard<std::mutex> lock(mutex_);
    held_ = true;
  }
  void Release() {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      held_ = false;
    }
    released_.notify_all();
  }
  std::vector<std::string> Calls() {
    std::lock_guard<std::mutex> lock(mutex_);
    return calls_;
  }
  bool fail_conversions = false;
  bool fail_thumbnails = false;

 private:
  void Note(std::string call) {
    std::lock_guard<std::mutex> lock(mutex_);
    calls_.push_back(std::move(call));
  }
  std::mutex mutex_;
  std::condition_variable released_;
  bool held_ = false;
  std::vector<std::string> calls_;
};

// Waits the way the scripted host does: without pumping.
void Block(const std::function<bool()>& done) {
  while (!done()) {
    std::this_thread::yield();
  }
}

std::set<std::string> FilesIn(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

class UploadAheadTest : public ::testing::Test {
 protected:
  UploadAheadTest() {
    fs::create_directories(photos());
    fs::create_directories(temp());
  }
  fs::path photos() const { return dir_.path() / "photos"; }
  fs::path temp() const { return dir_.path() / "temp"; }
  std::string Photo(const std::string& name, const std::string& bytes = "x") {
    const fs::path path = photos() / name;
    std::ofstream(path) << bytes;
    return path.string();
  }
  UploadAhead::Order Converted(const std::string& photo, int n) {
    return {photo,
            (temp() / (fs::path(photo).stem().string() + ".jpg")).string(),
            (temp() / ("upload-" + std::to_string(n) + ".ahead")).string()};
  }

  // Whether the image library was called `count` times within a few seconds.
  bool WaitForCalls(size_t count) {
    const auto until =
        std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (images_.Calls().size() < count) {
      if (std::chrono::steady_clock::now() > until) {
        return false;
      }
      std::this_thread::yield();
    }
    return true;
  }

  testing::TempDir dir_;
  MarkerImages images_;
};

TEST_F(UploadAheadTest, MakesTheCopyThenTheThumbnailOfWhatGoes) {
  const std::string png = Photo("a.png", "pixels");
  const std::string jpeg = Photo("b.jpg");
  UploadAhead ahead(images_, 85, 70);
  ahead.Ask(1, Converted(png, 1));
  ahead.Ask(2, {jpeg, "", (temp() / "upload-2.ahead").string()});

  std::optional<UploadAhead::Made> first = ahead.Take(1, Block);
  ASSERT_TRUE(first);
  EXPECT_TRUE(first->copy_made);
  EXPECT_TRUE(first->thumbnail_made);
  EXPECT_EQ(first->file(), (temp() / "a.jpg").string());
  EXPECT_EQ(first->photo_stamp, FileStamp::Of(png));
  std::optional<UploadAhead::Made> second = ahead.Take(2, Block);
  ASSERT_TRUE(second);
  EXPECT_FALSE(second->copy_made);
  EXPECT_EQ(second->file(), jpeg);
  // The two photos may be made at once; each photo's copy comes before its
  // thumbnail.
  const std::vector<std::string> calls = images_.Calls();
  const auto at = [&calls](const std::string& call) {
    return std::find(calls.begin(), calls.end(), call) - calls.begin();
  };
  EXPECT_EQ(calls.size(), 3u);
  EXPECT_LT(at("convert " + png),
            at("thumbnail " + (temp() / "a.jpg").string() + " 85 70"));
  EXPECT_LT(at("thumbnail " + jpeg + " 85 70"), 3);
  // The files are the taker's now: nothing removes them.
  EXPECT_EQ(FilesIn(temp()), (std::set<std::string>{"a.jpg", "upload-1.ahead",
                                                    "upload-2.ahead"}));
  EXPECT_EQ(fs::file_size(png), 6u);  // the photo is only read
}

TEST_F(UploadAheadTest, WithoutAThumbnailFileTheLibrarysCacheIsFilled) {
  const std::string jpeg = Photo("c.jpg");
  UploadAhead ahead(images_, 85, 70);
  ahead.Ask(1, {jpeg, "", ""});
  std::optional<UploadAhead::Made> made = ahead.Take(1, Block);
  ASSERT_TRUE(made);
  EXPECT_TRUE(made->thumbnail_made);
  EXPECT_EQ(images_.Calls(),
            (std::vector<std::string>{"cached " + jpeg + " 85 70"}));
}

TEST_F(UploadAheadTest, FailuresAreHandedOverAsFailures) {
  const std::string png = Photo("d.png");
  images_.fail_conversions = true;
  UploadAhead ahead(images_, 85, 70);
  ahead.Ask(1, Converted(png, 1));
  std::optional<UploadAhead::Made> made = ahead.Take(1, Block);
  ASSERT_TRUE(made);
  EXPECT_FALSE(made->copy_made);
  // The thumbnail of a copy that isn't there fails as it would at the
  // photo's turn; the copy's path is still the file that goes.
  EXPECT_FALSE(made->thumbnail_made);
  EXPECT_EQ(made->file(), (temp() / "d.jpg").string());
  EXPECT_TRUE(FilesIn(temp()).empty());
}

TEST_F(UploadAheadTest, AskedAndHeldCopiesAreKnownUntilTaken) {
  const std::string png = Photo("e.png");
  UploadAhead ahead(images_, 85, 70);
  EXPECT_FALSE(ahead.Take(1, Block));  // never asked for
  images_.Hold();
  ahead.Ask(1, Converted(png, 1));
  EXPECT_TRUE(ahead.Asked(1));
  EXPECT_FALSE(ahead.Asked(2));
  EXPECT_TRUE(ahead.HoldsCopy((temp() / "e.jpg").string()));
  EXPECT_FALSE(ahead.HoldsCopy((temp() / "f.jpg").string()));
  images_.Release();
  ASSERT_TRUE(ahead.Take(1, Block));
  EXPECT_FALSE(ahead.Asked(1));
  EXPECT_FALSE(ahead.HoldsCopy((temp() / "e.jpg").string()));
}

TEST_F(UploadAheadTest, DropRemovesWhatWasMadeAndTheWorkInHandItsOwn) {
  const std::string one = Photo("g.png");
  const std::string two = Photo("h.png");
  const std::string three = Photo("i.png");
  const std::string four = Photo("m.png");
  {
    UploadAhead ahead(images_, 85, 70);
    ahead.Ask(1, Converted(one, 1));
    ASSERT_TRUE(ahead.Take(1, Block));  // taken: the taker's
    ahead.Ask(2, Converted(two, 2));
    ASSERT_TRUE(WaitForCalls(4));  // photo 2 is made
    // Photos 3 and 4 are held in the middle of their conversions, both at
    // once, when the run is cancelled.
    images_.Hold();
    ahead.Ask(3, Converted(three, 3));
    ahead.Ask(4, Converted(four, 4));
    ASSERT_TRUE(WaitForCalls(6));
    ahead.Drop();
    EXPECT_FALSE(ahead.Asked(2));
    EXPECT_FALSE(ahead.Asked(3));
    EXPECT_FALSE(ahead.Take(2, Block));
    EXPECT_EQ(FilesIn(temp()),
              (std::set<std::string>{"g.jpg", "upload-1.ahead"}));
    // Photo 3 asked again writes the names of the dropped work: it starts
    // only once that work has removed its files.
    ahead.Ask(3, Converted(three, 3));
    images_.Release();
    ASSERT_TRUE(ahead.Take(3, Block));
  }
  EXPECT_EQ(FilesIn(temp()),
            (std::set<std::string>{"g.jpg", "upload-1.ahead", "i.jpg",
                                   "upload-3.ahead"}));
}

TEST_F(UploadAheadTest, AWaitThatSeesADropEndsWithNothing) {
  const std::string png = Photo("j.png");
  UploadAhead ahead(images_, 85, 70);
  images_.Hold();
  ahead.Ask(1, Converted(png, 1));
  // The window's events run during the wait; one of them ends the run.
  bool pumped = false;
  std::optional<UploadAhead::Made> made =
      ahead.Take(1, [&](const std::function<bool()>& done) {
        while (!done()) {
          if (!pumped) {
            pumped = true;
            ahead.Drop();
          }
        }
      });
  EXPECT_TRUE(pumped);
  EXPECT_FALSE(made);
  images_.Release();
}

TEST_F(UploadAheadTest, WhatNobodyTookIsRemovedWhenTheRunGoes) {
  const std::string png = Photo("k.png");
  {
    UploadAhead ahead(images_, 85, 70);
    ahead.Ask(1, Converted(png, 1));
    ahead.Ask(2, Converted(Photo("l.png"), 2));
    ASSERT_TRUE(WaitForCalls(4));
  }
  EXPECT_TRUE(FilesIn(temp()).empty());
  EXPECT_TRUE(fs::exists(png));
}

TEST(FileStampTest, TellsAChangedFileFromTheSame) {
  testing::TempDir dir;
  const std::string path = (dir.path() / "p.jpg").string();
  EXPECT_EQ(FileStamp::Of(path), FileStamp{});
  std::ofstream(path) << "one";
  const FileStamp first = FileStamp::Of(path);
  EXPECT_EQ(first.size, 3);
  EXPECT_EQ(FileStamp::Of(path), first);
  std::ofstream(path) << "longer";
  EXPECT_NE(FileStamp::Of(path), first);
}

}  // namespace
}  // namespace qbpd
