#ifndef QBPD_APP_DRIVER_SCRIPT_RUNNER_H_
#define QBPD_APP_DRIVER_SCRIPT_RUNNER_H_

#include "core/application.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace qbpd {

// Runs a script of user actions and expectations against the program on the
// scripted host (the language is described in docs/scripting.md).
struct ScriptOptions {
  std::string script_path;
  // Folder for ${TMP}; "" makes a private one and removes it afterwards.
  std::string temp_dir;
  bool keep_temp = false;
  // Makes the platform services of the run, after the run's places are set;
  // null gives a run with settings in memory and nothing else.
  std::function<PlatformServices()> make_services;
  // Points HOME and the XDG folders into the run's temporary folder, so that
  // a script never touches the user's own settings, cache or desktop.
  bool private_places = true;
};

struct ScriptResult {
  int exit_code = 0;  // 0 passed, 1 an expectation failed, 2 a bad script
  int steps_run = 0;
  std::string failure;  // "line 7: ..." when exit_code != 0
};

// Parses and runs the script, writing the transcript to `out`. `catalog`
// declares the program's forms (the real program, or a test's own).
ScriptResult RunScript(const ScriptOptions& options,
                       const Application::Catalog& catalog,
                       std::ostream& out);

// The driver's command line: `qbpd-script [--tmp DIR] [--keep-tmp]
// [--user-places] SCRIPT`, or `qbpd-script --second-start "CMD"`, which
// starts the program once with that command line and returns when it is
// idle (what a second start of the program does). Returns the process exit
// code.
int ScriptMain(int argc,
               char** argv,
               const Application::Catalog& catalog,
               std::function<PlatformServices()> make_services = nullptr);

// Describes every control kind and its properties, for the docs.
void DescribeControls(std::ostream& out);

}  // namespace qbpd

#endif  // QBPD_APP_DRIVER_SCRIPT_RUNNER_H_
