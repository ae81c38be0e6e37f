#include "platform/content_hash.h"

#include "platform/atomic_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

constexpr std::uint64_t kPrime1 = 0x9E3779B185EBCA87ULL;
constexpr std::uint64_t kPrime2 = 0xC2B2AE3D27D4EB4FULL;
constexpr std::size_t kHashChunk = 256 << 10;

std::uint64_t Rotate(std::uint64_t v, int r) {
  return (v << r) | (v >> (64 - r));
}

// The four lanes as scalars of their own: the compiler holds them in
// registers, where an array indexed in a loop stays in memory and every mix
// waits for a store and a load.
struct Lanes {
  std::uint64_t a, b, c, d;
};

inline std::uint64_t Word(const unsigned char* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof(word));
  return word;
}

inline std::uint64_t Mix(std::uint64_t lane, std::uint64_t word) {
  return Rotate(lane + word * kPrime2, 31) * kPrime1;
}

// One 32-byte block into the four lanes.
inline void MixBlock(Lanes& lanes, const unsigned char* block) {
  lanes.a = Mix(lanes.a, Word(block));
  lanes.b = Mix(lanes.b, Word(block + 8));
  lanes.c = Mix(lanes.c, Word(block + 16));
  lanes.d = Mix(lanes.d, Word(block + 24));
}

}  // namespace

void ContentHash::Add(const void* data, std::size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  length_ += size;
  Lanes lanes{lane_[0], lane_[1], lane_[2], lane_[3]};
  if (tail_size_ > 0) {
    const std::size_t take = std::min(size, sizeof(tail_) - tail_size_);
    std::memcpy(tail_ + tail_size_, bytes, take);
    tail_size_ += take;
    bytes += take;
    size -= take;
    if (tail_size_ < sizeof(tail_)) {
      return;
    }
    MixBlock(lanes, tail_);
    tail_size_ = 0;
  }
  while (size >= sizeof(tail_)) {
    MixBlock(lanes, bytes);
    bytes += sizeof(tail_);
    size -= sizeof(tail_);
  }
  std::memcpy(tail_, bytes, size);
  tail_size_ = size;
  lane_[0] = lanes.a;
  lane_[1] = lanes.b;
  lane_[2] = lanes.c;
  lane_[3] = lanes.d;
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
  std::vector<unsigned char> buffer(kHashChunk);
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

}  // namespace qbpd
