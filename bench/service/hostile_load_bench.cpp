// How a normal client fares while hostile clients hold the service: 40
// clients that send their request head one byte every two seconds, 200
// idle kept-alive connections, and 40 uploads of 10 MB sent slowly, all at
// once. qbpd-service is measured as it listens by itself and behind its
// front (nginx, --front), in the same run. See README.md in this folder.

#include "platform/loopback_port.h"
#include "tests/online/service_process.h"
#include "tests/support/temp_dir.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr int kSlowHeads = 40;
constexpr int kIdle = 200;
constexpr int kSlowUploads = 40;
constexpr std::size_t kUploadBytes = 10u * 1024 * 1024;
constexpr int kNormalClients = 4;
constexpr auto kRequestBound = 10s;

// A TCP connection from `source` (a loopback address of its own per kind of
// client, as separate machines would be) to 127.0.0.1:`port`; -1 on failure.
int Connect(const char* source, int port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    return -1;
  }
  sockaddr_in from{};
  from.sin_family = AF_INET;
  ::inet_pton(AF_INET, source, &from.sin_addr);
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port = htons(static_cast<uint16_t>(port));
  ::inet_pton(AF_INET, "127.0.0.1", &to.sin_addr);
  const int one = 1;
  ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
  if (::bind(fd, reinterpret_cast<sockaddr*>(&from), sizeof from) != 0 ||
      ::connect(fd, reinterpret_cast<sockaddr*>(&to), sizeof to) != 0) {
    ::close(fd);
    return -1;
  }
  return fd;
}

bool SendAll(int fd, const std::string& data) {
  std::size_t sent = 0;
  while (sent < data.size()) {
    const ssize_t n =
        ::send(fd, data.data() + sent, data.size() - sent, MSG_NOSIGNAL);
    if (n <= 0) {
      return false;
    }
    sent += static_cast<std::size_t>(n);
  }
  return true;
}

// Reads one HTTP answer (head and Content-Length body) within the bound;
// its body, or nullopt-like false.
bool ReadAnswer(int fd, std::string& body, Clock::time_point until) {
  std::string data;
  char buffer[16384];
  std::size_t head_end = std::string::npos, need = 0;
  for (;;) {
    if (head_end == std::string::npos) {
      head_end = data.find("\r\n\r\n");
      if (head_end != std::string::npos) {
        const auto at = data.find("Content-Length: ");
        if (at == std::string::npos || at > head_end) {
          return false;
        }
        need = head_end + 4 + std::strtoul(data.c_str() + at + 16, nullptr, 10);
      }
    }
    if (head_end != std::string::npos && data.size() >= need) {
      body = data.substr(head_end + 4, need - head_end - 4);
      return data.compare(0, 12, "HTTP/1.1 200") == 0;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        until - Clock::now());
    pollfd p{fd, POLLIN, 0};
    if (left.count() <= 0 ||
        ::poll(&p, 1, static_cast<int>(left.count())) <= 0) {
      return false;
    }
    const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
    if (n <= 0) {
      return false;
    }
    data.append(buffer, static_cast<std::size_t>(n));
  }
}

std::string Post(const std::string& path, const std::string& body) {
  return "POST " + path +
         " HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n"
         "Content-Length: " +
         std::to_string(body.size()) + "\r\n\r\n" + body;
}

// One operation on a fresh connection when `fd` is -1 or broken.
bool Call(int& fd,
          int port,
          const std::string& path,
          const std::string& body,
          std::string& answer) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (fd < 0) {
      fd = Connect("127.0.0.1", port);
      if (fd < 0) {
        return false;
      }
    }
    if (SendAll(fd, Post(path, body)) &&
        ReadAnswer(fd, answer, Clock::now() + kRequestBound)) {
      return true;
    }
    ::close(fd);
    fd = -1;
  }
  return false;
}

struct Figures {
  double per_second = 0;
  double p50_ms = 0, p99_ms = 0, max_ms = 0;
  int failed = 0;
};

// kNormalClients clients call GetAlbumList in a loop for `seconds`.
Figures Measure(int port, const std::string& session, int seconds) {
  std::vector<std::vector<double>> times(kNormalClients);
  std::atomic<int> failed{0};
  const auto until = Clock::now() + std::chrono::seconds(seconds);
  std::vector<std::thread> clients;
  for (int c = 0; c < kNormalClients; ++c) {
    clients.emplace_back([&, c] {
      int fd = -1;
      const std::string body = "{\"authCode\":\"" + session + "\"}";
      while (Clock::now() < until) {
        const auto start = Clock::now();
        std::string answer;
        const bool ok = Call(fd, port, "/api/GetAlbumList", body, answer) &&
                        answer.find("\"ok\":true") != std::string::npos;
        times[c].push_back(
            std::chrono::duration<double, std::milli>(Clock::now() - start)
                .count());
        if (!ok) {
          ++failed;
        }
      }
      if (fd >= 0) {
        ::close(fd);
      }
    });
  }
  for (auto& t : clients) {
    t.join();
  }
  std::vector<double> all;
  for (const auto& t : times) {
    all.insert(all.end(), t.begin(), t.end());
  }
  std::sort(all.begin(), all.end());
  Figures f;
  f.failed = failed;
  if (!all.empty()) {
    f.per_second = static_cast<double>(all.size() - failed) / seconds;
    f.p50_ms = all[all.size() / 2];
    f.p99_ms = all[std::min(all.size() - 1, all.size() * 99 / 100)];
    f.max_ms = all.back();
  }
  return f;
}

// The hostile clients, running until Stop.
class Attack {
 public:
  explicit Attack(int port) : port_(port) {
    // Slow heads: a request line and headers, one byte every two seconds.
    for (int i = 0; i < kSlowHeads; ++i) {
      threads_.emplace_back([this] {
        const int fd = Connect("127.0.0.2", port_);
        const std::string head = Post("/api/GetAlbumList", "{}");
        for (std::size_t at = 0; fd >= 0 && at < head.size() && !stop_; ++at) {
          if (::send(fd, head.data() + at, 1, MSG_NOSIGNAL) != 1) {
            break;
          }
          Pause(2s);
        }
        Pause(3600s);
        if (fd >= 0) {
          ::close(fd);
        }
      });
    }
    // Idle kept-alive connections: one request answered, then silence.
    threads_.emplace_back([this] {
      std::vector<int> fds;
      for (int i = 0; i < kIdle && !stop_; ++i) {
        const int fd = Connect("127.0.0.3", port_);
        std::string body;
        if (fd >= 0 &&
            SendAll(fd, "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n")) {
          ReadAnswer(fd, body, Clock::now() + 2s);
        }
        fds.push_back(fd);
      }
      Pause(3600s);
      for (int fd : fds) {
        if (fd >= 0) {
          ::close(fd);
        }
      }
    });
    // Slow uploads: 10 MB at about 20 kB a second each.
    for (int i = 0; i < kSlowUploads; ++i) {
      threads_.emplace_back([this] {
        const int fd = Connect("127.0.0.4", port_);
        const std::string head =
            "POST /exuploadimages?authcode=x HTTP/1.1\r\nHost: 127.0.0.1\r\n"
            "Content-Type: multipart/form-data; boundary=b\r\n"
            "Content-Length: " +
            std::to_string(kUploadBytes) + "\r\n\r\n";
        if (fd < 0 || !SendAll(fd, head)) {
          return;
        }
        const std::string chunk(2048, 'x');
        for (std::size_t sent = 0; sent < kUploadBytes && !stop_;
             sent += chunk.size()) {
          if (!SendAll(fd, chunk)) {
            break;
          }
          Pause(100ms);
        }
        ::close(fd);
      });
    }
  }
  ~Attack() {
    stop_ = true;
    for (auto& t : threads_) {
      t.join();
    }
  }

 private:
  void Pause(std::chrono::milliseconds span) {
    const auto until = Clock::now() + span;
    while (!stop_ && Clock::now() < until) {
      std::this_thread::sleep_for(50ms);
    }
  }

  int port_;
  std::atomic<bool> stop_{false};
  std::vector<std::thread> threads_;
};

void Print(const char* what, const Figures& f) {
  std::printf(
      "  %-22s %8.1f req/s   p50 %7.2f ms   p99 %8.2f ms   max %8.1f ms"
      "   failed %d\n",
      what, f.per_second, f.p50_ms, f.p99_ms, f.max_ms, f.failed);
}

bool Run(const char* name, bool front, int seconds) {
  testing::TempDir dir;
  HeldLoopbackPort held;
  std::vector<std::string> extra = {"--seed-demo"};
  if (front) {
    extra.insert(extra.end(),
                 {"--front", "--port", std::to_string(held.port())});
  }
  testing::ServiceProcess service(QBPD_SERVICE_PROGRAM, dir.path() / "data",
                                  extra);
  if (!service.ok()) {
    std::fprintf(stderr, "%s: %s\n", name, service.error().c_str());
    return false;
  }
  int fd = -1;
  std::string answer;
  if (!Call(fd, service.port(), "/api/LoginUser",
            "{\"email\":\"demo@quillbay.test\",\"password\":\"" +
                service.demo_password() + "\"}",
            answer)) {
    std::fprintf(stderr, "%s: no login\n", name);
    return false;
  }
  ::close(fd);
  const auto at = answer.find("\"session\":[\"");
  const std::string session = answer.substr(at + 12, 64);
  std::printf("%s (port %d)\n", name, service.port());
  const Figures quiet = Measure(service.port(), session, seconds);
  Print("quiet", quiet);
  Figures attacked;
  {
    Attack attack(service.port());
    std::this_thread::sleep_for(3s);  // the attack takes hold
    attacked = Measure(service.port(), session, seconds);
  }
  Print("under the three loads", attacked);
  std::printf("  throughput kept: %.0f%%\n",
              quiet.per_second > 0
                  ? 100.0 * attacked.per_second / quiet.per_second
                  : 0.0);
  return true;
}

}  // namespace
}  // namespace qbpd

int main(int argc, char** argv) {
  int seconds = 5;
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::string(argv[i]) == "--seconds") {
      seconds = std::max(1, std::atoi(argv[++i]));
    }
  }
  std::printf(
      "normal clients: %d, GetAlbumList for %d s; loads: %d slow heads,"
      " %d idle connections, %d slow 10 MB uploads\n",
      qbpd::kNormalClients, seconds, qbpd::kSlowHeads, qbpd::kIdle,
      qbpd::kSlowUploads);
  const bool direct = qbpd::Run("qbpd-service alone", false, seconds);
  const bool front =
      qbpd::Run("qbpd-service behind nginx (--front)", true, seconds);
  return direct && front ? 0 : 1;
}
