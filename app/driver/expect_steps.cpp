// Expectations: what the program shows and holds, the files on disk, facts
// about image files and what the program asked the desktop to open.
#include "app/driver/runner.h"
#include "platform/forms/controls.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/scripted_host.h"
#include "platform/image_operations.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace qbpd::script {
namespace {

namespace fs = std::filesystem;

// The whole of `text` as a number.
std::optional<double> AsNumber(const std::string& text) {
  size_t b = text.find_first_not_of(" \t");
  if (b == std::string::npos) {
    return std::nullopt;
  }
  char* end = nullptr;
  double d = std::strtod(text.c_str() + b, &end);
  while (*end == ' ' || *end == '\t') {
    ++end;
  }
  if (*end != '\0' || end == text.c_str() + b || !std::isfinite(d)) {
    return std::nullopt;
  }
  return d;
}

std::optional<double> AsNumber(const Value& v) {
  if (v.IsEmpty() || v.IsBool()) {
    return std::nullopt;
  }
  return v.IsText() ? AsNumber(v.ToText()) : std::optional(v.ToDouble());
}

// The value compared, and the number an order comparison needs.
void CheckExpected(const std::string& op, const std::string& value) {
  CheckOperator(op);
  if (IsOrderOperator(op) && !AsNumber(value)) {
    throw ScriptSyntaxError(op + " compares numbers, and \"" + value +
                            "\" is not one");
  }
}

}  // namespace

void Compare(const std::string& what,
             const Value& actual,
             const std::string& op,
             const std::string& expected) {
  bool ok = false;
  if (op == "=") {
    ok = actual == Value(expected);
  } else if (op == "!=") {
    ok = !(actual == Value(expected));
  } else if (op == "contains") {
    ok = actual.ToText().find(expected) != std::string::npos;
  } else {
    std::optional<double> a = AsNumber(actual);
    if (!a) {
      throw HostAbort("Expected " + what + " " + op + " " + expected +
                      ", but it is " + Quote(actual.ToText()) +
                      ", which is not a number");
    }
    double e = *AsNumber(expected);
    ok = op == "<"    ? *a < e
         : op == ">"  ? *a > e
         : op == "<=" ? *a <= e
                      : *a >= e;
  }
  if (!ok) {
    throw HostAbort("Expected " + what + " " + op + " " + Quote(expected) +
                    ", but it is " + Quote(actual.ToText()));
  }
}

Step Runner::ParseExpect(const std::vector<Token>& t) {
  if (t.size() < 2) {
    throw ScriptSyntaxError("expected something after expect");
  }
  const std::string what = t[1].text;
  Step s;
  if (what == "message") {
    return ParseExpectMessage(t);
  }
  if (what == "image") {
    return ParseExpectImage(t);
  }
  if (what == "launched") {
    return ParseExpectLaunched(t);
  }
  if (what == "service") {
    return ParseExpectService(t);
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
        throw HostAbort("Expected form " + form + " " + state + ", but it is " +
                        is);
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
    CheckExpected(op, value);
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
      throw ScriptSyntaxError("expected: expect setting \"KEY\" NAME = VALUE");
    }
    std::string key = t[2].text;
    std::string name = t[3].text;
    std::string op = t[4].text;
    std::string value = t[5].text;
    CheckExpected(op, value);
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
        throw HostAbort("A handler failed: " + host_->FailedHandlers().front());
      }
    };
    return s;
  }
  if (what == "pointer") {
    if (t.size() != 4) {
      throw ScriptSyntaxError("expected: expect pointer = N");
    }
    std::string op = t[2].text;
    std::string value = t[3].text;
    CheckExpected(op, value);
    s.run = [this, op, value] {
      Compare("mouse pointer", Value(host_->MousePointer()), op, value);
    };
    return s;
  }
  // expect FORM.ARRAY(N) loaded | not loaded
  if (t.back().text == "loaded" && !t.back().quoted &&
      (t.size() == 3 || (t.size() == 4 && t[2].text == "not"))) {
    Target target = ParseTarget(what, false);
    if (target.control.empty() || target.index < 0) {
      throw ScriptSyntaxError("expected a member of a control array, as " +
                              target.form + ".NAME(N)");
    }
    bool want = t.size() == 3;
    s.run = [this, target, want] {
      Form& f = FormNamed(target.form);
      if (f.FindControl(target.control, 0) == nullptr) {
        throw HostAbort("Form " + target.form + " has no control array " +
                        target.control);
      }
      bool loaded = f.FindControl(target.control, target.index) != nullptr;
      if (loaded != want) {
        throw HostAbort("Expected " + target.text +
                        (want ? " to be loaded, but it is not"
                              : " not to be loaded, but it is"));
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
  CheckExpected(op, value);
  s.run = [this, target, op, value] {
    Compare(target.text, ReadTarget(target), op, value);
  };
  return s;
}

Step Runner::ParseExpectMessage(const std::vector<Token>& t) {
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

// expect launched "target" | containing "part" | nothing | count OP N
Step Runner::ParseExpectLaunched(const std::vector<Token>& t) {
  const std::string usage =
      "expect launched \"target\" | containing \"part\" | nothing | count = N";
  Step s;
  if (t.size() == 3 && t[2].quoted) {
    std::string target = t[2].text;
    s.run = [this, target] {
      for (const std::string& l : launched_) {
        if (l == target) {
          return;
        }
      }
      throw HostAbort("Expected the launcher to open " + Quote(target) +
                      (launched_.empty() ? ", but it opened nothing"
                                         : ", but the last it opened is " +
                                               Quote(launched_.back())));
    };
  } else if (t.size() == 4 && t[2].text == "containing" && t[3].quoted) {
    std::string part = t[3].text;
    s.run = [this, part] {
      for (const std::string& l : launched_) {
        if (l.find(part) != std::string::npos) {
          return;
        }
      }
      throw HostAbort(
          "Expected the launcher to open something containing " + Quote(part) +
          (launched_.empty()
               ? ", but it opened nothing"
               : ", but the last it opened is " + Quote(launched_.back())));
    };
  } else if (t.size() == 3 && t[2].text == "nothing") {
    s.run = [this] {
      if (!launched_.empty()) {
        throw HostAbort(
            "Expected the launcher to open nothing, but it opened " +
            Quote(launched_.front()));
      }
    };
  } else if (t.size() == 5 && t[2].text == "count") {
    std::string op = t[3].text;
    std::string value = t[4].text;
    CheckExpected(op, value);
    s.run = [this, op, value] {
      Compare("launched count", Value(static_cast<long long>(launched_.size())),
              op, value);
    };
  } else {
    throw ScriptSyntaxError("expected: " + usage);
  }
  return s;
}

// expect image "path" width|height|orientation OP N
// expect image "path" preview matches|differs|missing
Step Runner::ParseExpectImage(const std::vector<Token>& t) {
  const std::string usage =
      "expect image \"path\" width|height|orientation = N | preview "
      "matches|differs|missing";
  if (t.size() < 5 || !t[2].quoted) {
    throw ScriptSyntaxError("expected: " + usage);
  }
  std::string path = t[2].text;
  std::string fact = t[3].text;
  Step s;
  if (fact == "preview") {
    Require(t, 5, usage);
    std::string want = t[4].text;
    if (want != "matches" && want != "differs" && want != "missing") {
      throw ScriptSyntaxError("expected: " + usage);
    }
    s.run = [this, path, want] {
      ExifPreview found = ExifPreview::kUnreadable;
      try {
        found = app_->images().CompareExifPreview(path);
      } catch (const RuntimeError& e) {
        throw HostAbort(e.what());
      }
      const char* is = found == ExifPreview::kMatches   ? "matches"
                       : found == ExifPreview::kDiffers ? "differs"
                       : found == ExifPreview::kMissing ? "missing"
                                                        : "unreadable";
      if (want != is) {
        throw HostAbort("Expected the EXIF preview of " + path + " to be " +
                        want + ", but it " +
                        (found == ExifPreview::kMissing ? "is missing"
                         : found == ExifPreview::kUnreadable
                             ? "can't be read: the file is no readable image"
                             : std::string(is)));
      }
    };
    return s;
  }
  if (fact != "width" && fact != "height" && fact != "orientation") {
    throw ScriptSyntaxError("expected: " + usage);
  }
  Require(t, 6, usage);
  std::string op = t[4].text;
  std::string value = t[5].text;
  CheckExpected(op, value);
  s.run = [this, path, fact, op, value] {
    int n = 0;
    try {
      ImageOperations& images = app_->images();
      n = fact == "width"    ? images.GetImageWidth(path)
          : fact == "height" ? images.GetImageHeight(path)
                             : images.GetExifOrientation(path);
    } catch (const RuntimeError& e) {
      throw HostAbort(e.what());
    }
    if (n <= 0) {
      throw HostAbort("Can't read the " + fact + " of " + path +
                      ": it is no readable image");
    }
    Compare("image " + path + " " + fact, Value(n), op, value);
  };
  return s;
}

}  // namespace qbpd::script
