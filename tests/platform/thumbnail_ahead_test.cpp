// The thumbnails made ahead on a second thread: which it makes, what it
// hands over, and when it waits.
#include "platform/thumbnail_ahead.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <future>
#include <mutex>
#include <set>
#include <thread>

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

  // Waits (a bound, not a measurement) until `ahead` holds `bytes`: a photo
  // is held just after its maker returns.
  static bool WaitHeld(ThumbnailAhead& ahead, std::size_t bytes) {
    const auto until =
        std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (ahead.HeldBytes() != bytes) {
      if (std::chrono::steady_clock::now() > until) {
        return false;
      }
      std::this_thread::yield();
    }
    return true;
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

TEST_F(ThumbnailAheadTest, NoPhotoIsBegunWhileTheBytesHeldReachTheBudget) {
  // Each made photo holds 7 bytes ("photo N"); the budget is two of them.
  constexpr std::size_t kBudget = 14;
  std::mutex seen_mutex;
  std::vector<std::size_t> held_at_begin;
  ThumbnailAhead ahead(SIZE_MAX, /*every_other=*/false, kBudget);
  ahead.Prepare(sources_, "k", [&](const std::string& source) {
    {
      std::lock_guard lock(seen_mutex);
      held_at_begin.push_back(ahead.HeldBytes());
    }
    return Recording()(source);
  });
  ASSERT_TRUE(WaitMade(2));
  // Each one taken makes room for the next, in the list's order.
  for (std::size_t i = 0; i < sources_.size(); ++i) {
    ASSERT_TRUE(WaitMade(std::min(i + 2, sources_.size()))) << i;
    const auto taken = ahead.Take(sources_[i], "k");
    ASSERT_TRUE(taken) << i;
    EXPECT_EQ(*taken, BytesOf("photo " + std::to_string(i)));
  }
  EXPECT_EQ(ahead.HeldBytes(), 0u);
  std::lock_guard lock(seen_mutex);
  ASSERT_EQ(held_at_begin.size(), sources_.size());
  for (std::size_t held : held_at_begin) {
    EXPECT_LT(held, kBudget);
  }
}

TEST_F(ThumbnailAheadTest, TheSameKindToldAgainKeepsWhatWasMadeForItsPhotos) {
  std::atomic<int> makes{0};
  const auto counting = [&](const std::string& source) {
    ++makes;
    return Recording()(source);
  };
  ThumbnailAhead ahead(SIZE_MAX, /*every_other=*/false, SIZE_MAX,
                       /*workers=*/2);
  ahead.Prepare(sources_, "k", counting);
  ASSERT_TRUE(WaitMade(sources_.size()));
  const std::size_t all = 6u * 7u;
  ASSERT_TRUE(WaitHeld(ahead, all));
  // A shorter list (the photos that are left): the others are forgotten,
  // nothing is made again.
  const std::vector<std::string> left(sources_.begin() + 2, sources_.end());
  ahead.Prepare(left, "k", counting);
  EXPECT_EQ(ahead.HeldBytes(), all - 14);
  EXPECT_FALSE(ahead.Take(sources_[0], "k"));
  for (const std::string& source : left) {
    EXPECT_TRUE(ahead.Take(source, "k")) << source;
  }
  EXPECT_EQ(makes.load(), static_cast<int>(sources_.size()));
}

TEST_F(ThumbnailAheadTest, AnotherKindOrAForgetDropsWhatWasMade) {
  ThumbnailAhead ahead(SIZE_MAX, /*every_other=*/false);
  ahead.Prepare(sources_, "k", Recording());
  ASSERT_TRUE(WaitMade(sources_.size()));
  ASSERT_TRUE(WaitHeld(ahead, 6u * 7u));
  // Made for other parameters: never handed over for these.
  ahead.Prepare(sources_, "other", [](const std::string&) {
    return std::optional<Bytes>(BytesOf("other"));
  });
  const auto taken = ahead.Take(sources_[0], "other");
  EXPECT_FALSE(taken && *taken == BytesOf("photo 0"));
  ahead.Forget();
  EXPECT_EQ(ahead.HeldBytes(), 0u);
  EXPECT_FALSE(ahead.Take(sources_[1], "other"));
}

}  // namespace
}  // namespace qbpd
