#include "core/frm_about_us.h"
#include "platform/forms/user_input.h"
#include "tests/browser/main_window_fixture.h"

#include <filesystem>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

class CommandsTest : public testing_support::MainWindowTest {
 protected:
  void StartWith(int count) {
    for (int i = 0; i < count; ++i) {
      WritePhoto("p" + std::to_string(100 + i) + ".jpg", 64, 48);
    }
    Start();
  }
  // The right and bottom edges of a control, in its container.
  static int Right(const Control& c) { return c.Left() + c.Width(); }
  static int Bottom(const Control& c) { return c.Top() + c.Height(); }
  // The tip the window's tooltip object shows over the middle of `c`.
  std::string TipOver(const Control& c) {
    return main().ToolTipAt(c.Container(),
                            static_cast<int>(c.Left() + c.Width() / 2) / 15,
                            static_cast<int>(c.Top() + c.Height() / 2) / 15);
  }
};

TEST_F(CommandsTest, TheButtonsTipsComeFromTheWindowsTooltipObject) {
  StartWith(3);
  frmMainWindow& w = main();
  ASSERT_NE(w.ToolTip(), nullptr);
  // The texts are the buttons' Tag, over their rectangles; nothing writes
  // them into the buttons themselves.
  EXPECT_EQ(w.imgUpload.Tag(), "Upload photos");
  EXPECT_EQ(TipOver(w.imgUpload), "Upload photos");
  EXPECT_EQ(w.imgUpload.ToolTipText(), "");
  EXPECT_EQ(TipOver(w.imgTrash), "Delete");
  EXPECT_EQ(TipOver(w.imgBrowseClose), "Collapse");
  const ToolTipTool* upload =
      w.ToolTip()->ToolAt("", static_cast<int>(w.imgUpload.Left()) / 15 + 1,
                          static_cast<int>(w.imgUpload.Top()) / 15 + 1);
  ASSERT_NE(upload, nullptr);
  EXPECT_EQ(upload->rect.right,
            static_cast<int>(w.imgUpload.Left() + w.imgUpload.Width()) / 15);

  // A resize moves the tips with their buttons, without adding any.
  const size_t tools = w.ToolTip()->Tools().size();
  const Twips select_top = w.imgSelectAll.Top();
  w.Move(0, 0, 20000, 14000);
  ASSERT_NE(w.imgSelectAll.Top(), select_top);
  EXPECT_EQ(TipOver(w.imgSelectAll), "Select all photos");
  EXPECT_EQ(w.ToolTip()->Tools().size(), tools);

  // The pane's button changes its tip with its state.
  user::Click(w.imgBrowseClose);
  EXPECT_EQ(TipOver(w.imgBrowseClose), "Expand");
}

TEST_F(CommandsTest, TheLayoutFillsTheWindowWithoutOverlaps) {
  StartWith(3);
  frmMainWindow& w = main();
  for (int width : {frmMainWindow::kMinWidth, 24000}) {
    w.Move(0, 0, width, 14000);
    // Button column, then the folder pane over the grid, then the display.
    EXPECT_LE(Right(w.imgUpload), w.picExplorerCont.Left());
    EXPECT_EQ(w.picExplorerCont.Left(), w.picImageListCont.Left());
    EXPECT_LE(Bottom(w.picExplorerCont), w.imgHorzSplit.Top());
    EXPECT_LE(Bottom(w.imgHorzSplit), w.picImageListCont.Top());
    EXPECT_LE(Bottom(w.picImageListCont), w.lblPhotosSelect.Top());
    EXPECT_LE(Bottom(w.lblPhotosSelect), w.imgSelectAll.Top());
    EXPECT_LE(Right(w.picImageListCont), w.picDisplayImageCont.Left());
    EXPECT_LE(Bottom(w.picDisplayImageCont), w.picManipCont.Top());
    EXPECT_LE(Right(w.picManipCont), w.picImageFlow.Left());
    EXPECT_LE(Right(w.picImageFlow), w.picTrash.Left());
    // Everything inside the window's client area.
    EXPECT_LE(Right(w.picDisplayImageCont), width - 240);
    EXPECT_LE(Bottom(w.imgSelectAll), 14000 - 900);
    // The photo and its name strip follow the display's size.
    EXPECT_EQ(w.ctlDisplayImage.Width(), w.picDisplayImageCont.Width() - 50);
    EXPECT_EQ(w.ctlDisplayImage.Height(),
              w.picDisplayImageCont.Height() * 14 / 15);
    EXPECT_EQ(w.picImageText.Top(), w.ctlDisplayImage.Height() + 100);
  }
  // The grid keeps its width; the display takes what the window gains.
  w.Move(0, 0, 20000, 14000);
  const int grid = w.picImageListCont.Width();
  const int display = w.picDisplayImageCont.Width();
  w.Move(0, 0, 25000, 14000);
  EXPECT_EQ(w.picImageListCont.Width(), grid);
  EXPECT_EQ(w.picDisplayImageCont.Width(), display + 5000);
}

TEST_F(CommandsTest, ClosingTheFolderPaneGivesTheGridItsRoom) {
  StartWith(40);
  frmMainWindow& w = main();
  const int before = w.getMaxNoImgsDisplayed();
  user::Click(w.imgBrowseClose);
  EXPECT_FALSE(w.imgHorzSplit.Visible());
  EXPECT_FALSE(w.picExplorerCont.Enabled());
  EXPECT_EQ(w.imgBrowseClose.Tag(), "Expand");
  EXPECT_NE(w.imgBrowseClose.Picture().find("24N"), std::string::npos);
  EXPECT_GT(w.getMaxNoImgsDisplayed(), before);
  // What now fits is loaded.
  EXPECT_TRUE(session().gdicLoadedControls.Exists(w.getMaxNoImgsDisplayed()));
  // Get Photos opens it again.
  user::PickMenu(w.mnuFGetPhotos);
  EXPECT_TRUE(w.imgHorzSplit.Visible());
  EXPECT_EQ(w.imgBrowseClose.Tag(), "Collapse");
  EXPECT_EQ(w.getMaxNoImgsDisplayed(), before);
}

TEST_F(CommandsTest, TheFolderPaneClosesByItselfOnlyWithAnInterval) {
  StartWith(2);
  host().Advance(120000);
  EXPECT_TRUE(main().imgHorzSplit.Visible());  // no interval set
}

TEST_F(CommandsTest, TheFolderPaneClosesAfterItsIntervalWithoutActions) {
  extra_settings_.push_back(
      {std::string(kDisplayKey), "ExplorerCloseIntervalInSeconds", "5"});
  StartWith(40);
  host().Advance(3000);
  // Scrolling the grid is an action: the interval counts from it.
  user::ScrollTo(main().ctrlImageListVScroll, 2);
  host().Advance(3000);
  EXPECT_TRUE(main().imgHorzSplit.Visible());
  host().Advance(2500);
  EXPECT_FALSE(main().imgHorzSplit.Visible());
}

TEST_F(CommandsTest, TheSplitterStaysWithinItsBounds) {
  StartWith(2);
  frmMainWindow& w = main();
  Control& bar = w.imgHorzSplit;
  const int lowest = w.picExplorerCont.Top() + 1275;
  const int highest = w.imgSelectAll.Top() - 2325 - 100;
  // A drag: moves with the left button held.
  auto drag = [&](int y) {
    EventArgs e;
    e.Button = 1;
    e.Y = y;
    w.Raise(bar, "MouseMove", e);
  };
  user::MouseDown(bar, 1, 0, 0);
  drag(-50000);
  EXPECT_EQ(bar.Top(), lowest);
  drag(90000);
  EXPECT_EQ(bar.Top(), highest);
  user::MouseUp(bar, 1, 0, 0);
  // The panes take the new heights.
  EXPECT_EQ(w.picExplorerCont.Height(), highest - w.picExplorerCont.Top());
  EXPECT_GT(w.picImageListCont.Top(), highest);
}

TEST_F(CommandsTest, MenusAreEnabledByTheStateWhenTheyOpen) {
  StartWith(3);
  frmMainWindow& w = main();
  EXPECT_EQ(w.mnuEDelSingle.Shortcut(), "Ctrl+D");
  EXPECT_EQ(w.mnuESelectAll.Caption(), "Select A&ll");
  user::PickMenu(w.mnuEClear);  // opens Edit with nothing selected
  EXPECT_FALSE(w.mnuEDelMultiple.Enabled());
  EXPECT_FALSE(w.mnuEUndo.Enabled());
  user::SetCheck(w.ctrlQuilImage[2], true);
  user::PickMenu(w.mnuESelectAll);
  EXPECT_TRUE(w.mnuEDelMultiple.Enabled());
  // One photo selected that isn't on display: rotating all selected works.
  user::PickMenu(w.mnuEClear);
  user::SetCheck(w.ctrlQuilImage[2], true);
  // Photo Information opens its dialog; it is closed at once.
  host().Queue("close the photo information", [this] {
    user::PressKeys(app().forms().Get("frmPhotoInfo"), "{ESC}");
  });
  user::PickMenu(w.mnuPInfo);
  EXPECT_TRUE(w.mnuPRotMultiple.Enabled());
  // The folder pane is open: Get Photos has nothing to do. (The File menu
  // opens; Save As itself would open its dialog.)
  user::Click(w.mnuFile);
  EXPECT_FALSE(w.mnuFGetPhotos.Enabled());
  EXPECT_FALSE(w.mnuFSave.Enabled());
}

TEST_F(CommandsTest, EditModeTurnsTheMenusAndToolbarOff) {
  StartWith(2);
  frmMainWindow& w = main();
  w.DisableMainControls();
  for (Control* c : std::initializer_list<Control*>{
           &w.mnuFile, &w.mnuEdit, &w.mnuPhoto, &w.mnuView, &w.imgSelectAll,
           &w.picManipCont, &w.picTrash, &w.imgHorzSplit}) {
    EXPECT_FALSE(c->Enabled()) << c->Name();
  }
  EXPECT_TRUE(w.mnuHelp.Enabled());
  w.ShowTopMenus(false, false);
  EXPECT_FALSE(w.mnuView.Visible());
  EXPECT_TRUE(w.mnuHelp.Visible());
  w.ShowTopMenus(true, true);
  EXPECT_TRUE(w.mnuView.Visible());
}

TEST_F(CommandsTest, PictureButtonsShowPressedAndHoverPictures) {
  StartWith(2);
  frmMainWindow& w = main();
  auto ends_with = [](const std::string& path, const std::string& tail) {
    return path.size() >= tail.size() &&
           path.compare(path.size() - tail.size(), tail.size(), tail) == 0;
  };
  EXPECT_TRUE(ends_with(w.imgZoom.Picture(), "13N.png"));
  user::MouseMove(w.imgZoom, 10, 10);
  EXPECT_TRUE(ends_with(w.imgZoom.Picture(), "13O.png"));
  // Moving to another button puts the first one back.
  user::MouseMove(w.imgInfo, 10, 10);
  EXPECT_TRUE(ends_with(w.imgZoom.Picture(), "13N.png"));
  EXPECT_TRUE(ends_with(w.imgInfo.Picture(), "19O.png"));
  // Over the background nothing is hovered.
  user::MouseMove(w.picDisplayImageCont, 10, 10);
  EXPECT_TRUE(ends_with(w.imgInfo.Picture(), "19N.png"));
  user::MouseDown(w.imgTrash, 1, 5, 5);
  EXPECT_TRUE(ends_with(w.imgTrash.Picture(), "20D.png"));
  user::MouseUp(w.imgTrash, 1, 5, 5);
  EXPECT_TRUE(ends_with(w.imgTrash.Picture(), "20N.png"));
}

TEST_F(CommandsTest, TheAboutBoxOpensFromTheHelpMenu) {
  StartWith(1);
  host().Queue("close the about box", [this] {
    user::PressKeys(app().forms().Get<frmAboutUs>(), "{ESC}");
  });
  user::PickMenu(main().mnuHAboutus);
  ASSERT_FALSE(host().ShownForms().empty());
  EXPECT_EQ(host().ShownForms().back(), "frmAboutUs modal");
  EXPECT_EQ(app().forms().Find<frmAboutUs>(), nullptr);
}

TEST_F(CommandsTest, CtrlDDeletesThePhotoOnDisplay) {
  StartWith(3);
  Answer(kIdYes);
  user::PressKeys(main(), "^d");
  EXPECT_FALSE(fs::exists(photos() / "p100.jpg"));
  EXPECT_EQ(session().gdicPhotoList.Count(), 2);
}

}  // namespace
}  // namespace qbpd
