#ifndef QBPD_PLATFORM_BACKGROUND_WORK_H_
#define QBPD_PLATFORM_BACKGROUND_WORK_H_

namespace qbpd {

// How much the calling thread steps back when it becomes background work.
inline constexpr int kBackgroundNice = 5;

// Marks the calling thread as background work made ahead for the window's
// thread: the system's batch scheduling (waking, it doesn't take the core
// from the thread that woke it) at a lower priority (its nice value
// kBackgroundNice higher, at most 19), so that the window's steps and a
// transfer in hand run first and the work takes what is left of the cores. A
// hint: when the system refuses, the thread runs as it did. False then.
bool RunAsBackgroundWork();

}  // namespace qbpd

#endif  // QBPD_PLATFORM_BACKGROUND_WORK_H_
