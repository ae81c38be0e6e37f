#ifndef QBPD_PLATFORM_JPEG_TURN_H_
#define QBPD_PLATFORM_JPEG_TURN_H_

// For the platform's implementations only: a JPEG's picture turned on its
// DCT coefficients, never decoded to pixels as a whole.
#include "platform/jpeg_metadata.h"

#include <optional>

namespace qbpd {

struct TurnedJpeg {
  // The turned file: its JFIF header, its own tables and the scan; no other
  // metadata segments.
  Bytes jpeg;
  // True when every block was moved unchanged (its coefficients reordered
  // and their signs turned): the picture lost nothing.
  bool exact = false;
  // The turned picture at an eighth of its size (each block's mean, as a
  // decoder's eighth-size decoding gives it), RGB rows.
  int small_width = 0;
  int small_height = 0;
  Bytes small_rgb;
};

// Turns the picture of `jpeg` clockwise by `turn` (0, 90, 180, 270) and
// then, with `mirror`, flips it left to right. The planes (brightness and
// each colour) are handled one by one: a plane whose blocks land on whole
// blocks moves losslessly; a plane where the turn would bring a partial
// block from the far edge to the near one (a plain lossless turn puts a
// wrong strip there, or trims the photo) is taken back to samples inside
// its blocks, moved, and brought to coefficients again with its own
// quantisation tables: one requantisation of that plane, nothing trimmed,
// no strip wrong. Quarter turns swap the planes' sampling factors, as a
// lossless turn must. Nothing for a JPEG that is not 8-bit YCbCr or grey,
// or is broken.
std::optional<TurnedJpeg> TurnJpeg(const Bytes& jpeg, int turn, bool mirror);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_JPEG_TURN_H_
