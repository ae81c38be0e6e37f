#ifndef QBPD_PLATFORM_THUMBNAIL_AHEAD_H_
#define QBPD_PLATFORM_THUMBNAIL_AHEAD_H_

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace qbpd {

// Thumbnails of a folder's first photos made on a second thread while the
// caller makes the others: of the photos it is told, it makes every other
// one from the second on (the caller makes the first, the third, ...), so
// that two cores share the first load. A thumbnail made ahead is handed
// over only if its photo is unchanged since (size and modification time);
// otherwise, and for any photo it was not told, the caller makes it as
// before. Nothing is written: the caller writes what it takes. The same
// serves other bytes made from photos (JPEG copies), then of every photo it
// is told, on as many threads as asked, and as far ahead as a budget of
// bytes allows.
class ThumbnailAhead {
 public:
  using Bytes = std::vector<std::uint8_t>;
  // Makes the thumbnail of a photo; nullopt when it can't or needn't (say,
  // because the cache holds it already).
  using Maker = std::function<std::optional<Bytes>(const std::string& source)>;

  // At most `depth` thumbnails are kept made and not yet taken; with
  // `every_other` false, every photo told is made, not every other one. No
  // photo is begun while those kept hold `max_bytes` or more, so they hold
  // less than `max_bytes` plus what the `workers` threads make at once.
  // With `background`, the threads are background work (see
  // RunAsBackgroundWork).
  explicit ThumbnailAhead(std::size_t depth = 6,
                          bool every_other = true,
                          std::size_t max_bytes = SIZE_MAX,
                          int workers = 1,
                          bool background = false);
  ~ThumbnailAhead();
  ThumbnailAhead(const ThumbnailAhead&) = delete;
  ThumbnailAhead& operator=(const ThumbnailAhead&) = delete;

  // Forgets what it was told before, and works on `sources` with `maker`;
  // `kind` names the maker's parameters, which Take must name alike. Told
  // the same kind again, what was made or is being made for a photo of the
  // new list is kept (it is not made twice); the rest is forgotten.
  void Prepare(const std::vector<std::string>& sources,
               const std::string& kind,
               Maker maker);
  // The thumbnail made ahead for `source`, waiting while it is being made;
  // nullopt when there is none to hand over. A photo not yet begun is taken
  // off the list (the caller makes it).
  std::optional<Bytes> Take(const std::string& source, const std::string& kind);
  // Forgets what it was told and what it made, without waiting: a photo
  // being made is dropped when it is done.
  void Forget();
  // The bytes made and not yet taken.
  std::size_t HeldBytes();

 private:
  struct Made {
    std::optional<Bytes> bytes;
    std::string state;
  };
  void Work(bool background);

  const std::size_t depth_;
  const bool every_other_;
  const std::size_t max_bytes_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool stopping_ = false;
  std::string kind_;
  Maker maker_;
  std::deque<std::string> queue_;
  std::set<std::string> busy_;    // the photos being made
  std::set<std::string> listed_;  // the photos of the current list
  std::map<std::string, Made> made_;
  std::size_t held_bytes_ = 0;  // the bytes in made_
  std::vector<std::thread> workers_;
};

// What the hand-over compares: a photo's size and modification time, ""
// when it is no plain file.
std::string PhotoFileState(const std::string& path);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_THUMBNAIL_AHEAD_H_
