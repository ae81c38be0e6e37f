#ifndef QBPD_PLATFORM_LOOPBACK_PORT_H_
#define QBPD_PLATFORM_LOOPBACK_PORT_H_

namespace qbpd {

// A free loopback TCP port, held until this object ends. The socket stays
// bound without listening, with SO_REUSEPORT and without SO_REUSEADDR: the
// kernel gives the number to no other socket that asks for any free port,
// while a server of the same user that binds it with SO_REUSEPORT (as
// qbpd-service does) can still take it. Choosing a number and closing the
// socket at once leaves a window in which a program started meanwhile is
// given the same number.
class HeldLoopbackPort {
 public:
  HeldLoopbackPort();
  ~HeldLoopbackPort();
  HeldLoopbackPort(const HeldLoopbackPort&) = delete;
  HeldLoopbackPort& operator=(const HeldLoopbackPort&) = delete;

  // 0 when no port could be had.
  int port() const { return port_; }
  // Gives the number up, so that a socket without SO_REUSEPORT may bind it.
  void Release();

 private:
  int fd_ = -1;
  int port_ = 0;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_LOOPBACK_PORT_H_
