#ifndef QBPD_TESTS_SUPPORT_FAKE_DESKTOP_SCREENSAVER_H_
#define QBPD_TESTS_SUPPORT_FAKE_DESKTOP_SCREENSAVER_H_

#include "platform/desktop_screensaver.h"

#include <string>
#include <vector>

namespace qbpd::testing {

// A session screen saver that changes nothing: it records what it was told
// and fails on purpose when asked to.
class FakeDesktopScreensaver : public DesktopScreensaver {
 public:
  int WriteDefaultScr(const std::string& scr_ini) override {
    saver_stores_.push_back(scr_ini);
    return fail_default_ ? 0 : 1;
  }
  bool SetIdleDelay(int seconds) override {
    delays_.push_back(seconds);
    return !fail_delay_;
  }

  // The stores it was told to play, and the idle delays, in order.
  const std::vector<std::string>& SaverStores() const { return saver_stores_; }
  const std::vector<int>& Delays() const { return delays_; }
  void FailDefault() { fail_default_ = true; }
  void FailDelay() { fail_delay_ = true; }

 private:
  std::vector<std::string> saver_stores_;
  std::vector<int> delays_;
  bool fail_default_ = false;
  bool fail_delay_ = false;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAKE_DESKTOP_SCREENSAVER_H_
