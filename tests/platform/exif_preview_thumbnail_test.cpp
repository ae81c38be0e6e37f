#include "platform/exif_preview_thumbnail.h"

#include "platform/image_operations.h"
#include "tests/support/camera_photo.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

using testing::CameraPreview;
using testing::TempDir;
using testing::WriteCameraPhoto;

constexpr int kSize = 85;
constexpr int kQuality = 70;

PreviewThumbnail FromPreview(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  EXPECT_GE(fd, 0) << path;
  PreviewThumbnail result = ThumbnailFromExifPreview(fd, kSize, kQuality);
  ::close(fd);
  return result;
}

vips::VImage Decode(const std::vector<std::uint8_t>& jpeg) {
  return vips::VImage::new_from_buffer(jpeg.data(), jpeg.size(), "")
      .copy_memory();
}

// The thumbnail the photo's own pixels give (libvips, orientation applied).
vips::VImage OwnThumbnail(const std::string& path) {
  return vips::VImage::thumbnail(path.c_str(), kSize,
                                 vips::VImage::option()->set("height", kSize));
}

double MeanDifference(const vips::VImage& a, const vips::VImage& b) {
  return (a.cast(VIPS_FORMAT_FLOAT) - b.cast(VIPS_FORMAT_FLOAT)).abs().avg();
}

// A sky at the top is no detail to compare: the check reads on below it.
TEST(ExifPreviewThumbnailTest, AGoodPreviewGivesThePhotosOwnThumbnailUpright) {
  TempDir dir;
  for (int orientation : {1, 3, 6, 8}) {
    for (int seed : {1, 2}) {
      const std::string path = (dir / ("photo" + std::to_string(orientation) +
                                       "_" + std::to_string(seed) + ".jpg"))
                                   .string();
      ASSERT_TRUE(WriteCameraPhoto(
          path, 1200, 900, seed, orientation,
          seed == 1 ? CameraPreview::kGood : CameraPreview::kPlainTop));
      const PreviewThumbnail made = FromPreview(path);
      ASSERT_EQ(made.verdict, PreviewVerdict::kTaken)
          << "orientation " << orientation << " seed " << seed;
      const vips::VImage mine = Decode(made.jpeg);
      const vips::VImage own = OwnThumbnail(path);
      ASSERT_EQ(mine.width(), own.width()) << orientation;
      ASSERT_EQ(mine.height(), own.height()) << orientation;
      EXPECT_LT(MeanDifference(mine, own), 6.0) << orientation;
    }
  }
}

TEST(ExifPreviewThumbnailTest, APreviewThatNoLongerShowsThePhotoIsRefused) {
  struct Case {
    CameraPreview preview;
    int width;
    int height;
    PreviewVerdict verdict;
  };
  const std::vector<Case> cases = {
      {CameraPreview::kNone, 1200, 900, PreviewVerdict::kNoPreview},
      {CameraPreview::kTurned, 1200, 900, PreviewVerdict::kStale},
      {CameraPreview::kMirrored, 1200, 900, PreviewVerdict::kStale},
      {CameraPreview::kRecoloured, 1200, 900, PreviewVerdict::kStale},
      {CameraPreview::kBrightened, 1200, 900, PreviewVerdict::kStale},
      {CameraPreview::kCropped, 1200, 900, PreviewVerdict::kStale},
      {CameraPreview::kSlightlyCropped, 1200, 900, PreviewVerdict::kStale},
      {CameraPreview::kPlainTopCropped, 1200, 900, PreviewVerdict::kStale},
      {CameraPreview::kOtherPicture, 1200, 900, PreviewVerdict::kStale},
      {CameraPreview::kLetterboxed, 1350, 900, PreviewVerdict::kWrongShape},
      {CameraPreview::kTiny, 1200, 900, PreviewVerdict::kTooSmall},
      {CameraPreview::kProgressive, 1200, 900, PreviewVerdict::kNotSequential},
  };
  TempDir dir;
  for (int seed = 1; seed <= 3; ++seed) {
    for (const Case& c : cases) {
      const std::string path = (dir / "photo.jpg").string();
      ASSERT_TRUE(
          WriteCameraPhoto(path, c.width, c.height, seed, 1, c.preview));
      const PreviewThumbnail made = FromPreview(path);
      EXPECT_EQ(made.verdict, c.verdict)
          << "kind " << static_cast<int>(c.preview) << " seed " << seed;
      EXPECT_TRUE(made.jpeg.empty());
    }
  }
}

// A crop to the same shape moves the picture under the preview by a few of
// its pixels: told on every picture, the smallest crop and the one below a
// plain sky included. At 2400 pixels the photo's eighth is finer than the
// preview, at 1200 coarser; below a sky the check reads on into the detail
// and takes the preview where it still holds.
TEST(ExifPreviewThumbnailTest, ACropIsToldOnEveryPicture) {
  TempDir dir;
  const std::string path = (dir / "photo.jpg").string();
  for (int seed = 1; seed <= 8; ++seed) {
    for (CameraPreview kind :
         {CameraPreview::kCropped, CameraPreview::kSlightlyCropped,
          CameraPreview::kPlainTopCropped}) {
      ASSERT_TRUE(WriteCameraPhoto(path, 1200, 900, seed, 1, kind));
      EXPECT_EQ(FromPreview(path).verdict, PreviewVerdict::kStale)
          << "kind " << static_cast<int>(kind) << " seed " << seed;
    }
  }
  struct Case {
    CameraPreview preview;
    PreviewVerdict verdict;
  };
  for (const Case& c :
       {Case{CameraPreview::kPlainTop, PreviewVerdict::kTaken},
        Case{CameraPreview::kPlainTopCropped, PreviewVerdict::kStale},
        Case{CameraPreview::kSlightlyCropped, PreviewVerdict::kStale}}) {
    ASSERT_TRUE(WriteCameraPhoto(path, 2400, 1800, 3, 1, c.preview));
    EXPECT_EQ(FromPreview(path).verdict, c.verdict)
        << "kind " << static_cast<int>(c.preview) << " at 2400 pixels";
  }
}

TEST(ExifPreviewThumbnailTest, TheLibraryTakesAGoodPreviewAndNeverAStaleOne) {
  TempDir dir;
  const auto ops = MakeVipsImageOperations((dir / "cache").string());
  for (CameraPreview kind : {CameraPreview::kGood, CameraPreview::kCropped,
                             CameraPreview::kRecoloured}) {
    const std::string photo = (dir / "photo.jpg").string();
    const std::string thumbnail = (dir / "thumb.jpg").string();
    ASSERT_TRUE(WriteCameraPhoto(photo, 1200, 900, 7, 6, kind));
    ASSERT_EQ(ops->GenerateThumbnailExt(photo, thumbnail, kSize, kQuality), 1);
    const vips::VImage made = vips::VImage::new_from_file(thumbnail.c_str());
    const vips::VImage own = OwnThumbnail(photo);
    ASSERT_EQ(made.width(), own.width());
    ASSERT_EQ(made.height(), own.height());
    // Upright and showing the photo as it is now, whichever way it was made.
    EXPECT_LT(MeanDifference(made, own), 6.0) << static_cast<int>(kind);
  }
}

TEST(ExifPreviewThumbnailTest, ABrokenPreviewOrHeaderIsNeverTaken) {
  TempDir dir;
  const std::string path = (dir / "photo.jpg").string();
  ASSERT_TRUE(WriteCameraPhoto(path, 1200, 900, 4, 1, CameraPreview::kGood));
  const std::string whole = testing::ReadFile(path);
  // The preview is the second picture in the file: its scan follows the
  // first start-of-scan marker after its own start.
  const std::size_t preview = whole.find("\xFF\xD8", 2);
  const std::size_t scan = whole.find("\xFF\xDA", preview);
  ASSERT_NE(scan, std::string::npos);
  struct Damage {
    const char* what;
    std::size_t at;
    std::size_t length;
  };
  for (const Damage& d : {Damage{"the preview's data", scan + 40, 24},
                          Damage{"the preview's end", scan + 200, 400},
                          Damage{"the EXIF directories", 14, 8},
                          Damage{"the EXIF marker", 2, 2}}) {
    std::string bytes = whole;
    for (std::size_t i = d.at; i < d.at + d.length; ++i) {
      bytes[i] = static_cast<char>(0x55 ^ i);
    }
    dir.WriteFile("broken.jpg", bytes);
    const PreviewThumbnail made = FromPreview((dir / "broken.jpg").string());
    EXPECT_NE(made.verdict, PreviewVerdict::kTaken) << d.what;
    EXPECT_TRUE(made.jpeg.empty()) << d.what;
  }
  // A file cut short inside its header is no photo to take a preview from.
  dir.WriteFile("cut.jpg", whole.substr(0, 200));
  EXPECT_EQ(FromPreview((dir / "cut.jpg").string()).verdict,
            PreviewVerdict::kNoPreview);
}

// The header is read in two steps: segments that push the first scan past
// the first read (a colour profile, a long comment) still leave the preview
// to be taken, and one pushed past the whole header's limit leaves the photo
// to its full path. Photos of both sizes in turn, so that the memory kept
// from one photo to the next never shows the last one's bytes.
TEST(ExifPreviewThumbnailTest, APreviewIsFoundBehindLongSegments) {
  TempDir dir;
  const std::string path = (dir / "photo.jpg").string();
  ASSERT_TRUE(WriteCameraPhoto(path, 1200, 900, 5, 1, CameraPreview::kGood));
  const std::string whole = testing::ReadFile(path);
  // Past the EXIF segment: its length follows its marker.
  ASSERT_EQ(whole.substr(2, 2), std::string("\xFF\xE1", 2));
  const std::size_t after_exif = 4 + (static_cast<std::uint8_t>(whole[4]) << 8 |
                                      static_cast<std::uint8_t>(whole[5]));
  auto with_comments = [&](int count) {
    std::string comment("\xFF\xFE\xFF\xFF", 4);
    comment.append(0xFFFF - 2, 'c');
    std::string bytes = whole.substr(0, after_exif);
    for (int i = 0; i < count; ++i) {
      bytes += comment;
    }
    return bytes + whole.substr(after_exif);
  };
  const vips::VImage own = OwnThumbnail(path).copy_memory();
  struct Case {
    int comments;  // of 64 KB each
    PreviewVerdict verdict;
  };
  for (int round = 0; round < 2; ++round) {
    for (const Case& c :
         {Case{0, PreviewVerdict::kTaken}, Case{2, PreviewVerdict::kTaken},
          Case{4, PreviewVerdict::kNoPreview}}) {
      const std::string name = "long" + std::to_string(c.comments) + ".jpg";
      dir.WriteFile(name, with_comments(c.comments));
      const PreviewThumbnail made = FromPreview((dir / name).string());
      ASSERT_EQ(made.verdict, c.verdict) << c.comments << " round " << round;
      if (c.verdict == PreviewVerdict::kTaken) {
        const vips::VImage mine = Decode(made.jpeg);
        ASSERT_EQ(mine.width(), own.width());
        EXPECT_LT(MeanDifference(mine, own), 6.0) << c.comments;
      }
    }
  }
}

}  // namespace
}  // namespace qbpd
