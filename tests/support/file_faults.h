#ifndef QBPD_TESTS_SUPPORT_FILE_FAULTS_H_
#define QBPD_TESTS_SUPPORT_FILE_FAULTS_H_

#include <csignal>
#include <sys/resource.h>

namespace qbpd::testing {

// A full disk for this process while it lives: any write that would make a
// file larger than `bytes` fails (EFBIG, the signal ignored), as the real
// writers meet it, without a special file system. Pipes and terminals are
// not files and go on working.
class ScopedFileSizeLimit {
 public:
  explicit ScopedFileSizeLimit(rlim_t bytes);
  ~ScopedFileSizeLimit();
  ScopedFileSizeLimit(const ScopedFileSizeLimit&) = delete;
  ScopedFileSizeLimit& operator=(const ScopedFileSizeLimit&) = delete;

 private:
  rlimit saved_{};
  struct sigaction saved_action_ {};
};

// True when the process may write to read-only folders anyway (root), so a
// test of a read-only folder can't fail the write and is skipped.
bool WritesIgnorePermissions();

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FILE_FAULTS_H_
