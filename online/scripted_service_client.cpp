#include "online/scripted_service_client.h"

#include "online/service_json.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/scripted_host.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace qbpd {

namespace {

// The clock moves in steps this long while a slow call waits, so that timers
// fire close to their due times and a cancel is noticed at once.
constexpr long long kWaitStepMs = 10;

constexpr char kCancelledText[] = "The request was cancelled.";

JsonValue Inputs(std::initializer_list<JsonValue::Member> members) {
  JsonValue out = JsonValue::Object();
  for (const auto& [name, value] : members) {
    out.Set(name, value);
  }
  return out;
}

}  // namespace

std::string RecordedCall::Input(const std::string& name) const {
  const JsonValue* v = inputs.Find(name);
  if (v == nullptr) {
    return "";
  }
  if (v->is_array() || v->is_object()) {
    return SerializeJson(*v);
  }
  return v->AsText();
}

ScriptedServiceClient::ScriptedServiceClient(ScriptedHost& host)
    : host_(host) {}

size_t ScriptedServiceClient::PendingReplies() const {
  size_t count = 0;
  std::apply(
      [&](const auto&... script) { ((count += script.queued.size()), ...); },
      scripts_);
  return count;
}

std::vector<std::string> ScriptedServiceClient::Operations() const {
  std::vector<std::string> out;
  for (const RecordedCall& call : calls_) {
    out.push_back(call.operation);
  }
  return out;
}

template <class Reply>
Reply ScriptedServiceClient::Take(const char* operation, JsonValue inputs) {
  calls_.push_back(RecordedCall{operation, std::move(inputs)});
  if (on_call_) {
    on_call_(calls_.back());
  }
  Script<Reply>& script = std::get<Script<Reply>>(scripts_);
  if (!script.queued.empty()) {
    Reply reply = std::move(script.queued.front());
    script.queued.pop_front();
    return reply;
  }
  if (script.fallback) {
    return *script.fallback;
  }
  throw HostAbort(std::string("the service client was called (") + operation +
                  ") with no reply in the script");
}

bool ScriptedServiceClient::Wait(const ScriptedReply& reply,
                                 std::string& errCode,
                                 std::string& errText) {
  if (busy_) {
    // The real client refuses a second call while one waits; so does this.
    errCode = kErrServiceFailed;
    errText = "Another request of this connection is still running.";
    return false;
  }
  busy_ = true;
  cancelled_ = false;
  cancel_requested_ = false;
  long long waited = 0;
  while (waited < reply.wait_ms && !cancel_requested_) {
    long long step = std::min(kWaitStepMs, reply.wait_ms - waited);
    host_.Advance(step);
    waited += step;
  }
  busy_ = false;
  if (cancel_requested_) {
    cancelled_ = true;
    errCode.clear();
    errText = kCancelledText;
    return false;
  }
  return true;
}

bool ScriptedServiceClient::Finish(const ScriptedReply& reply,
                                   std::string& errCode,
                                   std::string& errText) {
  if (!reply.ok) {
    errCode = reply.errCode;
    errText = reply.errText;
  }
  return reply.ok;
}

void ScriptedServiceClient::CancelRequest(bool cancel) {
  ++cancel_requests_;
  if (!cancel) {
    return;
  }
  if (busy_) {
    cancel_requested_ = true;
  } else {
    cancelled_ = true;
  }
}

bool ScriptedServiceClient::LoginUser(const std::string& site,
                                      const std::string& email,
                                      const std::string& password,
                                      StringArray& session,
                                      std::string& errCode,
                                      std::string& errText) {
  auto reply = Take<LoginUserReply>(
      "LoginUser",
      Inputs({{"site", site}, {"email", email}, {"password", password}}));
  if (!Wait(reply, errCode, errText)) {
    return false;
  }
  if (reply.ok) {
    session = reply.session;
  }
  return Finish(reply, errCode, errText);
}

bool ScriptedServiceClient::GetUserInfo(const std::string& site,
                                        const std::string& authCode,
                                        std::string& accountType,
                                        StringArray& profile,
                                        StringArray& address,
                                        StringArray& card,
                                        std::string& errCode,
                                        std::string& errText) {
  auto reply = Take<GetUserInfoReply>(
      "GetUserInfo", Inputs({{"site", site}, {"authCode", authCode}}));
  if (!Wait(reply, errCode, errText)) {
    return false;
  }
  if (reply.ok) {
    accountType = reply.accountType;
    profile = reply.profile;
    address = reply.address;
    card = reply.card;
  }
  return Finish(reply, errCode, errText);
}

bool ScriptedServiceClient::GetPriceList(const std::string& site,
                                         PriceTierDictionary& prices,
                                         TextGrid& rates,
                                         std::string& errCode,
                                         std::string& errText) {
  auto reply = Take<GetPriceListReply>(
      "GetPriceList",
      Inputs({{"site", site}, {"priceTiers", PriceTiersJson(prices)}}));
  if (!Wait(reply, errCode, errText)) {
    return false;
  }
  if (reply.ok) {
    prices = reply.prices;
    rates = reply.rates;
  }
  return Finish(reply, errCode, errText);
}

bool ScriptedServiceClient::GetAlbumList(const std::string& site,
                                         const std::string& authCode,
                                         TextGrid& albums,
                                         std::string& errCode,
                                         std::string& errText) {
  auto reply = Take<GetAlbumListReply>(
      "GetAlbumList", Inputs({{"site", site}, {"authCode", authCode}}));
  if (!Wait(reply, errCode, errText)) {
    return false;
  }
  if (reply.ok) {
    albums = reply.albums;
  }
  return Finish(reply, errCode, errText);
}

bool ScriptedServiceClient::GetAddressBook(const std::string& site,
                                           const std::string& authCode,
                                           StringArray& emails,
                                           std::string& errCode,
                                           std::string& errText) {
  auto reply = Take<GetAddressBookReply>(
      "GetAddressBook", Inputs({{"site", site}, {"authCode", authCode}}));
  if (!Wait(reply, errCode, errText)) {
    return false;
  }
  if (reply.ok) {
    emails = reply.emails;
  }
  return Finish(reply, errCode, errText);
}

bool ScriptedServiceClient::RegisterUser(const std::string& site,
                                         const StringArray& fields,
                                         StringArray& result,
                                         std::string& errCode,
                                         std::string& errText) {
  auto reply = Take<RegisterUserReply>(
      "RegisterUser",
      Inputs({{"site", site}, {"fields", JsonValue::Strings(fields)}}));
  if (!Wait(reply, errCode, errText)) {
    return false;
  }
  if (reply.ok) {
    result = reply.result;
  }
  return Finish(reply, errCode, errText);
}

bool ScriptedServiceClient::UploadFile(const std::string& url,
                                       const std::string& filePath,
                                       std::string& errCode,
                                       std::string& errText,
                                       const std::string& fieldName,
                                       std::string& albumId,
                                       std::string& imageId,
                                       bool& fatal) {
  auto reply =
      Take<UploadFileReply>("UploadFile", Inputs({{"url", url},
                                                  {"filePath", filePath},
                                                  {"fieldName", fieldName},
                                                  {"albumId", albumId}}));
  if (!Wait(reply, errCode, errText)) {
    fatal = false;
    return false;
  }
  fatal = reply.fatal;
  if (reply.ok) {
    albumId = reply.albumId;
    imageId = reply.imageId;
  }
  return Finish(reply, errCode, errText);
}

bool ScriptedServiceClient::ShareAlbum(const std::string& site,
                                       const std::string& authCode,
                                       const std::string& albumId,
                                       const StringArray& emails,
                                       const std::string& subject,
                                       const std::string& message,
                                       const std::string& access,
                                       std::string& accepted,
                                       std::string& errCode,
                                       std::string& errText) {
  auto reply = Take<ShareAlbumReply>(
      "ShareAlbum", Inputs({{"site", site},
                            {"authCode", authCode},
                            {"albumId", albumId},
                            {"emails", JsonValue::Strings(emails)},
                            {"subject", subject},
                            {"message", message},
                            {"access", access}}));
  if (!Wait(reply, errCode, errText)) {
    return false;
  }
  if (reply.ok) {
    accepted = reply.accepted;
  }
  return Finish(reply, errCode, errText);
}

bool ScriptedServiceClient::GetAlbumPhotos(const std::string& site,
                                           const std::string& authCode,
                                           const std::string& albumId,
                                           TextDictionary& photos,
                                           std::string& errCode,
                                           std::string& errText) {
  auto reply = Take<GetAlbumPhotosReply>(
      "GetAlbumPhotos",
      Inputs({{"site", site}, {"authCode", authCode}, {"albumId", albumId}}));
  if (!Wait(reply, errCode, errText)) {
    return false;
  }
  if (reply.ok) {
    photos = reply.photos;
  }
  return Finish(reply, errCode, errText);
}

bool ScriptedServiceClient::PlaceOrder(const std::string& site,
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
                                       const StringArray* shipTo) {
  JsonValue inputs = Inputs({{"site", site},
                             {"authCode", authCode},
                             {"userCode", userCode},
                             {"couponCode", couponCode},
                             {"orderLines", PrintLinesJson(orderLines)},
                             {"orderIndex", DictionaryJson(orderIndex)}});
  if (shipTo != nullptr) {
    inputs.Set("shipTo", JsonValue::Strings(*shipTo));
  }
  auto reply = Take<PlaceOrderReply>("PlaceOrder", std::move(inputs));
  if (!Wait(reply, errCode, errText)) {
    return false;
  }
  if (reply.ok) {
    if (reply.orderLines) {
      orderLines = *reply.orderLines;
    }
    if (reply.orderIndex) {
      orderIndex = *reply.orderIndex;
    }
    sizeTotals = reply.sizeTotals;
    freePrints = reply.freePrints;
    orderId = reply.orderId;
    shipping = reply.shipping;
    orderTax = reply.orderTax;
    couponResult = reply.couponResult;
    costOfPrints = reply.costOfPrints;
    orderTotal = reply.orderTotal;
  }
  return Finish(reply, errCode, errText);
}

bool ScriptedServiceClient::ConfirmOrder(const std::string& site,
                                         const std::string& authCode,
                                         const std::string& orderId,
                                         const std::string& couponCode,
                                         std::string& errCode,
                                         std::string& errText) {
  auto reply = Take<ConfirmOrderReply>("ConfirmOrder",
                                       Inputs({{"site", site},
                                               {"authCode", authCode},
                                               {"orderId", orderId},
                                               {"couponCode", couponCode}}));
  if (!Wait(reply, errCode, errText)) {
    return false;
  }
  return Finish(reply, errCode, errText);
}

bool ScriptedServiceClient::UpdateUserAddress(
    const std::string& site,
    const std::string& authCode,
    const std::string& email,
    const std::string& password,
    const StringArray& address,
    const StringArray& card,
    StringArray& session,
    std::string& errCode,
    std::string& errText,
    bool cardChanged,
    const std::string& storedCardNumber) {
  auto reply = Take<UpdateUserAddressReply>(
      "UpdateUserAddress", Inputs({{"site", site},
                                   {"authCode", authCode},
                                   {"email", email},
                                   {"password", password},
                                   {"address", JsonValue::Strings(address)},
                                   {"card", JsonValue::Strings(card)},
                                   {"cardChanged", cardChanged},
                                   {"storedCardNumber", storedCardNumber}}));
  if (!Wait(reply, errCode, errText)) {
    return false;
  }
  if (reply.ok) {
    session = reply.session;
  }
  return Finish(reply, errCode, errText);
}

bool ScriptedServiceClient::GetUpgradeInfo(const std::string& url,
                                           const std::string& currentVersion,
                                           std::string& downloadLocation,
                                           std::string& newVersion,
                                           std::string& fileSize,
                                           std::string& notes) {
  auto reply = Take<GetUpgradeInfoReply>(
      "GetUpgradeInfo",
      Inputs({{"url", url}, {"currentVersion", currentVersion}}));
  std::string code;
  std::string text;
  if (!Wait(reply, code, text)) {
    return false;
  }
  downloadLocation = reply.downloadLocation;
  newVersion = reply.newVersion;
  fileSize = reply.fileSize;
  notes = reply.notes;
  return reply.ok;
}

bool ScriptedServiceClient::DownloadFile(const std::string& url,
                                         const std::string& targetFolder,
                                         std::string& savedPath,
                                         std::string& errText) {
  auto reply = Take<DownloadFileReply>(
      "DownloadFile", Inputs({{"url", url}, {"targetFolder", targetFolder}}));
  std::string code;
  if (!Wait(reply, code, errText)) {
    return false;
  }
  if (!reply.ok) {
    errText = reply.errText;
    return false;
  }
  savedPath = reply.savedPath;
  if (reply.content) {
    const std::string path_part = url.substr(0, url.find_first_of("?#"));
    const std::filesystem::path target =
        std::filesystem::path(targetFolder) /
        path_part.substr(path_part.find_last_of('/') + 1);
    std::ofstream out(target, std::ios::binary | std::ios::trunc);
    out << *reply.content;
    if (!out.flush()) {
      errText = "The download could not be written to " + target.string() + ".";
      return false;
    }
    if (savedPath.empty()) {
      savedPath = target.string();
    }
  }
  return true;
}

}  // namespace qbpd
