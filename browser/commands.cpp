// The main window's commands: the menus with their captions, keys and the
// enable rules that run when a menu opens; the folder pane and its close
// timer; the splitter; the picture buttons' pressed and hover pictures.
#include "browser/frm_main_window.h"
#include "core/button_pictures.h"
#include "core/frm_about_us.h"
#include "core/settings.h"

#include <algorithm>

namespace qbpd {
namespace {

struct MenuText {
  Menu frmMainWindow::*menu;
  const char* container;
  const char* caption;
  const char* shortcut;
};

// Every menu entry: where it stands, its caption and its shortcut. The
// recent folders, the zoom entries and the delete entries are set by their
// own parts of the window.
constexpr MenuText kMenus[] = {
    {&frmMainWindow::mnuFile, "", "&File", ""},
    {&frmMainWindow::mnuFGetPhotos, "mnuFile", "&Get Photos", ""},
    {&frmMainWindow::mnuFGetCameraPhotos, "mnuFile", "Get Photos from &Camera",
     ""},
    {&frmMainWindow::mnuFSave, "mnuFile", "&Save", "Ctrl+S"},
    {&frmMainWindow::mnuFSaveAs, "mnuFile", "Save &As", ""},
    {&frmMainWindow::mnuFSep1, "mnuFile", "-", ""},
    {&frmMainWindow::mnuFSep2, "mnuFile", "-", ""},
    {&frmMainWindow::mnuFExit, "mnuFile", "E&xit", ""},
    {&frmMainWindow::mnuEdit, "", "&Edit", ""},
    {&frmMainWindow::mnuEUndo, "mnuEdit", "Undo Rotate", "Ctrl+Z"},
    {&frmMainWindow::mnuESelectAll, "mnuEdit", "Select A&ll", "Ctrl+A"},
    {&frmMainWindow::mnuEClear, "mnuEdit", "Clear &All", ""},
    {&frmMainWindow::mnuERefresh, "mnuEdit", "&Refresh", "F5"},
    {&frmMainWindow::mnuESep1, "mnuEdit", "-", ""},
    {&frmMainWindow::mnuEPref, "mnuEdit", "P&references ...", ""},
    {&frmMainWindow::mnuPhoto, "", "&Photo", ""},
    {&frmMainWindow::mnuFOrderPrints, "mnuPhoto", "&Order Prints", ""},
    {&frmMainWindow::mnuFShare, "mnuPhoto", "&Share Photos", ""},
    {&frmMainWindow::mnuFUpload, "mnuPhoto", "&Upload Photos", ""},
    {&frmMainWindow::mnuPSep1, "mnuPhoto", "-", ""},
    {&frmMainWindow::mnuPEditPhotos, "mnuPhoto", "&Edit Photo(s)", ""},
    {&frmMainWindow::mnuPCrop, "mnuPEditPhotos", "Cro&p", ""},
    {&frmMainWindow::mnuPCrop4x6, "mnuPCrop", "&4x6", ""},
    {&frmMainWindow::mnuPCrop5x7, "mnuPCrop", "&5x7", ""},
    {&frmMainWindow::mnuPCrop8x10, "mnuPCrop", "&8x10", ""},
    {&frmMainWindow::mnuPCropWallet, "mnuPCrop", "&Wallets", ""},
    {&frmMainWindow::mnuPRedeye, "mnuPEditPhotos", "&Remove red-eye", ""},
    {&frmMainWindow::mnuPAutoFix, "mnuPEditPhotos", "&Correct Color", ""},
    {&frmMainWindow::mnuPRotate, "mnuPEditPhotos", "R&otate", ""},
    {&frmMainWindow::mnuPRotSingle, "mnuPRotate", "&Current Photo", ""},
    {&frmMainWindow::mnuPRotSingLeft, "mnuPRotSingle", "&Left", ""},
    {&frmMainWindow::mnuPRotSingRight, "mnuPRotSingle", "&Right", ""},
    {&frmMainWindow::mnuPRotMultiple, "mnuPRotate", "&All Selected", ""},
    {&frmMainWindow::mnuPRotMultiLeft, "mnuPRotMultiple", "&Left", ""},
    {&frmMainWindow::mnuPRotMultiRight, "mnuPRotMultiple", "&Right", ""},
    {&frmMainWindow::mnuPInfo, "mnuPhoto", "Photo &Information", ""},
    {&frmMainWindow::mnuView, "", "&View", ""},
    {&frmMainWindow::mnuVSlideShow, "mnuView", "View as &Slideshow", ""},
    {&frmMainWindow::mnuVFullScreen, "mnuView", "Full Screen", ""},
    {&frmMainWindow::mnuVSep1, "mnuView", "-", ""},
    {&frmMainWindow::mnuPWallPaper, "mnuView", "Set as &Wallpaper", ""},
    {&frmMainWindow::mnuPScrSaver, "mnuView", "&Screensaver", ""},
    {&frmMainWindow::mnuscrCreatenew, "mnuPScrSaver", "&Create new", ""},
    {&frmMainWindow::mnuScrAddPhotos, "mnuPScrSaver", "&Add photos", ""},
    {&frmMainWindow::mnuScrEdit, "mnuPScrSaver", "&Edit screensaver", ""},
    {&frmMainWindow::mnuScrSelect, "mnuPScrSaver", "Select for &display", ""},
    {&frmMainWindow::mnuHelp, "", "&Help", ""},
    {&frmMainWindow::mnuHWebsite, "mnuHelp", "Go to &Quillbay Website", ""},
    {&frmMainWindow::mnuHUpgrade, "mnuHelp", "Check for upgrade", ""},
    {&frmMainWindow::mnuHAboutus, "mnuHelp", "&About Quillbay Picture Desk",
     ""},
    {&frmMainWindow::mnuSingle, "mnuRotate", "&Current Photo", ""},
    {&frmMainWindow::mnuMultiple, "mnuRotate", "&All Selected", ""},
};

// The picture buttons by their number in the picture set.
struct ButtonNumber {
  PictureButton frmMainWindow::*button;
  const char* number;
  const char* tip;
};
constexpr ButtonNumber kButtons[] = {
    {&frmMainWindow::imgSelectAll, "3", "Select all photos"},
    {&frmMainWindow::imgClear, "4", "Clear the selection"},
    {&frmMainWindow::imgScrSaver, "5", "Screensaver"},
    {&frmMainWindow::imgSlideShow, "6", "View as slideshow"},
    {&frmMainWindow::imgUpload, "7", "Upload photos"},
    {&frmMainWindow::imgShare, "8", "Share photos"},
    {&frmMainWindow::imgOrdPrints, "9", "Order prints"},
    {&frmMainWindow::imgCrop, "10", "Crop"},
    {&frmMainWindow::imgRedeye, "11", "Remove red-eye"},
    {&frmMainWindow::imgAutocolor, "12", "Correct colour"},
    {&frmMainWindow::imgZoom, "13", "Zoom"},
    {&frmMainWindow::imgLeftRotate, "14", "Rotate left"},
    {&frmMainWindow::imgRightRotate, "15", "Rotate right"},
    {&frmMainWindow::imgPrev, "16", "Previous photo"},
    {&frmMainWindow::imgNext, "17", "Next photo"},
    {&frmMainWindow::imgWallpaper, "18", "Set as wallpaper"},
    {&frmMainWindow::imgInfo, "19", "Photo information"},
    {&frmMainWindow::imgTrash, "20", "Delete"},
    {&frmMainWindow::imgCancel, "25", "Cancel"},
    {&frmMainWindow::imgApplyChanges, "27", "Apply changes"},
};

// The pointer's Y at a splitter drag's start when no drag is on.
constexpr int kNoSplitDrag = -2000000;
constexpr int kCtrlD = 4;

}  // namespace

void frmMainWindow::WireCommands() {
  // The main window's own pop-up stays out of the menu bar.
  mnuRotate.SetVisible(false);
  for (const MenuText& m : kMenus) {
    Menu& menu = this->*m.menu;
    if (*m.container != '\0') {
      menu.SetContainer(m.container);
    }
    menu.SetCaption(m.caption);
    if (*m.shortcut != '\0') {
      menu.SetShortcut(m.shortcut);
    }
  }
  // The help entry shows its key at the right.
  mnuHHelp.SetCaption("Picture Desk &Help            F1");

  for (const ButtonNumber& b : kButtons) {
    PictureButton& button = this->*b.button;
    button.SetTag(b.tip);
    const std::string fixed = b.number;
    // The apply button shows "crop photo" in the crop panel and "apply" in
    // the others.
    auto number = [this, &button, fixed]() {
      return &button == &imgApplyChanges && s_.giCurrentOperation != 1
                 ? std::string("28")
                 : fixed;
    };
    On(button.Name(), "MouseDown", [this, &button, number](EventArgs& e) {
      if (e.Button == 1) {
        ShowButtonState(s_, button, number(), kPicturePressed);
      }
    });
    On(button.Name(), "MouseUp", [this, &button, number](EventArgs&) {
      ShowButtonState(s_, button, number(), kPictureNormal);
    });
    On(button.Name(), "MouseMove", [this, &button, number](EventArgs& e) {
      if (e.Button == 0) {
        HoverButton(button, number());
      }
    });
  }
  for (const char* background :
       {"picImageListCont", "picExplorerCont", "picDisplayImageCont",
        "picImagelistInnerCont"}) {
    On(background, "MouseMove", &frmMainWindow::ResetButtonImages);
  }

  On("mnuHAboutus", "Click", [this](EventArgs&) {
    app_.forms().Get<frmAboutUs>().Show(/*modal=*/true);
  });
  On("mnuFile", "Click", &frmMainWindow::mnuFile_Click);
  On("mnuEdit", "Click", &frmMainWindow::mnuEdit_Click);
  On("mnuPhoto", "Click", &frmMainWindow::mnuPhoto_Click);
  On("mnuView", "Click", &frmMainWindow::mnuView_Click);
  On("mnuPScrSaver", "Click", &frmMainWindow::mnuPScrSaver_Click);
  On("mnuFGetPhotos", "Click", &frmMainWindow::imgBrowseClose_Click);
  On("imgBrowseClose", "Click", &frmMainWindow::imgBrowseClose_Click);
  On("tmrExplorer", "Timer", &frmMainWindow::tmrExplorer_Timer);
  On("imgHorzSplit", "MouseDown", &frmMainWindow::imgHorzSplit_MouseDown);
  On("imgHorzSplit", "MouseMove", &frmMainWindow::imgHorzSplit_MouseMove);
  On("imgHorzSplit", "MouseUp", &frmMainWindow::imgHorzSplit_MouseUp);
  miSplitGrabY = kNoSplitDrag;
}

void frmMainWindow::ShowButtonPictures() {
  for (const ButtonNumber& b : kButtons) {
    ShowButtonState(s_, this->*b.button, b.number, kPictureNormal);
  }
  ShowButtonState(s_, imgBrowseClose, mbExplorerOpen ? "2" : "24",
                  kPictureNormal);
  imgBrowseClose.SetTag(mbExplorerOpen ? "Collapse" : "Expand");
  imgHorzSplit.SetTag("Drag to resize");
}

void frmMainWindow::SetToolTips() {
  if (!moToolTip) {
    return;
  }
  std::vector<const Control*> buttons;
  for (const ButtonNumber& b : kButtons) {
    buttons.push_back(&(this->*b.button));
  }
  buttons.push_back(&imgBrowseClose);
  buttons.push_back(&imgHorzSplit);
  qbpd::SetToolTips(*moToolTip, buttons);
}

std::string frmMainWindow::ToolTipAt(std::string_view window,
                                     int x,
                                     int y) const {
  const ToolTipTool* tool =
      moToolTip ? moToolTip->ToolAt(window, x, y) : nullptr;
  return tool != nullptr ? tool->text : std::string();
}

// --- the picture buttons
// -------------------------------------------------------

void frmMainWindow::HoverButton(PictureButton& button,
                                const std::string& number) {
  const std::string normal = number + kPictureNormal;
  if (msHoverPicture == normal && moHoverButton == &button) {
    return;
  }
  ResetButtonImages();
  moHoverButton = &button;
  msHoverPicture = normal;
  ShowButtonState(s_, button, number, kPictureHover);
}

void frmMainWindow::ResetButtonImages() {
  if (msHoverPicture.empty() || moHoverButton == nullptr) {
    return;
  }
  const std::string number =
      msHoverPicture.substr(0, msHoverPicture.size() - 1);
  ShowButtonState(s_, *moHoverButton, number, kPictureNormal);
  msHoverPicture.clear();
  moHoverButton = nullptr;
}

// --- the enable rules of the menus
// ---------------------------------------------

void frmMainWindow::mnuFile_Click() {
  SetControlsEnabled();
  mnuFGetPhotos.SetEnabled(!ExpTreeView.Visible() || !mbExplorerOpen);
}

void frmMainWindow::mnuEdit_Click() {
  SetControlsEnabled();
  mnuEDelMultiple.SetEnabled(s_.gdicSelectedPhotos.Count() > 0);
}

void frmMainWindow::mnuPhoto_Click() {
  SetControlsEnabled();
  const int selected = s_.gdicSelectedPhotos.Count();
  mnuPRotMultiple.SetEnabled(
      selected >= 2 ||
      (selected == 1 && !s_.gdicSelectedPhotos.Exists(s_.giCurrentPhotoIndex)));
}

void frmMainWindow::mnuView_Click() {
  SetControlsEnabled();
  mnuVSlideShow.SetEnabled(s_.gdicPhotoList.Count() > 0);
}

void frmMainWindow::mnuPScrSaver_Click() {
  std::string count;
  ReadIniValue(s_.gsScrIniPath, "General", "NumberOfSsavers", "0", count);
  int savers = 0;
  try {
    savers = std::stoi(count);
  } catch (const std::exception&) {
    savers = 0;
  }
  for (Menu* m : {&mnuScrAddPhotos, &mnuScrEdit, &mnuScrSelect}) {
    m->SetEnabled(savers > 0);
  }
}

// --- edit mode
// -------------------------------------------------------------------

void frmMainWindow::DisableMainControls() {
  for (Control* c : std::initializer_list<Control*>{
           &mnuFile, &mnuEdit, &mnuPhoto, &mnuView, &imgSelectAll, &imgClear,
           &imgScrSaver, &imgSlideShow, &imgUpload, &imgOrdPrints, &imgShare,
           &picManipCont, &picImageFlow, &picTrash, &imgHorzSplit}) {
    c->SetEnabled(false);
  }
}

void frmMainWindow::ShowTopMenus(bool show, bool with_help) {
  for (Menu* m : {&mnuFile, &mnuEdit, &mnuPhoto, &mnuView}) {
    m->SetVisible(show);
  }
  if (with_help) {
    mnuHelp.SetVisible(show);
  }
}

void frmMainWindow::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kCtrlD) {
    KeyAscii = 0;
    mnuEDelSingle_Click();
    return;
  }
  ViewerKeyPress(KeyAscii);
}

// --- the folder pane
// ---------------------------------------------------------------

void frmMainWindow::imgBrowseClose_Click() {
  if (!CommitRename()) {
    return;
  }
  if (mbExplorerOpen) {
    tmrExplorer.SetEnabled(false);
    picExplorerCont.SetEnabled(false);
    imgHorzSplit.SetVisible(false);
    ShowButtonState(s_, imgBrowseClose, "24", kPictureNormal);
    imgBrowseClose.SetTag("Expand");
    mbExplorerOpen = false;
  } else {
    picExplorerCont.SetEnabled(true);
    imgHorzSplit.SetVisible(true);
    ShowButtonState(s_, imgBrowseClose, "2", kPictureNormal);
    imgBrowseClose.SetTag("Collapse");
    mbExplorerOpen = true;
    tmrExplorer.SetEnabled(s_.gbExplorerTimerOn);
  }
  // The panes take their new heights; the grid shows what fits now.
  ArrangeLeftColumn();
  SetToolTips();
  setscrollBar();
  LoadVisibleThumbnails(ctrlImageListVScroll.Value());
}

void frmMainWindow::tmrExplorer_Timer() {
  if (mbExplorerOpen) {
    imgBrowseClose_Click();
  }
}

// --- the splitter between the folder pane and the grid
// -------------------------

void frmMainWindow::imgHorzSplit_MouseDown(EventArgs& e) {
  if (e.Button == 1) {
    tmrExplorer.SetEnabled(false);
    mbSplitMoved = true;
    miSplitGrabY = e.Y;
  } else {
    miSplitGrabY = kNoSplitDrag;
  }
}

int frmMainWindow::ClampSplit(int top) const {
  const int lowest = picExplorerCont.Top() + 1275;
  const int highest = imgSelectAll.Top() - 2325 - 100;
  return std::clamp(top, lowest, std::max(lowest, highest));
}

void frmMainWindow::imgHorzSplit_MouseMove(EventArgs& e) {
  if (e.Button != 1 || miSplitGrabY == kNoSplitDrag || e.Y == miSplitGrabY) {
    return;
  }
  imgHorzSplit.SetTop(ClampSplit(imgHorzSplit.Top() + e.Y - miSplitGrabY));
}

void frmMainWindow::imgHorzSplit_MouseUp(EventArgs&) {
  if (!mbSplitMoved) {
    return;
  }
  mbSplitMoved = false;
  miSplitGrabY = kNoSplitDrag;
  miSplitTop = ClampSplit(imgHorzSplit.Top());
  ArrangeLeftColumn();
  setscrollBar();
  LoadVisibleThumbnails(ctrlImageListVScroll.Value());
  RestoreExplorerTimer();
}

}  // namespace qbpd
