#include "online/upload_ahead.h"

#include "platform/background_work.h"

#include <filesystem>
#include <sys/stat.h>
#include <utility>

namespace qbpd {

namespace fs = std::filesystem;

FileStamp FileStamp::Of(const std::string& path) {
  struct stat status {};
  if (path.empty() || ::stat(path.c_str(), &status) != 0) {
    return {};
  }
  return {static_cast<long long>(status.st_size),
          static_cast<long long>(status.st_mtim.tv_sec),
          static_cast<long long>(status.st_mtim.tv_nsec)};
}

UploadAhead::UploadAhead(ImageOperations& images,
                         int thumbnail_size,
                         int thumbnail_quality)
    : images_(images),
      thumbnail_size_(thumbnail_size),
      thumbnail_quality_(thumbnail_quality) {}

UploadAhead::~UploadAhead() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
    queue_.clear();
  }
  asked_.notify_all();
  for (std::thread& worker : workers_) {
    worker.join();
  }
  for (const auto& [n, made] : done_) {
    Remove(made);
  }
}

void UploadAhead::Ask(int n, Order order) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    queue_.emplace_back(n, std::move(order));
    while (workers_.size() < kWorkers) {
      workers_.emplace_back([this] { Work(); });
    }
  }
  asked_.notify_all();
}

bool UploadAhead::Asked(int n) const {
  std::lock_guard<std::mutex> lock(mutex_);
  if (done_.count(n) > 0) {
    return true;
  }
  for (const Running& running : running_) {
    if (running.n == n && running.generation == generation_) {
      return true;
    }
  }
  for (const auto& [queued, order] : queue_) {
    if (queued == n) {
      return true;
    }
  }
  return false;
}

bool UploadAhead::HoldsCopy(const std::string& copy) const {
  std::lock_guard<std::mutex> lock(mutex_);
  // Work dropped meanwhile counts too: it removes its copy when it ends.
  for (const Running& running : running_) {
    if (running.order.copy == copy) {
      return true;
    }
  }
  for (const auto& [n, made] : done_) {
    if (made.order.copy == copy) {
      return true;
    }
  }
  for (const auto& [n, order] : queue_) {
    if (order.copy == copy) {
      return true;
    }
  }
  return false;
}

std::optional<UploadAhead::Made> UploadAhead::Take(int n, const Wait& wait) {
  if (!Asked(n)) {
    return std::nullopt;
  }
  unsigned generation = 0;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    generation = generation_;
  }
  wait([this, n, generation] {
    std::lock_guard<std::mutex> lock(mutex_);
    return done_.count(n) > 0 || generation_ != generation;
  });
  std::lock_guard<std::mutex> lock(mutex_);
  auto it = done_.find(n);
  if (it == done_.end()) {
    return std::nullopt;
  }
  Made made = std::move(it->second);
  done_.erase(it);
  return made;
}

void UploadAhead::Drop() {
  std::map<int, Made> dropped;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    ++generation_;
    queue_.clear();
    dropped.swap(done_);
  }
  for (const auto& [n, made] : dropped) {
    Remove(made);
  }
}

void UploadAhead::Remove(const Made& made) {
  std::error_code error;
  if (!made.order.copy.empty()) {
    fs::remove(made.order.copy, error);
  }
  if (!made.order.thumbnail.empty()) {
    fs::remove(made.order.thumbnail, error);
  }
}

bool UploadAhead::Clashes(const Order& order) const {
  const auto same = [](const std::string& a, const std::string& b) {
    return !a.empty() && a == b;
  };
  for (const Running& running : running_) {
    if (same(order.copy, running.order.copy) ||
        same(order.thumbnail, running.order.thumbnail)) {
      return true;
    }
  }
  return false;
}

void UploadAhead::Work() {
  // The photo in transfer and the window come first.
  (void)RunAsBackgroundWork();
  std::unique_lock<std::mutex> lock(mutex_);
  while (true) {
    asked_.wait(lock, [this] {
      return stop_ || (!queue_.empty() && !Clashes(queue_.front().second));
    });
    if (stop_) {
      return;
    }
    auto [n, order] = std::move(queue_.front());
    queue_.pop_front();
    const unsigned generation = generation_;
    const auto running =
        running_.insert(running_.end(), Running{n, generation, order});
    lock.unlock();
    Made made = Make(order);
    lock.lock();
    running_.erase(running);
    if (stop_ || generation != generation_) {
      // Dropped meanwhile: its files go before work that writes the same
      // names may start, so they can't take the place of a later copy.
      Remove(made);
    } else {
      done_.emplace(n, std::move(made));
    }
    asked_.notify_all();
  }
}

UploadAhead::Made UploadAhead::Make(const Order& order) {
  Made made;
  made.order = order;
  made.photo_stamp = FileStamp::Of(order.photo);
  if (!order.copy.empty()) {
    std::error_code error;
    fs::remove(order.copy, error);
    made.copy_made = images_.SaveImageAsJPEG(order.photo, order.copy) == 1;
  }
  const std::string& file = made.file();
  std::lock_guard<std::mutex> one_at_a_time(thumbnail_mutex_);
  if (order.thumbnail.empty()) {
    std::string buffer;
    made.thumbnail_made =
        images_.GenerateThumbnailAndBuffer(file, buffer, thumbnail_size_,
                                           thumbnail_quality_) != 0;
  } else {
    made.thumbnail_made =
        images_.GenerateThumbnailExt(file, order.thumbnail, thumbnail_size_,
                                     thumbnail_quality_) == 1;
  }
  return made;
}

}  // namespace qbpd
