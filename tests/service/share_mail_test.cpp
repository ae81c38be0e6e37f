// The share invitation as an e-mail message: its headers, the body's
// quoted-printable text, and what a hostile text can do to either.
#include "service/share_mail.h"

#include <gtest/gtest.h>

#include <string>

namespace qbpd::service {
namespace {

// Decodes quoted-printable text back, CRLF to "\n".
std::string DecodeQp(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '=' && i + 2 < text.size() && text[i + 1] == '\r') {
      i += 2;
    } else if (text[i] == '=' && i + 2 < text.size()) {
      out += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else if (text[i] == '\r') {
      continue;
    } else {
      out += text[i];
    }
  }
  return out;
}

std::string HeaderPart(const std::string& message) {
  return message.substr(0, message.find("\r\n\r\n"));
}
std::string BodyPart(const std::string& message) {
  return message.substr(message.find("\r\n\r\n") + 4);
}

ShareMail Sample() {
  ShareMail mail;
  mail.sender_name = "Ann Lee";
  mail.sender_email = "ann@example.test";
  mail.recipient = "bob@example.test";
  mail.subject = "Our trip";
  mail.message = "Have a look!";
  mail.album_name = "Summer";
  mail.link = "http://127.0.0.1:8931/sharedalbum/abc123";
  mail.full_access = true;
  mail.date = 1772323200;  // 2026-03-01 00:00:00 UTC, a Sunday
  mail.id = "abc123.1";
  return mail;
}

TEST(ShareMailTest, APlainInvitationHasTheHeadersAndTheLink) {
  const std::string message = ComposeShareMail(Sample());
  const std::string head = HeaderPart(message);
  EXPECT_NE(head.find("Date: Sun, 01 Mar 2026 00:00:00 +0000\r\n"),
            std::string::npos);
  EXPECT_NE(head.find("From: Quillbay for Ann Lee <no-reply@quillbay.test>"),
            std::string::npos);
  EXPECT_NE(head.find("Reply-To: <ann@example.test>"), std::string::npos);
  EXPECT_NE(head.find("To: <bob@example.test>"), std::string::npos);
  EXPECT_NE(head.find("Subject: Our trip"), std::string::npos);
  EXPECT_NE(head.find("Message-ID: <abc123.1@quillbay.test>"),
            std::string::npos);
  EXPECT_NE(head.find("Content-Type: text/plain; charset=UTF-8"),
            std::string::npos);
  const std::string body = DecodeQp(BodyPart(message));
  EXPECT_NE(body.find("Ann Lee (ann@example.test) has shared the album "
                      "\"Summer\" with you on Quillbay."),
            std::string::npos);
  EXPECT_NE(body.find("Have a look!"), std::string::npos);
  EXPECT_NE(body.find("See the photos: http://127.0.0.1:8931/sharedalbum/"
                      "abc123"),
            std::string::npos);
  EXPECT_NE(body.find("full access"), std::string::npos);
  // Every line of the message ends in CRLF and none is longer than 78.
  size_t start = 0;
  while (start < message.size()) {
    const size_t end = message.find("\r\n", start);
    ASSERT_NE(end, std::string::npos) << "a line without CRLF";
    EXPECT_LE(end - start, 78u) << message.substr(start, end - start);
    EXPECT_EQ(message.substr(start, end - start).find('\n'), std::string::npos);
    start = end + 2;
  }
}

TEST(ShareMailTest, MarkupInTheMessageArrivesAsPlainText) {
  ShareMail mail = Sample();
  mail.message = DecodeShareText("&lt;script&gt;alert(1)&lt;/script&gt; &amp;");
  EXPECT_EQ(mail.message, "<script>alert(1)</script> &");
  const std::string message = ComposeShareMail(mail);
  // Only a plain-text part: no reader renders it as HTML.
  EXPECT_EQ(message.find("text/html"), std::string::npos);
  EXPECT_NE(DecodeQp(BodyPart(message)).find("<script>alert(1)</script> &"),
            std::string::npos);
  mail.full_access = false;
  EXPECT_NE(DecodeQp(BodyPart(ComposeShareMail(mail))).find("restricted"),
            std::string::npos);
}

TEST(ShareMailTest, LineBreaksInHeaderTextsStartNoHeaderOfTheirOwn) {
  ShareMail mail = Sample();
  mail.subject = "Hi\r\nBcc: eve@example.test";
  mail.sender_name = "Ann\nX-Evil: 1";
  const std::string head = HeaderPart(ComposeShareMail(mail));
  EXPECT_EQ(head.find("\r\nBcc:"), std::string::npos);
  EXPECT_EQ(head.find("\r\nX-Evil:"), std::string::npos);
  EXPECT_NE(head.find("Subject: Hi  Bcc: eve@example.test"), std::string::npos);
}

TEST(ShareMailTest, TextOutsideAsciiGoesAsEncodedWordsAndQuotedPrintable) {
  ShareMail mail = Sample();
  // "Fotos aus Köln" with a long tail, so that it takes two encoded words.
  mail.subject =
      "Fotos aus K\xC3\xB6ln und noch viel mehr aus dem Rheinland "
      "im Sommer";
  mail.message =
      "Gr\xC3\xBC\xC3\x9F"
      "e\n\x01\x07"
      "bell";
  const std::string message = ComposeShareMail(mail);
  const std::string head = HeaderPart(message);
  EXPECT_NE(head.find("Subject: =?UTF-8?B?"), std::string::npos);
  EXPECT_NE(head.find("?=\r\n =?UTF-8?B?"), std::string::npos);
  const std::string body = DecodeQp(BodyPart(message));
  EXPECT_NE(body.find("Gr\xC3\xBC\xC3\x9F"
                      "e\nbell"),
            std::string::npos);
  EXPECT_NE(BodyPart(message).find("Gr=C3=BC=C3=9Fe"), std::string::npos);
}

TEST(ShareMailTest,
     QuotedPrintableBreaksLongLinesSoftlyAndKeepsTrailingBlanks) {
  const std::string line(200, 'a');
  const std::string encoded = QuotedPrintable(line + " \nx=y");
  EXPECT_EQ(DecodeQp(encoded), line + " \nx=y");
  EXPECT_NE(encoded.find("=\r\n"), std::string::npos);
  EXPECT_NE(encoded.find("=20\r\n"), std::string::npos);
  EXPECT_NE(encoded.find("x=3Dy"), std::string::npos);
}

}  // namespace
}  // namespace qbpd::service
