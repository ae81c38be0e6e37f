#include "tests/ui_x11/x11_server.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace qbpd::testing {
namespace {

std::string FindProgram(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::string rest = path != nullptr ? path : "/usr/bin:/bin";
  size_t start = 0;
  while (start <= rest.size()) {
    size_t end = rest.find(':', start);
    std::string dir = rest.substr(
        start, end == std::string::npos ? std::string::npos : end - start);
    std::filesystem::path candidate = std::filesystem::path(dir) / name;
    if (!dir.empty() && access(candidate.c_str(), X_OK) == 0) {
      return candidate.string();
    }
    if (end == std::string::npos) {
      break;
    }
    start = end + 1;
  }
  return "";
}

// The server, stopped (by its process id) when the process ends.
class Server {
 public:
  Server() {
    const std::string program = FindProgram("Xvfb");
    if (program.empty()) {
      why_ = "Xvfb is not installed (scripts/setup installs it)";
      return;
    }
    int ready[2];
    if (pipe(ready) != 0) {
      why_ = "no pipe for Xvfb";
      return;
    }
    pid_ = fork();
    if (pid_ == 0) {
      close(ready[0]);
      const std::string fd = std::to_string(ready[1]);
      execl(program.c_str(), "Xvfb", "-displayfd", fd.c_str(), "-nolisten",
            "tcp", "-noreset", "-screen", "0", "1280x1024x24",
            static_cast<char*>(nullptr));
      _exit(127);
    }
    close(ready[1]);
    if (pid_ < 0) {
      close(ready[0]);
      why_ = "could not start Xvfb";
      return;
    }
    // Xvfb writes its display number once it accepts clients; an end of
    // file means it gave up.
    std::string number;
    char c = 0;
    while (read(ready[0], &c, 1) == 1 && c != '\n') {
      number += c;
    }
    close(ready[0]);
    if (number.empty()) {
      why_ = "Xvfb did not start";
      return;
    }
    display_ = ":" + number;
  }
  ~Server() {
    if (pid_ > 0) {
      kill(pid_, SIGTERM);
      waitpid(pid_, nullptr, 0);
    }
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  const std::string& display() const { return display_; }
  const std::string& why() const { return why_; }

 private:
  pid_t pid_ = -1;
  std::string display_;
  std::string why_;
};

}  // namespace

std::string PrivateXDisplay(std::string* why) {
  static Server server;
  if (why != nullptr) {
    *why = server.why();
  }
  return server.display();
}

}  // namespace qbpd::testing
