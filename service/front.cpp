#include "service/front.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace qbpd::service {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr auto kStartBound = std::chrono::seconds(10);
constexpr auto kStopBound = std::chrono::seconds(5);
constexpr auto kPoll = std::chrono::milliseconds(20);

bool Listening(const std::string& host, int port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    return false;
  }
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  const std::string target = host == "0.0.0.0" ? "127.0.0.1" : host;
  const bool ok =
      ::inet_pton(AF_INET, target.c_str(), &address.sin_addr) == 1 &&
      ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  ::close(fd);
  return ok;
}

// Waits for `pid` up to `bound`; true when it ended.
bool Reaped(pid_t pid, std::chrono::milliseconds bound) {
  const auto until = Clock::now() + bound;
  for (;;) {
    const pid_t got = ::waitpid(pid, nullptr, WNOHANG);
    if (got == pid || (got < 0 && errno == ECHILD)) {
      return true;
    }
    if (Clock::now() >= until) {
      return false;
    }
    std::this_thread::sleep_for(kPoll);
  }
}

}  // namespace

bool IsProxyAddress(const std::string& text) {
  const std::size_t slash = text.find('/');
  const std::string address = text.substr(0, slash);
  in6_addr parsed{};
  const bool v4 = ::inet_pton(AF_INET, address.c_str(), &parsed) == 1;
  const bool v6 = !v4 && ::inet_pton(AF_INET6, address.c_str(), &parsed) == 1;
  if (!v4 && !v6) {
    return false;
  }
  if (slash == std::string::npos) {
    return true;
  }
  const std::string bits = text.substr(slash + 1);
  if (bits.empty() || bits.size() > 3 ||
      bits.find_first_not_of("0123456789") != std::string::npos) {
    return false;
  }
  return std::stoi(bits) <= (v4 ? 32 : 128);
}

std::string FrontConfiguration(const FrontOptions& o) {
  const std::string folder = o.folder.string();
  const auto seconds = [](int n) { return std::to_string(n) + "s"; };
  std::string c;
  c += "# Made by qbpd-service at each start; changes are overwritten.\n";
  c += "worker_processes 1;\n";
  if (::geteuid() == 0) {
    // Started by root, nginx would hand its requests to "nobody", who may
    // not use the service's private folder.
    c += "user root;\n";
  }
  c += "pid " + folder + "/nginx.pid;\n";
  c += "error_log stderr warn;\n";
  c += "events { worker_connections 8192; }\n";
  c += "http {\n";
  c += "  access_log off;\n";
  c += "  server_tokens off;\n";
  for (const char* temp :
       {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
    c += "  " + std::string(temp) + "_temp_path " + folder + "/" + temp + ";\n";
  }
  c += "  client_header_timeout " + seconds(o.header_seconds) + ";\n";
  c += "  client_body_timeout " + seconds(o.body_read_seconds) + ";\n";
  c += "  send_timeout " + seconds(o.body_read_seconds) + ";\n";
  c += "  keepalive_timeout " + seconds(o.idle_seconds) + ";\n";
  c += "  reset_timedout_connection on;\n";
  c += "  client_max_body_size " + std::to_string(o.max_body_bytes) + ";\n";
  c += "  client_body_buffer_size 1m;\n";
  for (const std::string& proxy : o.trusted_proxies) {
    if (!IsProxyAddress(proxy)) {
      throw std::invalid_argument("not an address or network: " + proxy);
    }
    c += "  set_real_ip_from " + proxy + ";\n";
  }
  if (!o.trusted_proxies.empty()) {
    // The last address that no trusted balancer added is the client's.
    c += "  real_ip_header X-Forwarded-For;\n";
    c += "  real_ip_recursive on;\n";
  }
  c += "  limit_conn_zone $binary_remote_addr zone=per_address:4m;\n";
  c += "  limit_conn_status 429;\n";
  c += "  limit_conn_log_level info;\n";
  c += "  upstream service {\n";
  c += "    server 127.0.0.1:" + std::to_string(o.upstream_port) + ";\n";
  c += "    keepalive 16;\n";
  c += "  }\n";
  c += "  server {\n";
  // reuseport: a port that its chooser still holds (bound, not listening)
  // can be taken.
  c +=
      "    listen " + o.listen + ":" + std::to_string(o.port) + " reuseport;\n";
  c += "    limit_conn per_address " +
       std::to_string(o.connections_per_address) + ";\n";
  c += "    location / {\n";
  c += "      proxy_pass http://service;\n";
  c += "      proxy_http_version 1.1;\n";
  c += "      proxy_set_header Connection \"\";\n";
  c += "      proxy_set_header Host $http_host;\n";
  c += "      proxy_set_header X-Real-IP $remote_addr;\n";
  c += "      proxy_request_buffering on;\n";
  c += "      proxy_buffering on;\n";
  c += "      proxy_read_timeout 120s;\n";
  c += "    }\n";
  c += "  }\n";
  c += "}\n";
  return c;
}

Front::Front(FrontOptions options) : options_(std::move(options)) {
  std::error_code ec;
  fs::create_directories(options_.folder, ec);
  fs::permissions(options_.folder, fs::perms::owner_all, ec);
  const fs::path config = options_.folder / "nginx.conf";
  {
    std::ofstream out(config, std::ios::trunc);
    out << FrontConfiguration(options_);
    if (!out.flush()) {
      throw std::runtime_error("cannot write " + config.string());
    }
  }
  std::vector<std::string> args = {options_.program,
                                   "-p",
                                   options_.folder.string(),
                                   "-c",
                                   config.string(),
                                   "-e",
                                   "stderr",
                                   "-g",
                                   "daemon off;"};
  std::vector<char*> argv;
  for (std::string& arg : args) {
    argv.push_back(arg.data());
  }
  argv.push_back(nullptr);
  const pid_t parent = ::getpid();
  pid_ = ::fork();
  if (pid_ < 0) {
    throw std::runtime_error("cannot start " + options_.program);
  }
  if (pid_ == 0) {
    // The front ends with the service, also when the service is killed
    // (SIGQUIT lets it finish the answers under way).
    ::prctl(PR_SET_PDEATHSIG, SIGQUIT);
    if (::getppid() != parent) {
      ::_exit(1);
    }
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (null >= 0) {
      ::dup2(null, STDIN_FILENO);
      ::dup2(null, STDOUT_FILENO);
    }
    ::execvp(argv[0], argv.data());
    ::_exit(127);
  }
  const auto until = Clock::now() + kStartBound;
  while (!Listening(options_.listen, options_.port)) {
    if (!Running()) {
      throw std::runtime_error(options_.program +
                               " stopped at its start (see its messages)");
    }
    if (Clock::now() >= until) {
      throw std::runtime_error(options_.program + " did not listen on " +
                               options_.listen + ":" +
                               std::to_string(options_.port));
    }
    std::this_thread::sleep_for(kPoll);
  }
}

Front::~Front() {
  if (pid_ <= 0) {
    return;
  }
  // SIGQUIT: nginx finishes the answers under way and then ends.
  ::kill(pid_, SIGQUIT);
  if (!Reaped(pid_, kStopBound)) {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
}

bool Front::Running() {
  if (pid_ <= 0) {
    return false;
  }
  const pid_t got = ::waitpid(pid_, nullptr, WNOHANG);
  if (got == pid_ || got < 0) {
    pid_ = -1;
    return false;
  }
  return true;
}

}  // namespace qbpd::service
