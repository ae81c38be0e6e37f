#ifndef QBPD_PLATFORM_IMAGE_OPERATIONS_H_
#define QBPD_PLATFORM_IMAGE_OPERATIONS_H_

#include "platform/camera_facts.h"
#include "platform/rgb_picture.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qbpd {

// How the small preview picture that cameras embed in a JPEG's EXIF data
// stands to the photo's own pixels.
enum class ExifPreview {
  kMissing,     // the file has none
  kMatches,     // it shows the photo as the pixels are stored
  kDiffers,     // it shows something else (a turn the preview didn't follow)
  kUnreadable,  // the file is no readable image, or its preview is broken
};

// The image library of the program: thumbnails and, later, rotation,
// conversion and measures. Paths are full file-system paths. Results follow
// the library's own convention: 1 means success, 0 failure. A corrupt,
// truncated, empty or oversized file (above 256 megapixels) or a file that is
// no image at all fails cleanly with 0; nothing here shows a message. Only a
// plain file is a photo, and opening one never waits (a named pipe is
// refused at once). A JPEG without its end marker fails every time, and a
// photo whose decoding would take more than one photo may (see
// WithinDecodeBudget in photo_kind.h) fails before it is decoded.
class ImageOperations {
 public:
  virtual ~ImageOperations() = default;

  // Writes a JPEG thumbnail of `source` to `thumbnail`, replacing it
  // atomically. `size` and `quality` are the program's fixed parameters (85
  // and 70): the longer side of the thumbnail is `size` pixels (a smaller
  // photo is not enlarged) and the JPEG quality is `quality`. The photo's
  // EXIF orientation is honoured. Returns 1 on success, 0 on failure.
  virtual int GenerateThumbnailExt(const std::string& source,
                                   const std::string& thumbnail,
                                   int size,
                                   int quality) = 0;

  // Finds or makes the cached thumbnail of `source` and puts the path of that
  // file, ending in ".qpd", into `buffer` (replacing its content). The cache
  // is keyed by the photo's path, size in bytes and modification time, so an
  // edited photo gets a new thumbnail. Returns 1 on success, 0 on failure.
  virtual int GenerateThumbnailAndBuffer(const std::string& source,
                                         std::string& buffer,
                                         int size,
                                         int quality) = 0;

  // A small picture of the photo at `path` (its cached thumbnail, upright)
  // that a photo view may show while it decodes the photo: given only when
  // the thumbnail was made by decoding this very file whole, as it is now
  // (same device, inode, size, modification and change time), so that the
  // view's own decoding of it will not fail for a broken file. Nothing
  // otherwise, and from a library without a cache.
  virtual std::optional<RgbPicture> CachedStandIn(const std::string& path) {
    (void)path;
    return std::nullopt;
  }

  // The measures of an image file: its width and height in pixels as stored
  // (before its EXIF orientation is applied); 0 when it can't be read.
  virtual int GetImageWidth(const std::string& path) = 0;
  virtual int GetImageHeight(const std::string& path) = 0;
  // The EXIF orientation of a photo, 1 to 8 (1 when it has none); 0 when
  // the file can't be read.
  virtual int GetExifOrientation(const std::string& path) = 0;
  // Whether the EXIF preview of a JPEG photo shows its pixels: both are
  // compared as stored, the photo reduced to the preview's size.
  virtual ExifPreview CompareExifPreview(const std::string& path) = 0;

  // Turns the photo `source` a quarter turn, `angle` 90 to the right or -90
  // to the left, as it stands upright (EXIF orientation applied), and writes
  // it as a JPEG file at `destination`, upright with orientation normal and
  // its other metadata kept. `destination` may be `source` itself: the file
  // is then replaced atomically, or left as it was on failure. Returns 1 on
  // success, 0 on failure. A library without rotation fails every time.
  virtual int ImageRotation(const std::string& source,
                            const std::string& destination,
                            int angle) {
    (void)source;
    (void)destination;
    (void)angle;
    return 0;
  }

  // Converts the photo `source` (any kind the library reads: PNG, TIFF,
  // BMP, JPEG) to a JPEG file at `target`, at its full size with no resizing,
  // its EXIF orientation applied, quality 92. The target appears whole or not
  // at all; the source is only read. Returns 1 on success, 0 on failure. A
  // library without conversion fails every time.
  virtual int SaveImageAsJPEG(const std::string& source,
                              const std::string& target) {
    (void)source;
    (void)target;
    return 0;
  }

  // A hint that SaveImageAsJPEG comes for `sources`, in that order: the
  // library may convert them ahead into memory on another core. Nothing is
  // written before SaveImageAsJPEG is called for a photo, and a photo
  // changed since is converted as it is then. An empty list forgets what
  // was converted and not taken. A library without it ignores the hint.
  virtual void PrepareJpegCopies(const std::vector<std::string>& sources) {
    (void)sources;
  }

  // A hint that ImageRotation(`source`, ..., `angle`) comes soon, as in a
  // batch that turns one photo after another: the library may start on it
  // on another thread. Nothing is written before ImageRotation is called for
  // it; a hint not followed costs only the work. A photo changed after the
  // hint is turned as it is when ImageRotation comes. A library without it
  // ignores the hint.
  // A hint that the thumbnails of `sources` (at `size` and `quality`) are
  // about to be asked for in that order, so that some may be made ahead on
  // another core; what is asked for later is the same as without it.
  virtual void PrepareThumbnails(const std::vector<std::string>& sources,
                                 int size,
                                 int quality) {
    (void)sources;
    (void)size;
    (void)quality;
  }

  virtual void PrepareImageRotation(const std::string& source, int angle) {
    (void)source;
    (void)angle;
  }

  // --- photo information and the wallpaper's bitmap (image_measures.cpp) ---
  // Bits per pixel and number of colours of an image file (see ImageHeader
  // in image_header.h), read from its header alone; 0 when it can't be read.
  virtual int GetBitRate(const std::string& path);
  virtual int GetNoOfColors(const std::string& path);
  // The camera facts in a photo's EXIF data; none when it has none.
  virtual CameraFacts GetCameraFacts(const std::string& path);
  // Writes `source` (JPEG, PNG, TIFF or bitmap) as an upright 24-bit bitmap
  // at `target`, replaced atomically (see SaveUprightBitmap in
  // bitmap_save.h). 1 on success, 0 on failure.
  virtual int SaveImageAsBMP(const std::string& source,
                             const std::string& target);

  // Drops the cached thumbnails of one photo; 1 when something was removed.
  virtual int DeleteThumbnailFile(const std::string& source) = 0;
  // Drops the cached thumbnails of every photo directly in `folder`; 1 when
  // something was removed.
  virtual int DeleteThumbnailFolder(const std::string& folder) = 0;
};

// The real library over libvips. `cache_folder` holds the persistent
// thumbnail cache of the cache-on store; it is made on first use. Without
// `thumbnails_ahead`, PrepareThumbnails is ignored and every thumbnail is
// made in turn on the caller's thread (the benchmarks compare the two).
// `shared_thumbnails` is the desktop's shared thumbnail folder
// ($XDG_CACHE_HOME/thumbnails, see shared_thumbnails.h): a thumbnail is
// taken from a trusted entry there when one is, and a thumbnail made is
// written there too; empty uses none.
std::unique_ptr<ImageOperations> MakeVipsImageOperations(
    std::string cache_folder,
    bool thumbnails_ahead = true,
    std::string shared_thumbnails = "");

// Writes a JPEG test photo of `width` x `height`: a colour gradient whose
// hue follows `seed`, so that neighbouring photos differ. For the headless
// driver's scripts and the benchmarks. False when it can't be written.
bool WriteTestPhoto(const std::string& path, int width, int height, int seed);

// The preview a test photo gets in its EXIF data.
enum class TestPreview {
  kNone,    // no EXIF preview
  kSame,    // the photo reduced, as a camera writes it
  kTurned,  // the photo reduced and turned a quarter to the right, as a
            // rotation that forgot the preview leaves it
};
// WriteTestPhoto with EXIF data: the orientation tag (1 to 8) and a preview.
bool WriteTestPhotoWithExif(const std::string& path,
                            int width,
                            int height,
                            int seed,
                            int orientation,
                            TestPreview preview);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_IMAGE_OPERATIONS_H_
