#ifndef QBPD_ONLINE_FRM_UPLOAD_ALBUM_INFM_H_
#define QBPD_ONLINE_FRM_UPLOAD_ALBUM_INFM_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string_view>

namespace qbpd {

// The album choice before an upload: a new album named in the text box
// (gsAlbumId stays empty, gsAlbumName takes the name) or one of the albums
// in gasAlbums (both taken from the list). Continue hands over to the
// transfer screen, frmUploadImgs.
class frmUploadAlbumInfm : public Form {
 public:
  static constexpr std::string_view kName = "frmUploadAlbumInfm";
  explicit frmUploadAlbumInfm(Application& app);

  Label lblHeading{*this, "lblHeading"};
  OptionButton optNewAlbumconn{*this, "optNewAlbumconn"};
  Label lblNewAlbumconn{*this, "lblNewAlbumconn"};
  TextBox txtNewAlbumConn{*this, "txtNewAlbumConn"};
  OptionButton optAddtoprev{*this, "optAddtoprev"};
  Label lblPrevAlbumconn{*this, "lblPrevAlbumconn"};
  ComboBox cboPrevAlbum{*this, "cboPrevAlbum"};
  PictureButton imgContinue{*this, "imgContinue"};
  PictureButton imgCancel{*this, "imgCancel"};

 protected:
  void Form_Load() override;
  void Form_Activate() override;
  void Form_KeyPress(int& KeyAscii) override;
  void Form_Unload(int& Cancel) override;

 private:
  void lblNewAlbumconn_Click();
  void optNewAlbumconn_Click();
  void PreviousAlbums_Click();
  void txtNewAlbumConn_GotFocus();
  void txtNewAlbumConn_KeyPress(EventArgs& e);
  void imgContinue_Click();
  void imgCancel_Click();
  void RefuseName();

  Application& app_;
  // Whether Continue handed the photos to the transfer screen.
  bool mbContinued = false;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_FRM_UPLOAD_ALBUM_INFM_H_
