// The thumbnail files of photos listed from several folders: two photos of
// one name (every camera names its photos alike) must not share one, and a
// photo changed since gets a new one.
#include "core/quil_mod.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace qbpd {
namespace {

TEST(PhotoThumbnailFileTest, OneNameInTwoFoldersAndAChangedPhoto) {
  testing::TempDir dir;
  const std::string first =
      dir.WriteFile("trip/IMG_0001.JPG", "first").string();
  const std::string second =
      dir.WriteFile("party/IMG_0001.JPG", "second").string();
  const std::string thumbnails = (dir / "thumbnails").string() + "/";

  const std::string a = PhotoThumbnailFile(thumbnails, first);
  EXPECT_EQ(a.rfind(thumbnails + "IMG_0001.JPG.", 0), 0u) << a;
  EXPECT_EQ(a.substr(a.size() - 4), ".jpg");
  EXPECT_NE(a, PhotoThumbnailFile(thumbnails, second));
  // The same photo, asked again: the same file, so it is made once.
  EXPECT_EQ(a, PhotoThumbnailFile(thumbnails, first));

  // Rewritten (rotated, corrected): its thumbnail is made anew.
  std::ofstream(first, std::ios::trunc) << "first, turned";
  EXPECT_NE(a, PhotoThumbnailFile(thumbnails, first));
}

}  // namespace
}  // namespace qbpd
