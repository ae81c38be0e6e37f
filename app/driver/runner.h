#ifndef QBPD_APP_DRIVER_RUNNER_H_
#define QBPD_APP_DRIVER_RUNNER_H_

#include "app/driver/script_runner.h"
#include "app/driver/script_syntax.h"
#include "platform/forms/form.h"
#include "platform/forms/host.h"
#include "platform/forms/value.h"
#include "platform/loopback_port.h"

#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qbpd {

class Control;
class Menu;
class ScriptedHost;
class ScriptedServiceClient;

namespace script {

// One parsed line: what it does, and when the host takes it.
struct Step {
  enum class Mode { kIdle, kInside, kMsgBox, kDialog, kPopup };
  int line = 0;
  std::string text;
  Mode mode = Mode::kIdle;
  int skip_pumps = 0;  // "inside pump N:" lets N - 1 pumps go by
  std::function<void()> run;
  std::function<int(const MsgBoxCall&)> answer;
  std::function<std::optional<std::string>(const std::string&)> dialog;
  std::function<void(Menu&)> pick;
};

// One run of a script: parses every line first, then queues the steps on a
// scripted host and runs them against the program. The verbs are parsed by
// concern, each in its own file: the program's start and time (runner.cpp),
// what the user does and answers (input_steps.cpp, mouse_steps.cpp), files
// acted on behind the program's back (file_steps.cpp) and expectations
// (expect_steps.cpp).
class Runner {
 public:
  Runner(const ScriptOptions& options,
         const Application::Catalog& catalog,
         std::ostream& out);
  ~Runner();

  void SetVariable(const std::string& name, const std::string& value);
  std::vector<Step> Parse(std::istream& in);
  ScriptResult Run(std::vector<Step> steps);

 private:
  std::string Expand(const std::string& text) const;

  // --- resolving names at run time ---------------------------------------
  Form& FormNamed(const std::string& name) const;
  Control& ControlOf(const Target& t) const;
  // A control's property, a form's own property or one of its named fields.
  Value ReadTarget(const Target& t) const;
  void WriteTarget(const Target& t, const Value& v) const;
  // Prints a line under the step in the transcript.
  void Report(const std::string& line) const;

  // --- the verbs, by concern; each returns nothing when the verb is not
  // its own ---------------------------------------------------------------
  Step ParseStep(std::vector<Token> t);
  std::optional<Step> ParseProgramStep(const std::vector<Token>& t);
  std::optional<Step> ParseInputStep(const std::vector<Token>& t);
  std::optional<Step> ParseAnswerStep(const std::vector<Token>& t);
  std::optional<Step> ParseMouseStep(const std::vector<Token>& t);
  std::optional<Step> ParseFileStep(const std::vector<Token>& t);
  // The online service of the run (service_steps.cpp): the scripted double
  // and its answers, or the real service on a free port.
  std::optional<Step> ParseServiceStep(const std::vector<Token>& t);
  Step ParseExpectService(const std::vector<Token>& t);
  // Wires the run's service client and connection check (constructor).
  void WireService(PlatformServices& services);
  // Prints the double's calls made since the last report.
  void ReportServiceCalls();
  Step ParseExpect(const std::vector<Token>& t);
  Step ParseExpectMessage(const std::vector<Token>& t);
  Step ParseExpectImage(const std::vector<Token>& t);
  Step ParseExpectLaunched(const std::vector<Token>& t);

  const ScriptOptions& options_;
  std::ostream& out_;
  ScriptedHost* host_ = nullptr;
  std::unique_ptr<Application> app_;
  // Every target the program asked the launcher to open, in order.
  std::vector<std::string> launched_;
  std::map<std::string, std::string> variables_;
  int current_line_ = 0;
  int steps_run_ = 0;
  // The scripted double, used once the script says `service double`.
  std::unique_ptr<ScriptedServiceClient> double_;
  bool use_double_ = false;
  bool connection_up_ = true;
  // The loopback port of `service real`, held until the run ends.
  std::unique_ptr<HeldLoopbackPort> held_port_;
  size_t calls_reported_ = 0;
};

// Compares a value as an expectation does; a HostAbort names both values.
void Compare(const std::string& what,
             const Value& actual,
             const std::string& op,
             const std::string& expected);

}  // namespace script
}  // namespace qbpd

#endif  // QBPD_APP_DRIVER_RUNNER_H_
