#ifndef QBPD_SERVICE_SERVICE_CORE_H_
#define QBPD_SERVICE_SERVICE_CORE_H_

#include "service/login_throttle.h"
#include "service/mail_delivery.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>

namespace qbpd::service {

class Db;

// A request that does not have the shape of the protocol.
class BadRequest : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The demonstration account's address, and the file in the data folder
// (mode 0600) that tells its password.
inline constexpr char kDemoEmail[] = "demo@quillbay.test";
inline constexpr char kDemoAccountFile[] = "demo-account.txt";

struct ServiceOptions {
  // The photos, the mail folder and, without `database`, the SQLite store.
  std::filesystem::path data_dir;
  // A PostgreSQL database ("postgresql://..." or libpq's "key=value" words)
  // that several instances share, each with `data_dir` on one shared
  // folder; when empty, the store is the SQLite file in `data_dir`.
  std::string database;
  // Takes the place of both (tests).
  std::shared_ptr<Db> store;
  // Adds the demonstration account when it is missing. Its password is
  // `demo_password`, or a random one when that is empty; either way it is
  // written to kDemoAccountFile in the data folder.
  bool seed_demo = false;
  std::string demo_password;
  std::size_t max_upload_bytes = 50u * 1024 * 1024;
  std::int64_t session_seconds = 8 * 60 * 60;
  std::string upgrade_version = "1.1.0";
  // The upgrade file offered: this file, read at each download; when empty,
  // a small installer script made from upgrade_version.
  std::string upgrade_file;
  // The detached signature (base64) published beside the upgrade file; none
  // is published when empty.
  std::string upgrade_signature;
  // Unix seconds; the system clock when empty.
  std::function<std::int64_t()> now;
  // Whether `password` is the one whose hash is `hash`; libsodium's check
  // when empty. It runs outside the service's lock: it is slow on purpose.
  std::function<bool(const std::string& hash, const std::string& password)>
      password_check;
  // Failed logins per account and per client address.
  ThrottlePolicy account_throttle;
  ThrottlePolicy address_throttle{.free_failures = 10, .lock_after = 50};
  // Where share invitations go: an SMTP relay ("smtp://host:port"); when
  // empty, the maildir "mail" in the data folder.
  std::string mail_relay;
  // Takes the place of both (tests).
  std::shared_ptr<MailDelivery> mail;
};

struct PageResult {
  int status = 200;
  std::string html;
};

struct PhotoFile {
  std::filesystem::path path;
  std::string mime;
};

// The answer to a request for one stored photo: its file, or the page that
// refuses it (403 without a live session, 404 for a photo that is unknown or
// not the account's).
struct PhotoAnswer {
  std::optional<PhotoFile> file;
  PageResult refusal;
};

// The online service without its transport: the store, the operations, the
// upload and the pages. Every public member may be called from several
// threads; calls are serialised on one lock. Several instances may share
// one store (ServiceOptions::database): everything they must agree on
// (sessions, ids, failed logins) lives in it.
class ServiceCore {
 public:
  // Opens (and on first use seeds) the data folder; throws on failure.
  explicit ServiceCore(ServiceOptions options);
  ServiceCore(const ServiceCore&) = delete;
  ServiceCore& operator=(const ServiceCore&) = delete;
  ~ServiceCore();

  // One data operation: the request object in, the response envelope out.
  // `client` is the address the request came from ("" when unknown).
  // Throws BadRequest for a request of the wrong shape; an unknown operation
  // gives std::nullopt.
  // `base` is the scheme, host and port the client used; the links of
  // share invitations start with it.
  std::optional<nlohmann::json> Call(const std::string& operation,
                                     const nlohmann::json& request,
                                     const std::string& client = "",
                                     const std::string& base = "");

  // One uploaded photo with the query values of the upload URL.
  nlohmann::json Upload(const std::map<std::string, std::string>& query,
                        const std::string& content);

  std::size_t max_upload_bytes() const { return options_.max_upload_bytes; }
  // The password that this start gave the demonstration account; empty when
  // it made none (no seeding, or the account was there already).
  const std::string& new_demo_password() const { return new_demo_password_; }

  PageResult HomePage();
  PageResult ForgotPasswordPage();
  PageResult AlbumPage(const std::string& album_id, const std::string& code);
  PageResult AddressBookPage(const std::string& album_id,
                             const std::string& code);
  PageResult OrderStatusPage(const std::string& order_id,
                             const std::string& code);
  PhotoAnswer Photo(const std::string& image_id, const std::string& code);
  // What the recipients of a share see: the album behind the share's
  // token, and its photos by the same token (404 for anything else).
  PageResult SharedAlbumPage(const std::string& token);
  PhotoAnswer SharedPhoto(const std::string& token,
                          const std::string& image_id);

  // `base` is the scheme, host and port the client used.
  std::string UpgradeXml(const std::string& base) const;
  std::string UpgradeFile() const;
  // The upgrade file's signature; "" when none is published.
  const std::string& UpgradeSignature() const {
    return options_.upgrade_signature;
  }

 private:
  std::int64_t Now() const;
  std::optional<std::int64_t> Authenticate(const std::string& code);
  std::string NewSession(std::int64_t account);
  void Seed();
  void SeedDemo();

  // The operations that check or hash a password are given the lock, which
  // they give up while they do.
  using Lock = std::unique_lock<std::mutex>;
  bool PasswordIs(const std::string& hash,
                  const std::string& password,
                  Lock& lock);
  nlohmann::json LoginUser(const nlohmann::json& request,
                           const std::string& client,
                           Lock& lock);
  nlohmann::json RegisterUser(const nlohmann::json& request, Lock& lock);
  nlohmann::json GetUserInfo(std::int64_t account);
  nlohmann::json GetPriceList();
  nlohmann::json GetAlbumList(std::int64_t account);
  nlohmann::json GetAddressBook(std::int64_t account);
  nlohmann::json ShareAlbum(std::int64_t account,
                            const nlohmann::json& request,
                            const std::string& base,
                            Lock& lock);
  nlohmann::json GetAlbumPhotos(std::int64_t account,
                                const nlohmann::json& request);
  nlohmann::json PlaceOrder(std::int64_t account,
                            const nlohmann::json& request);
  nlohmann::json ConfirmOrder(std::int64_t account,
                              const nlohmann::json& request);
  nlohmann::json UpdateUserAddress(std::int64_t account,
                                   const nlohmann::json& request,
                                   Lock& lock);

  std::optional<std::int64_t> OwnAlbum(std::int64_t account,
                                       const std::string& album_id);
  // The album a page shows, when `code` is a session of its owner; otherwise
  // `refusal` holds the page to answer with.
  struct PageAlbum {
    std::int64_t account;
    std::int64_t id;
    std::string name;
  };
  std::optional<PageAlbum> AlbumOfPage(const std::string& album_id,
                                       const std::string& code,
                                       PageResult& refusal);

  ServiceOptions options_;
  std::shared_ptr<MailDelivery> mail_;
  std::string new_demo_password_;
  std::mutex mutex_;
  std::shared_ptr<Db> db_;
  std::unique_ptr<FailedLogins> account_throttle_;
  std::unique_ptr<FailedLogins> address_throttle_;
};

// The response envelope of a failure with the code's own sentence.
nlohmann::json Failure(const std::string& code);

// The page for a photo, album or order that is not the account's.
PageResult NotFound(const char* what);

// The upgrade file that `options` offer now: the bytes of upgrade_file, or
// the installer script made from upgrade_version; nothing when upgrade_file
// can't be read.
std::optional<std::string> UpgradeFileContent(const ServiceOptions& options);

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_SERVICE_CORE_H_
