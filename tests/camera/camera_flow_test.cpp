#include "camera/camera_lines.h"
#include "camera/frm_cam_progress.h"
#include "camera/frm_camera_copy.h"
#include "camera/frm_device_list.h"
#include "camera/frm_image_transfer.h"
#include "core/settings.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/user_input.h"
#include "tests/browser/main_window_fixture.h"
#include "tests/support/fake_camera_devices.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;
using testing_support::MainWindowTest;

// The scripted host's day: 15 January 2026.
constexpr char kToday[] = "01-15-2026";
constexpr char kFailure[] = "Failure - sorry....could not download photos";

class CameraFlowTest : public MainWindowTest {
 protected:
  CameraFlowTest() {
    adjust_services_ = [this](PlatformServices& services) {
      auto devices = std::make_unique<testing::FakeCameraDevices>();
      devices_ = devices.get();
      services.camera_devices = std::move(devices);
      auto transfer = std::make_unique<testing::FakeFileTransfer>();
      transfer_ = transfer.get();
      services.file_transfer = std::move(transfer);
      fs::create_directories(services.places.data);
      data_ = services.places.data;
    };
    Setting("BaseFolder", Base().string());
    Setting("FolderName", "0");
    Setting("PhotoName", "0");
    Setting("DeleteImagesStatus", "False");
    Setting("DisplayDialogtoCopy", "False");
  }

  void Setting(const std::string& name, const std::string& value) {
    extra_settings_.emplace_back(std::string(kCameraTransferKey), name, value);
  }
  fs::path Base() const { return photos().parent_path() / "Imports"; }
  fs::path Card() const { return photos().parent_path() / "Card"; }
  std::string Exchange(const char* name) const { return data_ + "/" + name; }
  void WriteExchange(const char* name, const std::string& text) const {
    std::ofstream(Exchange(name), std::ios::binary) << text;
  }
  std::string ReadSetting(std::string_view key, std::string_view name) {
    return app().settings().Read(key, name);
  }
  // The user waits a second: the timer picks up the monitor's line and
  // what it leads to waits for the steps queued after this one.
  void QueueWait() {
    host().Queue("wait", [this] { host().Wait(1000); });
  }
  // The user waits while the program works, `steps` seconds.
  void WaitSeconds(int steps) {
    for (int i = 0; i < steps; ++i) {
      host().Queue("wait", [this] { host().Wait(1000); });
    }
    try {
      host().Run();
    } catch (const HostAbort& abort) {
      ADD_FAILURE() << abort.message();
    }
  }
  // The helper: "310" at its start, and when the program has taken that,
  // the photos in `folder` and "300".
  void HelperSucceedsInto(const fs::path& folder) {
    devices_->on_start = [this, folder](const std::string&) {
      WriteExchange(kImgAcqFile, "310 \n");
      devices_->on_running_check = [this, folder] {
        if (!devices_->running || fs::exists(Exchange(kImgAcqFile))) {
          return;
        }
        fs::create_directories(folder);
        std::ofstream(folder / "Picture 1.jpg") << "photo";
        WriteExchange(kImgAcqFile, "300 " + folder.string() + "|\n");
        devices_->running = false;
      };
    };
  }
  void HelperAnswers(const std::string& line) {
    devices_->on_start = [this, line](const std::string&) {
      WriteExchange(kImgAcqFile, line);
      devices_->running = false;
    };
  }
  void WriteCard(const std::string& name, const std::string& content) {
    fs::create_directories((Card() / name).parent_path());
    std::ofstream(Card() / name, std::ios::binary) << content;
  }

  testing::FakeCameraDevices* devices_ = nullptr;
  testing::FakeFileTransfer* transfer_ = nullptr;
  std::string data_;
};

TEST_F(CameraFlowTest, AnEmptyOrUnknownLineIsDeletedAndNothingHappens) {
  WritePhoto("a.jpg");
  Start();
  for (const char* line : {"", "   \n", "999 Camera|\n", "10"}) {
    WriteExchange(kDevMonFile, line);
    WaitSeconds(2);
    EXPECT_FALSE(fs::exists(Exchange(kDevMonFile))) << line;
  }
  EXPECT_TRUE(devices_->started.empty());
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(app().forms().Find<frmCameraCopy>(), nullptr);
}

TEST_F(CameraFlowTest, AKnownCameraStartsTheHelperIntoADatedFolder) {
  WritePhoto("a.jpg");
  Start();
  HelperAnswers("410 \n");
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "Canon EOS (usb:001,002)"));
  WaitSeconds(6);
  ASSERT_EQ(devices_->started.size(), 1u);
  EXPECT_EQ(devices_->started[0], "Canon EOS (usb:001,002)*" +
                                      (Base() / kToday).string() + "*Picture");
  // "410": no message, and the timer goes on at 3000 ms.
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(main().timerCamera.Interval(), 3000);
  EXPECT_TRUE(main().timerCamera.Enabled());
  EXPECT_EQ(host().MousePointer(), kPointerDefault);
}

TEST_F(CameraFlowTest, ATakenFolderIsNumberedOnToTheFirstFree) {
  for (const char* taken : {"", "_001", "_002", "_003"}) {
    fs::create_directories(Base() / (std::string(kToday) + taken));
  }
  Setting("FolderName", "1");
  Setting("PhotoName", "1");
  WritePhoto("a.jpg");
  Start();
  HelperAnswers("420 \n");
  fs::create_directories(Base() / "15-01-2026");
  fs::create_directories(Base() / "15-01-2026_001");
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "Cam"));
  WaitSeconds(6);
  ASSERT_EQ(devices_->started.size(), 1u);
  EXPECT_EQ(devices_->started[0],
            "Cam*" + (Base() / "15-01-2026_002").string() + "*15-01-2026");
  EXPECT_TRUE(Messages().empty());
}

TEST_F(CameraFlowTest, AFailedTransferSaysSoAndSlowsTheTimer) {
  WritePhoto("a.jpg");
  Start();
  HelperAnswers("400 \n");
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "Cam"));
  QueueWait();
  Answer(1);
  WaitSeconds(6);
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0], kFailure);
  EXPECT_EQ(host().MessageBoxes()[0].style, kMbStop);
  EXPECT_EQ(main().timerCamera.Interval(), 3000);
}

TEST_F(CameraFlowTest, AHelperThatDiesWithoutAnAnswerIsAFailureNotAHang) {
  WritePhoto("a.jpg");
  Start();
  devices_->on_start = [this](const std::string&) {
    devices_->running = false;
  };
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "Cam"));
  QueueWait();
  Answer(1);
  WaitSeconds(6);
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0], kFailure);
}

TEST_F(CameraFlowTest, AWholeCameraTransferEndsWithTheTreeAtTheNewFolder) {
  WritePhoto("a.jpg");
  Start();
  HelperSucceedsInto(Base() / kToday);
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "Cam"));
  WaitSeconds(15);
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(main().ExpTreeView.SelectedFolder(),
            (Base() / kToday).string() + "/");
  EXPECT_EQ(app().forms().Find<frmCamProgress>(), nullptr);
  EXPECT_FALSE(fs::exists(Exchange(kImgAcqFile)));
  EXPECT_TRUE(main().timerCamera.Enabled());
}

TEST_F(CameraFlowTest, TheCopyQuestionDecidesAndItsBoxTurnsItOff) {
  Setting("DisplayDialogtoCopy", "True");
  WritePhoto("a.jpg");
  Start();
  HelperAnswers("410 \n");
  // Cancel: nothing starts.
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "Cam"));
  QueueWait();
  host().Queue("the question", [this] {
    frmCameraCopy& f = app().forms().Get<frmCameraCopy>();
    EXPECT_EQ(f.chkDisplayCameraCopyImages.Value(), 1);
    user::Click(f.imgCancel);
  });
  WaitSeconds(2);
  EXPECT_TRUE(devices_->started.empty());
  // OK with the box cleared: the transfer starts and the question is off.
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "Cam"));
  QueueWait();
  host().Queue("the question", [this] {
    frmCameraCopy& f = app().forms().Get<frmCameraCopy>();
    user::Click(f.chkDisplayCameraCopyImages);
    user::Click(f.imgOK);
  });
  WaitSeconds(6);
  EXPECT_EQ(devices_->started.size(), 1u);
  EXPECT_EQ(ReadSetting(kCameraTransferKey, "DisplayDialogtoCopy"), "False");
}

TEST_F(CameraFlowTest, AnOddCopySettingTransfersNothing) {
  Setting("DisplayDialogtoCopy", "Maybe");
  WritePhoto("a.jpg");
  Start();
  WriteCard("DCIM/IMG_1.JPG", "one");
  devices_->drives["E:"] = Card().string();
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "Cam"));
  WaitSeconds(2);
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "E:"));
  WaitSeconds(2);
  EXPECT_TRUE(devices_->started.empty());
  EXPECT_TRUE(transfer_->calls.empty());
}

TEST_F(CameraFlowTest, ANewCameraIsPickedRecordedAndTransferred) {
  WritePhoto("a.jpg");
  Start();
  devices_->device_list =
      std::string("Nikon (usb:1,2)| |E:|nikon (usb:1,2)|\0", 38);
  HelperAnswers("410 \n");
  WriteExchange(kDevMonFile, MakeDevMonLine("200", "usb-04b0-0429"));
  QueueWait();
  host().Queue("the list", [this] {
    frmDeviceList& f = app().forms().Get<frmDeviceList>();
    EXPECT_TRUE(f.lblDescription.Visible());
    ASSERT_EQ(f.cboDeviceList.ListCount(), 3);
    EXPECT_EQ(f.cboDeviceList.List(0), "Nikon (usb:1,2)");
    EXPECT_EQ(f.cboDeviceList.List(1), "E:");
    EXPECT_EQ(f.cboDeviceList.List(2), "Not a camera");
    EXPECT_EQ(f.cboDeviceList.ListIndex(), 0);
    user::Click(f.cmdOK);
  });
  WaitSeconds(6);
  EXPECT_EQ(ReadSetting(kCameraListKey, "usb-04b0-0429"), "Nikon (usb:1,2)");
  ASSERT_EQ(devices_->started.size(), 1u);
  EXPECT_EQ(devices_->started[0].substr(0, 16), "Nikon (usb:1,2)*");
}

TEST_F(CameraFlowTest, NotACameraInANormalRunRecordsNothing) {
  WritePhoto("a.jpg");
  Start();
  devices_->device_list = "Nikon (usb:1,2)|";
  WriteExchange(kDevMonFile, MakeDevMonLine("200", "usb-1-2"));
  QueueWait();
  host().Queue("the list", [this] {
    frmDeviceList& f = app().forms().Get<frmDeviceList>();
    f.cboDeviceList.SetListIndex(1);
    user::Click(f.cmdOK);
  });
  WaitSeconds(3);
  EXPECT_EQ(ReadSetting(kCameraListKey, "usb-1-2"), "");
  EXPECT_TRUE(devices_->started.empty());
  EXPECT_TRUE(app().IsRunning());
}

TEST_F(CameraFlowTest, NoDeviceAttachedSaysSoAndCancels) {
  WritePhoto("a.jpg");
  Start();
  WriteExchange(kDevMonFile, MakeDevMonLine("200", "usb-1-2"));
  QueueWait();
  Answer(1);
  WaitSeconds(3);
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0],
            "Sorry! There is no camera connected to your PC.  Please connect "
            "your camera and try again.");
  EXPECT_EQ(host().MessageBoxes()[0].style, kMbInformation);
  EXPECT_TRUE(devices_->started.empty());
  EXPECT_EQ(main().ExpTreeView.SelectedFolder(), photos().string() + "/");
}

TEST_F(CameraFlowTest, ADriveCopiesEveryFileIntoOneFolderBreadthFirst) {
  WritePhoto("a.jpg");
  Start();
  WriteCard("top.jpg", "top");
  WriteCard("DCIM/100A/IMG_1.JPG", "a1");
  WriteCard("DCIM/100B/IMG_1.JPG", "b1");
  WriteCard("DCIM/.hidden", "x");
  devices_->drives["E:"] = Card().string();
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "E:"));
  WaitSeconds(5);
  const fs::path out = Base() / kToday;
  EXPECT_EQ(ReadFile(out / "top.jpg"), "top");
  // Copy mode: the second IMG_1.JPG replaces the first, as the system has it.
  EXPECT_EQ(ReadFile(out / "IMG_1.JPG"), "b1");
  EXPECT_FALSE(fs::exists(out / ".hidden"));
  EXPECT_TRUE(fs::exists(Card() / "DCIM/100A/IMG_1.JPG"));
  EXPECT_EQ(main().ExpTreeView.SelectedFolder(), out.string() + "/");
  EXPECT_TRUE(session().gbFilesCopied);
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(app().forms().Find<frmCamProgress>(), nullptr);
}

TEST_F(CameraFlowTest, AMoveGivesAClashAFreeNameAndEmptiesTheCard) {
  Setting("DeleteImagesStatus", "True");
  WritePhoto("a.jpg");
  Start();
  WriteCard("DCIM/100A/IMG_1.JPG", "a1");
  WriteCard("DCIM/100B/IMG_1.JPG", "b1");
  devices_->drives["E:"] = Card().string();
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "E:"));
  WaitSeconds(5);
  const fs::path out = Base() / kToday;
  EXPECT_EQ(ReadFile(out / "IMG_1.JPG"), "a1");
  EXPECT_EQ(ReadFile(out / "IMG_1_001.JPG"), "b1");
  EXPECT_FALSE(fs::exists(Card() / "DCIM/100A/IMG_1.JPG"));
  EXPECT_FALSE(fs::exists(Card() / "DCIM/100B/IMG_1.JPG"));
}

TEST_F(CameraFlowTest, AFileThatFailsStaysOnTheCardAndTheUserIsTold) {
  Setting("DeleteImagesStatus", "True");
  WritePhoto("a.jpg");
  Start();
  WriteCard("DCIM/IMG_1.JPG", "one");
  WriteCard("DCIM/IMG_2.JPG", "two");
  WriteCard("DCIM/IMG_3.JPG", "three");
  transfer_->fail["IMG_2.JPG"] = TransferStatus::kVerifyFailed;
  devices_->drives["E:"] = Card().string();
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "E:"));
  QueueWait();
  QueueWait();
  Answer(1);
  WaitSeconds(5);
  const fs::path out = Base() / kToday;
  EXPECT_EQ(ReadFile(out / "IMG_1.JPG"), "one");
  EXPECT_FALSE(fs::exists(out / "IMG_2.JPG"));
  EXPECT_EQ(ReadFile(Card() / "DCIM/IMG_2.JPG"), "two");
  EXPECT_EQ(ReadFile(out / "IMG_3.JPG"), "three");
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0], kFailure);
}

TEST_F(CameraFlowTest, AskForANameCancelledStartsNothing) {
  Setting("FolderName", "2");
  WritePhoto("a.jpg");
  Start();
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "Cam"));
  QueueWait();
  host().Queue("the transfer dialog", [this] {
    frmImageTransfer& f = app().forms().Get<frmImageTransfer>();
    EXPECT_EQ(f.comboFolderName.ListIndex(), 0);
    EXPECT_EQ(f.txtBaseFolder.Text(), Base().string());
    user::PressKeys(f, "{ESC}");
  });
  WaitSeconds(3);
  EXPECT_TRUE(devices_->started.empty());
  EXPECT_EQ(ReadSetting(kCameraTransferKey, "FolderName"), "2");
  // OK stores the chosen date form, and the transfer starts with it.
  HelperAnswers("410 \n");
  WriteExchange(kDevMonFile, MakeDevMonLine("100", "Cam"));
  QueueWait();
  host().Queue("the transfer dialog", [this] {
    frmImageTransfer& f = app().forms().Get<frmImageTransfer>();
    f.comboFolderName.SetListIndex(1);
    user::Click(f.chkDeleteImages);
    user::Click(f.cmdOK);
  });
  WaitSeconds(6);
  ASSERT_EQ(devices_->started.size(), 1u);
  EXPECT_EQ(devices_->started[0],
            "Cam*" + (Base() / "15-01-2026").string() + "*Picture");
  EXPECT_EQ(ReadSetting(kCameraTransferKey, "FolderName"), "1");
  EXPECT_EQ(ReadSetting(kCameraTransferKey, "DeleteImagesStatus"), "True");
}

TEST_F(CameraFlowTest, TheMenuEntryCopiesAPickedDrive) {
  WritePhoto("a.jpg");
  Start();
  WriteCard("IMG_9.JPG", "nine");
  devices_->drives["F:"] = Card().string();
  devices_->device_list = "F:|";
  host().Queue("the list", [this] {
    frmDeviceList& f = app().forms().Get<frmDeviceList>();
    EXPECT_FALSE(f.lblDescription.Visible());
    EXPECT_EQ(f.cboDeviceList.ListCount(), 1);
    user::Click(f.cmdOK);
  });
  QueueWait();
  QueueWait();
  try {
    user::PickMenu(main().mnuFGetCameraPhotos);
  } catch (const HostAbort& abort) {
    ADD_FAILURE() << abort.message();
  }
  WaitSeconds(1);
  EXPECT_EQ(ReadFile(Base() / kToday / "IMG_9.JPG"), "nine");
  EXPECT_TRUE(main().timerCamera.Enabled());
}

TEST_F(CameraFlowTest, AStartByTheMonitorForACameraLeavesTheScreenToIt) {
  WritePhoto("a.jpg");
  auto adjust = adjust_services_;
  adjust_services_ = [this, adjust](PlatformServices& services) {
    adjust(services);
    devices_->fail_start = true;
    std::ofstream(services.places.data + "/" + kDevMonFile)
        << MakeDevMonLine("100", "Cam");
  };
  Start("\"DEVMON\"");
  ASSERT_EQ(devices_->started.size(), 1u);
  // The transfer, not the start folder, decides what shows.
  EXPECT_EQ(main().ExpTreeView.SelectedFolder(), "");
  EXPECT_TRUE(main().timerCamera.Enabled());
  EXPECT_TRUE(main().tmrUpgrade.Enabled());
  EXPECT_TRUE(session().gsCommandLine.empty());
}

TEST_F(CameraFlowTest, AStartByTheMonitorWithNothingToDoLoadsTheStartFolder) {
  WritePhoto("a.jpg");
  Start("\"DEVMON\"");
  EXPECT_EQ(main().ExpTreeView.SelectedFolder(), photos().string() + "/");
  EXPECT_TRUE(app().IsRunning());
  EXPECT_TRUE(devices_->started.empty());
}

}  // namespace
}  // namespace qbpd
