#include "camera/frm_image_transfer.h"

#include "core/quil_mod.h"
#include "core/settings.h"
#include "platform/forms/keys.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 6300;
constexpr int kFormHeight = 4200;
constexpr int kFrameLeft = 180;
constexpr int kFrameWidth = kFormWidth - 2 * kFrameLeft - 60;
constexpr int kLabelWidth = 1500;
constexpr int kFieldLeft = 1740;
constexpr int kFieldWidth = 3000;
constexpr int kButtonWidth = 1100;
constexpr int kButtonHeight = 375;
constexpr int kListOnly = 2;

int ListIndexOf(const std::string& value, int count) {
  try {
    const int index = std::stoi(value);
    return index >= 0 && index < count ? index : 0;
  } catch (const std::exception&) {
    return 0;
  }
}

}  // namespace

frmImageTransfer::frmImageTransfer(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetKeyPreview(true);
  Move(0, 0, kFormWidth, kFormHeight);
  fraCameraTransfer.Move(kFrameLeft, 120, kFrameWidth, 2880);
  fraCameraTransfer.SetCaption("Camera Transfer");
  const std::string frame = "fraCameraTransfer";
  struct Row {
    Label* label;
    const char* caption;
    int top;
  };
  for (const Row& row : {Row{&lblBaseFolder, "Base folder:", 420},
                         Row{&lblFolderName, "Folder name:", 1020},
                         Row{&lblPictureName, "Picture name:", 1620}}) {
    row.label->SetContainer(frame);
    row.label->Move(180, row.top + 45, kLabelWidth, 285);
    row.label->SetCaption(row.caption);
  }
  txtBaseFolder.SetContainer(frame);
  txtBaseFolder.Move(kFieldLeft, 420, kFieldWidth, 330);
  cmdBrowseFolders.SetContainer(frame);
  cmdBrowseFolders.Move(kFieldLeft + kFieldWidth + 90, 420, 810, 330);
  cmdBrowseFolders.SetCaption("Browse...");
  comboFolderName.SetContainer(frame);
  comboFolderName.Move(kFieldLeft, 1020, kFieldWidth, 315);
  comboFolderName.SetStyle(kListOnly);
  comboFolderName.AddItem("Transfer Date MM/DD/YYYY");
  comboFolderName.AddItem("Transfer Date DD/MM/YYYY");
  comboPictureName.SetContainer(frame);
  comboPictureName.Move(kFieldLeft, 1620, kFieldWidth, 315);
  comboPictureName.SetStyle(kListOnly);
  comboPictureName.AddItem("Picture 1");
  comboPictureName.AddItem("(Folder Name) 1");
  chkDeleteImages.SetContainer(frame);
  chkDeleteImages.Move(180, 2220, kFrameWidth - 360, 300);
  chkDeleteImages.SetCaption("Delete photos from the camera after transfer");
  const int top = kFormHeight - kButtonHeight - 600;
  cmdCancel.Move(kFormWidth - 240 - kButtonWidth, top, kButtonWidth,
                 kButtonHeight);
  cmdCancel.SetCaption("Cancel");
  cmdOK.Move(cmdCancel.Left() - 120 - kButtonWidth, top, kButtonWidth,
             kButtonHeight);
  cmdOK.SetCaption("OK");
  On("cmdBrowseFolders", "Click", &frmImageTransfer::cmdBrowseFolders_Click);
  On("cmdOK", "Click", &frmImageTransfer::cmdOK_Click);
  On("cmdCancel", "Click", &frmImageTransfer::cmdCancel_Click);
}

void frmImageTransfer::Form_Load() {
  SetCaption("Image Transfer");
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  SettingsStore& store = app_.settings();
  txtBaseFolder.SetText(
      DropTrailingNul(store.Read(kCameraTransferKey, "BaseFolder")));
  const std::string folder_name =
      DropTrailingNul(store.Read(kCameraTransferKey, "FolderName"));
  comboFolderName.SetListIndex(
      ListIndexOf(folder_name, comboFolderName.ListCount()));
  comboPictureName.SetListIndex(
      ListIndexOf(DropTrailingNul(store.Read(kCameraTransferKey, "PhotoName")),
                  comboPictureName.ListCount()));
  chkDeleteImages.SetValue(UpperCase(DropTrailingNul(store.Read(
                               kCameraTransferKey, "DeleteImagesStatus"))) ==
                                   "TRUE"
                               ? 1
                               : 0);
}

void frmImageTransfer::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    cmdCancel_Click();
  }
}

void frmImageTransfer::cmdBrowseFolders_Click() {
  FolderDialogCall call;
  call.title = "Desktop:";
  call.start_folder = txtBaseFolder.Text();
  if (std::optional<std::string> folder = host().BrowseForFolder(call)) {
    txtBaseFolder.SetText(*folder);
  }
}

void frmImageTransfer::cmdOK_Click() {
  SettingsStore& store = app_.settings();
  // A lost write leaves the old setting, which the next transfer asks again.
  (void)store.Write(kCameraTransferKey, "BaseFolder", txtBaseFolder.Text());
  (void)store.Write(kCameraTransferKey, "FolderName",
                    std::to_string(comboFolderName.ListIndex()));
  (void)store.Write(kCameraTransferKey, "PhotoName",
                    std::to_string(comboPictureName.ListIndex()));
  (void)store.Write(kCameraTransferKey, "DeleteImagesStatus",
                    chkDeleteImages.Value() == 1 ? "True" : "False");
  Unload();
}

void frmImageTransfer::cmdCancel_Click() {
  app_.session().gbTransferDialogCancelled = true;
  Unload();
}

}  // namespace qbpd
