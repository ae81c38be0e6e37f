#ifndef QBPD_TESTS_SERVICE_SERVICE_PROCESS_H_
#define QBPD_TESTS_SERVICE_SERVICE_PROCESS_H_

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace qbpd::testing {

// One qbpd-service process; stopped with SIGTERM (SIGKILL after a bound)
// when the object goes, also when the test failed.
class ServiceProcess {
 public:
  explicit ServiceProcess(std::vector<std::string> args) {
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) {
      return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
    args.insert(args.begin(), QBPD_SERVICE_PROGRAM);
    std::vector<char*> argv;
    for (auto& arg : args) {
      argv.push_back(arg.data());
    }
    argv.push_back(nullptr);
    if (posix_spawn(&pid_, QBPD_SERVICE_PROGRAM, &actions, nullptr, argv.data(),
                    environ) != 0) {
      pid_ = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    out_ = fds[0];
  }
  ServiceProcess(const ServiceProcess&) = delete;
  ServiceProcess& operator=(const ServiceProcess&) = delete;

  ~ServiceProcess() {
    if (pid_ > 0) {
      kill(pid_, SIGTERM);
      int status = 0;
      for (int i = 0; i < 100 && waitpid(pid_, &status, WNOHANG) == 0; ++i) {
        poll(nullptr, 0, 50);
      }
      if (waitpid(pid_, &status, WNOHANG) == 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, &status, 0);
      }
    }
    if (out_ >= 0) {
      close(out_);
    }
  }

  // Its exit status once it ended (waiting at most about 20 s), or -1.
  int Wait() {
    int status = 0;
    for (int i = 0; i < 400 && pid_ > 0; ++i) {
      if (waitpid(pid_, &status, WNOHANG) == pid_) {
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      }
      poll(nullptr, 0, 50);
    }
    return -1;
  }

  // The port of its "listening on" line; 0 when none came within a bound.
  int Port() {
    const std::string text = NextLine();
    const std::string prefix = "listening on 127.0.0.1:";
    if (text.rfind(prefix, 0) != 0) {
      ADD_FAILURE() << "the service said: " << text;
      return 0;
    }
    return std::stoi(text.substr(prefix.size()));
  }

  // The next line of its standard output ("" when none came within a
  // bound).
  std::string NextLine() {
    pollfd fd{out_, POLLIN, 0};
    while (pending_.find('\n') == std::string::npos &&
           poll(&fd, 1, 20000) > 0) {
      char buffer[256];
      const ssize_t n = read(out_, buffer, sizeof buffer);
      if (n <= 0) {
        break;
      }
      pending_.append(buffer, static_cast<size_t>(n));
    }
    const std::size_t end = pending_.find('\n');
    std::string line = pending_.substr(0, end);
    pending_.erase(0, end == std::string::npos ? end : end + 1);
    return line;
  }

 private:
  pid_t pid_ = -1;
  int out_ = -1;
  std::string pending_;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SERVICE_SERVICE_PROCESS_H_
