#ifndef QBPD_CAMERA_FRM_IMAGE_TRANSFER_H_
#define QBPD_CAMERA_FRM_IMAGE_TRANSFER_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string_view>

namespace qbpd {

// The transfer's settings, asked for when FolderName says "Always ask me for
// a name": the base folder, the date form of the folder's name, the
// pictures' name and whether the camera is emptied. OK writes them; Cancel
// and Escape set gbTransferDialogCancelled.
class frmImageTransfer : public Form {
 public:
  static constexpr std::string_view kName = "frmImageTransfer";
  explicit frmImageTransfer(Application& app);

  Frame fraCameraTransfer{*this, "fraCameraTransfer"};
  Label lblBaseFolder{*this, "lblBaseFolder"};
  TextBox txtBaseFolder{*this, "txtBaseFolder"};
  CommandButton cmdBrowseFolders{*this, "cmdBrowseFolders"};
  Label lblFolderName{*this, "lblFolderName"};
  ComboBox comboFolderName{*this, "comboFolderName"};
  Label lblPictureName{*this, "lblPictureName"};
  ComboBox comboPictureName{*this, "comboPictureName"};
  CheckBox chkDeleteImages{*this, "chkDeleteImages"};
  CommandButton cmdOK{*this, "cmdOK"};
  CommandButton cmdCancel{*this, "cmdCancel"};

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void cmdBrowseFolders_Click();
  void cmdOK_Click();
  void cmdCancel_Click();

  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_CAMERA_FRM_IMAGE_TRANSFER_H_
