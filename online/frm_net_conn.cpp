#include "online/frm_net_conn.h"

#include "browser/frm_main_window.h"
#include "core/button_pictures.h"
#include "core/settings.h"
#include "online/client_factory.h"
#include "online/frm_login.h"
#include "online/online_common.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 4800;
constexpr int kFormHeight = 2520;
constexpr int kSquareSize = 240;
constexpr int kSquareGap = 120;
constexpr int kSquaresTop = 1380;
constexpr int kAnimationMs = 500;
constexpr int kPauseMs = 1000;
constexpr std::string_view kCancelButton = "25";
constexpr char kCentred = 2;
constexpr long kSquareColour = 0xC08040;

}  // namespace

frmNetConn::frmNetConn(Application& app)
    : Form(app.host(), std::string(kName)),
      app_(app),
      ExtAPI_(NewServiceClient(app)) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblLogin.Move(0, 300, kFormWidth, 300);
  lblLogin.SetAlignment(kCentred);
  lblLogin.SetFontBold(true);
  lblLogin.SetCaption("connecting to quillbay");
  lblUserEmail.Move(0, 720, kFormWidth, 255);
  lblUserEmail.SetAlignment(kCentred);
  lblUserEmailWrap.Move(240, 720, kFormWidth - 480, 510);
  lblUserEmailWrap.SetAlignment(kCentred);
  lblUserEmailWrap.SetWordWrap(true);
  lblUserEmailWrap.SetVisible(false);
  Image1.Move(0, 0, 0, 0);
  const int row = kSquares * kSquareSize + (kSquares - 1) * kSquareGap;
  for (int i = 0; i < kSquares; ++i) {
    Shape& square = i == 0 ? shpProgress[0] : shpProgress.Load(i);
    square.Move((kFormWidth - row) / 2 + i * (kSquareSize + kSquareGap),
                kSquaresTop, kSquareSize, kSquareSize);
    square.SetFilled(true);
    square.SetFillColor(kSquareColour);
    square.SetVisible(false);
  }
  imgCancel.Move((kFormWidth - 1200) / 2, 1860, 1200, 390);
  Timer1.SetInterval(kAnimationMs);
  Field("mbCancelPending", mbCancelPending);
  Field("mbFinished", mbFinished);
  Field("mbHandingOver", mbHandingOver);
  Field("mbFileGone", mbFileGone);
  Field("miAnimationStep", miAnimationStep);
  On("imgCancel", "Click", &frmNetConn::imgCancel_Click);
  On("Timer1", "Timer", &frmNetConn::Timer1_Timer);
}

void frmNetConn::Form_Load() {
  const Session& s = app_.session();
  Timer1.SetEnabled(true);
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  const std::string account = "account belonging to " + s.gsUserEmail;
  if (host().TextWidth(account, lblUserEmail.font()) > Width()) {
    lblUserEmail.SetCaption("");
    lblUserEmailWrap.SetCaption(account);
    lblUserEmailWrap.SetVisible(true);
  } else {
    lblUserEmail.SetCaption(account);
  }
}

void frmNetConn::Form_Activate() {
  Session& s = app_.session();
  ShowButtonState(s, imgCancel, kCancelButton, kPictureNormal);
  mbCancelPending = false;
  mbFinished = false;
  if (!s.gsAuthCode.empty()) {
    StartOnlineWorker();
    return;
  }
  StringArray session;
  msErrCode.clear();
  msErrText.clear();
  const bool ok =
      ExtAPI_->LoginUser(s.gsSiteUrl, s.gsUserEmail, s.gsUserPassword, session,
                         msErrCode, msErrText);
  if (ok) {
    s.gsPrevUserEmail = s.gsUserEmail;
    s.gsPrevPassword = s.gsUserPassword;
    if (mbCancelPending) {
      mbFinished = true;
      Unload();
      return;
    }
    s.gsAuthCode = session.size() > 0 ? session[0] : std::string();
    s.gsUserCode = session.size() > 1 ? session[1] : std::string();
    SettingsStore& settings = app_.settings();
    if (s.gbRememberLogin) {
      (void)settings.Write(kSettingsKey, "UserName", s.gsUserEmail);
      (void)settings.Write(kSettingsKey, "EncryptedPassword",
                           EncryptPassword(s.gsUserPassword));
      (void)settings.Write(kSettingsKey, "AutoLogin", "True");
    } else {
      (void)settings.Write(kSettingsKey, "AutoLogin", "False");
    }
    if (!mbCancelPending) {
      StartOnlineWorker();
    }
    return;
  }
  if (mbCancelPending) {
    // A cancelled login ends quietly: the timer closes the window once the
    // client has settled its cancel.
    return;
  }
  mbFinished = true;
  if (s.gsLoginOrigin != "L") {
    host().MsgBox(std::string(kServerProblemBox), kMbOk, s.gsAppTitle);
    Unload();
    return;
  }
  WorkerFailed(LoginFailureText(msErrCode, msErrText));
}

// After a service call: a cancel asked for meanwhile closes the window, and
// a failure shows its label (the connection's, the service's text, or
// `when_silent` when the service gave none). True when the preparation goes
// on.
bool frmNetConn::AfterCall(bool ok, const char* when_silent) {
  if (mbCancelPending) {
    mbFinished = true;
    Unload();
    return false;
  }
  if (!ok) {
    WorkerFailed(msErrCode == kErrNoConnection
                     ? std::string(kCheckConnectionLabel)
                 : msErrText.empty() ? std::string(when_silent)
                                     : msErrText);
    return false;
  }
  return true;
}

void frmNetConn::WorkerFailed(const std::string& text) {
  Session& s = app_.session();
  mbFinished = true;
  if (s.gsLoginOrigin == "R") {
    host().MsgBox(text, kMbOk, s.gsAppTitle);
    Unload();
    return;
  }
  Timer1.SetEnabled(false);
  Unload();
  auto& login = app_.forms().Get<frmLogin>();
  login.ShowError(text);
  login.EnableButtons(true);
  login.txtEmailAdd.SetText(s.gsUserEmail);
  login.txtPassword.SetText(s.gsUserPassword);
  login.Show(/*modal=*/true);
}

void frmNetConn::StartOnlineWorker() {
  switch (app_.session().giCurrentOperation) {
    case 11:
      UploadWorker();
      break;
    case 12:
      ShareWorker();
      break;
    case 13:
      OrderWorker();
      break;
    default:
      mbFinished = true;
      Unload();
      break;
  }
}

void frmNetConn::UploadWorker() {
  Session& s = app_.session();
  TextGrid albums;
  msErrCode.clear();
  msErrText.clear();
  const bool ok = ExtAPI_->GetAlbumList(s.gsSiteUrl, s.gsAuthCode, albums,
                                        msErrCode, msErrText);
  if (!AfterCall(ok)) {
    return;
  }
  s.gasAlbums = albums.ToRows();
  s.gdicAlbumPhotos.RemoveAll();
  for (int key : s.gdicSelectedPhotos.Keys()) {
    const std::string path = s.gdicSelectedPhotos.Item(key);
    if (FileExists(path)) {
      s.gdicAlbumPhotos.Add(key, path);
    } else {
      mbFileGone = true;
      s.gdicSelectedPhotos.Remove(key);
    }
  }
  if (s.gdicAlbumPhotos.Count() == 0) {
    NoPhotosLeft();
    return;
  }
  HandOver("frmUploadAlbumInfm");
}

void frmNetConn::CollectOrderPhotos() {
  Session& s = app_.session();
  s.gcolOrderPhotos = KeyedCollection<std::string>();
  for (int key : s.gdicSelectedPhotos.Keys()) {
    const std::string path = s.gdicSelectedPhotos.Item(key);
    if (FileExists(path)) {
      s.gcolOrderPhotos.Add(path, std::to_string(key));
    } else {
      mbFileGone = true;
      s.gdicSelectedPhotos.Remove(key);
    }
  }
}

void frmNetConn::ShareWorker() {
  Session& s = app_.session();
  std::string account_type;
  StringArray profile, address, card;
  msErrCode.clear();
  msErrText.clear();
  const bool ok =
      ExtAPI_->GetUserInfo(s.gsSiteUrl, s.gsAuthCode, account_type, profile,
                           address, card, msErrCode, msErrText);
  if (!AfterCall(ok)) {
    return;
  }
  s.gsAccountStatus = account_type;
  s.gsaUserName = profile;
  CollectOrderPhotos();
  if (s.gcolOrderPhotos.Count() == 0) {
    NoPhotosLeft();
    return;
  }
  HandOver("frmShareInfo");
}

void frmNetConn::OrderWorker() {
  Session& s = app_.session();
  CollectOrderPhotos();
  if (s.gcolOrderPhotos.Count() == 0) {
    NoPhotosLeft();
    return;
  }
  if (mbCancelPending) {
    return;
  }
  std::string account_type;
  StringArray profile, address, card;
  s.gsAccountStatus.clear();
  msErrCode.clear();
  msErrText.clear();
  bool ok = ExtAPI_->GetUserInfo(s.gsSiteUrl, s.gsAuthCode, account_type,
                                 profile, address, card, msErrCode, msErrText);
  if (!AfterCall(ok, "Unable to get user information")) {
    return;
  }
  s.gsAccountStatus = account_type;
  mOrderData = PrintOrderData();
  mOrderData.gsaUserName = profile;
  mOrderData.gsaUserAddress = address;
  mOrderData.gsaUserCard = card;
  mOrderData.gsaUserName.resize(5);
  mOrderData.gsaUserAddress.resize(8);
  mOrderData.gsaShipTo.resize(8);
  mOrderData.gsaUserCard.resize(5);
  PriceTierDictionary prices;
  TextGrid rates;
  msErrCode.clear();
  msErrText.clear();
  ok = ExtAPI_->GetPriceList(s.gsSiteUrl, prices, rates, msErrCode, msErrText);
  if (!AfterCall(ok, "Unable to connect the site")) {
    return;
  }
  mOrderData.gdicPriceTiers = std::move(prices);
  mOrderData.gsaShippingBands = std::move(rates);
  if (!s.gbUserCancelled) {
    HandOver("frmOrdPrints");
  }
}

void frmNetConn::NoPhotosLeft() {
  Session& s = app_.session();
  mbFinished = true;
  host().MsgBox("Selected photo(s) does not exist", kMbInformation,
                s.gsAppTitle);
  if (auto* main = app_.forms().Find<frmMainWindow>()) {
    main->RefreshCurrentFolder();
  }
  Unload();
}

void frmNetConn::HandOver(std::string_view next) {
  Session& s = app_.session();
  if (!app_.forms().IsRegistered(next)) {
    // The share and print-order forms come with their own work; until they
    // are part of the program the window ends here.
    mbFinished = true;
    Unload();
    return;
  }
  mbHandingOver = true;
  Form& form = app_.forms().Get(next);
  if (s.gbUserCancelled) {
    form.Unload();
    mbFinished = true;
    Unload();
    return;
  }
  mbFinished = true;
  Unload();
  Timer1.SetEnabled(false);
  form.Show(/*modal=*/true);
  mbCancelPending = false;
  if (mbFileGone) {
    if (auto* main = app_.forms().Find<frmMainWindow>()) {
      main->ClearSelectionMarks();
    }
    s.gdicSelectedPhotos.RemoveAll();
  }
  if (next == "frmShareInfo" && s.gbUserCancelled) {
    if (Form* login = app_.forms().Find("frmLogin")) {
      login->Unload();
    }
  }
}

bool frmNetConn::BeginCancel() {
  Session& s = app_.session();
  imgCancel.SetVisible(false);
  lblLogin.SetCaption("Disconnecting from Quillbay\xE2\x80\xA6");
  lblUserEmail.SetCaption("");
  s.gbUserCancelled = true;
  if (mbHandingOver) {
    Timer1.SetEnabled(false);
    return false;
  }
  return true;
}

void frmNetConn::imgCancel_Click() {
  if (!BeginCancel()) {
    return;
  }
  if (!ExtAPI_->IsBusy()) {
    host().Sleep(kPauseMs);
    Timer1.SetEnabled(false);
    Unload();
    return;
  }
  ExtAPI_->CancelRequest(true);
  mbCancelPending = true;
}

void frmNetConn::Form_QueryUnload(int& Cancel, int UnloadMode) {
  if (UnloadMode != kUnloadFromUser || mbFinished) {
    return;
  }
  // The close box acts as the cancel button; the window then goes now only
  // when no call is running.
  if (!BeginCancel()) {
    Cancel = 1;
    return;
  }
  if (!ExtAPI_->IsBusy()) {
    host().Sleep(kPauseMs);
    Timer1.SetEnabled(false);
    return;
  }
  Cancel = 1;
  ExtAPI_->CancelRequest(true);
  mbCancelPending = true;
}

void frmNetConn::Timer1_Timer() {
  if (mbCancelPending && ExtAPI_->IsCancelled()) {
    Timer1.SetEnabled(false);
    Unload();
    return;
  }
  ++miAnimationStep;
  if (miAnimationStep >= kSquares) {
    miAnimationStep = 0;
    for (int i = 0; i < kSquares; ++i) {
      shpProgress[i].SetVisible(false);
    }
  } else {
    shpProgress[miAnimationStep].SetVisible(true);
  }
}

}  // namespace qbpd
