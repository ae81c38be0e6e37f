#include "service/login_throttle.h"

#include <algorithm>
#include <vector>

namespace qbpd::service {

LoginThrottle::LoginThrottle(ThrottlePolicy policy, std::size_t capacity)
    : policy_(policy), capacity_(std::max<std::size_t>(capacity, 1)) {}

std::int64_t ThrottleWait(const ThrottlePolicy& policy,
                          int failures,
                          std::int64_t last,
                          std::int64_t now) {
  if (now - last >= policy.forget_seconds) {
    return 0;
  }
  std::int64_t pause = 0;
  if (failures >= policy.lock_after) {
    pause = policy.lock_seconds;
  } else if (failures >= policy.free_failures) {
    const int doublings = std::min(failures - policy.free_failures, 30);
    pause = std::min<std::int64_t>(std::int64_t{1} << doublings,
                                   policy.max_delay_seconds);
  }
  return std::max<std::int64_t>(0, last + pause - now);
}

std::int64_t LoginThrottle::WaitFor(const std::string& key,
                                    std::int64_t now) const {
  const auto found = records_.find(key);
  if (found == records_.end()) {
    return 0;
  }
  return ThrottleWait(policy_, found->second.failures, found->second.last, now);
}

void LoginThrottle::Failed(const std::string& key, std::int64_t now) {
  auto found = records_.find(key);
  if (found == records_.end()) {
    MakeRoom(now);
    found = records_.emplace(key, Record{}).first;
  } else if (now - found->second.last >= policy_.forget_seconds) {
    found->second.failures = 0;
  }
  found->second.failures =
      std::min(found->second.failures + 1, policy_.lock_after);
  found->second.last = now;
}

void LoginThrottle::Succeeded(const std::string& key) {
  records_.erase(key);
}

void LoginThrottle::MakeRoom(std::int64_t now) {
  if (records_.size() < capacity_) {
    return;
  }
  std::erase_if(records_, [&](const auto& entry) {
    return now - entry.second.last >= policy_.forget_seconds;
  });
  if (records_.size() < capacity_) {
    return;
  }
  // Still full of live keys: the stalest half goes.
  std::vector<std::int64_t> lasts;
  lasts.reserve(records_.size());
  for (const auto& entry : records_) {
    lasts.push_back(entry.second.last);
  }
  auto middle = lasts.begin() + static_cast<std::ptrdiff_t>(lasts.size() / 2);
  std::nth_element(lasts.begin(), middle, lasts.end());
  const std::int64_t cut = *middle;
  std::erase_if(records_,
                [&](const auto& entry) { return entry.second.last < cut; });
  if (records_.size() >= capacity_) {
    records_.erase(records_.begin());
  }
}

}  // namespace qbpd::service
