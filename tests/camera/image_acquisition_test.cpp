#include "camera/image_acquisition.h"

#include "camera/camera_lines.h"
#include "tests/support/fake_camera_connection.h"
#include "tests/support/fake_camera_devices.h"
#include "tests/support/file_faults.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::FakeCameraConnection;
using testing::ReadFile;

// Each case runs with the saves one at a time and with them on a thread of
// their own while the next photo is fetched.
class ImageAcquisitionTest : public ::testing::TestWithParam<bool> {
 protected:
  ImageAcquisitionTest() {
    transfer_.on_threads = GetParam();
    fs::create_directories(dir_ / "data");
    for (int i = 1; i <= 5; ++i) {
      camera_.photos.push_back(
          {{"/DCIM/100TEST",
            "IMG_" + std::to_string(i) + (i == 3 ? ".CR2" : ".JPG")},
           "photo " + std::to_string(i)});
    }
  }
  ImageAcquisitionResult Run(const std::string& argument) {
    ImageAcquisitionRun run;
    run.argument = argument;
    run.data_folder = (dir_ / "data").string();
    run.delete_from_camera = delete_;
    run.open = [this](const std::string& device, std::string& error) {
      opened_.push_back(device);
      std::unique_ptr<CameraConnection> camera;
      if (camera_missing_) {
        error = "no camera";
        return camera;
      }
      camera_.downloads = std::make_shared<int>(0);
      camera_.deleted = std::make_shared<std::vector<std::string>>();
      camera = std::make_unique<FakeCameraConnection>(camera_);
      return camera;
    };
    run.transfer = &transfer_;
    run.stop_requested = [this] { return *camera_.downloads >= stop_after_; };
    // The program takes "310" while the helper waits.
    run.sleep = [this](int) {
      answers_.push_back(ReadFile(Answer()));
      fs::remove(Answer());
    };
    return RunImageAcquisition(run);
  }
  fs::path Answer() const { return dir_ / "data" / kImgAcqFile; }
  std::string Out() const { return (dir_ / "out").string(); }

  testing::TempDir dir_;
  FakeCameraConnection camera_;
  testing::FakeFileTransfer transfer_;
  bool delete_ = false;
  bool camera_missing_ = false;
  int stop_after_ = 1000;
  std::vector<std::string> opened_;
  std::vector<std::string> answers_;
};

TEST_P(ImageAcquisitionTest, CopiesEveryPhotoAsTheBaseNameNumbered) {
  const ImageAcquisitionResult r = Run("Cam (disk:/c)*" + Out() + "*Picture");
  EXPECT_EQ(r.code, "300");
  EXPECT_EQ(r.copied, 5);
  ASSERT_EQ(answers_.size(), 1u);
  EXPECT_EQ(answers_[0], "310 \n");
  EXPECT_EQ(ReadFile(Answer()), "300 " + Out() + "|\n");
  EXPECT_EQ(ReadFile(dir_ / "out/Picture 1.JPG"), "photo 1");
  EXPECT_EQ(ReadFile(dir_ / "out/Picture 3.CR2"), "photo 3");
  EXPECT_EQ(ReadFile(dir_ / "out/Picture 5.JPG"), "photo 5");
  EXPECT_TRUE(camera_.deleted->empty());
  EXPECT_EQ(opened_, std::vector<std::string>{"Cam (disk:/c)"});
}

TEST_P(ImageAcquisitionTest, ATakenNameGetsTheNextNumberAndNothingIsReplaced) {
  fs::create_directories(dir_ / "out");
  std::ofstream(dir_ / "out/Picture 2.JPG") << "mine";
  const ImageAcquisitionResult r = Run("Cam*" + Out() + "*Picture");
  EXPECT_EQ(r.code, "300");
  EXPECT_EQ(ReadFile(dir_ / "out/Picture 2.JPG"), "mine");
  EXPECT_EQ(ReadFile(dir_ / "out/Picture 3.JPG"), "photo 2");
  EXPECT_EQ(ReadFile(dir_ / "out/Picture 6.JPG"), "photo 5");
}

TEST_P(ImageAcquisitionTest, DeletesOnlyWhenAskedAndOnlyVerifiedCopies) {
  delete_ = true;
  transfer_.fail["Picture 4.JPG"] = TransferStatus::kVerifyFailed;
  const ImageAcquisitionResult r = Run("Cam*" + Out() + "*Picture");
  EXPECT_EQ(r.code, "400");
  EXPECT_EQ(r.copied, 3);
  // Photos 1 to 3 left the camera; 4 failed its check, so 4 and 5 stay.
  EXPECT_EQ(*camera_.deleted,
            (std::vector<std::string>{"/DCIM/100TEST/IMG_1.JPG",
                                      "/DCIM/100TEST/IMG_2.JPG",
                                      "/DCIM/100TEST/IMG_3.CR2"}));
  EXPECT_FALSE(fs::exists(dir_ / "out/Picture 4.JPG"));
  EXPECT_EQ(ReadFile(Answer()), "400 \n");
}

// 20 photos: on threads they are saved in batches of 16, each flushed on
// its own; one at a time, the folder is flushed once for all 20.
TEST_P(ImageAcquisitionTest, AFolderThatCantBeFlushedKeepsItsPhotosOnCamera) {
  struct Case {
    // Empty: every flush fails; otherwise the flush after this photo's save.
    const char* failing_after;
    std::size_t deleted_ahead;
    std::size_t deleted_one_at_a_time;
  };
  for (int i = 6; i <= 20; ++i) {
    camera_.photos.push_back(
        {{"/DCIM/100TEST", "IMG_" + std::to_string(i) + ".JPG"},
         "photo " + std::to_string(i)});
  }
  for (const Case& c : {Case{"", 0, 0}, Case{"Picture 2.JPG", 0, 0},
                        Case{"Picture 18.JPG", 16, 0}}) {
    SCOPED_TRACE(c.failing_after);
    transfer_.fail_flush = *c.failing_after == '\0';
    transfer_.fail_flush_after = {c.failing_after};
    delete_ = true;
    // A folder of its own for each case, so that the names start at 1.
    const std::string out = Out() + "/" + std::to_string(c.deleted_ahead) +
                            (*c.failing_after == '\0' ? "all" : "one");
    const ImageAcquisitionResult r = Run("Cam*" + out + "*Picture");
    EXPECT_EQ(r.code, "400");
    EXPECT_EQ(r.error, "injected failure to flush " + out);
    // Only photos of batches flushed before left the camera.
    EXPECT_EQ(camera_.deleted->size(),
              GetParam() ? c.deleted_ahead : c.deleted_one_at_a_time);
    for (const std::string& gone : *camera_.deleted) {
      EXPECT_LT(std::stoi(gone.substr(gone.rfind('_') + 1)), 17) << gone;
    }
    EXPECT_EQ(ReadFile(Answer()), "400 \n");
  }
}

TEST_P(ImageAcquisitionTest, PhotosLeaveTheCameraOnlyAfterTheFolderFlush) {
  delete_ = true;
  // The camera's deletions are recorded among the transfer's calls.
  camera_.on_delete = [this](const std::string& name) {
    transfer_.Note("delete " + name);
  };
  const ImageAcquisitionResult r = Run("Cam*" + Out() + "*Picture");
  EXPECT_EQ(r.code, "300");
  EXPECT_EQ(r.deleted, 5);
  std::vector<std::string> steps;
  for (const std::string& call : transfer_.log) {
    if (call.rfind("flush ", 0) == 0 || call.rfind("delete ", 0) == 0) {
      steps.push_back(call.substr(0, call.find(' ')));
    }
  }
  EXPECT_EQ(steps, (std::vector<std::string>{"flush", "delete", "delete",
                                             "delete", "delete", "delete"}));
}

TEST_P(ImageAcquisitionTest, ACameraPulledOutMidwayIsAFailureWithWholeCopies) {
  delete_ = true;
  camera_.fail_download_from = 3;
  const ImageAcquisitionResult r = Run("Cam*" + Out() + "*Picture");
  EXPECT_EQ(r.code, "400");
  EXPECT_EQ(r.copied, 2);
  EXPECT_EQ(camera_.deleted->size(), 2u);
  int files = 0;
  for ([[maybe_unused]] const auto& e : fs::directory_iterator(dir_ / "out")) {
    ++files;
  }
  EXPECT_EQ(files, 2);
}

// The disk fills up midway through the sixth photo: the five before it are
// saved and leave the camera, the sixth stays there and leaves no half file.
TEST_P(ImageAcquisitionTest, AFullDiskMidPhotoLeavesNoHalfPhoto) {
  delete_ = true;
  camera_.photos.push_back(
      {{"/DCIM/100TEST", "IMG_6.JPG"}, std::string(300000, 'x')});
  ImageAcquisitionResult r;
  {
    const testing::ScopedFileSizeLimit full_disk(100000);
    r = Run("Cam*" + Out() + "*Picture");
  }
  EXPECT_EQ(r.code, "400");
  EXPECT_EQ(r.error.rfind("Cannot write " + Out() + "/Picture 6.JPG: ", 0), 0u)
      << r.error;
  EXPECT_EQ(r.copied, 5);
  EXPECT_EQ(camera_.deleted->size(), 5u);
  EXPECT_EQ(std::count(camera_.deleted->begin(), camera_.deleted->end(),
                       "/DCIM/100TEST/IMG_6.JPG"),
            0);
  std::vector<std::string> names;
  for (const auto& e : fs::directory_iterator(dir_ / "out")) {
    names.push_back(e.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"Picture 1.JPG", "Picture 2.JPG",
                                             "Picture 3.CR2", "Picture 4.JPG",
                                             "Picture 5.JPG"}));
}

TEST_P(ImageAcquisitionTest, APhotoThatCantBeBegunOnTheDiskIsAFailure) {
  if (!GetParam()) {
    GTEST_SKIP() << "one at a time, each photo is fetched whole first";
  }
  transfer_.fail_begin = true;
  const ImageAcquisitionResult r = Run("Cam*" + Out() + "*Picture");
  EXPECT_EQ(r.code, "400");
  EXPECT_EQ(r.error, "injected failure to begin Picture 1.JPG");
  EXPECT_EQ(r.copied, 0);
  EXPECT_EQ(*camera_.downloads, 0);
  EXPECT_TRUE(fs::is_empty(dir_ / "out"));
}

TEST_P(ImageAcquisitionTest, NothingToDoFailuresAndAStop) {
  camera_.photos.clear();
  EXPECT_EQ(Run("Cam*" + Out() + "*Picture").code, "410");
  EXPECT_EQ(ReadFile(Answer()), "410 \n");
  EXPECT_FALSE(fs::exists(dir_ / "out"));
  EXPECT_EQ(Run("no stars").code, "400");
  EXPECT_EQ(Run("Cam*" + Out()).code, "400");
  camera_missing_ = true;
  EXPECT_EQ(Run("Cam*" + Out() + "*P").code, "400");
  camera_missing_ = false;
  camera_.photos.push_back({{"/", "a.jpg"}, "a"});
  camera_.photos.push_back({{"/", "b.jpg"}, "b"});
  camera_.fail_list = true;
  EXPECT_EQ(Run("Cam*" + Out() + "*P").code, "400");
  camera_.fail_list = false;
  stop_after_ = 1;
  const ImageAcquisitionResult stopped = Run("Cam*" + Out() + "*P");
  EXPECT_EQ(stopped.code, "420");
  EXPECT_EQ(stopped.copied, 1);
}

TEST_P(ImageAcquisitionTest, ADriveTokenIsItsMediumAsAFolderCamera) {
  std::ofstream(dir_ / "data/Drives.dat") << "E:\t/media/u/CARD\n";
  Run("E:*" + Out() + "*Picture");
  EXPECT_EQ(opened_, std::vector<std::string>{"disk:/media/u/CARD"});
  EXPECT_EQ(Run("F:*" + Out() + "*Picture").code, "400");
}

INSTANTIATE_TEST_SUITE_P(OneAtATimeAndAhead,
                         ImageAcquisitionTest,
                         ::testing::Bool());

}  // namespace
}  // namespace qbpd
