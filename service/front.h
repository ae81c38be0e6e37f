#ifndef QBPD_SERVICE_FRONT_H_
#define QBPD_SERVICE_FRONT_H_

#include <cstddef>
#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace qbpd::service {

// What the front (nginx, in front of the service as it runs facing a
// network) is told.
struct FrontOptions {
  std::string program = "nginx";
  // Where the front listens for clients.
  std::string listen = "127.0.0.1";
  int port = 0;
  // The service's own loopback port, which only the front should use.
  int upstream_port = 0;
  // Its configuration, pid file and buffered request bodies.
  std::filesystem::path folder;
  std::size_t max_body_bytes = 0;
  // Connections one client address may hold open at once.
  int connections_per_address = 32;
  int header_seconds = 10;
  int body_read_seconds = 10;
  int idle_seconds = 15;
  // Addresses or networks ("10.0.0.5", "10.0.0.0/24") of load balancers in
  // front of this front: from these peers the client's address is taken
  // from X-Forwarded-For, as the balancer names it, so that the
  // per-address limits and failed-login counts see the client, not the
  // balancer. Others name no client.
  std::vector<std::string> trusted_proxies;
};

// Whether `text` is an IPv4 or IPv6 address or network that nginx takes
// as one, and nothing else.
bool IsProxyAddress(const std::string& text);

// The nginx configuration for `options`: an event-driven front that reads a
// whole request head within `header_seconds` and a body with no pause longer
// than `body_read_seconds` (buffering it whole before the service sees it),
// drops idle connections after `idle_seconds`, caps connections per client
// address, and tells the service the client's address in X-Real-IP.
std::string FrontConfiguration(const FrontOptions& options);

// nginx started in the foreground with that configuration. The destructor
// stops it (SIGQUIT lets it finish answers under way, then SIGKILL after a
// bound).
class Front {
 public:
  // Writes the configuration and starts the program; throws
  // std::runtime_error with the reason when it cannot, or when nothing
  // listens on the port within a few seconds.
  explicit Front(FrontOptions options);
  Front(const Front&) = delete;
  Front& operator=(const Front&) = delete;
  ~Front();

  pid_t pid() const { return pid_; }
  // Whether the front is still running (reaps it when it ended).
  bool Running();

 private:
  FrontOptions options_;
  pid_t pid_ = -1;
};

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_FRONT_H_
