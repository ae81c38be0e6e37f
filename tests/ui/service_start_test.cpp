// Starting the reference service as the desktop program does on first use.
#include "tests/support/temp_dir.h"
#include "ui/qt/local_service.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qbpd {
namespace {

// A port that nothing listens on now.
int FreePort() {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = 0;
  bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
  socklen_t size = sizeof address;
  getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
  int port = ntohs(address.sin_port);
  close(fd);
  return port;
}

TEST(ServiceStartTest, StartsTheServiceOnceWithItsDemoAccountOnFirstUse) {
  testing::TempDir tmp;
  const int port = FreePort();
  const std::string address = "http://127.0.0.1:" + std::to_string(port);
  ASSERT_FALSE(ServiceAnswers(port));
  const std::string folder =
      std::filesystem::path(QBPD_SERVICE_PROGRAM).parent_path().string();

  std::optional<ServiceLaunch> launch =
      EnsureLocalService(address, folder, tmp.path().string());
  ASSERT_TRUE(launch.has_value());
  ASSERT_TRUE(launch->started) << launch->error;
  EXPECT_TRUE(ServiceAnswers(port));
  EXPECT_TRUE(std::filesystem::is_directory(tmp.path() / "service"));
  // It answers now: a second start leaves it be.
  EXPECT_FALSE(EnsureLocalService(address, folder, tmp.path().string()));

  kill(launch->pid, SIGTERM);
  waitpid(launch->pid, nullptr, 0);
}

TEST(ServiceStartTest, AMissingProgramOrAnotherMachineStartsNothing) {
  testing::TempDir tmp;
  const int port = FreePort();
  std::optional<ServiceLaunch> launch = EnsureLocalService(
      "http://127.0.0.1:" + std::to_string(port),
      (tmp.path() / "nowhere").string(), tmp.path().string());
  ASSERT_TRUE(launch.has_value());
  EXPECT_FALSE(launch->started);
  EXPECT_NE(launch->error.find("missing"), std::string::npos);
  EXPECT_FALSE(EnsureLocalService("http://192.0.2.1:8931", "/usr/bin",
                                  tmp.path().string()));
}

}  // namespace
}  // namespace qbpd
