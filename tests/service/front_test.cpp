// The front's configuration: which peers may name the client.
#include "service/front.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace qbpd::service {
namespace {

TEST(FrontTest, OnlyAddressesAndNetworksAreTrustedProxies) {
  struct Case {
    const char* text;
    bool taken;
  };
  const Case cases[] = {
      {"10.0.0.5", true},     {"10.0.0.0/24", true},
      {"0.0.0.0/0", true},    {"fd00::1", true},
      {"fd00::/8", true},     {"10.0.0.0/33", false},  // too many bits
      {"fd00::/129", false},  {"10.0.0.0/", false},
      {"10.0.0.0/2x", false}, {"10.0.0", false},
      {"balancer", false},    {"", false},
      {"10.0.0.5;", false},  // would end nginx's line early
      {"10.0.0.5 x", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(IsProxyAddress(c.text), c.taken) << c.text;
  }
}

TEST(FrontTest, TrustedProxiesNameTheClientAndOthersDoNot) {
  FrontOptions options;
  options.folder = "/srv/qbpd/front";
  const std::string alone = FrontConfiguration(options);
  EXPECT_EQ(alone.find("real_ip"), std::string::npos) << alone;
  EXPECT_NE(alone.find("proxy_set_header X-Real-IP $remote_addr;"),
            std::string::npos);

  options.trusted_proxies = {"10.0.0.5", "fd00::/8"};
  const std::string behind = FrontConfiguration(options);
  EXPECT_NE(behind.find("set_real_ip_from 10.0.0.5;\n"), std::string::npos);
  EXPECT_NE(behind.find("set_real_ip_from fd00::/8;\n"), std::string::npos);
  EXPECT_NE(behind.find("real_ip_header X-Forwarded-For;\n"),
            std::string::npos);
  EXPECT_NE(behind.find("real_ip_recursive on;\n"), std::string::npos);

  options.trusted_proxies = {"10.0.0.5; evil on"};
  EXPECT_THROW(FrontConfiguration(options), std::invalid_argument);
}

}  // namespace
}  // namespace qbpd::service
