#ifndef QBPD_ONLINE_UPLOAD_AHEAD_H_
#define QBPD_ONLINE_UPLOAD_AHEAD_H_

#include "platform/image_operations.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace qbpd {

// The size and change time of a file, to tell whether it changed since work
// was made from it; all zero when it can't be read.
struct FileStamp {
  long long size = -1;
  long long seconds = 0;
  long long nanoseconds = 0;
  static FileStamp Of(const std::string& path);
  bool operator==(const FileStamp&) const = default;
};

// The image work of the transfer screen, made on another core while the
// current photo is sent: the JPEG copy of a photo that needs one, then the
// thumbnail of the file that will be sent. Two worker threads take the
// photos in the order they are asked for, so that two conversions can run at
// once while the sender waits on the line (one thumbnail at a time: the
// image library's cache is filled by one thread). Work whose files would take
// the names of work still running waits for it. Nothing here touches the
// forms or the session: the engine asks, takes the files when the photo's
// turn comes and does with them what it did with its own.
class UploadAhead {
 public:
  // What to make for one photo.
  struct Order {
    std::string photo;  // the user's photo; only read
    // Its JPEG copy in the temp folder, "" when the photo goes as it is.
    std::string copy;
    // Where the thumbnail goes (GenerateThumbnailExt); "" to fill the image
    // library's cache instead (GenerateThumbnailAndBuffer).
    std::string thumbnail;
  };
  // What was made; whoever takes it owns its files.
  struct Made {
    Order order;
    FileStamp photo_stamp;  // the photo as the work found it
    bool copy_made = false;
    bool thumbnail_made = false;
    // The file that goes: the copy, or the photo itself.
    const std::string& file() const {
      return order.copy.empty() ? order.photo : order.copy;
    }
  };
  // How the engine waits for work: the host's WaitForWork.
  using Wait = std::function<void(const std::function<bool()>& done)>;

  UploadAhead(ImageOperations& images,
              int thumbnail_size,
              int thumbnail_quality);
  // Waits for the work in hand and removes every file nobody took.
  ~UploadAhead();
  UploadAhead(const UploadAhead&) = delete;
  UploadAhead& operator=(const UploadAhead&) = delete;

  // Queues photo `n`'s work behind the work asked before.
  void Ask(int n, Order order);
  // Whether photo `n` was asked for and not yet taken or dropped.
  bool Asked(int n) const;
  // The copies of the photos asked for and not yet taken.
  bool HoldsCopy(const std::string& copy) const;
  // Waits through `wait` until photo `n`'s work is done and hands it over.
  // Nothing when it wasn't asked for, or when Drop ran during the wait.
  std::optional<Made> Take(int n, const Wait& wait);
  // Forgets every photo asked for: what was made is removed, and the work in
  // hand removes its own files when it ends. Doesn't wait.
  void Drop();
  // Removes the files of `made` (a copy, a thumbnail file).
  static void Remove(const Made& made);

 private:
  static constexpr int kWorkers = 2;
  // Work in hand on a worker.
  struct Running {
    int n = 0;
    unsigned generation = 0;  // the generation it was asked in
    Order order;
  };
  void Work();
  Made Make(const Order& order);
  // Whether `order` writes a file that work in hand writes too.
  bool Clashes(const Order& order) const;

  ImageOperations& images_;
  const int thumbnail_size_;
  const int thumbnail_quality_;
  mutable std::mutex mutex_;
  std::condition_variable asked_;
  std::deque<std::pair<int, Order>> queue_;
  std::list<Running> running_;
  std::map<int, Made> done_;
  unsigned generation_ = 0;
  bool stop_ = false;
  std::mutex thumbnail_mutex_;
  std::vector<std::thread> workers_;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_UPLOAD_AHEAD_H_
