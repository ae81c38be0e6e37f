#include "tests/support/fake_launcher.h"

namespace qbpd::testing {

LaunchResult FakeLauncher::OpenDocument(const std::string& target) {
  record_->opened.push_back(target);
  if (!record_->failure.empty()) {
    return {false, record_->failure, -1};
  }
  return {true, "", -1};
}

}  // namespace qbpd::testing
