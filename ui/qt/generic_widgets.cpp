#include "ui/qt/generic_widgets.h"

#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/keys.h"
#include "platform/forms/user_input.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_convert.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImageReader>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSlider>
#include <QSvgRenderer>
#include <QTabBar>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTimer>
#include <QUrl>
#include <QWheelEvent>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <tuple>

namespace qbpd {
namespace {

// A wheel reports 120 for one notch.
constexpr int kWheelNotch = 120;

void SetRole(QWidget* w, QPalette::ColorRole role, long color) {
  if (IsSystemColor(color)) {
    return;
  }
  QPalette p = w->palette();
  QColor c = ColorFromProgram(color);
  if (p.color(role) != c) {
    p.setColor(role, c);
    w->setPalette(p);
  }
}

// Turns the mouse and focus events of a widget into the control's events.
// A passive control (a label, a picture) raises MouseDown, MouseUp, Click
// and DblClick itself; an active one (a button, a list) gets its Click from
// its own signal, so only MouseMove and the focus come through here.
class InputRouter : public QObject {
 public:
  InputRouter(QWidget* widget,
              Control& control,
              FormWindow& window,
              bool passive)
      : QObject(widget),
        control_(&control),
        window_(window),
        passive_(passive) {
    widget->setMouseTracking(true);
    widget->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    switch (event->type()) {
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonRelease:
      case QEvent::MouseButtonDblClick:
      case QEvent::MouseMove:
        Mouse(static_cast<QWidget*>(watched), static_cast<QMouseEvent*>(event));
        break;
      case QEvent::Wheel:
        return Wheel(static_cast<QWheelEvent*>(event));
      case QEvent::FocusIn: {
        auto reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason == Qt::MouseFocusReason || reason == Qt::TabFocusReason ||
            reason == Qt::BacktabFocusReason ||
            reason == Qt::ShortcutFocusReason) {
          Control* c = control_;
          window_.Act(c, [c] {
            if (c->form().ActiveControl() != c) {
              c->SetFocus();
            }
          });
        }
        break;
      }
      default:
        break;
    }
    return false;
  }

 private:
  // The wheel anywhere over a box (a picture box or a frame) scrolls the
  // box's own vertical scroll bar, one small change a notch, as it does over
  // the bar itself; a wheel that a control inside did not take comes here
  // through its containers. True when the box took it.
  bool Wheel(QWheelEvent* e) {
    const ControlKind kind = control_->Kind();
    if (kind != ControlKind::kPictureBox && kind != ControlKind::kFrame) {
      return false;
    }
    ScrollBar* bar = nullptr;
    for (Control* c : control_->form().Controls()) {
      if (c->Kind() == ControlKind::kScrollBar &&
          c->Container() == control_->Name() && c->Visible() && c->Enabled() &&
          static_cast<ScrollBar*>(c)->Vertical()) {
        bar = static_cast<ScrollBar*>(c);
        break;
      }
    }
    if (bar == nullptr) {
      return false;
    }
    e->accept();
    wheel_rest_ += e->angleDelta().y();
    const int notches = wheel_rest_ / kWheelNotch;
    wheel_rest_ -= notches * kWheelNotch;
    if (notches == 0) {
      return true;
    }
    const int low = std::min(bar->Min(), bar->Max());
    const int high = std::max(bar->Min(), bar->Max());
    const int step = std::max(1, bar->SmallChange());
    const int value = std::clamp(bar->Value() - notches * step, low, high);
    if (value != bar->Value()) {
      window_.Act(bar, [bar, value] { user::ScrollTo(*bar, value); });
    }
    return true;
  }

  void Mouse(QWidget* w, QMouseEvent* e) {
    const int x = PixelsToTwips(static_cast<int>(e->position().x()));
    const int y = PixelsToTwips(static_cast<int>(e->position().y()));
    const int shift = ShiftOf(e->modifiers());
    Control* c = control_;
    auto raise = [this, c, x, y, shift](const char* name, int button) {
      window_.Act(c, [c, name, button, x, y, shift] {
        EventArgs args;
        args.Button = button;
        args.X = x;
        args.Y = y;
        args.Shift = shift;
        c->Raise(name, args);
      });
    };
    switch (e->type()) {
      case QEvent::MouseMove:
        raise("MouseMove", ButtonsOf(e->buttons()));
        return;
      case QEvent::MouseButtonPress:
        if (passive_) {
          pressed_inside_ = true;
          raise("MouseDown", ButtonOf(e->button()));
        }
        return;
      case QEvent::MouseButtonDblClick:
        if (passive_) {
          after_double_ = true;
          window_.Act(c, [c] { c->Raise("DblClick"); });
        }
        return;
      case QEvent::MouseButtonRelease: {
        if (!passive_) {
          return;
        }
        raise("MouseUp", ButtonOf(e->button()));
        bool click = pressed_inside_ && !after_double_ &&
                     e->button() == Qt::LeftButton &&
                     w->rect().contains(e->position().toPoint());
        pressed_inside_ = false;
        after_double_ = false;
        if (click) {
          window_.Act(c, [c] { c->Raise("Click"); });
        }
        return;
      }
      default:
        return;
    }
  }

  Control* control_;
  FormWindow& window_;
  bool passive_;
  bool pressed_inside_ = false;
  bool after_double_ = false;
  int wheel_rest_ = 0;
};

// The part every generic widget shares: the control, the window, the Qt
// widget (owned by its parent) and the input router.
class GenericWidget : public ControlWidget {
 public:
  GenericWidget(Control& control, FormWindow& window)
      : control_(control), window_(window) {}
  QWidget* widget() override { return widget_; }

 protected:
  void Attach(QWidget* w, bool passive) {
    widget_ = w;
    new InputRouter(w, control_, window_, passive);
  }
  void Act(const std::function<void()>& fn) { window_.Act(&control_, fn); }

  Control& control_;
  FormWindow& window_;
  QPointer<QWidget> widget_;
};

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

// --- drawn controls -------------------------------------------------------

// A widget that draws itself through a function, for the controls that are
// pictures, frames and shapes.
class PaintedWidget : public QWidget {
 public:
  using Painter = std::function<void(QPainter&, const QRect&)>;
  explicit PaintedWidget(QWidget* parent) : QWidget(parent) {}
  void SetPainter(Painter painter) { painter_ = std::move(painter); }

 protected:
  void paintEvent(QPaintEvent*) override {
    if (!painter_) {
      return;
    }
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    painter_(p, rect());
  }

 private:
  Painter painter_;
};

// Draws a picture of the program's set, made again only when the file, the
// size or the density changes.
class PictureCache {
 public:
  const QPixmap& Get(const std::string& file,
                     QSize size,
                     qreal ratio,
                     bool stretch) {
    auto key =
        std::make_tuple(file, size.width(), size.height(), ratio, stretch);
    if (key != key_) {
      key_ = key;
      pixmap_ = RenderPicture(file, size, ratio, stretch);
    }
    return pixmap_;
  }

 private:
  std::tuple<std::string, int, int, qreal, bool> key_;
  QPixmap pixmap_;
};

void DrawCentred(QPainter& p, const QRect& area, const QPixmap& pixmap) {
  QSizeF logical = pixmap.deviceIndependentSize();
  QPointF at(area.x() + (area.width() - logical.width()) / 2,
             area.y() + (area.height() - logical.height()) / 2);
  p.drawPixmap(at, pixmap);
}

class PictureButtonWidget : public GenericWidget {
 public:
  PictureButtonWidget(PictureButton& control,
                      QWidget* parent,
                      FormWindow& window)
      : GenericWidget(control, window), button_(control) {
    auto* w = new PaintedWidget(parent);
    w->setCursor(Qt::PointingHandCursor);
    w->SetPainter([this, w](QPainter& p, const QRect& r) {
      const QPixmap& pixmap =
          cache_.Get(picture_, r.size(), w->devicePixelRatioF(), stretch_);
      if (!pixmap.isNull()) {
        DrawCentred(p, r, pixmap);
        return;
      }
      // Without its picture the button still shows where it is and which
      // picture it wants.
      p.setPen(w->palette().color(QPalette::Mid));
      p.setBrush(w->palette().color(QPalette::Button));
      p.drawRoundedRect(QRectF(r).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
      p.setPen(w->palette().color(QPalette::ButtonText));
      p.drawText(r, Qt::AlignCenter,
                 QFileInfo(QString::fromStdString(picture_)).baseName());
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    picture_ = button_.Picture();
    stretch_ = button_.Stretch();
    widget_->update();
  }

 private:
  PictureButton& button_;
  PictureCache cache_;
  std::string picture_;
  bool stretch_ = false;
};

class PictureBoxWidget : public GenericWidget {
 public:
  PictureBoxWidget(PictureBox& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), box_(control) {
    auto* w = new PaintedWidget(parent);
    w->SetPainter([this, w](QPainter& p, const QRect& r) {
      if (!IsSystemColor(back_)) {
        p.fillRect(r, ColorFromProgram(back_));
      }
      if (picture_.empty()) {
        return;
      }
      // A picture box shows its picture at its own size from the corner;
      // one larger than the box is fitted into it.
      QPixmap natural =
          cache_.Get(picture_, QSize(), w->devicePixelRatioF(), false);
      if (natural.isNull()) {
        return;
      }
      QSizeF own = natural.deviceIndependentSize();
      if (own.width() > r.width() || own.height() > r.height()) {
        natural =
            fitted_.Get(picture_, r.size(), w->devicePixelRatioF(), false);
      }
      p.drawPixmap(QPointF(0, 0), natural);
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    picture_ = box_.Picture();
    back_ = box_.BackColor();
    widget_->update();
  }

 private:
  PictureBox& box_;
  PictureCache cache_;
  PictureCache fitted_;
  std::string picture_;
  long back_ = 0xFFFFFF;
};

class FrameWidget : public GenericWidget {
 public:
  FrameWidget(Frame& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), frame_(control) {
    auto* w = new PaintedWidget(parent);
    w->SetPainter([this, w](QPainter& p, const QRect& r) {
      if (!IsSystemColor(back_)) {
        p.fillRect(r, ColorFromProgram(back_));
      }
      if (!border_) {
        return;
      }
      QFontMetrics metrics(w->font());
      int half = metrics.height() / 2;
      p.setPen(w->palette().color(QPalette::Mid));
      p.setBrush(Qt::NoBrush);
      p.drawRect(QRectF(r).adjusted(0.5, half + 0.5, -0.5, -0.5));
      if (caption_.isEmpty()) {
        return;
      }
      QRect text(8, 0, metrics.horizontalAdvance(caption_) + 6,
                 metrics.height());
      p.fillRect(text, IsSystemColor(back_)
                           ? w->palette().color(QPalette::Window)
                           : ColorFromProgram(back_));
      p.setPen(IsSystemColor(fore_) ? w->palette().color(QPalette::WindowText)
                                    : ColorFromProgram(fore_));
      p.drawText(text, Qt::AlignCenter, caption_);
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    caption_ = PlainCaption(frame_.Caption());
    border_ = frame_.Border();
    back_ = frame_.BackColor();
    fore_ = frame_.ForeColor();
    widget_->update();
  }

 private:
  Frame& frame_;
  QString caption_;
  bool border_ = true;
  long back_ = 0xFFFFFF;
  long fore_ = 0;
};

class ShapeWidget : public GenericWidget {
 public:
  ShapeWidget(Shape& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), shape_(control) {
    auto* w = new PaintedWidget(parent);
    w->setAttribute(Qt::WA_TransparentForMouseEvents);
    w->SetPainter([this](QPainter& p, const QRect& r) {
      const int pen = std::max(1, shape_state_.border_width);
      QRectF box =
          QRectF(r).adjusted(pen / 2.0, pen / 2.0, -pen / 2.0, -pen / 2.0);
      if (shape_state_.shape == 1 || shape_state_.shape == 3) {
        double side = std::min(box.width(), box.height());
        box = QRectF(box.center().x() - side / 2, box.center().y() - side / 2,
                     side, side);
      }
      p.setPen(QPen(ColorFromProgram(shape_state_.border_color), pen));
      p.setBrush(shape_state_.filled
                     ? QBrush(ColorFromProgram(shape_state_.fill_color))
                     : QBrush(Qt::NoBrush));
      switch (shape_state_.shape) {
        case 2:
        case 3:
          p.drawEllipse(box);
          break;
        case 4:
          p.drawRoundedRect(box, 6, 6);
          break;
        default:
          p.drawRect(box);
          break;
      }
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    shape_state_.shape = shape_.ShapeKind();
    shape_state_.border_color = shape_.BorderColor();
    shape_state_.border_width = shape_.BorderWidth();
    shape_state_.fill_color = shape_.FillColor();
    shape_state_.filled = shape_.Filled();
    widget_->update();
  }

 private:
  Shape& shape_;
  ShapeState shape_state_;
};

// A line is placed by its end points; its widget is their bounding box.
class LineWidget : public GenericWidget {
 public:
  LineWidget(Line& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), line_(control) {
    auto* w = new PaintedWidget(parent);
    w->setAttribute(Qt::WA_TransparentForMouseEvents);
    w->SetPainter([this](QPainter& p, const QRect&) {
      p.setPen(QPen(ColorFromProgram(color_), 1));
      p.drawLine(from_, to_);
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    int x1 = TwipsToPixels(line_.X1());
    int y1 = TwipsToPixels(line_.Y1());
    int x2 = TwipsToPixels(line_.X2());
    int y2 = TwipsToPixels(line_.Y2());
    QRect box = QRect(QPoint(std::min(x1, x2), std::min(y1, y2)),
                      QPoint(std::max(x1, x2), std::max(y1, y2)));
    widget_->setGeometry(box);
    from_ = QPointF(x1 - box.x() + 0.5, y1 - box.y() + 0.5);
    to_ = QPointF(x2 - box.x() + 0.5, y2 - box.y() + 0.5);
    color_ = line_.BorderColor();
    widget_->update();
  }

 private:
  Line& line_;
  QPointF from_;
  QPointF to_;
  long color_ = 0;
};

// The program's own local pages, rendered: a local file (a path or a
// file: address) is shown as HTML with its pictures and style sheet; the
// program never points this view at the network, so any other address is
// shown as text, and an empty one clears the view. Links between local
// pages are followed inside the view.
class WebViewWidget : public GenericWidget {
 public:
  WebViewWidget(WebView& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), view_(control) {
    auto* w = new QTextBrowser(parent);
    w->setOpenExternalLinks(false);
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    const std::string& location = view_.LocationURL();
    if (location == shown_) {
      return;
    }
    shown_ = location;
    auto* browser = static_cast<QTextBrowser*>(widget_.data());
    QUrl url = QUrl(QString::fromStdString(location));
    if (!location.empty() && location.front() == '/') {
      url = QUrl::fromLocalFile(QString::fromStdString(location));
    }
    if (location.empty()) {
      browser->clear();
    } else if (url.isLocalFile() && QFileInfo(url.toLocalFile()).isFile()) {
      browser->setSource(url, QTextDocument::HtmlResource);
    } else {
      browser->setPlainText(QString::fromStdString(location));
    }
  }

 private:
  WebView& view_;
  std::string shown_;
};

// Plays its photos in turn while Playing, each fitted to the widget.
class ScreensaverWidget : public GenericWidget {
 public:
  ScreensaverWidget(ScreensaverPlayer& control,
                    QWidget* parent,
                    FormWindow& window)
      : GenericWidget(control, window), player_(control) {
    auto* w = new PaintedWidget(parent);
    timer_ = new QTimer(w);
    QObject::connect(timer_, &QTimer::timeout, w, [this, w] {
      if (!files_.empty()) {
        at_ = (at_ + 1) % files_.size();
        w->update();
      }
    });
    w->SetPainter([this, w](QPainter& p, const QRect& r) {
      p.fillRect(r, Qt::black);
      if (files_.empty()) {
        return;
      }
      const QPixmap& pixmap =
          cache_.Get(files_[at_], r.size(), w->devicePixelRatioF(), false);
      if (!pixmap.isNull()) {
        DrawCentred(p, r, pixmap);
      }
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    if (files_ != player_.Files()) {
      files_ = player_.Files();
      at_ = 0;
    }
    timer_->setInterval(std::max(1, player_.IntervalSeconds()) * 1000);
    if (player_.Playing() && !timer_->isActive()) {
      timer_->start();
    } else if (!player_.Playing()) {
      timer_->stop();
    }
    widget_->update();
  }

 private:
  ScreensaverPlayer& player_;
  QTimer* timer_ = nullptr;
  std::vector<std::string> files_;
  size_t at_ = 0;
  PictureCache cache_;
};

}  // namespace

std::string PictureFile(const std::string& file) {
  namespace fs = std::filesystem;
  if (file.empty()) {
    return "";
  }
  std::error_code ec;
  if (fs::is_regular_file(file, ec)) {
    return file;
  }
  fs::path svg = fs::path(file).replace_extension(".svg");
  if (fs::is_regular_file(svg, ec)) {
    return svg.string();
  }
  return "";
}

QPixmap RenderPicture(const std::string& file,
                      QSize size,
                      qreal ratio,
                      bool stretch) {
  std::string found = PictureFile(file);
  if (found.empty()) {
    return QPixmap();
  }
  QString path = QString::fromStdString(found);
  const bool svg = path.endsWith(".svg", Qt::CaseInsensitive);
  QSvgRenderer renderer;
  QImageReader reader;
  QSizeF own;
  if (svg) {
    if (!renderer.load(path)) {
      return QPixmap();
    }
    own = renderer.defaultSize();
  } else {
    reader.setFileName(path);
    reader.setAutoTransform(true);
    own = reader.size();
    if (!own.isValid()) {
      return QPixmap();
    }
  }
  QSizeF target = own;
  if (!size.isEmpty()) {
    target = own.scaled(QSizeF(size),
                        stretch ? Qt::IgnoreAspectRatio : Qt::KeepAspectRatio);
  }
  QSize device(std::max(1, qRound(target.width() * ratio)),
               std::max(1, qRound(target.height() * ratio)));
  QImage image;
  if (svg) {
    // A vector picture is drawn afresh at the device's size: crisp at any
    // density.
    image = QImage(device, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    renderer.render(&p, QRectF(QPointF(0, 0), QSizeF(device)));
  } else {
    image = reader.read();
    if (image.isNull()) {
      return QPixmap();
    }
    if (image.size() != device) {
      image =
          image.scaled(device, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
  }
  QPixmap pixmap = QPixmap::fromImage(image);
  pixmap.setDevicePixelRatio(ratio);
  return pixmap;
}

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
    case ControlKind::kPictureButton:
      return std::make_unique<PictureButtonWidget>(
          static_cast<PictureButton&>(control), parent, window);
    case ControlKind::kPictureBox:
      return std::make_unique<PictureBoxWidget>(
          static_cast<PictureBox&>(control), parent, window);
    case ControlKind::kFrame:
      return std::make_unique<FrameWidget>(static_cast<Frame&>(control), parent,
                                           window);
    case ControlKind::kShape:
      return std::make_unique<ShapeWidget>(static_cast<Shape&>(control), parent,
                                           window);
    case ControlKind::kLine:
      return std::make_unique<LineWidget>(static_cast<Line&>(control), parent,
                                          window);
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
    case ControlKind::kWebView:
      return std::make_unique<WebViewWidget>(static_cast<WebView&>(control),
                                             parent, window);
    case ControlKind::kScreensaverPlayer:
      return std::make_unique<ScreensaverWidget>(
          static_cast<ScreensaverPlayer&>(control), parent, window);
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
