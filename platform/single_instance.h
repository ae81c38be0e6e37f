#ifndef QBPD_PLATFORM_SINGLE_INSTANCE_H_
#define QBPD_PLATFORM_SINGLE_INSTANCE_H_

#include <memory>
#include <string>

namespace qbpd {

// One running instance of the program per user. The first start holds a lock
// and listens on a local socket; a second start finds the lock taken, hands
// its photo over through the exchange file, and asks the first to come
// forward over the socket. The lock dies with its process, so the lock of a
// crashed instance never blocks a new start.
class SingleInstance {
 public:
  virtual ~SingleInstance() = default;

  // Tries to become the running instance. True when this process is the
  // first (it then listens for requests); false when another holds the lock.
  // A lock that can't be made at all counts as "first": a start is never
  // refused for want of a lock file.
  virtual bool Claim() = 0;
  // From a second start: asks the running instance to come forward. False
  // when no instance answers.
  virtual bool AskFirstToComeForward() = 0;
  // In the running instance: whether a second start asked it to come forward
  // since the last call. Never blocks.
  virtual bool TakeComeForwardRequest() = 0;
  // The listening socket, for a host that watches it; -1 when none.
  virtual int ListenHandle() const = 0;
};

// The lock file and socket live in `folder` (made with mode 0700 when
// missing).
std::unique_ptr<SingleInstance> MakeSingleInstance(std::string folder);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_SINGLE_INSTANCE_H_
