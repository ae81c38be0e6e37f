#ifndef QBPD_PLATFORM_JPEG_METADATA_H_
#define QBPD_PLATFORM_JPEG_METADATA_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace qbpd {

using Bytes = std::vector<std::uint8_t>;

// The metadata segments of a JPEG file (EXIF, XMP, ICC profile, comments and
// any other application segment, each whole with its marker), in file
// order; the JFIF header is not among them, since every encoder writes its
// own. Nothing when the bytes are no JPEG.
std::optional<std::vector<Bytes>> ReadMetadataSegments(const Bytes& jpeg);

// The EXIF orientation the segments hold, 1 to 8; 1 without one.
int ExifOrientationOf(const std::vector<Bytes>& segments);

// True when the segments' EXIF data holds a preview picture.
bool HasExifPreview(const std::vector<Bytes>& segments);

// What the new picture looks like, for its EXIF data: its size, and a maker
// of its preview (a small JPEG) called only when the old EXIF data had one.
struct NewPicture {
  int width = 0;
  int height = 0;
  std::function<Bytes()> make_preview;
};

// Puts `segments` into `jpeg` (a fresh encoding or transform, whose own
// metadata segments other than its JFIF header are dropped), with the EXIF
// data brought up to date: Orientation normal, the pixel sizes those of the
// new picture, and its preview made anew from it; an XMP packet's TIFF
// Orientation, if it has one, is set to normal too. An EXIF block that would
// no longer fit its segment loses its preview rather than keep a stale one.
// False when `jpeg` is no JPEG.
bool PutMetadata(Bytes& jpeg,
                 const std::vector<Bytes>& segments,
                 const NewPicture& picture);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_JPEG_METADATA_H_
