#include "browser/frm_main_window.h"

#include "core/help.h"
#include "core/quil_mod.h"

#include <filesystem>

namespace qbpd {
namespace fs = std::filesystem;
namespace {

constexpr int kInitialLoadMs = 200;
constexpr int kDblClickMs = 300;
constexpr int kQueryUnloadMs = 100;
constexpr int kCameraMs = 400;
constexpr int kThumbnailHeight = 1455;

constexpr std::string_view kShareSubject =
    "You're invited to view my online photos";
constexpr std::string_view kShareMessage =
    "You 're invited to see my photos on Quillbay! You can order prints of any "
    "photo in my online album(s).";

int ToInt(const std::string& text) {
  try {
    return std::stoi(text);
  } catch (const std::exception&) {
    return 0;
  }
}

}  // namespace

frmMainWindow::frmMainWindow(Application& app)
    : Form(app.host(), std::string(kName)), app_(app), s_(app.session()) {
  DeclareFields();
  Move(0, 0, kMinWidth, kMinHeight);
  ExpTreeView.SetContainer("picExplorerCont");
  lblExpFolderPath.SetContainer("picExplorerCont");
  imgBrowseClose.SetContainer("picExplorerCont");
  lstFiles.SetVisible(false);
  cmdImageListHead.SetContainer("picImageListCont");
  cmdImageListHead.SetCaption("Photos");
  picImagelistInnerCont.SetContainer("picImageListCont");
  ctrlQuilImage[0].SetContainer("picImagelistInnerCont");
  ctrlQuilImage[0].Move(0, 100, kThumbnailHeight, kThumbnailHeight);
  ctrlQuilImage[0].SetVisible(false);
  ctrlImageListVScroll.SetContainer("picImageListCont");
  ctrlImageListVScroll.SetVertical(true);
  ctrlImageListVScroll.SetVisible(false);
  ctlDisplayImage.SetContainer("picDisplayImageCont");
  picImageText.SetContainer("picDisplayImageCont");
  picImageText.SetVisible(false);
  lblDisplayImageName.SetContainer("picImageText");
  txtFileName.SetContainer("picImageText");
  txtFileName.SetVisible(false);
  // The name strip: one line of text, centred under the photo.
  lblDisplayImageName.Move(250, 30, 3000, 330);
  lblDisplayImageName.SetAlignment(2);
  txtFileName.Move(250, 20, 3000, 330);
  for (Control* tool : std::initializer_list<Control*>{
           &imgZoom, &imgLeftRotate, &imgRightRotate, &imgCrop, &imgRedeye,
           &imgAutocolor, &imgInfo, &imgWallpaper}) {
    tool->SetContainer("picManipCont");
  }
  imgPrev.SetContainer("picImageFlow");
  imgNext.SetContainer("picImageFlow");
  imgTrash.SetContainer("picTrash");
  imgApplyChanges.SetContainer("picCropCont");
  imgCancel.SetContainer("picCropCont");
  picCropCont.SetVisible(false);

  tmrIniitialLoad.SetInterval(kInitialLoadMs);
  tmrDblClick.SetInterval(kDblClickMs);
  tmrQueryUnload.SetInterval(kQueryUnloadMs);
  timerCamera.SetInterval(kCameraMs);

  mnuFRecFolders[0].SetContainer("mnuFile");
  mnuFRecFolders[0].SetVisible(false);
  mnuFSep2.SetVisible(false);

  On("tmrIniitialLoad", "Timer", &frmMainWindow::tmrIniitialLoad_Timer);
  On("tmrQueryUnload", "Timer", &frmMainWindow::tmrQueryUnload_Timer);
  On("tmrDblClick", "Timer", &frmMainWindow::tmrDblClick_Timer);
  On("ExpTreeView", "FolderClick", &frmMainWindow::ExpTreeView_FolderClick);
  for (const char* down : {"MouseDown", "KeyDown"}) {
    On("ExpTreeView", down, &frmMainWindow::ExpTreeView_Down);
  }
  for (const char* up : {"MouseUp", "KeyUp"}) {
    On("ExpTreeView", up, &frmMainWindow::ExpTreeView_Up);
  }
  On("ctrlQuilImage", "Click", &frmMainWindow::ctrlQuilImage_Click);
  On("mnuFRecFolders", "Click", &frmMainWindow::mnuFRecFolders_Click);
  On("mnuERefresh", "Click", &frmMainWindow::mnuERefresh_Click);
  On("mnuFExit", "Click", &frmMainWindow::mnuFExit_Click);
  On("ctrlQuilImage", "CheckClick", &frmMainWindow::ctrlQuilImage_CheckClick);
  On("ctrlImageListVScroll", "Change",
     &frmMainWindow::ctrlImageListVScroll_Change);
  On("imgSelectAll", "Click", &frmMainWindow::imgSelectAll_Click);
  On("mnuESelectAll", "Click", &frmMainWindow::imgSelectAll_Click);
  On("imgClear", "Click", &frmMainWindow::imgClear_Click);
  On("mnuEClear", "Click", &frmMainWindow::imgClear_Click);
  WireDisplay();
  WireViewerKeys();
  mnuHHelp.SetContainer("mnuHelp");
  WireCommands();
  WirePresentationCommands();
  WireScreensaverCommands();
  WirePreferencesCommands();
  On("mnuHHelp", "Click", &frmMainWindow::mnuHHelp_Click);
  SetHelpContextID(kHelpBrowsing);
  SetKeyPreview(true);
  WireFileOperations();
  WireEditor();
  WireRotation();
  WireOnlineCommands();
}

void frmMainWindow::Form_Load() {
  SetCaption(s_.gsAppTitle);
  ctlDisplayImage.AttachDisplay(app_.NewDisplayControl());
  ctlDisplayImage.SetScaleBase(100);
  mbFirstLoad = true;
  mbStartupDone = false;
  ctrlImageListVScroll.SetMax(0);
  mbMouseDownOnTreeview = 2;
  // The window's size limits are kept by Form_Resize and the host.
  host().DoEvents();

  mbFormReady = false;
  LoadRecentFolders();
  mbExplorerOpen = true;
  s_.giCurrentOperation = 0;
  ShowButtonPictures();

  std::string zoom =
      app_.settings().Read(s_.gsPrefKey + "Display", "ZoomSettings");
  msZoomMode = zoom.substr(0, 1);

  std::string prev_mode =
      DropTrailingNul(Trim(app_.settings().Read(kRootKey, "PrevMode")));
  std::string prev_height =
      DropTrailingNul(Trim(app_.settings().Read(kRootKey, "PrevHt")));
  std::string prev_width =
      DropTrailingNul(Trim(app_.settings().Read(kRootKey, "PrevWidth")));
  if (prev_mode == "1" ||
      (!s_.gsCommandLine.empty() &&
       UpperCase(s_.gsCommandLine).find("-DEVMO") != std::string::npos)) {
    prev_mode = "2";
  }
  if (prev_mode == "2") {
    Move(0, 0, Width(), Height());
    SetWindowState(kWindowMaximized);
  } else {
    int height = std::max(ToInt(prev_height), kMinHeight);
    int width = std::max(ToInt(prev_width), kMinWidth);
    int screen_width = host().ScreenWidth();
    int screen_height = host().ScreenHeight();
    Move((screen_width - width) / 2, (screen_height - height) / 2, width,
         height);
  }

  miScreenWidthPx = host().ScreenWidth() / kTwipsPerPixel;
  miScreenHeightPx = host().ScreenHeight() / kTwipsPerPixel;
  mbFormReady = true;
  s_.gsShareSubject = std::string(kShareSubject);
  s_.gsShareMessage = std::string(kShareMessage);
  moToolTip = std::make_unique<cToolTip>();
}

void frmMainWindow::Form_Resize() {
  if (!mbFormReady) {
    return;
  }
  int screen_height = host().ScreenHeight() / kTwipsPerPixel;
  int screen_width = host().ScreenWidth() / kTwipsPerPixel;
  bool screen_changed = false;
  if (screen_height != miScreenHeightPx || screen_width != miScreenWidthPx) {
    miScreenHeightPx = screen_height;
    miScreenWidthPx = screen_width;
    screen_changed = !mbFirstLoad;
  }
  if (WindowState() == kWindowMinimized) {
    return;
  }
  if (!mbFirstLoad && !screen_changed && WindowState() == kWindowNormal &&
      (Height() < kMinHeight || Width() < kMinWidth)) {
    Move(Left(), Top(), std::max(Width(), kMinWidth),
         std::max(Height(), kMinHeight));
    return;  // the move raises Resize again
  }
  if (mbFirstLoad) {
    InitFrameArrange();
    SetToolTips();
    tmrIniitialLoad.SetEnabled(true);
    return;
  }
  FrameReArrange();
  SetToolTips();

  // A running instance that a second start restored picks up its photo here.
  s_.gsCommandLine.clear();
  ReadCommandImage(app_, s_.gsCommandLine);
  if (s_.gsCommandLine.empty()) {
    return;
  }
  bool proceed = true;
  EndCurrentOperation("", proceed);
  if (!proceed) {
    WriteCommandImage(app_, "");
    s_.gsCommandLine.clear();
    return;
  }
  std::error_code error;
  fs::path real = fs::weakly_canonical(s_.gsCommandLine, error);
  if (!error) {
    s_.gsCommandLine = real.string();
  }
  if (IsPhotoExtension(UpperExtension(s_.gsCommandLine))) {
    timerCamera.SetEnabled(false);
    host().DoEvents();
    OpenCommandImage();
    WriteCommandImage(app_, "");
    s_.gsCommandLine.clear();
    timerCamera.SetEnabled(true);
  } else {
    timerCamera.SetEnabled(false);
    timerCamera.SetInterval(kCameraMs);
    timerCamera.SetEnabled(true);
    WriteCommandImage(app_, "");
    s_.gsCommandLine.clear();
    tmrIniitialLoad.SetEnabled(true);
  }
}

void frmMainWindow::tmrIniitialLoad_Timer() {
  tmrIniitialLoad.SetEnabled(false);
  mbInitialLoadBusy = true;
  host().SetMousePointer(kPointerHourglass);
  s_.gbLoadInProgress = true;

  if (!mbFirstLoad) {
    for (int key : mdicStaleControls.Keys()) {
      if (ctrlQuilImage.Exists(key) && !ctrlQuilImage[key].Visible()) {
        ctrlQuilImage.Unload(key);
      }
    }
    mdicStaleControls.RemoveAll();
    s_.gbLoadInProgress = false;
    host().SetMousePointer(kPointerDefault);
    mbInitialLoadBusy = false;
    return;
  }

  host().DoEvents();
  std::string close_interval = DropTrailingNul(app_.settings().Read(
      s_.gsPrefKey + "Display", "ExplorerCloseIntervalInSeconds"));
  if (close_interval.empty()) {
    tmrExplorer.SetInterval(0);
    s_.gbExplorerTimerOn = false;
  } else {
    tmrExplorer.SetInterval(ToInt(close_interval) * 1000);
    s_.gbExplorerTimerOn = true;
  }

  bool choose_folder = true;
  if (!s_.gsCommandLine.empty()) {
    if (IsPhotoExtension(UpperExtension(s_.gsCommandLine))) {
      OpenCommandImage();
      s_.gsCommandLine.clear();
      mbFirstLoad = false;
      timerCamera.SetEnabled(true);
      tmrExplorer.SetEnabled(s_.gbExplorerTimerOn);
      ExpTreeView.Refresh();
      tmrUpgrade.SetEnabled(true);
      // A start with a photo looks for an upgrade at once.
      tmrUpgrade.Raise("Timer");
      choose_folder = false;
    } else if (s_.gsCommandLine.find("DEVMON") == std::string::npos) {
      // A folder (named, or where the long name's expansion stopped) is no
      // file of another type: the start goes on to its folder silently.
      std::error_code error;
      if (fs::exists(s_.gsCommandLine, error) &&
          !fs::is_directory(s_.gsCommandLine, error)) {
        host().MsgBox(
            "Quillbay Picture Desk doesn't support this file format.\r\n"
            "Load Recent Viewed photos.",
            kMbInformation, s_.gsAppTitle);
      }
      s_.gsCommandLine.clear();
    } else {
      // Started by the device monitor: its answer decides what shows first.
      mbFirstLoad = false;
      s_.gsCommandLine.clear();
      s_.gbCopyAllowed = false;
      timerCamera.Raise("Timer");
      if (mbCloseAfterDevice) {
        mbInitialLoadBusy = false;
        s_.gbLoadInProgress = false;
        host().SetMousePointer(kPointerDefault);
        Unload();
        return;
      }
      if (s_.gbCopyAllowed) {
        timerCamera.SetEnabled(true);
        tmrExplorer.SetEnabled(s_.gbExplorerTimerOn);
        tmrUpgrade.SetEnabled(true);
        choose_folder = false;
      }
    }
  }

  if (choose_folder) {
    std::string folder = StartFolder();
    mbFirstLoad = false;
    host().DoEvents();
    ExpTreeView.SetSelectedFolder(folder);
    timerCamera.SetInterval(kCameraMs);
    timerCamera.SetEnabled(true);
    tmrExplorer.SetEnabled(s_.gbExplorerTimerOn);
    tmrUpgrade.SetEnabled(true);
  }

  s_.gbLoadInProgress = false;
  host().SetMousePointer(kPointerDefault);
  mbInitialLoadBusy = false;
  mbStartupDone = true;
}

std::string frmMainWindow::StartFolder() {
  std::string last_open = DropTrailingNul(app_.settings().Read(
      s_.gsPrefKey + "Settings", "LastOpenFolderInPreviousSession"));
  if (UpperCase(last_open) != "TRUE") {
    std::string default_folder = Trim(DropTrailingNul(
        app_.settings().Read(s_.gsPrefKey + "Settings", "DefaultFolder")));
    if (!default_folder.empty()) {
      WriteRecentFolder(default_folder);
    }
  }
  msRecentFolder = mcolRecentFolders.Count() == 0 ? std::string()
                                                  : mcolRecentFolders.Item(1);
  std::string folder =
      msRecentFolder.empty() ? s_.gsDesktopPath : msRecentFolder;
  if (folder.empty() || folder.back() != '/') {
    folder += '/';
  }
  return folder;
}

void frmMainWindow::Form_QueryUnload(int& Cancel, int UnloadMode) {
  (void)UnloadMode;
  SaveImage();
  if (!s_.gbLoadInProgress) {
    tmrQueryUnload.SetEnabled(false);
    Cancel = 0;
    return;
  }
  timerCamera.SetEnabled(false);
  tmrUpgrade.SetEnabled(false);
  tmrExplorer.SetEnabled(false);
  tmrIniitialLoad.SetEnabled(false);
  if (CancelServiceRequest && CancelServiceRequest()) {
    host().DoEvents();
  }
  tmrQueryUnload.SetEnabled(true);
  s_.gbQuitRequested = true;
  Cancel = 1;
}

void frmMainWindow::tmrQueryUnload_Timer() {
  // The window's service control is only busy during the upgrade check,
  // whose request the close has cancelled; an idle one counts as cancelled. So
  // a close asked for during a folder load goes through once the load has
  // stopped.
  if (mbInitialLoadBusy || (s_.gbQuitRequested && !s_.gbLoadInProgress)) {
    s_.gbLoadInProgress = false;
    tmrQueryUnload.SetEnabled(false);
    Unload();
  }
}

void frmMainWindow::Form_Unload(int& Cancel) {
  (void)Cancel;
  std::error_code ignored;
  if (!s_.gsTempLoc.empty()) {
    fs::remove_all(s_.gsTempLoc + "ToJpgs", ignored);
    fs::remove_all(s_.gsTempLoc + "Thumbnails", ignored);
  }
  s_.goResources.reset();
  WriteWindowState();
  tmrIniitialLoad.SetEnabled(false);
  tmrUpgrade.SetEnabled(false);
  tmrExplorer.SetEnabled(false);
  if (CancelServiceRequest) {
    CancelServiceRequest();
  }
  for (Form* form : app_.forms().Loaded()) {
    if (form != this) {
      form->Unload();
    }
  }
  ctlDisplayImage.SetVisible(false);
}

void frmMainWindow::WriteWindowState() {
  std::string mode = WindowState() == kWindowMinimized
                         ? std::string("2")
                         : std::to_string(WindowState());
  // A failed write loses only the window's place; nothing to tell the user.
  (void)app_.settings().Write(kRootKey, "PrevMode", mode);
  (void)app_.settings().Write(kRootKey, "PrevHt", std::to_string(Height()));
  (void)app_.settings().Write(kRootKey, "PrevWidth", std::to_string(Width()));
}

void frmMainWindow::mnuHHelp_Click() {
  // The help opens at the topic of what the window is busy with; F1 keeps
  // the browsing topic.
  const int context = HelpContextForOperation(s_.giCurrentOperation);
  SetHelpContextID(context);
  LaunchResult result = ShowHelp(app_, context);
  SetHelpContextID(kHelpBrowsing);
  if (!result.ok) {
    host().HandlerFailed("frmMainWindow help", result.error);
  }
}

void frmMainWindow::mnuFExit_Click() {
  Unload();
}

void frmMainWindow::mnuERefresh_Click() {
  RefreshCurrentFolder();
}

}  // namespace qbpd
