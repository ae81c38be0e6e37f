// The checks every image path makes before a decoder sees a file: a plain
// file opened without waiting, a JPEG with all its parts, and a photo whose
// decoding stays within what one photo may take.

#include "platform/photo_kind.h"

#include "tests/platform/hostile_files.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::Chunk;
using testing::Deflated;
using testing::Encoded;
using testing::Gradient;
using testing::PngWith;
using testing::TempDir;
using testing::WithFrameSize;

std::string Jpeg(bool progressive = false) {
  return Encoded(Gradient(64, 48), progressive ? ".jpg[interlace]" : ".jpg");
}

// True when the checks pass for `bytes` written to a file.
class PhotoKindTest : public ::testing::Test {
 protected:
  bool Whole(const std::string& bytes) {
    const int fd = Open(bytes);
    const bool whole = fd >= 0 && JpegIsWhole(fd);
    ::close(fd);
    return whole;
  }

  bool Within(const std::string& bytes, PhotoKind kind) {
    const int fd = Open(bytes);
    const bool within = fd >= 0 && WithinDecodeBudget(fd, kind);
    ::close(fd);
    return within;
  }

  int Open(const std::string& bytes) {
    const fs::path path = temp_ / ("f" + std::to_string(++count_));
    std::ofstream(path, std::ios::binary) << bytes;
    return OpenPhotoFile(path.string());
  }

  TempDir temp_;
  int count_ = 0;
};

TEST_F(PhotoKindTest, OnlyPlainFilesOpenAndNothingWaits) {
  const fs::path photo = temp_ / "a.jpg";
  std::ofstream(photo) << Jpeg();
  const int fd = OpenPhotoFile(photo.string());
  ASSERT_GE(fd, 0);
  // Blocking again for the readers, and closed on exec.
  EXPECT_EQ(::fcntl(fd, F_GETFL) & O_NONBLOCK, 0);
  EXPECT_NE(::fcntl(fd, F_GETFD) & FD_CLOEXEC, 0);
  ::close(fd);

  const fs::path fifo = temp_ / "photo.jpg";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  // With no writer, a blocking open would wait here for ever.
  EXPECT_EQ(OpenPhotoFile(fifo.string()), -1);
  EXPECT_EQ(SniffPhotoFile(fifo.string()), PhotoKind::kOther);
  EXPECT_EQ(OpenPhotoFile(temp_.path().string()), -1);
  EXPECT_EQ(OpenPhotoFile((temp_ / "missing.jpg").string()), -1);
  EXPECT_EQ(OpenPhotoFile("/dev/null"), -1);
  fs::create_symlink(photo, temp_ / "link.jpg");
  const int linked = OpenPhotoFile((temp_ / "link.jpg").string());
  EXPECT_GE(linked, 0);
  ::close(linked);
  EXPECT_EQ(SniffPhotoFile((temp_ / "link.jpg").string()), PhotoKind::kJpeg);
}

TEST_F(PhotoKindTest, AJpegIsWholeOnlyWithItsEndMarker) {
  for (const bool progressive : {false, true}) {
    const std::string jpeg = Jpeg(progressive);
    EXPECT_TRUE(Whole(jpeg));
    EXPECT_TRUE(Whole(jpeg + "trailer a camera wrote"));
    for (const std::size_t cut :
         {std::size_t{2}, std::size_t{20}, jpeg.size() / 2, jpeg.size() - 1,
          jpeg.size() - 2}) {
      EXPECT_FALSE(Whole(jpeg.substr(0, cut))) << cut << " " << progressive;
    }
  }
  EXPECT_FALSE(Whole(""));
  EXPECT_FALSE(Whole("\xFF\xD8\xFF"));
  EXPECT_FALSE(Whole("not a jpeg at all"));

  // An end marker inside a segment before the picture (a thumbnail in the
  // EXIF data) does not make a cut picture whole.
  const std::string jpeg = Jpeg();
  const std::string inner = "Exif\0\0\xFF\xD8 thumbnail \xFF\xD9";
  const std::size_t length = inner.size() + 2;
  const std::string app1 = std::string("\xFF\xE1", 2) +
                           static_cast<char>(length >> 8) +
                           static_cast<char>(length & 0xFF) + inner;
  const std::string with_exif = jpeg.substr(0, 2) + app1 + jpeg.substr(2);
  EXPECT_TRUE(Whole(with_exif));
  EXPECT_FALSE(Whole(with_exif.substr(0, with_exif.size() / 2)));
}

// A picture of one scan is told whole by its last bytes; one of several
// scans is read to its end, so that a cut which leaves the end marker's
// bytes last (here inside a comment between two scans) still fails.
TEST_F(PhotoKindTest, APictureOfSeveralScansIsReadToItsEnd) {
  const std::string comment =
      std::string("\xFF\xFE\x00\x10", 4) + "note \xFF\xD9 rest..";
  const std::string jpeg = Jpeg(/*progressive=*/true);
  // The segment marker after the first scan's compressed data.
  const std::size_t first_scan = jpeg.find("\xFF\xDA", 2);
  ASSERT_NE(first_scan, std::string::npos);
  std::size_t next = jpeg.find('\xFF', first_scan + 2);
  auto in_data = [&](std::size_t at) {
    const auto after = static_cast<std::uint8_t>(jpeg[at + 1]);
    return after == 0 || (after >= 0xD0 && after <= 0xD7);
  };
  while (next != std::string::npos && next + 1 < jpeg.size() && in_data(next)) {
    next = jpeg.find('\xFF', next + 2);
  }
  ASSERT_NE(next, std::string::npos);
  ASSERT_NE(static_cast<std::uint8_t>(jpeg[next + 1]), 0xD9);
  const std::string with_comment =
      jpeg.substr(0, next) + comment + jpeg.substr(next);
  EXPECT_TRUE(Whole(with_comment));
  const std::size_t cut = next + comment.find('\xD9') + 1;
  EXPECT_FALSE(Whole(with_comment.substr(0, cut)));
  // The same picture of one scan is whole by its end.
  EXPECT_TRUE(Whole(Jpeg(/*progressive=*/false)));
}

TEST_F(PhotoKindTest, AJpegMayNotTakeMoreThanAPhotoMay) {
  EXPECT_TRUE(Within(Jpeg(true), PhotoKind::kJpeg));
  EXPECT_TRUE(Within(Jpeg(false), PhotoKind::kJpeg));
  // Bytes after the picture make a file as long as a real one of the size
  // its header is given.
  const std::string padding(200 * 1024, '\0');
  // 16000 x 16000 progressive: its coefficients alone take 768 MB at 4:2:0,
  // decoded whole whatever the scale.
  EXPECT_FALSE(Within(WithFrameSize(Jpeg(true), 16000, 16000) + padding,
                      PhotoKind::kJpeg));
  // 8000 x 6000 progressive: 144 MB.
  EXPECT_TRUE(Within(WithFrameSize(Jpeg(true), 8000, 6000) + padding,
                     PhotoKind::kJpeg));
  // A baseline JPEG is shrunk while it is decoded: its size is the pixel
  // bound's business.
  EXPECT_TRUE(Within(WithFrameSize(Jpeg(false), 16000, 16000) + padding,
                     PhotoKind::kJpeg));
  // But a header that claims far more picture than the file holds is a lie
  // that would keep the decoder filling in for ever.
  EXPECT_FALSE(
      Within(WithFrameSize(Jpeg(false), 16000, 16000), PhotoKind::kJpeg));
  EXPECT_FALSE(Within(WithFrameSize(Jpeg(true), 8000, 6000), PhotoKind::kJpeg));
  EXPECT_FALSE(Within("\xFF\xD8\xFF", PhotoKind::kJpeg));
}

TEST_F(PhotoKindTest, APngTextBombIsRefusedBeforeItIsInflated) {
  const std::string comment = std::string("Comment\0\0", 9);
  EXPECT_TRUE(Within(PngWith(""), PhotoKind::kPng));
  EXPECT_TRUE(Within(PngWith(Chunk("zTXt", comment + Deflated("a caption"))),
                     PhotoKind::kPng));
  EXPECT_TRUE(Within(PngWith(Chunk("tEXt", std::string(100000, 'a'))),
                     PhotoKind::kPng));
  // 64 MB of text in some 64 KB of file.
  const std::string bomb = Deflated(std::string(64 << 20, 'A'));
  ASSERT_LT(bomb.size(), 1u << 20);
  EXPECT_FALSE(Within(PngWith(Chunk("zTXt", comment + bomb)), PhotoKind::kPng));
  EXPECT_FALSE(Within(
      PngWith(Chunk("iTXt", std::string("Comment\0\1\0en\0\0", 14) + bomb)),
      PhotoKind::kPng));
  EXPECT_FALSE(Within(PngWith(Chunk("iCCP", std::string("icc\0\0", 5) + bomb)),
                      PhotoKind::kPng));
  // Several chunks count together.
  const std::string part = comment + Deflated(std::string(3 << 20, 'B'));
  EXPECT_TRUE(Within(PngWith(Chunk("zTXt", part) + Chunk("zTXt", part)),
                     PhotoKind::kPng));
  EXPECT_FALSE(Within(
      PngWith(Chunk("zTXt", part) + Chunk("zTXt", part) + Chunk("zTXt", part)),
      PhotoKind::kPng));
}

}  // namespace
}  // namespace qbpd
