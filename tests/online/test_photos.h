#ifndef QBPD_TESTS_ONLINE_TEST_PHOTOS_H_
#define QBPD_TESTS_ONLINE_TEST_PHOTOS_H_

#include <cstdint>
#include <string>

namespace qbpd::testing {

// A real baseline JPEG of `width` by `height` pixels: a colour gradient under
// noise drawn from `seed`, so that photos of different seeds differ and the
// file is about as large as a camera's at the same quality. Empty when the
// encoder fails.
std::string MakeJpeg(int width, int height, std::uint32_t seed, int quality);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_ONLINE_TEST_PHOTOS_H_
