#include "platform/decode_ahead.h"
#include "platform/forms/user_input.h"
#include "presentation/frm_slide_show.h"
#include "tests/browser/main_window_fixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing_support::MainWindowTest;

class SlideShowTest : public MainWindowTest {
 protected:
  // `count` photos of different widths (100 + 10 i), so that the photo on
  // show tells which it is; a show every 3 seconds.
  void StartWith(int count) {
    for (int i = 0; i < count; ++i) {
      WritePhoto("s" + std::to_string(i) + ".jpg", 100 + 10 * i, 60);
    }
    extra_settings_.push_back(
        {std::string(kDisplayKey), "SlideshowImageIntervalInSeconds", "3"});
    Start();
  }

  frmSlideShow& show() { return app().forms().Get<frmSlideShow>(); }
  std::string PathOf(int index) { return session().gdicPhotoList.Item(index); }
  int Current() { return show().FieldValue("miCurrentIndex").ToLong(); }
  bool Playing() { return show().FieldValue("mbPlaying").ToBool(); }

  // Opens the show from `command` (the main window's button or a menu
  // entry); `inside` runs while it is open and must close it.
  void InShow(Control& command,
              const std::function<void(frmSlideShow&)>& inside) {
    host().Queue("inside the show", [this, inside] { inside(show()); });
    if (auto* menu = dynamic_cast<Menu*>(&command)) {
      user::PickMenu(*menu);
    } else {
      user::Click(command);
    }
    host().Run();
    EXPECT_EQ(app().forms().Find<frmSlideShow>(), nullptr);
  }
};

TEST_F(SlideShowTest, PlaysFromThePhotoOnDisplayAndGoesRoundForEver) {
  StartWith(3);
  user::Click(main().ctrlQuilImage[1]);
  ASSERT_EQ(session().giCurrentPhotoIndex, 1);
  InShow(main().imgSlideShow, [&](frmSlideShow& f) {
    EXPECT_EQ(session().giCurrentOperation, 7);
    EXPECT_EQ(session().gsSlideShowMode, "S");
    EXPECT_EQ(Current(), 1);
    EXPECT_EQ(f.ctlDisplayImage.PhotoPath(), PathOf(1));
    EXPECT_TRUE(Playing());
    EXPECT_EQ(f.tmrPlay.Interval(), 3000);
    EXPECT_TRUE(f.tmrPlay.Enabled());
    EXPECT_EQ(f.imgPlayPause.Tag(), frmSlideShow::kPauseTip);
    EXPECT_TRUE(f.imgPlayPause.Picture().ends_with("32N.png"));
    host().Advance(2999);
    EXPECT_EQ(Current(), 1);
    host().Advance(1);
    EXPECT_EQ(Current(), 2);
    // From the last photo the next tick goes to the first.
    host().Advance(3000);
    EXPECT_EQ(Current(), 0);
    EXPECT_EQ(f.ctlDisplayImage.PhotoPath(), PathOf(0));
    host().Advance(6000);
    EXPECT_EQ(Current(), 2);
    user::Click(f.imgExit);
  });
  // The main window shows the photo shown last.
  EXPECT_EQ(session().giCurrentPhotoIndex, 2);
  EXPECT_EQ(session().gsSelectedImage, PathOf(2));
  EXPECT_EQ(main().ctlDisplayImage.PhotoPath(), PathOf(2));
  EXPECT_EQ(session().giCurrentOperation, 0);
}

TEST_F(SlideShowTest, AFileDeletedDuringTheShowIsSkippedAndForgotten) {
  StartWith(4);
  user::Click(main().ctrlQuilImage[0]);
  InShow(main().imgSlideShow, [&](frmSlideShow& f) {
    fs::remove(PathOf(1));
    fs::remove(PathOf(2));
    host().Advance(3000);
    EXPECT_EQ(Current(), 3);
    EXPECT_FALSE(session().gdicPhotoList.Exists(1));
    EXPECT_FALSE(session().gdicPhotoList.Exists(2));
    EXPECT_EQ(session().gdicPhotoList.Count(), 2);
    host().Advance(3000);
    EXPECT_EQ(Current(), 0);
    user::PressKeys(f, "{ESC}");
  });
  EXPECT_EQ(session().giCurrentPhotoIndex, 0);
}

TEST_F(SlideShowTest, WhenEveryFileWentTheShowSaysSoAndEnds) {
  StartWith(2);
  InShow(main().imgSlideShow, [&](frmSlideShow&) {
    fs::remove(PathOf(0));
    fs::remove(PathOf(1));
    Answer(1);
    host().Advance(3000);
  });
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages().back(), "There are no images to display");
  EXPECT_EQ(host().MessageBoxes().back().style, kMbInformation);
  EXPECT_EQ(session().gdicPhotoList.Count(), 0);
  // The main window shows no photo.
  EXPECT_FALSE(main().ctlDisplayImage.Visible());
  EXPECT_EQ(session().giCurrentOperation, 0);
}

TEST_F(SlideShowTest, FullScreenOpensPausedOnThePhotoOnDisplay) {
  StartWith(3);
  user::Click(main().ctrlQuilImage[2]);
  InShow(main().mnuVFullScreen, [&](frmSlideShow& f) {
    EXPECT_EQ(session().gsSlideShowMode, "F");
    EXPECT_EQ(Current(), 2);
    EXPECT_FALSE(Playing());
    EXPECT_FALSE(f.tmrPlay.Enabled());
    EXPECT_EQ(f.imgPlayPause.Tag(), frmSlideShow::kPlayTip);
    EXPECT_TRUE(f.imgPlayPause.Picture().ends_with("29N.png"));
    // It covers the screen, without a border, on black.
    EXPECT_EQ(f.BorderStyle(), 0);
    EXPECT_EQ(f.WindowState(), kWindowMaximized);
    EXPECT_EQ(f.picBackground.BackColor(), 0);
    EXPECT_EQ(f.ctlDisplayImage.BackRed() + f.ctlDisplayImage.BackGreen() +
                  f.ctlDisplayImage.BackBlue(),
              0);
    host().Advance(10000);
    EXPECT_EQ(Current(), 2);
    // Play shows the next photo at once and then plays.
    user::Click(f.imgPlayPause);
    EXPECT_EQ(Current(), 0);
    EXPECT_TRUE(Playing());
    EXPECT_EQ(f.imgPlayPause.Tag(), frmSlideShow::kPauseTip);
    EXPECT_EQ(f.ToolTipAt("imgPlayPause", 5, 5), frmSlideShow::kPauseTip);
    host().Advance(3000);
    EXPECT_EQ(Current(), 1);
    // Pause.
    user::Click(f.imgPlayPause);
    EXPECT_FALSE(Playing());
    EXPECT_EQ(f.ToolTipAt("imgPlayPause", 5, 5), frmSlideShow::kPlayTip);
    host().Advance(9000);
    EXPECT_EQ(Current(), 1);
    user::PressKeys(f, "{ESC}");
  });
  EXPECT_EQ(session().giCurrentPhotoIndex, 1);
}

TEST_F(SlideShowTest, NextAndPreviousPauseWrapAndForgetNothing) {
  StartWith(3);
  user::Click(main().ctrlQuilImage[0]);
  InShow(main().imgSlideShow, [&](frmSlideShow& f) {
    user::Click(f.imgPrevious);
    EXPECT_FALSE(Playing());
    EXPECT_EQ(Current(), 2);  // wrapped to the last
    EXPECT_EQ(host().MousePointer(), kPointerDefault);
    user::Click(f.imgNext);
    EXPECT_EQ(Current(), 0);  // wrapped to the first
    fs::remove(PathOf(1));
    user::Click(f.imgNext);
    EXPECT_EQ(Current(), 2);  // over the missing file
    EXPECT_TRUE(session().gdicPhotoList.Exists(1));
    user::Click(f.imgPrevious);
    EXPECT_EQ(Current(), 0);
    host().Advance(9000);  // paused
    EXPECT_EQ(Current(), 0);
    user::Click(f.imgExit);
  });
}

TEST_F(SlideShowTest, ALongNameShowsFortyCharactersAndDots) {
  WritePhoto(std::string(41, 'n') + ".jpg");
  WritePhoto("Salt & Pepper.jpg");
  Start();
  InShow(main().imgSlideShow, [&](frmSlideShow& f) {
    const std::string shown = f.lblImageName.Caption();
    if (shown.size() > 20) {
      EXPECT_EQ(shown, std::string(40, 'n') + "...");
    } else {
      EXPECT_EQ(shown, "Salt && Pepper");
    }
    user::Click(f.imgNext);
    const std::string other = f.lblImageName.Caption();
    EXPECT_NE(other, shown);
    EXPECT_TRUE(other == std::string(40, 'n') + "..." ||
                other == "Salt && Pepper");
    // The name is centred in its frame at the bottom.
    EXPECT_EQ(f.fraImageName.Top() + f.fraImageName.Height(), f.Height());
    EXPECT_NEAR(f.lblImageName.Left() * 2 + f.lblImageName.Width(),
                f.fraImageName.Width(), 1);
    user::Click(f.imgExit);
  });
}

TEST_F(SlideShowTest, TheNextPhotoIsDecodedAheadAndAChangedFileIsNot) {
  StartWith(3);
  user::Click(main().ctrlQuilImage[0]);
  InShow(main().imgSlideShow, [&](frmSlideShow& f) {
    auto* ahead =
        dynamic_cast<DecodeAheadDisplay*>(f.ctlDisplayImage.Display());
    ASSERT_NE(ahead, nullptr);
    ahead->WaitUntilReady();
    host().Advance(3000);
    EXPECT_EQ(Current(), 1);
    EXPECT_EQ(ahead->LoadsDecodedAhead(), 1);
    EXPECT_EQ(f.ctlDisplayImage.PhotoWidth(),
              app().images().GetImageWidth(PathOf(1)));
    // The photo after it changes on disk once decoded ahead: the show
    // shows the file as it is now.
    ahead->WaitUntilReady();
    const std::string next = PathOf(2);
    fs::remove(next);
    WritePhoto(fs::path(next).filename().string(), 333, 60);
    host().Advance(3000);
    EXPECT_EQ(Current(), 2);
    EXPECT_EQ(ahead->LoadsDecodedAhead(), 1);
    EXPECT_EQ(f.ctlDisplayImage.PhotoWidth(), 333);
    // Previous comes from the photos decoded ahead too.
    ahead->WaitUntilReady();
    user::Click(f.imgPrevious);
    EXPECT_EQ(Current(), 1);
    EXPECT_EQ(ahead->LoadsDecodedAhead(), 2);
    EXPECT_EQ(f.ctlDisplayImage.PhotoPath(), PathOf(1));
    EXPECT_EQ(f.ctlDisplayImage.PhotoWidth(),
              app().images().GetImageWidth(PathOf(1)));
    user::Click(f.imgExit);
  });
}

}  // namespace
}  // namespace qbpd
