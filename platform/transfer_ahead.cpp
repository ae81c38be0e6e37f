#include "platform/transfer_ahead.h"

#include <utility>

namespace qbpd {

TransferAhead::TransferAhead(
    std::vector<std::unique_ptr<FileTransfer>> transfers)
    : transfers_(std::move(transfers)) {
  for (auto& transfer : transfers_) {
    threads_.emplace_back([this, t = transfer.get()] { Work(*t); });
  }
}

TransferAhead::~TransferAhead() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
    queue_.clear();
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) {
    thread.join();
  }
}

void TransferAhead::Add(Job job, std::size_t count) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    queue_.push_back({results_.size(), count, std::move(job)});
    results_.resize(results_.size() + count);
  }
  changed_.notify_all();
}

bool TransferAhead::NextReady() {
  std::lock_guard<std::mutex> lock(mutex_);
  return next_ >= results_.size() || results_[next_].has_value();
}

std::optional<TransferResult> TransferAhead::TakeNext() {
  std::unique_lock<std::mutex> lock(mutex_);
  if (next_ >= results_.size()) {
    return std::nullopt;
  }
  changed_.wait(lock, [this] { return results_[next_].has_value(); });
  return std::move(results_[next_++]);
}

void TransferAhead::Work(FileTransfer& transfer) {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
    if (stopping_) {
      return;
    }
    Queued queued = std::move(queue_.front());
    queue_.pop_front();
    lock.unlock();
    std::vector<TransferResult> results = queued.job(transfer);
    lock.lock();
    for (std::size_t i = 0; i < queued.count; ++i) {
      if (i < results.size()) {
        results_[queued.first + i] = std::move(results[i]);
      } else {
        TransferResult missing;
        missing.status = TransferStatus::kTargetFailed;
        missing.error = "The transfer gave no result.";
        results_[queued.first + i] = std::move(missing);
      }
    }
    changed_.notify_all();
  }
}

}  // namespace qbpd
