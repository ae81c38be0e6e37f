#ifndef QBPD_ONLINE_FRM_SHARE_CONGRATS_H_
#define QBPD_ONLINE_FRM_SHARE_CONGRATS_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

// The end of a share: the album's name, the addresses the service accepted
// (gasShareEmails) and a link to the album's page.
class frmShareCongrats : public Form {
 public:
  static constexpr std::string_view kName = "frmShareCongrats";
  // Addresses are broken into lines of this many characters.
  static constexpr int kLineLength = 25;
  explicit frmShareCongrats(Application& app);

  PictureButton imgQuillbayLogo{*this, "imgQuillbayLogo"};
  Label lblCongratulations{*this, "lblCongratulations"};
  Label lblShared{*this, "lblShared"};
  Label lblSharedWith{*this, "lblSharedWith"};
  Label lblMailId{*this, "lblMailId"};
  Label lblYourAlbum{*this, "lblYourAlbum"};
  Label lblAlbumName{*this, "lblAlbumName"};
  Label lblWouldYou{*this, "lblWouldYou"};
  Label lblOrdPrintsLink{*this, "lblOrdPrintsLink"};
  Label lblQualityPrints{*this, "lblQualityPrints"};
  PictureButton imgOK{*this, "imgOK"};

 protected:
  void Form_Load() override;
  void Form_Activate() override;
  void Form_Unload(int& Cancel) override;

 private:
  void lblOrdPrintsLink_Click();
  void imgOK_Click();

  Application& app_;
  bool mbListed = false;
};

// The lines that list `emails`: each in lower case, one to a line, an
// address longer than `length` characters broken into lines of `length`;
// empty entries make no line. Lines are joined with "\n".
std::string ShareRecipientLines(const std::vector<std::string>& emails,
                                size_t length);

}  // namespace qbpd

#endif  // QBPD_ONLINE_FRM_SHARE_CONGRATS_H_
