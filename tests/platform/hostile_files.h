#ifndef QBPD_TESTS_PLATFORM_HOSTILE_FILES_H_
#define QBPD_TESTS_PLATFORM_HOSTILE_FILES_H_

#include <vips/vips8>

#include <string>

namespace qbpd::testing {

// `image` encoded by libvips in the format `suffix` names (".jpg", ".png",
// ".jpg[interlace]").
std::string Encoded(const vips::VImage& image, const char* suffix);

// A smooth three-band sRGB picture.
vips::VImage Gradient(int width, int height);

// The JPEG with the frame size in its start-of-frame header replaced, the
// rest as it was.
std::string WithFrameSize(std::string jpeg, int width, int height);

// One PNG chunk of `type` with `data`, its length and CRC right.
std::string Chunk(const std::string& type, const std::string& data);

// `text` as a zlib stream.
std::string Deflated(const std::string& text);

// A small PNG with `chunk` put right after its header chunk.
std::string PngWith(const std::string& chunk);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_PLATFORM_HOSTILE_FILES_H_
