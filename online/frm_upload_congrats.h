#ifndef QBPD_ONLINE_FRM_UPLOAD_CONGRATS_H_
#define QBPD_ONLINE_FRM_UPLOAD_CONGRATS_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string>
#include <string_view>

namespace qbpd {

// The result page of an upload or a print order: what came of the run and
// the links to the album, the share page and the order receipt, opened in
// the user's browser. Closing it forgets the album, so the next upload
// makes a new one.
class frmUploadCongrats : public Form {
 public:
  static constexpr std::string_view kName = "frmUploadCongrats";
  explicit frmUploadCongrats(Application& app);

  Label lblCongratulations{*this, "lblCongratulations"};
  Label lblPhotosUploaded{*this, "lblPhotosUploaded"};
  Label lblAlbumHead{*this, "lblAlbumHead"};
  Label lblAlbumName{*this, "lblAlbumName"};
  Label lblViewLink{*this, "lblViewLink"};
  Label lblView{*this, "lblView"};
  Shape shpView{*this, "shpView"};
  Label lblOrdPrintsLink{*this, "lblOrdPrintsLink"};
  Label lblOrdPrints{*this, "lblOrdPrints"};
  Label lblShareLink{*this, "lblShareLink"};
  Label lblShare{*this, "lblShare"};
  PictureButton imgOK{*this, "imgOK"};

  // The service's pages, from gsSiteAddress and the session values.
  std::string AlbumUrl() const;
  std::string ShareUrl() const;
  std::string OrderUrl() const;

 protected:
  void Form_Load() override;
  void Form_Unload(int& Cancel) override;

 private:
  // Whether the links may act: a session code and an album id.
  bool LinksActive() const;
  void lblViewLink_Click();
  void lblOrdPrintsLink_Click();
  void lblShareLink_Click();
  void imgOK_Click();

  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_FRM_UPLOAD_CONGRATS_H_
