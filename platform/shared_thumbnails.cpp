#include "platform/shared_thumbnails.h"

#include "platform/atomic_file.h"

#include <vips/vips8>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <glib.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <zlib.h>

namespace qbpd {
namespace {

constexpr unsigned char kPngSignature[8] = {0x89, 'P',  'N',  'G',
                                            '\r', '\n', 0x1a, '\n'};
// Entries are small; anything larger is no thumbnail.
constexpr off_t kMaxEntryBytes = 4 << 20;
constexpr int kLargeSize = 256;

std::uint32_t BigEndian(const unsigned char* p) {
  return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) |
         (std::uint32_t{p[2]} << 8) | std::uint32_t{p[3]};
}

void PutBigEndian(std::string& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    out.push_back(static_cast<char>((value >> shift) & 0xff));
  }
}

// What a PNG entry says of itself: its picture's size and its text chunks.
struct PngFacts {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::map<std::string, std::string> text;
};

// Walks the chunks of a whole PNG file in memory; nothing when it isn't one.
std::optional<PngFacts> ReadPngFacts(const std::string& png) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(png.data());
  if (png.size() < sizeof kPngSignature ||
      std::memcmp(bytes, kPngSignature, sizeof kPngSignature) != 0) {
    return std::nullopt;
  }
  PngFacts facts;
  bool header = false;
  size_t at = sizeof kPngSignature;
  while (at + 12 <= png.size()) {
    const std::uint32_t length = BigEndian(bytes + at);
    const std::string type(png, at + 4, 4);
    if (length > png.size() - at - 12) {
      return std::nullopt;
    }
    const unsigned char* data = bytes + at + 8;
    if (type == "IHDR") {
      if (length != 13 || header) {
        return std::nullopt;
      }
      header = true;
      facts.width = BigEndian(data);
      facts.height = BigEndian(data + 4);
    } else if (!header) {
      return std::nullopt;  // the header must come first
    } else if (type == "tEXt") {
      const char* text = reinterpret_cast<const char*>(data);
      const auto* nul = static_cast<const char*>(std::memchr(text, 0, length));
      if (nul != nullptr) {
        facts.text.emplace(std::string(text, nul),
                           std::string(nul + 1, text + length));
      }
    } else if (type == "IEND") {
      return facts;
    }
    at += 12 + length;
  }
  return std::nullopt;  // cut short
}

// A tEXt chunk of `key` and `value`.
std::string TextChunk(const std::string& key, const std::string& value) {
  std::string body = "tEXt" + key;
  body.push_back('\0');
  body += value;
  std::string chunk;
  PutBigEndian(chunk, static_cast<std::uint32_t>(body.size() - 4));
  chunk += body;
  PutBigEndian(chunk, static_cast<std::uint32_t>(
                          crc32(0, reinterpret_cast<const Bytef*>(body.data()),
                                static_cast<uInt>(body.size()))));
  return chunk;
}

// The whole entry file, when it is a plain file of this user's that no one
// else may change, of a thumbnail's size; opening it never waits.
std::optional<std::string> ReadOwnEntry(const std::string& path) {
  FileDescriptor fd(::open(
      path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  struct stat status {};
  if (fd.get() < 0 || ::fstat(fd.get(), &status) != 0 ||
      !S_ISREG(status.st_mode) || status.st_uid != ::geteuid() ||
      (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 || status.st_size <= 0 ||
      status.st_size > kMaxEntryBytes) {
    return std::nullopt;
  }
  std::string bytes(static_cast<size_t>(status.st_size), '\0');
  size_t got = 0;
  while (got < bytes.size()) {
    const ssize_t n = ::read(fd.get(), bytes.data() + got, bytes.size() - got);
    if (n < 0 && errno == EINTR) {
      continue;
    }
    if (n <= 0) {
      return std::nullopt;
    }
    got += static_cast<size_t>(n);
  }
  return bytes;
}

bool IsWholeNumber(const std::string& text, long long expected) {
  long long value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end && value == expected;
}

// Whether `width` x `height` is the shape of a `photo_width` x
// `photo_height` picture fitted into the larger of the two sides, within a
// pixel.
bool SameShape(int width, int height, int photo_width, int photo_height) {
  const double scale = std::min(
      1.0, static_cast<double>(std::max(width, height)) /
               static_cast<double>(std::max(photo_width, photo_height)));
  return std::abs(width - std::lround(photo_width * scale)) <= 1 &&
         std::abs(height - std::lround(photo_height * scale)) <= 1;
}

}  // namespace

vips::VImage FitDown(const vips::VImage& image, int size) {
  const int longer = std::max(image.width(), image.height());
  if (longer <= size) {
    return image;
  }
  return image.resize(static_cast<double>(size) / longer);
}

std::string ThumbnailUri(const std::string& path) {
  if (path.empty() || path[0] != '/') {
    return "";
  }
  gchar* uri = g_filename_to_uri(path.c_str(), nullptr, nullptr);
  if (uri == nullptr) {
    return "";
  }
  std::string text = uri;
  g_free(uri);
  return text;
}

SharedThumbnails::SharedThumbnails(std::string root) : root_(std::move(root)) {}

std::string SharedThumbnails::EntryPath(const std::string& photo,
                                        const std::string& flavour) const {
  const std::string uri = ThumbnailUri(photo);
  if (root_.empty() || uri.empty()) {
    return "";
  }
  gchar* sum = g_compute_checksum_for_string(G_CHECKSUM_MD5, uri.c_str(), -1);
  std::string path = root_ + "/" + flavour + "/" + sum + ".png";
  g_free(sum);
  return path;
}

std::optional<vips::VImage> SharedThumbnails::Read(const std::string& photo,
                                                   int fd,
                                                   int size) const {
  struct stat status {};
  if (!enabled() || ::fstat(fd, &status) != 0) {
    return std::nullopt;
  }
  const std::string uri = ThumbnailUri(photo);
  // The photo's upright size, from its header.
  int photo_width = 0;
  int photo_height = 0;
  try {
    const vips::VImage header = vips::VImage::new_from_source(
        vips::VSource::new_from_descriptor(fd), "",
        vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
    photo_width = header.width();
    photo_height = header.height();
    if (header.get_typeof(VIPS_META_ORIENTATION) != 0 &&
        header.get_int(VIPS_META_ORIENTATION) >= 5) {
      std::swap(photo_width, photo_height);
    }
  } catch (const vips::VError&) {
    // A kind libvips doesn't read (a bitmap): no entry can be checked
    // against it, and the photo is decoded as before.
    vips_error_clear();
    return std::nullopt;
  }
  if (photo_width <= 0 || photo_height <= 0) {
    return std::nullopt;
  }
  const int needed = std::min(size, std::max(photo_width, photo_height));
  for (const auto& [flavour, bound] :
       {std::pair<const char*, int>{"normal", kNormalSize},
        std::pair<const char*, int>{"large", kLargeSize}}) {
    if (bound < needed) {
      continue;
    }
    const std::optional<std::string> png =
        ReadOwnEntry(EntryPath(photo, flavour));
    if (!png) {
      continue;
    }
    const std::optional<PngFacts> facts = ReadPngFacts(*png);
    if (!facts || facts->width == 0 || facts->height == 0 ||
        facts->width > static_cast<std::uint32_t>(bound) ||
        facts->height > static_cast<std::uint32_t>(bound)) {
      continue;
    }
    const int width = static_cast<int>(facts->width);
    const int height = static_cast<int>(facts->height);
    const auto field = [&facts](const char* key) -> const std::string* {
      auto found = facts->text.find(key);
      return found == facts->text.end() ? nullptr : &found->second;
    };
    const std::string* entry_uri = field("Thumb::URI");
    const std::string* mtime = field("Thumb::MTime");
    const std::string* bytes = field("Thumb::Size");
    if (entry_uri == nullptr || *entry_uri != uri || mtime == nullptr ||
        !IsWholeNumber(*mtime, status.st_mtim.tv_sec) ||
        (bytes != nullptr && !IsWholeNumber(*bytes, status.st_size)) ||
        std::max(width, height) < needed ||
        !SameShape(width, height, photo_width, photo_height)) {
      continue;
    }
    // Decoded whole here: the picture must not read from `png` later. An
    // entry that doesn't decode is passed over like any other bad one.
    try {
      const vips::VImage entry =
          vips::VImage::new_from_buffer(
              png->data(), png->size(), "",
              vips::VImage::option()->set("fail_on", VIPS_FAIL_ON_WARNING))
              .copy_memory();
      if (entry.width() == width && entry.height() == height) {
        return FitDown(entry, size).copy_memory();
      }
    } catch (const vips::VError&) {
      vips_error_clear();
    }
  }
  return std::nullopt;
}

bool SharedThumbnails::WriteNormal(const std::string& photo,
                                   const vips::VImage& thumbnail) const {
  const std::string path = EntryPath(photo, "normal");
  struct stat status {};
  if (path.empty() || ::stat(photo.c_str(), &status) != 0 ||
      std::max(thumbnail.width(), thumbnail.height()) > kNormalSize) {
    return false;
  }
  // An entry of another user's stays as it is.
  struct stat existing {};
  if (::lstat(path.c_str(), &existing) == 0 &&
      (!S_ISREG(existing.st_mode) || existing.st_uid != ::geteuid())) {
    return false;
  }
  for (const std::string& folder : {root_, root_ + "/normal"}) {
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
      return false;
    }
  }
  std::string png;
  try {
    void* data = nullptr;
    size_t length = 0;
    thumbnail.write_to_buffer(
        ".png", &data, &length,
        vips::VImage::option()->set("strip", true)->set("compression", 6));
    png.assign(static_cast<const char*>(data), length);
    g_free(data);
  } catch (const vips::VError&) {
    vips_error_clear();
    return false;
  }
  // The text chunks go right after the header chunk (8 + 4 + 4 + 13 + 4).
  constexpr size_t kAfterHeader = 33;
  if (png.size() < kAfterHeader) {
    return false;
  }
  png.insert(
      kAfterHeader,
      TextChunk("Thumb::URI", ThumbnailUri(photo)) +
          TextChunk("Thumb::MTime", std::to_string(status.st_mtim.tv_sec)) +
          TextChunk("Thumb::Size", std::to_string(status.st_size)) +
          TextChunk("Software", "Quillbay Picture Desk"));
  AtomicWrite how;
  how.sync = false;  // made again when missing
  how.mode = 0600;
  return WriteFileAtomically(path, png.data(), png.size(), how);
}

}  // namespace qbpd
