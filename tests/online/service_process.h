#ifndef QBPD_TESTS_ONLINE_SERVICE_PROCESS_H_
#define QBPD_TESTS_ONLINE_SERVICE_PROCESS_H_

#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace qbpd::testing {

// The real qbpd-service program as a child process, on a free loopback port
// with its data in `data_dir`. The integration tests and the benchmarks run
// the client against it.
class ServiceProcess {
 public:
  // Starts `program --port 0 --data-dir data_dir` with `extra_arguments`
  // after them, and waits (at most a few seconds) for the line that names
  // the port and then for the first answer to a request. When that fails,
  // ok() is false and error() says why; the child is then gone.
  ServiceProcess(const std::string& program,
                 const std::filesystem::path& data_dir,
                 const std::vector<std::string>& extra_arguments = {});
  // Kills a child that is still running.
  ~ServiceProcess();
  ServiceProcess(const ServiceProcess&) = delete;
  ServiceProcess& operator=(const ServiceProcess&) = delete;

  bool ok() const { return port_ > 0 && pid_ > 0; }
  const std::string& error() const { return error_; }
  pid_t pid() const { return pid_; }
  int port() const { return port_; }
  // "http://127.0.0.1:<port>": the site address of uploads and pages;
  // "https://localhost:<port>" when the service was given --cert.
  std::string base() const;
  // base() + "/api": the site of the data operations.
  std::string site() const;
  // The password of the demonstration account (--seed-demo) as the service
  // wrote it into its data folder; "" when there is none.
  std::string demo_password() const;

  // Asks the service to stop with SIGTERM and waits for it; returns its exit
  // status, or -1 when it ended by a signal or could not be waited for.
  int Terminate();
  // Freezes the service (SIGSTOP): connections are still taken by the
  // system, but nothing answers.
  bool Freeze();
  // Ends the service at once (SIGKILL), as a crash would.
  void Kill();

 private:
  // Reads the first line of standard output, waiting at most `ms`.
  std::string ReadFirstLine(int ms);
  // Waits until an HTTP request gets an answer, at most `ms`.
  bool WaitForFirstAnswer(int ms);
  int Reap(bool must_block);

  std::filesystem::path data_dir_;
  bool tls_ = false;
  pid_t pid_ = -1;
  int stdout_fd_ = -1;
  int port_ = 0;
  std::string error_;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_ONLINE_SERVICE_PROCESS_H_
