#ifndef QBPD_UI_QT_FORM_WINDOW_H_
#define QBPD_UI_QT_FORM_WINDOW_H_

#include "platform/forms/host.h"

#include <QWidget>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class QAction;
class QMenu;
class QMenuBar;
class QShortcut;

namespace qbpd {

class Control;
class ControlWidget;
class Form;
class Menu;
class QtHost;

// The window of one form, built from its registered controls alone: one
// widget per control at its twips geometry (a control whose Container names
// a frame or picture box is a child widget of it, and a control declared
// later lies above one declared earlier), the menu bar from its menu
// controls, and the form's own events (Resize, QueryUnload and Unload on the
// close box, keys with KeyPreview). No per-form code lives here: a form added
// to the program appears without work.
//
// Sync brings the window in step with the form: every control whose revision
// moved is pulled into its widget, widgets are made for controls loaded since
// (control array members) and dropped for those unloaded.
class FormWindow : public QWidget {
  Q_OBJECT

 public:
  FormWindow(QtHost& host, Form& form);
  ~FormWindow() override;

  Form& form() const { return form_; }
  // The area below the menu bar where the controls live.
  QWidget* client() const { return client_; }
  QMenuBar* menu_bar() const { return menu_bar_; }

  void Sync();
  // The form has gone: from now on the window touches neither it nor its
  // controls, and it is deleted at the next turn of the event loop.
  void Detach();
  bool detached() const { return detached_; }

  // Runs `fn` (which raises events on `control`) if the control is still one
  // of the form's, then brings the windows in step. What a person does that
  // the program refuses (a control that can't be reached) is dropped.
  void Act(const Control* control, const std::function<void()>& fn);
  // The same for the form's own events.
  void ActOnForm(const std::function<void()>& fn);
  bool Alive(const Control* control) const;

  // Opens `menu` as a pop-up at (x, y) twips of the client area and returns
  // once the user has picked an entry (its Click has then run) or left it.
  void ExecPopup(Menu& menu, int x, int y);

  // The widget shown for `control`, or nullptr (timers, menus, none yet).
  ControlWidget* WidgetOf(const Control& control) const;
  // The action of a menu control in the menu bar, or nullptr.
  QAction* ActionOf(const Menu& menu) const;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void moveEvent(QMoveEvent* event) override;
  void changeEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // Tells the form where its window now stands.
  void TellMoved();
  // Tells the form the size its window now has.
  void TellResized();
  // What was last applied to a widget of the properties every control has,
  // so that a sync touches Qt only for what changed.
  struct Applied {
    Twips left = 0;
    Twips top = 0;
    Twips width = -1;
    Twips height = -1;
    bool visible = false;
    bool enabled = true;
    double font_size = 0;
    bool font_bold = false;
    std::string tool_tip;
  };
  struct Entry {
    std::unique_ptr<ControlWidget> widget;
    unsigned long long revision = ~0ULL;
    std::string container;
    Applied applied;
    bool fresh = true;
  };

  void SyncForm();
  void SyncControl(Control& control);
  ControlWidget* EnsureWidget(Control& control, int depth);
  QWidget* ParentFor(const Control& control, int depth);
  // Puts the new `widget` of `control` under the widgets of the controls
  // declared after it in its container.
  void StackInOrder(const Control& control, QWidget* widget);
  void DropWidget(Control* control);
  void ApplyCommon(Control& control, QWidget* widget, Entry& entry);
  void SyncMenus(bool allow_rebuild);
  void RebuildMenus(const std::vector<Menu*>& menus);
  // Adds the entries of `menu` to `qmenu`, recording their actions in
  // `into`. A pop-up's entries report the pick through exec's answer.
  void FillMenu(QMenu* qmenu,
                Menu& menu,
                bool popup,
                std::map<const Menu*, QAction*>& into);
  void UpdateAction(Menu& menu, QAction* action);
  void MenuOpening(Menu* menu, std::map<const Menu*, QAction*>* into);
  void PickFromMenu(Menu* menu);

  QtHost& host_;
  Form& form_;
  bool detached_ = false;
  bool applying_geometry_ = false;
  unsigned long long form_revision_ = ~0ULL;
  QMenuBar* menu_bar_ = nullptr;
  QWidget* client_ = nullptr;
  std::unordered_map<const Control*, Entry> widgets_;
  const Control* focused_ = nullptr;
  std::map<const Menu*, QAction*> actions_;
  std::map<const Menu*, unsigned long long> menu_revisions_;
  std::vector<QShortcut*> shortcuts_;
  std::vector<std::pair<const Menu*, std::string>> menu_shape_;
};

}  // namespace qbpd

#endif  // QBPD_UI_QT_FORM_WINDOW_H_
