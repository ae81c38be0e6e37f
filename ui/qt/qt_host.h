#ifndef QBPD_UI_QT_QT_HOST_H_
#define QBPD_UI_QT_QT_HOST_H_

#include "platform/forms/host.h"
#include "platform/single_instance.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

class QEventLoop;
class QTimer;
class QWidget;

namespace qbpd {

class FormWindow;

// The desktop host: every loaded form has a window of its own, built from its
// controls by FormWindow; message boxes and dialogs are Qt's; modal forms run
// a nested event loop; timers are QTimers; the clock is the real one.
//
// Needs a QApplication made before it. After every event that reached the
// program (a widget's, a timer's, keys sent) and whenever the event loop is
// about to wait, the windows are brought in step with their forms; when no
// handler is on the stack the idle hook runs (where the application collects
// unloaded forms and ends the run).
class QtHost : public QObject, public Host {
  Q_OBJECT

 public:
  QtHost();
  ~QtHost() override;

  // Runs after events when no handler is on the stack.
  void SetIdleHook(std::function<void()> hook) { idle_hook_ = std::move(hook); }

  // The window of a loaded form, or nullptr.
  FormWindow* WindowOf(const Form& form) const;
  // Makes the window of a modal `form` a transient of its owner's window.
  void KeepAboveOwner(FormWindow& window, const Form& form);
  // Brings every window in step with its form, then, with no handler on the
  // stack, runs the idle hook. Widgets call it after each event they raise.
  void AfterEvent();
  // Brings every window in step with its form.
  void SyncWindows();
  // True while WaitUnnoticed waits: nothing may reach the program, and what
  // would is held with Hold.
  bool Holding() const { return holding_ > 0; }
  // Runs `action` (something a window would do to its form) once the wait
  // is over, at the next turn of the event loop.
  void Hold(std::function<void()> action);
  // Where keys sent with SendKeys and unhandled key presses go: the modal
  // form, else the form whose window was activated last.
  Form* ActiveForm() const;
  // A window was activated by the window system.
  void WindowActivated(Form& form);
  // A second start of the program asked this one to come forward with the
  // desktop's `token`: the window a person would be working in (the modal
  // form's, else the last active one) comes to the front with the focus.
  void BringForward(const ActivationToken& token);

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
  // Pumps only the events that reach no program code: paints, the window
  // system's own, Qt's timers. User input waits in its queue; the
  // program's timer ticks, form events and SendKeys are held (a timer that
  // came due fires once) and run after the event in hand.
  void WaitUnnoticed(const std::function<bool()>& done) override;
  void TimerChanged(Timer& timer, bool removed) override;
  LocalTime Now() const override;
  long long TickCount() const override;
  void SetMousePointer(int pointer) override;
  int MousePointer() const override { return pointer_; }
  int ShowCursor(bool show) override;
  void SendKeys(const std::string& keys) override;
  int TextWidth(std::string_view text, const Font& font) const override;
  int ScreenWidth() const override;
  int ScreenHeight() const override;
  std::optional<std::string> SaveFileDialog(
      const SaveDialogCall& call) override;
  std::optional<std::string> BrowseForFolder(
      const FolderDialogCall& call) override;
  void HandlerFailed(const std::string& where,
                     const std::string& what) override;

 private:
  struct ModalLevel {
    Form* form;
    QEventLoop* loop;
  };

  void FireTimer(Timer* timer);
  void Idle();
  // Runs what a wait held, unless another wait holds it now.
  void ReleaseHeld();
  // The window that a dialog of the program sits on.
  QWidget* DialogParent() const;

  std::map<const Form*, QPointer<FormWindow>> windows_;
  std::vector<ModalLevel> modal_stack_;
  std::vector<Form*> active_forms_;
  std::map<Timer*, QTimer*> timers_;
  std::set<Timer*> firing_;
  int holding_ = 0;
  std::vector<std::function<void()>> held_;
  std::vector<Timer*> held_timers_;
  std::function<void()> idle_hook_;
  QElapsedTimer ticks_;
  // When the windows were last brought in step; DoEvents does it at most
  // once a frame.
  QElapsedTimer since_sync_;
  int pointer_ = kPointerDefault;
  bool in_idle_ = false;
};

}  // namespace qbpd

#endif  // QBPD_UI_QT_QT_HOST_H_
