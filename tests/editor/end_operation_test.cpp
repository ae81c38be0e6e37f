// What an outside event that wants the screen (a second start with a photo,
// a new camera) does to the operation in hand: every row of the decision.
#include "core/quil_mod.h"
#include "tests/editor/editor_fixture.h"

namespace qbpd {
namespace {

using testing_support::EditorTest;

class EndOperationTest : public EditorTest {
 protected:
  void SetUp() override {
    photo_ = WritePhoto("IMG1.jpg", 320, 240);
    other_ = WritePhoto("other/handed.jpg", 200, 100);
    Start();
  }
  // A second start hands `what` over and restores the window, which is
  // where the running instance looks at it.
  void HandOver(const std::string& what) {
    WriteCommandImage(app(), what);
    main().SetWindowState(kWindowMinimized);
    main().SetWindowState(kWindowNormal);
    host().Run();
    host().Advance(500);
  }
  bool HandedPhotoShown() {
    return main().ctlDisplayImage.PhotoPath() == other_;
  }
  // The first copy an apply would make of the photo on display.
  std::string FirstCopy() {
    const std::string shown = session().gsSelectedImage;
    return ParentFolder(shown) + BaseName(shown) + "_Fixed(1).Jpg";
  }
  std::string photo_;
  std::string other_;
};

TEST_F(EndOperationTest, NothingInHandLetsThePhotoOpen) {
  HandOver(other_);
  EXPECT_TRUE(HandedPhotoShown());
  EXPECT_TRUE(Messages().empty());
}

TEST_F(EndOperationTest, ACropIsAppliedOrCancelledByTheAnswer) {
  for (int answer : {kIdYes, kIdNo}) {
    ClickPhoto(0);
    const std::string copy = FirstCopy();
    user::Click(main().imgCrop);
    Answer(answer);
    HandOver(other_);
    EXPECT_EQ(LastMessage(), "Do you want to crop photo?");
    EXPECT_EQ(session().giCurrentOperation, 0);
    EXPECT_TRUE(HandedPhotoShown());
    // Yes made the cropped copy, No nothing.
    EXPECT_EQ(Exists(copy), answer == kIdYes) << copy;
  }
}

TEST_F(EndOperationTest, ARefusedCropIsCancelledWithoutAQuestion) {
  display_->fail_set_crop_aspect = true;
  Answer(kIdOk);  // the refusal of the size
  user::Click(main().imgCrop);
  const size_t shown = Messages().size();
  HandOver(other_);
  EXPECT_EQ(Messages().size(), shown);
  EXPECT_EQ(session().giCurrentOperation, 0);
  EXPECT_TRUE(HandedPhotoShown());
}

TEST_F(EndOperationTest, RedEyeAsksOnlyWhenAnEyeWasClicked) {
  user::Click(main().imgRedeye);
  HandOver(other_);
  EXPECT_TRUE(Messages().empty());
  EXPECT_TRUE(HandedPhotoShown());

  ClickPhoto(0);
  const std::string copy = FirstCopy();
  user::Click(main().imgRedeye);
  user::ClickAt(main().ctlDisplayImage, {80, 80, true});
  Answer(kIdYes);
  HandOver(other_);
  EXPECT_EQ(LastMessage(), "Do you want to apply changes?");
  EXPECT_TRUE(Exists(copy)) << copy;
  EXPECT_TRUE(HandedPhotoShown());
}

TEST_F(EndOperationTest, ColourAsksWhetherToSave) {
  user::Click(main().imgAutocolor);
  Answer(kIdNo);
  HandOver(other_);
  EXPECT_EQ(LastMessage(), "Do you want to save corrected photo?");
  EXPECT_TRUE(Called("FinishCorrection(0,c:\\xxx.jpg)"));
  EXPECT_FALSE(Exists(InPhotos("IMG1_Fixed(1).Jpg")));
  EXPECT_TRUE(HandedPhotoShown());
}

TEST_F(EndOperationTest, ARotationOfThePhotoOnDisplayIsSettledFirst) {
  user::Click(main().imgRightRotate);
  // The state while the current photo's rotation is in hand.
  session().giCurrentOperation = 2;
  Answer(kIdNo);
  HandOver(other_);
  EXPECT_EQ(LastMessage(), "Do you want to save current rotation?");
  EXPECT_TRUE(HandedPhotoShown());
}

TEST_F(EndOperationTest, ABatchRotationOrAnOnlineJobRefuses) {
  struct Case {
    int operation;
    std::string scope;
    std::string pending;
    const char* message;
  };
  const std::string device = "/dev/bus/usb/001/004";
  const Case cases[] = {
      {2, "M", other_,
       "You can view the selected photo after completing or cancelling the "
       "current operation."},
      {3, "M", device,
       "Please reconnect the new device after completing the current "
       "operation."},
      {9, "", other_,
       "You can view the selected photo after completing or cancelling the "
       "current operation."},
      {11, "", device,
       "Please reconnect the new device after completing or cancelling the "
       "current operation."},
      {12, "", other_,
       "You can view the selected photo after completing or cancelling the "
       "current operation."},
      {13, "", device,
       "Please reconnect the new device after completing or cancelling the "
       "current operation."},
  };
  for (const Case& c : cases) {
    session().giCurrentOperation = c.operation;
    session().gsRotationScope = c.scope;
    Answer(kIdOk);
    HandOver(c.pending);
    EXPECT_EQ(LastMessage(), c.message) << c.operation;
    EXPECT_EQ(host().MessageBoxes().back().style, kMbInformation);
    EXPECT_EQ(main().ctlDisplayImage.PhotoPath(), photo_) << c.operation;
    EXPECT_EQ(session().giCurrentOperation, c.operation);
  }
}

TEST_F(EndOperationTest, ADialogOfTheDisplayIsClosedAndThePhotoOpens) {
  for (int operation : {6, 7, 8}) {
    ClickPhoto(0);
    session().giCurrentOperation = operation;
    HandOver(other_);
    EXPECT_EQ(session().giCurrentOperation, 0);
    EXPECT_TRUE(HandedPhotoShown()) << operation;
  }
  EXPECT_TRUE(Messages().empty());
}

TEST_F(EndOperationTest, TheRealDialogsAreUnloadedAndTheHandedPhotoStays) {
  // The photo information, the slide show and the wallpaper dialog, each
  // opened by its own command and open (modal) when the second start comes.
  struct Case {
    Control* command;
    const char* form;
    int operation;
  };
  for (const Case& c : {Case{&main().imgInfo, "frmPhotoInfo", 6},
                        Case{&main().imgSlideShow, "frmSlideShow", 7},
                        Case{&main().imgWallpaper, "frmWallpaper", 8}}) {
    SCOPED_TRACE(c.form);
    ClickPhoto(0);
    // Each second start hands over the photo not on display (after the
    // first, the window holds the handed photo alone).
    const std::string shown = main().ctlDisplayImage.PhotoPath();
    const std::string handed = shown == other_ ? photo_ : other_;
    int operation_during = -1;
    bool open_during = false;
    host().Queue("a second start with a photo", [&] {
      Form* dialog = app().forms().Find(c.form);
      open_during = dialog != nullptr && dialog->Visible();
      operation_during = session().giCurrentOperation;
      WriteCommandImage(app(), handed);
      main().SetWindowState(kWindowMinimized);
      main().SetWindowState(kWindowNormal);
    });
    user::Click(*c.command);
    host().Run();
    host().Advance(500);
    EXPECT_TRUE(open_during);
    EXPECT_EQ(operation_during, c.operation);
    EXPECT_EQ(app().forms().Find(c.form), nullptr);
    EXPECT_EQ(session().giCurrentOperation, 0);
    EXPECT_EQ(main().ctlDisplayImage.PhotoPath(), handed);
    EXPECT_EQ(session().gsSelectedImage, handed);
    EXPECT_EQ(main().lblDisplayImageName.Caption(), BaseName(handed));
  }
  EXPECT_TRUE(Messages().empty());
}

TEST_F(EndOperationTest, ARenameOrAnUnknownOperationRefusesSilently) {
  for (int operation : {10, 14, 20}) {
    session().giCurrentOperation = operation;
    HandOver(other_);
    EXPECT_EQ(main().ctlDisplayImage.PhotoPath(), photo_) << operation;
  }
  EXPECT_TRUE(Messages().empty());
}

}  // namespace
}  // namespace qbpd
