#include "service/share_mail.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace qbpd::service {
namespace {

constexpr size_t kMaxLine = 76;
constexpr char kHex[] = "0123456789ABCDEF";
constexpr char kBase64[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
// Bytes of text per encoded word: 45 bytes make 60 characters of base64,
// inside the 75 an encoded word may have.
constexpr size_t kWordBytes = 45;

bool IsControl(unsigned char c) {
  return c < 0x20 || c == 0x7F;
}

std::string Base64(std::string_view bytes) {
  std::string out;
  size_t i = 0;
  for (; i + 2 < bytes.size(); i += 3) {
    const unsigned v = (static_cast<unsigned char>(bytes[i]) << 16) |
                       (static_cast<unsigned char>(bytes[i + 1]) << 8) |
                       static_cast<unsigned char>(bytes[i + 2]);
    out += kBase64[(v >> 18) & 63];
    out += kBase64[(v >> 12) & 63];
    out += kBase64[(v >> 6) & 63];
    out += kBase64[v & 63];
  }
  if (i < bytes.size()) {
    unsigned v = static_cast<unsigned char>(bytes[i]) << 16;
    if (i + 1 < bytes.size()) {
      v |= static_cast<unsigned char>(bytes[i + 1]) << 8;
    }
    out += kBase64[(v >> 18) & 63];
    out += kBase64[(v >> 12) & 63];
    out += i + 1 < bytes.size() ? kBase64[(v >> 6) & 63] : '=';
    out += '=';
  }
  return out;
}

// A header value: every control character becomes a blank; plain printable
// ASCII stays as it is, anything else goes as encoded words, cut between
// UTF-8 characters and folded onto lines of their own.
std::string HeaderText(std::string_view text) {
  std::string clean;
  bool plain = true;
  for (unsigned char c : text) {
    clean += IsControl(c) ? ' ' : static_cast<char>(c);
    plain = plain && (c < 0x80 || IsControl(c));
  }
  if (plain && clean.size() <= kMaxLine - 10) {
    return clean;
  }
  std::string out;
  size_t at = 0;
  while (at < clean.size()) {
    size_t end = std::min(clean.size(), at + kWordBytes);
    while (end < clean.size() && end > at + 1 &&
           (static_cast<unsigned char>(clean[end]) & 0xC0) == 0x80) {
      --end;
    }
    if (!out.empty()) {
      out += "\r\n ";
    }
    out += "=?UTF-8?B?" + Base64(clean.substr(at, end - at)) + "?=";
    at = end;
  }
  return out;
}

// The body's text: tabs and line ends kept ("\r\n" and "\r" as "\n"),
// every other control character dropped.
std::string BodyText(std::string_view text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c == '\r') {
      out += '\n';
      if (i + 1 < text.size() && text[i + 1] == '\n') {
        ++i;
      }
    } else if (c == '\n' || c == '\t' || !IsControl(c)) {
      out += static_cast<char>(c);
    }
  }
  return out;
}

std::string MailDate(std::int64_t seconds) {
  const std::time_t t = static_cast<std::time_t>(seconds);
  std::tm tm{};
  gmtime_r(&t, &tm);
  static constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed",
                                          "Thu", "Fri", "Sat"};
  static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr",
                                            "May", "Jun", "Jul", "Aug",
                                            "Sep", "Oct", "Nov", "Dec"};
  char text[64];
  std::snprintf(text, sizeof text, "%s, %02d %s %04d %02d:%02d:%02d +0000",
                kDays[tm.tm_wday], tm.tm_mday, kMonths[tm.tm_mon],
                tm.tm_year + 1900, tm.tm_hour, tm.tm_min, tm.tm_sec);
  return text;
}

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
  size_t at = 0;
  while ((at = text.find(from, at)) != std::string::npos) {
    text.replace(at, from.size(), to);
    at += to.size();
  }
}

}  // namespace

std::string DecodeShareText(std::string_view text) {
  std::string out(text);
  ReplaceAll(out, "&lt;", "<");
  ReplaceAll(out, "&gt;", ">");
  ReplaceAll(out, "&amp;", "&");
  return out;
}

std::string QuotedPrintable(std::string_view text) {
  std::string out;
  size_t start = 0;
  while (start <= text.size()) {
    const size_t end = std::min(text.find('\n', start), text.size());
    const std::string_view line = text.substr(start, end - start);
    std::string encoded;
    for (size_t i = 0; i < line.size(); ++i) {
      const auto c = static_cast<unsigned char>(line[i]);
      const bool last = i + 1 == line.size();
      std::string piece;
      if ((c >= 33 && c <= 126 && c != '=') ||
          ((c == ' ' || c == '\t') && !last)) {
        piece = std::string(1, static_cast<char>(c));
      } else {
        piece = {'=', kHex[c >> 4], kHex[c & 15]};
      }
      // A soft break ("=" at the line's end) keeps each line within 76.
      if (encoded.size() + piece.size() > kMaxLine - 1) {
        out += encoded + "=\r\n";
        encoded.clear();
      }
      encoded += piece;
    }
    out += encoded;
    if (end == text.size()) {
      break;
    }
    out += "\r\n";
    start = end + 1;
  }
  return out;
}

std::string ComposeShareMail(const ShareMail& mail) {
  const std::string sender =
      mail.sender_name.empty() ? mail.sender_email : mail.sender_name;
  std::string body = sender + " (" + mail.sender_email +
                     ") has shared the album \"" + mail.album_name +
                     "\" with you on Quillbay.\n\n";
  const std::string message = BodyText(mail.message);
  if (!message.empty()) {
    body += message + "\n\n";
  }
  body += "See the photos: " + mail.link + "\n";
  body += mail.full_access
              ? "You have full access: you may download the photos.\n"
              : "You may view the photos; downloading them is restricted.\n";
  std::string out;
  out += "Date: " + MailDate(mail.date) + "\r\n";
  out += "From: " + HeaderText("Quillbay for " + sender) + " <" +
         std::string(kMailFrom) + ">\r\n";
  out += "Reply-To: <" + HeaderText(mail.sender_email) + ">\r\n";
  out += "To: <" + HeaderText(mail.recipient) + ">\r\n";
  out += "Subject: " + HeaderText(mail.subject) + "\r\n";
  out += "Message-ID: <" + HeaderText(mail.id) + "@quillbay.test>\r\n";
  out += "MIME-Version: 1.0\r\n";
  out += "Content-Type: text/plain; charset=UTF-8\r\n";
  out += "Content-Transfer-Encoding: quoted-printable\r\n";
  out += "\r\n";
  out += QuotedPrintable(BodyText(body));
  out += "\r\n";
  return out;
}

}  // namespace qbpd::service
