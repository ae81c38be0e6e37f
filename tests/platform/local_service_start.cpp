// The real connection with the real qbpd-service program and the kernel's
// socket tables: started on first need, one copy, stopped with its last
// user, another user's listener refused.
#include "platform/local_service.h"
#include "platform/loopback_port.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace qbpd {
namespace {

namespace fs = std::filesystem;

// The processes of qbpd-service serving `port`, by their command lines.
std::vector<pid_t> ServiceProcesses(int port) {
  std::vector<pid_t> found;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator("/proc", ec)) {
    const std::string name = entry.path().filename().string();
    if (name.find_first_not_of("0123456789") != std::string::npos) {
      continue;
    }
    std::ifstream in(entry.path() / "cmdline", std::ios::binary);
    std::vector<std::string> args;
    for (std::string arg; std::getline(in, arg, '\0');) {
      args.push_back(arg);
    }
    if (args.size() >= 3 && fs::path(args[0]).filename() == "qbpd-service" &&
        args[1] == "--port" && args[2] == std::to_string(port)) {
      found.push_back(static_cast<pid_t>(std::stol(name)));
    }
  }
  return found;
}

bool Listening(int port) {
  return FindPortListener(port, getuid()).state == PortListener::State::kFound;
}

// Waits (a bound, not a measurement) until `done` holds.
template <typename Done>
bool WaitUntil(Done done) {
  for (int i = 0; i < 500 && !done(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return done();
}

class LocalServiceStartTest : public ::testing::Test {
 protected:
  std::unique_ptr<ServiceConnection> Make() {
    LocalServiceOptions options;
    options.program = QBPD_SERVICE_PROGRAM;
    options.data_dir = (dir_ / "data").string();
    options.lock_folder = (dir_ / "run").string();
    options.tell = [this](const std::string& text) { told_.push_back(text); };
    return MakeLocalServiceConnection(std::move(options));
  }
  std::string Prepare(ServiceConnection& c) {
    return c.Prepare(address_, ServiceNeed::kStart, [] { return true; });
  }
  pid_t PidFile() {
    std::ifstream in(dir_ / "run" /
                     ("service-" + std::to_string(port_) + ".pid"));
    long pid = 0;
    in >> pid;
    return static_cast<pid_t>(pid);
  }
  void TearDown() override {
    for (pid_t pid : ServiceProcesses(port_)) {
      kill(pid, SIGKILL);
      waitpid(pid, nullptr, 0);
    }
  }

  testing::TempDir dir_;
  HeldLoopbackPort held_;
  const int port_ = held_.port();
  const std::string address_ =
      "http://127.0.0.1:" + std::to_string(port_) + "/api";
  std::vector<std::string> told_;
};

TEST_F(LocalServiceStartTest, StartsOnFirstNeedOnceAndStopsWithItsLastUser) {
  auto first = Make();
  auto second = Make();
  // Making the connections starts nothing.
  ASSERT_FALSE(Listening(port_));

  ASSERT_EQ(Prepare(*first), "");
  EXPECT_TRUE(Listening(port_));
  const std::vector<pid_t> running = ServiceProcesses(port_);
  ASSERT_EQ(running.size(), 1u);
  EXPECT_EQ(PidFile(), running[0]);
  // A new data folder got the demonstration account, and the user is told
  // where its password is.
  EXPECT_TRUE(fs::exists(dir_ / "data" / "demo-account.txt"));
  ASSERT_EQ(told_.size(), 1u);
  EXPECT_NE(told_[0].find("demo-account.txt"), std::string::npos);

  // A second program of the user uses the same copy.
  ASSERT_EQ(Prepare(*second), "");
  EXPECT_EQ(ServiceProcesses(port_), running);

  // The first program ends: the second still uses the service.
  first.reset();
  EXPECT_EQ(ServiceProcesses(port_), running);
  EXPECT_TRUE(Listening(port_));

  // The last user ends: the service stops.
  second.reset();
  EXPECT_TRUE(ServiceProcesses(port_).empty());
  EXPECT_FALSE(Listening(port_));
  EXPECT_FALSE(
      fs::exists(dir_ / "run" / ("service-" + std::to_string(port_) + ".pid")));
}

TEST_F(LocalServiceStartTest, AServiceTheUserStartedByHandIsUsedAndLeft) {
  std::vector<std::string> args = {QBPD_SERVICE_PROGRAM, "--port",
                                   std::to_string(port_), "--data-dir",
                                   (dir_ / "own").string()};
  std::vector<char*> argv;
  for (std::string& arg : args) {
    argv.push_back(arg.data());
  }
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null",
                                   O_WRONLY, 0);
  pid_t own = -1;
  ASSERT_EQ(posix_spawn(&own, argv[0], &actions, nullptr, argv.data(), environ),
            0);
  posix_spawn_file_actions_destroy(&actions);
  ASSERT_TRUE(WaitUntil([this] { return Listening(port_); }));

  auto connection = Make();
  ASSERT_EQ(Prepare(*connection), "");
  connection.reset();
  EXPECT_EQ(ServiceProcesses(port_), std::vector<pid_t>{own});
  EXPECT_FALSE(fs::exists(dir_ / "data"));
}

// The kernel's word on another user's listener; needs the right to become
// another user, so it runs where the tests run as root.
TEST_F(LocalServiceStartTest, AnotherUsersListenerIsFoundAndRefused) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can listen as another user here";
  }
  constexpr unsigned kNobody = 65534;
  held_.Release();
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    close(ready[0]);
    if (setgid(kNobody) != 0 || setuid(kNobody) != 0) {
      _exit(1);
    }
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(port_));
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(fd, 1) != 0 || write(ready[1], "x", 1) != 1) {
      _exit(1);
    }
    pause();
    _exit(0);
  }
  close(ready[1]);
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  close(ready[0]);

  const PortListener listener = FindPortListener(port_, getuid());
  EXPECT_EQ(listener.state, PortListener::State::kFound);
  EXPECT_EQ(listener.uid, kNobody);
  auto connection = Make();
  const std::string why = Prepare(*connection);
  EXPECT_NE(why.find("belongs to another user"), std::string::npos) << why;
  EXPECT_TRUE(ServiceProcesses(port_).empty());
  EXPECT_FALSE(fs::exists(dir_ / "data"));

  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
}

}  // namespace
}  // namespace qbpd
