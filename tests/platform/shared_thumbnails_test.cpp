#include "platform/shared_thumbnails.h"

#include "platform/image_operations.h"
#include "tests/support/bmp_writer.h"
#include "tests/support/camera_photo.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>
#include <zlib.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

TEST(SharedThumbnails, EntriesAreNamedByTheMd5OfTheFileUri) {
  // The sums were worked out apart from the program (MD5 of the URI text).
  SharedThumbnails shared("/c/thumbnails");
  EXPECT_EQ(shared.EntryPath("/tmp/x.jpg", "normal"),
            "/c/thumbnails/normal/9478120950ea845c23e08653a1bb15a4.png");
  EXPECT_EQ(ThumbnailUri("/home/ann/My Photos/\xc3\xa9t\xc3\xa9.jpg"),
            "file:///home/ann/My%20Photos/%C3%A9t%C3%A9.jpg");
  EXPECT_EQ(
      shared.EntryPath("/home/ann/My Photos/\xc3\xa9t\xc3\xa9.jpg", "large"),
      "/c/thumbnails/large/da1a5f602c0589dc1ac6984740f1b7e6.png");
  EXPECT_EQ(ThumbnailUri("relative.jpg"), "");
  EXPECT_EQ(SharedThumbnails().EntryPath("/tmp/x.jpg", "normal"), "");
}

std::string BigEndian(std::uint32_t v) {
  return {static_cast<char>(v >> 24), static_cast<char>(v >> 16),
          static_cast<char>(v >> 8), static_cast<char>(v)};
}

// A PNG as another program would write it: `width` x `height` of one
// colour with the given text chunks.
std::string ForeignPng(
    int width,
    int height,
    std::vector<double> colour,
    const std::vector<std::pair<std::string, std::string>>& text) {
  const vips::VImage image =
      vips::VImage::black(width, height,
                          vips::VImage::option()->set("bands", 3))
          .new_from_image(colour)
          .cast(VIPS_FORMAT_UCHAR);
  void* data = nullptr;
  size_t length = 0;
  image.write_to_buffer(".png", &data, &length);
  std::string png(static_cast<const char*>(data), length);
  g_free(data);
  std::string chunks;
  for (const auto& [key, value] : text) {
    const std::string body = "tEXt" + key + std::string(1, '\0') + value;
    chunks += BigEndian(static_cast<std::uint32_t>(body.size() - 4)) + body +
              BigEndian(static_cast<std::uint32_t>(
                  crc32(0, reinterpret_cast<const Bytef*>(body.data()),
                        static_cast<uInt>(body.size()))));
  }
  png.insert(33, chunks);  // after the header chunk
  return png;
}

class SharedThumbnailsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    photo_ = (dir_.path() / "photos" / "blue.jpg").string();
    fs::create_directories(dir_.path() / "photos");
    // A blue 400 x 300 photo.
    vips::VImage::black(400, 300, vips::VImage::option()->set("bands", 3))
        .new_from_image(std::vector<double>{0, 0, 255})
        .cast(VIPS_FORMAT_UCHAR)
        .jpegsave(photo_.c_str());
    root_ = (dir_.path() / "thumbnails").string();
    images_ = MakeVipsImageOperations((dir_.path() / "cache").string(),
                                      /*thumbnails_ahead=*/false, root_);
  }

  // The program's thumbnail of the photo, and its mean red and blue.
  std::pair<double, double> ThumbnailColour() {
    const std::string made = (dir_.path() / "made.jpg").string();
    EXPECT_EQ(images_->GenerateThumbnailExt(photo_, made, 85, 90), 1);
    const vips::VImage thumbnail = vips::VImage::new_from_file(made.c_str());
    EXPECT_EQ(thumbnail.width(), 85);
    EXPECT_EQ(thumbnail.height(), 64);
    return {thumbnail.extract_band(0).avg(), thumbnail.extract_band(2).avg()};
  }

  std::vector<std::pair<std::string, std::string>> GoodText() const {
    struct stat status {};
    EXPECT_EQ(::stat(photo_.c_str(), &status), 0);
    return {{"Thumb::URI", ThumbnailUri(photo_)},
            {"Thumb::MTime", std::to_string(status.st_mtim.tv_sec)},
            {"Thumb::Size", std::to_string(status.st_size)}};
  }

  void WriteEntry(const std::string& flavour, const std::string& png) {
    const std::string path = SharedThumbnails(root_).EntryPath(photo_, flavour);
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << png;
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
  }

  testing::TempDir dir_;
  std::string photo_;
  std::string root_;
  std::unique_ptr<ImageOperations> images_;
};

TEST_F(SharedThumbnailsTest, AThumbnailMadeIsWrittenForTheDesktopAlone) {
  const auto [red, blue] = ThumbnailColour();
  EXPECT_GT(blue, 200);
  const std::string entry = SharedThumbnails(root_).EntryPath(photo_, "normal");
  ASSERT_TRUE(fs::exists(entry));
  struct stat status {};
  ASSERT_EQ(::stat(entry.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  ASSERT_EQ(::stat((root_ + "/normal").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700u);
  // A PNG of the normal size, with the photo's URI and change time.
  const vips::VImage png = vips::VImage::new_from_file(entry.c_str());
  EXPECT_EQ(png.width(), 128);
  EXPECT_EQ(png.height(), 96);
  std::ifstream in(entry, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)),
                          std::istreambuf_iterator<char>());
  for (const auto& [key, value] : GoodText()) {
    EXPECT_NE(bytes.find(key + std::string(1, '\0') + value), std::string::npos)
        << key;
  }
  // Read back by the program on a second making: the same picture.
  EXPECT_GT(ThumbnailColour().second, 200);
}

TEST_F(SharedThumbnailsTest, OnlyATrustedEntryIsTaken) {
  const auto good = GoodText();
  auto with = [&good](const std::string& key, const std::string& value) {
    auto text = good;
    for (auto& [k, v] : text) {
      if (k == key) {
        v = value;
      }
    }
    return text;
  };
  const std::vector<double> red = {255, 0, 0};
  struct Case {
    const char* what;
    std::function<void()> write;
    bool taken;
  } cases[] = {
      {"a valid normal entry",
       [&] { WriteEntry("normal", ForeignPng(128, 96, red, good)); }, true},
      {"a valid large entry",
       [&] { WriteEntry("large", ForeignPng(256, 192, red, good)); }, true},
      {"another change time",
       [&] {
         WriteEntry("normal",
                    ForeignPng(128, 96, red, with("Thumb::MTime", "1")));
       },
       false},
      {"another photo's URI",
       [&] {
         WriteEntry("normal", ForeignPng(128, 96, red,
                                         with("Thumb::URI", "file:///x.jpg")));
       },
       false},
      {"another size",
       [&] {
         WriteEntry("normal",
                    ForeignPng(128, 96, red, with("Thumb::Size", "7")));
       },
       false},
      {"no URI", [&] { WriteEntry("normal", ForeignPng(128, 96, red, {})); },
       false},
      {"another shape",
       [&] { WriteEntry("normal", ForeignPng(128, 128, red, good)); }, false},
      {"smaller than the thumbnail",
       [&] { WriteEntry("normal", ForeignPng(64, 48, red, good)); }, false},
      {"larger than its folder allows",
       [&] { WriteEntry("normal", ForeignPng(256, 192, red, good)); }, false},
      {"cut short",
       [&] {
         const std::string png = ForeignPng(128, 96, red, good);
         WriteEntry("normal", png.substr(0, png.size() / 2));
       },
       false},
      {"damaged picture data",
       [&] {
         std::string png = ForeignPng(128, 96, red, good);
         // Scrambles the compressed pixels; every chunk stays in place.
         const size_t data = png.find("IDAT") + 4;
         for (size_t i = data + 2; i < data + 20 && i + 4 < png.size(); ++i) {
           png[i] = static_cast<char>(png[i] ^ 0x5a);
         }
         WriteEntry("normal", png);
       },
       false},
      {"writable by the group",
       [&] {
         WriteEntry("normal", ForeignPng(128, 96, red, good));
         fs::permissions(SharedThumbnails(root_).EntryPath(photo_, "normal"),
                         fs::perms::group_write, fs::perm_options::add);
       },
       false},
      {"a link to a valid entry elsewhere",
       [&] {
         const std::string elsewhere = (dir_.path() / "elsewhere.png").string();
         std::ofstream(elsewhere, std::ios::binary)
             << ForeignPng(128, 96, red, good);
         const std::string path =
             SharedThumbnails(root_).EntryPath(photo_, "normal");
         fs::create_directories(fs::path(path).parent_path());
         fs::create_symlink(elsewhere, path);
       },
       false},
      {"a failure mark only",
       [&] {
         const std::string path =
             root_ + "/fail/other-app/" +
             fs::path(SharedThumbnails(root_).EntryPath(photo_, "normal"))
                 .filename()
                 .string();
         fs::create_directories(fs::path(path).parent_path());
         std::ofstream(path, std::ios::binary)
             << ForeignPng(128, 96, red, good);
       },
       false},
  };
  for (const Case& c : cases) {
    fs::remove_all(root_);
    c.write();
    const auto [r, b] = ThumbnailColour();
    if (c.taken) {
      EXPECT_GT(r, 200) << c.what;
      EXPECT_LT(b, 50) << c.what;
    } else {
      EXPECT_LT(r, 50) << c.what;
      EXPECT_GT(b, 200) << c.what;
    }
  }
}

// libvips reads no bitmaps: no entry can be checked against one, and it
// still gets its thumbnail and its entry.
TEST_F(SharedThumbnailsTest, ABitmapPhotoIsMadeAndWritten) {
  const std::string bitmap = (dir_.path() / "photos" / "green.bmp").string();
  std::ofstream(bitmap, std::ios::binary) << testing::EncodeBmp(
      testing::BmpLayout(400, 300), [](int, int) { return 0x00ff00u; });
  const std::string made = (dir_.path() / "made.jpg").string();
  ASSERT_EQ(images_->GenerateThumbnailExt(bitmap, made, 85, 90), 1);
  EXPECT_TRUE(fs::exists(SharedThumbnails(root_).EntryPath(bitmap, "normal")));
  // A second making reads no entry and gives the same.
  ASSERT_EQ(images_->GenerateThumbnailExt(bitmap, made, 85, 90), 1);
  EXPECT_GT(vips::VImage::new_from_file(made.c_str()).extract_band(1).avg(),
            200);
}

// A camera photo whose preview still holds: its thumbnail and the shared
// entry are made from the preview, at the entry's size and then the
// program's, and both show the photo.
TEST_F(SharedThumbnailsTest, ACameraPhotosPreviewGivesBothPictures) {
  const std::string camera = (dir_.path() / "photos" / "camera.jpg").string();
  ASSERT_TRUE(testing::WriteCameraPhoto(camera, 1200, 900, 2, 6,
                                        testing::CameraPreview::kGood));
  const std::string made = (dir_.path() / "made.jpg").string();
  ASSERT_EQ(images_->GenerateThumbnailExt(camera, made, 85, 90), 1);
  const vips::VImage own = vips::VImage::thumbnail(
      camera.c_str(), 85, vips::VImage::option()->set("height", 85));
  const vips::VImage mine = vips::VImage::new_from_file(made.c_str());
  ASSERT_EQ(mine.width(), own.width());
  ASSERT_EQ(mine.height(), own.height());
  EXPECT_LT(
      (mine.cast(VIPS_FORMAT_FLOAT) - own.cast(VIPS_FORMAT_FLOAT)).abs().avg(),
      6.0);
  const vips::VImage entry = vips::VImage::new_from_file(
      SharedThumbnails(root_).EntryPath(camera, "normal").c_str());
  EXPECT_EQ(entry.width(), 96);  // upright: the photo stands on its side
  EXPECT_EQ(entry.height(), 128);
}

}  // namespace
}  // namespace qbpd
