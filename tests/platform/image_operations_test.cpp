#include "platform/image_operations.h"

#include "platform/whole_decode_mark.h"
#include "tests/support/bmp_writer.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;
using testing::TempDir;

constexpr int kSize = 85;
constexpr int kQuality = 70;
constexpr std::uint32_t kRed = 0xC81E1E;
constexpr std::uint32_t kBlue = 0x1E1EC8;

// The test photo: the top half red, the bottom half blue, with a little
// noise so that JPEG quality makes a difference to the file size.
std::vector<std::uint8_t> PhotoPixels(int width, int height) {
  std::vector<std::uint8_t> rgb(static_cast<std::size_t>(width) * height * 3);
  std::uint32_t noise = 12345;
  for (int y = 0; y < height; ++y) {
    const std::uint32_t colour = y < height / 2 ? kRed : kBlue;
    for (int x = 0; x < width; ++x) {
      for (int c = 0; c < 3; ++c) {
        noise = noise * 1103515245 + 12345;
        const int base = static_cast<int>((colour >> (16 - 8 * c)) & 0xFF);
        const int value = base + static_cast<int>((noise >> 16) % 31) - 15;
        rgb[(static_cast<std::size_t>(y) * width + x) * 3 + c] =
            static_cast<std::uint8_t>(value);
      }
    }
  }
  return rgb;
}

// Writes the test photo as `path`, its kind taken from the extension;
// a nonzero `orientation` is stored as the EXIF orientation tag.
void WritePhoto(const fs::path& path,
                int width,
                int height,
                int orientation = 0,
                int quality = 90) {
  std::vector<std::uint8_t> rgb = PhotoPixels(width, height);
  const std::string ext = path.extension().string();
  if (ext == ".bmp") {
    std::ofstream out(path, std::ios::binary);
    out << testing::EncodeBmp(
        testing::BmpLayout(width, height), [&](int x, int y) {
          const std::uint8_t* p =
              &rgb[(static_cast<std::size_t>(y) * width + x) * 3];
          return static_cast<std::uint32_t>(p[0] << 16 | p[1] << 8 | p[2]);
        });
    return;
  }
  vips::VImage image =
      vips::VImage::new_from_memory(rgb.data(), rgb.size(), width, height, 3,
                                    VIPS_FORMAT_UCHAR)
          .copy(vips::VImage::option()->set("interpretation",
                                            VIPS_INTERPRETATION_sRGB));
  if (orientation != 0) {
    image.set("orientation", orientation);
  }
  if (ext == ".jpg") {
    image.jpegsave(path.c_str(), vips::VImage::option()->set("Q", quality));
  } else if (ext == ".png") {
    image.pngsave(path.c_str());
  } else if (ext == ".tif") {
    image.tiffsave(path.c_str());
  } else {
    FAIL() << "no writer for " << path;
  }
}

// A decoded thumbnail file, checked to be a JPEG.
vips::VImage LoadJpeg(const fs::path& path) {
  const std::string bytes = ReadFile(path);
  const char* loader =
      vips_foreign_find_load_buffer(bytes.data(), bytes.size());
  EXPECT_NE(loader, nullptr) << path;
  if (loader == nullptr) {
    vips_error_clear();
    return vips::VImage::black(1, 1);
  }
  EXPECT_STREQ(vips_nickname_find(g_type_from_name(loader)), "jpegload_buffer");
  return vips::VImage::new_from_buffer(bytes.data(), bytes.size(), "")
      .copy_memory();
}

// True when the pixel at (x, y) is within 40 of `colour` in each channel
// (the thumbnail is lossy and the photo noisy).
bool Near(const vips::VImage& image, int x, int y, std::uint32_t colour) {
  const std::vector<double> pixel = image.getpoint(x, y);
  for (int c = 0; c < 3; ++c) {
    const double want = static_cast<double>((colour >> (16 - 8 * c)) & 0xFF);
    if (pixel.size() < 3 || std::abs(pixel[c] - want) > 40) {
      return false;
    }
  }
  return true;
}

std::set<std::string> Names(const fs::path& folder) {
  std::set<std::string> names;
  if (fs::is_directory(folder)) {
    for (const auto& entry : fs::directory_iterator(folder)) {
      names.insert(entry.path().filename().string());
    }
  }
  return names;
}

class ImageOperationsTest : public ::testing::Test {
 protected:
  ImageOperationsTest()
      : cache_(temp_ / "cache"), images_(MakeVipsImageOperations(cache_)) {
    fs::create_directories(photos());
    fs::create_directories(thumbs());
  }

  fs::path photos() const { return temp_ / "photos"; }
  fs::path thumbs() const { return temp_ / "thumbs"; }

  // The cached thumbnail of `photo`; "" when none could be made.
  std::string Cached(const fs::path& photo) {
    std::string buffer(1000, ' ');
    if (images_->GenerateThumbnailAndBuffer(photo.string(), buffer, kSize,
                                            kQuality) != 1) {
      return "";
    }
    return buffer;
  }

  TempDir temp_;
  std::string cache_;
  std::unique_ptr<ImageOperations> images_;
};

TEST_F(ImageOperationsTest, ThumbnailsEveryKindWithinSizeKeepingAspect) {
  struct Case {
    const char* name;
    int width, height;
    int thumb_width, thumb_height;
  };
  const Case cases[] = {
      {"landscape.jpg", 400, 300, 85, 64},
      {"portrait.jpg", 300, 400, 64, 85},
      {"landscape.png", 400, 300, 85, 64},
      {"landscape.tif", 400, 300, 85, 64},
      {"landscape.bmp", 400, 300, 85, 64},
      // A large bitmap goes through the shrinking reader.
      {"large.bmp", 1700, 1000, 85, 50},
      {"portrait.bmp", 301, 401, 64, 85},
      // Smaller than the thumbnail: never enlarged.
      {"small.jpg", 60, 40, 60, 40},
      {"small.bmp", 60, 40, 60, 40},
      // Odd characters, spaces and brackets in the name are a plain path.
      {"Ferien [1] & Strand é.png", 200, 100, 85, 43},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const fs::path source = photos() / c.name;
    WritePhoto(source, c.width, c.height);
    const fs::path thumbnail = thumbs() / (std::string(c.name) + ".jpg");
    ASSERT_EQ(images_->GenerateThumbnailExt(source, thumbnail, kSize, kQuality),
              1);
    const vips::VImage image = LoadJpeg(thumbnail);
    EXPECT_EQ(image.width(), c.thumb_width);
    EXPECT_EQ(image.height(), c.thumb_height);
    ASSERT_EQ(image.bands(), 3);
    // Right way up, colours in their places.
    EXPECT_TRUE(Near(image, image.width() / 2, 2, kRed));
    EXPECT_TRUE(Near(image, image.width() / 2, image.height() - 3, kBlue));
  }
}

TEST_F(ImageOperationsTest, HonoursExifOrientationAndStripsMetadata) {
  // Stored landscape, red on top; orientation 6 turns it a quarter clockwise
  // for display, so the red half ends on the right.
  const fs::path source = photos() / "turned.jpg";
  WritePhoto(source, 400, 200, /*orientation=*/6);
  const fs::path thumbnail = thumbs() / "turned.jpg.jpg";
  ASSERT_EQ(images_->GenerateThumbnailExt(source, thumbnail, kSize, kQuality),
            1);
  const vips::VImage image = LoadJpeg(thumbnail);
  EXPECT_EQ(image.height(), 85);
  EXPECT_LT(image.width(), 45);
  EXPECT_TRUE(Near(image, image.width() - 3, image.height() / 2, kRed));
  EXPECT_TRUE(Near(image, 2, image.height() / 2, kBlue));
  EXPECT_EQ(image.get_typeof("exif-data"), 0u);
  EXPECT_EQ(image.get_typeof("orientation"), 0u);
}

TEST_F(ImageOperationsTest, FlattensTransparencyAndNarrowsDeepColour) {
  std::vector<std::uint8_t> rgb = PhotoPixels(200, 100);
  const vips::VImage photo =
      vips::VImage::new_from_memory(rgb.data(), rgb.size(), 200, 100, 3,
                                    VIPS_FORMAT_UCHAR)
          .copy(vips::VImage::option()->set("interpretation",
                                            VIPS_INTERPRETATION_sRGB));
  // The top half fully transparent: it shows white in the thumbnail.
  const vips::VImage alpha =
      (vips::VImage::xyz(200, 100)[1] >= 50).cast(VIPS_FORMAT_UCHAR);
  const fs::path transparent = photos() / "transparent.png";
  photo.bandjoin(alpha).pngsave(transparent.c_str());
  // Sixteen bits a channel.
  const fs::path deep = photos() / "deep.png";
  (photo.cast(VIPS_FORMAT_USHORT) * 257)
      .cast(VIPS_FORMAT_USHORT)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_RGB16))
      .pngsave(deep.c_str());

  ASSERT_EQ(images_->GenerateThumbnailExt(transparent, thumbs() / "t.jpg",
                                          kSize, kQuality),
            1);
  const vips::VImage flat = LoadJpeg(thumbs() / "t.jpg");
  ASSERT_EQ(flat.bands(), 3);
  EXPECT_TRUE(Near(flat, 40, 2, 0xFFFFFF));
  EXPECT_TRUE(Near(flat, 40, flat.height() - 3, kBlue));

  ASSERT_EQ(
      images_->GenerateThumbnailExt(deep, thumbs() / "d.jpg", kSize, kQuality),
      1);
  const vips::VImage narrow = LoadJpeg(thumbs() / "d.jpg");
  EXPECT_EQ(narrow.format(), VIPS_FORMAT_UCHAR);
  EXPECT_TRUE(Near(narrow, 40, 2, kRed));
  EXPECT_TRUE(Near(narrow, 40, narrow.height() - 3, kBlue));
}

TEST_F(ImageOperationsTest, QualityParameterChangesTheEncoding) {
  const fs::path source = photos() / "noisy.png";
  WritePhoto(source, 800, 600);
  ASSERT_EQ(
      images_->GenerateThumbnailExt(source, thumbs() / "q70.jpg", kSize, 70),
      1);
  ASSERT_EQ(
      images_->GenerateThumbnailExt(source, thumbs() / "q95.jpg", kSize, 95),
      1);
  EXPECT_LT(fs::file_size(thumbs() / "q70.jpg"),
            fs::file_size(thumbs() / "q95.jpg"));
}

TEST_F(ImageOperationsTest, ReplacesAnExistingThumbnailOnlyOnSuccess) {
  const fs::path thumbnail = thumbs() / "a.jpg.jpg";
  std::ofstream(thumbnail) << "old thumbnail";
  // A broken photo leaves the previous thumbnail as it was.
  const fs::path broken = photos() / "broken.jpg";
  std::ofstream(broken) << "no picture";
  EXPECT_EQ(images_->GenerateThumbnailExt(broken, thumbnail, kSize, kQuality),
            0);
  EXPECT_EQ(ReadFile(thumbnail), "old thumbnail");

  const fs::path source = photos() / "a.jpg";
  WritePhoto(source, 200, 150);
  ASSERT_EQ(images_->GenerateThumbnailExt(source, thumbnail, kSize, kQuality),
            1);
  EXPECT_EQ(LoadJpeg(thumbnail).width(), 85);
  EXPECT_EQ(Names(thumbs()), std::set<std::string>{"a.jpg.jpg"});
}

TEST_F(ImageOperationsTest, RefusesBadInputLeavingNothingBehind) {
  // A good photo to cut and patch.
  WritePhoto(photos() / "good.jpg", 64, 48);
  const std::string jpeg = ReadFile(photos() / "good.jpg");
  // The start-of-frame marker holds the height and width after its length
  // and precision bytes.
  std::string huge = jpeg;
  const std::size_t sof = huge.find("\xFF\xC0");
  ASSERT_NE(sof, std::string::npos);
  const char kDimensions[] = {0x4E, 0x20, 0x4E, 0x20};  // 20000 x 20000
  huge.replace(sof + 5, 4, kDimensions, 4);

  std::string random_bytes;
  std::uint32_t state = 99;
  for (int i = 0; i < 5000; ++i) {
    state = state * 1664525 + 1013904223;
    random_bytes.push_back(static_cast<char>(state >> 24));
  }
  // A bitmap header claiming 20000 x 20000 pixels (width at 18, height at
  // 22) over the rows of a 4 x 4 one.
  std::string bmp_huge =
      testing::EncodeBmp(testing::BmpLayout(4, 4), [](int, int) { return 0u; });
  for (const std::size_t offset : {18u, 22u}) {
    bmp_huge.replace(offset, 4, std::string("\x20\x4E\0\0", 4));
  }
  // A complete, valid photo just above 256 megapixels; black at one bit a
  // pixel keeps the file small.
  const fs::path huge_png = photos() / "huge.png";
  vips::VImage::black(16400, 16400)
      .pngsave(huge_png.c_str(), vips::VImage::option()->set("bitdepth", 1));
  // A photo the program has no use for: a portable pixmap made by libvips.
  const fs::path ppm = photos() / "other.ppm";
  vips::VImage::black(20, 20).ppmsave(ppm.c_str());

  struct Case {
    const char* name;
    std::string bytes;
  };
  const Case cases[] = {
      {"empty.jpg", ""},
      {"truncated.jpg", jpeg.substr(0, jpeg.size() * 2 / 3)},
      {"header-only.jpg", jpeg.substr(0, 200)},
      {"random.jpg", random_bytes},
      {"text.png", "this is a text file, not a picture\n"},
      {"jpeg-then-garbage.jpg", jpeg.substr(0, 3) + random_bytes},
      {"huge.jpg", huge},
      {"huge.bmp", bmp_huge},
      {"huge.png", ReadFile(huge_png)},
      {"other.jpg", ReadFile(ppm)},
  };
  fs::remove(ppm);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const fs::path source = photos() / c.name;
    std::ofstream(source, std::ios::binary) << c.bytes;
    const std::set<std::string> before = Names(photos());
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(images_->GenerateThumbnailExt(source, thumbs() / "out.jpg", kSize,
                                            kQuality),
              0);
    EXPECT_EQ(Cached(source), "");
    // Nothing on the terminal either.
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(Names(thumbs()).empty());
    EXPECT_TRUE(Names(cache_).empty());
    EXPECT_EQ(Names(photos()), before);
  }
  // No file at all, a folder, and a target folder that does not exist.
  EXPECT_EQ(
      images_->GenerateThumbnailExt(photos() / "missing.jpg",
                                    thumbs() / "out.jpg", kSize, kQuality),
      0);
  EXPECT_EQ(images_->GenerateThumbnailExt(photos(), thumbs() / "out.jpg", kSize,
                                          kQuality),
            0);
  EXPECT_EQ(
      images_->GenerateThumbnailExt(
          photos() / "good.jpg", temp_ / "gone" / "out.jpg", kSize, kQuality),
      0);
  EXPECT_FALSE(fs::exists(temp_ / "gone"));
  EXPECT_EQ(Cached(photos()), "");
  EXPECT_TRUE(Names(thumbs()).empty());
}

TEST_F(ImageOperationsTest, CacheHitReturnsTheSameFileWithoutRewriting) {
  const fs::path photo = photos() / "cat.jpg";
  WritePhoto(photo, 300, 200);
  const std::string first = Cached(photo);
  ASSERT_NE(first, "");
  EXPECT_TRUE(first.ends_with(".qpd"));
  EXPECT_EQ(fs::path(first).parent_path(), fs::path(cache_));
  EXPECT_EQ(LoadJpeg(first).width(), 85);
  // The cache folder is private to the user.
  EXPECT_EQ(fs::status(cache_).permissions(), fs::perms::owner_all);

  // An old time on the entry shows whether a hit writes it again.
  const auto old_time = fs::last_write_time(first) - std::chrono::hours(24);
  fs::last_write_time(first, old_time);
  EXPECT_EQ(Cached(photo), first);
  EXPECT_EQ(fs::last_write_time(first), old_time);
  // A relative spelling of the same photo finds the same entry.
  const fs::path cwd = fs::current_path();
  fs::current_path(photos());
  EXPECT_EQ(Cached("./../photos/cat.jpg"), first);
  fs::current_path(cwd);

  // Touching the photo makes a new entry and drops the stale one.
  fs::last_write_time(photo,
                      fs::last_write_time(photo) + std::chrono::seconds(5));
  const std::string second = Cached(photo);
  ASSERT_NE(second, "");
  EXPECT_NE(second, first);
  EXPECT_FALSE(fs::exists(first));
  EXPECT_EQ(Names(cache_).size(), 1u);
}

TEST_F(ImageOperationsTest, DeletesThumbnailsOfOnePhotoOrOneFolder) {
  const fs::path other = temp_ / "other";
  fs::create_directories(other / "sub");
  const fs::path a = photos() / "a.jpg";
  const fs::path b = photos() / "b.png";
  const fs::path c = other / "c.jpg";
  const fs::path d = other / "sub" / "d.jpg";
  for (const fs::path& photo : {a, b, c, d}) {
    WritePhoto(photo, 120, 90);
  }
  const std::string ta = Cached(a), tb = Cached(b), tc = Cached(c),
                    td = Cached(d);
  ASSERT_EQ(Names(cache_).size(), 4u);

  EXPECT_EQ(images_->DeleteThumbnailFile(a.string()), 1);
  EXPECT_FALSE(fs::exists(ta));
  EXPECT_TRUE(fs::exists(tb));
  EXPECT_EQ(images_->DeleteThumbnailFile(a.string()), 0);

  // Only photos directly in the folder go, however the folder is written.
  EXPECT_EQ(images_->DeleteThumbnailFolder(other.string() + "/"), 1);
  EXPECT_FALSE(fs::exists(tc));
  EXPECT_TRUE(fs::exists(td));
  EXPECT_TRUE(fs::exists(tb));
  EXPECT_EQ(images_->DeleteThumbnailFolder(other.string()), 0);

  // A new thumbnail is made after its entry was dropped.
  EXPECT_EQ(Cached(a), ta);
  EXPECT_TRUE(fs::exists(ta));
}

// Thumbnails made ahead on the second core are the ones made in turn: for
// every photo of a folder (a changed one, a broken one, one the cache holds
// among them), in both the plain and the cached way.
TEST_F(ImageOperationsTest, ThumbnailsMadeAheadAreTheOnesMadeInTurn) {
  std::vector<std::string> sources;
  for (int i = 0; i < 7; ++i) {
    const fs::path photo = photos() / ("p" + std::to_string(i) + ".jpg");
    WritePhoto(photo, 300 + 20 * i, 200);
    sources.push_back(photo.string());
  }
  std::ofstream(photos() / "p7.jpg") << "not a photo";
  sources.push_back((photos() / "p7.jpg").string());
  const auto plain = MakeVipsImageOperations((temp_ / "cache-plain").string());
  std::vector<std::string> expected;
  for (const std::string& source : sources) {
    const fs::path target = thumbs() / "expected.jpg";
    fs::remove(target);
    plain->GenerateThumbnailExt(source, target.string(), kSize, kQuality);
    expected.push_back(fs::exists(target) ? ReadFile(target) : "");
  }

  images_->PrepareThumbnails(sources, kSize, kQuality);
  // The photo made ahead first changes before it is asked for: its new
  // picture is the one given.
  WritePhoto(sources[1], 500, 100);
  const fs::path changed = thumbs() / "changed.jpg";
  plain->GenerateThumbnailExt(sources[1], changed.string(), kSize, kQuality);
  expected[1] = ReadFile(changed);
  for (std::size_t i = 0; i < sources.size(); ++i) {
    const fs::path target = thumbs() / ("t" + std::to_string(i) + ".jpg");
    const int made = images_->GenerateThumbnailExt(sources[i], target.string(),
                                                   kSize, kQuality);
    EXPECT_EQ(made, expected[i].empty() ? 0 : 1) << i;
    EXPECT_EQ(fs::exists(target) ? ReadFile(target) : "", expected[i]) << i;
  }

  // The cached way, one thumbnail already in the cache.
  const std::string held = Cached(sources[3]);
  ASSERT_FALSE(held.empty());
  images_->PrepareThumbnails(sources, kSize, kQuality);
  for (std::size_t i = 0; i + 1 < sources.size(); ++i) {
    const std::string entry = Cached(sources[i]);
    ASSERT_FALSE(entry.empty()) << i;
    // The cache's own entries may carry the whole-decode mark besides.
    const std::string bytes = ReadFile(entry);
    const std::vector<std::uint8_t> picture = WithoutWholeDecodeMark(
        std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
    EXPECT_EQ(std::string(picture.begin(), picture.end()), expected[i]) << i;
  }
  EXPECT_EQ(Cached(sources[3]), held);
  EXPECT_EQ(Cached(sources.back()), "");
}

TEST_F(ImageOperationsTest, JpegCopiesConvertedAheadAreTheOnesMadeInTurn) {
  std::vector<std::string> sources;
  for (int i = 0; i < 3; ++i) {
    const fs::path photo = photos() / ("c" + std::to_string(i) + ".png");
    WritePhoto(photo, 320 + 40 * i, 240);
    sources.push_back(photo.string());
  }
  std::ofstream(photos() / "c3.png") << "not a photo";
  sources.push_back((photos() / "c3.png").string());
  const auto plain = MakeVipsImageOperations((temp_ / "cache-plain").string());
  const auto convert = [this](ImageOperations& images,
                              const std::string& source) {
    const fs::path target = thumbs() / "copy.jpg";
    fs::remove(target);
    const int made = images.SaveImageAsJPEG(source, target.string());
    return std::to_string(made) + (fs::exists(target) ? ReadFile(target) : "");
  };

  images_->PrepareJpegCopies(sources);
  // A photo changed after the hint goes as it is now.
  WritePhoto(sources[1], 200, 300);
  for (const std::string& source : sources) {
    EXPECT_EQ(convert(*images_, source), convert(*plain, source)) << source;
  }
  EXPECT_EQ(convert(*plain, sources.back()), "0");
  // Forgotten, or never hinted: converted in turn.
  images_->PrepareJpegCopies(sources);
  images_->PrepareJpegCopies({});
  EXPECT_EQ(convert(*images_, sources[2]), convert(*plain, sources[2]));
}

}  // namespace
}  // namespace qbpd
