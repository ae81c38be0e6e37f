#include "platform/clipboard.h"

#include "platform/access_check.h"
#include "tests/support/bmp_writer.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <algorithm>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;
using testing::TempDir;

// Lossy JPEG round trips of flat colours stay within this many levels.
constexpr double kJpegTolerance = 3.0;

std::string WriteGreyJpeg(const fs::path& path,
                          int width,
                          int height,
                          int grey) {
  vips::VImage::black(width, height, vips::VImage::option()->set("bands", 3))
      .linear(1.0, grey)
      .cast(VIPS_FORMAT_UCHAR)
      .jpegsave(path.c_str());
  return path.string();
}

// The names in `folder`, so a test can tell that no temporary file stayed.
std::vector<std::string> Names(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

class ClipboardTest : public ::testing::Test {
 protected:
  ClipboardTest() { VIPS_INIT("clipboard_test"); }
  TempDir dir_;
  std::unique_ptr<Clipboard> clipboard_ = MakeMemoryClipboard();
};

TEST_F(ClipboardTest, AnEmptyClipboardWritesNothing) {
  EXPECT_FALSE(clipboard_->HasImage());
  EXPECT_FALSE(clipboard_->WriteImageAsJpeg((dir_ / "out.jpg").string()));
  EXPECT_TRUE(Names(dir_.path()).empty());
}

TEST_F(ClipboardTest, APhotoComesBackAsARealJpegOfTheSamePicture) {
  const std::string source = WriteGreyJpeg(dir_ / "grey.jpg", 200, 120, 90);
  ASSERT_TRUE(clipboard_->SetImageFromFile(source));
  // The source may go: the clipboard holds the picture, not the file.
  fs::remove(source);
  const fs::path out = dir_ / "out.jpg";
  ASSERT_TRUE(clipboard_->WriteImageAsJpeg(out.string()));

  vips::VImage pasted = vips::VImage::new_from_file(out.c_str());
  EXPECT_STREQ(pasted.get_string("vips-loader"), "jpegload");
  EXPECT_EQ(pasted.width(), 200);
  EXPECT_EQ(pasted.height(), 120);
  EXPECT_NEAR(pasted.avg(), 90.0, kJpegTolerance);
  EXPECT_EQ(Names(dir_.path()), std::vector<std::string>{"out.jpg"});
}

TEST_F(ClipboardTest, BitmapsAndTransparentPngsArePastedAsJpegs) {
  // A bitmap is read by the program's own reader: left half white, right
  // half black.
  const fs::path bmp = dir_.WriteFile(
      "half.bmp",
      testing::EncodeBmp(testing::BmpLayout(40, 20), [](int x, int) {
        return x < 20 ? 0xFFFFFFu : 0x000000u;
      }));
  ASSERT_TRUE(clipboard_->SetImageFromFile(bmp.string()));
  const fs::path from_bmp = dir_ / "from_bmp.jpg";
  ASSERT_TRUE(clipboard_->WriteImageAsJpeg(from_bmp.string()));
  vips::VImage pasted = vips::VImage::new_from_file(from_bmp.c_str());
  EXPECT_EQ(pasted.width(), 40);
  EXPECT_GT(pasted.getpoint(5, 10)[0], 250 - kJpegTolerance);
  EXPECT_LT(pasted.getpoint(35, 10)[0], kJpegTolerance);

  // Fully transparent pixels land on white.
  const fs::path png = dir_ / "clear.png";
  vips::VImage::black(16, 16, vips::VImage::option()->set("bands", 4))
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .pngsave(png.c_str());
  ASSERT_TRUE(clipboard_->SetImageFromFile(png.string()));
  const fs::path from_png = dir_ / "from_png.jpg";
  ASSERT_TRUE(clipboard_->WriteImageAsJpeg(from_png.string()));
  vips::VImage flat = vips::VImage::new_from_file(from_png.c_str());
  EXPECT_EQ(flat.bands(), 3);
  EXPECT_NEAR(flat.avg(), 255.0, kJpegTolerance);
}

TEST_F(ClipboardTest, WhatIsNoPhotoLeavesTheHeldPictureAlone) {
  const std::string good = WriteGreyJpeg(dir_ / "good.jpg", 64, 48, 200);
  ASSERT_TRUE(clipboard_->SetImageFromFile(good));
  const fs::path text = dir_.WriteFile("note.jpg", "not really a jpeg");
  const fs::path truncated = dir_.WriteFile(
      "cut.jpg", ReadFile(good).substr(0, ReadFile(good).size() / 2));
  for (const fs::path& bad :
       {text, truncated, dir_ / "missing.jpg", dir_.path()}) {
    EXPECT_FALSE(clipboard_->SetImageFromFile(bad.string())) << bad;
  }
  EXPECT_TRUE(clipboard_->HasImage());
  const fs::path out = dir_ / "out.jpg";
  ASSERT_TRUE(clipboard_->WriteImageAsJpeg(out.string()));
  EXPECT_NEAR(vips::VImage::new_from_file(out.c_str()).avg(), 200.0,
              kJpegTolerance);
}

TEST_F(ClipboardTest, AnExistingFileIsNeverReplaced) {
  ASSERT_TRUE(clipboard_->SetImageFromFile(
      WriteGreyJpeg(dir_ / "grey.jpg", 32, 32, 50)));
  const fs::path taken = dir_.WriteFile("taken.jpg", "the user's own file");
  EXPECT_FALSE(clipboard_->WriteImageAsJpeg(taken.string()));
  EXPECT_EQ(ReadFile(taken), "the user's own file");
  // A folder that doesn't exist can't take the file; nothing is left over.
  EXPECT_FALSE(
      clipboard_->WriteImageAsJpeg((dir_ / "no" / "such.jpg").string()));
  EXPECT_EQ(Names(dir_.path()),
            (std::vector<std::string>{"grey.jpg", "taken.jpg"}));
}

// --- the write checks and moves ---------------------------------------------

TEST(AccessCheckTest, FoldersAndFilesThatMayBeWritten) {
  TempDir dir;
  const fs::path file = dir.WriteFile("a.jpg", "a");
  EXPECT_EQ(CheckAccess(dir.path().string(), kFileGenericWrite),
            kFileGenericWrite);
  EXPECT_EQ(CheckAccess(file.string(), kFileGenericWrite), kFileGenericWrite);
  EXPECT_EQ(CheckAccess((dir / "missing").string(), kFileGenericWrite), 0);
  EXPECT_EQ(CheckAccess("", kFileGenericWrite), 0);
}

TEST(AccessCheckTest, AFolderWithoutWritePermissionIsRefused) {
  if (::geteuid() == 0) {
    GTEST_SKIP() << "the superuser may write into any folder";
  }
  TempDir dir;
  fs::create_directory(dir / "locked");
  fs::permissions(dir / "locked",
                  fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(CheckAccess((dir / "locked").string(), kFileGenericWrite), 0);
  fs::permissions(dir / "locked", fs::perms::owner_all);
}

TEST(AccessCheckTest, ReadOnlyFilesAreToldAndStillDeletedByForce) {
  TempDir dir;
  const fs::path locked = dir.WriteFile("locked.jpg", "x");
  const fs::path open = dir.WriteFile("open.jpg", "x");
  ::chmod(locked.c_str(), 0444);
  EXPECT_TRUE(IsReadOnlyFile(locked.string()));
  EXPECT_FALSE(IsReadOnlyFile(open.string()));
  EXPECT_FALSE(IsReadOnlyFile(dir.path().string()));
  EXPECT_FALSE(IsReadOnlyFile((dir / "missing.jpg").string()));

  EXPECT_TRUE(ForceDeleteFile(locked.string()).ok());
  EXPECT_FALSE(fs::exists(locked));
  EXPECT_FALSE(ForceDeleteFile(locked.string()).ok());
  FileResult folder = ForceDeleteFile(dir.path().string());
  EXPECT_FALSE(folder.ok());
  EXPECT_TRUE(fs::exists(dir.path()));
}

TEST(AccessCheckTest, AMoveNeverReplacesAnotherFile) {
  TempDir dir;
  const fs::path a = dir.WriteFile("a.jpg", "photo a");
  const fs::path b = dir.WriteFile("b.jpg", "photo b");
  FileResult refused = MoveFileNoReplace(a.string(), b.string());
  EXPECT_FALSE(refused.ok());
  EXPECT_NE(refused.error.find("exists"), std::string::npos) << refused.error;
  EXPECT_EQ(ReadFile(a), "photo a");
  EXPECT_EQ(ReadFile(b), "photo b");

  // Names that differ in case only are different files here.
  ASSERT_TRUE(MoveFileNoReplace(a.string(), (dir / "B.jpg").string()).ok());
  EXPECT_FALSE(fs::exists(a));
  EXPECT_EQ(ReadFile(dir / "B.jpg"), "photo a");
  EXPECT_EQ(ReadFile(b), "photo b");
  EXPECT_FALSE(
      MoveFileNoReplace((dir / "gone.jpg").string(), (dir / "c.jpg").string())
          .ok());
}

}  // namespace
}  // namespace qbpd
