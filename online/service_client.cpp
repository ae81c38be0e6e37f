#include "online/service_client.h"

#include "online/service_exchange.h"
#include "online/service_json.h"
#include "online/upgrade_info.h"
#include "platform/atomic_file.h"
#include "platform/forms/host.h"
#include "platform/http_transport.h"
#include "platform/json_value.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <optional>

namespace qbpd {

namespace {

constexpr char kUnreadableAnswer[] =
    "The service sent an answer that could not be read.";

// The upgrade file may be larger than any answer of the service.
constexpr size_t kMaxDownloadBytes = 512u * 1024 * 1024;

// Pads an array to at least `size` cells, as the program sizes its records.
void PadTo(StringArray& cells, size_t size) {
  if (cells.size() < size) {
    cells.resize(size);
  }
}

std::string LowerExtension(const std::string& path) {
  std::string ext = std::filesystem::path(path).extension().string();
  for (char& c : ext) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return ext;
}

std::string ContentTypeOf(const std::string& path) {
  std::string ext = LowerExtension(path);
  if (ext == ".jpg" || ext == ".jpeg" || ext == ".jpe") {
    return "image/jpeg";
  }
  if (ext == ".png") {
    return "image/png";
  }
  if (ext == ".bmp") {
    return "image/bmp";
  }
  if (ext == ".tif" || ext == ".tiff") {
    return "image/tiff";
  }
  return "application/octet-stream";
}

// The name a download is saved under: the last part of the URL's path.
std::string DownloadName(const std::string& url) {
  std::string path = url.substr(0, url.find_first_of("?#"));
  size_t scheme = path.find("://");
  if (scheme != std::string::npos) {
    size_t slash = path.find('/', scheme + 3);
    path = slash == std::string::npos ? "" : path.substr(slash);
  }
  std::string name = path.substr(path.find_last_of('/') + 1);
  if (name.empty() || name == "." || name == "..") {
    return "download";
  }
  return name;
}

// --- the client ----------------------------------------------------------

class ServiceClient final : public ctlExtAPI {
 public:
  ServiceClient(Host& host, HttpTransportFactory factory)
      : exchange_(host, std::move(factory)) {}

  bool LoginUser(const std::string& site,
                 const std::string& email,
                 const std::string& password,
                 StringArray& session,
                 std::string& errCode,
                 std::string& errText) override {
    JsonValue body = JsonValue::Object();
    body.Set("email", email);
    body.Set("password", password);
    StringArray new_session;
    return Call(site, "LoginUser", std::move(body), errCode, errText,
                [&](const JsonValue& env) {
                  if (!Optional(env, "session", [&](const JsonValue& v) {
                        return ReadStrings(v, new_session);
                      })) {
                    return false;
                  }
                  PadTo(new_session, 2);
                  session = std::move(new_session);
                  return true;
                });
  }

  bool GetUserInfo(const std::string& site,
                   const std::string& authCode,
                   std::string& accountType,
                   StringArray& profile,
                   StringArray& address,
                   StringArray& card,
                   std::string& errCode,
                   std::string& errText) override {
    JsonValue body = JsonValue::Object();
    body.Set("authCode", authCode);
    std::string type = accountType;
    StringArray new_profile = profile;
    StringArray new_address = address;
    StringArray new_card = card;
    return Call(site, "GetUserInfo", std::move(body), errCode, errText,
                [&](const JsonValue& env) {
                  if (!Optional(env, "accountType",
                                [&](const JsonValue& v) {
                                  return ReadText(v, type);
                                }) ||
                      !Optional(env, "profile",
                                [&](const JsonValue& v) {
                                  return ReadStrings(v, new_profile);
                                }) ||
                      !Optional(env, "address",
                                [&](const JsonValue& v) {
                                  return ReadStrings(v, new_address);
                                }) ||
                      !Optional(env, "card", [&](const JsonValue& v) {
                        return ReadStrings(v, new_card);
                      })) {
                    return false;
                  }
                  PadTo(new_profile, 5);
                  PadTo(new_address, 8);
                  PadTo(new_card, 5);
                  accountType = std::move(type);
                  profile = std::move(new_profile);
                  address = std::move(new_address);
                  card = std::move(new_card);
                  return true;
                });
  }

  bool GetPriceList(const std::string& site,
                    PriceTierDictionary& prices,
                    TextGrid& rates,
                    std::string& errCode,
                    std::string& errText) override {
    PriceTierDictionary new_prices = prices;
    TextGrid new_rates = rates;
    return Call(site, "GetPriceList", JsonValue::Object(), errCode, errText,
                [&](const JsonValue& env) {
                  if (!Optional(env, "priceTiers",
                                [&](const JsonValue& v) {
                                  return ReadPriceTiers(v, new_prices);
                                }) ||
                      !Optional(env, "shippingBands", [&](const JsonValue& v) {
                        return ReadGrid(v, new_rates);
                      })) {
                    return false;
                  }
                  prices = std::move(new_prices);
                  rates = std::move(new_rates);
                  return true;
                });
  }

  bool GetAlbumList(const std::string& site,
                    const std::string& authCode,
                    TextGrid& albums,
                    std::string& errCode,
                    std::string& errText) override {
    JsonValue body = JsonValue::Object();
    body.Set("authCode", authCode);
    TextGrid new_albums = albums;
    return Call(site, "GetAlbumList", std::move(body), errCode, errText,
                [&](const JsonValue& env) {
                  if (!Optional(env, "albums", [&](const JsonValue& v) {
                        return ReadGrid(v, new_albums);
                      })) {
                    return false;
                  }
                  // Callers read (1, 0) to learn that there is no album.
                  if (new_albums.Rows() < 2 || new_albums.Columns() < 1) {
                    new_albums.ReDim(2, std::max(new_albums.Columns(), 1),
                                     /*preserve=*/true);
                  }
                  albums = std::move(new_albums);
                  return true;
                });
  }

  bool GetAddressBook(const std::string& site,
                      const std::string& authCode,
                      StringArray& emails,
                      std::string& errCode,
                      std::string& errText) override {
    JsonValue body = JsonValue::Object();
    body.Set("authCode", authCode);
    StringArray new_emails = emails;
    return Call(site, "GetAddressBook", std::move(body), errCode, errText,
                [&](const JsonValue& env) {
                  if (!Optional(env, "emails", [&](const JsonValue& v) {
                        return ReadStrings(v, new_emails);
                      })) {
                    return false;
                  }
                  emails = std::move(new_emails);
                  return true;
                });
  }

  bool RegisterUser(const std::string& site,
                    const StringArray& fields,
                    StringArray& result,
                    std::string& errCode,
                    std::string& errText) override {
    JsonValue body = JsonValue::Object();
    body.Set("fields", JsonValue::Strings(fields));
    StringArray new_result = result;
    return Call(site, "RegisterUser", std::move(body), errCode, errText,
                [&](const JsonValue& env) {
                  if (!Optional(env, "result", [&](const JsonValue& v) {
                        return ReadStrings(v, new_result);
                      })) {
                    return false;
                  }
                  PadTo(new_result, 1);
                  result = std::move(new_result);
                  return true;
                });
  }

  bool UploadFile(const std::string& url,
                  const std::string& filePath,
                  std::string& errCode,
                  std::string& errText,
                  const std::string& fieldName,
                  std::string& albumId,
                  std::string& imageId,
                  bool& fatal) override {
    HttpRequest request;
    request.method = "POST";
    request.url = EncodeUploadUrl(url);
    request.file = HttpFilePart{fieldName, filePath, ContentTypeOf(filePath)};
    ServiceAnswer answer = Exchange(request, /*expect_envelope=*/true);
    if (!answer.ok) {
      if (answer.from_envelope) {
        // The service says whether further photos can succeed.
        const JsonValue* flag = answer.envelope.Find("fatal");
        fatal = flag != nullptr && flag->AsBool();
      } else {
        // A lost connection or a service that fails without its own answer
        // will fail the next photo too; a cancel or a file that can't be
        // read concerns this photo only.
        fatal = !answer.cancelled && !answer.local_failure;
      }
    }
    if (!answer.ok) {
      return Fail(answer, errCode, errText);
    }
    std::string new_album = albumId;
    std::string new_image;
    const JsonValue& env = answer.envelope;
    if (!Optional(env, "albumId",
                  [&](const JsonValue& v) { return ReadText(v, new_album); }) ||
        !Optional(env, "imageId",
                  [&](const JsonValue& v) { return ReadText(v, new_image); })) {
      fatal = true;
      errCode = kErrServiceFailed;
      errText = kUnreadableAnswer;
      return false;
    }
    albumId = std::move(new_album);
    imageId = std::move(new_image);
    const JsonValue* flag = env.Find("fatal");
    fatal = flag != nullptr && flag->AsBool();
    return true;
  }

  bool ShareAlbum(const std::string& site,
                  const std::string& authCode,
                  const std::string& albumId,
                  const StringArray& emails,
                  const std::string& subject,
                  const std::string& message,
                  const std::string& access,
                  std::string& accepted,
                  std::string& errCode,
                  std::string& errText) override {
    JsonValue body = JsonValue::Object();
    body.Set("authCode", authCode);
    body.Set("albumId", albumId);
    body.Set("emails", JsonValue::Strings(emails));
    body.Set("subject", subject);
    body.Set("message", message);
    body.Set("access", access);
    std::string new_accepted;
    return Call(site, "ShareAlbum", std::move(body), errCode, errText,
                [&](const JsonValue& env) {
                  if (!Optional(env, "accepted", [&](const JsonValue& v) {
                        return ReadText(v, new_accepted);
                      })) {
                    return false;
                  }
                  accepted = std::move(new_accepted);
                  return true;
                });
  }

  bool GetAlbumPhotos(const std::string& site,
                      const std::string& authCode,
                      const std::string& albumId,
                      TextDictionary& photos,
                      std::string& errCode,
                      std::string& errText) override {
    JsonValue body = JsonValue::Object();
    body.Set("authCode", authCode);
    body.Set("albumId", albumId);
    TextDictionary new_photos;
    return Call(site, "GetAlbumPhotos", std::move(body), errCode, errText,
                [&](const JsonValue& env) {
                  if (!Optional(env, "photos", [&](const JsonValue& v) {
                        return ReadDictionary(v, new_photos);
                      })) {
                    return false;
                  }
                  photos = std::move(new_photos);
                  return true;
                });
  }

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
                  const StringArray* shipTo) override {
    JsonValue body = JsonValue::Object();
    body.Set("authCode", authCode);
    body.Set("userCode", userCode);
    body.Set("couponCode", couponCode);
    body.Set("orderLines", PrintLinesJson(orderLines));
    body.Set("orderIndex", DictionaryJson(orderIndex));
    if (shipTo != nullptr) {
      body.Set("shipTo", JsonValue::Strings(*shipTo));
    }
    PrintLineCollection new_lines = orderLines;
    TextDictionary new_index = orderIndex;
    TextGrid new_totals = sizeTotals;
    TextGrid new_free = freePrints;
    std::string new_id = orderId;
    std::string new_shipping = shipping;
    TextGrid new_tax = orderTax;
    StringArray new_coupon = couponResult;
    double new_cost = costOfPrints;
    double new_total = orderTotal;
    return Call(
        site, "PlaceOrder", std::move(body), errCode, errText,
        [&](const JsonValue& env) {
          bool readable =
              Optional(env, "orderLines",
                       [&](const JsonValue& v) {
                         return ReadPrintLines(v, new_lines);
                       }) &&
              Optional(env, "orderIndex",
                       [&](const JsonValue& v) {
                         return ReadDictionary(v, new_index);
                       }) &&
              Optional(env, "sizeTotals",
                       [&](const JsonValue& v) {
                         return ReadGrid(v, new_totals);
                       }) &&
              Optional(
                  env, "freePrints",
                  [&](const JsonValue& v) { return ReadGrid(v, new_free); }) &&
              Optional(
                  env, "orderId",
                  [&](const JsonValue& v) { return ReadText(v, new_id); }) &&
              Optional(env, "shipping",
                       [&](const JsonValue& v) {
                         return ReadText(v, new_shipping);
                       }) &&
              Optional(
                  env, "orderTax",
                  [&](const JsonValue& v) { return ReadGrid(v, new_tax); }) &&
              Optional(env, "couponResult",
                       [&](const JsonValue& v) {
                         return ReadStrings(v, new_coupon);
                       }) &&
              Optional(env, "costOfPrints",
                       [&](const JsonValue& v) {
                         return ReadAmount(v, new_cost);
                       }) &&
              Optional(env, "orderTotal", [&](const JsonValue& v) {
                return ReadAmount(v, new_total);
              });
          if (!readable) {
            return false;
          }
          PadTo(new_coupon, 4);
          orderLines = std::move(new_lines);
          orderIndex = std::move(new_index);
          sizeTotals = std::move(new_totals);
          freePrints = std::move(new_free);
          orderId = std::move(new_id);
          shipping = std::move(new_shipping);
          orderTax = std::move(new_tax);
          couponResult = std::move(new_coupon);
          costOfPrints = new_cost;
          orderTotal = new_total;
          return true;
        });
  }

  bool ConfirmOrder(const std::string& site,
                    const std::string& authCode,
                    const std::string& orderId,
                    const std::string& couponCode,
                    std::string& errCode,
                    std::string& errText) override {
    JsonValue body = JsonValue::Object();
    body.Set("authCode", authCode);
    body.Set("orderId", orderId);
    body.Set("couponCode", couponCode);
    return Call(site, "ConfirmOrder", std::move(body), errCode, errText,
                [](const JsonValue&) { return true; });
  }

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
                         const std::string& storedCardNumber) override {
    JsonValue body = JsonValue::Object();
    body.Set("authCode", authCode);
    body.Set("email", email);
    body.Set("password", password);
    body.Set("address", JsonValue::Strings(address));
    body.Set("card", JsonValue::Strings(card));
    body.Set("cardChanged", cardChanged);
    body.Set("storedCardNumber", storedCardNumber);
    StringArray new_session = session;
    return Call(site, "UpdateUserAddress", std::move(body), errCode, errText,
                [&](const JsonValue& env) {
                  if (!Optional(env, "session", [&](const JsonValue& v) {
                        return ReadStrings(v, new_session);
                      })) {
                    return false;
                  }
                  PadTo(new_session, 1);
                  session = std::move(new_session);
                  return true;
                });
  }

  bool GetUpgradeInfo(const std::string& url,
                      const std::string& currentVersion,
                      std::string& downloadLocation,
                      std::string& newVersion,
                      std::string& fileSize,
                      std::string& notes) override {
    HttpRequest request;
    request.url = url;
    ServiceAnswer answer = Exchange(request, /*expect_envelope=*/false);
    if (!answer.ok) {
      return false;
    }
    std::optional<UpgradeOffer> offer =
        ReadUpgradeXml(answer.envelope.text(), url);
    if (!offer) {
      return false;
    }
    downloadLocation = offer->location;
    newVersion = offer->version;
    fileSize = offer->size;
    notes = offer->notes;
    return CompareVersions(offer->version, currentVersion) > 0;
  }

  bool DownloadFile(const std::string& url,
                    const std::string& targetFolder,
                    std::string& savedPath,
                    std::string& errText) override {
    std::error_code ec;
    if (!std::filesystem::is_directory(targetFolder, ec)) {
      errText = "The folder " + targetFolder + " does not exist.";
      return false;
    }
    HttpRequest request;
    request.url = url;
    request.max_response_bytes = kMaxDownloadBytes;
    ServiceAnswer answer = Exchange(request, /*expect_envelope=*/false);
    if (!answer.ok) {
      errText = answer.error_text;
      return false;
    }
    std::filesystem::path target =
        std::filesystem::path(targetFolder) / DownloadName(url);
    const std::string& data = answer.envelope.text();
    // The upgrade is a program that is started after the download.
    AtomicWrite how;
    how.mode = 0755;
    if (!WriteFileAtomically(target.string(), data.data(), data.size(), how)) {
      errText = "The download could not be written to " + target.string() + ".";
      return false;
    }
    savedPath = target.string();
    return true;
  }

  void CancelRequest(bool cancel) override {
    if (cancel) {
      exchange_.Cancel();
    }
  }

  bool IsBusy() const override { return exchange_.busy(); }
  bool IsCancelled() const override { return exchange_.cancelled(); }

 private:
  // Reads the member `name` of the envelope with `reader`; a missing member
  // leaves the output as it was.
  template <class Reader>
  static bool Optional(const JsonValue& envelope,
                       const char* name,
                       Reader reader) {
    const JsonValue* v = envelope.Find(name);
    return v == nullptr || v->is_null() || reader(*v);
  }

  template <class Apply>
  bool Call(const std::string& site,
            const std::string& operation,
            JsonValue body,
            std::string& errCode,
            std::string& errText,
            Apply apply) {
    HttpRequest request;
    request.method = "POST";
    request.url = OperationUrl(site, operation);
    request.headers.emplace_back("Content-Type", "application/json");
    request.headers.emplace_back("Accept", "application/json");
    request.body = SerializeJson(body);
    ServiceAnswer answer = Exchange(request, /*expect_envelope=*/true);
    if (!answer.ok) {
      return Fail(answer, errCode, errText);
    }
    if (!apply(answer.envelope)) {
      errCode = kErrServiceFailed;
      errText = kUnreadableAnswer;
      return false;
    }
    return true;
  }

  static bool Fail(const ServiceAnswer& answer,
                   std::string& errCode,
                   std::string& errText) {
    errCode = answer.error_code;
    errText = answer.error_text;
    return false;
  }

  ServiceAnswer Exchange(const HttpRequest& request, bool expect_envelope) {
    return exchange_.Send(request, expect_envelope);
  }

  ServiceExchange exchange_;
};

}  // namespace

std::unique_ptr<ctlExtAPI> MakeServiceClient(
    Host& host,
    HttpTransportFactory transport_factory) {
  return std::make_unique<ServiceClient>(host, std::move(transport_factory));
}

}  // namespace qbpd
