// The three edit panels: opening them in place of the browse layout, their
// texts, apply and cancel on each, and the failures of a write.
#include "tests/editor/editor_fixture.h"

#include <filesystem>
#include <unistd.h>

namespace qbpd {
namespace {

using testing_support::EditorTest;

class EditPanelsTest : public EditorTest {
 protected:
  // One landscape photo on display.
  void StartWithOnePhoto(int width = 320, int height = 240) {
    photo_ = WritePhoto("IMG1.jpg", width, height);
    Start();
    ASSERT_EQ(session().gsSelectedImage, photo_);
  }
  std::string photo_;
};

TEST_F(EditPanelsTest, EachPanelTakesThePlaceOfTheFolderPaneAndTheGrid) {
  StartWithOnePhoto();
  frmMainWindow& w = main();
  struct Case {
    PictureButton* button;
    int operation;
    Frame* panel;
    const char* head;
    const char* apply_picture;
  };
  const Case cases[] = {
      {&w.imgCrop, 1, &w.edit.fraCrop, "crop", "27N"},
      {&w.imgRedeye, 4, &w.edit.fraRedEye, "remove red eye", "28N"},
      {&w.imgAutocolor, 5, &w.edit.fraAutoColor, "correct color", "28N"},
  };
  for (const Case& c : cases) {
    user::Click(*c.button);
    EXPECT_EQ(session().giCurrentOperation, c.operation);
    EXPECT_TRUE(c.panel->Visible());
    EXPECT_TRUE(w.picCropCont.Visible());
    for (Control* gone : std::initializer_list<Control*>{
             &w.picExplorerCont, &w.picImageListCont, &w.imgSelectAll,
             &w.imgClear, &w.imgShare, &w.imgUpload, &w.picImageFlow,
             &w.picManipCont}) {
      EXPECT_FALSE(gone->Visible()) << gone->Name() << " in " << c.head;
    }
    EXPECT_FALSE(w.mnuFile.Visible());
    EXPECT_FALSE(w.mnuView.Visible());
    EXPECT_TRUE(w.mnuHelp.Visible());
    EXPECT_EQ(w.edit.lblManipHead.Caption(), c.head);
    EXPECT_EQ(w.edit.lblLeftImageName.Caption(), "IMG1");
    EXPECT_NE(w.edit.imgAutoThumb.Picture(), "");
    EXPECT_TRUE(w.imgApplyChanges.Picture().ends_with(
        std::string(c.apply_picture) + ".png"))
        << w.imgApplyChanges.Picture();
    EXPECT_TRUE(w.FieldValue("mbFitToWidth").ToBool());
    if (c.operation == 1) {
      // The orientation options show their pictures, files of the set.
      for (const auto& [picture, name] :
           {std::pair{&w.edit.imgCropHor, "G11.png"},
            std::pair{&w.edit.imgCropVert, "G12.png"}}) {
        EXPECT_TRUE(picture->Picture().ends_with(name)) << picture->Picture();
        EXPECT_TRUE(std::filesystem::is_regular_file(picture->Picture()))
            << picture->Picture();
      }
    }
    user::Click(w.imgCancel);
    EXPECT_EQ(session().giCurrentOperation, 0);
    EXPECT_FALSE(c.panel->Visible());
    EXPECT_FALSE(w.picCropCont.Visible());
    EXPECT_TRUE(w.picImageListCont.Visible());
    EXPECT_TRUE(w.picManipCont.Visible());
    EXPECT_TRUE(w.mnuFile.Visible());
    EXPECT_EQ(w.edit.lblManipHead.Caption(), "");
  }
  // Nothing was written by opening and cancelling.
  EXPECT_EQ(session().gdicPhotoList.Count(), 1);
  EXPECT_FALSE(Exists(InPhotos("IMG1_Fixed(1).Jpg")));
}

TEST_F(EditPanelsTest, ThePanelsSayWhatTheProgramSays) {
  StartWithOnePhoto();
  const EditPanelControls& e = main().edit;
  EXPECT_EQ(e.lblCropShape.Caption(), "Crop Shape");
  EXPECT_EQ(e.lblChooseSize.Caption(), "Choose the size");
  EXPECT_EQ(e.lblCropOrientation.Caption(), "Crop Orientation");
  EXPECT_EQ(e.lblResize.Caption(), "Resize and Move Cropbox");
  EXPECT_EQ(e.lblResizeText.Caption(),
            "Click and drag any edge/corner of the cropping box to resize it.");
  EXPECT_EQ(e.lblCropFinished.Caption(),
            "When you are finished, click on the \"crop photo\" button.");
  EXPECT_EQ(e.opt4x6.Caption(), "4 x 6");
  EXPECT_EQ(e.opt5x7.Caption(), "5 x 7");
  EXPECT_EQ(e.opt8x10.Caption(), "8 x 10");
  EXPECT_EQ(e.optWallet.Caption(), "Wallets");
  EXPECT_EQ(e.lblGetRedOut.Caption(), "Get the Red Out");
  EXPECT_EQ(e.lblGetRedOutText.Caption(),
            "Click on the eye. You might have to click a few times to get all "
            "the red. Move the cursor and repeat for each eye.");
  EXPECT_EQ(e.lblSelect.Caption(), "Select an Eye");
  EXPECT_EQ(e.lblSelectText.Caption(),
            "Drag the cursor around the photo to magnify your work area. "
            "Center the cursor over the red eye area.");
  EXPECT_EQ(e.lblRedEyeFinished.Caption(),
            "When you are finished, click on the \"apply Changes\" button.");
  EXPECT_EQ(e.lblChooseOne.Caption(), "Choose One");
  EXPECT_EQ(e.lblChooseOneText.Caption(),
            "Compare the corrected photo to your original, then select the "
            "one you prefer.");
  EXPECT_EQ(e.lblViewOriginal.Caption(), "View Original");
  EXPECT_EQ(e.lblViewCorrected.Caption(), "View Corrected");
  EXPECT_EQ(e.lblAutoFixFinished.Caption(),
            "Applying changes will create a new, edited copy of your photo. "
            "Your original photo will remain unchanged.");
}

TEST_F(EditPanelsTest, ALongNameIsCutOnTheLeftOfThePanel) {
  photo_ = WritePhoto("abcdefghijklmnopqrstuvwxyz01234.jpg");  // 31 characters
  WritePhoto("abcdefghijklmnopqrstuvwxyz0123.jpg");            // 30
  Start();
  for (int i = 0; i < 2; ++i) {
    ClickPhoto(i);
    user::Click(main().imgRedeye);
    const bool long_one = session().gsSelectedImage == photo_;
    EXPECT_EQ(main().edit.lblLeftImageName.Caption(),
              long_one ? "abcdefghijklmnopqrstuvwxyz012..."
                       : "abcdefghijklmnopqrstuvwxyz0123");
    user::Click(main().imgCancel);
  }
}

// --- red eye
// -------------------------------------------------------------------

TEST_F(EditPanelsTest, RedEyeAppliesOnlyAfterAnEyeWasClicked) {
  StartWithOnePhoto();
  frmMainWindow& w = main();
  user::Click(w.imgRedeye);
  EXPECT_TRUE(Called("BeginRedEye(2,1)"));
  EXPECT_EQ(w.edit.fraRedEye.Caption(), "Remove Red Eye");
  // Apply before any click repeats the message and writes nothing.
  for (int i = 0; i < 2; ++i) {
    Answer(kIdOk);
    user::Click(w.imgApplyChanges);
    EXPECT_EQ(LastMessage(),
              "The redeye should be removed first inorder to save the photo");
    EXPECT_EQ(session().giCurrentOperation, 4);
  }
  EXPECT_TRUE(display_->CallsStartingWith("SaveShownPhoto").empty());
  // A click that finds no red changes nothing either.
  display_->red_eye_found = false;
  user::ClickAt(w.ctlDisplayImage, {100, 100, /*photo=*/true});
  EXPECT_FALSE(w.FieldValue("mbRedEyeRemoved").ToBool());
  display_->red_eye_found = true;
  user::ClickAt(w.ctlDisplayImage, {100, 100, true});
  EXPECT_TRUE(w.FieldValue("mbRedEyeRemoved").ToBool());
  user::Click(w.imgApplyChanges);
  const std::string made = InPhotos("IMG1_Fixed(1).Jpg");
  EXPECT_TRUE(Called("SaveShownPhoto(" + made + ")"));
  EXPECT_TRUE(Exists(made));
  EXPECT_EQ(session().giCurrentOperation, 0);
  EXPECT_FALSE(w.FieldValue("mbRedEyeRemoved").ToBool());
  // The new file joins the grid and is on display; the original stays.
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
  EXPECT_EQ(session().gsSelectedImage, made);
  EXPECT_EQ(session().gdicPhotoList.Item(session().giCurrentPhotoIndex), made);
  EXPECT_TRUE(Exists(photo_));
  EXPECT_TRUE(w.picImageListCont.Visible());
  // A second apply on the made file counts on.
  user::Click(w.imgRedeye);
  user::ClickAt(w.ctlDisplayImage, {50, 50, true});
  user::Click(w.imgApplyChanges);
  EXPECT_TRUE(Exists(InPhotos("IMG1_Fixed(2).Jpg")));
}

TEST_F(EditPanelsTest, CancellingRedEyeDropsTheChangesByLoadingThePhotoAgain) {
  StartWithOnePhoto();
  frmMainWindow& w = main();
  user::Click(w.imgRedeye);
  user::ClickAt(w.ctlDisplayImage, {100, 100, true});
  display_->calls.clear();
  user::Click(w.imgCancel);
  ASSERT_FALSE(Calls().empty());
  EXPECT_EQ(Calls().front(), "ClearEdit");
  EXPECT_TRUE(Called("LoadPhoto(" + photo_ + ")"));
  EXPECT_EQ(session().gdicPhotoList.Count(), 1);
  EXPECT_EQ(main().ctlDisplayImage.Display()->ActiveTool(),
            DisplayControl::Tool::kNone);
}

// --- colour
// --------------------------------------------------------------------

TEST_F(EditPanelsTest, ColourShowsTheCorrectionAndAppliesWhatIsShown) {
  StartWithOnePhoto();
  frmMainWindow& w = main();
  user::Click(w.imgAutocolor);
  EXPECT_TRUE(w.edit.optViewCorrected.Value());
  EXPECT_FALSE(w.edit.optViewOriginal.Value());
  EXPECT_EQ(display_->CallsStartingWith("ShowCorrected").size(), 1u);
  EXPECT_EQ(host().MousePointer(), kPointerDefault);
  // A click on a label chooses its option.
  user::Click(w.edit.lblViewOriginal);
  EXPECT_TRUE(w.edit.optViewOriginal.Value());
  EXPECT_TRUE(Called("ShowOriginal"));
  // Apply writes what is shown, whichever option the user chose.
  user::Click(w.imgApplyChanges);
  const std::string made = InPhotos("IMG1_Fixed(1).Jpg");
  EXPECT_TRUE(Called("FinishCorrection(1," + made + ")"));
  EXPECT_TRUE(Exists(made));
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
}

TEST_F(EditPanelsTest, CancellingColourPassesTheUnusedPathAndWritesNothing) {
  StartWithOnePhoto();
  user::Click(main().imgAutocolor);
  user::Click(main().imgCancel);
  EXPECT_TRUE(Called("FinishCorrection(0,c:\\xxx.jpg)"));
  EXPECT_FALSE(Exists("c:\\xxx.jpg"));
  EXPECT_FALSE(Exists(InPhotos("c:\\xxx.jpg")));
  EXPECT_EQ(session().gdicPhotoList.Count(), 1);
}

TEST_F(EditPanelsTest, ACorrectionThatCantBeShownSaysSoAndKeepsTheHourglass) {
  display_->fail_show_corrected = true;
  StartWithOnePhoto();
  Answer(kIdOk);
  user::Click(main().imgAutocolor);
  EXPECT_EQ(LastMessage(), "Unable to apply changes to the selected photo");
  EXPECT_EQ(host().MessageBoxes().back().style, kMbOk);
  EXPECT_EQ(host().MousePointer(), kPointerHourglass);
}

// --- a failed write
// ------------------------------------------------------------

TEST_F(EditPanelsTest, AFailedWriteLeavesPhotoAndListAndEndsAsCancel) {
  StartWithOnePhoto();
  frmMainWindow& w = main();
  const auto original = std::filesystem::last_write_time(photo_);
  struct Case {
    PictureButton* button;
    bool* fail;
  };
  const Case cases[] = {
      {&w.imgCrop, &display_->fail_save_cropped},
      {&w.imgRedeye, &display_->fail_save_shown},
      {&w.imgAutocolor, &display_->fail_finish_correction},
  };
  for (const Case& c : cases) {
    *c.fail = true;
    user::Click(*c.button);
    user::ClickAt(w.ctlDisplayImage, {100, 100, true});
    Answer(kIdOk);
    user::Click(w.imgApplyChanges);
    EXPECT_EQ(LastMessage(), "Error in saving the photo. Please try again");
    EXPECT_EQ(host().MessageBoxes().back().style, kMbStop);
    EXPECT_EQ(session().giCurrentOperation, 0);
    EXPECT_EQ(session().gdicPhotoList.Count(), 1);
    EXPECT_EQ(session().gsSelectedImage, photo_);
    EXPECT_TRUE(w.picImageListCont.Visible());
    EXPECT_TRUE(w.imgApplyChanges.Enabled());
    EXPECT_EQ(w.ctlDisplayImage.Display()->ActiveTool(),
              DisplayControl::Tool::kNone);
    *c.fail = false;
  }
  EXPECT_FALSE(Exists(InPhotos("IMG1_Fixed(1).Jpg")));
  EXPECT_EQ(std::filesystem::last_write_time(photo_), original);
}

TEST_F(EditPanelsTest, AFolderGoneUnderOurFeetRefusesTheSaveAndCancels) {
  StartWithOnePhoto();
  frmMainWindow& w = main();
  user::Click(w.imgAutocolor);
  // The photo's folder is moved away meanwhile: no write can go there.
  const std::filesystem::path moved = photos().parent_path() / "Moved";
  std::filesystem::rename(photos(), moved);
  Answer(kIdOk);
  user::Click(w.imgApplyChanges);
  ASSERT_GE(Messages().size(), 1u);
  EXPECT_EQ(LastMessage(),
            "Cannot save IMG1_Fixed(1): Access is denied. \r\n\r\nMake sure "
            "the disk is not full or write-protected \r\nand that the file is "
            "not currently in use.");
  EXPECT_EQ(host().MessageBoxes().back().title, "Quillbay Picture Desk");
  EXPECT_EQ(host().MessageBoxes().back().style, kMbStop);
  EXPECT_TRUE(Called("FinishCorrection(0,c:\\xxx.jpg)"));
  EXPECT_EQ(session().giCurrentOperation, 0);
  EXPECT_TRUE(w.imgApplyChanges.Enabled());
  EXPECT_TRUE(Exists((moved / "IMG1.jpg").string()));
}

TEST_F(EditPanelsTest, AReadOnlyFolderRefusesTheSave) {
  if (geteuid() == 0) {
    GTEST_SKIP() << "the superuser may write into a read-only folder";
  }
  StartWithOnePhoto();
  user::Click(main().imgCrop);
  std::filesystem::permissions(photos(), std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::remove);
  Answer(kIdOk);
  user::Click(main().imgApplyChanges);
  std::filesystem::permissions(photos(), std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::add);
  EXPECT_TRUE(LastMessage().starts_with("Cannot save IMG1_Fixed(1): Access"));
  EXPECT_EQ(session().gdicPhotoList.Count(), 1);
}

}  // namespace
}  // namespace qbpd
