#include "platform/auto_colour.h"

#include <algorithm>
#include <cmath>

namespace qbpd {
namespace {

// The share of pixels let go at each end of a channel.
constexpr double kClip = 0.005;
// A channel narrower than this (after the clip) is left alone.
constexpr int kLeastRange = 16;
// The steepest stretch allowed.
constexpr double kMostGain = 4.0;

}  // namespace

ColourLevels ComputeColourLevels(const std::uint8_t* rgb,
                                 std::size_t pixels,
                                 std::size_t step) {
  std::array<std::array<std::size_t, 256>, 3> histogram{};
  step = std::max<std::size_t>(step, 1);
  std::size_t counted = 0;
  for (std::size_t i = 0; i < pixels; i += step) {
    for (int c = 0; c < 3; ++c) {
      ++histogram[c][rgb[i * 3 + c]];
    }
    ++counted;
  }
  pixels = counted;
  ColourLevels levels;
  const auto clipped = static_cast<std::size_t>(kClip * pixels);
  for (int c = 0; c < 3; ++c) {
    int low = 0;
    int high = 255;
    std::size_t below = 0;
    while (low < 255 && below + histogram[c][low] <= clipped) {
      below += histogram[c][low];
      ++low;
    }
    std::size_t above = 0;
    while (high > 0 && above + histogram[c][high] <= clipped) {
      above += histogram[c][high];
      --high;
    }
    if (pixels == 0 || high - low < kLeastRange) {
      low = 0;
      high = 255;
    }
    // A stretch beyond the steepest keeps the middle of the range in place.
    double gain = 255.0 / (high - low);
    double offset = low;
    if (gain > kMostGain) {
      gain = kMostGain;
      offset = (low + high) / 2.0 - 127.5 / gain;
    }
    for (int v = 0; v < 256; ++v) {
      levels.table[c][v] = static_cast<std::uint8_t>(
          std::clamp(std::lround((v - offset) * gain), 0L, 255L));
    }
  }
  return levels;
}

}  // namespace qbpd
