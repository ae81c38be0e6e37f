#include "platform/internet_check.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <chrono>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace qbpd {
namespace {

TEST(ParseHostAndPortTest, ReadsTheSiteAddressForms) {
  struct Case {
    const char* address;
    const char* host;  // nullptr: refused
    int port;
  };
  const Case cases[] = {
      {"http://127.0.0.1:8931", "127.0.0.1", 8931},
      {"http://example.test", "example.test", 80},
      {"https://example.test/path?q=1", "example.test", 443},
      {"example.test:81/x", "example.test", 81},
      {"http://user@host.test:82", "host.test", 82},
      {"http://[::1]:8443/a", "::1", 8443},
      {"http://[::1]", "::1", 80},
      {"", nullptr, 0},
      {"http://", nullptr, 0},
      {"http://host:0", nullptr, 0},
      {"http://host:99999", nullptr, 0},
      {"http://host:8a", nullptr, 0},
      {"http://[::1", nullptr, 0},
  };
  for (const Case& c : cases) {
    std::optional<HostAndPort> parsed = ParseHostAndPort(c.address);
    if (c.host == nullptr) {
      EXPECT_FALSE(parsed.has_value()) << c.address;
      continue;
    }
    ASSERT_TRUE(parsed.has_value()) << c.address;
    EXPECT_EQ(parsed->host, c.host) << c.address;
    EXPECT_EQ(parsed->port, c.port) << c.address;
  }
}

// A listening loopback socket, closed with the object.
class Listener {
 public:
  Listener() {
    fd_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
    listen(fd_, 4);
    socklen_t length = sizeof addr;
    getsockname(fd_, reinterpret_cast<sockaddr*>(&addr), &length);
    port_ = ntohs(addr.sin_port);
  }
  ~Listener() { Close(); }
  void Close() {
    if (fd_ >= 0) {
      close(fd_);
      fd_ = -1;
    }
  }
  int port() const { return port_; }

 private:
  int fd_ = -1;
  int port_ = 0;
};

TEST(CheckInternetConnectionTest, TrueOnlyWhileTheServiceListens) {
  Listener service;
  std::string address = "http://127.0.0.1:" + std::to_string(service.port());
  EXPECT_TRUE(CheckInternetConnection(address));
  EXPECT_TRUE(
      CheckInternetConnection("localhost:" + std::to_string(service.port())));
  service.Close();
  EXPECT_FALSE(CheckInternetConnection(address));
  EXPECT_FALSE(CheckInternetConnection("not an address:"));
  EXPECT_FALSE(CheckInternetConnection(""));
}

TEST(CheckInternetConnectionTest, AnUnknownNameIsNoConnection) {
  EXPECT_FALSE(CheckInternetConnection("http://no-such-host.invalid:80",
                                       std::chrono::milliseconds(500)));
}

}  // namespace
}  // namespace qbpd
