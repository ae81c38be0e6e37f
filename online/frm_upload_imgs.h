#ifndef QBPD_ONLINE_FRM_UPLOAD_IMGS_H_
#define QBPD_ONLINE_FRM_UPLOAD_IMGS_H_

#include "core/application.h"
#include "online/order_data.h"
#include "online/service_client.h"
#include "online/upload_ahead.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

// The transfer screen of every online action. RunUpload sends the photos of
// gcolOrderPhotos one request each (non-JPEG photos as JPEG copies made in
// the temp folder and removed when the run ends), shows the photo in work,
// the progress and two time estimates, and ends in the action's final step:
// the result page for an upload, ShareAlbum for a share, GetAlbumPhotos,
// PlaceOrder and ConfirmOrder for a print order. The whole run happens in
// Form_Activate; the cancel button and the timers run during the client's
// blocking calls.
class frmUploadImgs : public Form {
 public:
  static constexpr std::string_view kName = "frmUploadImgs";
  explicit frmUploadImgs(Application& app);
  ~frmUploadImgs() override;

  Label lblHeading{*this, "lblHeading"};
  Frame FraImageCont{*this, "FraImageCont"};
  PictureBox imgUpload{*this, "imgUpload"};
  Label lblCurrentPicCaption{*this, "lblCurrentPicCaption"};
  Label lblProgress{*this, "lblProgress"};
  Shape shpProgressBar{*this, "shpProgressBar"};
  Shape ImgProgressBar{*this, "ImgProgressBar"};
  Label lblPercentUploaded{*this, "lblPercentUploaded"};
  Label lblEstimateTimeCaption{*this, "lblEstimateTimeCaption"};
  Label lblConnectonType_Time{*this, "lblConnectonType_Time"};
  Label lblDSLConnection{*this, "lblDSLConnection"};
  PictureButton imgCancelconn{*this, "imgCancelconn"};
  Timer tmrUpload{*this, "tmrUpload"};
  Timer tmrCheck{*this, "tmrCheck"};

  ctlExtAPI& ExtAPI() { return *ExtAPI_; }

  // The estimate captions for `seconds` at each line speed.
  static std::string ModemCaption(long seconds);
  static std::string DslCaption(long seconds);
  // The caption of the photo in work: "&" doubled, shortened to fit 2010
  // twips when the name is `width` twips wide.
  static std::string PhotoCaption(const std::string& name, int width);
  // The upload address for one photo, unescaped, as the program builds it.
  static std::string UploadUrl(const std::string& site_address,
                               const std::string& auth_code,
                               const std::string& album_id,
                               const std::string& album_name,
                               const std::string& tag,
                               const std::string& file);

  // Hints the image library to convert ahead, into memory, the photos of
  // gdicAlbumPhotos that will go as JPEG copies; nothing is written.
  static void PrepareCopies(Application& app);

  // The print order to place after the upload (action 13): its lines,
  // ship-to and coupon state, as the order dialog leaves them.
  void TakeOrder(PrintOrderData order) { mOrder = std::move(order); }
  const PrintOrderData& Order() const { return mOrder; }

 protected:
  void Form_Activate() override;
  void Form_QueryUnload(int& Cancel, int UnloadMode) override;
  void Form_Unload(int& Cancel) override;

 private:
  // The actions, by giCurrentOperation.
  static constexpr int kUpload = 11;
  static constexpr int kShare = 12;
  static constexpr int kOrder = 13;
  // How many photos past the current one have their work made ahead.
  static constexpr int kPhotosAhead = 2;

  void RunUpload();
  // The work of photo `n` (`photo`), made ahead or now, on another core
  // while the window answers: nothing when the run closed meanwhile.
  std::optional<UploadAhead::Made> PreparePhoto(int n,
                                                const std::string& photo);
  // Asks for the work of the photos after `n` up to kPhotosAhead, in order,
  // stopping at a photo whose copy would take the name of `sending` or of a
  // copy still ahead.
  void AskAhead(int n, const std::string& sending);
  UploadAhead::Order OrderFor(int n, const std::string& photo) const;
  void ShowPhotoInWork(const UploadAhead::Made& made);
  void WorkOutEstimates(int n);
  void ShowEstimates();
  void UpdateUploadProgress();
  void FinishUpload();
  void FinishShare();
  void FinishOrder();
  // The end of an order that can't go on: `text` in a stop box, then the
  // window closes.
  void OrderFailed(const std::string& text);
  void tmrUpload_Timer();
  // The cancel step (the handler of tmrCheck, also called directly).
  void tmrCheck_Timer();
  void imgCancelconn_Click();
  void ResetShareValues();
  void RemoveCopies();
  long long FileSize(const std::string& path) const;
  void NormalPointer();

  Application& app_;
  std::unique_ptr<ctlExtAPI> ExtAPI_;
  long long mlTotalBytes = 0;
  long mlSeconds56k = 0;
  long mlSecondsDsl = 0;
  bool mbCancelRequested = false;
  bool mbFinished = false;
  bool mbLastFatal = false;
  std::string msErrCode;
  std::string msErrText;
  // The JPEG copies taken in this run; removed when it ends.
  std::set<std::string> mCopies;
  // The copies and thumbnails of the next photos, made on another core while
  // the current photo is sent. Nothing the engine can see changes: the files
  // are the ones it would make at the photo's turn, and what the run didn't
  // take is thrown away with it.
  UploadAhead mAhead;
  // The next photo whose work has not been asked for.
  int mNextToAsk = 1;
  // The paths that reached the service, in this run.
  std::vector<std::string> mSent;
  // Order only: the service's image id to photo number (gdicOrderIndex).
  TextDictionary mdicOrderIndex;
  // The order total of the last PlaceOrder (kept, never shown).
  double mdOrderTotal = 0;
  // Order only: the order the dialog handed over.
  PrintOrderData mOrder;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_FRM_UPLOAD_IMGS_H_
