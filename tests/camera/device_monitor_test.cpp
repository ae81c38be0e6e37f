#include "camera/device_monitor.h"

#include "camera/camera_lines.h"
#include "core/settings.h"
#include "platform/drive_tokens.h"
#include "platform/settings_store.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

using testing::ReadFile;

class DeviceMonitorTest : public ::testing::Test {
 protected:
  DeviceMonitorTest() {
    options_.data_folder = dir_.path().string();
    options_.settings = settings_.get();
    options_.program_running = [this] { return running_; };
    options_.start_program = [this] {
      ++starts_;
      return true;
    };
  }
  std::string DevMon() { return ReadFile(dir_ / kDevMonFile); }

  testing::TempDir dir_;
  std::unique_ptr<SettingsStore> settings_ = MakeMemorySettingsStore();
  DeviceMonitor::Options options_;
  bool running_ = true;
  int starts_ = 0;
};

TEST_F(DeviceMonitorTest, KnownAndNewCamerasByTheCameraList) {
  DeviceMonitor monitor(options_);
  EXPECT_EQ(monitor.CameraArrived("Canon EOS 450D"), "200 Canon EOS 450D|\n");
  EXPECT_EQ(DevMon(), "200 Canon EOS 450D|\n");
  ASSERT_TRUE(settings_->Write(kCameraListKey, "Canon EOS 450D", "Canon EOS"));
  EXPECT_EQ(monitor.CameraArrived("Canon EOS 450D"), "100 Canon EOS 450D|\n");
  EXPECT_EQ(ParseDevMonLine("100 Canon EOS 450D|").device, "Canon EOS 450D");
  EXPECT_EQ(starts_, 0);
}

TEST_F(DeviceMonitorTest, StartsTheProgramOnlyWhenItDoesNotRun) {
  running_ = false;
  DeviceMonitor monitor(options_);
  monitor.CameraArrived("Nikon");
  EXPECT_EQ(starts_, 1);
  running_ = true;
  monitor.CameraArrived("Nikon");
  EXPECT_EQ(starts_, 1);
}

TEST_F(DeviceMonitorTest, DetectUsbDevicesFalseWritesNothing) {
  ASSERT_TRUE(
      settings_->Write(kCameraTransferKey, "DetectUSBDevices", "false"));
  running_ = false;
  DeviceMonitor monitor(options_);
  EXPECT_EQ(monitor.CameraArrived("Nikon"), "");
  EXPECT_TRUE(monitor.MediaChanged({"/media/u/CARD"}).empty());
  EXPECT_FALSE(std::filesystem::exists(dir_ / kDevMonFile));
  EXPECT_EQ(starts_, 0);
  ASSERT_TRUE(settings_->Write(kCameraTransferKey, "DetectUSBDevices", "True"));
  EXPECT_EQ(monitor.CameraArrived("Nikon"), "200 Nikon|\n");
}

TEST_F(DeviceMonitorTest, ANewlyMountedMediumIsADriveToken) {
  DeviceMonitor monitor(options_);
  monitor.SetMountedMedia({"/media/u/OLD"});
  EXPECT_TRUE(monitor.MediaChanged({"/media/u/OLD"}).empty());
  const std::vector<std::string> lines =
      monitor.MediaChanged({"/media/u/OLD", "/media/u/CARD"});
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], "100 E:|\n");
  EXPECT_EQ(DriveTokenFolder((dir_ / kDriveTableName).string(), "E:"),
            "/media/u/CARD");
  // Unmounted and mounted again: new again.
  EXPECT_TRUE(monitor.MediaChanged({"/media/u/OLD"}).empty());
  EXPECT_EQ(monitor.MediaChanged({"/media/u/OLD", "/media/u/CARD"}).size(), 1u);
}

}  // namespace
}  // namespace qbpd
