#ifndef QBPD_BROWSER_FRM_MAIN_WINDOW_H_
#define QBPD_BROWSER_FRM_MAIN_WINDOW_H_

#include "browser/edit_panel_controls.h"
#include "core/application.h"
#include "core/keyed_collection.h"
#include "core/ordered_dictionary.h"
#include "core/tooltip.h"
#include "platform/forms/control_array.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace qbpd {

struct RotationHooks;

// The main window: the folder tree, the grid of thumbnails, the photo on
// display, and the start-up and close of the program. Its routines are
// spread over several files by concern (start-up and close, folder loading,
// recent folders, the grid).
class frmMainWindow : public Form {
 public:
  static constexpr std::string_view kName = "frmMainWindow";
  // The smallest window, in twips.
  static constexpr int kMinHeight = 9000;
  static constexpr int kMinWidth = 12845;
  explicit frmMainWindow(Application& app);

  // --- the folder pane ------------------------------------------------------
  PictureBox picExplorerCont{*this, "picExplorerCont"};
  FolderTree ExpTreeView{*this, "ExpTreeView"};
  Label lblExpFolderPath{*this, "lblExpFolderPath"};
  PictureButton imgBrowseClose{*this, "imgBrowseClose"};
  // Lists the photos of a folder for the recent-folder checks.
  ListBox lstFiles{*this, "lstFiles"};

  // --- the grid -------------------------------------------------------------
  PictureBox picImageListCont{*this, "picImageListCont"};
  // The panel scrolls up under the header, which is declared after it and so
  // lies above it.
  PictureBox picImagelistInnerCont{*this, "picImagelistInnerCont"};
  CommandButton cmdImageListHead{*this, "cmdImageListHead"};
  ControlArray<Thumbnail> ctrlQuilImage{*this, "ctrlQuilImage"};
  ScrollBar ctrlImageListVScroll{*this, "ctrlImageListVScroll"};
  Label lblPhotosSelect{*this, "lblPhotosSelect"};

  // --- the photo on display -------------------------------------------------
  PictureBox picDisplayImageCont{*this, "picDisplayImageCont"};
  PhotoView ctlDisplayImage{*this, "ctlDisplayImage"};
  PictureBox picImageText{*this, "picImageText"};
  Label lblDisplayImageName{*this, "lblDisplayImageName"};
  TextBox txtFileName{*this, "txtFileName"};

  // --- the buttons -----------------------------------------------------------
  PictureButton imgHorzSplit{*this, "imgHorzSplit"};
  PictureButton imgSelectAll{*this, "imgSelectAll"};
  PictureButton imgClear{*this, "imgClear"};
  PictureButton imgScrSaver{*this, "imgScrSaver"};
  PictureButton imgSlideShow{*this, "imgSlideShow"};
  PictureButton imgUpload{*this, "imgUpload"};
  PictureButton imgShare{*this, "imgShare"};
  PictureButton imgOrdPrints{*this, "imgOrdPrints"};
  // The photo tools under the display.
  PictureBox picManipCont{*this, "picManipCont"};
  PictureButton imgZoom{*this, "imgZoom"};
  PictureButton imgLeftRotate{*this, "imgLeftRotate"};
  PictureButton imgRightRotate{*this, "imgRightRotate"};
  PictureButton imgCrop{*this, "imgCrop"};
  PictureButton imgRedeye{*this, "imgRedeye"};
  PictureButton imgAutocolor{*this, "imgAutocolor"};
  PictureButton imgInfo{*this, "imgInfo"};
  PictureButton imgWallpaper{*this, "imgWallpaper"};
  PictureBox picImageFlow{*this, "picImageFlow"};
  PictureButton imgPrev{*this, "imgPrev"};
  PictureButton imgNext{*this, "imgNext"};
  PictureBox picTrash{*this, "picTrash"};
  PictureButton imgTrash{*this, "imgTrash"};
  // The edit panel's strip, shown instead of the photo tools in edit mode.
  PictureBox picCropCont{*this, "picCropCont"};
  PictureButton imgApplyChanges{*this, "imgApplyChanges"};
  PictureButton imgCancel{*this, "imgCancel"};

  // --- timers ---------------------------------------------------------------
  Timer tmrIniitialLoad{*this, "tmrIniitialLoad"};
  Timer tmrDblClick{*this, "tmrDblClick"};
  Timer tmrQueryUnload{*this, "tmrQueryUnload"};
  Timer tmrExplorer{*this, "tmrExplorer"};
  Timer timerCamera{*this, "timerCamera"};
  Timer tmrUpgrade{*this, "tmrUpgrade"};

  // --- menus, in the order they show -----------------------------------------
  Menu mnuFile{*this, "mnuFile"};
  Menu mnuFGetPhotos{*this, "mnuFGetPhotos"};
  Menu mnuFGetCameraPhotos{*this, "mnuFGetCameraPhotos"};
  Menu mnuFSave{*this, "mnuFSave"};
  Menu mnuFSaveAs{*this, "mnuFSaveAs"};
  Menu mnuFSep1{*this, "mnuFSep1"};
  ControlArray<Menu> mnuFRecFolders{*this, "mnuFRecFolders"};
  Menu mnuFSep2{*this, "mnuFSep2"};
  Menu mnuFExit{*this, "mnuFExit"};
  Menu mnuEdit{*this, "mnuEdit"};
  Menu mnuEUndo{*this, "mnuEUndo"};
  Menu mnuECopy{*this, "mnuECopy"};
  Menu mnuEPaste{*this, "mnuEPaste"};
  Menu mnuEDelete{*this, "mnuEDelete"};
  Menu mnuEDelSingle{*this, "mnuEDelSingle"};
  Menu mnuEDelMultiple{*this, "mnuEDelMultiple"};
  Menu mnuESelectAll{*this, "mnuESelectAll"};
  Menu mnuEClear{*this, "mnuEClear"};
  Menu mnuERefresh{*this, "mnuERefresh"};
  Menu mnuESep1{*this, "mnuESep1"};
  Menu mnuEPref{*this, "mnuEPref"};
  Menu mnuPhoto{*this, "mnuPhoto"};
  Menu mnuFOrderPrints{*this, "mnuFOrderPrints"};
  Menu mnuFShare{*this, "mnuFShare"};
  Menu mnuFUpload{*this, "mnuFUpload"};
  Menu mnuPSep1{*this, "mnuPSep1"};
  Menu mnuPEditPhotos{*this, "mnuPEditPhotos"};
  Menu mnuPCrop{*this, "mnuPCrop"};
  Menu mnuPCrop4x6{*this, "mnuPCrop4x6"};
  Menu mnuPCrop5x7{*this, "mnuPCrop5x7"};
  Menu mnuPCrop8x10{*this, "mnuPCrop8x10"};
  Menu mnuPCropWallet{*this, "mnuPCropWallet"};
  Menu mnuPRedeye{*this, "mnuPRedeye"};
  Menu mnuPAutoFix{*this, "mnuPAutoFix"};
  Menu mnuPRotate{*this, "mnuPRotate"};
  Menu mnuPRotSingle{*this, "mnuPRotSingle"};
  Menu mnuPRotSingLeft{*this, "mnuPRotSingLeft"};
  Menu mnuPRotSingRight{*this, "mnuPRotSingRight"};
  Menu mnuPRotMultiple{*this, "mnuPRotMultiple"};
  Menu mnuPRotMultiLeft{*this, "mnuPRotMultiLeft"};
  Menu mnuPRotMultiRight{*this, "mnuPRotMultiRight"};
  Menu mnuPRename{*this, "mnuPRename"};
  Menu mnuPInfo{*this, "mnuPInfo"};
  Menu mnuView{*this, "mnuView"};
  Menu mnuVSlideShow{*this, "mnuVSlideShow"};
  Menu mnuVZoom{*this, "mnuVZoom"};
  Menu mnuVZoom25{*this, "mnuVZoom25"};
  Menu mnuVZoom50{*this, "mnuVZoom50"};
  Menu mnuVZoom75{*this, "mnuVZoom75"};
  Menu mnuVZoom100{*this, "mnuVZoom100"};
  Menu mnuVZoom125{*this, "mnuVZoom125"};
  Menu mnuVZoom150{*this, "mnuVZoom150"};
  Menu mnuVZoom175{*this, "mnuVZoom175"};
  Menu mnuVZoom200{*this, "mnuVZoom200"};
  Menu mnuVZoomFit{*this, "mnuVZoomFit"};
  Menu mnuVFullScreen{*this, "mnuVFullScreen"};
  Menu mnuVSep1{*this, "mnuVSep1"};
  Menu mnuPWallPaper{*this, "mnuPWallPaper"};
  Menu mnuPScrSaver{*this, "mnuPScrSaver"};
  Menu mnuscrCreatenew{*this, "mnuscrCreatenew"};
  Menu mnuScrAddPhotos{*this, "mnuScrAddPhotos"};
  Menu mnuScrEdit{*this, "mnuScrEdit"};
  Menu mnuScrSelect{*this, "mnuScrSelect"};
  Menu mnuHelp{*this, "mnuHelp"};
  Menu mnuHHelp{*this, "mnuHHelp"};
  Menu mnuHWebsite{*this, "mnuHWebsite"};
  Menu mnuHUpgrade{*this, "mnuHUpgrade"};
  Menu mnuHAboutus{*this, "mnuHAboutus"};
  // The rotate button's pop-up (hidden from the menu bar).
  Menu mnuRotate{*this, "mnuRotate"};
  Menu mnuSingle{*this, "mnuSingle"};
  Menu mnuMultiple{*this, "mnuMultiple"};

  // --- routines other forms and later commands call
  // --------------------------- Fills the photo model from `folder`; `result`
  // is False when a close stopped the load.
  void LoadImagesOnFolderClick(std::string& folder, bool& result);
  // Makes the thumbnail of one photo; its path goes to gsThumbnailPath.
  bool GenerateThumbnail(const std::string& source);
  // The longer side and the JPEG quality of the window's thumbnails.
  static constexpr int kThumbnailSize = 85;
  static constexpr int kThumbnailQuality = 70;
  // GenerateThumbnail with the work done elsewhere (on another core): `made`
  // is a thumbnail of `source` that GenerateThumbnailExt wrote at the
  // window's size and quality, "" when that failed. Without the cache it
  // takes the place the window's own would take; with the cache, whose
  // entries only the image library names, the cache is asked as usual (the
  // work ahead then filled it with GenerateThumbnailAndBuffer).
  bool AdoptThumbnail(const std::string& source, const std::string& made);
  void OpenCommandImage();
  void RefreshCurrentFolder();
  void ResetPhotoModel();
  void LoadRecentFolders();
  void WriteRecentFolder(std::string folder);
  void RemoveRecentFolder(std::string folder);
  void SetPhotosSelectedCaption();
  void SetControlsEnabled();
  bool setscrollBar();
  int getMaxNoImgsDisplayed() const;
  void PlaceThumbnail(int index);
  // The height of the grid's inner panel for `photos` photos: 1585 twips a
  // row, and for an odd count the exact half row more ((n / 2 + 1) rows, so
  // 3 photos give 3962.5).
  static Twips PanelHeightFor(int photos);

  // The grid.
  void LoadVisibleThumbnails(int value);
  void SetVertScrollValue();
  // The next photo index from `start` by `step` (-2, -1, 1, 2) over the
  // holes, wrapping around; -1 for an empty list.
  int FindNextPhotoIndex(int start, int step) const;
  void ShowPhotoName(const std::string& name);
  void ShowZoomLevel(int level);
  // Edit mode: the top menus and the toolbar are off.
  void DisableMainControls();
  // Shows or hides the top menus for the full-screen views; `with_help` says
  // whether the Help menu goes too.
  void ShowTopMenus(bool show, bool with_help);

  // --- photo file operations and the name strip (file_operations.cpp,
  // name_strip.cpp) -----------------------------------------------------------
  // Renames the photo on display to `new_base` plus its extension, in its
  // own folder; never replaces another file.
  void RenamePhoto(const std::string& new_base);
  // True (after "Selected photo does not exist") when the file of list entry
  // `index` is gone.
  bool CheckFileExistence(int index);
  void LoadaNewControl();
  void arrangethenewlyaddedcontrol(int at, const std::string& path);
  void RearrangeControls();
  void RearrangecontrolsafterDelete();

  // --- the online actions (online_commands.cpp) -----------------------------
  // Checks the selection and the site settings of the action in
  // giCurrentOperation and shows the login form or the connection window.
  void ConnectToSite();
  // Empties the selection and takes every thumbnail's tick off.
  void ClearSelectionMarks();

  // --- the presentation's commands (presentation_commands.cpp): photo
  // information, the slide show and Full Screen, the wallpaper ------------
  void WirePresentationCommands();
  void WireScreensaverCommands();
  // The Preferences entry (preferences_commands.cpp).
  void WirePreferencesCommands();
  // The preferences dialog's new values taken up: the default zoom mode
  // ("F" or "O"), the recent folders cut to giNoOfRecentFolders (settings
  // and menu), and the folder on show loaded again.
  void TakeUpPreferences(const std::string& zoom_mode);
  // The end of a slide show: clicks the thumbnail of photo `index`, as a
  // person would, so that the photo shows on the main window.
  void ShowPhotoAfterSlideShow(int index) { ClickThumbnail(index); }

  // --- the window's service control (ctlInet), owned by the upgrade check
  // (online/upgrade_check.h) ---------------------------------------------
  // Cancels its running request, if one runs (IsBusy), and says whether
  // it did; empty until the check is wired. A close calls it so that it
  // never waits for the network.
  std::function<bool()> CancelServiceRequest;

  // --- the camera import's way in (camera/) --------------------------------
  // Asks the user to finish an operation in hand before an outside event
  // (a second start's photo, a new device) takes the screen; `proceed` says
  // whether the way is free. `prefix` goes before the question.
  void EndCurrentOperation(const std::string& prefix, bool& proceed);
  // Settles a pending rotation of the photo on display.
  void SaveImage();
  // Focus to the main picture.
  void SetFocusToWindow();
  // Commits a rename in progress as the Enter key does; false when the name
  // strip stays open.
  bool CommitRename();
  // Takes the display out of a running crop, red-eye or colour correction
  // without applying it.
  void LeaveEditMode();
  // The run of the first timer of a start is under way.
  bool InitialLoadBusy() const { return mbInitialLoadBusy; }
  // The folder a normal start shows: the newest recent folder (after
  // DefaultFolder was entered when LastOpenFolderInPreviousSession isn't
  // "TRUE"), else the desktop; with a trailing "/".
  std::string StartFolder();
  // A start by the device monitor turned out to have no use: the start code
  // closes the program.
  bool mbCloseAfterDevice = false;

  // The default zoom mode: the first letter of ZoomSettings.
  const std::string& DefaultZoomMode() const { return msZoomMode; }
  const KeyedCollection<std::string>& RecentFolders() const {
    return mcolRecentFolders;
  }
  // The window's tooltip object; null before Form_Load.
  const cToolTip* ToolTip() const { return moToolTip.get(); }
  std::string ToolTipAt(std::string_view window, int x, int y) const override;

 protected:
  void Form_Load() override;
  void Form_Resize() override;
  void Form_QueryUnload(int& Cancel, int UnloadMode) override;
  void Form_Unload(int& Cancel) override;
  // The arrow keys move through the grid.
  void Form_KeyUp(int& KeyCode, int Shift) override;
  // Ctrl+D deletes the photo on display; the photo viewer's keys (see
  // viewer_keys.cpp) step and zoom.
  void Form_KeyPress(int& KeyAscii) override;
  // Delete deletes the photo on display, as Ctrl+D does.
  void Form_KeyDown(int& KeyCode, int Shift) override;

 private:
  // Start-up and close.
  void tmrIniitialLoad_Timer();
  void tmrQueryUnload_Timer();
  // The layout (layout.cpp).
  void InitFrameArrange();
  void FrameReArrange();
  // The folder pane, the splitter and the grid, after the pane opened or
  // closed or the splitter moved.
  void ArrangeLeftColumn();
  // A splitter position within its bounds.
  int ClampSplit(int top) const;

  // The commands (commands.cpp).
  void WireCommands();
  void ShowButtonPictures();
  // Gives the picture buttons their tips from their Tag over their
  // rectangles, or moves them there after a resize.
  void SetToolTips();
  void HoverButton(PictureButton& button, const std::string& number);
  void ResetButtonImages();
  void mnuFile_Click();
  void mnuEdit_Click();
  void mnuPhoto_Click();
  void mnuView_Click();
  void mnuPScrSaver_Click();
  void imgBrowseClose_Click();
  void tmrExplorer_Timer();
  void imgHorzSplit_MouseDown(EventArgs& e);
  void imgHorzSplit_MouseMove(EventArgs& e);
  void imgHorzSplit_MouseUp(EventArgs& e);
  void WriteWindowState();

  // The folder tree.
  void ExpTreeView_FolderClick();
  void ExpTreeView_Down();
  void ExpTreeView_Up();
  void tmrDblClick_Timer();
  void ShowFolderLabel(const std::string& selected);
  void ResetGrid();
  // Unloads every thumbnail control but member 0 and empties the photo list,
  // the selection and the loaded and deleted indexes.
  void UnloadGridControls();
  void RemakeThumbnailFolder();
  void ctrlQuilImage_Click(EventArgs& e);
  void ctrlQuilImage_CheckClick(int index);
  void ctrlImageListVScroll_Change();
  void imgSelectAll_Click();
  void imgClear_Click();
  // Loads (or reuses) the control of photo `i`, shown, with its index.
  Thumbnail& LoadThumbnailControl(int i);
  // Gives a control the thumbnail, path and tooltip of `path`; false when no
  // thumbnail could be made.
  bool ShowThumbnailOf(Thumbnail& thumb, const std::string& path);
  void RepairMissingPhoto();
  void RestoreExplorerTimer();

  // The display (display.cpp).
  void WireDisplay();
  Menu& ZoomItem(int level);
  void ZoomCommand(int level);
  void mnuVZoomFit_Click();
  void picDisplayImageCont_Resize();
  void imgZoom_Click();
  void ctlDisplayImage_Click();
  void imgNext_Click();
  void imgPrev_Click();
  bool ThumbnailShowable(int index) const;
  // Clicks the thumbnail of photo `index`, loading its control if need be.
  void ClickThumbnail(int index);
  // Tells the photo view the photo that the Next button would show, so that
  // it may be decoded ahead while the current one is on view.
  void PrepareNextPhoto();
  // One arrow key: a step of -1, -2, 1 or 2 through the grid.
  void MoveInGrid(int step);

  // The keys and wheel of a photo viewer (viewer_keys.cpp).
  void WireViewerKeys();
  // Space, Backspace, "+", "-", "0" and "1"; swallows the keys it acts on.
  void ViewerKeyPress(int& KeyAscii);
  // Whether the keys of the viewer act now: not while a name is typed.
  bool ViewerKeysActive() const;
  // The next zoom entry up (`direction` 1) or down (-1) from the view's
  // present percent.
  void ZoomStep(int direction);
  // Runs a zoom entry of the View menu as picking it does, if a person
  // could pick it now.
  void PickZoomEntry(Menu& entry);
  // Ctrl with the wheel over the photo zooms.
  void ctlDisplayImage_MouseWheel(EventArgs& e);

  // Recent folders.
  void mnuFRecFolders_Click(int index);
  void mnuERefresh_Click();
  void mnuFExit_Click();
  void mnuHHelp_Click();
  // A folder as the recent list keeps it: the Desktop's path for "Desktop",
  // without a trailing separator.
  std::string RecentFolderEntry(std::string folder) const;
  // Takes `entry` out of the recent list, if it is there.
  void ForgetRecentFolder(const std::string& entry);
  // Whether `folder` holds a file that lstFiles' pattern lists: a photo of
  // the types it names. The recent folders ask no more of it.
  bool FolderHoldsPhotos(const std::string& folder);

  // Photo file operations and the name strip (file_operations.cpp,
  // name_strip.cpp).
  void WireFileOperations();
  void imgTrash_Click();
  void mnuEDelete_Click();
  void mnuEDelSingle_Click();
  void mnuEDelMultiple_Click();
  void mnuECopy_Click();
  void mnuEPaste_Click();
  void mnuPRename_Click();
  // A double click on the name: opens it for editing.
  void OpenPhotoName();
  void txtFileName_KeyPress(EventArgs& e);
  // Enter in the name: checks the typed name and renames.
  void CommitPhotoName();
  // Gives photo `index` a control with its thumbnail, if it has none.
  void EnsurePhotoControl(int index);
  // Takes away the control of a deleted photo (control 0 is hidden).
  void DropPhotoControl(int index);
  // After the photo on display went: selects the nearest photo, looking at
  // higher indexes first; false when the list is empty.
  bool SelectPhotoAfterDelete(int deleted);
  // The online actions (online_commands.cpp): the upload, share and order
  // buttons and menu entries, and the service's home page.
  void WireOnlineCommands();
  void OnlineCommand(int operation);

  // Declares the m-fields below by name, for the driver and the tests.
  void DeclareFields();

  Application& app_;
  Session& s_;

  bool mbFirstLoad = false;
  bool mbFormReady = false;
  int mbMouseDownOnTreeview = 0;
  bool mbFolderClickPending = false;
  bool mbEditImageText = false;
  std::string msRecentFolder;
  KeyedCollection<std::string> mcolRecentFolders;
  bool mbInitialLoadBusy = false;
  bool mbStartupDone = false;
  int miScreenHeightPx = 0;
  int miScreenWidthPx = 0;
  bool mbScreenChanged = false;
  bool mbExplorerOpen = false;
  std::string msZoomMode;

  int miFileCount = 0;
  int miLastLoadedControl = 0;
  bool mbOpeningFromCommand = false;
  bool mbCommandFolderLoad = false;
  bool mbCommandPhotoOk = false;
  // The folder is changing: the grid's events (a click or a tick on a
  // thumbnail, the scroll bar) do nothing.
  bool mbFolderChanging = false;
  // The load is selecting its first photo (a click that is no user's).
  bool mbLoadSelectsFirst = false;
  OrderedDictionary<int, std::string> mdicStaleControls;

  // The grid.
  bool mbScrollSilent = false;
  bool mbArrowKeyBusy = false;
  bool mbNewControlHasPhoto = false;
  bool mbNoRescroll = false;
  bool mbInSaveCheck = false;
  int miClickedPhoto = 0;
  // The display.
  bool mbFitToWidth = false;
  int miSavedZoom = 0;
  // The commands and the layout.
  std::string msHoverPicture;
  PictureButton* moHoverButton = nullptr;
  int miSplitGrabY = 0;
  bool mbSplitMoved = false;
  // The splitter's place; 0 until the first layout chooses one.
  int miSplitTop = 0;
  // The tooltip object of the window's buttons.
  std::unique_ptr<cToolTip> moToolTip;
  // Photo file operations.
  bool mbDeleting = false;
  bool mbDeleteBusy = false;

  // --- the photo editor: edit panels, apply and save, rotation, crop
  // (edit_panels.cpp, edit_apply.cpp, edit_save.cpp, edit_rotation.cpp) -----
 public:
  // The crop, red-eye and colour panels (frmMainWindow.fraCrop ...).
  EditPanelControls edit{*this};

 private:
  void WireEditor();
  // Lays the panels out in the column of the folder pane and the grid, and
  // rebuilds the crop box (or clears the red-eye tool) for the new measures.
  void ArrangeEditPanels(int left, int top, int width, int height);
  void SetEditPanel(int mode);
  void imgCrop_Click();
  void OpenCropFromMenu(int preset);
  void imgRedeye_Click();
  void imgAutocolor_Click();
  // One of the six size and orientation handlers of the crop panel.
  void CropChoice(bool size_handler);
  void ctlDisplayImage_CropTooSmall();
  void ctlDisplayImage_RedEyeRemoved();
  void optViewCorrected_Click();
  void optViewOriginal_Click();
  void imgApplyChanges_Click();
  void imgCancel_Click();
  // Whether a write into `folder` is refused (the access check fails).
  bool FolderRefusesWrites(const std::string& folder) const;
  // Reloads the photo on display after a declined or failed rotation save
  // and zooms by the zoom setting; `style` is the failure message's icon.
  void ReloadShownPhoto(int style);
  void SaveImageFromMenu();
  void SaveAsImage();
  void mnuFSave_Click();
  void WireRotation();
  void RotateButton(int operation, bool test_file);
  void mnuSingle_Click();
  void mnuMultiple_Click();
  void mnuPRotSingle_Click(int operation);
  void mnuPRotMulti_Click(int operation);
  void SingleImageRotation(bool multiple);
  void mnuEUndo_Click();
  // Undo and Save as the Edit and File menus' rules set them: Undo while the
  // photo on display is turned, Save while that turn waits for its prompt.
  // Applied whenever the turn changes, so that a shortcut never meets a
  // state the menus would not show.
  void SetRotationMenus();
  // What a rotation of files does to the grid.
  RotationHooks GridRotationHooks();

  int miCropAspectX = 0;
  int miCropAspectY = 0;
  bool mbCropTooSmall = false;
  int miCropPreset = -1;
  bool mbRedEyeRemoved = false;
};

}  // namespace qbpd

#endif  // QBPD_BROWSER_FRM_MAIN_WINDOW_H_
