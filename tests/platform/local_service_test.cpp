#include "platform/local_service.h"

#include "tests/support/fake_service.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

namespace qbpd {
namespace {

TEST(LocalServiceTest, AddressesOfThisMachineGiveTheirPort) {
  EXPECT_EQ(LocalServicePort("http://127.0.0.1:8931"), 8931);
  EXPECT_EQ(LocalServicePort("http://127.0.0.1:8931/api"), 8931);
  EXPECT_EQ(LocalServicePort("http://localhost:9000"), 9000);
  EXPECT_EQ(LocalServicePort("http://LOCALHOST"), 80);
  EXPECT_EQ(LocalServicePort("https://[::1]:8443/path"), 8443);
  char name[256] = {};
  ASSERT_EQ(gethostname(name, sizeof name - 1), 0);
  EXPECT_EQ(LocalServicePort(std::string("http://") + name + ":7000"), 7000);
}

TEST(LocalServiceTest, OtherMachinesAndBadAddressesGiveNothing) {
  EXPECT_EQ(LocalServicePort("http://example.com:8931"), std::nullopt);
  EXPECT_EQ(LocalServicePort("http://192.0.2.1"), std::nullopt);
  // A name that merely starts like a loopback one is another machine.
  EXPECT_EQ(LocalServicePort("http://localhost.example.com"), std::nullopt);
  EXPECT_EQ(LocalServicePort(""), std::nullopt);
  EXPECT_EQ(LocalServicePort("http://127.0.0.1:notaport"), std::nullopt);
}

TEST(LocalServiceTest, EachUserHasAPortOfItsOwn) {
  EXPECT_EQ(UserServicePort(), 8931 + static_cast<int>(getuid() % 50000));
  EXPECT_LE(UserServicePort(), 65535);
}

// The connection's rules, with the listeners of the machine made up.
class ServiceConnectionTest : public ::testing::Test {
 protected:
  static constexpr unsigned kMe = 1000;
  static constexpr int kPort = 9931;
  const std::string kAddress = "http://127.0.0.1:9931/api";

  std::unique_ptr<ServiceConnection> Make() {
    LocalServiceOptions options;
    options.program = (dir_ / "no-such-folder" / "qbpd-service").string();
    options.data_dir = (dir_ / "data").string();
    options.lock_folder = (dir_ / "run").string();
    options.uid = kMe;
    options.lookup = listeners_.Lookup();
    options.tell = [this](const std::string& text) { told_.push_back(text); };
    return MakeLocalServiceConnection(std::move(options));
  }
  std::string Prepare(ServiceConnection& c, ServiceNeed need) {
    return c.Prepare(kAddress, need, [] { return true; });
  }
  bool TriedToStart() const {
    return std::filesystem::exists(dir_ / "data") ||
           std::filesystem::exists(dir_ / "run" / "service-9931.pid");
  }

  testing::TempDir dir_;
  testing::FakePortListeners listeners_;
  std::vector<std::string> told_;
};

TEST_F(ServiceConnectionTest, AnotherUsersServiceIsNeitherUsedNorReplaced) {
  listeners_.Listen(kPort, kMe + 1);
  auto connection = Make();
  for (int i = 0; i < 2; ++i) {
    const std::string why = Prepare(*connection, ServiceNeed::kStart);
    EXPECT_NE(why.find("belongs to another user"), std::string::npos) << why;
  }
  EXPECT_EQ(told_.size(), 1u);  // the user is told once
  EXPECT_FALSE(TriedToStart());
}

TEST_F(ServiceConnectionTest, AnOwnerThatCantBeCheckedIsRefused) {
  listeners_.unreadable = true;
  auto connection = Make();
  const std::string why = Prepare(*connection, ServiceNeed::kStart);
  EXPECT_NE(why.find("can't be checked"), std::string::npos) << why;
  EXPECT_FALSE(TriedToStart());
}

TEST_F(ServiceConnectionTest, ThisUsersServiceIsUsedAsItRuns) {
  listeners_.Listen(kPort, kMe);
  auto connection = Make();
  EXPECT_EQ(Prepare(*connection, ServiceNeed::kStart), "");
  EXPECT_EQ(Prepare(*connection, ServiceNeed::kRunning), "");
  EXPECT_FALSE(TriedToStart());
  EXPECT_TRUE(told_.empty());
  // Another user taking the port later is noticed at the next request.
  listeners_.Close(kPort);
  listeners_.Listen(kPort, kMe + 7);
  EXPECT_NE(Prepare(*connection, ServiceNeed::kStart), "");
}

TEST_F(ServiceConnectionTest, ABackgroundCheckStartsNothing) {
  auto connection = Make();
  const std::string why = Prepare(*connection, ServiceNeed::kRunning);
  EXPECT_NE(why.find("not running"), std::string::npos) << why;
  EXPECT_FALSE(TriedToStart());
  EXPECT_TRUE(told_.empty());
}

TEST_F(ServiceConnectionTest, AMissingProgramIsTold) {
  auto connection = Make();
  const std::string why = Prepare(*connection, ServiceNeed::kStart);
  EXPECT_NE(why.find("is missing"), std::string::npos) << why;
  EXPECT_EQ(told_, std::vector<std::string>{why});
}

TEST_F(ServiceConnectionTest, OtherMachinesAreNotLookedAt) {
  listeners_.Listen(80, kMe + 1);
  auto connection = Make();
  EXPECT_EQ(connection->Prepare("http://192.0.2.1/api", ServiceNeed::kStart,
                                [] { return true; }),
            "");
  EXPECT_EQ(listeners_.lookups, 0);
}

// The transport asks before every request and keeps a refused one off the
// network.
TEST(ServiceTransportTest, EveryRequestIsPreparedFirst) {
  testing::FakeServiceConnection connection;
  std::vector<std::string> sent;
  auto transport =
      MakeServiceTransport(std::make_unique<testing::RecordingTransport>(&sent),
                           &connection, ServiceNeed::kRunning);
  HttpRequest request;
  request.url = "http://127.0.0.1:9931/api/LoginUser";
  EXPECT_EQ(transport->Perform(request, [] {}).failure, HttpFailure::kNone);
  connection.refusal = "The service belongs to another user.";
  const HttpResponse refused = transport->Perform(request, [] {});
  EXPECT_EQ(refused.failure, HttpFailure::kNoConnection);
  EXPECT_EQ(refused.error_text, connection.refusal);
  EXPECT_EQ(sent, std::vector<std::string>{request.url});
  ASSERT_EQ(connection.calls.size(), 2u);
  EXPECT_EQ(connection.calls[1].address, request.url);
  EXPECT_EQ(connection.calls[1].need, ServiceNeed::kRunning);
}

TEST(ServiceTransportTest, ACancelWhileTheStartIsAwaitedCancels) {
  testing::FakeServiceConnection connection;
  connection.pumps = 5;
  std::vector<std::string> sent;
  auto transport =
      MakeServiceTransport(std::make_unique<testing::RecordingTransport>(&sent),
                           &connection, ServiceNeed::kStart);
  int pumped = 0;
  HttpRequest request;
  request.url = "http://127.0.0.1:9931/api/LoginUser";
  const HttpResponse response = transport->Perform(request, [&] {
    if (++pumped == 2) {
      transport->Cancel();
    }
  });
  EXPECT_EQ(response.failure, HttpFailure::kCancelled);
  EXPECT_EQ(pumped, 2);
  EXPECT_TRUE(sent.empty());
  // The next request is not affected.
  connection.pumps = 0;
  EXPECT_EQ(transport->Perform(request, [] {}).failure, HttpFailure::kNone);
}

}  // namespace
}  // namespace qbpd
