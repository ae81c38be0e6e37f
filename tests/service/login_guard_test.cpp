// Logins under attack: the slow password check holds no other request up,
// and repeated failures for an account or from an address slow down and then
// lock, on the service's own clock.
#include "service/core_support.h"
#include "service/login_throttle.h"
#include "tests/service/service_fixture.h"

#include <chrono>
#include <future>

namespace qbpd::service {
namespace {

constexpr const char* kThrottled = "2022";

class LoginGuardTest : public ServiceTest {
 protected:
  LoginGuardTest() {
    adjust_ = [this](ServiceOptions& options) {
      options.password_check = [this](const std::string& hash,
                                      const std::string& password) {
        ++checks_;
        if (hold_) {
          hold_();
        }
        return crypto_check_(hash, password);
      };
    };
  }

  json Try(const std::string& email, const std::string& password) {
    return Call("LoginUser", {{"email", email}, {"password", password}}).second;
  }

  std::atomic<int> checks_{0};
  std::function<void()> hold_;
  // The service's own check, made to wait or counted around it.
  std::function<bool(const std::string&, const std::string&)> crypto_check_ =
      PasswordMatches;
};

TEST_F(LoginGuardTest, ThePasswordCheckHoldsNoOtherRequestUp) {
  std::promise<void> entered, release;
  std::shared_future<void> released = release.get_future().share();
  hold_ = [&] {
    entered.set_value();
    released.wait();
  };
  auto login = std::async(std::launch::async, [&] {
    httplib::Client other("127.0.0.1", port_);
    other.set_read_timeout(30, 0);
    auto res = other.Post(
        "/api/LoginUser",
        json({{"email", kDemoEmail}, {"password", kTestDemoPassword}}).dump(),
        "application/json");
    return res ? json::parse(res->body, nullptr, false) : json();
  });
  // A bound, not a measurement: the check is reached or the test fails.
  ASSERT_EQ(entered.get_future().wait_for(std::chrono::seconds(30)),
            std::future_status::ready);
  // While the login's check runs, another request is answered (with the
  // check holding the lock, this one would wait until the read timeout).
  auto [status, prices] = Call("GetPriceList", json::object());
  EXPECT_EQ(status, 200);
  EXPECT_TRUE(prices["ok"]) << prices.dump();
  hold_ = nullptr;
  release.set_value();
  const json answer = login.get();
  EXPECT_TRUE(answer["ok"]) << answer.dump();
}

TEST_F(LoginGuardTest, FailuresForOneAccountSlowDownThenLock) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Try(kDemoEmail, "wrong")["errCode"], "2007") << i;
  }
  // The fourth try comes too soon: refused without a check, whatever the
  // password, and told why.
  const int checked = checks_;
  json refused = Try(kDemoEmail, kTestDemoPassword);
  EXPECT_EQ(refused["errCode"], kThrottled);
  EXPECT_EQ(refused["errText"],
            "Too many failed logins. Please wait a few minutes and try again.");
  EXPECT_EQ(checks_, checked);
  // The case of the address makes no other account of it.
  EXPECT_EQ(Try("DEMO@Quillbay.Test", kTestDemoPassword)["errCode"],
            kThrottled);

  // A second later the right password lets the owner in, and the count
  // starts again.
  now_ += 1;
  EXPECT_TRUE(Try(kDemoEmail, kTestDemoPassword)["ok"]);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Try(kDemoEmail, "wrong")["errCode"], "2007") << i;
  }

  // Failures spaced as the growing pauses allow lock the account at the
  // tenth, for a quarter of an hour.
  for (int i = 3; i < 10; ++i) {
    now_ += 61;
    EXPECT_EQ(Try(kDemoEmail, "wrong")["errCode"], "2007") << i;
  }
  now_ += 61;
  EXPECT_EQ(Try(kDemoEmail, kTestDemoPassword)["errCode"], kThrottled);
  now_ += 15 * 60 - 61 - 1;
  EXPECT_EQ(Try(kDemoEmail, kTestDemoPassword)["errCode"], kThrottled);
  now_ += 1;
  EXPECT_TRUE(Try(kDemoEmail, kTestDemoPassword)["ok"]);
}

TEST_F(LoginGuardTest, FailuresFromOneAddressSlowItDownForEveryAccount) {
  // Ten guesses at accounts that don't exist cost nothing...
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(
        Try("nobody" + std::to_string(i) + "@example.test", "x")["errCode"],
        "2006")
        << i;
  }
  // ...then the address waits, also for a real account.
  EXPECT_EQ(Try(kDemoEmail, kTestDemoPassword)["errCode"], kThrottled);
  now_ += 1;
  EXPECT_TRUE(Try(kDemoEmail, kTestDemoPassword)["ok"]);
}

TEST(LoginThrottleTest, ForgetsOldFailuresAndKeepsItsSizeBounded) {
  LoginThrottle throttle(ThrottlePolicy{}, 4);
  for (int i = 0; i < 3; ++i) {
    throttle.Failed("a", 100);
  }
  EXPECT_EQ(throttle.WaitFor("a", 100), 1);
  EXPECT_EQ(throttle.WaitFor("a", 101), 0);
  throttle.Failed("a", 101);
  EXPECT_EQ(throttle.WaitFor("a", 101), 2);
  // A quarter of an hour later the failures are forgotten.
  EXPECT_EQ(throttle.WaitFor("a", 101 + 15 * 60), 0);
  throttle.Failed("a", 101 + 15 * 60);
  EXPECT_EQ(throttle.WaitFor("a", 101 + 15 * 60), 0);

  // A flood of keys keeps at most the capacity, the newest among them.
  for (int i = 0; i < 50; ++i) {
    for (int n = 0; n < 3; ++n) {
      throttle.Failed("k" + std::to_string(i), 2000 + i);
    }
  }
  EXPECT_LE(throttle.size(), 4u);
  EXPECT_EQ(throttle.WaitFor("k49", 2049), 1);
}

}  // namespace
}  // namespace qbpd::service
