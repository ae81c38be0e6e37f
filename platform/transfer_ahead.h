#ifndef QBPD_PLATFORM_TRANSFER_AHEAD_H_
#define QBPD_PLATFORM_TRANSFER_AHEAD_H_

#include "platform/file_transfer.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace qbpd {

// Runs a list of transfers on threads of their own, several at a time, so
// that one file's flush and read-back overlap the next one's copy. Each
// thread has its own transfer; the results come back in the list's order.
// Only the transfers run on the threads: whoever adds the jobs takes the
// results on its own thread and decides what follows (a source deleted, a
// progress bar moved).
class TransferAhead {
 public:
  // One transfer, run with the thread's own FileTransfer.
  using Job = std::function<TransferResult(FileTransfer&)>;

  // `transfers` gives each thread its transfer (one per thread).
  explicit TransferAhead(std::vector<std::unique_ptr<FileTransfer>> transfers);
  // Waits for the running jobs; the queued ones are dropped.
  ~TransferAhead();
  TransferAhead(const TransferAhead&) = delete;
  TransferAhead& operator=(const TransferAhead&) = delete;

  void Add(Job job);
  // Whether the next result in order is there (or nothing is left to wait
  // for).
  bool NextReady();
  // The next result in order, waiting for it; none when every added job's
  // result was taken.
  std::optional<TransferResult> TakeNext();

 private:
  void Work(FileTransfer& transfer);

  std::vector<std::unique_ptr<FileTransfer>> transfers_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::pair<std::size_t, Job>> queue_;
  std::vector<std::optional<TransferResult>> results_;
  std::size_t next_ = 0;
  bool stopping_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_TRANSFER_AHEAD_H_
