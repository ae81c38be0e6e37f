#include "service/service_core.h"

#include "service/checks.h"
#include "service/data_folder.h"
#include "service/db.h"
#include "service/html.h"
#include "service/pricing.h"
#include "service/request.h"

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

constexpr const char* kFailedCode = "9999";
constexpr const char* kSessionCode = "1001";
constexpr size_t kSessionBytes = 32;
constexpr size_t kFileNameBytes = 12;
constexpr int kMaxQuantity = 9999;

constexpr const char* kSchema = R"sql(
CREATE TABLE IF NOT EXISTS meta (key TEXT PRIMARY KEY, value TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS accounts (
  id INTEGER PRIMARY KEY,
  email TEXT NOT NULL UNIQUE COLLATE NOCASE,
  password_hash TEXT NOT NULL,
  user_code TEXT NOT NULL,
  title TEXT NOT NULL DEFAULT '',
  first_name TEXT NOT NULL, last_name TEXT NOT NULL,
  street1 TEXT NOT NULL DEFAULT '', street2 TEXT NOT NULL DEFAULT '',
  city TEXT NOT NULL DEFAULT '', state TEXT NOT NULL DEFAULT '',
  zip TEXT NOT NULL DEFAULT '', phone TEXT NOT NULL DEFAULT '',
  card_name TEXT NOT NULL DEFAULT '', card_masked TEXT NOT NULL DEFAULT '',
  card_month TEXT NOT NULL DEFAULT '', card_year TEXT NOT NULL DEFAULT '',
  card_zip TEXT NOT NULL DEFAULT '',
  free_used INTEGER NOT NULL DEFAULT 0);
CREATE TABLE IF NOT EXISTS sessions (
  code TEXT PRIMARY KEY,
  account_id INTEGER NOT NULL REFERENCES accounts(id),
  expires INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS albums (
  id INTEGER PRIMARY KEY,
  account_id INTEGER NOT NULL REFERENCES accounts(id),
  name TEXT NOT NULL, created INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS photos (
  id INTEGER PRIMARY KEY,
  album_id INTEGER NOT NULL REFERENCES albums(id),
  stored_name TEXT NOT NULL, original_name TEXT NOT NULL,
  mime TEXT NOT NULL, bytes INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS address_book (
  account_id INTEGER NOT NULL REFERENCES accounts(id),
  email TEXT NOT NULL COLLATE NOCASE,
  UNIQUE (account_id, email));
CREATE TABLE IF NOT EXISTS shares (
  id INTEGER PRIMARY KEY,
  album_id INTEGER NOT NULL REFERENCES albums(id),
  access TEXT NOT NULL, subject TEXT NOT NULL, message TEXT NOT NULL,
  accepted TEXT NOT NULL, created INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS price_tiers (
  size INTEGER NOT NULL, lower INTEGER NOT NULL, upper INTEGER NOT NULL,
  price TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS shipping_bands (
  position INTEGER PRIMARY KEY, lower INTEGER NOT NULL, upper INTEGER NOT NULL,
  cost TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS tax (state TEXT PRIMARY KEY, percent TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS coupons (
  code TEXT PRIMARY KEY COLLATE NOCASE, percent INTEGER NOT NULL,
  value TEXT NOT NULL, min_order TEXT NOT NULL, expired INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS free_offers (
  size INTEGER NOT NULL, quantity INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS orders (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  account_id INTEGER NOT NULL REFERENCES accounts(id),
  status TEXT NOT NULL, coupon TEXT NOT NULL, photo_keys TEXT NOT NULL,
  summary TEXT NOT NULL, used_free INTEGER NOT NULL, created INTEGER NOT NULL);
)sql";

json Ok(json outputs = json::object()) {
  outputs["ok"] = true;
  outputs["errCode"] = "";
  outputs["errText"] = "";
  return outputs;
}

std::string RandomHex(size_t bytes) {
  std::vector<unsigned char> raw(bytes);
  randombytes_buf(raw.data(), raw.size());
  std::string hex(bytes * 2 + 1, '\0');
  sodium_bin2hex(hex.data(), hex.size(), raw.data(), raw.size());
  hex.pop_back();
  return hex;
}

std::string HashPassword(const std::string& password) {
  char hash[crypto_pwhash_STRBYTES];
  if (crypto_pwhash_str(hash, password.c_str(), password.size(),
                        crypto_pwhash_OPSLIMIT_INTERACTIVE,
                        crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0) {
    throw std::runtime_error("password hashing ran out of memory");
  }
  return hash;
}

bool PasswordMatches(const std::string& hash, const std::string& password) {
  return crypto_pwhash_str_verify(hash.c_str(), password.c_str(),
                                  password.size()) == 0;
}

// A whole number of 0 or more, or nullopt.
std::optional<std::int64_t> ParseId(const std::string& text) {
  if (text.empty() || text.size() > 15) {
    return std::nullopt;
  }
  std::int64_t value = 0;
  for (char c : text) {
    if (c < '0' || c > '9') {
      return std::nullopt;
    }
    value = value * 10 + (c - '0');
  }
  return value;
}

std::optional<std::int64_t> ParseImageId(const std::string& text) {
  if (text.size() < 2 || text.front() != 'P') {
    return std::nullopt;
  }
  return ParseId(text.substr(1));
}

std::string ImageId(std::int64_t id) {
  return "P" + std::to_string(id);
}

// Lenient whole quantity: leading digits, 0 when none, capped.
int ParseQuantity(const std::string& text) {
  const std::string trimmed = Trim(text);
  std::int64_t value = 0;
  for (char c : trimmed) {
    if (c < '0' || c > '9') {
      break;
    }
    value = std::min<std::int64_t>(value * 10 + (c - '0'), kMaxQuantity);
  }
  return static_cast<int>(value);
}

double ParseAmount(const std::string& text) {
  try {
    return std::stod(text);
  } catch (const std::exception&) {
    return 0;
  }
}

struct PhotoType {
  const char* extension;
  const char* mime;
};

std::optional<PhotoType> DetectPhotoType(const std::string& content) {
  const auto starts = [&](std::string_view magic) {
    return content.size() >= magic.size() &&
           std::string_view(content).substr(0, magic.size()) == magic;
  };
  using namespace std::string_view_literals;
  if (starts("\xFF\xD8\xFF"sv)) {
    return PhotoType{"jpg", "image/jpeg"};
  }
  if (starts("\x89PNG\r\n\x1A\n"sv)) {
    return PhotoType{"png", "image/png"};
  }
  if (starts("BM"sv) && content.size() >= 26) {
    return PhotoType{"bmp", "image/bmp"};
  }
  if (starts("II*\0"sv) || starts("MM\0*"sv)) {
    return PhotoType{"tif", "image/tiff"};
  }
  return std::nullopt;
}

// Writes a file completely or not at all.
void WriteFileAtomically(const std::filesystem::path& path,
                         const std::string& content) {
  const auto temp = path.string() + ".part";
  // The photo reaches the disk before its name does, so that a crash or a
  // power cut leaves the old state or the whole photo, never half of it.
  const int fd =
      open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC,
           S_IRUSR | S_IWUSR);
  // A file left over from an earlier attempt keeps its own mode; narrow it.
  bool ok = fd >= 0 && fchmod(fd, S_IRUSR | S_IWUSR) == 0;
  size_t written = 0;
  while (ok && written < content.size()) {
    const ssize_t n =
        write(fd, content.data() + written, content.size() - written);
    if (n < 0 && errno == EINTR) {
      continue;
    }
    ok = n > 0;
    written += ok ? static_cast<size_t>(n) : 0;
  }
  ok = ok && fsync(fd) == 0;
  if (fd >= 0) {
    ok = close(fd) == 0 && ok;
  }
  if (!ok) {
    std::error_code ignored;
    std::filesystem::remove(temp, ignored);
    throw std::runtime_error("cannot write " + temp);
  }
  std::filesystem::rename(temp, path);
}

std::string Join(const std::vector<std::string>& items, const char* glue) {
  std::string out;
  for (const auto& item : items) {
    if (!out.empty()) {
      out += glue;
    }
    out += item;
  }
  return out;
}

PageResult Refused() {
  return {403, HtmlPage("Please log in again.",
                        "<p>This page needs a valid session. Please log in "
                        "again from Quillbay Picture Desk.</p>")};
}

}  // namespace

PageResult NotFound(const char* what) {
  return {404, HtmlPage(what, "<p>There is nothing to show here.</p>")};
}

json Failure(const std::string& code) {
  return json{{"ok", false}, {"errCode", code}, {"errText", ErrorText(code)}};
}

ServiceCore::ServiceCore(ServiceOptions options)
    : options_(std::move(options)) {
  if (sodium_init() < 0) {
    throw std::runtime_error("libsodium could not start");
  }
  PrepareDataFolder(options_.data_dir);
  // SQLite gives its journal and shared-memory files the mode of the
  // database file, so a private database keeps them private too.
  MakePrivateFile(options_.data_dir / "service.db");
  db_ = std::make_unique<Db>((options_.data_dir / "service.db").string());
  db_->Exec(kSchema);
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
  auto seeded = db_->Prepare("SELECT value FROM meta WHERE key = 'seeded'");
  if (seeded.Step()) {
    return;
  }
  Transaction transaction(*db_);
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
  db_->Prepare("INSERT INTO meta (key, value) VALUES ('seeded', '1')").Run();
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
    db_->Prepare("UPDATE accounts SET password_hash = ? WHERE id = ?")
        .Bind(1, HashPassword(password))
        .Bind(2, *existing)
        .Run();
    WriteDemoAccountFile(options_.data_dir, password);
    new_demo_password_ = password;
    return;
  }
  Transaction transaction(*db_);
  db_->Prepare(
         "INSERT INTO accounts (email, password_hash, user_code, first_name, "
         "last_name, street1, city, state, zip, card_name, card_masked, "
         "card_month, card_year, card_zip) VALUES (?, ?, "
         "?, 'Dana', 'Demo', '1 Market Street', 'San Francisco', 'CA', "
         "'94105', 'Dana Demo', ?, '11', '2035', '94105')")
      .Bind(1, kDemoEmail)
      .Bind(2, HashPassword(password))
      .Bind(3, RandomHex(8))
      .Bind(4, MaskCardNumber("4111111111111111"))
      .Run();
  db_->Prepare(
         "INSERT INTO albums (account_id, name, created) VALUES (?, "
         "'Demo album', ?)")
      .Bind(1, db_->LastInsertId())
      .Bind(2, Now())
      .Run();
  WriteDemoAccountFile(options_.data_dir, password);
  transaction.Commit();
  new_demo_password_ = password;
}

std::optional<std::int64_t> ServiceCore::Authenticate(const std::string& code) {
  if (code.empty()) {
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
                                      const json& request) {
  CheckRequestShape(operation, request);
  std::lock_guard lock(mutex_);
  if (operation == "LoginUser") {
    return LoginUser(request);
  }
  if (operation == "RegisterUser") {
    return RegisterUser(request);
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
    return ShareAlbum(*account, request);
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
  return UpdateUserAddress(*account, request);
}

json ServiceCore::LoginUser(const json& request) {
  const std::string email = Trim(Text(request, "email"));
  const std::string password = Text(request, "password");
  auto find = db_->Prepare(
      "SELECT id, password_hash, user_code FROM accounts WHERE email = ?");
  find.Bind(1, email);
  if (email.empty() || !find.Step()) {
    return Failure("2006");
  }
  if (!PasswordMatches(find.Text(1), password)) {
    return Failure("2007");
  }
  return Ok({{"session", {NewSession(find.Int(0)), find.Text(2)}}});
}

namespace {

struct YearMonth {
  int year, month;
};

YearMonth Today(std::int64_t now) {
  const std::time_t t = static_cast<std::time_t>(now);
  std::tm parts{};
  gmtime_r(&t, &parts);
  return {parts.tm_year + 1900, parts.tm_mon + 1};
}

// A month written "1" to "12" (or "01"); 0 when anything else.
int ParseMonth(const std::string& text, int offset) {
  const auto value = ParseId(Trim(text));
  if (!value || text.size() > 2) {
    return 0;
  }
  const auto month = static_cast<int>(*value) + offset;
  return month >= 1 && month <= 12 ? month : 0;
}

}  // namespace

json ServiceCore::RegisterUser(const json& request) {
  auto fields = TextArray(request, "fields");
  fields.resize(std::max<size_t>(fields.size(), 16));
  for (auto& field : fields) {
    field = Trim(field);
  }
  const AddressFields address{fields[4], fields[5], fields[6],
                              fields[7], fields[8], fields[9]};
  const bool has_card = !(fields[12].empty() && fields[13].empty() &&
                          fields[14].empty() && fields[15].empty());
  CardFields card{fields[11], fields[12], ParseMonth(fields[13], 0),
                  fields[14]};
  if (card.name.empty()) {
    card.name = fields[0] + " " + fields[1];
  }
  const YearMonth today = Today(Now());
  std::string code = CheckName(fields[0], "2001");
  if (code.empty()) {
    code = CheckName(fields[1], "2002");
  }
  if (code.empty()) {
    code = CheckEmail(fields[2]);
  }
  if (code.empty()) {
    code = CheckPassword(fields[3]);
  }
  if (code.empty()) {
    code = CheckPhone(fields[9]);
  }
  const bool has_address = !AddressIsEmpty(address);
  if (code.empty() && has_address) {
    code = CheckAddress(address);
  }
  if (code.empty() && has_card) {
    code = CheckCard(card, fields[15], today.year, today.month);
  }
  if (!code.empty()) {
    return Failure(code);
  }
  auto exists = db_->Prepare("SELECT id FROM accounts WHERE email = ?");
  exists.Bind(1, fields[2]);
  if (exists.Step()) {
    return Failure("2021");
  }
  const std::string user_code = RandomHex(8);
  auto insert = db_->Prepare(
      "INSERT INTO accounts (email, password_hash, user_code, first_name, "
      "last_name, street1, street2, city, state, zip, phone, card_name, "
      "card_masked, card_month, card_year, card_zip) VALUES (?, ?, ?, ?, ?, "
      "?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  insert.Bind(1, fields[2])
      .Bind(2, HashPassword(fields[3]))
      .Bind(3, user_code)
      .Bind(4, fields[0])
      .Bind(5, fields[1]);
  if (has_address) {
    insert.Bind(6, address.street1)
        .Bind(7, address.street2)
        .Bind(8, address.city)
        .Bind(9, address.state)
        .Bind(10, address.zip);
  } else {
    for (int i = 6; i <= 10; ++i) {
      insert.Bind(i, "");
    }
  }
  insert.Bind(11, fields[9]);
  if (has_card) {
    insert.Bind(12, card.name)
        .Bind(13, MaskCardNumber(CardDigits(card.number)))
        .Bind(14, std::to_string(card.month - 1))
        .Bind(15, card.year)
        .Bind(16, fields[15]);
  } else {
    for (int i = 12; i <= 16; ++i) {
      insert.Bind(i, "");
    }
  }
  insert.Run();
  return Ok({{"result", {NewSession(db_->LastInsertId()), user_code}}});
}

json ServiceCore::GetUserInfo(std::int64_t account) {
  auto find = db_->Prepare(
      "SELECT email, first_name, last_name, title, street1, street2, city, "
      "state, zip, card_name, card_masked, card_month, card_year, card_zip "
      "FROM accounts WHERE id = ?");
  find.Bind(1, account);
  if (!find.Step()) {
    return Failure(kSessionCode);
  }
  std::vector<std::string> row;
  for (int i = 0; i < 14; ++i) {
    row.push_back(find.Text(i));
  }
  const bool has_address =
      !row[4].empty() && !row[6].empty() && !row[7].empty() && !row[8].empty();
  const bool has_card = !row[10].empty();
  return Ok({
      {"accountType", has_address && has_card ? "FUL" : "LTE"},
      {"profile", {row[0], row[1], row[2], "", ""}},
      {"address",
       {row[3], row[1], row[2], row[4], row[5], row[6], row[7], row[8]}},
      {"card", {row[9], row[10], row[11], row[12], row[13]}},
  });
}

namespace {

std::map<int, std::vector<Tier>> LoadTiers(Db& db) {
  std::map<int, std::vector<Tier>> tiers;
  auto rows = db.Prepare(
      "SELECT size, lower, upper, price FROM price_tiers "
      "ORDER BY size, lower");
  while (rows.Step()) {
    tiers[static_cast<int>(rows.Int(0))].push_back(
        {static_cast<int>(rows.Int(1)), static_cast<int>(rows.Int(2)),
         ParseAmount(rows.Text(3))});
  }
  return tiers;
}

std::vector<Band> LoadBands(Db& db) {
  std::vector<Band> bands;
  auto rows = db.Prepare(
      "SELECT lower, upper, cost FROM shipping_bands ORDER BY position");
  while (rows.Step()) {
    bands.push_back({static_cast<int>(rows.Int(0)),
                     static_cast<int>(rows.Int(1)), ParseAmount(rows.Text(2))});
  }
  return bands;
}

}  // namespace

json ServiceCore::GetPriceList() {
  json tiers = json::array();
  for (const auto& [size, rows] : LoadTiers(*db_)) {
    json table = json::array();
    for (const auto& tier : rows) {
      table.push_back({std::to_string(tier.lower), std::to_string(tier.upper),
                       FormatAmount(tier.price)});
    }
    tiers.push_back({std::to_string(size), table});
  }
  json bands = json::array();
  for (const auto& band : LoadBands(*db_)) {
    bands.push_back({std::to_string(band.lower), std::to_string(band.upper),
                     FormatAmount(band.cost)});
  }
  return Ok({{"priceTiers", tiers}, {"shippingBands", bands}});
}

json ServiceCore::GetAlbumList(std::int64_t account) {
  json ids = json::array();
  json names = json::array();
  auto rows = db_->Prepare(
      "SELECT id, name FROM albums WHERE account_id = ? ORDER BY id");
  rows.Bind(1, account);
  while (rows.Step()) {
    ids.push_back(std::to_string(rows.Int(0)));
    names.push_back(rows.Text(1));
  }
  if (ids.empty()) {
    ids.push_back("");
    names.push_back("");
  }
  return Ok({{"albums", json::array({ids, names})}});
}

json ServiceCore::GetAddressBook(std::int64_t account) {
  json emails = json::array();
  auto rows = db_->Prepare(
      "SELECT email FROM address_book WHERE account_id = ? ORDER BY rowid");
  rows.Bind(1, account);
  while (rows.Step()) {
    emails.push_back(rows.Text(0));
  }
  if (emails.empty()) {
    return Failure("1002");
  }
  return Ok({{"emails", emails}});
}

std::optional<std::int64_t> ServiceCore::OwnAlbum(std::int64_t account,
                                                  const std::string& album_id) {
  const auto id = ParseId(Trim(album_id));
  if (!id) {
    return std::nullopt;
  }
  auto find =
      db_->Prepare("SELECT id FROM albums WHERE id = ? AND account_id = ?");
  find.Bind(1, *id).Bind(2, account);
  if (!find.Step()) {
    return std::nullopt;
  }
  return *id;
}

json ServiceCore::ShareAlbum(std::int64_t account, const json& request) {
  const auto album = OwnAlbum(account, Text(request, "albumId"));
  if (!album) {
    return Failure("3001");
  }
  std::string access = Trim(Text(request, "access"));
  if (access != "1") {
    access = "0";
  }
  std::vector<std::string> accepted;
  std::set<std::string> seen;
  for (const auto& entry : TextArray(request, "emails")) {
    const std::string email = Trim(entry);
    std::string lower = email;
    for (char& c : lower) {
      c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    if (!IsValidEmail(email) || !seen.insert(lower).second) {
      continue;
    }
    accepted.push_back(email);
  }
  Transaction transaction(*db_);
  db_->Prepare(
         "INSERT INTO shares (album_id, access, subject, message, accepted, "
         "created) VALUES (?, ?, ?, ?, ?, ?)")
      .Bind(1, *album)
      .Bind(2, access)
      .Bind(3, Text(request, "subject"))
      .Bind(4, Text(request, "message"))
      .Bind(5, Join(accepted, ","))
      .Bind(6, Now())
      .Run();
  for (const auto& email : accepted) {
    db_->Prepare(
           "INSERT OR IGNORE INTO address_book (account_id, email) VALUES "
           "(?, ?)")
        .Bind(1, account)
        .Bind(2, email)
        .Run();
  }
  transaction.Commit();
  return Ok({{"accepted", Join(accepted, ",")}});
}

json ServiceCore::GetAlbumPhotos(std::int64_t account, const json& request) {
  const auto album = OwnAlbum(account, Text(request, "albumId"));
  if (!album) {
    return Failure("3001");
  }
  json photos = json::array();
  auto rows =
      db_->Prepare("SELECT id FROM photos WHERE album_id = ? ORDER BY id");
  rows.Bind(1, *album);
  int position = 0;
  while (rows.Step()) {
    photos.push_back({ImageId(rows.Int(0)), std::to_string(++position)});
  }
  return Ok({{"photos", photos}});
}

json ServiceCore::PlaceOrder(std::int64_t account, const json& request) {
  const std::vector<OrderLine> lines = OrderLines(request);
  QuoteInput input;
  for (const auto& line : lines) {
    std::array<int, kSizeCount> quantities{};
    for (size_t row = 0; row < line.quantities.size(); ++row) {
      quantities[row] = ParseQuantity(line.quantities[row]);
    }
    input.lines.push_back(quantities);
  }
  std::vector<std::string> keys;
  const json index = OrderIndex(request, &keys);
  const auto ship_to = TextArray(request, "shipTo");

  input.tiers = LoadTiers(*db_);
  input.bands = LoadBands(*db_);
  input.coupon_code = Trim(Text(request, "couponCode"));
  if (!input.coupon_code.empty()) {
    auto find = db_->Prepare(
        "SELECT code, percent, value, min_order, expired FROM coupons WHERE "
        "code = ?");
    find.Bind(1, input.coupon_code);
    if (find.Step()) {
      input.coupon =
          Coupon{find.Text(0), find.Int(1) != 0, ParseAmount(find.Text(2)),
                 ParseAmount(find.Text(3)), find.Int(4) != 0};
    }
  }
  auto account_row =
      db_->Prepare("SELECT state, free_used FROM accounts WHERE id = ?");
  account_row.Bind(1, account);
  if (!account_row.Step()) {
    return Failure(kSessionCode);
  }
  input.tax_state = account_row.Text(0);
  if (ship_to.size() > 6 && !Trim(ship_to[6]).empty()) {
    input.tax_state = Trim(ship_to[6]);
  }
  if (account_row.Int(1) == 0) {
    auto offers = db_->Prepare("SELECT size, quantity FROM free_offers");
    while (offers.Step()) {
      input.free_offers.push_back(
          {static_cast<int>(offers.Int(0)), static_cast<int>(offers.Int(1))});
    }
  }
  auto tax = db_->Prepare("SELECT percent FROM tax WHERE state = ?");
  tax.Bind(1, input.tax_state);
  if (tax.Step()) {
    input.tax_percent = ParseAmount(tax.Text(0));
  }

  const Quote quote = PriceOrder(input);
  if (quote.total_prints == 0) {
    return Failure("4002");
  }

  json out_lines = json::array();
  for (size_t i = 0; i < lines.size(); ++i) {
    json rows = json::array();
    for (int row = 0; row < kSizeCount; ++row) {
      const int quantity = input.lines[i][row];
      const double price = quote.unit_price[row];
      rows.push_back({std::to_string(quantity), FormatAmount(price),
                      FormatAmount(RoundCents(price * quantity))});
    }
    out_lines.push_back({{"key", lines[i].key}, {"rows", rows}});
  }
  json size_totals = json::array();
  for (int row = 0; row < kSizeCount; ++row) {
    size_totals.push_back({std::to_string(quote.size_quantity[row]),
                           FormatAmount(quote.unit_price[row]),
                           FormatAmount(quote.size_amount[row])});
  }
  json free_prints = json::array();
  for (const auto& free : quote.free_prints) {
    free_prints.push_back({std::to_string(free.quantity),
                           FormatAmount(free.value), free.size_text});
  }
  if (free_prints.empty()) {
    free_prints.push_back({"", "", ""});
  }
  const json coupon_result = {input.coupon_code, quote.coupon_label,
                              FormatAmount(quote.coupon_discount),
                              quote.coupon_applied ? "1" : "0"};
  const json order_tax = {{input.tax_state, FormatAmount(input.tax_percent),
                           FormatAmount(quote.tax)}};
  const json summary = {{"sizeTotals", size_totals},
                        {"freePrints", free_prints},
                        {"couponResult", coupon_result},
                        {"shipping", FormatAmount(quote.shipping)},
                        {"orderTax", order_tax},
                        {"costOfPrints", FormatAmount(quote.cost_of_prints)},
                        {"orderTotal", FormatAmount(quote.total)}};
  db_->Prepare(
         "INSERT INTO orders (account_id, status, coupon, photo_keys, summary, "
         "used_free, created) VALUES (?, 'quoted', ?, ?, ?, ?, ?)")
      .Bind(1, account)
      .Bind(2, quote.coupon_applied ? input.coupon_code : "")
      .Bind(3, json(keys).dump())
      .Bind(4, summary.dump())
      .BindInt(5, quote.free_prints.empty() ? 0 : 1)
      .Bind(6, Now())
      .Run();
  json out = summary;
  out["orderLines"] = out_lines;
  out["orderIndex"] = index;
  out["orderId"] = std::to_string(db_->LastInsertId());
  return Ok(out);
}

json ServiceCore::ConfirmOrder(std::int64_t account, const json& request) {
  const auto order_id = ParseId(Trim(Text(request, "orderId")));
  if (!order_id) {
    return Failure("4001");
  }
  auto find = db_->Prepare(
      "SELECT coupon, photo_keys, used_free FROM orders WHERE id = ? AND "
      "account_id = ? AND status = 'quoted'");
  find.Bind(1, *order_id).Bind(2, account);
  if (!find.Step()) {
    return Failure("4001");
  }
  const std::string coupon = Trim(Text(request, "couponCode"));
  const std::string quoted_coupon = find.Text(0);
  // A coupon the quote refused is not held against the confirmation.
  if (!quoted_coupon.empty() && coupon != quoted_coupon) {
    return Failure("4004");
  }
  const auto keys = json::parse(find.Text(1));
  const bool used_free = find.Int(2) != 0;
  if (keys.empty()) {
    return Failure("4003");
  }
  for (const auto& key : keys) {
    const auto image = ParseImageId(key.get<std::string>());
    if (!image) {
      return Failure("4003");
    }
    auto owned = db_->Prepare(
        "SELECT photos.id FROM photos JOIN albums ON photos.album_id = "
        "albums.id WHERE photos.id = ? AND albums.account_id = ?");
    owned.Bind(1, *image).Bind(2, account);
    if (!owned.Step()) {
      return Failure("4003");
    }
  }
  Transaction transaction(*db_);
  db_->Prepare("UPDATE orders SET status = 'confirmed' WHERE id = ?")
      .Bind(1, *order_id)
      .Run();
  if (used_free) {
    db_->Prepare("UPDATE accounts SET free_used = 1 WHERE id = ?")
        .Bind(1, account)
        .Run();
  }
  transaction.Commit();
  return Ok();
}

json ServiceCore::UpdateUserAddress(std::int64_t account, const json& request) {
  auto find = db_->Prepare(
      "SELECT email, password_hash, user_code, first_name, last_name, "
      "card_masked FROM accounts WHERE id = ?");
  find.Bind(1, account);
  if (!find.Step()) {
    return Failure(kSessionCode);
  }
  std::string stored_email = find.Text(0);
  std::string email = Trim(Text(request, "email"));
  for (auto* text : {&stored_email, &email}) {
    for (char& c : *text) {
      c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
  }
  if (email != stored_email) {
    return Failure("2006");
  }
  if (!PasswordMatches(find.Text(1), Text(request, "password"))) {
    return Failure("2007");
  }
  const std::string user_code = find.Text(2);
  const std::string first_name = find.Text(3);
  const std::string last_name = find.Text(4);
  const std::string stored_card = find.Text(5);

  auto address = TextArray(request, "address");
  address.resize(std::max<size_t>(address.size(), 8));
  for (auto& cell : address) {
    cell = Trim(cell);
  }
  const AddressFields fields{address[3], address[4], address[5],
                             address[6], address[7], ""};
  const bool has_address = !AddressIsEmpty(fields);
  if (has_address) {
    if (auto code = CheckAddress(fields); !code.empty()) {
      return Failure(code);
    }
  }
  const bool card_changed = Flag(request, "cardChanged");
  auto card = TextArray(request, "card");
  card.resize(std::max<size_t>(card.size(), 5));
  for (auto& cell : card) {
    cell = Trim(cell);
  }
  const bool has_card = !(card[1].empty() && card[2].empty() &&
                          card[3].empty() && card[4].empty());
  std::string masked = stored_card;
  CardFields card_fields{
      card[0].empty() ? first_name + " " + last_name : card[0], card[1],
      ParseMonth(card[2], 1), card[3]};
  if (card_changed && has_card) {
    const bool keeps_number = !stored_card.empty() && card[1] == stored_card;
    if (keeps_number) {
      // The stored number stands; check the rest with a number that passes.
      card_fields.number = "4111111111111111";
    }
    const YearMonth today = Today(Now());
    if (auto code = CheckCard(card_fields, card[4], today.year, today.month);
        !code.empty()) {
      return Failure(code);
    }
    if (!keeps_number) {
      masked = MaskCardNumber(CardDigits(card[1]));
    }
  }

  Transaction transaction(*db_);
  db_->Prepare(
         "UPDATE accounts SET street1 = ?, street2 = ?, city = ?, state = ?, "
         "zip = ? WHERE id = ?")
      .Bind(1, has_address ? fields.street1 : "")
      .Bind(2, has_address ? fields.street2 : "")
      .Bind(3, has_address ? fields.city : "")
      .Bind(4, has_address ? fields.state : "")
      .Bind(5, has_address ? fields.zip : "")
      .Bind(6, account)
      .Run();
  if (!address[0].empty()) {
    db_->Prepare("UPDATE accounts SET title = ? WHERE id = ?")
        .Bind(1, address[0])
        .Bind(2, account)
        .Run();
  }
  if (!address[1].empty() && !address[2].empty() &&
      CheckName(address[1], "2001").empty() &&
      CheckName(address[2], "2002").empty()) {
    db_->Prepare(
           "UPDATE accounts SET first_name = ?, last_name = ? WHERE id = ?")
        .Bind(1, address[1])
        .Bind(2, address[2])
        .Bind(3, account)
        .Run();
  }
  if (card_changed) {
    db_->Prepare(
           "UPDATE accounts SET card_name = ?, card_masked = ?, card_month = "
           "?, card_year = ?, card_zip = ? WHERE id = ?")
        .Bind(1, has_card ? card_fields.name : "")
        .Bind(2, has_card ? masked : "")
        .Bind(3, has_card ? std::to_string(card_fields.month - 1) : "")
        .Bind(4, has_card ? card[3] : "")
        .Bind(5, has_card ? card[4] : "")
        .Bind(6, account)
        .Run();
  }
  db_->Prepare("DELETE FROM sessions WHERE code = ?")
      .Bind(1, Text(request, "authCode"))
      .Run();
  const std::string session = NewSession(account);
  transaction.Commit();
  return Ok({{"session", {session, user_code}}});
}

json ServiceCore::Upload(const std::map<std::string, std::string>& query,
                         const std::string& content) {
  const auto value = [&](const char* name) {
    const auto it = query.find(name);
    return it == query.end() ? std::string() : it->second;
  };
  const auto fail = [](const std::string& code, bool fatal) {
    json out = Failure(code);
    out["albumId"] = "";
    out["imageId"] = "";
    out["fatal"] = fatal;
    return out;
  };
  if (content.size() > options_.max_upload_bytes) {
    return fail("3003", false);
  }
  const auto type = DetectPhotoType(content);
  std::lock_guard lock(mutex_);
  const auto account = Authenticate(value("authcode"));
  if (!account) {
    return fail(kSessionCode, true);
  }
  if (!type) {
    return fail("3002", false);
  }
  std::optional<std::int64_t> album;
  const std::string album_id = Trim(value("albumid"));
  Transaction transaction(*db_);
  if (album_id.empty()) {
    const std::string name = Trim(value("albumname"));
    if (name.empty() || name.size() > 200) {
      return fail("3004", true);
    }
    db_->Prepare(
           "INSERT INTO albums (account_id, name, created) VALUES (?, ?, ?)")
        .Bind(1, *account)
        .Bind(2, name)
        .Bind(3, Now())
        .Run();
    album = db_->LastInsertId();
  } else {
    album = OwnAlbum(*account, album_id);
    if (!album) {
      return fail("3001", true);
    }
  }
  const auto folder = options_.data_dir / "photos" / std::to_string(*album);
  MakePrivateFolder(folder);
  const std::string stored = RandomHex(kFileNameBytes) + "." + type->extension;
  WriteFileAtomically(folder / stored, content);
  try {
    db_->Prepare(
           "INSERT INTO photos (album_id, stored_name, original_name, mime, "
           "bytes) VALUES (?, ?, ?, ?, ?)")
        .Bind(1, *album)
        .Bind(2, stored)
        .Bind(3, value("file"))
        .Bind(4, type->mime)
        .Bind(5, static_cast<std::int64_t>(content.size()))
        .Run();
    transaction.Commit();
  } catch (...) {
    std::error_code ignored;
    std::filesystem::remove(folder / stored, ignored);
    throw;
  }
  return Ok({{"albumId", std::to_string(*album)},
             {"imageId", ImageId(db_->LastInsertId())},
             {"fatal", false}});
}

PageResult ServiceCore::HomePage() {
  return {200, HtmlPage("Welcome to Quillbay",
                        "<p>Your photos, your albums, your prints. Use "
                        "Quillbay Picture Desk to upload, share and order "
                        "prints.</p>")};
}

PageResult ServiceCore::ForgotPasswordPage() {
  return {200, HtmlPage("Forgot your password?",
                        "<p>This service runs on your own machine and sends no "
                        "mail. Make a new account from the program's sign-up "
                        "form, or ask whoever runs the service to reset the "
                        "password.</p>")};
}

std::optional<ServiceCore::PageAlbum> ServiceCore::AlbumOfPage(
    const std::string& album_id,
    const std::string& code,
    PageResult& refusal) {
  const auto account = Authenticate(code);
  if (!account) {
    refusal = Refused();
    return std::nullopt;
  }
  const auto album = OwnAlbum(*account, album_id);
  if (!album) {
    refusal = NotFound("Album not found");
    return std::nullopt;
  }
  auto name_row = db_->Prepare("SELECT name FROM albums WHERE id = ?");
  name_row.Bind(1, *album);
  name_row.Step();
  return PageAlbum{*account, *album, name_row.Text(0)};
}

PageResult ServiceCore::AlbumPage(const std::string& album_id,
                                  const std::string& code) {
  std::lock_guard lock(mutex_);
  PageResult refusal;
  const auto album = AlbumOfPage(album_id, code, refusal);
  if (!album) {
    return refusal;
  }
  std::string body = "<ul class=\"photos\">\n";
  auto rows = db_->Prepare(
      "SELECT id, original_name FROM photos WHERE album_id = ? ORDER BY id");
  rows.Bind(1, album->id);
  int count = 0;
  while (rows.Step()) {
    ++count;
    const std::string src = "/photo/" + ImageId(rows.Int(0)) + "/u_=" + code;
    const std::string original = rows.Text(1);
    const auto slash = original.find_last_of("/\\");
    const std::string shown =
        slash == std::string::npos ? original : original.substr(slash + 1);
    body += "<li><img src=\"" + EscapeHtml(src) + "\" alt=\"" +
            EscapeHtml(shown) + "\" width=\"200\"><br>" + EscapeHtml(shown) +
            "</li>\n";
  }
  body += "</ul>\n<p>" + std::to_string(count) + " photo(s)</p>";
  return {200, HtmlPage(album->name, body)};
}

PageResult ServiceCore::AddressBookPage(const std::string& album_id,
                                        const std::string& code) {
  std::lock_guard lock(mutex_);
  PageResult refusal;
  const auto album = AlbumOfPage(album_id, code, refusal);
  if (!album) {
    return refusal;
  }
  std::string body = "<h2>Album</h2>\n<p>" + EscapeHtml(album->name) +
                     "</p>\n<h2>Address book</h2>\n<ul>\n";
  auto emails = db_->Prepare(
      "SELECT email FROM address_book WHERE account_id = ? ORDER BY rowid");
  emails.Bind(1, album->account);
  while (emails.Step()) {
    body += "<li>" + EscapeHtml(emails.Text(0)) + "</li>\n";
  }
  body += "</ul>\n<h2>Shared with</h2>\n<ul>\n";
  auto shares = db_->Prepare(
      "SELECT access, subject, accepted FROM shares WHERE album_id = ? "
      "ORDER BY id");
  shares.Bind(1, album->id);
  while (shares.Step()) {
    body += "<li>" +
            std::string(shares.Text(0) == "1" ? "full access"
                                              : "restricted access") +
            ": " + EscapeHtml(shares.Text(2)) + " (" +
            EscapeHtml(shares.Text(1)) + ")</li>\n";
  }
  body += "</ul>";
  return {200, HtmlPage("Share your album", body)};
}

PageResult ServiceCore::OrderStatusPage(const std::string& order_id,
                                        const std::string& code) {
  std::lock_guard lock(mutex_);
  const auto account = Authenticate(code);
  if (!account) {
    return Refused();
  }
  const auto id = ParseId(Trim(order_id));
  if (!id) {
    return NotFound("Order not found");
  }
  auto find = db_->Prepare(
      "SELECT status, coupon, summary FROM orders WHERE id = ? AND "
      "account_id = ?");
  find.Bind(1, *id).Bind(2, *account);
  if (!find.Step()) {
    return NotFound("Order not found");
  }
  const json summary = json::parse(find.Text(2));
  std::string body = "<p>Order " + std::to_string(*id) + ": " +
                     EscapeHtml(find.Text(0)) +
                     "</p>\n<table>\n<tr><th>size</th><th>prints</th>"
                     "<th>price each</th><th>amount</th></tr>\n";
  const auto& sizes = summary["sizeTotals"];
  for (size_t row = 0; row < sizes.size(); ++row) {
    body +=
        "<tr><td>" + EscapeHtml(SizeText(static_cast<int>(row) + 1)) + "</td>";
    for (const auto& cell : sizes[row]) {
      body += "<td>" + EscapeHtml(cell.get<std::string>()) + "</td>";
    }
    body += "</tr>\n";
  }
  body += "</table>\n";
  const auto line = [](const char* label, const json& value) {
    return "<p>" + std::string(label) + ": " +
           EscapeHtml(value.get<std::string>()) + "</p>\n";
  };
  if (!find.Text(1).empty()) {
    body += "<p>coupon " + EscapeHtml(find.Text(1)) + ": " +
            EscapeHtml(summary["couponResult"][2].get<std::string>()) +
            "</p>\n";
  }
  body += line("cost of prints", summary["costOfPrints"]);
  body += line("shipping", summary["shipping"]);
  body += line("tax", summary["orderTax"][0][2]);
  body += line("order total", summary["orderTotal"]);
  return {200, HtmlPage("Your order", body)};
}

PhotoAnswer ServiceCore::Photo(const std::string& image_id,
                               const std::string& code) {
  std::lock_guard lock(mutex_);
  const auto account = Authenticate(code);
  if (!account) {
    return {std::nullopt, Refused()};
  }
  const auto image = ParseImageId(image_id);
  if (!image) {
    return {std::nullopt, NotFound("Photo not found")};
  }
  auto find = db_->Prepare(
      "SELECT photos.album_id, photos.stored_name, photos.mime FROM photos "
      "JOIN albums ON photos.album_id = albums.id WHERE photos.id = ? AND "
      "albums.account_id = ?");
  find.Bind(1, *image).Bind(2, *account);
  if (!find.Step()) {
    return {std::nullopt, NotFound("Photo not found")};
  }
  return {PhotoFile{options_.data_dir / "photos" / std::to_string(find.Int(0)) /
                        find.Text(1),
                    find.Text(2)},
          {}};
}

std::string ServiceCore::UpgradeXml(const std::string& base) const {
  const std::string file = UpgradeFile();
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<upgrade>\n"
         "  <version>" +
         EscapeHtml(options_.upgrade_version) +
         "</version>\n"
         "  <location>" +
         EscapeHtml(base + "/download/upgrade1.exe") +
         "</location>\n"
         "  <size>" +
         std::to_string(file.size()) +
         "</size>\n"
         "  <notes>Quillbay Picture Desk " +
         EscapeHtml(options_.upgrade_version) +
         ": fixes and improvements.</notes>\n</upgrade>\n";
}

std::string ServiceCore::UpgradeFile() const {
  return "#!/bin/sh\n# Quillbay Picture Desk upgrade " +
         options_.upgrade_version +
         "\necho 'Quillbay Picture Desk is up to date.'\n";
}

}  // namespace qbpd::service
