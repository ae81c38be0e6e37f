#ifndef QBPD_TESTS_SUPPORT_FAKE_MAIL_DELIVERY_H_
#define QBPD_TESTS_SUPPORT_FAKE_MAIL_DELIVERY_H_

#include "service/mail_delivery.h"

#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace qbpd::testing {

// The service's mail in memory: every message delivered is kept with its
// recipient; recipients named in `refused` are refused as a mail system
// refuses an unknown mailbox, and with `fail_after` set every delivery
// from that many on fails as an unreachable relay does.
class FakeMailDelivery : public service::MailDelivery {
 public:
  struct Sent {
    std::string sender;
    std::string recipient;
    std::string message;
  };

  service::Delivery Deliver(const std::string& sender,
                            const std::string& recipient,
                            const std::string& message,
                            std::string& error) override {
    std::lock_guard lock(mutex_);
    ++attempts_;
    if (fail_after >= 0 && attempts_ > fail_after) {
      error = "the relay is down";
      return service::Delivery::kFailed;
    }
    if (refused.contains(recipient)) {
      error = "no such mailbox";
      return service::Delivery::kRefused;
    }
    sent_.push_back({sender, recipient, message});
    return service::Delivery::kDelivered;
  }

  std::vector<Sent> sent() const {
    std::lock_guard lock(mutex_);
    return sent_;
  }
  int attempts() const {
    std::lock_guard lock(mutex_);
    return attempts_;
  }

  std::set<std::string> refused;
  // Deliveries that succeed before every later one fails; -1: none fails.
  int fail_after = -1;

 private:
  mutable std::mutex mutex_;
  std::vector<Sent> sent_;
  int attempts_ = 0;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAKE_MAIL_DELIVERY_H_
