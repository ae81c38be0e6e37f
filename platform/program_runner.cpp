#include "platform/program_runner.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace qbpd {
namespace {

constexpr std::size_t kMostOutput = 1024 * 1024;
constexpr int kPollStepMs = 20;

class SpawnRunner final : public ProgramRunner {
 public:
  SpawnRunner(std::map<std::string, std::string> extra, int timeout_ms)
      : extra_(std::move(extra)), timeout_ms_(timeout_ms) {}

  ProgramResult Run(const std::vector<std::string>& argv) override {
    ProgramResult result;
    if (argv.empty()) {
      return result;
    }
    std::vector<std::string> environment = Environment();
    std::vector<char*> env_pointers;
    for (std::string& entry : environment) {
      env_pointers.push_back(entry.data());
    }
    env_pointers.push_back(nullptr);
    std::vector<std::string> args = argv;
    std::vector<char*> arg_pointers;
    for (std::string& a : args) {
      arg_pointers.push_back(a.data());
    }
    arg_pointers.push_back(nullptr);

    int out[2];
    if (::pipe2(out, O_CLOEXEC) != 0) {
      return result;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    // The program's own search of PATH, with the environment it runs in.
    pid_t pid = 0;
    const std::string path = FindOnPath(argv[0], environment);
    const int spawned =
        path.empty() ? ENOENT
                     : ::posix_spawn(&pid, path.c_str(), &actions, nullptr,
                                     arg_pointers.data(), env_pointers.data());
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    if (spawned != 0) {
      ::close(out[0]);
      return result;
    }
    result.started = true;

    const auto deadline = std::chrono::steady_clock::now() +
                          std::chrono::milliseconds(timeout_ms_);
    bool open = true;
    bool killed = false;
    char buffer[4096];
    while (open) {
      pollfd p{out[0], POLLIN, 0};
      const int ready = ::poll(&p, 1, kPollStepMs);
      if (ready > 0) {
        const ssize_t got = ::read(out[0], buffer, sizeof buffer);
        if (got > 0) {
          if (result.output.size() < kMostOutput) {
            result.output.append(buffer, static_cast<std::size_t>(got));
          }
        } else if (got == 0 || errno != EINTR) {
          open = false;
        }
      }
      if (open && std::chrono::steady_clock::now() > deadline) {
        ::kill(pid, SIGKILL);
        killed = true;
        open = false;
      }
    }
    ::close(out[0]);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (!killed && WIFEXITED(status)) {
      result.exit_code = WEXITSTATUS(status);
    }
    return result;
  }

  bool Has(const std::string& program) override {
    return !FindOnPath(program, Environment()).empty();
  }

 private:
  std::vector<std::string> Environment() const {
    std::vector<std::string> entries;
    for (char** e = environ; e != nullptr && *e != nullptr; ++e) {
      const std::string entry(*e);
      const std::string name = entry.substr(0, entry.find('='));
      if (extra_.count(name) == 0) {
        entries.push_back(entry);
      }
    }
    for (const auto& [name, value] : extra_) {
      entries.push_back(name + "=" + value);
    }
    return entries;
  }

  static std::string FindOnPath(const std::string& program,
                                const std::vector<std::string>& environment) {
    auto executable = [](const std::string& candidate) {
      struct stat info {};
      return ::stat(candidate.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
             ::access(candidate.c_str(), X_OK) == 0;
    };
    if (program.find('/') != std::string::npos) {
      return executable(program) ? program : std::string();
    }
    std::string path = "/usr/local/bin:/usr/bin:/bin";
    for (const std::string& entry : environment) {
      if (entry.rfind("PATH=", 0) == 0) {
        path = entry.substr(5);
      }
    }
    std::size_t start = 0;
    while (start <= path.size()) {
      const std::size_t end = std::min(path.find(':', start), path.size());
      const std::string folder = path.substr(start, end - start);
      // An empty entry would mean the current folder: never searched.
      if (!folder.empty() && folder.front() == '/') {
        const std::string candidate = folder + "/" + program;
        if (executable(candidate)) {
          return candidate;
        }
      }
      start = end + 1;
    }
    return {};
  }

  std::map<std::string, std::string> extra_;
  int timeout_ms_;
};

}  // namespace

std::unique_ptr<ProgramRunner> MakeSpawnRunner(
    std::map<std::string, std::string> extra_environment,
    int timeout_ms) {
  return std::make_unique<SpawnRunner>(std::move(extra_environment),
                                       timeout_ms);
}

}  // namespace qbpd
