// The service's pages, its photos and the upgrade file.
#include "service/checks.h"
#include "service/core_support.h"
#include "service/db.h"
#include "service/html.h"
#include "service/pricing.h"
#include "service/request.h"
#include "service/service_core.h"

#include <fstream>
#include <iterator>

namespace qbpd::service {

using nlohmann::json;

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

namespace {

// The share of a link's token: its album and access, when the token is one
// the service gave out.
struct SharedAlbum {
  std::int64_t album;
  std::string name;
  bool full_access;
};

std::optional<SharedAlbum> FindShare(Db& db, const std::string& token) {
  if (token.size() > 128 || !IsPlainCode(token)) {
    return std::nullopt;
  }
  auto find = db.Prepare(
      "SELECT shares.album_id, albums.name, shares.access FROM share_links "
      "JOIN shares ON share_links.share_id = shares.id JOIN albums ON "
      "shares.album_id = albums.id WHERE share_links.token = ?");
  find.Bind(1, token);
  if (!find.Step()) {
    return std::nullopt;
  }
  return SharedAlbum{find.Int(0), find.Text(1), find.Text(2) == "1"};
}

}  // namespace

PageResult ServiceCore::SharedAlbumPage(const std::string& token) {
  std::lock_guard lock(mutex_);
  const auto share = FindShare(*db_, token);
  if (!share) {
    return NotFound("Album not found");
  }
  std::string body = "<ul class=\"photos\">\n";
  auto rows =
      db_->Prepare("SELECT id FROM photos WHERE album_id = ? ORDER BY id");
  rows.Bind(1, share->album);
  int count = 0;
  while (rows.Step()) {
    ++count;
    const std::string src =
        "/sharedalbum/" + token + "/photo/" + ImageId(rows.Int(0));
    body += "<li><img src=\"" + EscapeHtml(src) + "\" width=\"200\" alt=\"\">";
    if (share->full_access) {
      body += "<br><a href=\"" + EscapeHtml(src) + "\" download>download</a>";
    }
    body += "</li>\n";
  }
  body += "</ul>\n<p>" + std::to_string(count) + " photo(s), " +
          (share->full_access ? "full access" : "restricted access") + "</p>";
  return {200, HtmlPage(share->name, body)};
}

PhotoAnswer ServiceCore::SharedPhoto(const std::string& token,
                                     const std::string& image_id) {
  std::lock_guard lock(mutex_);
  const auto share = FindShare(*db_, token);
  const auto image = ParseImageId(image_id);
  if (!share || !image) {
    return {std::nullopt, NotFound("Photo not found")};
  }
  auto find = db_->Prepare(
      "SELECT stored_name, mime FROM photos WHERE id = ? AND album_id = ?");
  find.Bind(1, *image).Bind(2, share->album);
  if (!find.Step()) {
    return {std::nullopt, NotFound("Photo not found")};
  }
  return {PhotoFile{options_.data_dir / "photos" /
                        std::to_string(share->album) / find.Text(0),
                    find.Text(1)},
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
  return UpgradeFileContent(options_).value_or(std::string());
}

std::optional<std::string> UpgradeFileContent(const ServiceOptions& options) {
  if (options.upgrade_file.empty()) {
    return "#!/bin/sh\n# Quillbay Picture Desk upgrade " +
           options.upgrade_version +
           "\necho 'Quillbay Picture Desk is up to date.'\n";
  }
  std::ifstream in(options.upgrade_file, std::ios::binary);
  std::string content(std::istreambuf_iterator<char>(in), {});
  if (!in.is_open() || in.bad()) {
    return std::nullopt;
  }
  return content;
}

}  // namespace qbpd::service
