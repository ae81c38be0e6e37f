#include "platform/launcher.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace qbpd {
namespace {

class XdgLauncher final : public Launcher {
 public:
  explicit XdgLauncher(std::string program) : program_(std::move(program)) {}
  ~XdgLauncher() override { ReapEnded(); }

  LaunchResult OpenDocument(const std::string& target) override {
    ReapEnded();
    if (target.empty()) {
      return {false, "Nothing to open: the name of the page is empty.", -1};
    }
    // A target that looks like an option would be read as one.
    const std::string argument = target.front() == '-' ? "./" + target : target;

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null",
                                     O_RDONLY, 0);
    // Its own process group keeps a Ctrl+C meant for this program away from
    // the browser it starts; the blocked signals of this thread are not
    // handed on.
    sigset_t no_signals;
    sigemptyset(&no_signals);
    posix_spawnattr_setsigmask(&attributes, &no_signals);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK);

    std::vector<char*> argv = {const_cast<char*>(program_.c_str()),
                               const_cast<char*>(argument.c_str()), nullptr};
    pid_t pid = -1;
    const int error = posix_spawnp(&pid, program_.c_str(), &actions,
                                   &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
      return {false,
              "Could not start " + program_ + " to open " + target + ": " +
                  std::strerror(error),
              -1};
    }
    children_.push_back(pid);
    return {true, "", static_cast<int>(pid)};
  }

 private:
  void ReapEnded() {
    auto ended = [](pid_t pid) {
      int status = 0;
      const pid_t got = waitpid(pid, &status, WNOHANG);
      // Gone already (someone else reaped it) counts as ended too.
      return got == pid || (got < 0 && errno == ECHILD);
    };
    children_.erase(std::remove_if(children_.begin(), children_.end(), ended),
                    children_.end());
  }

  std::string program_;
  std::vector<pid_t> children_;
};

}  // namespace

std::unique_ptr<Launcher> MakeXdgLauncher(std::string program) {
  return std::make_unique<XdgLauncher>(std::move(program));
}

LaunchResult RecordingLauncher::OpenDocument(const std::string& target) {
  opened_.push_back(target);
  return {true, "", -1};
}

std::unique_ptr<RecordingLauncher> MakeRecordingLauncher() {
  return std::make_unique<RecordingLauncher>();
}

}  // namespace qbpd
