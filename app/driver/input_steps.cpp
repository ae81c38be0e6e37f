// What the user does with the keyboard and by clicking controls, and how the
// script answers message boxes, dialogs and pop-up menus.
#include "app/driver/runner.h"
#include "platform/forms/controls.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/user_input.h"

#include <cstdlib>

namespace qbpd::script {
namespace {

std::optional<int> EntryNumber(const Token& t) {
  if (t.quoted || t.text.size() < 2 || t.text[0] != '#') {
    return std::nullopt;
  }
  char* end = nullptr;
  long n = std::strtol(t.text.c_str() + 1, &end, 10);
  if (*end != '\0') {
    return std::nullopt;
  }
  return static_cast<int>(n);
}

Menu& AsMenu(Control& c, const std::string& name) {
  if (c.Kind() != ControlKind::kMenu) {
    throw HostAbort(name + " is not a menu entry");
  }
  return static_cast<Menu&>(c);
}

}  // namespace

std::optional<Step> Runner::ParseInputStep(const std::vector<Token>& t) {
  const std::string& verb = t[0].text;
  Step s;
  if ((verb == "click" || verb == "double-click") && t.size() == 2) {
    Target target = ParseTarget(t[1].text, false);
    bool dbl = verb == "double-click";
    s.run = [this, target, dbl] {
      Control& c = ControlOf(target);
      dbl ? user::DblClick(c) : user::Click(c);
    };
  } else if (verb == "click" || verb == "double-click") {
    // With a point: the mouse steps.
    return std::nullopt;
  } else if (verb == "type") {
    Require(t, 3, "type FORM.CONTROL \"keys\"");
    Target target = ParseTarget(t[1].text, false);
    std::string keys = t[2].text;
    s.run = [this, target, keys] { user::TypeKeys(ControlOf(target), keys); };
  } else if (verb == "press" && t.size() >= 2 &&
             (t[1].text == "message" || t[1].text == "popup")) {
    // Keys on an open message box or pop-up menu: an answer.
    return std::nullopt;
  } else if (verb == "press") {
    Require(t, 3, "press FORM \"keys\"");
    std::string form = t[1].text;
    std::string keys = t[2].text;
    s.run = [this, form, keys] { user::PressKeys(FormNamed(form), keys); };
  } else if (verb == "set") {
    if (t.size() != 4 || t[2].text != "=") {
      throw ScriptSyntaxError("expected: set FORM.CONTROL.PROPERTY = VALUE");
    }
    Target target = ParseTarget(t[1].text, true);
    std::string value = t[3].text;
    s.run = [this, target, value] {
      try {
        WriteTarget(target, Value(value));
      } catch (const RuntimeError& e) {
        throw HostAbort(e.what());
      }
    };
  } else if (verb == "choose") {
    Require(t, 3, "choose FORM.LIST \"entry\" | choose FORM.LIST #N");
    Target target = ParseTarget(t[1].text, false);
    Token what = t[2];
    std::optional<int> entry = EntryNumber(what);
    s.run = [this, target, what, entry] {
      Control& c = ControlOf(target);
      entry ? user::ChooseItem(c, *entry) : user::ChooseItem(c, what.text);
    };
  } else if (verb == "tick" || verb == "untick") {
    if (t.size() != 2 && t.size() != 3) {
      throw ScriptSyntaxError("expected: " + verb + " FORM.CONTROL [#N]");
    }
    Target target = ParseTarget(t[1].text, false);
    bool on = verb == "tick";
    std::optional<int> item;
    if (t.size() == 3) {
      item = EntryNumber(t[2]);
      if (!item) {
        throw ScriptSyntaxError("expected an entry as #N");
      }
    }
    s.run = [this, target, on, item] {
      Control& c = ControlOf(target);
      item ? user::CheckItem(c, *item, on) : user::SetCheck(c, on);
    };
  } else if (verb == "menu") {
    Require(t, 2, "menu FORM.MENU");
    Target target = ParseTarget(t[1].text, false);
    s.run = [this, target] {
      user::PickMenu(AsMenu(ControlOf(target), target.text));
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
    s.run = [this, target, value] { user::ScrollTo(ControlOf(target), value); };
  } else if (verb == "tab") {
    Require(t, 3, "tab FORM.TABSTRIP N");
    Target target = ParseTarget(t[1].text, false);
    int tab = Number(t[2]);
    s.run = [this, target, tab] { user::SelectTab(ControlOf(target), tab); };
  } else if (verb == "close") {
    Require(t, 2, "close FORM");
    std::string form = t[1].text;
    s.run = [this, form] { user::CloseForm(FormNamed(form)); };
  } else {
    return std::nullopt;
  }
  return s;
}

std::optional<Step> Runner::ParseAnswerStep(const std::vector<Token>& t) {
  const std::string& verb = t[0].text;
  Step s;
  if (verb == "answer") {
    Require(t, 2, "answer BUTTON");
    int button = ButtonId(t[1].text);
    s.mode = Step::Mode::kMsgBox;
    s.answer = [button](const MsgBoxCall&) { return button; };
  } else if (verb == "press" && t.size() >= 2 && t[1].text == "message") {
    Require(t, 3, "press message \"keys\"");
    std::string keys = t[2].text;
    s.mode = Step::Mode::kMsgBox;
    s.answer = [this, keys](const MsgBoxCall& call) {
      int button = 0;
      try {
        button = user::MessageBoxKeys(call.style, keys);
      } catch (const RuntimeError& e) {
        throw HostAbort(e.what());
      }
      if (button == 0) {
        throw HostAbort("The keys " + Quote(keys) +
                        " press no button of the message box [" +
                        std::to_string(call.style) + "] " + Quote(call.prompt));
      }
      return button;
    };
  } else if (verb == "press" && t.size() >= 2 && t[1].text == "popup") {
    Require(t, 3, "press popup \"keys\"");
    std::string keys = t[2].text;
    s.mode = Step::Mode::kPopup;
    s.pick = [keys](Menu& popup) {
      try {
        user::PopupKeys(popup, keys);
      } catch (const RuntimeError& e) {
        throw HostAbort(e.what());
      }
    };
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
        Menu& m = AsMenu(ControlOf(target), target.text);
        if (!m.Visible() || !m.Enabled()) {
          throw HostAbort("Menu entry " + target.text + " is " +
                          (m.Visible() ? "disabled" : "hidden"));
        }
        m.Raise("Click");
      };
    }
  } else {
    return std::nullopt;
  }
  return s;
}

}  // namespace qbpd::script
