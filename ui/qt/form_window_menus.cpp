// The form's menus on the desktop: the menu bar and pop-ups built from the
// form's Menu controls, kept in step with them, and their shortcuts.
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/user_input.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_convert.h"
#include "ui/qt/qt_host.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QShortcut>

namespace qbpd {

QAction* FormWindow::ActionOf(const Menu& menu) const {
  auto it = actions_.find(&menu);
  return it == actions_.end() ? nullptr : it->second;
}

// --- menus ----------------------------------------------------------------

void FormWindow::SyncMenus(bool allow_rebuild) {
  std::vector<Menu*> menus;
  std::vector<std::pair<const Menu*, std::string>> shape;
  for (Control* c : form_.Controls()) {
    if (c->Kind() == ControlKind::kMenu) {
      menus.push_back(static_cast<Menu*>(c));
      shape.emplace_back(menus.back(), c->Container());
    }
  }
  if (shape != menu_shape_ && allow_rebuild) {
    menu_shape_ = shape;
    RebuildMenus(menus);
  }
  bool any_top_shown = false;
  for (Menu* m : menus) {
    auto it = actions_.find(m);
    if (it == actions_.end()) {
      continue;
    }
    auto seen = menu_revisions_.find(m);
    if (seen == menu_revisions_.end() || seen->second != m->revision()) {
      menu_revisions_[m] = m->revision();
      UpdateAction(*m, it->second);
    }
    if (m->Container().empty() && m->Visible()) {
      any_top_shown = true;
    }
  }
  if (menu_bar_->isVisibleTo(this) != any_top_shown) {
    menu_bar_->setVisible(any_top_shown);
  }
}

void FormWindow::RebuildMenus(const std::vector<Menu*>& menus) {
  for (QAction* a : menu_bar_->actions()) {
    if (QMenu* m = a->menu()) {
      m->deleteLater();
    }
  }
  menu_bar_->clear();
  for (QShortcut* s : shortcuts_) {
    s->deleteLater();
  }
  shortcuts_.clear();
  actions_.clear();
  menu_revisions_.clear();
  for (Menu* m : menus) {
    if (m->ParentMenu() != nullptr || !m->Container().empty()) {
      continue;
    }
    if (!m->Entries().empty()) {
      auto* qmenu = new QMenu(menu_bar_);
      menu_bar_->addMenu(qmenu);
      actions_[m] = qmenu->menuAction();
      connect(qmenu, &QMenu::aboutToShow, this,
              [this, m] { MenuOpening(m, &actions_); });
      FillMenu(qmenu, *m, /*popup=*/false, actions_);
    } else {
      QAction* a = menu_bar_->addAction(QString());
      actions_[m] = a;
      connect(a, &QAction::triggered, this, [this, m] { PickFromMenu(m); });
    }
  }
  // The shortcuts act as a person pressing them would: the menus above the
  // entry open (their enable rules run), then the entry is picked.
  for (Menu* m : menus) {
    if (m->Shortcut().empty()) {
      continue;
    }
    QKeySequence keys = QKeySequence::fromString(
        QString::fromStdString(m->Shortcut()), QKeySequence::PortableText);
    if (keys.isEmpty()) {
      continue;
    }
    auto* shortcut = new QShortcut(keys, this);
    shortcut->setContext(Qt::WindowShortcut);
    connect(shortcut, &QShortcut::activated, this,
            [this, m] { Act(m, [m] { user::PickMenu(*m); }); });
    shortcuts_.push_back(shortcut);
  }
}

void FormWindow::FillMenu(QMenu* qmenu,
                          Menu& menu,
                          bool popup,
                          std::map<const Menu*, QAction*>& into) {
  for (Menu* entry : menu.Entries()) {
    QAction* action = nullptr;
    if (!entry->Entries().empty()) {
      auto* sub = new QMenu(qmenu);
      qmenu->addMenu(sub);
      action = sub->menuAction();
      auto* map = &into;
      connect(sub, &QMenu::aboutToShow, this,
              [this, entry, map] { MenuOpening(entry, map); });
      FillMenu(sub, *entry, popup, into);
    } else {
      action = qmenu->addAction(QString());
      if (!popup) {
        connect(action, &QAction::triggered, this,
                [this, entry] { PickFromMenu(entry); });
      }
    }
    action->setData(QVariant::fromValue(static_cast<void*>(entry)));
    into[entry] = action;
    UpdateAction(*entry, action);
  }
}

void FormWindow::UpdateAction(Menu& menu, QAction* action) {
  const bool separator = menu.Caption() == "-";
  action->setSeparator(separator);
  if (!separator) {
    action->setText(MenuText(menu.Caption(), menu.Shortcut()));
  }
  // An entry the program has not named yet takes no room.
  action->setVisible(menu.Visible() && !menu.Caption().empty());
  action->setEnabled(menu.Enabled());
  action->setCheckable(menu.Checked());
  action->setChecked(menu.Checked());
}

void FormWindow::MenuOpening(Menu* menu,
                             std::map<const Menu*, QAction*>* into) {
  // Opening a menu raises its Click, where the program applies its enable
  // rules; the entries then show what the rules left.
  Act(menu, [menu] { menu->Raise("Click"); });
  if (detached_ || !Alive(menu)) {
    return;
  }
  for (Menu* entry : menu->Entries()) {
    auto it = into->find(entry);
    if (it != into->end()) {
      UpdateAction(*entry, it->second);
    }
  }
}

void FormWindow::PickFromMenu(Menu* menu) {
  Act(menu, [menu] {
    if (menu->Visible() && menu->Enabled()) {
      menu->Raise("Click");
    }
  });
}

void FormWindow::ExecPopup(Menu& menu, int x, int y) {
  if (detached_) {
    return;
  }
  QMenu popup(this);
  std::map<const Menu*, QAction*> popup_actions;
  FillMenu(&popup, menu, /*popup=*/true, popup_actions);
  QPoint at = client_->mapToGlobal(QPoint(TwipsToPixels(x), TwipsToPixels(y)));
  QAction* chosen = popup.exec(at);
  Menu* picked = nullptr;
  if (chosen != nullptr) {
    picked = static_cast<Menu*>(chosen->data().value<void*>());
  }
  if (picked != nullptr) {
    Act(picked, [picked] {
      if (picked->Visible() && picked->Enabled()) {
        picked->Raise("Click");
      }
    });
  } else {
    host_.SyncWindows();
  }
}

}  // namespace qbpd
