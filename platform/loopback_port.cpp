#include "platform/loopback_port.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace qbpd {

HeldLoopbackPort::HeldLoopbackPort()
    : fd_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  if (fd_ < 0) {
    return;
  }
  const int yes = 1;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (::setsockopt(fd_, SOL_SOCKET, SO_REUSEPORT, &yes, sizeof yes) != 0 ||
      ::bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      ::getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    Release();
    return;
  }
  port_ = ntohs(address.sin_port);
}

HeldLoopbackPort::~HeldLoopbackPort() {
  Release();
}

void HeldLoopbackPort::Release() {
  if (fd_ >= 0) {
    ::close(fd_);
    fd_ = -1;
  }
}

}  // namespace qbpd
