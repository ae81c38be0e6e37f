// The thumbnails made ahead on a second thread: which it makes, what it
// hands over, and when it waits.
#include "platform/thumbnail_ahead.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <future>
#include <set>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using Bytes = ThumbnailAhead::Bytes;

Bytes BytesOf(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

class ThumbnailAheadTest : public ::testing::Test {
 protected:
  ThumbnailAheadTest() {
    for (int i = 0; i < 6; ++i) {
      const fs::path photo = dir_.path() / ("p" + std::to_string(i));
      std::ofstream(photo) << "photo " << i;
      sources_.push_back(photo.string());
    }
  }
  // A maker that records what it made; its thumbnail is the file's text.
  ThumbnailAhead::Maker Recording() {
    return [this](const std::string& source) -> std::optional<Bytes> {
      std::ifstream in(source);
      Bytes bytes =
          BytesOf(std::string(std::istreambuf_iterator<char>(in), {}));
      {
        std::lock_guard lock(mutex_);
        made_.insert(source);
      }
      made_changed_.notify_all();
      return bytes;
    };
  }
  // Waits (a bound, not a measurement) until `count` photos were made.
  bool WaitMade(std::size_t count) {
    std::unique_lock lock(mutex_);
    return made_changed_.wait_for(lock, std::chrono::seconds(30),
                                  [&] { return made_.size() >= count; });
  }

  testing::TempDir dir_;
  std::vector<std::string> sources_;
  std::mutex mutex_;
  std::set<std::string> made_;
  std::condition_variable made_changed_;
};

TEST_F(ThumbnailAheadTest, MakesEveryOtherPhotoFromTheSecondAndHandsThemOver) {
  ThumbnailAhead ahead;
  ahead.Prepare(sources_, "85q70", Recording());
  ASSERT_TRUE(WaitMade(3));
  for (std::size_t i = 0; i < sources_.size(); ++i) {
    const auto taken = ahead.Take(sources_[i], "85q70");
    if (i % 2 == 1) {
      ASSERT_TRUE(taken) << i;
      EXPECT_EQ(*taken, BytesOf("photo " + std::to_string(i)));
    } else {
      // The caller makes these itself.
      EXPECT_FALSE(taken) << i;
    }
  }
  EXPECT_EQ(made_,
            (std::set<std::string>{sources_[1], sources_[3], sources_[5]}));
  // Taken once only, and nothing for other parameters or photos.
  EXPECT_FALSE(ahead.Take(sources_[1], "85q70"));
  ahead.Prepare(sources_, "85q70", Recording());
  EXPECT_FALSE(ahead.Take(sources_[1], "120q70"));
  EXPECT_FALSE(ahead.Take(dir_.path().string() + "/other", "85q70"));
}

TEST_F(ThumbnailAheadTest, APhotoChangedSinceIsNotHandedOver) {
  ThumbnailAhead ahead;
  std::promise<void> made_one;
  bool told = false;
  ahead.Prepare(sources_, "k", [&](const std::string& source) {
    auto bytes = Recording()(source);
    if (!told) {
      told = true;
      made_one.set_value();
    }
    return bytes;
  });
  ASSERT_EQ(made_one.get_future().wait_for(std::chrono::seconds(30)),
            std::future_status::ready);
  std::ofstream(sources_[1]) << "photo 1, edited meanwhile";
  EXPECT_FALSE(ahead.Take(sources_[1], "k"));
}

TEST_F(ThumbnailAheadTest, ATakeWaitsForThePhotoBeingMadeAndAQueuedOneIsLeft) {
  ThumbnailAhead ahead;
  std::promise<void> started, go;
  std::shared_future<void> going = go.get_future().share();
  ahead.Prepare(sources_, "k", [&](const std::string& source) {
    if (source == sources_[1]) {
      started.set_value();
      going.wait();
    }
    return Recording()(source);
  });
  ASSERT_EQ(started.get_future().wait_for(std::chrono::seconds(30)),
            std::future_status::ready);
  // The third photo of its list is not begun while the first is held: the
  // caller takes it off the list and makes it itself.
  EXPECT_FALSE(ahead.Take(sources_[3], "k"));
  auto taking = std::async(std::launch::async,
                           [&] { return ahead.Take(sources_[1], "k"); });
  go.set_value();
  const auto taken = taking.get();
  ASSERT_TRUE(taken);
  EXPECT_EQ(*taken, BytesOf("photo 1"));
  EXPECT_EQ(made_.count(sources_[3]), 0u);
}

}  // namespace
}  // namespace qbpd
