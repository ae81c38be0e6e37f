#include "platform/file_transfer.h"

#include "platform/atomic_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

constexpr std::size_t kChunk = 1 << 20;
constexpr std::uint64_t kPrime1 = 0x9E3779B185EBCA87ULL;
constexpr std::uint64_t kPrime2 = 0xC2B2AE3D27D4EB4FULL;

std::uint64_t Rotate(std::uint64_t v, int r) {
  return (v << r) | (v >> (64 - r));
}

std::string Why(const std::string& what, const std::string& path) {
  return what + " " + path + ": " + std::strerror(errno);
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
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

void SyncFolder(const std::string& folder) {
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd >= 0) {
    ::fsync(fd);
    ::close(fd);
  }
}

class VerifiedFileTransfer final : public FileTransfer {
 public:
  TransferResult Copy(const std::string& source,
                      const std::string& target) override {
    return Transfer(source, target, /*move=*/false);
  }
  TransferResult Move(const std::string& source,
                      const std::string& target) override {
    return Transfer(source, target, /*move=*/true);
  }
  std::unique_ptr<FileTransfer> Another() override {
    return std::make_unique<VerifiedFileTransfer>();
  }

 private:
  TransferResult Transfer(const std::string& source,
                          const std::string& target,
                          bool move) {
    TransferResult result;
    if (move && ::access(target.c_str(), F_OK) == 0) {
      result.status = TransferStatus::kTargetExists;
      result.error = "The file " + target + " exists already.";
      return result;
    }
    FileDescriptor in(::open(source.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat before {};
    if (in.get() < 0 || ::fstat(in.get(), &before) != 0 ||
        !S_ISREG(before.st_mode)) {
      result.status = TransferStatus::kSourceFailed;
      result.error = Why("Cannot read", source);
      return result;
    }
    std::string temp =
        FolderOf(target) + "/." + NameOf(target) + ".qbpd-XXXXXX";
    FileDescriptor out(::mkostemp(temp.data(), O_CLOEXEC));
    if (out.get() < 0) {
      result.status = TransferStatus::kTargetFailed;
      result.error = Why("Cannot write in", FolderOf(target));
      return result;
    }
    ::flock(out.get(), LOCK_EX);
    auto fail = [&](TransferStatus status, std::string error) {
      ::unlink(temp.c_str());
      result.status = status;
      result.error = std::move(error);
      return result;
    };
    ::fchmod(out.get(), before.st_mode & 0666);
    ::posix_fadvise(in.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    buffer_.resize(kChunk);
    ContentHash source_hash;
    std::uint64_t copied = 0;
    for (;;) {
      const ssize_t got = ::read(in.get(), buffer_.data(), buffer_.size());
      if (got < 0 && errno == EINTR) {
        continue;
      }
      if (got < 0) {
        return fail(TransferStatus::kSourceFailed, Why("Cannot read", source));
      }
      if (got == 0) {
        break;
      }
      source_hash.Add(buffer_.data(), static_cast<std::size_t>(got));
      if (!WriteAll(out.get(), buffer_.data(), static_cast<std::size_t>(got))) {
        return fail(TransferStatus::kTargetFailed, Why("Cannot write", target));
      }
      copied += static_cast<std::uint64_t>(got);
    }
    struct stat after {};
    if (::fstat(in.get(), &after) != 0 ||
        static_cast<std::uint64_t>(after.st_size) != copied ||
        before.st_size != after.st_size || after.st_nlink == 0) {
      errno = EIO;
      return fail(TransferStatus::kSourceFailed,
                  "The file " + source + " changed or went while it was read.");
    }
    if (!Finish(out.get(), temp, target, move, copied, source_hash.Value(),
                result)) {
      return result;
    }
    result.bytes = copied;
    if (move && ::unlink(source.c_str()) != 0) {
      result.status = TransferStatus::kSourceKept;
      result.error = Why("Cannot delete", source);
    }
    return result;
  }

  // Flushes the temporary file, reads it back and gives it its name. False
  // (with `result` filled and the temporary file gone) on any failure.
  bool Finish(int fd,
              const std::string& temp,
              const std::string& target,
              bool no_replace,
              std::uint64_t copied,
              std::uint64_t expected,
              TransferResult& result) {
    auto fail = [&](TransferStatus status, std::string error) {
      ::unlink(temp.c_str());
      result.status = status;
      result.error = std::move(error);
      return false;
    };
    if (::fsync(fd) != 0) {
      return fail(TransferStatus::kTargetFailed, Why("Cannot write", target));
    }
    // Read back what the disk holds, not what the cache kept of the writes.
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
    ContentHash copy_hash;
    std::uint64_t read_back = 0;
    if (::lseek(fd, 0, SEEK_SET) != 0) {
      return fail(TransferStatus::kVerifyFailed, Why("Cannot read", target));
    }
    for (;;) {
      const ssize_t got = ::read(fd, buffer_.data(), buffer_.size());
      if (got < 0 && errno == EINTR) {
        continue;
      }
      if (got < 0) {
        return fail(TransferStatus::kVerifyFailed,
                    Why("Cannot read back", target));
      }
      if (got == 0) {
        break;
      }
      copy_hash.Add(buffer_.data(), static_cast<std::size_t>(got));
      read_back += static_cast<std::uint64_t>(got);
    }
    if (read_back != copied || copy_hash.Value() != expected) {
      return fail(TransferStatus::kVerifyFailed,
                  "The copy " + target + " differs from its source.");
    }
    const int renamed = no_replace ? RenameNoReplace(temp, target)
                                   : ::rename(temp.c_str(), target.c_str());
    if (renamed != 0) {
      const bool exists = errno == EEXIST;
      std::string why = Why("Cannot name", target);
      return fail(exists ? TransferStatus::kTargetExists
                         : TransferStatus::kTargetFailed,
                  why);
    }
    SyncFolder(FolderOf(target));
    return true;
  }

  TransferResult Save(const std::string& content,
                      const std::string& target) override {
    TransferResult result;
    if (::access(target.c_str(), F_OK) == 0) {
      result.status = TransferStatus::kTargetExists;
      result.error = "The file " + target + " exists already.";
      return result;
    }
    std::string temp =
        FolderOf(target) + "/." + NameOf(target) + ".qbpd-XXXXXX";
    FileDescriptor out(::mkostemp(temp.data(), O_CLOEXEC));
    if (out.get() < 0) {
      result.status = TransferStatus::kTargetFailed;
      result.error = Why("Cannot write in", FolderOf(target));
      return result;
    }
    ::flock(out.get(), LOCK_EX);
    if (!WriteAll(out.get(), content.data(), content.size())) {
      ::unlink(temp.c_str());
      result.status = TransferStatus::kTargetFailed;
      result.error = Why("Cannot write", target);
      return result;
    }
    ::fchmod(out.get(), 0644);
    buffer_.resize(kChunk);
    ContentHash hash;
    hash.Add(content.data(), content.size());
    if (Finish(out.get(), temp, target, /*no_replace=*/true, content.size(),
               hash.Value(), result)) {
      result.bytes = content.size();
    }
    return result;
  }

  std::vector<unsigned char> buffer_;
};

}  // namespace

void ContentHash::Block(const unsigned char* block) {
  // Four lanes so that the multiplications overlap.
  for (int i = 0; i < 4; ++i) {
    std::uint64_t word = 0;
    std::memcpy(&word, block + 8 * i, sizeof(word));
    lane_[i] = Rotate(lane_[i] + word * kPrime2, 31) * kPrime1;
  }
}

void ContentHash::Add(const void* data, std::size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  length_ += size;
  if (tail_size_ > 0) {
    const std::size_t take = std::min(size, sizeof(tail_) - tail_size_);
    std::memcpy(tail_ + tail_size_, bytes, take);
    tail_size_ += take;
    bytes += take;
    size -= take;
    if (tail_size_ < sizeof(tail_)) {
      return;
    }
    Block(tail_);
    tail_size_ = 0;
  }
  while (size >= sizeof(tail_)) {
    Block(bytes);
    bytes += sizeof(tail_);
    size -= sizeof(tail_);
  }
  std::memcpy(tail_, bytes, size);
  tail_size_ = size;
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

std::unique_ptr<FileTransfer> MakeVerifiedFileTransfer() {
  return std::make_unique<VerifiedFileTransfer>();
}

}  // namespace qbpd
