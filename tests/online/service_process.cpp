#include "tests/online/service_process.h"

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace qbpd::testing {

namespace {

constexpr int kStartMs = 10000;
constexpr char kListeningPrefix[] = "listening on 127.0.0.1:";

using Clock = std::chrono::steady_clock;

int RemainingMs(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      deadline - Clock::now());
  return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

// One GET of the home page on a fresh connection; true when any HTTP answer
// comes back before the deadline. A service that serves HTTPS (`tls`) only
// has to take the connection.
bool AnswersOnce(int port, Clock::time_point deadline, bool tls) {
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    return false;
  }
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  bool answered = false;
  const bool connected =
      connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  if (connected && tls) {
    answered = true;
  } else if (connected) {
    const char request[] =
        "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n";
    if (send(fd, request, sizeof request - 1, MSG_NOSIGNAL) ==
        static_cast<ssize_t>(sizeof request - 1)) {
      pollfd in{fd, POLLIN, 0};
      char head[16] = {};
      if (poll(&in, 1, RemainingMs(deadline)) > 0 &&
          recv(fd, head, sizeof head - 1, 0) > 0) {
        answered = std::strncmp(head, "HTTP/1.", 7) == 0;
      }
    }
  }
  close(fd);
  return answered;
}

}  // namespace

ServiceProcess::ServiceProcess(const std::string& program,
                               const std::filesystem::path& data_dir,
                               const std::vector<std::string>& extra_arguments)
    : data_dir_(data_dir),
      tls_(std::find(extra_arguments.begin(),
                     extra_arguments.end(),
                     "--cert") != extra_arguments.end()) {
  int fds[2];
  if (pipe2(fds, O_CLOEXEC) != 0) {
    error_ = "no pipe for the service's output";
    return;
  }
  std::vector<std::string> arguments = {program, "--port", "0", "--data-dir",
                                        data_dir.string()};
  arguments.insert(arguments.end(), extra_arguments.begin(),
                   extra_arguments.end());
  std::vector<char*> argv;
  for (std::string& argument : arguments) {
    argv.push_back(argument.data());
  }
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
  const int spawned = posix_spawn(&pid_, program.c_str(), &actions, nullptr,
                                  argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(fds[1]);
  stdout_fd_ = fds[0];
  if (spawned != 0) {
    pid_ = -1;
    error_ = "could not start " + program + ": " + std::strerror(spawned);
    return;
  }
  const auto deadline = Clock::now() + std::chrono::milliseconds(kStartMs);
  const std::string line = ReadFirstLine(RemainingMs(deadline));
  if (line.rfind(kListeningPrefix, 0) != 0) {
    error_ = "the service did not say where it listens: \"" + line + "\"";
    Kill();
    return;
  }
  port_ = std::atoi(line.c_str() + std::strlen(kListeningPrefix));
  if (port_ <= 0 || !WaitForFirstAnswer(RemainingMs(deadline))) {
    error_ = "the service on port " + std::to_string(port_) +
             " did not answer in time";
    port_ = 0;
    Kill();
  }
}

ServiceProcess::~ServiceProcess() {
  if (pid_ > 0) {
    Kill();
  }
  if (stdout_fd_ >= 0) {
    close(stdout_fd_);
  }
}

std::string ServiceProcess::base() const {
  return (tls_ ? "https://localhost:" : "http://127.0.0.1:") +
         std::to_string(port_);
}

std::string ServiceProcess::site() const {
  return base() + "/api";
}

int ServiceProcess::Terminate() {
  if (pid_ <= 0 || kill(pid_, SIGTERM) != 0) {
    return -1;
  }
  // A frozen service takes the signal only once it runs again.
  kill(pid_, SIGCONT);
  // A service that doesn't stop fails the test instead of hanging it.
  for (int waited_ms = 0; waited_ms < 15000; waited_ms += 20) {
    const int status = Reap(/*must_block=*/false);
    if (pid_ <= 0) {
      return status;
    }
    usleep(20 * 1000);
  }
  Kill();
  return -1;
}

bool ServiceProcess::Freeze() {
  if (pid_ <= 0 || kill(pid_, SIGSTOP) != 0) {
    return false;
  }
  // The stop takes effect asynchronously; wait until it has.
  int status = 0;
  return waitpid(pid_, &status, WUNTRACED) == pid_ && WIFSTOPPED(status);
}

void ServiceProcess::Kill() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    Reap(/*must_block=*/true);
  }
}

int ServiceProcess::Reap(bool must_block) {
  int status = 0;
  const pid_t got = waitpid(pid_, &status, must_block ? 0 : WNOHANG);
  if (got != pid_) {
    return -1;
  }
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string ServiceProcess::ReadFirstLine(int ms) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(ms);
  std::string text;
  pollfd out{stdout_fd_, POLLIN, 0};
  while (text.find('\n') == std::string::npos &&
         poll(&out, 1, RemainingMs(deadline)) > 0) {
    char buffer[256];
    const ssize_t n = read(stdout_fd_, buffer, sizeof buffer);
    if (n <= 0) {
      break;
    }
    text.append(buffer, static_cast<size_t>(n));
  }
  return text.substr(0, text.find('\n'));
}

bool ServiceProcess::WaitForFirstAnswer(int ms) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(ms);
  while (Clock::now() < deadline) {
    if (AnswersOnce(port_, deadline, tls_)) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

std::string ServiceProcess::demo_password() const {
  std::ifstream in(data_dir_ / "demo-account.txt");
  const std::string prefix = "Password: ";
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with(prefix)) {
      return line.substr(prefix.size());
    }
  }
  return std::string();
}

}  // namespace qbpd::testing
