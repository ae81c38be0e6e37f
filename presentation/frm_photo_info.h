#ifndef QBPD_PRESENTATION_FRM_PHOTO_INFO_H_
#define QBPD_PRESENTATION_FRM_PHOTO_INFO_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string>
#include <string_view>

namespace qbpd {

// The facts of the photo on display (gsSelectedImage): its thumbnail, name,
// folder, dates, size in pixels and bytes, colours and kind, and what its
// camera wrote about it, with a box to rename it. OK renames the file in its
// own folder (or just closes when the name is the same); Cancel and Esc
// close. The caller shows the photo's name again afterwards, as it may have
// changed.
class frmPhotoInfo : public Form {
 public:
  static constexpr std::string_view kName = "frmPhotoInfo";
  explicit frmPhotoInfo(Application& app);

  // How many characters of the name the label under the thumbnail shows.
  static constexpr int kNameLabelCharacters = 25;

  Label lblPhotoInfo{*this, "lblPhotoInfo"};
  Frame fraPicCont{*this, "fraPicCont"};
  PictureBox imgInfoImage{*this, "imgInfoImage"};
  Label lblFileName{*this, "lblFileName"};

  Label lblFileNameHead{*this, "lblFileNameHead"};
  TextBox txtFileName{*this, "txtFileName"};
  Label lblLocationHead{*this, "lblLocationHead"};
  Label lblLocation{*this, "lblLocation"};
  Label lblDateCreatedHead{*this, "lblDateCreatedHead"};
  Label lbDispDateCreated{*this, "lbDispDateCreated"};
  Label lblDateModifiedHead{*this, "lblDateModifiedHead"};
  Label lblDispDateModified{*this, "lblDispDateModified"};
  Label lblDimensionsHead{*this, "lblDimensionsHead"};
  Label lbldispDimensions{*this, "lbldispDimensions"};
  Label lblColorsHead{*this, "lblColorsHead"};
  Label lblDispColors{*this, "lblDispColors"};
  Label lblFileSizeHead{*this, "lblFileSizeHead"};
  Label lblDispFilesSize{*this, "lblDispFilesSize"};
  Label lblImageFormatHead{*this, "lblImageFormatHead"};
  Label lblDispImageFormat{*this, "lblDispImageFormat"};

  // The camera's facts, shown only for what the photo's EXIF data holds.
  Label lblCameraHead{*this, "lblCameraHead"};
  Label lblDispCamera{*this, "lblDispCamera"};
  Label lblDateTakenHead{*this, "lblDateTakenHead"};
  Label lblDispDateTaken{*this, "lblDispDateTaken"};
  Label lblExposureHead{*this, "lblExposureHead"};
  Label lblDispExposure{*this, "lblDispExposure"};
  Label lblFocalLengthHead{*this, "lblFocalLengthHead"};
  Label lblDispFocalLength{*this, "lblDispFocalLength"};
  Label lblIsoHead{*this, "lblIsoHead"};
  Label lblDispIso{*this, "lblDispIso"};

  PictureButton imgOK{*this, "imgOK"};
  PictureButton imgCancel{*this, "imgCancel"};

  void ShowDefImages();

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void FillFields();
  // Lays the camera rows that have a value under the others and sizes the
  // form to them.
  void LayCameraRows();
  void txtFileName_KeyPress(EventArgs& e);
  void txtFileName_LostFocus();
  void imgOK_Click();
  void imgCancel_Click();

  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_PRESENTATION_FRM_PHOTO_INFO_H_
