#ifndef QBPD_TESTS_SUPPORT_FAKE_PROGRAM_RUNNER_H_
#define QBPD_TESTS_SUPPORT_FAKE_PROGRAM_RUNNER_H_

#include "platform/program_runner.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace qbpd::testing {

// A ProgramRunner that starts nothing: it records every command line and
// answers from what the test told it. By default every program is there and
// succeeds with no output.
class FakeProgramRunner : public ProgramRunner {
 public:
  ProgramResult Run(const std::vector<std::string>& argv) override;
  bool Has(const std::string& program) override;

  // Every command line run, in order.
  const std::vector<std::vector<std::string>>& Calls() const { return calls_; }
  // The command lines joined by blanks, one a line, for comparing.
  std::string Transcript() const;

  // The program is not installed: it can't be started and Has says no.
  void Remove(const std::string& program) { missing_.insert(program); }
  // Runs whose command line starts with `prefix` (joined by blanks) exit
  // with `exit_code` and print `output`. Later answers win.
  void Answer(const std::string& prefix,
              int exit_code,
              std::string output = "");

 private:
  struct Reply {
    std::string prefix;
    int exit_code;
    std::string output;
  };
  std::vector<std::vector<std::string>> calls_;
  std::set<std::string> missing_;
  std::vector<Reply> replies_;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAKE_PROGRAM_RUNNER_H_
