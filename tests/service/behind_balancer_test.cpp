// The service's front behind a load balancer: the client's address comes
// from the balancer's X-Forwarded-For when the balancer is trusted, so that
// the failed-login counts per address hold the client, not the balancer.
#include "platform/loopback_port.h"
#include "tests/service/service_process.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <string>

namespace qbpd::service {
namespace {

// Ten failed guesses forwarded for one client: that client's next try
// waits, and another client's does not. `trusted` names the balancer (the
// test's loopback address) to the front.
std::pair<std::string, std::string> TwoClientsAfterTenFailures(bool trusted) {
  testing::TempDir dir;
  HeldLoopbackPort held;
  std::vector<std::string> args = {"--port", std::to_string(held.port()),
                                   "--data-dir", dir.path().string(),
                                   "--front"};
  if (trusted) {
    args.insert(args.end(), {"--trusted-proxy", "127.0.0.0/8"});
  }
  testing::ServiceProcess service(args);
  if (service.Port() != held.port()) {
    return {"no service", "no service"};
  }
  httplib::Client balancer("127.0.0.1", held.port());
  balancer.set_read_timeout(10, 0);
  const auto login = [&](const std::string& client) {
    httplib::Headers headers = {{"X-Forwarded-For", client}};
    auto res =
        balancer.Post("/api/LoginUser", headers,
                      R"({"email":"nobody@example.test","password":"x"})",
                      "application/json");
    return res ? res->body : std::string("no answer");
  };
  for (int i = 0; i < 10; ++i) {
    // What a client sends itself comes first; the balancer adds the
    // address it saw, which is the one that counts.
    EXPECT_NE(
        login("10.9.9." + std::to_string(i) + ", 203.0.113.7").find("\"2006\""),
        std::string::npos);
  }
  return {login("203.0.113.7"), login("203.0.113.8")};
}

TEST(BehindBalancerTest, ATrustedBalancerNamesEachClient) {
  const auto [same, other] = TwoClientsAfterTenFailures(/*trusted=*/true);
  EXPECT_NE(same.find("\"2022\""), std::string::npos) << same;
  EXPECT_NE(other.find("\"2006\""), std::string::npos) << other;
}

TEST(BehindBalancerTest, AnUntrustedOneIsOneClientForAll) {
  const auto [same, other] = TwoClientsAfterTenFailures(/*trusted=*/false);
  EXPECT_NE(same.find("\"2022\""), std::string::npos) << same;
  EXPECT_NE(other.find("\"2022\""), std::string::npos) << other;
}

TEST(BehindBalancerTest, BadOptionsOfSeveralInstancesAreRefused) {
  testing::TempDir dir;
  const std::string data = dir.path().string() + "/data";
  struct Case {
    std::vector<std::string> args;
    int status;
  };
  const Case cases[] = {
      // A balancer is named to the front; without one, to nobody.
      {{"--port", "0", "--data-dir", data, "--trusted-proxy", "10.0.0.1"}, 2},
      {{"--port", "8931", "--data-dir", data, "--front", "--trusted-proxy",
        "balancer.example"},
       2},
      {{"--port", "0", "--data-dir", data, "--database"}, 2},
      // A database that is not there: the start fails, nothing listens.
      {{"--port", "0", "--data-dir", data, "--database",
        "host=" + dir.path().string() + " connect_timeout=2"},
       1},
  };
  for (const Case& c : cases) {
    testing::ServiceProcess service(c.args);
    EXPECT_EQ(service.Wait(), c.status) << c.args.back();
    EXPECT_EQ(service.NextLine(), "") << c.args.back();
  }
}

}  // namespace
}  // namespace qbpd::service
