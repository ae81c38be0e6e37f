#ifndef QBPD_PLATFORM_PHOTO_KIND_H_
#define QBPD_PLATFORM_PHOTO_KIND_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace qbpd {

// The kinds of photo the program reads.
enum class PhotoKind { kJpeg, kPng, kTiff, kBmp, kOther };

// Tells the kind of a file from its first bytes (8 are enough), whatever its
// name says.
PhotoKind SniffPhotoKind(const std::uint8_t* head, std::size_t size);
// The same for a file on disk; kOther when it can't be read.
PhotoKind SniffPhotoFile(const std::string& path);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_PHOTO_KIND_H_
