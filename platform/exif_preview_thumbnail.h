#ifndef QBPD_PLATFORM_EXIF_PREVIEW_THUMBNAIL_H_
#define QBPD_PLATFORM_EXIF_PREVIEW_THUMBNAIL_H_

#include <cstdint>
#include <optional>
#include <vector>

namespace qbpd {

// Why a photo's EXIF preview was or wasn't taken for its thumbnail.
enum class PreviewVerdict {
  kTaken,          // the thumbnail was made from the preview
  kNoPreview,      // no EXIF data, no preview, or one that doesn't decode
  kNotSequential,  // a progressive or lossless photo: no cheap check
  kWrongShape,     // the preview's aspect is not the photo's
  kTooSmall,       // the preview is smaller than the thumbnail would be
  kStale,          // the preview no longer shows the photo's pixels
  kTooPlain,       // too little detail where the photo is checked to tell
};

struct PreviewThumbnail {
  PreviewVerdict verdict = PreviewVerdict::kNoPreview;
  // The thumbnail as a JPEG file's bytes, when taken.
  std::vector<std::uint8_t> jpeg;
};

// The thumbnail of the JPEG photo open at `fd`, made from the small preview
// that cameras embed in its EXIF data when that preview shows the photo as
// it is now, which costs a small fraction of decoding the photo. The
// thumbnail is the one the photo's own pixels would give: its longer side
// `size` pixels (a smaller photo is not enlarged), the EXIF orientation
// applied, encoded at JPEG `quality`, without metadata.
//
// A preview is refused (and the caller makes the thumbnail from the photo)
// when its shape differs from the photo's, when it is smaller than the
// thumbnail, and when it no longer shows the photo: a tool that rotated,
// recoloured or cropped the photo and kept the old preview. The last is told
// by decoding a band at the top of the photo at an eighth of its size (at
// least one row of the comparison's cells, each two preview pixels wide and
// one high; more until the cells show enough detail within each colour
// channel, at most a quarter of the photo) and comparing it, over the band
// and row by row, with the same part of the preview; a photo whose top
// quarter is too plain to tell is refused too.
// Progressive photos are refused: their band can't be read without decoding
// the whole photo. Reads only the start of the file.
PreviewThumbnail ThumbnailFromExifPreview(int fd, int size, int quality);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_EXIF_PREVIEW_THUMBNAIL_H_
