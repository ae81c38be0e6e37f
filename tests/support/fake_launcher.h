#ifndef QBPD_TESTS_SUPPORT_FAKE_LAUNCHER_H_
#define QBPD_TESTS_SUPPORT_FAKE_LAUNCHER_H_

#include "platform/launcher.h"

#include <memory>
#include <string>
#include <vector>

namespace qbpd::testing {

// A launcher that opens nothing, keeps every target asked for, and fails on
// purpose when told to, so that the program's failure messages are seen.
// Its record outlives it, for tests that hand the launcher to a run.
class FakeLauncher final : public Launcher {
 public:
  struct Record {
    std::vector<std::string> opened;
    // Non-empty: every call fails with this text.
    std::string failure;
  };

  FakeLauncher() : record_(std::make_shared<Record>()) {}
  explicit FakeLauncher(std::shared_ptr<Record> record)
      : record_(std::move(record)) {}

  [[nodiscard]] LaunchResult OpenDocument(const std::string& target) override;

  const std::shared_ptr<Record>& record() const { return record_; }

 private:
  std::shared_ptr<Record> record_;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAKE_LAUNCHER_H_
