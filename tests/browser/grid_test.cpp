#include "core/help.h"
#include "platform/forms/user_input.h"
#include "tests/browser/main_window_fixture.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

class GridTest : public testing_support::MainWindowTest {
 protected:
  // Writes `count` photos p000.jpg, p001.jpg, ... and starts on them.
  void StartWith(int count) {
    for (int i = 0; i < count; ++i) {
      char name[16];
      std::snprintf(name, sizeof name, "p%03d.jpg", i);
      WritePhoto(name, 64, 48);
    }
    Start();
  }
  Thumbnail& thumb(int i) { return main().ctrlQuilImage[i]; }
  bool Loaded(int i) {
    return main().ctrlQuilImage.Exists(i) &&
           session().gdicLoadedControls.Exists(i);
  }
};

TEST_F(GridTest, TwoColumnsWithTheLastOddPhotoOnTheLeft) {
  StartWith(7);
  ASSERT_EQ(session().gdicPhotoList.Count(), 7);
  // Rows step by the thumbnail's height plus a 100-twip gap.
  EXPECT_EQ(thumb(1).Left(), 1585);
  EXPECT_EQ(thumb(1).Top(), 100);
  EXPECT_EQ(thumb(6).Left(), 0);
  EXPECT_EQ(thumb(6).Top(), 3 * 1455 + 4 * 100);
  // The panel steps by 1585 a row; an odd count takes the exact half row
  // more: (7 / 2 + 1) rows, and the half twip is kept.
  EXPECT_EQ(main().picImagelistInnerCont.Height(), 7132.5);
  EXPECT_EQ(main().ctrlImageListVScroll.Visible(),
            7 > main().getMaxNoImgsDisplayed());
}

TEST_F(GridTest, ThePanelKeepsTheHalfTwipOfAnOddCount) {
  StartWith(3);
  ASSERT_EQ(session().gdicPhotoList.Count(), 3);
  EXPECT_EQ(main().picImagelistInnerCont.Height(), 3962.5);
  EXPECT_EQ(main().picImagelistInnerCont.Property("Height").ToText(), "3962.5");
}

TEST_F(GridTest, ScrollingLoadsOnlyWhatComesIntoView) {
  StartWith(40);
  const int m = main().getMaxNoImgsDisplayed();
  // Whole rows of the pane's height, two photos each.
  const int viewport =
      main().picImageListCont.Height() - main().cmdImageListHead.Height();
  ASSERT_EQ(m, viewport / 1555 * 2);
  ASSERT_GE(m, 2);
  ScrollBar& bar = main().ctrlImageListVScroll;
  ASSERT_TRUE(bar.Visible());
  EXPECT_EQ(bar.Max(), 20 - m / 2);
  EXPECT_FALSE(Loaded(6 + m + 3));

  user::ScrollTo(bar, 3);
  EXPECT_EQ(main().picImagelistInnerCont.Top(), 300 - 1555 * 3);
  // From photo 6 to 6 + m + 2.
  for (int i = 6; i <= 6 + m + 2; ++i)
    EXPECT_TRUE(Loaded(i)) << i;
  EXPECT_FALSE(Loaded(6 + m + 3));
  const int last = 6 + m + 2;
  EXPECT_EQ(thumb(last).Top(), last / 2 * 1455 + (last / 2 + 1) * 100);
  char tip[32];
  std::snprintf(tip, sizeof tip, "p%03d.jpg", last);
  EXPECT_EQ(thumb(last).ToolTipText(), tip);
  EXPECT_FALSE(thumb(last).ThumbnailFile().empty());

  // Back at the top, nothing is made twice and nothing is unloaded.
  const int loaded = session().gdicLoadedControls.Count();
  user::ScrollTo(bar, 0);
  EXPECT_EQ(main().picImagelistInnerCont.Top(), 300);
  EXPECT_EQ(session().gdicLoadedControls.Count(), loaded);
}

TEST_F(GridTest, ScrollingSkipsTheHolesLeftByDeletions) {
  StartWith(30);
  for (int hole : {2, 3}) {
    session().gdicPhotoList.Remove(hole);
    session().gdicDeletedIndexes.Add(hole, "");
  }
  main().LoadVisibleThumbnails(6);
  // Value 6 starts at photo 12, pushed to 14 by the two holes below it.
  EXPECT_FALSE(Loaded(12));
  EXPECT_FALSE(Loaded(13));
  const int m = main().getMaxNoImgsDisplayed();
  for (int i = 14; i <= 14 + m + 2; ++i)
    EXPECT_TRUE(Loaded(i)) << i;
}

TEST_F(GridTest, FindNextPhotoIndexWrapsAroundOverHoles) {
  StartWith(6);
  session().gdicPhotoList.Remove(4);
  frmMainWindow& w = main();
  EXPECT_EQ(w.FindNextPhotoIndex(3, 1), 5);   // over the hole
  EXPECT_EQ(w.FindNextPhotoIndex(5, 1), 0);   // wraps to the first
  EXPECT_EQ(w.FindNextPhotoIndex(0, -1), 5);  // wraps to the last
  EXPECT_EQ(w.FindNextPhotoIndex(5, -2), 3);
  EXPECT_EQ(w.FindNextPhotoIndex(1, -2), 5);
  for (int key : {0, 1, 2, 3})
    session().gdicPhotoList.Remove(key);
  EXPECT_EQ(w.FindNextPhotoIndex(5, 1), 5);  // the only photo
  session().gdicPhotoList.Remove(5);
  EXPECT_EQ(w.FindNextPhotoIndex(0, 1), -1);
}

TEST_F(GridTest, CheckBoxesSelectAndTheCaptionCounts) {
  StartWith(5);
  user::SetCheck(thumb(2), true);
  user::SetCheck(thumb(4), true);
  EXPECT_EQ(main().lblPhotosSelect.Caption(), "2 of 5 photo(s) selected");
  EXPECT_EQ(thumb(2).Tag(), "C");
  // Ticking a photo that isn't on display leaves the display alone.
  EXPECT_EQ(session().giCurrentPhotoIndex, 0);
  EXPECT_EQ(main().ctlDisplayImage.PhotoPath(), (photos() / "p000.jpg"));
  user::SetCheck(thumb(2), false);
  EXPECT_EQ(main().lblPhotosSelect.Caption(), "1 of 5 photo(s) selected");
  EXPECT_FALSE(session().gdicSelectedPhotos.Exists(2));
}

TEST_F(GridTest, SelectAllTicksLoadedControlsAndTheRestWhenTheyLoad) {
  StartWith(40);
  user::Click(main().imgSelectAll);
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 40);
  EXPECT_EQ(main().lblPhotosSelect.Caption(), "40 of 40 photo(s) selected");
  EXPECT_TRUE(thumb(3).Checked());
  ASSERT_FALSE(Loaded(30));
  user::ScrollTo(main().ctrlImageListVScroll, 13);
  ASSERT_TRUE(Loaded(30));
  EXPECT_TRUE(thumb(30).Checked());
  EXPECT_EQ(thumb(30).Tag(), "C");

  user::Click(main().imgClear);
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 0);
  EXPECT_FALSE(thumb(30).Checked());
  EXPECT_EQ(main().lblPhotosSelect.Caption(), "0 of 40 photo(s) selected");
}

TEST_F(GridTest, AClickShowsThePhotoFittedAndMovesTheFrame) {
  StartWith(4);
  EXPECT_TRUE(thumb(0).Current());
  thumb(2).SelectThumbnail();
  EXPECT_EQ(session().giCurrentPhotoIndex, 2);
  EXPECT_TRUE(thumb(2).Current());
  EXPECT_FALSE(thumb(0).Current());
  EXPECT_EQ(main().ctlDisplayImage.PhotoPath(), (photos() / "p002.jpg"));
  EXPECT_TRUE(main().ctlDisplayImage.Visible());
  EXPECT_EQ(main().ctlDisplayImage.BackRed(), 206);
  EXPECT_EQ(main().ctlDisplayImage.ScaleBase(), 100);
  EXPECT_EQ(main().lblDisplayImageName.Caption(), "p002");
  // A 64-pixel photo fitted to the display's width is enlarged.
  EXPECT_GT(main().ctlDisplayImage.ZoomPercent(), 200);
  EXPECT_TRUE(main().mnuVZoomFit.Checked());
  EXPECT_EQ(main().mnuVZoomFit.Caption(),
            "Fit To Width(" +
                std::to_string(main().ctlDisplayImage.ZoomPercent()) + "%)");
  EXPECT_TRUE(Messages().empty());
}

TEST_F(GridTest, OriginalSizeSettingOpensAtOneHundredPercent) {
  zoom_setting_ = "OriginalSize";
  StartWith(2);
  EXPECT_EQ(main().ctlDisplayImage.ZoomPercent(), 100);
  EXPECT_TRUE(main().mnuVZoom100.Checked());
  EXPECT_FALSE(main().mnuVZoomFit.Checked());
  EXPECT_EQ(main().mnuVZoomFit.Caption(), "Fit To Width");
}

TEST_F(GridTest, ZoomCommandsCheckTheirItemAndFitComesBack) {
  StartWith(2);
  user::PickMenu(main().mnuVZoom50);
  EXPECT_EQ(main().ctlDisplayImage.ZoomPercent(), 50);
  EXPECT_TRUE(main().mnuVZoom50.Checked());
  EXPECT_FALSE(main().mnuVZoomFit.Checked());
  user::PickMenu(main().mnuVZoom200);
  EXPECT_TRUE(main().mnuVZoom200.Checked());
  EXPECT_FALSE(main().mnuVZoom50.Checked());
  user::PickMenu(main().mnuVZoomFit);
  EXPECT_TRUE(main().mnuVZoomFit.Checked());
  EXPECT_FALSE(main().mnuVZoom200.Checked());
}

TEST_F(GridTest, AnUnlistedPercentIsTakenForAFit) {
  StartWith(1);
  user::PickMenu(main().mnuVZoom100);
  ASSERT_FALSE(main().mnuVZoomFit.Checked());
  main().ShowZoomLevel(33);
  EXPECT_TRUE(main().mnuVZoomFit.Checked());
  EXPECT_EQ(main().mnuVZoomFit.Caption(), "Fit To Width(33%)");
  // The display is now taken to be fitted: the next level shows as a fit.
  main().ShowZoomLevel(100);
  EXPECT_FALSE(main().mnuVZoom100.Checked());
  EXPECT_EQ(main().mnuVZoomFit.Caption(), "Fit To Width(100%)");
}

TEST_F(GridTest, NextAndPreviousWrapAroundAndOnePhotoStaysPut) {
  StartWith(3);
  user::Click(main().imgNext);
  EXPECT_EQ(session().giCurrentPhotoIndex, 1);
  user::Click(main().imgNext);
  user::Click(main().imgNext);
  EXPECT_EQ(session().giCurrentPhotoIndex, 0);  // the last goes to the first
  user::Click(main().imgPrev);
  EXPECT_EQ(session().giCurrentPhotoIndex, 2);  // the first goes to the last
  EXPECT_EQ(main().ctlDisplayImage.PhotoPath(), (photos() / "p002.jpg"));
}

TEST_F(GridTest, WithASinglePhotoNextAndPreviousOpenNothing) {
  StartWith(1);
  // The buttons are disabled with one photo; their routines hold anyway.
  EXPECT_FALSE(main().picImageFlow.Enabled());
  main().ctlDisplayImage.ClearPhoto();
  for (Control* button : {static_cast<Control*>(&main().imgNext),
                          static_cast<Control*>(&main().imgPrev)}) {
    EventArgs e;
    main().Raise(*button, "Click", e);
  }
  EXPECT_EQ(session().giCurrentPhotoIndex, 0);
  EXPECT_EQ(main().ctlDisplayImage.PhotoPath(), "");
  EXPECT_TRUE(Messages().empty());
}

TEST_F(GridTest, NextWalksOnPastTheFirstLoadedThumbnails) {
  StartWith(40);
  ASSERT_FALSE(Loaded(25));
  for (int i = 0; i < 25; ++i)
    user::Click(main().imgNext);
  EXPECT_EQ(session().giCurrentPhotoIndex, 25);
  EXPECT_TRUE(thumb(25).Current());
  EXPECT_EQ(main().ctlDisplayImage.PhotoPath(), (photos() / "p025.jpg"));
  // The band that counts as on view is m + 1 photos long, so the photo is in
  // it or just below it.
  const int value = main().ctrlImageListVScroll.Value();
  EXPECT_LE(2 * value, 25);
  EXPECT_LE(25, 2 * value + main().getMaxNoImgsDisplayed());
}

TEST_F(GridTest, ArrowKeysMoveThroughTheColumnsAndWrap) {
  StartWith(5);
  user::PressKeys(main(), "{DOWN}");
  EXPECT_EQ(session().giCurrentPhotoIndex, 2);
  user::PressKeys(main(), "{RIGHT}");
  EXPECT_EQ(session().giCurrentPhotoIndex, 3);
  user::PressKeys(main(), "{UP}");
  EXPECT_EQ(session().giCurrentPhotoIndex, 1);
  user::PressKeys(main(), "{LEFT}");
  user::PressKeys(main(), "{LEFT}");
  EXPECT_EQ(session().giCurrentPhotoIndex, 4);  // left of the first: the last
  EXPECT_TRUE(thumb(4).Current());
}

TEST_F(GridTest, APhotoThatVanishedMakesTheFolderReadAgain) {
  StartWith(4);
  user::SetCheck(thumb(1), true);
  fs::remove(photos() / "p002.jpg");
  thumb(2).SelectThumbnail();
  EXPECT_EQ(session().gdicPhotoList.Count(), 3);
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 0);
  EXPECT_EQ(session().giCurrentPhotoIndex, 0);
  EXPECT_TRUE(Messages().empty());
}

TEST_F(GridTest, TheFolderIsListedByNameRegardlessOfCase) {
  for (const char* name :
       {"b.jpg", "a.JPG", "A.jpg", "_x.jpg", "Z.png", "c.TIF", "sub/d.jpg"}) {
    WritePhoto(name, 64, 48);
  }
  fs::create_symlink(photos() / "b.jpg", photos() / "l.jpg");
  std::ofstream(photos() / "notes.txt") << "no photo";
  // What a killed write left: gone once the folder has been read.
  std::ofstream(photos() / ".b.jpg.qbpd-AbC123") << "half a photo";
  Start();
  const std::vector<std::string> expected = {"A.jpg", "a.JPG", "b.jpg", "c.TIF",
                                             "l.jpg", "Z.png", "_x.jpg"};
  ASSERT_EQ(session().gdicPhotoList.Count(), static_cast<int>(expected.size()));
  for (size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(session().gdicPhotoList.Item(static_cast<int>(i)),
              (photos() / expected[i]).string());
  }
  EXPECT_FALSE(fs::exists(photos() / ".b.jpg.qbpd-AbC123"));
  EXPECT_TRUE(fs::exists(photos() / "notes.txt"));
}

TEST_F(GridTest, TheNameStripShortensLongNamesAndGrowsBack) {
  WritePhoto("Tom & Jerry.jpg");
  std::string long_name;
  for (int i = 0; i < 60; ++i)
    long_name +=
        "\xC3\xA9"
        "a";  // "éa"
  WritePhoto(long_name + ".jpg");
  Start();
  frmMainWindow& w = main();
  int tom =
      session().gdicPhotoList.Item(0).find("Tom") != std::string::npos ? 0 : 1;
  thumb(tom).SelectThumbnail();
  EXPECT_EQ(w.lblDisplayImageName.Caption(), "Tom && Jerry");
  EXPECT_EQ(w.txtFileName.Text(), "Tom & Jerry");

  thumb(1 - tom).SelectThumbnail();
  const std::string shown = w.txtFileName.Text();
  ASSERT_GE(shown.size(), 4u);
  EXPECT_EQ(shown.substr(shown.size() - 3), "...");
  EXPECT_LT(host().TextWidth(shown, w.txtFileName.font()),
            w.picDisplayImageCont.Width() - 500);
  EXPECT_EQ(w.txtFileName.Tag(), long_name);
  // The shortened name is the longest whole-character start of the name
  // that still fits with "...".
  const std::string start = shown.substr(0, shown.size() - 3);
  ASSERT_EQ(long_name.compare(0, start.size(), start), 0);
  size_t next = start.size() + 1;
  while (next < long_name.size() &&
         (static_cast<unsigned char>(long_name[next]) & 0xC0) == 0x80) {
    ++next;
  }
  EXPECT_GE(
      host().TextWidth(long_name.substr(0, next) + "...", w.txtFileName.font()),
      w.picDisplayImageCont.Width() - 500);

  // A wider window shows more of the name again.
  w.Move(0, 0, 30000, 12000);
  EXPECT_GT(w.txtFileName.Text().size(), shown.size());
}

TEST_F(GridTest, HelpOpensAtTheTopicOfWhatTheWindowIsBusyWith) {
  StartWith(1);
  user::PressKeys(main(), "{F1}");
  session().giCurrentOperation = 1;  // cropping
  user::PickMenu(main().mnuHHelp);
  ASSERT_EQ(launcher_->Opened().size(), 2u);
  EXPECT_EQ(fs::path(launcher_->Opened()[0]).filename(), HelpPage(6));
  EXPECT_EQ(fs::path(launcher_->Opened()[1]).filename(), HelpPage(7));
  // F1 afterwards is back on the browsing topic.
  EXPECT_EQ(main().HelpContextID(), 6);
}

TEST_F(GridTest, CommandsFollowTheListState) {
  StartWith(1);
  EXPECT_TRUE(main().imgTrash.Enabled() || main().picTrash.Enabled());
  EXPECT_FALSE(main().picImageFlow.Enabled());  // one photo: no stepping
  EXPECT_TRUE(main().mnuECopy.Enabled());
  fs::create_directories(photos().parent_path() / "Empty");
  user::SelectFolder(main().ExpTreeView,
                     (photos().parent_path() / "Empty").string());
  host().Advance(500);
  EXPECT_FALSE(main().mnuECopy.Enabled());
  EXPECT_FALSE(main().imgSelectAll.Enabled());
  EXPECT_TRUE(main().mnuEPaste.Enabled());
  EXPECT_TRUE(main().mnuFGetPhotos.Enabled());
}

}  // namespace
}  // namespace qbpd
