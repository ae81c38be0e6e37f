#include "platform/file_transfer.h"

#include "platform/atomic_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

// The piece read, hashed and written at a time: small enough that the hash
// and the write find the bytes the read left in the processor's cache, as a
// piece of a megabyte no longer is.
constexpr std::size_t kChunk = 256 << 10;
// The alignment of direct reads: a page, a multiple of any block size.
constexpr std::size_t kAlign = 4096;
std::string Why(const std::string& what, const std::string& path) {
  return what + " " + path + ": " + std::strerror(errno);
}

std::string NameOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Renames `from` to `to` without replacing a file there; EEXIST when one is.
int RenameNoReplace(const std::string& from, const std::string& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(),
                  RENAME_NOREPLACE) == 0) {
    return 0;
  }
  if (errno != EINVAL && errno != ENOSYS) {
    return -1;
  }
  // A file system without the flag: a hard link never replaces either.
  if (::link(from.c_str(), to.c_str()) != 0) {
    return -1;
  }
  ::unlink(from.c_str());
  return 0;
}

// Page-aligned memory, as reads that bypass the cache need.
struct AlignedFree {
  void operator()(unsigned char* p) const { std::free(p); }
};
using AlignedBuffer = std::unique_ptr<unsigned char, AlignedFree>;

AlignedBuffer NewAlignedBuffer() {
  return AlignedBuffer(
      static_cast<unsigned char*>(std::aligned_alloc(kAlign, kChunk)));
}

// Bytes written before the disk is asked to start writing them: a request
// for every small piece cuts the disk's writes up.
constexpr std::uint64_t kStartEvery = 1 << 20;

// Writes `size` bytes at `at` and, at every megabyte, asks the disk to start
// writing what the file has so far, so that the flush at the end finds most
// of it written.
bool WriteAndStart(int fd,
                   const void* data,
                   std::size_t size,
                   std::uint64_t at) {
  if (!WriteAll(fd, data, size)) {
    return false;
  }
  const std::uint64_t end = at + size;
  if (end / kStartEvery != at / kStartEvery) {
    ::sync_file_range(fd, 0, static_cast<off64_t>(end), SYNC_FILE_RANGE_WRITE);
  }
  return true;
}

// A file written under its temporary name, waiting to be flushed, read back
// and named.
struct Written {
  std::unique_ptr<FileDescriptor> fd;
  std::string temp;
  std::uint64_t size = 0;
  // What the read-back must equal: the bytes themselves when they are at
  // hand (a camera's file), otherwise the source's content hash.
  const std::string* content = nullptr;
  std::uint64_t hash = 0;
  bool from_disk = true;
};

// Reads `fd` from its start to its end, handing each piece to `take`. False
// with errno set when a read fails.
template <typename Take>
bool ReadAll(int fd, unsigned char* buffer, Take&& take) {
  if (::lseek(fd, 0, SEEK_SET) != 0) {
    return false;
  }
  for (;;) {
    const ssize_t got = ::read(fd, buffer, kChunk);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got < 0) {
      return false;
    }
    if (got == 0) {
      return true;
    }
    take(buffer, static_cast<std::size_t>(got));
  }
}

// Reads `file` back and says in `equal` whether it is what was written.
bool ReadAndCompare(const Written& file, unsigned char* buffer, bool& equal) {
  ContentHash hash;
  std::uint64_t size = 0;
  bool same = true;
  const bool read = ReadAll(
      file.fd->get(), buffer, [&](const unsigned char* data, std::size_t n) {
        if (file.content != nullptr) {
          same = same && size + n <= file.content->size() &&
                 std::memcmp(file.content->data() + size, data, n) == 0;
        } else {
          hash.Add(data, n);
        }
        size += n;
      });
  equal = read && size == file.size &&
          (file.content != nullptr ? same : hash.Value() == file.hash);
  return read;
}

// Reads back what the disk holds, not what the cache kept of the writes (the
// cache only when the file's source stays): the
// descriptor is switched to direct reads; a file system that refuses them
// gets its cached pages of the file dropped (they are clean after the flush)
// and is read as usual. False when it can't be read.
bool ReadBack(const Written& file, unsigned char* buffer, bool& equal) {
  if (!file.from_disk) {
    return ReadAndCompare(file, buffer, equal);
  }
  const int fd = file.fd->get();
  const int flags = ::fcntl(fd, F_GETFL);
  if (flags >= 0 && ::fcntl(fd, F_SETFL, flags | O_DIRECT) == 0) {
    if (ReadAndCompare(file, buffer, equal)) {
      return true;
    }
    if (errno != EINVAL) {
      return false;
    }
    // Accepted at first but refused at the read: read through the cache.
    ::fcntl(fd, F_SETFL, flags);
  }
  ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
  return ReadAndCompare(file, buffer, equal);
}

// A file that the camera's pieces are written to as they come; the hash of
// what was written goes with it to the read-back.
class VerifiedPieceWriter final : public PieceWriter {
 public:
  VerifiedPieceWriter(Written file, std::string target)
      : file_(std::move(file)), target_(std::move(target)) {}
  ~VerifiedPieceWriter() override {
    if (file_.fd) {
      ::unlink(file_.temp.c_str());
    }
  }
  VerifiedPieceWriter(const VerifiedPieceWriter&) = delete;
  VerifiedPieceWriter& operator=(const VerifiedPieceWriter&) = delete;

  bool Append(const void* data, std::size_t size, std::string& error) override {
    if (!Usable(error)) {
      return false;
    }
    if (!WriteAndStart(file_.fd->get(), data, size, file_.size)) {
      error_ = Why("Cannot write", target_);
      error = error_;
      return false;
    }
    hash_.Add(data, size);
    file_.size += size;
    return true;
  }

  // Hands the written file over to be flushed, read back and named; false,
  // with the reason, when a piece could not be written.
  bool HandOver(Written& file, std::string& error) {
    if (!Usable(error)) {
      return false;
    }
    // The disk starts on what the last megabyte left unwritten.
    ::sync_file_range(file_.fd->get(), 0, static_cast<off64_t>(file_.size),
                      SYNC_FILE_RANGE_WRITE);
    file_.hash = hash_.Value();
    file = std::move(file_);
    file_.fd.reset();
    return true;
  }

 private:
  // False, with the reason, once a write failed or the file was handed on.
  bool Usable(std::string& error) const {
    if (error_.empty() && file_.fd) {
      return true;
    }
    error = error_.empty() ? "The file " + target_ + " was handed on." : error_;
    return false;
  }

  Written file_;
  std::string target_;
  ContentHash hash_;
  std::string error_;
};

class VerifiedFileTransfer final : public FileTransfer {
 public:
  VerifiedFileTransfer() : buffer_(NewAlignedBuffer()) {}

  TransferResult Place(const std::string& source,
                       const std::string& target,
                       bool replace) override {
    std::vector<TransferItem> one(1);
    one[0].source = source;
    one[0].target = target;
    one[0].replace = replace;
    return PlaceAll(one)[0];
  }

  TransferResult Store(const std::string& content,
                       const std::string& target) override {
    std::vector<TransferItem> one(1);
    one[0].content = content;
    one[0].target = target;
    return PlaceAll(one)[0];
  }

  // Every file is written first; then all are flushed (the flushes after the
  // first find the journal written already), read back and named in order.
  std::vector<TransferResult> PlaceAll(
      std::vector<TransferItem>& items) override {
    std::vector<TransferResult> results(items.size());
    std::vector<Written> written(items.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
      const TransferItem& item = items[i];
      const bool replace = item.replace && !item.source.empty();
      if (!buffer_) {
        results[i].status = TransferStatus::kTargetFailed;
        results[i].error = "Out of memory for the copy of " + item.target;
      } else if (!replace && ::access(item.target.c_str(), F_OK) == 0) {
        results[i].status = TransferStatus::kTargetExists;
        results[i].error = "The file " + item.target + " exists already.";
      } else if (item.written) {
        TakeWritten(*item.written, item.target, written[i], results[i]);
      } else if (item.source.empty()) {
        WriteContent(item.content, item.target, written[i], results[i]);
      } else {
        WriteCopy(item.source, item.target, written[i], results[i]);
      }
      written[i].from_disk = item.from_disk;
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
      if (written[i].fd && ::fsync(written[i].fd->get()) != 0) {
        Drop(written[i], results[i], TransferStatus::kTargetFailed,
             Why("Cannot write", items[i].target));
      }
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
      if (written[i].fd) {
        const bool replace = items[i].replace && !items[i].source.empty();
        Finish(written[i], items[i].target, replace, results[i]);
      }
    }
    return results;
  }

  bool FlushFolder(const std::string& folder, std::string& error) override {
    FileDescriptor fd(
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.get() < 0 || ::fsync(fd.get()) != 0) {
      error = Why("Cannot write", folder);
      return false;
    }
    return true;
  }

  bool RemoveSource(const std::string& source, std::string& error) override {
    if (::unlink(source.c_str()) != 0) {
      error = Why("Cannot delete", source);
      return false;
    }
    return true;
  }

  std::shared_ptr<PieceWriter> Begin(const std::string& target,
                                     TransferResult& result) override {
    Written file;
    if (!OpenTemporary(target, 0644, file, result)) {
      return nullptr;
    }
    return std::make_shared<VerifiedPieceWriter>(std::move(file), target);
  }

  std::unique_ptr<FileTransfer> Another() override {
    return std::make_unique<VerifiedFileTransfer>();
  }

 private:
  // A file written piece by piece, taken over to be finished here.
  static void TakeWritten(PieceWriter& writer,
                          const std::string& target,
                          Written& file,
                          TransferResult& result) {
    auto* ours = dynamic_cast<VerifiedPieceWriter*>(&writer);
    if (ours == nullptr) {
      result.status = TransferStatus::kTargetFailed;
      result.error = "The file " + target + " was not written by this copy.";
    } else if (!ours->HandOver(file, result.error)) {
      result.status = TransferStatus::kTargetFailed;
    }
  }

  // The temporary file is removed and the result says why.
  static void Drop(Written& file,
                   TransferResult& result,
                   TransferStatus status,
                   std::string error) {
    ::unlink(file.temp.c_str());
    file.fd.reset();
    result.status = status;
    result.error = std::move(error);
  }

  // Opens the temporary file beside `target`; false with `result` filled.
  static bool OpenTemporary(const std::string& target,
                            mode_t mode,
                            Written& file,
                            TransferResult& result) {
    file.temp =
        TransferFolderOf(target) + "/." + NameOf(target) + ".qbpd-XXXXXX";
    const int fd = ::mkostemp(file.temp.data(), O_CLOEXEC);
    if (fd < 0) {
      result.status = TransferStatus::kTargetFailed;
      result.error = Why("Cannot write in", TransferFolderOf(target));
      return false;
    }
    file.fd = std::make_unique<FileDescriptor>(fd);
    ::flock(fd, LOCK_EX);
    ::fchmod(fd, mode);
    return true;
  }

  void WriteCopy(const std::string& source,
                 const std::string& target,
                 Written& file,
                 TransferResult& result) {
    FileDescriptor in(::open(source.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat before {};
    if (in.get() < 0 || ::fstat(in.get(), &before) != 0 ||
        !S_ISREG(before.st_mode)) {
      result.status = TransferStatus::kSourceFailed;
      result.error = Why("Cannot read", source);
      return;
    }
    if (!OpenTemporary(target, before.st_mode & 0666, file, result)) {
      return;
    }
    ::posix_fadvise(in.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    unsigned char* buffer = buffer_.get();
    ContentHash hash;
    for (;;) {
      const ssize_t got = ::read(in.get(), buffer, kChunk);
      if (got < 0 && errno == EINTR) {
        continue;
      }
      if (got < 0) {
        return Drop(file, result, TransferStatus::kSourceFailed,
                    Why("Cannot read", source));
      }
      if (got == 0) {
        break;
      }
      hash.Add(buffer, static_cast<std::size_t>(got));
      if (!WriteAndStart(file.fd->get(), buffer, static_cast<std::size_t>(got),
                         file.size)) {
        return Drop(file, result, TransferStatus::kTargetFailed,
                    Why("Cannot write", target));
      }
      file.size += static_cast<std::uint64_t>(got);
    }
    struct stat after {};
    if (::fstat(in.get(), &after) != 0 ||
        static_cast<std::uint64_t>(after.st_size) != file.size ||
        before.st_size != after.st_size || after.st_nlink == 0) {
      return Drop(file, result, TransferStatus::kSourceFailed,
                  "The file " + source + " changed or went while it was read.");
    }
    file.hash = hash.Value();
  }

  static void WriteContent(const std::string& content,
                           const std::string& target,
                           Written& file,
                           TransferResult& result) {
    if (!OpenTemporary(target, 0644, file, result)) {
      return;
    }
    for (std::size_t at = 0; at < content.size(); at += kChunk) {
      const std::size_t size = std::min(kChunk, content.size() - at);
      if (!WriteAndStart(file.fd->get(), content.data() + at, size, at)) {
        return Drop(file, result, TransferStatus::kTargetFailed,
                    Why("Cannot write", target));
      }
    }
    file.size = content.size();
    file.content = &content;
  }

  // Reads the flushed temporary file back and gives it its name; on any
  // failure it is removed and `result` says why.
  void Finish(Written& file,
              const std::string& target,
              bool replace,
              TransferResult& result) {
    bool equal = false;
    if (!ReadBack(file, buffer_.get(), equal)) {
      return Drop(file, result, TransferStatus::kVerifyFailed,
                  Why("Cannot read back", target));
    }
    if (!equal) {
      return Drop(file, result, TransferStatus::kVerifyFailed,
                  "The copy " + target + " differs from its source.");
    }
    const int renamed = replace ? ::rename(file.temp.c_str(), target.c_str())
                                : RenameNoReplace(file.temp, target);
    if (renamed != 0) {
      const bool exists = errno == EEXIST;
      std::string why = Why("Cannot name", target);
      return Drop(file, result,
                  exists ? TransferStatus::kTargetExists
                         : TransferStatus::kTargetFailed,
                  why);
    }
    file.fd.reset();
    result.bytes = file.size;
  }

  AlignedBuffer buffer_;
};

}  // namespace

std::string TransferFolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

TransferResult FileTransfer::Copy(const std::string& source,
                                  const std::string& target) {
  TransferResult result = Place(source, target, /*replace=*/true);
  if (result.ok() && !FlushFolder(TransferFolderOf(target), result.error)) {
    result.status = TransferStatus::kTargetFailed;
  }
  return result;
}

TransferResult FileTransfer::Move(const std::string& source,
                                  const std::string& target) {
  TransferResult result = Place(source, target, /*replace=*/false);
  if (!result.ok()) {
    return result;
  }
  if (!FlushFolder(TransferFolderOf(target), result.error)) {
    result.status = TransferStatus::kTargetFailed;
  } else if (!RemoveSource(source, result.error)) {
    result.status = TransferStatus::kSourceKept;
  }
  return result;
}

TransferResult FileTransfer::Save(const std::string& content,
                                  const std::string& target) {
  TransferResult result = Store(content, target);
  if (result.ok() && !FlushFolder(TransferFolderOf(target), result.error)) {
    result.status = TransferStatus::kTargetFailed;
  }
  return result;
}

std::vector<TransferResult> FileTransfer::PlaceAll(
    std::vector<TransferItem>& items) {
  std::vector<TransferResult> results;
  for (const TransferItem& item : items) {
    results.push_back(item.source.empty()
                          ? Store(item.content, item.target)
                          : Place(item.source, item.target, item.replace));
  }
  return results;
}

std::vector<TransferResult> PlaceAllAndFlush(FileTransfer& transfer,
                                             std::vector<TransferItem>& items,
                                             const std::string& folder) {
  std::vector<TransferResult> results = transfer.PlaceAll(items);
  const bool any = std::any_of(results.begin(), results.end(),
                               [](const TransferResult& r) { return r.ok(); });
  std::string error;
  if (any && !transfer.FlushFolder(folder, error)) {
    for (TransferResult& result : results) {
      if (result.ok()) {
        result.status = TransferStatus::kTargetFailed;
        result.error = error;
      }
    }
  }
  return results;
}

std::unique_ptr<FileTransfer> MakeVerifiedFileTransfer() {
  return std::make_unique<VerifiedFileTransfer>();
}

}  // namespace qbpd
