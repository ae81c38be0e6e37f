#include "platform/local_service.h"

#include "platform/internet_check.h"
#include "platform/places.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <set>
#include <spawn.h>
#include <sstream>
#include <sys/file.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

extern char** environ;

namespace qbpd {
namespace {

namespace fs = std::filesystem;

constexpr int kBasePort = 8931;
constexpr unsigned kPortsForUsers = 50000;
constexpr int kPollMs = 20;
constexpr int kStopWaitMs = 5000;
constexpr char kListenState[] = "0A";

std::string Lower(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return text;
}

bool IsThisMachine(const std::string& host) {
  std::string h = Lower(host);
  if (h.starts_with("[") && h.ends_with("]")) {
    h = h.substr(1, h.size() - 2);
  }
  if (h == "localhost" || h == "::1" || h.starts_with("127.") ||
      h.ends_with(".localhost")) {
    return true;
  }
  char name[256] = {};
  return ::gethostname(name, sizeof name - 1) == 0 && h == Lower(name);
}

// Reads one socket table; false when it can't be read.
bool ScanTable(const std::string& path,
               int port,
               unsigned me,
               PortListener& found) {
  std::ifstream in(path);
  if (!in) {
    return false;
  }
  std::string line;
  std::getline(in, line);  // the header
  while (std::getline(in, line)) {
    std::istringstream fields(line);
    std::string slot, local, remote, state, queues, timer, retransmits;
    unsigned uid = 0;
    if (!(fields >> slot >> local >> remote >> state >> queues >> timer >>
          retransmits >> uid)) {
      continue;
    }
    const std::size_t colon = local.rfind(':');
    if (state != kListenState || colon == std::string::npos ||
        std::strtol(local.c_str() + colon + 1, nullptr, 16) != port) {
      continue;
    }
    if (found.state != PortListener::State::kFound || found.uid == me) {
      found.state = PortListener::State::kFound;
      found.uid = uid;
    }
  }
  return true;
}

bool SleepAndPump(const ServiceConnection::Pump& pump) {
  if (pump && !pump()) {
    return false;
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(kPollMs));
  return true;
}

// An open file with a flock on it; the lock ends with the object (or with
// the process). Opened close-on-exec, so that no started program keeps it.
class FileLock {
 public:
  FileLock(const std::string& path, int operation) {
    fd_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd_ < 0) {
      return;
    }
    int result;
    do {
      result = ::flock(fd_, operation);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
      ::close(fd_);
      fd_ = -1;
    }
  }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock() {
    if (fd_ >= 0) {
      ::close(fd_);
    }
  }
  bool held() const { return fd_ >= 0; }
  // Keeps the lock beyond this object: the caller closes the descriptor.
  int Release() { return std::exchange(fd_, -1); }

 private:
  int fd_ = -1;
};

pid_t ReadPid(const std::string& path) {
  std::ifstream in(path);
  long pid = 0;
  if (!(in >> pid) || pid <= 0) {
    return 0;
  }
  return static_cast<pid_t>(pid);
}

void WritePid(const std::string& path, pid_t pid) {
  const std::string part = path + ".part";
  {
    std::ofstream out(part, std::ios::trunc);
    out << pid << "\n";
    if (!out.flush()) {
      return;
    }
  }
  std::error_code ignored;
  fs::permissions(part, fs::perms::owner_read | fs::perms::owner_write,
                  ignored);
  fs::rename(part, path, ignored);
}

// Whether `pid` is a running (not ended) qbpd-service of user `uid` serving
// `port`. A child of this process that ended is reaped here.
bool IsServiceProcess(pid_t pid,
                      unsigned uid,
                      const std::string& program_name,
                      int port) {
  if (pid <= 0) {
    return false;
  }
  int status = 0;
  if (::waitpid(pid, &status, WNOHANG) == pid) {
    return false;
  }
  const std::string proc = "/proc/" + std::to_string(pid);
  std::ifstream status_file(proc + "/status");
  bool owned = false;
  for (std::string line; std::getline(status_file, line);) {
    if (line.starts_with("State:")) {
      std::istringstream state(line.substr(6));
      std::string letter;
      if ((state >> letter) && (letter == "Z" || letter == "X")) {
        return false;  // ended, not yet reaped
      }
    }
    if (line.starts_with("Uid:")) {
      std::istringstream ids(line.substr(4));
      unsigned real = 0;
      owned = (ids >> real) && real == uid;
    }
  }
  if (!owned) {
    return false;
  }
  std::ifstream cmdline(proc + "/cmdline", std::ios::binary);
  std::vector<std::string> args;
  for (std::string arg; std::getline(cmdline, arg, '\0');) {
    args.push_back(arg);
  }
  if (args.empty() || fs::path(args[0]).filename() != program_name) {
    return false;
  }
  for (std::size_t i = 0; i + 1 < args.size(); ++i) {
    if (args[i] == "--port" && args[i + 1] == std::to_string(port)) {
      return true;
    }
  }
  return false;
}

struct Launch {
  pid_t pid = -1;
  bool first_use = false;
  std::string error;
};

// Starts the service detached from the terminal (a session of its own,
// standard input and output on /dev/null, errors to service.log in its data
// folder) and without a shell; does not wait for it.
Launch Spawn(const std::string& program, int port, const std::string& data) {
  Launch out;
  std::error_code ec;
  if (!fs::is_regular_file(program, ec) ||
      ::access(program.c_str(), X_OK) != 0) {
    out.error = "The service program " + program + " is missing.";
    return out;
  }
  out.first_use = !fs::exists(data, ec);
  if (!MakeFolders(data, 0700)) {
    out.error = "The service's data folder " + data + " can't be made.";
    return out;
  }
  std::vector<std::string> args = {program, "--port", std::to_string(port),
                                   "--data-dir", data};
  if (out.first_use) {
    args.push_back("--seed-demo");
  }
  std::vector<char*> argv;
  for (std::string& a : args) {
    argv.push_back(a.data());
  }
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null",
                                   O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null",
                                   O_WRONLY, 0);
  const std::string log = data + "/service.log";
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, log.c_str(),
                                   O_WRONLY | O_CREAT | O_APPEND, 0600);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  pid_t pid = -1;
  const int failed = posix_spawn(&pid, program.c_str(), &actions, &attributes,
                                 argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  if (failed != 0) {
    out.error = "The service could not be started: " +
                std::string(std::strerror(failed)) + ".";
    return out;
  }
  out.pid = pid;
  return out;
}

class LocalServiceConnection : public ServiceConnection {
 public:
  explicit LocalServiceConnection(LocalServiceOptions options)
      : o_(std::move(options)),
        me_(o_.uid ? *o_.uid : static_cast<unsigned>(::getuid())),
        program_name_(fs::path(o_.program.empty() ? "qbpd-service" : o_.program)
                          .filename()
                          .string()) {
    if (!o_.lookup) {
      const unsigned me = me_;
      o_.lookup = [me](int port) { return FindPortListener(port, me); };
    }
  }

  ~LocalServiceConnection() override { EndUse(); }

  std::string Prepare(const std::string& address,
                      ServiceNeed need,
                      const Pump& pump) override {
    const std::optional<int> port = LocalServicePort(address);
    if (!port) {
      return std::string();
    }
    if (use_fd_ >= 0 && use_port_ != *port) {
      EndUse();
    }
    if (!MakeFolders(o_.lock_folder, 0700)) {
      return Tell("The folder for the service's locks, " + o_.lock_folder +
                  ", can't be made.");
    }
    const std::string base = Base(*port);
    pid_t pid = 0;
    bool first_use = false;
    {
      // One program of the user at a time looks and starts.
      FileLock start(base + ".lock", LOCK_EX);
      if (!start.held()) {
        return Tell("The service's lock " + base + ".lock can't be taken.");
      }
      const PortListener listener = o_.lookup(*port);
      if (listener.state != PortListener::State::kNone) {
        return Settle(listener, *port);
      }
      if (need == ServiceNeed::kRunning || o_.program.empty()) {
        return "The reference service is not running on port " +
               std::to_string(*port) + ".";
      }
      pid = ReadPid(base + ".pid");
      if (!IsServiceProcess(pid, me_, program_name_, *port)) {
        Launch launch = Spawn(o_.program, *port, o_.data_dir);
        if (launch.pid <= 0) {
          return Tell(launch.error);
        }
        pid = launch.pid;
        first_use = launch.first_use;
        WritePid(base + ".pid", pid);
      }
      // Otherwise another program of the user is starting it: wait too.
    }
    // Waits without the lock, so that the user's other programs can wait.
    const auto until = std::chrono::steady_clock::now() +
                       std::chrono::milliseconds(std::max(0, o_.wait_ms));
    PortListener listener = o_.lookup(*port);
    while (listener.state == PortListener::State::kNone &&
           std::chrono::steady_clock::now() < until &&
           IsServiceProcess(pid, me_, program_name_, *port)) {
      if (!SleepAndPump(pump)) {
        return "The start of the service was cancelled.";
      }
      listener = o_.lookup(*port);
    }
    if (listener.state == PortListener::State::kNone) {
      return Tell("The reference service did not start on port " +
                  std::to_string(*port) + "; see " + o_.data_dir +
                  "/service.log.");
    }
    std::string refused = Settle(listener, *port);
    const fs::path demo = fs::path(o_.data_dir) / "demo-account.txt";
    std::error_code ec;
    if (refused.empty() && first_use && fs::exists(demo, ec)) {
      Tell(
          "The reference service has a demonstration account; its e-mail "
          "and password are in " +
          demo.string() + ".");
    }
    return refused;
  }

 private:
  std::string Base(int port) const {
    return o_.lock_folder + "/service-" + std::to_string(port);
  }

  // A listener was found: this user's is used, any other refused.
  std::string Settle(const PortListener& listener, int port) {
    const std::string where = "port " + std::to_string(port);
    if (listener.state == PortListener::State::kUnknown) {
      return Tell("Whose service listens on " + where +
                  " of this machine can't be checked (" + listener.error +
                  "); the program does not use it.");
    }
    if (listener.uid != me_) {
      return Tell("The service on " + where +
                  " of this machine belongs to another user; the program "
                  "does not use it. Set the IP and URL settings to a port of "
                  "your own.");
    }
    BeginUse(port);
    return std::string();
  }

  // Marks this program as a user of the service on `port`.
  void BeginUse(int port) {
    if (use_fd_ >= 0) {
      return;
    }
    FileLock use(Base(port) + ".users", LOCK_SH);
    if (use.held()) {
      use_fd_ = use.Release();
      use_port_ = port;
    }
  }

  // Ends this program's use; the last user stops a service that one of the
  // user's programs started (the process file names it).
  void EndUse() {
    if (use_fd_ < 0) {
      return;
    }
    const int port = use_port_;
    const std::string base = Base(port);
    FileLock start(base + ".lock", LOCK_EX);
    ::close(std::exchange(use_fd_, -1));
    if (!start.held()) {
      return;
    }
    FileLock last(base + ".users", LOCK_EX | LOCK_NB);
    if (!last.held()) {
      return;  // another program of the user still uses it
    }
    const pid_t pid = ReadPid(base + ".pid");
    std::error_code ignored;
    if (!IsServiceProcess(pid, me_, program_name_, port)) {
      fs::remove(base + ".pid", ignored);
      return;
    }
    ::kill(pid, SIGTERM);
    const auto until = std::chrono::steady_clock::now() +
                       std::chrono::milliseconds(kStopWaitMs);
    while (IsServiceProcess(pid, me_, program_name_, port) &&
           std::chrono::steady_clock::now() < until) {
      std::this_thread::sleep_for(std::chrono::milliseconds(kPollMs));
    }
    if (IsServiceProcess(pid, me_, program_name_, port)) {
      ::kill(pid, SIGKILL);
      ::waitpid(pid, nullptr, 0);
    }
    fs::remove(base + ".pid", ignored);
  }

  std::string Tell(const std::string& text) {
    if (o_.tell && told_.insert(text).second) {
      o_.tell(text);
    }
    return text;
  }

  LocalServiceOptions o_;
  unsigned me_;
  std::string program_name_;
  int use_fd_ = -1;
  int use_port_ = 0;
  std::set<std::string> told_;
};

class GuardedTransport : public HttpTransport {
 public:
  GuardedTransport(std::unique_ptr<HttpTransport> inner,
                   ServiceConnection* connection,
                   ServiceNeed need)
      : inner_(std::move(inner)), connection_(connection), need_(need) {}

  HttpResponse Perform(const HttpRequest& request, const Pump& pump) override {
    cancelled_ = false;
    if (connection_ != nullptr) {
      const std::string why =
          connection_->Prepare(request.url, need_, [this, &pump] {
            if (pump) {
              pump();
            }
            return !cancelled_;
          });
      if (cancelled_) {
        HttpResponse response;
        response.failure = HttpFailure::kCancelled;
        response.error_text = "The request was cancelled.";
        return response;
      }
      if (!why.empty()) {
        HttpResponse response;
        response.failure = HttpFailure::kNoConnection;
        response.error_text = why;
        return response;
      }
    }
    if (!inner_) {
      HttpResponse response;
      response.failure = HttpFailure::kBadRequest;
      response.error_text = "No network transport is available.";
      return response;
    }
    return inner_->Perform(request, pump);
  }

  void Cancel() override {
    cancelled_ = true;
    if (inner_) {
      inner_->Cancel();
    }
  }

 private:
  std::unique_ptr<HttpTransport> inner_;
  ServiceConnection* connection_;
  ServiceNeed need_;
  bool cancelled_ = false;
};

}  // namespace

std::optional<int> LocalServicePort(const std::string& address) {
  std::optional<HostAndPort> parsed = ParseHostAndPort(address);
  if (!parsed || !IsThisMachine(parsed->host)) {
    return std::nullopt;
  }
  return parsed->port;
}

int UserServicePort() {
  return kBasePort +
         static_cast<int>(static_cast<unsigned>(::getuid()) % kPortsForUsers);
}

PortListener FindPortListener(int port, unsigned me) {
  PortListener found;
  const bool v4 = ScanTable("/proc/net/tcp", port, me, found);
  const bool v6 = ScanTable("/proc/net/tcp6", port, me, found);
  if (!v4 && !v6) {
    found.state = PortListener::State::kUnknown;
    found.error = "the socket tables in /proc/net can't be read";
  }
  return found;
}

std::unique_ptr<ServiceConnection> MakeLocalServiceConnection(
    LocalServiceOptions options) {
  return std::make_unique<LocalServiceConnection>(std::move(options));
}

std::unique_ptr<HttpTransport> MakeServiceTransport(
    std::unique_ptr<HttpTransport> inner,
    ServiceConnection* connection,
    ServiceNeed need) {
  return std::make_unique<GuardedTransport>(std::move(inner), connection, need);
}

}  // namespace qbpd
