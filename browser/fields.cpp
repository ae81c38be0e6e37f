// The main window's m-fields by name (frmMainWindow.mbFitToWidth in a
// driver script); a field that a script should see is listed here.
#include "browser/frm_main_window.h"

namespace qbpd {

void frmMainWindow::DeclareFields() {
  Field("mbFirstLoad", mbFirstLoad);
  Field("mbCloseAfterDevice", mbCloseAfterDevice);
  Field("mbFormReady", mbFormReady);
  Field("mbMouseDownOnTreeview", mbMouseDownOnTreeview);
  Field("mbFolderClickPending", mbFolderClickPending);
  Field("mbEditImageText", mbEditImageText);
  Field("msRecentFolder", msRecentFolder);
  Field("mbInitialLoadBusy", mbInitialLoadBusy);
  Field("mbStartupDone", mbStartupDone);
  Field("miScreenHeightPx", miScreenHeightPx);
  Field("miScreenWidthPx", miScreenWidthPx);
  Field("mbScreenChanged", mbScreenChanged);
  Field("mbExplorerOpen", mbExplorerOpen);
  Field("msZoomMode", msZoomMode);
  Field("miFileCount", miFileCount);
  Field("miLastLoadedControl", miLastLoadedControl);
  Field("mbOpeningFromCommand", mbOpeningFromCommand);
  Field("mbCommandFolderLoad", mbCommandFolderLoad);
  Field("mbCommandPhotoOk", mbCommandPhotoOk);
  Field("mbFolderChanging", mbFolderChanging);
  Field("mbScrollSilent", mbScrollSilent);
  Field("mbArrowKeyBusy", mbArrowKeyBusy);
  Field("mbNewControlHasPhoto", mbNewControlHasPhoto);
  Field("mbNoRescroll", mbNoRescroll);
  Field("mbInSaveCheck", mbInSaveCheck);
  Field("miClickedPhoto", miClickedPhoto);
  Field("mbFitToWidth", mbFitToWidth);
  Field("miSavedZoom", miSavedZoom);
  Field("msHoverPicture", msHoverPicture);
  Field("miSplitGrabY", miSplitGrabY);
  Field("mbSplitMoved", mbSplitMoved);
  Field("miSplitTop", miSplitTop);
  Field("mbDeleting", mbDeleting);
  Field("mbDeleteBusy", mbDeleteBusy);
  Field("miCropAspectX", miCropAspectX);
  Field("miCropAspectY", miCropAspectY);
  Field("mbCropTooSmall", mbCropTooSmall);
  Field("miCropPreset", miCropPreset);
  Field("mbRedEyeRemoved", mbRedEyeRemoved);
}

}  // namespace qbpd
