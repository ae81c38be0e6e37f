#ifndef QBPD_SERVICE_LOGIN_THROTTLE_H_
#define QBPD_SERVICE_LOGIN_THROTTLE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

namespace qbpd::service {

// How many failed logins a key (an account, a client address) may have
// before it slows down and then locks.
struct ThrottlePolicy {
  // Failures that cost nothing.
  int free_failures = 3;
  // From this many failures on, the key is locked for `lock_seconds` after
  // its last failure.
  int lock_after = 10;
  // Between the two, a try must wait 1, 2, 4, ... seconds (at most
  // `max_delay_seconds`) after the last failure.
  std::int64_t max_delay_seconds = 60;
  std::int64_t lock_seconds = 15 * 60;
  // A key's failures are forgotten this long after its last one.
  std::int64_t forget_seconds = 15 * 60;
};

// Failed logins per key, on the service's clock (seconds). Not thread-safe:
// the service calls it under its lock. It keeps at most `capacity` keys and
// forgets the stalest first, so a flood of made-up keys costs bounded
// memory.
class LoginThrottle {
 public:
  explicit LoginThrottle(ThrottlePolicy policy, std::size_t capacity = 100000);

  // Seconds until `key` may try again; 0 when it may try now.
  std::int64_t WaitFor(const std::string& key, std::int64_t now) const;
  void Failed(const std::string& key, std::int64_t now);
  void Succeeded(const std::string& key);

  std::size_t size() const { return records_.size(); }

 private:
  struct Record {
    int failures = 0;
    std::int64_t last = 0;
  };
  void MakeRoom(std::int64_t now);

  ThrottlePolicy policy_;
  std::size_t capacity_;
  std::unordered_map<std::string, Record> records_;
};

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_LOGIN_THROTTLE_H_
