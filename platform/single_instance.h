#ifndef QBPD_PLATFORM_SINGLE_INSTANCE_H_
#define QBPD_PLATFORM_SINGLE_INSTANCE_H_

#include <memory>
#include <optional>
#include <string>

namespace qbpd {

// What the desktop gave a start so that the window it opens may come to the
// front: the X11 startup-notification id (DESKTOP_STARTUP_ID) and the
// Wayland xdg-activation token (XDG_ACTIVATION_TOKEN). Either may be empty.
// A second start hands them on to the running instance, whose window comes
// forward in its place.
struct ActivationToken {
  std::string startup_id;
  std::string xdg_activation;

  bool operator==(const ActivationToken&) const = default;
};

// The token of this start, as the desktop put it in the environment. The
// environment is left as it is (the toolkit reads it too). A value that is
// not a token (too long, or with blanks or control characters) is dropped.
ActivationToken ActivationTokenFromEnvironment();

// Whether `text` can be a token: 1 to 512 printable ASCII characters, no
// blank.
bool IsTokenText(const std::string& text);

// One running instance of the program per user. The first start holds a lock
// and listens on a local socket; a second start finds the lock taken, hands
// its photo over through the exchange file, and asks the first to come
// forward over the socket, passing on its activation token. The lock dies
// with its process, so the lock of a crashed instance never blocks a new
// start.
class SingleInstance {
 public:
  virtual ~SingleInstance() = default;

  // Tries to become the running instance. True when this process is the
  // first (it then listens for requests); false when another holds the lock.
  // A lock that can't be made at all counts as "first": a start is never
  // refused for want of a lock file.
  virtual bool Claim() = 0;
  // From a second start: asks the running instance to come forward, with
  // this start's activation token. False when no instance answers.
  virtual bool AskFirstToComeForward() = 0;
  // In the running instance: the activation token of a second start that
  // asked it to come forward since the last call (the latest one when
  // several did), or nothing. Never blocks for long: a request that doesn't
  // arrive whole within a fraction of a second is dropped.
  virtual std::optional<ActivationToken> TakeComeForwardRequest() = 0;
  // The listening socket, for a host that watches it; -1 when none.
  virtual int ListenHandle() const = 0;
};

// The lock file and socket live in `folder` (made with mode 0700 when
// missing); `token` is what a second start passes on.
std::unique_ptr<SingleInstance> MakeSingleInstance(std::string folder,
                                                   ActivationToken token = {});

}  // namespace qbpd

#endif  // QBPD_PLATFORM_SINGLE_INSTANCE_H_
