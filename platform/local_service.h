#ifndef QBPD_PLATFORM_LOCAL_SERVICE_H_
#define QBPD_PLATFORM_LOCAL_SERVICE_H_

#include "platform/http_transport.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace qbpd {

// The port of `address` (the IP or URL setting) when it names this machine
// (a loopback address, "localhost" or this host's name); nothing otherwise,
// or for an address that can't be read.
std::optional<int> LocalServicePort(const std::string& address);

// This user's port for the reference service on this machine: 8931 for user
// id 0 and one more for each id above, counted modulo 50000, so that the
// users of one machine don't meet on one port.
int UserServicePort();

// Who listens on a TCP port of this machine.
struct PortListener {
  enum class State {
    kNone,     // nothing listens
    kFound,    // `uid` owns the listening socket
    kUnknown,  // the socket tables can't be read; `error` says why
  };
  State state = State::kNone;
  // With several listeners (an IPv4 and an IPv6 one), one that isn't the
  // asking user's is told.
  unsigned uid = 0;
  std::string error;
};
using ListenerLookup = std::function<PortListener(int port)>;

// The kernel's answer (/proc/net/tcp and /proc/net/tcp6): a listener owned
// by another user than `me` wins over one of `me`.
PortListener FindPortListener(int port, unsigned me);

// What a use of the service may do when nothing runs at its address.
enum class ServiceNeed {
  kStart,    // a command of the user's: start this user's reference service
  kRunning,  // a check in the background: use the service only if it runs
};

// The online service as this user may use it. The reference service on this
// machine belongs to the user who started it: a program uses a service on
// this machine only when its listening socket is this user's (the kernel
// tells, nothing the service says), starts one only when a command first
// needs it, never a second copy for the same port, and the last of the
// user's programs that used a service one of them started stops it.
class ServiceConnection {
 public:
  // Lets events run while the start of the service is waited for; false
  // gives up the wait (a cancel).
  using Pump = std::function<bool()>;

  virtual ~ServiceConnection() = default;
  // Before an exchange with the service at `address`: "" when it may be
  // used now, otherwise a sentence saying why not. An address of another
  // machine is always "".
  virtual std::string Prepare(const std::string& address,
                              ServiceNeed need,
                              const Pump& pump) = 0;
};

struct LocalServiceOptions {
  // The qbpd-service program; "" never starts a service.
  std::string program;
  // The service's data folder (made with mode 0700; a new one gets the
  // demonstration account).
  std::string data_dir;
  // A private folder of this user for the lock, user and process files.
  std::string lock_folder;
  // This user; none is the process's real user.
  std::optional<unsigned> uid;
  // Who listens on a port; none is FindPortListener.
  ListenerLookup lookup;
  // How long a start may take before it counts as failed.
  int wait_ms = 5000;
  // Where a sentence for the user goes (each one once); none drops them.
  std::function<void(const std::string&)> tell;
};

// The real connection. Destroying it ends this program's use of the
// service; when no other program of the user uses it and one of them
// started it, it is stopped. A service the user started by hand is left.
std::unique_ptr<ServiceConnection> MakeLocalServiceConnection(
    LocalServiceOptions options);

// A transport whose every request first has `connection` (may be null)
// prepare the service at the request's address. A refusal is a request
// that found no connection (kNoConnection) with the reason as its text; a
// Cancel while the start is waited for ends it as kCancelled.
std::unique_ptr<HttpTransport> MakeServiceTransport(
    std::unique_ptr<HttpTransport> inner,
    ServiceConnection* connection,
    ServiceNeed need);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_LOCAL_SERVICE_H_
