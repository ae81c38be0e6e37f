#ifndef QBPD_PLATFORM_FILE_TRANSFER_H_
#define QBPD_PLATFORM_FILE_TRANSFER_H_

#include "platform/content_hash.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qbpd {

// What came of one file's transfer.
enum class TransferStatus {
  kDone,
  // The target name is taken (a move never replaces a file).
  kTargetExists,
  // The source could not be opened or read to its end (gone, unreadable, the
  // medium pulled out); nothing was made and the source is as it was.
  kSourceFailed,
  // The copy could not be written whole (disk full, no permission); nothing
  // was made and the source is as it was.
  kTargetFailed,
  // The copy read back differs from the source; it was removed, and the
  // source is as it was.
  kVerifyFailed,
  // A move whose copy is complete and verified, but whose source could not be
  // deleted (a write-protected card): both are there.
  kSourceKept,
};

struct TransferResult {
  TransferStatus status = TransferStatus::kDone;
  // Why it failed, for a person; "" on success.
  std::string error;
  // The bytes of the copy.
  std::uint64_t bytes = 0;
  bool ok() const {
    return status == TransferStatus::kDone ||
           status == TransferStatus::kSourceKept;
  }
};

// A file written piece by piece under a temporary name beside its target
// (a photo as the camera hands it over), hashed as it goes. Given to PlaceAll
// in an item, it is flushed, read back and named there; dropped before that,
// its temporary file is removed.
class PieceWriter {
 public:
  virtual ~PieceWriter() = default;
  // Appends a piece; false, with the reason, when it can't be written (the
  // disk full): the file can then never be named.
  [[nodiscard]] virtual bool Append(const void* data,
                                    std::size_t size,
                                    std::string& error) = 0;
};

// One file of a batch: a copy of `source`; or, when it is empty, a file
// fetched from a camera, never replacing a file: the one `written` holds
// when it is set, else `content`.
struct TransferItem {
  std::string source;
  std::string content;
  std::shared_ptr<PieceWriter> written;
  std::string target;
  bool replace = false;
  // The copy is read back from the disk, bypassing the cache: its source is
  // to be deleted once it is there. A copy whose source stays is read back
  // as the system serves it (the cache) and compared the same way; it is
  // flushed before it is named all the same.
  bool from_disk = true;
};

// Copies and moves photo files so that nothing is lost: the copy is written
// to a temporary file in the target's folder, flushed to the disk and read
// back (from the disk, not the cache, unless the item says its source stays;
// see TransferItem::from_disk), and only when it is whole and
// equal to the source (size and content hash; a file fetched from a camera
// and held in memory, byte for byte) does it take its name. A move
// deletes its source only after that and after the target's folder, which
// holds the name, is flushed too. On a failure before the naming no file is
// left at the target name or beside it, and the source is untouched.
//
// Copy, Move and Save do one file whole. A batch uses the steps instead:
// Place or Store each file, FlushFolder once for all of them, and only then
// RemoveSource each moved one, so that the folder is flushed once per batch
// rather than once per file.
class FileTransfer {
 public:
  virtual ~FileTransfer() = default;
  // Copies `source` to `target`, replacing a file there.
  [[nodiscard]] TransferResult Copy(const std::string& source,
                                    const std::string& target);
  // Moves `source` to `target`, which must not exist (kTargetExists then).
  [[nodiscard]] TransferResult Move(const std::string& source,
                                    const std::string& target);
  // Writes `content` (a file fetched from a camera) to `target`, verified as
  // a copy is; never replaces a file (kTargetExists).
  [[nodiscard]] TransferResult Save(const std::string& content,
                                    const std::string& target);

  // The verified copy of `source` at `target` (replacing a file there only
  // with `replace`), the target's folder not flushed, the source kept.
  [[nodiscard]] virtual TransferResult Place(const std::string& source,
                                             const std::string& target,
                                             bool replace) = 0;
  // `content` verified at `target` (never replacing), the folder not flushed.
  [[nodiscard]] virtual TransferResult Store(const std::string& content,
                                             const std::string& target) = 0;
  // Starts a file for `target` to be written piece by piece and then given
  // to PlaceAll (TransferItem::written); null, with `result` saying why
  // (kTargetFailed), when its temporary file can't be made. The writer may
  // go to the transfer of another thread.
  [[nodiscard]] virtual std::shared_ptr<PieceWriter> Begin(
      const std::string& target,
      TransferResult& result) = 0;
  // Places (or stores) several files at once: all are written before any is
  // flushed, so that the disk writes them in one go and the flushes after
  // the first are short. The results are in the items' order; each is as
  // Place's or Store's. The names are given in the items' order.
  [[nodiscard]] virtual std::vector<TransferResult> PlaceAll(
      std::vector<TransferItem>& items);
  // Flushes `folder` (the names given in it) to the disk. A folder that
  // can't be flushed leaves its new files there, but none of them counts as
  // safe: no source may be deleted.
  [[nodiscard]] virtual bool FlushFolder(const std::string& folder,
                                         std::string& error) = 0;
  // Deletes a source whose copy was placed and whose folder was flushed.
  [[nodiscard]] virtual bool RemoveSource(const std::string& source,
                                          std::string& error) = 0;

  // A transfer of the same kind for another thread (each thread needs its
  // own), or none when this one works only on the caller's thread.
  virtual std::unique_ptr<FileTransfer> Another() { return nullptr; }
};

// PlaceAll, then `folder` (where the items go) flushed once for all of them:
// when it can't be, no copy of the batch counts (kTargetFailed, the flush's
// error), so no source of the batch may be deleted.
std::vector<TransferResult> PlaceAllAndFlush(FileTransfer& transfer,
                                             std::vector<TransferItem>& items,
                                             const std::string& folder);

// The folder part of a path ("." for a bare name).
std::string TransferFolderOf(const std::string& path);

std::unique_ptr<FileTransfer> MakeVerifiedFileTransfer();

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FILE_TRANSFER_H_
