#include "platform/saver_player.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <mutex>

namespace qbpd {
namespace {

constexpr int kW = 64;
constexpr int kH = 36;

SaverFrame Solid(std::uint32_t colour) {
  SaverFrame f = SaverFrame::Black(kW, kH);
  std::fill(f.pixels.begin(), f.pixels.end(), colour);
  return f;
}

// Two frames with a different colour in every pixel, so that a mix shows
// which one each pixel comes from.
const SaverFrame kOld = Solid(0xFF0000FFu);
const SaverFrame kNew = Solid(0xFFFF0000u);

// The share of pixels that are wholly the new frame's.
double NewShare(const SaverFrame& f) {
  int n = 0;
  for (std::uint32_t p : f.pixels) {
    n += p == kNew.pixels[0] ? 1 : 0;
  }
  return static_cast<double>(n) / f.pixels.size();
}

const SaverTransition kAll[] = {
    SaverTransition::kFromCentre, SaverTransition::kDiagonal,
    SaverTransition::kTopToBottom, SaverTransition::kLeftToRight};

TEST(SaverFramesTest, EffectCodesNameTheTransitions) {
  EXPECT_EQ(ParseSaverEffects("3001>2007>7002>2000"),
            (std::vector<SaverTransition>(std::begin(kAll), std::end(kAll))));
  EXPECT_EQ(ParseSaverEffects("2007>2007"),
            (std::vector<SaverTransition>{SaverTransition::kDiagonal,
                                          SaverTransition::kDiagonal}));
  EXPECT_TRUE(ParseSaverEffects("").empty());
  EXPECT_EQ(ParseSaverEffects("9999>2000"),
            std::vector<SaverTransition>{SaverTransition::kLeftToRight});
}

TEST(SaverFramesTest, EachTransitionRunsFromTheOldPhotoToTheNew) {
  for (SaverTransition t : kAll) {
    SaverFrame out;
    DrawSaverTransition(t, kOld, kNew, 0.0, out);
    EXPECT_EQ(out.pixels, kOld.pixels) << static_cast<int>(t);
    DrawSaverTransition(t, kOld, kNew, 1.0, out);
    EXPECT_EQ(out.pixels, kNew.pixels) << static_cast<int>(t);
  }
}

TEST(SaverFramesTest, TheNewPhotoGrowsSmoothly) {
  // Over 50 small steps the new photo's share never falls, and no step
  // changes the picture by more than 8% on average (the mean is 2%): no cut.
  for (SaverTransition t : kAll) {
    SaverFrame before;
    SaverFrame after;
    DrawSaverTransition(t, kOld, kNew, 0.0, before);
    double share = 0;
    for (int step = 1; step <= 50; ++step) {
      DrawSaverTransition(t, kOld, kNew, step / 50.0, after);
      const double now = NewShare(after);
      EXPECT_GE(now + 1e-9, share) << static_cast<int>(t) << " " << step;
      double change = 0;
      for (size_t i = 0; i < after.pixels.size(); ++i) {
        const int red_after = static_cast<int>((after.pixels[i] >> 16) & 0xFF);
        const int red_before =
            static_cast<int>((before.pixels[i] >> 16) & 0xFF);
        change += std::abs(red_after - red_before) / 255.0;
      }
      EXPECT_LT(change / after.pixels.size(), 0.08)
          << static_cast<int>(t) << " " << step;
      share = now;
      before = after;
    }
    EXPECT_EQ(share, 1.0);
  }
}

TEST(SaverFramesTest, TheFourTransitionsAreDistinct) {
  std::vector<SaverFrame> middles;
  for (SaverTransition t : kAll) {
    SaverFrame out;
    DrawSaverTransition(t, kOld, kNew, 0.4, out);
    middles.push_back(out);
  }
  for (size_t a = 0; a < middles.size(); ++a) {
    for (size_t b = a + 1; b < middles.size(); ++b) {
      EXPECT_NE(middles[a].pixels, middles[b].pixels) << a << " " << b;
    }
  }
  // From the centre: the middle is new, the corners old.
  const SaverFrame& centre = middles[0];
  EXPECT_EQ(centre.pixels[(kH / 2) * kW + kW / 2], kNew.pixels[0]);
  EXPECT_EQ(centre.pixels[0], kOld.pixels[0]);
  // Top to bottom: the top row is new before the bottom one.
  EXPECT_EQ(middles[2].pixels[0], kNew.pixels[0]);
  EXPECT_EQ(middles[2].pixels[(kH - 1) * kW], kOld.pixels[0]);
  // Left to right pushes: the old photo's left edge has moved right.
  EXPECT_EQ(middles[3].pixels[0], kNew.pixels[0]);
  EXPECT_EQ(middles[3].pixels[kW - 1], kOld.pixels[0]);
}

// --- the player
// ----------------------------------------------------------------

// A decoder of solid frames, one colour a photo name ("p1" ...), that
// records what it decoded and fails for names starting with "bad".
class FakeDecoder {
 public:
  SaverDecoder Decoder() {
    return [this](const std::string& path, int w, int h) {
      {
        std::lock_guard<std::mutex> lock(mutex_);
        calls_.push_back(path);
      }
      if (gate_.valid()) {
        gate_.wait();
      }
      if (path.rfind("bad", 0) == 0) {
        return SaverFrame{};
      }
      SaverFrame f = SaverFrame::Black(w, h);
      std::fill(f.pixels.begin(), f.pixels.end(), ColourOf(path));
      return f;
    };
  }
  static std::uint32_t ColourOf(const std::string& path) {
    return 0xFF000000u |
           static_cast<std::uint32_t>(std::hash<std::string>{}(path)&0xFFFFFFu);
  }
  std::vector<std::string> Calls() {
    std::lock_guard<std::mutex> lock(mutex_);
    return calls_;
  }
  // Decodings wait until Open is called.
  void Close() { gate_ = promise_.get_future().share(); }
  void Open() { promise_.set_value(); }

 private:
  std::mutex mutex_;
  std::vector<std::string> calls_;
  std::promise<void> promise_;
  std::shared_future<void> gate_;
};

std::uint32_t Colour(const SaverFrame& f) {
  return f.pixels.empty() ? 0 : f.pixels[f.pixels.size() / 2];
}

// Calls FrameAt, first letting any decoding finish, as a screen that is
// never late would see it.
const SaverFrame& Ready(SaverPlayer& player, long long ms) {
  player.WaitForDecoding();
  return player.FrameAt(ms);
}

TEST(SaverPlayerTest, PlaysEachPhotoForTheIntervalWithTheTransitionsInTurn) {
  FakeDecoder fake;
  SaverPlayer player(
      {{"p1", "p2", "p3"},
       2,
       {SaverTransition::kTopToBottom, SaverTransition::kLeftToRight}},
      kW, kH, fake.Decoder());
  EXPECT_EQ(player.TransitionMs(), 1000);
  EXPECT_EQ(Colour(Ready(player, 0)), FakeDecoder::ColourOf("p1"));
  EXPECT_EQ(player.ShownPhoto(), 0);
  // The second photo is decoded ahead while the first is up.
  player.WaitForDecoding();
  EXPECT_EQ(fake.Calls(), (std::vector<std::string>{"p1", "p2"}));
  EXPECT_EQ(Colour(player.FrameAt(999)), FakeDecoder::ColourOf("p1"));
  EXPECT_FALSE(player.InTransition());
  player.FrameAt(1000);
  EXPECT_TRUE(player.InTransition());
  EXPECT_EQ(player.Transition(), SaverTransition::kTopToBottom);
  player.FrameAt(1500);
  EXPECT_TRUE(player.InTransition());
  EXPECT_EQ(Colour(player.FrameAt(2000)), FakeDecoder::ColourOf("p2"));
  EXPECT_EQ(player.ShownPhoto(), 1);
  EXPECT_FALSE(player.InTransition());
  Ready(player, 3000);
  EXPECT_EQ(player.Transition(), SaverTransition::kLeftToRight);
  EXPECT_EQ(Colour(player.FrameAt(4000)), FakeDecoder::ColourOf("p3"));
  // After the last, the first again, by the first transition.
  Ready(player, 5000);
  EXPECT_EQ(player.Transition(), SaverTransition::kTopToBottom);
  EXPECT_EQ(Colour(player.FrameAt(6000)), FakeDecoder::ColourOf("p1"));
  EXPECT_EQ(player.LateCount(), 0);
}

TEST(SaverPlayerTest, TheScreenIsBlackUntilTheFirstPhotoIsDecoded) {
  FakeDecoder fake;
  fake.Close();
  SaverPlayer slow({{"p1", "p2"}, 2, {SaverTransition::kDiagonal}}, kW, kH,
                   fake.Decoder());
  EXPECT_EQ(slow.FrameAt(0).pixels, SaverFrame::Black(kW, kH).pixels);
  EXPECT_TRUE(slow.Waiting());
  EXPECT_EQ(slow.ShownPhoto(), -1);
  fake.Open();
  EXPECT_EQ(Colour(Ready(slow, 100)), FakeDecoder::ColourOf("p1"));
}

TEST(SaverPlayerTest, LateNextPhotoIsCountedAndThenShown) {
  FakeDecoder fake;
  auto decoder = fake.Decoder();
  std::promise<void> release;
  std::shared_future<void> gate = release.get_future().share();
  std::atomic<int> calls{0};
  SaverPlayer player({{"p1", "p2"}, 2, {SaverTransition::kFromCentre}}, kW, kH,
                     [&](const std::string& path, int w, int h) {
                       if (calls++ == 1) {
                         gate.wait();
                       }
                       return decoder(path, w, h);
                     });
  Ready(player, 0);
  // Due at 1000, but p2 isn't decoded: p1 stays, no transition.
  EXPECT_EQ(Colour(player.FrameAt(1200)), FakeDecoder::ColourOf("p1"));
  EXPECT_FALSE(player.InTransition());
  EXPECT_TRUE(player.Waiting());
  EXPECT_EQ(player.LateCount(), 1);
  release.set_value();
  // Once ready, the whole transition runs from then on.
  Ready(player, 1300);
  EXPECT_TRUE(player.InTransition());
  EXPECT_EQ(Colour(player.FrameAt(2300)), FakeDecoder::ColourOf("p2"));
}

TEST(SaverPlayerTest, APhotoThatCantBeDecodedIsLeftOut) {
  FakeDecoder fake;
  SaverPlayer player({{"p1", "bad.jpg", "p3"}, 2, {}}, kW, kH, fake.Decoder());
  EXPECT_EQ(Colour(Ready(player, 0)), FakeDecoder::ColourOf("p1"));
  // Without transitions photos change at once, a whole interval apart.
  EXPECT_EQ(Colour(Ready(player, 1999)), FakeDecoder::ColourOf("p1"));
  // At 2000 the bad one is found out and the one after it decoded.
  Ready(player, 2000);
  EXPECT_EQ(Colour(Ready(player, 2000)), FakeDecoder::ColourOf("p3"));
  player.WaitForDecoding();
  EXPECT_EQ(fake.Calls(),
            (std::vector<std::string>{"p1", "bad.jpg", "p3", "p1"}));
}

TEST(SaverPlayerTest, NoPhotoDecodesLeavesTheScreenBlack) {
  FakeDecoder fake;
  SaverPlayer player({{"bad1", "bad2"}, 2, {}}, kW, kH, fake.Decoder());
  for (int i = 0; i < 4; ++i) {
    player.WaitForDecoding();
    player.FrameAt(0);
  }
  EXPECT_EQ(player.FrameAt(5000).pixels, SaverFrame::Black(kW, kH).pixels);
  EXPECT_FALSE(player.Waiting());
  EXPECT_EQ(player.ShownPhoto(), -1);
}

TEST(SaverPlayerTest, TheShortestIntervalHalvesTheTransition) {
  FakeDecoder fake;
  SaverPlayer preview({{"p1", "p2"}, 1, {}}, kW, kH, fake.Decoder());
  EXPECT_EQ(preview.TransitionMs(), 500);
  SaverPlayer zero({{"p1"}, 0, {}}, kW, kH, fake.Decoder());
  EXPECT_EQ(zero.TransitionMs(), 500);
}

}  // namespace
}  // namespace qbpd
