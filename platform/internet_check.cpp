#include "platform/internet_check.h"

#include <cerrno>
#include <charconv>
#include <condition_variable>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <thread>
#include <unistd.h>

namespace qbpd {

namespace {

using Clock = std::chrono::steady_clock;

struct AddrInfoDeleter {
  void operator()(addrinfo* list) const { freeaddrinfo(list); }
};
using AddrList = std::unique_ptr<addrinfo, AddrInfoDeleter>;

addrinfo Hints(int flags) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  return hints;
}

// The lookup runs on a thread of its own, since the system's resolver has no
// time limit; when it outlives the bound, the thread finishes alone and its
// answer is dropped.
struct Lookup {
  std::mutex mutex;
  std::condition_variable done;
  bool finished = false;
  AddrList result;
};

AddrList Resolve(const HostAndPort& target, Clock::time_point deadline) {
  std::string port = std::to_string(target.port);
  addrinfo numeric = Hints(AI_NUMERICHOST | AI_NUMERICSERV);
  addrinfo* list = nullptr;
  if (getaddrinfo(target.host.c_str(), port.c_str(), &numeric, &list) == 0) {
    return AddrList(list);
  }
  auto lookup = std::make_shared<Lookup>();
  try {
    std::thread([lookup, host = target.host, port] {
      addrinfo hints = Hints(AI_NUMERICSERV);
      addrinfo* found = nullptr;
      int rc = getaddrinfo(host.c_str(), port.c_str(), &hints, &found);
      std::lock_guard lock(lookup->mutex);
      if (rc == 0) {
        lookup->result.reset(found);
      }
      lookup->finished = true;
      lookup->done.notify_all();
    }).detach();
  } catch (const std::system_error&) {
    return nullptr;
  }
  std::unique_lock lock(lookup->mutex);
  if (!lookup->done.wait_until(lock, deadline,
                               [&] { return lookup->finished; })) {
    return nullptr;
  }
  return std::move(lookup->result);
}

bool ConnectOne(const addrinfo& address, Clock::time_point deadline) {
  int fd = socket(address.ai_family,
                  address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC,
                  address.ai_protocol);
  if (fd < 0) {
    return false;
  }
  bool connected = false;
  if (connect(fd, address.ai_addr, address.ai_addrlen) == 0) {
    connected = true;
  } else if (errno == EINPROGRESS) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - Clock::now());
    pollfd watch{fd, POLLOUT, 0};
    if (left.count() > 0 &&
        poll(&watch, 1, static_cast<int>(left.count())) == 1) {
      int error = 0;
      socklen_t length = sizeof error;
      connected = getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length) == 0 &&
                  error == 0;
    }
  }
  close(fd);
  return connected;
}

}  // namespace

std::optional<HostAndPort> ParseHostAndPort(std::string_view address) {
  HostAndPort out;
  out.port = 80;
  size_t scheme_end = address.find("://");
  if (scheme_end != std::string_view::npos) {
    std::string_view scheme = address.substr(0, scheme_end);
    if (scheme == "https" || scheme == "HTTPS") {
      out.port = 443;
    }
    address.remove_prefix(scheme_end + 3);
  }
  address = address.substr(0, address.find_first_of("/?#"));
  size_t at = address.rfind('@');
  if (at != std::string_view::npos) {
    address.remove_prefix(at + 1);
  }
  std::string_view port_text;
  if (!address.empty() && address.front() == '[') {
    size_t close_bracket = address.find(']');
    if (close_bracket == std::string_view::npos) {
      return std::nullopt;
    }
    out.host = std::string(address.substr(1, close_bracket - 1));
    std::string_view after = address.substr(close_bracket + 1);
    if (!after.empty()) {
      if (after.front() != ':') {
        return std::nullopt;
      }
      port_text = after.substr(1);
    }
  } else {
    size_t colon = address.find(':');
    out.host = std::string(address.substr(0, colon));
    if (colon != std::string_view::npos) {
      port_text = address.substr(colon + 1);
    }
  }
  if (out.host.empty()) {
    return std::nullopt;
  }
  if (!port_text.empty()) {
    int port = 0;
    auto [end, ec] = std::from_chars(port_text.data(),
                                     port_text.data() + port_text.size(), port);
    if (ec != std::errc() || end != port_text.data() + port_text.size() ||
        port < 1 || port > 65535) {
      return std::nullopt;
    }
    out.port = port;
  }
  return out;
}

bool CheckInternetConnection(const std::string& address,
                             std::chrono::milliseconds bound) {
  std::optional<HostAndPort> target = ParseHostAndPort(address);
  if (!target) {
    return false;
  }
  Clock::time_point deadline = Clock::now() + bound;
  AddrList list = Resolve(*target, deadline);
  for (const addrinfo* a = list.get(); a != nullptr; a = a->ai_next) {
    if (Clock::now() >= deadline) {
      return false;
    }
    if (ConnectOne(*a, deadline)) {
      return true;
    }
  }
  return false;
}

}  // namespace qbpd
