// The preferences dialog's controls: where they stand and what they say.
#include "preferences/frm_preferences.h"

#include <algorithm>
#include <string>

namespace qbpd {
namespace {

constexpr int kFormWidth = 8400;
constexpr int kFormHeight = 6300;
constexpr int kMargin = 120;
constexpr int kTabTop = 120;
constexpr int kTabHeight = 4860;
// The frames sit inside the tab strip, below its tabs.
constexpr int kFrameLeft = 240;
constexpr int kFrameTop = 540;
constexpr int kFrameWidth = kFormWidth - 2 * kFrameLeft - 120;
constexpr int kFrameHeight = 4320;
constexpr int kRow = 300;
constexpr int kTextHeight = 315;
constexpr int kButtonWidth = 1215;
constexpr int kButtonHeight = 375;
constexpr int kListOnly = 2;
constexpr int kMaxNumberLength = 2;
constexpr int kMaxLoginLength = 64;
constexpr int kMaxPasswordLength = 79;
constexpr int kSliderMin = 2;
constexpr int kSliderMax = 20;

constexpr char kSlideCaption[] =
    "Time interval between images :           seconds";
constexpr char kExplorerCaption[] =
    "Automatically close the \"get photos\" folder display after        "
    "       seconds";
constexpr char kRecentCaption[] =
    "List                  of the most recently viewed folders";

// A number field that stands in the run of blanks of its label's caption:
// it starts after the first blank and ends before the last.
void PlaceInBlanks(Host& host, Label& label, TextBox& field) {
  const std::string& caption = label.Caption();
  const size_t start = caption.find("   ");
  const size_t end = caption.find_first_not_of(' ', start);
  const int before = host.TextWidth(caption.substr(0, start + 1), label.font());
  const int blanks =
      host.TextWidth(caption.substr(start + 1, end - start - 2), label.font());
  field.Move(label.Left() + before, label.Top() - 30, std::max(blanks, 360),
             kTextHeight);
}

}  // namespace

void frmPreferences::LayOut() {
  Move(0, 0, kFormWidth, kFormHeight);
  tbsPref.Move(kMargin, kTabTop, kFormWidth - 2 * kMargin - 120, kTabHeight);
  for (const char* caption :
       {"Display", "Account", "Folders", "Camera Transfer"}) {
    tbsPref.AddTab(caption);
  }
  for (Frame* frame : {&fraDisplay, &fraAccount, &fraFolders, &fraCamera}) {
    frame->Move(kFrameLeft, kFrameTop, kFrameWidth, kFrameHeight);
    frame->SetCaption("");
  }
  const int wide = kFrameWidth - 480;

  // --- Display ---
  std::string frame = "fraDisplay";
  lblSlideShowInterval.SetContainer(frame);
  lblSlideShowInterval.Move(240, 300, wide, kRow);
  lblSlideShowInterval.SetCaption(kSlideCaption);
  txtSlideShowImageInterval.SetContainer(frame);
  txtSlideShowImageInterval.SetMaxLength(kMaxNumberLength);
  PlaceInBlanks(host(), lblSlideShowInterval, txtSlideShowImageInterval);
  sliderImageInterval.SetContainer(frame);
  sliderImageInterval.Move(240, 720, 4800, 420);
  sliderImageInterval.SetMin(kSliderMin);
  sliderImageInterval.SetMax(kSliderMax);
  lblZoomSett.SetContainer(frame);
  lblZoomSett.Move(240, 1320, wide, kRow);
  lblZoomSett.SetCaption(
      "Size of the image displayed when the application starts :");
  optFitToWidth.SetContainer(frame);
  optFitToWidth.Move(480, 1680, 2400, kRow);
  optFitToWidth.SetCaption("Fit to width");
  optOriginalSize.SetContainer(frame);
  optOriginalSize.Move(3000, 1680, 2400, kRow);
  optOriginalSize.SetCaption("Original size");
  chkDefViewer.SetContainer(frame);
  chkDefViewer.Move(240, 2220, wide, 2 * kRow);
  chkDefViewer.SetCaption(
      "Make Quillbay Picture Desk my default viewer for jpeg photos (.jpg, "
      ".jpe. .jpeg files).");
  chkCloseExplorer.SetContainer(frame);
  chkCloseExplorer.Move(240, 3000, 300, kRow);
  lblExpCloseCont.SetContainer(frame);
  lblExpCloseCont.Move(560, 3030, wide - 320, kRow);
  lblExpCloseCont.SetCaption(kExplorerCaption);
  txtExpCloseTime.SetContainer(frame);
  txtExpCloseTime.SetMaxLength(kMaxNumberLength);
  PlaceInBlanks(host(), lblExpCloseCont, txtExpCloseTime);

  // --- Account ---
  frame = "fraAccount";
  lblAccountHead.SetContainer(frame);
  lblAccountHead.Move(240, 300, wide, kRow);
  lblAccountHead.SetCaption(
      "Please enter your Quillbay account information below");
  lblLogin.SetContainer(frame);
  lblLogin.Move(480, 900, 1500, kRow);
  lblLogin.SetCaption("Login name :");
  txtLogin.SetContainer(frame);
  txtLogin.Move(2040, 870, 3600, kTextHeight);
  txtLogin.SetMaxLength(kMaxLoginLength);
  lblPassword.SetContainer(frame);
  lblPassword.Move(480, 1440, 1500, kRow);
  lblPassword.SetCaption("Password :");
  txtPassword.SetContainer(frame);
  txtPassword.Move(2040, 1410, 3600, kTextHeight);
  txtPassword.SetMaxLength(kMaxPasswordLength);
  txtPassword.SetPasswordChar("*");
  chkAutoLogin.SetContainer(frame);
  chkAutoLogin.Move(480, 2040, wide - 240, kRow);
  chkAutoLogin.SetCaption("Remember my log info. every time I connect.");

  // --- Folders ---
  frame = "fraFolders";
  chkLastOpenFolder.SetContainer(frame);
  chkLastOpenFolder.Move(240, 300, wide, kRow);
  chkLastOpenFolder.SetCaption("Use last open folder");
  lblOpenFolder.SetContainer(frame);
  lblOpenFolder.Move(240, 780, wide, kRow);
  lblOpenFolder.SetCaption("Always open this folder:");
  txtStartUpFolder.SetContainer(frame);
  txtStartUpFolder.Move(480, 1110, 5160, kTextHeight);
  cmdBrowseFolder.SetContainer(frame);
  cmdBrowseFolder.Move(5760, 1080, 1080, kButtonHeight);
  cmdBrowseFolder.SetCaption("Browse...");
  lblRecentFolderHead.SetContainer(frame);
  lblRecentFolderHead.Move(240, 1770, wide, kRow);
  lblRecentFolderHead.SetCaption(kRecentCaption);
  txtRecentFolders.SetContainer(frame);
  txtRecentFolders.SetMaxLength(kMaxNumberLength);
  PlaceInBlanks(host(), lblRecentFolderHead, txtRecentFolders);
  lblExpressPrints.SetContainer(frame);
  lblExpressPrints.Move(240, 2400, wide, kRow);
  lblExpressPrints.SetCaption("Express prints :");
  opt4x6Singles.SetContainer(frame);
  opt4x6Singles.Move(480, 2760, 1800, kRow);
  opt4x6Singles.SetCaption("4x6 Singles");
  opt4x6Doubles.SetContainer(frame);
  opt4x6Doubles.Move(2400, 2760, 1800, kRow);
  opt4x6Doubles.SetCaption("4x6 Doubles");
  opt5x7Singles.SetContainer(frame);
  opt5x7Singles.Move(4320, 2760, 1800, kRow);
  opt5x7Singles.SetCaption("5x7 Singles");

  // --- Camera Transfer ---
  frame = "fraCamera";
  ChkDetectUSB.SetContainer(frame);
  ChkDetectUSB.Move(240, 240, wide, kRow);
  ChkDetectUSB.SetCaption(
      "Detect the USB device each time connected to the system.");
  chkDisplayCameraCopyImages.SetContainer(frame);
  chkDisplayCameraCopyImages.Move(240, 600, wide, 2 * kRow);
  chkDisplayCameraCopyImages.SetCaption(
      "Ask me before downloading photos from my camera to the Quillbay "
      "Picture Desk.");
  lblDefFolder.SetContainer(frame);
  lblDefFolder.Move(240, 1320, wide, kRow);
  lblDefFolder.SetCaption(
      "Always download photos from my camera to this folder :");
  txtBaseFolder.SetContainer(frame);
  txtBaseFolder.Move(480, 1650, 5160, kTextHeight);
  cmdBrowseForBaseFolder.SetContainer(frame);
  cmdBrowseForBaseFolder.Move(5760, 1620, 1080, kButtonHeight);
  cmdBrowseForBaseFolder.SetCaption("Browse...");
  lblFolderName.SetContainer(frame);
  lblFolderName.Move(480, 2250, 1560, kRow);
  lblFolderName.SetCaption("Folder naming :");
  cboFolderName.SetContainer(frame);
  cboFolderName.Move(2160, 2220, 3480, kTextHeight);
  cboFolderName.SetStyle(kListOnly);
  for (const char* item :
       {"Transfer Date MM/DD/YYYY", "Transfer Date DD/MM/YYYY",
        "Always ask me for a name"}) {
    cboFolderName.AddItem(item);
  }
  lblPhotoName.SetContainer(frame);
  lblPhotoName.Move(480, 2790, 1560, kRow);
  lblPhotoName.SetCaption("Photo naming :");
  cboPhotoName.SetContainer(frame);
  cboPhotoName.Move(2160, 2760, 3480, kTextHeight);
  cboPhotoName.SetStyle(kListOnly);
  cboPhotoName.AddItem("Picture 1");
  cboPhotoName.AddItem("(Folder Name) 1");
  chkDeleteImagesFromCamera.SetContainer(frame);
  chkDeleteImagesFromCamera.Move(240, 3360, wide, kRow);
  chkDeleteImagesFromCamera.SetCaption(
      "Delete the images after copying from camera");

  const int top = kTabTop + kTabHeight + 300;
  cmdCancel.Move(kFormWidth - 240 - kButtonWidth - 120, top, kButtonWidth,
                 kButtonHeight);
  cmdCancel.SetCaption("Cancel");
  cmdCancel.SetCancel(true);
  cmdOK.Move(cmdCancel.Left() - 120 - kButtonWidth, top, kButtonWidth,
             kButtonHeight);
  cmdOK.SetCaption("OK");
  cmdOK.SetDefault(true);
}

}  // namespace qbpd
