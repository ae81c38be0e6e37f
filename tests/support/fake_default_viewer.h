#ifndef QBPD_TESTS_SUPPORT_FAKE_DEFAULT_VIEWER_H_
#define QBPD_TESTS_SUPPORT_FAKE_DEFAULT_VIEWER_H_

#include "platform/default_viewer.h"

#include <string>
#include <vector>

namespace qbpd::testing {

// A desktop default viewer in memory: it records every change it was asked
// for, keeps the handler before as the real one does, and fails on purpose
// when told.
class FakeDefaultViewer : public DefaultViewer {
 public:
  explicit FakeDefaultViewer(std::string handler = "") : handler_(handler) {}

  bool IsDefault() override { return handler_ == kProgram; }
  std::string SetDefault(bool on) override {
    calls_.push_back(on);
    if (fail_) {
      return "mimeapps.list can't be written";
    }
    if (on && handler_ != kProgram) {
      before_ = handler_;
      handler_ = kProgram;
    } else if (!on && handler_ == kProgram) {
      handler_ = before_;
    }
    return "";
  }

  static constexpr const char* kProgram = "quillbay-picture-desk.desktop";
  // The handler of image/jpeg now ("" for none).
  const std::string& Handler() const { return handler_; }
  // The changes asked for, in order.
  const std::vector<bool>& Calls() const { return calls_; }
  void Fail() { fail_ = true; }

 private:
  std::string handler_;
  std::string before_;
  std::vector<bool> calls_;
  bool fail_ = false;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAKE_DEFAULT_VIEWER_H_
