// Keys that don't reach a control: menu shortcuts, and keys pressed while a
// message box or a pop-up menu is open.
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/host.h"
#include "platform/forms/keys.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/user_input.h"

#include <cctype>
#include <vector>

namespace qbpd::user {
namespace {

constexpr int kIdAbort = 3;
constexpr int kIdRetry = 4;
constexpr int kIdIgnore = 5;
constexpr int kMbDefaultButton3 = 512;

std::string Upper(std::string_view s) {
  std::string out;
  for (char c : s) {
    out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return out;
}

// The key code of a shortcut's key name ("S", "F5", "Del"); 0 if unknown.
int ShortcutKeyCode(const std::string& name) {
  if (name.size() == 1 && std::isalnum(static_cast<unsigned char>(name[0]))) {
    return name[0];
  }
  if (name.size() >= 2 && name[0] == 'F') {
    int n = std::atoi(name.c_str() + 1);
    if (n >= 1 && n <= 16 &&
        name.find_first_not_of("0123456789", 1) == std::string::npos) {
      return kKeyF1 + n - 1;
    }
  }
  static const struct {
    const char* name;
    int code;
  } kNamed[] = {{"DEL", kKeyDelete},   {"DELETE", kKeyDelete},
                {"INS", kKeyInsert},   {"INSERT", kKeyInsert},
                {"HOME", kKeyHome},    {"END", kKeyEnd},
                {"PGUP", kKeyPageUp},  {"PGDOWN", kKeyPageDown},
                {"UP", kKeyUp},        {"DOWN", kKeyDown},
                {"LEFT", kKeyLeft},    {"RIGHT", kKeyRight},
                {"ENTER", kKeyReturn}, {"RETURN", kKeyReturn},
                {"ESC", kKeyEscape},   {"SPACE", kKeySpace},
                {"TAB", kKeyTab},      {"BACKSPACE", kKeyBack}};
  for (const auto& k : kNamed) {
    if (name == k.name) {
      return k.code;
    }
  }
  return 0;
}

// Whether `key` is the shortcut written as "Ctrl+S", "Shift+F5", "F5".
bool MatchesShortcut(const std::string& shortcut, const KeyStroke& key) {
  if (key.key_code == 0) {
    return false;
  }
  std::string text = Upper(shortcut);
  int shift = 0;
  size_t plus = 0;
  // "Ctrl++" would name the plus key; the menus here have none.
  while ((plus = text.find('+')) != std::string::npos &&
         plus + 1 < text.size()) {
    std::string modifier = text.substr(0, plus);
    if (modifier == "CTRL") {
      shift |= kCtrlMask;
    } else if (modifier == "SHIFT") {
      shift |= kShiftMask;
    } else if (modifier == "ALT") {
      shift |= kAltMask;
    } else {
      return false;
    }
    text.erase(0, plus + 1);
  }
  const int code = ShortcutKeyCode(text);
  return code != 0 && code == key.key_code && shift == key.shift;
}

// The buttons of a message box style, in their order on the box.
std::vector<int> ButtonsOf(int style) {
  switch (style & 7) {
    case 1:
      return {kIdOk, kIdCancel};
    case 2:
      return {kIdAbort, kIdRetry, kIdIgnore};
    case 3:
      return {kIdYes, kIdNo, kIdCancel};
    case 4:
      return {kIdYes, kIdNo};
    case 5:
      return {kIdRetry, kIdCancel};
    default:
      return {kIdOk};
  }
}

// The letter a button underlines; 0 for OK and Cancel.
char MnemonicOf(int button) {
  switch (button) {
    case kIdAbort:
      return 'A';
    case kIdRetry:
      return 'R';
    case kIdIgnore:
      return 'I';
    case kIdYes:
      return 'Y';
    case kIdNo:
      return 'N';
    default:
      return 0;
  }
}

bool Has(const std::vector<int>& buttons, int id) {
  for (int b : buttons) {
    if (b == id) {
      return true;
    }
  }
  return false;
}

bool Selectable(const Menu& m) {
  return m.Visible() && m.Enabled() && !m.Caption().empty() &&
         m.Caption() != "-";
}

std::vector<Menu*> Shown(const Menu& menu) {
  std::vector<Menu*> out;
  for (Menu* m : menu.Entries()) {
    if (m->Visible() && !m->Caption().empty() && m->Caption() != "-") {
      out.push_back(m);
    }
  }
  return out;
}

}  // namespace

bool PressShortcut(Form& form, const KeyStroke& key) {
  if (key.key_code == 0 || key.shift == 0) {
    // Plain keys are shortcuts only as function keys and Delete/Insert.
    if (key.key_code < kKeyF1 && key.key_code != kKeyDelete &&
        key.key_code != kKeyInsert) {
      return false;
    }
  }
  Menu* entry = nullptr;
  for (Control* c : form.Controls()) {
    if (c->Kind() == ControlKind::kMenu &&
        MatchesShortcut(static_cast<Menu*>(c)->Shortcut(), key)) {
      entry = static_cast<Menu*>(c);
      break;
    }
  }
  if (entry == nullptr) {
    return false;
  }
  // As the window system does: the menus above the entry open first (their
  // Click sets up the entries), then the entry is picked if it can be.
  std::vector<Menu*> chain;
  for (Menu* m = entry->ParentMenu(); m != nullptr; m = m->ParentMenu()) {
    chain.insert(chain.begin(), m);
  }
  for (Menu* m : chain) {
    if (!m->Visible() || !m->Enabled()) {
      return false;
    }
    m->Raise("Click");
    if (form.IsUnloaded()) {
      return true;
    }
  }
  if (!entry->Visible() || !entry->Enabled()) {
    return false;
  }
  entry->Raise("Click");
  return true;
}

int MessageBoxKeys(int style, std::string_view keys) {
  const std::vector<int> buttons = ButtonsOf(style);
  const int count = static_cast<int>(buttons.size());
  int focus = (style & kMbDefaultButton3) != 0   ? 2
              : (style & kMbDefaultButton2) != 0 ? 1
                                                 : 0;
  focus = std::min(focus, count - 1);
  const std::vector<KeyStroke> strokes = ParseKeys(keys);
  for (size_t i = 0; i < strokes.size(); ++i) {
    const KeyStroke& k = strokes[i];
    int pressed = 0;
    const bool back = (k.shift & kShiftMask) != 0;
    if (k.key_code == kKeyTab) {
      focus = (focus + (back ? count - 1 : 1)) % count;
    } else if (k.key_code == kKeyRight || k.key_code == kKeyDown) {
      focus = (focus + 1) % count;
    } else if (k.key_code == kKeyLeft || k.key_code == kKeyUp) {
      focus = (focus + count - 1) % count;
    } else if (k.key_code == kKeyReturn || k.key_code == kKeySpace) {
      pressed = buttons[focus];
    } else if (k.key_code == kKeyEscape) {
      pressed = Has(buttons, kIdCancel) ? kIdCancel : count == 1 ? kIdOk : 0;
    } else if (k.key_code >= 'A' && k.key_code <= 'Z' &&
               (k.shift & kCtrlMask) == 0) {
      for (int b : buttons) {
        if (MnemonicOf(b) == k.key_code) {
          pressed = b;
        }
      }
    }
    if (pressed != 0) {
      if (i + 1 < strokes.size()) {
        throw RuntimeError(kErrInvalidCall,
                           "The message box closed at key " +
                               std::to_string(i + 1) + " of \"" +
                               std::string(keys) + "\"; the keys after it " +
                               "would go to a window the script doesn't name");
      }
      return pressed;
    }
  }
  return 0;
}

void PopupKeys(Menu& popup, std::string_view keys) {
  const std::vector<KeyStroke> strokes = ParseKeys(keys);
  std::vector<Menu*> open = {&popup};  // the pop-up and the entries opened
  Menu* highlight = nullptr;
  auto closed_at = [&](size_t i) {
    if (i + 1 < strokes.size()) {
      throw RuntimeError(kErrInvalidCall,
                         "The pop-up menu " + popup.DisplayName() +
                             " closed at key " + std::to_string(i + 1) +
                             " of \"" + std::string(keys) +
                             "\"; the keys after it would go to a window "
                             "the script doesn't name");
    }
  };
  // Opens an entry with entries, or picks one without: true when picked.
  auto choose = [&](Menu* m) {
    if (!Shown(*m).empty()) {
      m->Raise("Click");
      open.push_back(m);
      highlight = nullptr;
      for (Menu* e : Shown(*m)) {
        if (Selectable(*e)) {
          highlight = e;
          break;
        }
      }
      return false;
    }
    m->Raise("Click");
    return true;
  };
  for (size_t i = 0; i < strokes.size(); ++i) {
    const KeyStroke& k = strokes[i];
    std::vector<Menu*> entries;
    for (Menu* m : Shown(*open.back())) {
      if (Selectable(*m)) {
        entries.push_back(m);
      }
    }
    const int n = static_cast<int>(entries.size());
    int at = -1;
    for (int e = 0; e < n; ++e) {
      if (entries[e] == highlight) {
        at = e;
      }
    }
    switch (k.key_code) {
      case kKeyDown:
        highlight = n == 0 ? nullptr : entries[(at + 1) % n];
        continue;
      case kKeyUp:
        highlight =
            n == 0 ? nullptr : entries[at < 0 ? n - 1 : (at + n - 1) % n];
        continue;
      case kKeyHome:
        highlight = n == 0 ? nullptr : entries.front();
        continue;
      case kKeyEnd:
        highlight = n == 0 ? nullptr : entries.back();
        continue;
      case kKeyEscape:
      case kKeyLeft:
        if (open.size() > 1) {
          highlight = open.back();
          open.pop_back();
          continue;
        }
        if (k.key_code == kKeyEscape) {
          closed_at(i);
          return;
        }
        continue;
      case kKeyReturn:
      case kKeySpace:
      case kKeyRight:
        if (highlight == nullptr ||
            (k.key_code == kKeyRight && Shown(*highlight).empty())) {
          continue;
        }
        if (choose(highlight)) {
          closed_at(i);
          return;
        }
        continue;
      default:
        break;
    }
    if (k.key_code >= '0' && k.key_code <= 'Z') {
      for (Menu* m : entries) {
        if (m->AccessKey() == k.key_code) {
          if (choose(m)) {
            closed_at(i);
            return;
          }
          break;
        }
      }
    }
  }
  throw RuntimeError(kErrInvalidCall, "The pop-up menu " + popup.DisplayName() +
                                          " is still open after the keys \"" +
                                          std::string(keys) + "\"");
}

}  // namespace qbpd::user
