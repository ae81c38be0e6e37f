#include "platform/single_instance.h"

#include "platform/places.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace qbpd {
namespace {

constexpr std::string_view kRequest = "come-forward\n";

class UnixSingleInstance : public SingleInstance {
 public:
  explicit UnixSingleInstance(std::string folder)
      : folder_(std::move(folder)),
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
    bool sent = connect(fd, reinterpret_cast<sockaddr*>(&address),
                        sizeof(address)) == 0 &&
                write(fd, kRequest.data(), kRequest.size()) ==
                    static_cast<ssize_t>(kRequest.size());
    close(fd);
    return sent;
  }

  bool TakeComeForwardRequest() override {
    if (listen_fd_ < 0) {
      return false;
    }
    bool asked = false;
    for (;;) {
      int fd = accept4(listen_fd_, nullptr, nullptr, SOCK_CLOEXEC);
      if (fd < 0) {
        break;
      }
      // The request is tiny and sent before the other side closes; a short
      // bounded wait is enough and keeps a silent client from hanging us.
      timeval limit{0, 200000};
      setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
      char buffer[32] = {};
      ssize_t n = read(fd, buffer, sizeof(buffer) - 1);
      if (n > 0 &&
          std::string_view(buffer, static_cast<size_t>(n)) == kRequest) {
        asked = true;
      }
      close(fd);
    }
    return asked;
  }

  int ListenHandle() const override { return listen_fd_; }

 private:
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
  std::string lock_path_;
  std::string socket_path_;
  int lock_fd_ = -1;
  int listen_fd_ = -1;
};

}  // namespace

std::unique_ptr<SingleInstance> MakeSingleInstance(std::string folder) {
  return std::make_unique<UnixSingleInstance>(std::move(folder));
}

}  // namespace qbpd
