#include "core/quil_mod.h"
#include "platform/forms/user_input.h"
#include "tests/browser/main_window_fixture.h"

#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

constexpr char kDeleteCurrent[] =
    "Do you want to permanently delete the current photo?";
constexpr char kDeleteSelected[] =
    "Do you want to permanently delete the selected photo(s)?";

// The photos of these tests are written in one go, so the folder's order
// (which the file system chooses) decides their indexes: tests find a
// photo's path by its index rather than assume one.
class FileOperationsTest : public testing_support::MainWindowTest {
 protected:
  void StartWith(int count) {
    for (int i = 0; i < count; ++i) {
      WritePhoto("p" + std::to_string(i) + ".jpg", 64, 48, 40 + 30 * i);
    }
    Start();
    ASSERT_EQ(session().gdicPhotoList.Count(), count);
  }
  std::string PathOf(int index) { return session().gdicPhotoList.Item(index); }
  Thumbnail& thumb(int i) { return main().ctrlQuilImage[i]; }
  void Tick(int i) { user::SetCheck(thumb(i), true); }
  void MakeReadOnly(const std::string& path) {
    fs::permissions(path, fs::perms::owner_read | fs::perms::group_read |
                              fs::perms::others_read);
  }
  bool InRecentFolders(std::string folder) {
    if (!folder.empty() && folder.back() == '/') {
      folder.pop_back();
    }
    const auto& recent = main().RecentFolders();
    for (int i = 1; i <= recent.Count(); ++i) {
      if (recent.Item(i) == folder) {
        return true;
      }
    }
    return false;
  }
  // Opens the trash button's pop-up and picks `entry`, checking on the way
  // that both entries are offered.
  void PickFromTrashPopup(Menu& entry) {
    host().QueuePopupPick("trash", [this, &entry](Menu&) {
      EXPECT_TRUE(main().mnuEDelSingle.Enabled());
      EXPECT_TRUE(main().mnuEDelMultiple.Enabled());
      user::PickMenu(entry);
    });
  }
};

// --- deleting the photo on display -------------------------------------------

TEST_F(FileOperationsTest, DeletingThePhotoOnDisplayAsksAndHonoursTheAnswer) {
  StartWith(3);
  const std::string first = PathOf(0);

  Answer(kIdNo);
  user::Click(main().imgTrash);
  EXPECT_TRUE(fs::exists(first));
  EXPECT_EQ(session().gdicPhotoList.Count(), 3);

  // No left nothing busy behind: the next delete asks again.
  Answer(kIdYes);
  user::Click(main().imgTrash);
  EXPECT_EQ(Messages(),
            (std::vector<std::string>{kDeleteCurrent, kDeleteCurrent}));
  EXPECT_EQ(host().MessageBoxes().back().style, kMbQuestionYesNo);
  EXPECT_FALSE(fs::exists(first));
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
  EXPECT_EQ(session().giPhotoCount, 2);
  EXPECT_TRUE(session().gdicDeletedIndexes.Exists(0));
  // The next photo up the list is shown, and the rest close ranks.
  EXPECT_EQ(session().giCurrentPhotoIndex, 1);
  EXPECT_EQ(session().gsSelectedImage, PathOf(1));
  EXPECT_EQ(thumb(1).PhotoIndex(), 0);
  EXPECT_EQ(thumb(1).Left(), 0);
  EXPECT_EQ(thumb(2).Left(), 1585);
  EXPECT_FALSE(thumb(0).Visible());
  EXPECT_EQ(main().lblPhotosSelect.Caption(), "0 of 2 photo(s) selected");
}

TEST_F(FileOperationsTest, ASecondDeleteWhileTheQuestionIsOpenIsIgnored) {
  StartWith(2);
  host().QueueMsgBoxAnswer("yes, after a second Ctrl+D",
                           [this](const MsgBoxCall&) {
                             user::PickMenu(main().mnuEDelSingle);
                             return kIdYes;
                           });
  user::PickMenu(main().mnuEDelSingle);
  EXPECT_EQ(Messages(), std::vector<std::string>{kDeleteCurrent});
  EXPECT_EQ(session().gdicPhotoList.Count(), 1);
}

TEST_F(FileOperationsTest, ARotationThatIsNotSavedStopsTheDelete) {
  StartWith(1);
  session().glRotationAngle = 90;
  Answer(kIdOk);
  user::Click(main().imgTrash);
  EXPECT_EQ(Messages(),
            std::vector<std::string>{"Rotated photo must be saved before "
                                     "performing delete operation."});
  EXPECT_EQ(session().gdicPhotoList.Count(), 1);
  EXPECT_TRUE(fs::exists(PathOf(0)));
}

TEST_F(FileOperationsTest, TheLastPhotoGoneEmptiesTheDisplayAndTheRecentEntry) {
  StartWith(1);
  const std::string folder = session().gsSelectedFolder;
  ASSERT_TRUE(InRecentFolders(folder));
  const std::string only = PathOf(0);
  Answer(kIdYes);
  user::Click(main().imgTrash);
  EXPECT_FALSE(fs::exists(only));
  EXPECT_EQ(session().gdicPhotoList.Count(), 0);
  EXPECT_EQ(session().giNextPhotoIndex, 0);
  EXPECT_FALSE(thumb(0).Visible());
  EXPECT_FALSE(main().ctlDisplayImage.Visible());
  EXPECT_FALSE(main().picImageText.Visible());
  EXPECT_FALSE(InRecentFolders(folder));
  EXPECT_EQ(main().lblPhotosSelect.Caption(), "No photo(s) exists");
}

// --- deleting the selection --------------------------------------------------

TEST_F(FileOperationsTest, SelectedPhotosGoOnYesAndStayTickedOnNo) {
  StartWith(4);
  Tick(1);
  Tick(2);
  const std::string one = PathOf(1);
  const std::string two = PathOf(2);

  PickFromTrashPopup(main().mnuEDelMultiple);
  Answer(kIdNo);
  user::Click(main().imgTrash);
  EXPECT_TRUE(fs::exists(one));
  EXPECT_TRUE(thumb(1).Checked());
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 2);

  PickFromTrashPopup(main().mnuEDelMultiple);
  Answer(kIdYes);
  user::Click(main().imgTrash);
  EXPECT_EQ(Messages(),
            (std::vector<std::string>{kDeleteSelected, kDeleteSelected}));
  EXPECT_FALSE(fs::exists(one));
  EXPECT_FALSE(fs::exists(two));
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
  EXPECT_EQ(session().giPhotoCount, 2);
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 0);
  EXPECT_FALSE(main().ctrlQuilImage.Exists(1));
  // Photo 3 moves up beside photo 0, which stays on display.
  EXPECT_EQ(thumb(3).PhotoIndex(), 1);
  EXPECT_EQ(thumb(3).Left(), 1585);
  EXPECT_EQ(thumb(3).Top(), 100);
  EXPECT_EQ(session().giCurrentPhotoIndex, 0);
  EXPECT_EQ(main().picImagelistInnerCont.Height(), 1585);
  EXPECT_EQ(main().lblPhotosSelect.Caption(), "0 of 2 photo(s) selected");
}

TEST_F(FileOperationsTest, NoToAReadOnlyPhotoKeepsItTickedAndGoesOn) {
  StartWith(3);
  Tick(1);
  Tick(2);
  const std::string locked = PathOf(1);
  const std::string open = PathOf(2);
  MakeReadOnly(locked);
  PickFromTrashPopup(main().mnuEDelMultiple);
  Answer(kIdYes);
  Answer(kIdNo);
  user::Click(main().imgTrash);
  EXPECT_EQ(Messages(),
            (std::vector<std::string>{kDeleteSelected,
                                      "The file '" + locked +
                                          "' is a read-only file. Do you want "
                                          "to delete?"}));
  EXPECT_TRUE(fs::exists(locked));
  EXPECT_FALSE(fs::exists(open));
  EXPECT_TRUE(session().gdicSelectedPhotos.Exists(1));
  EXPECT_TRUE(thumb(1).Checked());
  EXPECT_EQ(thumb(1).Tag(), "C");
  EXPECT_EQ(main().lblPhotosSelect.Caption(), "1 of 2 photo(s) selected");
}

TEST_F(FileOperationsTest, TheSelectionWithThePhotoOnDisplayMovesTheDisplay) {
  StartWith(3);
  Tick(0);
  Tick(1);
  const std::string kept = PathOf(2);
  PickFromTrashPopup(main().mnuEDelMultiple);
  Answer(kIdYes);
  user::Click(main().imgTrash);
  ASSERT_EQ(session().gdicPhotoList.Count(), 1);
  EXPECT_EQ(session().giCurrentPhotoIndex, 2);
  EXPECT_EQ(session().gsSelectedImage, kept);
  EXPECT_EQ(thumb(2).PhotoIndex(), 0);
  EXPECT_EQ(thumb(2).Left(), 0);
  // The panel follows the load's rule: one photo is half a row more than
  // none, kept to the half twip.
  EXPECT_EQ(main().picImagelistInnerCont.Height(), 2377.5);
}

TEST_F(FileOperationsTest, TheTrashGoesStraightToTheCurrentPhotoWithoutOthers) {
  StartWith(2);
  // The photo on display is the only one selected: no pop-up.
  Tick(0);
  Answer(kIdNo);
  user::Click(main().imgTrash);
  EXPECT_EQ(Messages(), std::vector<std::string>{kDeleteCurrent});
  EXPECT_FALSE(main().mnuEDelMultiple.Enabled());
}

// --- a new photo placed behind the one it came from
// ---------------------------

TEST_F(FileOperationsTest, ACopyPlacedBehindItsPhotoShiftsTheRestAndTheTicks) {
  StartWith(4);
  Tick(2);
  const std::vector<std::string> before = session().gdicPhotoList.Items();
  const std::string copy = WritePhoto("copy.jpg", 64, 48, 10);

  main().arrangethenewlyaddedcontrol(1, copy);

  const std::vector<std::string> expected = {before[0], before[1], copy,
                                             before[2], before[3]};
  EXPECT_EQ(session().gdicPhotoList.Items(), expected);
  EXPECT_EQ(session().gdicPhotoList.Keys(), (std::vector<int>{0, 1, 2, 3, 4}));
  // The tick moves with its photo.
  EXPECT_EQ(session().gdicSelectedPhotos.Keys(), std::vector<int>{3});
  EXPECT_EQ(session().gdicSelectedPhotos.Item(3), before[2]);
  EXPECT_TRUE(thumb(3).Checked());
  EXPECT_FALSE(thumb(2).Checked());
  EXPECT_EQ(session().giPhotoCount, 5);
  EXPECT_EQ(session().giNextPhotoIndex, 5);
  // Every control shows the photo of its index, in its place.
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(thumb(i).PhotoPath(), expected[i]) << i;
    EXPECT_EQ(thumb(i).Left(), i % 2 == 1 ? 1585 : 0) << i;
    EXPECT_EQ(thumb(i).Top(), (i / 2) * 1555 + 100) << i;
  }
  EXPECT_EQ(main().picImagelistInnerCont.Height(), 3 * 1585);
  // The copy is the photo on display.
  EXPECT_EQ(session().giCurrentPhotoIndex, 2);
  EXPECT_EQ(session().gsSelectedImage, copy);
  EXPECT_TRUE(Messages().empty());
}

// --- copy and paste
// -----------------------------------------------------------

TEST_F(FileOperationsTest, PasteTakesTheFirstFreeUntitledNameAndMakesAJpeg) {
  WritePhoto("Untitled(1).jpg", 64, 48, 20);
  WritePhoto("Untitled(2).jpg", 64, 48, 20);
  WritePhoto("source.jpg", 120, 80, 200);
  Start();
  ASSERT_EQ(session().gdicPhotoList.Count(), 3);
  int source = 0;
  while (FileNamePart(PathOf(source)) != "source.jpg") {
    ++source;
  }
  if (source != 0) {
    user::Click(thumb(source));
  }
  user::PickMenu(main().mnuECopy);
  user::PickMenu(main().mnuEPaste);
  EXPECT_TRUE(Messages().empty());

  const fs::path pasted = photos() / "Untitled(3).jpg";
  ASSERT_TRUE(fs::exists(pasted));
  vips::VImage image = vips::VImage::new_from_file(pasted.c_str());
  EXPECT_STREQ(image.get_string("vips-loader"), "jpegload");
  EXPECT_EQ(image.width(), 120);
  EXPECT_EQ(image.height(), 80);
  EXPECT_NEAR(image.avg(), 200.0, 3.0);

  ASSERT_EQ(session().gdicPhotoList.Count(), 4);
  EXPECT_EQ(PathOf(3), pasted.string());
  EXPECT_EQ(session().giNextPhotoIndex, 4);
  EXPECT_EQ(session().giPhotoCount, 4);
  ASSERT_TRUE(main().ctrlQuilImage.Exists(3));
  EXPECT_TRUE(session().gdicLoadedControls.Exists(3));
  EXPECT_EQ(thumb(3).PhotoPath(), pasted.string());
  EXPECT_EQ(thumb(3).ToolTipText(), "Untitled(3).jpg");
  EXPECT_FALSE(thumb(3).ThumbnailFile().empty());
  EXPECT_EQ(thumb(3).Left(), 1585);
  EXPECT_EQ(thumb(3).Top(), 1655);
  EXPECT_EQ(main().lblPhotosSelect.Caption(), "0 of 4 photo(s) selected");
}

TEST_F(FileOperationsTest, PasteWithNothingOnTheClipboardMakesNoFile) {
  StartWith(1);
  Answer(kIdOk);
  user::PickMenu(main().mnuEPaste);
  EXPECT_EQ(Messages(),
            std::vector<std::string>{"Did not find an image in the clipboard"});
  EXPECT_EQ(host().MessageBoxes().back().style, kMbInformation);
  EXPECT_FALSE(fs::exists(photos() / "Untitled(1).jpg"));
  EXPECT_EQ(session().gdicPhotoList.Count(), 1);
}

TEST_F(FileOperationsTest, APhotoThatCannotBeReadIsNotCopied) {
  StartWith(1);
  fs::remove(PathOf(0));
  Answer(kIdOk);
  user::PickMenu(main().mnuECopy);
  EXPECT_EQ(Messages(),
            std::vector<std::string>{"Error in copying the image. The "
                                     "operation could not be completed"});
  EXPECT_EQ(host().MessageBoxes().back().style, kMbOk);
  EXPECT_FALSE(app().clipboard().HasImage());
}

TEST_F(FileOperationsTest, APasteIntoAnEmptyFolderBecomesItsFirstPhoto) {
  StartWith(1);
  user::PickMenu(main().mnuECopy);
  const fs::path empty = photos().parent_path() / "Empty";
  fs::create_directories(empty);
  user::SelectFolder(main().ExpTreeView, empty.string());
  host().Advance(500);
  ASSERT_EQ(session().gdicPhotoList.Count(), 0);

  user::PickMenu(main().mnuEPaste);
  EXPECT_TRUE(Messages().empty());
  const std::string pasted = (empty / "Untitled(1).jpg").string();
  EXPECT_TRUE(fs::exists(pasted));
  ASSERT_EQ(session().gdicPhotoList.Count(), 1);
  EXPECT_EQ(PathOf(0), pasted);
  EXPECT_TRUE(thumb(0).Visible());
  EXPECT_EQ(thumb(0).PhotoPath(), pasted);
  EXPECT_EQ(session().gsSelectedImage, pasted);
  EXPECT_EQ(main().lblPhotosSelect.Caption(), "0 of 1 photo(s) selected");
  EXPECT_TRUE(main().mnuECopy.Enabled());
}

TEST_F(FileOperationsTest, AFolderThatRefusesWritesRefusesThePaste) {
  if (::geteuid() == 0) {
    GTEST_SKIP() << "the superuser may write into any folder";
  }
  StartWith(1);
  user::PickMenu(main().mnuECopy);
  fs::permissions(photos(), fs::perms::owner_read | fs::perms::owner_exec);
  Answer(kIdOk);
  user::PickMenu(main().mnuEPaste);
  fs::permissions(photos(), fs::perms::owner_all);
  EXPECT_EQ(
      Messages(),
      std::vector<std::string>{
          "Cannot copy: Access is denied. The source file may be in use."});
  EXPECT_FALSE(fs::exists(photos() / "Untitled(1).jpg"));
}

}  // namespace
}  // namespace qbpd
