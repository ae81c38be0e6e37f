#include "tests/support/file_faults.h"

#include <unistd.h>

namespace qbpd::testing {

ScopedFileSizeLimit::ScopedFileSizeLimit(rlim_t bytes) {
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGXFSZ, &ignore, &saved_action_);
  getrlimit(RLIMIT_FSIZE, &saved_);
  rlimit limit = saved_;
  limit.rlim_cur = bytes;
  setrlimit(RLIMIT_FSIZE, &limit);
}

ScopedFileSizeLimit::~ScopedFileSizeLimit() {
  setrlimit(RLIMIT_FSIZE, &saved_);
  sigaction(SIGXFSZ, &saved_action_, nullptr);
}

bool WritesIgnorePermissions() {
  return ::geteuid() == 0;
}

}  // namespace qbpd::testing
