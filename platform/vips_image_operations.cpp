#include "platform/atomic_file.h"
#include "platform/bmp_reader.h"
#include "platform/exif_preview_thumbnail.h"
#include "platform/image_operations.h"
#include "platform/jpeg_codec.h"
#include "platform/photo_kind.h"
#include "platform/photo_writer.h"
#include "platform/shared_thumbnails.h"
#include "platform/thumbnail_ahead.h"
#include "platform/turn_ahead.h"
#include "platform/vips_image_facts.h"
#include "platform/vips_jpeg.h"
#include "platform/vips_photo_load.h"
#include "platform/vips_quiet.h"
#include "platform/vips_thumbnail.h"
#include "platform/whole_decode_mark.h"

#include <vips/vips8>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

constexpr char kCacheSuffix[] = ".qpd";

// Writes a thumbnail in place of the old one, whole or not at all. There is
// no fsync: a thumbnail is made again from its photo whenever it is missing,
// and an fsync costs more than making the thumbnail on a busy disk. A cache
// entry that a power cut left empty counts as a miss.
bool ReplaceFile(const std::string& target,
                 const void* data,
                 std::size_t size) {
  AtomicWrite how;
  how.sync = false;
  return WriteFileAtomically(target, data, size, how);
}

std::uint64_t Fnv1a(std::string_view text,
                    std::uint64_t hash = 0xcbf29ce484222325ULL) {
  for (const char c : text) {
    hash ^= static_cast<std::uint8_t>(c);
    hash *= 0x100000001b3ULL;
  }
  return hash;
}

std::string Hex(std::uint64_t value) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx",
                static_cast<unsigned long long>(value));
  return text;
}

// An absolute path without "." or ".." parts or a trailing "/", so that a
// photo and its folder name the same place however they were written.
fs::path Normalised(const std::string& path) {
  fs::path result = fs::absolute(fs::path(path)).lexically_normal();
  if (result.filename().empty() && result.has_relative_path()) {
    result = result.parent_path();
  }
  return result;
}

// Cache entries are named "<folder hash>-<photo hash>-<state hash>-<size>q
// <quality>.qpd": the first two parts let one photo's or one folder's
// entries be found without an index, the third changes whenever the photo's
// size or modification time does.
std::string FolderPrefix(const fs::path& folder) {
  return Hex(Fnv1a(folder.string())) + "-";
}

std::string PhotoPrefix(const fs::path& photo) {
  return FolderPrefix(photo.parent_path()) + Hex(Fnv1a(photo.string())) + "-";
}

std::string ParameterSuffix(int size, int quality) {
  return "-" + std::to_string(size) + "q" + std::to_string(quality) +
         kCacheSuffix;
}

bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

bool EndsWith(std::string_view text, std::string_view suffix) {
  return text.size() >= suffix.size() &&
         text.substr(text.size() - suffix.size()) == suffix;
}

// Removes the cache entries whose names start with `prefix` and end with
// `suffix`, except `keep`. True when at least one went.
bool RemoveEntries(const std::string& folder,
                   const std::string& prefix,
                   const std::string& suffix,
                   const std::string& keep = {}) {
  std::error_code error;
  bool removed = false;
  for (fs::directory_iterator it(folder, error), end; !error && it != end;
       it.increment(error)) {
    const std::string name = it->path().filename().string();
    if (name != keep && StartsWith(name, prefix) && EndsWith(name, suffix)) {
      std::error_code remove_error;
      removed = fs::remove(it->path(), remove_error) || removed;
    }
  }
  return removed;
}

class VipsImageOperations final : public ImageOperations {
 public:
  VipsImageOperations(std::string cache_folder,
                      bool thumbnails_ahead,
                      std::string shared_thumbnails)
      : cache_folder_(std::move(cache_folder)),
        shared_(std::move(shared_thumbnails)),
        thumbnails_ahead_allowed_(thumbnails_ahead) {}

  int GenerateThumbnailExt(const std::string& source,
                           const std::string& thumbnail,
                           int size,
                           int quality) override {
    // The whole-decode mark is for the program's own cache only.
    return WriteThumbnail(source, thumbnail, size, quality, /*marked=*/false);
  }

  std::optional<RgbPicture> CachedStandIn(const std::string& path) override {
    try {
      if (path.empty()) {
        return std::nullopt;
      }
      const fs::path photo = Normalised(path);
      const std::optional<FileIdentity> now = IdentityOfPath(photo.string());
      if (!now) {
        return std::nullopt;
      }
      std::vector<std::pair<int, int>> kinds;
      {
        std::lock_guard lock(kinds_mutex_);
        kinds = cached_kinds_;
      }
      for (const auto& [size, quality] : kinds) {
        const std::optional<std::string> name = CacheName(photo, size, quality);
        std::vector<std::uint8_t> jpeg;
        if (!name || !ReadSmallFile(fs::path(cache_folder_) / *name, jpeg)) {
          continue;
        }
        const std::optional<FileIdentity> marked =
            ReadWholeDecodeMark(jpeg.data(), jpeg.size());
        if (marked && *marked == *now) {
          if (std::optional<RgbPicture> picture =
                  DecodeSmallJpeg(jpeg, kMaxThumbnailSide)) {
            return picture;
          }
        }
      }
    } catch (...) {
    }
    return std::nullopt;
  }

  int GetImageWidth(const std::string& path) override {
    return VipsImageWidth(path);
  }
  int GetImageHeight(const std::string& path) override {
    return VipsImageHeight(path);
  }
  int GetExifOrientation(const std::string& path) override {
    return VipsExifOrientation(path);
  }
  ExifPreview CompareExifPreview(const std::string& path) override {
    return VipsCompareExifPreview(path);
  }

  int GenerateThumbnailAndBuffer(const std::string& source,
                                 std::string& buffer,
                                 int size,
                                 int quality) override {
    try {
      if (source.empty()) {
        return 0;
      }
      const fs::path photo = Normalised(source);
      const std::optional<std::string> name = CacheName(photo, size, quality);
      if (!name) {
        return 0;
      }
      RememberKind(size, quality);
      const fs::path entry = fs::path(cache_folder_) / *name;
      if (CacheHolds(entry)) {
        buffer = entry.string();
        return 1;
      }
      if (!MakeCacheFolder() ||
          WriteThumbnail(photo.string(), entry.string(), size, quality,
                         /*marked=*/true) != 1) {
        return 0;
      }
      // The photo's older thumbnails are stale now.
      RemoveStaleEntries(PhotoPrefix(photo) + ParameterSuffix(size, quality),
                         *name);
      buffer = entry.string();
      return 1;
    } catch (const vips::VError&) {
      vips_error_clear();
    } catch (...) {
    }
    return 0;
  }

  int ImageRotation(const std::string& source,
                    const std::string& destination,
                    int angle) override {
    if (angle != 90 && angle != -90) {
      return 0;
    }
    try {
      std::optional<PreparedPhoto> prepared = ahead_.Take(source, angle);
      // Work done ahead on a photo that changed since is done again.
      if (!prepared || !StillTheSame(source, prepared->source)) {
        prepared = PrepareTurnedPhoto(source, angle);
      }
      return prepared && WritePrepared(*prepared, destination) ? 1 : 0;
    } catch (...) {
    }
    return 0;
  }

  void PrepareThumbnails(const std::vector<std::string>& sources,
                         int size,
                         int quality) override {
    if (!thumbnails_ahead_allowed_) {
      return;
    }
    if (!thumbnails_ahead_) {
      thumbnails_ahead_ = std::make_unique<ThumbnailAhead>();
    }
    const std::string cache = cache_folder_;
    const SharedThumbnails shared = shared_;
    thumbnails_ahead_->Prepare(
        sources, AheadKind(size, quality),
        [cache, shared, size, quality](const std::string& source)
            -> std::optional<std::vector<std::uint8_t>> {
          try {
            // A thumbnail the cache holds needs no making.
            const fs::path photo = Normalised(source);
            const auto name = CacheName(photo, size, quality);
            if (!name || CacheHolds(fs::path(cache) / *name)) {
              return std::nullopt;
            }
            return MakeJpegThumbnail(source, size, quality, shared);
          } catch (const vips::VError&) {
            vips_error_clear();
          } catch (...) {
          }
          return std::nullopt;
        });
  }

  void PrepareImageRotation(const std::string& source, int angle) override {
    if (angle == 90 || angle == -90) {
      ahead_.Start(source, angle);
    }
  }

  int DeleteThumbnailFile(const std::string& source) override {
    index_.reset();
    try {
      return !source.empty() && RemoveEntries(cache_folder_,
                                              PhotoPrefix(Normalised(source)),
                                              kCacheSuffix)
                 ? 1
                 : 0;
    } catch (...) {
    }
    return 0;
  }

  int DeleteThumbnailFolder(const std::string& folder) override {
    index_.reset();
    try {
      return !folder.empty() && RemoveEntries(cache_folder_,
                                              FolderPrefix(Normalised(folder)),
                                              kCacheSuffix)
                 ? 1
                 : 0;
    } catch (...) {
    }
    return 0;
  }

 private:
  // The entries of the cache by photo and parameters ("<folder hash>-<photo
  // hash>-" + "-<size>q<quality>.qpd"), read from the folder once, so that a
  // new thumbnail finds its photo's stale ones without reading the whole
  // folder each time (which made filling the cache for a large folder
  // quadratic). Entries another process adds meanwhile are at worst left
  // behind as stale files; a delete reads the folder afresh.
  using CacheIndex = std::unordered_map<std::string, std::vector<std::string>>;

  static std::string IndexKey(const std::string& name) {
    // The photo's prefix is the first two parts; the parameters the rest
    // after the state hash.
    const size_t first = name.find('-');
    const size_t second =
        first == std::string::npos ? first : name.find('-', first + 1);
    const size_t third =
        second == std::string::npos ? second : name.find('-', second + 1);
    if (third == std::string::npos) {
      return {};
    }
    return name.substr(0, second + 1) + name.substr(third);
  }

  CacheIndex& Index() {
    if (!index_) {
      index_.emplace();
      std::error_code error;
      for (fs::directory_iterator it(cache_folder_, error), end;
           !error && it != end; it.increment(error)) {
        std::string name = it->path().filename().string();
        if (EndsWith(name, kCacheSuffix)) {
          std::string key = IndexKey(name);
          if (!key.empty()) {
            (*index_)[key].push_back(std::move(name));
          }
        }
      }
    }
    return *index_;
  }

  // Removes the entries of `key` other than `keep`, which is now its only one.
  void RemoveStaleEntries(const std::string& key, const std::string& keep) {
    std::vector<std::string>& names = Index()[key];
    for (const std::string& name : names) {
      if (name != keep) {
        std::error_code ignored;
        fs::remove(fs::path(cache_folder_) / name, ignored);
      }
    }
    names.assign(1, keep);
  }

  bool MakeCacheFolder() const {
    std::error_code error;
    if (fs::is_directory(cache_folder_, error)) {
      return true;
    }
    if (!fs::create_directories(cache_folder_, error) || error) {
      return false;
    }
    // Thumbnails show what the user's photos hold: the cache is private.
    fs::permissions(cache_folder_, fs::perms::owner_all,
                    fs::perm_options::replace, error);
    return true;
  }

  // Writes the thumbnail of `source` to `target`, made ahead or now; with
  // `marked`, a thumbnail decoded from the whole photo keeps its mark.
  int WriteThumbnail(const std::string& source,
                     const std::string& target,
                     int size,
                     int quality,
                     bool marked) {
    try {
      std::optional<std::vector<std::uint8_t>> jpeg;
      if (thumbnails_ahead_) {
        jpeg = thumbnails_ahead_->Take(source, AheadKind(size, quality));
      }
      if (!jpeg) {
        jpeg = MakeJpegThumbnail(source, size, quality, shared_);
      }
      if (jpeg && !marked) {
        jpeg = WithoutWholeDecodeMark(std::move(*jpeg));
      }
      return jpeg && ReplaceFile(target, jpeg->data(), jpeg->size()) ? 1 : 0;
    } catch (const vips::VError&) {
      vips_error_clear();
    } catch (...) {
    }
    return 0;
  }

  // The thumbnail sizes and qualities the cache has been asked for, which a
  // stand-in is looked up by.
  void RememberKind(int size, int quality) {
    std::lock_guard lock(kinds_mutex_);
    const std::pair<int, int> kind{size, quality};
    if (std::find(cached_kinds_.begin(), cached_kinds_.end(), kind) ==
        cached_kinds_.end()) {
      cached_kinds_.push_back(kind);
    }
  }

  // A cache entry's bytes, when it is a plain file of a thumbnail's size.
  static bool ReadSmallFile(const fs::path& path,
                            std::vector<std::uint8_t>& bytes) {
    constexpr std::size_t kMaxEntryBytes = 1u << 20;
    FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    struct stat status {};
    if (fd.get() < 0 || ::fstat(fd.get(), &status) != 0 ||
        !S_ISREG(status.st_mode) || status.st_size <= 0 ||
        static_cast<std::size_t>(status.st_size) > kMaxEntryBytes) {
      return false;
    }
    bytes.resize(static_cast<std::size_t>(status.st_size));
    std::size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t got =
          ::read(fd.get(), bytes.data() + done, bytes.size() - done);
      if (got < 0 && errno == EINTR) {
        continue;
      }
      if (got <= 0) {
        return false;
      }
      done += static_cast<std::size_t>(got);
    }
    return true;
  }

  static std::string AheadKind(int size, int quality) {
    return std::to_string(size) + 'q' + std::to_string(quality);
  }

  // The cache entry's name for the photo as it is now (its path, size and
  // modification time); none when it is no plain file.
  static std::optional<std::string> CacheName(const fs::path& photo,
                                              int size,
                                              int quality) {
    struct stat status {};
    if (::stat(photo.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
      return std::nullopt;
    }
    const std::string state = photo.string() + '\n' +
                              std::to_string(status.st_size) + '\n' +
                              std::to_string(status.st_mtim.tv_sec) + '.' +
                              std::to_string(status.st_mtim.tv_nsec);
    return PhotoPrefix(photo) + Hex(Fnv1a(state)) +
           ParameterSuffix(size, quality);
  }

  static bool CacheHolds(const fs::path& entry) {
    std::error_code error;
    return fs::is_regular_file(entry, error) &&
           fs::file_size(entry, error) > 0 && !error;
  }

  void PrepareJpegCopies(const std::vector<std::string>& sources) override {
    // Without the work ahead, copies are converted in turn, as thumbnails
    // are made.
    if (!thumbnails_ahead_allowed_) {
      return;
    }
    std::lock_guard lock(copies_mutex_);
    if (sources.empty()) {
      if (copies_ahead_) {
        copies_ahead_->Forget();
      }
      return;
    }
    if (!copies_ahead_) {
      copies_ahead_ = std::make_unique<ThumbnailAhead>(
          SIZE_MAX, /*every_other=*/false, kCopiesAheadBytes, kCopyWorkers,
          /*background=*/true);
    }
    copies_ahead_->Prepare(sources, kCopyKind,
                           [](const std::string& source)
                               -> std::optional<std::vector<std::uint8_t>> {
                             try {
                               return ConvertToJpeg(source);
                             } catch (const vips::VError&) {
                               vips_error_clear();
                             } catch (...) {
                             }
                             return std::nullopt;
                           });
  }

  int SaveImageAsJPEG(const std::string& source,
                      const std::string& target) override {
    try {
      ThumbnailAhead* ahead = nullptr;
      {
        std::lock_guard lock(copies_mutex_);
        ahead = copies_ahead_.get();
      }
      std::optional<std::vector<std::uint8_t>> jpeg;
      if (ahead != nullptr) {
        jpeg = ahead->Take(source, kCopyKind);
      }
      if (!jpeg) {
        jpeg = ConvertToJpeg(source);
      }
      if (!jpeg) {
        return 0;
      }
      AtomicWrite how;
      how.sync = false;
      return WriteFileAtomically(target, jpeg->data(), jpeg->size(), how) ? 1
                                                                          : 0;
    } catch (const vips::VError&) {
      vips_error_clear();
    } catch (...) {
    }
    return 0;
  }

  // The whole photo `source` encoded as a JPEG, upright; nothing when it is
  // no photo of a supported kind, is broken or is too large.
  static std::optional<std::vector<std::uint8_t>> ConvertToJpeg(
      const std::string& source) {
    const std::optional<vips::VImage> image = LoadUprightPhoto(source);
    if (!image) {
      return std::nullopt;
    }
    void* data = nullptr;
    std::size_t length = 0;
    image->write_to_buffer(".jpg", &data, &length,
                           vips::VImage::option()->set("Q", 92));
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    std::vector<std::uint8_t> jpeg(bytes, bytes + length);
    g_free(data);
    return jpeg;
  }

  std::string cache_folder_;
  // The desktop's shared thumbnails, read and written beside the cache.
  SharedThumbnails shared_;
  bool thumbnails_ahead_allowed_;
  std::optional<CacheIndex> index_;
  std::mutex kinds_mutex_;
  std::vector<std::pair<int, int>> cached_kinds_;
  // No thumbnail the cache holds is larger.
  static constexpr int kMaxThumbnailSide = 10000;
  TurnAhead ahead_;
  // Made on first use: most image libraries never make a folder's thumbnails.
  std::unique_ptr<ThumbnailAhead> thumbnails_ahead_;
  // The JPEG copies converted ahead (PrepareJpegCopies), made on first use;
  // SaveImageAsJPEG takes them on any thread. They are held in memory up to
  // a budget of bytes (the copies of a few hundred photos edited and saved
  // as PNG), converted on both cores as background work.
  static constexpr std::size_t kCopiesAheadBytes = 128u << 20;
  static constexpr int kCopyWorkers = 2;
  static constexpr char kCopyKind[] = "jpeg-copy";
  std::mutex copies_mutex_;
  std::unique_ptr<ThumbnailAhead> copies_ahead_;
  // A broken photo fails with 0 and says nothing on the terminal.
  QuietVipsLog quiet_;
};

}  // namespace

std::unique_ptr<ImageOperations> MakeVipsImageOperations(
    std::string cache_folder,
    bool thumbnails_ahead,
    std::string shared_thumbnails) {
  // Starting libvips again is harmless. Its operation cache stays off: every
  // thumbnail reads a different file, and cached loaders would keep photo
  // files open.
  if (VIPS_INIT("qbpd") == 0) {
    vips_cache_set_max(0);
  }
  return std::make_unique<VipsImageOperations>(
      std::move(cache_folder), thumbnails_ahead, std::move(shared_thumbnails));
}

}  // namespace qbpd
