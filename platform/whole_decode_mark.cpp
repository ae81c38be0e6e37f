#include "platform/whole_decode_mark.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <time.h>

namespace qbpd {
namespace {

constexpr std::uint8_t kMarker = 0xFF;
constexpr std::uint8_t kStart = 0xD8;
constexpr std::uint8_t kComment = 0xFE;
constexpr std::string_view kPrefix = "qbpd whole decode 1 ";

std::int64_t Nanoseconds(const struct timespec& time) {
  return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

bool StartsAsJpeg(const std::uint8_t* jpeg, std::size_t size) {
  return size >= 4 && jpeg[0] == kMarker && jpeg[1] == kStart;
}

// The length of the mark's segment (marker and length bytes included) at
// the start of `jpeg`'s segments, 0 when there is none.
std::size_t MarkLength(const std::uint8_t* jpeg, std::size_t size) {
  if (!StartsAsJpeg(jpeg, size) || jpeg[2] != kMarker || jpeg[3] != kComment ||
      size < 6) {
    return 0;
  }
  const std::size_t length = (std::size_t{jpeg[4]} << 8) | jpeg[5];
  if (length < 2 + kPrefix.size() || 4 + length > size ||
      std::memcmp(jpeg + 6, kPrefix.data(), kPrefix.size()) != 0) {
    return 0;
  }
  return 2 + length;
}

}  // namespace

FileIdentity IdentityOf(const struct stat& status) {
  FileIdentity identity;
  identity.device = status.st_dev;
  identity.inode = status.st_ino;
  identity.size = status.st_size;
  identity.modified_ns = Nanoseconds(status.st_mtim);
  identity.changed_ns = Nanoseconds(status.st_ctim);
  return identity;
}

bool ChangedBeforeNow(const FileIdentity& identity) {
  // File times are taken from the coarse clock (or finer): a change time
  // before its present tick can't be given again.
  struct timespec now {};
  return ::clock_gettime(CLOCK_REALTIME_COARSE, &now) == 0 &&
         identity.changed_ns < Nanoseconds(now);
}

std::optional<FileIdentity> IdentityOfPath(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  return IdentityOf(status);
}

std::vector<std::uint8_t> WithWholeDecodeMark(std::vector<std::uint8_t> jpeg,
                                              const FileIdentity& identity) {
  if (!StartsAsJpeg(jpeg.data(), jpeg.size())) {
    return jpeg;
  }
  jpeg = WithoutWholeDecodeMark(std::move(jpeg));
  char text[160];
  const int written = std::snprintf(
      text, sizeof text,
      "%.*s%" PRIu64 " %" PRIu64 " %" PRId64 " %" PRId64 " %" PRId64,
      static_cast<int>(kPrefix.size()), kPrefix.data(), identity.device,
      identity.inode, identity.size, identity.modified_ns, identity.changed_ns);
  if (written <= 0 || static_cast<std::size_t>(written) >= sizeof text) {
    return jpeg;
  }
  const std::size_t length = 2 + static_cast<std::size_t>(written);
  std::vector<std::uint8_t> segment = {
      kMarker, kComment, static_cast<std::uint8_t>(length >> 8),
      static_cast<std::uint8_t>(length & 0xFF)};
  segment.insert(segment.end(), text, text + written);
  jpeg.insert(jpeg.begin() + 2, segment.begin(), segment.end());
  return jpeg;
}

std::optional<FileIdentity> ReadWholeDecodeMark(const std::uint8_t* jpeg,
                                                std::size_t size) {
  const std::size_t length = MarkLength(jpeg, size);
  if (length == 0) {
    return std::nullopt;
  }
  const std::string text(
      reinterpret_cast<const char*>(jpeg) + 6 + kPrefix.size(),
      length - 4 - kPrefix.size());
  FileIdentity identity;
  int consumed = 0;
  if (std::sscanf(
          text.c_str(),
          "%" SCNu64 " %" SCNu64 " %" SCNd64 " %" SCNd64 " %" SCNd64 "%n",
          &identity.device, &identity.inode, &identity.size,
          &identity.modified_ns, &identity.changed_ns, &consumed) != 5 ||
      static_cast<std::size_t>(consumed) != text.size()) {
    return std::nullopt;
  }
  return identity;
}

std::vector<std::uint8_t> WithoutWholeDecodeMark(
    std::vector<std::uint8_t> jpeg) {
  const std::size_t length = MarkLength(jpeg.data(), jpeg.size());
  if (length > 0) {
    jpeg.erase(jpeg.begin() + 2,
               jpeg.begin() + 2 + static_cast<std::ptrdiff_t>(length));
  }
  return jpeg;
}

}  // namespace qbpd
