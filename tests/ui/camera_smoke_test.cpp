// The camera import on the desktop: the device list, the copy question, the
// transfer settings and the progress of a card copy show in real windows.
// Each case leaves a screenshot under the build folder.
#include "browser/frm_main_window.h"
#include "camera/frm_cam_progress.h"
#include "camera/frm_camera_copy.h"
#include "camera/frm_device_list.h"
#include "camera/frm_image_transfer.h"
#include "core/settings.h"
#include "platform/forms/user_input.h"
#include "tests/support/fake_camera_devices.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_host.h"

#include <QAction>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

class CameraSmokeTest : public testing::DesktopTest {
 protected:
  CameraSmokeTest() {
    adjust_services_ = [this](PlatformServices& services) {
      auto devices = std::make_unique<testing::FakeCameraDevices>();
      devices_ = devices.get();
      devices_->device_list = "Canon EOS 450D (usb:001,004)|E:|";
      devices_->drives["E:"] = (tmp_.path() / "card").string();
      services.camera_devices = std::move(devices);
      base_ = tmp_.path() / "Imports";
      (void)services.settings->Write(kCameraTransferKey, "BaseFolder",
                                     base_.string());
      (void)services.settings->Write(kCameraTransferKey, "FolderName", "0");
      (void)services.settings->Write(kCameraTransferKey, "PhotoName", "1");
      (void)services.settings->Write(kCameraTransferKey, "DisplayDialogtoCopy",
                                     "True");
    };
  }

  // Runs `inside` once form `name` is on the screen (it must close it or
  // let it close).
  void WhenShown(const char* name,
                 std::function<void(Form&, FormWindow*)> inside) {
    auto poll = std::make_shared<std::function<void()>>();
    *poll = [this, name, inside, poll] {
      Form* form = app_->forms().Find(name);
      FormWindow* window = form != nullptr ? host_->WindowOf(*form) : nullptr;
      if (window == nullptr || !window->isVisible()) {
        QTimer::singleShot(10, *poll);
        return;
      }
      ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
      QTest::qWait(50);
      inside(*form, window);
    };
    QTimer::singleShot(0, *poll);
  }

  testing::FakeCameraDevices* devices_ = nullptr;
  fs::path base_;
};

TEST_F(CameraSmokeTest, TheDeviceListAndACardCopyWithItsProgress) {
  fs::create_directories(tmp_.path() / "card/DCIM/100TEST");
  for (int i = 1; i <= 40; ++i) {
    std::ofstream(tmp_.path() / "card/DCIM/100TEST" /
                  ("IMG_" + std::to_string(1000 + i) + ".JPG"))
        << std::string(200000, static_cast<char>(i));
  }
  bool listed = false;
  bool progressed = false;
  WhenShown("frmDeviceList", [&](Form& form, FormWindow* w) {
    auto& list = static_cast<frmDeviceList&>(form);
    EXPECT_EQ(w->windowTitle().toStdString(), "List of Available Devices");
    EXPECT_EQ(list.cboDeviceList.ListCount(), 2);
    EXPECT_FALSE(list.lblDescription.Visible());
    testing::SaveScreenshot(w, "camera_device_list");
    listed = true;
    WhenShown("frmCamProgress", [&](Form& progress, FormWindow* pw) {
      EXPECT_EQ(static_cast<frmCamProgress&>(progress).txtDeviceType.Text(),
                "CR");
      testing::SaveScreenshot(pw, "camera_progress");
      progressed = true;
    });
    list.cboDeviceList.SetListIndex(1);
    user::Click(list.cmdOK);
  });
  QAction* action = window_->ActionOf(main_->mnuFGetCameraPhotos);
  ASSERT_NE(action, nullptr);
  action->trigger();
  EXPECT_TRUE(listed);
  EXPECT_TRUE(progressed);
  EXPECT_EQ(app_->forms().Find("frmCamProgress"), nullptr);
  int copied = 0;
  for (const auto& folder : fs::directory_iterator(base_)) {
    for ([[maybe_unused]] const auto& f : fs::directory_iterator(folder)) {
      ++copied;
    }
  }
  EXPECT_EQ(copied, 40);
  testing::SaveScreenshot(window_, "camera_after_card_copy");
}

TEST_F(CameraSmokeTest, TheCopyQuestionAndTheTransferSettings) {
  bool asked = false;
  WhenShown("frmCameraCopy", [&](Form& form, FormWindow* w) {
    auto& copy = static_cast<frmCameraCopy&>(form);
    EXPECT_EQ(copy.chkDisplayCameraCopyImages.Value(), 1);
    testing::SaveScreenshot(w, "camera_copy_question");
    asked = true;
    user::Click(copy.imgCancel);
  });
  app_->forms().Get<frmCameraCopy>().Show(/*modal=*/true);
  EXPECT_TRUE(asked);
  EXPECT_FALSE(session().gbCopyAllowed);

  bool set = false;
  WhenShown("frmImageTransfer", [&](Form& form, FormWindow* w) {
    auto& transfer = static_cast<frmImageTransfer&>(form);
    EXPECT_EQ(w->windowTitle().toStdString(), "Image Transfer");
    EXPECT_EQ(transfer.comboPictureName.ListIndex(), 1);
    EXPECT_EQ(transfer.txtBaseFolder.Text(), base_.string());
    testing::SaveScreenshot(w, "camera_image_transfer");
    set = true;
    user::Click(transfer.cmdCancel);
  });
  app_->forms().Get<frmImageTransfer>().Show(/*modal=*/true);
  EXPECT_TRUE(set);
  EXPECT_TRUE(session().gbTransferDialogCancelled);
}

}  // namespace
}  // namespace qbpd
