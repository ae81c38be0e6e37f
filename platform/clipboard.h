#ifndef QBPD_PLATFORM_CLIPBOARD_H_
#define QBPD_PLATFORM_CLIPBOARD_H_

#include <memory>
#include <string>

namespace qbpd {

// The clipboard as the photo commands use it: one picture at a time. The
// desktop program's clipboard is the desktop's own; a headless run and the
// tests use the in-process one below.
class Clipboard {
 public:
  virtual ~Clipboard() = default;

  // Decodes the photo at `path` (upright, as its EXIF orientation says) and
  // holds its picture, replacing what was held. False when the file is no
  // photo of a supported kind, is broken or is larger than 256 megapixels;
  // what was held before stays then.
  [[nodiscard]] virtual bool SetImageFromFile(const std::string& path) = 0;

  // Writes the held picture as a JPEG file at `path`. The file appears whole
  // or not at all (a temporary file in the same folder, flushed, then moved
  // into place), and an existing file at `path` is never replaced. False
  // when nothing is held, `path` exists or the folder refuses the write.
  [[nodiscard]] virtual bool WriteImageAsJpeg(const std::string& path) = 0;

  // Whether a picture is held.
  virtual bool HasImage() const = 0;

  // Drops the held picture, as another program taking the clipboard would.
  virtual void Clear() = 0;
};

// The in-process clipboard over the image library: the picture lives in this
// process's memory for the rest of the run.
std::unique_ptr<Clipboard> MakeMemoryClipboard();

}  // namespace qbpd

#endif  // QBPD_PLATFORM_CLIPBOARD_H_
