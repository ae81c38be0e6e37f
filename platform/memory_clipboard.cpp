#include "platform/access_check.h"
#include "platform/atomic_file.h"
#include "platform/clipboard.h"
#include "platform/vips_photo_load.h"
#include "platform/vips_quiet.h"

#include <vips/vips8>

#include <cstdint>
#include <optional>

namespace qbpd {
namespace {

// The quality of a pasted photo: a new file that the user keeps.
constexpr int kPasteQuality = 92;

// Writes `bytes` to a new file at `target`, flushed to the disk, without
// replacing anything.
bool WriteNewFile(const std::string& target,
                  const std::uint8_t* bytes,
                  std::size_t size) {
  AtomicWrite how;
  how.replace = false;
  return WriteFileAtomically(target, bytes, size, how);
}

class MemoryClipboard final : public Clipboard {
 public:
  MemoryClipboard() = default;

  bool SetImageFromFile(const std::string& path) override {
    // libvips starts on first use, so that a run that never copies a photo
    // doesn't start it for the clipboard.
    if (VIPS_INIT("qbpd") != 0) {
      vips_error_clear();
      return false;
    }
    try {
      std::optional<vips::VImage> image = LoadUprightPhoto(path);
      if (!image) {
        return false;
      }
      picture_ = std::move(image);
      return true;
    } catch (const vips::VError&) {
      vips_error_clear();
    } catch (...) {
    }
    return false;
  }

  bool WriteImageAsJpeg(const std::string& path) override {
    if (!picture_ || path.empty()) {
      return false;
    }
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0) {
      return false;
    }
    try {
      void* data = nullptr;
      std::size_t length = 0;
      picture_->write_to_buffer(
          ".jpg", &data, &length,
          vips::VImage::option()->set("Q", kPasteQuality));
      const bool ok =
          WriteNewFile(path, static_cast<const std::uint8_t*>(data), length);
      g_free(data);
      return ok;
    } catch (const vips::VError&) {
      vips_error_clear();
    } catch (...) {
    }
    return false;
  }

  bool HasImage() const override { return picture_.has_value(); }

  void Clear() override { picture_.reset(); }

 private:
  std::optional<vips::VImage> picture_;
  QuietVipsLog quiet_;
};

}  // namespace

std::unique_ptr<Clipboard> MakeMemoryClipboard() {
  return std::make_unique<MemoryClipboard>();
}

}  // namespace qbpd
