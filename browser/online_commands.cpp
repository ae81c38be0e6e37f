// The main window's online actions: the upload, share and order buttons with
// their menu entries, ConnectToSite (the road from the click to the login
// form or the connection window), and the service's home page in the Help
// menu. The online forms themselves live in online/ and are reached by name.
#include "browser/frm_main_window.h"
#include "core/jpeg_name.h"
#include "core/settings.h"
#include "core/web_links.h"

#include <filesystem>
#include <string>
#include <vector>

namespace qbpd {
namespace {

constexpr int kUpload = 11;
constexpr int kShare = 12;
constexpr int kOrder = 13;

bool PhotoExists(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error);
}

}  // namespace

void frmMainWindow::WireOnlineCommands() {
  On("imgUpload", "Click", [this](EventArgs&) { OnlineCommand(kUpload); });
  On("mnuFUpload", "Click", [this](EventArgs&) { OnlineCommand(kUpload); });
  On("imgShare", "Click", [this](EventArgs&) { OnlineCommand(kShare); });
  On("mnuFShare", "Click", [this](EventArgs&) { OnlineCommand(kShare); });
  On("imgOrdPrints", "Click", [this](EventArgs&) { OnlineCommand(kOrder); });
  On("mnuFOrderPrints", "Click", [this](EventArgs&) { OnlineCommand(kOrder); });
  On("mnuHWebsite", "Click", [this](EventArgs&) { OpenServiceHome(app_); });
}

void frmMainWindow::OnlineCommand(int operation) {
  if (!CommitRename()) {
    return;
  }
  if (!app_.CheckInternetConnection()) {
    host().MsgBox(operation == kShare ? "Please, Check Internet Connection..."
                                      : "Please, check internet connection...",
                  kMbInformation, s_.gsAppTitle);
    return;
  }
  s_.giCurrentOperation = operation;
  if (operation == kOrder) {
    s_.gsCouponCode.clear();
  }
  ConnectToSite();
}

void frmMainWindow::ConnectToSite() {
  if (s_.gdicSelectedPhotos.Count() == 0) {
    host().MsgBox(
        "This action requires at least one photo to be chosen. Please choose "
        "some\n photos by clicking the checkbox next to the thumbnail and try "
        "again.",
        kMbInformation, s_.gsAppTitle);
    s_.giCurrentOperation = 0;
    return;
  }
  bool gone = false;
  for (int key : s_.gdicSelectedPhotos.Keys()) {
    if (!PhotoExists(s_.gdicSelectedPhotos.Item(key))) {
      s_.gdicSelectedPhotos.Remove(key);
      gone = true;
    }
  }
  if (gone) {
    host().MsgBox("Some photo(s) does not exist", kMbInformation,
                  s_.gsAppTitle);
    RefreshCurrentFolder();
    s_.giCurrentOperation = 0;
    return;
  }
  if (s_.giCurrentOperation != kShare) {
    s_.gsShareSubject = "You're invited to view my online photos";
    s_.gsShareMessage =
        "You're invited to see my photos on Quillbay! You can order prints of "
        "any photo in my online album(s).";
    s_.gsShareRecipients.clear();
    s_.gsAlbumName.clear();
  }

  SettingsStore& settings = app_.settings();
  const std::string url = settings.Read(kRootKey, "URL");
  const std::string ip = settings.Read(kRootKey, "IP");
  const std::string auto_login = settings.Read(kSettingsKey, "AutoLogin");
  const std::string user =
      DropTrailingNul(settings.Read(kSettingsKey, "UserName"));
  // The stored password is unscrambled here and lives only in the session.
  // The unscrambling drops the NUL that ends a value read back on the
  // system it was made for; this store gives values without it, so one is
  // put back first and the password keeps its last character.
  std::string scrambled = settings.Read(kSettingsKey, "EncryptedPassword");
  if (!scrambled.empty() && scrambled.back() != '\0') {
    scrambled.push_back('\0');
  }
  const std::string password = DecryptPassword(scrambled);
  if (url.size() < 2 || ip.size() < 2) {
    host().MsgBox("Enter site URL in registry", kMbStop, s_.gsAppTitle);
    s_.gsSiteUrl.clear();
    s_.gsSiteAddress.clear();
    imgOrdPrints.SetEnabled(true);
    s_.giCurrentOperation = 0;
    return;
  }
  const std::string site_url = DropTrailingNul(url);
  const std::string site_address = DropTrailingNul(ip);
  if (site_url != s_.gsSiteUrl || user != s_.gsUserEmail ||
      password != s_.gsUserPassword) {
    s_.gsSiteUrl = site_url;
    s_.gsSiteAddress = site_address;
    s_.gsAuthCode.clear();
  }
  s_.gsUserEmail = user;
  s_.gsUserPassword = password;
  s_.gbUserCancelled = false;
  if (s_.giCurrentOperation == kUpload) {
    // The photos that go as JPEG copies start converting into memory on the
    // other cores while the login and the album list run; the transfer
    // screen writes a copy only at the photo's turn.
    std::vector<std::string> copies;
    for (int key : s_.gdicSelectedPhotos.Keys()) {
      const std::string& photo = s_.gdicSelectedPhotos.Item(key);
      if (!HasJpegExtension(photo)) {
        copies.push_back(photo);
      }
    }
    app_.images().PrepareJpegCopies(copies);
  }

  if (!s_.gsAuthCode.empty()) {
    s_.gsAlbumId.clear();
    app_.forms().Get("frmNetConn").Show(/*modal=*/true);
  } else if (IsTrueText(DropTrailingNul(auto_login))) {
    s_.gbRememberLogin = true;
    if (!password.empty() && !user.empty()) {
      s_.gsLoginOrigin = std::string(1, 'L');
      app_.forms().Get("frmNetConn").Show(/*modal=*/true);
    } else {
      s_.gsAlbumId.clear();
      s_.gsShareRecipients.clear();
      app_.forms().Get("frmLogin").Show(/*modal=*/true);
    }
  } else {
    s_.gbRememberLogin = false;
    s_.gsAlbumId.clear();
    Form& login = app_.forms().Get("frmLogin");
    login.control("lblError").SetProperty("Caption", Value(std::string()));
    login.Show(/*modal=*/true);
  }
  // The road has ended: what was converted ahead and not sent is forgotten.
  app_.images().PrepareJpegCopies({});
  s_.giCurrentOperation = 0;
}

void frmMainWindow::ClearSelectionMarks() {
  for (int key : s_.gdicLoadedControls.Keys()) {
    if (ctrlQuilImage.Exists(key)) {
      ctrlQuilImage[key].SetCheck(false, false);
      ctrlQuilImage[key].SetTag("U");
    }
  }
  s_.gdicSelectedPhotos.RemoveAll();
  SetPhotosSelectedCaption();
}

}  // namespace qbpd
