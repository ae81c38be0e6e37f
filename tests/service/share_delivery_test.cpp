// Share invitations leave the service: into the data folder's maildir, or
// through an SMTP relay (a small sink on loopback here), one message for
// each accepted address; the link in it opens the album for the recipient
// and nothing else.
#include "service/mail_delivery.h"
#include "tests/service/service_fixture.h"
#include "tests/support/fake_mail_delivery.h"

#include <arpa/inet.h>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <netinet/in.h>
#include <regex>
#include <set>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd::service {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> FilesIn(const fs::path& folder) {
  std::vector<std::string> out;
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end;
       it.increment(error)) {
    std::ifstream in(it->path(), std::ios::binary);
    out.emplace_back(std::istreambuf_iterator<char>(in),
                     std::istreambuf_iterator<char>());
  }
  return out;
}

// A minimal SMTP server on a loopback port: it takes one client at a time,
// refuses the recipients in `refused` with 550, and keeps each message.
class SmtpSink {
 public:
  explicit SmtpSink(std::set<std::string> refused = {})
      : refused_(std::move(refused)) {
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::listen(listener_, 4) != 0 ||
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address),
                      &size) != 0) {
      return;
    }
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { Serve(); });
  }
  ~SmtpSink() {
    stop_ = true;
    ::shutdown(listener_, SHUT_RDWR);
    ::close(listener_);
    if (thread_.joinable()) {
      thread_.join();
    }
  }
  int port() const { return port_; }
  struct Mail {
    std::string from;
    std::vector<std::string> to;
    std::string data;
  };
  std::vector<Mail> mails() {
    std::lock_guard lock(mutex_);
    return mails_;
  }

 private:
  void Serve() {
    while (!stop_) {
      const int client = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
      if (client < 0) {
        return;
      }
      Talk(client);
      ::close(client);
    }
  }
  static void Say(int client, const std::string& line) {
    const std::string text = line + "\r\n";
    (void)!::write(client, text.data(), text.size());
  }
  void Talk(int client) {
    Say(client, "220 sink ESMTP");
    std::string buffer;
    Mail mail;
    bool in_data = false;
    char chunk[4096];
    while (true) {
      const ssize_t n = ::read(client, chunk, sizeof chunk);
      if (n <= 0) {
        return;
      }
      buffer.append(chunk, static_cast<size_t>(n));
      while (true) {
        if (in_data) {
          const size_t end = buffer.find("\r\n.\r\n");
          if (end == std::string::npos) {
            break;
          }
          mail.data = buffer.substr(0, end + 2);
          buffer.erase(0, end + 5);
          in_data = false;
          {
            std::lock_guard lock(mutex_);
            mails_.push_back(mail);
          }
          mail = Mail();
          Say(client, "250 kept");
          continue;
        }
        const size_t end = buffer.find("\r\n");
        if (end == std::string::npos) {
          break;
        }
        const std::string line = buffer.substr(0, end);
        buffer.erase(0, end + 2);
        const std::string verb = line.substr(0, 4);
        if (verb == "EHLO" || verb == "HELO") {
          Say(client, "250 sink");
        } else if (verb == "MAIL") {
          mail.from = line;
          Say(client, "250 ok");
        } else if (verb == "RCPT") {
          const size_t open = line.find('<');
          const std::string who =
              line.substr(open + 1, line.find('>') - open - 1);
          if (refused_.contains(who)) {
            Say(client, "550 no such mailbox");
          } else {
            mail.to.push_back(who);
            Say(client, "250 ok");
          }
        } else if (verb == "DATA") {
          in_data = true;
          Say(client, "354 go on");
        } else if (verb == "QUIT") {
          Say(client, "221 bye");
          return;
        } else {
          Say(client, "250 ok");
        }
      }
    }
  }

  std::set<std::string> refused_;
  int listener_ = -1;
  int port_ = 0;
  std::atomic<bool> stop_{false};
  std::thread thread_;
  std::mutex mutex_;
  std::vector<Mail> mails_;
};

TEST(MaildirDeliveryTest, EachMessageLandsWholeInNewWithPrivateModes) {
  testing::TempDir dir;
  const fs::path maildir = dir.path() / "mail";
  auto delivery = MakeMaildirDelivery(maildir);
  std::string error;
  ASSERT_EQ(delivery->Deliver("a@x.test", "b@y.test", "one\r\n", error),
            Delivery::kDelivered)
      << error;
  ASSERT_EQ(delivery->Deliver("a@x.test", "c@y.test", "two\r\n", error),
            Delivery::kDelivered)
      << error;
  std::vector<std::string> got = FilesIn(maildir / "new");
  std::sort(got.begin(), got.end());
  EXPECT_EQ(got, (std::vector<std::string>{"one\r\n", "two\r\n"}));
  EXPECT_TRUE(FilesIn(maildir / "tmp").empty());
  for (const char* folder : {"", "tmp", "new", "cur"}) {
    struct stat info {};
    ASSERT_EQ(::stat((maildir / folder).c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u) << folder;
  }
  for (const auto& entry : fs::directory_iterator(maildir / "new")) {
    struct stat info {};
    ASSERT_EQ(::stat(entry.path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
  }
}

TEST(MaildirDeliveryTest, AMaildirThatCannotBeMadeFailsWithItsReason) {
  testing::TempDir dir;
  // A file where the maildir should be.
  std::ofstream(dir.path() / "mail") << "in the way";
  auto delivery = MakeMaildirDelivery(dir.path() / "mail");
  std::string error;
  EXPECT_EQ(delivery->Deliver("a@x.test", "b@y.test", "m\r\n", error),
            Delivery::kFailed);
  EXPECT_NE(error.find("is not a folder"), std::string::npos) << error;
}

TEST(SmtpDeliveryTest, TheRelayGetsTheMessageAndRefusesWhatItRefuses) {
  SmtpSink sink({"nobody@y.test"});
  ASSERT_GT(sink.port(), 0);
  auto delivery =
      MakeSmtpDelivery("smtp://127.0.0.1:" + std::to_string(sink.port()));
  std::string error;
  EXPECT_EQ(delivery->Deliver("a@x.test", "b@y.test",
                              "Subject: hi\r\n\r\n.dot line\r\nend\r\n", error),
            Delivery::kDelivered)
      << error;
  EXPECT_EQ(delivery->Deliver("a@x.test", "nobody@y.test", "x\r\n", error),
            Delivery::kRefused);
  const auto mails = sink.mails();
  ASSERT_EQ(mails.size(), 1u);
  EXPECT_EQ(mails[0].to, std::vector<std::string>{"b@y.test"});
  EXPECT_NE(mails[0].from.find("<a@x.test>"), std::string::npos);
  // The relay saw the dot stuffed, as SMTP wants it.
  EXPECT_NE(mails[0].data.find("\r\n..dot line\r\nend\r\n"), std::string::npos)
      << mails[0].data;
}

TEST(SmtpDeliveryTest, ARelayThatIsNotThereFails) {
  int port = 0;
  {
    SmtpSink gone;
    port = gone.port();
  }
  auto delivery = MakeSmtpDelivery("smtp://127.0.0.1:" + std::to_string(port));
  std::string error;
  EXPECT_EQ(delivery->Deliver("a@x.test", "b@y.test", "x\r\n", error),
            Delivery::kFailed);
  EXPECT_NE(error.find("the mail relay failed"), std::string::npos) << error;
}

// The link of an invitation, read from its quoted-printable body (a long
// line is broken there by a soft break, "=" at a line's end).
std::string LinkIn(const std::string& message) {
  std::string body;
  for (size_t i = 0; i < message.size(); ++i) {
    if (message.compare(i, 3, "=\r\n") == 0) {
      i += 2;
    } else {
      body += message[i];
    }
  }
  std::smatch match;
  const std::regex link("(/sharedalbum/[0-9a-f]+)");
  return std::regex_search(body, match, link) ? match[1].str() : "";
}

class ShareDeliveryTest : public ServiceTest {
 protected:
  ShareDeliveryTest() {
    adjust_ = [this](ServiceOptions& options) { options.mail = mail_; };
  }
  std::pair<int, json> Share(const std::string& code,
                             const std::string& album,
                             const json& emails,
                             const std::string& access = "0") {
    return Call("ShareAlbum", {{"authCode", code},
                               {"albumId", album},
                               {"emails", emails},
                               {"subject", "Party &amp; more"},
                               {"message", "&lt;script&gt;x&lt;/script&gt;"},
                               {"access", access}});
  }
  std::shared_ptr<testing::FakeMailDelivery> mail_ =
      std::make_shared<testing::FakeMailDelivery>();
};

TEST_F(ShareDeliveryTest, OneMessageForEachAcceptedAddressAndNoneRefused) {
  const std::string code = DemoLogin();
  const std::string album = Upload(code, "", "Party", kPng).second["albumId"];
  mail_->refused = {"gone@example.test"};
  auto [status, answer] = Share(code, album,
                                {"bob@example.test", "bad", "gone@example.test",
                                 "BOB@example.test", "cy@example.test"});
  ASSERT_TRUE(answer["ok"]) << answer.dump();
  EXPECT_EQ(answer["accepted"], "bob@example.test,cy@example.test");
  const auto sent = mail_->sent();
  ASSERT_EQ(sent.size(), 2u);
  EXPECT_EQ(sent[0].recipient, "bob@example.test");
  EXPECT_EQ(sent[1].recipient, "cy@example.test");
  EXPECT_EQ(sent[0].sender, "no-reply@quillbay.test");
  EXPECT_NE(sent[0].message.find("Subject: Party & more"), std::string::npos);
  EXPECT_NE(sent[0].message.find("<script>x</script>"), std::string::npos);
  // The refused address is not in the address book either.
  EXPECT_EQ(Call("GetAddressBook", {{"authCode", code}}).second["emails"],
            json({"bob@example.test", "cy@example.test"}));

  // The link opens the album without any session, and its photo too.
  const std::string link = LinkIn(sent[0].message);
  ASSERT_FALSE(link.empty());
  EXPECT_EQ(link, LinkIn(sent[1].message));
  auto [page_status, page] = Page(link);
  EXPECT_EQ(page_status, 200);
  EXPECT_NE(page.find("Party"), std::string::npos);
  EXPECT_NE(page.find("restricted access"), std::string::npos);
  EXPECT_EQ(page.find("download"), std::string::npos);
  std::smatch photo;
  ASSERT_TRUE(std::regex_search(
      page, photo, std::regex("(/sharedalbum/[0-9a-f]+/photo/P[0-9]+)")));
  auto [photo_status, bytes] = Page(photo[1].str());
  EXPECT_EQ(photo_status, 200);
  EXPECT_EQ(bytes, kPng);
  // A guessed token or a photo of another album is not found.
  EXPECT_EQ(
      Page("/sharedalbum/00112233445566778899aabbccddeeff0011223344556677")
          .first,
      404);
  const std::string other =
      Upload(code, "", "Private", kJpeg).second["imageId"];
  EXPECT_EQ(Page(link + "/photo/" + other).first, 404);
}

TEST_F(ShareDeliveryTest, FullAccessOffersTheDownload) {
  const std::string code = DemoLogin();
  const std::string album = Upload(code, "", "Party", kPng).second["albumId"];
  ASSERT_TRUE(Share(code, album, {"bob@example.test"}, "1").second["ok"]);
  auto [status, page] = Page(LinkIn(mail_->sent().at(0).message));
  EXPECT_EQ(status, 200);
  EXPECT_NE(page.find("full access"), std::string::npos);
  EXPECT_NE(page.find("download"), std::string::npos);
}

TEST_F(ShareDeliveryTest, AMailSystemThatFailsFailsTheShareAndStoresNothing) {
  const std::string code = DemoLogin();
  const std::string album = Upload(code, "", "Party", kPng).second["albumId"];
  mail_->fail_after = 1;
  auto [status, answer] =
      Share(code, album, {"bob@example.test", "cy@example.test"});
  EXPECT_FALSE(answer["ok"]);
  EXPECT_EQ(answer["errCode"], "9999");
  EXPECT_EQ(mail_->attempts(), 2);
  EXPECT_FALSE(Call("GetAddressBook", {{"authCode", code}}).second["ok"]);
  auto [page_status, page] =
      Page("/addressbook/AlbumID=" + album + "/u_=" + code);
  EXPECT_EQ(page.find("bob@example.test"), std::string::npos);
}

TEST_F(ShareDeliveryTest, WithoutAnyValidAddressNothingIsSent) {
  const std::string code = DemoLogin();
  const std::string album = Upload(code, "", "Party", kPng).second["albumId"];
  auto [status, answer] = Share(code, album, {"bad", ""});
  EXPECT_TRUE(answer["ok"]);
  EXPECT_EQ(answer["accepted"], "");
  EXPECT_EQ(mail_->attempts(), 0);
}

}  // namespace
}  // namespace qbpd::service
