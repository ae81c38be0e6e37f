#include "ui/qt/qt_host.h"

#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/user_input.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_convert.h"
#include "ui/qt/window_activation.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDateTime>
#include <QEventLoop>
#include <QFileDialog>
#include <QFontMetricsF>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QThread>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iostream>
#include <thread>

namespace qbpd {
namespace {

// A frame at 60 per second: a loop that pumps events more often than this
// shows its progress no more often.
constexpr int kFrameMs = 16;

// Counts a nested loop as a handler on the stack, so that a form shown modal
// outlives its loop even when it was unloaded inside it.
class DispatchGuard {
 public:
  explicit DispatchGuard(Host& host) : host_(host) { host_.EnterDispatch(); }
  ~DispatchGuard() { host_.LeaveDispatch(); }
  DispatchGuard(const DispatchGuard&) = delete;
  DispatchGuard& operator=(const DispatchGuard&) = delete;

 private:
  Host& host_;
};

}  // namespace

QtHost::QtHost() {
  ticks_.start();
  since_sync_.start();
  // The third-party widgets raise events without telling the host; the
  // windows catch up before the event loop waits for the next event.
  if (auto* dispatcher = QAbstractEventDispatcher::instance()) {
    connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this,
            [this] { Idle(); });
  }
}

QtHost::~QtHost() {
  for (auto& [timer, qtimer] : timers_) {
    delete qtimer;
  }
  for (auto& [form, window] : windows_) {
    delete window.data();
  }
  if (pointer_ == kPointerHourglass) {
    QApplication::restoreOverrideCursor();
  }
}

FormWindow* QtHost::WindowOf(const Form& form) const {
  auto it = windows_.find(&form);
  return it == windows_.end() ? nullptr : it->second.data();
}

void QtHost::SyncWindows() {
  since_sync_.restart();
  // A sync may make widgets, whose making may not unload forms, but copy the
  // list all the same.
  std::vector<QPointer<FormWindow>> windows;
  windows.reserve(windows_.size());
  for (auto& [form, window] : windows_) {
    windows.push_back(window);
  }
  for (auto& window : windows) {
    if (window != nullptr) {
      window->Sync();
    }
  }
}

void QtHost::AfterEvent() {
  SyncWindows();
  if (dispatch_depth() == 0 && idle_hook_ && !in_idle_) {
    in_idle_ = true;
    idle_hook_();
    in_idle_ = false;
  }
}

void QtHost::Idle() {
  if (in_idle_ || Holding()) {
    return;
  }
  AfterEvent();
}

Form* QtHost::ActiveForm() const {
  if (Form* modal = ModalForm()) {
    return modal;
  }
  return active_forms_.empty() ? nullptr : active_forms_.back();
}

void QtHost::WindowActivated(Form& form) {
  if (!form.Visible()) {
    return;
  }
  std::erase(active_forms_, &form);
  active_forms_.push_back(&form);
}

void QtHost::BringForward(const ActivationToken& token) {
  SyncWindows();
  FormWindow* window = nullptr;
  if (Form* form = ActiveForm()) {
    window = WindowOf(*form);
  }
  if (window == nullptr || window->detached() || !window->isVisible()) {
    window = nullptr;
    for (auto& [form, candidate] : windows_) {
      if (candidate != nullptr && !candidate->detached() &&
          candidate->isVisible()) {
        window = candidate.data();
      }
    }
  }
  if (window != nullptr) {
    ActivateWithToken(window, token);
  }
}

QWidget* QtHost::DialogParent() const {
  Form* form = ActiveForm();
  FormWindow* window = form != nullptr ? WindowOf(*form) : nullptr;
  if (window != nullptr && window->isVisible()) {
    return window;
  }
  return QApplication::activeWindow();
}

int QtHost::MsgBox(const std::string& prompt,
                   int style,
                   const std::string& title) {
  // What the handler changed so far shows behind the box.
  SyncWindows();
  MessageBoxLook look = LookOfStyle(style);
  QMessageBox box(look.icon, QString::fromStdString(title),
                  QString::fromStdString(prompt), look.buttons, DialogParent());
  box.setTextFormat(Qt::PlainText);
  box.setDefaultButton(look.default_button);
  box.setEscapeButton(look.escape_button);
  DispatchGuard guard(*this);
  box.exec();
  auto pressed = box.standardButton(box.clickedButton());
  if (pressed == QMessageBox::NoButton) {
    pressed = look.escape_button;
  }
  return AnswerOf(pressed);
}

void QtHost::KeepAboveOwner(FormWindow& window, const Form& form) {
  // The owner is the form that was active before this one: the window
  // manager keeps the modal window above it and places it over it.
  for (auto it = active_forms_.rbegin(); it != active_forms_.rend(); ++it) {
    if (*it == &form) {
      continue;
    }
    FormWindow* owner = WindowOf(**it);
    if (owner == nullptr || !owner->isVisible()) {
      continue;
    }
    window.winId();
    owner->winId();
    if (window.windowHandle() != nullptr && owner->windowHandle() != nullptr) {
      window.windowHandle()->setTransientParent(owner->windowHandle());
    }
    return;
  }
}

void QtHost::ShowForm(Form& form, bool modal) {
  if (form.Visible()) {
    if (!modal) {
      if (FormWindow* window = WindowOf(form)) {
        window->raise();
        window->activateWindow();
      }
      return;
    }
    throw RuntimeError(
        kErrInvalidCall,
        "Form already displayed; can't show modally: " + form.Name());
  }
  FormWindow* window = WindowOf(form);
  if (window == nullptr) {
    FormLoaded(form);
    window = WindowOf(form);
  }
  active_forms_.push_back(&form);
  QPointer<FormWindow> guarded(window);
  // A form shown modally is a dialog: a title and a close box, no buttons to
  // minimise or maximise it.
  // A form without a border shown maximised covers the screen (the slide
  // show).
  const bool full_screen =
      form.BorderStyle() == 0 && form.WindowState() == kWindowMaximized;
  const Qt::WindowFlags flags =
      full_screen ? Qt::WindowFlags(Qt::Window | Qt::FramelessWindowHint)
      : modal     ? Qt::WindowFlags(Qt::Dialog | Qt::CustomizeWindowHint |
                                    Qt::WindowTitleHint | Qt::WindowCloseButtonHint)
                  : Qt::WindowFlags(Qt::Window);
  if (window->windowType() != (flags & Qt::WindowType_Mask) ||
      (full_screen &&
       !window->windowFlags().testFlag(Qt::FramelessWindowHint))) {
    window->setWindowFlags(flags);
  }
  window->setWindowModality(modal ? Qt::ApplicationModal : Qt::NonModal);
  QEventLoop loop;
  if (modal) {
    modal_stack_.push_back(ModalLevel{&form, &loop});
  }
  form.HostShown(modal);
  if (guarded == nullptr || guarded->detached()) {
    return;  // its Activate or Resize unloaded it
  }
  guarded->Sync();
  if (modal) {
    KeepAboveOwner(*guarded, form);
  }
  if (full_screen) {
    guarded->showFullScreen();
  } else if (form.WindowState() == kWindowMaximized) {
    guarded->showMaximized();
  } else if (form.WindowState() == kWindowMinimized) {
    guarded->showMinimized();
  } else {
    guarded->show();
  }
  guarded->raise();
  guarded->activateWindow();
  if (!modal) {
    return;
  }
  DispatchGuard depth(*this);
  // The loop may already have been told to end (the form hid itself while
  // being shown); then it is not entered at all.
  bool still_shown = !form.IsUnloaded() && form.Visible();
  if (still_shown) {
    loop.exec();
  }
  auto it =
      std::find_if(modal_stack_.begin(), modal_stack_.end(),
                   [&loop](const ModalLevel& l) { return l.loop == &loop; });
  if (it != modal_stack_.end()) {
    modal_stack_.erase(it);
  }
}

void QtHost::HideForm(Form& form) {
  if (!form.Visible()) {
    return;
  }
  form.HostHidden();
  std::erase(active_forms_, &form);
  if (FormWindow* window = WindowOf(form)) {
    window->hide();
    window->setWindowModality(Qt::NonModal);
  }
  for (ModalLevel& level : modal_stack_) {
    if (level.form == &form) {
      level.loop->quit();
    }
  }
}

void QtHost::FormLoaded(Form& form) {
  if (WindowOf(form) != nullptr) {
    return;
  }
  // The window's widgets are made at its first sync, after Form_Load has
  // set the controls up.
  windows_[&form] = new FormWindow(*this, form);
}

void QtHost::FormUnloaded(Form& form) {
  std::erase(active_forms_, &form);
  auto it = windows_.find(&form);
  if (it != windows_.end()) {
    if (it->second != nullptr) {
      it->second->Detach();
    }
    windows_.erase(it);
  }
  for (ModalLevel& level : modal_stack_) {
    if (level.form == &form) {
      level.loop->quit();
    }
  }
}

Form* QtHost::ModalForm() const {
  for (auto it = modal_stack_.rbegin(); it != modal_stack_.rend(); ++it) {
    if (it->form->Visible() && !it->form->IsUnloaded()) {
      return it->form;
    }
  }
  return nullptr;
}

void QtHost::PopupMenu(Form& form, Menu& menu, int x, int y) {
  FormWindow* window = WindowOf(form);
  if (window == nullptr || !form.Visible()) {
    return;
  }
  SyncWindows();
  DispatchGuard guard(*this);
  window->ExecPopup(menu, x, y);
}

void QtHost::DoEvents() {
  if (since_sync_.elapsed() >= kFrameMs) {
    SyncWindows();
  }
  QCoreApplication::processEvents();
}

void QtHost::Sleep(int ms) {
  SyncWindows();
  if (ms <= 0) {
    QCoreApplication::processEvents();
    return;
  }
  // A nested loop rather than a blocked thread: the windows keep painting
  // and the program's events keep coming while it waits.
  QEventLoop loop;
  QTimer::singleShot(ms, &loop, &QEventLoop::quit);
  loop.exec();
}

void QtHost::WaitUnnoticed(const std::function<bool()>& done) {
  // Work below the program may wait on a thread of its own (a photo view
  // made on the decoding thread loads there); that thread has no window to
  // keep answering, and the windows are not its to touch.
  if (QThread::currentThread() != thread()) {
    Host::WaitUnnoticed(done);
    return;
  }
  ++holding_;
  while (!done()) {
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    if (!done()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
  }
  --holding_;
  if (Holding()) {
    return;
  }
  // The windows catch up with what the program asked of them before the
  // wait (the idle step that would have done so was held).
  SyncWindows();
  if (!held_.empty() || !held_timers_.empty()) {
    QTimer::singleShot(0, this, [this] { ReleaseHeld(); });
  }
}

void QtHost::Hold(std::function<void()> action) {
  held_.push_back(std::move(action));
}

void QtHost::ReleaseHeld() {
  if (Holding()) {
    return;  // that wait releases them when it ends
  }
  std::vector<std::function<void()>> actions = std::move(held_);
  std::vector<Timer*> timers = std::move(held_timers_);
  held_.clear();
  held_timers_.clear();
  for (const auto& action : actions) {
    action();
  }
  for (Timer* timer : timers) {
    FireTimer(timer);  // one that went meanwhile is no longer known
  }
}

void QtHost::TimerChanged(Timer& timer, bool removed) {
  auto it = timers_.find(&timer);
  if (removed) {
    std::erase(held_timers_, &timer);
  }
  if (removed || !timer.IsRunning()) {
    if (it != timers_.end()) {
      it->second->stop();
      it->second->deleteLater();
      timers_.erase(it);
    }
    return;
  }
  QTimer* qtimer = nullptr;
  if (it == timers_.end()) {
    qtimer = new QTimer();
    qtimer->setTimerType(Qt::PreciseTimer);
    Timer* t = &timer;
    connect(qtimer, &QTimer::timeout, this, [this, t] { FireTimer(t); });
    timers_[&timer] = qtimer;
  } else {
    qtimer = it->second;
  }
  // Enabling or a new interval starts a new period.
  qtimer->start(std::max(1, timer.Interval()));
}

void QtHost::FireTimer(Timer* timer) {
  if (!timers_.contains(timer) || firing_.contains(timer) ||
      !timer->IsRunning()) {
    return;
  }
  if (Holding()) {
    if (std::find(held_timers_.begin(), held_timers_.end(), timer) ==
        held_timers_.end()) {
      held_timers_.push_back(timer);
    }
    return;
  }
  // A timer does not fire again while its own handler runs (the handler may
  // pump events); a tick that came meanwhile is dropped.
  firing_.insert(timer);
  try {
    timer->Raise("Timer");
  } catch (const HostAbort& e) {
    HandlerFailed(timer->form().Name() + "." + timer->DisplayName(),
                  e.message());
  }
  firing_.erase(timer);
  AfterEvent();
}

LocalTime QtHost::Now() const {
  using namespace std::chrono;
  QDateTime now = QDateTime::currentDateTime();
  QDate d = now.date();
  QTime t = now.time();
  return local_days{year{d.year()} / d.month() / d.day()} + hours{t.hour()} +
         minutes{t.minute()} + seconds{t.second()} + milliseconds{t.msec()};
}

long long QtHost::TickCount() const {
  return ticks_.elapsed();
}

void QtHost::SetMousePointer(int pointer) {
  if (pointer == pointer_) {
    return;
  }
  if (pointer_ == kPointerHourglass) {
    QApplication::restoreOverrideCursor();
  }
  if (pointer == kPointerHourglass) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
  }
  pointer_ = pointer;
}

int QtHost::ShowCursor(bool show) {
  const bool was_shown = CursorCount() >= 0;
  const int count = Host::ShowCursor(show);
  if (was_shown && count < 0) {
    QApplication::setOverrideCursor(Qt::BlankCursor);
  } else if (!was_shown && count >= 0) {
    QApplication::restoreOverrideCursor();
  }
  return count;
}

void QtHost::SendKeys(const std::string& keys) {
  // As typed keys do, they arrive after the current event: at the next turn
  // of the event loop, on the form that is active then.
  QTimer::singleShot(0, this, [this, keys] {
    if (Holding()) {
      Hold([this, keys] { SendKeys(keys); });
      return;
    }
    Form* target = ActiveForm();
    if (target == nullptr) {
      return;
    }
    FormWindow* window = WindowOf(*target);
    if (window == nullptr) {
      return;
    }
    window->ActOnForm([target, keys] { user::PressKeys(*target, keys); });
  });
}

int QtHost::TextWidth(std::string_view text, const Font& font) const {
  QFontMetricsF metrics(MakeQFont(font));
  double pixels = metrics.horizontalAdvance(
      QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
  return static_cast<int>(std::lround(pixels * kTwipsPerPixel));
}

int QtHost::ScreenWidth() const {
  QScreen* screen = QGuiApplication::primaryScreen();
  return screen != nullptr ? PixelsToTwips(screen->geometry().width()) : 0;
}

int QtHost::ScreenHeight() const {
  QScreen* screen = QGuiApplication::primaryScreen();
  return screen != nullptr ? PixelsToTwips(screen->geometry().height()) : 0;
}

std::optional<std::string> QtHost::SaveFileDialog(const SaveDialogCall& call) {
  SyncWindows();
  QFileDialog dialog(DialogParent(), QString::fromStdString(call.title));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  QString filter = QtFileFilter(call.filter);
  if (!filter.isEmpty()) {
    dialog.setNameFilters(filter.split(";;"));
  }
  if (!call.initial_dir.empty()) {
    dialog.setDirectory(QString::fromStdString(call.initial_dir));
  }
  if (!call.default_ext.empty()) {
    dialog.setDefaultSuffix(QString::fromStdString(call.default_ext));
  }
  if (!call.file_name.empty()) {
    dialog.selectFile(QString::fromStdString(call.file_name));
  }
  DispatchGuard guard(*this);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
    return std::nullopt;
  }
  return dialog.selectedFiles().first().toStdString();
}

std::optional<std::string> QtHost::BrowseForFolder(
    const FolderDialogCall& call) {
  SyncWindows();
  DispatchGuard guard(*this);
  QString folder = QFileDialog::getExistingDirectory(
      DialogParent(), QString::fromStdString(call.title),
      QString::fromStdString(call.start_folder));
  if (folder.isEmpty()) {
    return std::nullopt;
  }
  return folder.toStdString();
}

void QtHost::HandlerFailed(const std::string& where, const std::string& what) {
  // The user sees nothing, as the program swallows unplanned errors; the
  // terminal keeps a line for whoever looks.
  std::cerr << "qbpd: error swallowed in " << where << ": " << what << '\n';
}

}  // namespace qbpd
