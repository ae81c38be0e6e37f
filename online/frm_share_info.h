#ifndef QBPD_ONLINE_FRM_SHARE_INFO_H_
#define QBPD_ONLINE_FRM_SHARE_INFO_H_

#include "core/application.h"
#include "online/service_client.h"
#include "platform/forms/control_array.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

// The share form: recipients (typed, or picked from the account's address
// book through frmAddressBook), subject, message, album name and the
// friends' access, beside a preview of the photos that go. Continue checks
// every entry and hands over to the transfer screen (frmUploadImgs), which
// makes a new album and then shares it.
class frmShareInfo : public Form {
 public:
  static constexpr std::string_view kName = "frmShareInfo";
  // The preview's thumbnails: two to a row.
  static constexpr int kPreviewColumns = 2;
  explicit frmShareInfo(Application& app);

  Label lblHeading{*this, "lblHeading"};
  Label lblFrom{*this, "lblFrom"};
  Label lblFromText{*this, "lblFromText"};
  Label lblTo{*this, "lblTo"};
  Label lblToText{*this, "lblToText"};
  PictureButton imgAddressBook{*this, "imgAddressBook"};
  TextBox txtTo{*this, "txtTo"};
  Label lblSubject{*this, "lblSubject"};
  TextBox txtSubject{*this, "txtSubject"};
  Label lblMessage{*this, "lblMessage"};
  TextBox txtMessage{*this, "txtMessage"};
  Label lblAlbum{*this, "lblAlbum"};
  TextBox txtAlbum{*this, "txtAlbum"};
  OptionButton optFullAccess{*this, "optFullAccess"};
  Label lblMoreInfo{*this, "lblMoreInfo"};
  OptionButton optRestrict{*this, "optRestrict"};
  Label lblMoreInfoRestrict{*this, "lblMoreInfoRestrict"};
  Label lblPrivacyPolicy{*this, "lblPrivacyPolicy"};
  Label lblHelp{*this, "lblHelp"};
  PictureButton imgQuillbayLogo{*this, "imgQuillbayLogo"};
  PictureButton imgContinue{*this, "imgContinue"};
  PictureButton imgCancel{*this, "imgCancel"};
  // The preview: album name, count and the thumbnails.
  Label lblLeftAlbum{*this, "lblLeftAlbum"};
  Label lblLeftAlbumVal{*this, "lblLeftAlbumVal"};
  Label lblPhotosSelect{*this, "lblPhotosSelect"};
  PictureBox picImageListCont{*this, "picImageListCont"};
  PictureBox picImageListInner{*this, "picImageListInner"};
  ControlArray<Thumbnail> ctrlQuilImage{*this, "ctrlQuilImage"};
  ScrollBar ctrlImageListVScroll{*this, "ctrlImageListVScroll"};

  // Puts `emails` (joined with ",") behind what txtTo holds, with ", "
  // between them when txtTo is not empty and doesn't end in ",".
  void AppendRecipients(const std::string& emails);

 protected:
  void Form_Load() override;
  void Form_Activate() override;
  void Form_KeyPress(int& KeyAscii) override;

 private:
  void CollectPhotos();
  void LayOutPreview();
  void txtAlbum_Change();
  void ctrlImageListVScroll_Change();
  void lblMoreInfo_Click();
  void lblMoreInfoRestrict_Click();
  void lblPrivacyPolicy_Click();
  void lblHelp_Click();
  void imgQuillbayLogo_Click();
  void imgAddressBook_Click();
  void imgCancel_Click();
  void imgContinue_Click();
  // An information box with `text`; the focus goes back to `box`.
  void Refuse(const std::string& text, TextBox& box);
  void ShowPage(const std::string& heading, const std::string& page);

  Application& app_;
  std::unique_ptr<ctlExtAPI> ExtAPI_;
  std::string msErrCode;
  std::string msErrText;
};

// The recipients of a share as typed: ";" counts as ",", one trailing ","
// is cut, the parts are trimmed, and empty parts and parts equal to an
// earlier one without regard to case are dropped. A text without a comma
// is one entry as it stands.
std::vector<std::string> SplitRecipients(const std::string& text);

// "&" as "&amp;", then "<" as "&lt;" and ">" as "&gt;".
std::string EncodeShareText(const std::string& text);

// What the preview shows for an album name: the whole name when it is
// shorter than 13 characters, otherwise its first 10 and "..".
std::string PreviewAlbumName(const std::string& name);

}  // namespace qbpd

#endif  // QBPD_ONLINE_FRM_SHARE_INFO_H_
