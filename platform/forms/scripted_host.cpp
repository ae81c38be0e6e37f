#include "platform/forms/scripted_host.h"

#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/user_input.h"

#include <algorithm>
#include <cmath>
#include <thread>

namespace qbpd {
namespace {

std::string Quote(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '\r') {
      continue;
    }
    if (c == '\n') {
      out += "\\n";
    } else {
      out += c;
    }
  }
  return out + "\"";
}

}  // namespace

LocalTime ScriptedHost::DefaultStart() {
  using namespace std::chrono;
  // A fixed, ordinary weekday morning, so that runs are repeatable.
  return local_days{year{2026} / January / 15} + hours{9};
}

ScriptedHost::ScriptedHost(LocalTime start) : start_(start) {}

ScriptedHost::~ScriptedHost() = default;

void ScriptedHost::Report(const std::string& line) const {
  if (transcript_) {
    transcript_(line);
  }
}

void ScriptedHost::Queue(std::string description, std::function<void()> step) {
  steps_.push_back(Step{StepKind::kIdle, std::move(description),
                        std::move(step), nullptr, nullptr, nullptr});
}

void ScriptedHost::QueueInside(std::string description,
                               std::function<void()> step,
                               int skip_pumps) {
  steps_.push_back(Step{StepKind::kInside, std::move(description),
                        std::move(step), nullptr, nullptr, nullptr,
                        skip_pumps});
}

void ScriptedHost::QueueMsgBoxAnswer(
    std::string description,
    std::function<int(const MsgBoxCall&)> answer) {
  steps_.push_back(Step{StepKind::kMsgBox, std::move(description), nullptr,
                        std::move(answer), nullptr, nullptr});
}

void ScriptedHost::QueueDialogAnswer(
    std::string description,
    std::function<std::optional<std::string>(const std::string&)> answer) {
  steps_.push_back(Step{StepKind::kDialog, std::move(description), nullptr,
                        nullptr, std::move(answer), nullptr});
}

void ScriptedHost::QueuePopupPick(std::string description,
                                  std::function<void(Menu&)> pick) {
  steps_.push_back(Step{StepKind::kPopup, std::move(description), nullptr,
                        nullptr, nullptr, std::move(pick)});
}

bool ScriptedHost::RunNext() {
  if (steps_.empty()) {
    return false;
  }
  Step step = std::move(steps_.front());
  steps_.pop_front();
  switch (step.kind) {
    case StepKind::kIdle:
    case StepKind::kInside:
      // An "inside" step that no pump took runs when the program is idle.
      step.run();
      AfterStep();
      return true;
    case StepKind::kMsgBox:
      throw HostAbort("The script answers a message box (" + step.description +
                      "), but none is shown");
    case StepKind::kDialog:
      throw HostAbort("The script answers a dialog (" + step.description +
                      "), but none is shown");
    case StepKind::kPopup:
      throw HostAbort("The script picks from a pop-up menu (" +
                      step.description + "), but none is open");
  }
  return true;
}

void ScriptedHost::Run() {
  while (RunNext()) {
  }
}

void ScriptedHost::AfterStep() {
  if (dispatch_depth() == 0 && idle_hook_) {
    idle_hook_();
  }
}

ScriptedHost::Step ScriptedHost::TakeAnswer(StepKind kind,
                                            const std::string& what) {
  // Steps queued to run inside a pump come first if they are next.
  if (steps_.empty()) {
    throw HostAbort("Unexpected " + what + " after the last step");
  }
  if (steps_.front().kind != kind) {
    throw HostAbort("Unexpected " + what +
                    "; the next step is: " + steps_.front().description);
  }
  Step step = std::move(steps_.front());
  steps_.pop_front();
  return step;
}

int ScriptedHost::MsgBox(const std::string& prompt,
                         int style,
                         const std::string& title) {
  MsgBoxCall call{prompt, style, title};
  boxes_.push_back(call);
  Report("message box [" + std::to_string(style) + "] " + Quote(prompt) +
         " caption " + Quote(title));
  std::string what = "message box " + Quote(prompt) + " (style " +
                     std::to_string(style) + ", caption " + Quote(title) + ")";
  Step step = TakeAnswer(StepKind::kMsgBox, what);
  int answer = step.answer(call);
  Report("  answered " + std::to_string(answer));
  return answer;
}

std::optional<std::string> ScriptedHost::SaveFileDialog(
    const SaveDialogCall& call) {
  Report("save dialog " + Quote(call.title) + " name " + Quote(call.file_name));
  Step step = TakeAnswer(StepKind::kDialog, "save dialog " + Quote(call.title));
  return step.dialog(call.title);
}

std::optional<std::string> ScriptedHost::BrowseForFolder(
    const FolderDialogCall& call) {
  Report("folder dialog " + Quote(call.title));
  Step step =
      TakeAnswer(StepKind::kDialog, "folder dialog " + Quote(call.title));
  return step.dialog(call.title);
}

void ScriptedHost::PopupMenu(Form& form, Menu& menu, int x, int y) {
  Report("pop-up menu " + form.Name() + "." + menu.DisplayName() + " at " +
         std::to_string(x) + "," + std::to_string(y));
  Step step = TakeAnswer(StepKind::kPopup, "pop-up menu " + form.Name() + "." +
                                               menu.DisplayName());
  step.pick(menu);
}

void ScriptedHost::ShowForm(Form& form, bool modal) {
  if (form.Visible()) {
    if (!modal) {
      return;
    }
    throw RuntimeError(
        kErrInvalidCall,
        "Form already displayed; can't show modally: " + form.Name());
  }
  shown_.push_back(form.Name() + (modal ? " modal" : ""));
  Report("form " + form.Name() + " shown" + (modal ? " modal" : ""));
  if (modal) {
    modal_stack_.push_back(&form);
  }
  active_forms_.push_back(&form);
  form.HostShown(modal);
  if (!modal) {
    return;
  }
  // The nested loop of a modal form: the user's steps run until it closes.
  // It counts as a handler on the stack, so that the form outlives the loop.
  struct DepthGuard {
    Host& host;
    explicit DepthGuard(Host& h) : host(h) { host.EnterDispatch(); }
    ~DepthGuard() { host.LeaveDispatch(); }
  } guard(*this);
  while (!form.IsUnloaded() && form.Visible()) {
    if (steps_.empty()) {
      throw HostAbort("Form " + form.Name() +
                      " is still shown modal after the last step");
    }
    RunNext();
  }
  modal_stack_.erase(
      std::remove(modal_stack_.begin(), modal_stack_.end(), &form),
      modal_stack_.end());
}

void ScriptedHost::HideForm(Form& form) {
  if (!form.Visible()) {
    return;
  }
  Report("form " + form.Name() + " hidden");
  form.HostHidden();
  std::erase(active_forms_, &form);
  modal_stack_.erase(
      std::remove(modal_stack_.begin(), modal_stack_.end(), &form),
      modal_stack_.end());
}

void ScriptedHost::FormLoaded(Form& form) {
  (void)form;
}

void ScriptedHost::FormUnloaded(Form& form) {
  Report("form " + form.Name() + " unloaded");
  std::erase(active_forms_, &form);
  modal_stack_.erase(
      std::remove(modal_stack_.begin(), modal_stack_.end(), &form),
      modal_stack_.end());
}

Form* ScriptedHost::ModalForm() const {
  return modal_stack_.empty() ? nullptr : modal_stack_.back();
}

void ScriptedHost::RunInsideSteps() {
  while (!steps_.empty() && steps_.front().kind == StepKind::kInside) {
    if (steps_.front().skip_pumps > 0) {
      --steps_.front().skip_pumps;
      return;
    }
    Step step = std::move(steps_.front());
    steps_.pop_front();
    step.run();
  }
}

void ScriptedHost::DoEvents() {
  ++pumps_;
  while (FireNextTimer(now_ms_)) {
  }
  RunInsideSteps();
}

void ScriptedHost::Sleep(int ms) {
  Advance(std::max(0, ms));
}

void ScriptedHost::WaitForWork(const std::function<bool()>& done) {
  while (!done()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

void ScriptedHost::Advance(long long ms) {
  AdvanceClock(ms, /*pump=*/true);
}

void ScriptedHost::Wait(long long ms) {
  AdvanceClock(ms, /*pump=*/false);
}

void ScriptedHost::AdvanceClock(long long ms, bool pump) {
  long long until = now_ms_ + ms;
  ++pumps_;
  if (pump) {
    RunInsideSteps();
  }
  while (FireNextTimer(until)) {
    if (pump) {
      RunInsideSteps();
    }
  }
  now_ms_ = std::max(now_ms_, until);
}

bool ScriptedHost::FireNextTimer(long long until) {
  Timer* next = nullptr;
  Scheduled best{0, 0};
  for (const auto& [timer, when] : timers_) {
    if (when.due > until) {
      continue;
    }
    if (std::find(firing_.begin(), firing_.end(), timer) != firing_.end()) {
      continue;  // its handler is on the stack
    }
    if (next == nullptr || when.due < best.due ||
        (when.due == best.due && when.sequence < best.sequence)) {
      next = timer;
      best = when;
    }
  }
  if (next == nullptr) {
    return false;
  }
  now_ms_ = std::max(now_ms_, best.due);
  // The next period counts from this tick; the handler may change that.
  timers_[next] = Scheduled{best.due + next->Interval(), ++sequence_};
  firing_.push_back(next);
  struct Done {
    std::vector<Timer*>& firing;
    Timer* timer;
    ~Done() { firing.erase(std::find(firing.begin(), firing.end(), timer)); }
  } done{firing_, next};
  next->Raise("Timer");
  AfterStep();
  return true;
}

void ScriptedHost::TimerChanged(Timer& timer, bool removed) {
  if (removed || !timer.IsRunning()) {
    timers_.erase(&timer);
    return;
  }
  timers_[&timer] = Scheduled{now_ms_ + timer.Interval(), ++sequence_};
}

LocalTime ScriptedHost::Now() const {
  return start_ + std::chrono::milliseconds(now_ms_);
}

void ScriptedHost::SendKeys(const std::string& keys) {
  Report("send keys " + Quote(keys));
  // The keys reach the active form at the next pump, as queued input does.
  steps_.push_front(Step{StepKind::kInside, "send keys " + keys,
                         [this, keys] {
                           Form* target = ModalForm();
                           if (target == nullptr && !active_forms_.empty()) {
                             target = active_forms_.back();
                           }
                           if (target != nullptr) {
                             user::PressKeys(*target, keys);
                           }
                         },
                         nullptr, nullptr, nullptr});
}

int ScriptedHost::TextWidth(std::string_view text, const Font& font) const {
  if (metric_) {
    return metric_(text, font);
  }
  // Count characters, not UTF-8 bytes.
  int chars = 0;
  for (char c : text) {
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) {
      ++chars;
    }
  }
  double per_char = (font.bold ? 8 : 7) * kTwipsPerPixel * font.size / 8.25;
  return static_cast<int>(std::lround(chars * per_char));
}

void ScriptedHost::SetScreenSize(int width_twips, int height_twips) {
  screen_width_ = width_twips;
  screen_height_ = height_twips;
}

void ScriptedHost::HandlerFailed(const std::string& where,
                                 const std::string& what) {
  failures_.push_back(where + ": " + what);
  Report("error swallowed in " + where + ": " + what);
}

}  // namespace qbpd
