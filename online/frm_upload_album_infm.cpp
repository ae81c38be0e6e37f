#include "online/frm_upload_album_infm.h"

#include "core/button_pictures.h"
#include "core/settings.h"
#include "online/album_name.h"
#include "online/frm_upload_imgs.h"
#include "platform/forms/keys.h"

#include <chrono>
#include <cstdio>

namespace qbpd {
namespace {

constexpr int kFormWidth = 5700;
constexpr int kFormHeight = 3300;
constexpr int kFieldLeft = 2100;
constexpr int kFieldWidth = 3300;
constexpr std::string_view kContinueButton = "26";
constexpr std::string_view kCancelButton = "25";
constexpr char kNameRule[] = "Please enter valid characters for Album Name";
constexpr int kCopy = 3;
constexpr int kPaste = 22;
constexpr int kCut = 24;

}  // namespace

frmUploadAlbumInfm::frmUploadAlbumInfm(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblHeading.Move(240, 240, kFormWidth - 480, 300);
  lblHeading.SetFontBold(true);
  lblHeading.SetCaption("Upload to a new or existing album");
  optNewAlbumconn.Move(240, 900, 300, 255);
  lblNewAlbumconn.Move(540, 900, 1500, 255);
  lblNewAlbumconn.SetCaption("New album:");
  txtNewAlbumConn.Move(kFieldLeft, 870, kFieldWidth, 315);
  optAddtoprev.Move(240, 1440, 300, 255);
  lblPrevAlbumconn.Move(540, 1440, 1500, 255);
  lblPrevAlbumconn.SetCaption("Existing albums:");
  cboPrevAlbum.Move(kFieldLeft, 1410, kFieldWidth, 315);
  imgContinue.Move(kFieldLeft, 2340, 1200, 390);
  imgCancel.Move(kFieldLeft + 1440, 2340, 1200, 390);
  SetKeyPreview(true);
  On("lblNewAlbumconn", "Click", &frmUploadAlbumInfm::lblNewAlbumconn_Click);
  On("optNewAlbumconn", "Click", &frmUploadAlbumInfm::optNewAlbumconn_Click);
  On("lblPrevAlbumconn", "Click", &frmUploadAlbumInfm::PreviousAlbums_Click);
  On("optAddtoprev", "Click", &frmUploadAlbumInfm::PreviousAlbums_Click);
  On("txtNewAlbumConn", "GotFocus",
     &frmUploadAlbumInfm::txtNewAlbumConn_GotFocus);
  On("txtNewAlbumConn", "KeyPress",
     &frmUploadAlbumInfm::txtNewAlbumConn_KeyPress);
  On("imgContinue", "Click", &frmUploadAlbumInfm::imgContinue_Click);
  On("imgCancel", "Click", &frmUploadAlbumInfm::imgCancel_Click);
}

void frmUploadAlbumInfm::Form_Load() {
  Session& s = app_.session();
  // The JPEG copies the transfer screen will make are converted into
  // memory while the user chooses the album.
  mbContinued = false;
  frmUploadImgs::PrepareCopies(app_);
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  ShowButtonState(s, imgContinue, kContinueButton, kPictureNormal);
  ShowButtonState(s, imgCancel, kCancelButton, kPictureNormal);
  const auto& albums = s.gasAlbums;
  const bool none =
      albums.size() < 2 || albums[1].empty() || albums[1][0].empty();
  if (none) {
    cboPrevAlbum.SetEnabled(false);
    lblPrevAlbumconn.SetEnabled(false);
    optAddtoprev.SetEnabled(false);
    s.gsAlbumName = TrimSpaces(txtNewAlbumConn.Text());
  } else {
    const int list_width = static_cast<int>(cboPrevAlbum.Width());
    for (size_t i = 0; i < albums[1].size(); ++i) {
      const std::string& name = albums[1][i];
      const int width = host().TextWidth(name, cboPrevAlbum.font());
      cboPrevAlbum.AddItem(ShortenToWidth(name, width, list_width));
      cboPrevAlbum.SetItemData(cboPrevAlbum.NewIndex(),
                               static_cast<long>(i) + 1);
    }
    cboPrevAlbum.SetListIndex(0);
  }
  optNewAlbumconn.SetValue(true);
  const auto today = std::chrono::floor<std::chrono::days>(host().Now());
  const std::chrono::year_month_day date{today};
  char text[16];
  std::snprintf(text, sizeof text, "%02u/%02u",
                static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()));
  txtNewAlbumConn.SetText(std::string("album ") + text);
}

void frmUploadAlbumInfm::Form_Unload(int& Cancel) {
  (void)Cancel;
  if (!mbContinued) {
    app_.images().PrepareJpegCopies({});
  }
}

void frmUploadAlbumInfm::Form_Activate() {
  if (app_.session().gbUserCancelled) {
    Unload();
  }
}

void frmUploadAlbumInfm::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    imgCancel_Click();
    return;
  }
  if (KeyAscii == kKeyReturn && (ActiveControl() == &cboPrevAlbum ||
                                 ActiveControl() == &txtNewAlbumConn)) {
    KeyAscii = 0;
    imgContinue_Click();
  }
}

void frmUploadAlbumInfm::lblNewAlbumconn_Click() {
  optNewAlbumconn.SetValue(true);
  cboPrevAlbum.SetEnabled(false);
}

void frmUploadAlbumInfm::optNewAlbumconn_Click() {
  txtNewAlbumConn.SetFocus();
  cboPrevAlbum.SetEnabled(false);
}

void frmUploadAlbumInfm::PreviousAlbums_Click() {
  if (!optAddtoprev.Value()) {
    optAddtoprev.SetValue(true);
  }
  cboPrevAlbum.SetEnabled(true);
}

void frmUploadAlbumInfm::txtNewAlbumConn_GotFocus() {
  if (!optNewAlbumconn.Value()) {
    optNewAlbumconn.SetValue(true);
  }
}

void frmUploadAlbumInfm::RefuseName() {
  host().MsgBox(kNameRule, kMbInformation, app_.session().gsAppTitle);
  txtNewAlbumConn.SetFocus();
}

void frmUploadAlbumInfm::txtNewAlbumConn_KeyPress(EventArgs& e) {
  const int key = e.KeyAscii;
  if (key == kKeyBack || key == kCopy || key == kPaste || key == kCut) {
    return;
  }
  // A refused key is not taken back: the check on Continue sees it again.
  if (key < 256 && !IsAlbumNameCharacter(key)) {
    RefuseName();
  }
}

void frmUploadAlbumInfm::imgContinue_Click() {
  Session& s = app_.session();
  if (optNewAlbumconn.Value()) {
    const std::string name = TrimSpaces(txtNewAlbumConn.Text());
    if (name.empty()) {
      txtNewAlbumConn.SetText("untitled album");
      s.gsAlbumName = "untitled album";
    } else {
      if (!IsValidAlbumName(name)) {
        RefuseName();
        return;
      }
      s.gsAlbumName = name;
    }
  } else if (optAddtoprev.Value()) {
    if (cboPrevAlbum.Text().empty()) {
      host().MsgBox("Please select an Album name", kMbInformation,
                    s.gsAppTitle);
      cboPrevAlbum.SetFocus();
      return;
    }
    s.gsAlbumName = TrimSpaces(cboPrevAlbum.Text());
    const int index = cboPrevAlbum.ListIndex();
    if (index >= 0 && !s.gasAlbums.empty() &&
        static_cast<size_t>(index) < s.gasAlbums[0].size()) {
      s.gsAlbumId = s.gasAlbums[0][index];
    }
  }
  ShowButtonState(s, imgContinue, kContinueButton, kPictureNormal);
  mbContinued = true;
  Unload();
  app_.forms().Get("frmUploadImgs").Show(/*modal=*/true);
}

void frmUploadAlbumInfm::imgCancel_Click() {
  Unload();
}

}  // namespace qbpd
