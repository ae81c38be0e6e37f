#ifndef QBPD_ONLINE_SCRIPTED_SERVICE_CLIENT_H_
#define QBPD_ONLINE_SCRIPTED_SERVICE_CLIENT_H_

#include "online/service_client.h"
#include "platform/json_value.h"

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace qbpd {

class ScriptedHost;

// What every canned answer has: the result, the error outputs, and how long
// the call takes on the host's virtual clock. A call with `wait_ms` above 0
// advances the clock in small steps, so that timers fire and the script's
// "inside" steps (a cancel click) run under it; a cancel ends it at once with
// false, as the real client does.
struct ScriptedReply {
  bool ok = true;
  std::string errCode;
  std::string errText;
  long long wait_ms = 0;
};

struct LoginUserReply : ScriptedReply {
  StringArray session;
};
struct GetUserInfoReply : ScriptedReply {
  std::string accountType;
  StringArray profile, address, card;
};
struct GetPriceListReply : ScriptedReply {
  PriceTierDictionary prices;
  TextGrid rates;
};
struct GetAlbumListReply : ScriptedReply {
  TextGrid albums;
};
struct GetAddressBookReply : ScriptedReply {
  StringArray emails;
};
struct RegisterUserReply : ScriptedReply {
  StringArray result;
};
// `fatal` is given back on failure as well as on success.
struct UploadFileReply : ScriptedReply {
  std::string albumId, imageId;
  bool fatal = false;
};
struct ShareAlbumReply : ScriptedReply {
  std::string accepted;
};
struct GetAlbumPhotosReply : ScriptedReply {
  TextDictionary photos;
};
// Lines and index left empty give back what the caller handed in.
struct PlaceOrderReply : ScriptedReply {
  std::optional<PrintLineCollection> orderLines;
  std::optional<TextDictionary> orderIndex;
  TextGrid sizeTotals, freePrints, orderTax;
  std::string orderId, shipping;
  StringArray couponResult;
  double costOfPrints = 0;
  double orderTotal = 0;
};
struct ConfirmOrderReply : ScriptedReply {};
struct UpdateUserAddressReply : ScriptedReply {
  StringArray session;
};
// `ok` is the answer "a newer version is on offer".
struct GetUpgradeInfoReply : ScriptedReply {
  std::string downloadLocation, newVersion, fileSize, notes;
};
// With `content`, a successful reply writes it into the target folder under
// the last part of the URL's path, as the real client saves a download, and
// savedPath (when empty) names that file.
struct DownloadFileReply : ScriptedReply {
  std::string savedPath;
  std::optional<std::string> content;
};

// One call the double received, with its inputs by argument name (the names
// of the wire protocol: "site", "email", "authCode", "orderLines", ...).
// Arrays, grids and dictionaries are recorded in their wire shapes.
struct RecordedCall {
  std::string operation;
  JsonValue inputs;

  // An input as text: a text input as it stands, other shapes as compact
  // JSON; "" when the call had no such input.
  std::string Input(const std::string& name) const;
};

// A stand-in for the service client in tests of the forms: each operation
// answers with the next reply queued for it (or the default reply set for
// it), and every call is recorded. A call with no reply queued and no default
// ends the scripted run with a HostAbort that names the operation, as the
// scripted host does with anything the script didn't foresee.
class ScriptedServiceClient final : public ctlExtAPI {
 private:
  template <class Reply>
  struct Script {
    std::deque<Reply> queued;
    std::optional<Reply> fallback;
  };

 public:
  explicit ScriptedServiceClient(ScriptedHost& host);

  // --- the script -----------------------------------------------------------
  // Queues the answer to the next call of the operation the reply is named
  // after (a LoginUserReply answers LoginUser); SetDefault answers every call
  // of that operation for which nothing is queued.
  template <class Reply>
  void Queue(Reply reply) {
    std::get<Script<Reply>>(scripts_).queued.push_back(std::move(reply));
  }
  template <class Reply>
  void SetDefault(Reply reply) {
    std::get<Script<Reply>>(scripts_).fallback = std::move(reply);
  }

  // Replies queued and not yet taken, over all operations.
  size_t PendingReplies() const;
  // Called with each call as it is made, before it waits or answers.
  void OnCall(std::function<void(const RecordedCall&)> observer) {
    on_call_ = std::move(observer);
  }

  // --- what happened --------------------------------------------------------
  const std::vector<RecordedCall>& Calls() const { return calls_; }
  // The operations called, in order.
  std::vector<std::string> Operations() const;
  // How often CancelRequest was called.
  int CancelRequests() const { return cancel_requests_; }

  // --- ctlExtAPI ------------------------------------------------------------
  bool LoginUser(const std::string& site,
                 const std::string& email,
                 const std::string& password,
                 StringArray& session,
                 std::string& errCode,
                 std::string& errText) override;
  bool GetUserInfo(const std::string& site,
                   const std::string& authCode,
                   std::string& accountType,
                   StringArray& profile,
                   StringArray& address,
                   StringArray& card,
                   std::string& errCode,
                   std::string& errText) override;
  bool GetPriceList(const std::string& site,
                    PriceTierDictionary& prices,
                    TextGrid& rates,
                    std::string& errCode,
                    std::string& errText) override;
  bool GetAlbumList(const std::string& site,
                    const std::string& authCode,
                    TextGrid& albums,
                    std::string& errCode,
                    std::string& errText) override;
  bool GetAddressBook(const std::string& site,
                      const std::string& authCode,
                      StringArray& emails,
                      std::string& errCode,
                      std::string& errText) override;
  bool RegisterUser(const std::string& site,
                    const StringArray& fields,
                    StringArray& result,
                    std::string& errCode,
                    std::string& errText) override;
  bool UploadFile(const std::string& url,
                  const std::string& filePath,
                  std::string& errCode,
                  std::string& errText,
                  const std::string& fieldName,
                  std::string& albumId,
                  std::string& imageId,
                  bool& fatal) override;
  bool ShareAlbum(const std::string& site,
                  const std::string& authCode,
                  const std::string& albumId,
                  const StringArray& emails,
                  const std::string& subject,
                  const std::string& message,
                  const std::string& access,
                  std::string& accepted,
                  std::string& errCode,
                  std::string& errText) override;
  bool GetAlbumPhotos(const std::string& site,
                      const std::string& authCode,
                      const std::string& albumId,
                      TextDictionary& photos,
                      std::string& errCode,
                      std::string& errText) override;
  bool PlaceOrder(const std::string& site,
                  const std::string& authCode,
                  const std::string& userCode,
                  const std::string& couponCode,
                  PrintLineCollection& orderLines,
                  TextDictionary& orderIndex,
                  TextGrid& sizeTotals,
                  TextGrid& freePrints,
                  std::string& orderId,
                  std::string& shipping,
                  TextGrid& orderTax,
                  StringArray& couponResult,
                  double& costOfPrints,
                  double& orderTotal,
                  std::string& errCode,
                  std::string& errText,
                  const StringArray* shipTo) override;
  bool ConfirmOrder(const std::string& site,
                    const std::string& authCode,
                    const std::string& orderId,
                    const std::string& couponCode,
                    std::string& errCode,
                    std::string& errText) override;
  bool UpdateUserAddress(const std::string& site,
                         const std::string& authCode,
                         const std::string& email,
                         const std::string& password,
                         const StringArray& address,
                         const StringArray& card,
                         StringArray& session,
                         std::string& errCode,
                         std::string& errText,
                         bool cardChanged,
                         const std::string& storedCardNumber) override;
  bool GetUpgradeInfo(const std::string& url,
                      const std::string& currentVersion,
                      std::string& downloadLocation,
                      std::string& newVersion,
                      std::string& fileSize,
                      std::string& notes) override;
  bool DownloadFile(const std::string& url,
                    const std::string& targetFolder,
                    std::string& savedPath,
                    std::string& errText) override;
  void CancelRequest(bool cancel) override;
  bool IsBusy() const override { return busy_; }
  bool IsCancelled() const override { return cancelled_; }

 private:
  // Records the call and takes its reply.
  template <class Reply>
  Reply Take(const char* operation, JsonValue inputs);
  // Runs the reply's wait; false when the call was cancelled (the error
  // outputs then say so).
  bool Wait(const ScriptedReply& reply,
            std::string& errCode,
            std::string& errText);
  // The common ending: false with the reply's error outputs, or true.
  static bool Finish(const ScriptedReply& reply,
                     std::string& errCode,
                     std::string& errText);

  ScriptedHost& host_;
  bool busy_ = false;
  bool cancelled_ = false;
  bool cancel_requested_ = false;
  int cancel_requests_ = 0;
  std::vector<RecordedCall> calls_;
  std::function<void(const RecordedCall&)> on_call_;
  std::tuple<Script<LoginUserReply>,
             Script<GetUserInfoReply>,
             Script<GetPriceListReply>,
             Script<GetAlbumListReply>,
             Script<GetAddressBookReply>,
             Script<RegisterUserReply>,
             Script<UploadFileReply>,
             Script<ShareAlbumReply>,
             Script<GetAlbumPhotosReply>,
             Script<PlaceOrderReply>,
             Script<ConfirmOrderReply>,
             Script<UpdateUserAddressReply>,
             Script<GetUpgradeInfoReply>,
             Script<DownloadFileReply>>
      scripts_;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_SCRIPTED_SERVICE_CLIENT_H_
