#ifndef QBPD_PLATFORM_BITMAP_SAVE_H_
#define QBPD_PLATFORM_BITMAP_SAVE_H_

#include <string>

namespace qbpd {

// Writes the photo at `source` (JPEG, PNG, TIFF or bitmap, known by its
// first bytes) as an uncompressed 24-bit Windows bitmap at `target`,
// upright: its EXIF orientation applied. Transparent parts are laid on
// white. The target is replaced atomically, or left as it was on failure.
// The photo rules of the image library hold: only a plain file, never
// waited on; a JPEG without its end marker, a photo above 256 megapixels or
// one whose decoding would take more than one photo may, a corrupt or
// truncated file, all fail. True on success.
bool SaveUprightBitmap(const std::string& source, const std::string& target);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_BITMAP_SAVE_H_
