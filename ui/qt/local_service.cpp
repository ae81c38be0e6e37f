#include "ui/qt/local_service.h"

#include "platform/internet_check.h"
#include "platform/places.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace qbpd {
namespace {

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
  if (::gethostname(name, sizeof name - 1) == 0 && h == Lower(name)) {
    return true;
  }
  return false;
}

}  // namespace

std::optional<int> LocalServicePort(const std::string& address) {
  std::optional<HostAndPort> parsed = ParseHostAndPort(address);
  if (!parsed || !IsThisMachine(parsed->host)) {
    return std::nullopt;
  }
  return parsed->port;
}

bool ServiceAnswers(int port) {
  return CheckInternetConnection("127.0.0.1:" + std::to_string(port),
                                 std::chrono::milliseconds(300));
}

ServiceLaunch StartLocalService(const std::string& program,
                                int port,
                                const std::string& data_dir,
                                int wait_ms) {
  namespace fs = std::filesystem;
  ServiceLaunch out;
  std::error_code ec;
  if (!fs::is_regular_file(program, ec) ||
      ::access(program.c_str(), X_OK) != 0) {
    out.error = "The service program " + program + " is missing";
    return out;
  }
  const bool first_use = !fs::exists(data_dir, ec);
  if (!MakeFolders(data_dir, 0700)) {
    out.error = "The service's data folder " + data_dir + " can't be made";
    return out;
  }
  std::vector<std::string> args = {program, "--port", std::to_string(port),
                                   "--data-dir", data_dir};
  if (first_use) {
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
  std::string log = data_dir + "/service.log";
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, log.c_str(),
                                   O_WRONLY | O_CREAT | O_APPEND, 0600);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  // A session of its own: the service outlives the desktop program and a
  // terminal's signals to it.
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  pid_t pid = -1;
  int failed = posix_spawn(&pid, program.c_str(), &actions, &attributes,
                           argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  if (failed != 0) {
    out.error = "The service could not be started: " +
                std::string(std::strerror(failed));
    return out;
  }
  out.started = true;
  out.pid = pid;
  auto until = std::chrono::steady_clock::now() +
               std::chrono::milliseconds(std::max(0, wait_ms));
  while (!ServiceAnswers(port) && std::chrono::steady_clock::now() < until) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return out;
}

std::optional<ServiceLaunch> EnsureLocalService(
    const std::string& address,
    const std::string& program_folder,
    const std::string& data_home) {
  std::optional<int> port =
      LocalServicePort(address.empty() ? kDefaultServiceAddress : address);
  if (!port || ServiceAnswers(*port)) {
    return std::nullopt;
  }
  return StartLocalService(program_folder + "/qbpd-service", *port,
                           data_home + "/service");
}

}  // namespace qbpd
