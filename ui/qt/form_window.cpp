#include "ui/qt/form_window.h"

#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/user_input.h"
#include "ui/qt/control_widget.h"
#include "ui/qt/generic_widgets.h"
#include "ui/qt/qt_convert.h"
#include "ui/qt/qt_host.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMenuBar>
#include <QPointer>
#include <QShortcut>
#include <QVBoxLayout>

#include <algorithm>
#include <exception>
#include <unordered_set>

namespace qbpd {
namespace {

// Containers nest a few levels deep; more is a loop in the form's Container
// values, which the window breaks by placing the control on the client area.
constexpr int kMaxContainerDepth = 16;

bool HasWidget(ControlKind kind) {
  return kind != ControlKind::kTimer && kind != ControlKind::kMenu;
}

}  // namespace

FormWindow::FormWindow(QtHost& host, Form& form)
    : QWidget(nullptr), host_(host), form_(form) {
  setObjectName(QString::fromStdString(form.Name()));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  menu_bar_ = new QMenuBar(this);
  menu_bar_->setNativeMenuBar(false);
  menu_bar_->hide();
  layout->setMenuBar(menu_bar_);
  client_ = new QWidget(this);
  client_->setObjectName("client");
  layout->addWidget(client_);
  setFocusPolicy(Qt::StrongFocus);
}

FormWindow::~FormWindow() {
  // The widgets are children of this window, which deletes them; a
  // ControlWidget that is itself a widget is left to that too.
  for (auto& [control, entry] : widgets_) {
    if (dynamic_cast<QWidget*>(entry.widget.get()) != nullptr) {
      (void)entry.widget.release();
    }
  }
  widgets_.clear();
}

bool FormWindow::Alive(const Control* control) const {
  const auto& controls = form_.Controls();
  return std::find(controls.begin(), controls.end(), control) != controls.end();
}

void FormWindow::Act(const Control* control, const std::function<void()>& fn) {
  if (detached_ || (control != nullptr && !Alive(control))) {
    return;
  }
  if (host_.Holding()) {
    // The program is in the middle of a call that waits unnoticed.
    QPointer<FormWindow> self(this);
    host_.Hold([self, control, fn] {
      if (self != nullptr) {
        self->Act(control, fn);
      }
    });
    return;
  }
  // The handlers may unload the form and so drop this window; what is
  // needed afterwards is taken now.
  QtHost& host = host_;
  const std::string where = form_.Name();
  try {
    fn();
  } catch (const HostAbort&) {
    // What a person did reached a control that the program had just made
    // unreachable (hidden, disabled, behind a modal form): nothing happens,
    // as on any screen.
  } catch (const std::exception& e) {
    host.HandlerFailed(where, e.what());
  }
  host.AfterEvent();
}

void FormWindow::ActOnForm(const std::function<void()>& fn) {
  Act(nullptr, fn);
}

void FormWindow::Detach() {
  if (detached_) {
    return;
  }
  detached_ = true;
  setUpdatesEnabled(false);
  hide();
  for (QShortcut* s : shortcuts_) {
    s->setEnabled(false);
  }
  deleteLater();
}

void FormWindow::Sync() {
  if (detached_) {
    return;
  }
  SyncForm();
  const auto& controls = form_.Controls();
  size_t with_widgets = 0;
  for (Control* c : controls) {
    if (HasWidget(c->Kind())) {
      SyncControl(*c);
      ++with_widgets;
    }
  }
  // Every control has its entry now; more entries than controls means some
  // were unloaded since.
  if (widgets_.size() > with_widgets) {
    std::unordered_set<const Control*> present(controls.begin(),
                                               controls.end());
    std::vector<const Control*> gone;
    for (const auto& [control, entry] : widgets_) {
      if (!present.contains(control)) {
        gone.push_back(control);
      }
    }
    for (const Control* c : gone) {
      DropWidget(const_cast<Control*>(c));
    }
  }
  SyncMenus(/*allow_rebuild=*/QApplication::activePopupWidget() == nullptr);
  // The program moved the focus (SetFocus): the widget follows.
  const Control* active = form_.ActiveControl();
  if (active != focused_) {
    focused_ = active;
    ControlWidget* w = active != nullptr ? WidgetOf(*active) : nullptr;
    if (w != nullptr && w->widget() != nullptr && w->widget()->isVisible() &&
        !w->widget()->hasFocus()) {
      w->widget()->setFocus(Qt::OtherFocusReason);
    }
  }
}

void FormWindow::SyncForm() {
  if (form_.revision() == form_revision_) {
    return;
  }
  form_revision_ = form_.revision();
  setWindowTitle(QString::fromStdString(form_.Caption()));
  setEnabled(form_.Enabled());
  applying_geometry_ = true;
  switch (form_.WindowState()) {
    case kWindowMaximized:
      if (isVisible() && !isMaximized() && !isFullScreen()) {
        showMaximized();
      }
      break;
    case kWindowMinimized:
      if (isVisible() && !isMinimized()) {
        showMinimized();
      }
      break;
    default: {
      if (isVisible() && (isMaximized() || isMinimized())) {
        showNormal();
      }
      QRect r =
          PixelRect(form_.Left(), form_.Top(), form_.Width(), form_.Height());
      if (size() != r.size()) {
        resize(r.size());
      }
      if (pos() != r.topLeft()) {
        move(r.topLeft());
      }
      break;
    }
  }
  applying_geometry_ = false;
}

QWidget* FormWindow::ParentFor(const Control& control, int depth) {
  if (control.Container().empty() || depth > kMaxContainerDepth) {
    return client_;
  }
  Control* container = form_.FindControl(control.Container());
  if (container == nullptr || container == &control ||
      !HasWidget(container->Kind())) {
    return client_;
  }
  ControlWidget* w = EnsureWidget(*container, depth + 1);
  return w != nullptr && w->widget() != nullptr ? w->widget() : client_;
}

ControlWidget* FormWindow::EnsureWidget(Control& control, int depth) {
  auto it = widgets_.find(&control);
  if (it != widgets_.end()) {
    if (it->second.widget->widget() != nullptr) {
      return it->second.widget.get();
    }
    // Its widget went with a container that was unloaded: make it anew.
    (void)it->second.widget.release();
    widgets_.erase(it);
  }
  QWidget* parent = ParentFor(control, depth);
  std::unique_ptr<ControlWidget> made;
  switch (control.Kind()) {
    case ControlKind::kThumbnail:
      made = MakeThumbnailWidget(static_cast<Thumbnail&>(control), parent);
      break;
    case ControlKind::kPhotoView:
      made = MakePhotoViewWidget(static_cast<PhotoView&>(control), parent);
      break;
    case ControlKind::kFolderTree:
      made = MakeFolderTreeWidget(static_cast<FolderTree&>(control), parent);
      break;
    default:
      made = MakeGenericWidget(control, parent, *this);
      break;
  }
  if (!made || made->widget() == nullptr) {
    return nullptr;
  }
  QWidget* w = made->widget();
  if (w->parentWidget() != parent) {
    w->setParent(parent);
  }
  w->setObjectName(QString::fromStdString(control.DisplayName()));
  StackInOrder(control, w);
  Entry entry;
  entry.widget = std::move(made);
  entry.container = control.Container();
  auto [placed, inserted] = widgets_.emplace(&control, std::move(entry));
  (void)inserted;
  return placed->second.widget.get();
}

void FormWindow::StackInOrder(const Control& control, QWidget* widget) {
  // A control declared later lies above one declared earlier, whenever
  // either widget was made.
  const auto& controls = form_.Controls();
  auto it = std::find(controls.begin(), controls.end(), &control);
  for (; it != controls.end(); ++it) {
    if (*it == &control) {
      continue;
    }
    auto later = widgets_.find(*it);
    if (later == widgets_.end() || later->second.widget == nullptr) {
      continue;
    }
    QWidget* above = later->second.widget->widget();
    if (above != nullptr && above->parentWidget() == widget->parentWidget()) {
      widget->stackUnder(above);
      return;
    }
  }
}

void FormWindow::SyncControl(Control& control) {
  auto it = widgets_.find(&control);
  if (it != widgets_.end() && it->second.revision == control.revision() &&
      it->second.widget->widget() != nullptr) {
    return;  // the common case: nothing changed
  }
  ControlWidget* w = EnsureWidget(control, 0);
  if (w == nullptr) {
    return;
  }
  Entry& entry = widgets_[&control];
  entry.revision = control.revision();
  QWidget* widget = w->widget();
  if (entry.container != control.Container()) {
    entry.container = control.Container();
    widget->setParent(ParentFor(control, 0));
    entry.fresh = true;  // a widget given a new parent is hidden by Qt
  }
  ApplyCommon(control, widget, entry);
  w->Sync();
}

void FormWindow::ApplyCommon(Control& control, QWidget* widget, Entry& entry) {
  Applied& was = entry.applied;
  const bool fresh = entry.fresh;
  entry.fresh = false;
  if (control.Kind() != ControlKind::kLine &&
      (fresh || was.left != control.Left() || was.top != control.Top() ||
       was.width != control.Width() || was.height != control.Height())) {
    was.left = control.Left();
    was.top = control.Top();
    was.width = control.Width();
    was.height = control.Height();
    // Whole pixels: a half twip is far below one.
    QRect r =
        PixelRect(static_cast<int>(was.left), static_cast<int>(was.top),
                  static_cast<int>(was.width), static_cast<int>(was.height));
    if (widget->geometry() != r) {
      widget->setGeometry(r);
    }
  }
  if (fresh || was.enabled != control.Enabled()) {
    was.enabled = control.Enabled();
    widget->setEnabled(was.enabled);
  }
  // A control's own tip, else the tip the form's tooltip object holds over
  // the control's middle.
  std::string tip = control.ToolTipText();
  if (tip.empty()) {
    tip = form_.ToolTipAt(
        control.Container(),
        static_cast<int>((control.Left() + control.Width() / 2) /
                         kTwipsPerPixel),
        static_cast<int>((control.Top() + control.Height() / 2) /
                         kTwipsPerPixel));
  }
  if (fresh || was.tool_tip != tip) {
    was.tool_tip = tip;
    widget->setToolTip(QString::fromStdString(was.tool_tip));
  }
  if (fresh || was.font_size != control.FontSize() ||
      was.font_bold != control.FontBold()) {
    was.font_size = control.FontSize();
    was.font_bold = control.FontBold();
    widget->setFont(MakeQFont(control.font()));
  }
  if (fresh || was.visible != control.Visible()) {
    was.visible = control.Visible();
    widget->setVisible(was.visible);
  }
}

void FormWindow::DropWidget(Control* control) {
  auto it = widgets_.find(control);
  if (it == widgets_.end()) {
    return;
  }
  std::unique_ptr<ControlWidget> owned = std::move(it->second.widget);
  widgets_.erase(it);
  QWidget* w = owned->widget();
  if (auto* object = dynamic_cast<QWidget*>(owned.get())) {
    (void)owned.release();
    if (w != nullptr) {
      w->hide();
    }
    object->deleteLater();
    return;
  }
  if (w != nullptr) {
    w->hide();
    w->deleteLater();
  }
}

ControlWidget* FormWindow::WidgetOf(const Control& control) const {
  auto it = widgets_.find(&control);
  return it == widgets_.end() ? nullptr : it->second.widget.get();
}

// --- the window's own events -------------------------------------------

void FormWindow::closeEvent(QCloseEvent* event) {
  if (detached_) {
    event->accept();
    return;
  }
  // The form decides: QueryUnload and Unload may refuse; when it goes, the
  // host drops this window.
  event->ignore();
  ActOnForm([this] { user::CloseForm(form_); });
}

void FormWindow::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  TellResized();
}

void FormWindow::TellResized() {
  if (detached_ || applying_geometry_ || !form_.Visible() || isMinimized()) {
    return;
  }
  if (host_.Holding()) {
    // Told once the program's call in hand is over, at the size the window
    // has then (the program may have sized it meanwhile).
    QPointer<FormWindow> self(this);
    host_.Hold([self] {
      if (self != nullptr) {
        self->TellResized();
      }
    });
    return;
  }
  QSize shown = size();
  QRect wanted =
      PixelRect(form_.Left(), form_.Top(), form_.Width(), form_.Height());
  if (shown == wanted.size()) {
    return;
  }
  int width = PixelsToTwips(shown.width());
  int height = PixelsToTwips(shown.height());
  ActOnForm([this, width, height] {
    form_.Move(form_.Left(), form_.Top(), width, height);
  });
}

void FormWindow::moveEvent(QMoveEvent* event) {
  QWidget::moveEvent(event);
  TellMoved();
}

void FormWindow::TellMoved() {
  if (detached_ || applying_geometry_ || !form_.Visible()) {
    return;
  }
  // pos() is the frame's corner, as the program's Left and Top are.
  int left = PixelsToTwips(pos().x());
  int top = PixelsToTwips(pos().y());
  if (TwipsToPixels(form_.Left()) == pos().x() &&
      TwipsToPixels(form_.Top()) == pos().y()) {
    return;
  }
  if (host_.Holding()) {
    // Told once the program's call in hand is over.
    QPointer<FormWindow> self(this);
    host_.Hold([self] {
      if (self != nullptr) {
        self->TellMoved();
      }
    });
    return;
  }
  form_.Move(left, top, form_.Width(), form_.Height());
  form_revision_ = form_.revision();
}

void FormWindow::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (detached_) {
    return;
  }
  if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
    host_.WindowActivated(form_);
    return;
  }
  if (event->type() != QEvent::WindowStateChange || applying_geometry_) {
    return;
  }
  // A window covering the screen is the program's maximized borderless
  // form (the slide show).
  int state = isMinimized()                     ? kWindowMinimized
              : isMaximized() || isFullScreen() ? kWindowMaximized
                                                : kWindowNormal;
  if (state != form_.WindowState() && form_.Visible()) {
    ActOnForm([this, state] { form_.SetWindowState(state); });
  }
}

void FormWindow::keyPressEvent(QKeyEvent* event) {
  if (detached_) {
    return;
  }
  std::string keys =
      SendKeysText(event->key(), event->modifiers(), event->text());
  if (keys.empty()) {
    QWidget::keyPressEvent(event);
    return;
  }
  event->accept();
  ActOnForm([this, keys] { user::PressKeys(form_, keys); });
}

}  // namespace qbpd
