// The checked photos turned on disk: frmRotate's run, its progress, Cancel
// between two photos, its close box, and the files that can't stay as they
// are.
#include "editor/frm_rotate.h"
#include "tests/editor/editor_fixture.h"

#include <filesystem>

namespace qbpd {
namespace {

using testing_support::EditorTest;
namespace fs = std::filesystem;

class BatchRotationTest : public EditorTest {
 protected:
  // `count` landscape photos; the first is on display.
  void StartWith(int count) {
    for (int i = 0; i < count; ++i) {
      paths_.push_back(
          WritePhoto("p" + std::to_string(10 + i) + ".jpg", 120 + i, 80));
    }
    Start();
  }
  void Check(int index) { user::SetCheck(main().ctrlQuilImage[index], true); }
  frmRotate* Dialog() { return app().forms().Find<frmRotate>(); }
  // Turns the checked photos right through the button's pop-up; `during`
  // runs at the given pump of the run (the user acting while it works).
  // `notices` message boxes of the run are answered with OK.
  void RotateChecked(std::function<void()> during = nullptr,
                     int pump = 0,
                     int notices = 0) {
    PickPopup(main().mnuMultiple);
    // The dialog's loop takes the wait; the run's pumps then find the step
    // of the user acting meanwhile.
    host().Queue("wait for the run", [this] { host().Wait(3000); });
    for (int i = 0; i < notices; ++i) {
      Answer(kIdOk);
    }
    if (during) {
      host().QueueInside("during the run", during, pump);
    }
    user::Click(main().imgRightRotate);
  }
  bool Turned(int i) { return WidthOf(paths_[i]) == 80; }
  std::vector<std::string> paths_;
};

TEST_F(BatchRotationTest, EveryCheckedPhotoTurnsAndTheDialogClosesItself) {
  StartWith(4);
  for (int i : {1, 2, 3}) {
    Check(i);
  }
  std::string seen_count;
  RotateChecked([&] { seen_count = Dialog()->lblRotatingPhotoNo.Caption(); },
                /*pump=*/1);
  EXPECT_FALSE(Turned(0));
  for (int i : {1, 2, 3}) {
    EXPECT_TRUE(Turned(i)) << paths_[i];
    EXPECT_EQ(HeightOf(paths_[i]), 120 + i);
  }
  EXPECT_EQ(seen_count, "2 of 3");
  EXPECT_EQ(Dialog(), nullptr);
  EXPECT_EQ(host().ShownForms().back(), "frmRotate modal");
  EXPECT_EQ(session().giCurrentOperation, 0);
  EXPECT_EQ(session().gsRotationScope, "M");
  EXPECT_FALSE(session().gbRotationBusy);
  EXPECT_TRUE(Messages().empty());
  // Nothing new in the grid, and the checks stay.
  EXPECT_EQ(session().gdicPhotoList.Count(), 4);
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 3);
}

TEST_F(BatchRotationTest, TheProgressShowsCountNameAndPercent) {
  StartWith(3);
  Check(1);
  Check(2);
  std::string name;
  std::string percent;
  double bar = -1;
  double frame = 0;
  RotateChecked(
      [&] {
        frmRotate* d = Dialog();
        name = d->lblRotateImageName.Caption();
        percent = d->lblPercent.Caption();
        bar = d->ImgProgressBar.Width();
        frame = d->shProgressBar.Width();
      },
      1);
  // Seen before the second photo: the first is done.
  EXPECT_EQ(name, "p11.jpg");
  EXPECT_EQ(percent, "50%");
  EXPECT_DOUBLE_EQ(bar, frame / 2);
}

TEST_F(BatchRotationTest, TheDialogStaysASecondAfterTheLastPhoto) {
  StartWith(3);
  Check(1);
  Check(2);
  // Pumps: before each of the two photos, then the second's wait begins.
  bool shown_at_end = false;
  std::string percent;
  RotateChecked(
      [&] {
        shown_at_end = Dialog() != nullptr && Dialog()->Visible();
        percent = Dialog() != nullptr ? Dialog()->lblPercent.Caption() : "";
      },
      2);
  EXPECT_TRUE(shown_at_end);
  EXPECT_EQ(percent, "100%");
  EXPECT_EQ(Dialog(), nullptr);
}

TEST_F(BatchRotationTest, CancelTakesEffectBetweenTwoPhotos) {
  StartWith(10);
  for (int i = 0; i < 10; ++i) {
    Check(i);
  }
  // Cancel is pressed while the first photo is done and the second waits.
  RotateChecked([&] { user::Click(Dialog()->imgCancel); }, 1);
  EXPECT_TRUE(Turned(0));
  for (int i = 1; i < 10; ++i) {
    EXPECT_FALSE(Turned(i)) << paths_[i];
    EXPECT_EQ(WidthOf(paths_[i]), 120 + i);
  }
  EXPECT_EQ(rotation_->rotations.size(), 1u);
  EXPECT_EQ(Dialog(), nullptr);
}

TEST_F(BatchRotationTest, TheCloseBoxStopsTheRunAfterThePhotoInHand) {
  StartWith(5);
  for (int i = 0; i < 5; ++i) {
    Check(i);
  }
  RotateChecked([&] { user::CloseForm(*Dialog()); }, 2);
  EXPECT_TRUE(Turned(0));
  EXPECT_TRUE(Turned(1));
  for (int i = 2; i < 5; ++i) {
    EXPECT_FALSE(Turned(i)) << paths_[i];
  }
  EXPECT_EQ(Dialog(), nullptr);
  EXPECT_FALSE(session().gbRotationBusy);
}

TEST_F(BatchRotationTest, AFailedPhotoIsPassedOverSilently) {
  StartWith(3);
  for (int i = 0; i < 3; ++i) {
    Check(i);
  }
  rotation_->failing_sources.insert(paths_[1]);
  RotateChecked();
  EXPECT_TRUE(Turned(0));
  EXPECT_FALSE(Turned(1));
  EXPECT_TRUE(Turned(2));
  EXPECT_TRUE(Messages().empty());
}

TEST_F(BatchRotationTest, APngOrAReadOnlyJpegMakesANewFileInTheGrid) {
  const std::string png = WritePhoto("a.png", 60, 40);
  StartWith(2);
  fs::permissions(
      paths_[1],
      fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
      fs::perm_options::remove);
  for (int i = 0; i < 3; ++i) {
    Check(i);
  }
  RotateChecked(nullptr, 0, /*notices=*/1);
  EXPECT_EQ(LastMessage(),
            "The file 'p11.jpg' is a read-only file. The file will save with "
            "'p11_Fixed(1).jpg'.");
  const std::string png_copy = InPhotos("a_Fixed(1).jpg");
  const std::string jpeg_copy = InPhotos("p11_Fixed(1).jpg");
  EXPECT_EQ(WidthOf(png_copy), 40);
  EXPECT_EQ(WidthOf(jpeg_copy), 80);
  // The sources stay, and so do their checks.
  EXPECT_EQ(WidthOf(png), 60);
  EXPECT_EQ(WidthOf(paths_[1]), 121);
  EXPECT_TRUE(Turned(0));
  EXPECT_EQ(session().gdicPhotoList.Count(), 5);
  EXPECT_EQ(session().giPhotoCount, 5);
  EXPECT_EQ(session().gdicSelectedPhotos.Count(), 3);
}

TEST_F(BatchRotationTest, ExactlyOneCheckedPhotoTurnsWithoutTheDialog) {
  StartWith(3);
  Check(2);
  PickPopup(main().mnuMultiple);
  user::Click(main().imgLeftRotate);
  EXPECT_TRUE(Turned(2));
  EXPECT_FALSE(Turned(0));
  EXPECT_TRUE(rotation_->rotations.back().ends_with(" -90"));
  EXPECT_EQ(Dialog(), nullptr);
  for (const std::string& form : host().ShownForms()) {
    EXPECT_NE(form, "frmRotate modal");
  }
}

TEST_F(BatchRotationTest, AFolderThatCantBeWrittenRotatesNothing) {
  StartWith(3);
  Check(1);
  Check(2);
  const fs::path moved = photos().parent_path() / "Moved";
  fs::rename(photos(), moved);
  PickPopup(main().mnuMultiple);
  Answer(kIdOk);
  user::Click(main().imgLeftRotate);
  EXPECT_EQ(LastMessage(),
            "Cannot rotate the photos: Access is denied. \r\n\r\nMake sure the "
            "disk is not full or write-protected. ");
  EXPECT_TRUE(rotation_->rotations.empty());
}

TEST_F(BatchRotationTest, ThePhotoMenuTurnsTheCheckedPhotosLeft) {
  StartWith(3);
  Check(1);
  Check(2);
  host().Queue("wait for the run", [this] { host().Wait(3000); });
  user::PickMenu(main().mnuPRotMultiLeft);
  EXPECT_TRUE(Turned(1));
  EXPECT_TRUE(Turned(2));
  EXPECT_TRUE(rotation_->rotations.back().ends_with(" -90"));
  EXPECT_EQ(session().giCurrentOperation, 0);
}

}  // namespace
}  // namespace qbpd
