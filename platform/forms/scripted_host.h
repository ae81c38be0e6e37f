#ifndef QBPD_PLATFORM_FORMS_SCRIPTED_HOST_H_
#define QBPD_PLATFORM_FORMS_SCRIPTED_HOST_H_

#include "platform/forms/host.h"

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qbpd {

// A host without windows, for tests and the headless driver.
//
// Time is virtual: it stands still until the script advances it (Advance, or
// the program's own Sleep), and advancing fires due timers in the order of
// their due times (ties in the order they were scheduled). A timer does not
// fire again while its own handler runs.
//
// The user is a queue of steps. Run() takes them in order while the program
// is idle; a modal form runs the same loop nested, until it closes. Two kinds
// of step are taken only when the program asks: the answer to a message box
// (or a dialog, or a pop-up menu) is taken when the program shows one, and a
// step queued "inside" runs at the next DoEvents or Sleep, re-entrantly under
// whatever is on the stack (a cancel click while an upload waits).
//
// Anything the script didn't foresee ends the run with a HostAbort that names
// it: a message box, dialog or pop-up with no answer queued next, a modal form
// still open when the steps run out, an answer queued where the program shows
// nothing.
class ScriptedHost : public Host {
 public:
  // The text-width metric; the default counts every character as 7 pixels of
  // an 8.25-point font, scaled with the font size, and bold as 8.
  using TextMetric = std::function<int(std::string_view, const Font&)>;

  // `start` is the virtual clock's first reading.
  explicit ScriptedHost(LocalTime start = DefaultStart());
  ~ScriptedHost() override;

  static LocalTime DefaultStart();

  // --- the script ---------------------------------------------------------
  // A step the user takes when the program is idle.
  void Queue(std::string description, std::function<void()> step);
  // A step that runs at the next pump (DoEvents or Sleep) of the program.
  // `skip_pumps` lets that many pumps go by before the step runs.
  void QueueInside(std::string description,
                   std::function<void()> step,
                   int skip_pumps = 0);
  // The answer to the next message box: `answer` may check the call (throw
  // HostAbort when it isn't what was expected) and returns the button.
  void QueueMsgBoxAnswer(std::string description,
                         std::function<int(const MsgBoxCall&)> answer);
  // The answer to the next save dialog or folder chooser (nothing: Cancel).
  void QueueDialogAnswer(
      std::string description,
      std::function<std::optional<std::string>(const std::string& title)>
          answer);
  // What the user does with the next pop-up menu; `pick` receives the menu
  // and picks an entry (or nothing, to dismiss it).
  void QueuePopupPick(std::string description, std::function<void(Menu&)> pick);

  // Runs the next idle step; false when none is left.
  bool RunNext();
  // Runs every step.
  void Run();
  size_t PendingSteps() const { return steps_.size(); }

  // Advances the virtual clock by `ms`, firing due timers on the way and
  // running "inside" steps at each pump.
  void Advance(long long ms);
  // The user waits: the clock advances as with Advance, but "inside" steps
  // are left to the pumps of the timer handlers that fire meanwhile, so that
  // they land in the middle of what those handlers do.
  void Wait(long long ms);

  // Called after every idle step and timer, when no handler is on the stack
  // (the application collects unloaded forms there).
  void SetIdleHook(std::function<void()> hook) { idle_hook_ = std::move(hook); }
  // Where the host reports what happens (message boxes, forms, swallowed
  // errors), one line each.
  void SetTranscript(std::function<void(const std::string&)> sink) {
    transcript_ = std::move(sink);
  }

  // --- what happened ------------------------------------------------------
  const std::vector<MsgBoxCall>& MessageBoxes() const { return boxes_; }
  const std::vector<std::string>& FailedHandlers() const { return failures_; }
  int PumpCount() const { return pumps_; }
  // Forms shown, in order ("frmLogin modal", "frmMainWindow").
  const std::vector<std::string>& ShownForms() const { return shown_; }

  // --- settings of the fake world ----------------------------------------
  void SetTextMetric(TextMetric metric) { metric_ = std::move(metric); }
  void SetScreenSize(int width_twips, int height_twips);

  // --- Host ---------------------------------------------------------------
  int MsgBox(const std::string& prompt,
             int style,
             const std::string& title) override;
  void ShowForm(Form& form, bool modal) override;
  void HideForm(Form& form) override;
  void FormLoaded(Form& form) override;
  void FormUnloaded(Form& form) override;
  Form* ModalForm() const override;
  void PopupMenu(Form& form, Menu& menu, int x, int y) override;
  void DoEvents() override;
  void Sleep(int ms) override;
  // Blocks until `done` without a pump: the work takes no virtual time.
  void WaitForWork(const std::function<bool()>& done) override;
  void TimerChanged(Timer& timer, bool removed) override;
  LocalTime Now() const override;
  long long TickCount() const override { return now_ms_; }
  void SetMousePointer(int pointer) override { pointer_ = pointer; }
  int MousePointer() const override { return pointer_; }
  void SendKeys(const std::string& keys) override;
  int TextWidth(std::string_view text, const Font& font) const override;
  int ScreenWidth() const override { return screen_width_; }
  int ScreenHeight() const override { return screen_height_; }
  std::optional<std::string> SaveFileDialog(
      const SaveDialogCall& call) override;
  std::optional<std::string> BrowseForFolder(
      const FolderDialogCall& call) override;
  void HandlerFailed(const std::string& where,
                     const std::string& what) override;

 private:
  enum class StepKind { kIdle, kInside, kMsgBox, kDialog, kPopup };
  struct Step {
    StepKind kind;
    std::string description;
    std::function<void()> run;
    std::function<int(const MsgBoxCall&)> answer;
    std::function<std::optional<std::string>(const std::string&)> dialog;
    std::function<void(Menu&)> pick;
    int skip_pumps = 0;
  };
  struct Scheduled {
    long long due;
    unsigned long long sequence;
  };

  void Report(const std::string& line) const;
  // Takes the front step, which must be of `kind`; otherwise aborts with
  // `what` in the message.
  Step TakeAnswer(StepKind kind, const std::string& what);
  void RunInsideSteps();
  // Fires the earliest timer due at or before `until`; false if none.
  bool FireNextTimer(long long until);
  void AfterStep();

  LocalTime start_;
  long long now_ms_ = 0;
  std::deque<Step> steps_;
  std::map<Timer*, Scheduled> timers_;
  std::vector<Timer*> firing_;
  unsigned long long sequence_ = 0;
  std::vector<Form*> modal_stack_;
  // Shown forms, the most recently shown last: where sent keys go.
  std::vector<Form*> active_forms_;
  std::vector<MsgBoxCall> boxes_;
  std::vector<std::string> failures_;
  std::vector<std::string> shown_;
  std::function<void()> idle_hook_;
  void AdvanceClock(long long ms, bool pump);
  std::function<void(const std::string&)> transcript_;
  TextMetric metric_;
  int pointer_ = kPointerDefault;
  int pumps_ = 0;
  int screen_width_ = 1920 * kTwipsPerPixel;
  int screen_height_ = 1080 * kTwipsPerPixel;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_SCRIPTED_HOST_H_
