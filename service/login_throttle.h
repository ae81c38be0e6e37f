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

// Seconds until a key whose `failures` failed logins came last at `last`
// may try again at `now`; 0 when it may try now.
std::int64_t ThrottleWait(const ThrottlePolicy& policy,
                          int failures,
                          std::int64_t last,
                          std::int64_t now);

// The failed logins of a key, on the service's clock (seconds). Not
// thread-safe: the service calls it under its lock.
class FailedLogins {
 public:
  virtual ~FailedLogins() = default;
  // Seconds until `key` may try again; 0 when it may try now.
  virtual std::int64_t WaitFor(const std::string& key,
                               std::int64_t now) const = 0;
  virtual void Failed(const std::string& key, std::int64_t now) = 0;
  virtual void Succeeded(const std::string& key) = 0;
};

// Failed logins in this process's memory, for a service that is the only
// one on its store. It keeps at most `capacity` keys and forgets the
// stalest first, so a flood of made-up keys costs bounded memory.
class LoginThrottle : public FailedLogins {
 public:
  explicit LoginThrottle(ThrottlePolicy policy, std::size_t capacity = 100000);

  std::int64_t WaitFor(const std::string& key, std::int64_t now) const override;
  void Failed(const std::string& key, std::int64_t now) override;
  void Succeeded(const std::string& key) override;

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
