#ifndef QBPD_PLATFORM_LAUNCHER_H_
#define QBPD_PLATFORM_LAUNCHER_H_

#include <memory>
#include <string>
#include <vector>

namespace qbpd {

// What came of asking for a document to be opened.
struct LaunchResult {
  bool ok = false;
  // Why it failed, in words a person can act on; "" on success.
  std::string error;
  // The process started for it; -1 when none was (a recording launcher, a
  // failure).
  int pid = -1;
};

// Opens documents and web addresses in the user's own programs (the help
// pages, the service's pages in a browser). It never waits for the program
// it starts, and never goes through a shell: the target reaches the opener
// as one argument, whatever characters it holds.
class Launcher {
 public:
  virtual ~Launcher() = default;

  // Opens `target`, a file path or a URL. Returns at once; a target that the
  // opener then fails to show is not reported.
  [[nodiscard]] virtual LaunchResult OpenDocument(
      const std::string& target) = 0;
};

// The desktop's opener: starts `program` (found on PATH; "xdg-open" unless
// told otherwise) with the target as its one argument, stdin from
// /dev/null, in a process group of its own. Children that have ended are
// reaped at the next call and when the launcher goes; a running one is left
// to run.
std::unique_ptr<Launcher> MakeXdgLauncher(std::string program = "xdg-open");

// A launcher for runs without a desktop (the headless driver, tests): it
// opens nothing and keeps every target asked for, in order.
class RecordingLauncher final : public Launcher {
 public:
  [[nodiscard]] LaunchResult OpenDocument(const std::string& target) override;
  const std::vector<std::string>& Opened() const { return opened_; }

 private:
  std::vector<std::string> opened_;
};

std::unique_ptr<RecordingLauncher> MakeRecordingLauncher();

}  // namespace qbpd

#endif  // QBPD_PLATFORM_LAUNCHER_H_
