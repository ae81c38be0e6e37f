#include "core/frm_msg_infrm.h"
#include "platform/bmp_reader.h"
#include "platform/forms/user_input.h"
#include "presentation/frm_wallpaper.h"
#include "tests/browser/main_window_fixture.h"
#include "tests/support/fake_program_runner.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing_support::MainWindowTest;

class WallpaperDialogTest : public MainWindowTest {
 protected:
  // The desktop is `desktop`, its tools the fake's.
  void StartOn(const std::string& desktop) {
    wallpaper_ =
        MakeDesktopWallpaper(runner_, {{"XDG_CURRENT_DESKTOP", desktop}});
    Start();
  }
  frmWallpaper& dialog() { return app().forms().Get<frmWallpaper>(); }
  std::string Bitmap() {
    return session().gsSystemFolder + frmWallpaper::kBitmapName;
  }
  void WithDialog(Control& command,
                  const std::function<void(frmWallpaper&)>& inside) {
    host().Queue("inside the dialog", [this, inside] { inside(dialog()); });
    if (auto* menu = dynamic_cast<Menu*>(&command)) {
      user::PickMenu(*menu);
    } else {
      user::Click(command);
    }
    host().Run();
    EXPECT_EQ(app().forms().Find<frmWallpaper>(), nullptr);
  }
  int BitmapWidth() {
    std::ifstream in(Bitmap(), std::ios::binary);
    BmpInfo info;
    return ReadBmpInfo(in, 1u << 30, info).ok() ? info.width : 0;
  }

  std::shared_ptr<testing::FakeProgramRunner> runner_ =
      std::make_shared<testing::FakeProgramRunner>();
};

TEST_F(WallpaperDialogTest, SetsThePhotoAsTheWallpaperInTheChosenArrangement) {
  WritePhoto("view.jpg", 120, 80);
  runner_->Answer("gsettings list-keys", 0,
                  "picture-uri\npicture-uri-dark\npicture-options\n");
  StartOn("GNOME");
  WithDialog(main().imgWallpaper, [&](frmWallpaper& f) {
    EXPECT_EQ(session().giCurrentOperation, 8);
    EXPECT_EQ(f.lblWPapHead.Caption(), "set as wallpaper");
    EXPECT_EQ(f.lblWPapImageName.Caption(), "view");
    EXPECT_FALSE(f.imgWallpaper.Picture().empty());
    EXPECT_TRUE(f.imgWPapOK.Picture().ends_with("26N.png"));
    EXPECT_TRUE(f.imgWPapCancel.Picture().ends_with("25N.png"));
    user::Click(f.optWPapCentered);
    host().Queue("the notice", [this] {
      frmMsgInfrm& notice = app().forms().Get<frmMsgInfrm>();
      EXPECT_EQ(notice.lblHead.Caption(), "congratulations!");
      EXPECT_EQ(notice.lblMessage.Caption(),
                "Selected image has been successfully set as wallpaper.");
      user::Click(notice.imgOK);
    });
    user::Click(f.imgWPapOK);
  });
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(BitmapWidth(), 120);
  const std::string t = runner_->Transcript();
  EXPECT_NE(t.find("picture-uri 'file://"), std::string::npos);
  EXPECT_NE(t.find("picture-uri-dark 'file://"), std::string::npos);
  EXPECT_NE(t.find("picture-options 'centered'"), std::string::npos);
  EXPECT_EQ(session().giCurrentOperation, 0);
  EXPECT_EQ(host().MousePointer(), kPointerDefault);
}

TEST_F(WallpaperDialogTest, NoKnownDesktopSaysSoAndKeepsTheBitmap) {
  WritePhoto("view.jpg", 90, 60);
  StartOn("sway");
  WithDialog(main().mnuPWallPaper, [&](frmWallpaper& f) {
    Answer(1);
    user::Click(f.imgWPapOK);
  });
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages().back(), "Unable to set the Wallpaper");
  EXPECT_EQ(host().MessageBoxes().back().style, kMbStop);
  EXPECT_TRUE(runner_->Calls().empty());
  EXPECT_EQ(BitmapWidth(), 90);
}

TEST_F(WallpaperDialogTest, ASecondWallpaperOverwritesTheSameBitmap) {
  const std::string first = WritePhoto("a.jpg", 100, 50);
  WritePhoto("b.jpg", 70, 50);
  StartOn("XFCE");
  for (const std::string& photo : {first, std::string()}) {
    (void)photo;
    WithDialog(main().imgWallpaper, [&](frmWallpaper& f) {
      host().Queue("the notice", [this] {
        user::Click(app().forms().Get<frmMsgInfrm>().imgOK);
      });
      user::Click(f.optWPapTiled);
      user::Click(f.imgWPapOK);
    });
    EXPECT_EQ(BitmapWidth(),
              app().images().GetImageWidth(session().gsSelectedImage));
    user::Click(main().imgNext);
  }
  int bitmaps = 0;
  for (const auto& e : fs::directory_iterator(session().gsSystemFolder)) {
    bitmaps += e.path().extension() == ".bmp" ? 1 : 0;
  }
  EXPECT_EQ(bitmaps, 1);
  EXPECT_NE(runner_->Transcript().find("image-style -n -t int -s 2"),
            std::string::npos);
}

TEST_F(WallpaperDialogTest, AnUnreadablePhotoGivesTheBitmapMessage) {
  const std::string path = WritePhoto("gone.jpg");
  StartOn("GNOME");
  WithDialog(main().imgWallpaper, [&](frmWallpaper& f) {
    // Spoilt behind the program's back while the dialog is open.
    std::ofstream(path, std::ios::trunc) << "no longer a photo";
    Answer(1);
    user::Click(f.imgWPapOK);
  });
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages().back(), "Unable to set the selected file as wallpaper.");
  EXPECT_EQ(host().MessageBoxes().back().style, kMbStop);
  EXPECT_TRUE(runner_->Calls().empty());
  EXPECT_FALSE(fs::exists(Bitmap()));
}

TEST_F(WallpaperDialogTest, CancelAndEscChangeNothing) {
  WritePhoto("keep.jpg");
  StartOn("GNOME");
  WithDialog(main().imgWallpaper,
             [&](frmWallpaper& f) { user::Click(f.imgWPapCancel); });
  WithDialog(main().imgWallpaper,
             [&](frmWallpaper& f) { user::PressKeys(f, "{ESC}"); });
  EXPECT_TRUE(runner_->Calls().empty());
  EXPECT_FALSE(fs::exists(Bitmap()));
  EXPECT_TRUE(Messages().empty());
}

TEST_F(WallpaperDialogTest, AnEmptyListAsksForAPhoto) {
  fs::create_directories(photos());
  StartOn("GNOME");
  Answer(1);
  main().imgWallpaper.Raise("Click");
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages().back(), "Please select the photo(s)");
  EXPECT_EQ(app().forms().Find<frmWallpaper>(), nullptr);
  EXPECT_EQ(host().MousePointer(), kPointerDefault);
}

}  // namespace
}  // namespace qbpd
