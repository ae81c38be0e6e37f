#ifndef QBPD_UI_QT_LOCAL_SERVICE_H_
#define QBPD_UI_QT_LOCAL_SERVICE_H_

#include <optional>
#include <string>

namespace qbpd {

// The address the program talks to when the settings name none.
inline constexpr const char* kDefaultServiceAddress = "http://127.0.0.1:8931";

// The port of `address` (the IP or URL setting) when it names this machine
// (a loopback address, "localhost" or this host's name); nothing otherwise,
// or for an address that can't be read.
std::optional<int> LocalServicePort(const std::string& address);

// Whether something accepts connections on 127.0.0.1 at `port` now.
bool ServiceAnswers(int port);

struct ServiceLaunch {
  bool started = false;
  int pid = -1;
  std::string error;  // why it did not start, in words a person can act on
};

// Starts `program` (the reference service) listening on `port` with its data
// under `data_dir`, detached from this process (a session of its own, stdin
// and stdout from and to /dev/null, stderr to `data_dir`/service.log) and
// without a shell. A data folder made now gets the demonstration account
// (--seed-demo). Waits up to `wait_ms` for the port to answer.
ServiceLaunch StartLocalService(const std::string& program,
                                int port,
                                const std::string& data_dir,
                                int wait_ms = 3000);

// What the desktop program does at its start: when `address` names this
// machine and nothing answers there, starts the service found beside the
// executable (`program_folder`/qbpd-service) with its data under
// `data_home`/service. Returns what it did; nothing when nothing was needed.
std::optional<ServiceLaunch> EnsureLocalService(
    const std::string& address,
    const std::string& program_folder,
    const std::string& data_home);

}  // namespace qbpd

#endif  // QBPD_UI_QT_LOCAL_SERVICE_H_
