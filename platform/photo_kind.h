#ifndef QBPD_PLATFORM_PHOTO_KIND_H_
#define QBPD_PLATFORM_PHOTO_KIND_H_

#include <cstddef>
#include <cstdint>
#include <ext/stdio_filebuf.h>
#include <istream>
#include <string>

namespace qbpd {

// The kinds of photo the program reads.
enum class PhotoKind { kJpeg, kPng, kTiff, kBmp, kOther };

// Tells the kind of a file from its first bytes (8 are enough), whatever its
// name says.
PhotoKind SniffPhotoKind(const std::uint8_t* head, std::size_t size);
// The same for a file on disk; kOther when it can't be read or is no plain
// file.
PhotoKind SniffPhotoFile(const std::string& path);

// Opens a photo for reading: only a plain file (a link to one is followed)
// is a photo. The open never waits: a named pipe, a device or a socket under
// a photo's name is refused at once, not waited on. Returns the descriptor,
// in blocking mode for reading and closed on exec, or -1 (errno set).
int OpenPhotoFile(const std::string& path);

// A stream over a photo opened with OpenPhotoFile, for readers that take a
// stream (the bitmap reader). It reads a duplicate of `fd` from the start of
// the file and closes that duplicate; `fd` itself stays open. A failed
// duplicate gives a stream in the failed state.
class PhotoStream : public std::istream {
 public:
  explicit PhotoStream(int fd);
  PhotoStream(const PhotoStream&) = delete;
  PhotoStream& operator=(const PhotoStream&) = delete;

 private:
  __gnu_cxx::stdio_filebuf<char> buffer_;
};

// True when the JPEG in `fd` (read from its start) has all its parts: its
// markers are well formed up to the first scan, and the end-of-image marker
// follows the compressed data. A file cut short fails this every time,
// however the decoder is driven. The file's offset is not used.
bool JpegIsWhole(int fd);

// What decoding one photo may take at most, in bytes of memory that the
// decoder itself must hold whatever scale it decodes at.
inline constexpr std::uint64_t kMaxDecodeBytes = 256ull * 1024 * 1024;
// How much text the compressed text and profile chunks of one PNG may
// inflate to, together.
inline constexpr std::uint64_t kMaxPngTextBytes = 8ull * 1024 * 1024;

// False when decoding the photo of `kind` in `fd` would take more than one
// photo may, known before its pixels are decoded: a progressive JPEG (which
// is decoded whole, however small the result) whose coefficients alone pass
// kMaxDecodeBytes, a Huffman-coded JPEG far shorter than the picture its
// header claims (its decoder would spend its time filling in a picture that
// is not there: under one byte for 64 blocks of 8 x 8 pixels, where a real
// one needs at least one for 8), or a PNG whose compressed text,
// international text or
// colour-profile chunks inflate past kMaxPngTextBytes (a decompression bomb).
// The check inflates no more than that bound. Other kinds pass.
bool WithinDecodeBudget(int fd, PhotoKind kind);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_PHOTO_KIND_H_
