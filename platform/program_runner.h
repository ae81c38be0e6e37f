#ifndef QBPD_PLATFORM_PROGRAM_RUNNER_H_
#define QBPD_PLATFORM_PROGRAM_RUNNER_H_

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qbpd {

// What a finished outside program left.
struct ProgramResult {
  // False when the program could not be started (not found, not allowed);
  // nothing else is then set.
  bool started = false;
  // Its exit status; -1 when it was killed (by a signal, or for taking too
  // long).
  int exit_code = -1;
  // What it wrote on its standard output (the first megabyte).
  std::string output;
  bool ok() const { return started && exit_code == 0; }
};

// Runs outside programs (the desktop's settings tools) and waits for them.
// A program is found on PATH and started without a shell, so no argument is
// ever read as shell syntax; its standard input is empty.
class ProgramRunner {
 public:
  virtual ~ProgramRunner() = default;
  [[nodiscard]] virtual ProgramResult Run(
      const std::vector<std::string>& argv) = 0;
  // Whether `program` is found on PATH as an executable file.
  virtual bool Has(const std::string& program) = 0;
};

// The real runner: posix_spawnp. `extra_environment` is added to (or
// replaces values of) the process's own environment for every program run.
// A program still running after `timeout_ms` is killed and reported as
// killed, so a hung tool never hangs the program.
std::unique_ptr<ProgramRunner> MakeSpawnRunner(
    std::map<std::string, std::string> extra_environment = {},
    int timeout_ms = 10000);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_PROGRAM_RUNNER_H_
