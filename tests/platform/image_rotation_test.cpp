#include "platform/display_model.h"
#include "platform/image_operations.h"
#include "tests/support/file_faults.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <sys/stat.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;
using testing::TempDir;

// The image data of a JPEG file: from its first scan to its end, the
// segments before it (the metadata, whose EXIF preview is a JPEG of its own)
// stepped over.
std::string ScanBytes(const std::string& jpeg) {
  std::size_t at = 2;
  while (at + 4 <= jpeg.size() && jpeg[at] == '\xFF') {
    if (jpeg[at + 1] == '\xDA') {
      return jpeg.substr(at);
    }
    const std::size_t length =
        (static_cast<std::size_t>(static_cast<unsigned char>(jpeg[at + 2]))
         << 8) |
        static_cast<unsigned char>(jpeg[at + 3]);
    at += 2 + length;
  }
  return {};
}

// How far a losslessly turned JPEG's decoding may stray from the turned
// decoding of its source, on average over 0..255: the decoder's integer
// rounding alone.
constexpr double kRounding = 0.1;

// The first EXIF segment of a JPEG file, whole.
std::string ExifSegment(const std::string& jpeg) {
  std::size_t at = 2;
  while (at + 4 <= jpeg.size() && jpeg[at] == '\xFF') {
    const std::size_t length =
        (static_cast<std::size_t>(static_cast<unsigned char>(jpeg[at + 2]))
         << 8) |
        static_cast<unsigned char>(jpeg[at + 3]);
    if (jpeg[at + 1] == '\xE1' && jpeg.compare(at + 4, 4, "Exif") == 0) {
      return jpeg.substr(at, 2 + length);
    }
    at += 2 + length;
  }
  return {};
}

vips::VImage Decoded(const fs::path& path) {
  return vips::VImage::new_from_file(path.c_str()).copy_memory();
}

// The mean absolute difference of two pictures of one size, and of their
// first `strip` columns alone.
double MeanDifference(const vips::VImage& a, const vips::VImage& b) {
  return (a.cast(VIPS_FORMAT_FLOAT) - b.cast(VIPS_FORMAT_FLOAT)).abs().avg();
}

int OrientationOf(const fs::path& path) {
  const vips::VImage image = vips::VImage::new_from_file(path.c_str());
  return image.get_typeof(VIPS_META_ORIENTATION) != 0
             ? image.get_int(VIPS_META_ORIENTATION)
             : 1;
}

class ImageRotationTest : public ::testing::Test {
 protected:
  ImageRotationTest()
      : images_(MakeVipsImageOperations((dir_ / "cache").string())) {}

  std::string Photo(const std::string& name,
                    int width,
                    int height,
                    int orientation = 1,
                    TestPreview preview = TestPreview::kSame) {
    const std::string path = (dir_ / name).string();
    EXPECT_TRUE(
        WriteTestPhotoWithExif(path, width, height, 3, orientation, preview));
    return path;
  }

  TempDir dir_;
  std::unique_ptr<ImageOperations> images_;
};

TEST_F(ImageRotationTest, FourLosslessQuarterTurnsGiveBackTheSameImageData) {
  // Sides in whole blocks: every turn is exact.
  const std::string path = Photo("exact.jpg", 640, 480);
  const std::string scan = ScanBytes(ReadFile(path));
  ASSERT_FALSE(scan.empty());
  for (const int angle : {90, -90}) {
    for (int turn = 0; turn < 4; ++turn) {
      ASSERT_EQ(images_->ImageRotation(path, path, angle), 1);
      EXPECT_EQ(images_->GetImageWidth(path), turn % 2 == 0 ? 480 : 640);
    }
    EXPECT_TRUE(ScanBytes(ReadFile(path)) == scan) << angle;
  }
  // A right turn and a left turn undo each other as well.
  ASSERT_EQ(images_->ImageRotation(path, path, 90), 1);
  ASSERT_EQ(images_->ImageRotation(path, path, -90), 1);
  EXPECT_TRUE(ScanBytes(ReadFile(path)) == scan);
}

TEST_F(ImageRotationTest, TurnsThePictureAndMakesThePreviewAnew) {
  const std::string source = Photo("a.jpg", 640, 480);
  const vips::VImage before = Decoded(source);
  const std::string turned = (dir_ / "a_Fixed(1).jpg").string();
  ASSERT_EQ(images_->ImageRotation(source, turned, 90), 1);
  // Lossless: the source's pixels turned to the right, but for the integer
  // inverse transform's rounding, which a turn of the blocks moves about.
  EXPECT_LT(MeanDifference(Decoded(turned), before.rot90()), kRounding);
  EXPECT_EQ(images_->CompareExifPreview(turned), ExifPreview::kMatches);
  ASSERT_EQ(images_->ImageRotation(source, turned, -90), 1);
  EXPECT_LT(MeanDifference(Decoded(turned), before.rot270()), kRounding);
  EXPECT_EQ(images_->CompareExifPreview(turned), ExifPreview::kMatches);
  // A stale preview is not carried on: it is made from the new picture.
  const std::string stale =
      Photo("stale.jpg", 640, 480, 1, TestPreview::kTurned);
  ASSERT_EQ(images_->CompareExifPreview(stale), ExifPreview::kDiffers);
  ASSERT_EQ(images_->ImageRotation(stale, stale, 90), 1);
  EXPECT_EQ(images_->CompareExifPreview(stale), ExifPreview::kMatches);
}

TEST_F(ImageRotationTest, APartialBlockEdgeIsNeitherWrongNorTrimmed) {
  // A colour photo in 4:2:0, in 16-pixel blocks: 300 rows leave a partial
  // block row at the bottom, which a plain lossless right turn would put
  // wrong at the left. Its EXIF preview is stale to begin with.
  const std::string source = (dir_ / "camera.jpg").string();
  const vips::VImage xy = vips::VImage::xyz(400, 300);
  (xy[0] * 0.6)
      .bandjoin(xy[1] * 0.8)
      .bandjoin(255 - xy[0] * 0.3 - xy[1] * 0.3)
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .jpegsave(source.c_str(),
                vips::VImage::option()->set("Q", 90)->set(
                    "subsample_mode", VIPS_FOREIGN_SUBSAMPLE_ON));
  const std::string donor =
      Photo("donor.jpg", 400, 300, 1, TestPreview::kTurned);
  const std::string exif = ExifSegment(ReadFile(donor));
  ASSERT_FALSE(exif.empty());
  std::string bytes = ReadFile(source);
  bytes.insert(2, exif);
  std::ofstream(source, std::ios::binary | std::ios::trunc) << bytes;
  ASSERT_EQ(Decoded(source).get_string("jpeg-chroma-subsample"),
            std::string("4:2:0"));
  ASSERT_EQ(images_->CompareExifPreview(source), ExifPreview::kDiffers);
  const vips::VImage expected = Decoded(source).rot90();
  ASSERT_EQ(images_->ImageRotation(source, source, 90), 1);
  const vips::VImage turned = Decoded(source);
  ASSERT_EQ(turned.width(), 300);  // nothing trimmed
  ASSERT_EQ(turned.height(), 400);
  // The whole picture and its left edge strip are the source's, within one
  // high-quality encoding.
  const double whole = MeanDifference(turned, expected);
  const double strip =
      MeanDifference(turned.crop(0, 0, 16, 400), expected.crop(0, 0, 16, 400));
  std::printf(
      "[ figures  ] re-encoded turn: mean difference %.2f levels, "
      "%.2f in the edge strip\n",
      whole, strip);
  EXPECT_LT(whole, 1.5);
  EXPECT_LT(strip, 1.5);
  // The photo's own subsampling is kept, and the preview follows.
  EXPECT_EQ(turned.get_string("jpeg-chroma-subsample"), std::string("4:2:0"));
  EXPECT_EQ(images_->CompareExifPreview(source), ExifPreview::kMatches);
}

TEST_F(ImageRotationTest, TurnsWhatTheUserSeesAndSavesItUpright) {
  // Stored turned, with orientation 6: upright it is 480 x 640.
  const std::string source = Photo("portrait.jpg", 640, 480, 6);
  const vips::VImage upright = Decoded(source).rot90();
  ASSERT_EQ(images_->ImageRotation(source, source, 90), 1);
  EXPECT_EQ(OrientationOf(source), 1);
  EXPECT_EQ(images_->GetExifOrientation(source), 1);
  EXPECT_LT(MeanDifference(Decoded(source), upright.rot90()), kRounding);
  EXPECT_EQ(images_->CompareExifPreview(source), ExifPreview::kMatches);
}

// An XMP segment whose packet gives the TIFF orientation `value`.
std::string XmpSegment(const std::string& value) {
  const std::string packet =
      std::string("http://ns.adobe.com/xap/1.0/") + '\0' +
      "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
      "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
      "<rdf:Description xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\" "
      "tiff:Orientation=\"" +
      value + "\"/></rdf:RDF></x:xmpmeta>";
  const std::size_t length = packet.size() + 2;
  return std::string("\xFF\xE1") + static_cast<char>(length >> 8) +
         static_cast<char>(length & 0xFF) + packet;
}

TEST_F(ImageRotationTest, AnXmpOrientationIsSetNormalToo) {
  // Beside an EXIF orientation of 6, and alone in a photo without EXIF
  // data (shown as stored, so turned as stored).
  const std::string both = Photo("both.jpg", 640, 480, 6);
  const std::string alone = (dir_ / "alone.jpg").string();
  ASSERT_TRUE(WriteTestPhoto(alone, 640, 480, 5));
  for (const std::string& path : {both, alone}) {
    SCOPED_TRACE(path);
    std::string bytes = ReadFile(path);
    bytes.insert(2, XmpSegment("6"));
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    const vips::VImage upright =
        path == both ? Decoded(path).rot90() : Decoded(path);
    ASSERT_EQ(images_->ImageRotation(path, path, 90), 1);
    const std::string turned = ReadFile(path);
    EXPECT_NE(turned.find("tiff:Orientation=\"1\""), std::string::npos);
    EXPECT_EQ(turned.find("tiff:Orientation=\"6\""), std::string::npos);
    EXPECT_EQ(OrientationOf(path), 1);
    EXPECT_LT(MeanDifference(Decoded(path), upright.rot90()), kRounding);
  }
}

TEST_F(ImageRotationTest, KeepsTheOtherMetadata) {
  const std::string source = Photo("note.jpg", 640, 480);
  std::string bytes = ReadFile(source);
  const std::string comment =
      "\xFF\xFE" + std::string("\x00\x10", 2) + "quillbay test";
  bytes.insert(2, comment + std::string(1, '\0'));
  std::ofstream(source, std::ios::binary | std::ios::trunc) << bytes;
  ASSERT_EQ(images_->ImageRotation(source, source, -90), 1);
  EXPECT_NE(ReadFile(source).find("quillbay test"), std::string::npos);
}

TEST_F(ImageRotationTest, WritesOtherKindsAsJpeg) {
  const std::string png = (dir_ / "drawing.png").string();
  vips::VImage::black(64, 48, vips::VImage::option()->set("bands", 3))
      .write_to_file(png.c_str());
  const std::string before = ReadFile(png);
  const std::string jpeg = (dir_ / "drawing_Fixed(1).jpg").string();
  ASSERT_EQ(images_->ImageRotation(png, jpeg, 90), 1);
  EXPECT_EQ(ReadFile(jpeg).substr(0, 2), "\xFF\xD8");
  EXPECT_EQ(images_->GetImageWidth(jpeg), 48);
  EXPECT_TRUE(ReadFile(png) == before);
}

// --- failures leave the photo as it was -------------------------------------

TEST_F(ImageRotationTest, AFullDiskLeavesThePhotoAsItWas) {
  const std::string source = Photo("full.jpg", 640, 480);
  const std::string before = ReadFile(source);
  {
    const testing::ScopedFileSizeLimit full_disk(4096);
    EXPECT_EQ(images_->ImageRotation(source, source, 90), 0);
  }
  EXPECT_TRUE(ReadFile(source) == before);
  // No temporary file is left behind.
  int files = 0;
  for (const auto& entry : fs::directory_iterator(dir_.path())) {
    files += entry.is_regular_file() ? 1 : 0;
  }
  EXPECT_EQ(files, 1);
}

TEST_F(ImageRotationTest, AMissingPhotoOrFolderWritesNothing) {
  const std::string source = Photo("gone.jpg", 640, 480);
  const std::string before = ReadFile(source);
  EXPECT_EQ(
      images_->ImageRotation(source, (dir_ / "no" / "x.jpg").string(), 90), 0);
  EXPECT_TRUE(ReadFile(source) == before);
  fs::remove(source);
  EXPECT_EQ(images_->ImageRotation(source, source, 90), 0);
  EXPECT_FALSE(fs::exists(source));
  EXPECT_EQ(images_->ImageRotation(source, source, 45), 0);
}

TEST_F(ImageRotationTest, AReadOnlyFolderLeavesThePhotoAsItWas) {
  if (testing::WritesIgnorePermissions()) {
    GTEST_SKIP() << "running as root: a read-only folder can't refuse writes";
  }
  const fs::path folder = dir_ / "locked";
  fs::create_directory(folder);
  const std::string source = (folder / "p.jpg").string();
  ASSERT_TRUE(WriteTestPhoto(source, 640, 480, 1));
  const std::string before = ReadFile(source);
  ::chmod(folder.c_str(), 0555);
  EXPECT_EQ(images_->ImageRotation(source, source, 90), 0);
  ::chmod(folder.c_str(), 0755);
  EXPECT_TRUE(ReadFile(source) == before);
}

TEST_F(ImageRotationTest, WorkAheadNeverWritesAndFollowsAChangedPhoto) {
  const std::string first = Photo("1.jpg", 640, 480);
  const std::string second = Photo("2.jpg", 640, 480);
  const std::string before = ReadFile(second);
  images_->PrepareImageRotation(first, 90);
  images_->PrepareImageRotation(second, 90);
  // Only the photo asked for is written; the hint for the next is not.
  ASSERT_EQ(images_->ImageRotation(first, first, 90), 1);
  EXPECT_EQ(images_->GetImageWidth(first), 480);
  EXPECT_TRUE(ReadFile(second) == before);
  // The next photo is replaced meanwhile: the turn is of the new one.
  ASSERT_TRUE(WriteTestPhoto(second, 320, 240, 9));
  ASSERT_EQ(images_->ImageRotation(second, second, 90), 1);
  EXPECT_EQ(images_->GetImageWidth(second), 240);
  // A hint not followed (a cancelled batch) writes nothing.
  const std::string third = Photo("3.jpg", 640, 480);
  const std::string third_before = ReadFile(third);
  images_->PrepareImageRotation(third, -90);
  images_.reset();
  EXPECT_TRUE(ReadFile(third) == third_before);
}

// --- the photo view's save of a turned photo ---------------------------------

TEST_F(ImageRotationTest, TheViewSavesATurnLosslesslyAndUpright) {
  const std::string source = Photo("view.jpg", 640, 480, 8);
  std::unique_ptr<DisplayControl> display = MakeVipsDisplayControl();
  ASSERT_TRUE(display->LoadPhoto(source));
  ASSERT_EQ(display->PhotoWidth(), 480);  // orientation 8 stands it up
  const vips::VImage stored = Decoded(source);
  ASSERT_TRUE(display->RotateView(90));
  ASSERT_TRUE(display->SaveShownPhoto(source));
  // Upright on screen was the stored picture turned left; the user turned it
  // right again: the stored picture itself, orientation normal.
  EXPECT_EQ(OrientationOf(source), 1);
  EXPECT_LT(MeanDifference(Decoded(source), stored), kRounding);
  EXPECT_EQ(images_->CompareExifPreview(source), ExifPreview::kMatches);
}

}  // namespace
}  // namespace qbpd
