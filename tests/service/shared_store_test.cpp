// Two instances of the service on one PostgreSQL database and one shared
// data folder, as they run behind a load balancer: a throwaway cluster, two
// real qbpd-service processes, and clients that go to either.
#include "service/core_support.h"
#include "service/db.h"
#include "service/service_core.h"
#include "tests/service/pg_cluster.h"
#include "tests/service/service_fixture.h"
#include "tests/service/service_process.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <future>
#include <latch>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace qbpd::service {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

// A client of one instance.
class Client {
 public:
  explicit Client(int port) : http_("127.0.0.1", port) {
    http_.set_read_timeout(30, 0);
  }

  json Call(const std::string& operation, const json& body) {
    auto res = http_.Post(("/api/" + operation).c_str(), body.dump(),
                          "application/json");
    return res ? json::parse(res->body, nullptr, false) : json();
  }

  json Upload(const std::string& code,
              const std::string& album_id,
              const std::string& album_name,
              const std::string& content) {
    httplib::Params params = {{"authcode", code},    {"numimages", "1"},
                              {"albumid", album_id}, {"albumname", album_name},
                              {"sourcecode", "QBC"}, {"file", "/p/a.png"}};
    httplib::MultipartFormDataItems items = {
        {"File", content, "a.png", "application/octet-stream"}};
    auto res = http_.Post(
        httplib::append_query_params("/exuploadimages", params).c_str(), items);
    return res ? json::parse(res->body, nullptr, false) : json();
  }

  std::pair<int, std::string> Get(const std::string& path) {
    auto res = http_.Get(path.c_str());
    return res ? std::pair(res->status, res->body) : std::pair(0, "");
  }

 private:
  httplib::Client http_;
};

// The smallest PNG, told apart by what follows its header.
std::string Photo(const std::string& mark) {
  return kPng + mark;
}

std::string DemoPassword(const fs::path& data) {
  std::ifstream file(data / kDemoAccountFile);
  std::string line;
  while (std::getline(file, line)) {
    if (line.rfind("Password: ", 0) == 0) {
      return line.substr(10);
    }
  }
  return "";
}

// One cluster for the tests of this file (each test its own database),
// stopped and removed after the last of them, failed or not.
class SharedStoreTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { cluster = new testing::PgCluster(); }
  static void TearDownTestSuite() {
    delete cluster;
    cluster = nullptr;
  }

  void SetUp() override {
    if (!cluster_.installed()) {
      GTEST_SKIP() << cluster_.why();
    }
    ASSERT_TRUE(cluster_.running()) << cluster_.why();
  }

  static testing::PgCluster* cluster;
  testing::PgCluster& cluster_ = *cluster;
  testing::TempDir shared_;
};

testing::PgCluster* SharedStoreTest::cluster = nullptr;

TEST_F(SharedStoreTest, TwoInstancesServeOneStoreAsOne) {
  const fs::path data = shared_ / "data";
  const std::vector<std::string> args = {"--port",
                                         "0",
                                         "--data-dir",
                                         data.string(),
                                         "--seed-demo",
                                         "--database",
                                         cluster_.NewDatabase("instances")};
  // Both start at once: the tables are made and seeded once.
  testing::ServiceProcess first_process(args);
  testing::ServiceProcess second_process(args);
  const int first_port = first_process.Port();
  const int second_port = second_process.Port();
  ASSERT_GT(first_port, 0);
  ASSERT_GT(second_port, 0);
  Client a(first_port);
  Client b(second_port);
  const json prices = b.Call("GetPriceList", json::object());
  ASSERT_EQ(prices["priceTiers"].size(), 4u) << prices.dump();
  EXPECT_EQ(prices["priceTiers"][0][1].size(), 3u) << prices.dump();
  EXPECT_EQ(prices["shippingBands"].size(), 4u) << prices.dump();

  // A user signed in on one is served by the other, both ways.
  const std::string password = DemoPassword(data);
  ASSERT_FALSE(password.empty());
  const json login =
      a.Call("LoginUser", {{"email", kDemoEmail}, {"password", password}});
  ASSERT_EQ(login["ok"], true) << login.dump();
  const std::string code = login["session"][0];
  const json info = b.Call("GetUserInfo", {{"authCode", code}});
  ASSERT_EQ(info["ok"], true) << info.dump();
  EXPECT_EQ(info["profile"][0], kDemoEmail);
  auto fields = SignUpFields();
  const json registered = b.Call("RegisterUser", {{"fields", fields}});
  ASSERT_EQ(registered["ok"], true) << registered.dump();
  EXPECT_EQ(a.Call("GetAlbumList", {{"authCode", registered["result"][0]}})
                .value("ok", false),
            true);
  // The address is taken on the other too, whatever its case.
  fields[2] = "ANN@example.test";
  EXPECT_EQ(a.Call("RegisterUser", {{"fields", fields}})["errCode"], "2021");

  // Uploads to one album through both at once keep every photo.
  const json made = a.Upload(code, "", "Both", Photo("first"));
  ASSERT_EQ(made["ok"], true) << made.dump();
  const std::string album = made["albumId"];
  constexpr int kEach = 8;
  std::latch start(2);
  const auto upload_many = [&](int port, const char* side) {
    Client client(port);
    start.arrive_and_wait();
    std::vector<json> answers;
    for (int i = 0; i < kEach; ++i) {
      answers.push_back(
          client.Upload(code, album, "", Photo(side + std::to_string(i))));
    }
    return answers;
  };
  auto from_a = std::async(std::launch::async, upload_many, first_port, "a");
  auto from_b = std::async(std::launch::async, upload_many, second_port, "b");
  std::set<std::string> expected = {Photo("first")};
  for (auto* answers : {&from_a, &from_b}) {
    for (const json& answer : answers->get()) {
      EXPECT_EQ(answer["ok"], true) << answer.dump();
      EXPECT_EQ(answer["albumId"], album);
    }
  }
  for (int i = 0; i < kEach; ++i) {
    expected.insert(Photo("a" + std::to_string(i)));
    expected.insert(Photo("b" + std::to_string(i)));
  }
  const json photos =
      a.Call("GetAlbumPhotos", {{"authCode", code}, {"albumId", album}});
  ASSERT_EQ(photos["photos"].size(), expected.size()) << photos.dump();
  std::set<std::string> served;
  int turn = 0;
  for (const json& photo : photos["photos"]) {
    Client& from = turn++ % 2 == 0 ? a : b;
    auto [status, body] =
        from.Get("/photo/" + photo[0].get<std::string>() + "/u_=" + code);
    EXPECT_EQ(status, 200);
    served.insert(body);
  }
  EXPECT_EQ(served, expected);
  std::size_t files = 0;
  for (const auto& entry : fs::directory_iterator(data / "photos" / album)) {
    EXPECT_NE(entry.path().extension(), ".part") << entry.path();
    ++files;
  }
  EXPECT_EQ(files, expected.size());

  // An order that both confirm at once is confirmed once.
  const json index = json::array({json::array({photos["photos"][0][0], "1"})});
  json rows = json::array();
  for (const char* quantity : {"2", "0", "0", "0"}) {
    rows.push_back({quantity, "0", "0"});
  }
  for (int round = 0; round < 5; ++round) {
    const json quote =
        a.Call("PlaceOrder", {{"authCode", code},
                              {"orderLines", {{{"key", "k"}, {"rows", rows}}}},
                              {"orderIndex", index}});
    const std::string order = quote.value("orderId", "");
    ASSERT_FALSE(order.empty()) << quote.dump();
    std::latch both(2);
    const auto confirm = [&](int port) {
      Client client(port);
      both.arrive_and_wait();
      return client.Call("ConfirmOrder",
                         {{"authCode", code}, {"orderId", order}});
    };
    auto one = std::async(std::launch::async, confirm, first_port);
    auto two = std::async(std::launch::async, confirm, second_port);
    const json answers[] = {one.get(), two.get()};
    int confirmed = 0;
    for (const json& answer : answers) {
      if (answer["ok"] == true) {
        ++confirmed;
      } else {
        EXPECT_EQ(answer["errCode"], "4001") << answer.dump();
      }
    }
    EXPECT_EQ(confirmed, 1) << "order " << order;
    const auto [status, page] =
        b.Get("/orderstatus/o=" + order + "/u_=" + code);
    EXPECT_NE(page.find("confirmed"), std::string::npos) << page;
  }
}

// Failed logins count on the store: a guesser who spreads tries over the
// instances gets no more of them. Two services in one process on one
// clock, so that the waits are exact.
TEST_F(SharedStoreTest, FailedLoginsOnEitherInstanceCountTogether) {
  std::int64_t now = 1772323200;
  ServiceOptions options;
  options.data_dir = shared_ / "data";
  options.database = cluster_.NewDatabase("logins");
  options.now = [&now] { return now; };
  ServiceCore a(options);
  ServiceCore b(options);
  const json registered = *a.Call("RegisterUser", {{"fields", SignUpFields()}});
  ASSERT_EQ(registered["ok"], true) << registered.dump();
  const auto login = [](ServiceCore& core, const char* password) {
    return *core.Call("LoginUser",
                      {{"email", "ann@example.test"}, {"password", password}});
  };
  // Three failures are free, spread as they may be; then a pause of 1 s.
  EXPECT_EQ(login(a, "wrong1")["errCode"], "2007");
  EXPECT_EQ(login(b, "wrong2")["errCode"], "2007");
  EXPECT_EQ(login(a, "wrong3")["errCode"], "2007");
  EXPECT_EQ(login(b, "secret1")["errCode"], kThrottledCode);
  EXPECT_EQ(login(a, "secret1")["errCode"], kThrottledCode);
  now += 1;
  const json signed_in = login(b, "secret1");
  ASSERT_EQ(signed_in["ok"], true) << signed_in.dump();
  // The success clears the count for both.
  EXPECT_EQ(login(a, "wrong4")["errCode"], "2007");
  EXPECT_EQ(login(b, "secret1")["ok"], true);
  // And the session is good on the other.
  EXPECT_EQ(
      (*a.Call("GetUserInfo", {{"authCode", signed_in["session"][0]}}))["ok"],
      true);
}

// A database server that restarts (or a standby that takes over behind the
// same address) costs the request under way and no more: the instance
// connects again, and its sessions are still there.
TEST_F(SharedStoreTest, AnInstanceOutlivesARestartOfItsDatabase) {
  ServiceOptions options;
  options.data_dir = shared_ / "data";
  options.database = cluster_.NewDatabase("restarts");
  ServiceCore core(options);
  const json registered =
      *core.Call("RegisterUser", {{"fields", SignUpFields()}});
  ASSERT_EQ(registered["ok"], true) << registered.dump();
  const json who = {{"authCode", registered["result"][0]}};
  ASSERT_TRUE(cluster_.Restart());
  int failed = 0;
  std::optional<json> answer;
  while (!answer && failed < 2) {
    try {
      answer = core.Call("GetUserInfo", who);
    } catch (const DbError&) {
      ++failed;
    }
  }
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ((*answer)["profile"][0], "ann@example.test");
  EXPECT_LE(failed, 1);
  EXPECT_EQ((*core.Call("GetAlbumList", who))["ok"], true);
}

}  // namespace
}  // namespace qbpd::service
