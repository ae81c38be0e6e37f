#ifndef QBPD_PLATFORM_CONTENT_HASH_H_
#define QBPD_PLATFORM_CONTENT_HASH_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace qbpd {

// The content hash of the verification: 64 bits over the bytes, for
// comparing a file with its copy (not for security). The value does not
// depend on how the bytes are split between calls.
class ContentHash {
 public:
  void Add(const void* data, std::size_t size);
  std::uint64_t Value() const;

 private:
  std::uint64_t lane_[4] = {0x243F6A8885A308D3ULL, 0x13198A2E03707344ULL,
                            0xA4093822299F31D0ULL, 0x082EFA98EC4E6C89ULL};
  std::uint64_t length_ = 0;
  unsigned char tail_[32] = {};
  std::size_t tail_size_ = 0;
};

// The hash of a whole file; false when it can't be read to its end.
bool HashFile(const std::string& path,
              std::uint64_t& hash,
              std::uint64_t& size);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_CONTENT_HASH_H_
