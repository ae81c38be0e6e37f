#include "platform/forms/user_input.h"
#include "presentation/frm_photo_info.h"
#include "tests/browser/main_window_fixture.h"
#include "tests/support/camera_facts_photo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing_support::MainWindowTest;

constexpr char kInvalid[] = "Please enter valid characters for file name";

class PhotoInfoTest : public MainWindowTest {
 protected:
  PhotoInfoTest() {
    // Dates show in the user's zone; the tests fix it.
    ::setenv("TZ", "UTC", 1);
    ::tzset();
  }

  frmPhotoInfo& info() { return app().forms().Get<frmPhotoInfo>(); }

  // Opens the dialog from the main window's button; `inside` runs while it
  // is open and must close it.
  void WithInfo(const std::function<void(frmPhotoInfo&)>& inside) {
    host().Queue("inside the dialog", [this, inside] { inside(info()); });
    user::Click(main().imgInfo);
    host().Run();
    EXPECT_EQ(app().forms().Find<frmPhotoInfo>(), nullptr);
  }

  static void TypeName(frmPhotoInfo& f, const std::string& name) {
    f.txtFileName.SetText(name);
  }
};

TEST_F(PhotoInfoTest, ShowsEveryFieldInItsFormat) {
  const std::string path = WritePhoto("holiday.jpg", 640, 480);
  // A file whose size in k differs by 1024 and by 1000.
  {
    std::ofstream grow(path, std::ios::app | std::ios::binary);
    grow << std::string(60000, '\0');
  }
  std::tm when{};
  when.tm_year = 2024 - 1900;
  when.tm_mon = 4;
  when.tm_mday = 17;
  when.tm_hour = 14;
  when.tm_min = 3;
  when.tm_sec = 9;
  const timespec times[2] = {{::timegm(&when), 0}, {::timegm(&when), 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  Start();
  const auto bytes = static_cast<double>(fs::file_size(path));
  ASSERT_NE(std::lround(bytes / 1024), std::lround(bytes / 1000));
  WithInfo([&](frmPhotoInfo& f) {
    EXPECT_EQ(f.txtFileName.Text(), "holiday");
    EXPECT_EQ(f.lblFileName.Caption(), "holiday");
    EXPECT_EQ(f.lblLocation.Caption(), photos().string() + "/");
    EXPECT_EQ(f.lblDispDateModified.Caption(), "May 17, 2024 2:03:09 PM");
    EXPECT_FALSE(f.lbDispDateCreated.Caption().empty());
    EXPECT_EQ(f.lbldispDimensions.Caption(), "640(w) x 480(h)");
    EXPECT_EQ(f.lblDispColors.Caption(), "24 bit (16777216) RGB");
    EXPECT_EQ(f.lblDispFilesSize.Caption(),
              std::to_string(std::lround(bytes / 1024)) + "k");
    EXPECT_EQ(f.lblDispImageFormat.Caption(), "JPEG image");
    EXPECT_FALSE(f.imgInfoImage.Picture().empty());
    // No camera wrote into this photo: its rows stay hidden.
    EXPECT_FALSE(f.lblDispCamera.Visible());
    EXPECT_FALSE(f.lblIsoHead.Visible());
    user::Click(f.imgCancel);
  });
  EXPECT_EQ(session().giCurrentOperation, 0);
  EXPECT_EQ(host().ShownForms().back(), "frmPhotoInfo modal");
}

TEST_F(PhotoInfoTest, ShowsTheCameraFactsBelowTheFields) {
  testing::TestCameraFacts camera;
  camera.make = "Quillcam";
  camera.model = "QX-24";
  camera.date_taken = "2023:12:01 08:15:00";
  camera.exposure_numerator = 10;
  camera.exposure_denominator = 1250;
  camera.focal_numerator = 50;
  camera.focal_denominator = 1;
  camera.iso = 200;
  fs::create_directories(photos());
  ASSERT_TRUE(testing::WriteCameraFactsPhoto((photos() / "cam.jpg").string(),
                                             120, 90, camera));
  Start();
  WithInfo([&](frmPhotoInfo& f) {
    EXPECT_EQ(f.lblDispCamera.Caption(), "Quillcam QX-24");
    EXPECT_EQ(f.lblDispDateTaken.Caption(), "December 01, 2023 8:15:00 AM");
    EXPECT_EQ(f.lblDispExposure.Caption(), "1/125 s");
    EXPECT_EQ(f.lblDispFocalLength.Caption(), "50 mm");
    EXPECT_EQ(f.lblDispIso.Caption(), "200");
    EXPECT_TRUE(f.lblDispIso.Visible());
    // Below the fields the Part names, in order.
    EXPECT_GT(f.lblCameraHead.Top(), f.lblImageFormatHead.Top());
    EXPECT_GT(f.lblIsoHead.Top(), f.lblCameraHead.Top());
    EXPECT_GT(f.imgOK.Top(), f.lblIsoHead.Top());
    user::Click(f.imgCancel);
  });
}

TEST_F(PhotoInfoTest, ALongNameIsCutInTheLabelOnly) {
  WritePhoto("abcdefghijklmnopqrstuvwxyz.jpg");  // 26 characters
  WritePhoto("Tom & Jerry.jpg");
  Start();
  WithInfo([&](frmPhotoInfo& f) {
    EXPECT_EQ(f.lblFileName.Caption(), "abcdefghijklmnopqrstuvwxy...");
    EXPECT_EQ(f.txtFileName.Text(), "abcdefghijklmnopqrstuvwxyz");
    user::PressKeys(f, "{ESC}");
  });
}

TEST_F(PhotoInfoTest, RenamesThePhotoAndKeepsItsExtension) {
  const std::string old_path = WritePhoto("p1.JPG");
  Start();
  WithInfo([&](frmPhotoInfo& f) {
    TypeName(f, "  beach day  ");
    user::Click(f.imgOK);
  });
  const fs::path renamed = photos() / "beach day.JPG";
  EXPECT_TRUE(fs::exists(renamed));
  EXPECT_FALSE(fs::exists(old_path));
  EXPECT_EQ(session().gsSelectedImage, renamed.string());
  EXPECT_EQ(session().gdicPhotoList.Item(session().giCurrentPhotoIndex),
            renamed.string());
  // The main window shows the new name afterwards.
  EXPECT_EQ(main().txtFileName.Tag(), "beach day");
  EXPECT_TRUE(Messages().empty());
}

TEST_F(PhotoInfoTest, TheSameNameJustCloses) {
  const std::string path = WritePhoto("same.jpg");
  Start();
  WithInfo([&](frmPhotoInfo& f) { user::Click(f.imgOK); });
  EXPECT_TRUE(fs::exists(path));
  EXPECT_TRUE(Messages().empty());
}

TEST_F(PhotoInfoTest, RefusedNamesKeepTheDialogOpenWithTheText) {
  const std::string path = WritePhoto("a.jpg");
  WritePhoto("taken.jpg");
  Start();
  session().gbHasAccessChecks = true;
  struct Row {
    const char* why;
    const char* text;
    const char* message;
  };
  const Row rows[] = {
      {"blank", "   ", "Enter file name"},
      {"a lone dot", ".",
       "A file name cannot contain any of the following characters \r\n"
       "\\ / : * ? \" < > |"},
      {"a pasted slash", "x/y",
       "A file name cannot contain any of the following characters \r\n"
       "\\ / : * ? \" < > |"},
      {"another photo's name", "taken", "With this name, file already exists"},
  };
  WithInfo([&](frmPhotoInfo& f) {
    for (const Row& row : rows) {
      SCOPED_TRACE(row.why);
      TypeName(f, row.text);
      Answer(1);
      user::Click(f.imgOK);
      ASSERT_FALSE(Messages().empty());
      EXPECT_EQ(Messages().back(), row.message);
      EXPECT_EQ(host().MessageBoxes().back().style, kMbInformation);
      EXPECT_EQ(f.txtFileName.Text(), row.text);
      EXPECT_TRUE(f.Visible());
    }
    user::Click(f.imgCancel);
  });
  EXPECT_TRUE(fs::exists(path));
  EXPECT_TRUE(fs::exists(photos() / "taken.jpg"));
}

TEST_F(PhotoInfoTest, TypedKeysFollowTheFileNameRules) {
  WritePhoto("keys.jpg");
  Start();
  WithInfo([&](frmPhotoInfo& f) {
    f.txtFileName.SetText("");
    Answer(1);
    user::TypeKeys(f.txtFileName, "ab:");
    EXPECT_EQ(Messages().back(), kInvalid);
    EXPECT_EQ(f.txtFileName.Text(), "ab");
    // Enter is left alone: the dialog stays.
    user::TypeKeys(f.txtFileName, "{ENTER}");
    EXPECT_TRUE(f.Visible());
    // Esc in the box is Cancel.
    user::TypeKeys(f.txtFileName, "{ESC}");
  });
  EXPECT_TRUE(fs::exists(photos() / "keys.jpg"));
}

TEST_F(PhotoInfoTest, AFolderThatRefusesWritesGivesAccessDenied) {
  if (::geteuid() == 0) {
    GTEST_SKIP() << "the superuser may write into a read-only folder";
  }
  const std::string path = WritePhoto("locked.jpg");
  Start();
  fs::permissions(photos(), fs::perms::owner_write, fs::perm_options::remove);
  WithInfo([&](frmPhotoInfo& f) {
    TypeName(f, "other");
    Answer(1);
    user::Click(f.imgOK);
    EXPECT_EQ(Messages().back(),
              "Cannot rename locked: Access is denied. \r\n\r\nMake sure the "
              "disk is not full or write-protected \r\nand that the file is "
              "not currently in use.");
    EXPECT_EQ(host().MessageBoxes().back().style, kMbStop);
    user::Click(f.imgCancel);
  });
  fs::permissions(photos(), fs::perms::owner_write, fs::perm_options::add);
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(PhotoInfoTest, AnEmptyListAsksForAPhoto) {
  fs::create_directories(photos());
  Start();
  Answer(1);
  // The button is off with no photo; the command still guards itself.
  main().imgInfo.Raise("Click");
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages().back(), "Please select the photo(s)");
  EXPECT_EQ(app().forms().Find<frmPhotoInfo>(), nullptr);
  EXPECT_EQ(session().giCurrentOperation, 0);
}

TEST_F(PhotoInfoTest, AThumbnailThatCantBeMadeSaysSo) {
  const std::string path = WritePhoto("spoilt.jpg");
  Start();
  // Spoilt behind the program's back after the folder was read.
  std::ofstream(path, std::ios::trunc) << "no longer a photo";
  Answer(1);
  WithInfo([&](frmPhotoInfo& f) {
    EXPECT_EQ(f.lblDispImageFormat.Caption(), "");
    EXPECT_EQ(f.lbldispDimensions.Caption(), "0(w) x 0(h)");
    user::Click(f.imgCancel);
  });
  ASSERT_FALSE(Messages().empty());
  EXPECT_EQ(Messages().front(), "Error in generating the thumbnail");
  EXPECT_EQ(host().MessageBoxes().front().style, kMbStop);
}

}  // namespace
}  // namespace qbpd
