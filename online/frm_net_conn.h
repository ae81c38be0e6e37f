#ifndef QBPD_ONLINE_FRM_NET_CONN_H_
#define QBPD_ONLINE_FRM_NET_CONN_H_

#include "core/application.h"
#include "online/order_data.h"
#include "online/service_client.h"
#include "platform/forms/control_array.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <memory>
#include <string>
#include <string_view>

namespace qbpd {

// The connection window: logs in when the session has no code, then runs
// the preparation calls of the action in hand (giCurrentOperation) and
// hands over to the action's first form. Its whole work runs in
// Form_Activate, inside the client's blocking calls; the cancel button and
// Timer1 (the five squares) run re-entrantly meanwhile.
class frmNetConn : public Form {
 public:
  static constexpr std::string_view kName = "frmNetConn";
  static constexpr int kSquares = 5;
  explicit frmNetConn(Application& app);

  Label lblLogin{*this, "lblLogin"};
  Label lblUserEmail{*this, "lblUserEmail"};
  // Takes lblUserEmail's place when the text is wider than the window.
  Label lblUserEmailWrap{*this, "lblUserEmailWrap"};
  PictureBox Image1{*this, "Image1"};
  ControlArray<Shape> shpProgress{*this, "shpProgress"};
  PictureButton imgCancel{*this, "imgCancel"};
  Timer Timer1{*this, "Timer1"};

  ctlExtAPI& ExtAPI() { return *ExtAPI_; }
  // A print order's account records and price data, fetched by the
  // preparations, handed over to the order dialog (once).
  PrintOrderData TakeOrderData() { return std::move(mOrderData); }

 protected:
  void Form_Load() override;
  void Form_Activate() override;
  void Form_QueryUnload(int& Cancel, int UnloadMode) override;

 private:
  void StartOnlineWorker();
  void UploadWorker();
  void ShareWorker();
  void OrderWorker();
  // Hands over to the action's form `next` (frmUploadAlbumInfm,
  // frmShareInfo, frmOrdPrints): steps 5 and 6 of the preparations.
  void HandOver(std::string_view next);
  // The failure path of the preparations: `text` goes to the login form, or
  // into a plain box after a sign-up.
  void WorkerFailed(const std::string& text);
  bool AfterCall(bool ok, const char* when_silent = "");
  // The photos of the selection that still exist, in gcolOrderPhotos;
  // those that are gone leave the selection and set file gone.
  void CollectOrderPhotos();
  void NoPhotosLeft();
  void imgCancel_Click();
  void Timer1_Timer();
  // Steps 1 to 3 of a cancel click; false when the click ends there.
  bool BeginCancel();

  Application& app_;
  std::unique_ptr<ctlExtAPI> ExtAPI_;
  std::string msErrCode;
  std::string msErrText;
  bool mbCancelPending = false;
  bool mbFinished = false;
  bool mbHandingOver = false;
  bool mbFileGone = false;
  int miAnimationStep = -1;
  PrintOrderData mOrderData;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_FRM_NET_CONN_H_
