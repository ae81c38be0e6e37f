// Save As: the dialog as the program fills it in, its loop over names that
// can't be taken, a replacement only when the user says so, and a failed
// write.
#include "tests/editor/editor_fixture.h"

#include <filesystem>

namespace qbpd {
namespace {

using testing_support::EditorTest;
namespace fs = std::filesystem;

class SaveAsTest : public EditorTest {
 protected:
  void SetUp() override {
    photo_ = WritePhoto("IMG1.jpg", 320, 240);
    WritePhoto("IMG2.jpg", 320, 240);
    Start();
  }
  // The next save dialog is answered with `path` (nothing: Cancel); what it
  // proposed lands in `proposed_`.
  void Choose(std::optional<std::string> path) {
    host().QueueDialogAnswer("save as",
                             [this, path](const std::string&) { return path; });
  }
  std::string photo_;
};

TEST_F(SaveAsTest, ANewNameGetsTheTurnedPhotoAndJoinsTheGrid) {
  user::Click(main().imgLeftRotate);
  Choose(InPhotos("holiday.png"));
  user::PickMenu(main().mnuFSaveAs);
  // What is written is always a JPEG of the base name.
  const std::string made = InPhotos("holiday.jpg");
  EXPECT_TRUE(Called("SaveShownPhoto(" + made + ")"));
  EXPECT_EQ(WidthOf(made), 240);
  EXPECT_EQ(WidthOf(photo_), 320);
  EXPECT_FALSE(Exists(InPhotos("holiday.png")));
  EXPECT_EQ(session().glRotationAngle, 0);
  EXPECT_FALSE(session().gbRotationPending);
  EXPECT_EQ(session().gdicPhotoList.Count(), 3);
  EXPECT_EQ(session().gsSelectedImage, made);
  EXPECT_TRUE(Messages().empty());
}

TEST_F(SaveAsTest, TheDialogComesAgainForANameThatCantBeTaken) {
  // The photo on display, a name starting with a dot, then Cancel.
  Choose(photo_);
  Answer(kIdOk);
  Choose(InPhotos(".hidden.jpg"));
  Answer(kIdOk);
  Choose(std::nullopt);
  user::PickMenu(main().mnuFSaveAs);
  ASSERT_EQ(Messages().size(), 2u);
  EXPECT_EQ(Messages()[0], "IMG1.jpg already exists.");
  EXPECT_EQ(Messages()[1], "Enter valid type file name");
  EXPECT_TRUE(display_->CallsStartingWith("SaveShownPhoto").empty());
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
}

TEST_F(SaveAsTest, AFileElsewhereIsReplacedOnlyAfterYes) {
  const fs::path other = photos().parent_path() / "Other";
  fs::create_directories(other);
  const std::string theirs = (other / "theirs.jpg").string();
  ASSERT_TRUE(WriteTestPhoto(theirs, 50, 50, 1));
  // No keeps the file and asks for another name; the user cancels.
  Choose(theirs);
  Answer(kIdNo);
  Choose(std::nullopt);
  user::PickMenu(main().mnuFSaveAs);
  EXPECT_EQ(LastMessage(),
            "theirs.jpg already exists. Do you want to replace it?");
  EXPECT_EQ(host().MessageBoxes().back().style, kMbQuestionYesNoDefaultNo);
  EXPECT_EQ(WidthOf(theirs), 50);
  // Yes replaces it; the grid of this folder stays as it was.
  Choose(theirs);
  Answer(kIdYes);
  user::PickMenu(main().mnuFSaveAs);
  EXPECT_EQ(WidthOf(theirs), 320);
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
  EXPECT_EQ(session().gsSelectedImage, photo_);
}

TEST_F(SaveAsTest, AFailedWriteSaysSoAndMakesNothing) {
  display_->fail_save_shown = true;
  user::Click(main().imgRightRotate);
  Choose(InPhotos("copy.jpg"));
  Answer(kIdOk);
  user::PickMenu(main().mnuFSaveAs);
  EXPECT_EQ(LastMessage(), "Unable to save the photo");
  EXPECT_EQ(host().MessageBoxes().back().style, kMbInformation);
  EXPECT_FALSE(Exists(InPhotos("copy.jpg")));
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
  // The turn is dropped whatever the result.
  EXPECT_EQ(session().glRotationAngle, 0);
}

TEST_F(SaveAsTest, AFolderThatCantBeWrittenIsRefusedAsARename) {
  Choose(InPhotos("nowhere/copy.jpg"));
  Answer(kIdOk);
  user::PickMenu(main().mnuFSaveAs);
  EXPECT_EQ(LastMessage(),
            "Cannot rename copy: Access is denied. \r\n\r\nMake sure the disk "
            "is not full or write-protected \r\nand that the file is not "
            "currently in use.");
  EXPECT_TRUE(display_->CallsStartingWith("SaveShownPhoto").empty());
}

}  // namespace
}  // namespace qbpd
