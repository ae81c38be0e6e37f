#include "app/driver/script_runner.h"

#include "platform/forms/controls.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/scripted_host.h"
#include "platform/forms/user_input.h"
#include "platform/image_operations.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

// A script line that can't be understood; reported with its line number
// before anything runs.
class ScriptSyntaxError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Token {
  std::string text;
  bool quoted = false;
};

std::vector<Token> Tokenize(const std::string& line) {
  std::vector<Token> out;
  size_t i = 0;
  while (i < line.size()) {
    char c = line[i];
    if (std::isspace(static_cast<unsigned char>(c))) {
      ++i;
      continue;
    }
    if (c == '#' &&
        (i == 0 || std::isspace(static_cast<unsigned char>(line[i - 1]))) &&
        (i + 1 >= line.size() ||
         !std::isdigit(static_cast<unsigned char>(line[i + 1])))) {
      break;  // a comment to the end of the line
    }
    if (c == '"') {
      std::string s;
      ++i;
      bool closed = false;
      while (i < line.size()) {
        char d = line[i++];
        if (d == '"') {
          closed = true;
          break;
        }
        if (d == '\\' && i < line.size()) {
          // Only the escapes below; any other backslash stands for itself,
          // as in the settings' key paths.
          char e = line[i++];
          switch (e) {
            case 'n':
              s += '\n';
              break;
            case 'r':
              s += '\r';
              break;
            case 't':
              s += '\t';
              break;
            case '"':
            case '\\':
              s += e;
              break;
            default:
              s += '\\';
              s += e;
          }
        } else {
          s += d;
        }
      }
      if (!closed) {
        throw ScriptSyntaxError("a text is not closed with \"");
      }
      out.push_back({s, true});
      continue;
    }
    if (c == '=' || (c == '!' && i + 1 < line.size() && line[i + 1] == '=')) {
      out.push_back({c == '=' ? "=" : "!=", false});
      i += c == '=' ? 1 : 2;
      continue;
    }
    size_t start = i;
    while (i < line.size() &&
           !std::isspace(static_cast<unsigned char>(line[i])) &&
           line[i] != '=' && line[i] != '"' &&
           !(line[i] == '!' && i + 1 < line.size() && line[i + 1] == '=')) {
      ++i;
    }
    out.push_back({line.substr(start, i - start), false});
  }
  return out;
}

// FORM[.CONTROL[(INDEX)]][.PROPERTY[(ITEM)]]
struct Target {
  std::string form;
  std::string control;
  int index = -1;
  std::string property;
  int item = -1;
  std::string text;  // as written
};

// Splits "name(3)" into name and 3.
std::pair<std::string, int> NameAndIndex(const std::string& part) {
  size_t open = part.find('(');
  if (open == std::string::npos) {
    return {part, -1};
  }
  if (part.back() != ')') {
    throw ScriptSyntaxError("bad index in \"" + part + "\"");
  }
  std::string number = part.substr(open + 1, part.size() - open - 2);
  char* end = nullptr;
  long n = std::strtol(number.c_str(), &end, 10);
  if (number.empty() || *end != '\0') {
    throw ScriptSyntaxError("bad index in \"" + part + "\"");
  }
  return {part.substr(0, open), static_cast<int>(n)};
}

Target ParseTarget(const std::string& text, bool with_property) {
  std::vector<std::string> parts;
  std::string part;
  int depth = 0;
  for (char c : text) {
    if (c == '(') {
      ++depth;
    } else if (c == ')') {
      --depth;
    }
    if (c == '.' && depth == 0) {
      parts.push_back(part);
      part.clear();
    } else {
      part += c;
    }
  }
  parts.push_back(part);
  Target t;
  t.text = text;
  if (parts.empty() || parts[0].empty()) {
    throw ScriptSyntaxError("a form name is missing in \"" + text + "\"");
  }
  t.form = parts[0];
  size_t next = 1;
  size_t controls = parts.size() - 1 - (with_property ? 1 : 0);
  if (controls > 1) {
    throw ScriptSyntaxError("too many parts in \"" + text + "\"");
  }
  if (controls == 1) {
    auto [name, index] = NameAndIndex(parts[next++]);
    t.control = name;
    t.index = index;
  }
  if (with_property) {
    if (next >= parts.size()) {
      throw ScriptSyntaxError("a property is missing in \"" + text + "\"");
    }
    auto [name, item] = NameAndIndex(parts[next]);
    t.property = name;
    t.item = item;
  }
  return t;
}

int ButtonId(const std::string& word) {
  std::string w;
  for (char c : word) {
    w += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  if (w == "ok") {
    return kIdOk;
  }
  if (w == "cancel") {
    return kIdCancel;
  }
  if (w == "abort") {
    return 3;
  }
  if (w == "retry") {
    return 4;
  }
  if (w == "ignore") {
    return 5;
  }
  if (w == "yes") {
    return kIdYes;
  }
  if (w == "no") {
    return kIdNo;
  }
  throw ScriptSyntaxError("unknown button \"" + word + "\"");
}

// The button a person gets by pressing Enter on a box of this style.
int DefaultButton(int style) {
  int buttons = style & 7;
  bool second = (style & kMbDefaultButton2) != 0;
  switch (buttons) {
    case 1:
      return second ? kIdCancel : kIdOk;
    case 3:
      return second ? kIdNo : kIdYes;
    case 4:
      return second ? kIdNo : kIdYes;
    default:
      return kIdOk;
  }
}

std::string Quote(const std::string& s) {
  std::string out = "\"";
  for (char c : s) {
    if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else {
      out += c;
    }
  }
  return out + "\"";
}

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

class Runner {
 public:
  Runner(const ScriptOptions& options,
         const Application::Catalog& catalog,
         std::ostream& out)
      : options_(options), out_(out) {
    auto host = std::make_unique<ScriptedHost>();
    host_ = host.get();
    PlatformServices services =
        options.make_services ? options.make_services() : PlatformServices{};
    app_ = std::make_unique<Application>(std::move(host), std::move(services),
                                         catalog);
    host_->SetIdleHook([this] {
      app_->PollInstanceRequests();
      app_->forms().CollectGarbage();
    });
    host_->SetTranscript([this](const std::string& line) {
      out_ << "        " << line << "\n";
    });
  }

  void SetVariable(const std::string& name, const std::string& value) {
    variables_[name] = value;
  }

  std::vector<Step> Parse(std::istream& in) {
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

  ScriptResult Run(std::vector<Step> steps) {
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
                                              const std::string& t) {
            announce();
            return fn(t);
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
      result.failure =
          "line " + std::to_string(current_line_) + ": " + e.what();
    }
    result.steps_run = steps_run_;
    return result;
  }

 private:
  std::string Expand(const std::string& text) const {
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

  static void Require(const std::vector<Token>& t,
                      size_t n,
                      const std::string& usage) {
    if (t.size() != n) {
      throw ScriptSyntaxError("expected: " + usage);
    }
  }

  static int Number(const Token& t) {
    char* end = nullptr;
    long n = std::strtol(t.text.c_str(), &end, 10);
    if (t.text.empty() || *end != '\0') {
      throw ScriptSyntaxError("expected a number, not \"" + t.text + "\"");
    }
    return static_cast<int>(n);
  }

  // --- resolving names at run time ---------------------------------------
  Form& FormNamed(const std::string& name) const {
    Form* f = app_->forms().Find(name);
    if (f == nullptr) {
      if (!app_->forms().IsRegistered(name)) {
        throw HostAbort("The program has no form " + name);
      }
      throw HostAbort("Form " + name + " is not loaded");
    }
    return *f;
  }

  Control& ControlOf(const Target& t) const {
    Form& f = FormNamed(t.form);
    Control* c = f.FindControl(t.control, t.index);
    if (c == nullptr) {
      throw HostAbort(
          "Form " + t.form + " has no control " + t.control +
          (t.index >= 0 ? "(" + std::to_string(t.index) + ")" : ""));
    }
    return *c;
  }

  Value ReadTarget(const Target& t) const {
    if (t.control.empty()) {
      return FormNamed(t.form).Property(t.property);
    }
    try {
      return ControlOf(t).Property(t.property, t.item);
    } catch (const RuntimeError& e) {
      throw HostAbort(e.what());
    }
  }

  // --- the verbs ---------------------------------------------------------
  Step ParseStep(std::vector<Token> t) {
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
      s.run = [this, cmd] { RunSecondStart(cmd); };
    } else if (verb == "show") {
      if (t.size() < 2 || t.size() > 3 ||
          (t.size() == 3 && t[2].text != "modal")) {
        throw ScriptSyntaxError("expected: show FORM [modal]");
      }
      std::string name = t[1].text;
      bool modal = t.size() == 3;
      s.run = [this, name, modal] { app_->forms().Get(name).Show(modal); };
    } else if (verb == "click" || verb == "double-click") {
      Require(t, 2, verb + " FORM.CONTROL");
      Target target = ParseTarget(t[1].text, false);
      bool dbl = verb == "double-click";
      s.run = [this, target, dbl] {
        Control& c = ControlOf(target);
        dbl ? user::DblClick(c) : user::Click(c);
      };
    } else if (verb == "type") {
      Require(t, 3, "type FORM.CONTROL \"keys\"");
      Target target = ParseTarget(t[1].text, false);
      std::string keys = t[2].text;
      s.run = [this, target, keys] { user::TypeKeys(ControlOf(target), keys); };
    } else if (verb == "press") {
      Require(t, 3, "press FORM \"keys\"");
      std::string form = t[1].text;
      std::string keys = t[2].text;
      s.run = [this, form, keys] { user::PressKeys(FormNamed(form), keys); };
    } else if (verb == "set") {
      if (t.size() != 4 || t[2].text != "=") {
        throw ScriptSyntaxError("expected: set FORM.CONTROL.PROPERTY = VALUE");
      }
      if (t[1].text == "session") {
        throw ScriptSyntaxError("expected: set session NAME = VALUE");
      }
      Target target = ParseTarget(t[1].text, true);
      std::string value = t[3].text;
      s.run = [this, target, value] {
        if (target.control.empty()) {
          FormNamed(target.form).SetProperty(target.property, value);
        } else {
          ControlOf(target).SetProperty(target.property, value, target.item);
        }
      };
    } else if (verb == "choose") {
      Require(t, 3, "choose FORM.LIST \"entry\" | choose FORM.LIST #N");
      Target target = ParseTarget(t[1].text, false);
      Token what = t[2];
      s.run = [this, target, what] {
        Control& c = ControlOf(target);
        if (!what.quoted && !what.text.empty() && what.text[0] == '#') {
          user::ChooseItem(c, std::atoi(what.text.c_str() + 1));
        } else {
          user::ChooseItem(c, what.text);
        }
      };
    } else if (verb == "tick" || verb == "untick") {
      if (t.size() != 2 && t.size() != 3) {
        throw ScriptSyntaxError("expected: " + verb + " FORM.CONTROL [#N]");
      }
      Target target = ParseTarget(t[1].text, false);
      bool on = verb == "tick";
      std::optional<int> item;
      if (t.size() == 3) {
        if (t[2].text.empty() || t[2].text[0] != '#') {
          throw ScriptSyntaxError("expected an entry as #N");
        }
        item = std::atoi(t[2].text.c_str() + 1);
      }
      s.run = [this, target, on, item] {
        Control& c = ControlOf(target);
        item ? user::CheckItem(c, *item, on) : user::SetCheck(c, on);
      };
    } else if (verb == "menu") {
      Require(t, 2, "menu FORM.MENU");
      Target target = ParseTarget(t[1].text, false);
      s.run = [this, target] {
        Control& c = ControlOf(target);
        if (c.Kind() != ControlKind::kMenu) {
          throw HostAbort(target.text + " is not a menu entry");
        }
        user::PickMenu(static_cast<Menu&>(c));
      };
    } else if (verb == "folder") {
      Require(t, 3, "folder FORM.TREE \"path\"");
      Target target = ParseTarget(t[1].text, false);
      std::string path = t[2].text;
      s.run = [this, target, path] {
        user::SelectFolder(ControlOf(target), path);
      };
    } else if (verb == "scroll") {
      Require(t, 3, "scroll FORM.CONTROL VALUE");
      Target target = ParseTarget(t[1].text, false);
      int value = Number(t[2]);
      s.run = [this, target, value] {
        user::ScrollTo(ControlOf(target), value);
      };
    } else if (verb == "tab") {
      Require(t, 3, "tab FORM.TABSTRIP N");
      Target target = ParseTarget(t[1].text, false);
      int tab = Number(t[2]);
      s.run = [this, target, tab] { user::SelectTab(ControlOf(target), tab); };
    } else if (verb == "close") {
      Require(t, 2, "close FORM");
      std::string form = t[1].text;
      s.run = [this, form] { user::CloseForm(FormNamed(form)); };
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
    } else if (verb == "answer") {
      Require(t, 2, "answer BUTTON");
      int button = ButtonId(t[1].text);
      s.mode = Step::Mode::kMsgBox;
      s.answer = [button](const MsgBoxCall&) { return button; };
    } else if (verb == "dialog") {
      Require(t, 2, "dialog \"path\" | dialog cancel");
      Token what = t[1];
      s.mode = Step::Mode::kDialog;
      s.dialog = [what](const std::string&) -> std::optional<std::string> {
        if (!what.quoted && what.text == "cancel") {
          return std::nullopt;
        }
        return what.text;
      };
    } else if (verb == "popup") {
      Require(t, 2, "popup FORM.MENU | popup dismiss");
      std::string what = t[1].text;
      s.mode = Step::Mode::kPopup;
      if (what == "dismiss") {
        s.pick = [](Menu&) {};
      } else {
        Target target = ParseTarget(what, false);
        s.pick = [this, target](Menu&) {
          Control& c = ControlOf(target);
          if (c.Kind() != ControlKind::kMenu) {
            throw HostAbort(target.text + " is not a menu entry");
          }
          auto& m = static_cast<Menu&>(c);
          if (!m.Visible() || !m.Enabled()) {
            throw HostAbort("Menu entry " + target.text + " is " +
                            (m.Visible() ? "disabled" : "hidden"));
          }
          m.Raise("Click");
        };
      }
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
    } else if (verb == "make" && t.size() >= 4 && t[1].text == "photos") {
      // make photos N "folder" [WxH]: photo001.jpg ... in shades of grey.
      int count = 0;
      int width = 160;
      int height = 120;
      try {
        count = std::stoi(t[2].text);
        if (t.size() == 5) {
          size_t x = t[4].text.find('x');
          width = std::stoi(t[4].text.substr(0, x));
          height = std::stoi(t[4].text.substr(x + 1));
        }
      } catch (const std::exception&) {
        count = 0;
      }
      if (count <= 0 || t.size() > 5 || width <= 0 || height <= 0) {
        throw ScriptSyntaxError(
            "expected: make photos N \"folder\" [WIDTHxHEIGHT]");
      }
      std::string folder = t[3].text;
      s.run = [folder, count, width, height] {
        std::error_code ec;
        fs::create_directories(folder, ec);
        for (int i = 1; i <= count; ++i) {
          char name[32];
          std::snprintf(name, sizeof name, "/photo%03d.jpg", i);
          if (!WriteTestPhoto(folder + name, width, height, i)) {
            throw HostAbort("Can't write a photo in " + folder);
          }
        }
      };
    } else if (verb == "make") {
      if (t.size() != 3 || t[1].text != "folder") {
        throw ScriptSyntaxError("expected: make folder \"path\"");
      }
      std::string path = t[2].text;
      s.run = [path] {
        std::error_code ec;
        fs::create_directories(path, ec);
        if (ec) {
          throw HostAbort("Can't make folder " + path + ": " + ec.message());
        }
      };
    } else if (verb == "write") {
      if (t.size() != 4 || t[1].text != "file") {
        throw ScriptSyntaxError("expected: write file \"path\" \"content\"");
      }
      std::string path = t[2].text;
      std::string content = t[3].text;
      s.run = [path, content] {
        std::ofstream f(path, std::ios::binary);
        f << content;
        if (!f) {
          throw HostAbort("Can't write file " + path);
        }
      };
    } else if (verb == "copy") {
      Require(t, 3, "copy \"from\" \"to\"");
      std::string from = t[1].text;
      std::string to = t[2].text;
      s.run = [from, to] {
        std::error_code error;
        fs::copy(
            from, to,
            fs::copy_options::recursive | fs::copy_options::overwrite_existing,
            error);
        if (error) {
          throw HostAbort("Can't copy " + from + " to " + to + ": " +
                          error.message());
        }
      };
    } else if (verb == "echo") {
      Require(t, 2, "echo \"text\"");
      std::string text = t[1].text;
      s.run = [this, text] { out_ << "        " << text << "\n"; };
    } else if (verb == "expect") {
      return ParseExpect(t);
    } else {
      throw ScriptSyntaxError("unknown step \"" + verb + "\"");
    }
    return s;
  }

  Step ParseExpect(const std::vector<Token>& t) {
    if (t.size() < 2) {
      throw ScriptSyntaxError("expected something after expect");
    }
    const std::string what = t[1].text;
    Step s;
    if (what == "message") {
      return ParseExpectMessage(t);
    }
    if (what == "form") {
      Require(t, 4, "expect form FORM shown|modal|hidden|loaded|gone");
      std::string form = t[2].text;
      std::string state = t[3].text;
      if (state != "shown" && state != "modal" && state != "hidden" &&
          state != "loaded" && state != "gone") {
        throw ScriptSyntaxError("unknown form state \"" + state + "\"");
      }
      s.run = [this, form, state] {
        Form* f = app_->forms().Find(form);
        std::string is = f == nullptr   ? "gone"
                         : f->IsModal() ? "modal"
                         : f->Visible() ? "shown"
                                        : "hidden";
        bool ok = state == is || (state == "shown" && is == "modal") ||
                  (state == "loaded" && f != nullptr);
        if (!ok) {
          throw HostAbort("Expected form " + form + " " + state +
                          ", but it is " + is);
        }
      };
      return s;
    }
    if (what == "session") {
      if (t.size() != 5) {
        throw ScriptSyntaxError("expected: expect session NAME = VALUE");
      }
      std::string name = t[2].text;
      std::string op = t[3].text;
      std::string value = t[4].text;
      CheckOperator(op);
      s.run = [this, name, op, value] {
        Value actual;
        try {
          actual = app_->session().Get(name);
        } catch (const RuntimeError& e) {
          throw HostAbort(e.what());
        }
        Compare("session " + name, actual, op, value);
      };
      return s;
    }
    if (what == "setting") {
      if (t.size() != 6) {
        throw ScriptSyntaxError(
            "expected: expect setting \"KEY\" NAME = VALUE");
      }
      std::string key = t[2].text;
      std::string name = t[3].text;
      std::string op = t[4].text;
      std::string value = t[5].text;
      CheckOperator(op);
      s.run = [this, key, name, op, value] {
        Compare("setting " + key + " " + name,
                Value(app_->settings().Read(key, name)), op, value);
      };
      return s;
    }
    if (what == "file") {
      if (t.size() != 4 && t.size() != 5) {
        throw ScriptSyntaxError(
            "expected: expect file \"path\" exists|missing|contains \"text\"");
      }
      std::string path = t[2].text;
      std::string check = t[3].text;
      std::string text = t.size() == 5 ? t[4].text : "";
      if (!(check == "exists" || check == "missing" ||
            (check == "contains" && t.size() == 5))) {
        throw ScriptSyntaxError("unknown file check \"" + check + "\"");
      }
      s.run = [path, check, text] {
        bool exists = fs::exists(path);
        if (check == "exists" && !exists) {
          throw HostAbort("Expected file " + path + " to exist");
        }
        if (check == "missing" && exists) {
          throw HostAbort("Expected file " + path + " to be missing");
        }
        if (check == "contains") {
          std::ifstream in(path, std::ios::binary);
          std::ostringstream body;
          body << in.rdbuf();
          if (!in || body.str().find(text) == std::string::npos) {
            throw HostAbort("Expected file " + path + " to contain " +
                            Quote(text));
          }
        }
      };
      return s;
    }
    if (what == "no") {
      if (t.size() != 3 || t[2].text != "errors") {
        throw ScriptSyntaxError("expected: expect no errors");
      }
      s.run = [this] {
        if (!host_->FailedHandlers().empty()) {
          throw HostAbort("A handler failed: " +
                          host_->FailedHandlers().front());
        }
      };
      return s;
    }
    if (what == "pointer") {
      Require(t, 4, "expect pointer = N");
      int pointer = Number(t[3]);
      s.run = [this, pointer] {
        if (host_->MousePointer() != pointer) {
          throw HostAbort("Expected mouse pointer " + std::to_string(pointer) +
                          ", but it is " +
                          std::to_string(host_->MousePointer()));
        }
      };
      return s;
    }
    // expect FORM[.CONTROL].PROPERTY OP VALUE
    if (t.size() != 4) {
      throw ScriptSyntaxError("expected: expect FORM.CONTROL.PROPERTY = VALUE");
    }
    Target target = ParseTarget(what, true);
    std::string op = t[2].text;
    std::string value = t[3].text;
    CheckOperator(op);
    s.run = [this, target, op, value] {
      Compare(target.text, ReadTarget(target), op, value);
    };
    return s;
  }

  Step ParseExpectMessage(const std::vector<Token>& t) {
    std::optional<std::string> text;
    bool containing = false;
    std::optional<int> style;
    std::optional<std::string> caption;
    std::optional<int> answer;
    size_t i = 2;
    if (i < t.size() && t[i].text == "containing" && !t[i].quoted) {
      containing = true;
      ++i;
    }
    if (i < t.size() && t[i].quoted) {
      text = t[i++].text;
    } else if (containing) {
      throw ScriptSyntaxError("expected a text after containing");
    }
    while (i < t.size()) {
      const std::string& word = t[i].text;
      if (i + 1 >= t.size()) {
        throw ScriptSyntaxError("\"" + word + "\" needs a value");
      }
      if (word == "style") {
        style = Number(t[i + 1]);
      } else if (word == "caption") {
        caption = t[i + 1].text;
      } else if (word == "answer") {
        answer = ButtonId(t[i + 1].text);
      } else {
        throw ScriptSyntaxError("unknown word \"" + word +
                                "\" in expect message");
      }
      i += 2;
    }
    Step s;
    s.mode = Step::Mode::kMsgBox;
    s.answer = [text, containing, style, caption,
                answer](const MsgBoxCall& call) {
      if (text && (containing ? call.prompt.find(*text) == std::string::npos
                              : call.prompt != *text)) {
        throw HostAbort("Expected a message box " +
                        std::string(containing ? "containing " : "") +
                        Quote(*text) + ", but it says " + Quote(call.prompt));
      }
      if (style && call.style != *style) {
        throw HostAbort("Expected message box style " + std::to_string(*style) +
                        ", but it is " + std::to_string(call.style));
      }
      if (caption && call.title != *caption) {
        throw HostAbort("Expected message box caption " + Quote(*caption) +
                        ", but it is " + Quote(call.title));
      }
      return answer ? *answer : DefaultButton(call.style);
    };
    return s;
  }

  static void CheckOperator(const std::string& op) {
    if (op != "=" && op != "!=" && op != "contains") {
      throw ScriptSyntaxError("expected =, != or contains, not \"" + op + "\"");
    }
  }

  static void Compare(const std::string& what,
                      const Value& actual,
                      const std::string& op,
                      const std::string& expected) {
    bool ok = false;
    if (op == "=") {
      ok = actual == Value(expected);
    } else if (op == "!=") {
      ok = !(actual == Value(expected));
    } else {
      ok = actual.ToText().find(expected) != std::string::npos;
    }
    if (!ok) {
      throw HostAbort("Expected " + what + " " + op + " " + Quote(expected) +
                      ", but it is " + Quote(actual.ToText()));
    }
  }

  const ScriptOptions& options_;
  std::ostream& out_;
  ScriptedHost* host_ = nullptr;
  // Starts the program a second time, as another process, and waits for it
  // to end.
  static void RunSecondStart(const std::string& cmd) {
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

  std::unique_ptr<Application> app_;
  std::map<std::string, std::string> variables_;
  int current_line_ = 0;
  int steps_run_ = 0;
};

}  // namespace

ScriptResult RunScript(const ScriptOptions& options,
                       const Application::Catalog& catalog,
                       std::ostream& out) {
  ScriptResult result;
  std::ifstream in(options.script_path);
  if (!in) {
    result.exit_code = 2;
    result.failure = "can't read the script " + options.script_path;
    return result;
  }
  // ${TMP}: a private folder of this run.
  std::string temp = options.temp_dir;
  bool made_temp = false;
  if (temp.empty()) {
    std::string pattern =
        (fs::temp_directory_path() / "qbpd-script-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
      result.exit_code = 2;
      result.failure = "can't make a temporary folder";
      return result;
    }
    temp = pattern;
    made_temp = true;
  }
  std::map<std::string, std::string> places;
  if (options.private_places) {
    const std::string home = temp + "/home";
    places = {{"HOME", home},
              {"XDG_CONFIG_HOME", home + "/.config"},
              {"XDG_DATA_HOME", home + "/.local/share"},
              {"XDG_CACHE_HOME", home + "/.cache"},
              {"XDG_RUNTIME_DIR", temp + "/run"}};
    for (const auto& [name, value] : places) {
      fs::create_directories(value);
      setenv(name.c_str(), value.c_str(), 1);
    }
    chmod((temp + "/run").c_str(), 0700);
    fs::create_directories(home + "/Desktop");
    fs::create_directories(home + "/Pictures");
    places["DESKTOP"] = home + "/Desktop";
    places["PICTURES"] = home + "/Pictures";
    places["DATA"] = home + "/.local/share/quillbay-picture-desk";
  }
  {
    Runner runner(options, catalog, out);
    runner.SetVariable("TMP", temp);
    for (const auto& [name, value] : places) {
      runner.SetVariable(name, value);
    }
    runner.SetVariable(
        "SCRIPT_DIR",
        fs::absolute(fs::path(options.script_path)).parent_path().string());
    std::vector<Step> steps;
    try {
      steps = runner.Parse(in);
    } catch (const ScriptSyntaxError& e) {
      result.exit_code = 2;
      result.failure = e.what();
    }
    if (result.exit_code == 0) {
      result = runner.Run(std::move(steps));
    }
  }
  if (made_temp && !options.keep_temp) {
    std::error_code ec;
    fs::remove_all(temp, ec);
  }
  return result;
}

void DescribeControls(std::ostream& out) {
  // A throwaway form to ask each kind for its property table.
  class Probe : public Form {
   public:
    explicit Probe(Host& host) : Form(host, "probe") {}
  };
  ScriptedHost host;
  Probe form(host);
  auto describe = [&out](const Control& c) {
    out << KindName(c.Kind()) << ":";
    for (const PropertyInfo& p : c.Properties()) {
      out << " " << p.name << (p.indexed ? "(i)" : "")
          << (p.writable ? "" : " (read-only)");
    }
    out << "\n";
  };
  describe(Label(form, "a"));
  describe(TextBox(form, "b"));
  describe(CheckBox(form, "c"));
  describe(OptionButton(form, "d"));
  describe(ComboBox(form, "e"));
  describe(ListBox(form, "f"));
  describe(CommandButton(form, "g"));
  describe(PictureButton(form, "h"));
  describe(PictureBox(form, "i"));
  describe(Frame(form, "j"));
  describe(Shape(form, "k"));
  describe(Line(form, "l"));
  describe(Timer(form, "m"));
  describe(Menu(form, "n"));
  describe(ScrollBar(form, "o"));
  describe(ProgressBar(form, "p"));
  describe(Slider(form, "q"));
  describe(TabStrip(form, "r"));
  describe(Thumbnail(form, "s"));
  describe(PhotoView(form, "t"));
  describe(FolderTree(form, "u"));
  describe(ScreensaverPlayer(form, "v"));
  describe(WebView(form, "w"));
}

int ScriptMain(int argc,
               char** argv,
               const Application::Catalog& catalog,
               std::function<PlatformServices()> make_services) {
  ScriptOptions options;
  options.make_services = make_services;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--second-start" && i + 1 < argc) {
      PlatformServices services =
          make_services ? make_services() : PlatformServices{};
      auto host = std::make_unique<ScriptedHost>();
      ScriptedHost& scripted = *host;
      Application app(std::move(host), std::move(services), catalog);
      app.Start(argv[i + 1]);
      scripted.Run();
      return 0;
    } else if (arg == "--user-places") {
      options.private_places = false;
    } else if (arg == "--tmp" && i + 1 < argc) {
      options.temp_dir = argv[++i];
    } else if (arg == "--keep-tmp") {
      options.keep_temp = true;
    } else if (arg == "--describe-controls") {
      DescribeControls(std::cout);
      return 0;
    } else if (arg == "--help" || arg == "-h") {
      std::cout << "usage: " << argv[0]
                << " [--tmp DIR] [--keep-tmp] [--describe-controls] SCRIPT\n";
      return 0;
    } else if (!arg.empty() && arg[0] == '-') {
      std::cerr << argv[0] << ": unknown option " << arg << "\n";
      return 2;
    } else {
      options.script_path = arg;
    }
  }
  if (options.script_path.empty()) {
    std::cerr << "usage: " << argv[0] << " [--tmp DIR] [--keep-tmp] SCRIPT\n";
    return 2;
  }
  ScriptResult result = RunScript(options, catalog, std::cout);
  if (result.exit_code == 0) {
    std::cout << "passed: " << result.steps_run << " steps\n";
  } else {
    std::cout << (result.exit_code == 2 ? "SCRIPT ERROR " : "FAILED ")
              << result.failure << "\n";
  }
  return result.exit_code;
}

}  // namespace qbpd
