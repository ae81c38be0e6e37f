// The desktop clipboard: a photo copied is on the system clipboard for other
// programs, a picture another program copied is written as a new JPEG, and
// the file rules hold.
#include "ui/qt/qt_clipboard.h"

#include "tests/support/temp_dir.h"
#include "tests/ui/qt_test_support.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <gtest/gtest.h>

#include <filesystem>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

class QtClipboardTest : public ::testing::Test {
 protected:
  void SetUp() override {
    testing::EnsureQtApplication();
    QGuiApplication::clipboard()->clear();
    clipboard_ = MakeQtClipboard();
  }
  testing::TempDir tmp_;
  std::unique_ptr<Clipboard> clipboard_;
};

TEST_F(QtClipboardTest, ACopiedPhotoIsOnTheSystemClipboardAndComesBackAsJpeg) {
  std::string photo = (tmp_.path() / "photo.jpg").string();
  testing::MakePhoto(photo, 320, 200);
  ASSERT_TRUE(clipboard_->SetImageFromFile(photo));
  EXPECT_TRUE(clipboard_->HasImage());
  // What another program would paste.
  EXPECT_EQ(QGuiApplication::clipboard()->image().size(), QSize(320, 200));

  std::string pasted = (tmp_.path() / "pasted.jpg").string();
  ASSERT_TRUE(clipboard_->WriteImageAsJpeg(pasted));
  QImageReader reader(QString::fromStdString(pasted));
  EXPECT_EQ(reader.format(), "jpeg");
  QImage back = reader.read();
  ASSERT_FALSE(back.isNull());
  EXPECT_EQ(back.size(), QSize(320, 200));
  // The left edge of the generated photo is dark red, the right bright.
  EXPECT_LT(qRed(back.pixel(2, 100)), 40);
  EXPECT_GT(qRed(back.pixel(317, 100)), 215);
  // Nothing but the photo is left in the folder: no temporary files.
  int files = 0;
  for ([[maybe_unused]] const auto& entry :
       fs::directory_iterator(tmp_.path())) {
    ++files;
  }
  EXPECT_EQ(files, 2);
}

TEST_F(QtClipboardTest, APictureFromAnotherProgramIsPastedAsAJpegFile) {
  QImage picture(64, 48, QImage::Format_ARGB32);
  picture.fill(QColor(0, 0, 255, 128));  // half see-through blue
  QGuiApplication::clipboard()->setImage(picture);
  EXPECT_TRUE(clipboard_->HasImage());
  std::string pasted = (tmp_.path() / "from elsewhere.jpg").string();
  ASSERT_TRUE(clipboard_->WriteImageAsJpeg(pasted));
  QImage back(QString::fromStdString(pasted));
  ASSERT_EQ(back.size(), QSize(64, 48));
  // Laid on white: blue with the white showing through.
  QColor middle = back.pixelColor(32, 24);
  EXPECT_NEAR(middle.blue(), 255, 8);
  EXPECT_NEAR(middle.red(), 127, 12);
}

TEST_F(QtClipboardTest, TheUprightPictureIsCopied) {
  // A photo stored on its side with an EXIF note to turn it a quarter: the
  // clipboard holds it upright.
  std::string photo = (tmp_.path() / "turned.jpg").string();
  testing::MakePhoto(photo, 40, 20, 0, /*orientation=*/6);
  ASSERT_TRUE(clipboard_->SetImageFromFile(photo));
  EXPECT_EQ(QGuiApplication::clipboard()->image().size(), QSize(20, 40));
}

TEST_F(QtClipboardTest, RefusesBrokenFilesAndNeverReplacesAFile) {
  std::string broken = tmp_.WriteFile("b.jpg", "not really a jpeg").string();
  EXPECT_FALSE(clipboard_->SetImageFromFile(broken));
  EXPECT_FALSE(
      clipboard_->SetImageFromFile((tmp_.path() / "none.jpg").string()));
  EXPECT_FALSE(clipboard_->HasImage());
  // Nothing held: nothing written.
  EXPECT_FALSE(clipboard_->WriteImageAsJpeg((tmp_.path() / "x.jpg").string()));
  EXPECT_FALSE(fs::exists(tmp_.path() / "x.jpg"));

  std::string photo = (tmp_.path() / "photo.jpg").string();
  testing::MakePhoto(photo, 30, 30);
  ASSERT_TRUE(clipboard_->SetImageFromFile(photo));
  // A broken file leaves what was held.
  EXPECT_FALSE(clipboard_->SetImageFromFile(broken));
  EXPECT_TRUE(clipboard_->HasImage());
  fs::path mine = tmp_.WriteFile("mine.jpg", "the user's own file");
  EXPECT_FALSE(clipboard_->WriteImageAsJpeg(mine.string()));
  EXPECT_EQ(testing::ReadFile(mine), "the user's own file");
  // A folder that is not there.
  EXPECT_FALSE(
      clipboard_->WriteImageAsJpeg((tmp_.path() / "no/such/p.jpg").string()));
  clipboard_->Clear();
  EXPECT_FALSE(clipboard_->HasImage());
}

}  // namespace
}  // namespace qbpd
