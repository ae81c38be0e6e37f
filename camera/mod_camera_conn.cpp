#include "camera/mod_camera_conn.h"

#include "browser/frm_main_window.h"
#include "camera/camera_lines.h"
#include "camera/card_files.h"
#include "camera/frm_cam_progress.h"
#include "camera/frm_device_list.h"
#include "camera/frm_image_transfer.h"
#include "core/application.h"
#include "core/quil_mod.h"
#include "core/settings.h"
#include "platform/drive_tokens.h"
#include "platform/places.h"

#include <chrono>
#include <filesystem>

namespace qbpd {
namespace fs = std::filesystem;
namespace {

constexpr int kFirstAnswerWaitMs = 3000;
constexpr int kPollMs = 10;
constexpr int kFailedIntervalMs = 3000;
constexpr int kCopyMode = 1;
constexpr char kFailure[] = "Failure - sorry....could not download photos";

std::string Setting(Application& app, const char* name) {
  return DropTrailingNul(app.settings().Read(kCameraTransferKey, name));
}

bool FolderExists(const std::string& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

bool FileExists(const std::string& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

// Polls for an answer file as the program does (test, events, 10 ms). The
// system waits without end; a helper that has ended and left no answer will
// never write one, so then the wait ends with nothing.
bool WaitForAnswerFile(Application& app, const std::string& path) {
  for (;;) {
    if (FileExists(path)) {
      return true;
    }
    if (!app.camera_devices().HelperRunning()) {
      return FileExists(path);
    }
    app.host().DoEvents();
    app.host().Sleep(kPollMs);
  }
}

void ShowFolderInTree(frmMainWindow& main, std::string folder) {
  if (folder.empty() || folder.back() != '/') {
    folder += '/';
  }
  main.ExpTreeView.Refresh();
  main.ExpTreeView.SetSelectedFolder(folder);
}

}  // namespace

std::string ExchangeFile(Application& app, const std::string& name) {
  return app.places().data + "/" + name;
}

std::string CameraBaseFolder(Application& app) {
  std::string base = Trim(Setting(app, "BaseFolder"));
  if (base.empty() || base.back() != '/') {
    base += '/';
  }
  return base;
}

std::string BuildFolderName(Application& app) {
  std::string folder_name = UpperCase(Setting(app, "FolderName"));
  if (folder_name == "2") {
    Session& s = app.session();
    s.gbTransferDialogCancelled = false;
    app.forms().Get<frmImageTransfer>().Show(/*modal=*/true);
    if (s.gbTransferDialogCancelled) {
      return "";
    }
    folder_name = UpperCase(Setting(app, "FolderName"));
  }
  const auto today = std::chrono::floor<std::chrono::days>(app.host().Now());
  const std::chrono::year_month_day date{today};
  return DateFolderName(folder_name, static_cast<int>(date.year()),
                        static_cast<int>(static_cast<unsigned>(date.month())),
                        static_cast<int>(static_cast<unsigned>(date.day())));
}

std::string BuildPhotoName(Application& app) {
  const std::string photo_name = Setting(app, "PhotoName");
  if (photo_name == "0") {
    return "Picture";
  }
  if (photo_name != "1") {
    return "";
  }
  const std::string folder_name = Setting(app, "FolderName");
  if (folder_name == "2") {
    std::string base = Trim(Setting(app, "BaseFolder"));
    while (base.size() > 1 && base.back() == '/') {
      base.pop_back();
    }
    return fs::path(base).filename().string();
  }
  const auto today = std::chrono::floor<std::chrono::days>(app.host().Now());
  const std::chrono::year_month_day date{today};
  return DateFolderName(folder_name, static_cast<int>(date.year()),
                        static_cast<int>(static_cast<unsigned>(date.month())),
                        static_cast<int>(static_cast<unsigned>(date.day())));
}

bool StartImageAcq(Application& app, const std::string& device) {
  std::string argument = device + "*";
  const std::string base = CameraBaseFolder(app);
  const std::string name = BuildFolderName(app);
  if (name.empty()) {
    return false;
  }
  const std::string destination = NumberedFolder(base + name, FolderExists);
  argument += destination + "*" + BuildPhotoName(app);
  // An answer left by an earlier helper would be read as this one's.
  std::error_code ignored;
  fs::remove(ExchangeFile(app, kImgAcqFile), ignored);
  return app.camera_devices().StartImageAcq(argument);
}

void CheckImageAcq(Application& app) {
  frmMainWindow& main = app.forms().Get<frmMainWindow>();
  Session& s = app.session();
  main.timerCamera.SetEnabled(false);
  const std::string path = ExchangeFile(app, kImgAcqFile);
  app.host().Sleep(kFirstAnswerWaitMs);
  app.host().SetMousePointer(kPointerHourglass);
  std::string line;
  if (!WaitForAnswerFile(app, path)) {
    line = MakeImgAcqLine(kTransferFailed);
  } else {
    TakeExchangeLine(path, line);
  }
  line = Trim(line);
  if (line.empty()) {
    app.host().SetMousePointer(kPointerDefault);
    main.timerCamera.SetEnabled(true);
    return;
  }
  s.gsCommandLine.clear();
  const ImgAcqLine answer = ParseImgAcqLine(line);
  if (answer.code == kTransferBegun) {
    frmCamProgress& progress = app.forms().Get<frmCamProgress>();
    progress.txtDeviceType.SetText("CM");
    progress.Show(/*modal=*/true);
    app.host().SetMousePointer(kPointerDefault);
    main.timerCamera.SetEnabled(true);
    return;
  }
  if (answer.code == kTransferFailed) {
    app.host().MsgBox(kFailure, kMbStop, s.gsAppTitle);
  }
  if (answer.code == kTransferFailed || answer.code == kTransferNothing ||
      answer.code == kTransferStopped) {
    app.host().SetMousePointer(kPointerDefault);
    main.timerCamera.SetInterval(kFailedIntervalMs);
    main.timerCamera.SetEnabled(true);
    return;
  }
  app.host().SetMousePointer(kPointerDefault);
}

void WaitForTransfer(Application& app) {
  frmMainWindow& main = app.forms().Get<frmMainWindow>();
  Session& s = app.session();
  const std::string path = ExchangeFile(app, kImgAcqFile);
  app.host().Sleep(kFirstAnswerWaitMs);
  std::string line;
  if (!WaitForAnswerFile(app, path)) {
    line = MakeImgAcqLine(kTransferFailed);
  } else {
    TakeExchangeLine(path, line);
  }
  line = Trim(line);
  if (line.empty()) {
    return;
  }
  s.gsCommandLine.clear();
  const ImgAcqLine answer = ParseImgAcqLine(line);
  if (answer.code == kTransferDone) {
    std::string folder = answer.folder;
    if (folder.empty() || folder.back() != '/') {
      folder += '/';
    }
    while (!FolderExists(folder) && app.camera_devices().HelperRunning()) {
      app.host().DoEvents();
      app.host().Sleep(kPollMs);
    }
    main.ExpTreeView.Refresh();
    if (FolderExists(folder)) {
      ShowFolderInTree(main, folder);
    }
  } else if (answer.code == kTransferFailed) {
    // After "310" the system says nothing of a failure; a camera pulled out
    // mid-transfer must not pass for a finished import.
    app.host().MsgBox(kFailure, kMbStop, s.gsAppTitle);
    main.timerCamera.SetInterval(kFailedIntervalMs);
  }
}

bool ListCardFiles(Application& app, const std::string& drive) {
  Session& s = app.session();
  s.gsaCardFiles.clear();
  const std::string folder = app.camera_devices().DriveFolder(drive);
  if (folder.empty() || !FolderExists(folder)) {
    return false;
  }
  s.gsaCardFiles = ListFolderFiles(folder);
  return !s.gsaCardFiles.empty();
}

void CopyCardFiles(Application& app,
                   std::string source,
                   bool keep_tree,
                   std::string destination,
                   int mode,
                   ProgressBar* bar) {
  Session& s = app.session();
  frmMainWindow& main = app.forms().Get<frmMainWindow>();
  if (source.empty() || source.back() != '/') {
    source += '/';
  }
  if (keep_tree) {
    const std::size_t at = UpperCase(destination).find(UpperCase(source));
    if (at != std::string::npos) {
      destination.erase(at, source.size());
    }
    destination += '/';
  }
  while (destination.size() > 1 && destination.back() == '/') {
    destination.pop_back();
  }
  destination = NumberedFolder(destination, FolderExists);
  if (!MakeFolders(destination)) {
    app.host().MsgBox(kFailure, kMbStop, s.gsAppTitle);
    return;
  }
  if (bar != nullptr) {
    bar->SetMax(std::max(1, static_cast<int>(s.gsaCardFiles.size())));
    bar->SetValue(0);
  }
  const CardCopyReport report = CopyFilesInto(
      s.gsaCardFiles, destination, mode != kCopyMode, app.file_transfer(),
      [&] {
        if (bar != nullptr && bar->Value() < bar->Max()) {
          bar->SetValue(bar->Value() + 1);
        }
        app.host().DoEvents();
      },
      [&](const std::function<bool()>& done) { app.host().WaitForWork(done); });
  s.gbFilesCopied = true;
  ShowFolderInTree(main, destination);
  if (report.failed > 0) {
    app.host().MsgBox(kFailure, kMbStop, s.gsAppTitle);
  }
}

void GetCameraPhotos(Application& app) {
  Session& s = app.session();
  frmDeviceList& list = app.forms().Get<frmDeviceList>();
  if (list.IsLoaded()) {
    list.lblDescription.SetVisible(false);
    list.Show(/*modal=*/true);
  }
  if (s.gbDeviceListCancelled) {
    return;
  }
  const std::string device = s.gsSelectedDevice;
  if (IsDriveText(device)) {
    const std::string base = CameraBaseFolder(app);
    const std::string name = BuildFolderName(app);
    if (name.empty()) {
      return;
    }
    s.gsTransferFolder = base + name;
    if (ListCardFiles(app, device)) {
      frmCamProgress& progress = app.forms().Get<frmCamProgress>();
      progress.txtCamerastring.SetText(device);
      progress.txtDeviceType.SetText("CR");
      progress.Show(/*modal=*/true);
    }
    return;
  }
  if (StartImageAcq(app, device)) {
    app.forms().Get<frmMainWindow>().timerCamera.SetEnabled(false);
    CheckImageAcq(app);
  }
}

void WireCameraImport(frmMainWindow& window, Application& app) {
  Application* a = &app;
  frmMainWindow* w = &window;
  window.On("timerCamera", "Timer", [a](EventArgs&) { timerCamera_Timer(*a); });
  window.On("mnuFGetCameraPhotos", "Click", [a, w](EventArgs&) {
    if (!w->CommitRename()) {
      return;
    }
    w->LeaveEditMode();
    a->session().giCurrentOperation = 0;
    w->timerCamera.SetEnabled(false);
    GetCameraPhotos(*a);
    a->host().SetMousePointer(kPointerDefault);
    w->timerCamera.SetEnabled(true);
  });
}

}  // namespace qbpd
