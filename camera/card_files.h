#ifndef QBPD_CAMERA_CARD_FILES_H_
#define QBPD_CAMERA_CARD_FILES_H_

#include <functional>
#include <string>
#include <vector>

namespace qbpd {

class FileTransfer;

// The files under `folder`, breadth first: the folder's files, then those of
// its subfolders in the order they were met. Hidden files (a name beginning
// with ".") are left out; links are not followed. An unreadable folder adds
// nothing.
std::vector<std::string> ListFolderFiles(const std::string& folder);

// What came of copying a card's files.
struct CardCopyReport {
  int done = 0;
  // Files that stayed on the card only, with the reasons.
  int failed = 0;
  std::vector<std::string> errors;
  // Moves whose name was taken and that got a free one.
  int renamed = 0;
  // Moves whose source could not be deleted (a write-protected card).
  int kept = 0;
};

// Copies (move false: a file of the same name is replaced, as two card files
// of one name replace each other) or moves (move true: a taken name gets a
// free one) every file of `files` into `destination`, under its own name.
// A moved file's copy is read back from the disk, a copied one's as the
// system serves it (the card keeps its source). The folder is flushed once
// for a batch of copies, by whoever placed the batch; they count as done,
// and moved files leave the card, only after it: a folder that can't be
// flushed fails them with their sources kept.
// `after_each` runs after every file, in the list's order (progress,
// events). With a transfer that works on other threads, two batches are
// copied at once there (one flushed and read back while the next is
// written), and `wait` is how this thread waits for the next
// result (the host's WaitForWork, events turning); none waits plainly.
using WaitForTransfers = std::function<void(const std::function<bool()>&)>;
CardCopyReport CopyFilesInto(const std::vector<std::string>& files,
                             const std::string& destination,
                             bool move,
                             FileTransfer& transfer,
                             const std::function<void()>& after_each,
                             const WaitForTransfers& wait = {});

}  // namespace qbpd

#endif  // QBPD_CAMERA_CARD_FILES_H_
