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

constexpr std::size_t kChunk = 1 << 20;
// The alignment of direct reads: a page, a multiple of any block size.
constexpr std::size_t kAlign = 4096;
constexpr std::uint64_t kPrime1 = 0x9E3779B185EBCA87ULL;
constexpr std::uint64_t kPrime2 = 0xC2B2AE3D27D4EB4FULL;

std::uint64_t Rotate(std::uint64_t v, int r) {
  return (v << r) | (v >> (64 - r));
}

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

// Writes `size` bytes and asks the disk to start writing them now, so that
// the flush at the end finds most of the file written.
bool WriteAndStart(int fd,
                   const void* data,
                   std::size_t size,
                   std::uint64_t at) {
  if (!WriteAll(fd, data, size)) {
    return false;
  }
  ::sync_file_range(fd, static_cast<off64_t>(at), static_cast<off64_t>(size),
                    SYNC_FILE_RANGE_WRITE);
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

  std::unique_ptr<FileTransfer> Another() override {
    return std::make_unique<VerifiedFileTransfer>();
  }

 private:
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

namespace {

// One 32-byte block into the four lanes (kept by the caller in locals, so
// that the compiler holds them in registers: the block's bytes could alias a
// member array).
inline void MixBlock(std::uint64_t lane[4], const unsigned char* block) {
  for (int i = 0; i < 4; ++i) {
    std::uint64_t word = 0;
    std::memcpy(&word, block + 8 * i, sizeof(word));
    lane[i] = Rotate(lane[i] + word * kPrime2, 31) * kPrime1;
  }
}

}  // namespace

void ContentHash::Add(const void* data, std::size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  length_ += size;
  std::uint64_t lane[4] = {lane_[0], lane_[1], lane_[2], lane_[3]};
  if (tail_size_ > 0) {
    const std::size_t take = std::min(size, sizeof(tail_) - tail_size_);
    std::memcpy(tail_ + tail_size_, bytes, take);
    tail_size_ += take;
    bytes += take;
    size -= take;
    if (tail_size_ < sizeof(tail_)) {
      return;
    }
    MixBlock(lane, tail_);
    tail_size_ = 0;
  }
  while (size >= sizeof(tail_)) {
    MixBlock(lane, bytes);
    bytes += sizeof(tail_);
    size -= sizeof(tail_);
  }
  std::memcpy(tail_, bytes, size);
  tail_size_ = size;
  for (int i = 0; i < 4; ++i) {
    lane_[i] = lane[i];
  }
}

std::uint64_t ContentHash::Value() const {
  std::uint64_t h = Rotate(lane_[0], 1) + Rotate(lane_[1], 7) +
                    Rotate(lane_[2], 12) + Rotate(lane_[3], 18);
  h ^= length_ * kPrime1;
  for (std::size_t i = 0; i < tail_size_; ++i) {
    h = Rotate(h ^ (tail_[i] * kPrime1), 11) * kPrime2;
  }
  h ^= h >> 33;
  h *= kPrime2;
  h ^= h >> 29;
  return h;
}

bool HashFile(const std::string& path,
              std::uint64_t& hash,
              std::uint64_t& size) {
  FileDescriptor in(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (in.get() < 0) {
    return false;
  }
  std::vector<unsigned char> buffer(kChunk);
  ContentHash h;
  size = 0;
  for (;;) {
    const ssize_t got = ::read(in.get(), buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got < 0) {
      return false;
    }
    if (got == 0) {
      break;
    }
    h.Add(buffer.data(), static_cast<std::size_t>(got));
    size += static_cast<std::uint64_t>(got);
  }
  hash = h.Value();
  return true;
}

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
