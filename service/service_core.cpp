#include "service/service_core.h"

#include "service/checks.h"
#include "service/core_support.h"
#include "service/data_folder.h"
#include "service/db.h"
#include "service/html.h"
#include "service/pricing.h"
#include "service/request.h"
#include "service/schema.h"
#include "service/store_throttle.h"

#include <sodium.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd::service {

namespace {

using nlohmann::json;

constexpr size_t kSessionBytes = 32;

}  // namespace

PageResult NotFound(const char* what) {
  return {404, HtmlPage(what, "<p>There is nothing to show here.</p>")};
}

json Failure(const std::string& code) {
  return json{{"ok", false}, {"errCode", code}, {"errText", ErrorText(code)}};
}

namespace {

// On a data folder that several instances share, a photo being written
// ("*.part") may be another instance's: only one older than any upload
// takes is left over from a stop half-way.
constexpr std::chrono::seconds kSharedPartAge = std::chrono::hours(1);

}  // namespace

ServiceCore::ServiceCore(ServiceOptions options)
    : options_(std::move(options)) {
  if (sodium_init() < 0) {
    throw std::runtime_error("libsodium could not start");
  }
  const bool shared =
      options_.store ? options_.store->shared() : !options_.database.empty();
  PrepareDataFolder(options_.data_dir,
                    shared ? kSharedPartAge : std::chrono::seconds(0));
  mail_ = options_.mail ? options_.mail
          : options_.mail_relay.empty()
              ? std::shared_ptr<MailDelivery>(
                    MakeMaildirDelivery(options_.data_dir / "mail"))
              : std::shared_ptr<MailDelivery>(
                    MakeSmtpDelivery(options_.mail_relay));
  if (options_.store) {
    db_ = options_.store;
  } else if (!options_.database.empty()) {
    db_ = OpenPostgresDb(options_.database);
  } else {
    // SQLite gives its journal and shared-memory files the mode of the
    // database file, so a private database keeps them private too.
    MakePrivateFile(options_.data_dir / "service.db");
    db_ = OpenSqliteDb((options_.data_dir / "service.db").string());
  }
  PrepareSchema(*db_);
  account_throttle_ =
      MakeFailedLogins(*db_, "account", options_.account_throttle);
  address_throttle_ =
      MakeFailedLogins(*db_, "address", options_.address_throttle);
  Seed();
  if (options_.seed_demo) {
    SeedDemo();
  }
}

ServiceCore::~ServiceCore() = default;

std::int64_t ServiceCore::Now() const {
  if (options_.now) {
    return options_.now();
  }
  return std::chrono::duration_cast<std::chrono::seconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

void ServiceCore::Seed() {
  {
    auto seeded = db_->Prepare("SELECT value FROM meta WHERE key = 'seeded'");
    if (seeded.Step()) {
      return;
    }
  }
  Transaction transaction(*db_);
  // Instances that start together on one store seed it once: the first
  // marks it, and the others' marks wait for its commit and then find it.
  {
    auto mark = db_->Prepare(
        "INSERT INTO meta (key, value) VALUES ('seeded', '1') "
        "ON CONFLICT DO NOTHING RETURNING key");
    if (!mark.Step()) {
      return;
    }
  }
  struct TierRow {
    int size, lower, upper;
    const char* price;
  };
  static constexpr TierRow kTiers[] = {
      {1, 1, 24, "0.29"}, {1, 25, 99, "0.25"}, {1, 100, 9999, "0.19"},
      {2, 1, 24, "0.99"}, {2, 25, 99, "0.89"}, {2, 100, 9999, "0.79"},
      {3, 1, 24, "3.99"}, {3, 25, 99, "3.49"}, {3, 100, 9999, "2.99"},
      {4, 1, 24, "1.49"}, {4, 25, 99, "1.29"}, {4, 100, 9999, "1.09"},
  };
  for (const auto& tier : kTiers) {
    db_->Prepare(
           "INSERT INTO price_tiers (size, lower, upper, price) "
           "VALUES (?, ?, ?, ?)")
        .BindInt(1, tier.size)
        .BindInt(2, tier.lower)
        .BindInt(3, tier.upper)
        .Bind(4, tier.price)
        .Run();
  }
  struct BandRow {
    int lower, upper;
    const char* cost;
  };
  // The last row is the surcharge row.
  static constexpr BandRow kBands[] = {
      {1, 25, "2.99"}, {26, 50, "4.99"}, {51, 100, "6.99"}, {101, 0, "1.5"}};
  int position = 0;
  for (const auto& band : kBands) {
    db_->Prepare(
           "INSERT INTO shipping_bands (position, lower, upper, cost) "
           "VALUES (?, ?, ?, ?)")
        .BindInt(1, position++)
        .BindInt(2, band.lower)
        .BindInt(3, band.upper)
        .Bind(4, band.cost)
        .Run();
  }
  static constexpr std::pair<const char*, const char*> kTax[] = {
      {"CA", "7.25"}, {"NY", "4"},    {"TX", "6.25"}, {"WA", "6.5"},
      {"FL", "6"},    {"IL", "6.25"}, {"MA", "6.25"}, {"PA", "6"}};
  for (const auto& [state, percent] : kTax) {
    db_->Prepare("INSERT INTO tax (state, percent) VALUES (?, ?)")
        .Bind(1, state)
        .Bind(2, percent)
        .Run();
  }
  struct CouponRow {
    const char* code;
    int percent;
    const char* value;
    const char* min_order;
    int expired;
  };
  static constexpr CouponRow kCoupons[] = {{"SAVE10", 1, "10", "0", 0},
                                           {"FIVEOFF", 0, "5", "10", 0},
                                           {"OLD2001", 1, "20", "0", 1}};
  for (const auto& coupon : kCoupons) {
    db_->Prepare(
           "INSERT INTO coupons (code, percent, value, min_order, expired) "
           "VALUES (?, ?, ?, ?, ?)")
        .Bind(1, coupon.code)
        .BindInt(2, coupon.percent)
        .Bind(3, coupon.value)
        .Bind(4, coupon.min_order)
        .BindInt(5, coupon.expired)
        .Run();
  }
  db_->Prepare("INSERT INTO free_offers (size, quantity) VALUES (1, 10)").Run();
  transaction.Commit();
}

namespace {

// The password that earlier versions gave every demonstration account.
constexpr char kFormerDemoPassword[] = "demo1234";
constexpr std::size_t kDemoPasswordBytes = 6;

// Writes the demonstration account's sign-in into the data folder, readable
// by its owner only, replacing the file whole.
void WriteDemoAccountFile(const std::filesystem::path& folder,
                          const std::string& password) {
  const std::filesystem::path file = folder / kDemoAccountFile;
  const std::filesystem::path part =
      folder / (std::string(kDemoAccountFile) + ".part");
  std::filesystem::remove(part);
  const int fd =
      ::open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (fd < 0) {
    throw std::runtime_error("cannot write " + part.string());
  }
  const std::string text =
      "The demonstration account of this service:\n"
      "E-mail: " +
      std::string(kDemoEmail) + "\nPassword: " + password + "\n";
  const bool written = ::write(fd, text.data(), text.size()) ==
                           static_cast<ssize_t>(text.size()) &&
                       ::fsync(fd) == 0;
  ::close(fd);
  if (!written) {
    std::filesystem::remove(part);
    throw std::runtime_error("cannot write " + part.string());
  }
  std::filesystem::rename(part, file);
}

}  // namespace

void ServiceCore::SeedDemo() {
  const std::string password = options_.demo_password.empty()
                                   ? RandomHex(kDemoPasswordBytes)
                                   : options_.demo_password;
  std::optional<std::int64_t> existing;
  std::string existing_hash;
  {
    auto exists =
        db_->Prepare("SELECT id, password_hash FROM accounts WHERE email = ?");
    exists.Bind(1, kDemoEmail);
    if (exists.Step()) {
      existing = exists.Int(0);
      existing_hash = exists.Text(1);
    }
  }
  if (existing) {
    // A data folder of an earlier version gave the account a password that
    // anyone could know; it gets a password of its own.
    if (!PasswordMatches(existing_hash, kFormerDemoPassword)) {
      return;
    }
    // Of instances that start together, the one whose update finds the old
    // hash gives the new password.
    auto renew = db_->Prepare(
        "UPDATE accounts SET password_hash = ? WHERE id = ? AND "
        "password_hash = ? RETURNING id");
    renew.Bind(1, HashPassword(password))
        .Bind(2, *existing)
        .Bind(3, existing_hash);
    if (!renew.Step()) {
      return;
    }
    WriteDemoAccountFile(options_.data_dir, password);
    new_demo_password_ = password;
    return;
  }
  Transaction transaction(*db_);
  std::int64_t account = 0;
  {
    // Another instance may make the account first; then it is that one's.
    auto insert = db_->Prepare(
        "INSERT INTO accounts (email, password_hash, user_code, first_name, "
        "last_name, street1, city, state, zip, card_name, card_masked, "
        "card_month, card_year, card_zip) VALUES (?, ?, "
        "?, 'Dana', 'Demo', '1 Market Street', 'San Francisco', 'CA', "
        "'94105', 'Dana Demo', ?, '11', '2035', '94105') "
        "ON CONFLICT DO NOTHING RETURNING id");
    insert.Bind(1, kDemoEmail)
        .Bind(2, HashPassword(password))
        .Bind(3, RandomHex(8))
        .Bind(4, MaskCardNumber("4111111111111111"));
    if (!insert.Step()) {
      return;
    }
    account = insert.Int(0);
  }
  db_->Prepare(
         "INSERT INTO albums (account_id, name, created) VALUES (?, "
         "'Demo album', ?)")
      .Bind(1, account)
      .Bind(2, Now())
      .Run();
  WriteDemoAccountFile(options_.data_dir, password);
  transaction.Commit();
  new_demo_password_ = password;
}

std::optional<std::int64_t> ServiceCore::Authenticate(const std::string& code) {
  // A code from a URL may hold any bytes; one the service never gives out
  // is no session's, whichever store is asked.
  if (!IsPlainCode(code)) {
    return std::nullopt;
  }
  auto find =
      db_->Prepare("SELECT account_id, expires FROM sessions WHERE code = ?");
  find.Bind(1, code);
  if (!find.Step()) {
    return std::nullopt;
  }
  const std::int64_t account = find.Int(0);
  const std::int64_t now = Now();
  if (find.Int(1) <= now) {
    db_->Prepare("DELETE FROM sessions WHERE code = ?").Bind(1, code).Run();
    return std::nullopt;
  }
  db_->Prepare("UPDATE sessions SET expires = ? WHERE code = ?")
      .Bind(1, now + options_.session_seconds)
      .Bind(2, code)
      .Run();
  return account;
}

std::string ServiceCore::NewSession(std::int64_t account) {
  const std::string code = RandomHex(kSessionBytes);
  db_->Prepare("DELETE FROM sessions WHERE expires <= ?").Bind(1, Now()).Run();
  db_->Prepare(
         "INSERT INTO sessions (code, account_id, expires) VALUES (?, ?, ?)")
      .Bind(1, code)
      .Bind(2, account)
      .Bind(3, Now() + options_.session_seconds)
      .Run();
  return code;
}

std::optional<json> ServiceCore::Call(const std::string& operation,
                                      const json& request,
                                      const std::string& client,
                                      const std::string& base) {
  CheckRequestShape(operation, request);
  Lock lock(mutex_);
  if (operation == "LoginUser") {
    return LoginUser(request, client, lock);
  }
  if (operation == "RegisterUser") {
    return RegisterUser(request, lock);
  }
  if (operation == "GetPriceList") {
    return GetPriceList();
  }
  static const std::set<std::string> kWithSession = {
      "GetUserInfo",    "GetAlbumList", "GetAddressBook", "ShareAlbum",
      "GetAlbumPhotos", "PlaceOrder",   "ConfirmOrder",   "UpdateUserAddress"};
  if (!kWithSession.contains(operation)) {
    return std::nullopt;
  }
  const auto account = Authenticate(Text(request, "authCode"));
  if (!account) {
    return Failure(kSessionCode);
  }
  if (operation == "GetUserInfo") {
    return GetUserInfo(*account);
  }
  if (operation == "GetAlbumList") {
    return GetAlbumList(*account);
  }
  if (operation == "GetAddressBook") {
    return GetAddressBook(*account);
  }
  if (operation == "ShareAlbum") {
    return ShareAlbum(*account, request, base, lock);
  }
  if (operation == "GetAlbumPhotos") {
    return GetAlbumPhotos(*account, request);
  }
  if (operation == "PlaceOrder") {
    return PlaceOrder(*account, request);
  }
  if (operation == "ConfirmOrder") {
    return ConfirmOrder(*account, request);
  }
  return UpdateUserAddress(*account, request, lock);
}

}  // namespace qbpd::service
