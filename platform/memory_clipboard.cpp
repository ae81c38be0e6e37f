#include "platform/access_check.h"
#include "platform/atomic_file.h"
#include "platform/bmp_reader.h"
#include "platform/clipboard.h"
#include "platform/photo_kind.h"
#include "platform/vips_jpeg.h"

#include <vips/vips8>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <fstream>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd {
namespace {

// Decoding is refused above this many pixels.
constexpr std::uint64_t kMaxPixels = 256'000'000;
// The quality of a pasted photo: a new file that the user keeps.
constexpr int kPasteQuality = 92;
constexpr char kLoaderOptions[] = "fail_on=error";

// The libvips loader that must claim a photo of `kind`; nothing for a bitmap
// (read here) or an unknown kind. Other loaders, such as ImageMagick's, are
// never handed a file.
std::optional<std::string_view> ExpectedLoader(PhotoKind kind) {
  switch (kind) {
    case PhotoKind::kJpeg:
      return "jpegload";
    case PhotoKind::kPng:
      return "pngload";
    case PhotoKind::kTiff:
      return "tiffload";
    case PhotoKind::kBmp:
    case PhotoKind::kOther:
      break;
  }
  return std::nullopt;
}

std::optional<vips::VImage> LoadWithVips(const std::string& path,
                                         std::string_view expected) {
  const char* loader = vips_foreign_find_load(path.c_str());
  if (loader == nullptr) {
    vips_error_clear();
    return std::nullopt;
  }
  const char* nickname = vips_nickname_find(g_type_from_name(loader));
  if (nickname == nullptr || expected != nickname) {
    return std::nullopt;
  }
  vips::VImage image = vips::VImage::new_from_file(
      (path + "[" + kLoaderOptions + "]").c_str(),
      vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
  if (image.width() <= 0 || image.height() <= 0 ||
      static_cast<std::uint64_t>(image.width()) *
              static_cast<std::uint64_t>(image.height()) >
          kMaxPixels) {
    return std::nullopt;
  }
  // Decoded here, in full, so that a broken file fails now and not when the
  // picture is pasted.
  return ForJpeg(image.autorot()).copy_memory();
}

std::optional<vips::VImage> LoadBitmap(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  BmpPixels pixels;
  if (!in || !DecodeBmp(in, kMaxPixels, 1, pixels).ok()) {
    return std::nullopt;
  }
  vips::VImage view = vips::VImage::new_from_memory(
      pixels.rgb.data(), pixels.rgb.size(), pixels.width, pixels.height, 3,
      VIPS_FORMAT_UCHAR);
  // The view borrows the vector's bytes; the copy owns its own.
  return view
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .copy_memory();
}

// Writes `bytes` to a new file at `target`, flushed to the disk, without
// replacing anything.
bool WriteNewFile(const std::string& target,
                  const std::uint8_t* bytes,
                  std::size_t size) {
  AtomicWrite how;
  how.replace = false;
  return WriteFileAtomically(target, bytes, size, how);
}

void IgnoreLogMessage(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

class MemoryClipboard final : public Clipboard {
 public:
  MemoryClipboard()
      : log_handler_(g_log_set_handler(
            "VIPS",
            static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING |
                                        G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO),
            IgnoreLogMessage,
            nullptr)) {}
  ~MemoryClipboard() override { g_log_remove_handler("VIPS", log_handler_); }

  bool SetImageFromFile(const std::string& path) override {
    // libvips starts on first use, so that a run that never copies a photo
    // doesn't start it for the clipboard.
    if (VIPS_INIT("qbpd") != 0) {
      vips_error_clear();
      return false;
    }
    try {
      std::optional<vips::VImage> image = Load(path);
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
  static std::optional<vips::VImage> Load(const std::string& path) {
    std::array<std::uint8_t, 16> head{};
    std::size_t head_size = 0;
    {
      FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
      struct stat status {};
      if (fd.get() < 0 || ::fstat(fd.get(), &status) != 0 ||
          !S_ISREG(status.st_mode)) {
        return std::nullopt;
      }
      const ssize_t got = ::pread(fd.get(), head.data(), head.size(), 0);
      if (got <= 0) {
        return std::nullopt;
      }
      head_size = static_cast<std::size_t>(got);
    }
    const PhotoKind kind = SniffPhotoKind(head.data(), head_size);
    if (kind == PhotoKind::kBmp) {
      return LoadBitmap(path);
    }
    std::optional<std::string_view> loader = ExpectedLoader(kind);
    if (!loader) {
      return std::nullopt;
    }
    return LoadWithVips(path, *loader);
  }

  std::optional<vips::VImage> picture_;
  guint log_handler_;
};

}  // namespace

std::unique_ptr<Clipboard> MakeMemoryClipboard() {
  return std::make_unique<MemoryClipboard>();
}

}  // namespace qbpd
