#ifndef QBPD_TESTS_APP_DRIVER_SCRIPT_RUN_H_
#define QBPD_TESTS_APP_DRIVER_SCRIPT_RUN_H_

#include "app/driver/script_runner.h"
#include "tests/support/fixture_program.h"
#include "tests/support/temp_dir.h"

#include <functional>
#include <sstream>
#include <string>

namespace qbpd::testing {

struct ScriptRun {
  ScriptResult result;
  std::string transcript;
};

// Runs a script against the fixture program, with ${TMP} in `dir` when one
// is given.
inline ScriptRun RunText(
    const std::string& script,
    std::function<PlatformServices()> make_services = nullptr,
    const TempDir* dir = nullptr) {
  TempDir own;
  const TempDir& where = dir != nullptr ? *dir : own;
  ScriptOptions options;
  options.script_path = where.WriteFile("test.qbs", script).string();
  options.temp_dir = (where.path() / "tmp").string();
  std::filesystem::create_directories(options.temp_dir);
  options.make_services = std::move(make_services);
  std::ostringstream out;
  ScriptRun run;
  run.result = RunScript(options, RegisterFixtureProgram, out);
  run.transcript = out.str();
  return run;
}

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_APP_DRIVER_SCRIPT_RUN_H_
