// The main window's edit panels: their texts and layout, opening and closing
// them (SetEditPanel), the crop panel's print sizes and orientation, the
// red-eye tool's events and the colour panel's two views.
#include "browser/frm_main_window.h"
#include "core/button_pictures.h"
#include "core/quil_mod.h"
#include "core/settings.h"
#include "editor/crop_sizes.h"

namespace qbpd {
namespace {

constexpr int kBackground = 206;
constexpr int kCropOperation = 1;
constexpr int kRedEyeOperation = 4;
constexpr int kColourOperation = 5;
constexpr int kHeadingFontSize = 18;
constexpr size_t kLongestLeftName = 31;
constexpr int kRedEyeMode = 2;
constexpr int kRedEyeOption = 1;
constexpr char kTooSmall[] =
    "Sorry! Your photo is too small to further crop and then print at this "
    "size";
constexpr char kFinishedApply[] =
    "When you are finished, click on the \"apply Changes\" button.";
constexpr char kCopyNotice[] =
    "Applying changes will create a new, edited copy of your photo. Your "
    "original photo will remain unchanged.";

// Layout of a panel, in twips.
constexpr int kGap = 100;
constexpr int kThumbSize = 1275;
constexpr int kLine = 300;
constexpr int kIndent = 150;

}  // namespace

void frmMainWindow::WireEditor() {
  EditPanelControls& e = edit;
  for (Control* c : std::initializer_list<Control*>{
           &e.lblCropShape, &e.lblChooseSize, &e.opt4x6, &e.opt5x7, &e.opt8x10,
           &e.optWallet, &e.lblCropOrientation, &e.picCropOrntCont,
           &e.lblResize, &e.lblResizeText, &e.lblCropFinished}) {
    c->SetContainer("fraCrop");
  }
  for (Control* c : std::initializer_list<Control*>{
           &e.optHor, &e.optVer, &e.imgCropHor, &e.imgCropVert}) {
    c->SetContainer("picCropOrntCont");
  }
  for (Control* c : std::initializer_list<Control*>{
           &e.lblGetRedOut, &e.lblGetRedOutText, &e.lblSelect, &e.lblSelectText,
           &e.lblRedEyeFinished}) {
    c->SetContainer("fraRedEye");
  }
  for (Control* c : std::initializer_list<Control*>{
           &e.lblChooseOne, &e.lblChooseOneText, &e.optViewOriginal,
           &e.lblViewOriginal, &e.optViewCorrected, &e.lblViewCorrected,
           &e.lblAutoFixFinished}) {
    c->SetContainer("fraAutoColor");
  }
  e.lblCropShape.SetCaption("Crop Shape");
  e.lblChooseSize.SetCaption("Choose the size");
  OptionButton* sizes[] = {&e.opt4x6, &e.opt5x7, &e.opt8x10, &e.optWallet};
  for (size_t i = 0; i < kCropSizes.size(); ++i) {
    sizes[i]->SetCaption(kCropSizes[i].caption);
  }
  e.lblCropOrientation.SetCaption("Crop Orientation");
  e.optHor.SetCaption("Horizontal");
  e.optVer.SetCaption("Vertical");
  e.lblResize.SetCaption("Resize and Move Cropbox");
  e.lblResizeText.SetCaption(
      "Click and drag any edge/corner of the cropping box to resize it.");
  e.lblCropFinished.SetCaption(
      "When you are finished, click on the \"crop photo\" button.");
  e.lblGetRedOut.SetCaption("Get the Red Out");
  e.lblGetRedOutText.SetCaption(
      "Click on the eye. You might have to click a few times to get all the "
      "red. Move the cursor and repeat for each eye.");
  e.lblSelect.SetCaption("Select an Eye");
  e.lblSelectText.SetCaption(
      "Drag the cursor around the photo to magnify your work area. Center "
      "the cursor over the red eye area.");
  e.lblRedEyeFinished.SetCaption(kFinishedApply);
  e.lblChooseOne.SetCaption("Choose One");
  e.lblChooseOneText.SetCaption(
      "Compare the corrected photo to your original, then select the one you "
      "prefer.");
  e.lblViewOriginal.SetCaption("View Original");
  e.lblViewCorrected.SetCaption("View Corrected");
  e.lblAutoFixFinished.SetCaption(kCopyNotice);
  for (Label* heading : {&e.lblCropShape, &e.lblResize, &e.lblGetRedOut,
                         &e.lblSelect, &e.lblChooseOne, &e.lblManipHead}) {
    heading->SetFontBold(true);
  }
  for (Label* text :
       {&e.lblResizeText, &e.lblCropFinished, &e.lblGetRedOutText,
        &e.lblSelectText, &e.lblRedEyeFinished, &e.lblChooseOneText,
        &e.lblAutoFixFinished, &e.lblLeftImageName}) {
    text->SetWordWrap(true);
  }
  for (Control* c : std::initializer_list<Control*>{
           &e.fraCrop, &e.fraRedEye, &e.fraAutoColor, &e.imgAutoThumb,
           &e.lblLeftImageName, &e.lblManipHead}) {
    c->SetVisible(false);
  }

  On("imgCrop", "Click", &frmMainWindow::imgCrop_Click);
  On("imgRedeye", "Click", &frmMainWindow::imgRedeye_Click);
  On("mnuPRedeye", "Click", &frmMainWindow::imgRedeye_Click);
  On("imgAutocolor", "Click", &frmMainWindow::imgAutocolor_Click);
  On("mnuPAutoFix", "Click", &frmMainWindow::imgAutocolor_Click);
  for (size_t i = 0; i < kCropSizes.size(); ++i) {
    const int preset = static_cast<int>(i);
    On(kCropSizes[i].menu, "Click",
       [this, preset](EventArgs&) { OpenCropFromMenu(preset); });
    On(kCropSizes[i].option, "Click",
       [this](EventArgs&) { CropChoice(/*size_handler=*/true); });
  }
  On("optHor", "Click", [this](EventArgs&) { CropChoice(false); });
  On("optVer", "Click", [this](EventArgs&) { CropChoice(false); });
  On("imgCropHor", "Click", [this](EventArgs&) { edit.optHor.SetValue(true); });
  On("imgCropVert", "Click",
     [this](EventArgs&) { edit.optVer.SetValue(true); });
  On("ctlDisplayImage", "CropTooSmall",
     &frmMainWindow::ctlDisplayImage_CropTooSmall);
  On("ctlDisplayImage", "RedEyeRemoved",
     &frmMainWindow::ctlDisplayImage_RedEyeRemoved);
  On("optViewCorrected", "Click", &frmMainWindow::optViewCorrected_Click);
  On("optViewOriginal", "Click", &frmMainWindow::optViewOriginal_Click);
  On("lblViewCorrected", "Click",
     [this](EventArgs&) { edit.optViewCorrected.SetValue(true); });
  On("lblViewOriginal", "Click",
     [this](EventArgs&) { edit.optViewOriginal.SetValue(true); });
  On("imgApplyChanges", "Click", &frmMainWindow::imgApplyChanges_Click);
  On("imgCancel", "Click", &frmMainWindow::imgCancel_Click);
  On("mnuFSave", "Click", &frmMainWindow::mnuFSave_Click);
  On("mnuFSaveAs", "Click", [this](EventArgs&) { SaveAsImage(); });
}

void frmMainWindow::ArrangeEditPanels(int left,
                                      int top,
                                      int width,
                                      int height) {
  EditPanelControls& e = edit;
  e.imgAutoThumb.Move(left + (width - kThumbSize) / 2, top, kThumbSize,
                      kThumbSize);
  int y = top + kThumbSize + kGap / 2;
  e.lblLeftImageName.Move(left, y, width, 2 * kLine);
  e.lblLeftImageName.SetAlignment(2);
  y += 2 * kLine + kGap;
  e.lblManipHead.Move(left, y, width, 2 * kLine);
  e.lblManipHead.SetAlignment(2);
  y += 2 * kLine;
  const int panel_height = std::max(top + height - y, 3000);
  const int inner = width - 2 * kIndent;
  for (Frame* frame : {&e.fraCrop, &e.fraRedEye, &e.fraAutoColor}) {
    frame->Move(left, y, width, panel_height);
  }

  // The crop panel: sizes, orientation, how to work the box.
  int cy = 2 * kLine;
  e.lblCropShape.Move(kIndent, cy, inner, kLine);
  cy += kLine + kGap;
  e.lblChooseSize.Move(kIndent, cy, inner, kLine);
  cy += kLine;
  for (OptionButton* o : {&e.opt4x6, &e.opt5x7, &e.opt8x10, &e.optWallet}) {
    o->Move(2 * kIndent, cy, inner - kIndent, kLine);
    cy += kLine;
  }
  cy += kGap;
  e.lblCropOrientation.Move(kIndent, cy, inner, kLine);
  cy += kLine;
  e.picCropOrntCont.Move(kIndent, cy, inner, 2 * kLine);
  e.optHor.Move(kIndent, 0, inner / 2 - kIndent, kLine);
  e.optVer.Move(inner / 2, 0, inner / 2 - kIndent, kLine);
  // At the sizes of their pictures (30 x 18 and 17 x 22 pixels).
  e.imgCropHor.Move(kIndent, kLine + 30, 450, 270);
  e.imgCropVert.Move(inner / 2, kLine, 255, 330);
  cy += 2 * kLine + kGap;
  e.lblResize.Move(kIndent, cy, inner, kLine);
  cy += kLine;
  e.lblResizeText.Move(kIndent, cy, inner, 3 * kLine);
  cy += 3 * kLine + kGap;
  e.lblCropFinished.Move(kIndent, cy, inner, 3 * kLine);

  // The red-eye panel.
  int ry = 2 * kLine;
  e.lblGetRedOut.Move(kIndent, ry, inner, kLine);
  ry += kLine;
  e.lblGetRedOutText.Move(kIndent, ry, inner, 5 * kLine);
  ry += 5 * kLine + kGap;
  e.lblSelect.Move(kIndent, ry, inner, kLine);
  ry += kLine;
  e.lblSelectText.Move(kIndent, ry, inner, 5 * kLine);
  ry += 5 * kLine + kGap;
  e.lblRedEyeFinished.Move(kIndent, ry, inner, 3 * kLine);

  // The colour panel.
  int ay = 2 * kLine;
  e.lblChooseOne.Move(kIndent, ay, inner, kLine);
  ay += kLine;
  e.lblChooseOneText.Move(kIndent, ay, inner, 4 * kLine);
  ay += 4 * kLine + kGap;
  e.optViewOriginal.Move(kIndent, ay, 300, kLine);
  e.lblViewOriginal.Move(kIndent + 300, ay, inner - 300, kLine);
  ay += kLine + kGap;
  e.optViewCorrected.Move(kIndent, ay, 300, kLine);
  e.lblViewCorrected.Move(kIndent + 300, ay, inner - 300, kLine);
  ay += kLine + 2 * kGap;
  e.lblAutoFixFinished.Move(kIndent, ay, inner, 5 * kLine);

  // The control has new measures: a crop box is made afresh for them, the
  // red-eye tool starts over.
  if (s_.giCurrentOperation == kCropOperation) {
    ctlDisplayImage.ClearEdit();
    if (miCropAspectX > 0 && miCropAspectY > 0) {
      ctlDisplayImage.SetCropAspect(miCropAspectX, miCropAspectY);
    }
  } else if (s_.giCurrentOperation == kRedEyeOperation) {
    ctlDisplayImage.ClearEdit();
  }
}

void frmMainWindow::SetEditPanel(int mode) {
  EditPanelControls& e = edit;
  ctlDisplayImage.SetBackRed(kBackground);
  ctlDisplayImage.SetBackGreen(kBackground);
  ctlDisplayImage.SetBackBlue(kBackground);
  if (mode == 0) {
    if (msZoomMode != "F") {
      ctlDisplayImage.ZoomTo(100);
    } else {
      ctlDisplayImage.ZoomFitToWidth();
    }
    for (Control* c : std::initializer_list<Control*>{
             &e.fraCrop, &e.fraRedEye, &e.fraAutoColor, &e.imgAutoThumb,
             &e.lblLeftImageName, &e.lblManipHead, &picCropCont}) {
      c->SetVisible(false);
    }
    for (Control* c : std::initializer_list<Control*>{
             &picExplorerCont, &picImageListCont, &lblPhotosSelect,
             &imgSelectAll, &imgClear, &imgShare, &imgUpload, &picImageFlow,
             &picManipCont, &picTrash}) {
      c->SetVisible(true);
    }
    imgHorzSplit.SetVisible(mbExplorerOpen);
    for (Control* c : std::initializer_list<Control*>{
             &imgOrdPrints, &imgSlideShow, &imgScrSaver}) {
      c->SetEnabled(true);
    }
    switch (s_.giCurrentOperation) {
      case kCropOperation:
        ctlDisplayImage.ClearEdit();
        mbFitToWidth = false;
        if (!mnuVZoomFit.Checked()) {
          ctlDisplayImage.ZoomTo(miSavedZoom);
        }
        ShowZoomLevel(miSavedZoom);
        break;
      case kRedEyeOperation:
        ctlDisplayImage.ClearEdit();
        mbFitToWidth = false;
        // Loading the photo again drops the corrections.
        ctlDisplayImage.LoadPhoto(s_.gsSelectedImage);
        if (!mnuVZoomFit.Checked()) {
          ctlDisplayImage.ZoomTo(miSavedZoom);
        } else {
          ctlDisplayImage.ZoomFitToWidth();
        }
        ShowZoomLevel(ctlDisplayImage.ZoomPercent());
        break;
      case kColourOperation:
        mbFitToWidth = false;
        if (!mnuVZoomFit.Checked()) {
          ctlDisplayImage.ZoomTo(miSavedZoom);
        }
        ShowZoomLevel(ctlDisplayImage.ZoomPercent());
        break;
      default:
        break;
    }
    for (OptionButton* o : {&e.opt4x6, &e.opt5x7, &e.opt8x10, &e.optWallet}) {
      o->SetValue(false);
    }
    miCropPreset = -1;
    // A refusal belongs to the crop that was open; the next panel starts
    // without it.
    mbCropTooSmall = false;
    e.lblManipHead.SetCaption("");
    return;
  }

  ShowButtonState(s_, imgApplyChanges, mode == kCropOperation ? "27" : "28",
                  kPictureNormal);
  // The orientation options' pictures: a print wider than tall, and taller.
  e.imgCropHor.SetPicture(ButtonPicture(s_, "G11"));
  e.imgCropVert.SetPicture(ButtonPicture(s_, "G12"));
  if (!GenerateThumbnail(s_.gsSelectedImage)) {
    host().MsgBox("Error in generating the thumbnail", kMbStop, s_.gsAppTitle);
  }
  e.imgAutoThumb.SetPicture(s_.gsThumbnailPath);
  std::string name = BaseName(s_.gsSelectedImage);
  if (CharacterCount(name) >= kLongestLeftName) {
    name = FirstCharacters(name, kLongestLeftName - 2) + "...";
  }
  e.lblLeftImageName.SetCaption(name);
  e.lblManipHead.SetCaption(mode == kCropOperation     ? "crop"
                            : mode == kRedEyeOperation ? "remove red eye"
                                                       : "correct color");
  mbFitToWidth = true;
  ctlDisplayImage.ZoomFitToWidth();

  for (Control* c : std::initializer_list<Control*>{
           &picExplorerCont, &imgHorzSplit, &picImageListCont, &lblPhotosSelect,
           &imgSelectAll, &imgClear, &imgShare, &imgUpload, &picImageFlow,
           &picManipCont, &picTrash}) {
    c->SetVisible(false);
  }
  // The panels are modal in all but name: the commands left in the button
  // column wait until the panel closes.
  for (Control* c : std::initializer_list<Control*>{
           &imgOrdPrints, &imgSlideShow, &imgScrSaver}) {
    c->SetEnabled(false);
  }
  for (Control* c :
       std::initializer_list<Control*>{&e.imgAutoThumb, &e.lblLeftImageName,
                                       &e.lblManipHead, &picCropCont}) {
    c->SetVisible(true);
  }
  e.fraCrop.SetVisible(mode == kCropOperation);
  e.fraRedEye.SetVisible(mode == kRedEyeOperation);
  e.fraAutoColor.SetVisible(mode == kColourOperation);
  if (mode == kRedEyeOperation) {
    ctlDisplayImage.BeginRedEye(kRedEyeMode, kRedEyeOption);
    e.fraRedEye.SetCaption("Remove Red Eye");
    e.fraRedEye.SetFontSize(kHeadingFontSize);
  } else if (mode == kColourOperation) {
    e.fraAutoColor.SetCaption("Correct Color");
    e.fraAutoColor.SetFontSize(kHeadingFontSize);
    e.optViewOriginal.SetValue(false);
    e.optViewCorrected.SetValue(false);
    e.optViewCorrected.SetValue(true);
  }
}

// --- opening the panels ------------------------------------------------------

void frmMainWindow::imgRedeye_Click() {
  if (!CommitRename()) {
    return;
  }
  SaveImage();
  s_.giCurrentOperation = kRedEyeOperation;
  ShowTopMenus(false, false);
  miSavedZoom = ctlDisplayImage.ZoomPercent();
  mbRedEyeRemoved = false;
  SetEditPanel(kRedEyeOperation);
  host().SetMousePointer(kPointerDefault);
}

void frmMainWindow::imgAutocolor_Click() {
  if (!CommitRename()) {
    return;
  }
  SaveImage();
  s_.giCurrentOperation = kColourOperation;
  ShowTopMenus(false, false);
  miSavedZoom = ctlDisplayImage.ZoomPercent();
  SetEditPanel(kColourOperation);
  // The correction's view may have left the hourglass up after a failure.
  if (host().MousePointer() != kPointerHourglass) {
    host().SetMousePointer(kPointerDefault);
  }
}

void frmMainWindow::OpenCropFromMenu(int preset) {
  if (CheckFileExistence(s_.giCurrentPhotoIndex)) {
    return;
  }
  SaveImage();
  s_.giCurrentOperation = kCropOperation;
  miCropPreset = preset;
  imgCrop_Click();
}

void frmMainWindow::imgCrop_Click() {
  if (!CommitRename()) {
    return;
  }
  SaveImage();
  s_.giCurrentOperation = kCropOperation;
  ShowTopMenus(false, false);
  miSavedZoom = ctlDisplayImage.ZoomPercent();
  SetEditPanel(kCropOperation);
  if (miCropPreset == -1) {
    // The setting's own key, as the other readers read it.
    miCropPreset = CropPresetFromExpressPrints(
        app_.settings().Read(s_.gsPrefKey + "ExpressPrints", "ExpressPrints"));
  }
  EditPanelControls& e = edit;
  if (ctlDisplayImage.PhotoHeight() < ctlDisplayImage.PhotoWidth()) {
    e.optHor.SetValue(true);
  } else {
    e.optVer.SetValue(true);
  }
  OptionButton* size = &e.opt4x6;
  if (miCropPreset == 1) {
    size = &e.opt5x7;
  } else if (miCropPreset == 2) {
    size = &e.opt8x10;
  } else if (miCropPreset == 3) {
    size = &e.optWallet;
  }
  size->SetValue(true);
}

// --- the crop panel's choices
// ---------------------------------------------------

void frmMainWindow::CropChoice(bool size_handler) {
  EditPanelControls& e = edit;
  OptionButton* sizes[] = {&e.opt4x6, &e.opt5x7, &e.opt8x10, &e.optWallet};
  int chosen = -1;
  for (int i = 0; i < 4; ++i) {
    if (sizes[i]->Value()) {
      chosen = i;
      break;
    }
  }
  if (chosen < 0) {
    (void)size_handler;  // only an orientation handler can find none set
    return;
  }
  ctlDisplayImage.ClearEdit();
  const CropSize& size = kCropSizes[static_cast<size_t>(chosen)];
  if (e.optHor.Value()) {
    miCropAspectX = size.horizontal_x;
    miCropAspectY = size.horizontal_y;
  } else {
    miCropAspectX = size.vertical_x;
    miCropAspectY = size.vertical_y;
  }
  if (!ctlDisplayImage.SetCropAspect(miCropAspectX, miCropAspectY)) {
    ctlDisplayImage.ClearEdit();
    host().MsgBox(kTooSmall, kMbInformation, s_.gsAppTitle);
    mbCropTooSmall = true;
  } else {
    mbCropTooSmall = false;
  }
}

void frmMainWindow::ctlDisplayImage_CropTooSmall() {
  // The control keeps the smallest box; the refusal of an aspect stays as
  // it was.
  host().MsgBox(kTooSmall, kMbInformation, s_.gsAppTitle);
}

void frmMainWindow::ctlDisplayImage_RedEyeRemoved() {
  mbRedEyeRemoved = true;
}

// --- the colour panel's views
// -------------------------------------------------

void frmMainWindow::optViewCorrected_Click() {
  host().SetMousePointer(kPointerHourglass);
  if (ctlDisplayImage.ShowCorrected()) {
    host().SetMousePointer(kPointerDefault);
  } else {
    host().MsgBox("Unable to apply changes to the selected photo", kMbOk,
                  s_.gsAppTitle);
  }
}

void frmMainWindow::optViewOriginal_Click() {
  host().SetMousePointer(kPointerHourglass);
  ctlDisplayImage.ShowOriginal();
  host().SetMousePointer(kPointerDefault);
}

}  // namespace qbpd
