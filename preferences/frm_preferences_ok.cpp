// The preferences dialog's OK: the checks in their fixed order, each
// stopping at its failure with its message and its field's tab, then the
// writes and the main window taking the new values up.
#include "browser/frm_main_window.h"
#include "core/quil_mod.h"
#include "core/settings.h"
#include "core/validations.h"
#include "platform/settings_store.h"
#include "preferences/frm_preferences.h"
#include "preferences/pref_numbers.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

constexpr int kSlideMin = 2;
constexpr int kSlideMax = 20;
constexpr int kExplorerMin = 10;
constexpr int kExplorerMax = 60;
constexpr int kRecentMin = 1;
constexpr int kRecentMax = 10;

constexpr char kExplorerRange[] =
    "Enter time interval for automatic explorer close which should in between "
    "10 and 60";
constexpr char kBaseFolderNotMade[] =
    "Could not create the default folder for camera.";

std::string Bool(bool v) {
  return v ? "True" : "False";
}

bool IsFolder(const std::string& path) {
  std::error_code error;
  return fs::is_directory(path, error);
}

// A folder name on Linux can hold anything but a NUL; the rule that refused
// what a Windows path can't hold refuses that.
bool HoldsRefusedCharacter(const std::string& path) {
  return path.find('\0') != std::string::npos;
}

// Makes the folder piece by piece from the root down; false when a piece
// can't be made, or the folder at the end can't take the transfer's folders.
bool MakeBaseFolder(const std::string& path) {
  std::string piece;
  size_t at = 0;
  while (at != std::string::npos) {
    const size_t slash = path.find('/', at + 1);
    piece = path.substr(0, slash);
    at = slash;
    if (piece.empty() || IsFolder(piece)) {
      continue;
    }
    std::error_code error;
    if (!fs::create_directory(piece, error) || error) {
      return false;
    }
  }
  return IsFolder(path) && ::access(path.c_str(), W_OK | X_OK) == 0;
}

}  // namespace

void frmPreferences::PlatformFailed(const std::string& what,
                                    const std::string& error) {
  host().HandlerFailed("frmPreferences " + what, error);
}

bool frmPreferences::Refuse(const std::string& message,
                            int tab,
                            Control& field) {
  host().MsgBox(message, kMbInformation, app_.session().gsAppTitle);
  mbTabChecking = true;
  tbsPref.SetSelectedTab(tab);
  mbTabChecking = false;
  ShowTab(tab);
  field.SetFocus();
  return false;
}

bool frmPreferences::CheckSlideInterval() {
  const std::optional<long long> n =
      FieldNumber(txtSlideShowImageInterval.Text());
  if (!n) {
    return Refuse("Enter numerics for slide show photo Interval", kDisplayTab,
                  txtSlideShowImageInterval);
  }
  if (*n < 0) {
    txtSlideShowImageInterval.SetText(std::to_string(kSlideMin));
    return Refuse("photo interval for slide show should not be -ve values",
                  kDisplayTab, txtSlideShowImageInterval);
  }
  if (*n < kSlideMin || *n > kSlideMax) {
    txtSlideShowImageInterval.SetText(std::to_string(kSlideMin));
    return Refuse("Slide show photo interval between 2 and 20", kDisplayTab,
                  txtSlideShowImageInterval);
  }
  return true;
}

void frmPreferences::WriteDefaultViewer() {
  const bool on = chkDefViewer.Value() == 1;
  // Registry writes aren't checked; the desktop's own default follows.
  (void)WriteJpegAssociation(app_.settings(), on);
  const std::string error = app_.default_viewer().SetDefault(on);
  if (!error.empty()) {
    PlatformFailed("default viewer", error);
  }
}

bool frmPreferences::CheckAndWriteExplorerClose() {
  Session& s = app_.session();
  const std::string display = s.gsPrefKey + "Display";
  frmMainWindow* window = app_.forms().Find<frmMainWindow>();
  if (chkCloseExplorer.Value() != 1) {
    (void)app_.settings().Write(display, "ExplorerCloseIntervalInSeconds", "");
    if (window != nullptr) {
      window->tmrExplorer.SetInterval(0);
      window->tmrExplorer.SetEnabled(false);
    }
    s.gbExplorerTimerOn = false;
    return true;
  }
  const std::optional<long long> n = FieldNumber(txtExpCloseTime.Text());
  if (!n || *n == 0 || *n > kExplorerMax || *n < kExplorerMin) {
    return Refuse(kExplorerRange, kDisplayTab, txtExpCloseTime);
  }
  (void)app_.settings().Write(display, "ExplorerCloseIntervalInSeconds",
                              std::to_string(*n));
  if (window != nullptr) {
    window->tmrExplorer.SetInterval(static_cast<int>(*n) * 1000);
  }
  s.gbExplorerTimerOn = true;
  return true;
}

bool frmPreferences::CheckRecentFolders() {
  const std::optional<long long> n = FieldNumber(txtRecentFolders.Text());
  if (!n) {
    return Refuse("Enter numerics for number of Recent folders", kFoldersTab,
                  txtRecentFolders);
  }
  if (*n < kRecentMin) {
    return Refuse("Number of Recent folders should be greater than 0",
                  kFoldersTab, txtRecentFolders);
  }
  if (*n > kRecentMax) {
    return Refuse("Number of Recent folders should not be greater than 10",
                  kFoldersTab, txtRecentFolders);
  }
  return true;
}

bool frmPreferences::CheckStartFolder() {
  txtStartUpFolder.SetText(TrimSpaces(txtStartUpFolder.Text()));
  if (chkLastOpenFolder.Value() == 1) {
    return true;
  }
  const std::string folder = txtStartUpFolder.Text();
  if (folder.empty()) {
    return Refuse("Enter startup folder", kFoldersTab, txtStartUpFolder);
  }
  // A name no Linux folder can have is refused before it is looked for, as
  // no folder of that name could ever exist.
  if (HoldsRefusedCharacter(folder)) {
    return Refuse("Enter valid folder name for startup folder", kFoldersTab,
                  txtStartUpFolder);
  }
  if (!IsFolder(folder)) {
    return Refuse("Enter existing folder for startup folder", kFoldersTab,
                  txtStartUpFolder);
  }
  return true;
}

bool frmPreferences::CheckAccount() {
  txtLogin.SetText(DropTrailingNul(TrimSpaces(txtLogin.Text())));
  txtPassword.SetText(DropTrailingNul(TrimSpaces(txtPassword.Text())));
  const std::string login = txtLogin.Text();
  auto valid_login = [&login] {
    int key = 0;
    std::string message;
    return IsValidEmail(key, login, message);
  };
  if (chkAutoLogin.Value() != 1) {
    if (!login.empty() && !valid_login()) {
      return Refuse("Enter valid Login name", kAccountTab, txtLogin);
    }
    return true;
  }
  if (login.empty()) {
    return Refuse("Enter Login name", kAccountTab, txtLogin);
  }
  if (!valid_login()) {
    return Refuse("Enter valid Login name", kAccountTab, txtLogin);
  }
  if (txtPassword.Text().empty()) {
    return Refuse("Enter Password", kAccountTab, txtPassword);
  }
  return true;
}

bool frmPreferences::CheckBaseFolder() {
  txtBaseFolder.SetText(TrimSpaces(txtBaseFolder.Text()));
  const std::string folder = txtBaseFolder.Text();
  if (folder.empty()) {
    return Refuse("Enter Base folder", kCameraTab, txtBaseFolder);
  }
  if (HoldsRefusedCharacter(folder)) {
    return Refuse("Enter valid folder name for Base Folder", kCameraTab,
                  txtBaseFolder);
  }
  if (!MakeBaseFolder(folder)) {
    return Refuse(kBaseFolderNotMade, kCameraTab, txtBaseFolder);
  }
  return true;
}

void frmPreferences::cmdOK_Click() {
  if (!CheckSlideInterval()) {
    return;
  }
  WriteDefaultViewer();
  if (!CheckAndWriteExplorerClose() || !CheckRecentFolders() ||
      !CheckStartFolder() || !CheckAccount() || !CheckBaseFolder()) {
    return;
  }
  WriteSettings();
  TellMainWindow();
  Unload();
}

void frmPreferences::WriteSettings() {
  Session& s = app_.session();
  SettingsStore& store = app_.settings();
  const std::string display = s.gsPrefKey + "Display";
  const std::string settings = s.gsPrefKey + "Settings";
  const std::string camera = s.gsPrefKey + "CameraTransfer";
  // Registry writes aren't checked: a lost one keeps the old value.
  const bool fit = optFitToWidth.Value();
  (void)store.Write(display, "ZoomSettings",
                    fit ? "FitToWidth" : "OriginalSize");

  (void)store.Write(
      display, "SlideshowImageIntervalInSeconds",
      std::to_string(*FieldNumber(txtSlideShowImageInterval.Text())));

  const int count = static_cast<int>(*FieldNumber(txtRecentFolders.Text()));
  (void)store.Write(display, "NoOfRecentFolders", std::to_string(count));
  s.giNoOfRecentFolders = count;
  const int from = std::min(count, miOldRecentFolders) + 1;
  const int to = std::max(count, miOldRecentFolders);
  for (int n = from; n <= to; ++n) {
    (void)store.Write(display, "RecentFolder" + std::to_string(n), "");
  }

  (void)store.Write(settings, "UserName", txtLogin.Text());
  const std::string password = txtPassword.Text();
  (void)store.Write(settings, "EncryptedPassword",
                    password.empty() ? "" : EncryptPassword(password));
  const bool auto_login = chkAutoLogin.Value() == 1;
  (void)store.Write(settings, "AutoLogin", Bool(auto_login));
  if (!auto_login) {
    s.gsAuthCode.clear();
  }
  (void)store.Write(settings, "LastOpenFolderInPreviousSession",
                    Bool(chkLastOpenFolder.Value() == 1));
  if (!txtStartUpFolder.Text().empty()) {
    (void)store.Write(settings, "DefaultFolder", txtStartUpFolder.Text());
  }

  const char* express = opt4x6Singles.Value()   ? "4x6Singles"
                        : opt4x6Doubles.Value() ? "4x6Doubles"
                        : opt5x7Singles.Value() ? "5x7Singles"
                                                : nullptr;
  if (express != nullptr) {
    (void)store.Write(s.gsPrefKey + "ExpressPrints", "ExpressPrints", express);
  }

  (void)store.Write(camera, "BaseFolder", txtBaseFolder.Text());
  (void)store.Write(camera, "FolderName",
                    std::to_string(cboFolderName.ListIndex()));
  (void)store.Write(camera, "PhotoName",
                    std::to_string(cboPhotoName.ListIndex()));
  (void)store.Write(camera, "DeleteImagesStatus",
                    Bool(chkDeleteImagesFromCamera.Value() == 1));
  (void)store.Write(camera, "DisplayDialogtoCopy",
                    Bool(chkDisplayCameraCopyImages.Value() == 1));
  const bool detect = ChkDetectUSB.Value() == 1;
  (void)store.Write(camera, "DetectUSBDevices", Bool(detect));
  // The running monitor reads the setting at each device; whether it starts
  // with the next session follows here.
  if (detect != app_.autostart().DeviceMonitorStarts()) {
    const std::string error = app_.autostart().SetDeviceMonitorStarts(detect);
    if (!error.empty()) {
      PlatformFailed("device monitor autostart", error);
    }
  }
}

void frmPreferences::TellMainWindow() {
  frmMainWindow* window = app_.forms().Find<frmMainWindow>();
  if (window == nullptr) {
    return;
  }
  window->TakeUpPreferences(optFitToWidth.Value() ? "F" : "O");
  if (!txtExpCloseTime.Text().empty()) {
    const std::optional<long long> n = FieldNumber(txtExpCloseTime.Text());
    if (n) {
      window->tmrExplorer.SetInterval(static_cast<int>(*n) * 1000);
    }
  }
}

}  // namespace qbpd
