#ifndef QBPD_PLATFORM_VIPS_THUMBNAIL_H_
#define QBPD_PLATFORM_VIPS_THUMBNAIL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qbpd {

class SharedThumbnails;

// The JPEG thumbnail of the photo at `source`, fitted into `size` x `size`
// and upright, encoded at `quality`: from the camera's EXIF preview when it
// still shows the photo, otherwise decoded at the scale the thumbnail needs
// (libvips, or the bitmap reader for BMP). Nothing when the file is no plain
// file, no photo of a supported kind, is cut short or broken, or would take
// more than one photo may to decode. With `shared` enabled, a trusted entry
// of the desktop's shared thumbnails is taken first, and a thumbnail made
// here is written there too. A thumbnail decoded from the whole JPEG, the
// file unchanged all along, carries the whole-decode mark (see
// whole_decode_mark.h). Library failures throw vips::VError.
std::optional<std::vector<std::uint8_t>> MakeJpegThumbnail(
    const std::string& source,
    int size,
    int quality,
    const SharedThumbnails& shared);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_VIPS_THUMBNAIL_H_
