#include "ui/qt/qt_convert.h"

#include "platform/forms/host.h"
#include "platform/forms/keys.h"

#include <QApplication>

#include <cmath>

namespace qbpd {
namespace {

constexpr long kSystemColorBit = 0x80000000L;

struct NamedQtKey {
  int qt_key;
  const char* name;
};

constexpr NamedQtKey kNamedKeys[] = {
    {Qt::Key_Return, "ENTER"},  {Qt::Key_Enter, "ENTER"},
    {Qt::Key_Escape, "ESC"},    {Qt::Key_Backspace, "BACKSPACE"},
    {Qt::Key_Tab, "TAB"},       {Qt::Key_Delete, "DELETE"},
    {Qt::Key_Insert, "INSERT"}, {Qt::Key_Home, "HOME"},
    {Qt::Key_End, "END"},       {Qt::Key_Left, "LEFT"},
    {Qt::Key_Right, "RIGHT"},   {Qt::Key_Up, "UP"},
    {Qt::Key_Down, "DOWN"},     {Qt::Key_PageUp, "PGUP"},
    {Qt::Key_PageDown, "PGDN"},
};

std::string ModifierPrefix(Qt::KeyboardModifiers modifiers, bool with_shift) {
  std::string prefix;
  if (with_shift && (modifiers & Qt::ShiftModifier)) {
    prefix += '+';
  }
  if (modifiers & Qt::ControlModifier) {
    prefix += '^';
  }
  if (modifiers & Qt::AltModifier) {
    prefix += '%';
  }
  return prefix;
}

}  // namespace

int TwipsToPixels(int twips) {
  // Rounds towards minus infinity, so that negative positions (a panel
  // scrolled up inside its container) keep their steps.
  return static_cast<int>(
      std::floor(static_cast<double>(twips) / kTwipsPerPixel));
}

int PixelsToTwips(int pixels) {
  return pixels * kTwipsPerPixel;
}

QRect PixelRect(int left, int top, int width, int height) {
  int x = TwipsToPixels(left);
  int y = TwipsToPixels(top);
  int right = TwipsToPixels(left + std::max(0, width));
  int bottom = TwipsToPixels(top + std::max(0, height));
  return QRect(x, y, right - x, bottom - y);
}

QColor ColorFromProgram(long value) {
  return QColor(static_cast<int>(value & 0xFF),
                static_cast<int>((value >> 8) & 0xFF),
                static_cast<int>((value >> 16) & 0xFF));
}

bool IsSystemColor(long value) {
  return (value & kSystemColorBit) != 0;
}

QString PlainCaption(const std::string& caption) {
  std::string out;
  out.reserve(caption.size());
  for (size_t i = 0; i < caption.size(); ++i) {
    if (caption[i] == '&') {
      if (i + 1 < caption.size() && caption[i + 1] == '&') {
        out += '&';
        ++i;
      }
      continue;
    }
    out += caption[i];
  }
  return QString::fromStdString(out);
}

QString MenuText(const std::string& caption, const std::string& shortcut) {
  QString text = QString::fromStdString(caption);
  if (!shortcut.empty()) {
    text += '\t' + QString::fromStdString(shortcut);
  }
  return text;
}

QFont MakeQFont(const Font& font) {
  QFont f = QApplication::font();
  f.setPointSizeF(font.size > 0 ? font.size : 8.25);
  f.setBold(font.bold);
  return f;
}

QString QtFileFilter(const std::string& filter) {
  QStringList parts = QString::fromStdString(filter).split('|');
  QStringList out;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    QString text = parts[i].trimmed();
    QString pattern = parts[i + 1].trimmed();
    if (pattern.isEmpty()) {
      continue;
    }
    // Qt finds the patterns inside brackets and wants them separated by
    // blanks, where the program separates them by ";".
    QString qt_pattern = pattern;
    qt_pattern.replace(';', ' ');
    if (text.isEmpty()) {
      text = qt_pattern;
    }
    if (!text.contains('(')) {
      text += " (" + qt_pattern + ")";
    } else {
      text.replace(pattern, qt_pattern);
    }
    out << text;
  }
  return out.join(";;");
}

MessageBoxLook LookOfStyle(int style) {
  MessageBoxLook look;
  switch (style & 0x70) {
    case kMbStop:
      look.icon = QMessageBox::Critical;
      break;
    case kMbQuestion:
      look.icon = QMessageBox::Question;
      break;
    case 48:
      look.icon = QMessageBox::Warning;
      break;
    case kMbInformation:
      look.icon = QMessageBox::Information;
      break;
    default:
      look.icon = QMessageBox::NoIcon;
      break;
  }
  // The button sets, in their order on screen; the default button is
  // counted in that order.
  std::vector<QMessageBox::StandardButton> set;
  switch (style & 0x0F) {
    case 1:
      set = {QMessageBox::Ok, QMessageBox::Cancel};
      break;
    case 2:
      set = {QMessageBox::Abort, QMessageBox::Retry, QMessageBox::Ignore};
      break;
    case 3:
      set = {QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel};
      break;
    case kMbYesNo:
      set = {QMessageBox::Yes, QMessageBox::No};
      break;
    case 5:
      set = {QMessageBox::Retry, QMessageBox::Cancel};
      break;
    default:
      set = {QMessageBox::Ok};
      break;
  }
  look.buttons = QMessageBox::NoButton;
  for (QMessageBox::StandardButton b : set) {
    look.buttons |= b;
  }
  size_t default_at = static_cast<size_t>((style >> 8) & 0x03);
  look.default_button = set[std::min(default_at, set.size() - 1)];
  // Escape answers Cancel or No where the box has one, else its only button.
  look.escape_button = set.back();
  for (QMessageBox::StandardButton b : set) {
    if (b == QMessageBox::Cancel) {
      look.escape_button = b;
    }
  }
  return look;
}

int AnswerOf(QMessageBox::StandardButton button) {
  switch (button) {
    case QMessageBox::Ok:
      return kIdOk;
    case QMessageBox::Cancel:
      return kIdCancel;
    case QMessageBox::Abort:
      return 3;
    case QMessageBox::Retry:
      return 4;
    case QMessageBox::Ignore:
      return 5;
    case QMessageBox::Yes:
      return kIdYes;
    case QMessageBox::No:
      return kIdNo;
    default:
      return kIdCancel;
  }
}

std::string SendKeysText(int qt_key,
                         Qt::KeyboardModifiers modifiers,
                         const QString& text) {
  for (const NamedQtKey& named : kNamedKeys) {
    if (named.qt_key == qt_key) {
      return ModifierPrefix(modifiers, true) + "{" + named.name + "}";
    }
  }
  if (qt_key == Qt::Key_Backtab) {
    return ModifierPrefix(modifiers | Qt::ShiftModifier, true) + "{TAB}";
  }
  if (qt_key >= Qt::Key_F1 && qt_key <= Qt::Key_F16) {
    return ModifierPrefix(modifiers, true) + "{F" +
           std::to_string(qt_key - Qt::Key_F1 + 1) + "}";
  }
  bool chord = (modifiers & (Qt::ControlModifier | Qt::AltModifier)) != 0;
  if (chord) {
    // Ctrl+D arrives with a control character as text; the key names it.
    if (qt_key >= Qt::Key_A && qt_key <= Qt::Key_Z) {
      return ModifierPrefix(modifiers, true) +
             static_cast<char>('a' + (qt_key - Qt::Key_A));
    }
    if (qt_key >= Qt::Key_0 && qt_key <= Qt::Key_9) {
      return ModifierPrefix(modifiers, true) +
             static_cast<char>('0' + (qt_key - Qt::Key_0));
    }
    return "";
  }
  static constexpr std::string_view kSpecial = "+^%~(){}[]";
  std::string out;
  for (char32_t code : text.toUcs4()) {
    if (code < 0x20 || code == 0x7F) {
      continue;
    }
    if (code < 0x80 &&
        kSpecial.find(static_cast<char>(code)) != std::string_view::npos) {
      out += '{';
      out += static_cast<char>(code);
      out += '}';
    } else {
      out += QString::fromUcs4(&code, 1).toStdString();
    }
  }
  return out;
}

int Utf8Offset(const QString& text, int utf16_offset) {
  utf16_offset = std::clamp(utf16_offset, 0, static_cast<int>(text.size()));
  return static_cast<int>(text.left(utf16_offset).toUtf8().size());
}

int Utf16Offset(const QString& text, int utf8_offset) {
  QByteArray bytes = text.toUtf8();
  utf8_offset = std::clamp(utf8_offset, 0, static_cast<int>(bytes.size()));
  return static_cast<int>(QString::fromUtf8(bytes.left(utf8_offset)).size());
}

int ButtonOf(Qt::MouseButton button) {
  switch (button) {
    case Qt::LeftButton:
      return 1;
    case Qt::RightButton:
      return 2;
    case Qt::MiddleButton:
      return 4;
    default:
      return 0;
  }
}

int ButtonsOf(Qt::MouseButtons buttons) {
  int out = 0;
  if (buttons & Qt::LeftButton) {
    out |= 1;
  }
  if (buttons & Qt::RightButton) {
    out |= 2;
  }
  if (buttons & Qt::MiddleButton) {
    out |= 4;
  }
  return out;
}

int ShiftOf(Qt::KeyboardModifiers modifiers) {
  int out = 0;
  if (modifiers & Qt::ShiftModifier) {
    out |= kShiftMask;
  }
  if (modifiers & Qt::ControlModifier) {
    out |= kCtrlMask;
  }
  if (modifiers & Qt::AltModifier) {
    out |= kAltMask;
  }
  return out;
}

}  // namespace qbpd
