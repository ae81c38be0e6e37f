#include "tests/support/fake_program_runner.h"

namespace qbpd::testing {
namespace {

std::string Joined(const std::vector<std::string>& argv) {
  std::string line;
  for (const std::string& a : argv) {
    line += (line.empty() ? "" : " ") + a;
  }
  return line;
}

}  // namespace

ProgramResult FakeProgramRunner::Run(const std::vector<std::string>& argv) {
  calls_.push_back(argv);
  ProgramResult result;
  if (argv.empty() || missing_.count(argv[0]) != 0) {
    return result;
  }
  result.started = true;
  result.exit_code = 0;
  const std::string line = Joined(argv);
  for (auto it = replies_.rbegin(); it != replies_.rend(); ++it) {
    if (line.rfind(it->prefix, 0) == 0) {
      result.exit_code = it->exit_code;
      result.output = it->output;
      break;
    }
  }
  return result;
}

bool FakeProgramRunner::Has(const std::string& program) {
  return missing_.count(program) == 0;
}

std::string FakeProgramRunner::Transcript() const {
  std::string text;
  for (const auto& call : calls_) {
    text += Joined(call) + "\n";
  }
  return text;
}

void FakeProgramRunner::Answer(const std::string& prefix,
                               int exit_code,
                               std::string output) {
  replies_.push_back({prefix, exit_code, std::move(output)});
}

}  // namespace qbpd::testing
