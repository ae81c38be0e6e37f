#ifndef QBPD_TESTS_UI_X11_X11_SERVER_H_
#define QBPD_TESTS_UI_X11_X11_SERVER_H_

#include <string>

namespace qbpd::testing {

// A private X server (Xvfb) for the tests of this process, started at the
// first call and stopped when the process ends. Its display name (":3"), or
// "" when Xvfb is missing or didn't start; `why` then says what happened.
std::string PrivateXDisplay(std::string* why);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_UI_X11_X11_SERVER_H_
