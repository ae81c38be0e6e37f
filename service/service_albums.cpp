// Albums, the address book, shares and the upload of one photo.
#include "service/checks.h"
#include "service/core_support.h"
#include "service/data_folder.h"
#include "service/db.h"
#include "service/request.h"
#include "service/service_core.h"
#include "service/share_mail.h"

#include <set>

namespace qbpd::service {

using nlohmann::json;

namespace {

// The secret in a share's link: whoever holds the link sees the album.
constexpr std::size_t kShareTokenBytes = 24;

// The name the client's file had, up to a NUL that no file name holds, in
// UTF-8 whatever the client's encoding was.
std::string OriginalName(const std::string& file) {
  return ValidUtf8(file.substr(0, file.find('\0')));
}

}  // namespace

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

json ServiceCore::ShareAlbum(std::int64_t account,
                             const json& request,
                             const std::string& base,
                             Lock& lock) {
  const auto album = OwnAlbum(account, Text(request, "albumId"));
  if (!album) {
    return Failure("3001");
  }
  const std::string access = Trim(Text(request, "access")) == "1" ? "1" : "0";
  std::vector<std::string> valid;
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
    valid.push_back(email);
  }
  const std::string token = RandomHex(kShareTokenBytes);
  ShareMail mail;
  {
    // The statements end here, before the lock is given up.
    auto sender = db_->Prepare(
        "SELECT first_name, last_name, email FROM accounts WHERE id = ?");
    sender.Bind(1, account);
    sender.Step();
    mail.sender_name = Trim(sender.Text(0) + " " + sender.Text(1));
    mail.sender_email = sender.Text(2);
    auto album_row = db_->Prepare("SELECT name FROM albums WHERE id = ?");
    album_row.Bind(1, *album);
    album_row.Step();
    mail.album_name = album_row.Text(0);
  }
  mail.subject = DecodeShareText(Text(request, "subject"));
  mail.message = DecodeShareText(Text(request, "message"));
  mail.link = (base.empty() ? std::string("http://127.0.0.1") : base) +
              "/sharedalbum/" + token;
  mail.full_access = access == "1";
  mail.date = Now();

  // The mail may go to a relay over the network: no other request waits
  // for it.
  std::vector<std::string> accepted;
  lock.unlock();
  bool failed = false;
  for (size_t i = 0; i < valid.size() && !failed; ++i) {
    mail.recipient = valid[i];
    mail.id = token + "." + std::to_string(i + 1);
    std::string error;
    switch (
        mail_->Deliver(kMailFrom, valid[i], ComposeShareMail(mail), error)) {
      case Delivery::kDelivered:
        accepted.push_back(valid[i]);
        break;
      case Delivery::kRefused:
        break;
      case Delivery::kFailed:
        failed = true;
        break;
    }
  }
  lock.lock();
  if (failed) {
    return Failure("9999");
  }
  Transaction transaction(*db_);
  const std::int64_t share = InsertReturningId(
      db_->Prepare("INSERT INTO shares (album_id, access, subject, message, "
                   "accepted, created) VALUES (?, ?, ?, ?, ?, ?) RETURNING id")
          .Bind(1, *album)
          .Bind(2, access)
          .Bind(3, Text(request, "subject"))
          .Bind(4, Text(request, "message"))
          .Bind(5, Join(accepted, ","))
          .Bind(6, Now()));
  if (!accepted.empty()) {
    db_->Prepare("INSERT INTO share_links (token, share_id) VALUES (?, ?)")
        .Bind(1, token)
        .Bind(2, share)
        .Run();
  }
  for (const auto& email : accepted) {
    db_->Prepare(
           "INSERT INTO address_book (account_id, email) VALUES (?, ?) "
           "ON CONFLICT DO NOTHING")
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
    const std::string name = ValidUtf8(Trim(value("albumname")));
    if (name.empty() || name.size() > 200 ||
        name.find('\0') != std::string::npos) {
      return fail("3004", true);
    }
    album = InsertReturningId(
        db_->Prepare("INSERT INTO albums (account_id, name, created) VALUES "
                     "(?, ?, ?) RETURNING id")
            .Bind(1, *account)
            .Bind(2, name)
            .Bind(3, Now()));
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
  std::int64_t photo = 0;
  try {
    photo = InsertReturningId(
        db_->Prepare("INSERT INTO photos (album_id, stored_name, "
                     "original_name, mime, bytes) VALUES (?, ?, ?, ?, ?) "
                     "RETURNING id")
            .Bind(1, *album)
            .Bind(2, stored)
            .Bind(3, OriginalName(value("file")))
            .Bind(4, type->mime)
            .Bind(5, static_cast<std::int64_t>(content.size())));
    transaction.Commit();
  } catch (...) {
    std::error_code ignored;
    std::filesystem::remove(folder / stored, ignored);
    throw;
  }
  return Ok({{"albumId", std::to_string(*album)},
             {"imageId", ImageId(photo)},
             {"fatal", false}});
}

}  // namespace qbpd::service
