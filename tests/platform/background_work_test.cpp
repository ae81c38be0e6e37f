// Background work: the thread that asks steps back, and only that thread.
#include "platform/background_work.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <sched.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace qbpd {
namespace {

struct Standing {
  int policy = -1;
  int nice = 0;
};

Standing ThisThread() {
  Standing standing;
  standing.policy = sched_getscheduler(0);
  errno = 0;
  standing.nice = getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
  return standing;
}

TEST(BackgroundWorkTest, TheCallingThreadAloneStepsBack) {
  const Standing before = ThisThread();
  Standing worker_before, worker_after;
  bool marked = false;
  std::thread worker([&] {
    worker_before = ThisThread();
    marked = RunAsBackgroundWork();
    worker_after = ThisThread();
  });
  worker.join();
  ASSERT_TRUE(marked);
  EXPECT_EQ(worker_after.policy, SCHED_BATCH);
  EXPECT_EQ(worker_after.nice,
            std::min(19, worker_before.nice + kBackgroundNice));
  // The thread that started it runs as it did.
  const Standing after = ThisThread();
  EXPECT_EQ(after.policy, before.policy);
  EXPECT_EQ(after.nice, before.nice);
}

}  // namespace
}  // namespace qbpd
