#include "camera/device_monitor.h"
#include "core/settings.h"
#include "platform/forms/user_input.h"
#include "preferences/frm_preferences.h"
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

// --- OK: the checks in their order ----------------------------------------

struct OkCase {
  const char* name;
  std::function<void(frmPreferences&)> set;
  const char* message;
  int tab;
  const char* field;
};

TEST_F(PreferencesTest, OkStopsAtTheFirstFailureOnItsTab) {
  const std::string missing = "/nonexistent/qbpd-start";
  const std::string file = (photos().parent_path() / "a-file").string();
  const std::string blocked = "/proc/qbpd-no-such/Camera";
  auto text = [](TextBox frmPreferences::*box, std::string value) {
    return [box, value](frmPreferences& f) { (f.*box).SetText(value); };
  };
  using F = frmPreferences;
  const std::vector<OkCase> cases = {
      {"slide letters", text(&F::txtSlideShowImageInterval, "1a"),
       "Enter numerics for slide show photo Interval", F::kDisplayTab,
       "txtSlideShowImageInterval"},
      {"slide blank inside", text(&F::txtSlideShowImageInterval, "1 2"),
       "Enter numerics for slide show photo Interval", F::kDisplayTab,
       "txtSlideShowImageInterval"},
      {"slide negative", text(&F::txtSlideShowImageInterval, "-5"),
       "photo interval for slide show should not be -ve values", F::kDisplayTab,
       "txtSlideShowImageInterval"},
      {"slide 21", text(&F::txtSlideShowImageInterval, "21"),
       "Slide show photo interval between 2 and 20", F::kDisplayTab,
       "txtSlideShowImageInterval"},
      {"explorer empty", text(&F::txtExpCloseTime, ""),
       "Enter time interval for automatic explorer close which should in "
       "between 10 and 60",
       F::kDisplayTab, "txtExpCloseTime"},
      {"explorer 9", text(&F::txtExpCloseTime, "9"),
       "Enter time interval for automatic explorer close which should in "
       "between 10 and 60",
       F::kDisplayTab, "txtExpCloseTime"},
      {"explorer 61", text(&F::txtExpCloseTime, "61"),
       "Enter time interval for automatic explorer close which should in "
       "between 10 and 60",
       F::kDisplayTab, "txtExpCloseTime"},
      {"explorer 0", text(&F::txtExpCloseTime, "0"),
       "Enter time interval for automatic explorer close which should in "
       "between 10 and 60",
       F::kDisplayTab, "txtExpCloseTime"},
      {"explorer pasted", text(&F::txtExpCloseTime, "ten"),
       "Enter time interval for automatic explorer close which should in "
       "between 10 and 60",
       F::kDisplayTab, "txtExpCloseTime"},
      {"recent empty", text(&F::txtRecentFolders, ""),
       "Enter numerics for number of Recent folders", F::kFoldersTab,
       "txtRecentFolders"},
      {"recent sign", text(&F::txtRecentFolders, "+"),
       "Enter numerics for number of Recent folders", F::kFoldersTab,
       "txtRecentFolders"},
      {"recent 0", text(&F::txtRecentFolders, "0"),
       "Number of Recent folders should be greater than 0", F::kFoldersTab,
       "txtRecentFolders"},
      {"recent -3", text(&F::txtRecentFolders, "-3"),
       "Number of Recent folders should be greater than 0", F::kFoldersTab,
       "txtRecentFolders"},
      {"recent 11", text(&F::txtRecentFolders, "11"),
       "Number of Recent folders should not be greater than 10", F::kFoldersTab,
       "txtRecentFolders"},
      {"start empty", text(&F::txtStartUpFolder, "   "), "Enter startup folder",
       F::kFoldersTab, "txtStartUpFolder"},
      {"start missing", text(&F::txtStartUpFolder, missing),
       "Enter existing folder for startup folder", F::kFoldersTab,
       "txtStartUpFolder"},
      {"start a file", text(&F::txtStartUpFolder, file),
       "Enter existing folder for startup folder", F::kFoldersTab,
       "txtStartUpFolder"},
      {"start NUL", text(&F::txtStartUpFolder, photos().string() + '\0' + "x"),
       "Enter valid folder name for startup folder", F::kFoldersTab,
       "txtStartUpFolder"},
      {"login bad", text(&F::txtLogin, "ann at example"),
       "Enter valid Login name", F::kAccountTab, "txtLogin"},
      {"auto login empty",
       [](F& f) {
         f.chkAutoLogin.SetValue(1);
         f.txtLogin.SetText("");
       },
       "Enter Login name", F::kAccountTab, "txtLogin"},
      {"auto login bad",
       [](F& f) {
         f.chkAutoLogin.SetValue(1);
         f.txtLogin.SetText("ann");
       },
       "Enter valid Login name", F::kAccountTab, "txtLogin"},
      {"auto login no password",
       [](F& f) {
         f.chkAutoLogin.SetValue(1);
         f.txtLogin.SetText("ann@example.com");
         f.txtPassword.SetText("  ");
       },
       "Enter Password", F::kAccountTab, "txtPassword"},
      {"base empty", text(&F::txtBaseFolder, ""), "Enter Base folder",
       F::kCameraTab, "txtBaseFolder"},
      {"base NUL", text(&F::txtBaseFolder, base_ + '\0'),
       "Enter valid folder name for Base Folder", F::kCameraTab,
       "txtBaseFolder"},
      {"base can't be made", text(&F::txtBaseFolder, blocked),
       "Could not create the default folder for camera.", F::kCameraTab,
       "txtBaseFolder"},
      {"base a file", text(&F::txtBaseFolder, file),
       "Could not create the default folder for camera.", F::kCameraTab,
       "txtBaseFolder"},
  };
  for (const OkCase& c : cases) {
    SCOPED_TRACE(c.name);
    Start();
    std::ofstream(file) << "not a folder";
    Open();
    // The check fails from another tab than its own.
    Do([&c](frmPreferences& f) {
      user::SelectTab(f.tbsPref, c.tab == frmPreferences::kCameraTab
                                     ? frmPreferences::kFoldersTab
                                     : frmPreferences::kCameraTab);
      c.set(f);
    });
    Ok();
    Told(c.message);
    Do([&c](frmPreferences& f) {
      EXPECT_EQ(f.tbsPref.SelectedTab(), c.tab);
      EXPECT_EQ(f.ActiveControl()->Name(), c.field);
    });
    Cancel();
    host().Run();
    EXPECT_FALSE(PrefsOpen());
    EXPECT_EQ(Setting(kDisplayKey, "ZoomSettings"), "FitToWidth");
    EXPECT_EQ(Setting(kCameraTransferKey, "FolderName"), "1");
  }
}

// Every field bad at once: each OK shows the first failure in the fixed
// order, and fixing it brings the next.
TEST_F(PreferencesTest, TheChecksRunInTheirFixedOrder) {
  Start();
  Open();
  Do([](frmPreferences& f) {
    f.txtSlideShowImageInterval.SetText("x");
    f.txtExpCloseTime.SetText("5");
    f.txtRecentFolders.SetText("0");
    f.txtStartUpFolder.SetText("");
    f.chkAutoLogin.SetValue(1);
    f.txtLogin.SetText("");
    f.txtBaseFolder.SetText("");
  });
  struct Fix {
    const char* message;
    std::function<void(frmPreferences&)> fix;
  };
  const std::string start = photos().string();
  const std::vector<Fix> fixes = {
      {"Enter numerics for slide show photo Interval",
       [](frmPreferences& f) { f.txtSlideShowImageInterval.SetText("-1"); }},
      {"photo interval for slide show should not be -ve values",
       [](frmPreferences& f) { f.txtSlideShowImageInterval.SetText("30"); }},
      {"Slide show photo interval between 2 and 20",
       [](frmPreferences& f) { f.txtSlideShowImageInterval.SetText("3"); }},
      {"Enter time interval for automatic explorer close which should in "
       "between 10 and 60",
       [](frmPreferences& f) { f.txtExpCloseTime.SetText("20"); }},
      {"Number of Recent folders should be greater than 0",
       [](frmPreferences& f) { f.txtRecentFolders.SetText("3"); }},
      {"Enter startup folder",
       [start](frmPreferences& f) { f.txtStartUpFolder.SetText(start); }},
      {"Enter Login name",
       [](frmPreferences& f) { f.txtLogin.SetText("ann@example.com"); }},
      {"Enter Password",
       [](frmPreferences& f) { f.txtPassword.SetText("pw"); }},
      {"Enter Base folder",
       [this](frmPreferences& f) { f.txtBaseFolder.SetText(base_); }},
  };
  for (const Fix& fix : fixes) {
    Ok();
    Told(fix.message);
    // The fix, then the focus leaves the field that failed, so that OK's
    // own checks meet the next text.
    Do([fix](frmPreferences& f) {
      fix.fix(f);
      f.cmdCancel.SetFocus();
    });
  }
  Ok();
  host().Run();
  EXPECT_FALSE(PrefsOpen());
  EXPECT_EQ(Setting(kDisplayKey, "SlideshowImageIntervalInSeconds"), "3");
  EXPECT_EQ(Setting(kSettingsKey, "AutoLogin"), "True");
}

TEST_F(PreferencesTest, ABadBaseFolderLeavesTheViewerAndExplorerWritten) {
  Start();
  Open();
  Do([](frmPreferences& f) {
    user::Click(f.chkDefViewer);
    f.txtExpCloseTime.SetText("45");
    f.txtBaseFolder.SetText("");
  });
  Ok();
  Told("Enter Base folder");
  Cancel();
  host().Run();
  EXPECT_EQ(Setting(kDisplayKey, "ExplorerCloseIntervalInSeconds"), "45");
  EXPECT_EQ(main().tmrExplorer.Interval(), 45000);
  EXPECT_EQ(Setting("Classes\\.jpeg", ""), "QBPDJPG");
  EXPECT_EQ(viewer_->Handler(), FakeDefaultViewer::kProgram);
  // Nothing after the failing check was written.
  EXPECT_EQ(Setting(kDisplayKey, "ZoomSettings"), "FitToWidth");
  EXPECT_EQ(Setting(kSettingsKey, "AutoLogin"), "");
}

TEST_F(PreferencesTest, OkWritesEveryValue) {
  Set(kSettingsKey, "AutoLogin", "True");
  Start();
  session().gsAuthCode = "SESSION";
  const std::string camera = base_ + "/New/Deeper";
  Open();
  Do([&camera](frmPreferences& f) {
    user::Click(f.optOriginalSize);
    user::ScrollTo(f.sliderImageInterval, 12);
    user::Click(f.chkCloseExplorer);
    user::SelectTab(f.tbsPref, frmPreferences::kAccountTab);
    f.txtLogin.SetText(" ann@example.com ");
    f.txtPassword.SetText("pass word");
    user::Click(f.chkAutoLogin);
    user::SelectTab(f.tbsPref, frmPreferences::kFoldersTab);
    user::Click(f.opt5x7Singles);
    user::SelectTab(f.tbsPref, frmPreferences::kCameraTab);
    f.txtBaseFolder.SetText(camera + " ");
    user::ChooseItem(f.cboFolderName, "Always ask me for a name");
    user::ChooseItem(f.cboPhotoName, 1);
    user::Click(f.chkDeleteImagesFromCamera);
    user::Click(f.chkDisplayCameraCopyImages);
  });
  Ok();
  host().Run();
  EXPECT_FALSE(PrefsOpen());
  EXPECT_EQ(Messages(), std::vector<std::string>{});
  EXPECT_EQ(Setting(kDisplayKey, "ZoomSettings"), "OriginalSize");
  EXPECT_EQ(Setting(kDisplayKey, "SlideshowImageIntervalInSeconds"), "12");
  EXPECT_EQ(Setting(kDisplayKey, "ExplorerCloseIntervalInSeconds"), "");
  EXPECT_FALSE(session().gbExplorerTimerOn);
  EXPECT_FALSE(main().tmrExplorer.Enabled());
  EXPECT_EQ(Setting(kSettingsKey, "UserName"), "ann@example.com");
  EXPECT_EQ(Setting(kSettingsKey, "EncryptedPassword"),
            EncryptPassword("pass word"));
  EXPECT_EQ(Setting(kSettingsKey, "AutoLogin"), "False");
  EXPECT_EQ(session().gsAuthCode, "");
  EXPECT_EQ(Setting(kSettingsKey, "LastOpenFolderInPreviousSession"), "False");
  EXPECT_EQ(Setting(kSettingsKey, "DefaultFolder"), photos().string());
  EXPECT_EQ(Setting(kExpressPrintsKey, "ExpressPrints"), "5x7Singles");
  EXPECT_EQ(Setting(kCameraTransferKey, "BaseFolder"), camera);
  EXPECT_TRUE(fs::is_directory(camera));
  EXPECT_EQ(Setting(kCameraTransferKey, "FolderName"), "2");
  EXPECT_EQ(Setting(kCameraTransferKey, "PhotoName"), "1");
  EXPECT_EQ(Setting(kCameraTransferKey, "DeleteImagesStatus"), "True");
  EXPECT_EQ(Setting(kCameraTransferKey, "DisplayDialogtoCopy"), "False");
  EXPECT_EQ(Setting(kCameraTransferKey, "DetectUSBDevices"), "True");
  EXPECT_EQ(Setting("Classes\\.jpg", ""), "jpegfile");
  // The main window takes the new zoom mode at once.
  EXPECT_EQ(main().DefaultZoomMode(), "O");
}

TEST_F(PreferencesTest, AStoredPasswordSurvivesRoundsOfOk) {
  // This store gives a value back without a terminating NUL.
  Set(kSettingsKey, "UserName", "ann@example.com");
  Set(kSettingsKey, "EncryptedPassword", EncryptPassword("secret"));
  Start();
  for (int round = 0; round < 2; ++round) {
    Open();
    Do([](frmPreferences& f) { EXPECT_EQ(f.txtPassword.Text(), "secret"); });
    Ok();
    host().Run();
    EXPECT_EQ(Setting(kSettingsKey, "EncryptedPassword"),
              EncryptPassword("secret"));
  }
}

TEST_F(PreferencesTest, AutoLoginOffWithBothEmptyWritesThemEmpty) {
  Set(kSettingsKey, "UserName", "ann@example.com");
  Set(kSettingsKey, "EncryptedPassword", EncryptPassword("pw") + '\0');
  Start();
  Open();
  Do([](frmPreferences& f) {
    f.txtLogin.SetText("");
    f.txtPassword.SetText("");
    f.chkAutoLogin.SetValue(0);
  });
  Ok();
  host().Run();
  EXPECT_EQ(Messages(), std::vector<std::string>{});
  EXPECT_EQ(Setting(kSettingsKey, "UserName"), "");
  EXPECT_EQ(Setting(kSettingsKey, "EncryptedPassword"), "");
}

TEST_F(PreferencesTest, ALastOpenFolderNeedsNoStartFolder) {
  Set(kSettingsKey, "DefaultFolder", "/nonexistent/qbpd-gone");
  Start();
  Open();
  Do([](frmPreferences& f) {
    f.chkLastOpenFolder.SetValue(1);
    f.txtStartUpFolder.SetText("/nonexistent/qbpd-gone");
  });
  Ok();
  host().Run();
  EXPECT_EQ(Messages(), std::vector<std::string>{});
  EXPECT_EQ(Setting(kSettingsKey, "LastOpenFolderInPreviousSession"), "True");
}

TEST_F(PreferencesTest, ExplorerEdgesPassAndTheTimerTakesThem) {
  for (const char* value : {"10", "60", " 25 "}) {
    SCOPED_TRACE(value);
    Start();
    Open();
    Do([value](frmPreferences& f) { f.txtExpCloseTime.SetText(value); });
    Ok();
    host().Run();
    EXPECT_EQ(Messages(), std::vector<std::string>{});
    const int seconds = std::stoi(value);
    EXPECT_EQ(Setting(kDisplayKey, "ExplorerCloseIntervalInSeconds"),
              std::to_string(seconds));
    EXPECT_EQ(main().tmrExplorer.Interval(), seconds * 1000);
    EXPECT_TRUE(session().gbExplorerTimerOn);
  }
}

TEST_F(PreferencesTest, FewerRecentFoldersEmptyThePlacesAbove) {
  Set(kDisplayKey, "NoOfRecentFolders", "6");
  for (int n = 1; n <= 6; ++n) {
    Set(kDisplayKey, "RecentFolder" + std::to_string(n),
        "/nonexistent/" + std::to_string(n));
  }
  Start();
  Open();
  Do([](frmPreferences& f) { f.txtRecentFolders.SetText("2"); });
  Ok();
  host().Run();
  EXPECT_EQ(Setting(kDisplayKey, "NoOfRecentFolders"), "2");
  EXPECT_EQ(session().giNoOfRecentFolders, 2);
  for (int n = 3; n <= 6; ++n) {
    EXPECT_EQ(Setting(kDisplayKey, "RecentFolder" + std::to_string(n)), "");
  }
  EXPECT_LE(main().RecentFolders().Count(), 2);
}

TEST_F(PreferencesTest, MoreRecentFoldersEmptyTheNewPlaces) {
  Set(kDisplayKey, "NoOfRecentFolders", "2");
  Set(kDisplayKey, "RecentFolder4", "/stale/four");
  Start();
  Open();
  Do([](frmPreferences& f) { f.txtRecentFolders.SetText("10"); });
  Ok();
  host().Run();
  EXPECT_EQ(Setting(kDisplayKey, "NoOfRecentFolders"), "10");
  EXPECT_EQ(Setting(kDisplayKey, "RecentFolder4"), "");
  // The folder on show stays first in the list and the menu.
  ASSERT_GE(main().RecentFolders().Count(), 1);
  EXPECT_EQ(main().RecentFolders().Item(1), photos().string());
}

TEST_F(PreferencesTest, CancelAndEscapeWriteNothing) {
  for (bool escape : {false, true}) {
    Start();
    Open();
    Do([escape](frmPreferences& f) {
      user::Click(f.optOriginalSize);
      user::Click(f.chkDefViewer);
      f.txtExpCloseTime.SetText("50");
      user::SelectTab(f.tbsPref, frmPreferences::kFoldersTab);
      f.txtRecentFolders.SetText("9");
      if (escape) {
        user::TypeKeys(f.txtRecentFolders, "{ESC}");
      } else {
        user::Click(f.cmdCancel);
      }
    });
    host().Run();
    EXPECT_FALSE(PrefsOpen());
    EXPECT_EQ(Setting(kDisplayKey, "ZoomSettings"), "FitToWidth");
    EXPECT_EQ(Setting(kDisplayKey, "ExplorerCloseIntervalInSeconds"), "30");
    EXPECT_EQ(Setting(kDisplayKey, "NoOfRecentFolders"), "5");
    EXPECT_EQ(Setting("Classes\\.jpg", ""), "");
    EXPECT_TRUE(viewer_->Calls().empty());
    EXPECT_EQ(main().DefaultZoomMode(), "F");
  }
}

TEST_F(PreferencesTest, EnterActsAsOk) {
  Start();
  Open();
  Do([](frmPreferences& f) {
    user::SelectTab(f.tbsPref, frmPreferences::kFoldersTab);
    f.txtRecentFolders.SetText("");
    user::TypeKeys(f.txtRecentFolders, "7{ENTER}");
  });
  host().Run();
  EXPECT_FALSE(PrefsOpen());
  EXPECT_EQ(Setting(kDisplayKey, "NoOfRecentFolders"), "7");
}

// --- the desktop: default viewer and the monitor's autostart -------------

TEST_F(PreferencesTest, TheDefaultViewerFollowsTheBoxBothWays) {
  Start();
  Open();
  Do([](frmPreferences& f) { user::Click(f.chkDefViewer); });
  Ok();
  host().Run();
  EXPECT_EQ(viewer_->Handler(), FakeDefaultViewer::kProgram);
  for (const char* key : {"Classes\\.jpg", "Classes\\.jpe", "Classes\\.jpeg"}) {
    EXPECT_EQ(Setting(key, ""), "QBPDJPG");
  }
  Open();
  Do([](frmPreferences& f) {
    EXPECT_EQ(f.chkDefViewer.Value(), 1);
    user::Click(f.chkDefViewer);
  });
  Ok();
  host().Run();
  EXPECT_EQ(viewer_->Handler(), "org.gnome.eog.desktop");
  EXPECT_EQ(Setting("Classes\\.jpe", ""), "jpegfile");
}

TEST_F(PreferencesTest, AFailingDesktopIsRecordedAndTheRestWritten) {
  fail_desktop_ = true;
  Start();
  Open();
  Do([](frmPreferences& f) {
    user::Click(f.chkDefViewer);
    user::SelectTab(f.tbsPref, frmPreferences::kCameraTab);
    user::Click(f.ChkDetectUSB);
  });
  Ok();
  host().Run();
  EXPECT_FALSE(PrefsOpen());
  EXPECT_EQ(Messages(), std::vector<std::string>{});
  ASSERT_EQ(host().FailedHandlers().size(), 2u);
  EXPECT_NE(host().FailedHandlers()[0].find("mimeapps.list"),
            std::string::npos);
  EXPECT_NE(host().FailedHandlers()[1].find("autostart"), std::string::npos);
  EXPECT_EQ(Setting(kCameraTransferKey, "DetectUSBDevices"), "False");
  EXPECT_EQ(Setting(kDisplayKey, "ZoomSettings"), "FitToWidth");
}

TEST_F(PreferencesTest, DetectUsbTurnsTheMonitorsAutostart) {
  Start();
  Open();
  Do([](frmPreferences& f) {
    user::SelectTab(f.tbsPref, frmPreferences::kCameraTab);
    user::Click(f.ChkDetectUSB);
  });
  Ok();
  host().Run();
  EXPECT_EQ(autostart_->Calls(), std::vector<bool>{false});
  EXPECT_FALSE(autostart_->DeviceMonitorStarts());
  Open();
  Ok();
  host().Run();
  // Unchanged: the entry isn't written again.
  EXPECT_EQ(autostart_->Calls(), std::vector<bool>{false});
  Open();
  Do([](frmPreferences& f) {
    user::SelectTab(f.tbsPref, frmPreferences::kCameraTab);
    user::Click(f.ChkDetectUSB);
  });
  Ok();
  host().Run();
  EXPECT_EQ(autostart_->Calls(), (std::vector<bool>{false, true}));
  EXPECT_EQ(Setting(kCameraTransferKey, "DetectUSBDevices"), "True");
}

TEST_F(PreferencesTest, TheRunningMonitorObeysAtOnce) {
  Start();
  DeviceMonitor::Options options;
  options.data_folder = (photos().parent_path() / "monitor").string();
  fs::create_directories(options.data_folder);
  options.settings = &app().settings();
  DeviceMonitor monitor(options);
  EXPECT_EQ(monitor.CameraArrived("Nikon"), "200 Nikon|\n");
  Open();
  Do([](frmPreferences& f) {
    user::SelectTab(f.tbsPref, frmPreferences::kCameraTab);
    user::Click(f.ChkDetectUSB);
  });
  Ok();
  host().Run();
  EXPECT_EQ(monitor.CameraArrived("Nikon"), "");
}

TEST_F(PreferencesTest, AnExistingBaseFolderThatCantBeWrittenIsRefused) {
  // Root may write anywhere but where the kernel forbids it: a process
  // folder of /proc is not writable even for root.
  const std::string folder = "/proc/1";
  if (!fs::is_directory(folder) || ::access(folder.c_str(), W_OK) == 0) {
    GTEST_SKIP() << folder
                 << " is writable here, so no unwritable folder "
                    "can be made for this test";
  }
  Start();
  Open();
  Do([&folder](frmPreferences& f) { f.txtBaseFolder.SetText(folder); });
  Ok();
  Told("Could not create the default folder for camera.");
  Cancel();
  host().Run();
  EXPECT_EQ(Setting(kCameraTransferKey, "BaseFolder"), base_);
}

}  // namespace
}  // namespace qbpd
