#ifndef QBPD_PLATFORM_SHARED_THUMBNAILS_H_
#define QBPD_PLATFORM_SHARED_THUMBNAILS_H_

#include <optional>
#include <string>

namespace vips {
class VImage;
}

namespace qbpd {

// The desktop's shared thumbnails, as file managers and other programs keep
// them under $XDG_CACHE_HOME/thumbnails: a PNG per photo in "normal" (128
// pixels at most) or "large" (256), named by the MD5 sum of the photo's
// file URI, holding that URI and the photo's change time in text chunks.
// Used below the image library's thumbnail cache, so that a photo a file
// manager has shown needs no decoding, and the file manager gains from the
// photos this program shows.
//
// An entry is trusted only when it is a plain PNG file of the user's own,
// not writable by others, whose URI is the photo's, whose change time (and
// size, when it says one) are the photo's now, whose picture is within the
// folder's size bounds, and whose shape is the photo's upright shape within
// a pixel. Anything else (a failure mark, another program's stale entry, a
// link, a damaged file) is passed over and never changed.
class SharedThumbnails {
 public:
  // `root` is the shared folder ($XDG_CACHE_HOME/thumbnails); empty turns
  // both reading and writing off.
  explicit SharedThumbnails(std::string root = "");

  bool enabled() const { return !root_.empty(); }

  // The longer side of a normal entry.
  static constexpr int kNormalSize = 128;

  // The photo at `photo` (absolute; open as `fd`, a plain file) fitted into
  // `size` x `size` from a trusted entry at least that large (or as large as
  // the photo); nothing when there is none. Library failures throw
  // vips::VError.
  std::optional<vips::VImage> Read(const std::string& photo,
                                   int fd,
                                   int size) const;

  // Writes `thumbnail` (the photo upright, fitted into kNormalSize, or the
  // photo itself when smaller) as the normal entry of `photo`, in one
  // atomic write readable by the user alone. False when it couldn't be
  // written; nothing is left half-written.
  bool WriteNormal(const std::string& photo,
                   const vips::VImage& thumbnail) const;

  // The entry's path of `photo` in `flavour` ("normal", "large").
  std::string EntryPath(const std::string& photo,
                        const std::string& flavour) const;

 private:
  std::string root_;
};

// The file URI of an absolute path exactly as the desktop's thumbnailers
// write it (GLib's g_filename_to_uri, which leaves characters such as "!",
// "&" and "=" unescaped, unlike wallpaper.h's FileUri), so that an entry's
// name is the one a file manager looks for; empty when the path is not
// absolute.
std::string ThumbnailUri(const std::string& path);

// `image` reduced to fit into `size` x `size`; as it is when it fits.
vips::VImage FitDown(const vips::VImage& image, int size);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_SHARED_THUMBNAILS_H_
