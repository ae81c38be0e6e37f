// A share through the program's forms with the real client against a real
// qbpd-service: the photos go into a new album and the service writes one
// e-mail file into its maildir for exactly each address it accepted, with
// the album's link, which opens the album for the recipient; the next share
// offers those addresses from the address book.
#include "online/frm_address_book.h"
#include "online/frm_share_congrats.h"
#include "online/frm_share_info.h"
#include "platform/http_transport.h"
#include "tests/online/online_fixture.h"
#include "tests/online/service_process.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>

namespace qbpd::testing_support {
namespace {

namespace fs = std::filesystem;
constexpr char kDemoEmail[] = "demo@quillbay.test";

// Quoted-printable text decoded, soft breaks joined and CRLF as "\n".
std::string DecodeQp(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '=' && i + 2 < text.size() && text[i + 1] == '\r') {
      i += 2;
    } else if (text[i] == '=' && i + 2 < text.size()) {
      out += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else if (text[i] != '\r') {
      out += text[i];
    }
  }
  return out;
}

std::vector<std::string> Mails(const fs::path& folder) {
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

std::string Header(const std::string& mail, const std::string& name) {
  const std::string head = mail.substr(0, mail.find("\r\n\r\n"));
  std::smatch match;
  const std::regex line("(^|\r\n)" + name + ": ([^\r]*)");
  return std::regex_search(head, match, line) ? match[2].str() : "";
}

class ShareRoadTest : public OnlineTest {
 protected:
  void SetUp() override {
    service_ = std::make_unique<testing::ServiceProcess>(
        QBPD_SERVICE_PROGRAM, service_dir_.path(),
        std::vector<std::string>{"--seed-demo"});
    ASSERT_TRUE(service_->ok()) << service_->error();
    site_ = service_->site();
    address_ = service_->base();
    real_client_ = true;
  }

  HttpResponse Get(const std::string& url) {
    auto transport = MakeCurlTransport();
    HttpRequest request;
    request.url = url;
    return transport->Perform(request, [] { return true; });
  }

  testing::TempDir service_dir_;
  std::unique_ptr<testing::ServiceProcess> service_;
};

TEST_F(ShareRoadTest, AShareLandsAsOneMailForEachAcceptedAddress) {
  WritePhotos(3);
  Start();
  Select(3);
  StoreLogin(kDemoEmail, service_->demo_password(), "True");
  QueueClick("frmMainWindow", "imgShare");
  Queue("share form", [this] {
    auto& form = app().forms().Get<frmShareInfo>();
    // The demo account's book is empty: no button.
    EXPECT_FALSE(form.imgAddressBook.Visible());
    EXPECT_EQ(form.lblPhotosSelect.Caption(), "3 photo(s)");
  });
  // "dave@example.c" passes the program's rule but not the service's.
  QueueText("frmShareInfo", "txtTo",
            "bob@example.com; Carol@Example.org, dave@example.c, "
            "BOB@example.com");
  QueueText("frmShareInfo", "txtAlbum", "Beach & <b>sun</b>");
  QueueText("frmShareInfo", "txtSubject", "Photos \"from\" the beach");
  QueueText("frmShareInfo", "txtMessage", "<script>alert('x')</script> & more");
  QueueClick("frmShareInfo", "imgContinue");
  Queue("result", [this] {
    auto& page = app().forms().Get<frmShareCongrats>();
    EXPECT_EQ(page.lblMailId.Caption(), "bob@example.com\ncarol@example.org");
  });
  QueueClick("frmShareCongrats", "imgOK");
  Run();
  EXPECT_EQ(session().giUploadedCount, 3);
  EXPECT_TRUE(Messages().empty());

  std::vector<std::string> mails = Mails(service_dir_.path() / "mail" / "new");
  ASSERT_EQ(mails.size(), 2u);
  std::vector<std::string> to;
  for (const std::string& mail : mails) {
    to.push_back(Header(mail, "To"));
    EXPECT_EQ(Header(mail, "Subject"), "Photos \"from\" the beach");
    EXPECT_EQ(Header(mail, "Content-Type"), "text/plain; charset=UTF-8");
    EXPECT_EQ(mail.find("text/html"), std::string::npos);
    const std::string body = DecodeQp(mail.substr(mail.find("\r\n\r\n") + 4));
    // The message arrives as the text it was, not as markup or entities.
    EXPECT_NE(body.find("<script>alert('x')</script> & more"),
              std::string::npos)
        << body;
    EXPECT_NE(body.find("\"Beach & <b>sun</b>\""), std::string::npos) << body;
  }
  std::sort(to.begin(), to.end());
  EXPECT_EQ(to, (std::vector<std::string>{"<Carol@Example.org>",
                                          "<bob@example.com>"}));

  // The link opens the album, its name escaped, without any session.
  std::smatch link;
  const std::string body =
      DecodeQp(mails[0].substr(mails[0].find("\r\n\r\n") + 4));
  ASSERT_TRUE(std::regex_search(body, link,
                                std::regex("http://[^ \n]*/sharedalbum/"
                                           "[0-9a-f]+")));
  const HttpResponse page = Get(link[0].str());
  EXPECT_EQ(page.status, 200);
  EXPECT_NE(page.body.find("Beach &amp; &lt;b&gt;sun&lt;/b&gt;"),
            std::string::npos);
  EXPECT_EQ(page.body.find("<b>sun</b>"), std::string::npos);
  EXPECT_NE(page.body.find("3 photo(s)"), std::string::npos);

  // The next share offers the accepted addresses from the address book.
  user::Click(main().imgClear);
  Select(1);
  QueueClick("frmMainWindow", "imgShare");
  Queue("address book", [this] {
    auto& form = app().forms().Get<frmShareInfo>();
    EXPECT_TRUE(form.imgAddressBook.Visible());
    EXPECT_EQ(form.lblToText.Caption(),
              "Enter email addresses seperated by commas or add from ");
  });
  QueueClick("frmShareInfo", "imgAddressBook");
  Queue("pick", [this] {
    auto& book = app().forms().Get<frmAddressBook>();
    ASSERT_EQ(book.lstEmailList.ListCount(), 2);
    EXPECT_EQ(book.lstEmailList.List(0), "bob@example.com");
    EXPECT_EQ(book.lstEmailList.List(1), "Carol@Example.org");
    user::Click(book.lblSelectAll);
  });
  QueueClick("frmAddressBook", "imgContinue");
  Queue("recipients", [this] {
    EXPECT_EQ(app().forms().Get<frmShareInfo>().txtTo.Text(),
              "bob@example.com,Carol@Example.org");
  });
  QueueClick("frmShareInfo", "imgCancel");
  Run();
  EXPECT_EQ(Mails(service_dir_.path() / "mail" / "new").size(), 2u);
}

}  // namespace
}  // namespace qbpd::testing_support
