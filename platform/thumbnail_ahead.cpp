#include "platform/thumbnail_ahead.h"

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

ThumbnailAhead::ThumbnailAhead(std::size_t depth, bool every_other)
    : depth_(depth < 1 ? 1 : depth),
      every_other_(every_other),
      worker_([this] { Work(); }) {}

ThumbnailAhead::~ThumbnailAhead() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  worker_.join();
}

void ThumbnailAhead::Prepare(const std::vector<std::string>& sources,
                             const std::string& kind,
                             Maker maker) {
  {
    std::unique_lock lock(mutex_);
    // A photo being made for the earlier list is finished first, so that
    // the maker it uses stays alive while it runs.
    changed_.wait(lock, [this] { return busy_.empty(); });
    kind_ = kind;
    maker_ = std::move(maker);
    made_.clear();
    queue_.clear();
    const std::size_t step = every_other_ ? 2 : 1;
    for (std::size_t i = step - 1; i < sources.size(); i += step) {
      queue_.push_back(sources[i]);
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
    changed_.wait(lock, [&] { return busy_ != source; });
    const auto found = made_.find(source);
    if (found == made_.end()) {
      return std::nullopt;
    }
    made = std::move(found->second);
    made_.erase(found);
  }
  changed_.notify_all();  // room for one more
  if (!made->bytes || made->state != PhotoFileState(source)) {
    return std::nullopt;
  }
  return std::move(made->bytes);
}

void ThumbnailAhead::Forget() {
  std::lock_guard lock(mutex_);
  queue_.clear();
  made_.clear();
}

void ThumbnailAhead::Work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] {
      return stopping_ || (!queue_.empty() && made_.size() < depth_);
    });
    if (stopping_) {
      return;
    }
    busy_ = queue_.front();
    queue_.pop_front();
    const std::string source = busy_;
    const Maker maker = maker_;
    lock.unlock();
    Made made;
    made.state = PhotoFileState(source);
    if (!made.state.empty()) {
      made.bytes = maker(source);
    }
    lock.lock();
    made_[source] = std::move(made);
    busy_.clear();
    changed_.notify_all();
  }
}

}  // namespace qbpd
