#ifndef QBPD_SERVICE_STORE_THROTTLE_H_
#define QBPD_SERVICE_STORE_THROTTLE_H_

#include "service/login_throttle.h"

#include <memory>
#include <string>

namespace qbpd::service {

class Db;

// Failed logins counted in the store's table "login_failures" under `kind`
// ("account", "address"), so that every instance on a shared store counts
// the same failures: a guesser who spreads tries over the instances behind
// a load balancer gets no more of them. Rows whose failures are forgotten
// are deleted as new failures come, so the table holds only the keys of
// the last `forget_seconds`. Throws DbError.
class StoreLoginThrottle : public FailedLogins {
 public:
  StoreLoginThrottle(Db& db, std::string kind, ThrottlePolicy policy);

  std::int64_t WaitFor(const std::string& key, std::int64_t now) const override;
  void Failed(const std::string& key, std::int64_t now) override;
  void Succeeded(const std::string& key) override;

 private:
  Db& db_;
  std::string kind_;
  ThrottlePolicy policy_;
};

// The counts for a service on `db`: in the store when other instances may
// share it, in memory otherwise.
std::unique_ptr<FailedLogins> MakeFailedLogins(Db& db,
                                               const std::string& kind,
                                               ThrottlePolicy policy);

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_STORE_THROTTLE_H_
