#include "preferences/frm_preferences.h"

#include "core/help.h"
#include "core/quil_mod.h"
#include "core/settings.h"
#include "platform/forms/keys.h"
#include "platform/settings_store.h"
#include "preferences/pref_numbers.h"

namespace qbpd {
namespace {

constexpr long kWhite = 0xFFFFFF;
constexpr long kGrey = 0xC0C0C0;
constexpr int kSlideMin = 2;
constexpr int kSlideMax = 20;
constexpr int kDefaultExplorerClose = 10;
// Keys the number fields take besides digits: Ctrl+C, Ctrl+V, Ctrl+X,
// Enter and the blank.
constexpr int kCopyKey = 3;
constexpr int kPasteKey = 22;
constexpr int kCutKey = 24;
constexpr int kBlankKey = 32;

constexpr char kSlideNotValid[] = "Enter valid slide show photo interval. ";
constexpr char kSlideRange[] = "Slide show photo interval between 2 and 20";
constexpr char kSlideLeftRange[] =
    "Slide show photo interval should be between 2 and 20";

int ListIndexOf(const std::string& value, int count) {
  const std::optional<long long> index = FieldNumber(value);
  return index && *index >= 0 && *index < count ? static_cast<int>(*index) : 0;
}

// A check box that follows a "True" or "False" setting; any other value
// leaves it as it is.
void FollowBoolean(CheckBox& box, const std::string& value) {
  const std::string upper = UpperCase(value);
  if (upper == "TRUE") {
    box.SetValue(1);
  } else if (upper == "FALSE") {
    box.SetValue(0);
  }
}

}  // namespace

frmPreferences::frmPreferences(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetKeyPreview(true);
  SetHelpContextID(kHelpPreferences);
  LayOut();
  ChkDetectUSB.SetValue(1);
  chkDisplayCameraCopyImages.SetValue(1);
  Field("mbLoading", mbLoading);
  Field("miCurrentTab", miCurrentTab);
  Field("miOldRecentFolders", miOldRecentFolders);
  On("tbsPref", "Click", &frmPreferences::tbsPref_Click);
  On("txtSlideShowImageInterval", "Change",
     &frmPreferences::txtSlideShowImageInterval_Change);
  On("txtSlideShowImageInterval", "LostFocus",
     &frmPreferences::txtSlideShowImageInterval_LostFocus);
  On("sliderImageInterval", "Change",
     &frmPreferences::sliderImageInterval_Change);
  On("chkCloseExplorer", "Click", &frmPreferences::chkCloseExplorer_Click);
  On("chkLastOpenFolder", "Click", &frmPreferences::chkLastOpenFolder_Click);
  On("ChkDetectUSB", "Click", &frmPreferences::ChkDetectUSB_Click);
  On("cmdBrowseFolder", "Click", &frmPreferences::cmdBrowseFolder_Click);
  On("cmdBrowseForBaseFolder", "Click",
     &frmPreferences::cmdBrowseForBaseFolder_Click);
  On("txtLogin", "LostFocus", &frmPreferences::AccountField_LostFocus);
  On("txtPassword", "LostFocus", &frmPreferences::AccountField_LostFocus);
  On("txtSlideShowImageInterval", "KeyPress",
     [](EventArgs& e) { NumberKeys(e, /*backspace=*/true); });
  On("txtExpCloseTime", "KeyPress",
     [](EventArgs& e) { NumberKeys(e, /*backspace=*/false); });
  On("txtRecentFolders", "KeyPress",
     [](EventArgs& e) { NumberKeys(e, /*backspace=*/false); });
  On("cmdOK", "Click", &frmPreferences::cmdOK_Click);
  On("cmdCancel", "Click", &frmPreferences::cmdCancel_Click);
}

void frmPreferences::Form_Load() {
  mbLoading = true;
  SetCaption("Preferences");
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  LoadDisplay();
  LoadAccount();
  LoadFolders();
  LoadCamera();
  ShowTab(kDisplayTab);
  mbLoading = false;
}

void frmPreferences::LoadDisplay() {
  SettingsStore& store = app_.settings();
  const std::string display = app_.session().gsPrefKey + "Display";
  if (UpperCase(DropTrailingNul(store.Read(display, "ZoomSettings"))) ==
      "FITTOWIDTH") {
    optFitToWidth.SetValue(true);
  } else {
    optOriginalSize.SetValue(true);
  }
  const std::string interval = TrimSpaces(
      DropTrailingNul(store.Read(display, "SlideshowImageIntervalInSeconds")));
  txtSlideShowImageInterval.SetText(interval);
  if (std::optional<long long> n = FieldNumber(interval);
      n && *n >= kSlideMin && *n <= kSlideMax) {
    sliderImageInterval.SetValue(static_cast<int>(*n));
  }
  chkDefViewer.SetValue(ReadJpegAssociation(store) ? 1 : 0);
  const std::string close = TrimSpaces(
      DropTrailingNul(store.Read(display, "ExplorerCloseIntervalInSeconds")));
  if (close.empty()) {
    chkCloseExplorer.SetValue(0);
    SetExplorerField(false);
  } else {
    chkCloseExplorer.SetValue(1);
    SetExplorerField(true);
    txtExpCloseTime.SetText(close);
  }
  const std::string recent =
      TrimSpaces(DropTrailingNul(store.Read(display, "NoOfRecentFolders")));
  txtRecentFolders.SetText(recent);
  const std::optional<long long> count = FieldNumber(recent);
  miOldRecentFolders = count ? static_cast<int>(*count) : 0;
}

void frmPreferences::LoadAccount() {
  SettingsStore& store = app_.settings();
  const std::string settings = app_.session().gsPrefKey + "Settings";
  txtLogin.SetText(
      TrimSpaces(DropTrailingNul(store.Read(settings, "UserName"))));
  // The unscrambling drops the last character, taking it for the NUL that
  // ends a value read back on the system it was made for. This store gives
  // values without it, so one is put back first: otherwise every OK would
  // store the password one character shorter.
  std::string scrambled = store.Read(settings, "EncryptedPassword");
  if (!scrambled.empty() && scrambled.back() != '\0') {
    scrambled.push_back('\0');
  }
  std::string password = TrimSpaces(DecryptPassword(scrambled));
  if (!password.empty() && (password.back() == '\0' || password.back() == 27)) {
    password.pop_back();
    password = TrimSpaces(password);
  }
  txtPassword.SetText(password);
  FollowBoolean(chkAutoLogin,
                DropTrailingNul(store.Read(settings, "AutoLogin")));
  chkLastOpenFolder.SetValue(IsTrueText(DropTrailingNul(store.Read(
                                 settings, "LastOpenFolderInPreviousSession")))
                                 ? 1
                                 : 0);
  txtStartUpFolder.SetText(
      DropTrailingNul(store.Read(settings, "DefaultFolder")));
  chkLastOpenFolder_Click();
}

void frmPreferences::LoadFolders() {
  const std::string express = DropTrailingNul(app_.settings().Read(
      app_.session().gsPrefKey + "ExpressPrints", "ExpressPrints"));
  if (express == "4x6Singles") {
    opt4x6Singles.SetValue(true);
  } else if (express == "4x6Doubles") {
    opt4x6Doubles.SetValue(true);
  } else if (express == "5x7Singles") {
    opt5x7Singles.SetValue(true);
  }
}

void frmPreferences::LoadCamera() {
  SettingsStore& store = app_.settings();
  const std::string camera = app_.session().gsPrefKey + "CameraTransfer";
  auto read = [&](const char* name) {
    return DropTrailingNul(store.Read(camera, name));
  };
  txtBaseFolder.SetText(read("BaseFolder"));
  cboFolderName.SetListIndex(
      ListIndexOf(read("FolderName"), cboFolderName.ListCount()));
  cboPhotoName.SetListIndex(
      ListIndexOf(read("PhotoName"), cboPhotoName.ListCount()));
  FollowBoolean(chkDeleteImagesFromCamera, read("DeleteImagesStatus"));
  FollowBoolean(chkDisplayCameraCopyImages, read("DisplayDialogtoCopy"));
  FollowBoolean(ChkDetectUSB, read("DetectUSBDevices"));
  ChkDetectUSB_Click();
}

void frmPreferences::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    cmdCancel_Click();
  }
}

void frmPreferences::ShowTab(int tab) {
  Frame* frames[] = {&fraDisplay, &fraAccount, &fraFolders, &fraCamera};
  for (int i = 0; i < 4; ++i) {
    const bool shown = i + 1 == tab;
    frames[i]->SetEnabled(shown);
    frames[i]->SetVisible(shown);
  }
  miCurrentTab = tab;
}

void frmPreferences::tbsPref_Click() {
  if (mbTabChecking) {
    return;
  }
  const int tab = tbsPref.SelectedTab();
  if (miCurrentTab == kDisplayTab && tab != kDisplayTab) {
    const std::optional<long long> n =
        FieldNumber(txtSlideShowImageInterval.Text());
    const char* message = !n                                   ? kSlideNotValid
                          : (*n < kSlideMin || *n > kSlideMax) ? kSlideRange
                                                               : nullptr;
    if (message != nullptr) {
      host().MsgBox(message, kMbInformation, app_.session().gsAppTitle);
      mbTabChecking = true;
      tbsPref.SetSelectedTab(kDisplayTab);
      mbTabChecking = false;
      ShowTab(kDisplayTab);
      txtSlideShowImageInterval.SetFocus();
      return;
    }
  }
  ShowTab(tab);
}

void frmPreferences::txtSlideShowImageInterval_Change() {
  if (mbLoading) {
    return;
  }
  const std::optional<long long> n =
      FieldNumber(txtSlideShowImageInterval.Text());
  if (n && *n >= kSlideMin && *n <= kSlideMax) {
    sliderImageInterval.SetValue(static_cast<int>(*n));
  }
}

void frmPreferences::sliderImageInterval_Change() {
  if (mbLoading) {
    return;
  }
  const std::string value = std::to_string(sliderImageInterval.Value());
  if (FieldNumber(txtSlideShowImageInterval.Text()) !=
      std::optional<long long>(sliderImageInterval.Value())) {
    txtSlideShowImageInterval.SetText(value);
  }
}

void frmPreferences::txtSlideShowImageInterval_LostFocus() {
  Control* next = ActiveControl();
  // Cancel writes nothing, so a field it leaves isn't judged.
  if (next == &cmdCancel) {
    return;
  }
  txtSlideShowImageInterval.SetText(
      TrimSpaces(txtSlideShowImageInterval.Text()));
  const std::optional<long long> n =
      FieldNumber(txtSlideShowImageInterval.Text());
  if (!n || (*n >= kSlideMin && *n <= kSlideMax)) {
    return;
  }
  host().MsgBox(kSlideLeftRange, kMbInformation, app_.session().gsAppTitle);
  txtSlideShowImageInterval.SetText(
      std::to_string(*n > kSlideMax ? kSlideMax : kSlideMin));
  const bool within = next != nullptr && next->Container() == "fraDisplay";
  if (!within && tbsPref.SelectedTab() != kDisplayTab) {
    mbTabChecking = true;
    tbsPref.SetSelectedTab(kDisplayTab);
    mbTabChecking = false;
    ShowTab(kDisplayTab);
  }
}

void frmPreferences::SetExplorerField(bool enabled) {
  txtExpCloseTime.SetEnabled(enabled);
  txtExpCloseTime.SetBackColor(enabled ? kWhite : kGrey);
  if (!enabled) {
    txtExpCloseTime.SetText("");
  }
}

void frmPreferences::chkCloseExplorer_Click() {
  if (mbLoading) {
    return;
  }
  if (chkCloseExplorer.Value() == 1) {
    SetExplorerField(true);
    const std::optional<long long> n = FieldNumber(txtExpCloseTime.Text());
    if (!n || *n <= 0) {
      txtExpCloseTime.SetText(std::to_string(kDefaultExplorerClose));
    }
  } else {
    SetExplorerField(false);
  }
}

void frmPreferences::chkLastOpenFolder_Click() {
  const bool free = chkLastOpenFolder.Value() != 1;
  txtStartUpFolder.SetEnabled(free);
  cmdBrowseFolder.SetEnabled(free);
}

void frmPreferences::ChkDetectUSB_Click() {
  chkDisplayCameraCopyImages.SetEnabled(ChkDetectUSB.Value() == 1);
}

void frmPreferences::cmdBrowseFolder_Click() {
  FolderDialogCall call;
  call.title = "Desktop:";
  call.start_folder = txtStartUpFolder.Text();
  std::optional<std::string> folder = host().BrowseForFolder(call);
  if (folder && !folder->empty()) {
    txtStartUpFolder.SetText(*folder);
  }
}

void frmPreferences::cmdBrowseForBaseFolder_Click() {
  FolderDialogCall call;
  call.title = "Desktop:";
  call.start_folder = txtBaseFolder.Text();
  std::optional<std::string> folder = host().BrowseForFolder(call);
  if (folder && !folder->empty()) {
    txtBaseFolder.SetText(*folder);
  }
}

void frmPreferences::AccountField_LostFocus() {
  txtLogin.SetText(TrimSpaces(txtLogin.Text()));
  txtPassword.SetText(TrimSpaces(txtPassword.Text()));
  const bool login = !txtLogin.Text().empty();
  const bool password = !txtPassword.Text().empty();
  if (login && password && chkAutoLogin.Value() != 1) {
    chkAutoLogin.SetValue(1);
  } else if (!login && !password && chkAutoLogin.Value() == 1) {
    chkAutoLogin.SetValue(0);
  }
}

void frmPreferences::NumberKeys(EventArgs& e, bool backspace) {
  const int key = e.KeyAscii;
  const bool passes = (key >= '0' && key <= '9') || key == kCopyKey ||
                      key == kPasteKey || key == kCutKey || key == kKeyReturn ||
                      key == kBlankKey || (backspace && key == kKeyBack);
  if (!passes) {
    e.KeyAscii = 0;
  }
}

void frmPreferences::cmdCancel_Click() {
  Unload();
}

}  // namespace qbpd
