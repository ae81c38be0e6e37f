#ifndef QBPD_PLATFORM_INTERNET_CHECK_H_
#define QBPD_PLATFORM_INTERNET_CHECK_H_

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace qbpd {

// The host and port of an address such as "http://example.com",
// "https://[::1]:8443/path" or "127.0.0.1:8931". The port defaults to 80, or
// 443 for "https". Nothing for text without a host or with a bad port.
struct HostAndPort {
  std::string host;
  int port = 0;
};
std::optional<HostAndPort> ParseHostAndPort(std::string_view address);

// Whether the service at `address` (the site address setting) can be reached
// now: the name is looked up and a TCP connection to host and port is opened
// and closed again. Answers within `bound` (name lookup included); a slow or
// failed lookup, a refused or silent port, or an address without a host all
// give false.
bool CheckInternetConnection(
    const std::string& address,
    std::chrono::milliseconds bound = std::chrono::milliseconds(2000));

}  // namespace qbpd

#endif  // QBPD_PLATFORM_INTERNET_CHECK_H_
