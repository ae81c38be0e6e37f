#include "platform/turn_ahead.h"

#include <utility>

namespace qbpd {

TurnAhead::~TurnAhead() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
    jobs_.clear();  // their promises break; nobody waits on them any more
  }
  wake_.notify_all();
  if (worker_.joinable()) {
    worker_.join();
  }
}

void TurnAhead::Start(const std::string& source, int degrees) {
  if (started_.size() >= kMostAhead) {
    return;
  }
  Job job;
  job.source = source;
  job.degrees = degrees;
  Started started;
  started.source = source;
  started.degrees = degrees;
  started.result = job.promise.get_future();
  {
    std::lock_guard<std::mutex> lock(mutex_);
    jobs_.push_back(std::move(job));
    if (!worker_.joinable()) {
      worker_ = std::thread([this] { Work(); });
    }
  }
  wake_.notify_one();
  started_.push_back(std::move(started));
}

std::optional<PreparedPhoto> TurnAhead::Take(const std::string& source,
                                             int degrees) {
  for (auto it = started_.begin(); it != started_.end(); ++it) {
    if (it->source != source || it->degrees != degrees) {
      continue;
    }
    std::optional<PreparedPhoto> result;
    try {
      result = it->result.get();
    } catch (const std::future_error&) {
    }
    // Earlier turns that were not taken are thrown away (the worker does
    // them in order, so they are done by now).
    started_.erase(started_.begin(), it + 1);
    return result;
  }
  return std::nullopt;
}

void TurnAhead::Work() {
  for (;;) {
    Job job;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      wake_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
      if (stopping_) {
        return;
      }
      job = std::move(jobs_.front());
      jobs_.pop_front();
    }
    try {
      job.promise.set_value(PrepareTurnedPhoto(job.source, job.degrees));
    } catch (...) {
      job.promise.set_value(std::nullopt);
    }
  }
}

}  // namespace qbpd
