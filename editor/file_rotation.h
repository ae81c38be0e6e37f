#ifndef QBPD_EDITOR_FILE_ROTATION_H_
#define QBPD_EDITOR_FILE_ROTATION_H_

#include <functional>
#include <string>

namespace qbpd {

class Application;

// Rotation directions, as giCurrentOperation holds them.
inline constexpr int kRotateLeft = 2;
inline constexpr int kRotateRight = 3;

// What the rotation of photo files needs from the window that shows them.
struct RotationHooks {
  // Makes the thumbnail of `path`; its file is then in gsThumbnailPath.
  std::function<bool(const std::string& path)> generate_thumbnail;
  // The photo of list entry `index` was turned in its own file: its
  // thumbnail control, if loaded, takes the new thumbnail.
  std::function<void(int index, const std::string& path)> same_file_turned;
  // A new file was made at `destination` from the photo of entry `index`.
  std::function<void(int index, const std::string& destination)> new_file;
};

// Which of the two read-only notices a rotation gives; their wordings
// differ on purpose.
enum class RotationNotice { kCurrentPhoto, kSelectedPhotos };

// Tells the image library that `path` is turned next in `direction`, so
// that it may work ahead on it while the present photo is written; nothing
// is written until RotateOneFile comes for it.
void PrepareFileRotation(Application& app,
                         const std::string& path,
                         int direction);

// Turns one checked photo on disk, `direction` kRotateLeft or kRotateRight.
// A writable JPEG is turned in its own file. A photo of another type, or a
// read-only JPEG (after a notice), leaves its file alone and is written
// turned to a new JPEG in gsSelectedFolder, named by GetFixedFileName with
// ".jpg". A failed rotation or thumbnail changes nothing in the grid and
// shows nothing. Returns true when the file was turned.
bool RotateOneFile(Application& app,
                   int index,
                   const std::string& path,
                   int direction,
                   RotationNotice notice,
                   const RotationHooks& hooks);

}  // namespace qbpd

#endif  // QBPD_EDITOR_FILE_ROTATION_H_
