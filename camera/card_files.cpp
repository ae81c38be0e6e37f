#include "camera/card_files.h"

#include "camera/camera_lines.h"
#include "platform/file_transfer.h"
#include "platform/transfer_ahead.h"

#include <algorithm>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <set>

namespace qbpd {
namespace fs = std::filesystem;

std::vector<std::string> ListFolderFiles(const std::string& folder) {
  std::vector<std::string> files;
  std::vector<fs::path> folders{fs::path(folder)};
  for (std::size_t i = 0; i < folders.size(); ++i) {
    std::error_code error;
    fs::directory_iterator it(folders[i], error);
    std::vector<fs::path> subfolders;
    std::vector<fs::path> here;
    for (; !error && it != fs::directory_iterator(); it.increment(error)) {
      std::error_code kind_error;
      const fs::path& path = it->path();
      if (it->is_symlink(kind_error)) {
        continue;
      }
      if (it->is_directory(kind_error)) {
        subfolders.push_back(path);
      } else if (it->is_regular_file(kind_error) &&
                 path.filename().string().rfind('.', 0) != 0) {
        here.push_back(path);
      }
    }
    // A listing's order is the file system's; sorted, a run is repeatable.
    std::sort(subfolders.begin(), subfolders.end());
    std::sort(here.begin(), here.end());
    folders.insert(folders.end(), subfolders.begin(), subfolders.end());
    for (const fs::path& path : here) {
      files.push_back(path.string());
    }
  }
  return files;
}

namespace {

// Threads copying at once: while one batch waits for its flush, the other
// two keep both processors of a small machine reading, hashing and writing.
// Each batch ends with the folder's flush on its thread, so that the
// window's thread never waits for the disk.
constexpr std::size_t kThreads = 3;
// Files written before any of them is flushed (one batch of PlaceAll).
constexpr std::size_t kBatch = 16;
// How far the copies may run ahead of the results taken, in files: a batch
// for each thread and one waiting.
constexpr std::size_t kAhead = (kThreads + 1) * kBatch;

bool ExistsIn(const std::string& folder, const std::string& name) {
  std::error_code ignored;
  return fs::exists(folder + "/" + name, ignored);
}

void Record(CardCopyReport& report, const TransferResult& result) {
  if (result.ok()) {
    ++report.done;
    if (result.status == TransferStatus::kSourceKept) {
      ++report.kept;
    }
  } else {
    ++report.failed;
    report.errors.push_back(result.error);
  }
}

}  // namespace

CardCopyReport CopyFilesInto(const std::vector<std::string>& files,
                             const std::string& destination,
                             bool move,
                             FileTransfer& transfer,
                             const std::function<void()>& after_each,
                             const WaitForTransfers& wait) {
  CardCopyReport report;
  std::string folder = destination;
  if (!folder.empty() && folder.back() == '/') {
    folder.pop_back();
  }
  // The copies run on threads of their own when the transfer can make one
  // for each; otherwise each runs on this thread when its result is taken.
  std::vector<std::unique_ptr<FileTransfer>> own;
  for (std::size_t i = 0; i < kThreads; ++i) {
    if (std::unique_ptr<FileTransfer> t = transfer.Another()) {
      own.push_back(std::move(t));
    }
  }
  std::unique_ptr<TransferAhead> ahead;
  if (own.size() == kThreads) {
    ahead = std::make_unique<TransferAhead>(std::move(own));
  }
  // Results of the copies run on this thread, not taken yet.
  std::deque<TransferResult> here;
  // Names given to moves whose results are not taken yet.
  std::set<std::string> given;
  // For copies: the last job writing each name. Two card files of one name
  // replace each other in the list's order, so a second waits for the first.
  std::map<std::string, std::size_t> last_of;
  std::vector<std::string> targets(files.size());
  std::size_t added = 0;
  std::size_t taken = 0;
  while (taken < files.size()) {
    const std::size_t window = ahead ? kAhead : kBatch;
    // The next batch: files[first, added). It is made only when a whole one
    // fits in the window: batches cut down to the few files the window has
    // room for would each pay a folder flush of their own.
    const std::size_t first = added;
    const bool room =
        added - taken + std::min(kBatch, files.size() - added) <= window;
    std::vector<TransferItem> batch;
    while (room && added < files.size() && batch.size() < kBatch) {
      const std::string& source = files[added];
      const std::string name = fs::path(source).filename().string();
      std::string target = name;
      if (move) {
        target = FreeFileName(name, [&](const std::string& n) {
          return given.count(n) > 0 || ExistsIn(folder, n);
        });
        given.insert(target);
      } else {
        // Within a batch the names are given in order; a name that an
        // earlier batch still writes waits for it.
        const auto last = last_of.find(target);
        if (last != last_of.end() && last->second >= taken &&
            last->second < first) {
          break;
        }
        last_of[target] = added;
      }
      targets[added] = target;
      TransferItem item;
      item.source = source;
      item.target = folder + "/" + target;
      item.replace = !move;
      item.from_disk = move;
      batch.push_back(std::move(item));
      ++added;
    }
    if (!batch.empty()) {
      const std::size_t count = batch.size();
      TransferAhead::Job job = [batch = std::move(batch),
                                &folder](FileTransfer& t) mutable {
        return PlaceAllAndFlush(t, batch, folder);
      };
      if (ahead) {
        ahead->Add(std::move(job), count);
      } else {
        for (TransferResult& r : job(transfer)) {
          here.push_back(std::move(r));
        }
      }
    }
    TransferResult result;
    if (ahead) {
      if (wait) {
        wait([&] { return ahead->NextReady(); });
      }
      result = *ahead->TakeNext();
    } else {
      result = std::move(here.front());
      here.pop_front();
    }
    const std::string& source = files[taken];
    if (move) {
      given.erase(targets[taken]);
      // Another process may take the free name meanwhile; the move never
      // replaces, so it tries the next one.
      for (int attempt = 1;
           attempt < 3 && result.status == TransferStatus::kTargetExists;
           ++attempt) {
        targets[taken] =
            FreeFileName(targets[taken], [&](const std::string& n) {
              return given.count(n) > 0 || ExistsIn(folder, n);
            });
        result = transfer.Place(source, folder + "/" + targets[taken],
                                /*replace=*/false);
        if (result.ok() && !transfer.FlushFolder(folder, result.error)) {
          result.status = TransferStatus::kTargetFailed;
        }
      }
      if (result.ok() && targets[taken] != fs::path(source).filename()) {
        ++report.renamed;
      }
    }
    // The copy is verified and its folder flushed: a moved file may go.
    if (move && result.ok() && !transfer.RemoveSource(source, result.error)) {
      result.status = TransferStatus::kSourceKept;
    }
    Record(report, result);
    ++taken;
    if (after_each) {
      after_each();
    }
  }
  return report;
}

}  // namespace qbpd
