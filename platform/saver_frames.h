#ifndef QBPD_PLATFORM_SAVER_FRAMES_H_
#define QBPD_PLATFORM_SAVER_FRAMES_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

// A picture of the saver player: `width` x `height` pixels, each 0xFFRRGGBB
// (the layout of a 32-bit RGB image in memory on this machine), rows top
// first.
struct SaverFrame {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;
  // A black frame of that size.
  static SaverFrame Black(int width, int height);
  bool empty() const { return pixels.empty(); }
};

// The player's four transitions, by the effect codes of the screensaver
// store.
enum class SaverTransition {
  kFromCentre,   // "3001": the new photo opens as a growing circle from the
                 // middle, its rim soft
  kDiagonal,     // "2007": a soft band sweeps from the top-left corner to
                 // the bottom-right one
  kTopToBottom,  // "7002": the new photo comes down as a blind with a soft
                 // lower edge
  kLeftToRight,  // "2000": the new photo slides in from the left and pushes
                 // the old one out to the right
};

// The transitions of an effects text ("3001>2007>7002>2000"), in its order;
// unknown codes are left out. Empty when none is known: photos then change
// at once.
std::vector<SaverTransition> ParseSaverEffects(std::string_view effects);

// Draws into `out` (which takes the size of `from`) the frame at `progress`
// (0 to 1; eased, so that the movement starts and ends softly) of the
// transition from `from` to `to`, two frames of one size.
void DrawSaverTransition(SaverTransition transition,
                         const SaverFrame& from,
                         const SaverFrame& to,
                         double progress,
                         SaverFrame& out);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_SAVER_FRAMES_H_
