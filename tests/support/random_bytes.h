#ifndef QBPD_TESTS_SUPPORT_RANDOM_BYTES_H_
#define QBPD_TESTS_SUPPORT_RANDOM_BYTES_H_

#include <cstddef>
#include <random>
#include <string>

namespace qbpd::testing {

// `size` bytes as incompressible as a photo's, the same for the same seed.
inline std::string RandomBytes(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(size, '\0');
  for (char& c : bytes) {
    c = static_cast<char>(random() & 0xff);
  }
  return bytes;
}

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_RANDOM_BYTES_H_
