#ifndef QBPD_PLATFORM_RED_EYE_H_
#define QBPD_PLATFORM_RED_EYE_H_

#include "platform/crop_box.h"

#include <cstdint>

namespace qbpd {

// An 8-bit RGB picture in memory, rows of width * 3 bytes, changed in place.
struct RgbPixels {
  std::uint8_t* data = nullptr;
  int width = 0;
  int height = 0;
};

// Removes the red of the pupil under a click at (x, y).
//
// The pupil is found, not assumed: the reddest pixel within `reach` pixels
// of the click (redness being how far red stands above the stronger of green
// and blue) seeds a region grown over the connected pixels that are clearly
// red, both by that measure against the seed's and by red's share. The grow
// is bounded: a red region that runs past an eye's size (a red shirt, a lit
// cheek) is not a pupil, and nothing changes. Only the pixels that pass are
// neutralised, red brought down to the mean of green and blue, so the
// pupil's own texture and brightness stay; a soft edge at most two pixels
// wide treats the half-red pixels at its border in proportion to their
// redness. A white catch-light, the iris and the skin are not red and stay
// as they were.
//
// Returns how many pixels changed: 0 when the click found no red pupil, or
// nothing red is left of one (a repeated click removes what is left).
// `changed`, when given, gets the rectangle that holds the changed pixels.
int RemoveRedEye(RgbPixels picture,
                 double x,
                 double y,
                 double reach,
                 CropRect* changed = nullptr);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_RED_EYE_H_
