#ifndef QBPD_PLATFORM_AUTO_COLOUR_H_
#define QBPD_PLATFORM_AUTO_COLOUR_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace qbpd {

// The automatic colour correction: one table per channel (red, green, blue)
// from each 8-bit value to its corrected value.
struct ColourLevels {
  std::array<std::array<std::uint8_t, 256>, 3> table{};
};

// Per-channel levels: in each channel the darkest and the lightest half
// percent of the pixels are let go, and what lies between is stretched to
// the whole range. Stretching each channel on its own also balances the
// white: a cast that lifts or lowers one channel against the others is taken
// out where the photo holds something near black and near white. A channel
// whose pixels nearly all share a few values is left as it is (there is
// nothing to measure), and no channel is stretched more than fourfold, so
// that a dim or one-coloured photo isn't blown apart.
//
// `rgb` holds `pixels` RGB triples, of which every `step`-th is counted: a
// sample of about a million pixels measures a photo as well as all of them.
ColourLevels ComputeColourLevels(const std::uint8_t* rgb,
                                 std::size_t pixels,
                                 std::size_t step = 1);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_AUTO_COLOUR_H_
