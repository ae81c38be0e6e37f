#ifndef QBPD_PLATFORM_PHOTO_WRITER_H_
#define QBPD_PLATFORM_PHOTO_WRITER_H_

// For the platform's libvips implementations only: how an edited or turned
// photo becomes a JPEG file, whole or not at all.
#include "platform/jpeg_metadata.h"
#include "platform/photo_decode.h"

#include <vips/vips8>

#include <optional>
#include <string>
#include <sys/types.h>

namespace qbpd {

// The JPEG quality of every picture the editor encodes anew (an edit, a turn
// that can't be lossless). At 95 one generation of re-encoding stays far
// below what the eye sees (a turned 4:2:0 test photo differs from its source
// by 0.4 levels on average, its edge strip included), and the chroma keeps
// the source's own subsampling.
inline constexpr int kEditQuality = 95;
// The size and quality of the preview that a photo's EXIF data carries.
inline constexpr int kPreviewSide = 160;
inline constexpr int kPreviewQuality = 80;

// A photo file as read: its bytes and what names that version of it, so a
// write can tell that the file was changed or removed meanwhile.
struct PhotoBytes {
  Bytes bytes;
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  std::int64_t modified_ns = 0;
};
std::optional<PhotoBytes> ReadPhotoBytes(const std::string& path);
// True while `path` is still the file that was read.
bool StillTheSame(const std::string& path, const PhotoBytes& read);

// The preview a JPEG's EXIF data gets for `picture` (upright RGB).
Bytes MakePreview(const vips::VImage& picture);

// The file that a turn of `source` makes, ready to be written: the turn is
// `degrees` clockwise (a multiple of 90) of the photo as it stands upright.
// A JPEG in YCbCr or grey is turned on its coefficients (TurnJpeg: lossless
// where the blocks land whole, else one requantisation of the planes whose
// partial edge blocks would move); another JPEG is decoded, turned and
// encoded once at kEditQuality with its own subsampling. The metadata goes
// along (Orientation normal, the preview made anew). Another kind is decoded
// and encoded as a JPEG. Nothing when the source can't be read.
struct PreparedPhoto {
  PhotoBytes source;
  std::string source_path;
  Bytes jpeg;
  // Every block of the picture moved unchanged.
  bool lossless = false;
};
std::optional<PreparedPhoto> PrepareTurnedPhoto(const std::string& source,
                                                int degrees);

// The upright RGB `picture`, an edit of `source`, encoded once at
// kEditQuality with the source's subsampling and its metadata (for a JPEG
// source; 4:4:4 and no metadata otherwise). Nothing on failure.
std::optional<PreparedPhoto> PrepareEditedPhoto(const vips::VImage& picture,
                                                const std::string& source);

// Writes a prepared photo at `destination` through a temporary file in its
// folder, flushed and renamed over: False, and the destination as it was,
// on any failure, and when `destination` is the source and that file was
// changed or removed since it was read.
bool WritePrepared(const PreparedPhoto& photo, const std::string& destination);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_PHOTO_WRITER_H_
