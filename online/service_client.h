#ifndef QBPD_ONLINE_SERVICE_CLIENT_H_
#define QBPD_ONLINE_SERVICE_CLIENT_H_

#include "online/service_types.h"

#include <functional>
#include <memory>
#include <string>

namespace qbpd {

class Host;
class HttpTransport;

// Error codes that every caller knows.
inline constexpr char kErrNoConnection[] = "0";
inline constexpr char kErrServiceFailed[] = "9999";
inline constexpr char kErrNoSuchAccount[] = "2006";

// The service client: every exchange with the online service goes through one
// instance of it. Each online form holds its own instance; instances share
// nothing and hold no login state between calls: what an operation needs comes
// in through its arguments and what it learns goes out through its output
// arguments.
//
// Every operation but CancelRequest returns true on success; on false,
// errCode (a string of digits) and errText (a sentence for the user) say why:
// "0" no connection (made by the client itself), "9999" the service failed
// or gave an answer that can't be read, any other code as the service sent
// it. Outputs are written only on success (UploadFile's fatal flag and error
// outputs also on failure); on failure they stay as they were.
//
// An operation blocks its caller, but while it waits it keeps the host's
// events turning, so timers tick and a cancel button can be clicked. Such a
// click calls CancelRequest re-entrantly; the operation then returns false at
// once, IsBusy goes false and IsCancelled true. One operation runs at a time
// per instance; a second one started while the first waits fails with "9999".
//
// The operations are virtual so that a scripted double can stand in for the
// real client in tests of the forms.
class ctlExtAPI {  // NOLINT(readability-identifier-naming)
 public:
  virtual ~ctlExtAPI() = default;

  // Logs in. session(0) is the session code, session(1) the user code.
  virtual bool LoginUser(const std::string& site,
                         const std::string& email,
                         const std::string& password,
                         StringArray& session,
                         std::string& errCode,
                         std::string& errText) = 0;

  // The account's status word ("FUL" or "LTE"), its profile (0 e-mail, 1
  // first name, 2 last name; five cells), address (eight cells: title, first
  // name, last name, street 1, street 2, city, state, zip) and card (five
  // cells: name, masked number, month counted from 0, year, billing zip).
  virtual bool GetUserInfo(const std::string& site,
                           const std::string& authCode,
                           std::string& accountType,
                           StringArray& profile,
                           StringArray& address,
                           StringArray& card,
                           std::string& errCode,
                           std::string& errText) = 0;

  // The price tiers per size number and the shipping bands (rows of lower
  // quantity, upper quantity, cost; the last row is the surcharge row).
  virtual bool GetPriceList(const std::string& site,
                            PriceTierDictionary& prices,
                            TextGrid& rates,
                            std::string& errCode,
                            std::string& errText) = 0;

  // The albums: (0, i) the id and (1, i) the name of album i; (1, 0) empty
  // means that the user has no album.
  virtual bool GetAlbumList(const std::string& site,
                            const std::string& authCode,
                            TextGrid& albums,
                            std::string& errCode,
                            std::string& errText) = 0;

  // The addresses of the account's address book; false when it is empty.
  virtual bool GetAddressBook(const std::string& site,
                              const std::string& authCode,
                              StringArray& emails,
                              std::string& errCode,
                              std::string& errText) = 0;

  // Makes an account from the sign-up fields (0 first name, 1 last name, 2
  // e-mail, 3 password, 4-8 street 1, street 2, city, state, zip, 9 phone,
  // 11 name on card, 12 number, 13-14 expiry month and year, 15 billing zip).
  // result(0) is the new session code.
  virtual bool RegisterUser(const std::string& site,
                            const StringArray& fields,
                            StringArray& result,
                            std::string& errCode,
                            std::string& errText) = 0;

  // Posts one file to `url` (built by the program without escaping; the
  // client escapes its query values) in the form field `fieldName`. albumId
  // is the album that now holds the photo and imageId the service's id for
  // it. fatal says that further files need not be tried; it is true on a
  // lost connection ("0").
  virtual bool UploadFile(const std::string& url,
                          const std::string& filePath,
                          std::string& errCode,
                          std::string& errText,
                          const std::string& fieldName,
                          std::string& albumId,
                          std::string& imageId,
                          bool& fatal) = 0;

  // Shares an album; accepted is the comma-separated list of the addresses
  // that the service took, empty when none was valid. access is "1" for full
  // access, "0" for restricted.
  virtual bool ShareAlbum(const std::string& site,
                          const std::string& authCode,
                          const std::string& albumId,
                          const StringArray& emails,
                          const std::string& subject,
                          const std::string& message,
                          const std::string& access,
                          std::string& accepted,
                          std::string& errCode,
                          std::string& errText) = 0;

  // The photos that the album holds, keyed by image id (item: the photo's
  // position in the album); replaces what `photos` held.
  virtual bool GetAlbumPhotos(const std::string& site,
                              const std::string& authCode,
                              const std::string& albumId,
                              TextDictionary& photos,
                              std::string& errCode,
                              std::string& errText) = 0;

  // Quotes an order. The print lines and the order index go in and come back
  // (the lines priced); the service answers with the per-size totals (4 x 3:
  // quantity, unit price, amount), the free prints (rows of quantity, value,
  // size text), a new order number, the shipping amount, the tax (one row:
  // state, percent, amount), the coupon result (0 code, 1 percent or refusal
  // message, 2 discount, 3 "1" applied or "0" refused), the cost of prints and
  // the order total. `shipTo` (eight cells, laid out like the address) is
  // given only when the order ships to an address that isn't the account's;
  // nullptr is the call without it.
  virtual bool PlaceOrder(const std::string& site,
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
                          const StringArray* shipTo) = 0;

  // Makes a quoted order final.
  virtual bool ConfirmOrder(const std::string& site,
                            const std::string& authCode,
                            const std::string& orderId,
                            const std::string& couponCode,
                            std::string& errCode,
                            std::string& errText) = 0;

  // Writes the account's address and, when cardChanged, its card.
  // session(0) is the new session code, which replaces the old one.
  // storedCardNumber is the number on file as the program knows it (masked).
  virtual bool UpdateUserAddress(const std::string& site,
                                 const std::string& authCode,
                                 const std::string& email,
                                 const std::string& password,
                                 const StringArray& address,
                                 const StringArray& card,
                                 StringArray& session,
                                 std::string& errCode,
                                 std::string& errText,
                                 bool cardChanged,
                                 const std::string& storedCardNumber) = 0;

  // Reads the upgrade description at `url`; true when it names a version
  // newer than `currentVersion`. The outputs are the download location, the
  // version on offer, its size and its notes (filled whenever the file could
  // be read). A file that can't be fetched or read gives false.
  virtual bool GetUpgradeInfo(const std::string& url,
                              const std::string& currentVersion,
                              std::string& downloadLocation,
                              std::string& newVersion,
                              std::string& fileSize,
                              std::string& notes) = 0;

  // Fetches the file at `url` into `targetFolder` under the last part of the
  // URL's path; the file appears whole or not at all. savedPath is where it
  // went; errText says why it failed.
  virtual bool DownloadFile(const std::string& url,
                            const std::string& targetFolder,
                            std::string& savedPath,
                            std::string& errText) = 0;

  // Asks the running operation to stop (`cancel` is always true); returns at
  // once. With nothing running, IsCancelled simply becomes true.
  virtual void CancelRequest(bool cancel) = 0;

  // An operation of this instance is running.
  virtual bool IsBusy() const = 0;
  // The operation that CancelRequest was aimed at has stopped. A new
  // operation clears it.
  virtual bool IsCancelled() const = 0;
};

// Makes the client's transport, once, at its first call; the transport then
// stays, so that its connections are used again.
using HttpTransportFactory = std::function<std::unique_ptr<HttpTransport>()>;

// The real client: JSON over HTTP as the service protocol describes, pumping
// `host`'s events while it waits. Without a factory it uses libcurl.
std::unique_ptr<ctlExtAPI> MakeServiceClient(
    Host& host,
    HttpTransportFactory transport_factory = nullptr);

// How the program builds every data operation's address: the site, a "/" and
// the operation's name.
std::string OperationUrl(const std::string& site, const std::string& operation);

// The upload address as the program builds it, with the values of its query
// percent-encoded: the query is split at the program's own keys (authcode,
// numimages, albumid, albumname, sourcecode, file), so that an album name or a
// path holding "&", "=", "+", "#" or blanks keeps its meaning. The "file"
// value is the rest of the text. An address without a query is left as it is.
std::string EncodeUploadUrl(const std::string& url);

}  // namespace qbpd

#endif  // QBPD_ONLINE_SERVICE_CLIENT_H_
