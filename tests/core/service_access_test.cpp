// The program's one way to the online service: the application's transport
// and preparation go through its service connection.
#include "core/application.h"
#include "platform/forms/scripted_host.h"
#include "tests/support/fake_service.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

struct Run {
  testing::FakeServiceConnection* connection = nullptr;
  std::vector<std::string> sent;
  std::unique_ptr<Application> app;
};

std::unique_ptr<Run> MakeRun(bool with_connection) {
  auto run = std::make_unique<Run>();
  PlatformServices services;
  if (with_connection) {
    auto connection = std::make_unique<testing::FakeServiceConnection>();
    run->connection = connection.get();
    services.service = std::move(connection);
  }
  std::vector<std::string>* sent = &run->sent;
  services.make_transport = [sent] {
    return std::make_unique<testing::RecordingTransport>(sent);
  };
  run->app = std::make_unique<Application>(std::make_unique<ScriptedHost>(),
                                           std::move(services), nullptr);
  return run;
}

TEST(ServiceAccessTest, TheTransportAsksTheConnectionBeforeEachRequest) {
  auto run = MakeRun(true);
  auto transport = run->app->ServiceTransport();
  HttpRequest request;
  request.url = "http://127.0.0.1:9931/api/GetPriceList";
  EXPECT_EQ(transport->Perform(request, [] {}).failure, HttpFailure::kNone);
  run->connection->refusal = "The service belongs to another user.";
  const HttpResponse refused = transport->Perform(request, [] {});
  EXPECT_EQ(refused.failure, HttpFailure::kNoConnection);
  EXPECT_EQ(refused.error_text, run->connection->refusal);
  EXPECT_EQ(run->sent.size(), 1u);
  ASSERT_EQ(run->connection->calls.size(), 2u);
  EXPECT_EQ(run->connection->calls[0].need, ServiceNeed::kStart);
  // A background check starts nothing.
  auto quiet = run->app->ServiceTransport(ServiceNeed::kRunning);
  (void)quiet->Perform(request, [] {});
  EXPECT_EQ(run->connection->calls.back().need, ServiceNeed::kRunning);
}

TEST(ServiceAccessTest, PrepareLetsEventsRunAndTellsTheRefusal) {
  auto run = MakeRun(true);
  run->connection->pumps = 3;
  EXPECT_EQ(run->app->PrepareService("http://127.0.0.1:9931"), "");
  run->connection->refusal = "not yours";
  EXPECT_EQ(
      run->app->PrepareService("http://127.0.0.1:9931", ServiceNeed::kRunning),
      "not yours");
  ASSERT_EQ(run->connection->calls.size(), 2u);
  EXPECT_EQ(run->connection->calls[1].address, "http://127.0.0.1:9931");
}

TEST(ServiceAccessTest, WithoutAConnectionAddressesAreUsedAsTheyStand) {
  auto run = MakeRun(false);
  EXPECT_EQ(run->app->PrepareService("http://127.0.0.1:9931"), "");
  HttpRequest request;
  request.url = "http://127.0.0.1:9931/api/GetPriceList";
  EXPECT_EQ(run->app->ServiceTransport()->Perform(request, [] {}).failure,
            HttpFailure::kNone);
  EXPECT_EQ(run->sent, std::vector<std::string>{request.url});
}

}  // namespace
}  // namespace qbpd
