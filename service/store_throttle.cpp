#include "service/store_throttle.h"

#include "service/db.h"

namespace qbpd::service {

StoreLoginThrottle::StoreLoginThrottle(Db& db,
                                       std::string kind,
                                       ThrottlePolicy policy)
    : db_(db), kind_(std::move(kind)), policy_(policy) {}

std::int64_t StoreLoginThrottle::WaitFor(const std::string& key,
                                         std::int64_t now) const {
  auto find = db_.Prepare(
      "SELECT failures, last_failure FROM login_failures WHERE kind = ? AND "
      "key = ?");
  find.Bind(1, kind_).Bind(2, key);
  if (!find.Step()) {
    return 0;
  }
  return ThrottleWait(policy_, static_cast<int>(find.Int(0)), find.Int(1), now);
}

void StoreLoginThrottle::Failed(const std::string& key, std::int64_t now) {
  db_.Prepare("DELETE FROM login_failures WHERE kind = ? AND last_failure <= ?")
      .Bind(1, kind_)
      .Bind(2, now - policy_.forget_seconds)
      .Run();
  // One statement, so that failures on two instances at once both count.
  db_.Prepare(
         "INSERT INTO login_failures (kind, key, failures, last_failure) "
         "VALUES (?, ?, 1, ?) ON CONFLICT (kind, key) DO UPDATE SET "
         "failures = CASE "
         "WHEN excluded.last_failure - login_failures.last_failure >= ? "
         "THEN 1 "
         "WHEN login_failures.failures >= ? THEN login_failures.failures "
         "ELSE login_failures.failures + 1 END, "
         "last_failure = excluded.last_failure")
      .Bind(1, kind_)
      .Bind(2, key)
      .Bind(3, now)
      .Bind(4, policy_.forget_seconds)
      .BindInt(5, policy_.lock_after)
      .Run();
}

void StoreLoginThrottle::Succeeded(const std::string& key) {
  db_.Prepare("DELETE FROM login_failures WHERE kind = ? AND key = ?")
      .Bind(1, kind_)
      .Bind(2, key)
      .Run();
}

std::unique_ptr<FailedLogins> MakeFailedLogins(Db& db,
                                               const std::string& kind,
                                               ThrottlePolicy policy) {
  if (db.shared()) {
    return std::make_unique<StoreLoginThrottle>(db, kind, policy);
  }
  return std::make_unique<LoginThrottle>(policy);
}

}  // namespace qbpd::service
