#include "online/frm_address_book.h"

#include "core/button_pictures.h"
#include "online/client_factory.h"
#include "online/frm_share_info.h"
#include "platform/forms/keys.h"

#include <algorithm>

namespace qbpd {
namespace {

constexpr int kFormWidth = 5400;
constexpr int kFormHeight = 5160;
constexpr int kMargin = 240;
constexpr int kListTop = 1260;
constexpr int kListHeight = 2700;
constexpr int kButtonTop = 4380;
constexpr int kButtonWidth = 1200;
constexpr int kButtonHeight = 390;
constexpr int kExtentSlack = 100;
constexpr std::string_view kContinueButton = "26";
constexpr std::string_view kCancelButton = "25";

}  // namespace

frmAddressBook::frmAddressBook(Application& app)
    : Form(app.host(), std::string(kName)),
      app_(app),
      ExtAPI_(NewServiceClient(app)) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblHeading.Move(kMargin, kMargin, kFormWidth - 2 * kMargin, 300);
  lblHeading.SetFontBold(true);
  lblHeading.SetCaption("address book");
  lblEmailListText.Move(kMargin, 600, kFormWidth - 2 * kMargin, 600);
  lblEmailListText.SetWordWrap(true);
  lblEmailListText.SetCaption(
      "Check the box next to the email address of each person with whom you "
      "would like to share these photos");
  lstEmailList.Move(kMargin, kListTop, kFormWidth - 2 * kMargin, kListHeight);
  lstEmailList.SetStyle(1);
  lblSelectAll.Move(kMargin, kListTop + kListHeight + 120, 1200, 255);
  lblSelectAll.SetCaption("select all");
  lblDeselectAll.Move(kMargin + 1440, kListTop + kListHeight + 120, 1500, 255);
  lblDeselectAll.SetCaption("deselect all");
  lblEmptyBuddys.Move(kMargin, 2400, kFormWidth - 2 * kMargin, 300);
  lblEmptyBuddys.SetAlignment(2);
  lblEmptyBuddys.SetCaption("...Your Buddy List Is Empty...");
  lblEmptyBuddys.SetVisible(false);
  imgContinue.Move(kFormWidth / 2 - kButtonWidth - 120, kButtonTop,
                   kButtonWidth, kButtonHeight);
  imgCancel.Move(kFormWidth / 2 + 120, kButtonTop, kButtonWidth, kButtonHeight);
  SetKeyPreview(true);
  Field("miHorizontalExtent", miHorizontalExtent);
  On("lblSelectAll", "Click", &frmAddressBook::lblSelectAll_Click);
  On("lblDeselectAll", "Click", &frmAddressBook::lblDeselectAll_Click);
  On("imgContinue", "Click", &frmAddressBook::imgContinue_Click);
  On("imgCancel", "Click", &frmAddressBook::imgCancel_Click);
}

void frmAddressBook::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  ShowButtonState(s, imgContinue, kContinueButton, kPictureNormal);
  ShowButtonState(s, imgCancel, kCancelButton, kPictureNormal);
  StringArray emails;
  msErrCode.clear();
  msErrText.clear();
  if (!ExtAPI_->GetAddressBook(s.gsSiteUrl, s.gsAuthCode, emails, msErrCode,
                               msErrText)) {
    lblEmptyBuddys.SetVisible(true);
    lstEmailList.SetVisible(false);
    lblEmailListText.SetVisible(false);
    lblSelectAll.SetVisible(false);
    lblDeselectAll.SetVisible(false);
    imgCancel.SetVisible(false);
    imgContinue.SetLeft((Width() - imgContinue.Width()) / 2);
    return;
  }
  int longest = 0;
  for (const std::string& email : emails) {
    lstEmailList.AddItem(email);
    longest =
        std::max(longest, host().TextWidth(email + "  ", lstEmailList.font()));
  }
  miHorizontalExtent = longest / kTwipsPerPixel + kExtentSlack;
}

void frmAddressBook::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    Unload();
  }
}

void frmAddressBook::CheckAll(bool value) {
  for (int i = 0; i < lstEmailList.ListCount(); ++i) {
    lstEmailList.SetSelected(i, value);
  }
}

void frmAddressBook::lblSelectAll_Click() {
  CheckAll(true);
}

void frmAddressBook::lblDeselectAll_Click() {
  CheckAll(false);
}

void frmAddressBook::imgContinue_Click() {
  if (!lstEmailList.Visible()) {
    Unload();
    return;
  }
  std::string joined;
  for (int i = 0; i < lstEmailList.ListCount(); ++i) {
    if (lstEmailList.Selected(i)) {
      joined += (joined.empty() ? "" : ",") + lstEmailList.List(i);
    }
  }
  if (joined.empty()) {
    host().MsgBox("Please select atleast one email id", kMbInformation,
                  app_.session().gsAppTitle);
    return;
  }
  if (auto* share = app_.forms().Find<frmShareInfo>()) {
    share->AppendRecipients(joined);
    share->txtTo.SetFocus();
  }
  Unload();
}

void frmAddressBook::imgCancel_Click() {
  Unload();
}

}  // namespace qbpd
