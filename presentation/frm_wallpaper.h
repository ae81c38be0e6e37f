#ifndef QBPD_PRESENTATION_FRM_WALLPAPER_H_
#define QBPD_PRESENTATION_FRM_WALLPAPER_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string>
#include <string_view>

namespace qbpd {

// Makes the photo on display (gsSelectedImage, the file as it is on disk)
// the desktop's wallpaper, tiled, centred or stretched. OK writes it as the
// one bitmap of the system folder ("Quillbay picture desk.bmp", overwritten
// each time) and hands that to the desktop; the bitmap stays when the
// desktop refuses it. Cancel and Esc close.
class frmWallpaper : public Form {
 public:
  static constexpr std::string_view kName = "frmWallpaper";
  static constexpr char kBitmapName[] = "Quillbay picture desk.bmp";
  explicit frmWallpaper(Application& app);

  Label lblWPapHead{*this, "lblWPapHead"};
  Frame FraImageCont{*this, "FraImageCont"};
  PictureBox imgWallpaper{*this, "imgWallpaper"};
  Label lblWPapImageName{*this, "lblWPapImageName"};
  OptionButton optWPapTiled{*this, "optWPapTiled"};
  OptionButton optWPapCentered{*this, "optWPapCentered"};
  OptionButton optWPapStretch{*this, "optWPapStretch"};
  PictureButton imgWPapOK{*this, "imgWPapOK"};
  PictureButton imgWPapCancel{*this, "imgWPapCancel"};

  void ShowDefImages();

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void imgWPapOK_Click();
  void imgWPapCancel_Click();
  // The base name, "&" doubled, with "..." once it doesn't fit the label.
  std::string FittedName(const std::string& base) const;

  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_PRESENTATION_FRM_WALLPAPER_H_
