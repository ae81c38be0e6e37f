#include "platform/background_work.h"

#include <algorithm>
#include <cerrno>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace qbpd {

bool RunAsBackgroundWork() {
  sched_param param{};
  param.sched_priority = 0;
  const bool batch =
      pthread_setschedparam(pthread_self(), SCHED_BATCH, &param) == 0;
  // On Linux a thread's own id names the thread alone here.
  const auto me = static_cast<id_t>(gettid());
  errno = 0;
  const int now = getpriority(PRIO_PROCESS, me);
  if (errno != 0) {
    return false;
  }
  const bool lower =
      setpriority(PRIO_PROCESS, me, std::min(19, now + kBackgroundNice)) == 0;
  return batch && lower;
}

}  // namespace qbpd
