#ifndef QBPD_PLATFORM_FORMS_HOST_H_
#define QBPD_PLATFORM_FORMS_HOST_H_

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace qbpd {

class Control;
class Form;
class Menu;
class Timer;

// Message box styles and answers, as the program passes and tests them.
inline constexpr int kMbOk = 0;
inline constexpr int kMbYesNo = 4;
inline constexpr int kMbStop = 16;
inline constexpr int kMbQuestion = 32;
inline constexpr int kMbInformation = 64;
inline constexpr int kMbDefaultButton2 = 256;
inline constexpr int kMbQuestionYesNo = kMbQuestion | kMbYesNo;  // 36
inline constexpr int kMbQuestionYesNoDefaultNo =
    kMbQuestionYesNo | kMbDefaultButton2;  // 292

inline constexpr int kIdOk = 1;
inline constexpr int kIdCancel = 2;
inline constexpr int kIdYes = 6;
inline constexpr int kIdNo = 7;

// Mouse pointers the program sets.
inline constexpr int kPointerDefault = 0;
inline constexpr int kPointerHourglass = 11;

// Twips per pixel at normal density.
inline constexpr int kTwipsPerPixel = 15;
// A length in twips. Whole numbers mostly, but a rule that halves a length
// (a panel of an odd number of rows) keeps the half.
using Twips = double;

// Civil local time, as the program reads the clock and today's date.
using LocalTime = std::chrono::local_time<std::chrono::milliseconds>;

struct MsgBoxCall {
  std::string prompt;
  int style = 0;
  std::string title;
};

struct Font {
  double size = 8.25;
  bool bold = false;
};

// The save dialog as the program fills it in.
struct SaveDialogCall {
  std::string title;
  std::string filter;  // "JPEG (*.jpg)|*.jpg|..." pairs of text and pattern
  std::string initial_dir;
  std::string file_name;    // proposed name
  std::string default_ext;  // without the dot
};

struct FolderDialogCall {
  std::string title;
  std::string start_folder;
};

// Everything the program proper asks of the window system. The program never
// talks to a toolkit directly; a host renders its forms and feeds it events.
//
// Two hosts exist: the scripted one (a virtual clock and a script of user
// actions, for tests and the headless driver) and the desktop one.
class Host {
 public:
  virtual ~Host() = default;

  // Shows a message box and returns the button pressed (kIdOk, kIdYes, ...).
  // `style` holds the icon, the buttons and the default button.
  virtual int MsgBox(const std::string& prompt,
                     int style,
                     const std::string& title) = 0;

  // Called by Form::Show. A modal show returns when the form has been hidden
  // or unloaded; the user's events for it (and timers) run meanwhile.
  virtual void ShowForm(Form& form, bool modal) = 0;
  virtual void HideForm(Form& form) = 0;
  // Called by the form runtime as a form comes and goes, so that the host can
  // build and drop its window.
  virtual void FormLoaded(Form& form) = 0;
  virtual void FormUnloaded(Form& form) = 0;
  // The innermost form shown modally now, or nullptr: while there is one, a
  // person can reach no other form.
  virtual Form* ModalForm() const = 0;

  // Opens `menu` as a pop-up at (x, y) twips on `form` and returns once the
  // user has picked an entry (whose Click has then run) or dismissed it.
  virtual void PopupMenu(Form& form, Menu& menu, int x, int y) = 0;

  // One pump of pending events: due timers and user actions run now,
  // re-entrantly, under whatever is on the stack.
  virtual void DoEvents() = 0;
  // Waits `ms` milliseconds while events keep being pumped.
  virtual void Sleep(int ms) = 0;
  // Waits until `done` answers true while work runs on another thread. The
  // window keeps answering: this pumps events every few milliseconds. The
  // scripted host waits without pumping, as for work of no virtual time, so
  // that a script's steps land where they would land without the work.
  virtual void WaitForWork(const std::function<bool()>& done) {
    while (!done()) {
      DoEvents();
      if (!done()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
      }
    }
  }

  // Waits until `done` answers true while work below the program's
  // interfaces runs on another thread (the photo view's decoding), with
  // nothing of the program running meanwhile: a call that waits here returns
  // before any other event of the program is handled. A desktop host keeps
  // its windows painting and answering the window system, and holds user
  // input, the program's timers and what the window system asks of a form
  // (a close, a resize) until the event in hand is over. This host, as the
  // scripted one, waits plainly.
  virtual void WaitUnnoticed(const std::function<bool()>& done) {
    while (!done()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }

  // A timer control's Enabled or Interval changed (or it is going away, with
  // `removed` set). Enabling or changing the interval starts a new period.
  virtual void TimerChanged(Timer& timer, bool removed) = 0;

  // The clock: civil local time and a millisecond tick count.
  virtual LocalTime Now() const = 0;
  virtual long long TickCount() const = 0;

  virtual void SetMousePointer(int pointer) = 0;
  virtual int MousePointer() const = 0;

  // ShowCursor: raises (true) or lowers (false) the display count of the
  // mouse cursor, which shows while the count is 0 or more, and returns the
  // new count. A desktop host hides the cursor while the count is below 0.
  virtual int ShowCursor(bool show) {
    cursor_count_ += show ? 1 : -1;
    return cursor_count_;
  }
  int CursorCount() const { return cursor_count_; }

  // Keys typed into the focused control after the current event, as
  // "{F1}", "{ENTER}" or plain text.
  virtual void SendKeys(const std::string& keys) = 0;

  // Width of `text` in twips in the given font.
  virtual int TextWidth(std::string_view text, const Font& font) const = 0;

  // The size of the screen in twips.
  virtual int ScreenWidth() const = 0;
  virtual int ScreenHeight() const = 0;

  // The save dialog and the folder chooser; nothing when the user cancels.
  virtual std::optional<std::string> SaveFileDialog(
      const SaveDialogCall& call) = 0;
  virtual std::optional<std::string> BrowseForFolder(
      const FolderDialogCall& call) = 0;

  // An event handler threw; the dispatch has caught it and goes on. The host
  // may show or record it; the user sees nothing, as the program swallows
  // unexpected errors.
  virtual void HandlerFailed(const std::string& where,
                             const std::string& what) = 0;

  // Event dispatch depth: how many handlers are on the stack. Forms that were
  // unloaded are destroyed only when this returns to zero.
  int dispatch_depth() const { return dispatch_depth_; }
  void EnterDispatch() { ++dispatch_depth_; }
  void LeaveDispatch() { --dispatch_depth_; }

 private:
  int dispatch_depth_ = 0;
  int cursor_count_ = 0;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_HOST_H_
