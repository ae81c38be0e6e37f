#include "platform/thumbnail_ahead.h"

#include "platform/background_work.h"

#include <algorithm>
#include <sys/stat.h>

namespace qbpd {

std::string PhotoFileState(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return "";
  }
  return std::to_string(status.st_size) + ' ' +
         std::to_string(status.st_mtim.tv_sec) + '.' +
         std::to_string(status.st_mtim.tv_nsec);
}

ThumbnailAhead::ThumbnailAhead(std::size_t depth,
                               bool every_other,
                               std::size_t max_bytes,
                               int workers,
                               bool background)
    : depth_(depth < 1 ? 1 : depth),
      every_other_(every_other),
      max_bytes_(max_bytes) {
  for (int i = 0; i < std::max(1, workers); ++i) {
    workers_.emplace_back([this, background] { Work(background); });
  }
}

ThumbnailAhead::~ThumbnailAhead() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  for (std::thread& worker : workers_) {
    worker.join();
  }
}

void ThumbnailAhead::Prepare(const std::vector<std::string>& sources,
                             const std::string& kind,
                             Maker maker) {
  {
    std::unique_lock lock(mutex_);
    const bool same_kind = kind == kind_;
    if (!same_kind) {
      // Photos being made for the earlier list are finished first, so that
      // their bytes, made for the other kind, are not kept.
      changed_.wait(lock, [this] { return busy_.empty(); });
    }
    kind_ = kind;
    maker_ = std::move(maker);
    queue_.clear();
    listed_.clear();
    const std::size_t step = every_other_ ? 2 : 1;
    for (std::size_t i = step - 1; i < sources.size(); i += step) {
      if (listed_.insert(sources[i]).second && made_.count(sources[i]) == 0 &&
          busy_.count(sources[i]) == 0) {
        queue_.push_back(sources[i]);
      }
    }
    for (auto it = made_.begin(); it != made_.end();) {
      if (same_kind && listed_.count(it->first) > 0) {
        ++it;
      } else {
        held_bytes_ -= it->second.bytes ? it->second.bytes->size() : 0;
        it = made_.erase(it);
      }
    }
  }
  changed_.notify_all();
}

std::optional<ThumbnailAhead::Bytes> ThumbnailAhead::Take(
    const std::string& source,
    const std::string& kind) {
  std::optional<Made> made;
  {
    std::unique_lock lock(mutex_);
    if (kind != kind_) {
      return std::nullopt;
    }
    std::erase(queue_, source);
    changed_.wait(lock, [&] { return busy_.count(source) == 0; });
    listed_.erase(source);
    const auto found = made_.find(source);
    if (found == made_.end()) {
      return std::nullopt;
    }
    made = std::move(found->second);
    made_.erase(found);
    held_bytes_ -= made->bytes ? made->bytes->size() : 0;
  }
  changed_.notify_all();  // room for one more
  if (!made->bytes || made->state != PhotoFileState(source)) {
    return std::nullopt;
  }
  return std::move(made->bytes);
}

void ThumbnailAhead::Forget() {
  {
    std::lock_guard lock(mutex_);
    queue_.clear();
    listed_.clear();
    made_.clear();
    held_bytes_ = 0;
  }
  changed_.notify_all();
}

std::size_t ThumbnailAhead::HeldBytes() {
  std::lock_guard lock(mutex_);
  return held_bytes_;
}

void ThumbnailAhead::Work(bool background) {
  if (background) {
    (void)RunAsBackgroundWork();
  }
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] {
      return stopping_ || (!queue_.empty() && made_.size() < depth_ &&
                           held_bytes_ < max_bytes_);
    });
    if (stopping_) {
      return;
    }
    const std::string source = queue_.front();
    queue_.pop_front();
    busy_.insert(source);
    const Maker maker = maker_;
    lock.unlock();
    Made made;
    made.state = PhotoFileState(source);
    if (!made.state.empty()) {
      made.bytes = maker(source);
    }
    lock.lock();
    busy_.erase(source);
    // A photo forgotten or taken off the list meanwhile is dropped.
    if (listed_.count(source) > 0) {
      held_bytes_ += made.bytes ? made.bytes->size() : 0;
      made_[source] = std::move(made);
    }
    changed_.notify_all();
  }
}

}  // namespace qbpd
