#include "app/driver/runner.h"

#include "online/scripted_service_client.h"
#include "platform/forms/controls.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/scripted_host.h"
#include "platform/launcher.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <istream>
#include <ostream>
#include <sys/wait.h>
#include <unistd.h>

namespace qbpd::script {
namespace {

namespace fs = std::filesystem;

// Passes every call on to the run's launcher and tells the script about it:
// the transcript shows what the program asked to open, and the targets are
// kept for `expect launched`.
class TranscribingLauncher final : public Launcher {
 public:
  TranscribingLauncher(
      std::unique_ptr<Launcher> inner,
      std::function<void(const std::string&, const LaunchResult&)> seen)
      : inner_(std::move(inner)), seen_(std::move(seen)) {}

  LaunchResult OpenDocument(const std::string& target) override {
    LaunchResult result = inner_->OpenDocument(target);
    seen_(target, result);
    return result;
  }

 private:
  std::unique_ptr<Launcher> inner_;
  std::function<void(const std::string&, const LaunchResult&)> seen_;
};

// Starts the program a second time, as another process, and waits for it to
// end.
void RunSecondStart(const std::string& cmd) {
  std::error_code error;
  std::string self = fs::read_symlink("/proc/self/exe", error).string();
  pid_t pid = fork();
  if (pid == 0) {
    execl(self.c_str(), self.c_str(), "--second-start", cmd.c_str(),
          static_cast<char*>(nullptr));
    _exit(127);
  }
  int status = 0;
  if (pid < 0 || waitpid(pid, &status, 0) < 0 || !WIFEXITED(status) ||
      WEXITSTATUS(status) != 0) {
    throw RuntimeError(kErrInvalidCall, "the second start failed");
  }
}

}  // namespace

Runner::Runner(const ScriptOptions& options,
               const Application::Catalog& catalog,
               std::ostream& out)
    : options_(options), out_(out) {
  auto host = std::make_unique<ScriptedHost>();
  host_ = host.get();
  PlatformServices services =
      options.make_services ? options.make_services() : PlatformServices{};
  if (!services.launcher) {
    services.launcher = MakeRecordingLauncher();
  }
  services.launcher = std::make_unique<TranscribingLauncher>(
      std::move(services.launcher),
      [this](const std::string& target, const LaunchResult& result) {
        launched_.push_back(target);
        Report("launcher opens " + Quote(target) +
               (result.ok ? "" : ", which fails: " + result.error));
      });
  WireService(services);
  app_ = std::make_unique<Application>(std::move(host), std::move(services),
                                       catalog);
  host_->SetIdleHook([this] {
    app_->PollInstanceRequests();
    app_->forms().CollectGarbage();
    ReportServiceCalls();
  });
  host_->SetTranscript([this](const std::string& line) { Report(line); });
}

Runner::~Runner() = default;

void Runner::SetVariable(const std::string& name, const std::string& value) {
  variables_[name] = value;
}

void Runner::Report(const std::string& line) const {
  out_ << "        " << line << "\n";
}

std::vector<Step> Runner::Parse(std::istream& in) {
  std::vector<Step> steps;
  std::string line;
  int number = 0;
  while (std::getline(in, line)) {
    ++number;
    if (!line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    try {
      std::vector<Token> tokens = Tokenize(line);
      if (tokens.empty()) {
        continue;
      }
      for (Token& t : tokens) {
        t.text = Expand(t.text);
      }
      Step step = ParseStep(tokens);
      step.line = number;
      size_t first = line.find_first_not_of(" \t");
      step.text = line.substr(first);
      steps.push_back(std::move(step));
    } catch (const ScriptSyntaxError& e) {
      throw ScriptSyntaxError("line " + std::to_string(number) + ": " +
                              e.what());
    }
  }
  return steps;
}

ScriptResult Runner::Run(std::vector<Step> steps) {
  ScriptResult result;
  for (Step& s : steps) {
    std::string label = "line " + std::to_string(s.line) + ": " + s.text;
    int line = s.line;
    std::string text = s.text;
    auto announce = [this, line, text] {
      current_line_ = line;
      ++steps_run_;
      out_ << (line < 10    ? "   "
               : line < 100 ? "  "
                            : " ")
           << line << "  " << text << "\n";
    };
    switch (s.mode) {
      case Step::Mode::kIdle:
      case Step::Mode::kInside: {
        auto run = [announce, fn = std::move(s.run)] {
          announce();
          fn();
        };
        if (s.mode == Step::Mode::kIdle) {
          host_->Queue(label, run);
        } else {
          host_->QueueInside(label, run, s.skip_pumps);
        }
        break;
      }
      case Step::Mode::kMsgBox:
        host_->QueueMsgBoxAnswer(
            label, [announce, fn = std::move(s.answer)](const MsgBoxCall& c) {
              announce();
              return fn(c);
            });
        break;
      case Step::Mode::kDialog:
        host_->QueueDialogAnswer(label, [announce, fn = std::move(s.dialog)](
                                            const std::string& title) {
          announce();
          return fn(title);
        });
        break;
      case Step::Mode::kPopup:
        host_->QueuePopupPick(label,
                              [announce, fn = std::move(s.pick)](Menu& m) {
                                announce();
                                fn(m);
                              });
        break;
    }
  }
  try {
    host_->Run();
    result.exit_code = 0;
  } catch (const HostAbort& e) {
    result.exit_code = 1;
    result.failure =
        "line " + std::to_string(current_line_) + ": " + e.message();
  } catch (const std::exception& e) {
    result.exit_code = 1;
    result.failure = "line " + std::to_string(current_line_) + ": " + e.what();
  }
  result.steps_run = steps_run_;
  return result;
}

std::string Runner::Expand(const std::string& text) const {
  std::string out;
  size_t i = 0;
  while (i < text.size()) {
    if (text[i] == '$' && i + 1 < text.size() && text[i + 1] == '{') {
      size_t close = text.find('}', i);
      if (close == std::string::npos) {
        throw ScriptSyntaxError("\"${\" without \"}\"");
      }
      std::string name = text.substr(i + 2, close - i - 2);
      auto it = variables_.find(name);
      if (it != variables_.end()) {
        out += it->second;
      } else if (const char* env = std::getenv(name.c_str())) {
        out += env;
      } else {
        throw ScriptSyntaxError("unknown variable ${" + name + "}");
      }
      i = close + 1;
    } else {
      out += text[i++];
    }
  }
  return out;
}

Form& Runner::FormNamed(const std::string& name) const {
  Form* f = app_->forms().Find(name);
  if (f == nullptr) {
    if (!app_->forms().IsRegistered(name)) {
      throw HostAbort("The program has no form " + name);
    }
    throw HostAbort("Form " + name + " is not loaded");
  }
  return *f;
}

Control& Runner::ControlOf(const Target& t) const {
  Form& f = FormNamed(t.form);
  Control* c = f.FindControl(t.control, t.index);
  if (c == nullptr) {
    throw HostAbort("Form " + t.form + " has no control " + t.control +
                    (t.index >= 0 ? "(" + std::to_string(t.index) + ")" : ""));
  }
  return *c;
}

namespace {

HostAbort NoPropertyOrField(const Target& t) {
  return HostAbort("Form " + t.form + " has no property or named field " +
                   t.property);
}

}  // namespace

Value Runner::ReadTarget(const Target& t) const {
  if (t.control.empty()) {
    Form& f = FormNamed(t.form);
    if (f.HasField(t.property)) {
      return f.FieldValue(t.property);
    }
    try {
      return f.Property(t.property);
    } catch (const RuntimeError&) {
      throw NoPropertyOrField(t);
    }
  }
  try {
    return ControlOf(t).Property(t.property, t.item);
  } catch (const RuntimeError& e) {
    throw HostAbort(e.what());
  }
}

void Runner::WriteTarget(const Target& t, const Value& v) const {
  if (!t.control.empty()) {
    ControlOf(t).SetProperty(t.property, v, t.item);
    return;
  }
  Form& f = FormNamed(t.form);
  if (f.HasField(t.property)) {
    f.SetFieldValue(t.property, v);
    return;
  }
  try {
    f.SetProperty(t.property, v);
  } catch (const RuntimeError&) {
    throw NoPropertyOrField(t);
  }
}

Step Runner::ParseStep(std::vector<Token> t) {
  const std::string verb = t[0].text;
  int skip_pumps = 0;
  if (verb == "inside" && t.size() >= 3 && t[1].text == "pump" &&
      !t[2].text.empty() && t[2].text.back() == ':') {
    // "inside pump N: STEP": the Nth pump of the step before takes it.
    skip_pumps = std::max(0, std::atoi(t[2].text.c_str()) - 1);
    t.erase(t.begin(), t.begin() + 2);
    t[0].text = "inside:";
  }
  if (t[0].text == "inside:") {
    t.erase(t.begin());
    if (t.empty()) {
      throw ScriptSyntaxError("expected an action after inside:");
    }
    Step inner = ParseStep(std::move(t));
    if (inner.mode != Step::Mode::kIdle) {
      throw ScriptSyntaxError("only a user action can run inside a pump");
    }
    inner.mode = Step::Mode::kInside;
    inner.skip_pumps = skip_pumps;
    return inner;
  }
  if (verb == "expect") {
    return ParseExpect(t);
  }
  for (auto parse : {&Runner::ParseProgramStep, &Runner::ParseInputStep,
                     &Runner::ParseMouseStep, &Runner::ParseAnswerStep,
                     &Runner::ParseFileStep, &Runner::ParseServiceStep}) {
    if (std::optional<Step> step = (this->*parse)(t)) {
      return std::move(*step);
    }
  }
  throw ScriptSyntaxError("unknown step \"" + verb + "\"");
}

// The program's start, its settings and session values, and time.
std::optional<Step> Runner::ParseProgramStep(const std::vector<Token>& t) {
  const std::string& verb = t[0].text;
  Step s;
  if (verb == "start") {
    if (t.size() > 2) {
      throw ScriptSyntaxError("expected: start [\"command line\"]");
    }
    std::string cmd = t.size() == 2 ? t[1].text : "";
    s.run = [this, cmd] { app_->Start(cmd); };
  } else if (verb == "second") {
    if (t.size() < 2 || t.size() > 3 || t[1].text != "start") {
      throw ScriptSyntaxError("expected: second start [\"command line\"]");
    }
    std::string cmd = t.size() == 3 ? t[2].text : "";
    s.run = [cmd] { RunSecondStart(cmd); };
  } else if (verb == "show") {
    if (t.size() < 2 || t.size() > 3 ||
        (t.size() == 3 && t[2].text != "modal")) {
      throw ScriptSyntaxError("expected: show FORM [modal]");
    }
    std::string name = t[1].text;
    bool modal = t.size() == 3;
    s.run = [this, name, modal] { app_->forms().Get(name).Show(modal); };
  } else if (verb == "setting") {
    if (t.size() != 5 || t[3].text != "=") {
      throw ScriptSyntaxError("expected: setting \"KEY\" NAME = \"VALUE\"");
    }
    std::string key = t[1].text;
    std::string name = t[2].text;
    std::string value = t[4].text;
    s.run = [this, key, name, value] {
      if (!app_->settings().Write(key, name, value)) {
        throw HostAbort("The settings store refused " + key + " " + name);
      }
    };
  } else if (verb == "wait") {
    if (t.size() != 2 && t.size() != 3) {
      throw ScriptSyntaxError("expected: wait N [ms|s]");
    }
    long long ms = Number(t[1]);
    if (t.size() == 3) {
      if (t[2].text == "s") {
        ms *= 1000;
      } else if (t[2].text != "ms") {
        throw ScriptSyntaxError("expected ms or s after the number");
      }
    }
    s.run = [this, ms] { host_->Wait(ms); };
  } else if (verb == "echo") {
    Require(t, 2, "echo \"text\"");
    std::string text = t[1].text;
    s.run = [this, text] { Report(text); };
  } else if (verb == "set" && t.size() >= 2 && t[1].text == "session") {
    if (t.size() != 5 || t[3].text != "=") {
      throw ScriptSyntaxError("expected: set session NAME = VALUE");
    }
    std::string name = t[2].text;
    std::string value = t[4].text;
    s.run = [this, name, value] {
      try {
        app_->session().Set(name, Value(value));
      } catch (const RuntimeError& e) {
        throw HostAbort(e.what());
      }
    };
  } else {
    return std::nullopt;
  }
  return s;
}

}  // namespace qbpd::script
