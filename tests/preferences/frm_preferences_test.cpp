#include "preferences/frm_preferences.h"

#include "core/settings.h"
#include "platform/forms/user_input.h"
#include "tests/preferences/preferences_fixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::FakeDefaultViewer;
using testing_support::PreferencesTest;

TEST_F(PreferencesTest, LoadShowsEveryStoredValue) {
  Set(kDisplayKey, "ZoomSettings", "fittowidth");
  Set(kSettingsKey, "UserName", "  ann@example.com ");
  // The stored password ends in its NUL, as one read back does.
  Set(kSettingsKey, "EncryptedPassword", EncryptPassword("secret") + '\0');
  Set(kSettingsKey, "AutoLogin", "TRUE");
  Set(kSettingsKey, "LastOpenFolderInPreviousSession", "True");
  Set(kExpressPrintsKey, "ExpressPrints", "4x6Doubles");
  Set(kCameraTransferKey, "DeleteImagesStatus", "true");
  Set(kCameraTransferKey, "DisplayDialogtoCopy", "FALSE");
  Set(kCameraTransferKey, "DetectUSBDevices", "False");
  Set("Classes\\.jpg", "", "QBPDJPG ");
  Start();
  Open();
  Do([](frmPreferences& f) {
    EXPECT_EQ(f.Caption(), "Preferences");
    EXPECT_EQ(f.tbsPref.TabCount(), 4);
    EXPECT_EQ(f.tbsPref.TabCaption(4), "Camera Transfer");
    EXPECT_TRUE(f.fraDisplay.Visible());
    EXPECT_FALSE(f.fraAccount.Visible());
    EXPECT_TRUE(f.optFitToWidth.Value());
    EXPECT_EQ(f.txtSlideShowImageInterval.Text(), "5");
    EXPECT_EQ(f.sliderImageInterval.Value(), 5);
    EXPECT_EQ(f.chkDefViewer.Value(), 1);
    EXPECT_EQ(f.chkCloseExplorer.Value(), 1);
    EXPECT_EQ(f.txtExpCloseTime.Text(), "30");
    EXPECT_TRUE(f.txtExpCloseTime.Enabled());
    EXPECT_EQ(f.txtRecentFolders.Text(), "5");
    EXPECT_EQ(f.txtLogin.Text(), "ann@example.com");
    EXPECT_EQ(f.txtPassword.Text(), "secret");
    EXPECT_EQ(f.txtPassword.ShownText(), "******");
    EXPECT_EQ(f.chkAutoLogin.Value(), 1);
    EXPECT_EQ(f.chkLastOpenFolder.Value(), 1);
    EXPECT_FALSE(f.txtStartUpFolder.Enabled());
    EXPECT_FALSE(f.cmdBrowseFolder.Enabled());
    EXPECT_TRUE(f.opt4x6Doubles.Value());
    EXPECT_EQ(f.cboFolderName.ListIndex(), 1);
    EXPECT_EQ(f.cboPhotoName.ListIndex(), 0);
    EXPECT_EQ(f.chkDeleteImagesFromCamera.Value(), 1);
    EXPECT_EQ(f.chkDisplayCameraCopyImages.Value(), 0);
    EXPECT_EQ(f.ChkDetectUSB.Value(), 0);
    EXPECT_FALSE(f.chkDisplayCameraCopyImages.Enabled());
    EXPECT_EQ(f.lblExpCloseCont.Caption(),
              "Automatically close the \"get photos\" folder display after    "
              "           seconds");
    EXPECT_EQ(f.chkDefViewer.Caption(),
              "Make Quillbay Picture Desk my default viewer for jpeg photos "
              "(.jpg, .jpe. .jpeg files).");
  });
  Cancel();
  host().Run();
  EXPECT_FALSE(PrefsOpen());
}

TEST_F(PreferencesTest, F1OpensThePreferencesHelp) {
  Start();
  Open();
  Do([](frmPreferences& f) {
    user::TypeKeys(f.txtSlideShowImageInterval, "{F1}");
  });
  Do([](frmPreferences& f) { user::Click(f.cmdCancel); });
  host().Run();
  ASSERT_EQ(launcher_->Opened().size(), 1u);
  EXPECT_NE(launcher_->Opened()[0].find("preferences.html"), std::string::npos);
}

TEST_F(PreferencesTest, MissingValuesGiveTheDesignedState) {
  Set(kDisplayKey, "ExplorerCloseIntervalInSeconds", "");
  Set(kDisplayKey, "ZoomSettings", "");
  Set(kCameraTransferKey, "DetectUSBDevices", "maybe");
  Start();
  Open();
  Do([](frmPreferences& f) {
    EXPECT_TRUE(f.optOriginalSize.Value());
    EXPECT_EQ(f.chkCloseExplorer.Value(), 0);
    EXPECT_EQ(f.txtExpCloseTime.Text(), "");
    EXPECT_FALSE(f.txtExpCloseTime.Enabled());
    EXPECT_EQ(f.chkDefViewer.Value(), 0);
    // Neither "True" nor "False": the box stays as designed.
    EXPECT_EQ(f.ChkDetectUSB.Value(), 1);
    EXPECT_FALSE(f.opt4x6Singles.Value() || f.opt4x6Doubles.Value() ||
                 f.opt5x7Singles.Value());
  });
  Cancel();
  host().Run();
}

TEST_F(PreferencesTest, SliderAndTextMirrorEachOther) {
  Start();
  Open();
  Do([](frmPreferences& f) {
    user::ScrollTo(f.sliderImageInterval, 17);
    EXPECT_EQ(f.txtSlideShowImageInterval.Text(), "17");
    f.txtSlideShowImageInterval.SetText("9");
    EXPECT_EQ(f.sliderImageInterval.Value(), 9);
    // A text that isn't a number in range leaves the slider.
    f.txtSlideShowImageInterval.SetText("");
    EXPECT_EQ(f.sliderImageInterval.Value(), 9);
  });
  Cancel();
  host().Run();
}

TEST_F(PreferencesTest, NumberFieldsDropEveryOtherKey) {
  Start();
  Open();
  Do([](frmPreferences& f) {
    user::TypeKeys(f.txtSlideShowImageInterval, "{BACKSPACE}a-+.1x");
    EXPECT_EQ(f.txtSlideShowImageInterval.Text(), "1");
    user::TypeKeys(f.txtSlideShowImageInterval, "{BACKSPACE}2");
    EXPECT_EQ(f.txtSlideShowImageInterval.Text(), "2");
    // Backspace is dropped in the two other fields; a blank passes.
    user::TypeKeys(f.txtExpCloseTime, "{BACKSPACE}q");
    EXPECT_EQ(f.txtExpCloseTime.Text(), "30");
    user::SelectTab(f.tbsPref, frmPreferences::kFoldersTab);
    f.txtRecentFolders.SetText("");
    user::TypeKeys(f.txtRecentFolders, "4 ");
    EXPECT_EQ(f.txtRecentFolders.Text(), "4 ");
  });
  Cancel();
  host().Run();
}

TEST_F(PreferencesTest, CloseExplorerBoxGivesTenAndEmptiesTheField) {
  Set(kDisplayKey, "ExplorerCloseIntervalInSeconds", "");
  Start();
  Open();
  Do([](frmPreferences& f) {
    user::Click(f.chkCloseExplorer);
    EXPECT_EQ(f.txtExpCloseTime.Text(), "10");
    EXPECT_TRUE(f.txtExpCloseTime.Enabled());
    EXPECT_EQ(f.txtExpCloseTime.BackColor(), 0xFFFFFF);
    user::Click(f.chkCloseExplorer);
    EXPECT_EQ(f.txtExpCloseTime.Text(), "");
    EXPECT_FALSE(f.txtExpCloseTime.Enabled());
    EXPECT_NE(f.txtExpCloseTime.BackColor(), 0xFFFFFF);
  });
  Cancel();
  host().Run();
}

TEST_F(PreferencesTest, SmallEventsSetTheirFields) {
  Start();
  Open();
  Do([](frmPreferences& f) {
    user::SelectTab(f.tbsPref, frmPreferences::kFoldersTab);
    user::Click(f.chkLastOpenFolder);
    EXPECT_FALSE(f.txtStartUpFolder.Enabled());
    user::Click(f.chkLastOpenFolder);
    EXPECT_TRUE(f.cmdBrowseFolder.Enabled());
    user::SelectTab(f.tbsPref, frmPreferences::kCameraTab);
    user::Click(f.ChkDetectUSB);
    EXPECT_FALSE(f.chkDisplayCameraCopyImages.Enabled());
    user::Click(f.ChkDetectUSB);
    EXPECT_TRUE(f.chkDisplayCameraCopyImages.Enabled());
    user::SelectTab(f.tbsPref, frmPreferences::kAccountTab);
    EXPECT_TRUE(f.fraAccount.Visible());
    EXPECT_FALSE(f.fraCamera.Visible());
    EXPECT_FALSE(f.fraCamera.Enabled());
    // Both account fields filled tick the box; both emptied clear it.
    user::TypeKeys(f.txtLogin, "  bob@example.com");
    user::TypeKeys(f.txtPassword, "pw ");
    user::Click(f.txtLogin);
    EXPECT_EQ(f.txtPassword.Text(), "pw");
    EXPECT_EQ(f.chkAutoLogin.Value(), 1);
    f.txtLogin.SetText("");
    f.txtPassword.SetText("");
    user::Click(f.txtPassword);
    user::Click(f.txtLogin);
    EXPECT_EQ(f.chkAutoLogin.Value(), 0);
  });
  Do([](frmPreferences& f) {
    user::SelectTab(f.tbsPref, frmPreferences::kCameraTab);
    user::Click(f.cmdBrowseForBaseFolder);
  });
  host().QueueDialogAnswer("folder", [](const std::string& title) {
    EXPECT_EQ(title, "Desktop:");
    return std::optional<std::string>("/srv/photos");
  });
  Do([](frmPreferences& f) {
    EXPECT_EQ(f.txtBaseFolder.Text(), "/srv/photos");
  });
  Cancel();
  host().Run();
}

// --- leaving the slide interval, and the "Display" tab -------------------

TEST_F(PreferencesTest, LeavingTheIntervalOutOfRangeSetsTheEdge) {
  Start();
  Open();
  Do([](frmPreferences& f) {
    f.txtSlideShowImageInterval.SetText("21");
    f.txtSlideShowImageInterval.SetFocus();
  });
  Do([](frmPreferences& f) { user::Click(f.optOriginalSize); });
  Told("Slide show photo interval should be between 2 and 20");
  Do([](frmPreferences& f) {
    EXPECT_EQ(f.txtSlideShowImageInterval.Text(), "20");
    f.txtSlideShowImageInterval.SetText("1");
    f.txtSlideShowImageInterval.SetFocus();
  });
  Do([](frmPreferences& f) { user::Click(f.optFitToWidth); });
  Told("Slide show photo interval should be between 2 and 20");
  Do([](frmPreferences& f) {
    EXPECT_EQ(f.txtSlideShowImageInterval.Text(), "2");
    EXPECT_EQ(f.tbsPref.SelectedTab(), frmPreferences::kDisplayTab);
    // Leaving for Cancel judges nothing.
    f.txtSlideShowImageInterval.SetText("40");
    f.txtSlideShowImageInterval.SetFocus();
  });
  Cancel();
  host().Run();
  EXPECT_FALSE(PrefsOpen());
  EXPECT_EQ(Setting(kDisplayKey, "SlideshowImageIntervalInSeconds"), "5");
}

TEST_F(PreferencesTest, LeavingTheDisplayTabChecksTheInterval) {
  struct Case {
    const char* text;
    const char* message;
  };
  for (const Case& c :
       {Case{"x", "Enter valid slide show photo interval. "},
        Case{"", "Enter valid slide show photo interval. "},
        Case{"1", "Slide show photo interval between 2 and 20"},
        Case{"21", "Slide show photo interval between 2 and 20"},
        Case{"-4", "Slide show photo interval between 2 and 20"}}) {
    SCOPED_TRACE(c.text);
    Start();
    Open();
    Do([&c](frmPreferences& f) {
      f.txtSlideShowImageInterval.SetText(c.text);
      user::SelectTab(f.tbsPref, frmPreferences::kAccountTab);
    });
    Told(c.message);
    Do([&c](frmPreferences& f) {
      EXPECT_EQ(f.tbsPref.SelectedTab(), frmPreferences::kDisplayTab);
      EXPECT_TRUE(f.fraDisplay.Visible());
      EXPECT_FALSE(f.fraAccount.Visible());
      EXPECT_EQ(f.ActiveControl(), &f.txtSlideShowImageInterval);
      EXPECT_EQ(f.txtSlideShowImageInterval.Text(), c.text);
    });
    Cancel();
    host().Run();
  }
}

}  // namespace
}  // namespace qbpd
