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
  // Transfers of one or more files, run with the thread's own FileTransfer;
  // one result for each file, in order.
  using Job = std::function<std::vector<TransferResult>(FileTransfer&)>;

  // `transfers` gives each thread its transfer (one per thread).
  explicit TransferAhead(std::vector<std::unique_ptr<FileTransfer>> transfers);
  // Waits for the running jobs; the queued ones are dropped.
  ~TransferAhead();
  TransferAhead(const TransferAhead&) = delete;
  TransferAhead& operator=(const TransferAhead&) = delete;

  // Adds a job of `count` files (`count` results).
  void Add(Job job, std::size_t count = 1);
  // Whether the next result in order is there (or nothing is left to wait
  // for).
  bool NextReady();
  // The next file's result in order, waiting for it; none when every added
  // job's results were taken.
  std::optional<TransferResult> TakeNext();

 private:
  void Work(FileTransfer& transfer);

  std::vector<std::unique_ptr<FileTransfer>> transfers_;
  std::mutex mutex_;
  std::condition_variable changed_;
  // Each job with the index of its first result and its count.
  struct Queued {
    std::size_t first;
    std::size_t count;
    Job job;
  };
  std::deque<Queued> queue_;
  std::vector<std::optional<TransferResult>> results_;
  std::size_t next_ = 0;
  bool stopping_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_TRANSFER_AHEAD_H_
