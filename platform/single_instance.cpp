#include "platform/single_instance.h"

#include "platform/places.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace qbpd {
namespace {

// A request is the line "come-forward", then a line for each token given:
// "startup-id=" or "xdg-activation=" and the token.
constexpr std::string_view kRequest = "come-forward\n";
constexpr std::string_view kStartupIdField = "startup-id=";
constexpr std::string_view kXdgActivationField = "xdg-activation=";
constexpr size_t kMaxTokenLength = 512;
constexpr size_t kMaxRequestLength = 2048;

std::string EncodeRequest(const ActivationToken& token) {
  std::string out(kRequest);
  if (IsTokenText(token.startup_id)) {
    out += std::string(kStartupIdField) + token.startup_id + "\n";
  }
  if (IsTokenText(token.xdg_activation)) {
    out += std::string(kXdgActivationField) + token.xdg_activation + "\n";
  }
  return out;
}

// The token of a whole request, or nothing when it isn't one.
std::optional<ActivationToken> DecodeRequest(std::string_view text) {
  if (!text.starts_with(kRequest)) {
    return std::nullopt;
  }
  text.remove_prefix(kRequest.size());
  ActivationToken token;
  while (!text.empty()) {
    size_t end = text.find('\n');
    if (end == std::string_view::npos) {
      return std::nullopt;  // cut short
    }
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    std::string value;
    if (line.starts_with(kStartupIdField)) {
      value = line.substr(kStartupIdField.size());
      if (IsTokenText(value)) {
        token.startup_id = value;
      }
    } else if (line.starts_with(kXdgActivationField)) {
      value = line.substr(kXdgActivationField.size());
      if (IsTokenText(value)) {
        token.xdg_activation = value;
      }
    }
    // Other lines are of a newer program: left alone.
  }
  return token;
}

std::string TokenFromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  std::string text = value != nullptr ? value : "";
  return IsTokenText(text) ? text : std::string();
}

class UnixSingleInstance : public SingleInstance {
 public:
  UnixSingleInstance(std::string folder, ActivationToken token)
      : folder_(std::move(folder)),
        token_(std::move(token)),
        lock_path_(folder_ + "/instance.lock"),
        socket_path_(folder_ + "/instance.sock") {}

  ~UnixSingleInstance() override {
    if (listen_fd_ >= 0) {
      close(listen_fd_);
      unlink(socket_path_.c_str());
    }
    if (lock_fd_ >= 0) {
      close(lock_fd_);  // releases the lock
    }
  }

  bool Claim() override {
    if (lock_fd_ >= 0) {
      return true;
    }
    if (!MakeFolders(folder_, 0700)) {
      return true;
    }
    int fd = open(lock_path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) {
      return true;
    }
    if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
      close(fd);
      return false;
    }
    lock_fd_ = fd;
    Listen();
    return true;
  }

  bool AskFirstToComeForward() override {
    sockaddr_un address{};
    if (!Address(address)) {
      return false;
    }
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
      return false;
    }
    const std::string request = EncodeRequest(token_);
    bool sent = connect(fd, reinterpret_cast<sockaddr*>(&address),
                        sizeof(address)) == 0 &&
                write(fd, request.data(), request.size()) ==
                    static_cast<ssize_t>(request.size());
    close(fd);
    return sent;
  }

  std::optional<ActivationToken> TakeComeForwardRequest() override {
    if (listen_fd_ < 0) {
      return std::nullopt;
    }
    std::optional<ActivationToken> asked;
    for (;;) {
      int fd = accept4(listen_fd_, nullptr, nullptr, SOCK_CLOEXEC);
      if (fd < 0) {
        break;
      }
      if (auto token = DecodeRequest(ReadRequest(fd))) {
        asked = std::move(token);
      }
      close(fd);
    }
    return asked;
  }

  int ListenHandle() const override { return listen_fd_; }

 private:
  // Reads what a second start wrote until it closes. The request is tiny
  // and sent before the other side closes; a short bounded wait is enough
  // and keeps a silent client from hanging us.
  static std::string ReadRequest(int fd) {
    timeval limit{0, 200000};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    std::string text;
    char buffer[256];
    while (text.size() <= kMaxRequestLength) {
      ssize_t n = read(fd, buffer, sizeof(buffer));
      if (n <= 0) {
        break;
      }
      text.append(buffer, static_cast<size_t>(n));
    }
    return text.size() <= kMaxRequestLength ? text : std::string();
  }

  bool Address(sockaddr_un& address) const {
    address.sun_family = AF_UNIX;
    if (socket_path_.size() >= sizeof(address.sun_path)) {
      return false;
    }
    std::memcpy(address.sun_path, socket_path_.c_str(),
                socket_path_.size() + 1);
    return true;
  }

  void Listen() {
    sockaddr_un address{};
    if (!Address(address)) {
      return;
    }
    // We hold the lock, so a socket file left here belongs to a crashed
    // instance.
    unlink(socket_path_.c_str());
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0) {
      return;
    }
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
        listen(fd, 8) != 0) {
      close(fd);
      return;
    }
    listen_fd_ = fd;
  }

  std::string folder_;
  ActivationToken token_;
  std::string lock_path_;
  std::string socket_path_;
  int lock_fd_ = -1;
  int listen_fd_ = -1;
};

}  // namespace

bool IsTokenText(const std::string& text) {
  if (text.empty() || text.size() > kMaxTokenLength) {
    return false;
  }
  for (char c : text) {
    if (c <= ' ' || c > '~') {
      return false;
    }
  }
  return true;
}

ActivationToken ActivationTokenFromEnvironment() {
  return ActivationToken{TokenFromEnvironment("DESKTOP_STARTUP_ID"),
                         TokenFromEnvironment("XDG_ACTIVATION_TOKEN")};
}

std::unique_ptr<SingleInstance> MakeSingleInstance(std::string folder,
                                                   ActivationToken token) {
  return std::make_unique<UnixSingleInstance>(std::move(folder),
                                              std::move(token));
}

}  // namespace qbpd
