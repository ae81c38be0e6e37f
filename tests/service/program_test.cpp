#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

// qbpd-service as a child process with its standard output on a pipe.
struct Child {
  pid_t pid = -1;
  int out = -1;

  explicit Child(std::vector<std::string> args) {
    int fds[2];
    if (pipe(fds) != 0) {
      return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, fds[0]);
    args.insert(args.begin(), QBPD_SERVICE_PROGRAM);
    std::vector<char*> argv;
    for (auto& arg : args) {
      argv.push_back(arg.data());
    }
    argv.push_back(nullptr);
    if (posix_spawn(&pid, QBPD_SERVICE_PROGRAM, &actions, nullptr, argv.data(),
                    environ) != 0) {
      pid = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    out = fds[0];
  }

  ~Child() {
    if (pid > 0) {
      kill(pid, SIGKILL);
      waitpid(pid, nullptr, 0);
    }
    if (out >= 0) {
      close(out);
    }
  }

  // The first line of output, waiting at most `ms`.
  std::string FirstLine(int ms) {
    std::string line;
    pollfd fd{out, POLLIN, 0};
    while (line.find('\n') == std::string::npos && poll(&fd, 1, ms) > 0) {
      char buffer[256];
      const ssize_t n = read(out, buffer, sizeof buffer);
      if (n <= 0) {
        break;
      }
      line.append(buffer, static_cast<size_t>(n));
    }
    return line;
  }

  // The exit status after the child ended, or -1.
  int Wait() {
    int status = 0;
    if (waitpid(pid, &status, 0) != pid) {
      return -1;
    }
    pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
};

TEST(ServiceProgram, PrintsItsPortServesAndStopsOnSigterm) {
  qbpd::testing::TempDir dir;
  Child child(
      {"--port", "0", "--data-dir", dir.path().string(), "--seed-demo"});
  ASSERT_GT(child.pid, 0);
  const std::string line = child.FirstLine(5000);
  const std::string prefix = "listening on 127.0.0.1:";
  ASSERT_EQ(line.rfind(prefix, 0), 0u) << line;
  const int port = std::stoi(line.substr(prefix.size()));

  httplib::Client client("127.0.0.1", port);
  auto res =
      client.Post("/api/LoginUser",
                  R"({"email":"demo@quillbay.test","password":"demo1234"})",
                  "application/json");
  ASSERT_TRUE(res);
  EXPECT_NE(res->body.find("\"ok\":true"), std::string::npos) << res->body;

  ASSERT_EQ(kill(child.pid, SIGTERM), 0);
  EXPECT_EQ(child.Wait(), 0);
  // The data folder is kept for the next start.
  EXPECT_TRUE(std::filesystem::exists(dir / "service.db"));
}

TEST(ServiceProgram, RefusesBadArguments) {
  const std::vector<std::vector<std::string>> cases = {
      {"--port", "0"},                              // no data folder
      {"--port", "x1", "--data-dir", "/tmp/q"},     // port not a number
      {"--port", "70000", "--data-dir", "/tmp/q"},  // port out of range
      {"--data-dir", "/tmp/q", "--verbose"},        // unknown option
  };
  for (const auto& args : cases) {
    Child child(args);
    ASSERT_GT(child.pid, 0);
    EXPECT_EQ(child.Wait(), 2) << args.back();
  }
}

}  // namespace
