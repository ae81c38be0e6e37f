// The service client over HTTPS, with a certificate authority made for the
// test: a good certificate is trusted; a certificate for another host, one
// that has expired and one from an unknown authority are each refused as no
// connection, before the password leaves the program. The peer is a server
// that records every request that reaches it; then qbpd-service itself
// serves HTTPS with --cert and --key.
#include "online/online_common.h"
#include "online/service_client.h"
#include "online/upgrade_info.h"
#include "platform/forms/scripted_host.h"
#include "platform/http_transport.h"
#include "tests/online/service_process.h"
#include "tests/online/tls/test_authority.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace qbpd {
namespace {

using testing::ServiceProcess;
using testing::TempDir;
using testing::TestAuthority;

constexpr char kPassword[] = "Correct-Horse-7";
constexpr char kDemoEmail[] = "demo@quillbay.test";

// An HTTPS server on a free loopback port that keeps the body of every
// request that reaches it and answers a login as the service would.
class RecordingServer {
 public:
  RecordingServer(const TestAuthority::Issued& issued)
      : server_(issued.certificate.c_str(), issued.key.c_str()) {
    server_.Post(R"(/api/([A-Za-z]+))", [this](const httplib::Request& req,
                                               httplib::Response& res) {
      {
        std::lock_guard<std::mutex> lock(mutex_);
        bodies_.push_back(req.body);
      }
      res.set_content(
          R"({"ok":true,"errCode":"","errText":"","session":["S1","U1"]})",
          "application/json");
    });
    port_ = server_.is_valid() ? server_.bind_to_any_port("127.0.0.1") : -1;
    if (port_ > 0) {
      thread_ = std::thread([this] { server_.listen_after_bind(); });
    }
  }
  ~RecordingServer() {
    server_.stop();
    if (thread_.joinable()) {
      thread_.join();
    }
  }

  bool ok() const { return port_ > 0; }
  std::string Site() const {
    return "https://localhost:" + std::to_string(port_) + "/api";
  }
  std::vector<std::string> Bodies() {
    std::lock_guard<std::mutex> lock(mutex_);
    return bodies_;
  }

 private:
  httplib::SSLServer server_;
  int port_ = -1;
  std::thread thread_;
  std::mutex mutex_;
  std::vector<std::string> bodies_;
};

class HttpsTest : public ::testing::Test {
 protected:
  HttpsTest() : ca_(dir_.path(), "Quillbay Test CA") {}

  // A client that trusts `ca_file` ("" the system's store).
  std::unique_ptr<ctlExtAPI> Client(const std::string& ca_file) {
    return MakeServiceClient(host_, [ca_file] {
      HttpTransportOptions options;
      options.ca_file = ca_file;
      options.connect_timeout_ms = 5000;
      return MakeCurlTransport(options);
    });
  }

  struct Login {
    bool ok = false;
    std::string code;
    std::string text;
    StringArray session;
  };
  Login LogIn(ctlExtAPI& client,
              const std::string& site,
              const std::string& email,
              const std::string& password) {
    Login login;
    login.ok = client.LoginUser(site, email, password, login.session,
                                login.code, login.text);
    return login;
  }

  TempDir dir_;
  TestAuthority ca_;
  ScriptedHost host_;
};

TEST_F(HttpsTest, AGoodCertificateCarriesTheLogin) {
  ASSERT_TRUE(ca_.ok());
  const auto good = ca_.Issue("good", "DNS:localhost,IP:127.0.0.1", 2);
  ASSERT_TRUE(good.ok);
  RecordingServer server(good);
  ASSERT_TRUE(server.ok());
  auto client = Client(ca_.certificate().string());
  const Login login =
      LogIn(*client, server.Site(), "ann@example.test", kPassword);
  EXPECT_TRUE(login.ok) << login.code << " " << login.text;
  EXPECT_EQ(login.session[0], "S1");
  // The recorder sees what arrives: here the password did.
  const auto bodies = server.Bodies();
  ASSERT_EQ(bodies.size(), 1u);
  EXPECT_NE(bodies[0].find(kPassword), std::string::npos);
}

// Each refusal is "no connection": the login form then says "Please check
// Internet Connection", and the server never got a request.
TEST_F(HttpsTest, BadCertificatesAreRefusedBeforeThePasswordIsSent) {
  ASSERT_TRUE(ca_.ok());
  TestAuthority stranger(dir_.path(), "Unknown CA");
  ASSERT_TRUE(stranger.ok());
  struct Case {
    const char* what;
    TestAuthority::Issued issued;
    // What the transport says underneath, so that each case fails for its
    // own reason.
    const char* reason;
  };
  const Case cases[] = {
      {"a certificate for another host",
       ca_.Issue("other-host", "DNS:photos.example.com", 2),
       "no alternative certificate subject name matches"},
      {"an expired certificate",
       ca_.Issue("expired", "DNS:localhost,IP:127.0.0.1", -1),
       "certificate has expired"},
      {"an unknown authority",
       stranger.Issue("unknown", "DNS:localhost,IP:127.0.0.1", 2),
       "unable to get local issuer certificate"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    ASSERT_TRUE(c.issued.ok);
    RecordingServer server(c.issued);
    ASSERT_TRUE(server.ok());
    auto client = Client(ca_.certificate().string());
    const Login login =
        LogIn(*client, server.Site(), "ann@example.test", kPassword);
    EXPECT_FALSE(login.ok);
    EXPECT_EQ(login.code, kErrNoConnection);
    EXPECT_EQ(LoginFailureText(login.code, login.text), kCheckConnectionLabel);
    HttpTransportOptions options;
    options.ca_file = ca_.certificate().string();
    HttpRequest request;
    request.url = server.Site();
    const HttpResponse raw =
        MakeCurlTransport(options)->Perform(request, [] {});
    EXPECT_EQ(raw.failure, HttpFailure::kNoConnection);
    EXPECT_NE(raw.error_text.find(c.reason), std::string::npos)
        << raw.error_text;
    EXPECT_TRUE(server.Bodies().empty());
  }
}

// Without the test's authority in the client's file, the system's store is
// used, which doesn't know it.
TEST_F(HttpsTest, ThePrivateAuthorityIsUnknownToTheSystemStore) {
  ASSERT_TRUE(ca_.ok());
  const auto good = ca_.Issue("good", "DNS:localhost,IP:127.0.0.1", 2);
  ASSERT_TRUE(good.ok);
  RecordingServer server(good);
  ASSERT_TRUE(server.ok());
  auto client = Client("");
  const Login login =
      LogIn(*client, server.Site(), "ann@example.test", kPassword);
  EXPECT_FALSE(login.ok);
  EXPECT_EQ(login.code, kErrNoConnection);
  EXPECT_TRUE(server.Bodies().empty());
}

// qbpd-service serves HTTPS with --cert and --key: a login, and the upgrade
// description names its download over https.
TEST_F(HttpsTest, TheReferenceServiceServesHttps) {
  ASSERT_TRUE(ca_.ok());
  const auto good = ca_.Issue("service", "DNS:localhost,IP:127.0.0.1", 2);
  ASSERT_TRUE(good.ok);
  TempDir data;
  ServiceProcess service(
      QBPD_SERVICE_PROGRAM, data.path(),
      {"--seed-demo", "--cert", good.certificate.string(), "--key",
       good.key.string(), "--upgrade-version", "99.0"});
  ASSERT_TRUE(service.ok()) << service.error();
  ASSERT_EQ(service.site().rfind("https://localhost:", 0), 0u);
  auto client = Client(ca_.certificate().string());
  const Login login =
      LogIn(*client, service.site(), kDemoEmail, service.demo_password());
  EXPECT_TRUE(login.ok) << login.code << " " << login.text;
  EXPECT_FALSE(login.session[0].empty());

  std::string location, version, size, notes;
  EXPECT_TRUE(client->GetUpgradeInfo(service.base() + "/download/upgrade.xml",
                                     "1.0", location, version, size, notes));
  EXPECT_EQ(location, service.base() + "/download/upgrade1.exe");

  // A client that doesn't trust the authority gets nothing from it.
  auto stranger = Client("");
  EXPECT_FALSE(
      LogIn(*stranger, service.site(), kDemoEmail, service.demo_password()).ok);
}

TEST_F(HttpsTest, TheServiceRefusesACertificateWithoutItsKey) {
  ASSERT_TRUE(ca_.ok());
  const auto good = ca_.Issue("service", "DNS:localhost", 2);
  const auto other = ca_.Issue("other", "DNS:localhost", 2);
  ASSERT_TRUE(good.ok && other.ok);
  TempDir data;
  ServiceProcess service(
      QBPD_SERVICE_PROGRAM, data.path(),
      {"--cert", good.certificate.string(), "--key", other.key.string()});
  EXPECT_FALSE(service.ok());
}

}  // namespace
}  // namespace qbpd
