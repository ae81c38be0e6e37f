#ifndef QBPD_PLATFORM_TURN_AHEAD_H_
#define QBPD_PLATFORM_TURN_AHEAD_H_

// For the platform's implementations only: the turns a batch of rotations
// starts ahead, on one worker thread of their own.
#include "platform/photo_writer.h"

#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace qbpd {

// Prepares turned photos ahead of their turn (PrepareTurnedPhoto; nothing
// is written). One long-lived thread does the work, so that the memory of
// one photo's turn serves the next (a thread started for each photo would
// be given fresh memory, and pay its page faults, every time).
class TurnAhead {
 public:
  // How many turns may wait or run ahead of the one being written.
  static constexpr std::size_t kMostAhead = 2;

  TurnAhead() = default;
  // Waits for the turn in hand, if any; those not started are dropped.
  ~TurnAhead();
  TurnAhead(const TurnAhead&) = delete;
  TurnAhead& operator=(const TurnAhead&) = delete;

  // Starts preparing a turn of `source` by `degrees`; ignored when
  // kMostAhead turns are already ahead.
  void Start(const std::string& source, int degrees);
  // The turn started for `source` and `degrees`, waited for; turns started
  // before it that were not taken are dropped. Nothing when none was
  // started, or it failed.
  std::optional<PreparedPhoto> Take(const std::string& source, int degrees);

 private:
  struct Job {
    std::string source;
    int degrees = 0;
    std::promise<std::optional<PreparedPhoto>> promise;
  };
  struct Started {
    std::string source;
    int degrees = 0;
    std::future<std::optional<PreparedPhoto>> result;
  };
  void Work();

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Job> jobs_;
  bool stopping_ = false;
  std::deque<Started> started_;  // used by the caller's thread alone
  std::thread worker_;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_TURN_AHEAD_H_
