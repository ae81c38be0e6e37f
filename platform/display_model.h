#ifndef QBPD_PLATFORM_DISPLAY_MODEL_H_
#define QBPD_PLATFORM_DISPLAY_MODEL_H_

#include "platform/decode_ahead.h"
#include "platform/forms/display_control.h"

#include <memory>

namespace qbpd {

// The photo view model over libvips, with libjpeg-turbo decoding JPEG files.
//
// Decoding: LoadPhoto reads the file's header, refuses what it must, and
// decodes the pixels at once at the coarsest detail that the view's fit to
// width will need: JPEG files through libjpeg-turbo at the smallest of its
// eighth scales (1/8 to 8/8) that still gives a decoded pixel for every
// shown one, other kinds box-shrunk by a power of two while they are read.
// With no view size known yet it decodes at full size, the zoom that a load
// starts with. A zoom that needs more detail decodes the file again, finer,
// on the spot; a finer decoding already held is kept. The picture is never
// shown from fewer pixels than it takes on screen, and the file stays the
// source of full resolution. Render keeps the shown picture in memory while
// it is no larger than the decoding (a fitted photo), so scrolling copies.
//
// Render fills `rgb` with the clipped rectangle only: its rows are
// (min(x + w, ShownWidth()) - max(x, 0)) pixels wide, and there are
// (min(y + h, ShownHeight()) - max(y, 0)) of them. Transparent photos are
// shown over the view's grey (206, 206, 206).
//
// Refused (False, the view as it was): a missing or empty file, a file that
// is none of JPEG, PNG, TIFF or bitmap by its first bytes whatever its name,
// a photo above 256 megapixels (known from the header, before a pixel is
// decoded), a photo whose decoding would take more than one photo may (see
// WithinDecodeBudget), a JPEG without its end marker, a corrupt or truncated
// file, and anything that is not a plain file (never waited on). However
// long or narrow the photo, every shown side keeps at least one pixel.
//
// With `work_ahead`, the model decodes the photos that PrepareLoad names on
// a thread of its own (see decode_ahead.h), so that their LoadPhoto takes
// no decoding on the caller's thread, and every other LoadPhoto, and a
// zoom that needs finer detail, decodes on a thread of its own while the
// caller waits through `wait` (the desktop program's window keeps painting
// meanwhile); every answer is the same as without. Without, PrepareLoad is
// ignored and LoadPhoto decodes on the caller's thread (the benchmarks and the
// tests compare the two). With work ahead and `stand_in`, a photo that has a
// stand-in (its cached thumbnail, made by decoding this very file whole)
// loads at once and shows the stand-in until its own decoding replaces it.
std::unique_ptr<DisplayControl> MakeVipsDisplayControl(
    bool work_ahead = true,
    DecodeWait wait = {},
    StandInLookup stand_in = {});

}  // namespace qbpd

#endif  // QBPD_PLATFORM_DISPLAY_MODEL_H_
