#ifndef QBPD_TESTS_SUPPORT_FAKE_SESSION_AUTOSTART_H_
#define QBPD_TESTS_SUPPORT_FAKE_SESSION_AUTOSTART_H_

#include "platform/session_autostart.h"

#include <string>
#include <vector>

namespace qbpd::testing {

// The session's autostart in memory: records what it was told and fails on
// purpose when asked to.
class FakeSessionAutostart : public SessionAutostart {
 public:
  bool DeviceMonitorStarts() override { return starts_; }
  std::string SetDeviceMonitorStarts(bool on) override {
    calls_.push_back(on);
    if (fail_) {
      return "the autostart entry can't be written";
    }
    starts_ = on;
    return "";
  }

  const std::vector<bool>& Calls() const { return calls_; }
  void Fail() { fail_ = true; }

 private:
  bool starts_ = true;
  std::vector<bool> calls_;
  bool fail_ = false;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAKE_SESSION_AUTOSTART_H_
