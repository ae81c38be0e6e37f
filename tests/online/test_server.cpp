#include "tests/online/test_server.h"

#include <arpa/inet.h>
#include <chrono>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace qbpd::testing {

namespace {

// A listening socket on a free loopback port.
int ListenOnFreePort(int& port) {
  int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  addr.sin_port = 0;
  if (fd < 0 ||
      bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
      listen(fd, 16) != 0) {
    throw std::runtime_error("no free loopback port");
  }
  socklen_t length = sizeof addr;
  getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &length);
  port = ntohs(addr.sin_port);
  return fd;
}

}  // namespace

TestServer::~TestServer() {
  server_.stop();
  if (thread_.joinable()) {
    thread_.join();
  }
}

void TestServer::Start() {
  port_ = server_.bind_to_any_port("127.0.0.1");
  if (port_ <= 0) {
    throw std::runtime_error("the test server could not bind");
  }
  thread_ = std::thread([this] { server_.listen_after_bind(); });
  auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (!server_.is_running() && std::chrono::steady_clock::now() < give_up) {
    std::this_thread::yield();
  }
}

std::string TestServer::base() const {
  return "http://127.0.0.1:" + std::to_string(port_);
}

void Gate::Open() {
  std::lock_guard lock(mutex_);
  open_ = true;
  cv_.notify_all();
}

bool Gate::Wait() {
  reached_ = true;
  std::unique_lock lock(mutex_);
  return cv_.wait_for(lock, std::chrono::seconds(5), [this] { return open_; });
}

ClosingListener::ClosingListener(size_t read_bytes) : read_bytes_(read_bytes) {
  fd_ = ListenOnFreePort(port_);
  thread_ = std::thread([this] {
    while (!stop_) {
      pollfd watch{fd_, POLLIN, 0};
      if (poll(&watch, 1, 20) != 1) {
        continue;
      }
      int conn = accept(fd_, nullptr, nullptr);
      if (conn < 0) {
        continue;
      }
      std::vector<char> buffer(read_bytes_ > 0 ? read_bytes_ : 1);
      size_t got = 0;
      while (got < read_bytes_) {
        pollfd in{conn, POLLIN, 0};
        if (poll(&in, 1, 2000) != 1) {
          break;
        }
        ssize_t n = recv(conn, buffer.data(), buffer.size(), 0);
        if (n <= 0) {
          break;
        }
        got += static_cast<size_t>(n);
      }
      // A reset rather than an orderly close, as when a process dies.
      linger hard{1, 0};
      setsockopt(conn, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
      close(conn);
    }
  });
}

ClosingListener::~ClosingListener() {
  stop_ = true;
  thread_.join();
  close(fd_);
}

std::string ClosingListener::base() const {
  return "http://127.0.0.1:" + std::to_string(port_);
}

int UnusedPort() {
  int port = 0;
  int fd = ListenOnFreePort(port);
  close(fd);
  return port;
}

}  // namespace qbpd::testing
