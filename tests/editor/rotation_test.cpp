// Rotation: the photo on display turns on screen until the rotation prompt,
// Undo and the menus' enable rules, the buttons' asymmetry, and the
// rotation prompt's answers and failures.
#include "tests/editor/editor_fixture.h"

#include <filesystem>

namespace qbpd {
namespace {

using testing_support::EditorTest;
namespace fs = std::filesystem;

class RotationTest : public EditorTest {
 protected:
  void SetUp() override {
    photo_ = WritePhoto("IMG1.jpg", 320, 240);
    second_ = WritePhoto("IMG2.jpg", 320, 240);
    Start();
    ASSERT_EQ(session().gsSelectedImage, photo_);
  }
  void Right(int times = 1) {
    for (int i = 0; i < times; ++i) {
      user::Click(main().imgRightRotate);
    }
  }
  void Left(int times = 1) {
    for (int i = 0; i < times; ++i) {
      user::Click(main().imgLeftRotate);
    }
  }
  // Opens the Edit menu and then the File menu, as a person does, and tells
  // whether Undo and Save were enabled in them.
  std::pair<bool, bool> UndoAndSave() {
    user::Click(main().mnuEdit);
    const bool undo = main().mnuEUndo.Enabled();
    user::Click(main().mnuFile);
    return {undo, main().mnuFSave.Enabled()};
  }
  std::string photo_;
  std::string second_;
};

TEST_F(RotationTest, TurnsAddUpAndAFullTurnIsNothing) {
  struct Case {
    int rights;
    int lefts;
    long angle;
  };
  const Case cases[] = {
      {1, 0, 90},
      {0, 1, -90},
      {2, 0, 180},
      // Three right turns are 270, not -90.
      {3, 0, 270},
      {0, 3, -270},
      // A full turn either way, or there and back, is 0.
      {4, 0, 0},
      {0, 4, 0},
      {1, 1, 0},
  };
  for (const Case& c : cases) {
    ClickPhoto(0);
    Right(c.rights);
    Left(c.lefts);
    EXPECT_EQ(session().glRotationAngle, c.angle)
        << c.rights << " right, " << c.lefts << " left";
    EXPECT_TRUE(session().gbRotationPending);
    EXPECT_EQ(session().giCurrentOperation, 0);
    EXPECT_EQ(session().gsRotationScope, "S");
    // Nothing touches the disk meanwhile.
    EXPECT_TRUE(display_->CallsStartingWith("SaveShownPhoto").empty());
    if (c.angle == 0) {
      // Leaving the photo asks nothing.
      const size_t shown = Messages().size();
      ClickPhoto(1);
      EXPECT_EQ(Messages().size(), shown);
    } else {
      Answer(kIdNo);
      ClickPhoto(1);
    }
  }
  EXPECT_EQ(WidthOf(photo_), 320);
}

TEST_F(RotationTest, UndoTurnsBackAndTheMenusFollowTheAngle) {
  EXPECT_EQ(UndoAndSave(), std::make_pair(false, false));
  Right(3);
  EXPECT_EQ(UndoAndSave(), std::make_pair(true, true));
  display_->calls.clear();
  user::PickMenu(main().mnuEUndo);
  EXPECT_TRUE(Called("RotateView(-270)"));
  EXPECT_EQ(main().ctlDisplayImage.Display()->ViewRotation(), 0);
  EXPECT_EQ(session().glRotationAngle, 0);
  // Turned back: still pending, but nothing to save or undo.
  EXPECT_TRUE(session().gbRotationPending);
  EXPECT_EQ(UndoAndSave(), std::make_pair(false, false));
  const size_t shown = Messages().size();
  ClickPhoto(1);
  EXPECT_EQ(Messages().size(), shown);
}

TEST_F(RotationTest, OnlyTheRightButtonLooksForTheFileFirst) {
  fs::remove(photo_);
  display_->calls.clear();
  Left();
  // The left button turns the view of a photo that is gone.
  EXPECT_EQ(session().glRotationAngle, -90);
  EXPECT_TRUE(Called("RotateView(-90)"));
  session().gbRotationPending = false;
  session().glRotationAngle = 0;
  display_->calls.clear();
  Right();
  // The right one reloads the folder instead, and turns nothing.
  EXPECT_TRUE(display_->CallsStartingWith("RotateView").empty());
  EXPECT_EQ(session().gdicPhotoList.Count(), 1);
  EXPECT_EQ(session().glRotationAngle, 0);
}

TEST_F(RotationTest, OneCheckedPhotoElsewhereOpensTheMenu) {
  user::SetCheck(main().ctrlQuilImage[1], true);
  bool popped = false;
  host().QueuePopupPick("dismiss", [&popped](Menu& menu) {
    popped = menu.Name() == "mnuRotate";
  });
  Right();
  EXPECT_TRUE(popped);
  EXPECT_EQ(session().glRotationAngle, 0);
  EXPECT_EQ(session().giCurrentOperation, 0);
  // With the photo on display checked, the button turns it at once.
  user::SetCheck(main().ctrlQuilImage[1], false);
  user::SetCheck(main().ctrlQuilImage[0], true);
  Right();
  EXPECT_EQ(session().glRotationAngle, 90);
}

TEST_F(RotationTest, YesWritesAWritableJpegInItsOwnFile) {
  Right();
  Answer(kIdYes);
  ClickPhoto(1);
  EXPECT_EQ(host().MessageBoxes().back().prompt,
            "Do you want to save current rotation?");
  EXPECT_EQ(host().MessageBoxes().back().style, kMbQuestionYesNo);
  EXPECT_TRUE(Called("SaveShownPhoto(" + photo_ + ")"));
  EXPECT_EQ(WidthOf(photo_), 240);
  EXPECT_EQ(HeightOf(photo_), 320);
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
  EXPECT_EQ(session().glRotationAngle, 0);
  EXPECT_FALSE(session().gbRotationPending);
  EXPECT_EQ(session().gsSelectedImage, second_);
}

TEST_F(RotationTest, NoReloadsAndZoomsByTheSettingNotByTheUsersZoom) {
  user::PickMenu(main().mnuVZoom50);
  Right();
  display_->calls.clear();
  Answer(kIdNo);
  user::PickMenu(main().mnuVZoom75);
  EXPECT_TRUE(Called("LoadPhoto(" + photo_ + ")"));
  EXPECT_TRUE(display_->CallsStartingWith("SaveShownPhoto").empty());
  EXPECT_EQ(WidthOf(photo_), 320);
  EXPECT_EQ(main().ctlDisplayImage.Display()->ViewRotation(), 0);
}

TEST_F(RotationTest, AReadOnlyJpegOrAPngGoesToANewFile) {
  fs::permissions(
      photo_,
      fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
      fs::perm_options::remove);
  Right();
  Answer(kIdYes);
  ClickPhoto(1);
  EXPECT_EQ(host().MessageBoxes().back().prompt,
            "The file '" + photo_ +
                "' is a read-only file. The File will save with "
                "'IMG1_Fixed(1).JPG'. Do you want to save?");
  const std::string made = InPhotos("IMG1_Fixed(1).JPG");
  EXPECT_TRUE(Exists(made));
  EXPECT_EQ(WidthOf(made), 240);
  EXPECT_EQ(WidthOf(photo_), 320);
  EXPECT_EQ(session().gdicPhotoList.Count(), 3);

  const std::string png = WritePhoto("shot.png", 100, 50);
  user::Click(main().mnuERefresh);
  host().Advance(500);
  int png_index = -1;
  for (int key : session().gdicPhotoList.Keys()) {
    if (session().gdicPhotoList.Item(key) == png) {
      png_index = key;
    }
  }
  ASSERT_GE(png_index, 0);
  ClickPhoto(png_index);
  Left();
  Answer(kIdYes);
  ClickPhoto(0);
  EXPECT_EQ(host().MessageBoxes().back().prompt,
            "Do you want to save current rotation?");
  const std::string png_copy = InPhotos("shot_Fixed(1).jpg");
  EXPECT_TRUE(Exists(png_copy));
  EXPECT_EQ(WidthOf(png_copy), 50);
  EXPECT_EQ(WidthOf(png), 100);
}

TEST_F(RotationTest, AFailedSaveForgetsTheTurnAndLeavesTheFile) {
  display_->fail_save_shown = true;
  const auto before = fs::last_write_time(photo_);
  Right();
  Answer(kIdYes);
  Answer(kIdOk);
  ClickPhoto(1);
  EXPECT_EQ(LastMessage(), "Unable to save the rotated photo");
  EXPECT_EQ(host().MessageBoxes().back().style, kMbStop);
  EXPECT_EQ(fs::last_write_time(photo_), before);
  EXPECT_EQ(session().glRotationAngle, 0);
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
}

TEST_F(RotationTest, YesIntoAFolderGoneMeanwhileIsRefusedAndShowsTheFile) {
  Right();
  const fs::path moved = photos().parent_path() / "Moved";
  fs::rename(photos(), moved);
  Answer(kIdYes);
  Answer(kIdOk);  // the refusal
  Answer(kIdOk);  // the photo can't be shown again either
  user::PickMenu(main().mnuVZoom100);
  ASSERT_EQ(Messages().size(), 3u);
  // A folder that can't be written counts as read-only: a new name is
  // offered, and then refused.
  EXPECT_TRUE(Messages()[0].ends_with(
      "' is a read-only file. The File will save with 'IMG1_Fixed(1).JPG'. Do "
      "you want to save?"));
  EXPECT_EQ(Messages()[1],
            "Cannot save IMG1_Fixed(1): Access is denied. \r\n\r\nMake sure "
            "the disk is "
            "not full or write-protected \r\nand that the file is not "
            "currently in use.");
  EXPECT_EQ(host().MessageBoxes()[1].title, "Quillbay Picture Desk");
  EXPECT_EQ(Messages()[2], "Unable to display photo");
  EXPECT_EQ(host().MessageBoxes()[2].style, kMbStop);
  EXPECT_TRUE(display_->CallsStartingWith("SaveShownPhoto").empty());
  EXPECT_EQ(WidthOf((moved / "IMG1.jpg").string()), 320);
  EXPECT_FALSE(session().gbRotationPending);
}

TEST_F(RotationTest, UndoAndSaveFollowTheTurnWithoutAMenuOpened) {
  // Shortcuts and the window's menus see Undo and Save as their rules say
  // at every moment, not as the last menu opened left them.
  auto state = [this] {
    return std::make_pair(main().mnuEUndo.Enabled(), main().mnuFSave.Enabled());
  };
  EXPECT_EQ(state(), std::make_pair(false, false));
  Right();
  EXPECT_EQ(state(), std::make_pair(true, true));
  user::PressKeys(main(), "^z");
  EXPECT_EQ(session().glRotationAngle, 0);
  EXPECT_EQ(state(), std::make_pair(false, false));
  Left();
  EXPECT_EQ(state(), std::make_pair(true, true));
  // Saved by its shortcut: nothing left to undo or save.
  user::PressKeys(main(), "^s");
  EXPECT_EQ(WidthOf(photo_), 240);
  EXPECT_EQ(state(), std::make_pair(false, false));
  // Another photo opened with a turn pending drops the turn, and its menus.
  Right();
  Answer(kIdNo);
  ClickPhoto(1);
  EXPECT_EQ(state(), std::make_pair(false, false));
}

TEST_F(RotationTest, SaveFromTheMenuAsksNothingForAWritableJpeg) {
  Right();
  const size_t shown = Messages().size();
  user::PickMenu(main().mnuFSave);
  EXPECT_EQ(Messages().size(), shown);
  EXPECT_EQ(WidthOf(photo_), 240);
  EXPECT_FALSE(session().gbRotationPending);
  EXPECT_EQ(session().glRotationAngle, 0);

  // A failure says so and shows the file as it is.
  display_->fail_save_shown = true;
  Left();
  Answer(kIdOk);
  user::PickMenu(main().mnuFSave);
  EXPECT_EQ(LastMessage(), "Unable to save the photo");
  EXPECT_EQ(host().MessageBoxes().back().style, kMbInformation);
  EXPECT_EQ(WidthOf(photo_), 240);
}

TEST_F(RotationTest, SaveFromTheMenuAsksAboutAReadOnlyJpeg) {
  fs::permissions(
      photo_,
      fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
      fs::perm_options::remove);
  Right();
  Answer(kIdNo);
  user::PickMenu(main().mnuFSave);
  EXPECT_EQ(LastMessage(),
            "The file '" + photo_ +
                "' is a read-only file. The file will save "
                "with 'IMG1_Fixed(1).JPG'. Do you want to save?");
  EXPECT_FALSE(Exists(InPhotos("IMG1_Fixed(1).JPG")));
  EXPECT_FALSE(session().gbRotationPending);
  EXPECT_EQ(main().ctlDisplayImage.Display()->ViewRotation(), 0);
}

TEST_F(RotationTest, ADeleteWaitsForTheRotationToBeSaved) {
  Right();
  Answer(kIdOk);
  user::Click(main().imgTrash);
  EXPECT_EQ(LastMessage(),
            "Rotated photo must be saved before performing delete operation.");
  EXPECT_TRUE(Exists(photo_));
}

}  // namespace
}  // namespace qbpd
