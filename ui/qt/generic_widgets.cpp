#include "ui/qt/generic_widgets.h"

#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/keys.h"
#include "platform/forms/user_input.h"
#include "ui/qt/generic_widget_base.h"
#include "ui/qt/qt_convert.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSlider>
#include <QTabBar>

#include <algorithm>
#include <functional>

namespace qbpd {
namespace {

// --- labels ---------------------------------------------------------------

class LabelWidget : public GenericWidget {
 public:
  LabelWidget(Label& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), label_(control) {
    auto* w = new QLabel(parent);
    w->setTextFormat(Qt::PlainText);
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    auto* w = static_cast<QLabel*>(widget_.data());
    QString text = PlainCaption(label_.Caption());
    if (w->text() != text) {
      w->setText(text);
    }
    Qt::Alignment h = label_.Alignment() == 1   ? Qt::AlignRight
                      : label_.Alignment() == 2 ? Qt::AlignHCenter
                                                : Qt::AlignLeft;
    w->setAlignment(h | Qt::AlignTop);
    w->setWordWrap(label_.WordWrap());
    SetRole(w, QPalette::WindowText, label_.ForeColor());
  }

 private:
  Label& label_;
};

// --- text boxes -------------------------------------------------------------

// Keys typed into a text box go to the program as user_input.h types them
// (KeyDown, KeyPress, the edit, Change, KeyUp), so that its key filters
// decide; the widget then shows the control's text and caret.
class TextBoxWidget : public GenericWidget, public QObject {
 public:
  TextBoxWidget(TextBox& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), box_(control) {
    if (control.MultiLine()) {
      edit_ = new QPlainTextEdit(parent);
      edit_->setTabChangesFocus(false);
      Attach(edit_, /*passive=*/false);
      edit_->installEventFilter(this);
      QObject::connect(edit_, &QPlainTextEdit::cursorPositionChanged, edit_,
                       [this] { SelectionMoved(); });
    } else {
      line_ = new QLineEdit(parent);
      Attach(line_, /*passive=*/false);
      line_->installEventFilter(this);
      QObject::connect(line_, &QLineEdit::cursorPositionChanged, line_,
                       [this] { SelectionMoved(); });
      QObject::connect(line_, &QLineEdit::selectionChanged, line_,
                       [this] { SelectionMoved(); });
    }
  }
  // The wrapper is no QObject parent of the widget; it only watches it.
  ~TextBoxWidget() override {
    if (widget_ != nullptr) {
      widget_->removeEventFilter(this);
    }
  }

  void Sync() override {
    syncing_ = true;
    QString shown = QString::fromStdString(box_.Text());
    int start = Utf16Offset(shown, box_.SelStart());
    int end = Utf16Offset(shown, box_.SelStart() + box_.SelLength());
    if (line_ != nullptr) {
      line_->setEchoMode(box_.PasswordChar().empty() ? QLineEdit::Normal
                                                     : QLineEdit::Password);
      if (line_->text() != shown) {
        line_->setText(shown);
      }
      line_->setReadOnly(box_.Locked());
      if (end > start) {
        line_->setSelection(start, end - start);
      } else {
        line_->setCursorPosition(start);
      }
      SetRole(line_, QPalette::Text, box_.ForeColor());
      SetRole(line_, QPalette::Base, box_.BackColor());
    } else {
      if (edit_->toPlainText() != shown) {
        edit_->setPlainText(shown);
      }
      edit_->setReadOnly(box_.Locked());
      QTextCursor cursor = edit_->textCursor();
      cursor.setPosition(start);
      cursor.setPosition(end, QTextCursor::KeepAnchor);
      edit_->setTextCursor(cursor);
      SetRole(edit_, QPalette::Text, box_.ForeColor());
      SetRole(edit_, QPalette::Base, box_.BackColor());
    }
    syncing_ = false;
  }

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() != QEvent::KeyPress) {
      return false;
    }
    auto* key = static_cast<QKeyEvent*>(event);
    if (key->matches(QKeySequence::Copy)) {
      return false;  // the widget copies; nothing changes
    }
    TextBox* box = &box_;
    if (key->matches(QKeySequence::Paste) || key->matches(QKeySequence::Cut)) {
      bool paste = key->matches(QKeySequence::Paste);
      std::string typed = paste ? "^v" : "^x";
      Act([box, paste, typed, this] {
        user::TypeKeys(*box, typed);
        if (box->Locked()) {
          return;
        }
        if (paste) {
          box->SetSelText(QGuiApplication::clipboard()->text().toStdString());
        } else {
          QGuiApplication::clipboard()->setText(
              QString::fromStdString(box->SelText()));
          box->SetSelText("");
        }
      });
      return true;
    }
    std::string keys = SendKeysText(key->key(), key->modifiers(), key->text());
    if (keys.empty()) {
      return false;
    }
    Act([box, keys] { user::TypeKeys(*box, keys); });
    return true;
  }

 private:
  void SelectionMoved() {
    if (syncing_) {
      return;
    }
    QString text;
    int anchor = 0;
    int position = 0;
    if (line_ != nullptr) {
      text = line_->text();
      position = line_->cursorPosition();
      anchor = line_->hasSelectedText() ? line_->selectionStart() : position;
      if (line_->hasSelectedText() && anchor == position) {
        position = anchor + static_cast<int>(line_->selectedText().size());
      }
    } else {
      text = edit_->toPlainText();
      anchor = edit_->textCursor().anchor();
      position = edit_->textCursor().position();
    }
    int from = Utf8Offset(text, std::min(anchor, position));
    int to = Utf8Offset(text, std::max(anchor, position));
    TextBox* box = &box_;
    Act([box, from, to] {
      box->SetSelStart(from);
      box->SetSelLength(to - from);
    });
  }

  TextBox& box_;
  QLineEdit* line_ = nullptr;
  QPlainTextEdit* edit_ = nullptr;
  bool syncing_ = false;
};

// --- buttons ----------------------------------------------------------------

class CommandButtonWidget : public GenericWidget {
 public:
  CommandButtonWidget(CommandButton& control,
                      QWidget* parent,
                      FormWindow& window)
      : GenericWidget(control, window), button_(control) {
    auto* w = new QPushButton(parent);
    w->setAutoDefault(false);
    Attach(w, /*passive=*/false);
    Control* c = &control;
    QObject::connect(w, &QPushButton::clicked, w,
                     [this, c] { Act([c] { user::Click(*c); }); });
  }
  void Sync() override {
    auto* w = static_cast<QPushButton*>(widget_.data());
    QString text = QString::fromStdString(button_.Caption());
    if (w->text() != text) {
      w->setText(text);
    }
    w->setDefault(button_.Default());
  }

 private:
  CommandButton& button_;
};

class CheckBoxWidget : public GenericWidget {
 public:
  CheckBoxWidget(CheckBox& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), box_(control) {
    auto* w = new QCheckBox(parent);
    w->setTristate(true);
    Attach(w, /*passive=*/false);
    Control* c = &control;
    QObject::connect(w, &QCheckBox::clicked, w,
                     [this, c] { Act([c] { user::Click(*c); }); });
  }
  void Sync() override {
    auto* w = static_cast<QCheckBox*>(widget_.data());
    QSignalBlocker block(w);
    w->setText(QString::fromStdString(box_.Caption()));
    w->setCheckState(box_.Value() == 1   ? Qt::Checked
                     : box_.Value() == 2 ? Qt::PartiallyChecked
                                         : Qt::Unchecked);
    SetRole(w, QPalette::WindowText, box_.ForeColor());
  }

 private:
  CheckBox& box_;
};

class OptionButtonWidget : public GenericWidget {
 public:
  OptionButtonWidget(OptionButton& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), option_(control) {
    auto* w = new QRadioButton(parent);
    // The program clears the other options of the container itself.
    w->setAutoExclusive(false);
    Attach(w, /*passive=*/false);
    Control* c = &control;
    QObject::connect(w, &QRadioButton::clicked, w,
                     [this, c] { Act([c] { user::Click(*c); }); });
  }
  void Sync() override {
    auto* w = static_cast<QRadioButton*>(widget_.data());
    QSignalBlocker block(w);
    w->setText(QString::fromStdString(option_.Caption()));
    w->setChecked(option_.Value());
    SetRole(w, QPalette::WindowText, option_.ForeColor());
  }

 private:
  OptionButton& option_;
};

// --- lists ------------------------------------------------------------------

class ComboBoxWidget : public GenericWidget {
 public:
  ComboBoxWidget(ListControl& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), list_(control) {
    auto* w = new QComboBox(parent);
    Attach(w, /*passive=*/false);
    Control* c = &control;
    QObject::connect(w, &QComboBox::activated, w, [this, c](int i) {
      Act([c, i] { user::ChooseItem(*c, i); });
    });
  }
  void Sync() override {
    auto* w = static_cast<QComboBox*>(widget_.data());
    QSignalBlocker block(w);
    bool editable = list_.Style() == 0;
    if (w->isEditable() != editable) {
      w->setEditable(editable);
      if (editable) {
        ListControl* l = &list_;
        QObject::connect(w->lineEdit(), &QLineEdit::textEdited, w,
                         [this, l](const QString& text) {
                           Act([l, text] { l->SetText(text.toStdString()); });
                         });
      }
    }
    QStringList items;
    for (int i = 0; i < list_.ListCount(); ++i) {
      items << QString::fromStdString(list_.List(i));
    }
    QStringList shown;
    for (int i = 0; i < w->count(); ++i) {
      shown << w->itemText(i);
    }
    if (items != shown) {
      w->clear();
      w->addItems(items);
    }
    w->setCurrentIndex(list_.ListIndex());
    if (editable) {
      QString text = QString::fromStdString(list_.Text());
      if (w->currentText() != text) {
        w->setEditText(text);
      }
    }
  }

 private:
  ListControl& list_;
};

class ListBoxWidget : public GenericWidget {
 public:
  ListBoxWidget(ListControl& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), list_(control) {
    auto* w = new QListWidget(parent);
    Attach(w, /*passive=*/false);
    Control* c = &control;
    QObject::connect(w, &QListWidget::currentRowChanged, w, [this, c](int row) {
      if (row >= 0) {
        Act([c, row] { user::ChooseItem(*c, row); });
      }
    });
    QObject::connect(
        w, &QListWidget::itemChanged, w, [this, c, w](QListWidgetItem* item) {
          int row = w->row(item);
          bool checked = item->checkState() == Qt::Checked;
          Act([c, row, checked] { user::CheckItem(*c, row, checked); });
        });
    QObject::connect(
        w, &QListWidget::itemDoubleClicked, w,
        [this, c](QListWidgetItem*) { Act([c] { c->Raise("DblClick"); }); });
  }
  void Sync() override {
    auto* w = static_cast<QListWidget*>(widget_.data());
    QSignalBlocker block(w);
    bool checks = list_.Style() == 1;
    if (w->count() != list_.ListCount()) {
      w->clear();
      for (int i = 0; i < list_.ListCount(); ++i) {
        w->addItem(QString());
      }
    }
    for (int i = 0; i < list_.ListCount(); ++i) {
      QListWidgetItem* item = w->item(i);
      QString text = QString::fromStdString(list_.List(i));
      if (item->text() != text) {
        item->setText(text);
      }
      if (checks) {
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(list_.Selected(i) ? Qt::Checked : Qt::Unchecked);
      }
    }
    w->setCurrentRow(list_.ListIndex());
    SetRole(w, QPalette::Text, list_.ForeColor());
    SetRole(w, QPalette::Base, list_.BackColor());
  }

 private:
  ListControl& list_;
};

// --- ranges -----------------------------------------------------------------

class RangeWidget : public GenericWidget {
 public:
  RangeWidget(RangeControl& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), range_(control) {
    QAbstractSlider* w = nullptr;
    if (control.Kind() == ControlKind::kSlider) {
      w = new QSlider(Qt::Horizontal, parent);
    } else {
      w = new QScrollBar(Qt::Vertical, parent);
    }
    Attach(w, /*passive=*/false);
    Control* c = &control;
    // Signals are blocked while the program's value is pulled in, so every
    // change seen here is the user's.
    QObject::connect(w, &QAbstractSlider::valueChanged, w, [this, c](int v) {
      Act([c, v] { user::ScrollTo(*c, v); });
    });
  }
  void Sync() override {
    auto* w = static_cast<QAbstractSlider*>(widget_.data());
    QSignalBlocker block(w);
    if (range_.Kind() == ControlKind::kScrollBar) {
      w->setOrientation(static_cast<ScrollBar&>(range_).Vertical()
                            ? Qt::Vertical
                            : Qt::Horizontal);
    }
    w->setRange(std::min(range_.Min(), range_.Max()),
                std::max(range_.Min(), range_.Max()));
    w->setInvertedAppearance(range_.Min() > range_.Max());
    w->setSingleStep(std::max(1, range_.SmallChange()));
    w->setPageStep(std::max(1, range_.LargeChange()));
    w->setValue(range_.Value());
  }

 private:
  RangeControl& range_;
};

class ProgressBarWidget : public GenericWidget {
 public:
  ProgressBarWidget(ProgressBar& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), bar_(control) {
    auto* w = new QProgressBar(parent);
    w->setTextVisible(false);
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    auto* w = static_cast<QProgressBar*>(widget_.data());
    w->setRange(bar_.Min(), bar_.Max());
    w->setValue(bar_.Value());
  }

 private:
  ProgressBar& bar_;
};

class TabStripWidget : public GenericWidget {
 public:
  TabStripWidget(TabStrip& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), strip_(control) {
    auto* w = new QTabBar(parent);
    w->setDrawBase(true);
    Attach(w, /*passive=*/false);
    Control* c = &control;
    QObject::connect(w, &QTabBar::currentChanged, w, [this, c](int i) {
      if (i >= 0) {
        Act([c, i] { user::SelectTab(*c, i + 1); });
      }
    });
  }
  void Sync() override {
    auto* w = static_cast<QTabBar*>(widget_.data());
    QSignalBlocker block(w);
    while (w->count() > strip_.TabCount()) {
      w->removeTab(w->count() - 1);
    }
    while (w->count() < strip_.TabCount()) {
      w->addTab(QString());
    }
    for (int i = 0; i < strip_.TabCount(); ++i) {
      w->setTabText(i, QString::fromStdString(strip_.TabCaption(i + 1)));
    }
    w->setCurrentIndex(strip_.SelectedTab() - 1);
  }

 private:
  TabStrip& strip_;
};

}  // namespace

std::unique_ptr<ControlWidget> MakeGenericWidget(Control& control,
                                                 QWidget* parent,
                                                 FormWindow& window) {
  switch (control.Kind()) {
    case ControlKind::kLabel:
      return std::make_unique<LabelWidget>(static_cast<Label&>(control), parent,
                                           window);
    case ControlKind::kTextBox:
      return std::make_unique<TextBoxWidget>(static_cast<TextBox&>(control),
                                             parent, window);
    case ControlKind::kCheckBox:
      return std::make_unique<CheckBoxWidget>(static_cast<CheckBox&>(control),
                                              parent, window);
    case ControlKind::kOptionButton:
      return std::make_unique<OptionButtonWidget>(
          static_cast<OptionButton&>(control), parent, window);
    case ControlKind::kComboBox:
      return std::make_unique<ComboBoxWidget>(
          static_cast<ListControl&>(control), parent, window);
    case ControlKind::kListBox:
      return std::make_unique<ListBoxWidget>(static_cast<ListControl&>(control),
                                             parent, window);
    case ControlKind::kCommandButton:
      return std::make_unique<CommandButtonWidget>(
          static_cast<CommandButton&>(control), parent, window);
    case ControlKind::kScrollBar:
    case ControlKind::kSlider:
      return std::make_unique<RangeWidget>(static_cast<RangeControl&>(control),
                                           parent, window);
    case ControlKind::kProgressBar:
      return std::make_unique<ProgressBarWidget>(
          static_cast<ProgressBar&>(control), parent, window);
    case ControlKind::kTabStrip:
      return std::make_unique<TabStripWidget>(static_cast<TabStrip&>(control),
                                              parent, window);
    case ControlKind::kPictureButton:
    case ControlKind::kPictureBox:
    case ControlKind::kFrame:
    case ControlKind::kShape:
    case ControlKind::kLine:
      return MakeDrawnWidget(control, parent, window);
    case ControlKind::kWebView:
    case ControlKind::kScreensaverPlayer:
      return MakeComponentWidget(control, parent, window);
    case ControlKind::kTimer:
    case ControlKind::kMenu:
    case ControlKind::kThumbnail:
    case ControlKind::kPhotoView:
    case ControlKind::kFolderTree:
      return nullptr;
  }
  return nullptr;
}

}  // namespace qbpd
