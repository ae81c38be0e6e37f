// The folder tree shows the folder of the photos on show, however they came:
// a start with a photo, a photo handed over by a second start, a recent
// folder.
#include "core/quil_mod.h"
#include "platform/forms/user_input.h"
#include "tests/browser/main_window_fixture.h"

#include <filesystem>
#include <string>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

class TreeFollowsTest : public testing_support::MainWindowTest {
 protected:
  // A second folder with two photos, beside the default one.
  std::string MakeOtherFolder() {
    WritePhoto("../Trip/t1.jpg", 64, 48, 50);
    WritePhoto("../Trip/t2.jpg", 64, 48, 90);
    return fs::canonical(photos() / ".." / "Trip").string();
  }
  const std::string& TreeFolder() {
    return main().ExpTreeView.SelectedFolder();
  }
};

TEST_F(TreeFollowsTest, AStartWithAPhotoShowsItsFolderInTheTree) {
  WritePhoto("a.jpg");
  const std::string trip = MakeOtherFolder();
  Start("\"" + trip + "/t2.jpg\"");
  EXPECT_EQ(main().ctlDisplayImage.PhotoPath(), trip + "/t2.jpg");
  EXPECT_EQ(TreeFolder(), trip + "/");
  // The tree's click on the way loaded nothing of its own.
  EXPECT_EQ(session().gsSelectedImage, trip + "/t2.jpg");
  EXPECT_TRUE(Messages().empty());
}

TEST_F(TreeFollowsTest, APhotoHandedOverShowsItsFolderInTheTree) {
  WritePhoto("a.jpg");
  const std::string trip = MakeOtherFolder();
  Start();
  ASSERT_EQ(TreeFolder(), photos().string() + "/");
  // A second start wrote the photo and restored the minimised window.
  WriteCommandImage(app(), trip + "/t1.jpg");
  main().SetWindowState(kWindowMinimized);
  main().SetWindowState(kWindowNormal);
  host().Run();
  host().Advance(500);
  EXPECT_EQ(main().ctlDisplayImage.PhotoPath(), trip + "/t1.jpg");
  EXPECT_EQ(TreeFolder(), trip + "/");
  EXPECT_EQ(session().gsSelectedImage, trip + "/t1.jpg");
  EXPECT_TRUE(session().gsCommandLine.empty());
}

TEST_F(TreeFollowsTest, ARecentFolderShowsInTheTree) {
  WritePhoto("a.jpg");
  const std::string trip = MakeOtherFolder();
  Start();
  user::SelectFolder(main().ExpTreeView, trip + "/");
  host().Advance(500);
  ASSERT_EQ(session().gdicPhotoList.Count(), 2);
  // The default folder is the older of the two recent folders.
  Menu* older = nullptr;
  std::string tags;
  for (int i = 0; i < 5; ++i) {
    if (main().mnuFRecFolders.Exists(i)) {
      tags += main().mnuFRecFolders[i].Tag() + ";";
      // The entry's folder, with or without its final separator.
      std::string tag = main().mnuFRecFolders[i].Tag();
      if (tag == photos().string() || tag == photos().string() + "/") {
        older = &main().mnuFRecFolders[i];
      }
    }
  }
  ASSERT_NE(older, nullptr) << tags;
  user::PickMenu(*older);
  host().Advance(500);
  EXPECT_EQ(TreeFolder(), photos().string() + "/");
  EXPECT_EQ(session().gdicPhotoList.Count(), 1);
}

}  // namespace
}  // namespace qbpd
