#ifndef QBPD_SERVICE_SHARE_MAIL_H_
#define QBPD_SERVICE_SHARE_MAIL_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace qbpd::service {

// What one share invitation says. Texts are UTF-8 as the user typed them.
struct ShareMail {
  std::string sender_name;
  std::string sender_email;
  std::string recipient;
  std::string subject;
  std::string message;
  std::string album_name;
  std::string link;
  bool full_access = false;
  // Unix seconds of the share.
  std::int64_t date = 0;
  // The unique part of the Message-ID.
  std::string id;
};

// The service's own address, the sender of every invitation; the sharer is
// its Reply-To.
inline constexpr char kMailFrom[] = "no-reply@quillbay.test";

// The invitation as an RFC 5322 message with CRLF line ends: plain text in
// UTF-8, quoted-printable, so nothing in it is markup a mail reader would
// run; header texts that are not plain ASCII as RFC 2047 encoded words.
// Control characters other than tab and line ends are dropped from the
// body, and every control character from the headers, so that no text can
// start a header of its own.
std::string ComposeShareMail(const ShareMail& mail);

// The program sends a share's subject and message with "&", "<" and ">" as
// "&amp;", "&lt;" and "&gt;"; this gives back the text the user typed.
std::string DecodeShareText(std::string_view text);

// Quoted-printable (RFC 2045) of UTF-8 text whose lines end in "\n": lines
// of at most 76 characters, soft breaks where longer, CRLF line ends.
std::string QuotedPrintable(std::string_view text);

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_SHARE_MAIL_H_
