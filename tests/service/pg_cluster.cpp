#include "tests/service/pg_cluster.h"

#include "service/db.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace qbpd::testing {

namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;
constexpr char kDatabase[] = "postgres";
constexpr char kUser[] = "qbpd";

// The newest installed server's bin folder, or "" when there is none.
fs::path FindServerPrograms() {
  std::vector<fs::path> found;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator("/usr/lib/postgresql", ec)) {
    const fs::path bin = entry.path() / "bin";
    if (fs::exists(bin / "initdb", ec) && fs::exists(bin / "pg_ctl", ec)) {
      found.push_back(bin);
    }
  }
  // "9.6" < "15" compares as text the wrong way: by length first.
  std::sort(found.begin(), found.end(),
            [](const fs::path& a, const fs::path& b) {
              const std::string x = a.parent_path().filename().string();
              const std::string y = b.parent_path().filename().string();
              return x.size() != y.size() ? x.size() < y.size() : x < y;
            });
  return found.empty() ? fs::path() : found.back();
}

}  // namespace

PgCluster::PgCluster() {
  bin_ = FindServerPrograms();
  if (bin_.empty()) {
    why_ =
        "the PostgreSQL server programs (initdb, pg_ctl under "
        "/usr/lib/postgresql/*/bin) are not installed; scripts/setup installs "
        "them";
    return;
  }
  home_ = dir_ / "pg";
  fs::create_directory(home_);
  if (geteuid() == 0) {
    // nobody passes through the test's folder into its own.
    fs::permissions(dir_.path(), fs::perms::owner_all | fs::perms::group_exec |
                                     fs::perms::others_exec);
    if (chown(home_.c_str(), kNobody, kNobody) != 0) {
      why_ = "cannot give the cluster's folder to nobody";
      return;
    }
  }
  fs::permissions(home_, fs::perms::owner_all);
  // No fsync: a throwaway cluster need not survive a power cut, and the
  // test stays fast.
  if (!RunAsOwner({"initdb", "-D", (home_ / "data").string(), "-U", kUser,
                   "--auth=trust", "-E", "UTF8", "--no-locale", "--no-sync"})) {
    why_ = "initdb failed (see " + (home_ / "log").string() + ")";
    return;
  }
  const std::string options =
      "-k " + home_.string() + " -c listen_addresses= -F";
  if (!RunAsOwner({"pg_ctl", "-D", (home_ / "data").string(), "-o", options,
                   "-l", (home_ / "server.log").string(), "-w", "-t", "30",
                   "start"})) {
    why_ = "pg_ctl could not start the cluster (see " +
           (home_ / "server.log").string() + ")";
    return;
  }
  running_ = true;
}

PgCluster::~PgCluster() {
  if (running_) {
    RunAsOwner({"pg_ctl", "-D", (home_ / "data").string(), "-m", "immediate",
                "-w", "stop"});
  }
}

std::string PgCluster::conninfo() const {
  return "host=" + home_.string() + " user=" + kUser + " dbname=" + kDatabase;
}

bool PgCluster::Restart() {
  return RunAsOwner({"pg_ctl", "-D", (home_ / "data").string(), "-m",
                     "immediate", "-w", "-t", "30", "restart"});
}

std::string PgCluster::NewDatabase(const std::string& name) const {
  auto db = service::OpenPostgresDb(conninfo());
  db->Exec(("CREATE DATABASE " + name).c_str());
  return "host=" + home_.string() + " user=" + kUser + " dbname=" + name;
}

bool PgCluster::RunAsOwner(const std::vector<std::string>& args) {
  std::vector<std::string> command;
  if (geteuid() == 0) {
    command = {"/usr/bin/setpriv", "--reuid=" + std::to_string(kNobody),
               "--regid=" + std::to_string(kNobody), "--clear-groups"};
  }
  command.push_back((bin_ / args[0]).string());
  command.insert(command.end(), args.begin() + 1, args.end());
  std::vector<char*> argv;
  for (auto& arg : command) {
    argv.push_back(arg.data());
  }
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  const std::string log = (home_ / "log").string();
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(),
                                   O_WRONLY | O_CREAT | O_APPEND, 0644);
  posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
  // The programs start in the cluster's folder, which its user may enter.
  posix_spawn_file_actions_addchdir_np(&actions, home_.c_str());
  pid_t pid = -1;
  const int spawned =
      posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) {
    return false;
  }
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace qbpd::testing
