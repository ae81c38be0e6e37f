// The photo viewer's keys and wheel on the main window, and where the
// toolbar's pop-up menus open.
#include "platform/forms/keys.h"
#include "platform/forms/user_input.h"
#include "tests/browser/main_window_fixture.h"

#include <filesystem>
#include <string>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

class ViewerKeysTest : public testing_support::MainWindowTest {
 protected:
  void StartWith(int count) {
    for (int i = 0; i < count; ++i) {
      WritePhoto("p" + std::to_string(i) + ".jpg", 1600, 1200, 40 + 30 * i);
    }
    Start();
    ASSERT_EQ(session().gdicPhotoList.Count(), count);
    ASSERT_EQ(session().giCurrentPhotoIndex, 0);
  }
  void Press(std::string_view keys) { user::PressKeys(main(), keys); }
  int Zoom() { return main().ctlDisplayImage.ZoomPercent(); }
  void Wheel(int delta, int shift) {
    EventArgs e;
    e.Delta = delta;
    e.Shift = shift;
    main().ctlDisplayImage.Raise("MouseWheel", e);
  }
  // The pop-up menus opened so far, as the host reports them.
  std::vector<std::string> popups_;
  void RecordPopups() {
    host().SetTranscript([this](const std::string& line) {
      if (line.starts_with("pop-up menu ")) {
        popups_.push_back(line);
      }
    });
  }
};

TEST_F(ViewerKeysTest, SpaceAndBackspaceStepThroughThePhotos) {
  StartWith(3);
  Press(" ");
  EXPECT_EQ(session().giCurrentPhotoIndex, 1);
  Press(" ");
  EXPECT_EQ(session().giCurrentPhotoIndex, 2);
  // As the arrow button does, the last photo is followed by the first.
  Press(" ");
  EXPECT_EQ(session().giCurrentPhotoIndex, 0);
  Press("{BACKSPACE}");
  EXPECT_EQ(session().giCurrentPhotoIndex, 2);
  EXPECT_EQ(main().ctlDisplayImage.PhotoPath(),
            session().gdicPhotoList.Item(2));
}

TEST_F(ViewerKeysTest, SpaceIsLeftToAFocusedButton) {
  StartWith(3);
  main().cmdImageListHead.SetFocus();
  ASSERT_EQ(main().ActiveControl(), &main().cmdImageListHead);
  Press(" ");
  EXPECT_EQ(session().giCurrentPhotoIndex, 0);
  // Backspace is no button's key and still steps back.
  Press("{BACKSPACE}");
  EXPECT_EQ(session().giCurrentPhotoIndex, 2);
}

TEST_F(ViewerKeysTest, TheKeysTypeIntoTheNameWhileItIsOpen) {
  StartWith(3);
  user::DblClick(main().lblDisplayImageName);
  ASSERT_TRUE(main().txtFileName.Visible());
  user::TypeKeys(main().txtFileName, "{END} 1{+}0-{BACKSPACE}");
  EXPECT_EQ(main().txtFileName.Text(), "p0 1+0");
  EXPECT_EQ(session().giCurrentPhotoIndex, 0);
  // Delete edits the name too, and deletes no photo.
  user::TypeKeys(main().txtFileName, "{HOME}{DELETE}");
  EXPECT_EQ(main().txtFileName.Text(), "0 1+0");
  EXPECT_EQ(session().gdicPhotoList.Count(), 3);
  EXPECT_TRUE(Messages().empty());
}

TEST_F(ViewerKeysTest, PlusMinusZeroAndOneZoomThroughTheZoomEntries) {
  StartWith(2);
  const int fitted = Zoom();
  ASSERT_LT(fitted, 100);
  ASSERT_GT(fitted, 25);
  ASSERT_TRUE(main().mnuVZoomFit.Checked());

  Press("1");
  EXPECT_EQ(Zoom(), 100);
  EXPECT_TRUE(main().mnuVZoom100.Checked());
  EXPECT_FALSE(main().mnuVZoomFit.Checked());

  Press("{+}");
  EXPECT_EQ(Zoom(), 125);
  EXPECT_TRUE(main().mnuVZoom125.Checked());
  Press("-");
  Press("-");
  EXPECT_EQ(Zoom(), 75);
  EXPECT_TRUE(main().mnuVZoom75.Checked());

  Press("0");
  EXPECT_EQ(Zoom(), fitted);
  EXPECT_TRUE(main().mnuVZoomFit.Checked());
  EXPECT_EQ(main().mnuVZoomFit.Caption(),
            "Fit To Width(" + std::to_string(fitted) + "%)");

  // From the fit, "-" goes to the level below it, and stops at 25%.
  for (int i = 0; i < 6; ++i) {
    Press("-");
  }
  EXPECT_EQ(Zoom(), 25);
  EXPECT_TRUE(main().mnuVZoom25.Checked());
  for (int i = 0; i < 9; ++i) {
    Press("{+}");
  }
  EXPECT_EQ(Zoom(), 200);
  EXPECT_TRUE(Messages().empty());
}

TEST_F(ViewerKeysTest, CtrlAndTheWheelOverThePhotoZoom) {
  StartWith(2);
  const int fitted = Zoom();
  Wheel(1, kCtrlMask);
  EXPECT_GT(Zoom(), fitted);
  EXPECT_EQ(Zoom() % 25, 0);
  const int up = Zoom();
  Wheel(-1, kCtrlMask);
  EXPECT_EQ(Zoom(), up - 25);
  // Without Ctrl the wheel scrolls the view, which is the desktop's affair.
  const int kept = Zoom();
  Wheel(1, 0);
  EXPECT_EQ(Zoom(), kept);
}

TEST_F(ViewerKeysTest, TheZoomKeysDoNothingWithoutAPhoto) {
  Start();
  ASSERT_EQ(session().gdicPhotoList.Count(), 0);
  Press("1");
  Press("{+}");
  Press("0");
  Wheel(1, kCtrlMask);
  EXPECT_TRUE(Messages().empty());
  EXPECT_TRUE(host().FailedHandlers().empty());
}

TEST_F(ViewerKeysTest, DeleteDoesWhatCtrlDDoes) {
  StartWith(3);
  const std::string first = session().gdicPhotoList.Item(0);
  Answer(kIdNo);
  Press("{DELETE}");
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0],
            "Do you want to permanently delete the current photo?");
  EXPECT_TRUE(fs::exists(first));
  Answer(kIdNo);
  Press("^d");
  ASSERT_EQ(Messages().size(), 2u);
  EXPECT_EQ(Messages()[1], Messages()[0]);
  Answer(kIdYes);
  Press("{DELETE}");
  EXPECT_FALSE(fs::exists(first));
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
}

TEST_F(ViewerKeysTest, TheTrashButtonsPopUpOpensAtTheMiddleOfTheButton) {
  StartWith(3);
  user::SetCheck(main().ctrlQuilImage[1], true);
  user::SetCheck(main().ctrlQuilImage[2], true);
  RecordPopups();
  host().QueuePopupPick("dismiss", [](Menu&) {});
  user::Click(main().imgTrash);
  frmMainWindow& m = main();
  const int x = m.picTrash.Left() + m.imgTrash.Left() + m.imgTrash.Width() / 2;
  const int y = m.picTrash.Top() + m.imgTrash.Top() + m.imgTrash.Height() / 2;
  ASSERT_EQ(popups_.size(), 1u);
  EXPECT_EQ(popups_[0], "pop-up menu frmMainWindow.mnuEDelete at " +
                            std::to_string(x) + "," + std::to_string(y));
  ASSERT_GT(m.picTrash.Left(), 0);
}

TEST_F(ViewerKeysTest, TheZoomButtonsPopUpOpensAtTheButton) {
  StartWith(2);
  RecordPopups();
  host().QueuePopupPick("dismiss", [](Menu&) {});
  user::Click(main().imgZoom);
  frmMainWindow& m = main();
  const int x =
      m.picManipCont.Left() + m.imgZoom.Left() + m.imgZoom.Width() / 2;
  ASSERT_EQ(popups_.size(), 1u);
  EXPECT_EQ(popups_[0],
            "pop-up menu frmMainWindow.mnuVZoom at " + std::to_string(x) + "," +
                std::to_string(static_cast<int>(m.picManipCont.Top())));
}

}  // namespace
}  // namespace qbpd
